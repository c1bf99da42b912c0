// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/folder.h"

#include "model/file.h"
#include "model/ownedlist.h"
#include "model/rigxdata.h"

namespace Morvane {

int Folder::nextUniqueId = 0;

Folder::Folder(const QString &name, bool withoutId)
    : MorvaneModelItem(MorvaneItemType::Folder)
    , mId(withoutId ? -1 : nextUniqueId++)
    , mName(name)
{}

Folder::~Folder()
{
    clearAllLinksAndChildren();
}

File *Folder::file(int index) const
{
    return ownedAt(mFiles, index);
}

File *Folder::file(const QString &name) const
{
    for (const auto &f : mFiles) {
        if (f->name() == name)
            return f.get();
    }
    return nullptr;
}

File *Folder::fileFromId(int id) const
{
    for (const auto &f : mFiles) {
        if (f->id() == id)
            return f.get();
    }
    return nullptr;
}

int Folder::indexOfFile(const File *file) const
{
    return indexOfOwned(mFiles, file);
}

void Folder::appendFile(File *file)
{
    if (!file)
        return;
    file->setParentItem(this);
    mFiles.emplace_back(file);
    // An atlas file finds its sheet through the document it now belongs to.
    if (file->isImage() && file->isAtlasFrame() && !file->imageLoaded() && document())
        file->refreshPixmap();
}

void Folder::deleteFile(int index)
{
    if (index < 0 || index >= int(mFiles.size()))
        return;
    mFiles.erase(mFiles.begin() + index);
}

bool Folder::removeFile(File *file)
{
    const int i = indexOfFile(file);
    if (i < 0)
        return false;
    mFiles[size_t(i)].release();
    mFiles.erase(mFiles.begin() + i);
    file->setParentItem(nullptr);
    return true;
}

bool Folder::spriteSheet() const
{
    return mName.startsWith(QLatin1Char('<')) && mName.contains(QLatin1String(">/"));
}

QString Folder::spriteSheetName() const
{
    return spriteSheet() ? RigxData::extractNameFromBrackets(mName) : QString();
}

void Folder::refreshAllPixmaps()
{
    for (const auto &f : mFiles)
        f->refreshPixmap();
}

QString Folder::validatePath(const QString &path) const
{
    if (RigxData *doc = document())
        return doc->validatePath(path, true);
    return File::removeLeadingSlashes(QString(path).replace(QLatin1Char('\\'), QLatin1Char('/')));
}

int Folder::indexOfChild(const MorvaneModelItem *child) const
{
    if (!child || child->morvaneItemType() != MorvaneItemType::File)
        return -1;
    return indexOfFile(static_cast<const File *>(child));
}

bool Folder::removeChildItem(MorvaneModelItem *child)
{
    if (!child || child->morvaneItemType() != MorvaneItemType::File)
        return false;
    return removeFile(static_cast<File *>(child));
}

void Folder::clearAllLinksAndChildren()
{
    MorvaneModelItem::clearAllLinksAndChildren();
    mFiles.clear();
}

} // namespace Morvane
