// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QList>
#include <QString>

namespace Morvane {

class Copy;
class MorvaneCanvasScene;

/// What a copy to all frames carries: the whole state, or one value of it.
enum class CopiedProperty { All, X, Y, ScaleX, ScaleY, Angle, Alpha };

/// "x", "y", "scale_x", "scale_y", "angle", "a" (the file form's names) and
/// "all"; false for another word.
bool copiedPropertyFromName(const QString &name, CopiedProperty *property);

/// Pastes the copy into the scene's current animation as one undo step
/// ("keys pasted"), so that the copy's time 0 lands at `atTime` (milliseconds)
/// and every key keeps its distance from it. The timeline view's paste and the
/// window's Paste call this; it needs no view.
///
/// The rules: keys go to the object with the copied object's id when the copy
/// came from this entity and the type agrees, else to the object of the same
/// name and type; an object the entity lacks is created from the copied object
/// info. A pasted key replaces the key of its object at the same time; a time
/// without a mainline key gets one, copied from the mainline key in force
/// there. A pasted reference takes the copied parent bone when that came along
/// too, otherwise it keeps the parent its object has there. Variable and tag
/// keys come along onto the variables of the same name and type. Keys that
/// would land past the animation's end are left out. Refused (false, nothing
/// changed, `message` says why) when the copy is empty, nothing lands inside
/// the animation, or an image a key shows is not in the project. `message`
/// also reports what was pasted.
///
/// Each paste first renews the copy's paste slot (`Copy::pasteReadyClone`), so
/// mainline keys made by two pastes never share an id.
bool pasteKeys(MorvaneCanvasScene *scene, Copy *copy, int atTime, QString *message = nullptr);

/// Pastes the copy's first moment onto every mainline key of the scene's
/// current animation, as one undo step ("pasted to all keys"); objects not
/// shown at a key are added there. Variable and tag keys do not come along.
bool pasteToAllKeys(MorvaneCanvasScene *scene, Copy *copy, QString *message = nullptr);

/// Gives the timelines at `timelines` (indexes in the scene's current
/// animation) their present state, or one value of it, at every other
/// mainline key where their object is shown, as one undo step; each key keeps
/// its curve. Keys are made where the object has none. The clipboard is not
/// touched. False (nothing changed) when there is nothing to copy or nowhere
/// to copy it to.
bool copyToAllFrames(MorvaneCanvasScene *scene, const QList<int> &timelines,
                     CopiedProperty property, QString *message = nullptr);

} // namespace Morvane
