// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/framerenderer.h"

#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "canvas/onionskinitem.h"
#include "eval/entityinstance.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/mainlinekey.h"
#include "model/object.h"

#include <QPainter>
#include <QTransform>

#include <cmath>

namespace Morvane {

namespace {

// Images and sub-entities are what an animation shows; bones, boxes, points,
// handles and guide lines are the editor's.
bool drawsInExport(const QGraphicsItem *item)
{
    if (item->type() != ObjectGraphicsProxy::Type)
        return false;
    const int type = static_cast<const ObjectGraphicsProxy *>(item)->objectType();
    return type == Object::Sprite || type == Object::SubEntity;
}

void unitePose(const EntityInstance &instance, const QTransform &world, QRectF &bounds, int depth)
{
    // Instances nest within the evaluator's own budget; this only guards the walk.
    if (depth > 64)
        return;
    for (const PoseItem &item : instance.pose().objects) {
        QTransform local;
        local.translate(item.x, item.y);
        local.rotate(item.angle);
        local.scale(item.xScale, item.yScale);
        const QTransform t = local * world;
        if (item.object && item.object->isSubEntity()) {
            const SubEntityInstance *sub = instance.subEntityForTimeline(item.timelineIndex);
            if (sub && sub->isShown())
                unitePose(*sub, t, bounds, depth + 1);
        } else if (item.shownFile && item.shownFile->isImage() && item.shownFile->width() > 0
                   && item.shownFile->height() > 0) {
            const double w = item.shownFile->width();
            const double h = item.shownFile->height();
            const QRectF r = t.mapRect(QRectF(-item.pivotX * w, -item.pivotY * h, w, h));
            bounds = bounds.isNull() ? r : bounds.united(r);
        }
    }
}

} // namespace

QRectF poseBounds(const EntityInstance &instance)
{
    QRectF bounds;
    unitePose(instance, QTransform(), bounds, 0);
    return bounds;
}

QRectF animationBounds(Entity *entity, Animation *animation, const QList<int> &times)
{
    if (!entity || !animation)
        return QRectF();
    EntityInstance instance(entity, animation);
    QRectF bounds;
    for (int t : times) {
        instance.setCurrentTime(t);
        instance.refresh();
        const QRectF r = poseBounds(instance);
        if (!r.isNull())
            bounds = bounds.isNull() ? r : bounds.united(r);
    }
    return bounds;
}

QRectF entityBounds(Entity *entity, int interval)
{
    QRectF bounds;
    if (!entity)
        return bounds;
    for (int a = 0; a < entity->animationCount(); ++a) {
        Animation *animation = entity->animation(a);
        QList<int> times;
        for (int k = 0; k < animation->mainlineKeyCount(); ++k)
            times.append(animation->mainlineKey(k)->currentTime());
        for (int t = 0; interval > 0 && t < animation->length(); t += interval)
            times.append(t);
        const QRectF r = animationBounds(entity, animation, times);
        if (!r.isNull())
            bounds = bounds.isNull() ? r : bounds.united(r);
    }
    return bounds;
}

FrameRenderer::FrameRenderer(MorvaneCanvasScene *scene, const ExportOptions &options)
    : mScene(scene)
    , mOptions(options)
{
    if (options.watermark.enabled && !options.watermark.fileName.isEmpty())
        mWatermark = QImage(options.watermark.fileName);
    mSavedTime = scene->currentTime();
    mSavedOnion = scene->onionSkin()->isOn();
    mSavedSmooth = scene->smoothTransform();
    for (const ObjectGraphicsProxy *p : scene->selectedProxies())
        mSavedSelection.append(p->timelineIndex());
    scene->clearProxySelection();
    scene->setHoveredProxy(nullptr);
    scene->onionSkin()->setOn(false);
    scene->setSmoothTransform(options.smooth && !options.pixelArt);
}

FrameRenderer::~FrameRenderer()
{
    mScene->setSmoothTransform(mSavedSmooth);
    mScene->onionSkin()->setOn(mSavedOnion);
    mScene->setCurrentTime(mSavedTime);
    QList<ObjectGraphicsProxy *> selection;
    for (int index : std::as_const(mSavedSelection)) {
        if (ObjectGraphicsProxy *p = mScene->instTimelineProxyFromIndex(index))
            selection.append(p);
    }
    mScene->setSelectedProxies(selection);
}

void FrameRenderer::setTime(int ms)
{
    mScene->setCurrentTime(ms);
}

QRectF FrameRenderer::frameBounds() const
{
    const EntityInstance *instance = mScene->entityInstance(-1);
    return instance ? poseBounds(*instance) : QRectF();
}

QRect FrameRenderer::pixelArtRect(const QRectF &rect)
{
    const QRectF r = rect.normalized();
    const int left = int(std::ceil(r.left()));
    const int top = int(std::ceil(r.top()));
    // The last whole column and row inside (inclusive, as QRect counts them).
    // A rectangle thinner than a pixel holds none: it comes out empty, not negative.
    const int right = qMax(left - 1, int(std::floor(r.right())) - 1);
    const int bottom = qMax(top - 1, int(std::floor(r.bottom())) - 1);
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

QImage FrameRenderer::exportPngToImage(QRectF target, QRectF source, const QColor &background)
{
    if (mOptions.pixelArt) {
        const QRect t = pixelArtRect(target);
        const QRect s = pixelArtRect(source);
        // Rectangles thinner than a pixel keep one pixel rather than vanish.
        target = QRectF(t.left(), t.top(), qMax(1, t.width()), qMax(1, t.height()));
        source = QRectF(s.left(), s.top(), qMax(1, s.width()), qMax(1, s.height()));
    }
    const QSize size(qMax(1, int(std::lround(target.right()))),
                     qMax(1, int(std::lround(target.bottom()))));
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(background.isValid() ? background : QColor(Qt::transparent));
    if (source.width() > 0 && source.height() > 0) {
        QList<QGraphicsItem *> hidden;
        const QList<QGraphicsItem *> items = mScene->items();
        for (QGraphicsItem *item : items) {
            if (!item->parentItem() && item->isVisible() && !drawsInExport(item)) {
                item->hide();
                hidden.append(item);
            }
        }
        QPainter painter(&image);
        const bool smooth = mOptions.smooth && !mOptions.pixelArt;
        painter.setRenderHint(QPainter::Antialiasing, smooth);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, smooth);
        mScene->render(&painter, target, source, Qt::IgnoreAspectRatio);
        painter.end();
        for (QGraphicsItem *item : std::as_const(hidden))
            item->show();
    }
    if (mOptions.watermark.enabled && !mWatermark.isNull())
        paintWatermarkOnImage(image, mWatermark, mOptions.watermark);
    return image;
}

QRect FrameRenderer::watermarkRect(const QSize &output, const QSize &mark,
                                   const WatermarkOptions &options)
{
    if (mark.isEmpty() || output.isEmpty())
        return QRect();
    const bool larger = mark.width() > output.width() || mark.height() > output.height();
    const bool smaller = mark.width() < output.width() && mark.height() < output.height();
    bool fit = false;
    switch (options.size) {
    case WatermarkSize::Keep:
        break;
    case WatermarkSize::Shrink:
        fit = larger;
        break;
    case WatermarkSize::Expand:
        fit = smaller;
        break;
    case WatermarkSize::ShrinkOrExpand:
        fit = true;
        break;
    }
    QSize size = mark;
    if (fit) {
        if (options.keepAspectRatio) {
            const double f = qMin(double(output.width()) / mark.width(),
                                  double(output.height()) / mark.height());
            size = QSize(qMax(1, int(std::lround(mark.width() * f))),
                         qMax(1, int(std::lround(mark.height() * f))));
        } else {
            size = output;
        }
    }
    // The grid cell: column and row 0 hug the left and top edges, 1 centres, 2
    // hugs the right and bottom edges.
    const int column = qBound(0, options.position, 8) % 3;
    const int row = qBound(0, options.position, 8) / 3;
    auto place = [](int cell, int outer, int inner) {
        return cell == 0 ? 0 : cell == 1 ? (outer - inner) / 2 : outer - inner;
    };
    return QRect(QPoint(place(column, output.width(), size.width()),
                        place(row, output.height(), size.height())),
                 size);
}

void FrameRenderer::paintWatermarkOnImage(QImage &image, const QImage &mark,
                                          const WatermarkOptions &options)
{
    const QRect r = watermarkRect(image.size(), mark.size(), options);
    if (r.isEmpty())
        return;
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(qBound(0, options.opacity, 100) / 100.0);
    painter.drawImage(r, mark);
}

} // namespace Morvane
