// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWidget>

class QAction;
class QFileSystemWatcher;
class QLabel;
class QLineEdit;
class QToolBar;
class QTreeWidgetItem;

namespace Morvane {

class EditorSession;
class File;
class PaletteTree;
class PivotPreview;
class RigxData;
class ThumbnailLoader;

/// The "Palette" dock: the images of the project folder as a folder tree with
/// thumbnails. It lists the project's files (missing ones marked) and the other
/// images found under the project folder, and for an atlas folder the frames
/// of its sprite sheet. A filter narrows the list; dragging images onto the
/// canvas makes sprites (images new to the project are added first); a click on
/// the enlarged preview sets the picked image's default pivot; images can be
/// renamed or replaced with every key following, and missing images looked
/// for under the project folder. A watcher on the folders shows images added
/// while the editor runs. Every change is an undo step.
class PalettePanel : public QWidget
{
    Q_OBJECT

public:
    explicit PalettePanel(EditorSession *session, QWidget *parent = nullptr);
    ~PalettePanel() override;

    PaletteTree *tree() const { return mTree; }
    QLineEdit *filterField() const { return mFilter; }
    PivotPreview *preview() const { return mPreview; }
    ThumbnailLoader *thumbnails() const { return mThumbnails; }
    /// The last refusal or result told to the user ("" when none).
    QString message() const;
    /// "actionRenameImage", "actionReplaceImage", "actionFindMissing"; null otherwise.
    QAction *action(const QString &objectName) const;
    /// The item of the image `name` (project-relative), or null.
    QTreeWidgetItem *itemFor(const QString &name) const;

public Q_SLOTS:
    /// Reads the document and the project folder again.
    void rebuild();
    /// Looks for each missing image of the project by its file name elsewhere
    /// under the project folder and, once the user agrees, points the project
    /// at what was found, in one undo step.
    void attemptMissingImageResolution();

private:
    RigxData *document() const;
    File *pickedFile() const;
    QString pickedName() const;
    void applyFilter();
    void updatePreview();
    void updateActions();
    void thumbnailReady(const QString &path);
    void setMessage(const QString &text);
    QStringList prepareDrag(const QStringList &names);
    void renamePicked();
    void replacePicked();
    void pivotClicked(const QPointF &pivot);
    void watchFolders(const QStringList &folders);
    void refill();
    QString signature() const;

    QPointer<EditorSession> mSession;
    QToolBar *mToolBar;
    QLineEdit *mFilter;
    PaletteTree *mTree;
    PivotPreview *mPreview;
    QLabel *mInfo;
    QLabel *mMessage;
    ThumbnailLoader *mThumbnails;
    QFileSystemWatcher *mWatcher;
    QTimer mRescan;
    QTimer mRebuildSoon;
    QStringList mDiskImages; // project-relative, from the last scan
    QString mScannedRoot;
    QString mSignature; // of what the tree shows
    bool mScanNeeded = true;
};

} // namespace Morvane
