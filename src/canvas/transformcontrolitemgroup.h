// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QGraphicsItem>

namespace Morvane {

class MorvaneCanvasScene;
class ObjectGraphicsProxy;

/// The box around the selection: eight size handles (0 top-left, 1 top,
/// 2 top-right, 3 right, 4 bottom-right, 5 bottom, 6 bottom-left, 7 left), a
/// rotation zone outside the corners and the pivot marker. Handles keep their
/// size on screen at every zoom. It only draws and answers hit tests; the
/// select tool changes the objects.
class TransformControlItemGroup : public QGraphicsItem
{
public:
    enum { Type = UserType + 7 };
    enum Handle { None = -4, Inside = -3, Pivot = -2, Rotate = -1 };

    explicit TransformControlItemGroup(MorvaneCanvasScene *scene);

    int type() const override { return Type; }
    static bool isSizeHandle(int handle) { return handle >= 0 && handle < 8; }

    /// Fits the box to `proxies` (scene coordinates); the pivot is a single
    /// object's origin, else the box centre, unless it was placed by hand.
    void fitTo(const QList<ObjectGraphicsProxy *> &proxies);
    QRectF box() const { return mBox; }
    QPointF pivot() const { return mPivot; }
    void setPivot(const QPointF &pivot, bool byHand);
    bool isEmptyBox() const { return mEmpty; }

    QPointF handlePosition(int handle) const;
    /// The handle (or `Inside`, `Rotate`, `Pivot`, `None`) at `scenePos`.
    int handleAt(const QPointF &scenePos) const;
    /// The dragged handle, for the direction marker (`None` when idle).
    void setActiveHandle(int handle);

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;

private:
    double unit() const; // one screen pixel in scene units

    MorvaneCanvasScene *mScene;
    QRectF mBox;
    QPointF mPivot;
    bool mPivotByHand = false;
    bool mEmpty = true;
    int mActive = None;
};

} // namespace Morvane
