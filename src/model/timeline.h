// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/displayinfo.h"
#include "model/address.h"
#include "model/morvanemodelitem.h"

#include <QString>

#include <memory>
#include <vector>

namespace Morvane {

class Animation;
class Entity;
class Object;
class TimelineKey;

/// The keys of one object or bone in one animation, kept sorted by time.
///
/// Lookups by key and by time search the sorted list by halving, so that editing loops over
/// many keys stay linear. Whoever changes the time of a key's mainline key puts the list
/// back in order (`sortKeysByTime`); keys at the same time keep their order.
class Timeline : public MorvaneModelItem
{
public:
    explicit Timeline(Object *object = nullptr, const QString &name = QString(), int id = -1);
    /// A deep copy of the keys (values and cached times); the copy is detached
    /// and its keys are linked to no mainline key.
    Timeline(const Timeline &other);
    Timeline &operator=(const Timeline &) = delete;
    ~Timeline() override;

    int id() const { return mId; }
    void setId(int id) { mId = id; }
    QString name() const { return mName; }
    void setName(const QString &name) { mName = name; }

    /// The object info this timeline animates (owned by the entity), or null.
    Object *object() const;
    void setObject(Object *object);
    /// The object's type, or 0 without object.
    int objectType() const;
    QString objectTypeString(bool shortName = false) const;
    bool isBone() const;
    bool isSprite() const;
    bool isBox() const;
    bool isPoint() const;
    bool isSkin() const;
    bool isSubEntity() const;
    bool isSound() const;
    bool isEvent() const;
    bool isGuideLine() const;
    bool isGuideBox() const;
    bool isGuideSprite() const;

    /// Null when out of range / not found.
    TimelineKey *key(int index) const;
    int keyCount() const { return int(mKeys.size()); }
    int indexOfKey(const TimelineKey *key) const;
    TimelineKey *keyFromMainKeyId(int mainKeyId) const;
    TimelineKey *keyFromTimeKeyId(int id) const;
    /// The first key whose time lies in [from, to].
    TimelineKey *keyFromTimes(int from, int to) const;
    /// The key placed exactly at `time`. With `useCached`, detached keys count
    /// with their cached time; with `mainlineOnly`, only keys linked to a
    /// mainline key count.
    TimelineKey *actualKeyFromTime(int time, bool useCached = true, bool mainlineOnly = false) const;

    /// Takes ownership. With `sort`, the key goes after the last key at or before its
    /// time; without, at the end, and the caller sorts once it has appended a batch. With
    /// `linkToMainline`, makes the key a child of the animation's mainline key at its time.
    void appendTimelineKey(TimelineKey *key, bool sort = true, bool linkToMainline = true);
    /// Only a key of this timeline is removed: detached from its mainline key,
    /// taken out and, with `destroy`, deleted (else the caller owns it).
    bool removeKey(TimelineKey *key, bool destroy = true);
    bool deleteKeyByTime(int time);
    /// Restores time order (stable, n log n; linear when already in order); returns where
    /// the key that was at `followedPosition` is now (-1 in, -1 out).
    int sortKeysByTime(int followedPosition = -1);

    /// Records `key` (detached, its cached time in milliseconds) as this
    /// timeline's state at that time, as commands pushed on the document's undo
    /// stack: a key already standing there gets the new display info (and, on a
    /// sub-entity, entity info); otherwise a copy of `key` is added, after a
    /// mainline key at that time when none stands there (unless
    /// `withoutMainline`), and the mainline key's reference is pointed at it.
    /// `flagA` and `flagB` are handed to the commands unchanged.
    void createUndoFromKey(const TimelineKey &key, bool flagA = false, bool flagB = false,
                           bool withoutMainline = false);

    // Evaluation.
    /// The keys in force at `time` (milliseconds): the last key at or before it
    /// and the key it blends towards, with the ratio eased by the first key's
    /// curve. After the last key of a looping animation the second is the first
    /// key, one length later. Before the first key, and after the last one of a
    /// non-looping animation, one key holds (both the same, ratio 0). Both null
    /// when the timeline has no keys.
    void keyPairFromTime(int time, const TimelineKey **first, const TimelineKey **second,
                         double *ratio) const;
    /// A detached key holding the state at `time`: spatial and sub-entity data
    /// blended, everything else from the key in force. A default key without keys.
    TimelineKey keyFromTime(int time) const;
    /// How many keys stand at or before `time` (times cached when detached).
    int upperBound(int time) const;
    /// The key in force at `time`: the last one at or before it, else the
    /// first; null without keys.
    TimelineKey *keyInForce(int time) const;
    /// The blended local spatial state at `time`; a default one without keys.
    DisplayInfo displayInfoFromTime(int time) const;

    Animation *parentAnimation() const;
    Entity *parentEntity() const;
    /// (entity, animation, timeline index) with a direct pointer to this timeline.
    Address address() const;

    int indexOfChild(const MorvaneModelItem *child) const override;
    bool removeChildItem(MorvaneModelItem *child) override;
    void clearAllLinksAndChildren() override;

private:
    // The first position whose key's time (cached when detached) is not below `time`.
    int lowerBound(int time) const;

    int mId = -1;
    QString mName;
    Address mObject;
    std::vector<std::unique_ptr<TimelineKey>> mKeys;
};

} // namespace Morvane
