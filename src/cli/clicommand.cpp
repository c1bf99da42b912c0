// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clicommand.h"

#include "io/projectfile.h"

#include <QStringList>

#include <cstdio>

namespace Morvane {

namespace {

// A screenful: enough to see what kind of damage a file has without scrolling away the
// command's own output.
constexpr int MaxWarningLines = 20;

void printLine(const QString &line)
{
    const QByteArray text = line.toLocal8Bit();
    std::fprintf(stderr, "%s\n", text.constData());
}

} // namespace

int cliUsageError(const char *command, const QString &message)
{
    printLine(QStringLiteral("morvane-cli %1: %2").arg(QLatin1String(command), message));
    printLine(QStringLiteral("Try 'morvane-cli %1 --help' for more information.")
                  .arg(QLatin1String(command)));
    return CliUsage;
}

int cliDataError(const QString &path, const QString &what)
{
    printLine(QStringLiteral("Error: %1: %2").arg(path, what));
    return CliDataError;
}

bool cliOpenProject(RigxData *document, const QString &path)
{
    QStringList warnings;
    if (!ProjectFile::open(document, path, nullptr, nullptr, &warnings))
        return false;
    const int shown = qMin(int(warnings.size()), MaxWarningLines);
    for (int i = 0; i < shown; ++i)
        printLine(QStringLiteral("Warning: %1: %2").arg(path, warnings.at(i)));
    const int rest = int(warnings.size()) - shown;
    if (rest == 1)
        printLine(QStringLiteral("... and 1 more warning"));
    else if (rest > 1)
        printLine(QStringLiteral("... and %1 more warnings").arg(rest));
    return true;
}

} // namespace Morvane
