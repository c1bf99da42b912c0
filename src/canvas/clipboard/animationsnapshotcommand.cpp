// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/clipboard/animationsnapshotcommand.h"

#include "canvas/morvanecanvasscene.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/timeline.h"

namespace Morvane {

AnimationSnapshotCommand::AnimationSnapshotCommand(MorvaneCanvasScene *scene, Animation *current,
                                                   std::unique_ptr<Animation> after,
                                                   const QString &text, QUndoCommand *parent)
    : QUndoCommand(text, parent)
    , mScene(scene)
{
    Entity *entity = current ? current->parentEntity() : nullptr;
    if (!entity || !after)
        return;
    mDocument = entity->parentRigx();
    mEntity = mDocument ? mDocument->indexOfEntity(entity) : -1;
    mRow = entity->indexOfAnimation(current);
    mBefore = snapshot(current->clone());
    mAfter = snapshot(std::move(after));
}

AnimationSnapshotCommand::~AnimationSnapshotCommand() = default;

AnimationSnapshotCommand::Snapshot
AnimationSnapshotCommand::snapshot(std::unique_ptr<Animation> animation) const
{
    Snapshot s;
    Entity *entity = mDocument ? mDocument->entity(mEntity) : nullptr;
    for (int i = 0; entity && i < animation->timelineCount(); ++i)
        s.objectIndexes.append(entity->indexOfObject(animation->timeline(i)->object()));
    s.animation = std::move(animation);
    return s;
}

void AnimationSnapshotCommand::apply(const Snapshot &snapshot)
{
    Entity *entity = mDocument ? mDocument->entity(mEntity) : nullptr;
    if (!entity || !snapshot.animation || !entity->animation(mRow))
        return;
    auto *copy = new Animation(*snapshot.animation);
    for (int i = 0; i < copy->timelineCount(); ++i)
        copy->timeline(i)->setObject(entity->object(snapshot.objectIndexes.value(i, -1)));
    delete entity->removeAnimation(mRow);
    entity->insertAnimation(mRow, copy);
    // The scene still names the animation that just went: show the new one.
    if (mScene)
        mScene->refresh();
}

void AnimationSnapshotCommand::redo()
{
    apply(mAfter);
}

void AnimationSnapshotCommand::undo()
{
    apply(mBefore);
}

} // namespace Morvane
