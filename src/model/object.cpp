// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/object.h"

#include "model/entity.h"

namespace Morvane {

namespace {
struct TypeName
{
    int type;
    const char *name;
    const char *shortName;
};

constexpr TypeName kTypeNames[] = {
    {Object::Bone, "bone", "bn"},
    {Object::Sprite, "sprite", "spr"},
    {Object::Box, "box", "bx"},
    {Object::Point, "point", "pt"},
    {Object::SubEntity, "entity", "ent"},
    {Object::Sound, "sound", "snd"},
    {Object::GuideSprite, "guide_sprite", "gdspr"},
    {Object::GuideLine, "guideline", "gdln"},
    {Object::GuideBox, "guide_box", "gdbox"},
    {Object::Event, "event", "ev"},
    {Object::Skin, "skin", "skn"},
};
} // namespace

Object::Object(const QString &name, int type)
    : MorvaneModelItem(MorvaneItemType::Object)
    , mName(name)
    , mType(type)
{
    if (type == Bone) {
        mDefaultState.info().width = 200;
        mDefaultState.info().height = 10;
    } else if (type == Box || type == GuideBox) {
        mDefaultState.info().width = 100;
        mDefaultState.info().height = 100;
    }
}

Object::Object(const Object &other)
    : MorvaneModelItem(MorvaneItemType::Object)
    , mName(other.mName)
    , mType(other.mType)
    , mDefaultState(other.mDefaultState)
    , mInheritPos(other.mInheritPos)
    , mInheritAngle(other.mInheritAngle)
    , mInheritScale(other.mInheritScale)
    , mAnchored(other.mAnchored)
    , mAnchorPoint(other.mAnchorPoint)
    , mLastSoundFile(other.mLastSoundFile)
    , mVolume(other.mVolume)
    , mValInfos(other.mValInfos)
{}

Object::~Object() = default;

QString Object::objectTypeString(int type, bool shortName)
{
    for (const TypeName &t : kTypeNames) {
        if (t.type == type)
            return QString::fromLatin1(shortName ? t.shortName : t.name);
    }
    return QString();
}

int Object::objectTypeFromString(const QString &name, bool guide)
{
    for (const TypeName &t : kTypeNames) {
        if (name == QLatin1String(t.name) || name == QLatin1String(t.shortName)) {
            if (guide && t.type == Sprite)
                return GuideSprite;
            if (guide && t.type == Box)
                return GuideBox;
            return t.type;
        }
    }
    return 0;
}

void Object::setDefaultState(const TimelineKey &state, bool keepSize, bool keepPivot)
{
    const DisplayInfo old = mDefaultState.info();
    mDefaultState = state;
    DisplayInfo &info = mDefaultState.info();
    if (keepSize) {
        info.width = old.width;
        info.height = old.height;
    }
    if (keepPivot) {
        info.setPivotX(old.pivotX(false), false);
        info.setPivotY(old.pivotY(false), false);
    }
}

void Object::setAnchor(bool anchored, double x, double y, bool keepPoint)
{
    mAnchored = anchored;
    if (!keepPoint)
        mAnchorPoint = QPointF(x, y);
}

Entity *Object::parentEntity() const
{
    MorvaneModelItem *p = parentItem();
    if (p && p->morvaneItemType() == MorvaneItemType::Entity)
        return static_cast<Entity *>(p);
    return nullptr;
}

Address Object::address() const
{
    const Entity *e = parentEntity();
    Address a = e ? e->address() : Address();
    a.set(1, e ? e->indexOfObject(this) : -1);
    a.setDirectPointer(const_cast<Object *>(this));
    return a;
}

} // namespace Morvane
