// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "canvas/editorsession.h"
#include "model/timelinefilter.h"
#include "timeline/dragpreview.h"
#include "timeline/keyedits.h"
#include "timeline/timelinerows.h"

#include <QGraphicsView>
#include <QList>
#include <QPair>
#include <QPointer>
#include <QSet>

#include <memory>
#include <vector>

class QGraphicsScene;
class QMenu;

namespace Morvane {

class Animation;
class Copy;
class EditorSession;
class MainlineKeyGraphicsProxy;
class PlayheadItem;
class TweenInfo;

/// Selected keys by row and time (milliseconds), as the undo commands keep them.
struct KeySelection
{
    QList<QPair<RowId, QList<int>>> lines;
    bool isEmpty() const { return lines.isEmpty(); }
    int keyCount() const;
    bool operator==(const KeySelection &) const = default;
};

/// The rows of the shown animation with a marker per key: selecting, box
/// selecting and dragging keys in time, zoom and scrolling. It reads the
/// document and never writes it: a drag is recorded through the key-edit
/// operations as one "keys moved" step. The scene it shows (with a BSP index,
/// since most markers stay still) also holds the ruler strip above y = 0 that
/// `MainlineView` shows.
class TimelineView : public QGraphicsView
{
    Q_OBJECT

public:
    static constexpr double MinZoom = 0.0001;
    static constexpr double MaxZoom = 50.0;
    /// Time snapping for key drags, for the whole application.
    static bool snappingEnabled;

    explicit TimelineView(EditorSession *session, QWidget *parent = nullptr);
    ~TimelineView() override;

    EditorSession *session() const { return mSession; }
    QGraphicsScene *timelineScene() const { return mScene; }
    /// The shown animation, null when none (ask again after every edit).
    Animation *animation() const;
    int animationLength() const;

    // Time and position.
    double zoomFactor() const { return mZoom; }
    /// Pixels per millisecond, at least `MinZoom`; -1 fits the animation into the view.
    void setZoomFactor(double factor);
    double xFromTime(int ms) const { return ms * mZoom; }
    /// Rounded half up, clamped into [0, length].
    int timeFromX(double x) const;
    /// The animation's snapping interval (100 without animation), or the one
    /// the snapping dialog is showing.
    int snapSize() const;
    /// Shows and snaps with `ms` until set back to 0 (the dialog's preview).
    void setSnapPreview(int ms);
    /// `ms` on the nearer multiple of the interval (halfway goes up).
    int snappedTime(int ms) const;
    void scrollToTime(int ms);

    // Rows.
    TimelineGraphicsProxy *mainlineRow() const { return mMainline; }
    /// Every row in display order (children after their parent), shown or not.
    const std::vector<TimelineGraphicsProxy *> &rows() const { return mOrder; }
    /// Rows whose every ancestor is expanded, in display order.
    QList<TimelineGraphicsProxy *> shownRows() const;
    TimelineGraphicsProxy *rowAt(double sceneY) const;
    TimelineGraphicsProxy *row(const RowId &id) const;
    /// The row under the pointer, null when none.
    TimelineGraphicsProxy *hoveredRow() const { return mHoveredRow; }
    void setRowExpanded(TimelineGraphicsProxy *row, bool expanded);
    /// The timelines that have rows, by index in the animation, in row order.
    QList<int> shownTimelines() const;
    /// The show filters, with the canvas selection for "selected only": the
    /// same filter picks the lines of a key-time change set.
    TimelineFilter timelineFilter() const;
    void setTimelineFilter(const TimelineFilter &filter);

    // Selection.
    /// Selected keys by their original times (before the drag) or their
    /// positional times (after it).
    KeySelection overallSelection(bool after) const;
    /// Clears the selection and selects the keys named (by positional time).
    void applyKeySelection(const KeySelection &selection);
    void selectAllKeys();
    void clearKeySelection();
    QList<TimelineKeyGraphicsProxy *> selectedKeys() const;
    /// Selecting a mainline key selects its timeline keys: every key of the
    /// mainline's selected keys' child rows at their times.
    void setTimelineKeySelectionToMainlineKeys();

    // Edits of the selected keys; each is one undo step (or nothing).
    /// Records the markers' present times as one "keys moved" step; false when
    /// nothing moved.
    bool createUndosFromSelectedItems();
    /// The selected keys as the key edits name them; a selected mainline key
    /// stands for its timeline keys.
    QList<KeyEdits::KeyId> selectedKeyIds() const;
    bool deleteSelectedKeys();
    /// Whether the keys of `row` have a curve (tag and string keys have none).
    bool rowHasCurves(const TimelineGraphicsProxy *row) const;
    /// Pastes `copy` so that its earliest key lands at the current time, by
    /// the clipboard's rules; one undo step. `message` gets the status line.
    bool pasteKeys(Copy *copy, QString *message = nullptr);
    bool changeCurveOfSelectedKeys(const TweenInfo &curve);
    /// Scales the selected keys' times about the earliest of them.
    bool scaleSelectedKeyTimes(double factor);
    /// The same as a drag of the selected keys by `deltaMs` would.
    bool moveSelectedKeys(int deltaMs);
    /// Cuts or extends the animation (keys past the new length go).
    bool truncateAnimationLength(int lengthMs);

    /// Rebuilds the rows for the shown animation (keeping expanded rows and,
    /// by time, the selection).
    void refresh();
    void clean();

    /// Where the current-time line is drawn (milliseconds).
    int shownTime() const { return mShownTime; }

Q_SIGNALS:
    void hovered(const QString &name);
    void zoomChanged(double factor);
    /// The rows were rebuilt or laid out again.
    void rowsChanged();
    void statusMessage(const QString &text);
    void animationPropertiesRequested();
    void keySelectionChanged();

public Q_SLOTS:
    /// Follows the session's time: moves the current-time line and playhead.
    void showTime(int ms);
    // Which timelines get rows.
    void toggleShowSelected(bool on);
    void toggleShowEvents(bool on);
    void toggleShowSounds(bool on);
    void toggleShowSubEntities(bool on);
    void toggleShowBoxes(bool on);
    void toggleShowPoints(bool on);
    void toggleShowSkins(bool on);
    void toggleShowBones(bool on);
    void toggleShowSprites(bool on);

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void drawForeground(QPainter *painter, const QRectF &rect) override;

private:
    enum class Gesture { None, DragKeys, Box, Retime };

    void applyZoom(double factor);
    /// Pixels per millisecond that show `length` ms whole (length > 0).
    double fittedZoom(int length) const;
    void scrollToStart();
    void rebuild();
    void layoutRows();
    void placeItems();
    void updateSceneRect();
    void updateCompactKeys();
    /// Keeps the mainline row at the top edge while the other rows scroll.
    void pinMainline();
    /// Whether `row` lies under the pinned mainline row, out of sight.
    bool coveredByMainline(const TimelineGraphicsProxy *row) const;
    void storeOldTimes();
    void dragKeysTo(double sceneX);
    void retimeTo(double sceneX);
    /// The canvas follows the markers of a drag; `endPreview` gives it the
    /// document back.
    void showPreview();
    void endPreview();
    /// The right edge of the selection (scene x) and the earliest and latest
    /// selected times; false when nothing is selected.
    bool selectionSpan(int *first, int *last) const;
    bool nearSelectionRightEdge(const QPointF &scenePos) const;
    TimelineKeyGraphicsProxy *keyAt(const QPoint &viewPos) const;
    void updateHover(const QPointF &scenePos);
    void showKeyMenu(TimelineKeyGraphicsProxy *key, const QPoint &globalPos);
    void showRowMenu(const QPoint &globalPos);
    void addFilterMenu(QMenu *menu);
    void restorePositions();
    void emitSelectionChanged();

    QPointer<EditorSession> mSession;
    QGraphicsScene *mScene;
    double mZoom = 0.25;
    bool mAutoFit = true;
    bool mShownOnce = false;
    int mShownTime = 0;
    PlayheadItem *mPlayhead;
    std::vector<std::unique_ptr<TimelineGraphicsProxy>> mOwnedRows;
    std::vector<TimelineGraphicsProxy *> mOrder;
    TimelineGraphicsProxy *mMainline = nullptr;
    std::vector<MainlineKeyGraphicsProxy *> mMarkers;
    QSet<QString> mExpanded;
    TimelineFilter mFilter;
    int mLength = 0;
    double mRowsHeight = 0.0;
    int mSnapPreview = 0;

    Gesture mGesture = Gesture::None;
    TimelineKeyGraphicsProxy *mDragged = nullptr;
    bool mKeysMoved = false;
    bool mPressSelectedAlready = false;
    QPointF mPressScenePos;
    QRectF mBox;
    QSet<TimelineKeyGraphicsProxy *> mSelectionAtPress;
    DragPreview mPreview;
    int mRetimeFirst = 0;
    int mRetimeLast = 0;
    QString mLastHovered;
    TimelineGraphicsProxy *mHoveredRow = nullptr;
};

} // namespace Morvane
