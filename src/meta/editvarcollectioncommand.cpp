// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/editvarcollectioncommand.h"

#include "model/rigxdata.h"

namespace Morvane {

EditVarCollectionCommand::EditVarCollectionCommand(RigxData *document, const MetaOwner &owner,
                                                   const ValInfoCollection &before,
                                                   const ValInfoCollection &after,
                                                   QUndoCommand *parent)
    : QUndoCommand(QStringLiteral("Variable Decleration Changed"), parent)
    , mDocument(document)
    , mOwner(owner)
    , mBefore(before)
    , mAfter(after)
{
}

void EditVarCollectionCommand::undo()
{
    apply(mBefore);
}

void EditVarCollectionCommand::redo()
{
    apply(mAfter);
}

void EditVarCollectionCommand::apply(const ValInfoCollection &collection)
{
    ValInfoCollection *target = mOwner.infoCollection(mDocument);
    if (!target)
        return;
    *target = collection;
    mDocument->emitRefreshVariables();
}

} // namespace Morvane
