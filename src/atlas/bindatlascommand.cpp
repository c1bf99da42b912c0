// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "atlas/bindatlascommand.h"

#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"

namespace Morvane {

BindAtlasCommand::BindAtlasCommand(RigxData *document, const QList<int> &folderIndexes,
                                   const QString &atlas)
    : QUndoCommand(QStringLiteral("Bind folders to sprite sheet"))
    , mDocument(document)
{
    const QString bracket = QLatin1Char('<') + atlas + QLatin1String(">/");
    for (const int index : folderIndexes) {
        const Folder *folder = document->folder(index);
        if (!folder || folder->spriteSheet())
            continue;
        FolderNames names{index, folder->name(), {}, {}, {}};
        const QString name = folder->name() == QLatin1String(".") ? QString() : folder->name();
        names.after = bracket + name;
        for (int i = 0; i < folder->fileCount(); ++i) {
            const QString file = folder->file(i)->name();
            names.filesBefore.append(file);
            names.filesAfter.append(bracket + file);
        }
        mFolders.append(names);
    }
    if (mFolders.isEmpty())
        setObsolete(true);
}

void BindAtlasCommand::undo()
{
    apply(false);
}

void BindAtlasCommand::redo()
{
    apply(true);
}

void BindAtlasCommand::apply(bool forward)
{
    mDocument->emitLayoutAboutToBeChanged();
    for (const FolderNames &names : std::as_const(mFolders)) {
        Folder *folder = mDocument->folder(names.index);
        const QString &from = forward ? names.before : names.after;
        const QStringList &filesFrom = forward ? names.filesBefore : names.filesAfter;
        const QStringList &filesTo = forward ? names.filesAfter : names.filesBefore;
        if (!folder || folder->name() != from || folder->fileCount() != filesFrom.size())
            continue;
        folder->setName(forward ? names.after : names.before);
        for (int i = 0; i < folder->fileCount(); ++i) {
            File *file = folder->file(i);
            if (file->name() != filesFrom.at(i))
                continue;
            // The size and pivot stay the file's own: a frame keeps its source size, so
            // nothing on the canvas moves.
            const int width = file->width();
            const int height = file->height();
            file->setName(filesTo.at(i));
            if (!file->refreshPixmap())
                file->setSize(width, height);
        }
    }
    mDocument->emitLayoutChanged();
}

} // namespace Morvane
