// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/valinfocollection.h"
#include "model/address.h"
#include "model/morvanemodelitem.h"
#include "model/timelinekey.h"

#include <QPointF>
#include <QString>

namespace Morvane {

class Entity;

/// An object info: one thing that timelines of the entity animate, with the
/// default state new keys of it start from.
class Object : public MorvaneModelItem
{
public:
    enum Type {
        Bone = 0x10001,
        Sprite = 0x10002,
        Box = 0x10003,
        Point = 0x10004,
        SubEntity = 0x10005,
        Sound = 0x10006,
        GuideSprite = 0x1000a,
        GuideLine = 0x1000b,
        GuideBox = 0x1000c,
        Event = 0x1000d,
        Skin = 0x1000e,
    };

    /// Bones default to 200 x 10 and boxes to 100 x 100 pixels.
    explicit Object(const QString &name = QString(), int type = Sprite);
    /// Copies name, type, default state, inherit and anchor settings.
    Object(const Object &other);
    Object &operator=(const Object &) = delete;
    ~Object() override;

    QString name() const { return mName; }
    void setName(const QString &name) { mName = name; }
    int objectType() const { return mType; }
    void setObjectType(int type) { mType = type; }

    bool isBone() const { return mType == Bone; }
    bool isSprite() const { return mType == Sprite; }
    bool isBox() const { return mType == Box; }
    bool isPoint() const { return mType == Point; }
    bool isSubEntity() const { return mType == SubEntity; }
    bool isSound() const { return mType == Sound; }
    bool isGuideSprite() const { return mType == GuideSprite; }
    bool isGuideLine() const { return mType == GuideLine; }
    bool isGuideBox() const { return mType == GuideBox; }
    bool isEvent() const { return mType == Event; }
    bool isSkin() const { return mType == Skin; }

    QString objectTypeString(bool shortName = false) const
    {
        return objectTypeString(mType, shortName);
    }
    /// The file-format name of `type` ("bone", "sprite", ...) or its short
    /// form ("bn", "spr", ...); empty for an unknown type.
    static QString objectTypeString(int type, bool shortName = false);
    /// The type named `name` (long or short form), 0 when unknown. With
    /// `guide`, "sprite" and "box" give the guide types.
    static int objectTypeFromString(const QString &name, bool guide = false);

    /// The state new keys of this object start from.
    TimelineKey &defaultState() { return mDefaultState; }
    const TimelineKey &defaultState() const { return mDefaultState; }
    void setDefaultState(const TimelineKey &state, bool keepSize = false, bool keepPivot = false);
    double width() const { return mDefaultState.info().width; }
    double height() const { return mDefaultState.info().height; }

    bool inhPos() const { return mInheritPos; }
    bool inhAngle() const { return mInheritAngle; }
    bool inhScale() const { return mInheritScale; }
    void setInheritPos(bool on) { mInheritPos = on; }
    void setInheritAngle(bool on) { mInheritAngle = on; }
    void setInheritScale(bool on) { mInheritScale = on; }
    void setAnchor(bool anchored, double x = 0.0, double y = 0.0, bool keepPoint = false);
    bool anchored() const { return mAnchored; }
    QPointF anchorPoint() const { return mAnchorPoint; }

    /// Sound objects: the file last loaded and the volume.
    QString lastSoundFile() const { return mLastSoundFile; }
    double volume() const { return mVolume; }
    void setVolume(double volume) { mVolume = volume; }

    /// The object's variable declarations ("var_defs").
    ValInfoCollection &valInfoCollection() { return mValInfos; }
    const ValInfoCollection &valInfoCollection() const { return mValInfos; }

    Entity *parentEntity() const;
    /// (entity index, object index) with a direct pointer.
    Address address() const;

private:
    QString mName;
    int mType = Sprite;
    TimelineKey mDefaultState;
    bool mInheritPos = true;
    bool mInheritAngle = true;
    bool mInheritScale = true;
    bool mAnchored = false;
    QPointF mAnchorPoint;
    QString mLastSoundFile;
    double mVolume = 1.0;
    ValInfoCollection mValInfos;
};

} // namespace Morvane
