// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/inheritance.h"

#include <QGraphicsItem>
#include <QPixmap>
#include <QString>

namespace Morvane {

class EntityInstance;
class MorvaneCanvasScene;
struct PoseItem;

/// The canvas item of one bone or object timeline of the shown animation.
///
/// It keeps copies of the values it draws (never model pointers, which an edit
/// may free): its world display info, and its info local to its parent bone so
/// that it follows the parent while a gesture moves it. The timeline is named
/// by its index in the animation. Owned by the scene.
class ObjectGraphicsProxy : public QGraphicsItem
{
public:
    enum { Type = UserType + 2 };

    ObjectGraphicsProxy(MorvaneCanvasScene *scene, int timelineIndex);

    int type() const override { return Type; }
    int timelineIndex() const { return mTimelineIndex; }
    int objectType() const { return mObjectType; }
    QString name() const { return mName; }
    /// "bone", "sprite", "box", "point", or "invalid object".
    QString objectTypeName() const;
    bool isBone() const;

    /// Whether the mainline key in force references the timeline.
    bool isShownInPose() const { return mShown; }
    /// Takes the values of `item` (world values of the current pose);
    /// `subEntity` is the instance a sub-entity plays, else null.
    void refreshFromPose(const PoseItem &item, const QPixmap &pixmap, EntityInstance *subEntity);
    /// Hides the proxy: its timeline is not in the mainline key in force.
    void refreshAbsent();

    /// The timeline index of the parent bone, -1 at the root.
    int parentTimelineIndex() const { return mParentTimeline; }
    /// Sets the parent bone and keeps the present world state as the local
    /// state under `parentWorld` (children follow that state while they move).
    void setParentTimeline(int index, const DisplayInfo &parentWorld);
    ObjectGraphicsProxy *parentProxy() const;
    QList<ObjectGraphicsProxy *> childrenProxys() const;
    /// Links the item into its parent's list of children (by timeline index),
    /// which the scene rebuilds after each refresh: children are then found
    /// without a search, and a drag follows them without allocating.
    void clearChildLinks() { mFirstChild = mNextSibling = -1; }
    void linkToParent();
    /// The parent's world alpha (1 at the root): what a sub-entity is drawn with.
    double parentAlpha() const;
    /// What the item takes from its parent bone (`Inherit` bits).
    unsigned inheritFlags() const { return mInherit; }
    bool inheritsPos() const { return mInherit & InheritPosition; }
    bool inheritsAngle() const { return mInherit & InheritAngle; }
    bool inheritsScale() const { return mInherit & InheritScale; }
    /// The descendants, not selected themselves, that kept their world state
    /// through a change of their parent by the present gesture because they do
    /// not inherit what changed: they need keys of their own.
    QList<ObjectGraphicsProxy *> keyNonInheritingProxies() const;

    /// World state (canvas space) as drawn now.
    const DisplayInfo &displayInfo() const { return mWorld; }
    /// The world state the last refresh gave, before any live change.
    const DisplayInfo &poseInfo() const { return mPoseWorld; }
    /// Moves the item live (no model change) and lets the children follow.
    void setDisplayInfo(const DisplayInfo &world);
    /// The children's world states from their local states under this one.
    void refreshChildren();
    /// Whether a gesture changed the item since the last refresh; with
    /// `pivotChanged`, the pivot was moved (its own pivot is stored then).
    bool isChanged() const { return mChanged; }
    bool isPivotChanged() const { return mPivotChanged; }
    void setPivotChanged(bool on) { mPivotChanged = on; }

    bool isLocked() const { return mLocked; }
    void setLocked(bool on) { mLocked = on; }
    bool isHovered() const { return mHovered; }
    void setHovered(bool on);
    bool isMarkedSelected() const { return mSelected; }
    void setMarkedSelected(bool on);

    /// Bone length in canvas units before scaling.
    double boneLength() const;
    QPolygonF bonePolygon() const;
    /// The item's outline in item coordinates.
    QRectF localRect() const;

    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;

private:
    void applyTransform();
    MorvaneCanvasScene *canvasScene() const { return mScene; }

    MorvaneCanvasScene *mScene;
    int mTimelineIndex;
    int mObjectType = 0;
    int mParentTimeline = -1;
    int mFirstChild = -1;
    int mNextSibling = -1;
    unsigned mInherit = InheritAll;
    QString mName;
    DisplayInfo mWorld;
    DisplayInfo mPoseWorld;
    DisplayInfo mLocal;
    QPixmap mPixmap;
    EntityInstance *mSubEntity = nullptr; // owned by the main instance
    bool mShown = false;
    bool mChanged = false;
    bool mPivotChanged = false;
    bool mLocked = false;
    bool mHovered = false;
    bool mSelected = false;
};

} // namespace Morvane
