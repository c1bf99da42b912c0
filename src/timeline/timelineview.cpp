// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/timelineview.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "meta/metaowner.h"
#include "meta/valinfocollection.h"
#include "meta/valline.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "model/tweeninfo.h"

#include <QApplication>
#include <QCoreApplication>
#include <QGraphicsScene>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace Morvane {

bool TimelineView::snappingEnabled = false;

int KeySelection::keyCount() const
{
    int n = 0;
    for (const auto &line : lines)
        n += int(line.second.size());
    return n;
}

namespace {

QString lineLabel(const ValInfoCollection *infos, const ValLine *line)
{
    if (line->type() == VarType::Tag)
        return QObject::tr("Tags");
    const QString name = infos ? infos->nameFromId(line->varId()) : QString();
    return name.isEmpty() ? QObject::tr("variable %1").arg(line->varId()) : name;
}

// The value and tag lines of one owner that hold keys, as rows under `parent`.
void appendLineRows(TimelineGraphicsProxy *parent, const ValueLineHolder *holder,
                    const ValInfoCollection *infos, int objectIndex,
                    std::vector<std::unique_ptr<TimelineGraphicsProxy>> &owned)
{
    if (!holder)
        return;
    for (int i = 0; i < holder->lineCount(); ++i) {
        const ValLine *line = holder->lineAt(i);
        if (!line || line->isEmpty())
            continue;
        RowId id{RowId::Kind::ValueLine, -1, objectIndex, LineId{line->type(), line->varId()}};
        owned.push_back(std::make_unique<ValLineGraphicsProxy>(id, lineLabel(infos, line)));
        parent->appendChild(owned.back().get());
    }
    if (!holder->tagLine().isEmpty()) {
        RowId id{RowId::Kind::TagLine, -1, objectIndex, LineId::tagLine()};
        owned.push_back(std::make_unique<ValLineGraphicsProxy>(id, QObject::tr("Tags")));
        parent->appendChild(owned.back().get());
    }
}

void appendInOrder(TimelineGraphicsProxy *row, std::vector<TimelineGraphicsProxy *> &order)
{
    order.push_back(row);
    for (TimelineGraphicsProxy *child : row->childRows())
        appendInOrder(child, order);
}

} // namespace

TimelineView::TimelineView(EditorSession *session, QWidget *parent)
    : QGraphicsView(parent)
    , mSession(session)
    , mScene(new QGraphicsScene(this))
    , mPlayhead(new PlayheadItem)
{
    // Most markers stay still while a few move: a BSP index finds the visible
    // ones among a hundred thousand.
    mScene->setItemIndexMethod(QGraphicsScene::BspTreeIndex);
    mScene->addItem(mPlayhead);
    setScene(mScene);
    setObjectName(QStringLiteral("timelineView"));
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setResizeAnchor(NoAnchor);
    setDragMode(NoDrag);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setViewportUpdateMode(SmartViewportUpdate);
    setOptimizationFlags(DontSavePainterState | DontAdjustForAntialiasing);
    setCacheMode(CacheNone);
    setBackgroundBrush(TimelineColors::pastEnd());
    setFrameShape(QFrame::NoFrame);
    setMinimumHeight(60);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &TimelineView::pinMainline);

    if (mSession) {
        connect(mSession, &EditorSession::documentChanged, this, [this] {
            mAutoFit = true;
            refresh();
            scrollToStart();
        });
        connect(mSession, &EditorSession::animationChanged, this, [this] {
            mAutoFit = true;
            clean();
            refresh();
            scrollToStart();
        });
        connect(mSession, &EditorSession::documentEdited, this, &TimelineView::refresh);
        connect(mSession, &EditorSession::timeChanged, this, &TimelineView::showTime);
        connect(mSession, &EditorSession::selectionChanged, this, [this] {
            if (mFilter.showSelectedOnly)
                refresh();
            else
                Q_EMIT rowsChanged(); // the labels show the canvas selection
        });
    }
    refresh();
}

TimelineView::~TimelineView()
{
    // The rows go first; the scene deletes the items.
    mOrder.clear();
    mOwnedRows.clear();
}

Animation *TimelineView::animation() const
{
    return mSession ? mSession->currentAnimation() : nullptr;
}

int TimelineView::animationLength() const
{
    const Animation *anim = animation();
    return anim ? anim->length() : 0;
}

// Time and position.

void TimelineView::setZoomFactor(double factor)
{
    // Fitted, the animation stays fitted as the dock is resized, until the
    // user picks a zoom of their own.
    mAutoFit = factor == -1.0;
    applyZoom(factor);
}

double TimelineView::fittedZoom(int length) const
{
    // The end of the animation stays in sight with a little of what lies past
    // it, clear of the view's edge.
    return (viewport()->width() - TimelineViewTimelineRect::LeftMargin - 24.0) / length;
}

void TimelineView::applyZoom(double factor)
{
    if (factor == -1.0) {
        const int length = animationLength();
        factor = length > 0 ? fittedZoom(length) : mZoom;
    }
    // NaN and negatives become the floor too.
    if (!(factor >= MinZoom))
        factor = MinZoom;
    if (factor == mZoom)
        return;
    mZoom = factor;
    placeItems();
    Q_EMIT zoomChanged(mZoom);
}

int TimelineView::timeFromX(double x) const
{
    if (mZoom == 0.0)
        return 0;
    const double t = std::floor(x / mZoom + 0.5);
    const int length = animationLength();
    return int(std::clamp(t, 0.0, double(std::max(0, length))));
}

int TimelineView::snapSize() const
{
    if (mSnapPreview > 0)
        return mSnapPreview;
    const Animation *anim = animation();
    return anim ? anim->snappingInterval() : 100;
}

void TimelineView::setSnapPreview(int ms)
{
    mSnapPreview = std::max(0, ms);
    Q_EMIT rowsChanged();
}

int TimelineView::snappedTime(int ms) const
{
    const int snap = snapSize();
    if (snap <= 0)
        return ms;
    const int below = ms - ((ms % snap) + snap) % snap;
    const int above = below + snap;
    return (ms - below) * 2 >= snap ? above : below;
}

void TimelineView::scrollToTime(int ms)
{
    const double x = xFromTime(ms);
    QScrollBar *bar = horizontalScrollBar();
    const int left = bar->value();
    const int width = viewport()->width();
    if (x < left + 20 || x > left + width - 20)
        bar->setValue(int(x - width / 2.0));
}

void TimelineView::showTime(int ms)
{
    mShownTime = ms;
    const QPointF target(xFromTime(ms), -12);
    // Moved only when it is really somewhere else: a playhead that jitters by
    // rounding would repaint both views every frame.
    if (std::abs(mPlayhead->pos().x() - target.x()) >= 0.00001)
        mPlayhead->setPos(target);
    // Playing on during a drag: the stand-in is built for one time.
    if (mPreview.isActive())
        showPreview();
    viewport()->update();
}

// Rows.

QList<TimelineGraphicsProxy *> TimelineView::shownRows() const
{
    QList<TimelineGraphicsProxy *> result;
    for (TimelineGraphicsProxy *row : mOrder) {
        if (row->isShown())
            result.append(row);
    }
    return result;
}

TimelineGraphicsProxy *TimelineView::rowAt(double sceneY) const
{
    for (TimelineGraphicsProxy *row : mOrder) {
        if (row->isShown() && sceneY >= row->top() && sceneY < row->top() + row->ownHeight())
            return row;
    }
    return nullptr;
}

TimelineGraphicsProxy *TimelineView::row(const RowId &id) const
{
    for (TimelineGraphicsProxy *row : mOrder) {
        if (row->id() == id)
            return row;
    }
    return nullptr;
}

void TimelineView::setRowExpanded(TimelineGraphicsProxy *row, bool expanded)
{
    if (!row || row->childRows().isEmpty() || row == mMainline)
        return;
    row->setExpanded(expanded);
    if (expanded)
        mExpanded.insert(row->id().key());
    else
        mExpanded.remove(row->id().key());
    layoutRows();
}

QList<int> TimelineView::shownTimelines() const
{
    QList<int> result;
    for (const TimelineGraphicsProxy *row : mOrder) {
        if (row->id().kind == RowId::Kind::Timeline)
            result.append(row->id().timeline);
    }
    return result;
}

TimelineFilter TimelineView::timelineFilter() const
{
    TimelineFilter filter = mFilter;
    filter.selectedTimelines.clear();
    if (filter.showSelectedOnly && mSession) {
        for (const ObjectGraphicsProxy *p : mSession->selection())
            filter.selectedTimelines.insert(p->timelineIndex());
    }
    return filter;
}

void TimelineView::setTimelineFilter(const TimelineFilter &filter)
{
    mFilter = filter;
    refresh();
}

void TimelineView::toggleShowSelected(bool on)
{
    mFilter.showSelectedOnly = on;
    refresh();
}

void TimelineView::toggleShowEvents(bool on)
{
    mFilter.showEvents = on;
    refresh();
}

void TimelineView::toggleShowSounds(bool on)
{
    mFilter.showSounds = on;
    refresh();
}

void TimelineView::toggleShowSubEntities(bool on)
{
    mFilter.showSubEntities = on;
    refresh();
}

void TimelineView::toggleShowBoxes(bool on)
{
    mFilter.showBoxes = on;
    refresh();
}

void TimelineView::toggleShowPoints(bool on)
{
    mFilter.showPoints = on;
    refresh();
}

void TimelineView::toggleShowSkins(bool on)
{
    mFilter.showSkins = on;
    refresh();
}

void TimelineView::toggleShowBones(bool on)
{
    mFilter.showBones = on;
    refresh();
}

void TimelineView::toggleShowSprites(bool on)
{
    mFilter.showSprites = on;
    refresh();
}

void TimelineView::refresh()
{
    if (mGesture != Gesture::None) {
        // An edit from elsewhere in the middle of a drag: the drag is over.
        mGesture = Gesture::None;
        mDragged = nullptr;
    }
    rebuild();
}

void TimelineView::clean()
{
    // The preview reads the rows that go now.
    endPreview();
    // One sweep: taking 100,000 markers out one by one costs the index a
    // search each. The playhead goes with them and comes back.
    const QPointF playhead = mPlayhead->pos();
    mScene->clear();
    mPlayhead = new PlayheadItem;
    mPlayhead->setPos(playhead);
    mScene->addItem(mPlayhead);
    mMarkers.clear();
    mOrder.clear();
    mOwnedRows.clear();
    mMainline = nullptr;
    mHoveredRow = nullptr;
    mDragged = nullptr;
    mSelectionAtPress.clear();
}

void TimelineView::rebuild()
{
    const KeySelection keep = overallSelection(true);
    clean();
    Animation *anim = animation();
    mLength = anim ? anim->length() : 0;
    if (!anim) {
        layoutRows();
        placeItems();
        return;
    }
    if (mAutoFit && viewport()->width() > 100 && anim->length() > 0) {
        mZoom = std::clamp(fittedZoom(anim->length()), MinZoom, MaxZoom);
        Q_EMIT zoomChanged(mZoom);
    }

    const Entity *entity = anim->parentEntity();
    const TimelineFilter filter = timelineFilter();

    auto mainline = std::make_unique<AnimMainlineGraphicsProxy>();
    mMainline = mainline.get();
    mOwnedRows.push_back(std::move(mainline));
    // Rows in the filter's order, the order of the lines of a change set.
    const int shown = anim->filteredTimelineCount(filter);
    for (int line = 0; line < shown; ++line) {
        const Timeline *timeline = anim->filteredTimeline(line, filter);
        const int i = anim->indexOfTimeline(timeline);
        if (!timeline || i < 0)
            continue;
        mOwnedRows.push_back(std::make_unique<AnimTimelineGraphicsProxy>(i, timeline->name(),
                                                                         timeline->objectType()));
        TimelineGraphicsProxy *row = mOwnedRows.back().get();
        mMainline->appendChild(row);
        const int objectIndex = MetaOwner::forTimeline(timeline).objectIndex;
        const Object *object = entity ? entity->object(objectIndex) : nullptr;
        appendLineRows(row, anim->objectLineHolder(objectIndex),
                       object ? &object->valInfoCollection() : nullptr, objectIndex, mOwnedRows);
        row->setExpanded(mExpanded.contains(row->id().key()));
    }
    appendLineRows(mMainline, &anim->ownLineHolder(), entity ? &entity->valInfoCollection() : nullptr,
                   -1, mOwnedRows);
    appendInOrder(mMainline, mOrder);

    // Everything is placed before it enters the scene, so that the index takes
    // each marker once.
    const double animationWidth = mLength * mZoom;
    const double total = std::max(animationWidth + 60.0, double(viewport()->width()));
    int visibleRow = 0;
    for (TimelineGraphicsProxy *row : mOrder) {
        auto *rect = new TimelineViewTimelineRect(row, visibleRow++);
        rect->setWidths(total, animationWidth);
        row->setRect(rect);
        const QList<int> times = row->keyTimes(anim);
        const Timeline *timeline =
            row->id().kind == RowId::Kind::Timeline ? anim->timeline(row->id().timeline) : nullptr;
        QList<double> volumes;
        for (int k = 0; k < times.size(); ++k) {
            auto *key = new TimelineKeyGraphicsProxy(row, times[k], rect);
            key->setPositionalTime(times[k], mZoom, mLength);
            if (timeline)
                key->setInstant(timeline->key(k)->curve().isInstant());
            if (timeline && timeline->isSound())
                volumes.append(timeline->key(k)->soundInfo().volume);
            row->appendKey(key);
        }
        rect->setVolumes(volumes);
    }
    layoutRows();
    for (TimelineGraphicsProxy *row : mOrder)
        mScene->addItem(row->rect());
    for (int i = 0; i < anim->mainlineKeyCount(); ++i) {
        auto *marker = new MainlineKeyGraphicsProxy(mMainline->keys()[size_t(i)]->currentTime());
        marker->setCurrentTime(marker->currentTime(), mZoom);
        mScene->addItem(marker);
        mMarkers.push_back(marker);
    }
    updateCompactKeys();
    applyKeySelection(keep);
    // New items wait in a list for the scene's queued polish, and taking an
    // item out before that searches the list: rows rebuilt twice within one
    // edit would cost the square of the marker count. Polish them now.
    QCoreApplication::sendPostedEvents(mScene, QEvent::MetaCall);
}

void TimelineView::layoutRows()
{
    double y = 0;
    int visibleRow = 0;
    for (TimelineGraphicsProxy *row : mOrder) {
        const bool shown = row->isShown();
        row->rect()->setVisible(shown);
        if (!shown)
            continue;
        row->setTop(y);
        row->rect()->setPos(0, y);
        row->rect()->setHeight(row->ownHeight());
        row->rect()->setVisibleRow(visibleRow++);
        y += row->ownHeight();
    }
    mRowsHeight = y;
    updateSceneRect();
    pinMainline();
    Q_EMIT rowsChanged();
}

void TimelineView::pinMainline()
{
    // The mainline row stands over whatever row scrolled under the top edge:
    // its keys stay in reach however far down the rows are.
    if (!mMainline || !mMainline->rect())
        return;
    const double top = std::max(0.0, mapToScene(QPoint(0, 0)).y());
    if (mMainline->top() == top && mMainline->rect()->pos().y() == top)
        return;
    mMainline->setTop(top);
    mMainline->rect()->setPos(0, top);
    mMainline->rect()->setZValue(1);
    Q_EMIT rowsChanged();
}

bool TimelineView::coveredByMainline(const TimelineGraphicsProxy *row) const
{
    return mMainline && row != mMainline && mMainline->top() > 0
           && row->top() < mMainline->top() + mMainline->ownHeight()
           && row->top() + row->ownHeight() > mMainline->top();
}

void TimelineView::placeItems()
{
    const int length = animationLength();
    const double animationWidth = length * mZoom;
    const double total = std::max(animationWidth + 60.0, double(viewport()->width()));
    for (TimelineGraphicsProxy *row : mOrder) {
        row->rect()->setWidths(total, animationWidth);
        for (TimelineKeyGraphicsProxy *key : row->keys())
            key->setPositionalTime(key->positionalTime(), mZoom, length);
    }
    for (MainlineKeyGraphicsProxy *marker : mMarkers)
        marker->setCurrentTime(marker->currentTime(), mZoom);
    updateCompactKeys();
    updateSceneRect();
}

void TimelineView::updateSceneRect()
{
    const double total = std::max(animationLength() * mZoom + 60.0, double(viewport()->width()));
    mPlayhead->setPos(xFromTime(mShownTime), -12);
    // The scene spans the ruler strip too; this view shows the rows only.
    const double left = -TimelineViewTimelineRect::LeftMargin;
    mScene->setSceneRect(QRectF(left, -24, total - left, mRowsHeight + 24));
    setSceneRect(QRectF(left, 0, total - left, std::max(mRowsHeight, 1.0)));
    viewport()->update();
}

void TimelineView::updateCompactKeys()
{
    // Keys closer than their shapes are wide are drawn as plain ticks: they
    // would only overlap, and ticks are cheap when thousands are in view.
    int closest = std::numeric_limits<int>::max();
    if (mMainline) {
        const auto &keys = mMainline->keys();
        for (size_t i = 1; i < keys.size(); ++i)
            closest = std::min(closest, keys[i]->positionalTime() - keys[i - 1]->positionalTime());
    }
    const bool compact = closest != std::numeric_limits<int>::max() && closest * mZoom < 9.0;
    if (compact != TimelineKeyGraphicsProxy::compact()) {
        TimelineKeyGraphicsProxy::setCompact(compact);
        viewport()->update();
    }
}

// Selection.

KeySelection TimelineView::overallSelection(bool after) const
{
    KeySelection selection;
    for (const TimelineGraphicsProxy *row : mOrder) {
        QList<int> times;
        for (const TimelineKeyGraphicsProxy *key : row->keys()) {
            if (key->isSelected())
                times.append(after ? key->positionalTime() : key->originalTime());
        }
        if (!times.isEmpty())
            selection.lines.append({row->id(), times});
    }
    return selection;
}

void TimelineView::applyKeySelection(const KeySelection &selection)
{
    QSignalBlocker block(mScene);
    mScene->clearSelection();
    for (const auto &[id, times] : selection.lines) {
        TimelineGraphicsProxy *r = row(id);
        if (!r)
            continue;
        for (TimelineKeyGraphicsProxy *key : r->keys()) {
            if (times.contains(key->positionalTime()))
                key->setSelected(true);
        }
    }
    emitSelectionChanged();
}

void TimelineView::selectAllKeys()
{
    for (TimelineGraphicsProxy *row : mOrder) {
        if (!row->isShown())
            continue;
        for (TimelineKeyGraphicsProxy *key : row->keys())
            key->setSelected(true);
    }
    setTimelineKeySelectionToMainlineKeys();
}

void TimelineView::clearKeySelection()
{
    for (TimelineKeyGraphicsProxy *key : selectedKeys())
        key->setSelected(false);
    emitSelectionChanged();
}

QList<TimelineKeyGraphicsProxy *> TimelineView::selectedKeys() const
{
    QList<TimelineKeyGraphicsProxy *> result;
    for (const TimelineGraphicsProxy *row : mOrder) {
        for (TimelineKeyGraphicsProxy *key : row->keys()) {
            if (key->isSelected())
                result.append(key);
        }
    }
    return result;
}

void TimelineView::setTimelineKeySelectionToMainlineKeys()
{
    if (mMainline)
        mMainline->selectAllChildrenRecursive();
    emitSelectionChanged();
}

void TimelineView::emitSelectionChanged()
{
    // The ruler's markers stand in the mainline row's order.
    for (size_t i = 0; i < mMarkers.size(); ++i) {
        mMarkers[i]->setHighlighted(mMainline && i < mMainline->keys().size()
                                    && mMainline->keys()[i]->isSelected());
    }
    Q_EMIT keySelectionChanged();
}

// Dragging.

void TimelineView::storeOldTimes()
{
    for (TimelineGraphicsProxy *row : mOrder) {
        for (TimelineKeyGraphicsProxy *key : row->keys())
            key->storeOldTime();
    }
}

void TimelineView::restorePositions()
{
    const int length = animationLength();
    for (TimelineGraphicsProxy *row : mOrder) {
        for (TimelineKeyGraphicsProxy *key : row->keys())
            key->setPositionalTime(key->originalTime(), mZoom, length);
    }
}

namespace {

// Moves the selected keys of `row` to the times `target` gives for their
// original times, planned as every move and retime of keys is.
template <typename Target>
void moveRowKeys(TimelineGraphicsProxy *row, bool isMainline, const QSet<int> &riding,
                 double zoom, int length, Target target, bool forward)
{
    const auto &keys = row->keys();
    if (std::none_of(keys.begin(), keys.end(), [](const auto *k) { return k->isSelected(); }))
        return;
    std::vector<KeyEdits::PlannedKey> plan;
    plan.reserve(keys.size());
    for (const TimelineKeyGraphicsProxy *key : keys)
        plan.push_back({key->originalTime(), key->positionalTime(), key->isSelected()});
    KeyEdits::planRowMove(plan, isMainline, riding, length, target, forward);
    for (size_t i = 0; i < keys.size(); ++i) {
        if (plan[i].position != keys[i]->positionalTime())
            keys[i]->setPositionalTime(plan[i].position, zoom, length);
    }
}

} // namespace

void TimelineView::dragKeysTo(double sceneX)
{
    if (!mDragged)
        return;
    const double proposed = xFromTime(mDragged->originalTime()) + (sceneX - mPressScenePos.x());
    int t = timeFromX(std::clamp(proposed, 0.0, xFromTime(animationLength())));
    if (snappingEnabled)
        t = std::clamp(snappedTime(t), 0, animationLength());
    const int delta = t - mDragged->originalTime();
    QSet<int> riding;
    for (const TimelineKeyGraphicsProxy *key : mMainline->keys()) {
        if (key->isSelected())
            riding.insert(key->originalTime());
    }
    const int length = animationLength();
    for (TimelineGraphicsProxy *row : mOrder) {
        moveRowKeys(row, row == mMainline, riding, mZoom, length,
                    [delta](int original) { return original + delta; }, delta > 0);
    }
    mKeysMoved = true;
    showPreview();
    viewport()->update();
}

void TimelineView::showPreview()
{
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    const Animation *anim = animation();
    if (!scene || !anim)
        return;
    if (!mPreview.isActive())
        mPreview.begin(anim, mOrder);
    if (Animation *preview = mPreview.build(anim, scene->currentTime()))
        scene->setPreviewAnimation(preview);
}

void TimelineView::endPreview()
{
    if (!mPreview.isActive())
        return;
    if (MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr)
        scene->setPreviewAnimation(nullptr);
    mPreview.clear();
}

bool TimelineView::selectionSpan(int *first, int *last) const
{
    bool any = false;
    for (const TimelineGraphicsProxy *row : mOrder) {
        for (const TimelineKeyGraphicsProxy *key : row->keys()) {
            if (!key->isSelected())
                continue;
            const int t = key->positionalTime();
            *first = any ? std::min(*first, t) : t;
            *last = any ? std::max(*last, t) : t;
            any = true;
        }
    }
    return any;
}

bool TimelineView::nearSelectionRightEdge(const QPointF &scenePos) const
{
    int first = 0;
    int last = 0;
    if (!selectionSpan(&first, &last) || last == first)
        return false;
    return std::abs(scenePos.x() - (xFromTime(last) + 6)) <= 6;
}

void TimelineView::retimeTo(double sceneX)
{
    if (mRetimeLast <= mRetimeFirst)
        return;
    int t = timeFromX(sceneX - 6);
    if (snappingEnabled)
        t = std::clamp(snappedTime(t), 0, animationLength());
    t = std::max(t, mRetimeFirst);
    const double factor = double(t - mRetimeFirst) / double(mRetimeLast - mRetimeFirst);
    const int first = mRetimeFirst;
    QSet<int> riding;
    for (const TimelineKeyGraphicsProxy *key : mMainline->keys()) {
        if (key->isSelected())
            riding.insert(key->originalTime());
    }
    for (TimelineGraphicsProxy *row : mOrder) {
        moveRowKeys(row, row == mMainline, riding, mZoom, animationLength(),
                    [first, factor](int original) {
                        return KeyEdits::scaledTime(original, first, factor);
                    },
                    factor > 1.0);
    }
    mKeysMoved = true;
    showPreview();
    viewport()->update();
}

TimelineKeyGraphicsProxy *TimelineView::keyAt(const QPoint &viewPos) const
{
    // The topmost marker under the pointer; markers are small, so a few pixels
    // around it count.
    const QRectF probe = mapToScene(QRect(viewPos - QPoint(2, 2), QSize(5, 5))).boundingRect();
    TimelineKeyGraphicsProxy *best = nullptr;
    double bestDistance = 0;
    const QPointF at = mapToScene(viewPos);
    // Over the pinned mainline row only its keys count.
    const TimelineGraphicsProxy *over = rowAt(at.y());
    for (QGraphicsItem *item : mScene->items(probe, Qt::IntersectsItemBoundingRect)) {
        if (item->type() != TimelineKeyGraphicsProxy::Type || !item->isVisible())
            continue;
        auto *key = static_cast<TimelineKeyGraphicsProxy *>(item);
        if (over == mMainline && key->parentItem() != mMainline->rect())
            continue;
        const double d = std::abs(key->scenePos().x() - at.x());
        if (!best || d < bestDistance) {
            best = key;
            bestDistance = d;
        }
    }
    return best;
}

void TimelineView::mousePressEvent(QMouseEvent *event)
{
    const QPointF scenePos = mapToScene(event->position().toPoint());
    mPressScenePos = scenePos;
    mKeysMoved = false;
    mDragged = nullptr;
    mGesture = Gesture::None;
    TimelineKeyGraphicsProxy *key = keyAt(event->position().toPoint());

    if (event->button() == Qt::RightButton) {
        if (key) {
            if (!key->isSelected()) {
                mScene->clearSelection();
                key->setSelected(true);
                setTimelineKeySelectionToMainlineKeys();
            }
            showKeyMenu(key, event->globalPosition().toPoint());
        } else if (animation()) {
            showRowMenu(event->globalPosition().toPoint());
        }
        event->accept();
        return;
    }
    if (event->button() != Qt::LeftButton || !animation()) {
        QGraphicsView::mousePressEvent(event);
        return;
    }

    if ((event->modifiers() & Qt::AltModifier) && nearSelectionRightEdge(scenePos)) {
        storeOldTimes();
        selectionSpan(&mRetimeFirst, &mRetimeLast);
        mGesture = Gesture::Retime;
        event->accept();
        return;
    }

    const bool additive = event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier);
    if (key) {
        const bool wasSelected = key->isSelected();
        if (additive) {
            key->setSelected(!wasSelected);
        } else if (!wasSelected) {
            mScene->clearSelection();
            key->setSelected(true);
        }
        mPressSelectedAlready = wasSelected && !additive;
        setTimelineKeySelectionToMainlineKeys();
        storeOldTimes();
        if (key->isSelected()) {
            mDragged = key;
            mGesture = Gesture::DragKeys;
        }
    } else {
        mGesture = Gesture::Box;
        mBox = QRectF();
        mSelectionAtPress.clear();
        if (event->modifiers() & Qt::ShiftModifier) {
            const QList<TimelineKeyGraphicsProxy *> keys = selectedKeys();
            mSelectionAtPress = QSet<TimelineKeyGraphicsProxy *>(keys.begin(), keys.end());
        }
    }
    event->accept();
}

void TimelineView::mouseMoveEvent(QMouseEvent *event)
{
    const QPointF scenePos = mapToScene(event->position().toPoint());
    if (!(event->buttons() & Qt::LeftButton) || mGesture == Gesture::None) {
        updateHover(scenePos);
        const bool edge = (event->modifiers() & Qt::AltModifier) && nearSelectionRightEdge(scenePos);
        viewport()->setCursor(edge ? Qt::SizeHorCursor : Qt::ArrowCursor);
        return;
    }
    const bool farEnough = (scenePos - mPressScenePos).manhattanLength()
                           >= QApplication::startDragDistance();
    switch (mGesture) {
    case Gesture::DragKeys:
        if (mKeysMoved || farEnough)
            dragKeysTo(scenePos.x());
        break;
    case Gesture::Retime:
        retimeTo(scenePos.x());
        break;
    case Gesture::Box: {
        if (!farEnough && mBox.isNull())
            break;
        // A box along one row is still a box: give it a pixel of height.
        mBox = QRectF(mPressScenePos, scenePos).normalized().adjusted(-0.5, -0.5, 0.5, 0.5);
        QSignalBlocker block(mScene);
        for (TimelineGraphicsProxy *row : mOrder) {
            if (!row->isShown())
                continue;
            const bool covered = coveredByMainline(row);
            for (TimelineKeyGraphicsProxy *key : row->keys()) {
                const bool inside = !covered && mBox.intersects(key->sceneBoundingRect());
                key->setSelected(inside || mSelectionAtPress.contains(key));
            }
        }
        viewport()->update();
        break;
    }
    case Gesture::None:
        break;
    }
    event->accept();
}

void TimelineView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QGraphicsView::mouseReleaseEvent(event);
        return;
    }
    const Gesture gesture = mGesture;
    mGesture = Gesture::None;
    switch (gesture) {
    case Gesture::DragKeys:
    case Gesture::Retime:
        endPreview();
        if (mKeysMoved) {
            createUndosFromSelectedItems();
        } else if (gesture == Gesture::DragKeys && mPressSelectedAlready && mDragged) {
            // A click on a selected key selects it alone.
            mScene->clearSelection();
            mDragged->setSelected(true);
        }
        break;
    case Gesture::Box:
        if (mBox.isNull() && !(event->modifiers() & Qt::ShiftModifier)) {
            // A click on empty space: nothing selected, and the time goes there.
            mScene->clearSelection();
            if (mSession)
                mSession->setCurrentTime(timeFromX(mPressScenePos.x()));
        }
        mBox = QRectF();
        break;
    case Gesture::None:
        break;
    }
    mDragged = nullptr;
    mKeysMoved = false;
    setTimelineKeySelectionToMainlineKeys();
    viewport()->update();
    event->accept();
}

void TimelineView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // A double click on a key goes to its time.
    if (TimelineKeyGraphicsProxy *key = keyAt(event->position().toPoint())) {
        if (mSession)
            mSession->setCurrentTime(key->positionalTime());
        event->accept();
        return;
    }
    mousePressEvent(event);
}

void TimelineView::wheelEvent(QWheelEvent *event)
{
    if (event->modifiers() != Qt::ControlModifier) {
        QGraphicsView::wheelEvent(event);
        return;
    }
    const double pointerX = event->position().x();
    const int time = timeFromX(mapToScene(event->position().toPoint()).x());
    const double factor = std::min(MaxZoom, mZoom + event->angleDelta().y() / 200.0);
    setZoomFactor(factor);
    // The time under the pointer stays under it.
    horizontalScrollBar()->setValue(int(time * mZoom - pointerX));
    event->accept();
}

bool TimelineView::event(QEvent *event)
{
    // With the keys in focus, Delete and Ctrl+A are about keys, not about the
    // canvas objects the window's shortcuts would act on.
    if (event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::SelectAll) || key->key() == Qt::Key_Delete
            || key->key() == Qt::Key_Backspace || key->key() == Qt::Key_Escape) {
            event->accept();
            return true;
        }
    }
    return QGraphicsView::event(event);
}

void TimelineView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::SelectAll)) {
        selectAllKeys();
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        deleteSelectedKeys();
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        clearKeySelection();
        event->accept();
        return;
    }
    QGraphicsView::keyPressEvent(event);
}

void TimelineView::updateHover(const QPointF &scenePos)
{
    TimelineGraphicsProxy *row = rowAt(scenePos.y());
    if (row != mHoveredRow) {
        if (mHoveredRow)
            mHoveredRow->rect()->setHighlighted(false);
        mHoveredRow = row;
        if (row)
            row->rect()->setHighlighted(true);
        Q_EMIT rowsChanged();
    }
    const QString name = row && row->id().kind == RowId::Kind::Timeline ? row->label() : QString();
    if (name == mLastHovered)
        return;
    mLastHovered = name;
    Q_EMIT hovered(name);
    MorvaneCanvasScene *canvas = mSession ? mSession->scene() : nullptr;
    if (!canvas)
        return;
    ObjectGraphicsProxy *proxy = row && row->id().kind == RowId::Kind::Timeline
                                     ? canvas->timelineProxy(row->id().timeline)
                                     : nullptr;
    canvas->setHoveredProxy(proxy);
    if (proxy) {
        // The highlight fades after 600 ms unless the pointer moved on to
        // another row, which starts its own.
        QPointer<MorvaneCanvasScene> guard(canvas);
        QTimer::singleShot(600, canvas, [guard, proxy] {
            if (guard && guard->hoveredProxy() == proxy)
                guard->setHoveredProxy(nullptr);
        });
    }
}

void TimelineView::leaveEvent(QEvent *event)
{
    if (mHoveredRow) {
        mHoveredRow->rect()->setHighlighted(false);
        mHoveredRow = nullptr;
        Q_EMIT rowsChanged();
    }
    mLastHovered.clear();
    QGraphicsView::leaveEvent(event);
}

void TimelineView::scrollToStart()
{
    horizontalScrollBar()->setValue(horizontalScrollBar()->minimum());
    verticalScrollBar()->setValue(verticalScrollBar()->minimum());
}

void TimelineView::showEvent(QShowEvent *event)
{
    QGraphicsView::showEvent(event);
    // A graphics view first shows the middle of its scene; the rows start at
    // the mainline, top left, once the layout has settled.
    if (!mShownOnce) {
        mShownOnce = true;
        QTimer::singleShot(0, this, &TimelineView::scrollToStart);
    }
}

void TimelineView::resizeEvent(QResizeEvent *event)
{
    QGraphicsView::resizeEvent(event);
    if (mAutoFit && animation() && viewport()->width() > 100)
        applyZoom(-1);
    else
        placeItems();
}

void TimelineView::drawForeground(QPainter *painter, const QRectF &rect)
{
    if (!animation())
        return;
    const double end = xFromTime(animationLength());
    painter->setPen(QPen(QColor(0, 0, 0, 160), 1));
    painter->drawLine(QPointF(end, rect.top()), QPointF(end, rect.bottom()));
    const double now = xFromTime(mShownTime);
    painter->setPen(QPen(TimelineColors::playhead(), 1));
    painter->drawLine(QPointF(now, rect.top()), QPointF(now, rect.bottom()));
    if (!mBox.isNull()) {
        painter->setPen(QPen(TimelineColors::selection(), 1, Qt::DashLine));
        QColor fill = TimelineColors::selection();
        fill.setAlpha(40);
        painter->setBrush(fill);
        painter->drawRect(mBox);
    }
}

// Menus.

void TimelineView::showKeyMenu(TimelineKeyGraphicsProxy *key, const QPoint &globalPos)
{
    QMenu menu(this);
    // Tag and string keys have no curve: the menu offers none on their rows.
    const TimelineGraphicsProxy *keyRow = nullptr;
    for (const TimelineGraphicsProxy *r : mOrder) {
        if (std::find(r->keys().begin(), r->keys().end(), key) != r->keys().end())
            keyRow = r;
    }
    QMenu *curves = keyRow && rowHasCurves(keyRow) ? menu.addMenu(tr("Curve")) : nullptr;
    const std::pair<const char *, int> types[] = {
        {QT_TR_NOOP("Instant"), int(TweenInfo::CurveType::Instant)},
        {QT_TR_NOOP("Linear"), int(TweenInfo::CurveType::Linear)},
        {QT_TR_NOOP("Quadratic"), int(TweenInfo::CurveType::Quadratic)},
        {QT_TR_NOOP("Cubic"), int(TweenInfo::CurveType::Cubic)},
        {QT_TR_NOOP("Quartic"), int(TweenInfo::CurveType::Quartic)},
        {QT_TR_NOOP("Quintic"), int(TweenInfo::CurveType::Quintic)},
        {QT_TR_NOOP("Bezier"), int(TweenInfo::CurveType::Bezier)},
    };
    for (const auto &[text, type] : types) {
        if (!curves)
            break;
        curves->addAction(tr(text), this, [this, type = type] {
            TweenInfo curve;
            curve.setCurveType(type);
            changeCurveOfSelectedKeys(curve);
        });
    }
    menu.addAction(tr("Delete"), this, [this] { deleteSelectedKeys(); });
    menu.addSeparator();
    menu.addAction(tr("Animation properties..."), this,
                   [this] { Q_EMIT animationPropertiesRequested(); });
    for (QAction *action : actions())
        menu.addAction(action);
    menu.exec(globalPos);
}

void TimelineView::addFilterMenu(QMenu *menu)
{
    QMenu *show = menu->addMenu(tr("Show"));
    const std::tuple<const char *, bool, void (TimelineView::*)(bool)> entries[] = {
        {QT_TR_NOOP("Selected Objects Only"), mFilter.showSelectedOnly, &TimelineView::toggleShowSelected},
        {QT_TR_NOOP("Sprites"), mFilter.showSprites, &TimelineView::toggleShowSprites},
        {QT_TR_NOOP("Bones"), mFilter.showBones, &TimelineView::toggleShowBones},
        {QT_TR_NOOP("Boxes"), mFilter.showBoxes, &TimelineView::toggleShowBoxes},
        {QT_TR_NOOP("Points"), mFilter.showPoints, &TimelineView::toggleShowPoints},
        {QT_TR_NOOP("Skins"), mFilter.showSkins, &TimelineView::toggleShowSkins},
        {QT_TR_NOOP("Sub-entities"), mFilter.showSubEntities, &TimelineView::toggleShowSubEntities},
        {QT_TR_NOOP("Events"), mFilter.showEvents, &TimelineView::toggleShowEvents},
        {QT_TR_NOOP("Sounds"), mFilter.showSounds, &TimelineView::toggleShowSounds},
    };
    for (const auto &[text, on, slot] : entries) {
        QAction *a = show->addAction(tr(text));
        a->setCheckable(true);
        a->setChecked(on);
        connect(a, &QAction::toggled, this, slot);
    }
}

void TimelineView::showRowMenu(const QPoint &globalPos)
{
    QMenu menu(this);
    menu.addAction(tr("Animation properties..."), this,
                   [this] { Q_EMIT animationPropertiesRequested(); });
    for (QAction *action : actions())
        menu.addAction(action);
    menu.addSeparator();
    addFilterMenu(&menu);
    menu.exec(globalPos);
}

// Edits.

bool TimelineView::scaleSelectedKeyTimes(double factor)
{
    int first = 0;
    int last = 0;
    if (!(factor > 0) || !selectionSpan(&first, &last))
        return false;
    storeOldTimes();
    mRetimeFirst = first;
    mRetimeLast = last;
    QSet<int> riding;
    for (const TimelineKeyGraphicsProxy *key : mMainline->keys()) {
        if (key->isSelected())
            riding.insert(key->originalTime());
    }
    for (TimelineGraphicsProxy *row : mOrder) {
        moveRowKeys(row, row == mMainline, riding, mZoom, animationLength(),
                    [first, factor](int original) {
                        return KeyEdits::scaledTime(original, first, factor);
                    },
                    factor > 1.0);
    }
    return createUndosFromSelectedItems();
}

bool TimelineView::moveSelectedKeys(int deltaMs)
{
    if (selectedKeys().isEmpty() || deltaMs == 0)
        return false;
    storeOldTimes();
    QSet<int> riding;
    for (const TimelineKeyGraphicsProxy *key : mMainline->keys()) {
        if (key->isSelected())
            riding.insert(key->originalTime());
    }
    for (TimelineGraphicsProxy *row : mOrder) {
        moveRowKeys(row, row == mMainline, riding, mZoom, animationLength(),
                    [deltaMs](int original) { return original + deltaMs; }, deltaMs > 0);
    }
    return createUndosFromSelectedItems();
}

} // namespace Morvane
