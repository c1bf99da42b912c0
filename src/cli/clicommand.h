// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>

class QCommandLineParser;

namespace Morvane {

class RigxData;

/// Exit statuses shared by every command of morvane-cli.
enum CliExit {
    CliSuccess = 0,
    /// Wrong arguments: what is wrong and a pointer at --help go to stderr.
    CliUsage = 1,
    /// The files cannot be read or written, or the request names nothing in the data: an
    /// "Error:" line goes to stderr.
    CliDataError = 2,
};

/// One command of morvane-cli, one line of the table in main.cpp. main builds a
/// QCommandLineParser with --help and the command's options, parses the arguments after
/// the command name, checks that exactly the positional arguments of `arguments` are
/// there and only then calls `run`, which returns a `CliExit` value.
struct CliCommand
{
    const char *name;
    /// The positional arguments, space separated ("INPUT OUTPUT").
    const char *arguments;
    const char *summary;
    void (*addOptions)(QCommandLineParser &parser);
    int (*run)(const QCommandLineParser &parser);
    /// The command drives the editor's scene (editing, rendering): it runs under a
    /// QApplication, on the offscreen platform unless QT_QPA_PLATFORM says otherwise.
    bool widgets = false;
};

/// Prints "morvane-cli COMMAND: MESSAGE" and the pointer at the command's --help on
/// stderr; returns `CliUsage`.
int cliUsageError(const char *command, const QString &message);

/// Prints "Error: PATH: WHAT" on stderr; returns `CliDataError`.
int cliDataError(const QString &path, const QString &what);

/// Opens the project at `path` into an empty `document`. The reader's warnings go to
/// stderr, at most a screenful and then how many more there were; a failure has been
/// reported on stderr when false comes back.
bool cliOpenProject(RigxData *document, const QString &path);

} // namespace Morvane
