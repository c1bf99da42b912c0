// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/commands/canvascommands.h"

namespace Morvane {

RefreshTimelineCommand::RefreshTimelineCommand(MorvaneCanvasScene *scene, bool atEnd,
                                               QUndoCommand *parent)
    : QUndoCommand(parent)
    , mScene(scene)
    , mAtEnd(atEnd)
{}

void RefreshTimelineCommand::redo()
{
    if (mAtEnd && mScene)
        mScene->emitRefreshAll();
}

void RefreshTimelineCommand::undo()
{
    if (!mAtEnd && mScene)
        mScene->emitRefreshAll();
}

ObjectSelectionCommand::ObjectSelectionCommand(MorvaneCanvasScene *scene, bool isEnd, bool a,
                                               bool b, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mScene(scene)
    , mIsEnd(isEnd)
{
    if (scene)
        mSave = scene->saveSelection();
    mSave.flagA = a;
    mSave.flagB = b;
}

void ObjectSelectionCommand::redo()
{
    if (!mIsEnd || !mScene)
        return;
    if (!mDoneOnce) {
        mDoneOnce = true;
        const bool a = mSave.flagA;
        const bool b = mSave.flagB;
        mSave = mScene->saveSelection();
        mSave.flagA = a;
        mSave.flagB = b;
        return;
    }
    mScene->restoreSelection(mSave);
}

void ObjectSelectionCommand::undo()
{
    if (!mIsEnd && mScene)
        mScene->restoreSelection(mSave);
}

} // namespace Morvane
