// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectiohost.h"

#include <QPointer>

class QProgressDialog;
class QWidget;

namespace Morvane {

// The window's answers to the file code: progress dialogs, the warning about
// saving outside the project folder, the merge question, the missing-image
// report and the suppression of autosave during long file work.
class WindowProjectIoHost : public ProjectIoHost
{
public:
    explicit WindowProjectIoHost(QWidget *window);
    ~WindowProjectIoHost() override;

    void beginProgress(const QString &label) override;
    void endProgress() override;
    void progress(int percent) override;
    void suppressAutosave(bool suppress) override;
    bool warnAboutNonHomeDirectory(const QString &projectDirectory,
                                   const QString &directory) override;
    bool confirmMerge(const QString &fileName) override;
    void missingImages(const QStringList &fullPaths) override;
    void diagnostic(const QString &line) override;

    QString lastDiagnostic() const { return mLastDiagnostic; }

private:
    QWidget *mWindow;
    QPointer<QProgressDialog> mProgress;
    QString mLastDiagnostic;
};

} // namespace Morvane
