// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// The evaluation operations of the model classes: which keys are in force at a
// time, how they blend and how references compose onto their parent bones.
// They live here, beside the rest of the evaluation, so that the model files
// hold only structure. PoseEvaluator computes the same values in bulk.

#include "eval/displayinfo.h"
#include "eval/entityinfo.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Morvane {

namespace {

int truncatedTime(double t)
{
    if (!(t > double(std::numeric_limits<int>::min())))
        return std::numeric_limits<int>::min();
    if (!(t < double(std::numeric_limits<int>::max())))
        return std::numeric_limits<int>::max();
    return int(t); // toward zero
}

} // namespace

double MainlineKey::curvedTime(double t) const
{
    const Animation *animation = parentAnimation();
    if (!animation)
        return t;
    const double start = mTime;
    double end = start;
    if (const MainlineKey *next = nextMainlineKey())
        end = next->currentTime();
    else if (animation->mainlineKeyCount() > 1)
        end = double(animation->mainlineKey(0)->currentTime()) + animation->length();
    if (end == start)
        return start;
    const double ratio = (t - start) / (end - start);
    return start + mCurve.trueT(ratio) * (end - start);
}

void MainlineKey::updateCurrentInfo(int sampleTime)
{
    // Bones first so that objects see their parents refreshed; each reference
    // composes its own chain, so the order only matters for the caches.
    for (const auto &ref : mBoneRefs)
        ref->updateCurrentInfo(sampleTime);
    for (const auto &ref : mZRefs)
        ref->updateCurrentInfo(sampleTime);
}

void Timeline::keyPairFromTime(int time, const TimelineKey **first, const TimelineKey **second,
                               double *ratio) const
{
    *first = nullptr;
    *second = nullptr;
    *ratio = 0.0;
    const int count = keyCount();
    if (count == 0)
        return;

    // The last key at or before `time`; keys are kept in time order.
    int lo = 0;
    int hi = count - 1;
    int found = -1;
    while (lo <= hi) {
        const int mid = lo + (hi - lo) / 2;
        if (mKeys[size_t(mid)]->time(true) <= time) {
            found = mid;
            lo = mid + 1;
        } else {
            hi = mid - 1;
        }
    }
    if (found < 0) {
        *first = *second = mKeys.front().get();
        return;
    }

    const TimelineKey *a = mKeys[size_t(found)].get();
    const TimelineKey *b = nullptr;
    double bTime = 0.0;
    if (found + 1 < count) {
        b = mKeys[size_t(found + 1)].get();
        bTime = b->time(true);
    } else {
        const Animation *animation = parentAnimation();
        if (animation && animation->isLooping()) {
            b = mKeys.front().get();
            bTime = double(b->time(true)) + animation->length();
        }
    }
    *first = a;
    const double aTime = a->time(true);
    if (!b || bTime <= aTime) {
        // Held: after the last key without looping, or keys out of order.
        *second = a;
        return;
    }
    *second = b;
    *ratio = a->trueT((time - aTime) / (bTime - aTime));
}

TimelineKey Timeline::keyFromTime(int time) const
{
    const TimelineKey *a = nullptr;
    const TimelineKey *b = nullptr;
    double r = 0.0;
    keyPairFromTime(time, &a, &b, &r);
    if (!a)
        return TimelineKey();
    TimelineKey blended(*a);
    blended.setInfo(DisplayInfo(a->info(), b->info(), r));
    // Keys of other timelines carry neither, and stay without.
    const Timeline *timeline = a->parentTimeline();
    if (a->hasEntityOrSoundInfo() || b->hasEntityOrSoundInfo()
        || (timeline && (timeline->isSound() || timeline->isSubEntity()))) {
        blended.entityInfo() = EntityInfo(a->entityInfo(), b->entityInfo(), r);
        SoundInfo &sound = blended.soundInfo();
        sound.volume = a->soundInfo().volume + (b->soundInfo().volume - a->soundInfo().volume) * r;
        sound.panning =
            a->soundInfo().panning + (b->soundInfo().panning - a->soundInfo().panning) * r;
        if (r >= 1.0)
            sound.trigger = b->soundInfo().trigger;
        else if (r > 0.0)
            sound.trigger = false;
    }
    blended.setCachedTime(time);
    return blended;
}

DisplayInfo Timeline::displayInfoFromTime(int time) const
{
    const TimelineKey *a = nullptr;
    const TimelineKey *b = nullptr;
    double r = 0.0;
    keyPairFromTime(time, &a, &b, &r);
    if (!a)
        return DisplayInfo();
    return DisplayInfo(a->info(), b->info(), r);
}

DisplayInfo ObjectRef::unmappedInfo(int sampleTime) const
{
    const Timeline *tl = timeline();
    DisplayInfo info = tl ? tl->displayInfoFromTime(sampleTime) : DisplayInfo();

    // Compose up the chain iteratively: collect the parents (bounded, so a
    // parent cycle from a damaged file ends), then apply them root first.
    const ObjectRef *chain[MaxParentDepth];
    int depth = 0;
    for (const ObjectRef *p = parentRef(); p && depth < MaxParentDepth; p = p->parentRef())
        chain[depth++] = p;
    if (depth == 0)
        return info;
    const Timeline *rootTimeline = chain[depth - 1]->timeline();
    DisplayInfo parent =
        rootTimeline ? rootTimeline->displayInfoFromTime(sampleTime) : DisplayInfo();
    for (int i = depth - 2; i >= 0; --i) {
        const Timeline *ptl = chain[i]->timeline();
        const DisplayInfo local = ptl ? ptl->displayInfoFromTime(sampleTime) : DisplayInfo();
        parent = local.unmapFromParentInfo(parent);
    }
    return info.unmapFromParentInfo(parent);
}

void ObjectRef::updateCurrentInfo(int sampleTime)
{
    mCurrentInfo = unmappedInfo(sampleTime);
}

int Animation::sampleTime(int time, bool curved) const
{
    if (!curved)
        return time;
    time = std::clamp(time, 0, std::max(mLength, 0));
    const MainlineKey *key = mainlineKeyFromTime(time);
    if (!key)
        return time;
    return truncatedTime(key->curvedTime(time));
}

void Animation::updateRefCurrentInfo(int time, bool curved)
{
    MainlineKey *key = mainlineKeyFromTime(time);
    if (key)
        key->updateCurrentInfo(sampleTime(time, curved));
}

void Entity::updateRefCurrentInfo(int time, bool curved)
{
    for (const auto &animation : mAnimations)
        animation->updateRefCurrentInfo(time, curved);
}

} // namespace Morvane
