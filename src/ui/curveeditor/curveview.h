// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/tweeninfo.h"

#include <QWidget>

namespace Morvane {

/// Draws one curve over the unit square (progress to the right, eased
/// progress upward, with room above and below for overshoot) and lets the two
/// handles of a bezier curve be dragged. While a handle moves the view shows
/// the curve as it would become (`curvePreviewed`); the release reports the
/// result once (`curveEdited`). Handle x stays in 0..1 and y in -2..3.
class CurveView : public QWidget
{
    Q_OBJECT

public:
    explicit CurveView(QWidget *parent = nullptr);

    void setCurve(const TweenInfo &curve);
    const TweenInfo &curve() const { return mCurve; }
    bool isDragging() const { return mHandle != 0; }

    /// The square that (0, 0) to (1, 1) maps onto, in widget pixels.
    QRectF unitRect() const;
    QPointF toWidget(double x, double y) const;
    QPointF toCurve(const QPointF &widgetPos) const;
    /// Where handle 1 (c1, c2) or 2 (c3, c4) is drawn.
    QPointF handlePosition(int handle) const;

    QSize sizeHint() const override { return {260, 200}; }
    QSize minimumSizeHint() const override { return {120, 100}; }

Q_SIGNALS:
    void curvePreviewed(const Morvane::TweenInfo &curve);
    void curveEdited(const Morvane::TweenInfo &curve);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    int handleAt(const QPointF &pos) const;
    void moveHandle(const QPointF &pos);

    TweenInfo mCurve;
    int mHandle = 0; // the handle being dragged, 0 when none
    QPointF mGrabOffset;
};

} // namespace Morvane
