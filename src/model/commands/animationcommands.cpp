// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/animationcommands.h"

#include "model/animation.h"
#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <vector>

namespace Morvane {

// ChangeAnimationCommand's states

namespace {

// Detached copies of timeline key values, shared by every stored animation
// state of a document: a drag moves keys without changing them, so the states
// of a long session name the same values again and again. The document keeps
// its pool, and so does each state; values are only added, each distinct
// value once per live key.
class KeyPool
{
public:
    static std::shared_ptr<KeyPool> instance(RigxData *document)
    {
        if (document) {
            auto pool = std::static_pointer_cast<KeyPool>(document->sharedUndoData());
            if (!pool) {
                pool = std::make_shared<KeyPool>();
                document->setSharedUndoData(pool);
            }
            return pool;
        }
        // An animation outside any document: states of such share while any lives.
        static std::weak_ptr<KeyPool> detached;
        std::shared_ptr<KeyPool> pool = detached.lock();
        if (!pool) {
            pool = std::make_shared<KeyPool>();
            detached = pool;
        }
        return pool;
    }

    // The entry holding `key`'s values. `hint` is the entry the key had when
    // this place of the animation was last packed or restored (or none): a
    // drag leaves almost every key where it was, so that guess is checked
    // first and the search stays for what moved or changed.
    quint32 intern(const TimelineKey &key, const TimelineKey *hintKey, quint32 hint)
    {
        if (hintKey == &key && hint < mKeys.size() && sameValues(*mKeys[hint], key))
            return hint;
        const auto cached = mByLiveKey.constFind(&key);
        if (cached != mByLiveKey.constEnd() && sameValues(*mKeys[cached.value()], key))
            return cached.value();
        const auto id = quint32(mKeys.size());
        mKeys.push_back(std::make_unique<TimelineKey>(key));
        mByLiveKey.insert(&key, id);
        return id;
    }

    // Where each key was packed or restored last, by timeline and place, so
    // that the next state of the same animation finds its entries in order.
    struct Recent
    {
        std::vector<qsizetype> firstOfTimeline;
        std::vector<std::pair<const TimelineKey *, quint32>> keys;

        std::pair<const TimelineKey *, quint32> at(int timeline, int index) const
        {
            if (timeline < 0 || size_t(timeline) + 1 >= firstOfTimeline.size())
                return {nullptr, 0};
            const qsizetype i = firstOfTimeline[size_t(timeline)] + index;
            return i < firstOfTimeline[size_t(timeline) + 1] ? keys[size_t(i)]
                                                             : std::pair<const TimelineKey *, quint32>{nullptr, 0};
        }
    };
    Recent &recent() { return mRecent; }

    const TimelineKey *key(quint32 id) const
    {
        return id < mKeys.size() ? mKeys[id].get() : nullptr;
    }

    qsizetype bytes() const
    {
        return qsizetype(mKeys.size() * (sizeof(TimelineKey) + sizeof(void *)))
               + mByLiveKey.size() * qsizetype(4 * sizeof(void *));
    }

private:
    static bool sameValues(const TimelineKey &a, const TimelineKey &b)
    {
        const DisplayInfo &p = a.info();
        const DisplayInfo &q = b.info();
        if (a.id() != b.id() || a.fileInfo().address() != b.fileInfo().address()
            || a.fileInfo().address().document() != b.fileInfo().address().document()
            || p.x != q.x || p.y != q.y || p.angle != q.angle || p.xScale != q.xScale
            || p.yScale != q.yScale || p.width != q.width || p.height != q.height
            || p.alpha != q.alpha || p.color != q.color || p.flags() != q.flags()
            || p.pivotX(false) != q.pivotX(false) || p.pivotY(false) != q.pivotY(false)
            || p.fileLink().item() != q.fileLink().item())
            return false;
        const TweenInfo &c = a.curve();
        const TweenInfo &d = b.curve();
        if (c.curveType() != d.curveType() || c.cCount() != d.cCount())
            return false;
        for (int i = 0; i < TweenInfo::MaxParameters; ++i) {
            if (c.cAt(i) != d.cAt(i))
                return false;
        }
        if (a.hasEntityOrSoundInfo() != b.hasEntityOrSoundInfo())
            return false;
        if (!a.hasEntityOrSoundInfo())
            return true;
        const EntityInfo &e = a.entityInfo();
        const EntityInfo &f = b.entityInfo();
        const SoundInfo &s = a.soundInfo();
        const SoundInfo &t = b.soundInfo();
        return e.animation == f.animation && e.animation.document() == f.animation.document()
               && e.timeRatio == f.timeRatio && e.speedRatio == f.speedRatio
               && e.ratioControlMethod == f.ratioControlMethod && s.volume == t.volume
               && s.panning == t.panning && s.trigger == t.trigger;
    }

    std::vector<std::unique_ptr<TimelineKey>> mKeys;
    // Where each live key's values were first put, for keys the hints miss.
    QHash<const TimelineKey *, quint32> mByLiveKey;
    Recent mRecent;
};

} // namespace

// One state of an animation, kept small: the structure (which key values each
// timeline holds at which time, the mainline and its references) as a packed
// and compressed list of numbers, the key values in the shared pool, and the
// few things with text or value lines as implicitly shared copies.
class AnimationState
{
public:
    /// `entity` names the objects of the timelines (the animation's own, or the
    /// one a detached copy was made from).
    AnimationState(const Animation &animation, const Entity *entity);
    /// Makes `animation` what it was when the state was taken.
    void restore(Animation *animation) const;
    qsizetype bytes() const;

private:
    struct Shared
    {
        QString name;
        int length = 0;
        int looping = 0;
        int loopTo = 0;
        int snapping = 0;
        QList<GuideLine> guides;
        ValueLineHolder ownLines;
        std::map<int, ValueLineHolder> objectLines;
        QStringList timelineNames;
        QList<int> timelineObjects; // object index in the entity, -1 for none
        QList<int> timelineIds;
        QList<TweenInfo> mainlineCurves;
    };

    std::shared_ptr<KeyPool> mPool;
    QByteArray mPacked;
    int mPackedSize = 0;
    Shared mShared;
};

namespace {

// Differences and sums that wrap instead of overflowing: any two numbers
// give back the second from the first.
qint32 difference(qint32 a, qint32 b)
{
    return qint32(quint32(a) - quint32(b));
}

qint32 sum(qint32 difference, qint32 b)
{
    return qint32(quint32(difference) + quint32(b));
}

// Where each key of the animation stands (timeline and index), by address:
// references name their keys by pointer, and finding the place here spares
// reading every key again through its reference.
class KeyPlaces
{
public:
    explicit KeyPlaces(size_t count)
    {
        size_t capacity = 64;
        while (capacity < count * 2)
            capacity *= 2;
        mSlots.resize(capacity);
        mMask = capacity - 1;
    }
    void insert(const void *key, qint32 timeline, qint32 index)
    {
        for (size_t i = slot(key);; i = (i + 1) & mMask) {
            if (!mSlots[i].key) {
                mSlots[i] = {key, timeline, index};
                return;
            }
        }
    }
    // False when `key` is not a key of the animation.
    bool find(const void *key, qint32 *timeline, qint32 *index) const
    {
        for (size_t i = slot(key); mSlots[i].key; i = (i + 1) & mMask) {
            if (mSlots[i].key == key) {
                *timeline = mSlots[i].timeline;
                *index = mSlots[i].index;
                return true;
            }
        }
        return false;
    }

private:
    struct Slot
    {
        const void *key = nullptr;
        qint32 timeline = -1;
        qint32 index = -1;
    };
    size_t slot(const void *key) const
    {
        return size_t((quintptr(key) >> 4) * quintptr(0x9E3779B97F4A7C15ull)) & mMask;
    }
    std::vector<Slot> mSlots;
    size_t mMask = 0;
};

// The last state packed or restored, so that a state equal to it (the "before"
// of an edit that follows another, the "after" of an edit taken at its undo
// just after the next edit's undo) shares its bytes instead of holding the
// same numbers again.
struct LastPacked
{
    std::vector<qint32> numbers;
    QByteArray packed;
};
LastPacked &lastPacked()
{
    static LastPacked last;
    return last;
}

} // namespace

AnimationState::AnimationState(const Animation &animation, const Entity *entity)
    : mPool(KeyPool::instance(entity ? entity->parentRigx() : animation.document()))
{
    Shared &s = mShared;
    s.name = animation.mName;
    s.length = animation.mLength;
    s.looping = animation.mLooping;
    s.loopTo = animation.mLoopTo;
    s.snapping = animation.mSnappingInterval;
    s.guides = animation.mGuideLines;
    s.ownLines = animation.mOwnLineHolder;
    s.objectLines = animation.mObjectLineHolders;

    // Numbers that repeat from key to key are written as differences, which
    // compress to almost nothing: a timeline's times and value ids from the key
    // before, a mainline key's references from the same references of the key
    // before when it has as many.
    std::vector<qint32> n;
    QHash<const Timeline *, int> timelineIndex;
    KeyPool::Recent recent;
    size_t keyCount = 0;
    for (int t = 0; t < animation.timelineCount(); ++t)
        keyCount += size_t(animation.timeline(t)->keyCount());
    KeyPlaces places(keyCount);
    recent.firstOfTimeline.reserve(size_t(animation.timelineCount()) + 1);
    n.push_back(animation.timelineCount());
    for (int t = 0; t < animation.timelineCount(); ++t) {
        const Timeline *tl = animation.timeline(t);
        timelineIndex.insert(tl, t);
        s.timelineNames.append(tl->name());
        s.timelineObjects.append(entity && tl->object() ? entity->indexOfObject(tl->object()) : -1);
        s.timelineIds.append(tl->id());
        n.push_back(tl->keyCount());
        recent.firstOfTimeline.push_back(qsizetype(recent.keys.size()));
        qint32 time = 0;
        qint32 id = 0;
        for (int k = 0; k < tl->keyCount(); ++k) {
            const TimelineKey *key = tl->key(k);
            places.insert(static_cast<const MorvaneModelItem *>(key), t, k);
            const auto [hintKey, hint] = mPool->recent().at(t, k);
            const quint32 value = mPool->intern(*key, hintKey, hint);
            recent.keys.emplace_back(key, value);
            n.push_back(difference(key->cachedTime(), time));
            n.push_back(difference(qint32(value), id));
            time = key->cachedTime();
            id = qint32(value);
        }
    }
    recent.firstOfTimeline.push_back(qsizetype(recent.keys.size()));
    mPool->recent() = std::move(recent);

    // A key's place in its timeline: references walk the mainline in time
    // order, so each timeline's next key is almost always the one found last
    // or the one after it; the search is for the rest.
    std::vector<qint32> section;
    std::vector<int> lastFound[3];
    for (std::vector<int> &found : lastFound)
        found.assign(size_t(animation.timelineCount()), 0);
    int placing = 0;
    const auto keyPlace = [&](const TimelineKey *key) {
        qint32 foundTimeline = -1;
        qint32 foundIndex = -1;
        if (key && places.find(static_cast<const MorvaneModelItem *>(key), &foundTimeline, &foundIndex)) {
            section.push_back(foundTimeline);
            section.push_back(foundIndex);
            return;
        }
        const Timeline *tl = key ? key->parentTimeline() : nullptr;
        const int t = tl ? timelineIndex.value(tl, -1) : -1;
        int k = -1;
        if (t >= 0) {
            int &last = lastFound[placing][size_t(t)];
            if (tl->key(last) == key)
                k = last;
            else if (tl->key(last + 1) == key)
                k = last + 1;
            else
                k = tl->indexOfKey(key);
            last = std::max(k, 0);
        }
        section.push_back(t);
        section.push_back(k);
    };
    // A reference's key by the pointer it holds, read through the reference
    // only when that is not a key of this animation.
    const auto refPlace = [&](const ObjectRef *ref) {
        qint32 foundTimeline = -1;
        qint32 foundIndex = -1;
        const MorvaneModelItem *direct = ref->keyAddress().directPointer();
        if (direct && places.find(direct, &foundTimeline, &foundIndex)) {
            section.push_back(foundTimeline);
            section.push_back(foundIndex);
            return;
        }
        keyPlace(ref->key());
    };
    std::vector<qint32> previous[3];
    const auto writeSection = [&](int which) {
        std::vector<qint32> &before = previous[which];
        const bool alike = before.size() == section.size();
        for (size_t i = 0; i < section.size(); ++i)
            n.push_back(alike ? difference(section[i], before[i]) : section[i]);
        before.swap(section);
        section.clear();
    };
    n.push_back(animation.mainlineKeyCount());
    for (int m = 0; m < animation.mainlineKeyCount(); ++m) {
        const MainlineKey *mk = animation.mainlineKey(m);
        s.mainlineCurves.append(mk->curve());
        n.push_back(mk->currentTime());
        n.push_back(mk->id());
        n.push_back((mk->editorFlag() ? 1 : 0) | (mk->onionSkinFlag() ? 2 : 0));
        n.push_back(mk->boneRefCount());
        placing = 0;
        for (int i = 0; i < mk->boneRefCount(); ++i) {
            const BoneRef *r = mk->boneRef(i);
            refPlace(r);
            section.push_back(mk->indexOfBoneRef(r->parentRef()));
        }
        writeSection(0);
        n.push_back(mk->zRefCount());
        placing = 1;
        for (int i = 0; i < mk->zRefCount(); ++i) {
            const ZRef *r = mk->zRef(i);
            refPlace(r);
            section.push_back(mk->indexOfBoneRef(r->parentRef()));
        }
        writeSection(1);
        n.push_back(mk->childTimeKeyCount());
        placing = 2;
        for (int i = 0; i < mk->childTimeKeyCount(); ++i)
            keyPlace(mk->childTimeKey(i));
        writeSection(2);
    }

    mPackedSize = int(n.size());
    LastPacked &last = lastPacked();
    if (last.numbers == n) {
        mPacked = last.packed;
        return;
    }
    mPacked = qCompress(reinterpret_cast<const uchar *>(n.data()),
                        qsizetype(n.size() * sizeof(qint32)), 1);
    // The compressor's buffer is sized for the worst case: keep only the bytes.
    mPacked.squeeze();
    last.numbers = std::move(n);
    last.packed = mPacked;
}

void AnimationState::restore(Animation *animation) const
{
    const QByteArray bytes = qUncompress(mPacked);
    if (bytes.size() != qsizetype(mPackedSize) * qsizetype(sizeof(qint32)))
        return;
    const auto *n = reinterpret_cast<const qint32 *>(bytes.constData());
    const qint32 *end = n + mPackedSize;
    LastPacked &last = lastPacked();
    last.numbers.assign(n, end);
    last.packed = mPacked;
    const auto next = [&]() -> qint32 { return n < end ? *n++ : 0; };
    const Shared &s = mShared;
    const Entity *entity = animation->parentEntity();

    std::vector<std::unique_ptr<Timeline>> timelines;
    const int timelineCount = next();
    KeyPool::Recent recent;
    for (int t = 0; t < timelineCount; ++t) {
        Object *object = entity ? entity->object(s.timelineObjects.value(t)) : nullptr;
        auto tl = std::make_unique<Timeline>(object, s.timelineNames.value(t), s.timelineIds.value(t));
        const int keys = next();
        recent.firstOfTimeline.push_back(qsizetype(recent.keys.size()));
        qint32 time = 0;
        qint32 id = 0;
        for (int k = 0; k < keys; ++k) {
            time = sum(next(), time);
            id = sum(next(), id);
            const TimelineKey *value = mPool->key(quint32(id));
            auto *key = value ? new TimelineKey(*value) : new TimelineKey;
            key->setCachedTime(time);
            tl->appendTimelineKey(key, false, false);
            if (value)
                recent.keys.emplace_back(key, quint32(id));
            else
                recent.keys.emplace_back(nullptr, 0);
        }
        timelines.push_back(std::move(tl));
    }
    recent.firstOfTimeline.push_back(qsizetype(recent.keys.size()));
    mPool->recent() = std::move(recent);
    std::vector<qint32> previous[3];
    std::vector<qint32> section;
    size_t at = 0;
    const auto readSection = [&](int which, int count, int fields) {
        std::vector<qint32> &before = previous[which];
        const size_t size = size_t(std::max(count, 0)) * size_t(fields);
        const bool alike = before.size() == size;
        section.resize(size);
        for (size_t i = 0; i < size; ++i)
            section[i] = alike ? sum(next(), before[i]) : next();
        before = section;
        at = 0;
    };
    const auto field = [&]() -> qint32 { return at < section.size() ? section[at++] : 0; };
    const auto keyAt = [&]() -> TimelineKey * {
        const int t = field();
        const int k = field();
        return t >= 0 && size_t(t) < timelines.size() ? timelines[size_t(t)]->key(k) : nullptr;
    };
    std::vector<std::unique_ptr<MainlineKey>> mainline;
    const int mainlineCount = next();
    for (int m = 0; m < mainlineCount; ++m) {
        auto mk = std::make_unique<MainlineKey>();
        mk->setCurrentTime(next(), true, false);
        mk->setId(next());
        const int flags = next();
        mk->setEditorFlag(flags & 1);
        mk->setOnionSkinFlag(flags & 2);
        mk->setCurve(s.mainlineCurves.value(m));
        QList<int> parents;
        const int bones = next();
        readSection(0, bones, 3);
        for (int i = 0; i < bones; ++i) {
            mk->appendBoneRef(new BoneRef(keyAt()));
            parents.append(field());
        }
        for (int i = 0; i < bones; ++i)
            mk->boneRef(i)->setParentRef(mk->boneRef(parents.at(i)));
        const int zs = next();
        readSection(1, zs, 3);
        for (int i = 0; i < zs; ++i) {
            auto *r = new ZRef(keyAt());
            r->setParentRef(mk->boneRef(field()));
            // The file's z index only orders references as they are read;
            // their order here is what counts.
            r->setLoadZIndex(i);
            mk->appendZRef(r);
        }
        const int children = next();
        readSection(2, children, 2);
        for (int i = 0; i < children; ++i)
            mk->addChildTimelineKey(keyAt());
        mainline.push_back(std::move(mk));
    }

    // The old content goes, mainline keys first: they release their keys.
    animation->mMainlineKeys.clear();
    animation->mTimelines.clear();
    animation->mMainlineKeys = std::move(mainline);
    animation->mTimelines = std::move(timelines);
    for (const auto &mk : animation->mMainlineKeys)
        mk->setParentItem(animation);
    for (const auto &tl : animation->mTimelines)
        tl->setParentItem(animation);
    animation->mName = s.name;
    animation->mLength = s.length;
    animation->mLooping = s.looping;
    animation->mLoopTo = s.loopTo;
    animation->mSnappingInterval = s.snapping;
    animation->mGuideLines = s.guides;
    animation->mOwnLineHolder = s.ownLines;
    animation->mObjectLineHolders = s.objectLines;
}

qsizetype AnimationState::bytes() const
{
    // The packed numbers (shared with a neighbouring state when equal count
    // once per state here) and the copies kept beside them.
    return mPacked.size() + qsizetype(sizeof(*this))
           + mShared.mainlineCurves.size() * qsizetype(sizeof(TweenInfo))
           + mShared.timelineNames.size() * qsizetype(sizeof(QString) + sizeof(Address) + sizeof(int));
}

// ChangeAnimationCommand

ChangeAnimationCommand::ChangeAnimationCommand(const Animation *animation, const QString &text,
                                               QUndoCommand *parent)
    : QUndoCommand(text, parent)
    , mAnimation(animation ? freshAddress(animation->address()) : Address())
    , mSkipRedo(true)
{
    if (animation)
        mBefore = std::make_unique<AnimationState>(*animation, animation->parentEntity());
}

ChangeAnimationCommand::ChangeAnimationCommand(const Animation *animation, const Animation &after,
                                               const QString &text, QUndoCommand *parent)
    : QUndoCommand(text, parent)
    , mAnimation(animation ? freshAddress(animation->address()) : Address())
    , mSkipRedo(false)
{
    if (!animation)
        return;
    const Entity *entity = animation->parentEntity();
    mBefore = std::make_unique<AnimationState>(*animation, entity);
    mAfter = std::make_unique<AnimationState>(after, entity);
}

ChangeAnimationCommand::~ChangeAnimationCommand() = default;

void ChangeAnimationCommand::noteAfter()
{
    // Taken at the first undo instead: until then the animation stays as the
    // change left it (later commands are undone first), and a drag's record
    // spares a pass over every key.
    mAfterPending = true;
}

void ChangeAnimationCommand::redo()
{
    if (mSkipRedo) {
        mSkipRedo = false;
        return;
    }
    apply(true);
}

void ChangeAnimationCommand::undo()
{
    if (mAfterPending) {
        mAfterPending = false;
        if (const Animation *animation = freshAddress(mAnimation).animation())
            mAfter = std::make_unique<AnimationState>(*animation, animation->parentEntity());
    }
    apply(false);
}

void ChangeAnimationCommand::apply(bool after)
{
    Animation *animation = freshAddress(mAnimation).animation();
    const AnimationState *state = after ? mAfter.get() : mBefore.get();
    if (animation && state)
        state->restore(animation);
}

qsizetype ChangeAnimationCommand::storedBytes() const
{
    return (mBefore ? mBefore->bytes() : 0) + (mAfter ? mAfter->bytes() : 0);
}

qsizetype ChangeAnimationCommand::sharedKeyBytes(const RigxData *document)
{
    const auto pool = document ? std::static_pointer_cast<KeyPool>(document->sharedUndoData())
                               : nullptr;
    return pool ? pool->bytes() : 0;
}

// SetMainlineKeyTimeCommand

SetMainlineKeyTimeCommand::SetMainlineKeyTimeCommand(MainlineKey *key, int oldTime, int newTime,
                                                     bool flag, bool force, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mAnimation(key && key->parentAnimation() ? freshAddress(key->parentAnimation()->address())
                                                : Address())
    , mOldTime(oldTime)
    , mNewTime(newTime)
    , mForce(force)
{
    Q_UNUSED(flag);
}

void SetMainlineKeyTimeCommand::redo()
{
    move(mOldTime, mNewTime);
}

void SetMainlineKeyTimeCommand::undo()
{
    move(mNewTime, mOldTime);
}

void SetMainlineKeyTimeCommand::move(int from, int to)
{
    Animation *animation = freshAddress(mAnimation).animation();
    MainlineKey *key = animation ? animation->mainlineKeyAtExactTime(from) : nullptr;
    if (key)
        key->setCurrentTime(to, mForce, true);
}

// RefreshVariablesCommand

RefreshVariablesCommand::RefreshVariablesCommand(RigxData *document, bool atEnd,
                                                 QUndoCommand *parent)
    : QUndoCommand(parent)
    , mDocument(document)
    , mAtEnd(atEnd)
{}

void RefreshVariablesCommand::redo()
{
    if (mAtEnd && mDocument)
        mDocument->emitRefreshVariables();
}

void RefreshVariablesCommand::undo()
{
    if (!mAtEnd && mDocument)
        mDocument->emitRefreshVariables();
}

// CloneAnimationCommand

namespace {

// Divides every time of `animation` by `speed`, keeping the keys apart, and
// adds `hold` milliseconds to its length.
void retime(Animation *animation, double speed, int hold)
{
    if (speed > 0.0 && speed != 1.0) {
        int previous = -1;
        // Collected first: a key given its new time moves to its place at once.
        QList<MainlineKey *> keys;
        for (int i = 0; i < animation->mainlineKeyCount(); ++i)
            keys.append(animation->mainlineKey(i));
        for (MainlineKey *mk : std::as_const(keys)) {
            int t = int(std::lround(mk->currentTime() / speed));
            t = std::max(t, previous + 1);
            mk->setCurrentTime(t, true, true);
            previous = t;
        }
        animation->sortMainlineKeysByTime();
        animation->setLength(std::max(previous, int(std::lround(animation->length() / speed))));
        animation->setLoopTo(int(std::lround(animation->loopTo() / speed)));
        // Keys without mainline key (sound lines) follow by the same rule.
        for (int i = 0; i < animation->timelineCount(); ++i) {
            Timeline *tl = animation->timeline(i);
            for (int k = 0; k < tl->keyCount(); ++k) {
                TimelineKey *key = tl->key(k);
                if (!key->mainKey())
                    key->setCachedTime(int(std::lround(key->time(true) / speed)));
            }
        }
    }
    animation->setLength(animation->length() + std::max(hold, 0));
}

} // namespace

CloneAnimationCommand::CloneAnimationCommand(Animation *source, QUndoCommand *parent)
    : CloneAnimationCommand(source, 0.0, 0, 1.0, 1.0, parent)
{}

CloneAnimationCommand::CloneAnimationCommand(Animation *source, double holdMs, int count,
                                             double speed, double speedStep,
                                             QUndoCommand *parent)
    : QUndoCommand(parent)
    , mSource(source ? freshAddress(source->address()) : Address())
    , mDocument(source ? source->document() : nullptr)
    , mHoldMs(std::isfinite(holdMs) ? holdMs : 0.0)
    , mCount(std::clamp(count, 0, 1000))
    , mSpeed(std::isfinite(speed) && speed > 0.0 ? speed : 1.0)
    , mSpeedStep(std::isfinite(speedStep) && speedStep > 0.0 ? speedStep : 1.0)
{
    const Entity *entity = source ? source->parentEntity() : nullptr;
    if (entity) {
        mEntityRow = mSource.entityIndex();
        mInsertRow = entity->indexOfAnimation(source) + 1;
    }
    setText(QObject::tr("animation cloned"));
}

CloneAnimationCommand::~CloneAnimationCommand() = default;

void CloneAnimationCommand::redo()
{
    mDone = false;
    const Animation *source = freshAddress(mSource).animation();
    Entity *entity = source ? source->parentEntity() : nullptr;
    if (!entity || mInsertRow < 0 || mInsertRow > entity->animationCount())
        return;
    for (int k = 0; k <= mCount; ++k) {
        auto clone = source->clone();
        clone->setName(entity->uniqueAnimationName(source->name()));
        const double speed = mSpeed * std::pow(mSpeedStep, k);
        retime(clone.get(), std::isfinite(speed) && speed > 0.0 ? speed : 1.0,
               int(std::lround(mHoldMs * k)));
        entity->insertAnimation(mInsertRow + k, clone.release());
    }
    mDone = true;
    if (mDocument)
        mDocument->emitEntityAnimationStructureChanged();
}

void CloneAnimationCommand::undo()
{
    if (!mDone)
        return;
    Entity *entity = mDocument ? mDocument->entity(mEntityRow) : nullptr;
    if (!entity)
        return;
    for (int row = mInsertRow + mCount; row >= mInsertRow; --row)
        entity->deleteAnimation(row);
    mDone = false;
    mDocument->emitEntityAnimationStructureChanged();
}

} // namespace Morvane
