// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "eval/entityinstance.h"

#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "model/timeunits.h"

#include <QtGlobal>

#include <cmath>
#include <limits>

namespace Morvane {

namespace {

constexpr int UnresolvedLength = 1000;

/// Wraps into 0..length, a time equal to the length staying.
int wrappedTime(int time, int length)
{
    if (length <= 0)
        return 0;
    // Whole lengths at once; the same as stepping by one length at a time.
    if (time > length)
        return (time - 1) % length + 1;
    if (time < 0) {
        time %= length;
        if (time < 0)
            time += length;
    }
    return time;
}

} // namespace

EntityInstance::EntityInstance(Entity *entity, Animation *animation)
{
    setAnimation(entity, animation);
}

EntityInstance::EntityInstance(EntityInstance *parent, int depth)
    : mParent(parent)
    , mDepth(depth)
{
}

EntityInstance::~EntityInstance() = default;

void EntityInstance::setAnimation(Entity *entity, Animation *animation)
{
    if (!animation && entity && entity->animationCount() > 0)
        animation = entity->animation(0);
    if (entity == mEntity && animation == mAnimation)
        return;
    mEntity = entity;
    mAnimation = animation;
    mDirty = true;
}

void EntityInstance::setCurrentAnimation(Animation *animation)
{
    setAnimation(animation ? animation->parentEntity() : mEntity, animation);
}

int EntityInstance::currentTime(bool curved) const
{
    if (!curved || !mAnimation)
        return mTime;
    return mAnimation->sampleTime(mTime, true);
}

void EntityInstance::setCurrentTime(int ms)
{
    mTime = ms;
    refresh();
}

void EntityInstance::invalidate()
{
    mDirty = true;
    for (const auto &sub : mSubEntities)
        sub->invalidate();
}

int EntityInstance::animationLength() const
{
    return mAnimation ? mAnimation->length() : UnresolvedLength;
}

void EntityInstance::rebuild()
{
    mEvaluator.rebuild(mAnimation);
    mEvaluator.reserve(mPose);

    // One instance per sub-entity timeline; an instance that stays on the
    // same timeline keeps its clock.
    std::vector<std::unique_ptr<SubEntityInstance>> previous;
    previous.swap(mSubEntities);
    if (mAnimation) {
        for (int i = 0; i < mAnimation->timelineCount(); ++i) {
            if (!mAnimation->timeline(i)->isSubEntity())
                continue;
            if (mDepth + 1 > MaxNestingDepth) {
                reportNestingLimit();
                break;
            }
            std::unique_ptr<SubEntityInstance> sub;
            for (auto &old : previous) {
                if (old && old->timelineIndex() == i) {
                    sub = std::move(old);
                    break;
                }
            }
            if (!sub)
                sub = std::make_unique<SubEntityInstance>(this, i);
            mSubEntities.push_back(std::move(sub));
        }
    }
    mDirty = false;
}

void EntityInstance::refresh()
{
    if (mDirty)
        rebuild();
    mEvaluator.evaluate(mTime, mPose);
    refreshSubEntities();
}

void EntityInstance::advanceTime(int ms)
{
    if (ms == 0)
        return;
    for (const auto &sub : mSubEntities)
        sub->advanceTime(double(ms));
    refreshSubEntities();
}

void EntityInstance::refreshSubEntities()
{
    for (const auto &sub : mSubEntities) {
        const PoseItem *item = nullptr;
        for (const PoseItem &object : mPose.objects) {
            if (object.timelineIndex == sub->timelineIndex()) {
                item = &object;
                break;
            }
        }
        sub->setShown(item != nullptr);
        if (!item)
            continue;
        sub->refreshSubEntity(
            EntityInfo(item->key->entityInfo(), item->nextKey->entityInfo(), item->ratio));
    }
}

SubEntityInstance *EntityInstance::subEntity(int index) const
{
    if (index < 0 || index >= subEntityCount())
        return nullptr;
    return mSubEntities[size_t(index)].get();
}

SubEntityInstance *EntityInstance::subEntityForTimeline(int timelineIndex) const
{
    for (const auto &sub : mSubEntities) {
        if (sub->timelineIndex() == timelineIndex)
            return sub.get();
    }
    return nullptr;
}

bool EntityInstance::nestingLimitReached() const
{
    const EntityInstance *root = this;
    while (root->mParent)
        root = root->mParent;
    return root->mNestingLimitReported;
}

void EntityInstance::reportNestingLimit()
{
    EntityInstance *root = this;
    while (root->mParent)
        root = root->mParent;
    if (root->mNestingLimitReported)
        return;
    root->mNestingLimitReported = true;
    qWarning("Sub-entities nest deeper than %d levels (an entity that contains itself?); "
             "the deeper levels are not shown.",
             MaxNestingDepth);
}

SubEntityInstance::SubEntityInstance(EntityInstance *parent, int timelineIndex)
    : EntityInstance(parent, parent ? parent->depth() + 1 : 1)
    , mTimelineIndex(timelineIndex)
{
}

void SubEntityInstance::advanceTime(double ms)
{
    if (!mInfo.isUsingSpeed()) {
        for (int i = 0; i < subEntityCount(); ++i)
            subEntity(i)->advanceTime(ms);
        return;
    }
    const double step = ms * mInfo.speedRatio;
    mTime = wrappedTime(truncatedTime(mTime + step), animationLength());
    const double nestedStep = truncatedTime(step);
    for (int i = 0; i < subEntityCount(); ++i)
        subEntity(i)->advanceTime(nestedStep);
}

void SubEntityInstance::refreshSubEntity(const EntityInfo &info)
{
    mInfo = info;

    // Keys name the animation by (entity index, animation index) in the
    // parent's document.
    Animation *animation = nullptr;
    if (info.animation.document()) {
        animation = info.animation.animation();
    } else if (const Entity *parentEntity =
                   parentInstance() ? parentInstance()->entity() : nullptr) {
        if (const RigxData *document = parentEntity->parentRigx())
            animation = document->animationFromNumericIndexes(info.animation.entityIndex(),
                                                              info.animation.animationIndex());
    }
    setAnimation(animation ? animation->parentEntity() : nullptr, animation);

    if (!info.isUsingSpeed())
        mTime = truncatedTime(info.timeRatio * animationLength());
    refresh();
}

} // namespace Morvane
