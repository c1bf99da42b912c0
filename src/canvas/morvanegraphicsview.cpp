// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/morvanegraphicsview.h"

#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <cmath>

namespace Morvane {

MorvaneGraphicsView::MorvaneGraphicsView(MorvaneCanvasScene *scene, QWidget *parent)
    : QGraphicsView(scene, parent)
    , mScene(scene)
{
    setTransformationAnchor(QGraphicsView::AnchorViewCenter);
    setResizeAnchor(QGraphicsView::AnchorViewCenter);
    setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    setRenderHint(QPainter::SmoothPixmapTransform);
    setMouseTracking(true);
    setBackgroundBrush(QColor(0xa0, 0xa0, 0xa4));
    setSceneRect(-5000, -5000, 10000, 10000);
    centerOn(0, 0);
}

int MorvaneGraphicsView::wheelZoom(int percent, bool in, bool fast)
{
    const double u = (percent - 1) / 9999.0;
    const double a = 0.001 + 399.999 * u;
    double step = a + (400.0 - a) * u;
    if (fast)
        step *= 5;
    const double next = percent + (in ? 1 : -1) * std::max(1.0, step);
    if (next < 1)
        return 1;
    if (next > 10000)
        return 10000;
    return int(next);
}

void MorvaneGraphicsView::setZoom(int percent)
{
    mZoom = qBound(1, percent, 10000);
    const double factor = mZoom / 100.0;
    setTransform(QTransform::fromScale(factor, factor));
    Q_EMIT zoomChanged(factor);
    Q_EMIT intZoomChanged(mZoom);
    if (mScene)
        mScene->setZoom(factor);
    viewport()->update();
}

int MorvaneGraphicsView::zoomForRect(const QRectF &rect) const
{
    if (rect.width() <= 0 || rect.height() <= 0)
        return mZoom;
    return int(100.0 * std::min(viewport()->width() / rect.width(),
                                viewport()->height() / rect.height()));
}

void MorvaneGraphicsView::zoomIn()
{
    setZoom(wheelZoom(mZoom, true, false));
}

void MorvaneGraphicsView::zoomOut()
{
    setZoom(wheelZoom(mZoom, false, false));
}

void MorvaneGraphicsView::restoreZoom()
{
    setZoom(100);
}

void MorvaneGraphicsView::centerView()
{
    QRectF shown;
    for (int i = 0; mScene && i < mScene->instTimelineProxyCount(); ++i) {
        const ObjectGraphicsProxy *p = mScene->instTimelineProxyFromIndex(i);
        if (p->isShownInPose())
            shown = shown.united(p->mapRectToScene(p->localRect()));
    }
    centerOn(shown.isNull() ? QPointF(0, 0) : shown.center());
}

void MorvaneGraphicsView::wheelEvent(QWheelEvent *event)
{
    // One step per notch (120 eighths of a degree): a wheel turned fast
    // reports several notches in one event, a fine wheel or a touchpad parts
    // of one, which add up until they make a notch.
    const int delta = event->angleDelta().y();
    if (delta == 0)
        return;
    if ((delta > 0) != (mWheelRest > 0))
        mWheelRest = 0;
    mWheelRest += delta;
    const bool fast = event->modifiers() == Qt::ControlModifier;
    int zoom = mZoom;
    for (; mWheelRest >= 120; mWheelRest -= 120)
        zoom = wheelZoom(zoom, true, fast);
    for (; mWheelRest <= -120; mWheelRest += 120)
        zoom = wheelZoom(zoom, false, fast);
    if (zoom != mZoom)
        setZoom(zoom);
    event->accept();
}

void MorvaneGraphicsView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::MiddleButton
        || (event->button() == Qt::LeftButton && mSpaceHeld)) {
        mPanning = true;
        mPanLast = event->position().toPoint();
        viewport()->setCursor(Qt::ClosedHandCursor);
        event->accept();
        return;
    }
    QGraphicsView::mousePressEvent(event);
}

void MorvaneGraphicsView::mouseMoveEvent(QMouseEvent *event)
{
    if (mPanning) {
        const QPoint now = event->position().toPoint();
        const QPoint d = now - mPanLast;
        mPanLast = now;
        horizontalScrollBar()->setValue(horizontalScrollBar()->value() - d.x());
        verticalScrollBar()->setValue(verticalScrollBar()->value() - d.y());
        event->accept();
        return;
    }
    QGraphicsView::mouseMoveEvent(event);
}

void MorvaneGraphicsView::mouseReleaseEvent(QMouseEvent *event)
{
    if (mPanning && (event->button() == Qt::MiddleButton || event->button() == Qt::LeftButton)) {
        mPanning = false;
        viewport()->setCursor(mSpaceHeld ? Qt::OpenHandCursor : Qt::ArrowCursor);
        event->accept();
        return;
    }
    QGraphicsView::mouseReleaseEvent(event);
}

void MorvaneGraphicsView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space) {
        if (!event->isAutoRepeat()) {
            mSpaceHeld = true;
            viewport()->setCursor(Qt::OpenHandCursor);
        }
        event->accept();
        return;
    }
    QGraphicsView::keyPressEvent(event);
}

void MorvaneGraphicsView::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space) {
        if (!event->isAutoRepeat()) {
            mSpaceHeld = false;
            viewport()->setCursor(Qt::ArrowCursor);
        }
        event->accept();
        return;
    }
    QGraphicsView::keyReleaseEvent(event);
}

} // namespace Morvane
