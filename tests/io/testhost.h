// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectiohost.h"
#include "projecttext.h"

#include <QString>
#include <QStringList>

namespace Morvane {

/// Collects diagnostic lines and answers questions as told, so tests can check both.
class TestHost : public ProjectIoHost
{
public:
    void diagnostic(const QString &line) override { lines.append(line); }
    bool confirmMerge(const QString &fileName) override
    {
        askedMerge = fileName;
        return acceptMerge;
    }
    bool warnAboutNonHomeDirectory(const QString &, const QString &directory) override
    {
        warnedDirectory = directory;
        return true;
    }
    void suppressAutosave(bool suppress) override { suppressDepth += suppress ? 1 : -1; }

    QStringList lines;
    QString askedMerge;
    QString warnedDirectory;
    bool acceptMerge = true;
    int suppressDepth = 0;
};

inline QString testData(const char *name)
{
    return QStringLiteral(MORVANE_TEST_DATA_DIR "/io/") + QLatin1String(name);
}

} // namespace Morvane
