// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

namespace Morvane {

/// The merge ids of the program's undo commands (`QUndoCommand::id()`), one
/// enum for all of them so no two families share an id. Keep it alphabetical.
///
/// A command built with an id merges with the command on top of the stack when
/// that one has the same id, the same class and the same targets: a view that
/// streams one gesture (a drag, typing into a field) passes its id while the
/// gesture lasts. Discrete edits pass `None` and never merge.
enum class CommandId : int {
    None = -1,
    EditTagList,
    EditValueLines,
    EditVarDefault,
};

} // namespace Morvane
