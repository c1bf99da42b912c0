// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/valuelineholder.h"
#include "model/address.h"
#include "model/morvanemodelitem.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <vector>

namespace Morvane {

class Entity;
class KeyTimeChangeInstructionSet;
class MainlineKey;
class Object;
class ObjectRef;
class Timeline;
class TimelineKey;
struct TimelineFilter;

/// A guideline of the animation's editing view.
struct GuideLine
{
    int position = 0;
    bool vertical = false;
    bool operator==(const GuideLine &) const = default;
};

/// An animation of an entity: the mainline (time-ordered mainline keys) and
/// the timelines. Times are milliseconds.
///
/// The mainline is kept in time order and searched by halving, so that editing loops
/// over many keys stay linear; whoever sets a mainline key's time without `sort` puts the
/// mainline back in order (`sortMainlineKeysByTime`).
class Animation : public MorvaneModelItem
{
public:
    enum Looping { NoLooping = 0, Looping = 1, PingPong = 2 };

    /// Process-wide id counters, never reset during a run.
    static int currentMainKeyId;
    static int currentTimeKeyId;
    /// The snapping interval a new animation takes (the editor's last used).
    static double lastSnappingInterval;

    /// With `withFirstKey`, the animation starts with a mainline key at 0.
    explicit Animation(const QString &name = QStringLiteral("NewAnimation"),
                       bool withFirstKey = false);
    /// An exact deep copy: mainline keys, references (with parenting),
    /// timelines and keys, with every link rebuilt inside the copy. Cheap
    /// enough for undo snapshots. The copy is detached from every tree.
    Animation(const Animation &other);
    Animation &operator=(const Animation &) = delete;
    ~Animation() override;
    std::unique_ptr<Animation> clone() const { return std::make_unique<Animation>(*this); }

    QString name() const { return mName; }
    void setName(const QString &name) { mName = name; }
    int length() const { return mLength; }
    void setLength(int ms) { mLength = ms; }
    int loopingMode() const { return mLooping; }
    void setLoopingMode(int mode) { mLooping = mode; }
    bool isLooping() const { return mLooping != NoLooping; }
    int loopTo() const { return mLoopTo; }
    void setLoopTo(int ms) { mLoopTo = ms; }
    int snappingInterval() const { return mSnappingInterval; }
    void setSnappingInterval(int ms) { mSnappingInterval = ms; }

    // Mainline.
    MainlineKey *mainlineKey(int index) const;
    int mainlineKeyCount() const { return int(mMainlineKeys.size()); }
    int indexOfMainlineKey(const MainlineKey *key) const;
    MainlineKey *mainlineKeyFromId(int id) const;
    /// The key at `time` (clamped to 0..length). With `exact`, null unless a
    /// key stands exactly there; otherwise the key in force (the last one
    /// before the time), or null when none is.
    MainlineKey *mainlineKeyFromTime(int time, bool exact = false) const;
    /// The key standing exactly at `time`, without clamping; null when none.
    MainlineKey *mainlineKeyAtExactTime(int time) const;
    /// Always consumes `key` (deleted when refused). The time is `time`, or the
    /// key's own when -1. Refused (-2) when null or when another key has that
    /// time. With `giveId`, the key gets the next process-wide id, which is
    /// returned; otherwise -2. With `sort` the key goes to its place in time order;
    /// without, to the end: a caller appending a batch out of order makes sure the
    /// times are free (the search for a taken time assumes order) and sorts once.
    int appendMainlineKey(MainlineKey *key, int time = -1, bool sort = true, bool giveId = false,
                          bool editorFlag = false);
    /// Every timeline key (sound timelines aside) gets a mainline key at its
    /// time (a copy of the key in force when none stands there) and a
    /// reference from it. `withUndo` is for the editor's command path.
    void appendMainKeysForOrphanTimeKeys(bool withUndo = false);
    /// With `deleteKeys`, the timeline keys that are its children go too.
    void deleteMainlineKey(MainlineKey *key, bool deleteKeys = true);
    void deleteMainlineKey(int index, bool deleteKeys = true);
    void deleteMainlineKeyById(int id, bool deleteKeys = true);
    void deleteMainlineKeyByTime(int time, bool deleteKeys = true);
    void deleteTimelineKeysForMainlineKey(MainlineKey *key);
    /// Takes the key out without destroying it; the caller owns it.
    bool removeMainlineKey(MainlineKey *key);
    /// Restores time order (stable, n log n; linear when already in order); returns
    /// the new position of the key that was at `followedPosition`.
    int sortMainlineKeysByTime(int followedPosition = -1);
    /// Moves the one mainline key at `index`, whose time changed, to its place in time
    /// order; a cost in proportion to how far it moves. Returns its new position.
    int moveMainlineKeyIntoPlace(int index);
    void sortAllKeysByTime(bool mainlineToo = true);

    // Timelines.
    Timeline *timeline(int index) const;
    int timelineCount() const { return int(mTimelines.size()); }
    int indexOfTimeline(const Timeline *timeline) const;
    /// Takes ownership; `index` -1 appends. With `renumber`, ids follow positions.
    void appendTimeline(Timeline *timeline, int index = -1, bool renumber = true);
    Timeline *appendObjectAsTimeline(Object *object);
    void deleteTimeline(int index);
    bool removeTimeline(Timeline *timeline);
    /// Deletes timelines without keys; returns how many went.
    int deleteEmptyTimelines(bool renumber = true);
    Timeline *timelineFromObjectId(int objectIndex) const;
    Timeline *timelineFromObjectName(const QString &name) const;
    TimelineKey *timelineKey(int timelineIndex, int keyIndex) const;
    /// The `index`-th timeline that `filter` shows, or null.
    Timeline *filteredTimeline(int index, const TimelineFilter &filter) const;
    int filteredTimelineCount(const TimelineFilter &filter) const;

    // Key time changes.
    /// Applies a drag of keys (line 0 the mainline, line i the (i-1)-th
    /// timeline `filter` shows) and pushes one `ChangeAnimationCommand` that
    /// holds the animation before and after. A mainline key moved onto another
    /// replaces it, carrying its own timeline keys; a timeline key moved onto
    /// another of its timeline replaces it; a timeline key moved to a time
    /// without mainline key makes one there, a copy of the key in force.
    void setLinesToMovedLinesCommand(const KeyTimeChangeInstructionSet &set,
                                     const TimelineFilter &filter);
    /// The same without undo.
    void applyMovedLines(const KeyTimeChangeInstructionSet &set, const TimelineFilter &filter);
    /// Points every reference at the key of its timeline in force at its
    /// mainline key's time (the first key when none is yet). A reference whose
    /// key is gone is found in `timelines` (its timeline before the key went).
    void repointRefsToKeysInForce(const QHash<const ObjectRef *, Timeline *> *timelines = nullptr);

    // Guidelines.
    void appendGuideLine(const GuideLine &line) { mGuideLines.append(line); }
    GuideLine guideline(int index) const { return mGuideLines.value(index); }
    int guidelineCount() const { return int(mGuideLines.size()); }
    void removeGuide(int index);

    // Evaluation.
    /// The time at which timelines are sampled for `time` (milliseconds): with
    /// `curved`, `time` clamped to 0..length and eased by the mainline key in
    /// force (truncated toward zero); without `curved`, `time` itself.
    int sampleTime(int time, bool curved = true) const;
    /// Refreshes the cached world state of the references of the mainline key
    /// in force at `time`.
    void updateRefCurrentInfo(int time, bool curved = true);

    // Value lines and the tag line: the entity's own, and one holder per
    // object (by object index) that has lines in this animation.
    ValueLineHolder &ownLineHolder() { return mOwnLineHolder; }
    const ValueLineHolder &ownLineHolder() const { return mOwnLineHolder; }
    /// The lines of the object at `objectIndex`; with `create` an empty holder
    /// is made when there is none, otherwise null comes back.
    ValueLineHolder *objectLineHolder(int objectIndex, bool create = false);
    const ValueLineHolder *objectLineHolder(int objectIndex) const;
    const std::map<int, ValueLineHolder> &objectLineHolders() const { return mObjectLineHolders; }
    /// Drops the object's lines and moves those of later objects down one
    /// index, for when the object at `objectIndex` is removed.
    void removeObjectLineHolder(int objectIndex);
    /// Moves the lines of the objects from `objectIndex` on up one index, for
    /// when an object is inserted there.
    void insertObjectLineHolder(int objectIndex);

    Entity *parentEntity() const;
    /// (entity index, animation index) with a direct pointer.
    Address address() const;

    int indexOfChild(const MorvaneModelItem *child) const override;
    bool removeChildItem(MorvaneModelItem *child) override;
    void clearAllLinksAndChildren() override;

private:
    // Undo states read and put back the whole content.
    friend class AnimationState;

    // The first position whose mainline key's time is not below `time`.
    int mainlineLowerBound(int time) const;

    QString mName;
    int mLength = 1000;
    int mLooping = Looping;
    int mLoopTo = 0;
    int mSnappingInterval = 100;
    std::vector<std::unique_ptr<MainlineKey>> mMainlineKeys;
    std::vector<std::unique_ptr<Timeline>> mTimelines;
    QList<GuideLine> mGuideLines;
    ValueLineHolder mOwnLineHolder;
    std::map<int, ValueLineHolder> mObjectLineHolders;
};

} // namespace Morvane
