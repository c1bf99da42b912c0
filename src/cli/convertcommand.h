// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

class QCommandLineParser;

namespace Morvane {

/// `morvane-cli convert [--compact | --pretty] INPUT OUTPUT`: opens a project and saves it
/// in the form the output's extension selects (.rigx or .rigj). Image names are kept as
/// they are, relative to the project's folder. Of --compact and --pretty the last wins.
class ConvertCommand
{
public:
    static constexpr const char *Arguments = "INPUT OUTPUT";
    static constexpr const char *Summary = "Save a project in the form OUTPUT's extension selects.";

    static void addOptions(QCommandLineParser &parser);
    static int run(const QCommandLineParser &parser);
};

} // namespace Morvane
