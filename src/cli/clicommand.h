// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringList>

namespace Morvane {

/// Exit statuses shared by every command of morvane-cli.
enum CliExit {
    CliSuccess = 0,
    /// Wrong arguments: usage goes to stderr.
    CliUsage = 1,
    /// Reading or writing a file failed: the diagnostic line goes to stderr.
    CliFileError = 2,
};

/// One command of morvane-cli. `run` gets the arguments after the command name and
/// returns a `CliExit` value; `usage` is the one-line synopsis shown by --help.
struct CliCommand
{
    const char *name;
    const char *usage;
    const char *summary;
    int (*run)(const QStringList &arguments);
};

} // namespace Morvane
