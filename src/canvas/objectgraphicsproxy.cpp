// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/objectgraphicsproxy.h"

#include "canvas/canvascolors.h"
#include "canvas/morvanecanvasscene.h"
#include "eval/entityinstance.h"
#include "eval/pose.h"
#include "model/file.h"
#include "model/object.h"

#include <QPainter>
#include <QStyleOptionGraphicsItem>

#include <cmath>

namespace Morvane {

namespace {

constexpr double BoneHalfThickness = 5.0; // the bar is 10 units thick
constexpr double DefaultBoneLength = 200.0;

} // namespace

ObjectGraphicsProxy::ObjectGraphicsProxy(MorvaneCanvasScene *scene, int timelineIndex)
    : mScene(scene)
    , mTimelineIndex(timelineIndex)
{
    setAcceptHoverEvents(false);
    hide();
}

QString ObjectGraphicsProxy::objectTypeName() const
{
    switch (mObjectType) {
    case Object::Bone:
        return QStringLiteral("bone");
    case Object::Sprite:
        return QStringLiteral("sprite");
    case Object::Box:
        return QStringLiteral("box");
    case Object::Point:
        return QStringLiteral("point");
    default:
        return QStringLiteral("invalid object");
    }
}

bool ObjectGraphicsProxy::isBone() const
{
    return mObjectType == Object::Bone;
}

void ObjectGraphicsProxy::refreshFromPose(const PoseItem &item, const QPixmap &pixmap,
                                          EntityInstance *subEntity)
{
    prepareGeometryChange();
    mObjectType = item.object ? item.object->objectType() : 0;
    mName = item.object ? item.object->name() : QString();
    mInherit = Morvane::inheritFlags(item.object);
    mShown = true;
    mChanged = false;
    mPivotChanged = false;
    mPixmap = pixmap;
    mSubEntity = subEntity;
    mParentTimeline = -1;
    DisplayInfo w;
    w.x = item.x;
    w.y = item.y;
    w.angle = item.angle;
    w.xScale = item.xScale;
    w.yScale = item.yScale;
    w.alpha = item.alpha;
    w.width = item.width;
    w.height = item.height;
    w.setPivotX(item.pivotX);
    w.setPivotY(item.pivotY);
    mWorld = w;
    mPoseWorld = w;
    mLocal = w;
    show();
    applyTransform();
}

void ObjectGraphicsProxy::refreshAbsent()
{
    mShown = false;
    mChanged = false;
    mSubEntity = nullptr;
    mParentTimeline = -1;
    hide();
}

void ObjectGraphicsProxy::setParentTimeline(int index, const DisplayInfo &parentWorld)
{
    mParentTimeline = index;
    // A zero parent scale has no inverse: such a child keeps its world state.
    if (parentWorld.xScale != 0.0 && parentWorld.yScale != 0.0 && parentWorld.alpha != 0.0)
        mLocal = Morvane::mapToParent(mWorld, parentWorld, mInherit);
    else
        mLocal = mWorld;
}

ObjectGraphicsProxy *ObjectGraphicsProxy::parentProxy() const
{
    return mParentTimeline >= 0 ? mScene->instTimelineProxyFromIndex(mParentTimeline) : nullptr;
}

QList<ObjectGraphicsProxy *> ObjectGraphicsProxy::childrenProxys() const
{
    QList<ObjectGraphicsProxy *> children;
    for (ObjectGraphicsProxy *p = mScene->instTimelineProxyFromIndex(mFirstChild); p;
         p = mScene->instTimelineProxyFromIndex(p->mNextSibling))
        children.append(p);
    return children;
}

void ObjectGraphicsProxy::linkToParent()
{
    ObjectGraphicsProxy *parent = mShown ? parentProxy() : nullptr;
    if (!parent || parent == this)
        return;
    mNextSibling = parent->mFirstChild;
    parent->mFirstChild = mTimelineIndex;
}

double ObjectGraphicsProxy::parentAlpha() const
{
    const ObjectGraphicsProxy *parent = parentProxy();
    return parent ? parent->mWorld.alpha : 1.0;
}

QList<ObjectGraphicsProxy *> ObjectGraphicsProxy::keyNonInheritingProxies() const
{
    QList<ObjectGraphicsProxy *> keep;
    const bool moved = mWorld.x != mPoseWorld.x || mWorld.y != mPoseWorld.y;
    const bool turned = mWorld.angle != mPoseWorld.angle;
    const bool scaled = mWorld.xScale != mPoseWorld.xScale || mWorld.yScale != mPoseWorld.yScale;
    if (!moved && !turned && !scaled)
        return keep;
    for (ObjectGraphicsProxy *child : childrenProxys()) {
        if (child->isMarkedSelected())
            continue;
        // Any change of the parent (a turn or scale too) moves a child that
        // inherits position.
        if (!child->inheritsPos() || (turned && !child->inheritsAngle()) ||
            (scaled && !child->inheritsScale()))
            keep.append(child);
        // What the child did inherit moved it: its own children may not follow.
        keep.append(child->keyNonInheritingProxies());
    }
    return keep;
}

void ObjectGraphicsProxy::setDisplayInfo(const DisplayInfo &world)
{
    prepareGeometryChange();
    mWorld = world;
    mChanged = true;
    applyTransform();
    refreshChildren();
}

void ObjectGraphicsProxy::refreshChildren()
{
    // Children keep their local state under this item; refreshChildren
    // recurses through the hierarchy. A cycle cannot occur: the pose has
    // parents before children and no bone is its own ancestor.
    for (ObjectGraphicsProxy *child = mScene->instTimelineProxyFromIndex(mFirstChild); child;
         child = mScene->instTimelineProxyFromIndex(child->mNextSibling)) {
        // Only the transform changes (setPos and setTransform report that);
        // the outline keeps its size.
        DisplayInfo world = unmapFromParent(child->mLocal, mWorld, child->mInherit);
        world.width = child->mWorld.width;
        world.height = child->mWorld.height;
        child->mWorld = world;
        child->applyTransform();
        child->refreshChildren();
    }
}

void ObjectGraphicsProxy::setHovered(bool on)
{
    if (mHovered != on) {
        mHovered = on;
        update();
    }
}

void ObjectGraphicsProxy::setMarkedSelected(bool on)
{
    if (mSelected != on) {
        mSelected = on;
        update();
    }
}

void ObjectGraphicsProxy::applyTransform()
{
    setPos(mWorld.x, mWorld.y);
    QTransform t;
    t.rotate(mWorld.angle);
    t.scale(mWorld.xScale, mWorld.yScale);
    setTransform(t);
}

double ObjectGraphicsProxy::boneLength() const
{
    return mWorld.width > 0 ? mWorld.width : DefaultBoneLength;
}

QPolygonF ObjectGraphicsProxy::bonePolygon() const
{
    const double length = boneLength();
    QPolygonF polygon;
    polygon << QPointF(0, 0) << QPointF(length * 0.12, -BoneHalfThickness) << QPointF(length, 0)
            << QPointF(length * 0.12, BoneHalfThickness);
    return polygon;
}

QRectF ObjectGraphicsProxy::localRect() const
{
    switch (mObjectType) {
    case Object::Bone:
        return QRectF(0, -BoneHalfThickness, boneLength(), 2 * BoneHalfThickness);
    case Object::Point:
        return QRectF(-5, -5, 10, 10);
    case Object::Sprite: {
        const double w = mPixmap.isNull() ? mWorld.width : mPixmap.width();
        const double h = mPixmap.isNull() ? mWorld.height : mPixmap.height();
        return QRectF(-mWorld.pivotX() * w, -mWorld.pivotY() * h, w, h);
    }
    case Object::Box:
        return QRectF(-mWorld.pivotX() * mWorld.width, -mWorld.pivotY() * mWorld.height,
                      mWorld.width, mWorld.height);
    default:
        return QRectF(-16, -16, 32, 32);
    }
}

QRectF ObjectGraphicsProxy::boundingRect() const
{
    if (mObjectType == Object::SubEntity)
        return QRectF(-2000, -2000, 4000, 4000);
    return localRect().adjusted(-2, -2, 2, 2);
}

QPainterPath ObjectGraphicsProxy::shape() const
{
    QPainterPath path;
    if (mObjectType == Object::Bone)
        path.addPolygon(bonePolygon());
    else
        path.addRect(localRect());
    path.closeSubpath();
    return path;
}

namespace {

void paintInstance(QPainter *painter, const EntityInstance &instance, QHash<QString, QPixmap> &cache)
{
    const Pose &pose = instance.pose();
    for (const PoseItem &item : pose.objects) {
        painter->save();
        painter->translate(item.x, item.y);
        painter->rotate(item.angle);
        painter->scale(item.xScale, item.yScale);
        if (item.object && item.object->isSubEntity()) {
            const SubEntityInstance *sub = instance.subEntityForTimeline(item.timelineIndex);
            if (sub && sub->isShown())
                paintInstance(painter, *sub, cache);
        } else if (item.shownFile && item.shownFile->isImage()) {
            auto it = cache.find(item.shownFile->name());
            if (it == cache.end())
                it = cache.insert(item.shownFile->name(),
                                  QPixmap::fromImage(item.shownFile->image()));
            const QPixmap &pm = it.value();
            painter->setOpacity(painter->opacity() * item.alpha);
            painter->drawPixmap(QRectF(-item.pivotX * pm.width(), -item.pivotY * pm.height(),
                                       pm.width(), pm.height()),
                                pm, pm.rect());
        }
        painter->restore();
    }
}

} // namespace

void ObjectGraphicsProxy::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    if (!mShown)
        return;
    const QColor accent = mSelected  ? CanvasColors::selection()
                          : mHovered ? CanvasColors::hover()
                                     : QColor();
    painter->setRenderHint(QPainter::SmoothPixmapTransform, mScene->smoothTransform());
    switch (mObjectType) {
    case Object::Sprite:
        if (!mPixmap.isNull()) {
            painter->save();
            painter->setOpacity(mWorld.alpha);
            painter->drawPixmap(localRect(), mPixmap, QRectF(mPixmap.rect()));
            painter->restore();
        }
        break;
    case Object::Bone: {
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(accent.isValid() ? accent : QColor(20, 20, 20), 0));
        QColor fill = accent.isValid() ? accent : QColor(40, 40, 40);
        fill.setAlpha(accent.isValid() ? 200 : 150);
        painter->setBrush(fill);
        painter->drawPolygon(bonePolygon());
        painter->setBrush(Qt::white);
        const double r = 2.5 / qMax(1e-6, mScene->zoom()
                                                 * std::sqrt(std::abs(mWorld.xScale * mWorld.yScale)));
        painter->drawEllipse(QPointF(0, 0), r, r);
        return;
    }
    case Object::Box:
        painter->setPen(QPen(QColor(60, 120, 200), 0, Qt::DashLine));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(localRect());
        break;
    case Object::Point:
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(Qt::black, 0));
        painter->setBrush(QColor(60, 120, 200));
        painter->drawEllipse(localRect());
        break;
    case Object::SubEntity:
        if (mSubEntity) {
            // A sub-entity follows its parent's alpha, not its own key's.
            painter->save();
            painter->setOpacity(parentAlpha());
            QHash<QString, QPixmap> &cache = mScene->pixmapCache();
            paintInstance(painter, *mSubEntity, cache);
            painter->restore();
        }
        break;
    default:
        // Skins and guides: a visible placeholder until they get drawing of their own.
        painter->setPen(QPen(QColor(150, 150, 150), 0, Qt::DashLine));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(localRect());
        painter->drawLine(localRect().topLeft(), localRect().bottomRight());
        painter->drawLine(localRect().topRight(), localRect().bottomLeft());
        break;
    }
    if (accent.isValid() && mObjectType != Object::Bone) {
        painter->setPen(QPen(accent, 0));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(localRect());
    }
}

} // namespace Morvane
