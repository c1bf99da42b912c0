// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/mainlinekey.h"

#include "model/animation.h"
#include "model/objectref.h"
#include "model/ownedlist.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QHash>

namespace Morvane {

MainlineKey::MainlineKey()
    : MorvaneModelItem(MorvaneItemType::MainlineKey)
{}

MainlineKey::MainlineKey(const MainlineKey &other)
    : MorvaneModelItem(MorvaneItemType::MainlineKey)
    , mCurve(other.mCurve)
    , mId(other.mId)
    , mTime(other.mTime)
    , mEditorFlag(other.mEditorFlag)
    , mOnionSkinFlag(other.mOnionSkinFlag)
{
    QHash<const BoneRef *, BoneRef *> copies;
    mBoneRefs.reserve(other.mBoneRefs.size());
    for (const auto &b : other.mBoneRefs) {
        auto copy = std::make_unique<BoneRef>(*b);
        copy->setParentItem(this);
        copies.insert(b.get(), copy.get());
        mBoneRefs.push_back(std::move(copy));
    }
    for (size_t i = 0; i < mBoneRefs.size(); ++i)
        mBoneRefs[i]->setParentRef(copies.value(other.mBoneRefs[i]->parentRef()));
    mZRefs.reserve(other.mZRefs.size());
    for (const auto &z : other.mZRefs) {
        auto copy = std::make_unique<ZRef>(*z);
        copy->setParentItem(this);
        copy->setParentRef(copies.value(z->parentRef()));
        mZRefs.push_back(std::move(copy));
    }
}

MainlineKey::~MainlineKey()
{
    clearAllLinksAndChildren();
}

bool MainlineKey::setCurrentTime(int time, bool force, bool moveChildren)
{
    Animation *anim = parentAnimation();
    if (anim && !force) {
        const MainlineKey *there = anim->mainlineKeyAtExactTime(time);
        if (there && there != this)
            return false;
    }
    // Found while the key still stands at its old time.
    const int index = anim ? anim->indexOfMainlineKey(this) : -1;
    mTime = time;
    if (moveChildren) {
        for (TimelineKey *k : std::as_const(mChildKeys))
            k->setCachedTime(time);
    }
    if (anim)
        anim->moveMainlineKeyIntoPlace(index);
    return true;
}

BoneRef *MainlineKey::boneRef(int index) const
{
    return ownedAt(mBoneRefs, index);
}

ZRef *MainlineKey::zRef(int index) const
{
    return ownedAt(mZRefs, index);
}

ObjectRef *MainlineKey::ref(int index) const
{
    if (index < boneRefCount())
        return boneRef(index);
    return zRef(index - boneRefCount());
}

BoneRef *MainlineKey::boneRefFromId(int id) const
{
    for (const auto &b : mBoneRefs) {
        if (b->id() == id)
            return b.get();
    }
    return nullptr;
}

ZRef *MainlineKey::zRefFromId(int id) const
{
    for (const auto &z : mZRefs) {
        if (z->id() == id)
            return z.get();
    }
    return nullptr;
}

ObjectRef *MainlineKey::refFromId(int type, int id) const
{
    if (type == ObjectRef::BoneRefType)
        return boneRefFromId(id);
    return zRefFromId(id);
}

ObjectRef *MainlineKey::refFromTypeAndIndex(int type, int index) const
{
    if (type == ObjectRef::BoneRefType)
        return boneRef(index);
    if (type == ObjectRef::ZRefType)
        return zRef(index);
    return nullptr;
}

ObjectRef *MainlineKey::refFromTimeline(const Timeline *timeline, int startIndex) const
{
    if (!timeline)
        return nullptr;
    const int count = refCount();
    for (int i = qMax(0, startIndex); i < count; ++i) {
        ObjectRef *r = ref(i);
        if (r->timeline() == timeline)
            return r;
    }
    return nullptr;
}

int MainlineKey::indexOfBoneRef(const ObjectRef *ref) const
{
    return indexOfOwned(mBoneRefs, ref);
}

int MainlineKey::indexOfZRef(const ObjectRef *ref) const
{
    return indexOfOwned(mZRefs, ref);
}

void MainlineKey::appendBoneRef(BoneRef *ref, int index)
{
    if (!ref)
        return;
    ref->setParentItem(this);
    if (index < 0 || index >= int(mBoneRefs.size())) {
        // The others keep their numbers: appending one by one stays linear.
        mBoneRefs.emplace_back(ref);
        ref->setId(boneRefCount() - 1);
        return;
    }
    mBoneRefs.emplace(mBoneRefs.begin() + index, ref);
    renumberBoneRefs();
}

void MainlineKey::appendZRef(ZRef *ref, int index)
{
    if (!ref)
        return;
    ref->setParentItem(this);
    if (index < 0 || index >= int(mZRefs.size())) {
        mZRefs.emplace_back(ref);
        ref->setId(zRefCount() - 1);
        return;
    }
    mZRefs.emplace(mZRefs.begin() + index, ref);
    renumberZRefs();
}

ObjectRef *MainlineKey::appendRef(Timeline *timeline, int keyIndex)
{
    if (!timeline)
        return nullptr;
    TimelineKey *k = timeline->key(keyIndex);
    if (timeline->isBone()) {
        auto *r = new BoneRef(k);
        appendBoneRef(r);
        return r;
    }
    auto *r = new ZRef(k);
    appendZRef(r);
    return r;
}

void MainlineKey::appendRef(ObjectRef *ref, int type, int index)
{
    if (!ref)
        return;
    if (type == ObjectRef::BoneRefType && ref->isBoneRef())
        appendBoneRef(static_cast<BoneRef *>(ref), index);
    else if (type == ObjectRef::ZRefType && !ref->isBoneRef())
        appendZRef(static_cast<ZRef *>(ref), index);
    else
        delete ref; // a reference of the wrong kind has no place here
}

bool MainlineKey::removeBoneRef(BoneRef *ref)
{
    const int i = indexOfBoneRef(ref);
    if (i < 0)
        return false;
    for (const auto &b : mBoneRefs) {
        if (b->parentRef() == ref)
            b->setParentRef(ref->parentRef());
    }
    for (const auto &z : mZRefs) {
        if (z->parentRef() == ref)
            z->setParentRef(ref->parentRef());
    }
    mBoneRefs[size_t(i)].release();
    mBoneRefs.erase(mBoneRefs.begin() + i);
    ref->setParentItem(nullptr);
    ref->setParentRef(nullptr);
    renumberBoneRefs();
    return true;
}

bool MainlineKey::removeZRef(ZRef *ref)
{
    const int i = indexOfZRef(ref);
    if (i < 0)
        return false;
    mZRefs[size_t(i)].release();
    mZRefs.erase(mZRefs.begin() + i);
    ref->setParentItem(nullptr);
    ref->setParentRef(nullptr);
    renumberZRefs();
    return true;
}

void MainlineKey::deleteBoneRef(int index)
{
    BoneRef *r = boneRef(index);
    if (r && removeBoneRef(r))
        delete r;
}

void MainlineKey::deleteZOrderRef(int index)
{
    ZRef *r = zRef(index);
    if (r && removeZRef(r))
        delete r;
}

void MainlineKey::deleteRef(ObjectRef *ref, bool destroy, bool deleteKey)
{
    if (!ref)
        return;
    TimelineKey *k = deleteKey ? ref->key() : nullptr;
    const bool removed = ref->isBoneRef() ? removeBoneRef(static_cast<BoneRef *>(ref))
                                          : removeZRef(static_cast<ZRef *>(ref));
    if (!removed)
        return;
    if (destroy)
        delete ref;
    if (k && k->mainKey() == this) {
        if (Timeline *tl = k->parentTimeline())
            tl->removeKey(k, true);
    }
}

void MainlineKey::addChildTimelineKey(TimelineKey *key)
{
    if (!key)
        return;
    if (MainlineKey *old = key->mainKey()) {
        if (old == this)
            return;
        old->removeChildKey(key);
    }
    mChildKeys.append(key);
    key->setMainKey(this);
}

void MainlineKey::removeChildKey(TimelineKey *key)
{
    if (mChildKeys.removeOne(key))
        key->setMainKey(nullptr);
}

TimelineKey *MainlineKey::childTimeKey(int index) const
{
    return mChildKeys.value(index, nullptr);
}

MainlineKey *MainlineKey::nextMainlineKey() const
{
    const Animation *anim = parentAnimation();
    if (!anim)
        return nullptr;
    return anim->mainlineKey(anim->indexOfMainlineKey(this) + 1);
}

Animation *MainlineKey::parentAnimation() const
{
    MorvaneModelItem *p = parentItem();
    if (p && p->morvaneItemType() == MorvaneItemType::Animation)
        return static_cast<Animation *>(p);
    return nullptr;
}

std::vector<int> MainlineKey::boneSaveOrder(int *reached) const
{
    const int count = boneRefCount();
    std::vector<int> order;
    order.reserve(std::size_t(count));
    std::vector<bool> placed(std::size_t(count), false);
    std::vector<int> stack;
    const auto pushChildrenOf = [&](const BoneRef *parent) {
        // In reverse, so that children come out in their stored order.
        for (int i = count; i-- > 0;) {
            if (!placed[std::size_t(i)] && mBoneRefs[std::size_t(i)]->parentRef() == parent)
                stack.push_back(i);
        }
    };
    pushChildrenOf(nullptr);
    while (!stack.empty()) {
        const int i = stack.back();
        stack.pop_back();
        if (placed[std::size_t(i)])
            continue;
        placed[std::size_t(i)] = true;
        order.push_back(i);
        pushChildrenOf(mBoneRefs[std::size_t(i)].get());
    }
    if (reached)
        *reached = int(order.size());
    for (int i = 0; i < count; ++i) {
        if (!placed[std::size_t(i)])
            order.push_back(i);
    }
    return order;
}

void MainlineKey::applyBoneSaveSortIds()
{
    int reached = 0;
    const std::vector<int> order = boneSaveOrder(&reached);
    std::vector<std::unique_ptr<BoneRef>> ordered;
    ordered.reserve(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        // What no root reaches hangs in a parent cycle: keep it, as a root, so nothing
        // is lost.
        if (int(i) >= reached)
            mBoneRefs[std::size_t(order[i])]->setParentRef(nullptr);
        ordered.push_back(std::move(mBoneRefs[std::size_t(order[i])]));
    }
    mBoneRefs = std::move(ordered);
    renumberBoneRefs();
}

void MainlineKey::sortRefsByLoadZIndex(bool renumber)
{
    std::stable_sort(mZRefs.begin(), mZRefs.end(), [](const auto &a, const auto &b) {
        return a->loadZIndex() < b->loadZIndex();
    });
    if (renumber)
        renumberZRefs();
}

Address MainlineKey::address() const
{
    const Animation *anim = parentAnimation();
    Address a = anim ? anim->address() : Address();
    a.set(2, anim ? anim->indexOfMainlineKey(this) : -1);
    a.setDirectPointer(const_cast<MainlineKey *>(this));
    return a;
}

int MainlineKey::indexOfChild(const MorvaneModelItem *child) const
{
    if (!child)
        return -1;
    if (child->morvaneItemType() == MorvaneItemType::BoneRef)
        return indexOfBoneRef(static_cast<const ObjectRef *>(child));
    if (child->morvaneItemType() == MorvaneItemType::ZRef)
        return indexOfZRef(static_cast<const ObjectRef *>(child));
    return -1;
}

bool MainlineKey::removeChildItem(MorvaneModelItem *child)
{
    if (!child)
        return false;
    if (child->morvaneItemType() == MorvaneItemType::BoneRef)
        return removeBoneRef(static_cast<BoneRef *>(child));
    if (child->morvaneItemType() == MorvaneItemType::ZRef)
        return removeZRef(static_cast<ZRef *>(child));
    return false;
}

void MainlineKey::clearAllLinksAndChildren()
{
    MorvaneModelItem::clearAllLinksAndChildren();
    detachChildKeys();
    mZRefs.clear();
    mBoneRefs.clear();
}

void MainlineKey::renumberBoneRefs()
{
    for (size_t i = 0; i < mBoneRefs.size(); ++i)
        mBoneRefs[i]->setId(int(i));
}

void MainlineKey::renumberZRefs()
{
    for (size_t i = 0; i < mZRefs.size(); ++i)
        mZRefs[i]->setId(int(i));
}

void MainlineKey::detachChildKeys()
{
    const QList<TimelineKey *> children = mChildKeys;
    mChildKeys.clear();
    for (TimelineKey *k : children)
        k->setMainKey(nullptr);
}

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

} // namespace Morvane
