// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUndoCommand>

namespace Morvane {

class RigxData;

/// Binds folders to a sprite sheet, or unbinds them, as one undo step: each folder and
/// its files are renamed into (or out of) the sheet's bracket directory, so the files
/// show the sheet's frames of their names. Folders are found again by position on every
/// redo and undo; one whose files changed in between is left alone.
class BindAtlasCommand : public QUndoCommand
{
public:
    /// Binds the folders at `folderIndexes` of `document` to the sheet `atlas` (the
    /// description's path relative to the project directory). Folders already bound to
    /// any sheet, and the indexes of no folder, are skipped.
    BindAtlasCommand(RigxData *document, const QList<int> &folderIndexes, const QString &atlas);

    void undo() override;
    void redo() override;

    /// How many folders the command binds.
    int folderCount() const { return int(mFolders.size()); }

private:
    struct FolderNames
    {
        int index;
        QString before;
        QString after;
        QStringList filesBefore;
        QStringList filesAfter;
    };
    void apply(bool forward);

    RigxData *mDocument;
    QList<FolderNames> mFolders;
};

} // namespace Morvane
