// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/curveeditor/curveview.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace Morvane {

namespace {

constexpr double kMargin = 12.0;
// Eased progress shown below 0 and above 1, as a fraction of the unit square.
constexpr double kOvershoot = 0.25;
constexpr double kHandleRadius = 5.0;
constexpr double kGrabDistance = 9.0;

} // namespace

CurveView::CurveView(QWidget *parent)
    : QWidget(parent)
{
    setMouseTracking(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void CurveView::setCurve(const TweenInfo &curve)
{
    if (mHandle)
        return; // a drag in progress keeps its own preview
    mCurve = curve;
    update();
}

QRectF CurveView::unitRect() const
{
    // Time runs wider than the value where there is room: a short dock
    // still shows a readable curve.
    const double height = (this->height() - 2 * kMargin) / (1.0 + 2 * kOvershoot);
    const double side = std::max(10.0, std::min(width() - 2 * kMargin, height));
    const double wide = std::max(side, std::min(width() - 2 * kMargin, 2.5 * side));
    const double left = (width() - wide) / 2.0;
    const double top = (this->height() - side) / 2.0;
    return {left, top, wide, side};
}

QPointF CurveView::toWidget(double x, double y) const
{
    const QRectF r = unitRect();
    return {r.left() + x * r.width(), r.bottom() - y * r.height()};
}

QPointF CurveView::toCurve(const QPointF &widgetPos) const
{
    const QRectF r = unitRect();
    return {(widgetPos.x() - r.left()) / r.width(), (r.bottom() - widgetPos.y()) / r.height()};
}

QPointF CurveView::handlePosition(int handle) const
{
    return handle == 1 ? toWidget(mCurve.cAt(0), mCurve.cAt(1))
                       : toWidget(mCurve.cAt(2), mCurve.cAt(3));
}

int CurveView::handleAt(const QPointF &pos) const
{
    if (!mCurve.isBezier())
        return 0;
    // The nearer handle wins when both are in reach.
    const double d1 = QLineF(pos, handlePosition(1)).length();
    const double d2 = QLineF(pos, handlePosition(2)).length();
    if (std::min(d1, d2) > kGrabDistance)
        return 0;
    return d1 <= d2 ? 1 : 2;
}

void CurveView::moveHandle(const QPointF &pos)
{
    const QPointF c = toCurve(pos + mGrabOffset);
    if (mHandle == 1)
        mCurve.setIn(c.x(), c.y());
    else
        mCurve.setOut(c.x(), c.y());
    update();
    Q_EMIT curvePreviewed(mCurve);
}

void CurveView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().window());
    const QRectF r = unitRect();

    // The plot: the unit square on the base colour, with the overshoot room
    // above and below it tinted.
    const double room = r.height() * kOvershoot;
    const QRectF plot = r.adjusted(0, -room, 0, room);
    painter.fillRect(plot, palette().base());
    QColor band = palette().text().color();
    band.setAlpha(14);
    painter.fillRect(QRectF(plot.left(), plot.top(), plot.width(), room), band);
    painter.fillRect(QRectF(plot.left(), r.bottom(), plot.width(), room), band);
    QColor grid = palette().text().color();
    grid.setAlpha(40);
    painter.setPen(QPen(grid, 1));
    for (int i = 1; i < 4; ++i) {
        painter.drawLine(toWidget(i / 4.0, 0), toWidget(i / 4.0, 1));
        painter.drawLine(toWidget(0, i / 4.0), toWidget(1, i / 4.0));
    }
    grid.setAlpha(110);
    painter.setPen(QPen(grid, 1));
    painter.drawRect(r);

    // The curve's own drawing shrinks the rectangle by a pixel at the left and
    // top; hand it one grown by that much so it meets the square's corners.
    mCurve.drawCurve(&painter, r.adjusted(-1, -1, 1, 1));

    if (mCurve.isBezier()) {
        const QColor handleColor(0xff, 0xa0, 0x2f);
        painter.setPen(QPen(handleColor.darker(130), 1.5));
        painter.drawLine(toWidget(0, 0), handlePosition(1));
        painter.drawLine(toWidget(1, 1), handlePosition(2));
        painter.setBrush(handleColor);
        for (int h : {1, 2})
            painter.drawEllipse(handlePosition(h), kHandleRadius, kHandleRadius);
    }
    if (!isEnabled()) {
        painter.fillRect(rect(), QColor(128, 128, 128, 60));
    }
}

void CurveView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !isEnabled())
        return;
    // The handle keeps its offset from the pointer, so grabbing it off centre
    // does not make it jump.
    mHandle = handleAt(event->position());
    if (mHandle)
        mGrabOffset = handlePosition(mHandle) - event->position();
}

void CurveView::mouseMoveEvent(QMouseEvent *event)
{
    if (mHandle)
        moveHandle(event->position());
    else
        setCursor(handleAt(event->position()) ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

void CurveView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !mHandle)
        return;
    moveHandle(event->position());
    mHandle = 0;
    Q_EMIT curveEdited(mCurve);
}

} // namespace Morvane
