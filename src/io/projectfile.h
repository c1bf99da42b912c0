// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectsaveoptions.h"

#include <QString>
#include <QStringList>

namespace Morvane {

class ProjectIoHost;
class RigxData;

/// Opening, saving and merging whole project files: the policy around the readers and
/// writers (which form, file checks, the diagnostic lines, safe replacement on disk).
///
/// Every failure is reported as one diagnostic line through the host and in `error`:
/// "Error: Cannot read file-PATH: reason", "Error: Cannot read file: reason",
/// "Error: Failed to parse file PATH: line L, column C: what" (or "...: Not a Morvane
/// file"), "Error: Cannot write file PATH: reason". A null host means the default one.
class ProjectFile
{
public:
    enum class Form { Xml, Json, Unknown };

    /// By the last four characters of the name, in any letter case: "rigx" or "rigj".
    static Form formFromPath(const QString &path);

    /// Reads the project at `path` into `document`. The whole file is parsed before the
    /// document is touched, so on failure it keeps its content, path and title. On
    /// success the document holds exactly the file's project, its path is `path`, empty
    /// timelines and unused files are gone. Dangling references that were dropped are
    /// listed in `warnings`.
    static bool open(RigxData *document, const QString &path, ProjectIoHost *host = nullptr,
                     QString *error = nullptr, QStringList *warnings = nullptr);

    /// Writes `document` to `path` in the form its extension selects, through a
    /// temporary file that replaces the old one only when everything was written (the
    /// directory is synced after); a failure leaves the old file as it was. Empty
    /// timelines and unused missing images are left out of the file but not removed from
    /// the document, whose undo stack may still point at them. On success the document's path
    /// becomes `path`.
    /// A symbolic link is kept: the file it leads to is written. A target that is not a
    /// regular file (a device, pipe, socket or folder) is refused untouched. Temporary files
    /// that a killed save of the same file left beside it are removed.
    static bool save(RigxData *document, const QString &path,
                     const ProjectSaveOptions &options = ProjectSaveOptions(),
                     ProjectIoHost *host = nullptr, QString *error = nullptr);

    /// Merges the project at `path` into `document`: its images are copied into a folder
    /// named after the file's base name inside the document's directory (a taken name
    /// gets "_2", "_3"... before its extension), its files added, and its entities
    /// appended with unique names. Image paths that would leave either project folder are
    /// refused and listed in `warnings`; nothing is written outside the project folder.
    /// Links are followed only where they stay inside: an image is copied only when it is a
    /// regular file whose real path lies in the other project's folder, and only to a
    /// place whose real path lies in this one's; refused images are listed in `warnings`.
    /// Clears the undo stack: a merge cannot be undone. False when the other project
    /// cannot be read, the document has no path, or the host declined (`error` empty).
    static bool importInto(RigxData *document, const QString &path, ProjectIoHost *host = nullptr,
                           QString *error = nullptr, QStringList *warnings = nullptr);

    /// `relativePath` (a file name of a project, "/" separated) joined to `directory` when
    /// it stays inside: no "..", absolute path, drive letter or backslash, nothing empty.
    /// An empty string when refused.
    static QString resolveInside(const QString &directory, const QString &relativePath);
    /// `path` when nothing in `taken` or on disk has that name, else the first free name
    /// with "_2", "_3"... before the extension.
    static QString freeName(const QString &path, const QStringList &taken);

    /// What `RigxData::saveFile` uses when the window has set nothing.
    static ProjectSaveOptions &defaultSaveOptions();
    /// The host `RigxData::openFile` and `saveFile` use; null restores the default.
    static void setDefaultHost(ProjectIoHost *host);
    static ProjectIoHost *host(ProjectIoHost *given = nullptr);
};

} // namespace Morvane
