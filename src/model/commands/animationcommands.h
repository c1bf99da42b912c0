// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"

#include <QByteArray>
#include <QPointer>
#include <QUndoCommand>

#include <memory>

namespace Morvane {

class Animation;
class MainlineKey;
class RigxData;

class AnimationState;

/// Gives the animation back as a whole: redo puts the "after" state in place,
/// undo the "before" state. The animation is found by its entity and animation
/// indexes on every step. The states are kept small: their structure packed
/// and compressed, the key values shared by all states, so a long session of
/// drags on a large animation holds little more than what the drags changed.
class ChangeAnimationCommand : public QUndoCommand
{
public:
    /// Notes `animation` as it is now as the "before" state; change it, then
    /// call `noteAfter` and push. The first redo leaves the animation as it is.
    ChangeAnimationCommand(const Animation *animation, const QString &text,
                           QUndoCommand *parent = nullptr);
    /// Notes `animation` as it is now as the "before" state and `after` (a
    /// detached animation whose timelines name objects of the same entity) as
    /// the "after" state; the first redo puts `after`'s content in place.
    ChangeAnimationCommand(const Animation *animation, const Animation &after,
                           const QString &text, QUndoCommand *parent = nullptr);
    ~ChangeAnimationCommand() override;

    /// Marks the change done: the animation as it will be at the first undo
    /// (as the change left it) is the "after" state.
    void noteAfter();

    void redo() override;
    void undo() override;

    /// The bytes the two states of this command take.
    qsizetype storedBytes() const;
    /// The bytes of the key values all states of `document` share.
    static qsizetype sharedKeyBytes(const RigxData *document);

private:
    void apply(bool after);

    Address mAnimation;
    std::unique_ptr<AnimationState> mBefore;
    std::unique_ptr<AnimationState> mAfter;
    bool mSkipRedo;
    bool mAfterPending = false;
};

/// Moves a mainline key (found at its old time, or at its new time for undo)
/// and its child keys in time (milliseconds).
class SetMainlineKeyTimeCommand : public QUndoCommand
{
public:
    SetMainlineKeyTimeCommand(MainlineKey *key, int oldTime, int newTime, bool flag = false,
                              bool force = false, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    void move(int from, int to);

    Address mAnimation;
    int mOldTime;
    int mNewTime;
    bool mForce;
};

/// Opens (`atEnd` false) or closes (`atEnd` true) a macro that moves value
/// lines: the document raises `refreshVariables` once per macro either way.
class RefreshVariablesCommand : public QUndoCommand
{
public:
    RefreshVariablesCommand(RigxData *document, bool atEnd, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    QPointer<RigxData> mDocument;
    bool mAtEnd;
};

/// Inserts clones of an animation right after it. The plain form makes one
/// copy. The special form makes `count` + 1 copies, a family of speeds: copy
/// k (from 0) runs `speed` * `speedStep`^k times as fast (its key times and
/// length divided by that, rounded to milliseconds) and then holds its last
/// pose `holdMs` * k milliseconds longer. Each copy is named after the source
/// with a number that makes it unique in the entity.
class CloneAnimationCommand : public QUndoCommand
{
public:
    explicit CloneAnimationCommand(Animation *source, QUndoCommand *parent = nullptr);
    CloneAnimationCommand(Animation *source, double holdMs, int count, double speed,
                          double speedStep, QUndoCommand *parent = nullptr);
    ~CloneAnimationCommand() override;

    void redo() override;
    void undo() override;

private:
    Address mSource;
    QPointer<RigxData> mDocument;
    int mEntityRow = -1;
    int mInsertRow = -1;
    double mHoldMs = 0.0;
    int mCount = 0;
    double mSpeed = 1.0;
    double mSpeedStep = 1.0;
    bool mDone = false;
};

} // namespace Morvane
