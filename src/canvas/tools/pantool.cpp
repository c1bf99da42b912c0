// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/tools/pantool.h"

#include <QGraphicsSceneMouseEvent>
#include <QGraphicsView>
#include <QScrollBar>

namespace Morvane {

namespace {

QGraphicsView *viewOf(QGraphicsSceneMouseEvent *event)
{
    QWidget *viewport = event->widget();
    return viewport ? qobject_cast<QGraphicsView *>(viewport->parentWidget()) : nullptr;
}

} // namespace

PanTool::PanTool(MorvaneCanvasScene *scene, QObject *parent)
    : AbstractTool(tr("Pan"), QKeySequence(Qt::Key_2), scene, parent)
{
    setCursor(Qt::OpenHandCursor);
}

void PanTool::mousePressed(QGraphicsSceneMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    mDragging = true;
    mLast = event->screenPos();
    setCursor(Qt::ClosedHandCursor);
}

void PanTool::mouseMoved(QGraphicsSceneMouseEvent *event)
{
    QGraphicsView *view = viewOf(event);
    if (!mDragging || !view)
        return;
    const QPoint d = event->screenPos() - mLast;
    mLast = event->screenPos();
    view->horizontalScrollBar()->setValue(view->horizontalScrollBar()->value() - d.x());
    view->verticalScrollBar()->setValue(view->verticalScrollBar()->value() - d.y());
}

void PanTool::mouseReleased(QGraphicsSceneMouseEvent *)
{
    mDragging = false;
    setCursor(Qt::OpenHandCursor);
}

} // namespace Morvane
