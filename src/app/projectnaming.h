// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>

#include <functional>

namespace Morvane {

// The first free "base_NNN.suffix" path for Save New Version. A base that
// already ends in "_" and three digits continues from that counter; exists()
// tells which candidates are taken.
QString nextVersionPath(const QString &path,
                        const std::function<bool(const QString &)> &exists);

// The autosave file name (no directory) for a project file name or path:
// "hero.rigj" gives "hero.autosave.rigx", an empty name or one ending in "/"
// gives "NewProject.autosave.rigx". Autosaves are always XML.
QString autoSaveFileName(const QString &projectFileName);

// True when a command-line argument should be opened at start-up: the last
// four characters are exactly "rigx" or "rigj" and the file exists.
bool isOpenableProjectArgument(const QString &argument);

} // namespace Morvane
