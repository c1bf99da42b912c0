// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QColor>
#include <QGraphicsItem>
#include <QList>

namespace Morvane {

class TimelineGraphicsProxy;

namespace TimelineColors {
inline QColor selection() { return QColor(0xff, 0xa0, 0x2f); } // "#ffa02f"
inline QColor hover() { return QColor(0xd5, 0x9e, 0x5d); }     // "#d59e5d"
inline QColor rowEven() { return QColor(0x3a, 0x3d, 0x42); }
inline QColor rowOdd() { return QColor(0x33, 0x36, 0x3a); }
inline QColor pastEnd() { return QColor(0x24, 0x26, 0x29); }
inline QColor text() { return QColor(0xe6, 0xe6, 0xe6); }
inline QColor playhead() { return QColor(0xe0, 0x3c, 0x31); }
} // namespace TimelineColors

/// The background of one row (item type 1013): alternating colours, the part
/// past the animation's end darker. Its key markers are its children, so a
/// collapsed row hides its keys with it. Not owned by the row: the scene owns it.
class TimelineViewTimelineRect : public QGraphicsItem
{
public:
    enum { Type = 1013 };
    /// Pixels left of time 0, so that keys at 0 show whole.
    static constexpr double LeftMargin = 8.0;

    TimelineViewTimelineRect(TimelineGraphicsProxy *row, int visibleRow);

    int type() const override { return Type; }
    TimelineGraphicsProxy *row() const { return mRow; }
    /// Width in pixels of the whole row and of the animation's part of it.
    void setWidths(double total, double animation);
    void setHeight(double height);
    void setVisibleRow(int index) { mVisibleRow = index; update(); }
    void setHighlighted(bool on);
    /// A sound row's volume (0 to 1) at each key, in the order of the key
    /// markers: drawn as a line over the markers, following them as they move.
    void setVolumes(const QList<double> &volumes);

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;

private:
    TimelineGraphicsProxy *mRow;
    int mVisibleRow;
    double mWidth = 0.0;
    double mAnimationWidth = 0.0;
    double mHeight = 20.0;
    bool mHighlighted = false;
    QList<double> mVolumes;
};

/// One key of a row (item type 1011), placed at the x of its time on the
/// bottom edge of its row. Three times, milliseconds: `originalTime` where the
/// key stood when the drag began, `positionalTime` where it is drawn now and
/// `currentTime` the key's time in the document.
class TimelineKeyGraphicsProxy : public QGraphicsItem
{
public:
    enum { Type = 1011 };
    enum class Shape { Bar, Diamond, Square, Circle, Flag };

    TimelineKeyGraphicsProxy(TimelineGraphicsProxy *row, int time, QGraphicsItem *parent);

    int type() const override { return Type; }
    TimelineGraphicsProxy *row() const { return mRow; }
    int originalTime() const { return mOriginalTime; }
    int positionalTime() const { return mPositionalTime; }
    int currentTime() const { return mCurrentTime; }
    /// (original, positional).
    QPair<int, int> oldNewTime() const { return {mOriginalTime, mPositionalTime}; }
    void storeOldTime() { mOriginalTime = mPositionalTime; }
    /// Places the key at `time` (clamped into [0, length]) with `zoom` pixels per ms.
    void setPositionalTime(int time, double zoom, int length);
    void setWidth(double width);
    void setInstant(bool on) { mInstant = on; }
    /// Every key drawn as a plain tick (when they stand too close for shapes).
    static bool compact() { return sCompact; }
    static void setCompact(bool on) { sCompact = on; }

    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;

private:
    TimelineGraphicsProxy *mRow;
    int mOriginalTime;
    int mPositionalTime;
    int mCurrentTime;
    double mWidth = 3.0;
    bool mInstant = false;
    static bool sCompact;
};

/// A mainline key marker on the ruler (item type 1012), at y = -12.
class MainlineKeyGraphicsProxy : public QGraphicsItem
{
public:
    enum { Type = 1012 };

    explicit MainlineKeyGraphicsProxy(int time);

    int type() const override { return Type; }
    int currentTime() const { return mTime; }
    void setCurrentTime(int time, double zoom);
    void setHighlighted(bool on);
    /// Lit while its mainline key is selected.
    bool isHighlighted() const { return mHighlighted; }

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;

private:
    int mTime;
    bool mHighlighted = false;
};

/// The handle of the current time on the ruler, at y = -12.
class PlayheadItem : public QGraphicsItem
{
public:
    PlayheadItem();

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;
};

} // namespace Morvane
