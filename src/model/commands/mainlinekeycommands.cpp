// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/mainlinekeycommands.h"

#include "model/animation.h"
#include "model/commands/timelinekeycommands.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

namespace Morvane {

namespace {

int timelineIndexOf(const ObjectRef *ref)
{
    const Timeline *tl = ref ? ref->timeline() : nullptr;
    const Animation *anim = tl ? tl->parentAnimation() : nullptr;
    return anim ? anim->indexOfTimeline(tl) : -1;
}

ObjectRef *refForTimeline(const MainlineKey *key, int timelineIndex)
{
    const Animation *anim = key ? key->parentAnimation() : nullptr;
    const Timeline *tl = anim ? anim->timeline(timelineIndex) : nullptr;
    return tl ? key->refFromTimeline(tl) : nullptr;
}

// Takes `refs` out of `key` and puts them back at positions 0, 1, 2...,
// keeping their parents (taking a reference out clears its parent).
void reinsert(MainlineKey *key, const QList<ZRef *> &refs)
{
    QList<BoneRef *> parents;
    for (ZRef *r : refs) {
        parents.append(r->parentRef());
        key->removeZRef(r);
    }
    for (int i = 0; i < refs.size(); ++i) {
        key->appendZRef(refs[i], i);
        refs[i]->setParentRef(parents[i]);
    }
}

} // namespace

AppendMainlineKeyCommand::AppendMainlineKeyCommand(Animation *animation, int time,
                                                   QUndoCommand *parent)
    : QUndoCommand(parent)
    , mAnimation(animation ? freshAddress(animation->address()) : Address())
    , mTime(time)
{}

void AppendMainlineKeyCommand::redo()
{
    mAdded = false;
    Animation *anim = freshAddress(mAnimation).animation();
    if (!anim || anim->mainlineKeyAtExactTime(mTime))
        return;
    const MainlineKey *inForce = anim->mainlineKeyFromTime(mTime, false);
    auto *key = inForce ? new MainlineKey(*inForce) : new MainlineKey;
    mAdded = anim->appendMainlineKey(key, mTime, true, true) != -2;
}

void AppendMainlineKeyCommand::undo()
{
    Animation *anim = freshAddress(mAnimation).animation();
    MainlineKey *key = anim && mAdded ? anim->mainlineKeyAtExactTime(mTime) : nullptr;
    if (key)
        anim->deleteMainlineKey(key, false);
    mAdded = false;
}

AssignChildKeyToMainlineKeyCommand::AssignChildKeyToMainlineKeyCommand(TimelineKey *key,
                                                                       MainlineKey *mainlineKey,
                                                                       QUndoCommand *parent)
    : QUndoCommand(parent)
    , mTimeline(key && key->parentTimeline() ? freshAddress(key->parentTimeline()->address())
                                              : Address())
    , mTime(key ? key->time(true) : -1)
    , mMainlineTime(mainlineKey ? mainlineKey->currentTime() : -1)
{}

void AssignChildKeyToMainlineKeyCommand::redo()
{
    mDone = false;
    Timeline *tl = freshAddress(mTimeline).timeline();
    Animation *anim = tl ? tl->parentAnimation() : nullptr;
    MainlineKey *mk = anim ? anim->mainlineKeyAtExactTime(mMainlineTime) : nullptr;
    TimelineKey *key = mk ? tl->actualKeyFromTime(mTime, true) : nullptr;
    if (!key)
        return;
    MainlineKey *former = key->mainKey();
    mFormerOwnerTime = former && former != mk ? former->currentTime() : -1;
    if (former != mk)
        mk->addChildTimelineKey(key);
    mAddedRef = false;
    mFormerRefKeyIndex = -1;
    if (ObjectRef *ref = mk->refFromTimeline(tl)) {
        mFormerRefKeyIndex = ref->keyIndex();
        ref->setKey(key);
    } else {
        mk->appendRef(tl, tl->indexOfKey(key));
        mAddedRef = true;
    }
    mDone = true;
}

void AssignChildKeyToMainlineKeyCommand::undo()
{
    if (!mDone)
        return;
    mDone = false;
    Timeline *tl = freshAddress(mTimeline).timeline();
    Animation *anim = tl ? tl->parentAnimation() : nullptr;
    MainlineKey *mk = anim ? anim->mainlineKeyAtExactTime(mMainlineTime) : nullptr;
    TimelineKey *key = mk ? tl->actualKeyFromTime(mTime, true) : nullptr;
    if (!key)
        return;
    if (ObjectRef *ref = mk->refFromTimeline(tl)) {
        if (mAddedRef)
            mk->deleteRef(ref, true, false);
        else
            ref->setKey(tl->key(mFormerRefKeyIndex));
    }
    if (mFormerOwnerTime >= 0) {
        if (MainlineKey *former = anim->mainlineKeyAtExactTime(mFormerOwnerTime))
            former->addChildTimelineKey(key);
    }
}

ChangeParentingCommand::ChangeParentingCommand(ObjectRef *ref, ObjectRef *newParent,
                                               const DisplayInfo &newInfo, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mMainlineKey(ref && ref->parentMainlineKey()
                       ? freshAddress(ref->parentMainlineKey()->address())
                       : Address())
    , mTimeline(timelineIndexOf(ref))
    , mOldParent(ref ? timelineIndexOf(ref->parentRef()) : -1)
    , mNewParent(timelineIndexOf(newParent))
    , mOldInfo(ref && ref->key() ? ref->key()->info() : DisplayInfo())
    , mNewInfo(newInfo)
{}

void ChangeParentingCommand::apply(int parentTimeline, const DisplayInfo &info)
{
    MainlineKey *mk = freshAddress(mMainlineKey).mainlineKey();
    ObjectRef *ref = refForTimeline(mk, mTimeline);
    if (!ref)
        return;
    ObjectRef *parent = parentTimeline >= 0 ? refForTimeline(mk, parentTimeline) : nullptr;
    if (parentTimeline >= 0 && (!parent || !parent->isBoneRef()))
        return;
    // A bone never becomes its own ancestor: that would be a cycle.
    for (const ObjectRef *p = parent; p; p = p->parentRef()) {
        if (p == ref)
            return;
    }
    ref->setParentRef(static_cast<BoneRef *>(parent));
    if (TimelineKey *key = ref->key())
        key->setInfo(info);
}

void ChangeParentingCommand::redo()
{
    mBoneOrder.clear();
    mParents.clear();
    if (MainlineKey *mk = freshAddress(mMainlineKey).mainlineKey()) {
        for (int i = 0; i < mk->boneRefCount(); ++i)
            mBoneOrder.append(timelineIndexOf(mk->boneRef(i)));
        for (int i = 0; i < mk->refCount(); ++i)
            mParents.append({timelineIndexOf(mk->ref(i)), timelineIndexOf(mk->ref(i)->parentRef())});
    }
    apply(mNewParent, mNewInfo);
}

void ChangeParentingCommand::undo()
{
    MainlineKey *mk = freshAddress(mMainlineKey).mainlineKey();
    if (mk && mk->boneRefCount() == mBoneOrder.size()) {
        QList<BoneRef *> ordered;
        for (int timeline : std::as_const(mBoneOrder)) {
            ObjectRef *r = refForTimeline(mk, timeline);
            if (!r || !r->isBoneRef() || ordered.contains(static_cast<BoneRef *>(r)))
                break;
            ordered.append(static_cast<BoneRef *>(r));
        }
        if (ordered.size() == mBoneOrder.size()) {
            for (BoneRef *r : std::as_const(ordered))
                mk->removeBoneRef(r);
            for (BoneRef *r : std::as_const(ordered))
                mk->appendBoneRef(r);
            // Taking bones out re-parented their children: set every parent again.
            for (const auto &[timeline, parent] : std::as_const(mParents)) {
                ObjectRef *r = refForTimeline(mk, timeline);
                ObjectRef *p = parent >= 0 ? refForTimeline(mk, parent) : nullptr;
                if (r && (!p || p->isBoneRef()))
                    r->setParentRef(static_cast<BoneRef *>(p));
            }
        }
    }
    apply(mOldParent, mOldInfo);
}

ChangeZOrderCommand::ChangeZOrderCommand(MainlineKey *key, int from, int to, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mKey(key ? freshAddress(key->address()) : Address())
    , mFrom(from)
    , mTo(to)
{}

void ChangeZOrderCommand::move(MainlineKey *key, int from, int to)
{
    if (!key || from < 0 || to < 0 || from >= key->zRefCount() || to >= key->zRefCount())
        return;
    ZRef *ref = key->zRef(from);
    BoneRef *parent = ref->parentRef(); // taking the reference out clears it
    key->removeZRef(ref);
    key->appendZRef(ref, to);
    ref->setParentRef(parent);
}

void ChangeZOrderCommand::redo()
{
    move(freshAddress(mKey).mainlineKey(), mFrom, mTo);
}

void ChangeZOrderCommand::undo()
{
    move(freshAddress(mKey).mainlineKey(), mTo, mFrom);
}

OverwriteZOrderCommand::OverwriteZOrderCommand(MainlineKey *source, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mAnimation(source && source->parentAnimation()
                     ? freshAddress(source->parentAnimation()->address())
                     : Address())
    , mSourceIndex(source && source->parentAnimation()
                       ? source->parentAnimation()->indexOfMainlineKey(source)
                       : -1)
{
    setText(QStringLiteral("z order copied from key %1to all other keys").arg(mSourceIndex));
}

void OverwriteZOrderCommand::redo()
{
    mFormerPositions.clear();
    Animation *anim = freshAddress(mAnimation).animation();
    const MainlineKey *source = anim ? anim->mainlineKey(mSourceIndex) : nullptr;
    if (!source)
        return;
    for (int k = 0; k < anim->mainlineKeyCount(); ++k) {
        MainlineKey *key = anim->mainlineKey(k);
        QList<ZRef *> shared;
        if (key != source) {
            for (int i = 0; i < source->zRefCount(); ++i) {
                const Timeline *tl = source->zRef(i)->timeline();
                ObjectRef *r = tl ? key->refFromTimeline(tl) : nullptr;
                if (r && !r->isBoneRef() && !shared.contains(static_cast<ZRef *>(r)))
                    shared.append(static_cast<ZRef *>(r));
            }
        }
        QList<int> former;
        for (int i = 0; i < key->zRefCount(); ++i)
            former.append(i);
        if (!shared.isEmpty()) {
            QList<ZRef *> before;
            for (int i = 0; i < key->zRefCount(); ++i)
                before.append(key->zRef(i));
            reinsert(key, shared);
            for (int i = 0; i < key->zRefCount(); ++i)
                former[i] = int(before.indexOf(key->zRef(i)));
        }
        mFormerPositions.append(former);
    }
}

void OverwriteZOrderCommand::undo()
{
    Animation *anim = freshAddress(mAnimation).animation();
    if (!anim || anim->mainlineKeyCount() != mFormerPositions.size())
        return;
    for (int k = 0; k < anim->mainlineKeyCount(); ++k) {
        MainlineKey *key = anim->mainlineKey(k);
        const QList<int> &former = mFormerPositions[k];
        if (key->zRefCount() != former.size())
            continue;
        QList<ZRef *> now;
        for (int i = 0; i < key->zRefCount(); ++i)
            now.append(key->zRef(i));
        QList<ZRef *> restored(now.size(), nullptr);
        for (int i = 0; i < now.size(); ++i) {
            if (former[i] >= 0 && former[i] < restored.size())
                restored[former[i]] = now[i];
        }
        if (restored.contains(nullptr))
            continue;
        reinsert(key, restored);
    }
}

} // namespace Morvane

namespace Morvane {

RemoveRefCommand::RemoveRefCommand(MainlineKey *key, Timeline *timeline, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mKey(key ? freshAddress(key->address()) : Address())
    , mTimeline(timeline && timeline->parentAnimation()
                    ? timeline->parentAnimation()->indexOfTimeline(timeline)
                    : -1)
{}

void RemoveRefCommand::redo()
{
    mRemoved = false;
    MainlineKey *mk = freshAddress(mKey).mainlineKey();
    ObjectRef *ref = refForTimeline(mk, mTimeline);
    if (!ref)
        return;
    mParents.clear();
    for (int i = 0; i < mk->refCount(); ++i)
        mParents.append({timelineIndexOf(mk->ref(i)), timelineIndexOf(mk->ref(i)->parentRef())});
    mBone = ref->isBoneRef();
    mPosition = mBone ? mk->indexOfBoneRef(ref) : mk->indexOfZRef(ref);
    mKeyIndex = ref->keyIndex();
    mk->deleteRef(ref, true, false);
    mRemoved = true;
}

void RemoveRefCommand::undo()
{
    MainlineKey *mk = freshAddress(mKey).mainlineKey();
    const Animation *anim = mk ? mk->parentAnimation() : nullptr;
    Timeline *tl = anim ? anim->timeline(mTimeline) : nullptr;
    if (!mRemoved || !tl || mk->refFromTimeline(tl))
        return;
    TimelineKey *key = tl->key(mKeyIndex);
    if (mBone)
        mk->appendBoneRef(new BoneRef(key), mPosition);
    else
        mk->appendZRef(new ZRef(key), mPosition);
    for (const auto &[timeline, parent] : std::as_const(mParents)) {
        ObjectRef *r = refForTimeline(mk, timeline);
        ObjectRef *p = parent >= 0 ? refForTimeline(mk, parent) : nullptr;
        if (r && (!p || p->isBoneRef()))
            r->setParentRef(static_cast<BoneRef *>(p));
    }
    mRemoved = false;
}

} // namespace Morvane
