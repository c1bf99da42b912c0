// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/timelinelabelview.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "timeline/timelinerows.h"
#include "timeline/timelineview.h"

#include <QGraphicsScene>
#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionButton>
#include <QToolTip>

namespace Morvane {

namespace {
constexpr int BoxSize = 13;

ObjectGraphicsProxy *proxyOf(TimelineView *view, const TimelineGraphicsProxy *row)
{
    if (!view || !row || row->id().kind != RowId::Kind::Timeline || !view->session())
        return nullptr;
    MorvaneCanvasScene *scene = view->session()->scene();
    return scene ? scene->timelineProxy(row->id().timeline) : nullptr;
}
} // namespace

TimelineLabelView::TimelineLabelView(TimelineView *timeline, QWidget *parent)
    : QGraphicsView(new QGraphicsScene(parent), parent)
    , mTimeline(timeline)
{
    scene()->setParent(this);
    setObjectName(QStringLiteral("timelineLabelView"));
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFrameShape(QFrame::NoFrame);
    setMouseTracking(true);
    setFocusPolicy(Qt::NoFocus);
    setMinimumWidth(120);
    connect(timeline, &TimelineView::rowsChanged, this, &TimelineLabelView::syncRect);
    connect(timeline->verticalScrollBar(), &QScrollBar::valueChanged, verticalScrollBar(),
            &QScrollBar::setValue);
    connect(timeline->verticalScrollBar(), &QScrollBar::rangeChanged, this,
            &TimelineLabelView::syncRect);
    if (EditorSession *session = timeline->session()) {
        connect(session, &EditorSession::animationChanged, this, &TimelineLabelView::forgetStates);
        connect(session, &EditorSession::documentChanged, this, &TimelineLabelView::forgetStates);
    }
    syncRect();
}

void TimelineLabelView::forgetStates()
{
    viewport()->update();
}

void TimelineLabelView::syncRect()
{
    if (!mTimeline)
        return;
    const QRectF rows = mTimeline->sceneRect();
    setSceneRect(QRectF(0, 0, std::max(1, viewport()->width()), rows.height()));
    verticalScrollBar()->setRange(mTimeline->verticalScrollBar()->minimum(),
                                  mTimeline->verticalScrollBar()->maximum());
    verticalScrollBar()->setValue(mTimeline->verticalScrollBar()->value());
    viewport()->update();
}

QRect TimelineLabelView::checkBoxRect(const TimelineGraphicsProxy *row, int x) const
{
    const QPoint top = mapFromScene(QPointF(x, row->top() + (row->ownHeight() - BoxSize) / 2.0));
    return QRect(top, QSize(BoxSize, BoxSize));
}

QPoint TimelineLabelView::nameCenter(const TimelineGraphicsProxy *row) const
{
    return mapFromScene(QPointF(NameX + 30, row->top() + row->ownHeight() / 2.0));
}

void TimelineLabelView::drawBackground(QPainter *painter, const QRectF &rect)
{
    painter->fillRect(rect, TimelineColors::pastEnd());
    if (!mTimeline)
        return;
    QSet<int> selected;
    if (EditorSession *session = mTimeline->session()) {
        for (const ObjectGraphicsProxy *p : session->selection())
            selected.insert(p->timelineIndex());
    }
    const double width = std::max(rect.right(), double(viewport()->width()));
    // The mainline row goes last: pinned to the top, it covers the row that
    // scrolled under it.
    QList<std::pair<const TimelineGraphicsProxy *, int>> rows;
    int visibleRow = 0;
    for (const TimelineGraphicsProxy *row : mTimeline->shownRows())
        rows.append({row, visibleRow++});
    if (!rows.isEmpty() && rows.first().first == mTimeline->mainlineRow())
        rows.move(0, rows.size() - 1);
    for (const auto &[row, index] : std::as_const(rows)) {
        const QRectF r(0, row->top(), width, row->ownHeight());
        if (!r.intersects(rect))
            continue;
        QColor base = (index % 2) ? TimelineColors::rowOdd() : TimelineColors::rowEven();
        if (row == mTimeline->hoveredRow())
            base = base.lighter(125); // lit in both views
        painter->fillRect(r, base);
        painter->fillRect(QRectF(0, r.bottom() - 1, width, 1), QColor(0, 0, 0, 60));
        const int indent = std::max(0, row->depth() - 1) * 12;
        const double midY = r.top() + std::min(20, row->ownHeight()) / 2.0;

        if (!row->childRows().isEmpty() && row != mTimeline->mainlineRow()) {
            painter->save();
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setPen(Qt::NoPen);
            painter->setBrush(QColor(0xc0, 0xc0, 0xc0));
            const double x = ArrowX + indent;
            if (row->isExpanded()) {
                const QPointF points[3] = {{x + 1, midY - 3}, {x + 11, midY - 3}, {x + 6, midY + 3}};
                painter->drawPolygon(points, 3);
            } else {
                const QPointF points[3] = {{x + 3, midY - 5}, {x + 9, midY}, {x + 3, midY + 5}};
                painter->drawPolygon(points, 3);
            }
            painter->restore();
        }
        const bool isTimeline = row->id().kind == RowId::Kind::Timeline;
        if (row->showCheckBox() && isTimeline) {
            const int timeline = row->id().timeline;
            const ObjectGraphicsProxy *proxy = proxyOf(mTimeline, row);
            const bool locked = isLocked(timeline) || (proxy && proxy->isLocked());
            for (const auto &[x, on] : {std::pair{VisibleX, !isHidden(timeline)},
                                        std::pair{LockX, locked}}) {
                QStyleOptionButton option;
                option.rect = QRect(x + indent, int(midY - BoxSize / 2.0), BoxSize, BoxSize);
                option.state = QStyle::State_Enabled | (on ? QStyle::State_On : QStyle::State_Off);
                style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &option, painter, this);
            }
        }
        QFont font = painter->font();
        const bool isSelected = isTimeline && selected.contains(row->id().timeline);
        font.setBold(isSelected || row == mTimeline->mainlineRow());
        painter->setFont(font);
        painter->setPen(isSelected ? TimelineColors::selection() : row->textColor());
        const int nameX = (row == mTimeline->mainlineRow() ? ArrowX + 2 : NameX) + indent;
        const QRectF textRect(nameX, r.top(), width - nameX - 4, std::min(20, row->ownHeight()));
        painter->drawText(textRect, Qt::AlignVCenter | Qt::AlignLeft,
                          painter->fontMetrics().elidedText(row->label(), Qt::ElideRight,
                                                            int(textRect.width())));
    }
}

// Hiding and locking belong to the canvas scene; the labels only show them.
static MorvaneCanvasScene *canvasSceneOf(const TimelineView *timeline)
{
    return timeline && timeline->session() ? timeline->session()->scene() : nullptr;
}

bool TimelineLabelView::isHidden(int timelineIndex) const
{
    const MorvaneCanvasScene *scene = canvasSceneOf(mTimeline);
    return scene && scene->isTimelineHidden(timelineIndex);
}

bool TimelineLabelView::isLocked(int timelineIndex) const
{
    const MorvaneCanvasScene *scene = canvasSceneOf(mTimeline);
    return scene && scene->isTimelineLocked(timelineIndex);
}

void TimelineLabelView::setTimelineHidden(int timelineIndex, bool hidden)
{
    if (MorvaneCanvasScene *scene = canvasSceneOf(mTimeline))
        scene->setTimelineHidden(timelineIndex, hidden);
    viewport()->update();
}

void TimelineLabelView::setTimelineLocked(int timelineIndex, bool locked)
{
    if (MorvaneCanvasScene *scene = canvasSceneOf(mTimeline))
        scene->setTimelineLocked(timelineIndex, locked);
    viewport()->update();
}

void TimelineLabelView::mousePressEvent(QMouseEvent *event)
{
    if (!mTimeline || event->button() != Qt::LeftButton) {
        QGraphicsView::mousePressEvent(event);
        return;
    }
    const QPointF at = mapToScene(event->position().toPoint());
    TimelineGraphicsProxy *row = mTimeline->rowAt(at.y());
    event->accept();
    if (!row)
        return;
    const int indent = std::max(0, row->depth() - 1) * 12;
    const double x = at.x() - indent;
    if (!row->childRows().isEmpty() && row != mTimeline->mainlineRow() && x >= ArrowX
        && x < VisibleX) {
        mTimeline->setRowExpanded(row, !row->isExpanded());
        return;
    }
    if (row->id().kind != RowId::Kind::Timeline)
        return;
    const int timeline = row->id().timeline;
    if (row->showCheckBox() && x >= VisibleX && x < VisibleX + BoxSize + 2) {
        setTimelineHidden(timeline, !isHidden(timeline));
        return;
    }
    if (row->showCheckBox() && x >= LockX && x < LockX + BoxSize + 2) {
        const ObjectGraphicsProxy *proxy = proxyOf(mTimeline, row);
        setTimelineLocked(timeline, !(isLocked(timeline) || (proxy && proxy->isLocked())));
        return;
    }
    ObjectGraphicsProxy *proxy = proxyOf(mTimeline, row);
    EditorSession *session = mTimeline->session();
    if (!proxy || !session || isHidden(timeline))
        return;
    QList<ObjectGraphicsProxy *> selection;
    if (event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier)) {
        selection = session->selection();
        if (selection.contains(proxy))
            selection.removeAll(proxy);
        else
            selection.append(proxy);
    } else {
        selection = {proxy};
    }
    session->setSelection(selection);
    viewport()->update();
}

void TimelineLabelView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // A double click on a name opens or closes its lines.
    if (mTimeline) {
        TimelineGraphicsProxy *row = mTimeline->rowAt(mapToScene(event->position().toPoint()).y());
        if (row && !row->childRows().isEmpty() && row != mTimeline->mainlineRow()) {
            mTimeline->setRowExpanded(row, !row->isExpanded());
            event->accept();
            return;
        }
    }
    mousePressEvent(event);
}

void TimelineLabelView::mouseMoveEvent(QMouseEvent *event)
{
    if (!mTimeline)
        return;
    const QPointF at = mapToScene(event->position().toPoint());
    const TimelineGraphicsProxy *row = mTimeline->rowAt(at.y());
    QString tip;
    if (row && row->showCheckBox()) {
        const double x = at.x() - std::max(0, row->depth() - 1) * 12;
        if (x >= VisibleX && x < VisibleX + BoxSize + 2)
            tip = tr("Visible on the canvas");
        else if (x >= LockX && x < LockX + BoxSize + 2)
            tip = tr("Locked on the canvas");
    }
    setToolTip(tip);
}

void TimelineLabelView::wheelEvent(QWheelEvent *event)
{
    if (mTimeline)
        QCoreApplication::sendEvent(mTimeline->viewport(), event);
}

} // namespace Morvane
