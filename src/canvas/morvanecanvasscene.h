// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/timelinekey.h"

#include <QCursor>
#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QHash>
#include <QList>
#include <QMap>
#include <QPointer>
#include <QSet>

#include <memory>
#include <vector>

class QTimer;
class QUndoStack;

namespace Morvane {

class Animation;
class Entity;
class EntityInstance;
class File;
class MainlineKey;
class ObjectGraphicsProxy;
class ObjectRef;
class RigxData;
class ToolManager;
class TransformControlItemGroup;
class HierarchyLinesItem;
class OnionSkinItem;

/// A saved canvas selection: the selected timelines by index within the
/// animation, which of them is the current one, and two flags.
struct SelectionSave
{
    Address animation;
    QList<int> timelines;
    int current = -1;
    bool flagA = false;
    bool flagB = false;
    bool operator==(const SelectionSave &other) const
    {
        return animation == other.animation && timelines == other.timelines
               && current == other.current;
    }
};

/// The canvas: one moment of one animation, shown through one proxy per
/// timeline, with the transform box around the selection. Edits reach the
/// document only as undo macros opened by `startUndoWithSelection` and closed
/// by `endUndoWithSelection`. The scene owns its entity instances, proxies and
/// the transform box; the document and its undo stack are not owned.
class MorvaneCanvasScene : public QGraphicsScene
{
    Q_OBJECT

public:
    explicit MorvaneCanvasScene(QObject *parent = nullptr);
    ~MorvaneCanvasScene() override;

    /// Shows the document's first entity and animation (or nothing for null).
    void setDocument(RigxData *document);
    RigxData *model() const { return mDocument; }
    QUndoStack *undoStack() const;
    /// Clears everything shown; call before the document is cleared.
    void reset();

    /// Shows `animation` (an animation of the document) at the current time.
    void setCurrentAnimation(Animation *animation);
    Animation *currentAnimation() const;
    Entity *currentEntity() const;
    /// The main instance's time, milliseconds.
    int currentTime() const;
    void setCurrentTime(int ms);

    /// -1 (or 0) is the main instance, the one being edited.
    EntityInstance *entityInstance(int index = -1) const;
    int entityInstanceCount() const { return mInstance ? 1 : 0; }

    // Proxies of the main instance.
    int instTimelineProxyCount() const { return int(mProxies.size()); }
    ObjectGraphicsProxy *instTimelineProxyFromIndex(int index) const;
    ObjectGraphicsProxy *timelineProxy(int timelineIndex) const
    {
        return instTimelineProxyFromIndex(timelineIndex);
    }
    /// The proxy named `name`, or null.
    ObjectGraphicsProxy *idProxy(const QString &name) const;
    ObjectGraphicsProxy *refProxy(const ObjectRef *ref) const;
    /// Shown, unlocked proxies under `scenePos`, topmost first.
    QList<ObjectGraphicsProxy *> proxiesAt(const QPointF &scenePos) const;

    // Selection, in the order it was made.
    QList<ObjectGraphicsProxy *> selectedProxies() const { return mSelection; }
    void setSelectedProxies(const QList<ObjectGraphicsProxy *> &proxies);
    void clearProxySelection() { setSelectedProxies({}); }
    SelectionSave saveSelection() const;
    /// Refreshes, then selects what `save` names (what still exists).
    void restoreSelection(const SelectionSave &save);
    void setHoveredProxy(ObjectGraphicsProxy *proxy);
    ObjectGraphicsProxy *hoveredProxy() const { return mHovered; }

    /// Poses the main instance at its time again and updates the proxies;
    /// with `reread` (after any change of the document) the instance reads the
    /// document again first (`EntityInstance::invalidate`).
    void refresh(bool reread = true);
    /// While keys are dragged in time the canvas shows `preview` (a detached
    /// stand-in of the current animation with the same timelines, not owned;
    /// null goes back to the document) at the current time; the document and
    /// the selection are left alone.
    void setPreviewAnimation(Animation *preview);
    bool isPreviewing() const { return mPreview != nullptr; }
    TransformControlItemGroup *transformBox() const { return mTransformBox; }
    OnionSkinItem *onionSkin() const { return mOnion; }
    void refreshTransformBox();

    // Flags.
    void setObjectMoved(bool on) { mObjectMoved = on; }
    bool anyObjectMoved() const { return mObjectMoved; }
    bool smoothTransform() const { return mSmooth; }
    void setSmoothTransform(bool on);
    void setBoneParentingMode(bool on) { mBoneParenting = on; }
    bool boneParentingMode() const { return mBoneParenting; }
    /// View zoom as a factor (1 = 100 %): handles keep their screen size.
    double zoom() const { return mZoom; }
    void setZoom(double factor);
    QCursor rotateCursor() const { return mRotateCursor; }
    /// Rotation by the box snaps to 45 degree steps from the parent's angle.
    bool rotationSnapping() const { return mRotationSnapping; }
    void setRotationSnapping(bool on) { mRotationSnapping = on; }
    /// Images by file path, for drawing.
    QHash<QString, QPixmap> &pixmapCache() { return mPixmaps; }

    void setToolManager(ToolManager *tools) { mTools = tools; }

    // The undo macro.
    /// Opens a macro named `text` with the start refresh and selection commands,
    /// and notes what the mainline keys around the current time show now.
    void startUndoWithSelection(const QString &text, bool a = false, bool b = false);
    /// Records the proxy's present state as a key at the current time.
    void createUndoForSprite(ObjectGraphicsProxy *proxy, bool a = false, bool b = false);
    void createUndosForSprites(const QList<ObjectGraphicsProxy *> &proxies, bool a = false);
    /// Keys `ref` at `time` when it is among `refs`, then its bone children,
    /// depth first. -1 is the current time. Keys made at another time than the
    /// current one hold what was shown there when the macro opened.
    void createUndoForRefAndChildren(const ObjectRef *ref, const QList<const ObjectRef *> &refs,
                                     bool a, bool b, int time = -1);
    /// Keys, at `key` and its neighbours, the references whose timelines this
    /// macro changed and that hold no key there, with the pose shown there
    /// before the macro: neighbouring keys keep showing what they showed.
    void createUndoKeysForMandatoryRefs(MainlineKey *key);
    /// The same at every mainline key of the animation, last to first.
    void createUndoKeysForMandatoryRefs(Animation *animation);
    void endUndoWithSelection(bool a = false, bool b = false, bool mandatory = true);
    /// Counts the timeline at `timelineIndex` as changed by the open macro, for
    /// an edit that records its key itself (`Timeline::createUndoFromKey`).
    void noteTimelineChanged(int timelineIndex) { mChangedTimelines.insert(timelineIndex); }
    bool isRecording() const { return mRecording; }

    // Structure edits of the mainline key at the current time (made there
    // first when none stands there), each one undo step.
    /// Makes `bone` the parent of the selected items (not of the bone itself
    /// or its ancestors); they keep their place on the canvas.
    void reparentSelection(ObjectGraphicsProxy *bone);
    /// Takes the selected items off their parent bones, as one undo step named
    /// `text`; they keep their place on the canvas.
    void unparentSelection(const QString &text);
    /// A new bone from `from` to `to` (scene coordinates) at the current time,
    /// a child of `parent` when that is a bone; selected afterwards.
    void createBone(const QPointF &from, const QPointF &to, ObjectGraphicsProxy *parent);
    /// A new sprite showing `file` with its origin at `pos`, in front of
    /// everything at the current time; selected afterwards.
    void createSprite(File *file, const QPointF &pos);
    /// Takes the selected items out of the mainline key at the current time
    /// ("object(s) deleted"); their children keep their place on the canvas and
    /// other mainline keys keep showing what they showed. An item whose only
    /// key stands here is left (deleting it would delete its whole timeline).
    void deleteSelection();
    /// Takes the selected items out of every mainline key of the shown
    /// animation ("object(s) deleted from all frames"), or with
    /// `allAnimations` of every animation of the entity ("object(s) deleted
    /// from all animations"), with their keys and timelines there (the object
    /// infos stay). Their children keep their place on the canvas at every
    /// mainline key, under the nearest ancestor that stays.
    void deleteSelectionFromAllFrames(bool allAnimations = false);
    /// Copies of the selected items (new object infos with their own
    /// timelines), keyed here ten units down and right of the originals, with
    /// the same parents; the copies are selected afterwards.
    void cloneSelection();
    enum class ZMove { Up, Down, ToTop, ToBottom };
    /// Moves the selected object (the last selected that is not a bone).
    void moveSelectionInZOrder(ZMove move);
    /// Gives every other mainline key the drawing order of the one in force.
    void copyZOrderToOtherFrames();

    /// Label of a move of the selection by arrow keys or mouse.
    QString moveLabel() const;

    void emitRefreshAll() { Q_EMIT refreshAll(); }
    void emitSelectionChanged();

Q_SIGNALS:
    void repaintTimelineRects();
    void refreshedEntityInstance(Morvane::EntityInstance *instance);
    void refreshedEI();
    void selectionChanged(const QList<QGraphicsItem *> &items);
    void hovered(const QString &name);
    void hoverOut();
    void refreshAll();
    void recievedInvalidDrag();
    void newObjectDropped();
    void statusTextChanged(const QString &text);
    /// Another document (or none) is shown.
    void documentShown();
    void currentAnimationChanged();
    void currentTimeChanged(int ms);
    /// An edit was done, undone or redone.
    void documentEdited();

public:
    /// Hides or locks one timeline's object of the shown animation (a view of
    /// the canvas, not an edit); a hidden or locked object leaves the selection.
    void setTimelineHidden(int timelineIndex, bool hidden);
    void setTimelineLocked(int timelineIndex, bool locked);
    bool isTimelineHidden(int timelineIndex) const { return mHiddenTimelines.contains(timelineIndex); }
    bool isTimelineLocked(int timelineIndex) const { return mLockedTimelines.contains(timelineIndex); }

public Q_SLOTS:
    // Locking and hiding are views of the canvas, not edits: they are not
    // undoable and clear the selection. They hold for the shown animation.
    void hideSelectedObjects();
    void showSelectedObjects();
    void lockSelectedObjects();
    void unlockSelectedObjects();
    void setAllObjsVisible();
    void setAllObjsUnlocked();
    void onFps();
    void on_fadingStatusTimer_timeout();
    void startStatusText(const QString &text);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    // Images dropped from the file palette or the desktop become sprites.
    void dragEnterEvent(QGraphicsSceneDragDropEvent *event) override;
    void dragMoveEvent(QGraphicsSceneDragDropEvent *event) override;
    void dropEvent(QGraphicsSceneDragDropEvent *event) override;

private:
    void syncProxies();
    void capturePoses(int time);
    QList<MainlineKey *> neighbourKeys(MainlineKey *key) const;
    /// The mainline key at the current time, pushing one when none stands there.
    MainlineKey *mainlineKeyHere();

    RigxData *mDocument = nullptr;
    // The shown animation by indexes: other edits may delete or replace it,
    // and the instance's pointer must then be dropped or renewed.
    Address mAnimationAddress;
    std::unique_ptr<EntityInstance> mInstance;
    std::unique_ptr<EntityInstance> mPreview;
    std::vector<ObjectGraphicsProxy *> mProxies; // by timeline index, owned through the scene
    QList<ObjectGraphicsProxy *> mSelection;
    ObjectGraphicsProxy *mHovered = nullptr;
    TransformControlItemGroup *mTransformBox;
    HierarchyLinesItem *mLines;
    OnionSkinItem *mOnion;
    ToolManager *mTools = nullptr;
    QHash<QString, QPixmap> mPixmaps; // by file path
    QTimer *mFpsTimer;
    QTimer *mFadeTimer;
    QString mStatusText;
    double mStatusOpacity = 0.0;
    QCursor mRotateCursor;
    double mZoom = 1.0;
    bool mObjectMoved = false;
    bool mSmooth = true;
    bool mBoneParenting = false;
    bool mRotationSnapping = false;
    // While a macro is open: the timelines it changed, and per mainline key
    // time the local state each timeline showed there when it opened.
    bool mRecording = false;
    int mRecordTime = 0;
    QSet<int> mChangedTimelines;
    QSet<int> mLockedTimelines;
    QSet<int> mHiddenTimelines;
    QMap<int, QHash<int, TimelineKey>> mCapturedPoses;
};

} // namespace Morvane
