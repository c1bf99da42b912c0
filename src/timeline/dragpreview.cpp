// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/dragpreview.h"

#include "model/animation.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "timeline/timelinerows.h"

#include <algorithm>
#include <limits>

namespace Morvane {

namespace {

constexpr int Never = std::numeric_limits<int>::max();

// A key of one timeline as it will stand: its index in the timeline and its
// time after the drag; a moved key wins a time it shares with one that stays
// (it replaces that one when the drag is recorded).
struct Placed
{
    int index = -1;
    int time = 0;
    bool moved = false;
};

bool later(const Placed &a, const Placed &b)
{
    return a.time > b.time || (a.time == b.time && a.moved && !b.moved);
}

// The keys that decide the pose at `time`: the one in force (the last at or
// before it, else the first), the one after it, and the first and last keys
// (a looping animation blends from the last to the first).
void choose(const std::vector<Placed> &keys, int time, std::vector<Placed> *out)
{
    Placed inForce, next, first, last;
    std::vector<int> landings;
    for (const Placed &k : keys) {
        if (k.moved)
            landings.push_back(k.time);
    }
    std::sort(landings.begin(), landings.end());
    for (const Placed &k : keys) {
        // A key that stays where a moved one lands is replaced by it.
        if (!k.moved && std::binary_search(landings.begin(), landings.end(), k.time))
            continue;
        if (k.time <= time && (inForce.index < 0 || later(k, inForce)))
            inForce = k;
        if (first.index < 0 || later(first, k))
            first = k;
        if (last.index < 0 || later(k, last))
            last = k;
    }
    if (inForce.index < 0)
        inForce = first;
    for (const Placed &k : keys) {
        if (k.time > inForce.time && (next.index < 0 || later(next, k)))
            next = k;
    }
    out->clear();
    for (const Placed &k : {first, inForce, next, last}) {
        const bool taken = std::any_of(out->begin(), out->end(), [&](const Placed &o) {
            return o.index == k.index || o.time == k.time;
        });
        if (k.index >= 0 && !taken)
            out->push_back(k);
    }
    std::sort(out->begin(), out->end(),
              [](const Placed &a, const Placed &b) { return a.time < b.time; });
}

} // namespace

DragPreview::DragPreview() = default;
DragPreview::~DragPreview() = default;

void DragPreview::begin(const Animation *animation,
                        const std::vector<TimelineGraphicsProxy *> &rows)
{
    clear();
    if (!animation)
        return;
    const size_t count = size_t(animation->timelineCount());
    mRows.assign(count, nullptr);
    mMoving.assign(count, false);
    for (size_t t = 0; t < count; ++t)
        mTimelineIndex.insert(animation->timeline(int(t)), int(t));
    for (const TimelineGraphicsProxy *row : rows) {
        const RowId &id = row->id();
        if (id.kind == RowId::Kind::Mainline) {
            mMainline = row;
        } else if (id.kind == RowId::Kind::Timeline && id.timeline >= 0 &&
                   size_t(id.timeline) < count) {
            mRows[size_t(id.timeline)] = row;
            mMoving[size_t(id.timeline)] =
                std::any_of(row->keys().begin(), row->keys().end(),
                            [](const TimelineKeyGraphicsProxy *k) { return k->isSelected(); });
        }
    }
}

void DragPreview::clear()
{
    mMainline = nullptr;
    mRows.clear();
    mMoving.clear();
    mTimelineIndex.clear();
    mPreview.reset();
    mRetired.reset();
}

Animation *DragPreview::build(const Animation *animation, int timeMs)
{
    if (!animation || !mMainline || mRows.size() != size_t(animation->timelineCount()) ||
        mMainline->keys().size() != size_t(animation->mainlineKeyCount()) ||
        animation->mainlineKeyCount() == 0)
        return nullptr;
    const auto &markers = mMainline->keys();

    // The mainline key in force: the last at or before the time where the
    // markers stand, a moved one winning a shared time.
    Placed main;
    QHash<int, int> movedMainline; // original time -> new time
    for (size_t i = 0; i < markers.size(); ++i) {
        const Placed p{int(i), markers[i]->positionalTime(),
                       markers[i]->positionalTime() != markers[i]->originalTime()};
        if (p.moved)
            movedMainline.insert(markers[i]->originalTime(), p.time);
        if (p.time <= timeMs && (main.index < 0 || later(p, main)))
            main = p;
    }
    if (main.index < 0) {
        for (size_t i = 0; i < markers.size(); ++i) {
            const Placed p{int(i), markers[i]->positionalTime(), false};
            if (main.index < 0 || later(main, p))
                main = p;
        }
    }
    // A timeline key moved to a time without mainline key makes one there, a
    // copy of the key in force: the pose eases from the latest such time.
    int inForceTime = main.time;
    int nextTime = Never;
    for (const TimelineKeyGraphicsProxy *m : markers) {
        if (m->positionalTime() > timeMs)
            nextTime = std::min(nextTime, m->positionalTime());
    }
    for (size_t t = 0; t < mRows.size(); ++t) {
        if (!mMoving[t])
            continue;
        for (const TimelineKeyGraphicsProxy *k : mRows[t]->keys()) {
            if (k->positionalTime() == k->originalTime())
                continue;
            if (k->positionalTime() <= timeMs)
                inForceTime = std::max(inForceTime, k->positionalTime());
            else
                nextTime = std::min(nextTime, k->positionalTime());
        }
    }

    auto preview = std::make_unique<Animation>(animation->name());
    preview->setLength(animation->length());
    preview->setLoopingMode(animation->loopingMode());
    preview->setLoopTo(animation->loopTo());
    std::vector<TimelineKey *> shown(mRows.size(), nullptr);
    std::vector<Placed> keys;
    std::vector<Placed> chosen;
    for (size_t t = 0; t < mRows.size(); ++t) {
        const Timeline *tl = animation->timeline(int(t));
        const TimelineGraphicsProxy *row = mRows[t];
        keys.clear();
        if (row && row->keys().size() != size_t(tl->keyCount()))
            return nullptr;
        if (mMoving[t] || (!row && !movedMainline.isEmpty())) {
            // Every key may have moved: look at them all.
            for (int k = 0; k < tl->keyCount(); ++k) {
                const int original =
                    row ? row->keys()[size_t(k)]->originalTime() : tl->key(k)->time(true);
                const int now = row ? row->keys()[size_t(k)]->positionalTime()
                                    : movedMainline.value(original, original);
                keys.push_back({k, now, now != original});
            }
        } else if (tl->keyCount() > 0) {
            // Nothing moves here: halve the keys' own times.
            const int lo = tl->upperBound(timeMs);
            for (const int k : {0, lo - 1, lo, tl->keyCount() - 1}) {
                if (k >= 0 && k < tl->keyCount())
                    keys.push_back({k, tl->key(k)->time(true), false});
            }
        }
        choose(keys, inForceTime, &chosen);
        auto *copy = new Timeline(tl->object(), tl->name(), tl->id());
        for (const Placed &p : chosen) {
            auto *key = new TimelineKey(*tl->key(p.index));
            key->setCachedTime(p.time);
            copy->appendTimelineKey(key, false, false);
            if (p.time <= inForceTime || !shown[t])
                shown[t] = key;
        }
        preview->appendTimeline(copy, -1, false);
    }

    // The mainline key in force with its hierarchy and drawing order, its
    // references showing each timeline's key in force; and the next time a
    // mainline key will stand, where its curve's span ends.
    const MainlineKey *source = animation->mainlineKey(main.index);
    auto *key = new MainlineKey;
    key->setCurve(source->curve());
    const auto keyOf = [&](const ObjectRef *ref) -> TimelineKey * {
        const int t = mTimelineIndex.value(ref->timeline(), -1);
        return t >= 0 ? shown[size_t(t)] : nullptr;
    };
    for (int i = 0; i < source->boneRefCount(); ++i)
        key->appendBoneRef(new BoneRef(keyOf(source->boneRef(i))));
    for (int i = 0; i < source->boneRefCount(); ++i)
        key->boneRef(i)->setParentRef(
            key->boneRef(source->indexOfBoneRef(source->boneRef(i)->parentRef())));
    for (int i = 0; i < source->zRefCount(); ++i) {
        const ZRef *from = source->zRef(i);
        auto *ref = new ZRef(keyOf(from), key->boneRef(source->indexOfBoneRef(from->parentRef())));
        ref->setLoadZIndex(from->loadZIndex());
        key->appendZRef(ref);
    }
    preview->appendMainlineKey(key, inForceTime, false);
    if (nextTime != Never && nextTime > inForceTime) {
        auto *end = new MainlineKey;
        end->setCurve(source->curve());
        preview->appendMainlineKey(end, nextTime, false);
    }
    mRetired = std::move(mPreview);
    mPreview = std::move(preview);
    return mPreview.get();
}

} // namespace Morvane
