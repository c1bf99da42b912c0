// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringList>
#include <QVariantMap>

namespace Morvane {

class RigxData;

/// `morvane-cli info FILE`: a JSON description of a project on stdout: folders and files,
/// entities with their objects, character maps and animations with their key times.
class InfoCommand
{
public:
    static constexpr const char *Usage = "info FILE";
    static constexpr const char *Summary = "describe a project as JSON on stdout";

    static int run(const QStringList &arguments);
    /// The description that `run` prints.
    static QVariantMap describe(const RigxData &document);
};

} // namespace Morvane
