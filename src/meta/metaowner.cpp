// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/metaowner.h"

#include "meta/editvaluelineholdercommand.h"
#include "meta/editvarcollectioncommand.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

namespace Morvane {

namespace {

int entityIndexOf(const Entity *entity)
{
    const RigxData *doc = entity ? entity->document() : nullptr;
    return doc ? doc->indexOfEntity(entity) : -1;
}

} // namespace

MetaOwner MetaOwner::forEntity(const Entity *entity)
{
    MetaOwner owner;
    owner.entityIndex = entityIndexOf(entity);
    return owner;
}

MetaOwner MetaOwner::forObject(const Object *object)
{
    MetaOwner owner;
    const Entity *entity = object ? object->parentEntity() : nullptr;
    owner.entityIndex = entityIndexOf(entity);
    owner.objectIndex = entity ? entity->indexOfObject(object) : -1;
    return owner;
}

MetaOwner MetaOwner::forAnimation(const Animation *animation)
{
    return forAnimationObject(animation, -1);
}

MetaOwner MetaOwner::forTimeline(const Timeline *timeline)
{
    if (!timeline)
        return {};
    const Entity *entity = timeline->parentEntity();
    const int objectIndex = entity ? entity->indexOfObject(timeline->object()) : -1;
    if (objectIndex < 0)
        return {};
    return forAnimationObject(timeline->parentAnimation(), objectIndex);
}

MetaOwner MetaOwner::forAnimationObject(const Animation *animation, int objectIndex)
{
    MetaOwner owner;
    const Entity *entity = animation ? animation->parentEntity() : nullptr;
    owner.entityIndex = entityIndexOf(entity);
    owner.animationIndex = entity ? entity->indexOfAnimation(animation) : -1;
    owner.objectIndex = objectIndex;
    return owner;
}

Entity *MetaOwner::entity(const RigxData *document) const
{
    return document ? document->entity(entityIndex) : nullptr;
}

Object *MetaOwner::object(const RigxData *document) const
{
    Entity *e = entity(document);
    return e ? e->object(objectIndex) : nullptr;
}

Animation *MetaOwner::animation(const RigxData *document) const
{
    Entity *e = entity(document);
    return e ? e->animation(animationIndex) : nullptr;
}

Address MetaOwner::declarationsAddress(RigxData *document) const
{
    if (isObject())
        return Address(document, {entityIndex, objectIndex});
    return Address(document, {entityIndex});
}

Address MetaOwner::linesAddress(RigxData *document) const
{
    if (isObject())
        return Address(document, {entityIndex, animationIndex, objectIndex});
    return Address(document, {entityIndex, animationIndex});
}

ValInfoCollection *MetaOwner::infoCollection(RigxData *document) const
{
    return EditVarCollectionCommand::collectionAt(declarationsAddress(document));
}

ValueLineHolder *MetaOwner::lineHolder(RigxData *document) const
{
    return EditValueLineHolderCommand::holderAt(linesAddress(document));
}

} // namespace Morvane
