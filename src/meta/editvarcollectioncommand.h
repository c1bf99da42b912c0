// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/metaowner.h"
#include "meta/valinfocollection.h"

#include <QUndoCommand>

namespace Morvane {

class RigxData;

/// One change of an entity's or object's variable declarations: holds the whole
/// collection before and after and finds the owner again by row numbers on
/// every undo and redo (a step whose owner is gone does nothing).
class EditVarCollectionCommand : public QUndoCommand
{
public:
    EditVarCollectionCommand(RigxData *document, const MetaOwner &owner,
                             const ValInfoCollection &before, const ValInfoCollection &after,
                             QUndoCommand *parent = nullptr);

    void undo() override;
    void redo() override;

private:
    void apply(const ValInfoCollection &collection);

    RigxData *mDocument;
    MetaOwner mOwner;
    ValInfoCollection mBefore;
    ValInfoCollection mAfter;
};

} // namespace Morvane
