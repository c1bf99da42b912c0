// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>
#include <QStringList>

namespace Morvane::Testing {

/// What one run of morvane-cli gave; exitCode -1 when it did not finish normally.
struct CliRun
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

/// Runs morvane-cli with no display of any kind, as on a build server.
CliRun runCli(const QStringList &arguments);

} // namespace Morvane::Testing
