// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

// Builds small rigs in a document for the evaluation tests.

#include "model/animation.h"
#include "model/displayinfo.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "model/tweeninfo.h"

#include <QHash>
#include <QList>
#include <QString>

#include <cmath>

namespace Morvane::Testing {

inline bool near(double a, double b, double tolerance = 1e-9)
{
    return std::abs(a - b) <= tolerance;
}

/// Equal angles up to whole turns (0 and 360 are the same direction).
inline bool sameAngle(double a, double b, double tolerance = 1e-9)
{
    const double d = std::fmod(std::abs(a - b), 360.0);
    return d <= tolerance || 360.0 - d <= tolerance;
}

inline QString describe(const DisplayInfo &d)
{
    return QStringLiteral("(x %1, y %2, angle %3, scale %4 %5, alpha %6)")
        .arg(d.x)
        .arg(d.y)
        .arg(d.angle)
        .arg(d.xScale)
        .arg(d.yScale)
        .arg(d.alpha);
}

/// Empty when `actual` has `expected`'s place, turn, scales and alpha within
/// `tolerance` (scales and alpha within 1e-12), else both described.
inline QString differs(const DisplayInfo &actual, const DisplayInfo &expected,
                       double tolerance = 1e-9)
{
    if (near(actual.x, expected.x, tolerance) && near(actual.y, expected.y, tolerance) &&
        sameAngle(actual.angle, expected.angle, tolerance) &&
        near(actual.xScale, expected.xScale, 1e-12) &&
        near(actual.yScale, expected.yScale, 1e-12) && near(actual.alpha, expected.alpha, 1e-12))
        return QString();
    return describe(actual) + QStringLiteral(", want ") + describe(expected);
}

inline DisplayInfo info(double x, double y, double angle = 0.0, double xScale = 1.0,
                        double yScale = 1.0, double alpha = 1.0)
{
    DisplayInfo d;
    d.x = x;
    d.y = y;
    d.angle = angle;
    d.xScale = xScale;
    d.yScale = yScale;
    d.alpha = alpha;
    return d;
}

/// A document with one entity and one animation. Mainline keys are made on
/// demand; `link()` then gives every mainline key a reference to each
/// timeline's key in force, bones parented as declared.
class Rig
{
public:
    explicit Rig(int length = 1000, bool looping = true)
    {
        entity = new Entity(QStringLiteral("hero"));
        document.appendEntity(entity);
        animation = new Animation(QStringLiteral("walk"));
        animation->setLength(length);
        animation->setLoopingMode(looping ? Animation::Looping : Animation::NoLooping);
        entity->appendAnimation(animation);
        folder = new Folder(QStringLiteral("parts"));
        document.appendFolder(folder);
    }

    File *file(const QString &name, double pivotX = 0.0, double pivotY = 0.0)
    {
        auto *f = new File(name, pivotX, pivotY);
        folder->appendFile(f);
        return f;
    }

    MainlineKey *mainlineKey(int time)
    {
        if (MainlineKey *mk = animation->mainlineKeyAtExactTime(time))
            return mk;
        animation->appendMainlineKey(new MainlineKey, time, true, true);
        return animation->mainlineKeyAtExactTime(time);
    }

    Timeline *timeline(const QString &name, int type = Object::Sprite, Timeline *parent = nullptr)
    {
        auto *object = new Object(name, type);
        entity->appendObject(object);
        Timeline *tl = animation->appendObjectAsTimeline(object);
        parentOf.insert(tl, parent);
        order.append(tl);
        return tl;
    }

    /// A timeline key at `time`, with a mainline key there unless `withMainlineKey` is false.
    TimelineKey *key(Timeline *tl, int time, const DisplayInfo &state,
                     const TweenInfo &curve = TweenInfo(), File *image = nullptr,
                     bool withMainlineKey = true)
    {
        if (withMainlineKey)
            mainlineKey(time);
        auto *k = new TimelineKey(image ? FileInfo(image->address()) : FileInfo(), state, curve);
        k->setCachedTime(time);
        tl->appendTimelineKey(k);
        return k;
    }

    /// References from every mainline key to each timeline's key in force
    /// (bones first, objects in creation order, which is their z order).
    void link()
    {
        for (int m = 0; m < animation->mainlineKeyCount(); ++m) {
            MainlineKey *mk = animation->mainlineKey(m);
            QHash<Timeline *, BoneRef *> bones;
            for (bool bonePass : {true, false}) {
                for (Timeline *tl : std::as_const(order)) {
                    if (tl->isBone() != bonePass)
                        continue;
                    const int k = keyInForce(tl, mk->currentTime());
                    if (k < 0)
                        continue;
                    ObjectRef *ref = mk->appendRef(tl, k);
                    if (tl->isBone())
                        bones.insert(tl, static_cast<BoneRef *>(ref));
                }
            }
            for (int i = 0; i < mk->refCount(); ++i) {
                ObjectRef *ref = mk->ref(i);
                ref->setParentRef(bones.value(parentOf.value(ref->timeline()), nullptr));
            }
        }
    }

    static int keyInForce(const Timeline *tl, int time)
    {
        int found = -1;
        for (int i = 0; i < tl->keyCount(); ++i) {
            if (tl->key(i)->time(true) <= time)
                found = i;
        }
        return found;
    }

    RigxData document;
    Entity *entity = nullptr;
    Animation *animation = nullptr;
    Folder *folder = nullptr;
    QHash<Timeline *, Timeline *> parentOf;
    QList<Timeline *> order;
};

} // namespace Morvane::Testing
