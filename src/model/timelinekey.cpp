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
{
    setExtras(entityInfo, sound);
}

TimelineKey::TimelineKey(const TimelineKey &other)
    : MorvaneModelItem(MorvaneItemType::TimelineKey)
    , mFileInfo(other.mFileInfo)
    , mInfo(other.mInfo)
    , mCurve(other.mCurve)
    , mId(other.mId)
    , mCachedTime(other.time(true))
{
    if (other.mExtras)
        mExtras = std::make_unique<Extras>(*other.mExtras);
}

TimelineKey::Extras &TimelineKey::extras()
{
    if (!mExtras)
        mExtras = std::make_unique<Extras>();
    return *mExtras;
}

const TimelineKey::Extras &TimelineKey::constExtras() const
{
    static const Extras defaults;
    return mExtras ? *mExtras : defaults;
}

void TimelineKey::setExtras(const EntityInfo &entityInfo, const SoundInfo &sound)
{
    const EntityInfo plainEntity;
    const SoundInfo plainSound;
    const bool plain = entityInfo.animation.isEmpty() && !entityInfo.animation.isValid()
                       && entityInfo.timeRatio == plainEntity.timeRatio
                       && entityInfo.speedRatio == plainEntity.speedRatio
                       && entityInfo.ratioControlMethod == plainEntity.ratioControlMethod
                       && sound.volume == plainSound.volume && sound.panning == plainSound.panning
                       && sound.trigger == plainSound.trigger;
    if (plain)
        mExtras.reset();
    else
        mExtras = std::make_unique<Extras>(Extras{entityInfo, sound});
}

TimelineKey &TimelineKey::operator=(const TimelineKey &other)
{
    if (this == &other)
        return *this;
    // Values only: the key stays where it is in its tree.
    mFileInfo = other.mFileInfo;
    mInfo = other.mInfo;
    mCurve = other.mCurve;
    mId = other.mId;
    if (other.mExtras)
        mExtras = std::make_unique<Extras>(*other.mExtras);
    else
        mExtras.reset();
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
    return mMainKey;
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
        mMainKey = key;
    } else {
        mCachedTime = time(true);
        mMainKey = nullptr;
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
