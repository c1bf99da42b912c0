// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

namespace Morvane::Testing {

/// What one run of morvane-cli gave; exitCode -1 when it did not finish normally.
struct CliRun
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

/// Runs morvane-cli (MORVANE_CLI_PATH) with no display of any kind, as on a
/// build server.
inline CliRun runCli(const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(MORVANE_CLI_PATH), arguments);
    CliRun run;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

} // namespace Morvane::Testing
