// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/timelineitems.h"

#include "timeline/timelinerows.h"

#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionGraphicsItem>

#include <algorithm>

namespace Morvane {

// Row backgrounds.

TimelineViewTimelineRect::TimelineViewTimelineRect(TimelineGraphicsProxy *row, int visibleRow)
    : mRow(row)
    , mVisibleRow(visibleRow)
{
    setZValue(-1);
    setFlag(ItemUsesExtendedStyleOption);
}

void TimelineViewTimelineRect::setWidths(double total, double animation)
{
    if (total == mWidth && animation == mAnimationWidth)
        return;
    prepareGeometryChange();
    mWidth = total;
    mAnimationWidth = animation;
}

void TimelineViewTimelineRect::setHeight(double height)
{
    if (height == mHeight)
        return;
    prepareGeometryChange();
    mHeight = height;
}

void TimelineViewTimelineRect::setHighlighted(bool on)
{
    if (mHighlighted != on) {
        mHighlighted = on;
        update();
    }
}

QRectF TimelineViewTimelineRect::boundingRect() const
{
    return QRectF(-LeftMargin, 0, mWidth + LeftMargin, mHeight);
}

void TimelineViewTimelineRect::paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
                                     QWidget *)
{
    // Only the exposed part: a zoomed-in row can be millions of pixels wide.
    const QRectF exposed = option->exposedRect.intersected(boundingRect());
    QColor base = (mVisibleRow % 2) ? TimelineColors::rowOdd() : TimelineColors::rowEven();
    if (mHighlighted)
        base = base.lighter(125);
    const QRectF inside =
        exposed.intersected(QRectF(-LeftMargin, 0, mAnimationWidth + LeftMargin, mHeight));
    if (!inside.isEmpty())
        painter->fillRect(inside, base);
    const QRectF past = exposed.intersected(QRectF(mAnimationWidth, 0, mWidth, mHeight));
    if (!past.isEmpty())
        painter->fillRect(past, TimelineColors::pastEnd());
    painter->fillRect(QRectF(exposed.left(), mHeight - 1, exposed.width(), 1), QColor(0, 0, 0, 60));
    if (mVolumes.isEmpty())
        return;
    // The volume between the keys, in the band over the markers (which sit on
    // the row's bottom edge): silence at the bottom, full volume at the top;
    // held before the first key and after the last.
    const double top = 3.0;
    const double bottom = mHeight - 23.0;
    QPolygonF line;
    int index = 0;
    for (const QGraphicsItem *key : childItems()) {
        if (key->type() != TimelineKeyGraphicsProxy::Type || index >= mVolumes.size())
            continue;
        const double level = std::clamp(mVolumes.at(index++), 0.0, 1.0);
        line.append(QPointF(key->x(), bottom - level * (bottom - top)));
    }
    if (line.isEmpty())
        return;
    std::sort(line.begin(), line.end(), [](const QPointF &a, const QPointF &b) { return a.x() < b.x(); });
    line.prepend(QPointF(0, line.first().y()));
    line.append(QPointF(mAnimationWidth, line.last().y()));
    QPolygonF area = line;
    area.append(QPointF(mAnimationWidth, bottom));
    area.append(QPointF(0, bottom));
    QColor fill = mRow ? mRow->color() : QColor(0x5c, 0xc8, 0xc8);
    fill.setAlpha(50);
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawPolygon(area);
    fill.setAlpha(220);
    painter->setPen(QPen(fill, 1.5));
    painter->setBrush(Qt::NoBrush);
    painter->drawPolyline(line);
}

void TimelineViewTimelineRect::setVolumes(const QList<double> &volumes)
{
    mVolumes = volumes;
    update();
}

// Key markers.

namespace {
constexpr double KeySize = 6.0; // half the diamond's diagonal, pixels
}

bool TimelineKeyGraphicsProxy::sCompact = false;

TimelineKeyGraphicsProxy::TimelineKeyGraphicsProxy(TimelineGraphicsProxy *row, int time,
                                                   QGraphicsItem *parent)
    : QGraphicsItem(parent)
    , mRow(row)
    , mOriginalTime(time)
    , mPositionalTime(time)
    , mCurrentTime(time)
{
    setFlag(ItemIsSelectable);
}

void TimelineKeyGraphicsProxy::setPositionalTime(int time, double zoom, int length)
{
    mPositionalTime = std::clamp(time, 0, std::max(0, length));
    const QPointF p(mPositionalTime * zoom, mRow ? mRow->ownHeight() : 20);
    if (pos() != p)
        setPos(p);
}

void TimelineKeyGraphicsProxy::setWidth(double width)
{
    if (width != mWidth) {
        prepareGeometryChange();
        mWidth = width;
    }
}

QRectF TimelineKeyGraphicsProxy::boundingRect() const
{
    // The marker's rectangle from (-1, -20) and the shape drawn around its time.
    return QRectF(-1, -20, mWidth, 20).united(QRectF(-KeySize - 1, -16, 2 * KeySize + 2, 12));
}

QPainterPath TimelineKeyGraphicsProxy::shape() const
{
    QPainterPath path;
    path.addRect(boundingRect());
    return path;
}

void TimelineKeyGraphicsProxy::paint(QPainter *painter, const QStyleOptionGraphicsItem *,
                                     QWidget *)
{
    const QColor fill = isSelected() ? TimelineColors::selection() : mRow->color();
    if (sCompact) {
        painter->fillRect(QRectF(-1, -16, 2, 12), fill);
        return;
    }
    const QColor outline = isSelected() ? fill.darker(160) : QColor(20, 20, 20);
    const Shape shape = mInstant && mRow->keyShape() == Shape::Diamond ? Shape::Square
                                                                        : mRow->keyShape();
    painter->setPen(outline);
    painter->setBrush(fill);
    switch (shape) {
    case Shape::Bar:
        painter->drawRect(QRectF(-2, -18, 4, 16));
        break;
    case Shape::Diamond: {
        const QPointF points[4] = {{0, -16}, {KeySize, -10}, {0, -4}, {-KeySize, -10}};
        painter->drawPolygon(points, 4);
        break;
    }
    case Shape::Square:
        painter->drawRect(QRectF(-4.5, -14.5, 9, 9));
        break;
    case Shape::Circle:
        painter->drawEllipse(QPointF(0, -10), 5, 5);
        break;
    case Shape::Flag: {
        const QPointF points[4] = {{0, -18}, {8, -14}, {0, -10}, {0, -2}};
        painter->drawPolygon(points, 3);
        painter->drawLine(QPointF(0, -18), QPointF(0, -2));
        break;
    }
    }
}

// Mainline markers on the ruler.

MainlineKeyGraphicsProxy::MainlineKeyGraphicsProxy(int time)
    : mTime(time)
{
    setZValue(1);
}

void MainlineKeyGraphicsProxy::setCurrentTime(int time, double zoom)
{
    mTime = time;
    setPos(time * zoom, -12);
}

void MainlineKeyGraphicsProxy::setHighlighted(bool on)
{
    if (mHighlighted != on) {
        mHighlighted = on;
        update();
    }
}

QRectF MainlineKeyGraphicsProxy::boundingRect() const
{
    return QRectF(-5, -2, 10, 14);
}

void MainlineKeyGraphicsProxy::paint(QPainter *painter, const QStyleOptionGraphicsItem *,
                                     QWidget *)
{
    const QPointF points[3] = {{-4.5, 4}, {4.5, 4}, {0, 11}};
    painter->setPen(QColor(20, 20, 20));
    painter->setBrush(mHighlighted ? TimelineColors::selection() : QColor(0xc8, 0xc8, 0xc8));
    painter->drawPolygon(points, 3);
}

// The playhead.

PlayheadItem::PlayheadItem()
{
    setZValue(10);
    setPos(0, -12);
}

QRectF PlayheadItem::boundingRect() const
{
    return QRectF(-6, 0, 12, 13);
}

void PlayheadItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    // Low in the ruler, over the ticks: the time labels above stay readable.
    const QPointF points[5] = {{-5, 2}, {5, 2}, {5, 7}, {0, 12}, {-5, 7}};
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(TimelineColors::playhead().darker(150));
    painter->setBrush(TimelineColors::playhead());
    painter->drawPolygon(points, 5);
}

} // namespace Morvane
