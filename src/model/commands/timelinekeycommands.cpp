// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/timelinekeycommands.h"

#include "model/animation.h"
#include "model/mainlinekey.h"
#include "model/timeline.h"

namespace Morvane {

Address freshAddress(const Address &address)
{
    return Address(address.document(), address.toList());
}

AppendTimelineKeyCommand::AppendTimelineKeyCommand(const TimelineKey &key, Timeline *timeline,
                                                   bool linkToMainline, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mTimeline(timeline ? freshAddress(timeline->address()) : Address())
    , mKey(key)
    , mTime(key.time(true))
    , mLink(linkToMainline)
{
    mKey.setCachedTime(mTime);
}

void AppendTimelineKeyCommand::redo()
{
    Timeline *timeline = freshAddress(mTimeline).timeline();
    if (!timeline)
        return;
    auto *key = new TimelineKey(mKey);
    key->setCachedTime(mTime);
    timeline->appendTimelineKey(key, true, mLink);
    mAddedIndex = timeline->indexOfKey(key);
}

void AppendTimelineKeyCommand::undo()
{
    Timeline *timeline = freshAddress(mTimeline).timeline();
    TimelineKey *key = timeline ? timeline->key(mAddedIndex) : nullptr;
    // Only the key this command added: same place, same time.
    if (!key || key->time(true) != mTime)
        return;
    timeline->removeKey(key, true);
}

RemoveTimelineKeyCommand::RemoveTimelineKeyCommand(TimelineKey *key, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mKey(key ? freshAddress(key->address()) : Address())
    , mTimeline(key && key->parentTimeline() ? freshAddress(key->parentTimeline()->address())
                                              : Address())
    , mCopy(key ? *key : TimelineKey())
{}

void RemoveTimelineKeyCommand::redo()
{
    mRemoved = false;
    TimelineKey *key = freshAddress(mKey).key();
    Timeline *tl = key ? key->parentTimeline() : nullptr;
    if (!tl)
        return;
    mCopy = *key;
    mCopy.setCachedTime(key->time(true));
    mOwnerTime = key->mainKey() ? key->mainKey()->currentTime() : -1;
    mRemoved = tl->removeKey(key, true);
}

void RemoveTimelineKeyCommand::undo()
{
    Timeline *tl = freshAddress(mTimeline).timeline();
    if (!mRemoved || !tl)
        return;
    auto *key = new TimelineKey(mCopy);
    key->setCachedTime(mCopy.cachedTime());
    tl->appendTimelineKey(key, true, false);
    const Animation *anim = tl->parentAnimation();
    if (MainlineKey *owner = anim && mOwnerTime >= 0 ? anim->mainlineKeyAtExactTime(mOwnerTime) : nullptr)
        owner->addChildTimelineKey(key);
    mRemoved = false;
}

TimeKeyDisplayInfoChangeCommand::TimeKeyDisplayInfoChangeCommand(TimelineKey *key,
                                                                 const DisplayInfo &info, bool,
                                                                 QUndoCommand *parent)
    : QUndoCommand(parent)
    , mKey(key ? freshAddress(key->address()) : Address())
    , mBefore(key ? key->info() : DisplayInfo())
    , mAfter(info)
{}

void TimeKeyDisplayInfoChangeCommand::redo()
{
    if (TimelineKey *key = freshAddress(mKey).key())
        key->setInfo(mAfter);
}

void TimeKeyDisplayInfoChangeCommand::undo()
{
    if (TimelineKey *key = freshAddress(mKey).key())
        key->setInfo(mBefore);
}

TimelineKeyEntityInfoChangeCommand::TimelineKeyEntityInfoChangeCommand(TimelineKey *key,
                                                                       const EntityInfo &info,
                                                                       bool, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mKey(key ? freshAddress(key->address()) : Address())
    , mBefore(key ? key->entityInfo() : EntityInfo())
    , mAfter(info)
{}

void TimelineKeyEntityInfoChangeCommand::redo()
{
    if (TimelineKey *key = freshAddress(mKey).key())
        key->entityInfo() = mAfter;
}

void TimelineKeyEntityInfoChangeCommand::undo()
{
    if (TimelineKey *key = freshAddress(mKey).key())
        key->entityInfo() = mBefore;
}

} // namespace Morvane
