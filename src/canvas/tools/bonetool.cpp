// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/tools/bonetool.h"

#include "canvas/canvascolors.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"

#include <QGraphicsLineItem>
#include <QGraphicsSceneMouseEvent>
#include <QPen>

namespace Morvane {

namespace {

constexpr double MinimumLength = 4.0; // screen pixels; shorter drags are clicks

} // namespace

BoneTool::BoneTool(MorvaneCanvasScene *scene, QObject *parent)
    : AbstractTool(tr("Bone"), QKeySequence(Qt::Key_3), scene, parent)
{
    setCursor(Qt::CrossCursor);
}

BoneTool::~BoneTool()
{
    delete mPreview;
}

void BoneTool::deactivate()
{
    mDragging = false;
    if (mPreview)
        mPreview->hide();
}

void BoneTool::mousePressed(QGraphicsSceneMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !scene()->currentAnimation()) {
        event->ignore();
        return;
    }
    mDragging = true;
    mFrom = event->scenePos();
    if (!mPreview) {
        mPreview = new QGraphicsLineItem;
        mPreview->setPen(QPen(CanvasColors::selection(), 0, Qt::DashLine));
        mPreview->setZValue(1e9 + 1);
    }
    if (!mPreview->scene())
        scene()->addItem(mPreview);
    mPreview->setLine(QLineF(mFrom, mFrom));
    mPreview->show();
}

void BoneTool::mouseMoved(QGraphicsSceneMouseEvent *event)
{
    if (mDragging && mPreview)
        mPreview->setLine(QLineF(mFrom, event->scenePos()));
}

void BoneTool::mouseReleased(QGraphicsSceneMouseEvent *event)
{
    if (!mDragging || event->button() != Qt::LeftButton)
        return;
    mDragging = false;
    if (mPreview)
        mPreview->hide();
    const QPointF to = event->scenePos();
    if (QLineF(mFrom, to).length() * scene()->zoom() < MinimumLength)
        return;
    ObjectGraphicsProxy *parent = nullptr;
    for (ObjectGraphicsProxy *p : scene()->selectedProxies()) {
        if (p->isBone())
            parent = p;
    }
    scene()->createBone(mFrom, to, parent);
}

} // namespace Morvane
