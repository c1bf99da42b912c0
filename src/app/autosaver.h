// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectsaveoptions.h"

#include <QObject>
#include <QPointer>

#include <functional>

class QStatusBar;
class QThread;
class QTimer;
class QUndoStack;

namespace Morvane {

class RigxData;

// Writes a copy of the project into its folder every few minutes, as
// "name.autosave.rigx", without touching the project's path, title, recent
// files or clean state. The copy is taken on the GUI thread; only the disk
// write runs on a worker. Nothing is owned but the timer; the status bar, when
// given, shows the progress.
class AutoSaver : public QObject
{
    Q_OBJECT

public:
    AutoSaver(RigxData *document, QUndoStack *undoStack, QStatusBar *statusBar,
              QObject *parent = nullptr);
    // Waits for a write in flight.
    ~AutoSaver() override;

    // Where the options for the copy come from (the defaults without it).
    void setSaveOptions(std::function<ProjectSaveOptions()> options);

    // Starts or stops the timer from the autosave settings.
    void applySettings();
    QTimer *timer() const { return mTimer; }

    // Returns false when nothing was started: no project folder, a save
    // already running, or autosave suppressed.
    bool start();
    bool isRunning() const { return mRunning; }

    // "AutoSaving" + dots + " (percent%)" for 400 ms, unless the bar still
    // says that the save restarts.
    void showStatus(int dots, int percent);

signals:
    // Around the snapshot, which reads the whole document.
    void snapshotStarted();
    void snapshotTaken();
    // On the GUI thread when a copy has been written (or failed).
    void finished(const QString &path, bool ok);

private:
    void finish(const QString &path, bool ok, quint64 changeCount);
    void showMessage(const QString &text, int timeout);

    RigxData *mDocument;
    QPointer<QStatusBar> mStatusBar;
    QTimer *mTimer;
    QPointer<QThread> mThread;
    std::function<ProjectSaveOptions()> mSaveOptions;
    bool mRunning = false;
    // Counts undo stack index changes; a copy whose snapshot is older than
    // the latest change is started again.
    quint64 mChangeCount = 0;
};

} // namespace Morvane
