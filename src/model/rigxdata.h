// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/tagmanager.h"
#include "model/address.h"
#include "model/imagecache.h"
#include "model/morvanemodelitem.h"

#include <QMap>
#include <QObject>
#include <QPointF>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QUndoCommand;
class QUndoStack;

namespace Morvane {

class Animation;
class Entity;
class File;
class Folder;
class MainlineKey;
class Object;
class ObjectRef;
class Timeline;
class TimelineKey;

/// The document root: one project's folders of files, its entities and its
/// tag list, and the one place through which the rest of the system finds
/// things by index, id or name. Owns folders and entities.
class RigxData : public QObject, public MorvaneModelItem
{
    Q_OBJECT

public:
    /// `kind` is written as the file's generator version (the application
    /// version; "clipboard" for the clipboard's private document). The undo
    /// stack is not owned.
    explicit RigxData(QUndoStack *undoStack = nullptr,
                      const QString &kind = QStringLiteral(MORVANE_VERSION_STRING));
    ~RigxData() override;

    QString kind() const { return mKind; }
    QUndoStack *undoStack() const { return mUndoStack; }
    void setUndoStack(QUndoStack *stack) { mUndoStack = stack; }
    /// The one way a change enters the document; the document takes `command`.
    /// With an undo stack the stack applies (redo()) and keeps it. Without one
    /// (the command-line tool, tests, documents built in code) nothing keeps
    /// history: `command` is applied once (redo()) and deleted, so the document
    /// ends up the same either way. An obsolete command is deleted unapplied on
    /// both paths, as the stack does. A null `document` counts as no stack.
    static void pushUndo(RigxData *document, QUndoCommand *command);
    void pushUndo(QUndoCommand *command) { pushUndo(this, command); }
    /// What the undo commands of this document share between their states
    /// (the key values animation states name), kept while the document lives
    /// so that a new edit after an undo still finds it.
    const std::shared_ptr<void> &sharedUndoData() const { return mSharedUndoData; }
    void setSharedUndoData(std::shared_ptr<void> data) { mSharedUndoData = std::move(data); }

    /// The project file's path; its directory is the project directory.
    QString filePath() const { return mFilePath; }
    void setFilePath(const QString &path) { mFilePath = path; }
    /// The project file's directory without trailing "/", empty without path.
    QString projectDirectory() const;

    /// The project's tag list.
    TagManager &tagManager() { return mTagManager; }
    const TagManager &tagManager() const { return mTagManager; }

    // Folders.
    Folder *folder(int index) const;
    Folder *folder(const QString &name) const;
    int folderCount() const { return int(mFolders.size()); }
    Folder *folderFromId(int id) const;
    int indexOfFolder(const Folder *folder) const;
    /// Takes ownership and makes the document the folder's parent.
    void appendFolder(Folder *folder);
    void deleteFolder(int index);
    /// Takes the folder out without destroying it; the caller owns it.
    bool removeFolder(Folder *folder);
    void clearFiles();

    // Files.
    File *file(int folderIndex, int fileIndex) const;
    File *fileFromIds(int folderId, int fileId) const;
    /// The file whose name is `path` (normalised first when `validate`).
    File *file(const QString &path, bool validate = true) const;
    QStringList fileNames(bool fullPaths = false) const;

    // Entities.
    Entity *entity(int index) const;
    Entity *entity(const QString &name) const;
    Entity *entityFromId(int id) const;
    int entityCount() const { return int(mEntities.size()); }
    int indexOfEntity(const Entity *entity) const;
    /// Takes ownership; `index` -1 appends.
    void appendEntity(Entity *entity, int index = -1);
    /// A new entity with a unique name and one animation.
    Entity *appendEmptyEntity();
    void deleteEntity(int index);
    /// Takes the entity out without destroying it; the caller owns it.
    Entity *removeEntity(int index);
    void clearEntities();
    QStringList entityNames(const Entity *except = nullptr) const;
    Entity *currentEntity() const;
    void setCurrentEntity(int index);
    int currentEntityIndex() const { return mCurrentEntity; }
    Animation *animationFromNames(const QString &entity, const QString &animation) const;
    int fullAnimationCount() const;

    // Index lookups used by addresses; null when any index is out of range.
    Animation *animationFromNumericIndexes(int entity, int animation) const;
    MainlineKey *mainlineKeyFromNumericIndexes(int entity, int animation, int mainlineKey) const;
    Timeline *timelineFromNumericIndexes(int entity, int animation, int timeline) const;
    TimelineKey *keyFromNumericIndexes(int entity, int animation, int timeline, int key) const;
    ObjectRef *refFromNumericIndexes(int entity, int animation, int mainlineKey, int refType,
                                     int refIndex) const;
    Object *objectFromNumericIndexes(int entity, int object) const;

    // Whole-document operations.
    /// Removes all entities and files.
    void clear();
    /// No entities, folders or tags: what `clear` leaves.
    bool isEmpty() const
    {
        return mEntities.empty() && folderCount() == 0 && mTagManager.tagCount() == 0;
    }
    /// Drops files that neither exist on disk nor are shown by any key or
    /// named by any character map, and folders left empty. Missing files that
    /// are still used stay, get a placeholder and are listed as missing.
    void removeUnusedFiles();
    /// Every file a timeline key shows.
    QSet<const File *> filesShownByKeys() const;
    /// Whether `file` is in `shownByKeys` (from `filesShownByKeys`) or named by
    /// a character map.
    bool fileInUse(const File *file, const QSet<const File *> &shownByKeys) const;
    QStringList missingImageFullPaths() const { return mMissingImages; }
    bool hasMissingImages() const { return !mMissingImages.isEmpty(); }
    /// Makes every key that shows the file at `from` show the file at `to`;
    /// with `undoable`, as one command on the undo stack.
    void replaceFileReferences(const Address &from, const Address &to, bool undoable = true);
    /// Gives `file` the default pivot `pivot` (fractions, y from the top) as one
    /// undo step in which every sprite key that shows the file and follows its
    /// default pivot moves so that the image stays where it is on screen.
    void createUndosForDefaultPivotPoints(File *file, const QPointF &pivot);
    /// Where a missing file's image may have gone: the project-relative paths
    /// of regular files with its file name elsewhere under the project
    /// directory, nearest first. The search is bounded (depth and entries), so a
    /// huge or looping tree cannot stall it.
    QStringList missingImageCandidates(const File *file) const;
    /// Normalises a path entering the model: backslashes become "/", the
    /// project directory is removed when `stripProjectDirectory` (and a path
    /// is set), and leading "/" go.
    QString validatePath(const QString &path, bool stripProjectDirectory = true) const;
    /// Reads every image again (the decoded ones are forgotten).
    void refreshAllPixmaps();
    /// The project's decoded images: each once, within a pixel budget.
    ImageCache &imageCache() { return mImageCache; }

    /// All files in the file palette's order: case-insensitive by name, ties
    /// in folder order. Computed on demand, so it never holds a stale file.
    QList<File *> flattenedFiles() const;
    /// Tells the views that the flattened order may have changed.
    void setFileFlattenedSorts() { emitLayoutChanged(); }

    /// The part of `name` behind the last ">/" (all of it when there is none).
    static QString removeBeginningBracketDirectory(const QString &name);
    /// The text between the first "<" and the following ">".
    static QString extractNameFromBrackets(const QString &name);

    // Notifications, each emitted through the call of the same name.
    void emitEntityAnimationStructureChanged() { Q_EMIT entityAnimationStructureChanged(); }
    void emitBoneStructureChanged() { Q_EMIT boneStructureChanged(); }
    void emitObjectNamesChanged() { Q_EMIT objectNamesChanged(); }
    void emitLayoutChanged() { Q_EMIT layoutChanged(); }
    void emitLayoutAboutToBeChanged() { Q_EMIT layoutAboutToBeChanged(); }
    void emitRefreshVariables() { Q_EMIT refreshVariables(); }
    void emitRefreshTimelines() { Q_EMIT refreshTimelines(); }
    void emitRefreshedCharMaps() { Q_EMIT refreshedCharMaps(); }
    void emitShowTimelineEditor(const Address &target, int lineId = -1, int timeId = -1)
    {
        Q_EMIT showTimelineEditor(target, lineId, timeId);
    }

    int indexOfChild(const MorvaneModelItem *child) const override;
    bool removeChildItem(MorvaneModelItem *child) override;
    void clearAllLinksAndChildren() override;

Q_SIGNALS:
    void entityAnimationStructureChanged();
    void boneStructureChanged();
    void objectNamesChanged();
    void layoutChanged();
    void layoutAboutToBeChanged();
    void refreshVariables();
    void refreshTimelines();
    void refreshedCharMaps();
    void showTimelineEditor(const Morvane::Address &target, int lineId, int timeId);

private:
    QUndoStack *mUndoStack = nullptr;
    std::shared_ptr<void> mSharedUndoData;
    QString mKind;
    int mCurrentEntity = 0;
    TagManager mTagManager;
    QString mFilePath;
    std::vector<std::unique_ptr<Folder>> mFolders;
    std::vector<std::unique_ptr<Entity>> mEntities;
    QStringList mMissingImages;
    ImageCache mImageCache;
};

} // namespace Morvane
