// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "projectiohost.h"

#include <cstdio>

namespace Morvane {

ProjectIoHost::~ProjectIoHost() = default;

void ProjectIoHost::beginProgress(const QString &) {}

void ProjectIoHost::endProgress() {}

void ProjectIoHost::progress(int) {}

void ProjectIoHost::suppressAutosave(bool) {}

bool ProjectIoHost::warnAboutNonHomeDirectory(const QString &, const QString &)
{
    return true;
}

bool ProjectIoHost::confirmMerge(const QString &)
{
    return true;
}

void ProjectIoHost::missingImages(const QStringList &) {}

void ProjectIoHost::diagnostic(const QString &line)
{
    const QByteArray text = line.toLocal8Bit();
    std::fprintf(stderr, "%s\n", text.constData());
    std::fflush(stderr);
}

ProjectIoHost *ProjectIoHost::defaultHost()
{
    static ProjectIoHost host;
    return &host;
}

} // namespace Morvane
