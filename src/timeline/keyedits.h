// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/lineid.h"
#include "model/keytimechangeinstructionset.h"
#include "model/timelinefilter.h"
#include "model/tweeninfo.h"

#include <QList>
#include <QSet>
#include <QString>

#include <functional>
#include <vector>

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
    /// A key of a value or tag line when valid; `timeline` is then unused and
    /// `owner` names the line's holder: -1 the entity's own lines, else the
    /// object's index in the entity.
    LineId line = {};
    int owner = -1;
    bool isLineKey() const { return line.type != VarType::Invalid; }
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
/// A key of one row while a move is planned: where it stood when the move
/// began, where it is going (milliseconds), and whether it is moved.
struct PlannedKey
{
    int original = 0;
    int position = 0;
    bool selected = false;
};
/// Moves the selected keys of one row (in time order) to `target(original)`,
/// clamped into [0, `length`], in the direction of the move (`forward`: the
/// latest first) so that keys of one timeline never land on one another: a
/// timeline key whose target another key of the row takes stays where it is.
/// Mainline keys (`isMainline`) merge instead, and timeline keys standing at
/// a moved mainline key's original time (`riding`) go with it unchecked.
/// The drags of the timeline view and the retimes of both the view and the
/// command-line tool plan their instruction sets with it.
void planRowMove(std::vector<PlannedKey> &keys, bool isMainline, const QSet<int> &riding,
                 int length, const std::function<int(int)> &target, bool forward);
/// Where a key at `original` goes when times are scaled by `factor` about
/// `first`: truncated toward zero, as every computed time.
int scaledTime(int original, int first, double factor);
/// Scales the times of `keys` (mainline or timeline keys) by `factor` (> 0)
/// about the earliest of them as one "keys moved" step, planned as the
/// timeline's "Scale Key Times..." plans it: a named mainline key takes the
/// timeline keys at its time along. Refuses (false, *error set) when a key
/// does not exist, the factor is not positive or nothing moves.
bool scaleKeyTimes(MorvaneCanvasScene *scene, const QList<KeyId> &keys, double factor,
                   QString *error = nullptr);
/// The "key deleted" / "keys deleted" macro. A mainline key goes with its
/// timeline keys; references that showed a deleted key show the key in force
/// instead. Refuses (false, *error set, nothing pushed) when a key is
/// mandatory (the only key of its timeline, or the only mainline key) or does
/// not exist.
bool deleteKeys(MorvaneCanvasScene *scene, const QList<KeyId> &keys, QString *error = nullptr);
/// Sets the curve of every key in one undo step ("curve changed"). Keys of
/// tag and string lines have no curve: naming one is refused.
bool changeCurve(MorvaneCanvasScene *scene, const QList<KeyId> &keys, const TweenInfo &tween,
                 QString *error = nullptr);
/// Cuts or extends the animation to `lengthMs` as one undo step; keys past the
/// new length go, and a timeline left without keys goes with them.
bool setAnimationLength(MorvaneCanvasScene *scene, int lengthMs, QString *error = nullptr);
/// The plain clone of the current animation (CloneAnimationCommand), one undo step.
bool cloneAnimation(MorvaneCanvasScene *scene, QString *error = nullptr);

} // namespace KeyEdits
} // namespace Morvane
