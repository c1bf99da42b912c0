// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/displayinfo.h"
#include "model/entityinfo.h"
#include "model/timelinekey.h"

#include <QUndoCommand>

namespace Morvane {

class Timeline;

/// Adds a copy of a key to a timeline at the key's cached time (milliseconds),
/// linked to the mainline key standing there when `linkToMainline`. Undo takes
/// the added key out again. The timeline is found by its address each time;
/// when it no longer resolves, both directions do nothing.
class AppendTimelineKeyCommand : public QUndoCommand
{
public:
    AppendTimelineKeyCommand(const TimelineKey &key, Timeline *timeline, bool linkToMainline = true,
                             QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mTimeline;
    TimelineKey mKey;
    int mTime;
    bool mLink;
    int mAddedIndex = -1; // where the key landed, set by redo
};

/// Takes a key out of its timeline (and its mainline key); undo puts a copy of
/// it back at the same place, a child of the same mainline key. References
/// that pointed at it are not repaired: callers re-point them first.
class RemoveTimelineKeyCommand : public QUndoCommand
{
public:
    explicit RemoveTimelineKeyCommand(TimelineKey *key, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mKey;
    Address mTimeline;
    TimelineKey mCopy;
    int mOwnerTime = -1;
    bool mRemoved = false;
};

/// Writes a key's spatial state; undo writes the state it had before.
class TimeKeyDisplayInfoChangeCommand : public QUndoCommand
{
public:
    TimeKeyDisplayInfoChangeCommand(TimelineKey *key, const DisplayInfo &info, bool flag = false,
                                    QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mKey;
    DisplayInfo mBefore;
    DisplayInfo mAfter;
};

/// Writes a key's sub-entity data; undo writes what it had before.
class TimelineKeyEntityInfoChangeCommand : public QUndoCommand
{
public:
    TimelineKeyEntityInfoChangeCommand(TimelineKey *key, const EntityInfo &info, bool flag = false,
                                       QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mKey;
    EntityInfo mBefore;
    EntityInfo mAfter;
};

/// A fresh address with `address`'s document and indexes but no direct
/// pointer: commands resolve their targets by indexes on every step, because
/// an item they once pointed at may have been destroyed and made again.
Address freshAddress(const Address &address);

} // namespace Morvane
