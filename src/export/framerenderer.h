// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "export/exportoptions.h"

#include <QColor>
#include <QImage>
#include <QList>
#include <QRectF>
#include <QSet>

class QGraphicsItem;

namespace Morvane {

class Animation;
class Entity;
class EntityInstance;
class MorvaneCanvasScene;

/// Renders moments of the animation a canvas scene shows into images: only
/// what the animation draws (images and sub-entities), never bones, handles,
/// the onion skin or the selection.
///
/// While a renderer lives it owns the scene's look: it clears the selection,
/// switches the onion skin off and sets smoothing as the options ask; the
/// destructor gives back the onion skin, smoothing, selection and time. The
/// scene is not owned and must outlive the renderer.
class FrameRenderer
{
public:
    FrameRenderer(MorvaneCanvasScene *scene, const ExportOptions &options);
    ~FrameRenderer();
    FrameRenderer(const FrameRenderer &) = delete;
    FrameRenderer &operator=(const FrameRenderer &) = delete;

    MorvaneCanvasScene *scene() const { return mScene; }
    /// Shows the scene's animation at `ms`.
    void setTime(int ms);

    /// The canvas rectangle the shown moment draws on; empty when it draws nothing.
    QRectF frameBounds() const;

    /// Renders the scene from `source` (canvas coordinates) into `target`
    /// (pixels of an image of the target's size, ignoring aspect ratio) over
    /// `background` (transparent for none), then paints the watermark.
    QImage exportPngToImage(QRectF target, QRectF source, const QColor &background);

    /// The largest rectangle of whole pixels inside `rect`.
    static QRect pixelArtRect(const QRectF &rect);
    /// Where a watermark of `mark` pixels lands on an output of `output` pixels.
    static QRect watermarkRect(const QSize &output, const QSize &mark, const WatermarkOptions &options);
    static void paintWatermarkOnImage(QImage &image, const QImage &mark,
                                      const WatermarkOptions &options);

private:
    MorvaneCanvasScene *mScene;
    ExportOptions mOptions;
    QImage mWatermark;
    int mSavedTime = 0;
    bool mSavedOnion = false;
    bool mSavedSmooth = true;
    QList<int> mSavedSelection;
};

/// The canvas rectangle an instance's present pose draws on (images and
/// sub-entities, composed); empty when it draws nothing.
QRectF poseBounds(const EntityInstance &instance);

/// The union of the rectangles `animation` of `entity` draws on at `times`
/// (milliseconds); the animation's own frames when `times` is empty.
QRectF animationBounds(Entity *entity, Animation *animation, const QList<int> &times);

/// The union over every animation of `entity`, sampled at its mainline keys
/// and every `interval` milliseconds.
QRectF entityBounds(Entity *entity, int interval);

} // namespace Morvane
