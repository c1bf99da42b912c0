// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// The timeline view's edits of keys, each one undo step through the key
// edits the command-line tool shares.

#include "timeline/timelineview.h"

#include "canvas/clipboard/clipboardpaste.h"
#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "meta/metaowner.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/keytimechangeinstructionset.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/tweeninfo.h"
#include "timeline/commands/keyselectioncommand.h"
#include "timeline/keyedits.h"

#include <QSet>
#include <QUndoStack>

#include <algorithm>

namespace Morvane {

namespace {

// The moved keys of one value or tag line: whose line, which, and the
// (old, new) times of the keys that move.
struct LineMove
{
    MetaOwner owner;
    LineId line;
    QList<QPair<int, int>> changes;
};

} // namespace

bool TimelineView::createUndosFromSelectedItems()
{
    Animation *anim = animation();
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    bool moved = false;
    for (const TimelineGraphicsProxy *row : mOrder)
        moved = moved || row->anyKeyMoved();
    if (!anim || !scene || !mMainline || !moved) {
        restorePositions();
        return false;
    }

    // Line 0 the mainline, then a line per shown timeline in the filter's order.
    KeyTimeChangeInstructionSet set;
    for (const auto &[before, after] : mMainline->changes())
        set.appendKeyChange(0, before, after);
    const TimelineFilter filter = timelineFilter();
    const int lines = anim->filteredTimelineCount(filter);
    for (int line = 0; line < lines; ++line) {
        const int index = anim->indexOfTimeline(anim->filteredTimeline(line, filter));
        if (const TimelineGraphicsProxy *r = row(RowId{RowId::Kind::Timeline, index, -1, {}})) {
            for (const auto &[before, after] : r->changes())
                set.appendKeyChange(line + 1, before, after);
        }
    }

    QList<LineMove> lineMoves;
    for (const TimelineGraphicsProxy *r : mOrder) {
        const RowId &id = r->id();
        if ((id.kind != RowId::Kind::ValueLine && id.kind != RowId::Kind::TagLine)
            || !r->anyKeyMoved())
            continue;
        LineMove move{id.objectIndex < 0 ? MetaOwner::forAnimation(anim)
                                         : MetaOwner::forAnimationObject(anim, id.objectIndex),
                      id.line, {}};
        for (const auto &change : r->changes()) {
            if (change.first != change.second)
                move.changes.append(change);
        }
        lineMoves.append(move);
    }
    RigxData *document = anim->document();
    auto moveLines = [lineMoves, document] {
        for (const LineMove &move : lineMoves) {
            QList<QPair<int, int>> changes = move.changes;
            // In the direction of the move, so that no key lands on one still to move.
            if (!changes.isEmpty() && changes.first().second > changes.first().first)
                std::reverse(changes.begin(), changes.end());
            for (const auto &[before, after] : changes) {
                if (ValueLineHolder *holder = move.owner.lineHolder(document))
                    holder->setKeyTimeCommand(document, move.owner, LineTimeId{move.line, before}, after);
            }
        }
    };

    auto *selectionBefore = new KeySelectionCommand(this, overallSelection(false), false);
    auto *selectionAfter = new KeySelectionCommand(this, overallSelection(true), true);
    if (!KeyEdits::recordKeyMove(scene, set, filter, selectionBefore, selectionAfter, moveLines)) {
        restorePositions();
        return false;
    }
    return true;
}

QList<KeyEdits::KeyId> TimelineView::selectedKeyIds() const
{
    // A selected mainline key takes its timeline keys with it: they are not
    // named again.
    QSet<int> mainlineTimes;
    QList<KeyEdits::KeyId> keys;
    if (mMainline) {
        for (const TimelineKeyGraphicsProxy *key : mMainline->keys()) {
            if (key->isSelected()) {
                mainlineTimes.insert(key->positionalTime());
                keys.append({-1, key->positionalTime()});
            }
        }
    }
    for (const TimelineGraphicsProxy *r : mOrder) {
        const RowId &id = r->id();
        if (id.kind == RowId::Kind::Mainline)
            continue;
        const bool line = id.kind == RowId::Kind::ValueLine || id.kind == RowId::Kind::TagLine;
        for (const TimelineKeyGraphicsProxy *key : r->keys()) {
            if (!key->isSelected())
                continue;
            if (line)
                keys.append({-1, key->positionalTime(), id.line, id.objectIndex});
            else if (!mainlineTimes.contains(key->positionalTime()))
                keys.append({id.timeline, key->positionalTime()});
        }
    }
    return keys;
}

bool TimelineView::rowHasCurves(const TimelineGraphicsProxy *row) const
{
    const RowId &id = row->id();
    return id.kind == RowId::Kind::Mainline || id.kind == RowId::Kind::Timeline
           || (id.kind == RowId::Kind::ValueLine
               && (id.line.type == VarType::Int || id.line.type == VarType::Float));
}

bool TimelineView::pasteKeys(Copy *copy, QString *message)
{
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    return scene && copy && Morvane::pasteKeys(scene, copy, mSession->currentTime(), message);
}

bool TimelineView::deleteSelectedKeys()
{
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    const QList<KeyEdits::KeyId> keys = selectedKeyIds();
    if (!scene || keys.isEmpty())
        return false;
    QString error;
    if (!KeyEdits::deleteKeys(scene, keys, &error)) {
        Q_EMIT statusMessage(error);
        return false;
    }
    return true;
}

bool TimelineView::changeCurveOfSelectedKeys(const TweenInfo &curve)
{
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    QList<KeyEdits::KeyId> keys;
    // Every selected key that has a curve, a mainline key's own included.
    for (const TimelineGraphicsProxy *r : mOrder) {
        if (!rowHasCurves(r))
            continue;
        const RowId &id = r->id();
        for (const TimelineKeyGraphicsProxy *key : r->keys()) {
            if (!key->isSelected())
                continue;
            if (id.kind == RowId::Kind::ValueLine)
                keys.append({-1, key->positionalTime(), id.line, id.objectIndex});
            else
                keys.append({r == mMainline ? -1 : id.timeline, key->positionalTime()});
        }
    }
    if (!scene || keys.isEmpty())
        return false;
    QString error;
    if (!KeyEdits::changeCurve(scene, keys, curve, &error)) {
        Q_EMIT statusMessage(error);
        return false;
    }
    return true;
}

bool TimelineView::truncateAnimationLength(int lengthMs)
{
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    if (!scene || !animation() || lengthMs == animationLength())
        return false;
    QString error;
    if (!KeyEdits::setAnimationLength(scene, lengthMs, &error)) {
        Q_EMIT statusMessage(error);
        return false;
    }
    return true;
}

} // namespace Morvane
