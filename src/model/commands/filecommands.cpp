// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/filecommands.h"

#include "model/animation.h"
#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace Morvane {

namespace {

// The folder a file of `name` belongs in: its directory, "<sheet>/" kept
// whole for atlas files, "" for the project directory itself.
QString folderNameFor(const QString &name)
{
    const int slash = name.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QString();
    QString folder = name.left(slash);
    if (folder.startsWith(QLatin1Char('<')) && folder.endsWith(QLatin1Char('>')))
        folder += QLatin1Char('/');
    return folder;
}

} // namespace

AddFileCommand::AddFileCommand(RigxData *document, const QString &name, const QPointF &pivot,
                               QUndoCommand *parent)
    : QUndoCommand(QCoreApplication::translate("Morvane", "image added"), parent)
    , mDocument(document)
    , mName(document ? document->validatePath(name) : name)
    , mPivot(pivot)
{}

void AddFileCommand::redo()
{
    if (!mDocument || mDocument->file(mName, false))
        return;
    const QString folderName = folderNameFor(mName);
    Folder *folder = mDocument->folder(folderName);
    mMadeFolder = !folder;
    if (!folder) {
        folder = new Folder(folderName);
        if (mFolderId >= 0)
            folder->setId(mFolderId);
        mDocument->appendFolder(folder);
    }
    mFolderId = folder->id();
    auto *file = new File(mName, mPivot.x(), mPivot.y(), File::Image, QString(), mFileId >= 0);
    if (mFileId >= 0)
        file->setId(mFileId);
    mFileId = file->id();
    folder->appendFile(file);
    file->refreshPixmap();
    mDocument->setFileFlattenedSorts();
}

void AddFileCommand::undo()
{
    Folder *folder = mDocument ? mDocument->folderFromId(mFolderId) : nullptr;
    File *file = folder ? folder->fileFromId(mFileId) : nullptr;
    if (!file)
        return;
    folder->deleteFile(folder->indexOfFile(file));
    if (mMadeFolder && folder->fileCount() == 0)
        mDocument->deleteFolder(mDocument->indexOfFolder(folder));
    mDocument->setFileFlattenedSorts();
}

RenameFileCommand::RenameFileCommand(File *file, const QString &newName, bool onDisk,
                                     QUndoCommand *parent)
    : QUndoCommand(QCoreApplication::translate("Morvane", "image renamed"), parent)
    , mFile(freshAddress(file->address()))
    , mOldName(file->name())
    , mNewName(file->validatePath(newName))
    , mOnDisk(onDisk)
{
    if (mOldName == mNewName)
        setObsolete(true);
}

void RenameFileCommand::redo()
{
    rename(mOldName, mNewName);
}

void RenameFileCommand::undo()
{
    rename(mNewName, mOldName);
}

void RenameFileCommand::rename(const QString &from, const QString &to)
{
    File *file = freshAddress(mFile).file();
    if (!file || file->name() != from)
        return;
    mDiskFailed = false;
    if (mOnDisk) {
        const QString dir = file->document() ? file->document()->projectDirectory() : QString();
        const QString source = dir + QLatin1Char('/') + from;
        const QString target = dir + QLatin1Char('/') + to;
        // Never overwrite: another image of that name may be in use.
        if (QFileInfo::exists(source) && !QFileInfo::exists(target))
            mDiskFailed = !QFile::rename(source, target);
        else
            mDiskFailed = !QFileInfo::exists(target);
    }
    file->setName(to);
    file->refreshPixmap();
    if (RigxData *document = file->document()) {
        document->imageCache().clear();
        document->setFileFlattenedSorts();
    }
}

ChangeFilePivot::ChangeFilePivot(File *file, const QPointF &pivot, QUndoCommand *parent)
    : ChangeValue(QCoreApplication::translate("Morvane", "default pivot changed"),
                  {Change{freshAddress(file->address()), file->pivot(false), pivot}},
                  CommandId::None, parent)
{}

File *ChangeFilePivot::target(const Address &address) const
{
    return inDocument(freshAddress(address).file(), address);
}

void ChangeFilePivot::setValue(File *file, const QPointF &pivot) const
{
    file->setPivotPoint(pivot.x(), pivot.y());
}

namespace {

std::vector<ChangeValue<TimelineKey, Address>::Change> keysShowing(RigxData *document,
                                                                    const File *from,
                                                                    const File *to)
{
    std::vector<ChangeValue<TimelineKey, Address>::Change> changes;
    if (!document || !from || !to)
        return changes;
    const Address target = freshAddress(to->address());
    for (int e = 0; e < document->entityCount(); ++e) {
        const Entity *entity = document->entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            const Animation *animation = entity->animation(a);
            for (int t = 0; t < animation->timelineCount(); ++t) {
                const Timeline *timeline = animation->timeline(t);
                for (int k = 0; k < timeline->keyCount(); ++k) {
                    const TimelineKey *key = timeline->key(k);
                    if (key->fileInfo().file() == from)
                        changes.push_back({Address(document, {e, a, t, k}),
                                           freshAddress(key->fileInfo().address()), target});
                }
            }
        }
    }
    return changes;
}

} // namespace

ChangeKeyFile::ChangeKeyFile(RigxData *document, const File *from, const File *to,
                             QUndoCommand *parent)
    : ChangeValue(QCoreApplication::translate("Morvane", "image replaced"),
                  keysShowing(document, from, to), CommandId::None, parent)
{}

TimelineKey *ChangeKeyFile::target(const Address &address) const
{
    return inDocument(freshAddress(address).key(), address);
}

void ChangeKeyFile::setValue(TimelineKey *key, const Address &file) const
{
    key->fileInfo().setAddress(file);
    if (key->info().defaultPivot())
        key->info().setDefaultPivot(true, file);
}

void ChangeKeyFile::changed(RigxData *document) const
{
    document->emitRefreshTimelines();
}

} // namespace Morvane
