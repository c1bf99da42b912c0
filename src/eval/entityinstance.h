// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/entityinfo.h"
#include "eval/pose.h"
#include "eval/poseevaluator.h"

#include <memory>
#include <vector>

namespace Morvane {

class Animation;
class Entity;
class SubEntityInstance;

/// One playing copy of an entity: the animation shown, its current time and
/// its pose there, and one nested instance per sub-entity timeline.
///
/// The instance reads the model but never changes it. It keeps compiled data
/// of its animation: after an edit of the animation call `invalidate()`, and
/// the next `refresh()` reads it again. Posing at a new time does not allocate.
class EntityInstance
{
public:
    /// How deep sub-entities nest before the next level is left out: an entity
    /// that shows itself, directly or through others, stops there.
    static constexpr int MaxNestingDepth = 8;

    /// Shows `animation` of `entity`, or the entity's first animation when
    /// `animation` is null. Neither is owned.
    explicit EntityInstance(Entity *entity = nullptr, Animation *animation = nullptr);
    EntityInstance(const EntityInstance &) = delete;
    EntityInstance &operator=(const EntityInstance &) = delete;
    virtual ~EntityInstance();

    Entity *entity() const { return mEntity; }
    Animation *currentAnimation() const { return mAnimation; }
    /// Switches to `animation` of `entity` (its first animation when null);
    /// the time is kept. Takes effect at the next `refresh()`.
    void setAnimation(Entity *entity, Animation *animation = nullptr);
    /// Switches to `animation` within its own entity.
    void setCurrentAnimation(Animation *animation);

    /// The current time in milliseconds; with `curved`, the time at which the
    /// timelines are sampled (eased by the mainline key in force, or the plain
    /// time when none is).
    int currentTime(bool curved = false) const;
    /// Sets the time and re-poses the instance and its sub-entities.
    void setCurrentTime(int ms);

    /// The model changed: read the animation again at the next refresh.
    void invalidate();
    /// Poses the instance at its current time, then its sub-entities.
    void refresh();
    /// The pose of the last refresh.
    const Pose &pose() const { return mPose; }

    /// Playback by `ms`: every sub-entity advances (those driven by speed move
    /// their own clocks), then the sub-entities are re-posed. The instance's
    /// own time is set with `setCurrentTime`. Nothing happens for 0.
    void advanceTime(int ms);
    /// Re-poses every sub-entity at what the current pose's keys ask for.
    void refreshSubEntities();

    int subEntityCount() const { return int(mSubEntities.size()); }
    SubEntityInstance *subEntity(int index) const;
    /// The sub-entity instance of the animation's timeline `timelineIndex`.
    SubEntityInstance *subEntityForTimeline(int timelineIndex) const;

    EntityInstance *parentInstance() const { return mParent; }
    /// 0 for a top-level instance, one more per sub-entity level.
    int depth() const { return mDepth; }
    /// Whether sub-entities below this top-level instance were left out at
    /// `MaxNestingDepth` (reported once as a warning).
    bool nestingLimitReached() const;

protected:
    EntityInstance(EntityInstance *parent, int depth);

    /// The animation's length, 1000 ms when there is no animation.
    int animationLength() const;

    int mTime = 0;

private:
    void rebuild();
    void reportNestingLimit();

    Entity *mEntity = nullptr;
    Animation *mAnimation = nullptr;
    EntityInstance *mParent = nullptr;
    int mDepth = 0;
    bool mDirty = true;
    bool mNestingLimitReported = false;
    PoseEvaluator mEvaluator;
    Pose mPose;
    std::vector<std::unique_ptr<SubEntityInstance>> mSubEntities;
};

/// The instance that an object of the sub-entity type plays inside its
/// parent's pose. Its animation and time follow the parent's key data: with
/// the time-ratio method its time is that fraction of its animation's length,
/// with the speed method it keeps a clock of its own that advances at the
/// key's speed ratio.
class SubEntityInstance : public EntityInstance
{
public:
    SubEntityInstance(EntityInstance *parent, int timelineIndex);

    /// The parent animation's timeline that this instance belongs to.
    int timelineIndex() const { return mTimelineIndex; }
    /// Whether the parent's mainline key in force shows the sub-entity.
    bool isShown() const { return mShown; }
    void setShown(bool shown) { mShown = shown; }
    /// The key data the instance was last posed with.
    const EntityInfo &entityInfo() const { return mInfo; }

    /// Playback: with the speed method the own clock moves by `ms` times the
    /// speed ratio, truncated toward zero and wrapped into 0..length (a time
    /// equal to the length stays); nested sub-entities then advance by the
    /// truncated scaled step. With the time-ratio method there is no own
    /// clock, and nested sub-entities advance by `ms` unscaled.
    void advanceTime(double ms);
    /// Switches to the animation `info` names and, with the time-ratio method,
    /// to that fraction of its length (1000 ms when it names none); then
    /// re-poses.
    void refreshSubEntity(const EntityInfo &info);

private:
    int mTimelineIndex;
    bool mShown = false;
    EntityInfo mInfo;
};

} // namespace Morvane
