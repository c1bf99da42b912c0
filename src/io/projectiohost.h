// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>
#include <QStringList>

namespace Morvane {

/// What opening, saving and merging need from the window: progress, questions, autosave
/// suppression and the diagnostic output. The defaults do what a program without windows
/// wants (no dialogs, yes to every question, diagnostics on stderr), so the command-line
/// tool and the tests use this class as it is; the window derives from it.
class ProjectIoHost
{
public:
    virtual ~ProjectIoHost();

    /// A long open, save or merge starts ("Loading hero.rigx") or ends.
    virtual void beginProgress(const QString &label);
    virtual void endProgress();
    /// How far the job started by `beginProgress` has come, 0..100. Called often (at most
    /// every few milliseconds of work), so it must be cheap when nothing changed.
    virtual void progress(int percent);

    /// Autosave is held off between `true` and the matching `false`; calls nest.
    virtual void suppressAutosave(bool suppress);

    /// Saving into `directory`, which is not the project's own directory: whether to go
    /// on. The window shows its warning here (when its setting asks for it).
    virtual bool warnAboutNonHomeDirectory(const QString &projectDirectory,
                                           const QString &directory);

    /// Merging `fileName` (base name and suffix) into the open project: whether to go on.
    virtual bool confirmMerge(const QString &fileName);

    /// A project opened with images that are not on disk.
    virtual void missingImages(const QStringList &fullPaths);

    /// One line for the diagnostic output ("Error: Cannot write file ...").
    virtual void diagnostic(const QString &line);

    /// The host used when none is given: the defaults above.
    static ProjectIoHost *defaultHost();
};

} // namespace Morvane
