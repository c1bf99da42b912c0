// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QGraphicsView>
#include <QPointer>
#include <QSet>

namespace Morvane {

class TimelineGraphicsProxy;
class TimelineView;

/// The row names beside the timeline view, scrolling with it: an expand arrow
/// for rows with child lines, the visibility and lock check boxes of object
/// rows (views of the canvas, not edits) and the name. Clicking a name selects
/// the object on the canvas; Shift or Ctrl adds it.
class TimelineLabelView : public QGraphicsView
{
    Q_OBJECT

public:
    static constexpr int ArrowX = 2;
    static constexpr int VisibleX = 16;
    static constexpr int LockX = 34;
    static constexpr int NameX = 54;

    explicit TimelineLabelView(TimelineView *timeline, QWidget *parent = nullptr);

    /// Whether the label view has hidden or locked the timeline's object.
    bool isHidden(int timelineIndex) const;
    bool isLocked(int timelineIndex) const;
    void setTimelineHidden(int timelineIndex, bool hidden);
    void setTimelineLocked(int timelineIndex, bool locked);
    /// Where a row's parts are, in this view's viewport (for tests and tips).
    QRect checkBoxRect(const TimelineGraphicsProxy *row, int x) const;
    QPoint nameCenter(const TimelineGraphicsProxy *row) const;

Q_SIGNALS:
    void statusMessage(const QString &text);

protected:
    void drawBackground(QPainter *painter, const QRectF &rect) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void syncRect();
    void forgetStates();

    QPointer<TimelineView> mTimeline;
};

} // namespace Morvane
