// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "canvas/tools/abstracttool.h"
#include "model/displayinfo.h"

#include <QHash>
#include <QPointF>
#include <QRectF>

class QGraphicsRectItem;

namespace Morvane {

class ObjectGraphicsProxy;

/// Selecting and transforming: click selects the topmost item (a second click
/// at the same spot, or Alt+click, the next one below), Ctrl+click toggles,
/// a drag on empty canvas draws a rubber band, Esc clears. Dragging moves;
/// the transform box scales (Shift keeps the aspect, Alt ignores the pivot),
/// rotates from outside its corners and moves the pivot; arrow keys nudge by
/// one unit (Shift: ten) with one undo step when the key is released. Holding
/// B and releasing it over a bone makes that bone the selection's parent.
/// Shift+drag on the end of a bone turns it and its parent bone so that the
/// end follows the pointer (inverse kinematics).
class SelectTool : public AbstractTool
{
    Q_OBJECT

public:
    explicit SelectTool(MorvaneCanvasScene *scene, QObject *parent = nullptr);
    ~SelectTool() override;

    void deactivate() override;
    void mousePressed(QGraphicsSceneMouseEvent *event) override;
    void mouseMoved(QGraphicsSceneMouseEvent *event) override;
    void mouseReleased(QGraphicsSceneMouseEvent *event) override;
    void keyPressed(QKeyEvent *event) override;
    void keyReleased(QKeyEvent *event) override;

    /// The angle rotation snapping gives for `angle` under a parent at
    /// `parentAngle` (whole degrees; ties go up), in 0..360.
    static double snappedAngle(double angle, double parentAngle);

private:
    enum class Mode { Idle, Pending, Move, Scale, Rotate, Pivot, Rubber, Ik };

    QList<ObjectGraphicsProxy *> topLevelSelection() const;
    void rememberStart();
    void applyMove(const QPointF &delta);
    void applyScale(const QPointF &pos, Qt::KeyboardModifiers modifiers);
    void applyRotate(const QPointF &pos);
    void applyIk(const QPointF &pos);
    ObjectGraphicsProxy *boneEndAt(const QPointF &scenePos) const;
    bool isAlive(const ObjectGraphicsProxy *proxy) const;
    void record(const QString &label, const QList<ObjectGraphicsProxy *> &changed = {});
    void cancelGesture();

    Mode mMode = Mode::Idle;
    int mHandle = -4;
    QPointF mPressPos;
    Qt::KeyboardModifiers mPressModifiers;
    QPointF mLastClickPos;
    bool mLastClickCycled = false;
    QRectF mStartBox;
    QPointF mStartPivot;
    double mStartAngle = 0.0;
    QHash<ObjectGraphicsProxy *, DisplayInfo> mStart;
    QGraphicsRectItem *mRubber = nullptr;
    ObjectGraphicsProxy *mIkBone = nullptr;
    bool mNudging = false;
};

} // namespace Morvane
