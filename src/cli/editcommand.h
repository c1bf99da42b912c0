// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

class QCommandLineParser;

namespace Morvane {

/// `morvane-cli edit FILE SCRIPT [--out OUTPUT]`: applies the steps of a JSON
/// script to a project through the editor's own scene, undo macros and
/// commands (offscreen), saves the result to OUTPUT (in the form its extension
/// selects) or back to FILE, and prints the undo stack as JSON. A step that
/// cannot be done stops the run with "Error: step K: ..." and nothing is saved.
class EditCommand
{
public:
    static constexpr const char *Arguments = "FILE SCRIPT";
    static constexpr const char *Summary = "Apply a script of editing steps to a project.";

    static void addOptions(QCommandLineParser &parser);
    static int run(const QCommandLineParser &parser);
};

} // namespace Morvane
