// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

class QAction;
class QComboBox;
class QSpinBox;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;

namespace Morvane {

class Animation;
class EditorSession;
class Entity;
class RigxData;

/// The "Animations" dock: the document's entities with their animations.
/// Creates, renames (made unique), deletes (after asking), clones entities and
/// animations, edits the picked animation's length, looping and snapping
/// interval, shows an animation in the canvas on a double-click and adds
/// another entity as a sub-entity object of the shown one. Every change is one
/// undo command; the list holds rows, never model pointers, and is rebuilt
/// when the document changes.
class AnimationsPanel : public QWidget
{
    Q_OBJECT

public:
    explicit AnimationsPanel(EditorSession *session, QWidget *parent = nullptr);

    QTreeWidget *tree() const { return mTree; }
    QToolBar *toolBar() const { return mToolBar; }
    /// The action of `objectName` ("actionNewEntity", "actionNewAnimation",
    /// "actionRename", "actionDelete", "actionClone", "actionSpecialClone",
    /// "actionAddSubEntity"); null when there is none.
    QAction *action(const QString &objectName) const;

    /// The picked entity and animation (rows; -1 for none).
    int pickedEntity() const { return mPickedEntity; }
    int pickedAnimation() const { return mPickedAnimation; }

public Q_SLOTS:
    /// Reads the document again.
    void rebuild();
    /// Reads it again once control is back in the event loop: the document's
    /// signals can come from inside the list's own edit handling.
    void scheduleRebuild();

private:
    RigxData *document() const;
    Entity *pickedEntityItem() const;
    Animation *pickedAnimationItem() const;
    void pick(QTreeWidgetItem *item);
    void updateActions();
    void updateSettingsFields();

    void newEntity();
    void newAnimation();
    void renameItem(QTreeWidgetItem *item);
    void deletePicked();
    void clonePicked();
    void specialClonePicked();
    void addSubEntity();
    void settingsEdited();
    void showAnimation(QTreeWidgetItem *item);

    QPointer<EditorSession> mSession;
    QToolBar *mToolBar;
    QTreeWidget *mTree;
    QSpinBox *mLength;
    QComboBox *mLooping;
    QSpinBox *mLoopTo;
    QSpinBox *mSnapping;
    int mPickedEntity = -1;
    int mPickedAnimation = -1;
    bool mRebuilding = false;
    QTimer mRebuildTimer;
};

} // namespace Morvane
