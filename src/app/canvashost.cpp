// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvashost.h"

#include "canvas/canvaseditor.h"
#include "canvas/morvanecanvasscene.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"

#include <QAction>
#include <QPointer>
#include <QStatusBar>
#include <QTimer>
#include <QUndoStack>

namespace Morvane {

CanvasHost::CanvasHost(CanvasEditor *editor, QUndoStack *undoStack, QStatusBar *statusBar,
                       QObject *parent)
    : QObject(parent)
    , mEditor(editor)
    , mUndoStack(undoStack)
{
    MorvaneCanvasScene *scene = editor->scene();
    // The window's status bar shows the canvas's texts: the editor's own
    // line under the canvas would repeat them.
    editor->setStatusLineShown(false);
    connect(editor, &CanvasEditor::statusTextChanged, statusBar, [statusBar](const QString &text) {
        if (text.isEmpty())
            statusBar->clearMessage();
        else
            statusBar->showMessage(text);
    });
    connect(scene, &MorvaneCanvasScene::recievedInvalidDrag, statusBar, [statusBar] {
        statusBar->showMessage(tr("Only images of the project can be dropped on the canvas."), 5000);
    });
}

void CanvasHost::setDocument(RigxData *document)
{
    // The canvas records its edits on the document's stack, which must be the
    // window's for Undo, Redo and Save to follow them.
    if (document && document->undoStack() != mUndoStack)
        document->setUndoStack(mUndoStack);
    mEditor->setDocument(document);
    if (!document)
        return;
    Entity *entity = document->entityCount() > 0 ? document->entity(0) : nullptr;
    if (entity && entity->animationCount() > 0) {
        mEditor->setCurrentAnimation(entity->animation(0));
        mEditor->setCurrentTime(0);
    }
    // Once the window has its size: the whole character in view.
    QTimer::singleShot(0, mEditor, [editor = QPointer<CanvasEditor>(mEditor)] {
        if (editor)
            editor->fitView();
    });
}

bool CanvasHost::link(QAction *windowAction, const QString &editorName)
{
    QAction *editorAction = mEditor->action(editorName);
    if (!windowAction || !editorAction)
        return false;
    mLinks.insert(windowAction, editorAction);
    editorAction->setShortcut(QKeySequence());
    windowAction->setCheckable(editorAction->isCheckable());
    windowAction->setChecked(editorAction->isChecked());
    connect(windowAction, &QAction::triggered, editorAction, [editorAction](bool checked) {
        if (editorAction->isCheckable())
            editorAction->setChecked(checked);
        else
            editorAction->trigger();
    });
    connect(editorAction, &QAction::toggled, windowAction, &QAction::setChecked);
    connect(editorAction, &QAction::changed, windowAction,
            [this, windowAction] { updateEnabled(windowAction); });
    updateEnabled(windowAction);
    return true;
}

void CanvasHost::setProjectOpen(bool open)
{
    mProjectOpen = open;
    for (QAction *windowAction : mLinks.keys())
        updateEnabled(windowAction);
}

QList<QAction *> CanvasHost::unlinkedEditorActions() const
{
    QList<QAction *> actions;
    for (QAction *action : mEditor->editorActions()) {
        if (!mLinks.values().contains(action))
            actions.append(action);
    }
    return actions;
}

void CanvasHost::updateEnabled(QAction *windowAction)
{
    windowAction->setEnabled(mProjectOpen && mLinks.value(windowAction)->isEnabled());
}

} // namespace Morvane
