// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/transformcontrolitemgroup.h"

#include "canvas/canvascolors.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"

#include <QPainter>

#include <cmath>

namespace Morvane {

namespace {

constexpr double HandleSize = 6.0;     // screen pixels
constexpr double PivotSize = 10.0;     // screen pixels
constexpr double RotateReach = 24.0;   // screen pixels outside a corner
constexpr double HandleSlack = 2.0;    // screen pixels around a handle

} // namespace

TransformControlItemGroup::TransformControlItemGroup(MorvaneCanvasScene *scene)
    : mScene(scene)
{
    setZValue(1e9);
    hide();
}

double TransformControlItemGroup::unit() const
{
    return 1.0 / qMax(1e-4, mScene->zoom());
}

void TransformControlItemGroup::fitTo(const QList<ObjectGraphicsProxy *> &proxies)
{
    prepareGeometryChange();
    QRectF box;
    for (const ObjectGraphicsProxy *p : proxies) {
        if (!p->isShownInPose())
            continue;
        const QRectF r = p->mapToScene(p->localRect()).boundingRect();
        box = box.isNull() ? r : box.united(r);
    }
    mEmpty = proxies.isEmpty() || box.isNull();
    mBox = box;
    if (!mPivotByHand) {
        if (proxies.size() == 1)
            mPivot = QPointF(proxies.first()->displayInfo().x, proxies.first()->displayInfo().y);
        else
            mPivot = box.center();
    }
    if (proxies.isEmpty())
        mPivotByHand = false;
    setVisible(!mEmpty);
    update();
}

void TransformControlItemGroup::setPivot(const QPointF &pivot, bool byHand)
{
    prepareGeometryChange();
    mPivot = pivot;
    mPivotByHand = byHand;
    update();
}

QPointF TransformControlItemGroup::handlePosition(int handle) const
{
    const QRectF &b = mBox;
    switch (handle) {
    case 0: return b.topLeft();
    case 1: return QPointF(b.center().x(), b.top());
    case 2: return b.topRight();
    case 3: return QPointF(b.right(), b.center().y());
    case 4: return b.bottomRight();
    case 5: return QPointF(b.center().x(), b.bottom());
    case 6: return b.bottomLeft();
    case 7: return QPointF(b.left(), b.center().y());
    default: return mPivot;
    }
}

int TransformControlItemGroup::handleAt(const QPointF &scenePos) const
{
    if (mEmpty)
        return None;
    const double u = unit();
    if (QLineF(scenePos, mPivot).length() <= (PivotSize / 2 + HandleSlack) * u)
        return Pivot;
    const double half = (HandleSize / 2 + HandleSlack) * u;
    for (int i = 0; i < 8; ++i) {
        const QPointF h = handlePosition(i);
        if (std::abs(scenePos.x() - h.x()) <= half && std::abs(scenePos.y() - h.y()) <= half)
            return i;
    }
    if (mBox.contains(scenePos))
        return Inside;
    for (int i : {0, 2, 4, 6}) {
        if (QLineF(scenePos, handlePosition(i)).length() <= RotateReach * u)
            return Rotate;
    }
    return None;
}

void TransformControlItemGroup::setActiveHandle(int handle)
{
    mActive = handle;
    update();
}

QRectF TransformControlItemGroup::boundingRect() const
{
    const double m = (RotateReach + PivotSize) * unit();
    return mBox.united(QRectF(mPivot, QSizeF(0, 0))).adjusted(-m, -m, m, m);
}

void TransformControlItemGroup::paint(QPainter *painter, const QStyleOptionGraphicsItem *,
                                      QWidget *)
{
    if (mEmpty)
        return;
    const double u = unit();
    painter->setRenderHint(QPainter::Antialiasing, false);
    QPen pen(Qt::black, u, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    painter->setPen(pen);
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(mBox);
    QPen dash(CanvasColors::selection(), u, Qt::DashLine, Qt::SquareCap, Qt::BevelJoin);
    painter->setPen(dash);
    painter->drawRect(mBox);

    painter->setPen(pen);
    for (int i = 0; i < 8; ++i) {
        const QPointF h = handlePosition(i);
        painter->setBrush(i == mActive ? CanvasColors::selection() : QColor(Qt::white));
        painter->drawRect(QRectF(h.x() - HandleSize / 2 * u, h.y() - HandleSize / 2 * u,
                                 HandleSize * u, HandleSize * u));
    }
    painter->setRenderHint(QPainter::Antialiasing, true);
    painter->setBrush(Qt::NoBrush);
    const double r = PivotSize / 2 * u;
    painter->drawEllipse(mPivot, r, r);
    painter->drawLine(mPivot - QPointF(r * 1.6, 0), mPivot + QPointF(r * 1.6, 0));
    painter->drawLine(mPivot - QPointF(0, r * 1.6), mPivot + QPointF(0, r * 1.6));
}

} // namespace Morvane
