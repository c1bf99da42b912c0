// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/rigxdata.h"

#include "model/ownedlist.h"

#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/naming.h"
#include "model/object.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "model/commands/filecommands.h"
#include "model/commands/timelinekeycommands.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QUndoStack>

#include <algorithm>
#include <cmath>

namespace Morvane {

RigxData::RigxData(QUndoStack *undoStack, const QString &kind)
    : MorvaneModelItem(MorvaneItemType::Document)
    , mUndoStack(undoStack)
    , mKind(kind)
{}

RigxData::~RigxData()
{
    clearAllLinksAndChildren();
}

void RigxData::pushUndo(RigxData *document, QUndoCommand *command)
{
    if (!command)
        return;
    if (document && document->mUndoStack) {
        document->mUndoStack->push(command);
        return;
    }
    if (!command->isObsolete())
        command->redo();
    delete command;
}

QString RigxData::projectDirectory() const
{
    const int slash = mFilePath.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return mFilePath.isEmpty() ? QString() : QStringLiteral(".");
    if (slash == 0)
        return QStringLiteral("/");
    return mFilePath.left(slash);
}

Folder *RigxData::folder(int index) const
{
    return ownedAt(mFolders, index);
}

Folder *RigxData::folder(const QString &name) const
{
    for (const auto &f : mFolders) {
        if (f->name() == name)
            return f.get();
    }
    return nullptr;
}

Folder *RigxData::folderFromId(int id) const
{
    for (const auto &f : mFolders) {
        if (f->id() == id)
            return f.get();
    }
    return nullptr;
}

int RigxData::indexOfFolder(const Folder *folder) const
{
    return indexOfOwned(mFolders, folder);
}

void RigxData::appendFolder(Folder *folder)
{
    if (!folder)
        return;
    folder->setParentItem(this);
    mFolders.emplace_back(folder);
    // Atlas files built outside the document find their sheet now.
    for (int i = 0; i < folder->fileCount(); ++i) {
        File *file = folder->file(i);
        if (file->isImage() && file->isAtlasFrame() && !file->imageLoaded())
            file->refreshPixmap();
    }
}

void RigxData::deleteFolder(int index)
{
    if (index < 0 || index >= int(mFolders.size()))
        return;
    mFolders.erase(mFolders.begin() + index);
}

bool RigxData::removeFolder(Folder *folder)
{
    const int i = indexOfFolder(folder);
    if (i < 0)
        return false;
    mFolders[size_t(i)].release();
    mFolders.erase(mFolders.begin() + i);
    folder->setParentItem(nullptr);
    return true;
}

void RigxData::clearFiles()
{
    mFolders.clear();
    mMissingImages.clear();
    mImageCache.clear();
}

File *RigxData::file(int folderIndex, int fileIndex) const
{
    const Folder *f = folder(folderIndex);
    return f ? f->file(fileIndex) : nullptr;
}

File *RigxData::fileFromIds(int folderId, int fileId) const
{
    const Folder *f = folderFromId(folderId);
    return f ? f->fileFromId(fileId) : nullptr;
}

File *RigxData::file(const QString &path, bool validate) const
{
    const QString name = validate ? validatePath(path, true) : path;
    for (const auto &folder : mFolders) {
        if (File *f = folder->file(name))
            return f;
    }
    return nullptr;
}

QStringList RigxData::fileNames(bool fullPaths) const
{
    QStringList names;
    for (const auto &folder : mFolders) {
        for (int i = 0; i < folder->fileCount(); ++i)
            names.append(fullPaths ? folder->file(i)->fullPath() : folder->file(i)->name());
    }
    return names;
}

Entity *RigxData::entity(int index) const
{
    return ownedAt(mEntities, index);
}

Entity *RigxData::entity(const QString &name) const
{
    for (const auto &e : mEntities) {
        if (e->name() == name)
            return e.get();
    }
    return nullptr;
}

Entity *RigxData::entityFromId(int id) const
{
    for (const auto &e : mEntities) {
        if (e->id() == id)
            return e.get();
    }
    return nullptr;
}

int RigxData::indexOfEntity(const Entity *entity) const
{
    return indexOfOwned(mEntities, entity);
}

void RigxData::appendEntity(Entity *entity, int index)
{
    if (!entity)
        return;
    entity->setParentItem(this);
    if (index < 0 || index > int(mEntities.size()))
        mEntities.emplace_back(entity);
    else
        mEntities.emplace(mEntities.begin() + index, entity);
}

Entity *RigxData::appendEmptyEntity()
{
    auto *e = new Entity(uniqueName(QStringLiteral("entity_000"), entityNames()), true);
    appendEntity(e);
    return e;
}

void RigxData::deleteEntity(int index)
{
    delete removeEntity(index);
}

Entity *RigxData::removeEntity(int index)
{
    if (index < 0 || index >= int(mEntities.size()))
        return nullptr;
    Entity *e = mEntities[size_t(index)].release();
    mEntities.erase(mEntities.begin() + index);
    e->setParentItem(nullptr);
    if (mCurrentEntity >= int(mEntities.size()))
        mCurrentEntity = qMax(0, int(mEntities.size()) - 1);
    return e;
}

void RigxData::clearEntities()
{
    mEntities.clear();
    mCurrentEntity = 0;
}

QStringList RigxData::entityNames(const Entity *except) const
{
    QStringList names;
    for (const auto &e : mEntities) {
        if (e.get() != except)
            names.append(e->name());
    }
    return names;
}

Entity *RigxData::currentEntity() const
{
    return entity(mCurrentEntity);
}

void RigxData::setCurrentEntity(int index)
{
    mCurrentEntity = index;
}

Animation *RigxData::animationFromNames(const QString &entityName,
                                        const QString &animationName) const
{
    const Entity *e = entity(entityName);
    return e ? e->animation(animationName) : nullptr;
}

int RigxData::fullAnimationCount() const
{
    int n = 0;
    for (const auto &e : mEntities)
        n += e->animationCount();
    return n;
}

Animation *RigxData::animationFromNumericIndexes(int entityIndex, int animation) const
{
    const Entity *e = entity(entityIndex);
    return e ? e->animation(animation) : nullptr;
}

MainlineKey *RigxData::mainlineKeyFromNumericIndexes(int entityIndex, int animation,
                                                     int mainlineKey) const
{
    const Animation *a = animationFromNumericIndexes(entityIndex, animation);
    return a ? a->mainlineKey(mainlineKey) : nullptr;
}

Timeline *RigxData::timelineFromNumericIndexes(int entityIndex, int animation, int timeline) const
{
    const Animation *a = animationFromNumericIndexes(entityIndex, animation);
    return a ? a->timeline(timeline) : nullptr;
}

TimelineKey *RigxData::keyFromNumericIndexes(int entityIndex, int animation, int timeline,
                                             int key) const
{
    const Timeline *tl = timelineFromNumericIndexes(entityIndex, animation, timeline);
    return tl ? tl->key(key) : nullptr;
}

ObjectRef *RigxData::refFromNumericIndexes(int entityIndex, int animation, int mainlineKey,
                                           int refType, int refIndex) const
{
    const MainlineKey *mk = mainlineKeyFromNumericIndexes(entityIndex, animation, mainlineKey);
    return mk ? mk->refFromTypeAndIndex(refType, refIndex) : nullptr;
}

Object *RigxData::objectFromNumericIndexes(int entityIndex, int object) const
{
    const Entity *e = entity(entityIndex);
    return e ? e->object(object) : nullptr;
}

void RigxData::clear()
{
    clearEntities();
    clearFiles();
    mTagManager.clear();
    // Another project's key values: the states on the stack keep what they name.
    mSharedUndoData.reset();
}

bool RigxData::fileInUse(const File *file, const QSet<const File *> &shownByKeys) const
{
    if (shownByKeys.contains(file))
        return true;
    for (const auto &entity : mEntities) {
        if (entity->charMapsContainFile(file))
            return true;
    }
    return false;
}

QSet<const File *> RigxData::filesShownByKeys() const
{
    // One pass over every key instead of one per file: projects hold far more
    // keys than files.
    QSet<const File *> used;
    for (const auto &e : mEntities) {
        for (int a = 0; a < e->animationCount(); ++a) {
            const Animation *anim = e->animation(a);
            for (int t = 0; t < anim->timelineCount(); ++t) {
                const Timeline *tl = anim->timeline(t);
                for (int k = 0; k < tl->keyCount(); ++k) {
                    if (const File *f = tl->key(k)->fileInfo().file())
                        used.insert(f);
                }
            }
        }
    }
    return used;
}

void RigxData::removeUnusedFiles()
{
    const QSet<const File *> used = filesShownByKeys();
    mMissingImages.clear();
    for (size_t fi = mFolders.size(); fi-- > 0;) {
        Folder *folder = mFolders[fi].get();
        for (int i = folder->fileCount(); i-- > 0;) {
            File *f = folder->file(i);
            if (f->fileStillValid())
                continue;
            if (fileInUse(f, used)) {
                if (!f->imageLoaded())
                    f->setPlaceholderImage();
                mMissingImages.prepend(f->fullPath());
            } else {
                folder->deleteFile(i);
            }
        }
        if (folder->fileCount() == 0)
            mFolders.erase(mFolders.begin() + qptrdiff(fi));
    }
}

void RigxData::replaceFileReferences(const Address &from, const Address &to, bool undoable)
{
    const File *source = from.file();
    const File *target = to.file();
    if (!source || !target || source == target)
        return;
    auto *command = new ChangeKeyFile(this, source, target);
    if (undoable) {
        pushUndo(command);
    } else {
        command->redo();
        delete command;
    }
}

void RigxData::createUndosForDefaultPivotPoints(File *file, const QPointF &pivot)
{
    if (!file || file->document() != this)
        return;
    const QPointF old = file->pivot(false);
    if (old == pivot)
        return;
    auto *macro = new QUndoCommand(tr("default pivot changed"));
    // The image stays put: the pivot moves over the image by the pivot's change
    // times the image size, seen through the key's own scale and turn (its
    // parent bone moves both points alike).
    const double dx = (pivot.x() - old.x()) * file->width();
    const double dy = (pivot.y() - old.y()) * file->height();
    for (int e = 0; e < entityCount(); ++e) {
        const Entity *entity = this->entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            const Animation *animation = entity->animation(a);
            for (int t = 0; t < animation->timelineCount(); ++t) {
                const Timeline *timeline = animation->timeline(t);
                if (!timeline->isSprite())
                    continue;
                for (int k = 0; k < timeline->keyCount(); ++k) {
                    TimelineKey *key = timeline->key(k);
                    if (key->fileInfo().file() != file || !key->info().defaultPivot())
                        continue;
                    DisplayInfo info = key->info();
                    const double radians = info.angle / DisplayInfo::DegreesPerRadian;
                    const double sx = dx * info.xScale;
                    const double sy = dy * info.yScale;
                    info.x += sx * std::cos(radians) - sy * std::sin(radians);
                    info.y += sx * std::sin(radians) + sy * std::cos(radians);
                    new TimeKeyDisplayInfoChangeCommand(key, info, false, macro);
                }
            }
        }
    }
    new ChangeFilePivot(file, pivot, macro);
    pushUndo(macro);
}

QStringList RigxData::missingImageCandidates(const File *file) const
{
    QStringList found;
    const QString root = projectDirectory();
    if (!file || root.isEmpty())
        return found;
    const QString wanted = QFileInfo(RigxData::removeBeginningBracketDirectory(file->name())).fileName();
    if (wanted.isEmpty())
        return found;
    constexpr int MaxDepth = 12;
    constexpr int MaxEntries = 50000;
    int seen = 0;
    // Breadth first, so the nearest candidates come first; links to folders are
    // not followed, so a loop cannot keep the search going.
    QList<QPair<QString, int>> queue{{root, 0}};
    const QDir rootDir(root);
    while (!queue.isEmpty() && seen < MaxEntries) {
        const auto [path, depth] = queue.takeFirst();
        const QFileInfoList entries = QDir(path).entryInfoList(
            QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
        for (const QFileInfo &entry : entries) {
            if (++seen > MaxEntries)
                break;
            if (entry.isDir() && !entry.isSymLink()) {
                if (depth + 1 < MaxDepth)
                    queue.append({entry.filePath(), depth + 1});
            } else if (entry.isFile() && entry.fileName() == wanted) {
                const QString relative = rootDir.relativeFilePath(entry.filePath());
                if (relative != file->name())
                    found.append(relative);
            }
        }
    }
    return found;
}

QString RigxData::validatePath(const QString &path, bool stripProjectDirectory) const
{
    QString result = path;
    result.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (stripProjectDirectory && !mFilePath.isEmpty()) {
        QString dir = projectDirectory();
        dir.replace(QLatin1Char('\\'), QLatin1Char('/'));
        if (!dir.isEmpty() && dir != QLatin1String(".")) {
            if (!dir.endsWith(QLatin1Char('/')))
                dir += QLatin1Char('/');
            if (result.startsWith(dir))
                result.remove(0, dir.size());
        }
    }
    return File::removeLeadingSlashes(result);
}

void RigxData::refreshAllPixmaps()
{
    mImageCache.clear();
    for (const auto &f : mFolders)
        f->refreshAllPixmaps();
}

QList<File *> RigxData::flattenedFiles() const
{
    QList<File *> files;
    for (const auto &folder : mFolders) {
        for (int i = 0; i < folder->fileCount(); ++i)
            files.append(folder->file(i));
    }
    std::stable_sort(files.begin(), files.end(), [](const File *a, const File *b) {
        return a->name().compare(b->name(), Qt::CaseInsensitive) < 0;
    });
    return files;
}

QString RigxData::removeBeginningBracketDirectory(const QString &name)
{
    const int i = name.lastIndexOf(QLatin1String(">/"));
    return i < 0 ? name : name.mid(i + 2);
}

QString RigxData::extractNameFromBrackets(const QString &name)
{
    const int open = name.indexOf(QLatin1Char('<'));
    if (open < 0)
        return QString();
    const int close = name.indexOf(QLatin1Char('>'), open + 1);
    if (close < 0)
        return QString();
    return name.mid(open + 1, close - open - 1);
}

int RigxData::indexOfChild(const MorvaneModelItem *child) const
{
    if (!child)
        return -1;
    if (child->morvaneItemType() == MorvaneItemType::Folder)
        return indexOfFolder(static_cast<const Folder *>(child));
    if (child->morvaneItemType() == MorvaneItemType::Entity)
        return indexOfEntity(static_cast<const Entity *>(child));
    return -1;
}

bool RigxData::removeChildItem(MorvaneModelItem *child)
{
    if (!child)
        return false;
    if (child->morvaneItemType() == MorvaneItemType::Folder)
        return removeFolder(static_cast<Folder *>(child));
    if (child->morvaneItemType() == MorvaneItemType::Entity)
        return removeEntity(indexOfEntity(static_cast<Entity *>(child))) != nullptr;
    return false;
}

void RigxData::clearAllLinksAndChildren()
{
    MorvaneModelItem::clearAllLinksAndChildren();
    // Entities first: their keys point at files.
    mEntities.clear();
    mFolders.clear();
    mMissingImages.clear();
}


} // namespace Morvane
