// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/timelinekey.h"

#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/timeline.h"

namespace Morvane {

Folder *FileInfo::folder() const
{
    const File *f = file();
    return f ? f->parentFolder() : nullptr;
}

QImage FileInfo::pixmap(bool mapped) const
{
    const File *f = file();
    if (!f)
        return QImage();
    if (mapped) {
        const File *shown = f->redirectedFile();
        if (!shown) {
            QImage hidden(50, 50, QImage::Format_ARGB32_Premultiplied);
            hidden.fill(Qt::transparent);
            return hidden;
        }
        return shown->image();
    }
    return f->image();
}

TimelineKey::TimelineKey()
    : MorvaneModelItem(MorvaneItemType::TimelineKey)
{}

TimelineKey::TimelineKey(const FileInfo &file, const DisplayInfo &info, const TweenInfo &curve,
                         int id, const EntityInfo &entityInfo, const SoundInfo &sound)
    : MorvaneModelItem(MorvaneItemType::TimelineKey)
    , mFileInfo(file)
    , mInfo(info)
    , mCurve(curve)
    , mId(id)
    , mEntityInfo(entityInfo)
    , mSound(sound)
{}

TimelineKey::TimelineKey(const TimelineKey &other)
    : MorvaneModelItem(MorvaneItemType::TimelineKey)
    , mFileInfo(other.mFileInfo)
    , mInfo(other.mInfo)
    , mCurve(other.mCurve)
    , mId(other.mId)
    , mCachedTime(other.time(true))
    , mEntityInfo(other.mEntityInfo)
    , mSound(other.mSound)
{}

TimelineKey &TimelineKey::operator=(const TimelineKey &other)
{
    if (this == &other)
        return *this;
    // Values only: the key stays where it is in its tree.
    mFileInfo = other.mFileInfo;
    mInfo = other.mInfo;
    mCurve = other.mCurve;
    mId = other.mId;
    mEntityInfo = other.mEntityInfo;
    mSound = other.mSound;
    if (!mainKey())
        mCachedTime = other.time(true);
    return *this;
}

TimelineKey::~TimelineKey()
{
    if (MainlineKey *mk = mainKey())
        mk->removeChildKey(this);
}

int TimelineKey::time(bool useCached) const
{
    if (const MainlineKey *mk = mainKey()) {
        const_cast<TimelineKey *>(this)->mCachedTime = mk->currentTime();
        return mCachedTime;
    }
    return useCached ? mCachedTime : NoTime;
}

MainlineKey *TimelineKey::mainKey() const
{
    // Only the direct pointer counts: a key whose mainline key went away is
    // detached, and must not re-link to whatever key now has that index.
    MorvaneModelItem *item = mMainKeyLink.directPointer();
    if (item && item->morvaneItemType() == MorvaneItemType::MainlineKey)
        return static_cast<MainlineKey *>(item);
    return nullptr;
}

MainlineKey *TimelineKey::associatedMainlineKey(bool searchByTime) const
{
    if (MainlineKey *mk = mainKey())
        return mk;
    if (!searchByTime)
        return nullptr;
    const Animation *anim = parentAnimation();
    return anim ? anim->mainlineKeyFromTime(mCachedTime, true) : nullptr;
}

int TimelineKey::mainKeyId() const
{
    const MainlineKey *mk = mainKey();
    return mk ? mk->id() : NoTime;
}

void TimelineKey::setMainKey(MainlineKey *key)
{
    if (key) {
        mCachedTime = key->currentTime();
        // Only the direct pointer is used (see mainKey()), so skip the indexes.
        mMainKeyLink = Address();
        mMainKeyLink.setDirectPointer(key);
    } else {
        mCachedTime = time(true);
        mMainKeyLink = Address();
    }
}

ObjectRef *TimelineKey::ref() const
{
    const MainlineKey *mk = mainKey();
    const Timeline *tl = parentTimeline();
    if (!mk || !tl)
        return nullptr;
    return mk->refFromTimeline(tl);
}

ObjectRef *TimelineKey::parentRef() const
{
    ObjectRef *r = ref();
    return r ? r->parentRef() : nullptr;
}

Timeline *TimelineKey::parentTimeline() const
{
    MorvaneModelItem *p = parentItem();
    if (p && p->morvaneItemType() == MorvaneItemType::Timeline)
        return static_cast<Timeline *>(p);
    return nullptr;
}

Animation *TimelineKey::parentAnimation() const
{
    const Timeline *tl = parentTimeline();
    return tl ? tl->parentAnimation() : nullptr;
}

Object *TimelineKey::object() const
{
    const Timeline *tl = parentTimeline();
    return tl ? tl->object() : nullptr;
}

bool TimelineKey::keyIsMandatory() const
{
    const Timeline *tl = parentTimeline();
    return tl && tl->keyCount() == 1;
}

Address TimelineKey::address() const
{
    const Timeline *tl = parentTimeline();
    if (!tl)
        return Address(nullptr, {}, const_cast<TimelineKey *>(this));
    Address a = tl->address();
    a.set(3, tl->indexOfKey(this));
    a.setDirectPointer(const_cast<TimelineKey *>(this));
    return a;
}

} // namespace Morvane
