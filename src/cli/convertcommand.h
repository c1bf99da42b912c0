// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>
#include <QStringList>

class QCommandLineParser;

namespace Morvane {

/// `morvane-cli convert [--compact | --pretty] INPUT OUTPUT`: opens a project and saves it
/// in the form the output's extension selects (.rigx or .rigj). Image names are kept as
/// they are, relative to the project's folder. Of --compact and --pretty the last wins.
///
/// `morvane-cli convert --to rigj|rigx PATH...`: converts every file given, and every
/// project file of the other form under each directory given, to a file beside it with
/// the new extension; one JSON line per file tells how it went.
class ConvertCommand
{
public:
    static constexpr const char *Arguments = "INPUT OUTPUT | --to rigj|rigx PATH...";
    static constexpr const char *Summary =
        "Save a project in the form OUTPUT's extension selects, or convert many.";

    static void addOptions(QCommandLineParser &parser);
    static int run(const QCommandLineParser &parser);

    /// The files a batch converts to `targetSuffix` ("rigj" or "rigx"), in order: each
    /// file of `paths` as given, and under each directory of `paths` every file of the
    /// other form, sorted by path. Symbolic links to directories are not descended into,
    /// so a link loop cannot make the walk endless.
    static QStringList batchFiles(const QStringList &paths, const QString &targetSuffix);
    /// `file` with its last extension replaced by `targetSuffix`.
    static QString targetPath(const QString &file, const QString &targetSuffix);
};

} // namespace Morvane
