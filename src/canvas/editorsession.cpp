// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/editorsession.h"

#include "canvas/morvanecanvasscene.h"

namespace Morvane {

namespace {
QPointer<EditorSession> sCurrent;
}

EditorSession::EditorSession(MorvaneCanvasScene *scene, QObject *parent)
    : QObject(parent)
    , mScene(scene)
    , mSceneAlive(scene)
{
    connect(scene, &MorvaneCanvasScene::documentShown, this, &EditorSession::documentChanged);
    connect(scene, &MorvaneCanvasScene::currentAnimationChanged, this,
            &EditorSession::animationChanged);
    connect(scene, &MorvaneCanvasScene::currentTimeChanged, this, &EditorSession::timeChanged);
    connect(scene, &MorvaneCanvasScene::selectionChanged, this, &EditorSession::selectionChanged);
    connect(scene, &MorvaneCanvasScene::documentEdited, this, &EditorSession::documentEdited);
}

EditorSession *EditorSession::current()
{
    return sCurrent;
}

void EditorSession::setCurrent(EditorSession *session)
{
    sCurrent = session;
}

RigxData *EditorSession::document() const
{
    return scene() ? mScene->model() : nullptr;
}

QUndoStack *EditorSession::undoStack() const
{
    return scene() ? mScene->undoStack() : nullptr;
}

Entity *EditorSession::currentEntity() const
{
    return scene() ? mScene->currentEntity() : nullptr;
}

Animation *EditorSession::currentAnimation() const
{
    return scene() ? mScene->currentAnimation() : nullptr;
}

void EditorSession::setCurrentAnimation(Animation *animation)
{
    if (scene())
        mScene->setCurrentAnimation(animation);
}

int EditorSession::currentTime() const
{
    return scene() ? mScene->currentTime() : 0;
}

void EditorSession::setCurrentTime(int ms)
{
    if (scene())
        mScene->setCurrentTime(ms);
}

QList<ObjectGraphicsProxy *> EditorSession::selection() const
{
    return scene() ? mScene->selectedProxies() : QList<ObjectGraphicsProxy *>();
}

void EditorSession::setSelection(const QList<ObjectGraphicsProxy *> &proxies)
{
    if (scene())
        mScene->setSelectedProxies(proxies);
}

} // namespace Morvane
