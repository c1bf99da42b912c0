// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "canvas/morvanecanvasscene.h"

#include <QPointer>
#include <QUndoCommand>

namespace Morvane {

/// Opens (`atEnd` false) or closes (`atEnd` true) a macro so that the views
/// refresh once per macro in either direction: redo of the closing command and
/// undo of the opening one make the scene raise `refreshAll`.
class RefreshTimelineCommand : public QUndoCommand
{
public:
    RefreshTimelineCommand(MorvaneCanvasScene *scene, bool atEnd, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    QPointer<MorvaneCanvasScene> mScene;
    bool mAtEnd;
};

/// The canvas selection around a macro. The start command keeps the selection
/// in force when it was made and puts it back on undo; the end command notes
/// the selection after the gesture on its first redo and puts it back on every
/// later redo. Thus a macro, undone or redone, leaves the selection as it was
/// before or after the gesture.
class ObjectSelectionCommand : public QUndoCommand
{
public:
    ObjectSelectionCommand(MorvaneCanvasScene *scene, bool isEnd, bool a = false, bool b = false,
                           QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    QPointer<MorvaneCanvasScene> mScene;
    SelectionSave mSave;
    bool mIsEnd;
    bool mDoneOnce = false;
};

} // namespace Morvane
