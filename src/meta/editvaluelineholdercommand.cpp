// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/editvaluelineholdercommand.h"

#include "model/rigxdata.h"

namespace Morvane {

EditValueLineHolderCommand::EditValueLineHolderCommand(RigxData *document, const MetaOwner &owner,
                                                       const ValueLineHolder &before,
                                                       const ValueLineHolder &after,
                                                       const QString &text, QUndoCommand *parent)
    : QUndoCommand(text, parent)
    , mDocument(document)
    , mOwner(owner)
    , mBefore(before)
    , mAfter(after)
{
}

void EditValueLineHolderCommand::undo()
{
    apply(mBefore);
}

void EditValueLineHolderCommand::redo()
{
    apply(mAfter);
}

void EditValueLineHolderCommand::apply(const ValueLineHolder &holder)
{
    ValueLineHolder *target = mOwner.lineHolder(mDocument);
    if (!target)
        return;
    *target = holder;
    mDocument->emitRefreshTimelines();
}

} // namespace Morvane
