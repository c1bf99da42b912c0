// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/tools/selecttool.h"

#include "canvas/canvascolors.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "canvas/transformcontrolitemgroup.h"
#include "canvas/twoboneik.h"

#include <QGraphicsRectItem>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>
#include <QtMath>

#include <cmath>

namespace Morvane {

namespace {

constexpr double DragThreshold = 3.0; // screen pixels before a press becomes a drag
constexpr double BoneEndReach = 8.0;  // screen pixels around a bone's end for IK

QPointF boneEnd(const ObjectGraphicsProxy *bone)
{
    return bone->mapToScene(QPointF(bone->boneLength(), 0));
}

} // namespace

SelectTool::SelectTool(MorvaneCanvasScene *scene, QObject *parent)
    : AbstractTool(tr("Select and Transform"), QKeySequence(Qt::Key_1), scene, parent)
{
    setCursor(Qt::ArrowCursor);
}

SelectTool::~SelectTool()
{
    delete mRubber;
}

void SelectTool::deactivate()
{
    cancelGesture();
}

QList<ObjectGraphicsProxy *> SelectTool::topLevelSelection() const
{
    // A selected item under a selected parent follows the parent: moving it
    // too would move it twice.
    const QList<ObjectGraphicsProxy *> selection = scene()->selectedProxies();
    QList<ObjectGraphicsProxy *> top;
    for (ObjectGraphicsProxy *p : selection) {
        bool underSelected = false;
        int guard = 0;
        for (ObjectGraphicsProxy *a = p->parentProxy(); a && guard < 256; a = a->parentProxy(), ++guard) {
            if (selection.contains(a)) {
                underSelected = true;
                break;
            }
        }
        if (!underSelected)
            top.append(p);
    }
    return top;
}

void SelectTool::rememberStart()
{
    mStart.clear();
    for (ObjectGraphicsProxy *p : scene()->selectedProxies())
        mStart.insert(p, p->displayInfo());
    const TransformControlItemGroup *box = scene()->transformBox();
    mStartBox = box->box();
    mStartPivot = box->pivot();
}

void SelectTool::mousePressed(QGraphicsSceneMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    MorvaneCanvasScene *s = scene();
    const QPointF pos = event->scenePos();
    mPressPos = pos;
    const Qt::KeyboardModifiers mods = event->modifiers();
    mPressModifiers = mods;

    const int handle = s->selectedProxies().isEmpty() ? int(TransformControlItemGroup::None)
                                                      : s->transformBox()->handleAt(pos);
    // Handles come before items, also with Alt held (Alt there ignores the
    // pivot; on an item it cycles).
    if (!(mods & Qt::ControlModifier)
        && (TransformControlItemGroup::isSizeHandle(handle)
            || handle == TransformControlItemGroup::Rotate
            || handle == TransformControlItemGroup::Pivot)) {
        mHandle = handle;
        rememberStart();
        if (handle == TransformControlItemGroup::Rotate) {
            mMode = Mode::Rotate;
            mStartAngle = qRadiansToDegrees(std::atan2(pos.y() - mStartPivot.y(),
                                                       pos.x() - mStartPivot.x()));
        } else {
            mMode = handle == TransformControlItemGroup::Pivot ? Mode::Pivot : Mode::Scale;
        }
        s->transformBox()->setActiveHandle(handle);
        return;
    }

    if ((mods & Qt::ShiftModifier) && !(mods & (Qt::ControlModifier | Qt::AltModifier))) {
        if (ObjectGraphicsProxy *bone = boneEndAt(pos)) {
            mIkBone = bone;
            mMode = Mode::Ik;
            s->setSelectedProxies({bone});
            rememberStart();
            if (ObjectGraphicsProxy *parent = bone->parentProxy())
                mStart.insert(parent, parent->displayInfo());
            s->startStatusText(tr("Inverse kinematics: %1 follows the pointer").arg(bone->name()));
            return;
        }
    }

    const QList<ObjectGraphicsProxy *> under = s->proxiesAt(pos);
    const double slop = DragThreshold / s->zoom();
    const bool samePlace = QLineF(pos, mLastClickPos).length() <= slop;
    mLastClickPos = pos;
    if (under.isEmpty()) {
        if (!(mods & Qt::ControlModifier))
            s->clearProxySelection();
        mMode = Mode::Rubber;
        if (!mRubber) {
            mRubber = new QGraphicsRectItem;
            mRubber->setPen(QPen(CanvasColors::selection(), 0, Qt::DashLine));
            mRubber->setZValue(1e9 + 1);
        }
        if (!mRubber->scene())
            s->addItem(mRubber);
        mRubber->setRect(QRectF(pos, pos));
        mRubber->show();
        return;
    }
    if (mods & Qt::ControlModifier) {
        QList<ObjectGraphicsProxy *> selection = s->selectedProxies();
        if (!selection.removeOne(under.first()))
            selection.append(under.first());
        s->setSelectedProxies(selection);
        mMode = Mode::Idle;
        return;
    }
    const QList<ObjectGraphicsProxy *> selection = s->selectedProxies();
    ObjectGraphicsProxy *pick = under.first();
    if ((mods & Qt::AltModifier) || (samePlace && selection.size() == 1 && under.contains(selection.first()))) {
        // Cycle down through the items under the pointer.
        const int at = selection.size() == 1 ? int(under.indexOf(selection.first())) : -1;
        pick = under.at((at + 1) % under.size());
        s->setSelectedProxies({pick});
        mMode = Mode::Pending;
    } else if (!selection.contains(pick)) {
        s->setSelectedProxies({pick});
        mMode = Mode::Pending;
    } else {
        mMode = Mode::Pending; // drag the whole selection
    }
    rememberStart();
}

void SelectTool::mouseMoved(QGraphicsSceneMouseEvent *event)
{
    MorvaneCanvasScene *s = scene();
    const QPointF pos = event->scenePos();
    if (mMode == Mode::Idle) {
        const QList<ObjectGraphicsProxy *> under = s->proxiesAt(pos);
        s->setHoveredProxy(under.isEmpty() ? nullptr : under.first());
        const int handle = s->selectedProxies().isEmpty() ? int(TransformControlItemGroup::None)
                                                          : s->transformBox()->handleAt(pos);
        if (handle == TransformControlItemGroup::Rotate)
            setCursor(s->rotateCursor());
        else if (TransformControlItemGroup::isSizeHandle(handle))
            setCursor(handle % 4 == 0 ? Qt::SizeFDiagCursor
                      : handle % 4 == 2 ? Qt::SizeBDiagCursor
                      : handle % 4 == 1 ? Qt::SizeVerCursor
                                        : Qt::SizeHorCursor);
        else if (handle == TransformControlItemGroup::Pivot)
            setCursor(Qt::CrossCursor);
        else
            setCursor(Qt::ArrowCursor);
        return;
    }
    switch (mMode) {
    case Mode::Pending:
        if (QLineF(pos, mPressPos).length() * s->zoom() < DragThreshold)
            return;
        mMode = Mode::Move;
        Q_FALLTHROUGH();
    case Mode::Move:
        applyMove(pos - mPressPos);
        break;
    case Mode::Scale:
        // Modifiers held at the press stay in force for the whole drag.
        applyScale(pos, event->modifiers() | mPressModifiers);
        break;
    case Mode::Rotate:
        applyRotate(pos);
        break;
    case Mode::Pivot:
        s->transformBox()->setPivot(pos, true);
        break;
    case Mode::Rubber:
        mRubber->setRect(QRectF(mPressPos, pos).normalized());
        break;
    case Mode::Ik:
        applyIk(pos);
        break;
    default:
        break;
    }
}

void SelectTool::applyMove(const QPointF &delta)
{
    for (ObjectGraphicsProxy *p : topLevelSelection()) {
        DisplayInfo info = mStart.value(p, p->displayInfo());
        info.x += delta.x();
        info.y += delta.y();
        p->setDisplayInfo(info);
    }
    scene()->setObjectMoved(true);
    scene()->refreshTransformBox();
}

void SelectTool::applyScale(const QPointF &pos, Qt::KeyboardModifiers modifiers)
{
    const QRectF &r = mStartBox;
    if (r.width() <= 0 || r.height() <= 0)
        return;
    const int h = mHandle;
    const bool left = h == 0 || h == 6 || h == 7;
    const bool right = h == 2 || h == 3 || h == 4;
    const bool top = h == 0 || h == 1 || h == 2;
    const bool bottom = h == 4 || h == 5 || h == 6;
    const bool ignorePivot = modifiers & Qt::AltModifier;
    // A pivot counts as inside on an axis when it keeps 0.1 from both edges.
    const double fx = (mStartPivot.x() - r.left()) / r.width();
    const double fy = (mStartPivot.y() - r.top()) / r.height();
    const bool insideX = !ignorePivot && fx >= 0.1 && fx <= 0.9;
    const bool insideY = !ignorePivot && fy >= 0.1 && fy <= 0.9;

    double sx = 1.0;
    double sy = 1.0;
    double ax = r.center().x();
    double ay = r.center().y();
    if (right) {
        ax = insideX ? mStartPivot.x() : r.left();
        sx = (pos.x() - ax) / (r.right() - ax);
    } else if (left) {
        ax = insideX ? mStartPivot.x() : r.right();
        sx = (ax - pos.x()) / (ax - r.left());
    }
    if (bottom) {
        ay = insideY ? mStartPivot.y() : r.top();
        sy = (pos.y() - ay) / (r.bottom() - ay);
    } else if (top) {
        ay = insideY ? mStartPivot.y() : r.bottom();
        sy = (ay - pos.y()) / (ay - r.top());
    }
    if (modifiers & Qt::ShiftModifier) {
        // Equal factors keep the aspect the box had when the drag began.
        if (!(top || bottom)) {
            sy = sx;
            ay = insideY ? mStartPivot.y() : r.center().y();
        } else if (!(left || right)) {
            sx = sy;
            ax = insideX ? mStartPivot.x() : r.center().x();
        } else {
            const double s = std::abs(sx) > std::abs(sy) ? sx : sy;
            sx = sy = s;
        }
    }
    if (!std::isfinite(sx) || !std::isfinite(sy))
        return;
    for (ObjectGraphicsProxy *p : topLevelSelection()) {
        DisplayInfo info = mStart.value(p, p->displayInfo());
        info.x = ax + (info.x - ax) * sx;
        info.y = ay + (info.y - ay) * sy;
        // The box's axes meet the item's own axes as its angle says.
        const double a = qDegreesToRadians(info.angle);
        const bool swapped = std::abs(std::sin(a)) > std::abs(std::cos(a));
        info.xScale *= swapped ? sy : sx;
        info.yScale *= swapped ? sx : sy;
        p->setDisplayInfo(info);
    }
    scene()->setObjectMoved(true);
    scene()->refreshTransformBox();
}

double SelectTool::snappedAngle(double angle, double parentAngle)
{
    const double whole = std::trunc(angle);
    const double base = std::trunc(parentAngle);
    const double steps = (whole - base) / 45.0;
    const double lower = std::floor(steps);
    // Ties go to the upper multiple.
    const double chosen = steps - lower >= 0.5 ? lower + 1 : lower;
    return DisplayInfo::normalizedAngle(base + chosen * 45.0);
}

void SelectTool::applyRotate(const QPointF &pos)
{
    const QPointF pivot = mStartPivot;
    const double now = qRadiansToDegrees(std::atan2(pos.y() - pivot.y(), pos.x() - pivot.x()));
    double delta = now - mStartAngle;
    const QList<ObjectGraphicsProxy *> top = topLevelSelection();
    if (scene()->rotationSnapping() && top.size() == 1) {
        // Snap the item's own angle, in steps from its parent's.
        const DisplayInfo start = mStart.value(top.first());
        const ObjectGraphicsProxy *parent = top.first()->parentProxy();
        const double target = snappedAngle(start.angle + delta,
                                           parent ? parent->displayInfo().angle : 0.0);
        delta = target - start.angle;
    }
    const double c = std::cos(qDegreesToRadians(delta));
    const double sn = std::sin(qDegreesToRadians(delta));
    for (ObjectGraphicsProxy *p : top) {
        DisplayInfo info = mStart.value(p, p->displayInfo());
        const double dx = info.x - pivot.x();
        const double dy = info.y - pivot.y();
        info.x = pivot.x() + dx * c - dy * sn;
        info.y = pivot.y() + dx * sn + dy * c;
        info.angle = DisplayInfo::normalizedAngle(info.angle + delta);
        p->setDisplayInfo(info);
    }
    scene()->setObjectMoved(true);
    scene()->refreshTransformBox();
}

ObjectGraphicsProxy *SelectTool::boneEndAt(const QPointF &scenePos) const
{
    const double reach = BoneEndReach / scene()->zoom();
    for (int i = scene()->instTimelineProxyCount() - 1; i >= 0; --i) {
        ObjectGraphicsProxy *p = scene()->instTimelineProxyFromIndex(i);
        if (p->isBone() && p->isShownInPose() && !p->isLocked()
            && QLineF(boneEnd(p), scenePos).length() <= reach)
            return p;
    }
    return nullptr;
}

bool SelectTool::isAlive(const ObjectGraphicsProxy *proxy) const
{
    // A refresh during the gesture (an undo from the keyboard) may have
    // replaced the scene's proxies.
    for (int i = 0; i < scene()->instTimelineProxyCount(); ++i) {
        if (scene()->instTimelineProxyFromIndex(i) == proxy)
            return proxy->isShownInPose();
    }
    return false;
}

void SelectTool::applyIk(const QPointF &pos)
{
    if (!isAlive(mIkBone) || (mIkBone->parentProxy() && !mStart.contains(mIkBone->parentProxy()))) {
        cancelGesture();
        return;
    }
    ObjectGraphicsProxy *bone = mIkBone;
    ObjectGraphicsProxy *parent = bone->parentProxy();
    if (parent && !parent->isBone())
        parent = nullptr;
    // Solve from the pose at the press, not from the last step.
    if (parent)
        parent->setDisplayInfo(mStart.value(parent));
    bone->setDisplayInfo(mStart.value(bone));
    const QPointF middle(bone->displayInfo().x, bone->displayInfo().y);
    if (parent) {
        const QPointF root(parent->displayInfo().x, parent->displayInfo().y);
        const TwoBoneTurns turns = solveTwoBoneIk(root, middle, boneEnd(bone), pos);
        DisplayInfo p = parent->displayInfo();
        p.angle = DisplayInfo::normalizedAngle(p.angle + turns.first);
        parent->setDisplayInfo(p);
        DisplayInfo b = bone->displayInfo();
        b.angle = DisplayInfo::normalizedAngle(b.angle + turns.second);
        bone->setDisplayInfo(b);
    } else {
        DisplayInfo b = bone->displayInfo();
        b.angle = DisplayInfo::normalizedAngle(b.angle + aimTurn(middle, boneEnd(bone), pos));
        bone->setDisplayInfo(b);
    }
    scene()->setObjectMoved(true);
    scene()->refreshTransformBox();
}

void SelectTool::mouseReleased(QGraphicsSceneMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    MorvaneCanvasScene *s = scene();
    const Mode mode = mMode;
    mMode = Mode::Idle;
    s->transformBox()->setActiveHandle(TransformControlItemGroup::None);
    switch (mode) {
    case Mode::Move:
        record(s->moveLabel());
        break;
    case Mode::Scale:
        record(tr("objects scaled"));
        break;
    case Mode::Rotate:
        record(tr("objects rotated"));
        break;
    case Mode::Ik: {
        if (!isAlive(mIkBone)) {
            mIkBone = nullptr;
            break;
        }
        QList<ObjectGraphicsProxy *> chain;
        if (ObjectGraphicsProxy *parent = mIkBone->parentProxy(); parent && parent->isBone())
            chain.append(parent);
        chain.append(mIkBone);
        record(mIkBone->name() + tr(" posed by inverse kinematics"), chain);
        mIkBone = nullptr;
        break;
    }
    case Mode::Pivot: {
        const QList<ObjectGraphicsProxy *> selection = s->selectedProxies();
        ObjectGraphicsProxy *p = selection.size() == 1 ? selection.first() : nullptr;
        if (p && !p->isBone() && p->localRect().width() > 0 && p->localRect().height() > 0) {
            // The image stays; its origin moves under the pointer.
            const QPointF local = p->mapFromScene(event->scenePos());
            const QRectF rect = p->localRect();
            DisplayInfo info = p->displayInfo();
            info.setPivotX(info.pivotX() + local.x() / rect.width(), false);
            info.setPivotY(info.pivotY() + local.y() / rect.height(), false);
            info.x = event->scenePos().x();
            info.y = event->scenePos().y();
            p->setDisplayInfo(info);
            p->setPivotChanged(true);
            s->transformBox()->setPivot(event->scenePos(), false);
            s->setObjectMoved(true);
            record(tr("pivot moved"));
        }
        break;
    }
    case Mode::Rubber: {
        const QRectF band = mRubber ? mRubber->rect() : QRectF();
        if (mRubber)
            mRubber->hide();
        QList<ObjectGraphicsProxy *> selection = (event->modifiers() & Qt::ControlModifier)
                                                     ? s->selectedProxies()
                                                     : QList<ObjectGraphicsProxy *>();
        if (band.width() > 0 || band.height() > 0) {
            QPainterPath bandPath;
            bandPath.addRect(band);
            for (int i = 0; i < s->instTimelineProxyCount(); ++i) {
                ObjectGraphicsProxy *p = s->instTimelineProxyFromIndex(i);
                if (p->isShownInPose() && !p->isLocked() && !selection.contains(p)
                    && p->collidesWithPath(p->mapFromScene(bandPath), Qt::IntersectsItemShape))
                    selection.append(p);
            }
        }
        s->setSelectedProxies(selection);
        break;
    }
    default:
        break;
    }
    mStart.clear();
}

void SelectTool::record(const QString &label, const QList<ObjectGraphicsProxy *> &items)
{
    MorvaneCanvasScene *s = scene();
    if (!s->anyObjectMoved())
        return;
    QList<ObjectGraphicsProxy *> changed = items.isEmpty() ? topLevelSelection() : items;
    // Children that do not inherit what their parent's change was kept their
    // place on the canvas: keyed too, so that neighbouring keys keep theirs.
    for (qsizetype i = 0; i < changed.size(); ++i) {
        for (ObjectGraphicsProxy *child : changed[i]->keyNonInheritingProxies()) {
            if (!changed.contains(child))
                changed.append(child);
        }
    }
    s->startUndoWithSelection(label);
    for (ObjectGraphicsProxy *p : std::as_const(changed))
        s->createUndoForSprite(p);
    s->endUndoWithSelection(false, false, true);
    s->setObjectMoved(false);
}

void SelectTool::cancelGesture()
{
    if (mMode != Mode::Idle && !mStart.isEmpty()) {
        for (auto it = mStart.constBegin(); it != mStart.constEnd(); ++it) {
            if (isAlive(it.key()))
                it.key()->setDisplayInfo(it.value());
        }
    }
    mMode = Mode::Idle;
    mIkBone = nullptr;
    mStart.clear();
    if (mRubber)
        mRubber->hide();
    scene()->setObjectMoved(false);
    scene()->refresh();
}

void SelectTool::keyPressed(QKeyEvent *event)
{
    MorvaneCanvasScene *s = scene();
    const int key = event->key();
    if (key == Qt::Key_Escape) {
        if (mMode != Mode::Idle)
            cancelGesture();
        s->clearProxySelection();
        return;
    }
    if (key == Qt::Key_B) {
        if (!event->isAutoRepeat() && !s->selectedProxies().isEmpty()) {
            s->setBoneParentingMode(true);
            setStatusText(tr("Bone parenting: release B over the new parent bone"));
            s->startStatusText(statusText());
        }
        return;
    }
    if (key != Qt::Key_Left && key != Qt::Key_Right && key != Qt::Key_Up && key != Qt::Key_Down) {
        event->ignore();
        return;
    }
    if (s->selectedProxies().isEmpty() || mMode != Mode::Idle)
        return;
    const double step = (event->modifiers() & Qt::ShiftModifier) ? 10.0 : 1.0;
    const QPointF delta(key == Qt::Key_Left ? -step : key == Qt::Key_Right ? step : 0.0,
                        key == Qt::Key_Up ? -step : key == Qt::Key_Down ? step : 0.0);
    mNudging = true;
    for (ObjectGraphicsProxy *p : topLevelSelection()) {
        DisplayInfo info = p->displayInfo();
        info.x += delta.x();
        info.y += delta.y();
        p->setDisplayInfo(info);
    }
    s->setObjectMoved(true);
    s->refreshTransformBox();
}

void SelectTool::keyReleased(QKeyEvent *event)
{
    const int key = event->key();
    if (key == Qt::Key_B) {
        MorvaneCanvasScene *s = scene();
        if (event->isAutoRepeat() || !s->boneParentingMode())
            return;
        s->setBoneParentingMode(false);
        setStatusText(QString());
        ObjectGraphicsProxy *bone = s->hoveredProxy();
        if (bone && bone->isBone())
            s->reparentSelection(bone);
        return;
    }
    if (key != Qt::Key_Left && key != Qt::Key_Right && key != Qt::Key_Up && key != Qt::Key_Down) {
        event->ignore();
        return;
    }
    // Held keys repeat: the step is recorded once, on the real release.
    if (event->isAutoRepeat() || !mNudging || scene()->selectedProxies().isEmpty())
        return;
    mNudging = false;
    record(scene()->moveLabel());
}

} // namespace Morvane
