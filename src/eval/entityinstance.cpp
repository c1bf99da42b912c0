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
    , mRoot(parent ? parent->mRoot : this)
    , mDepth(depth)
{
}

EntityInstance::~EntityInstance()
{
    // The sub-entities uncount themselves from the top-level instance, which
    // must still be whole then.
    mSubEntities.clear();
}

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
    const int timelineCount = mAnimation ? mAnimation->timelineCount() : 0;
    mSubOfTimeline.assign(size_t(timelineCount), -1);
    std::vector<int> wanted;
    for (int i = 0; i < timelineCount; ++i) {
        if (!mAnimation->timeline(i)->isSubEntity())
            continue;
        if (mDepth + 1 > MaxNestingDepth) {
            reportNestingLimit();
            break;
        }
        wanted.push_back(i);
    }
    std::vector<std::unique_ptr<SubEntityInstance>> kept(wanted.size());
    for (size_t w = 0; w < wanted.size(); ++w) {
        for (auto &old : previous) {
            if (old && old->timelineIndex() == wanted[w]) {
                kept[w] = std::move(old);
                break;
            }
        }
    }
    // The instances that go give their share of the budget back first.
    previous.clear();
    for (size_t w = 0; w < wanted.size(); ++w) {
        if (!kept[w]) {
            if (mRoot->mLiveSubEntities >= MaxSubEntityInstances) {
                reportInstanceLimit();
                continue;
            }
            kept[w] = std::make_unique<SubEntityInstance>(this, wanted[w]);
        }
        mSubOfTimeline[size_t(wanted[w])] = int(mSubEntities.size());
        mSubEntities.push_back(std::move(kept[w]));
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
    // Level by level: a parent is posed before its children, and when the
    // instance budget runs out while instances are made, the upper levels are
    // whole and only the deepest ones are left out.
    mQueue.clear();
    mQueue.push_back(this);
    for (size_t next = 0; next < mQueue.size(); ++next) {
        EntityInstance *parent = mQueue[next];
        parent->poseSubEntities();
        for (const auto &sub : parent->mSubEntities) {
            if (sub->isShown())
                mQueue.push_back(sub.get());
        }
    }
}

void EntityInstance::poseSubEntities()
{
    for (const auto &sub : mSubEntities)
        sub->setShown(false);
    for (const PoseItem &item : mPose.objects) {
        if (item.timelineIndex < 0 || size_t(item.timelineIndex) >= mSubOfTimeline.size())
            continue;
        const int index = mSubOfTimeline[size_t(item.timelineIndex)];
        if (index < 0)
            continue;
        SubEntityInstance *sub = mSubEntities[size_t(index)].get();
        sub->setShown(true);
        sub->follow(EntityInfo(item.key->entityInfo(), item.nextKey->entityInfo(), item.ratio));
        if (sub->mDirty)
            sub->rebuild();
        sub->mEvaluator.evaluate(sub->mTime, sub->mPose);
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
    return mRoot->mNestingLimitReported;
}

bool EntityInstance::instanceLimitReached() const
{
    return mRoot->mInstanceLimitReported;
}

int EntityInstance::subEntityInstanceCount() const
{
    return mRoot->mLiveSubEntities;
}

QStringList EntityInstance::warnings() const
{
    return mRoot->mWarnings;
}

void EntityInstance::reportNestingLimit()
{
    if (mRoot->mNestingLimitReported)
        return;
    mRoot->mNestingLimitReported = true;
    mRoot->mWarnings.append(
        QStringLiteral("Sub-entities nest deeper than %1 levels (an entity that contains itself?); "
                       "the deeper levels are not shown.")
            .arg(MaxNestingDepth));
}

void EntityInstance::reportInstanceLimit()
{
    if (mRoot->mInstanceLimitReported)
        return;
    mRoot->mInstanceLimitReported = true;
    const QString name = mRoot->mEntity ? mRoot->mEntity->name() : QString();
    mRoot->mWarnings.append(
        QStringLiteral("Entity \"%1\" shows more than %2 sub-entity instances (sub-entities "
                       "holding several copies of each other?); the rest are shown as empty "
                       "placeholders.")
            .arg(name)
            .arg(MaxSubEntityInstances));
}

SubEntityInstance::SubEntityInstance(EntityInstance *parent, int timelineIndex)
    : EntityInstance(parent, parent ? parent->depth() + 1 : 1)
    , mTimelineIndex(timelineIndex)
{
    ++mRoot->mLiveSubEntities;
}

SubEntityInstance::~SubEntityInstance()
{
    --mRoot->mLiveSubEntities;
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
    follow(info);
    refresh();
}

void SubEntityInstance::follow(const EntityInfo &info)
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
}

} // namespace Morvane
