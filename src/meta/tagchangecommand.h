// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/tagmanager.h"

#include <QUndoCommand>

namespace Morvane {

class RigxData;

/// One change of the project's tag list, stored as the whole list before and
/// after. The document outlives its undo stack, so it is held directly.
class TagChangeCommand : public QUndoCommand
{
public:
    TagChangeCommand(RigxData *project, const TagManager &before, const TagManager &after,
                     QUndoCommand *parent = nullptr);

    void undo() override;
    void redo() override;

private:
    RigxData *mProject;
    TagManager mBefore;
    TagManager mAfter;
};

} // namespace Morvane
