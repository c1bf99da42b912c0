// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QList>
#include <QMap>
#include <QObject>

class QAction;
class QStatusBar;
class QUndoStack;

namespace Morvane {

class CanvasEditor;
class RigxData;

// Wires the canvas editor into the window: which document and animation it
// shows, the window's actions that drive the editor's, and the status bar.
// The window's action keeps the key, so a key never means two actions.
class CanvasHost : public QObject
{
    Q_OBJECT

public:
    CanvasHost(CanvasEditor *editor, QUndoStack *undoStack, QStatusBar *statusBar,
               QObject *parent = nullptr);

    CanvasEditor *editor() const { return mEditor; }

    // Shows the document's first animation of its first entity at time 0;
    // null shows nothing (call it before the document is cleared).
    void setDocument(RigxData *document);

    // `windowAction` triggers the editor's action named `editorName` and
    // mirrors its checked and enabled state; the editor's own key is dropped.
    // Returns false when the editor has no such action.
    bool link(QAction *windowAction, const QString &editorName);
    // Linked actions work only while a project is open.
    void setProjectOpen(bool open);

    QList<QAction *> linkedWindowActions() const { return mLinks.keys(); }
    // The editor's actions no window action stands for.
    QList<QAction *> unlinkedEditorActions() const;

private:
    void updateEnabled(QAction *windowAction);

    CanvasEditor *mEditor;
    QUndoStack *mUndoStack;
    QMap<QAction *, QAction *> mLinks; // window action -> editor action
    bool mProjectOpen = false;
};

} // namespace Morvane
