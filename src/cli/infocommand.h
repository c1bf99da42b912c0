// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QVariantMap>

class QCommandLineParser;

namespace Morvane {

class RigxData;

/// `morvane-cli info FILE`: a JSON description of a project on stdout: folders and files,
/// entities with their objects, character maps and animations with their key times.
class InfoCommand
{
public:
    static constexpr const char *Arguments = "FILE";
    static constexpr const char *Summary = "Describe a project as JSON on stdout.";

    static void addOptions(QCommandLineParser &parser);
    static int run(const QCommandLineParser &parser);
    /// The description that `run` prints.
    static QVariantMap describe(const RigxData &document);
};

} // namespace Morvane
