// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "eval/pose.h"
#include "eval/poseevaluator.h"
#include "model/entityinfo.h"

#include <QStringList>

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
///
/// What a file asks for is bounded: sub-entities nest at most `MaxNestingDepth`
/// levels, and one top-level instance holds at most `MaxSubEntityInstances`
/// sub-entity instances over all levels. A sub-entity past either bound gets no
/// instance (`subEntityForTimeline` gives null): it shows as a plain
/// placeholder without children. Each bound is reported once in `warnings()`.
class EntityInstance
{
public:
    /// How deep sub-entities nest before the next level is left out: an entity
    /// that shows itself, directly or through others, stops there.
    static constexpr int MaxNestingDepth = 8;
    /// How many sub-entity instances one top-level instance holds, all levels
    /// together. Depth alone does not bound them: an entity holding five copies
    /// of itself asks for 5^8 instances within `MaxNestingDepth`. Levels fill
    /// from the top, so the deepest levels are the ones left out.
    static constexpr int MaxSubEntityInstances = 2000;

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
    /// `MaxNestingDepth` (reported once in `warnings()`).
    bool nestingLimitReached() const;
    /// Whether sub-entities below this top-level instance were left out for
    /// `MaxSubEntityInstances` (reported once in `warnings()`).
    bool instanceLimitReached() const;
    /// The live sub-entity instances below this instance's top-level instance,
    /// all levels together; at most `MaxSubEntityInstances`.
    int subEntityInstanceCount() const;
    /// What the top-level instance left out, one line per bound reached, for
    /// the caller to show (`morvane-cli pose` prints them on the diagnostic
    /// output). Each is given once for the instance's lifetime.
    QStringList warnings() const;

protected:
    EntityInstance(EntityInstance *parent, int depth);

    /// The animation's length, 1000 ms when there is no animation.
    int animationLength() const;

    int mTime = 0;

private:
    friend class SubEntityInstance;

    void rebuild();
    /// Poses this instance's shown sub-entities at what the current pose's
    /// keys ask for, without going further down.
    void poseSubEntities();
    void reportNestingLimit();
    void reportInstanceLimit();

    Entity *mEntity = nullptr;
    Animation *mAnimation = nullptr;
    EntityInstance *mParent = nullptr;
    EntityInstance *mRoot = this; // the top-level instance; it keeps the counts
    int mDepth = 0;
    bool mDirty = true;
    // Kept by the top-level instance only.
    bool mNestingLimitReported = false;
    bool mInstanceLimitReported = false;
    int mLiveSubEntities = 0;
    QStringList mWarnings;

    PoseEvaluator mEvaluator;
    Pose mPose;
    std::vector<std::unique_ptr<SubEntityInstance>> mSubEntities;
    // Index into mSubEntities per timeline of the animation, -1 for none.
    std::vector<int> mSubOfTimeline;
    // The instances still to pose in `refreshSubEntities`, kept so that
    // re-posing does not allocate.
    std::vector<EntityInstance *> mQueue;
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
    ~SubEntityInstance() override;

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
    friend class EntityInstance;

    /// Takes the animation and, with the time-ratio method, the time that
    /// `info` asks for, without posing.
    void follow(const EntityInfo &info);

    int mTimelineIndex;
    bool mShown = false;
    EntityInfo mInfo;
};

} // namespace Morvane
