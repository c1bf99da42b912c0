// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QColor>
#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QStringList>

#include <memory>

class QDockWidget;
class QGraphicsScene;
class QNetworkAccessManager;
class QNetworkReply;
class QThread;
class QTimer;
class QUndoStack;

namespace Ui {
class MorvaneWindow;
}

namespace Morvane {

class MorvaneSettings;
class WindowProjectIoHost;
struct ProjectSaveOptions;
class MorvaneSettingsDialog;
class PosePreview;
class RigxData;

// The one top-level window. Owns the project document, the undo stack, the
// settings object, the autosave timer and the network manager of the update
// check; turns the form's actions into calls on the document.
class MorvaneWindow : public QMainWindow
{
    Q_OBJECT

public:
    static constexpr int maxRecentFiles = 7;

    MorvaneWindow(const QString &version, const QStringList &arguments,
                  QWidget *parent = nullptr);
    ~MorvaneWindow() override;

    // The process-wide project document, owned by the window.
    static RigxData *rigx;

    QUndoStack *undoStack() const { return mUndoStack; }
    Ui::MorvaneWindow *ui() const { return mUi; }
    QNetworkAccessManager *networkManager() const { return mNetworkManager; }

    // The project file's absolute path; empty for a project never saved.
    QString projectFilePath() const;
    // The project's folder; empty before a project is created or opened.
    QString projectFolder() const;

    PosePreview *preview() const { return mPreview; }
    QStringList recentFiles() const { return mRecentFiles; }
    void addRecentFile(const QString &path);
    void updateRecentFileActions();

    void setMorvaneWindowTitle();
    // True when the caller may go on: the stack is clean, or the user chose
    // Save or No. The text ends with "before " + what + "?".
    bool verifySaveChanged(const QString &what);
    void enableProjectActions(bool enabled);
    void loadOnOpen(const QString &path);
    // Opens `path` (absolute) into the document; on failure nothing changes.
    bool openProject(const QString &path);
    // Starts an empty project whose images live in `folder` (no dialogs).
    void newProject(const QString &folder);
    // Merges the project at `path` into the open one (asks first).
    bool importProject(const QString &path);

    // Saves a copy into the project folder without touching path, title,
    // recent files or the clean state. Returns false when nothing was started.
    bool startAutoSave();
    bool autoSaveRunning() const { return mAutoSaveRunning; }
    QTimer *autoSaveTimer() const { return mAutoSaveTimer; }
    void applyAutoSaveSettings();
    void updateAutoSaveStatus(int dots, int percent);

    void checkForAnyUpdate(MorvaneSettingsDialog *dialog);
    void checkForStableUpdate(MorvaneSettingsDialog *dialog);
    bool checkingAllUpdates() const { return mCheckingAllUpdates; }

    QColor canvasBackground() const;
    void setCanvasBackground(const QColor &color);

signals:
    // Emitted on the GUI thread when an autosave has been written (or failed).
    void autoSaveFinished(const QString &path, bool ok);

public slots:
    void openRecentFile();
    void fileDownloaded(QNetworkReply *reply);
    void checkForAnyUpdate();
    void checkForStableUpdate();
    void showTutorialDialog();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void on_actionNew_Project_triggered();
    void on_actionLoad_Project_triggered();
    void on_actionSave_Project_triggered();
    void on_actionSave_Project_As_triggered();
    void on_actionSave_New_Version_triggered();
    void on_actionImport_Another_Project_Into_Current_triggered();
    void on_actionCustom_Save_Options_triggered();
    void on_actionExit_triggered();
    void on_actionSettings_triggered();
    void on_actionCenterView_triggered();
    void on_actionZoom_In_triggered();
    void on_actionZoom_Out_triggered();
    void on_actionRestore_Zoom_triggered();
    void on_actionDisable_Open_GL_requires_restart_triggered(bool checked);
    void on_actionWhite_triggered();
    void on_actionBlack_triggered();
    void on_actionGrey_triggered();
    void on_actionColorBackground_triggered();
    void on_actionAlways_Play_Subentities_triggered(bool checked);
    void on_actionHelp_triggered();
    void on_actionDownload_Example_Character_triggered();
    void on_actionReset_all_Show_this_again_settings_triggered();
    void on_actionAbout_triggered();

private:
    void setupRigx(const QString &version);
    void setupWidgets(bool projectLoaded);
    void setupConnections();
    void setupShorcuts();
    void setupCanvasViewport();
    void openWindowsAndInit(bool newProject);
    void startUpdateCheck(bool allUpdates, MorvaneSettingsDialog *dialog);
    void showUpdateAvailable(bool allUpdates);

    // Document access, kept together so the rest of the window does not
    // depend on how the document stores its path.
    void clearDocument();
    bool openDocument(const QString &path);
    bool saveDocument(const QString &path);
    bool saveAs();
    void setDocumentPath(const QString &path);
    ProjectSaveOptions saveOptions() const;

    void on_autoSave_timeout();
    void finishAutoSave(const QString &path, bool ok, quint64 changeCount);

    Ui::MorvaneWindow *mUi;
    std::unique_ptr<RigxData> mRigx;
    std::unique_ptr<WindowProjectIoHost> mIoHost;
    QPointer<QThread> mAutoSaveThread;
    QNetworkAccessManager *mNetworkManager;
    MorvaneSettings *mSettings;
    QUndoStack *mUndoStack;
    QString mVersion;
    QStringList mRecentFiles;
    QList<QAction *> mRecentFileActions;
    QTimer *mAutoSaveTimer = nullptr;
    QDockWidget *mKeyShortcutDock = nullptr;
    QList<QDockWidget *> mDockWidgets;
    QList<QWidget *> mOldMaxMinSizeWidgets;
    QGraphicsScene *mPlaceholderScene = nullptr;
    PosePreview *mPreview = nullptr;
    QPointer<MorvaneSettingsDialog> mSettingsDialog;
    bool mCheckingAllUpdates = false;
    bool mAutoSaveRunning = false;
    // Counts undo stack index changes; an autosave whose snapshot is older than
    // the latest change is started again.
    quint64 mChangeCount = 0;
    int mZoomPercent = 100;
    // Actions whose features come with later parts of the editor; they stay
    // disabled whatever enableProjectActions says.
    QList<QAction *> mPendingActions;
    QList<QAction *> mProjectActions;
};

} // namespace Morvane
