// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

class QUndoStack;

namespace Morvane {

class Animation;
class Entity;
class MorvaneCanvasScene;
class ObjectGraphicsProxy;
class RigxData;

/// What the user is working on: the document, the shown entity and
/// animation, the current time and the selected objects. The canvas scene
/// holds the state; every other piece (timeline, panels, export) reads and
/// changes it here and follows its signals, so they all agree. Hold no model
/// pointer from here across an edit: ask again after `documentEdited`.
class EditorSession : public QObject
{
    Q_OBJECT

public:
    explicit EditorSession(MorvaneCanvasScene *scene, QObject *parent = nullptr);

    /// The window's session; null until the window publishes one (the
    /// command-line tool and tests make their own).
    static EditorSession *current();
    static void setCurrent(EditorSession *session);

    MorvaneCanvasScene *scene() const { return mSceneAlive ? mScene : nullptr; }
    RigxData *document() const;
    QUndoStack *undoStack() const;
    Entity *currentEntity() const;
    Animation *currentAnimation() const;
    /// Shows `animation` (one of the document's) at the current time.
    void setCurrentAnimation(Animation *animation);
    int currentTime() const;
    void setCurrentTime(int ms);
    QList<ObjectGraphicsProxy *> selection() const;
    void setSelection(const QList<ObjectGraphicsProxy *> &proxies);

Q_SIGNALS:
    /// Another document (or none) is shown.
    void documentChanged();
    void animationChanged();
    void timeChanged(int ms);
    void selectionChanged();
    /// The document changed: an edit was done, undone or redone.
    void documentEdited();

private:
    MorvaneCanvasScene *mScene;
    QPointer<QObject> mSceneAlive; // the scene may go first

};

} // namespace Morvane
