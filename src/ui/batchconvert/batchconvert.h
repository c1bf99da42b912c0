// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectsaveoptions.h"

#include <QDialog>
#include <QPointer>
#include <QProgressDialog>
#include <QStringList>

#include <functional>

class QRadioButton;

namespace Morvane {

class RigxData;

/// "Batch Convert between rigx(xml) and rigj(json)": asks for the direction and how the
/// files are chosen, then converts each file by opening it into the window's document and
/// saving it beside itself in the other form. Accepting the form starts `convert()`.
///
/// No user work is lost: the run refuses to start while the document has unsaved changes
/// (it offers to save first), the project open before is opened again afterwards, and a
/// file that fails is skipped and listed in the summary at the end.
///
/// The dialog deletes itself after a run (or when the run is cancelled); the document is
/// not owned.
class BatchConvert : public QDialog
{
    Q_OBJECT

public:
    BatchConvert(RigxData *document, QWidget *parent = nullptr);
    ~BatchConvert() override;

    /// How the converted files are written (indentation and the like).
    void setSaveOptions(const ProjectSaveOptions &options) { mSaveOptions = options; }
    /// Saves the open project when the user agrees to save before a run; true when it is
    /// saved afterwards. Without one the run only refuses.
    void setSaveProject(std::function<bool()> save) { mSaveProject = std::move(save); }

    /// The whole run: unsaved-changes check, choosing the files, confirmation, the
    /// conversions with their progress, reopening and the summary.
    void convert();
    /// Stops a directories run before its next file: drops the progress dialog and
    /// schedules this dialog's deletion.
    void abort();

    /// The progress dialog of the run under way; null when none is.
    QProgressDialog *progressDialog() const { return mProgress; }

    /// The files under `directory` and its subdirectories whose suffix is `suffix`.
    static QStringList recurseFileList(const QString &directory, const QString &suffix);

Q_SIGNALS:
    /// The document is about to be replaced file after file: views let go of it.
    void runStarted();
    /// The project open before the run is open again (or the document is empty when
    /// there was none).
    void runFinished();
    /// The summary of a finished run ("converted N, failed M" and the failures).
    void finished(int converted, int failed, const QStringList &failures);

protected:
    bool event(QEvent *event) override;

private:
    bool refuseForUnsavedChanges();
    QStringList chooseFiles(bool directories, const QString &source);
    bool confirm(const QString &source, const QString &target);
    void reopen(const QString &path);

    RigxData *mDocument;
    QRadioButton *mToJson;
    QRadioButton *mToXml;
    QRadioButton *mDirectories;
    QRadioButton *mFiles;
    QPointer<QProgressDialog> mProgress;
    ProjectSaveOptions mSaveOptions;
    std::function<bool()> mSaveProject;
    bool mRunning = false;
};

} // namespace Morvane
