// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/lineid.h"
#include "timeline/timelineitems.h"

#include <QColor>
#include <QList>
#include <QPair>
#include <QString>

#include <vector>

namespace Morvane {

class Animation;
class Entity;

/// Which line of the shown animation a row shows, by indexes (rows never hold
/// model pointers: they are rebuilt after every edit).
struct RowId
{
    enum class Kind { Mainline, Timeline, ValueLine, TagLine };
    Kind kind = Kind::Mainline;
    int timeline = -1;    // the timeline's index in the animation (Timeline rows)
    int objectIndex = -1; // the owner of a value or tag line; -1 the animation's own
    LineId line;          // ValueLine and TagLine rows

    bool operator==(const RowId &) const = default;
    /// A text that names the row across rebuilds (expanded rows are kept by it).
    QString key() const;
};

/// One row of the timeline view: its background item, one key marker per key,
/// and its child rows (drawn below it while it is expanded). The view owns the
/// rows; the scene owns the items.
class TimelineGraphicsProxy
{
public:
    TimelineGraphicsProxy(const RowId &id, const QString &label);
    virtual ~TimelineGraphicsProxy() = default;

    const RowId &id() const { return mId; }
    virtual QColor textColor() const;
    /// Pixels: the row itself, plus its shown children when `expanded`.
    virtual int height(bool expanded) const;
    virtual QString label() const { return mLabel; }
    /// The key markers' colour.
    virtual QColor color() const = 0;
    virtual TimelineKeyGraphicsProxy::Shape keyShape() const = 0;
    /// The key times of the line in the document, milliseconds, in order.
    virtual QList<int> keyTimes(const Animation *animation) const = 0;
    /// The visibility and lock check boxes of the label view.
    virtual bool showCheckBox() const { return false; }
    /// The pixels of the row alone (without children).
    virtual int ownHeight() const { return 20; }

    /// (original time, positional time) of every key marker, in time order.
    QList<QPair<int, int>> changes() const;
    bool anyKeyMoved() const;

    TimelineGraphicsProxy *parentRow() const { return mParent; }
    const QList<TimelineGraphicsProxy *> &childRows() const { return mChildren; }
    void appendChild(TimelineGraphicsProxy *row);
    int depth() const;
    bool isExpanded() const { return mExpanded; }
    void setExpanded(bool on) { mExpanded = on; }
    /// Shown when every ancestor is expanded.
    bool isShown() const;

    TimelineViewTimelineRect *rect() const { return mRect; }
    void setRect(TimelineViewTimelineRect *rect) { mRect = rect; }
    const std::vector<TimelineKeyGraphicsProxy *> &keys() const { return mKeys; }
    void appendKey(TimelineKeyGraphicsProxy *key) { mKeys.push_back(key); }
    /// The marker drawn at `time` other than `except`, or null.
    TimelineKeyGraphicsProxy *keyAtPositionalTime(int time,
                                                  const TimelineKeyGraphicsProxy *except) const;
    /// Selects every key of the child rows (recursively) standing at `time`
    /// (original times).
    void selectChildrenAtTime(int time);
    /// For each selected key, selects the keys of the child rows at its time.
    void selectAllChildrenRecursive();

    /// Top of the row in scene coordinates.
    double top() const { return mTop; }
    void setTop(double y) { mTop = y; }

private:
    RowId mId;
    QString mLabel;
    TimelineGraphicsProxy *mParent = nullptr;
    QList<TimelineGraphicsProxy *> mChildren;
    TimelineViewTimelineRect *mRect = nullptr;
    std::vector<TimelineKeyGraphicsProxy *> mKeys;
    bool mExpanded = false;
    double mTop = 0.0;
};

/// The mainline row: one marker per mainline key; every other row is its child.
class AnimMainlineGraphicsProxy : public TimelineGraphicsProxy
{
public:
    AnimMainlineGraphicsProxy();
    QColor color() const override;
    TimelineKeyGraphicsProxy::Shape keyShape() const override;
    QList<int> keyTimes(const Animation *animation) const override;
    int height(bool expanded) const override;
};

/// A timeline of an object, bone, sound, event or sub-entity.
class AnimTimelineGraphicsProxy : public TimelineGraphicsProxy
{
public:
    AnimTimelineGraphicsProxy(int timelineIndex, const QString &label, int objectType);
    int objectType() const { return mObjectType; }
    QColor color() const override;
    TimelineKeyGraphicsProxy::Shape keyShape() const override;
    QList<int> keyTimes(const Animation *animation) const override;
    bool showCheckBox() const override;
    int ownHeight() const override;

private:
    int mObjectType;
};

/// A variable's value line or a tag line, of the animation or of an object.
class ValLineGraphicsProxy : public TimelineGraphicsProxy
{
public:
    ValLineGraphicsProxy(const RowId &id, const QString &label);
    QColor textColor() const override;
    QColor color() const override;
    TimelineKeyGraphicsProxy::Shape keyShape() const override;
    QList<int> keyTimes(const Animation *animation) const override;
};

} // namespace Morvane
