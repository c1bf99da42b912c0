// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/animationcommands.h"

#include "model/animation.h"
#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <algorithm>
#include <cmath>

namespace Morvane {

// ChangeAnimationCommand

struct ChangeAnimationCommand::States
{
    std::unique_ptr<Animation> before;
    std::unique_ptr<Animation> after;
};

ChangeAnimationCommand::ChangeAnimationCommand(std::unique_ptr<Animation> before,
                                               const Animation *after, const QString &text,
                                               bool applied, QUndoCommand *parent)
    : QUndoCommand(text, parent)
    , mAnimation(after ? freshAddress(after->address()) : Address())
    , mStates(std::make_unique<States>())
    , mSkipRedo(applied)
{
    mStates->before = std::move(before);
    if (after)
        mStates->after = after->clone();
}

ChangeAnimationCommand::~ChangeAnimationCommand() = default;

void ChangeAnimationCommand::redo()
{
    if (mSkipRedo) {
        mSkipRedo = false;
        return;
    }
    apply(true);
}

void ChangeAnimationCommand::undo()
{
    apply(false);
}

void ChangeAnimationCommand::apply(bool after)
{
    Animation *animation = freshAddress(mAnimation).animation();
    const Animation *state = after ? mStates->after.get() : mStates->before.get();
    if (!animation || !state)
        return;
    animation->replaceContent(*state);
}

qsizetype ChangeAnimationCommand::storedBytes() const
{
    return 0;
}

// SetMainlineKeyTimeCommand

SetMainlineKeyTimeCommand::SetMainlineKeyTimeCommand(MainlineKey *key, int oldTime, int newTime,
                                                     bool flag, bool force, QUndoCommand *parent)
    : QUndoCommand(parent)
    , mAnimation(key && key->parentAnimation() ? freshAddress(key->parentAnimation()->address())
                                                : Address())
    , mOldTime(oldTime)
    , mNewTime(newTime)
    , mForce(force)
{
    Q_UNUSED(flag);
}

void SetMainlineKeyTimeCommand::redo()
{
    move(mOldTime, mNewTime);
}

void SetMainlineKeyTimeCommand::undo()
{
    move(mNewTime, mOldTime);
}

void SetMainlineKeyTimeCommand::move(int from, int to)
{
    Animation *animation = freshAddress(mAnimation).animation();
    MainlineKey *key = animation ? animation->mainlineKeyAtExactTime(from) : nullptr;
    if (key)
        key->setCurrentTime(to, mForce, true);
}

// RefreshVariablesCommand

RefreshVariablesCommand::RefreshVariablesCommand(RigxData *document, bool atEnd,
                                                 QUndoCommand *parent)
    : QUndoCommand(parent)
    , mDocument(document)
    , mAtEnd(atEnd)
{}

void RefreshVariablesCommand::redo()
{
    if (mAtEnd && mDocument)
        mDocument->emitRefreshVariables();
}

void RefreshVariablesCommand::undo()
{
    if (!mAtEnd && mDocument)
        mDocument->emitRefreshVariables();
}

// CloneAnimationCommand

namespace {

// Divides every time of `animation` by `speed`, keeping the keys apart, and
// adds `hold` milliseconds to its length.
void retime(Animation *animation, double speed, int hold)
{
    if (speed > 0.0 && speed != 1.0) {
        int previous = -1;
        // Collected first: a key given its new time moves to its place at once.
        QList<MainlineKey *> keys;
        for (int i = 0; i < animation->mainlineKeyCount(); ++i)
            keys.append(animation->mainlineKey(i));
        for (MainlineKey *mk : std::as_const(keys)) {
            int t = int(std::lround(mk->currentTime() / speed));
            t = std::max(t, previous + 1);
            mk->setCurrentTime(t, true, true);
            previous = t;
        }
        animation->sortMainlineKeysByTime();
        animation->setLength(std::max(previous, int(std::lround(animation->length() / speed))));
        animation->setLoopTo(int(std::lround(animation->loopTo() / speed)));
        // Keys without mainline key (sound lines) follow by the same rule.
        for (int i = 0; i < animation->timelineCount(); ++i) {
            Timeline *tl = animation->timeline(i);
            for (int k = 0; k < tl->keyCount(); ++k) {
                TimelineKey *key = tl->key(k);
                if (!key->mainKey())
                    key->setCachedTime(int(std::lround(key->time(true) / speed)));
            }
        }
    }
    animation->setLength(animation->length() + std::max(hold, 0));
}

} // namespace

CloneAnimationCommand::CloneAnimationCommand(Animation *source, QUndoCommand *parent)
    : CloneAnimationCommand(source, 0.0, 0, 1.0, 1.0, parent)
{}

CloneAnimationCommand::CloneAnimationCommand(Animation *source, double holdMs, int count,
                                             double speed, double speedStep,
                                             QUndoCommand *parent)
    : QUndoCommand(parent)
    , mSource(source ? freshAddress(source->address()) : Address())
    , mDocument(source ? source->document() : nullptr)
    , mHoldMs(std::isfinite(holdMs) ? holdMs : 0.0)
    , mCount(std::clamp(count, 0, 1000))
    , mSpeed(std::isfinite(speed) && speed > 0.0 ? speed : 1.0)
    , mSpeedStep(std::isfinite(speedStep) && speedStep > 0.0 ? speedStep : 1.0)
{
    const Entity *entity = source ? source->parentEntity() : nullptr;
    if (entity) {
        mEntityRow = mSource.entityIndex();
        mInsertRow = entity->indexOfAnimation(source) + 1;
    }
    setText(QObject::tr("animation cloned"));
}

CloneAnimationCommand::~CloneAnimationCommand() = default;

void CloneAnimationCommand::redo()
{
    mDone = false;
    const Animation *source = freshAddress(mSource).animation();
    Entity *entity = source ? source->parentEntity() : nullptr;
    if (!entity || mInsertRow < 0 || mInsertRow > entity->animationCount())
        return;
    for (int k = 0; k <= mCount; ++k) {
        auto clone = source->clone();
        clone->setName(entity->uniqueAnimationName(source->name()));
        const double speed = mSpeed * std::pow(mSpeedStep, k);
        retime(clone.get(), std::isfinite(speed) && speed > 0.0 ? speed : 1.0,
               int(std::lround(mHoldMs * k)));
        entity->insertAnimation(mInsertRow + k, clone.release());
    }
    mDone = true;
    if (mDocument)
        mDocument->emitEntityAnimationStructureChanged();
}

void CloneAnimationCommand::undo()
{
    if (!mDone)
        return;
    Entity *entity = mDocument ? mDocument->entity(mEntityRow) : nullptr;
    if (!entity)
        return;
    for (int row = mInsertRow + mCount; row >= mInsertRow; --row)
        entity->deleteAnimation(row);
    mDone = false;
    mDocument->emitEntityAnimationStructureChanged();
}

} // namespace Morvane
