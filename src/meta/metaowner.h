// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"

namespace Morvane {

class Animation;
class Entity;
class Object;
class RigxData;
class Timeline;
class ValInfoCollection;
class ValueLineHolder;

/// Names the owner of variable declarations or value lines by row numbers; the
/// undo commands hold it as an address and find it again on every step:
///   declarations: entity index, and the object index for an object's;
///   value lines:  entity index, animation index, and the object index for an
///                 object's lines (-1 for the entity's own lines).
struct MetaOwner
{
    int entityIndex = -1;
    int animationIndex = -1;
    int objectIndex = -1;

    static MetaOwner forEntity(const Entity *entity);
    static MetaOwner forObject(const Object *object);
    /// The animation's own (the entity's) lines.
    static MetaOwner forAnimation(const Animation *animation);
    /// The lines of the timeline's object in the timeline's animation.
    static MetaOwner forTimeline(const Timeline *timeline);
    static MetaOwner forAnimationObject(const Animation *animation, int objectIndex);

    bool isObject() const { return objectIndex >= 0; }
    bool operator==(const MetaOwner &) const = default;

    Entity *entity(const RigxData *document) const;
    Object *object(const RigxData *document) const;
    Animation *animation(const RigxData *document) const;
    /// The addresses the undo commands find the owner by: (entity) or (entity,
    /// object) for declarations; (entity, animation) or (entity, animation,
    /// object) for value lines.
    Address declarationsAddress(RigxData *document) const;
    Address linesAddress(RigxData *document) const;
    /// The declarations of the entity or object; null when it does not resolve.
    ValInfoCollection *infoCollection(RigxData *document) const;
    /// The value lines of the owner in the animation, created empty when the
    /// object has none yet; null when the indexes do not resolve.
    ValueLineHolder *lineHolder(RigxData *document) const;
};

} // namespace Morvane
