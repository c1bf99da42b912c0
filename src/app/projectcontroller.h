// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

#include <memory>

class QAction;
class QMenu;
class QUndoStack;
class QWidget;

namespace Morvane {

class RigxData;
class WindowProjectIoHost;
struct ProjectSaveOptions;

// The project's life in the editor: new, open, save, save as, save new version,
// merge and the recent-files list. Owns the one document for the whole run:
// opening reads into it in place, so addresses and everything holding the
// document stay valid, and a failed open leaves it as it was. Asks its
// questions with dialogs parented to `window`; the undo stack is not owned.
class ProjectController : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxRecentFiles = 7;

    ProjectController(QUndoStack *undoStack, const QString &version, QWidget *window);
    ~ProjectController() override;

    RigxData *document() const { return mDocument.get(); }
    WindowProjectIoHost *ioHost() const { return mIoHost.get(); }

    // The project file's absolute path; empty for a project never saved.
    QString filePath() const;
    // The project's folder; empty before a project is created or opened.
    QString folder() const;
    bool hasProject() const { return !folder().isEmpty(); }

    QStringList recentFiles() const { return mRecentFiles; }
    // Replaces the list (as read at start-up), keeping the first seven.
    void setRecentFiles(const QStringList &files);
    void addRecentFile(const QString &path);
    // Adds the seven hidden recent-file actions (data 0 to 6) to `menu`.
    void setRecentFilesMenu(QMenu *menu);

    // True when the caller may go on: the stack is clean, or the user chose
    // Save or No. The text ends with "before " + what + "?".
    bool verifySaveChanged(const QString &what);

    // Opens `path` (made absolute); does nothing for an empty path.
    void loadOnOpen(const QString &path);
    // Opens `path` (absolute) into the document; on failure nothing changes.
    bool open(const QString &path);
    // Starts an empty project whose images live in `folder` (no dialogs).
    void newProject(const QString &folder);
    // Merges the project at `path` into the open one (asks first).
    bool importProject(const QString &path);

    // The save options the settings ask for.
    static ProjectSaveOptions saveOptions();

public slots:
    // The menu flows: they ask, choose a file, then do the above.
    void newProjectFlow();
    void openFlow();
    void openRecentFile(int index);
    void importFlow();
    bool save();
    bool saveAs();
    bool saveNewVersion();

signals:
    // Around every job that reads or tidies the document, so views that cache
    // its items let go of them meanwhile.
    void documentAboutToChange();
    void documentChanged();
    // The path, the open state or the recent list changed: the title and the
    // project actions follow.
    void projectChanged();

private:
    bool saveTo(const QString &path);
    void showOpenWarnings(const QString &path, const QStringList &warnings);
    void updateRecentFileActions();

    QWidget *mWindow;
    QUndoStack *mUndoStack;
    std::unique_ptr<RigxData> mDocument;
    std::unique_ptr<WindowProjectIoHost> mIoHost;
    QStringList mRecentFiles;
    QList<QAction *> mRecentFileActions;
};

} // namespace Morvane
