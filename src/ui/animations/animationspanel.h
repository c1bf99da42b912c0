// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>

class QAction;
class QComboBox;
class QLabel;
class QSpinBox;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;

namespace Morvane {

class Animation;
struct AnimationSettings;
class EditorSession;
class Entity;
class RigxData;

/// The "Animations" dock: the document's entities with their animations.
/// Creates, renames (made unique), deletes (after asking), clones entities and
/// animations. Picking an animation (a click, or the arrow keys) shows it in
/// the canvas and the timeline; the length, looping and snapping fields are
/// always the shown animation's, whatever is picked. It also adds
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
    Animation *shownAnimation() const;
    void showPicked();

    void newEntity();
    void newAnimation();
    void renameItem(QTreeWidgetItem *item);
    void deletePicked();
    void clonePicked();
    void specialClonePicked();
    void addSubEntity();
    void settingsEdited(const std::function<void(AnimationSettings &)> &change);
    void showAnimation(QTreeWidgetItem *item);

    QPointer<EditorSession> mSession;
    QToolBar *mToolBar;
    QTreeWidget *mTree;
    QSpinBox *mLength;
    QComboBox *mLooping;
    QSpinBox *mLoopTo;
    QSpinBox *mSnapping;
    QLabel *mHint;
    QLabel *mShown;
    int mPickedEntity = -1;
    int mPickedAnimation = -1;
    bool mRebuilding = false;
    QTimer mRebuildTimer;
};

} // namespace Morvane
