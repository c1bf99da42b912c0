// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QGraphicsView>

namespace Morvane {

class MorvaneCanvasScene;

/// The canvas view: zoom as a whole percentage from 1 to 10000 (100 = one
/// scene unit per pixel), wheel zoom that eases from tiny steps at 1 % to
/// large ones at 10000 %, and panning with the middle button or Space+drag.
class MorvaneGraphicsView : public QGraphicsView
{
    Q_OBJECT

public:
    explicit MorvaneGraphicsView(MorvaneCanvasScene *scene, QWidget *parent = nullptr);

    int zoomPercent() const { return mZoom; }
    /// Clamped to 1..10000.
    void setZoom(int percent);
    /// The percentage at which `rect` just fits the viewport.
    int zoomForRect(const QRectF &rect) const;
    /// The percentage one wheel notch leads to from `percent` (`in` zooms in;
    /// `fast` is Control held).
    static int wheelZoom(int percent, bool in, bool fast);

public Q_SLOTS:
    void zoomIn();
    void zoomOut();
    void restoreZoom();
    void centerView();

Q_SIGNALS:
    void zoomChanged(double factor);
    void intZoomChanged(int percent);

protected:
    void wheelEvent(QWheelEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;

private:
    MorvaneCanvasScene *mScene;
    int mZoom = 100;
    int mWheelRest = 0; // wheel turn not yet making a notch, eighths of a degree
    bool mSpaceHeld = false;
    bool mPanning = false;
    QPoint mPanLast;
};

} // namespace Morvane
