// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/objectcommands.h"

#include "model/animation.h"
#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/timeline.h"

namespace Morvane {

AppendObjectCommand::AppendObjectCommand(Entity *entity, const Object &object,
                                         QUndoCommand *parent)
    : QUndoCommand(parent)
    , mEntity(entity ? freshAddress(entity->address()) : Address())
    , mObject(new Object(object))
{}

AppendObjectCommand::~AppendObjectCommand()
{
    delete mObject;
}

void AppendObjectCommand::redo()
{
    mIndex = -1;
    Entity *entity = freshAddress(mEntity).entity();
    if (!entity)
        return;
    entity->appendObject(new Object(*mObject), -1, false);
    mIndex = entity->objectCount() - 1;
}

void AppendObjectCommand::undo()
{
    Entity *entity = freshAddress(mEntity).entity();
    Object *object = entity && mIndex >= 0 ? entity->object(mIndex) : nullptr;
    if (!object || mIndex != entity->objectCount() - 1 || object->name() != mObject->name())
        return;
    if (entity->removeObject(object))
        delete object;
    mIndex = -1;
}

AppendTimelineCommand::AppendTimelineCommand(Animation *animation, int objectIndex,
                                             const QString &name, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mAnimation(animation ? freshAddress(animation->address()) : Address())
    , mObjectIndex(objectIndex)
    , mName(name)
{}

void AppendTimelineCommand::redo()
{
    mIndex = -1;
    Animation *anim = freshAddress(mAnimation).animation();
    Entity *entity = anim ? anim->parentEntity() : nullptr;
    Object *object = entity ? entity->object(mObjectIndex) : nullptr;
    if (!object)
        return;
    anim->appendTimeline(new Timeline(object, mName));
    mIndex = anim->timelineCount() - 1;
}

void AppendTimelineCommand::undo()
{
    Animation *anim = freshAddress(mAnimation).animation();
    Timeline *tl = anim && mIndex >= 0 ? anim->timeline(mIndex) : nullptr;
    if (!tl || mIndex != anim->timelineCount() - 1 || tl->keyCount() > 0)
        return;
    anim->deleteTimeline(mIndex);
    mIndex = -1;
}

RemoveTimelineCommand::RemoveTimelineCommand(Animation *animation, int index, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mAnimation(animation ? freshAddress(animation->address()) : Address())
    , mIndex(index)
{
}

RemoveTimelineCommand::~RemoveTimelineCommand()
{
    delete mRemoved;
}

void RemoveTimelineCommand::redo()
{
    Animation *anim = freshAddress(mAnimation).animation();
    Timeline *tl = anim && !mRemoved ? anim->timeline(mIndex) : nullptr;
    if (!tl || tl->keyCount() > 0)
        return;
    for (int m = 0; m < anim->mainlineKeyCount(); ++m) {
        if (anim->mainlineKey(m)->refFromTimeline(tl))
            return;
    }
    if (anim->removeTimeline(tl))
        mRemoved = tl;
}

void RemoveTimelineCommand::undo()
{
    Animation *anim = freshAddress(mAnimation).animation();
    if (!anim || !mRemoved || mIndex > anim->timelineCount())
        return;
    anim->appendTimeline(mRemoved, mIndex, true);
    mRemoved = nullptr;
}

} // namespace Morvane
