// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/timeline.h"

#include "model/animation.h"
#include "model/commands/mainlinekeycommands.h"
#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/ownedlist.h"
#include "model/rigxdata.h"
#include "model/timelinekey.h"
#include "model/entityinfo.h"

#include <algorithm>

namespace Morvane {

Timeline::Timeline(Object *object, const QString &name, int id)
    : MorvaneModelItem(MorvaneItemType::Timeline)
    , mId(id)
    , mName(name)
{
    setObject(object);
}

Timeline::Timeline(const Timeline &other)
    : MorvaneModelItem(MorvaneItemType::Timeline)
    , mId(other.mId)
    , mName(other.mName)
    , mObject(other.mObject)
{
    mKeys.reserve(other.mKeys.size());
    for (const auto &k : other.mKeys) {
        auto copy = std::make_unique<TimelineKey>(*k);
        copy->setParentItem(this);
        mKeys.push_back(std::move(copy));
    }
}

Timeline::~Timeline()
{
    clearAllLinksAndChildren();
}

Object *Timeline::object() const
{
    return mObject.isValid() ? mObject.object() : nullptr;
}

void Timeline::setObject(Object *object)
{
    mObject = Address();
    if (object)
        mObject.setDirectPointer(object);
}

int Timeline::objectType() const
{
    const Object *o = object();
    return o ? o->objectType() : 0;
}

QString Timeline::objectTypeString(bool shortName) const
{
    return Object::objectTypeString(objectType(), shortName);
}

bool Timeline::isBone() const { return objectType() == Object::Bone; }
bool Timeline::isSprite() const { return objectType() == Object::Sprite; }
bool Timeline::isBox() const { return objectType() == Object::Box; }
bool Timeline::isPoint() const { return objectType() == Object::Point; }
bool Timeline::isSkin() const { return objectType() == Object::Skin; }
bool Timeline::isSubEntity() const { return objectType() == Object::SubEntity; }
bool Timeline::isSound() const { return objectType() == Object::Sound; }
bool Timeline::isEvent() const { return objectType() == Object::Event; }
bool Timeline::isGuideLine() const { return objectType() == Object::GuideLine; }
bool Timeline::isGuideBox() const { return objectType() == Object::GuideBox; }
bool Timeline::isGuideSprite() const { return objectType() == Object::GuideSprite; }

TimelineKey *Timeline::key(int index) const
{
    return ownedAt(mKeys, index);
}

int Timeline::lowerBound(int time) const
{
    const auto it = std::lower_bound(mKeys.begin(), mKeys.end(), time,
                                     [](const auto &k, int t) { return k->time(true) < t; });
    return int(it - mKeys.begin());
}

int Timeline::upperBound(int time) const
{
    const auto it = std::upper_bound(mKeys.begin(), mKeys.end(), time,
                                     [](int t, const auto &k) { return t < k->time(true); });
    return int(it - mKeys.begin());
}

TimelineKey *Timeline::keyInForce(int time) const
{
    const int after = upperBound(time);
    return key(after > 0 ? after - 1 : 0);
}

int Timeline::indexOfKey(const TimelineKey *key) const
{
    if (!key || key->parentItem() != this)
        return -1;
    // Among the keys at its time first; a list out of order is searched whole.
    for (int i = lowerBound(key->time(true)); i < keyCount(); ++i) {
        if (mKeys[size_t(i)].get() == key)
            return i;
        if (mKeys[size_t(i)]->time(true) != key->time(true))
            break;
    }
    return indexOfOwned(mKeys, key);
}

TimelineKey *Timeline::keyFromMainKeyId(int mainKeyId) const
{
    for (const auto &k : mKeys) {
        if (k->mainKeyId() == mainKeyId && k->mainKey())
            return k.get();
    }
    return nullptr;
}

TimelineKey *Timeline::keyFromTimeKeyId(int id) const
{
    for (const auto &k : mKeys) {
        if (k->id() == id)
            return k.get();
    }
    return nullptr;
}

TimelineKey *Timeline::keyFromTimes(int from, int to) const
{
    TimelineKey *k = key(lowerBound(from));
    return k && k->time(true) <= to ? k : nullptr;
}

TimelineKey *Timeline::actualKeyFromTime(int time, bool useCached, bool mainlineOnly) const
{
    // Without the cache a detached key's time is "no time", which no search finds.
    if (!useCached && time == TimelineKey::NoTime) {
        for (const auto &k : mKeys) {
            if (!k->mainKey() && !mainlineOnly)
                return k.get();
        }
        return nullptr;
    }
    for (int i = lowerBound(time); i < keyCount(); ++i) {
        TimelineKey *k = mKeys[size_t(i)].get();
        if (k->time(true) != time)
            break;
        if (mainlineOnly && !k->mainKey())
            continue;
        if (k->time(useCached) == time)
            return k;
    }
    return nullptr;
}

void Timeline::appendTimelineKey(TimelineKey *key, bool sort, bool linkToMainline)
{
    if (!key)
        return;
    key->setParentItem(this);
    if (sort) {
        // After the last key at or before its time, found from the end: appending in time
        // order, as editing and loading do, costs nothing.
        const int time = key->time(true);
        size_t at = mKeys.size();
        while (at > 0 && mKeys[at - 1]->time(true) > time)
            --at;
        mKeys.emplace(mKeys.begin() + std::ptrdiff_t(at), key);
    } else {
        mKeys.emplace_back(key);
    }
    if (!linkToMainline)
        return;
    Animation *anim = parentAnimation();
    if (!anim)
        return;
    MainlineKey *current = key->mainKey();
    if (current && current->parentItem() == anim)
        return;
    if (MainlineKey *mk = anim->mainlineKeyFromTime(key->time(true), true))
        mk->addChildTimelineKey(key);
}

void Timeline::createUndoFromKey(const TimelineKey &key, bool flagA, bool,
                                 bool withoutMainline)
{
    RigxData *doc = document();
    Animation *anim = parentAnimation();
    if (!doc || !anim)
        return;
    const int t = key.time(true);
    if (TimelineKey *existing = actualKeyFromTime(t)) {
        doc->pushUndo(new TimeKeyDisplayInfoChangeCommand(existing, key.info(), flagA));
        if (isSubEntity())
            doc->pushUndo(new TimelineKeyEntityInfoChangeCommand(existing, key.entityInfo(), flagA));
        return;
    }
    if (!withoutMainline && !anim->mainlineKeyAtExactTime(t) && !isSound() && !isEvent())
        doc->pushUndo(new AppendMainlineKeyCommand(anim, t));

    TimelineKey added(key);
    added.setCachedTime(t);
    if (isBone() || isSubEntity())
        added.info().setPivotX(0.5, false);
    if ((isSprite() || isSkin()) && !added.fileInfo().isValid()) {
        // The image comes from the key in force before this time.
        const TimelineKey *before = nullptr;
        for (const auto &k : mKeys) {
            if (k->time(true) < t)
                before = k.get();
        }
        if (before)
            added.setFileInfo(before->fileInfo());
    }
    doc->pushUndo(new AppendTimelineKeyCommand(added, this, !withoutMainline, nullptr));

    if (withoutMainline)
        return;
    MainlineKey *mk = anim->mainlineKeyAtExactTime(t);
    TimelineKey *now = actualKeyFromTime(t);
    if (mk && now)
        doc->pushUndo(new AssignChildKeyToMainlineKeyCommand(now, mk));
}

bool Timeline::removeKey(TimelineKey *key, bool destroy)
{
    if (!key || key->parentItem() != this)
        return false;
    if (MainlineKey *mk = key->mainKey())
        mk->removeChildKey(key);
    const int i = indexOfKey(key);
    if (i < 0)
        return false;
    std::unique_ptr<TimelineKey> owned = std::move(mKeys[size_t(i)]);
    mKeys.erase(mKeys.begin() + i);
    key->setParentItem(nullptr);
    if (!destroy)
        owned.release();
    return true;
}

bool Timeline::deleteKeyByTime(int time)
{
    TimelineKey *k = actualKeyFromTime(time);
    return k && removeKey(k, true);
}

int Timeline::sortKeysByTime(int followedPosition)
{
    return sortOwnedByKey(&mKeys, followedPosition,
                          [](const TimelineKey &k) { return k.time(true); });
}

Animation *Timeline::parentAnimation() const
{
    MorvaneModelItem *p = parentItem();
    if (p && p->morvaneItemType() == MorvaneItemType::Animation)
        return static_cast<Animation *>(p);
    return nullptr;
}

Entity *Timeline::parentEntity() const
{
    const Animation *anim = parentAnimation();
    return anim ? anim->parentEntity() : nullptr;
}

Address Timeline::address() const
{
    const Animation *anim = parentAnimation();
    Address a = anim ? anim->address() : Address();
    a.set(2, anim ? anim->indexOfTimeline(this) : -1);
    a.setDirectPointer(const_cast<Timeline *>(this));
    return a;
}

int Timeline::indexOfChild(const MorvaneModelItem *child) const
{
    if (!child || child->morvaneItemType() != MorvaneItemType::TimelineKey)
        return -1;
    return indexOfKey(static_cast<const TimelineKey *>(child));
}

bool Timeline::removeChildItem(MorvaneModelItem *child)
{
    if (!child || child->morvaneItemType() != MorvaneItemType::TimelineKey)
        return false;
    return removeKey(static_cast<TimelineKey *>(child), false);
}

void Timeline::clearAllLinksAndChildren()
{
    MorvaneModelItem::clearAllLinksAndChildren();
    mKeys.clear();
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

} // namespace Morvane
