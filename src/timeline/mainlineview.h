// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QGraphicsView>
#include <QPointer>

namespace Morvane {

class TimelineView;

/// The ruler above the rows: graduations, the mainline key markers and the
/// playhead, on the strip of the timeline view's scene above y = 0. Pressing
/// and dragging on it moves the current time.
class MainlineView : public QGraphicsView
{
    Q_OBJECT

public:
    static constexpr int Height = 24;
    /// Times as frames of the snapping interval instead of milliseconds.
    static bool useFramesAsUnits;

    explicit MainlineView(TimelineView *timeline, QWidget *parent = nullptr);

    /// The graduation step for a distance of `v` milliseconds (> 0): 1, 2 or 5
    /// times a power of ten; 1 for anything else.
    static double roundToCoolValue(double v);
    /// The next multiple of `snap` above `v`, or `v` itself when it is 0 and
    /// `snap` is not 1: the ruler's first mark.
    static int roundToCoolSnapValue(int v, int snap);
    /// `ms` as the ruler and the time fields show it (frames or milliseconds).
    static QString timeText(int ms, int snapInterval);

    /// Keeps the width of the rows' viewport (their vertical scroll bar aside).
    void setRightMargin(int pixels);

protected:
    void drawBackground(QPainter *painter, const QRectF &rect) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void syncRect();
    void scrubTo(double viewX);

    QPointer<TimelineView> mTimeline;
    bool mScrubbing = false;
};

} // namespace Morvane
