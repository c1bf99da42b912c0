// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/metaowner.h"
#include "meta/valuelineholder.h"

#include <QUndoCommand>

namespace Morvane {

class RigxData;

/// One change of an owner's value lines in one animation: holds the whole
/// holder before and after and finds it again by row numbers on every undo and
/// redo (a step whose owner is gone does nothing).
class EditValueLineHolderCommand : public QUndoCommand
{
public:
    EditValueLineHolderCommand(RigxData *document, const MetaOwner &owner,
                               const ValueLineHolder &before, const ValueLineHolder &after,
                               const QString &text, QUndoCommand *parent = nullptr);

    void undo() override;
    void redo() override;

private:
    void apply(const ValueLineHolder &holder);

    RigxData *mDocument;
    MetaOwner mOwner;
    ValueLineHolder mBefore;
    ValueLineHolder mAfter;
};

} // namespace Morvane
