// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/displayinfo.h"

#include <QList>
#include <QUndoCommand>

namespace Morvane {

class Animation;
class MainlineKey;
class ObjectRef;
class Timeline;
class TimelineKey;

/// Adds a mainline key at `time` (milliseconds) as a copy of the key in force
/// there (same references, parenting and z-order), with the next id. Undo
/// removes the key standing at that time. Does nothing when a key already
/// stands there or the animation no longer resolves.
class AppendMainlineKeyCommand : public QUndoCommand
{
public:
    AppendMainlineKeyCommand(Animation *animation, int time, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mAnimation;
    int mTime;
    bool mAdded = false;
};

/// Makes the mainline key at the timeline key's time the key's owner and its
/// reference to the timeline point at the key (adding a reference when the
/// mainline key has none). Undo restores the former owner and the former key
/// of the reference, or removes the added reference.
class AssignChildKeyToMainlineKeyCommand : public QUndoCommand
{
public:
    AssignChildKeyToMainlineKeyCommand(TimelineKey *key, MainlineKey *mainlineKey,
                                       QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mTimeline;
    int mTime;
    int mMainlineTime;
    // What redo found, for undo: the former owner's time (-1 for none), the
    // index of the key the reference pointed at, or that it added the reference.
    int mFormerOwnerTime = -1;
    int mFormerRefKeyIndex = -1;
    bool mAddedRef = false;
    bool mDone = false;
};

/// Re-parents a reference of a mainline key and writes the display info of the
/// key it points at (the same world pose under the new parent). Undo restores
/// the parent and the info. References are named by their timelines, because
/// saving renumbers bone references; a parent timeline of -1 means none.
class ChangeParentingCommand : public QUndoCommand
{
public:
    ChangeParentingCommand(ObjectRef *ref, ObjectRef *newParent, const DisplayInfo &newInfo,
                           QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    void apply(int parentTimeline, const DisplayInfo &info);

    Address mMainlineKey;
    int mTimeline;
    // The bone order and every reference's parent (timeline indexes) as redo
    // found them: saving reorders bone references by their parenting, so undo
    // puts the whole structure back, not only the one parent.
    QList<int> mBoneOrder;
    QList<QPair<int, int>> mParents;
    int mOldParent;
    int mNewParent;
    DisplayInfo mOldInfo;
    DisplayInfo mNewInfo;
};

/// Takes the reference to a timeline out of a mainline key. Children of a bone
/// reference fall to its parent. Undo puts it back where it was, pointing at
/// the same key, with every parent as before.
class RemoveRefCommand : public QUndoCommand
{
public:
    RemoveRefCommand(MainlineKey *key, Timeline *timeline, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mKey;
    int mTimeline;
    // What redo found, for undo.
    bool mRemoved = false;
    bool mBone = false;
    int mPosition = -1;
    int mKeyIndex = -1;
    QList<QPair<int, int>> mParents;
};

/// Moves an object reference within a mainline key's z-order from position
/// `from` to position `to` (0 at the back).
class ChangeZOrderCommand : public QUndoCommand
{
public:
    ChangeZOrderCommand(MainlineKey *key, int from, int to, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    static void move(MainlineKey *key, int from, int to);

    Address mKey;
    int mFrom;
    int mTo;
};

/// Gives every other mainline key of the animation the drawing order of the
/// source key for the objects they share; bone references are untouched.
/// Undo puts each key's saved order back.
class OverwriteZOrderCommand : public QUndoCommand
{
public:
    explicit OverwriteZOrderCommand(MainlineKey *source, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mAnimation;
    int mSourceIndex;
    // Per mainline key index: the z position each reference had before, in the
    // order redo left them.
    QList<QList<int>> mFormerPositions;
};

} // namespace Morvane
