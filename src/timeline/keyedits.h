// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/keytimechangeinstructionset.h"
#include "model/timelinefilter.h"
#include "model/tweeninfo.h"

#include <QList>
#include <QString>

#include <functional>

class QUndoCommand;

namespace Morvane {

class MorvaneCanvasScene;

/// The key edits of the timeline, each one undo step on the scene's current
/// animation. The timeline views, the command-line tool and the clipboard
/// share them, so a drag and a script record the same commands.
namespace KeyEdits {

/// Names a key of the scene's current animation.
struct KeyId
{
    int timeline = -1; // -1: the mainline; else the timeline's index in the animation (unfiltered)
    int time = 0;      // milliseconds, the key's present time
    bool operator==(const KeyId &) const = default;
};

/// One "keys moved" undo macro on the scene's current animation: pushes
/// `selectionBefore` (may be null), the start canvas selection, the start
/// variable refresh, the set applied with `setLinesToMovedLinesCommand(set,
/// filter)`, then calls `enactOtherLines` (may be empty: the view moves value,
/// tag and sound lines there), the end variable refresh, `selectionAfter`
/// (may be null) and the end canvas selection. Returns false (and pushes
/// nothing) when nothing moves. Takes ownership of the two commands.
bool recordKeyMove(MorvaneCanvasScene *scene, const KeyTimeChangeInstructionSet &set,
                   const TimelineFilter &filter, QUndoCommand *selectionBefore,
                   QUndoCommand *selectionAfter,
                   const std::function<void()> &enactOtherLines = {});
/// The "key deleted" / "keys deleted" macro. A mainline key goes with its
/// timeline keys; references that showed a deleted key show the key in force
/// instead. Refuses (false, *error set, nothing pushed) when a key is
/// mandatory (the only key of its timeline, or the only mainline key) or does
/// not exist.
bool deleteKeys(MorvaneCanvasScene *scene, const QList<KeyId> &keys, QString *error = nullptr);
/// Sets the curve of every key in one undo step ("curve changed").
bool changeCurve(MorvaneCanvasScene *scene, const QList<KeyId> &keys, const TweenInfo &tween,
                 QString *error = nullptr);
/// Cuts or extends the animation to `lengthMs` as one undo step; keys past the
/// new length go, and a timeline left without keys goes with them.
bool setAnimationLength(MorvaneCanvasScene *scene, int lengthMs, QString *error = nullptr);
/// The plain clone of the current animation (CloneAnimationCommand), one undo step.
bool cloneAnimation(MorvaneCanvasScene *scene, QString *error = nullptr);

} // namespace KeyEdits
} // namespace Morvane
