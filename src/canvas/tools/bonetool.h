// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "canvas/tools/abstracttool.h"

#include <QPointF>

class QGraphicsLineItem;

namespace Morvane {

/// Draws new bones: a drag makes a bone from the press to the release, a
/// child of the selected bone when one is selected. The new bone is selected,
/// so the next drag continues the chain.
class BoneTool : public AbstractTool
{
    Q_OBJECT

public:
    explicit BoneTool(MorvaneCanvasScene *scene, QObject *parent = nullptr);
    ~BoneTool() override;

    void deactivate() override;
    void mousePressed(QGraphicsSceneMouseEvent *event) override;
    void mouseMoved(QGraphicsSceneMouseEvent *event) override;
    void mouseReleased(QGraphicsSceneMouseEvent *event) override;

private:
    bool mDragging = false;
    QPointF mFrom;
    QGraphicsLineItem *mPreview = nullptr;
};

} // namespace Morvane
