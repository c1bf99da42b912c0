// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "canvas/tools/abstracttool.h"

#include <QPoint>

namespace Morvane {

/// Moves the view with the left button (the middle button and Space+drag pan
/// with any tool).
class PanTool : public AbstractTool
{
    Q_OBJECT

public:
    explicit PanTool(MorvaneCanvasScene *scene, QObject *parent = nullptr);

    void mousePressed(QGraphicsSceneMouseEvent *event) override;
    void mouseMoved(QGraphicsSceneMouseEvent *event) override;
    void mouseReleased(QGraphicsSceneMouseEvent *event) override;

private:
    bool mDragging = false;
    QPoint mLast;
};

} // namespace Morvane
