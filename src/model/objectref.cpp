// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/objectref.h"

#include "model/animation.h"
#include "model/inheritance.h"
#include "model/mainlinekey.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

namespace Morvane {

ObjectRef::ObjectRef(MorvaneItemType type, TimelineKey *key, BoneRef *parent)
    : MorvaneModelItem(type)
    , mParent(parent)
{
    setKey(key);
}

ObjectRef::ObjectRef(const ObjectRef &other)
    : MorvaneModelItem(other)
    , mId(other.mId)
    , mParent(nullptr)
    , mKey(other.mKey)
    , mCurrentInfo(other.mCurrentInfo)
{}

ObjectRef::~ObjectRef() = default;

TimelineKey *ObjectRef::key() const
{
    if (mKey.isValid())
        return mKey.key();
    // Re-resolve by indexes only inside a document (undo after a rebuild).
    return mKey.document() && mKey.size() >= 4 ? mKey.key() : nullptr;
}

Timeline *ObjectRef::timeline() const
{
    const TimelineKey *k = key();
    return k ? k->parentTimeline() : nullptr;
}

int ObjectRef::keyIndex() const
{
    const TimelineKey *k = key();
    const Timeline *tl = k ? k->parentTimeline() : nullptr;
    return tl ? tl->indexOfKey(k) : -1;
}

void ObjectRef::setKey(TimelineKey *key)
{
    mKey = Address();
    if (key)
        mKey.setDirectPointer(key);
}

MainlineKey *ObjectRef::parentMainlineKey() const
{
    MorvaneModelItem *p = parentItem();
    if (p && p->morvaneItemType() == MorvaneItemType::MainlineKey)
        return static_cast<MainlineKey *>(p);
    return nullptr;
}

Address ObjectRef::address() const
{
    const MainlineKey *mk = parentMainlineKey();
    Address a = mk ? mk->address() : Address();
    a.set(3, refType());
    a.set(4, row());
    a.setDirectPointer(const_cast<ObjectRef *>(this));
    return a;
}

int ZRef::zIndex() const
{
    return row();
}

namespace {

unsigned inheritFlagsOf(const Timeline *timeline)
{
    return inheritFlags(timeline ? timeline->object() : nullptr);
}

} // namespace

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
        parent = unmapFromParent(local, parent, inheritFlagsOf(ptl));
    }
    return unmapFromParent(info, parent, inheritFlagsOf(tl));
}

void ObjectRef::updateCurrentInfo(int sampleTime)
{
    mCurrentInfo = unmappedInfo(sampleTime);
}

} // namespace Morvane
