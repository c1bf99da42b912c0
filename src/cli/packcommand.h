// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

class QCommandLineParser;

namespace Morvane {

/// `morvane-cli pack FILE --out DIR [--max-size N] [--trim] [--rotate] [--padding N]
/// [--bind OUTPUT_PROJECT]`: packs the project's images into sprite sheets in DIR; with
/// --bind, also saves the project as OUTPUT_PROJECT with its folders bound to the sheets.
class PackCommand
{
public:
    static constexpr const char *Arguments = "FILE";
    static constexpr const char *Summary = "Pack a project's images into sprite sheets.";

    static void addOptions(QCommandLineParser &parser);
    static int run(const QCommandLineParser &parser);
};

} // namespace Morvane
