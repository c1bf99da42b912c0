// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectsaveoptions.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace Morvane {

class ProjectIoHost;
class RigxData;

/// Converting project files between the XML form (.rigx) and the JSON form (.rigj): the
/// per-file work that the window's batch dialog and `morvane-cli convert` share. Each
/// conversion is an ordinary open followed by an ordinary save in the other form.
class ProjectConversion
{
public:
    /// "rigx" for "rigj" and "rigj" for anything else.
    static QString otherSuffix(const QString &suffix);

    /// Every file under `directory` and all its subdirectories whose suffix is `suffix`
    /// (any letter case), sorted by path. Symbolic links to directories are not descended
    /// into, so a link loop cannot make the walk endless.
    static QStringList recurseFileList(const QString &directory, const QString &suffix);

    /// The files a batch converts to `targetSuffix`, in order: each file of `paths` as
    /// given, and for each directory of `paths` its `recurseFileList` of the other form.
    static QStringList batchFiles(const QStringList &paths, const QString &targetSuffix);

    /// `file` with its last extension replaced by `targetSuffix` (appended when it has
    /// none).
    static QString targetPath(const QString &file, const QString &targetSuffix);

    /// Why `file` cannot be a source of a conversion to `targetSuffix` (missing, not a
    /// regular file, not of the other form); empty when it can. A pipe or a device would
    /// keep the reader waiting for ever, so they are refused before anything opens them.
    static QString sourceProblem(const QString &file, const QString &targetSuffix);

    /// Opens `file` into `document` and saves it as `out` in the form its extension
    /// selects. On failure `error` holds the reason (the file's and the system's words)
    /// and, when the open failed, the document is as it was. Warnings of the open (data
    /// that could not be used) are added to `warnings` when given; `opened`, when given,
    /// runs between the open and the save (a progress step).
    static bool convertFile(RigxData *document, const QString &file, const QString &out,
                            const ProjectSaveOptions &options, ProjectIoHost *host,
                            QString *error, QStringList *warnings = nullptr,
                            const std::function<void()> &opened = {});
};

} // namespace Morvane
