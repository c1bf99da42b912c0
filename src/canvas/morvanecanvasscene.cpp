// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/morvanecanvasscene.h"

#include "canvas/commands/canvascommands.h"
#include "canvas/objectgraphicsproxy.h"
#include "canvas/onionskinitem.h"
#include "canvas/tools/toolmanager.h"
#include "canvas/transformcontrolitemgroup.h"
#include "eval/entityinstance.h"
#include "model/animation.h"
#include "model/commands/mainlinekeycommands.h"
#include "model/commands/objectcommands.h"
#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/timelinekey.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

#include <QDebug>
#include <QGraphicsSceneDragDropEvent>
#include <QGraphicsSceneMouseEvent>
#include <QMimeData>
#include <QUrl>
#include <QtMath>
#include <QFileInfo>
#include <QKeyEvent>
#include <QPainter>
#include <QTimer>
#include <QUndoStack>

#include <algorithm>
#include <cmath>

// The editor library is static: its resources are registered by hand, and
// outside any namespace, as the registration function is global.
static void initCanvasResources()
{
    static bool done = false;
    if (!done) {
        Q_INIT_RESOURCE(canvas);
        done = true;
    }
}

namespace Morvane {

/// Thin lines from each bone and object to its parent bone, so the hierarchy
/// reads at a glance. Drawn above the images and below the bones.
class HierarchyLinesItem : public QGraphicsItem
{
public:
    explicit HierarchyLinesItem(MorvaneCanvasScene *scene)
        : mScene(scene)
    {
        setZValue(50000);
    }

    void updateGeometry()
    {
        prepareGeometryChange();
        QRectF r;
        for (int i = 0; i < mScene->instTimelineProxyCount(); ++i) {
            const ObjectGraphicsProxy *p = mScene->instTimelineProxyFromIndex(i);
            if (p->isShownInPose())
                r = r.united(QRectF(p->pos(), QSizeF(1, 1)));
        }
        mRect = r.adjusted(-2, -2, 2, 2);
    }

    QRectF boundingRect() const override { return mRect; }

    void paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *) override
    {
        painter->setRenderHint(QPainter::Antialiasing);
        for (int i = 0; i < mScene->instTimelineProxyCount(); ++i) {
            const ObjectGraphicsProxy *p = mScene->instTimelineProxyFromIndex(i);
            const ObjectGraphicsProxy *parent = p->isShownInPose() ? p->parentProxy() : nullptr;
            if (!parent)
                continue;
            const bool bone = p->isBone();
            painter->setPen(QPen(bone ? QColor(30, 30, 30, 170) : QColor(60, 110, 190, 120), 0,
                                 bone ? Qt::SolidLine : Qt::DotLine));
            painter->drawLine(parent->pos(), p->pos());
        }
    }

private:
    MorvaneCanvasScene *mScene;
    QRectF mRect;
};

MorvaneCanvasScene::MorvaneCanvasScene(QObject *parent)
    : QGraphicsScene(parent)
    , mTransformBox(new TransformControlItemGroup(this))
    , mLines(new HierarchyLinesItem(this))
    , mOnion(new OnionSkinItem(this))
    , mFpsTimer(new QTimer(this))
    , mFadeTimer(new QTimer(this))
{
    // Everything moves every frame while playing or dragging: no index.
    setItemIndexMethod(QGraphicsScene::NoIndex);
    addItem(mTransformBox);
    addItem(mLines);
    addItem(mOnion);
    mFpsTimer->setInterval(16);
    mFadeTimer->setInterval(14);
    connect(mFpsTimer, &QTimer::timeout, this, &MorvaneCanvasScene::onFps);
    connect(mFadeTimer, &QTimer::timeout, this, &MorvaneCanvasScene::on_fadingStatusTimer_timeout);
    initCanvasResources();
    // A round arrow, hot spot in its middle.
    mRotateCursor = QCursor(QPixmap(QStringLiteral(":/images/rotateCursor.png")));
}

MorvaneCanvasScene::~MorvaneCanvasScene()
{
    // Proxies of sub-entities point into the instance: take them first.
    for (ObjectGraphicsProxy *p : mProxies)
        delete p;
    mProxies.clear();
}

QUndoStack *MorvaneCanvasScene::undoStack() const
{
    return mDocument ? mDocument->undoStack() : nullptr;
}

void MorvaneCanvasScene::reset()
{
    mPreview.reset();
    setSelectedProxies({});
    mHovered = nullptr;
    for (ObjectGraphicsProxy *p : mProxies)
        delete p;
    mProxies.clear();
    mInstance.reset();
    mAnimationAddress = Address();
    mLockedTimelines.clear();
    mHiddenTimelines.clear();
    mPixmaps.clear();
    mOnion->clearCache();
    mOnion->refresh();
    if (mDocument && mDocument->undoStack())
        disconnect(mDocument->undoStack(), nullptr, this, nullptr);
    mDocument = nullptr;
    mTransformBox->fitTo({});
    mLines->updateGeometry();
}

void MorvaneCanvasScene::setDocument(RigxData *document)
{
    reset();
    mDocument = document;
    if (!document) {
        Q_EMIT documentShown();
        return;
    }
    if (QUndoStack *stack = document->undoStack()) {
        // Every change of the document, done, undone or redone, re-reads it.
        connect(stack, &QUndoStack::indexChanged, this, [this] {
            if (!mRecording)
                refresh();
            Q_EMIT documentEdited();
        });
    }
    Entity *entity = document->entityCount() > 0 ? document->entity(0) : nullptr;
    if (entity && entity->animationCount() > 0) {
        mInstance = std::make_unique<EntityInstance>(entity, entity->animation(0));
        mAnimationAddress = entity->animation(0)->address();
        mInstance->setCurrentTime(0);
    }
    refresh();
    Q_EMIT documentShown();
    Q_EMIT currentAnimationChanged();
    Q_EMIT currentTimeChanged(currentTime());
}

void MorvaneCanvasScene::setCurrentAnimation(Animation *animation)
{
    Entity *entity = animation ? animation->parentEntity() : nullptr;
    if (!entity)
        return;
    if (animation == currentAnimation())
        return;
    setSelectedProxies({});
    mLockedTimelines.clear();
    mHiddenTimelines.clear();
    if (!mInstance)
        mInstance = std::make_unique<EntityInstance>(entity, animation);
    else
        mInstance->setAnimation(entity, animation);
    mAnimationAddress = animation->address();
    refresh();
    Q_EMIT currentAnimationChanged();
}

Animation *MorvaneCanvasScene::currentAnimation() const
{
    return mInstance ? mInstance->currentAnimation() : nullptr;
}

Entity *MorvaneCanvasScene::currentEntity() const
{
    return mInstance ? mInstance->entity() : nullptr;
}

int MorvaneCanvasScene::currentTime() const
{
    return mInstance ? mInstance->currentTime() : 0;
}

void MorvaneCanvasScene::setCurrentTime(int ms)
{
    if (!mInstance)
        return;
    const int before = mInstance->currentTime();
    mInstance->setCurrentTime(ms);
    // A new time alone leaves the document as it was.
    refresh(false);
    if (mInstance->currentTime() != before)
        Q_EMIT currentTimeChanged(mInstance->currentTime());
}

EntityInstance *MorvaneCanvasScene::entityInstance(int index) const
{
    return index <= 0 ? mInstance.get() : nullptr;
}

ObjectGraphicsProxy *MorvaneCanvasScene::instTimelineProxyFromIndex(int index) const
{
    return index >= 0 && index < int(mProxies.size()) ? mProxies[size_t(index)] : nullptr;
}

ObjectGraphicsProxy *MorvaneCanvasScene::idProxy(const QString &name) const
{
    for (ObjectGraphicsProxy *p : mProxies) {
        if (p->isShownInPose() && p->name() == name)
            return p;
    }
    return nullptr;
}

ObjectGraphicsProxy *MorvaneCanvasScene::refProxy(const ObjectRef *ref) const
{
    const Timeline *tl = ref ? ref->timeline() : nullptr;
    const Animation *anim = currentAnimation();
    return tl && anim ? instTimelineProxyFromIndex(anim->indexOfTimeline(tl)) : nullptr;
}

QList<ObjectGraphicsProxy *> MorvaneCanvasScene::proxiesAt(const QPointF &scenePos) const
{
    QList<ObjectGraphicsProxy *> found;
    const QList<QGraphicsItem *> under = items(scenePos, Qt::IntersectsItemShape,
                                               Qt::DescendingOrder);
    for (QGraphicsItem *item : under) {
        if (item->type() != ObjectGraphicsProxy::Type)
            continue;
        auto *p = static_cast<ObjectGraphicsProxy *>(item);
        if (p->isShownInPose() && p->isVisible() && !p->isLocked())
            found.append(p);
    }
    return found;
}

void MorvaneCanvasScene::setSelectedProxies(const QList<ObjectGraphicsProxy *> &proxies)
{
    for (ObjectGraphicsProxy *p : std::as_const(mSelection))
        p->setMarkedSelected(false);
    mSelection.clear();
    for (ObjectGraphicsProxy *p : proxies) {
        if (p && !mSelection.contains(p)) {
            mSelection.append(p);
            p->setMarkedSelected(true);
        }
    }
    mTransformBox->setPivot(mTransformBox->pivot(), false);
    refreshTransformBox();
    if (mOnion->isOn() && mOnion->selectionOnly())
        mOnion->refresh();
    emitSelectionChanged();
}

void MorvaneCanvasScene::emitSelectionChanged()
{
    QList<QGraphicsItem *> items;
    for (ObjectGraphicsProxy *p : std::as_const(mSelection))
        items.append(p);
    Q_EMIT selectionChanged(items);
}

SelectionSave MorvaneCanvasScene::saveSelection() const
{
    SelectionSave save;
    if (Animation *anim = currentAnimation())
        save.animation = anim->address();
    for (const ObjectGraphicsProxy *p : mSelection)
        save.timelines.append(p->timelineIndex());
    save.current = save.timelines.isEmpty() ? -1 : save.timelines.last();
    return save;
}

void MorvaneCanvasScene::restoreSelection(const SelectionSave &save)
{
    refresh();
    // A selection of another animation names other timelines.
    if (!save.animation.isEmpty() && save.animation != mAnimationAddress)
        return;
    QList<ObjectGraphicsProxy *> proxies;
    for (int index : save.timelines) {
        ObjectGraphicsProxy *p = instTimelineProxyFromIndex(index);
        if (p && p->isShownInPose())
            proxies.append(p);
    }
    setSelectedProxies(proxies);
}

void MorvaneCanvasScene::setHoveredProxy(ObjectGraphicsProxy *proxy)
{
    if (mHovered == proxy)
        return;
    if (mHovered)
        mHovered->setHovered(false);
    mHovered = proxy;
    if (proxy) {
        proxy->setHovered(true);
        Q_EMIT hovered(proxy->name());
    } else {
        Q_EMIT hoverOut();
    }
}

void MorvaneCanvasScene::refresh(bool reread)
{
    if (mInstance) {
        Animation *shown = Address(mDocument, mAnimationAddress.toList()).animation();
        if (!shown) {
            setSelectedProxies({});
            mInstance.reset();
        } else if (shown != mInstance->currentAnimation()
                   || shown->parentEntity() != mInstance->entity()) {
            mInstance->setAnimation(shown->parentEntity(), shown);
        }
    }
    if (mInstance) {
        if (reread)
            mInstance->invalidate();
        mInstance->refresh();
    }
    if (!mInstance)
        mPreview.reset();
    if (mPreview) {
        mPreview->invalidate();
        mPreview->setCurrentTime(mInstance ? mInstance->currentTime() : 0);
        mPreview->refresh();
    }
    syncProxies();
    refreshTransformBox();
    mLines->updateGeometry();
    mOnion->refresh();
    update();
    if (mInstance)
        Q_EMIT refreshedEntityInstance(mInstance.get());
    Q_EMIT refreshedEI();
}

void MorvaneCanvasScene::setPreviewAnimation(Animation *preview)
{
    if (!preview) {
        if (!mPreview)
            return;
        mPreview.reset();
    } else if (!mInstance || !currentAnimation()
               || preview->timelineCount() != currentAnimation()->timelineCount()) {
        return;
    } else if (!mPreview) {
        mPreview = std::make_unique<EntityInstance>(mInstance->entity(), preview);
    } else {
        mPreview->setAnimation(mInstance->entity(), preview);
    }
    refresh(false);
}

void MorvaneCanvasScene::syncProxies()
{
    const Animation *anim = currentAnimation();
    const size_t count = anim ? size_t(anim->timelineCount()) : 0;
    bool selectionLost = false;
    while (mProxies.size() > count) {
        ObjectGraphicsProxy *p = mProxies.back();
        mProxies.pop_back();
        selectionLost |= mSelection.removeOne(p);
        if (mHovered == p)
            mHovered = nullptr;
        delete p;
    }
    while (mProxies.size() < count) {
        auto *p = new ObjectGraphicsProxy(this, int(mProxies.size()));
        addItem(p);
        mProxies.push_back(p);
    }
    for (ObjectGraphicsProxy *p : mProxies) {
        p->refreshAbsent();
        p->clearChildLinks();
    }
    if (!mInstance || !anim)
        return;

    EntityInstance *shown = mPreview ? mPreview.get() : mInstance.get();
    const Pose &pose = shown->pose();
    for (size_t i = 0; i < pose.bones.size(); ++i) {
        const PoseItem &item = pose.bones[i];
        ObjectGraphicsProxy *p = instTimelineProxyFromIndex(item.timelineIndex);
        if (!p)
            continue;
        p->refreshFromPose(item, QPixmap(), nullptr);
        // Bones above every image, parents under their children.
        p->setZValue(100000 + double(i));
        if (item.parent >= 0)
            p->setParentTimeline(pose.bones[size_t(item.parent)].timelineIndex,
                                 instTimelineProxyFromIndex(
                                     pose.bones[size_t(item.parent)].timelineIndex)
                                     ->displayInfo());
    }
    for (const PoseItem &item : pose.objects) {
        ObjectGraphicsProxy *p = instTimelineProxyFromIndex(item.timelineIndex);
        if (!p)
            continue;
        QPixmap pixmap;
        if (item.shownFile && item.shownFile->isImage()) {
            auto it = mPixmaps.find(item.shownFile->name());
            if (it == mPixmaps.end())
                it = mPixmaps.insert(item.shownFile->name(),
                                     QPixmap::fromImage(item.shownFile->image()));
            pixmap = it.value();
        }
        EntityInstance *sub = nullptr;
        if (item.object && item.object->isSubEntity())
            sub = shown->subEntityForTimeline(item.timelineIndex);
        p->refreshFromPose(item, pixmap, sub);
        p->setZValue(double(item.z));
        if (item.parent >= 0) {
            const int parentTimeline = pose.bones[size_t(item.parent)].timelineIndex;
            if (ObjectGraphicsProxy *parent = instTimelineProxyFromIndex(parentTimeline))
                p->setParentTimeline(parentTimeline, parent->displayInfo());
        }
    }
    // Backwards, so that each list of children comes out in timeline order.
    for (auto it = mProxies.rbegin(); it != mProxies.rend(); ++it)
        (*it)->linkToParent();
    for (ObjectGraphicsProxy *p : mProxies) {
        p->setLocked(mLockedTimelines.contains(p->timelineIndex()));
        if (mHiddenTimelines.contains(p->timelineIndex()))
            p->hide();
    }
    for (ObjectGraphicsProxy *p : std::as_const(mSelection)) {
        if (!p->isShownInPose() || !p->isVisible())
            selectionLost = true;
    }
    // A drag's preview leaves the selection as it is.
    if (selectionLost && !mPreview) {
        QList<ObjectGraphicsProxy *> kept;
        for (ObjectGraphicsProxy *p : std::as_const(mSelection)) {
            if (p->isShownInPose() && p->isVisible())
                kept.append(p);
        }
        setSelectedProxies(kept);
    }
}

void MorvaneCanvasScene::refreshTransformBox()
{
    mTransformBox->fitTo(mSelection);
    mLines->updateGeometry();
    mLines->update();
}

void MorvaneCanvasScene::setSmoothTransform(bool on)
{
    mSmooth = on;
    update();
}

void MorvaneCanvasScene::setZoom(double factor)
{
    mZoom = factor > 0 ? factor : 1.0;
    refreshTransformBox();
    update();
}

QString MorvaneCanvasScene::moveLabel() const
{
    if (mSelection.size() == 1)
        return mSelection.first()->name() + tr(" moved");
    return QString::number(mSelection.size()) + tr(" objects") + tr(" moved");
}

// The undo macro.

void MorvaneCanvasScene::startUndoWithSelection(const QString &text, bool a, bool b)
{
    QUndoStack *stack = undoStack();
    if (!stack || !currentAnimation() || mRecording)
        return;
    stack->beginMacro(text);
    mRecording = true;
    mRecordTime = currentTime();
    mChangedTimelines.clear();
    capturePoses(mRecordTime);
    stack->push(new RefreshTimelineCommand(this, false));
    stack->push(new ObjectSelectionCommand(this, false, a, b));
}

void MorvaneCanvasScene::capturePoses(int time)
{
    mCapturedPoses.clear();
    Animation *anim = currentAnimation();
    MainlineKey *inForce = anim ? anim->mainlineKeyFromTime(time, false) : nullptr;
    if (!inForce)
        return;
    // The key in force and its neighbours are the keys an edit at `time`
    // could change the look of (a new key at `time` lands between the key in
    // force and the next one).
    for (MainlineKey *key : neighbourKeys(inForce)) {
        const int t = key->currentTime();
        QHash<int, TimelineKey> &states = mCapturedPoses[t];
        for (int i = 0; i < anim->timelineCount(); ++i) {
            TimelineKey state = anim->timeline(i)->keyFromTime(t);
            state.setCachedTime(t);
            states.insert(i, state);
        }
    }
}

QList<MainlineKey *> MorvaneCanvasScene::neighbourKeys(MainlineKey *key) const
{
    QList<MainlineKey *> keys;
    Animation *anim = key ? key->parentAnimation() : nullptr;
    if (!anim)
        return keys;
    const int i = anim->indexOfMainlineKey(key);
    const int n = anim->mainlineKeyCount();
    const bool wrap = anim->isLooping() && n > 1;
    MainlineKey *next = i + 1 < n ? anim->mainlineKey(i + 1) : (wrap ? anim->mainlineKey(0) : nullptr);
    MainlineKey *prev = i > 0 ? anim->mainlineKey(i - 1) : (wrap ? anim->mainlineKey(n - 1) : nullptr);
    for (MainlineKey *k : {next, key, prev}) {
        if (k && !keys.contains(k))
            keys.append(k);
    }
    std::sort(keys.begin(), keys.end(), [](const MainlineKey *a, const MainlineKey *b) {
        return a->currentTime() < b->currentTime();
    });
    return keys;
}

void MorvaneCanvasScene::createUndoForSprite(ObjectGraphicsProxy *proxy, bool a, bool b)
{
    Animation *anim = currentAnimation();
    Timeline *tl = anim && proxy ? anim->timeline(proxy->timelineIndex()) : nullptr;
    if (!tl || !mInstance)
        return;
    const int time = currentTime();
    const int sample = anim->sampleTime(time);
    const TimelineKey *first = nullptr;
    const TimelineKey *second = nullptr;
    double ratio = 0.0;
    tl->keyPairFromTime(sample, &first, &second, &ratio);
    if (!first)
        return;

    DisplayInfo local = proxy->displayInfo();
    if (const ObjectGraphicsProxy *parent = proxy->parentProxy()) {
        const DisplayInfo &pw = parent->displayInfo();
        if (pw.xScale != 0.0 && pw.yScale != 0.0 && pw.alpha != 0.0)
            local = mapToParent(local, pw, proxy->inheritFlags());
    }
    // The key holds everything the key in force holds; only the spatial
    // values the canvas changes are taken from the item.
    TimelineKey key = tl->keyFromTime(sample);
    DisplayInfo info = key.info();
    info.setPose(local);
    if (proxy->isPivotChanged()) {
        info.setPivotX(proxy->displayInfo().pivotX(), false);
        info.setPivotY(proxy->displayInfo().pivotY(), false);
    }
    key.setInfo(info);
    key.setCachedTime(time);
    mChangedTimelines.insert(proxy->timelineIndex());
    tl->createUndoFromKey(key, a, b, false);
}

void MorvaneCanvasScene::createUndosForSprites(const QList<ObjectGraphicsProxy *> &proxies, bool a)
{
    for (ObjectGraphicsProxy *p : proxies)
        createUndoForSprite(p, a, false);
}

void MorvaneCanvasScene::createUndoForRefAndChildren(const ObjectRef *ref,
                                                     const QList<const ObjectRef *> &refs, bool a,
                                                     bool b, int time)
{
    if (!ref)
        return;
    const MainlineKey *mk = ref->parentMainlineKey();
    if (time < 0)
        time = currentTime();
    if (refs.contains(ref)) {
        if (time == currentTime() && !mCapturedPoses.contains(time)) {
            createUndoForSprite(refProxy(ref), a, b);
        } else if (Timeline *tl = ref->timeline()) {
            const Animation *anim = tl->parentAnimation();
            const int index = anim->indexOfTimeline(tl);
            const auto states = mCapturedPoses.constFind(time);
            if (states != mCapturedPoses.constEnd() && states->contains(index))
                tl->createUndoFromKey(states->value(index), a, b, false);
        }
    }
    if (!mk || !ref->isBoneRef())
        return;
    // Children by position; the list is read again each time because keying
    // changes which keys the references point at, never the references.
    for (int i = 0; i < mk->refCount(); ++i) {
        const ObjectRef *child = mk->ref(i);
        if (child && child->parentRef() == ref)
            createUndoForRefAndChildren(child, refs, a, b, time);
    }
}

void MorvaneCanvasScene::createUndoKeysForMandatoryRefs(MainlineKey *key)
{
    Animation *anim = key ? key->parentAnimation() : nullptr;
    if (!anim)
        return;
    for (MainlineKey *mk : neighbourKeys(key)) {
        const int t = mk->currentTime();
        QList<const ObjectRef *> mandatory;
        for (int i = 0; i < mk->refCount(); ++i) {
            const ObjectRef *ref = mk->ref(i);
            const Timeline *tl = ref->timeline();
            const int index = tl ? anim->indexOfTimeline(tl) : -1;
            // Only a timeline this macro changed can show something else at
            // another key, and only where it holds no key of its own.
            if (index < 0 || !mChangedTimelines.contains(index) || tl->actualKeyFromTime(t))
                continue;
            mandatory.append(ref);
        }
        if (mandatory.isEmpty())
            continue;
        for (int i = 0; i < mk->refCount(); ++i) {
            const ObjectRef *ref = mk->ref(i);
            if (!ref->parentRef())
                createUndoForRefAndChildren(ref, mandatory, true, true, t);
        }
    }
}

void MorvaneCanvasScene::createUndoKeysForMandatoryRefs(Animation *animation)
{
    if (!animation)
        return;
    for (int k = animation->mainlineKeyCount() - 1; k >= 0; --k)
        createUndoKeysForMandatoryRefs(animation->mainlineKey(k));
}

void MorvaneCanvasScene::endUndoWithSelection(bool a, bool b, bool mandatory)
{
    QUndoStack *stack = undoStack();
    if (!stack || !mRecording)
        return;
    stack->push(new ObjectSelectionCommand(this, true, a, b));
    Animation *anim = currentAnimation();
    if (mandatory && anim && !mChangedTimelines.isEmpty()) {
        const int t = mRecordTime;
        if (!anim->mainlineKeyAtExactTime(t))
            stack->push(new AppendMainlineKeyCommand(anim, t));
        createUndoKeysForMandatoryRefs(anim->mainlineKeyAtExactTime(t));
    }
    stack->push(new RefreshTimelineCommand(this, true));
    mRecording = false;
    mCapturedPoses.clear();
    mChangedTimelines.clear();
    mObjectMoved = false;
    stack->endMacro();
}

MainlineKey *MorvaneCanvasScene::mainlineKeyHere()
{
    Animation *anim = currentAnimation();
    if (!anim || !mDocument)
        return nullptr;
    const int t = currentTime();
    if (!anim->mainlineKeyAtExactTime(t))
        mDocument->pushUndo(new AppendMainlineKeyCommand(anim, t));
    return anim->mainlineKeyAtExactTime(t);
}

void MorvaneCanvasScene::reparentSelection(ObjectGraphicsProxy *bone)
{
    Animation *anim = currentAnimation();
    if (!anim || !bone || !bone->isBone() || mSelection.isEmpty())
        return;
    QList<ObjectGraphicsProxy *> moving;
    for (ObjectGraphicsProxy *p : std::as_const(mSelection)) {
        bool ancestor = false;
        int guard = 0;
        for (const ObjectGraphicsProxy *a = bone; a && guard < 256; a = a->parentProxy(), ++guard)
            ancestor |= a == p;
        if (!ancestor && p->parentProxy() != bone)
            moving.append(p);
    }
    if (moving.isEmpty())
        return;
    const int boneTimeline = bone->timelineIndex();
    startUndoWithSelection(moving.size() == 1 ? moving.first()->name() + tr(" re-parented")
                                              : tr("objects re-parented"));
    for (ObjectGraphicsProxy *p : std::as_const(moving)) {
        // Keyed here first, so that the reference points at a key of this time.
        createUndoForSprite(p, false, false);
        MainlineKey *mk = mainlineKeyHere();
        Timeline *tl = anim->timeline(p->timelineIndex());
        ObjectRef *ref = mk && tl ? mk->refFromTimeline(tl) : nullptr;
        ObjectRef *parentRef = mk ? mk->refFromTimeline(anim->timeline(boneTimeline)) : nullptr;
        if (!ref || !parentRef || !ref->key())
            continue;
        const DisplayInfo &pw = instTimelineProxyFromIndex(boneTimeline)->displayInfo();
        if (pw.xScale == 0.0 || pw.yScale == 0.0 || pw.alpha == 0.0)
            continue;
        const DisplayInfo local = mapToParent(p->displayInfo(), pw, p->inheritFlags());
        DisplayInfo info = ref->key()->info();
        info.setPose(local);
        mDocument->pushUndo(new ChangeParentingCommand(ref, parentRef, info));
    }
    endUndoWithSelection(false, false, true);
}

void MorvaneCanvasScene::unparentSelection(const QString &text)
{
    Animation *anim = currentAnimation();
    QList<ObjectGraphicsProxy *> moving;
    for (ObjectGraphicsProxy *p : std::as_const(mSelection)) {
        if (p->parentProxy())
            moving.append(p);
    }
    if (!anim || moving.isEmpty())
        return;
    startUndoWithSelection(text);
    for (ObjectGraphicsProxy *p : std::as_const(moving)) {
        // Off every bone, the key takes the pose it shows.
        const DisplayInfo world = p->displayInfo();
        createUndoForSprite(p);
        MainlineKey *mk = anim->mainlineKeyAtExactTime(currentTime());
        Timeline *tl = anim->timeline(p->timelineIndex());
        ObjectRef *ref = mk && tl ? mk->refFromTimeline(tl) : nullptr;
        if (!ref || !ref->key())
            continue;
        DisplayInfo info = ref->key()->info();
        info.setPose(world);
        mDocument->pushUndo(new ChangeParentingCommand(ref, nullptr, info));
    }
    endUndoWithSelection(false, false, true);
}

void MorvaneCanvasScene::createBone(const QPointF &from, const QPointF &to,
                                    ObjectGraphicsProxy *parent)
{
    Animation *anim = currentAnimation();
    Entity *entity = currentEntity();
    const double length = QLineF(from, to).length();
    if (!anim || !entity || !undoStack() || length <= 0.0)
        return;
    if (parent && !parent->isBone())
        parent = nullptr;
    const int parentTimeline = parent ? parent->timelineIndex() : -1;
    const DisplayInfo parentWorld = parent ? parent->displayInfo() : DisplayInfo();
    if (parent && (parentWorld.xScale == 0.0 || parentWorld.yScale == 0.0 || parentWorld.alpha == 0.0))
        return;

    Object bone(entity->uniqueObjectName(QStringLiteral("bone")), Object::Bone);
    bone.defaultState().info().width = length;
    startUndoWithSelection(tr("new bone created"));
    mDocument->pushUndo(new AppendObjectCommand(entity, bone));
    mDocument->pushUndo(new AppendTimelineCommand(anim, entity->objectCount() - 1, bone.name()));
    Timeline *tl = anim->timeline(anim->timelineCount() - 1);
    if (tl && tl->object() && tl->object()->name() == bone.name()) {
        DisplayInfo world;
        world.x = from.x();
        world.y = from.y();
        world.angle = DisplayInfo::normalizedAngle(
            qRadiansToDegrees(std::atan2(to.y() - from.y(), to.x() - from.x())));
        world.width = length;
        world.height = bone.height();
        const DisplayInfo local =
            parent ? mapToParent(world, parentWorld, inheritFlags(&bone)) : world;
        DisplayInfo info = world;
        info.setPose(local);
        TimelineKey key(FileInfo(), info);
        key.setCachedTime(currentTime());
        tl->createUndoFromKey(key);
        MainlineKey *mk = anim->mainlineKeyAtExactTime(currentTime());
        ObjectRef *ref = mk ? mk->refFromTimeline(tl) : nullptr;
        ObjectRef *parentRef = mk && parent ? mk->refFromTimeline(anim->timeline(parentTimeline)) : nullptr;
        if (ref && parentRef)
            mDocument->pushUndo(new ChangeParentingCommand(ref, parentRef, ref->key()->info()));
        // The new bone's proxy exists after a refresh; the closing selection
        // command then records it as selected.
        refresh();
        if (ObjectGraphicsProxy *p = instTimelineProxyFromIndex(anim->indexOfTimeline(tl)))
            setSelectedProxies({p});
    }
    endUndoWithSelection(false, false, false);
}

void MorvaneCanvasScene::createSprite(File *file, const QPointF &pos)
{
    Animation *anim = currentAnimation();
    Entity *entity = currentEntity();
    if (!anim || !entity || !undoStack() || !file || !file->isImage())
        return;
    const QString base = QFileInfo(file->name()).completeBaseName();
    Object sprite(entity->uniqueObjectName(base.isEmpty() ? QStringLiteral("sprite") : base),
                  Object::Sprite);
    const Address fileAddress = file->address();
    sprite.defaultState().setFileInfo(FileInfo(fileAddress));
    startUndoWithSelection(tr("new sprite created"));
    mDocument->pushUndo(new AppendObjectCommand(entity, sprite));
    mDocument->pushUndo(new AppendTimelineCommand(anim, entity->objectCount() - 1, sprite.name()));
    Timeline *tl = anim->timeline(anim->timelineCount() - 1);
    if (tl && tl->object() && tl->object()->name() == sprite.name()) {
        DisplayInfo info;
        info.x = pos.x();
        info.y = pos.y();
        info.width = file->width();
        info.height = file->height();
        // The image's own pivot, until the user moves it.
        info.setDefaultPivot(true, fileAddress);
        TimelineKey key(FileInfo(fileAddress), info);
        key.setCachedTime(currentTime());
        tl->createUndoFromKey(key);
        refresh();
        if (ObjectGraphicsProxy *p = instTimelineProxyFromIndex(anim->indexOfTimeline(tl)))
            setSelectedProxies({p});
    }
    endUndoWithSelection(false, false, false);
    Q_EMIT newObjectDropped();
}

void MorvaneCanvasScene::dragEnterEvent(QGraphicsSceneDragDropEvent *event)
{
    if (!currentAnimation() || !currentEntity()) {
        qDebug() << "drag enter event : no valid entity";
        Q_EMIT recievedInvalidDrag();
        event->ignore();
        return;
    }
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void MorvaneCanvasScene::dragMoveEvent(QGraphicsSceneDragDropEvent *event)
{
    if (currentAnimation() && event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void MorvaneCanvasScene::dropEvent(QGraphicsSceneDragDropEvent *event)
{
    if (!currentAnimation() || !mDocument) {
        event->ignore();
        return;
    }
    bool any = false;
    for (const QUrl &url : event->mimeData()->urls()) {
        // Only images the project already holds: the project names its images
        // by paths inside its folder.
        File *file = url.isLocalFile() ? mDocument->file(url.toLocalFile()) : nullptr;
        if (!file || !file->isImage()) {
            startStatusText(tr("Only images inside the project folder can be dropped"));
            continue;
        }
        createSprite(file, event->scenePos());
        any = true;
    }
    if (any)
        event->acceptProposedAction();
    else
        event->ignore();
}

void MorvaneCanvasScene::deleteSelection()
{
    Animation *anim = currentAnimation();
    if (!anim || !undoStack() || mSelection.isEmpty())
        return;
    const int time = currentTime();
    const int sample = anim->sampleTime(time);
    const QList<ObjectGraphicsProxy *> selection = mSelection;
    // What the children are to keep, read before the first command.
    QHash<ObjectGraphicsProxy *, DisplayInfo> childLocal;
    for (ObjectGraphicsProxy *p : selection) {
        const ObjectGraphicsProxy *grandparent = p->parentProxy();
        while (grandparent && selection.contains(const_cast<ObjectGraphicsProxy *>(grandparent)))
            grandparent = grandparent->parentProxy();
        for (ObjectGraphicsProxy *child : p->childrenProxys()) {
            if (selection.contains(child))
                continue;
            const DisplayInfo gw = grandparent ? grandparent->displayInfo() : DisplayInfo();
            if (grandparent && (gw.xScale == 0.0 || gw.yScale == 0.0 || gw.alpha == 0.0))
                continue;
            childLocal.insert(
                child, grandparent ? mapToParent(child->displayInfo(), gw, child->inheritFlags())
                                   : child->displayInfo());
        }
    }
    startUndoWithSelection(tr("object(s) deleted"));
    MainlineKey *mk = mainlineKeyHere();
    for (auto it = childLocal.constBegin(); it != childLocal.constEnd(); ++it) {
        Timeline *tl = anim->timeline(it.key()->timelineIndex());
        if (!tl)
            continue;
        TimelineKey key = tl->keyFromTime(sample);
        DisplayInfo info = key.info();
        info.x = it.value().x;
        info.y = it.value().y;
        info.angle = it.value().angle;
        info.xScale = it.value().xScale;
        info.yScale = it.value().yScale;
        info.alpha = it.value().alpha;
        key.setInfo(info);
        key.setCachedTime(time);
        tl->createUndoFromKey(key);
        mChangedTimelines.insert(it.key()->timelineIndex());
    }
    for (ObjectGraphicsProxy *p : selection) {
        Timeline *tl = anim->timeline(p->timelineIndex());
        ObjectRef *ref = mk && tl ? mk->refFromTimeline(tl) : nullptr;
        if (!ref)
            continue;
        TimelineKey *key = ref->key();
        const bool keyedHere = key && key->time(true) == time && key->mainKey() == mk;
        if (keyedHere && tl->keyCount() == 1) {
            startStatusText(tr("%1 has no other key: delete its timeline instead").arg(p->name()));
            continue;
        }
        if (keyedHere) {
            // Later mainline keys that show this key get keys of their own.
            for (int i = 0; i < anim->mainlineKeyCount(); ++i) {
                MainlineKey *other = anim->mainlineKey(i);
                ObjectRef *r = other != mk ? other->refFromTimeline(tl) : nullptr;
                if (r && r->key() == key) {
                    TimelineKey state = tl->keyFromTime(other->currentTime());
                    state.setCachedTime(other->currentTime());
                    tl->createUndoFromKey(state);
                }
            }
        }
        mDocument->pushUndo(new RemoveRefCommand(mk, tl));
        if (keyedHere) {
            key = tl->actualKeyFromTime(time);
            bool shown = false;
            for (int i = 0; key && i < anim->mainlineKeyCount(); ++i) {
                const ObjectRef *r = anim->mainlineKey(i)->refFromTimeline(tl);
                shown |= r && r->key() == key;
            }
            if (key && !shown) {
                mDocument->pushUndo(new RemoveTimelineKeyCommand(key));
                mChangedTimelines.insert(p->timelineIndex());
            }
        }
    }
    setSelectedProxies({});
    endUndoWithSelection(false, false, true);
}

void MorvaneCanvasScene::deleteSelectionFromAllFrames(bool allAnimations)
{
    Animation *shown = currentAnimation();
    Entity *entity = currentEntity();
    if (!shown || !entity || !undoStack() || mSelection.isEmpty())
        return;
    QSet<const Object *> objects;
    for (const ObjectGraphicsProxy *p : std::as_const(mSelection)) {
        if (const Timeline *tl = shown->timeline(p->timelineIndex()); tl && tl->object())
            objects.insert(tl->object());
    }
    QList<Animation *> animations{shown};
    if (allAnimations) {
        animations.clear();
        for (int i = 0; i < entity->animationCount(); ++i)
            animations.append(entity->animation(i));
    }

    // Everything is read before the first command changes the document: per
    // mainline key, the local state each child of a deleted item is to have
    // under the nearest ancestor that stays, from the world state it shows.
    struct Kept
    {
        Animation *animation;
        int timeline;
        int time;
        DisplayInfo local;
    };
    QList<Kept> kept;
    auto deleted = [&objects](const ObjectRef *ref) {
        const Timeline *tl = ref ? ref->timeline() : nullptr;
        return tl && objects.contains(tl->object());
    };
    for (Animation *anim : std::as_const(animations)) {
        for (int m = 0; m < anim->mainlineKeyCount(); ++m) {
            const MainlineKey *mk = anim->mainlineKey(m);
            const int time = mk->currentTime();
            const int sample = anim->sampleTime(time);
            for (int i = 0; i < mk->refCount(); ++i) {
                const ObjectRef *child = mk->ref(i);
                if (deleted(child) || !deleted(child->parentRef()) || !child->timeline())
                    continue;
                const ObjectRef *stays = child->parentRef();
                for (int guard = 0; stays && deleted(stays) && guard < ObjectRef::MaxParentDepth;
                     ++guard)
                    stays = stays->parentRef();
                const DisplayInfo world = child->unmappedInfo(sample);
                DisplayInfo local = world;
                if (stays && !deleted(stays)) {
                    const DisplayInfo pw = stays->unmappedInfo(sample);
                    if (pw.xScale == 0.0 || pw.yScale == 0.0 || pw.alpha == 0.0)
                        continue;
                    local = mapToParent(world, pw, inheritFlags(child->timeline()->object()));
                }
                kept.append({anim, anim->indexOfTimeline(child->timeline()), time, local});
            }
        }
    }

    startUndoWithSelection(allAnimations ? tr("object(s) deleted from all animations")
                                         : tr("object(s) deleted from all frames"));
    for (const Kept &k : std::as_const(kept)) {
        Timeline *tl = k.animation->timeline(k.timeline);
        TimelineKey key = tl->keyFromTime(k.animation->sampleTime(k.time));
        DisplayInfo info = key.info();
        info.x = k.local.x;
        info.y = k.local.y;
        info.angle = k.local.angle;
        info.xScale = k.local.xScale;
        info.yScale = k.local.yScale;
        info.alpha = k.local.alpha;
        key.setInfo(info);
        key.setCachedTime(k.time);
        tl->createUndoFromKey(key);
    }
    QUndoStack *stack = undoStack();
    stack->beginMacro(tr("Completing Deletion"));
    for (Animation *anim : std::as_const(animations)) {
        for (int i = 0; i < anim->timelineCount(); ++i) {
            Timeline *tl = anim->timeline(i);
            if (!objects.contains(tl->object()))
                continue;
            // The references first, then the keys they pointed at (undone, the
            // keys are back before the references look for them), then the
            // empty timeline: saving would drop it outside the undo stack, and
            // reading gives keys without references references again.
            for (int m = 0; m < anim->mainlineKeyCount(); ++m) {
                MainlineKey *mk = anim->mainlineKey(m);
                if (mk->refFromTimeline(tl))
                    mDocument->pushUndo(new RemoveRefCommand(mk, tl));
            }
            for (int k = tl->keyCount() - 1; k >= 0; --k)
                mDocument->pushUndo(new RemoveTimelineKeyCommand(tl->key(k)));
            mDocument->pushUndo(new RemoveTimelineCommand(anim, i));
            --i;
        }
    }
    stack->endMacro();
    setSelectedProxies({});
    endUndoWithSelection(false, false, false);
}

void MorvaneCanvasScene::cloneSelection()
{
    Animation *anim = currentAnimation();
    Entity *entity = currentEntity();
    if (!anim || !entity || !undoStack() || mSelection.isEmpty())
        return;
    const int time = currentTime();
    const int sample = anim->sampleTime(time);
    // Everything the clones need is read before the first command changes the document.
    struct Source
    {
        int timeline;
        int parentTimeline;
        DisplayInfo world;
        DisplayInfo parentWorld;
    };
    QList<Source> sources;
    for (const ObjectGraphicsProxy *p : std::as_const(mSelection)) {
        const ObjectGraphicsProxy *parent = p->parentProxy();
        sources.append({p->timelineIndex(), parent ? parent->timelineIndex() : -1, p->displayInfo(),
                        parent ? parent->displayInfo() : DisplayInfo()});
    }
    startUndoWithSelection(tr("item(s) cloned"));
    QList<int> clones;
    for (const Source &source : std::as_const(sources)) {
        Timeline *tl = anim->timeline(source.timeline);
        const Object *object = tl ? tl->object() : nullptr;
        if (!object)
            continue;
        Object copy(*object);
        copy.setName(entity->uniqueObjectName(object->name()));
        mDocument->pushUndo(new AppendObjectCommand(entity, copy));
        mDocument->pushUndo(new AppendTimelineCommand(anim, entity->objectCount() - 1, copy.name()));
        Timeline *clone = anim->timeline(anim->timelineCount() - 1);
        if (!clone || clone->object() == nullptr || clone->object()->name() != copy.name())
            continue;
        DisplayInfo world = source.world;
        world.x += 10;
        world.y += 10;
        const DisplayInfo &pw = source.parentWorld;
        const bool mapped = source.parentTimeline >= 0 && pw.xScale != 0.0 && pw.yScale != 0.0
                            && pw.alpha != 0.0;
        const DisplayInfo local = mapped ? mapToParent(world, pw, inheritFlags(&copy)) : world;
        TimelineKey key = tl->keyFromTime(sample);
        DisplayInfo info = key.info();
        info.setPose(local);
        key.setInfo(info);
        key.setCachedTime(time);
        clone->createUndoFromKey(key);
        MainlineKey *mk = anim->mainlineKeyAtExactTime(time);
        ObjectRef *ref = mk ? mk->refFromTimeline(clone) : nullptr;
        ObjectRef *parentRef = mk && mapped ? mk->refFromTimeline(anim->timeline(source.parentTimeline))
                                            : nullptr;
        if (ref && parentRef && ref->key())
            mDocument->pushUndo(new ChangeParentingCommand(ref, parentRef, ref->key()->info()));
        clones.append(anim->timelineCount() - 1);
    }
    refresh();
    QList<ObjectGraphicsProxy *> selection;
    for (int index : std::as_const(clones)) {
        if (ObjectGraphicsProxy *p = instTimelineProxyFromIndex(index))
            selection.append(p);
    }
    setSelectedProxies(selection);
    endUndoWithSelection(false, false, false);
}

void MorvaneCanvasScene::moveSelectionInZOrder(ZMove move)
{
    Animation *anim = currentAnimation();
    ObjectGraphicsProxy *object = nullptr;
    for (ObjectGraphicsProxy *p : std::as_const(mSelection)) {
        if (!p->isBone())
            object = p;
    }
    MainlineKey *inForce = anim ? anim->mainlineKeyFromTime(currentTime(), false) : nullptr;
    ObjectRef *ref = inForce && object ? inForce->refFromTimeline(anim->timeline(object->timelineIndex()))
                                       : nullptr;
    if (!ref || ref->isBoneRef())
        return;
    const int from = inForce->indexOfZRef(ref);
    const int last = inForce->zRefCount() - 1;
    int to = from;
    switch (move) {
    case ZMove::Up: to = std::min(last, from + 1); break;
    case ZMove::Down: to = std::max(0, from - 1); break;
    case ZMove::ToTop: to = last; break;
    case ZMove::ToBottom: to = 0; break;
    }
    if (to == from)
        return;
    startUndoWithSelection(object->name() + tr(" moved in z-order"));
    MainlineKey *mk = mainlineKeyHere();
    mDocument->pushUndo(new ChangeZOrderCommand(mk, from, to));
    endUndoWithSelection(false, false, false);
}

void MorvaneCanvasScene::copyZOrderToOtherFrames()
{
    Animation *anim = currentAnimation();
    MainlineKey *inForce = anim ? anim->mainlineKeyFromTime(currentTime(), false) : nullptr;
    if (!inForce || !undoStack())
        return;
    auto *command = new OverwriteZOrderCommand(inForce);
    startUndoWithSelection(command->text());
    mDocument->pushUndo(command);
    endUndoWithSelection(false, false, false);
}

// Events go to the active tool.

void MorvaneCanvasScene::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (mTools && mTools->activeTool())
        mTools->activeTool()->mousePressed(event);
    else
        QGraphicsScene::mousePressEvent(event);
}

void MorvaneCanvasScene::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (mTools && mTools->activeTool())
        mTools->activeTool()->mouseMoved(event);
    else
        QGraphicsScene::mouseMoveEvent(event);
}

void MorvaneCanvasScene::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    if (mTools && mTools->activeTool())
        mTools->activeTool()->mouseReleased(event);
    else
        QGraphicsScene::mouseReleaseEvent(event);
}

void MorvaneCanvasScene::mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event)
{
    // A double click is a second press for the tools (cycling through items).
    mousePressEvent(event);
}

void MorvaneCanvasScene::keyPressEvent(QKeyEvent *event)
{
    if (mTools && mTools->activeTool())
        mTools->activeTool()->keyPressed(event);
    else
        QGraphicsScene::keyPressEvent(event);
}

void MorvaneCanvasScene::keyReleaseEvent(QKeyEvent *event)
{
    if (mTools && mTools->activeTool())
        mTools->activeTool()->keyReleased(event);
    else
        QGraphicsScene::keyReleaseEvent(event);
}

void MorvaneCanvasScene::hideSelectedObjects()
{
    for (const ObjectGraphicsProxy *p : std::as_const(mSelection))
        mHiddenTimelines.insert(p->timelineIndex());
    setSelectedProxies({});
    refresh(false);
}

void MorvaneCanvasScene::showSelectedObjects()
{
    for (const ObjectGraphicsProxy *p : std::as_const(mSelection))
        mHiddenTimelines.remove(p->timelineIndex());
    refresh(false);
}

void MorvaneCanvasScene::lockSelectedObjects()
{
    for (const ObjectGraphicsProxy *p : std::as_const(mSelection))
        mLockedTimelines.insert(p->timelineIndex());
    setSelectedProxies({});
    refresh(false);
}

void MorvaneCanvasScene::unlockSelectedObjects()
{
    for (const ObjectGraphicsProxy *p : std::as_const(mSelection))
        mLockedTimelines.remove(p->timelineIndex());
    refresh(false);
}

void MorvaneCanvasScene::setTimelineHidden(int timelineIndex, bool hidden)
{
    if (hidden == isTimelineHidden(timelineIndex))
        return;
    if (hidden) {
        mHiddenTimelines.insert(timelineIndex);
        QList<ObjectGraphicsProxy *> keep = mSelection;
        keep.removeAll(timelineProxy(timelineIndex));
        setSelectedProxies(keep);
    } else {
        mHiddenTimelines.remove(timelineIndex);
    }
    refresh(false);
}

void MorvaneCanvasScene::setTimelineLocked(int timelineIndex, bool locked)
{
    if (locked == isTimelineLocked(timelineIndex))
        return;
    if (locked) {
        mLockedTimelines.insert(timelineIndex);
        QList<ObjectGraphicsProxy *> keep = mSelection;
        keep.removeAll(timelineProxy(timelineIndex));
        setSelectedProxies(keep);
    } else {
        mLockedTimelines.remove(timelineIndex);
    }
    refresh(false);
}

void MorvaneCanvasScene::setAllObjsVisible()
{
    mHiddenTimelines.clear();
    refresh(false);
}

void MorvaneCanvasScene::setAllObjsUnlocked()
{
    mLockedTimelines.clear();
    refresh(false);
}

void MorvaneCanvasScene::onFps()
{
    if (mObjectMoved)
        refreshTransformBox();
}

void MorvaneCanvasScene::startStatusText(const QString &text)
{
    mStatusText = text;
    mStatusOpacity = 1.0;
    Q_EMIT statusTextChanged(text);
    mFadeTimer->start();
}

void MorvaneCanvasScene::on_fadingStatusTimer_timeout()
{
    mStatusOpacity -= 0.01;
    if (mStatusOpacity <= 0.0) {
        mFadeTimer->stop();
        mStatusText.clear();
        Q_EMIT statusTextChanged(QString());
    }
}

} // namespace Morvane
