// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/mainlineview.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/onionskinitem.h"
#include "timeline/timelineitems.h"
#include "timeline/timelineview.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace Morvane {

bool MainlineView::useFramesAsUnits = false;

MainlineView::MainlineView(TimelineView *timeline, QWidget *parent)
    : QGraphicsView(timeline->timelineScene(), parent)
    , mTimeline(timeline)
{
    setObjectName(QStringLiteral("mainlineView"));
    setFixedHeight(Height);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    setOptimizationFlags(DontSavePainterState | DontAdjustForAntialiasing);
    setFocusPolicy(Qt::NoFocus);
    connect(timeline, &TimelineView::zoomChanged, this, &MainlineView::syncRect);
    connect(timeline, &TimelineView::rowsChanged, this, &MainlineView::syncRect);
    connect(timeline->horizontalScrollBar(), &QScrollBar::valueChanged, horizontalScrollBar(),
            &QScrollBar::setValue);
    connect(timeline->horizontalScrollBar(), &QScrollBar::rangeChanged, this, &MainlineView::syncRect);
    // The onion skin's band follows the time.
    if (EditorSession *session = timeline->session())
        connect(session, &EditorSession::timeChanged, this, [this] { viewport()->update(); });
    syncRect();
}

double MainlineView::roundToCoolValue(double v)
{
    if (!(v > 0))
        return 1.0;
    const double d = std::ceil(std::log10(v));
    const double p = std::pow(10.0, d - 1);
    if (v < 2 * p)
        return 2 * p;
    if (v < 5 * p)
        return 5 * p;
    return std::pow(10.0, d);
}

int MainlineView::roundToCoolSnapValue(int v, int snap)
{
    if (snap == 0)
        return v;
    // The test is on the remainder of !v, not of v: zero stays zero (unless
    // the step is 1), anything else goes to the next multiple above it.
    if ((!v) % snap)
        return v;
    return (v / snap + 1) * snap;
}

QString MainlineView::timeText(int ms, int snapInterval)
{
    if (useFramesAsUnits && snapInterval > 0)
        return QString::number(ms / snapInterval);
    return QString::number(ms);
}

void MainlineView::setRightMargin(int pixels)
{
    setViewportMargins(0, 0, pixels, 0);
}

void MainlineView::syncRect()
{
    if (!mTimeline)
        return;
    const QRectF rows = mTimeline->sceneRect();
    setSceneRect(QRectF(rows.left(), -Height, rows.width(), Height));
    horizontalScrollBar()->setRange(mTimeline->horizontalScrollBar()->minimum(),
                                    mTimeline->horizontalScrollBar()->maximum());
    horizontalScrollBar()->setValue(mTimeline->horizontalScrollBar()->value());
    viewport()->update();
}

void MainlineView::drawBackground(QPainter *painter, const QRectF &rect)
{
    painter->fillRect(rect, QColor(0x2b, 0x2d, 0x30));
    if (!mTimeline || !mTimeline->animation())
        return;
    const double zoom = mTimeline->zoomFactor();
    const int length = mTimeline->animationLength();
    const double end = length * zoom;
    painter->fillRect(QRectF(end, rect.top(), std::max(0.0, rect.right() - end), rect.height()),
                      QColor(0x1e, 0x1f, 0x21));

    const int snap = mTimeline->snapSize();
    // Labels at least 70 pixels apart; in frames the step is whole frames.
    double step = roundToCoolValue(70.0 / zoom);
    if (useFramesAsUnits && snap > 0)
        step = std::max(1.0, roundToCoolValue(70.0 / zoom / snap)) * snap;
    const int major = std::max(1, int(step));
    const int minor = std::max(1, major % 5 == 0 ? major / 5 : major / 2);
    const int firstVisible = std::max(0, int(rect.left() / zoom));
    const int lastVisible = std::min(length, int(rect.right() / zoom) + 1);

    QFont font = painter->font();
    font.setPointSizeF(std::max(6.0, font.pointSizeF() * 0.85));
    painter->setFont(font);
    const double bottom = 0.0;
    painter->setPen(QColor(0x90, 0x90, 0x90));
    if (minor * zoom >= 4) {
        for (int t = roundToCoolSnapValue(std::max(0, firstVisible - minor), minor);
             t <= lastVisible; t += minor)
            painter->drawLine(QPointF(t * zoom, bottom - 5), QPointF(t * zoom, bottom));
        if (firstVisible == 0)
            painter->drawLine(QPointF(0, bottom - 5), QPointF(0, bottom));
    }
    painter->setPen(QColor(0xd0, 0xd0, 0xd0));
    auto mark = [&](int t) {
        const double x = t * zoom;
        painter->drawLine(QPointF(x, bottom - 11), QPointF(x, bottom));
        painter->drawText(QPointF(x + 3, bottom - 13), timeText(t, snap));
    };
    if (firstVisible == 0)
        mark(0);
    for (int t = roundToCoolSnapValue(std::max(0, firstVisible - major), major); t <= lastVisible;
         t += major) {
        if (t > 0)
            mark(t);
    }
    painter->setPen(QColor(0, 0, 0, 160));
    painter->drawLine(QPointF(end, rect.top()), QPointF(end, rect.bottom()));

    // The onion skin's range: a band from its earliest to its latest copy,
    // with a tick at each copy's time.
    const MorvaneCanvasScene *canvas = mTimeline->session() ? mTimeline->session()->scene() : nullptr;
    const OnionSkinItem *onion = canvas ? canvas->onionSkin() : nullptr;
    if (onion && onion->isOn()) {
        QList<int> times = onion->earlierTimes() + onion->laterTimes();
        if (!times.isEmpty()) {
            const auto [lo, hi] = std::minmax_element(times.begin(), times.end());
            const int now = mTimeline->shownTime();
            const double from = std::min(*lo, now) * zoom;
            const double to = std::max(*hi, now) * zoom;
            painter->fillRect(QRectF(from, -4, to - from, 4), QColor(0x5c, 0xa8, 0xe0, 110));
            painter->setPen(QColor(0x5c, 0xa8, 0xe0));
            for (int t : std::as_const(times))
                painter->drawLine(QPointF(t * zoom, -6), QPointF(t * zoom, 0));
        }
    }
}

void MainlineView::scrubTo(double viewX)
{
    if (!mTimeline || !mTimeline->session() || !mTimeline->animation())
        return;
    int t = mTimeline->timeFromX(mapToScene(QPoint(int(viewX), 0)).x());
    if (TimelineView::snappingEnabled)
        t = std::clamp(mTimeline->snappedTime(t), 0, mTimeline->animationLength());
    mTimeline->session()->setCurrentTime(t);
}

void MainlineView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QGraphicsView::mousePressEvent(event);
        return;
    }
    mScrubbing = true;
    scrubTo(event->position().x());
    event->accept();
}

void MainlineView::mouseMoveEvent(QMouseEvent *event)
{
    if (mScrubbing && (event->buttons() & Qt::LeftButton))
        scrubTo(event->position().x());
    event->accept();
}

void MainlineView::mouseReleaseEvent(QMouseEvent *event)
{
    mScrubbing = false;
    event->accept();
}

void MainlineView::wheelEvent(QWheelEvent *event)
{
    // The ruler scrolls and zooms as the rows do.
    if (mTimeline)
        QCoreApplication::sendEvent(mTimeline->viewport(), event);
}

} // namespace Morvane
