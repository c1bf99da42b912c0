// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/animation.h"

#include "model/commands/animationcommands.h"
#include "model/commands/mainlinekeycommands.h"
#include "model/entity.h"
#include "model/keytimechangeinstructionset.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/ownedlist.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinefilter.h"
#include "model/timelinekey.h"
#include "model/timeunits.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <utility>

namespace Morvane {

namespace {

struct PairHash
{
    std::size_t operator()(const std::pair<const MainlineKey *, const Timeline *> &p) const
    {
        return std::hash<const void *>()(p.first) * 31 + std::hash<const void *>()(p.second);
    }
};

} // namespace

int Animation::currentMainKeyId = 0;
int Animation::currentTimeKeyId = 0;
double Animation::lastSnappingInterval = 100.0;

Animation::Animation(const QString &name, bool withFirstKey)
    : MorvaneModelItem(MorvaneItemType::Animation)
    , mName(name)
    , mSnappingInterval(int(std::lround(lastSnappingInterval)))
{
    if (withFirstKey)
        appendMainlineKey(new MainlineKey, 0, true, true);
}

Animation::Animation(const Animation &other)
    : MorvaneModelItem(MorvaneItemType::Animation)
    , mName(other.mName)
    , mLength(other.mLength)
    , mLooping(other.mLooping)
    , mLoopTo(other.mLoopTo)
    , mSnappingInterval(other.mSnappingInterval)
    , mGuideLines(other.mGuideLines)
    , mOwnLineHolder(other.mOwnLineHolder)
    , mObjectLineHolders(other.mObjectLineHolders)
{
    QHash<const TimelineKey *, TimelineKey *> keyCopies;
    mTimelines.reserve(other.mTimelines.size());
    for (const auto &tl : other.mTimelines) {
        auto copy = std::make_unique<Timeline>(*tl);
        copy->setParentItem(this);
        for (int i = 0; i < tl->keyCount(); ++i)
            keyCopies.insert(tl->key(i), copy->key(i));
        mTimelines.push_back(std::move(copy));
    }

    mMainlineKeys.reserve(other.mMainlineKeys.size());
    for (const auto &mk : other.mMainlineKeys) {
        auto copy = std::make_unique<MainlineKey>(*mk);
        copy->setParentItem(this);
        // The copied references still name the original's keys: repoint them.
        for (int i = 0; i < copy->refCount(); ++i) {
            ObjectRef *r = copy->ref(i);
            r->setKey(keyCopies.value(mk->ref(i)->key(), nullptr));
        }
        for (int i = 0; i < mk->childTimeKeyCount(); ++i) {
            if (TimelineKey *k = keyCopies.value(mk->childTimeKey(i), nullptr))
                copy->addChildTimelineKey(k);
        }
        mMainlineKeys.push_back(std::move(copy));
    }
}

Animation::~Animation()
{
    clearAllLinksAndChildren();
}

MainlineKey *Animation::mainlineKey(int index) const
{
    return ownedAt(mMainlineKeys, index);
}

int Animation::mainlineLowerBound(int time) const
{
    const auto it = std::lower_bound(mMainlineKeys.begin(), mMainlineKeys.end(), time,
                                     [](const auto &k, int t) { return k->currentTime() < t; });
    return int(it - mMainlineKeys.begin());
}

int Animation::indexOfMainlineKey(const MainlineKey *key) const
{
    if (!key || key->parentItem() != this)
        return -1;
    const int at = mainlineLowerBound(key->currentTime());
    if (at < mainlineKeyCount() && mMainlineKeys[size_t(at)].get() == key)
        return at;
    // A mainline out of order (while a caller sorts it) is searched whole.
    return indexOfOwned(mMainlineKeys, key);
}

MainlineKey *Animation::mainlineKeyFromId(int id) const
{
    for (const auto &mk : mMainlineKeys) {
        if (mk->id() == id)
            return mk.get();
    }
    return nullptr;
}

MainlineKey *Animation::mainlineKeyFromTime(int time, bool exact) const
{
    if (time < 0)
        time = 0;
    if (time > mLength)
        time = mLength;

    const int count = int(mMainlineKeys.size());
    if (count > 5) {
        // The last key whose time is at most `time`.
        int lo = 0;
        int hi = count - 1;
        int found = -1;
        while (lo <= hi) {
            const int mid = lo + (hi - lo) / 2;
            if (mMainlineKeys[size_t(mid)]->currentTime() <= time) {
                found = mid;
                lo = mid + 1;
            } else {
                hi = mid - 1;
            }
        }
        if (found < 0)
            return nullptr;
        MainlineKey *k = mMainlineKeys[size_t(found)].get();
        if (k->currentTime() == time)
            return k;
        return exact ? nullptr : k;
    }

    MainlineKey *below = nullptr;
    for (const auto &mk : mMainlineKeys) {
        const int t = mk->currentTime();
        if (t == time)
            return mk.get();
        if (t < time)
            below = mk.get();
        else
            break;
    }
    return exact ? nullptr : below;
}

MainlineKey *Animation::mainlineKeyAtExactTime(int time) const
{
    // Unlike mainlineKeyFromTime, no clamping: a key beyond the length is
    // still found where it stands.
    MainlineKey *k = mainlineKey(mainlineLowerBound(time));
    return k && k->currentTime() == time ? k : nullptr;
}

int Animation::appendMainlineKey(MainlineKey *key, int time, bool sort, bool giveId,
                                 bool editorFlag)
{
    if (!key)
        return -2;
    const int t = time == -1 ? key->currentTime() : time;
    // Past the last key, as when keys are appended in time order, nothing can be taken.
    if (!mMainlineKeys.empty() && mMainlineKeys.back()->currentTime() >= t) {
        for (int i = mainlineLowerBound(t); i < mainlineKeyCount(); ++i) {
            const MainlineKey *mk = mMainlineKeys[size_t(i)].get();
            if (mk->currentTime() != t)
                break;
            if (mk != key) {
                delete key;
                return -2;
            }
        }
    }
    key->setCurrentTime(t, false, true);
    key->setParentItem(this);
    if (sort)
        mMainlineKeys.emplace(mMainlineKeys.begin() + mainlineLowerBound(t), key);
    else
        mMainlineKeys.emplace_back(key);
    int result = -2;
    if (giveId) {
        key->setId(currentMainKeyId++);
        result = key->id();
    }
    key->setEditorFlag(editorFlag);
    return result;
}

namespace {

// The undoable form of appendMainKeysForOrphanTimeKeys: a command per missing
// mainline key, then one per timeline key that is not yet the child of the
// mainline key at its time, or not what that key's reference shows.
void appendMainKeysForOrphanTimeKeysWithUndo(Animation *animation)
{
    RigxData *document = animation->document();
    QList<int> missing;
    for (int t = 0; t < animation->timelineCount(); ++t) {
        const Timeline *tl = animation->timeline(t);
        for (int i = 0; !tl->isSound() && i < tl->keyCount(); ++i) {
            const int time = tl->key(i)->time(true);
            if (!animation->mainlineKeyAtExactTime(time) && !missing.contains(time))
                missing.append(time);
        }
    }
    std::sort(missing.begin(), missing.end());
    for (int time : std::as_const(missing))
        RigxData::pushUndo(document, new AppendMainlineKeyCommand(animation, time));
    for (int t = 0; t < animation->timelineCount(); ++t) {
        Timeline *tl = animation->timeline(t);
        for (int i = 0; !tl->isSound() && i < tl->keyCount(); ++i) {
            TimelineKey *key = tl->key(i);
            MainlineKey *mk = animation->mainlineKeyAtExactTime(key->time(true));
            const ObjectRef *ref = mk ? mk->refFromTimeline(tl) : nullptr;
            if (mk && (key->mainKey() != mk || !ref || ref->key() != key))
                RigxData::pushUndo(document, new AssignChildKeyToMainlineKeyCommand(key, mk));
        }
    }
}

} // namespace

void Animation::appendMainKeysForOrphanTimeKeys(bool withUndo)
{
    if (withUndo) {
        appendMainKeysForOrphanTimeKeysWithUndo(this);
        return;
    }
    // Which mainline keys refer to which timeline, made on the first search past a
    // timeline's first key that misses: without it, keys that a file lists without
    // references make every search scan all the references of their mainline key. A
    // reference appended here is found through the hint by the next key at its time, the
    // only one to look for it again.
    using Pair = std::pair<const MainlineKey *, const Timeline *>;
    std::vector<Pair> referenced;
    std::unordered_set<Pair, PairHash> copied; // references of keys made after the index
    bool indexed = false;
    const auto hasRef = [&](const MainlineKey *mk, const Timeline *tl) {
        if (!indexed) {
            for (const auto &m : mMainlineKeys) {
                for (int j = 0; j < m->refCount(); ++j)
                    referenced.emplace_back(m.get(), m->ref(j)->timeline());
            }
            std::sort(referenced.begin(), referenced.end());
            indexed = true;
        }
        return std::binary_search(referenced.begin(), referenced.end(), Pair(mk, tl))
               || copied.count({mk, tl}) > 0;
    };
    for (const auto &tl : mTimelines) {
        if (tl->isSound())
            continue;
        // A timeline's reference usually sits at the same place in every mainline key, and
        // its keys meet the mainline keys in order: looking there first keeps this linear
        // in the number of keys.
        int refHint = 0;
        int mainHint = 0;
        for (int i = 0; i < tl->keyCount(); ++i) {
            TimelineKey *k = tl->key(i);
            const int t = k->time(true);
            MainlineKey *mk = mainlineKey(mainHint);
            if (!mk || mk->currentTime() != t) {
                mk = mainlineKey(mainHint + 1);
                if (mk && mk->currentTime() == t)
                    ++mainHint;
                else
                    mk = mainlineKeyAtExactTime(t);
            }
            if (!mk) {
                const MainlineKey *inForce = mainlineKeyFromTime(t, false);
                mk = inForce ? new MainlineKey(*inForce) : new MainlineKey;
                mk->setId(currentMainKeyId++);
                appendMainlineKey(mk, t, true, false); // the time is free: accepted
                for (int j = 0; indexed && j < mk->refCount(); ++j)
                    copied.insert({mk, mk->ref(j)->timeline()});
            }
            if (mk == mainlineKey(mainHint + 1))
                ++mainHint;
            else if (mk != mainlineKey(mainHint))
                mainHint = indexOfMainlineKey(mk);
            if (k->mainKey() != mk)
                mk->addChildTimelineKey(k);
            // The reference at this moment takes its values from this key.
            ObjectRef *r = mk->ref(refHint);
            if (!r || r->timeline() != tl.get()) {
                r = nullptr;
                // Past the first key a miss means the reference moved or is missing; the
                // index tells which before the scan.
                if (i == 0 || hasRef(mk, tl.get())) {
                    for (int j = 0; j < mk->refCount(); ++j) {
                        if (mk->ref(j)->timeline() == tl.get()) {
                            r = mk->ref(j);
                            refHint = j;
                            break;
                        }
                    }
                }
            }
            if (r) {
                if (r->key() != k)
                    r->setKey(k);
                continue;
            }
            r = mk->appendRef(tl.get(), i);
            refHint = r->isBoneRef() ? mk->boneRefCount() - 1 : mk->refCount() - 1;
        }
    }
}

void Animation::deleteMainlineKey(MainlineKey *key, bool deleteKeys)
{
    if (indexOfMainlineKey(key) < 0)
        return;
    if (deleteKeys)
        deleteTimelineKeysForMainlineKey(key);
    removeMainlineKey(key);
    delete key;
}

void Animation::deleteMainlineKey(int index, bool deleteKeys)
{
    deleteMainlineKey(mainlineKey(index), deleteKeys);
}

void Animation::deleteMainlineKeyById(int id, bool deleteKeys)
{
    deleteMainlineKey(mainlineKeyFromId(id), deleteKeys);
}

void Animation::deleteMainlineKeyByTime(int time, bool deleteKeys)
{
    deleteMainlineKey(mainlineKeyFromTime(time, true), deleteKeys);
}

void Animation::deleteTimelineKeysForMainlineKey(MainlineKey *key)
{
    if (!key)
        return;
    while (key->childTimeKeyCount() > 0) {
        TimelineKey *k = key->childTimeKey(0);
        Timeline *tl = k->parentTimeline();
        // References elsewhere that still name the key lose it with it.
        if (!tl || !tl->removeKey(k, true))
            key->removeChildKey(k);
    }
}

bool Animation::removeMainlineKey(MainlineKey *key)
{
    const int i = indexOfMainlineKey(key);
    if (i < 0)
        return false;
    mMainlineKeys[size_t(i)].release();
    mMainlineKeys.erase(mMainlineKeys.begin() + i);
    key->setParentItem(nullptr);
    return true;
}

int Animation::sortMainlineKeysByTime(int followedPosition)
{
    return sortOwnedByKey(&mMainlineKeys, followedPosition,
                          [](const MainlineKey &k) { return k.currentTime(); });
}

int Animation::moveMainlineKeyIntoPlace(int index)
{
    if (index < 0 || index >= mainlineKeyCount())
        return index;
    size_t i = size_t(index);
    while (i > 0 && mMainlineKeys[i - 1]->currentTime() > mMainlineKeys[i]->currentTime()) {
        std::swap(mMainlineKeys[i - 1], mMainlineKeys[i]);
        --i;
    }
    while (i + 1 < mMainlineKeys.size()
           && mMainlineKeys[i + 1]->currentTime() < mMainlineKeys[i]->currentTime()) {
        std::swap(mMainlineKeys[i + 1], mMainlineKeys[i]);
        ++i;
    }
    return int(i);
}

void Animation::sortAllKeysByTime(bool mainlineToo)
{
    if (mainlineToo)
        sortMainlineKeysByTime();
    for (const auto &tl : mTimelines)
        tl->sortKeysByTime();
}

Timeline *Animation::timeline(int index) const
{
    return ownedAt(mTimelines, index);
}

int Animation::indexOfTimeline(const Timeline *timeline) const
{
    return indexOfOwned(mTimelines, timeline);
}

void Animation::appendTimeline(Timeline *timeline, int index, bool renumber)
{
    if (!timeline)
        return;
    timeline->setParentItem(this);
    if (index < 0 || index > int(mTimelines.size()))
        mTimelines.emplace_back(timeline);
    else
        mTimelines.emplace(mTimelines.begin() + index, timeline);
    if (renumber) {
        for (size_t i = 0; i < mTimelines.size(); ++i)
            mTimelines[i]->setId(int(i));
    }
}

Timeline *Animation::appendObjectAsTimeline(Object *object)
{
    if (!object)
        return nullptr;
    auto *tl = new Timeline(object, object->name());
    appendTimeline(tl);
    return tl;
}

void Animation::deleteTimeline(int index)
{
    Timeline *tl = timeline(index);
    if (tl && removeTimeline(tl))
        delete tl;
}

bool Animation::removeTimeline(Timeline *timeline)
{
    const int i = indexOfTimeline(timeline);
    if (i < 0)
        return false;
    // References to its keys go with the timeline.
    for (const auto &mk : mMainlineKeys) {
        while (ObjectRef *r = mk->refFromTimeline(timeline))
            mk->deleteRef(r, true, false);
    }
    mTimelines[size_t(i)].release();
    mTimelines.erase(mTimelines.begin() + i);
    timeline->setParentItem(nullptr);
    for (size_t j = 0; j < mTimelines.size(); ++j)
        mTimelines[j]->setId(int(j));
    return true;
}

int Animation::deleteEmptyTimelines(bool renumber)
{
    int removed = 0;
    for (size_t i = mTimelines.size(); i-- > 0;) {
        if (mTimelines[i]->keyCount() == 0) {
            Timeline *tl = mTimelines[i].get();
            removeTimeline(tl);
            delete tl;
            ++removed;
        }
    }
    if (renumber) {
        for (size_t i = 0; i < mTimelines.size(); ++i)
            mTimelines[i]->setId(int(i));
    }
    return removed;
}

Timeline *Animation::timelineFromObjectId(int objectIndex) const
{
    const Entity *e = parentEntity();
    const Object *o = e ? e->object(objectIndex) : nullptr;
    if (!o)
        return nullptr;
    for (const auto &tl : mTimelines) {
        if (tl->object() == o)
            return tl.get();
    }
    return nullptr;
}

Timeline *Animation::timelineFromObjectName(const QString &name) const
{
    for (const auto &tl : mTimelines) {
        const Object *o = tl->object();
        if (o && o->name() == name)
            return tl.get();
    }
    return nullptr;
}

TimelineKey *Animation::timelineKey(int timelineIndex, int keyIndex) const
{
    const Timeline *tl = timeline(timelineIndex);
    return tl ? tl->key(keyIndex) : nullptr;
}

void Animation::removeGuide(int index)
{
    if (index >= 0 && index < mGuideLines.size())
        mGuideLines.removeAt(index);
}

Timeline *Animation::filteredTimeline(int index, const TimelineFilter &filter) const
{
    if (index < 0)
        return nullptr;
    if (filter.showsEverything())
        return timeline(index);
    int shown = 0;
    for (size_t i = 0; i < mTimelines.size(); ++i) {
        if (filter.accepts(mTimelines[i].get(), int(i)) && shown++ == index)
            return mTimelines[i].get();
    }
    return nullptr;
}

int Animation::filteredTimelineCount(const TimelineFilter &filter) const
{
    if (filter.showsEverything())
        return timelineCount();
    int shown = 0;
    for (size_t i = 0; i < mTimelines.size(); ++i) {
        if (filter.accepts(mTimelines[i].get(), int(i)))
            ++shown;
    }
    return shown;
}

void Animation::setLinesToMovedLinesCommand(const KeyTimeChangeInstructionSet &set,
                                            const TimelineFilter &filter)
{
    auto *command = new ChangeAnimationCommand(this, QString());
    applyMovedLines(set, filter);
    command->noteAfter();
    RigxData::pushUndo(document(), command);
}

void Animation::applyMovedLines(const KeyTimeChangeInstructionSet &instructions,
                                const TimelineFilter &filter)
{
    KeyTimeChangeInstructionSet set = instructions;
    // Keys that give way are deleted: the references that showed them are found
    // again by their timelines afterwards. Noted just before the first key is
    // deleted, as most moves delete none and noting is costly.
    QHash<const ObjectRef *, Timeline *> refTimelines;
    bool refTimelinesNoted = false;
    const auto noteRefTimelines = [&]() {
        if (refTimelinesNoted)
            return;
        refTimelinesNoted = true;
        for (const auto &mk : mMainlineKeys) {
            for (int i = 0; i < mk->refCount(); ++i)
                refTimelines.insert(mk->ref(i), mk->ref(i)->timeline());
        }
    };
    // Timeline keys of a moved mainline key go with it, not on their own.
    set.removeAllChangesFromSharedKeysWithZeroLine(true);

    // The mainline. Every moved key is found at its old time before any key
    // moves, so keys dragged together never land on one another on the way;
    // a key standing where one lands that is not moving itself gives way.
    {
        std::vector<std::pair<MainlineKey *, int>> moves;
        QSet<const MainlineKey *> moving;
        for (int i = 0; i < set.keyCount(0); ++i) {
            const int from = set.oldKeyTime(0, i);
            const int to = set.newKeyTime(0, i);
            if (from == to)
                continue;
            MainlineKey *mk = mainlineKeyAtExactTime(from);
            if (!mk || moving.contains(mk))
                continue;
            moves.emplace_back(mk, to);
            moving.insert(mk);
        }
        // Of moved keys meeting at one time, the last one named stays.
        QHash<int, MainlineKey *> landing;
        for (const auto &[mk, to] : moves)
            landing.insert(to, mk);
        for (auto it = moves.begin(); it != moves.end();) {
            if (landing.value(it->second) != it->first) {
                moving.remove(it->first);
                noteRefTimelines();
                deleteMainlineKey(it->first);
                it = moves.erase(it);
            } else {
                ++it;
            }
        }
        for (const auto &[mk, to] : moves) {
            MainlineKey *there = mainlineKeyAtExactTime(to);
            if (there && !moving.contains(there)) {
                noteRefTimelines();
                deleteMainlineKey(there);
            }
        }
        for (const auto &[mk, to] : moves)
            mk->setCurrentTime(to, true, true);
        sortMainlineKeysByTime();
    }

    // The timelines, the same way within each.
    std::vector<Timeline *> lines;
    for (size_t i = 0; i < mTimelines.size(); ++i) {
        if (filter.accepts(mTimelines[i].get(), int(i)))
            lines.push_back(mTimelines[i].get());
    }
    for (int line = 1; line < set.lineCount() && size_t(line - 1) < lines.size(); ++line) {
        Timeline *tl = lines[size_t(line - 1)];
        std::vector<std::pair<TimelineKey *, int>> moves;
        QSet<const TimelineKey *> moving;
        for (int i = 0; i < set.keyCount(line); ++i) {
            const int from = set.oldKeyTime(line, i);
            const int to = set.newKeyTime(line, i);
            if (from == to)
                continue;
            TimelineKey *k = tl->actualKeyFromTime(from);
            if (!k || moving.contains(k))
                continue;
            moves.emplace_back(k, to);
            moving.insert(k);
        }
        if (moves.empty())
            continue;
        QHash<int, TimelineKey *> landing;
        for (const auto &[k, to] : moves)
            landing.insert(to, k);
        for (auto it = moves.begin(); it != moves.end();) {
            if (landing.value(it->second) != it->first) {
                moving.remove(it->first);
                noteRefTimelines();
                tl->removeKey(it->first, true);
                it = moves.erase(it);
            } else {
                ++it;
            }
        }
        for (const auto &[k, to] : moves) {
            if (MainlineKey *owner = k->mainKey())
                owner->removeChildKey(k);
        }
        for (const auto &[k, to] : moves) {
            TimelineKey *there = tl->actualKeyFromTime(to);
            while (there && !moving.contains(there)) {
                noteRefTimelines();
                tl->removeKey(there, true);
                there = tl->actualKeyFromTime(to);
            }
        }
        for (const auto &[k, to] : moves)
            k->setCachedTime(to);
    }

    sortAllKeysByTime(true);
    appendMainKeysForOrphanTimeKeys(false);
    repointRefsToKeysInForce(&refTimelines);
}

void Animation::repointRefsToKeysInForce(const QHash<const ObjectRef *, Timeline *> *timelines)
{
    for (const auto &mk : mMainlineKeys) {
        const int t = mk->currentTime();
        for (int i = 0; i < mk->refCount(); ++i) {
            ObjectRef *r = mk->ref(i);
            const TimelineKey *k = r->key();
            Timeline *tl = k ? k->parentTimeline() : (timelines ? timelines->value(r) : nullptr);
            if (!tl || tl->parentItem() != this || tl->keyCount() == 0
                || (k && k->time(true) == t))
                continue;
            // A key that moved away leaves its former mainline key showing
            // the key in force there.
            TimelineKey *inForce = tl->keyInForce(t);
            if (inForce && inForce != k)
                r->setKey(inForce);
        }
    }
}

Entity *Animation::parentEntity() const
{
    MorvaneModelItem *p = parentItem();
    if (p && p->morvaneItemType() == MorvaneItemType::Entity)
        return static_cast<Entity *>(p);
    return nullptr;
}

Address Animation::address() const
{
    const Entity *e = parentEntity();
    Address a = e ? e->address() : Address();
    a.set(1, e ? e->indexOfAnimation(this) : -1);
    a.setDirectPointer(const_cast<Animation *>(this));
    return a;
}

int Animation::indexOfChild(const MorvaneModelItem *child) const
{
    if (!child)
        return -1;
    if (child->morvaneItemType() == MorvaneItemType::MainlineKey)
        return indexOfMainlineKey(static_cast<const MainlineKey *>(child));
    if (child->morvaneItemType() == MorvaneItemType::Timeline)
        return indexOfTimeline(static_cast<const Timeline *>(child));
    return -1;
}

bool Animation::removeChildItem(MorvaneModelItem *child)
{
    if (!child)
        return false;
    if (child->morvaneItemType() == MorvaneItemType::MainlineKey)
        return removeMainlineKey(static_cast<MainlineKey *>(child));
    if (child->morvaneItemType() == MorvaneItemType::Timeline)
        return removeTimeline(static_cast<Timeline *>(child));
    return false;
}

void Animation::clearAllLinksAndChildren()
{
    MorvaneModelItem::clearAllLinksAndChildren();
    // Mainline keys first: they unlink their child keys before the keys go.
    mMainlineKeys.clear();
    mTimelines.clear();
}

ValueLineHolder *Animation::objectLineHolder(int objectIndex, bool create)
{
    if (objectIndex < 0)
        return nullptr;
    const auto it = mObjectLineHolders.find(objectIndex);
    if (it != mObjectLineHolders.end())
        return &it->second;
    if (!create)
        return nullptr;
    return &mObjectLineHolders[objectIndex];
}

const ValueLineHolder *Animation::objectLineHolder(int objectIndex) const
{
    const auto it = mObjectLineHolders.find(objectIndex);
    return it != mObjectLineHolders.end() ? &it->second : nullptr;
}

void Animation::removeObjectLineHolder(int objectIndex)
{
    std::map<int, ValueLineHolder> moved;
    for (auto &[index, holder] : mObjectLineHolders) {
        if (index < objectIndex)
            moved.emplace(index, std::move(holder));
        else if (index > objectIndex)
            moved.emplace(index - 1, std::move(holder));
    }
    mObjectLineHolders = std::move(moved);
}

void Animation::insertObjectLineHolder(int objectIndex)
{
    std::map<int, ValueLineHolder> moved;
    for (auto &[index, holder] : mObjectLineHolders)
        moved.emplace(index < objectIndex ? index : index + 1, std::move(holder));
    mObjectLineHolders = std::move(moved);
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

} // namespace Morvane
