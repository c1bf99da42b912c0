// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/tagchangecommand.h"

#include "model/rigxdata.h"

namespace Morvane {

TagChangeCommand::TagChangeCommand(RigxData *project, const TagManager &before,
                                   const TagManager &after, QUndoCommand *parent)
    : QUndoCommand(QStringLiteral("Tags Changed"), parent)
    , mProject(project)
    , mBefore(before)
    , mAfter(after)
{
}

void TagChangeCommand::undo()
{
    mProject->tagManager().overwriteTags(mBefore);
    mProject->emitRefreshVariables();
}

void TagChangeCommand::redo()
{
    mProject->tagManager().overwriteTags(mAfter);
    mProject->emitRefreshVariables();
}

} // namespace Morvane
