// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/commands/changevalue.h"

#include <QPointF>
#include <QString>
#include <QUndoCommand>

namespace Morvane {

class File;
class RigxData;
class TimelineKey;

/// Adds the image `name` (relative to the project directory) to the project,
/// in the folder of its directory (made when missing). Redo after undo gives
/// the folder and file the ids they had, so addresses held elsewhere stay good.
class AddFileCommand : public QUndoCommand
{
public:
    AddFileCommand(RigxData *document, const QString &name, const QPointF &pivot = QPointF(),
                   QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    RigxData *mDocument;
    QString mName;
    QPointF mPivot;
    int mFolderId = -1;
    int mFileId = -1;
    bool mMadeFolder = false;
};

/// Renames a file of the project. With `onDisk` the image is renamed on disk
/// too (only when the old one is there and the new name is free), and undo
/// renames it back. Keys name files by id, so every key follows.
class RenameFileCommand : public QUndoCommand
{
public:
    RenameFileCommand(File *file, const QString &newName, bool onDisk,
                      QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

    /// Whether the last step could rename the image on disk as asked.
    bool diskRenameFailed() const { return mDiskFailed; }

private:
    void rename(const QString &from, const QString &to);

    Address mFile;
    QString mOldName;
    QString mNewName;
    bool mOnDisk;
    bool mDiskFailed = false;
};

/// A file's default pivot (fractions of the image, y from the top edge).
class ChangeFilePivot : public ChangeValue<File, QPointF>
{
public:
    ChangeFilePivot(File *file, const QPointF &pivot, QUndoCommand *parent = nullptr);

protected:
    File *target(const Address &address) const override;
    void setValue(File *file, const QPointF &pivot) const override;
};

/// Makes keys show another file; a key that follows its file's default pivot
/// follows the new file's.
class ChangeKeyFile : public ChangeValue<TimelineKey, Address>
{
public:
    /// Every key of the document that shows `from` now shows `to`.
    ChangeKeyFile(RigxData *document, const File *from, const File *to,
                  QUndoCommand *parent = nullptr);

    bool isEmpty() const { return changes().empty(); }

protected:
    TimelineKey *target(const Address &address) const override;
    void setValue(TimelineKey *key, const Address &file) const override;
    void changed(RigxData *document) const override;
};

} // namespace Morvane
