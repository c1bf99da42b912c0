// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringList>

namespace Morvane {

/// `morvane-cli convert INPUT OUTPUT [--compact | --pretty]`: opens a project and saves it
/// in the form the output's extension selects (.rigx or .rigj). Image names are kept as
/// they are, relative to the project's folder.
class ConvertCommand
{
public:
    static constexpr const char *Usage = "convert INPUT OUTPUT [--compact | --pretty]";
    static constexpr const char *Summary = "save a project in the form OUTPUT's extension selects";

    static int run(const QStringList &arguments);
};

} // namespace Morvane
