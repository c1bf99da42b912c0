// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/timelinerows.h"

#include "meta/valline.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

namespace Morvane {

QString RowId::key() const
{
    return QStringLiteral("%1/%2/%3/%4/%5")
        .arg(int(kind))
        .arg(timeline)
        .arg(objectIndex)
        .arg(int(line.type))
        .arg(line.varId);
}

TimelineGraphicsProxy::TimelineGraphicsProxy(const RowId &id, const QString &label)
    : mId(id)
    , mLabel(label)
{
}

QColor TimelineGraphicsProxy::textColor() const
{
    return TimelineColors::text();
}

int TimelineGraphicsProxy::height(bool expanded) const
{
    int h = ownHeight();
    if (expanded) {
        for (const TimelineGraphicsProxy *child : mChildren)
            h += child->height(child->isExpanded());
    }
    return h;
}

QList<QPair<int, int>> TimelineGraphicsProxy::changes() const
{
    QList<QPair<int, int>> result;
    result.reserve(qsizetype(mKeys.size()));
    for (const TimelineKeyGraphicsProxy *key : mKeys)
        result.append(key->oldNewTime());
    return result;
}

bool TimelineGraphicsProxy::anyKeyMoved() const
{
    for (const TimelineKeyGraphicsProxy *key : mKeys) {
        if (key->originalTime() != key->positionalTime())
            return true;
    }
    return false;
}

void TimelineGraphicsProxy::appendChild(TimelineGraphicsProxy *row)
{
    row->mParent = this;
    mChildren.append(row);
}

int TimelineGraphicsProxy::depth() const
{
    int d = 0;
    for (const TimelineGraphicsProxy *p = mParent; p; p = p->mParent)
        ++d;
    return d;
}

bool TimelineGraphicsProxy::isShown() const
{
    // The mainline's children are always shown: it is a parent by the
    // selection rule, not a folder.
    for (const TimelineGraphicsProxy *p = mParent; p && p->mParent; p = p->mParent) {
        if (!p->mExpanded)
            return false;
    }
    return true;
}

TimelineKeyGraphicsProxy *
TimelineGraphicsProxy::keyAtPositionalTime(int time, const TimelineKeyGraphicsProxy *except) const
{
    for (TimelineKeyGraphicsProxy *key : mKeys) {
        if (key != except && key->positionalTime() == time)
            return key;
    }
    return nullptr;
}

void TimelineGraphicsProxy::selectChildrenAtTime(int time)
{
    for (TimelineGraphicsProxy *child : std::as_const(mChildren)) {
        // Keys are in time order: halve to the first at or after `time`.
        const auto &keys = child->mKeys;
        auto it = std::lower_bound(keys.begin(), keys.end(), time,
                                   [](const TimelineKeyGraphicsProxy *k, int t) {
                                       return k->originalTime() < t;
                                   });
        for (; it != keys.end() && (*it)->originalTime() == time; ++it)
            (*it)->setSelected(true);
        child->selectChildrenAtTime(time);
    }
}

void TimelineGraphicsProxy::selectAllChildrenRecursive()
{
    for (const TimelineKeyGraphicsProxy *key : mKeys) {
        if (key->isSelected())
            selectChildrenAtTime(key->originalTime());
    }
    for (TimelineGraphicsProxy *child : std::as_const(mChildren))
        child->selectAllChildrenRecursive();
}

// The mainline.

AnimMainlineGraphicsProxy::AnimMainlineGraphicsProxy()
    : TimelineGraphicsProxy(RowId{}, QObject::tr("Mainline"))
{
    setExpanded(true);
}

QColor AnimMainlineGraphicsProxy::color() const
{
    return QColor(0xc8, 0xc8, 0xc8);
}

TimelineKeyGraphicsProxy::Shape AnimMainlineGraphicsProxy::keyShape() const
{
    return TimelineKeyGraphicsProxy::Shape::Bar;
}

QList<int> AnimMainlineGraphicsProxy::keyTimes(const Animation *animation) const
{
    QList<int> times;
    if (!animation)
        return times;
    times.reserve(animation->mainlineKeyCount());
    for (int i = 0; i < animation->mainlineKeyCount(); ++i)
        times.append(animation->mainlineKey(i)->currentTime());
    return times;
}

int AnimMainlineGraphicsProxy::height(bool expanded) const
{
    Q_UNUSED(expanded);
    return ownHeight();
}

// Object timelines.

AnimTimelineGraphicsProxy::AnimTimelineGraphicsProxy(int timelineIndex, const QString &label,
                                                     int objectType)
    : TimelineGraphicsProxy(RowId{RowId::Kind::Timeline, timelineIndex, -1, {}}, label)
    , mObjectType(objectType)
{
}

QColor AnimTimelineGraphicsProxy::color() const
{
    switch (mObjectType) {
    case Object::Bone:
        return QColor(0x7c, 0xc8, 0x6a);
    case Object::Event:
        return QColor(0xe8, 0x5a, 0x8c);
    case Object::Sound:
        return QColor(0x5c, 0xc8, 0xc8);
    case Object::SubEntity:
        return QColor(0xb0, 0x8c, 0xe8);
    case Object::Box:
    case Object::Point:
        return QColor(0xe0, 0xd0, 0x60);
    default:
        return QColor(0x6a, 0xa8, 0xf0);
    }
}

TimelineKeyGraphicsProxy::Shape AnimTimelineGraphicsProxy::keyShape() const
{
    switch (mObjectType) {
    case Object::Event:
        return TimelineKeyGraphicsProxy::Shape::Flag;
    case Object::Sound:
        return TimelineKeyGraphicsProxy::Shape::Circle;
    default:
        return TimelineKeyGraphicsProxy::Shape::Diamond;
    }
}

QList<int> AnimTimelineGraphicsProxy::keyTimes(const Animation *animation) const
{
    QList<int> times;
    const Timeline *timeline = animation ? animation->timeline(id().timeline) : nullptr;
    if (!timeline)
        return times;
    times.reserve(timeline->keyCount());
    for (int i = 0; i < timeline->keyCount(); ++i)
        times.append(timeline->key(i)->time());
    return times;
}

bool AnimTimelineGraphicsProxy::showCheckBox() const
{
    return mObjectType != Object::Event && mObjectType != Object::Sound;
}

int AnimTimelineGraphicsProxy::ownHeight() const
{
    // Room for the wave form.
    return mObjectType == Object::Sound ? 60 : 20;
}

// Value and tag lines.

ValLineGraphicsProxy::ValLineGraphicsProxy(const RowId &id, const QString &label)
    : TimelineGraphicsProxy(id, label)
{
}

QColor ValLineGraphicsProxy::textColor() const
{
    return QColor(0xb8, 0xb8, 0xb8);
}

QColor ValLineGraphicsProxy::color() const
{
    return id().kind == RowId::Kind::TagLine ? QColor(0xf0, 0x9c, 0x5a) : QColor(0xd2, 0xd2, 0x8c);
}

TimelineKeyGraphicsProxy::Shape ValLineGraphicsProxy::keyShape() const
{
    return id().kind == RowId::Kind::TagLine ? TimelineKeyGraphicsProxy::Shape::Circle
                                             : TimelineKeyGraphicsProxy::Shape::Square;
}

QList<int> ValLineGraphicsProxy::keyTimes(const Animation *animation) const
{
    QList<int> times;
    if (!animation)
        return times;
    const ValueLineHolder *holder = id().objectIndex < 0 ? &animation->ownLineHolder()
                                                         : animation->objectLineHolder(id().objectIndex);
    const ValLine *line = holder ? holder->line(id().line) : nullptr;
    if (!line)
        return times;
    times.reserve(line->keyCount());
    for (int i = 0; i < line->keyCount(); ++i)
        times.append(line->key(i)->time());
    return times;
}

} // namespace Morvane
