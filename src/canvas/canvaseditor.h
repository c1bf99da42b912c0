// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QHash>
#include <QList>
#include <QPointer>
#include <QWidget>

class QAction;
class QColor;
class QLabel;
class QMenu;
class QToolBar;
class QTimer;

namespace Morvane {

class Animation;
class MorvaneCanvasScene;
class MorvaneGraphicsView;
class EditorSession;
class RigxData;
class ToolManager;

/// The canvas editor: the view, the scene, the tools and the canvas actions,
/// in one widget the window docks. The document and its undo stack are the
/// window's; every edit goes through that stack.
class CanvasEditor : public QWidget
{
    Q_OBJECT

public:
    explicit CanvasEditor(QWidget *parent = nullptr);
    ~CanvasEditor() override;

    /// Shows the document's first entity and animation; null shows nothing.
    /// Call with null before the document is cleared or deleted.
    void setDocument(RigxData *document);
    void setCurrentAnimation(Animation *animation);
    void setCurrentTime(int ms);
    /// Zooms so that everything shown fits the view with a margin (at most
    /// 200 %) and centres it; before the view has its size (a window
    /// still being laid out), once it has settled.
    void fitView();
    /// The canvas background; it persists across runs.
    void setBackgroundColor(const QColor &color);
    QColor backgroundColor() const;

    MorvaneCanvasScene *scene() const { return mScene; }
    /// The current entity, animation, time and selection, for the other pieces.
    EditorSession *session() const { return mSession; }
    MorvaneGraphicsView *view() const { return mView; }
    ToolManager *toolManager() const { return mTools; }
    /// The editor's own bar of its actions; a host that puts them in its
    /// menus and toolbars hides it.
    QToolBar *toolBar() const { return mToolBar; }
    /// Every action of the canvas (tools, view and edit actions), for the
    /// window's menus and shortcut lists.
    QList<QAction *> editorActions() const { return mActions; }
    QAction *action(const QString &objectName) const;
    /// The canvas's right-click menu (owned by the caller). The copy entries
    /// stay disabled until the window gives them actions to call.
    QMenu *createContextMenu(QWidget *parent = nullptr);
    /// The window's copy-to-all-frames actions, by their entry text ("x", "y",
    /// "x scale", "y scale", "angle", "alpha", or "items" for the whole items).
    void setCopyToAllFramesAction(const QString &entry, QAction *action);
    /// The status text of the scene and the tools, shown under the canvas
    /// unless a host shows it elsewhere (then it hides this line).
    QString statusText() const;
    void setStatusLineShown(bool on);

Q_SIGNALS:
    void statusTextChanged(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QAction *addAction(const QString &objectName, const QString &text,
                       const QKeySequence &shortcut = QKeySequence());
    void selectAll();
    void fitNow();

    MorvaneCanvasScene *mScene;
    EditorSession *mSession;
    MorvaneGraphicsView *mView;
    ToolManager *mTools;
    QToolBar *mToolBar;
    QLabel *mStatus;
    QTimer *mFitTimer;
    bool mFitPending = false;
    QList<QAction *> mActions;
    QHash<QString, QPointer<QAction>> mCopyActions; // the window's, not owned
};

} // namespace Morvane
