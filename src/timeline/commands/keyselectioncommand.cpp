// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/commands/keyselectioncommand.h"

namespace Morvane {

KeySelectionCommand::KeySelectionCommand(TimelineView *view, const KeySelection &selection,
                                         bool isAfter, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mView(view)
    , mSelection(selection)
    , mIsAfter(isAfter)
{
}

void KeySelectionCommand::redo()
{
    if (mIsAfter)
        apply();
}

void KeySelectionCommand::undo()
{
    if (!mIsAfter)
        apply();
}

void KeySelectionCommand::apply()
{
    // A view closed since, or another document shown, leaves nothing to select.
    if (!mView)
        return;
    mView->refresh();
    mView->applyKeySelection(mSelection);
}

} // namespace Morvane
