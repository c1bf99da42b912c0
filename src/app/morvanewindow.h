// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QColor>
#include <QList>
#include <QMainWindow>
#include <QStringList>

class QDockWidget;
class QNetworkAccessManager;
class QUndoStack;

namespace Ui {
class MorvaneWindow;
}

namespace Morvane {

class AutoSaver;
class CanvasEditor;
class CanvasHost;
class ClipboardEditor;
class KeyShortcutDockWidget;
class MorvaneSettings;
class ProjectController;
class RigxData;
class UpdateChecker;

// The one top-level window. Hosts the editor pieces: it docks them and wires
// the form's actions to them. The project's life is the ProjectController's,
// the periodic copy the AutoSaver's, the update check the UpdateChecker's.
class MorvaneWindow : public QMainWindow
{
    Q_OBJECT

public:
    MorvaneWindow(const QString &version, const QStringList &arguments,
                  QWidget *parent = nullptr);
    ~MorvaneWindow() override;

    // The process-wide project document: one object for the whole run.
    static RigxData *rigx;

    QUndoStack *undoStack() const { return mUndoStack; }
    Ui::MorvaneWindow *ui() const { return mUi; }
    QNetworkAccessManager *networkManager() const { return mNetworkManager; }
    ProjectController *project() const { return mProject; }
    AutoSaver *autoSaver() const { return mAutoSaver; }
    UpdateChecker *updateChecker() const { return mUpdateChecker; }
    CanvasEditor *canvas() const;

    // The project file's absolute path; empty for a project never saved.
    QString projectFilePath() const;

    void setMorvaneWindowTitle();
    void enableProjectActions(bool enabled);

    QColor canvasBackground() const;
    void setCanvasBackground(const QColor &color);

public slots:
    void showTutorialDialog();

protected:
    void closeEvent(QCloseEvent *event) override;

private slots:
    void on_actionCustom_Save_Options_triggered();
    void on_actionSettings_triggered();
    void on_actionDisable_Open_GL_requires_restart_triggered(bool checked);
    void on_actionColorBackground_triggered();
    void on_actionAlways_Play_Subentities_triggered(bool checked);
    void on_actionDownload_Example_Character_triggered();
    void on_actionReset_all_Show_this_again_settings_triggered();
    void on_actionAbout_triggered();

private:
    void setupWidgets();
    void setupConnections();
    void setupShorcuts();
    void setupCanvasViewport();
    void openCommandLineProject(const QStringList &arguments);

    Ui::MorvaneWindow *mUi;
    QNetworkAccessManager *mNetworkManager;
    MorvaneSettings *mSettings;
    QUndoStack *mUndoStack;
    ProjectController *mProject = nullptr;
    AutoSaver *mAutoSaver = nullptr;
    UpdateChecker *mUpdateChecker = nullptr;
    QString mVersion;
    KeyShortcutDockWidget *mKeyShortcutDock = nullptr;
    QList<QDockWidget *> mDockWidgets;
    CanvasHost *mCanvas = nullptr;
    ClipboardEditor *mClipboard = nullptr;
    // Actions whose features come with later parts of the editor; they stay
    // disabled whatever enableProjectActions says.
    QList<QAction *> mPendingActions;
};

} // namespace Morvane
