// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/onionskinitem.h"

#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "eval/entityinstance.h"
#include "model/animation.h"
#include "model/file.h"
#include "model/mainlinekey.h"
#include "model/object.h"

#include <QPainter>
#include <QSet>

namespace Morvane {

OnionSkinItem::OnionSkinItem(MorvaneCanvasScene *scene)
    : mScene(scene)
{
    setZValue(-1e6);
    setAcceptedMouseButtons(Qt::NoButton);
    setAcceptHoverEvents(false);
}

void OnionSkinItem::setOn(bool on)
{
    mOn = on;
    refresh();
}

void OnionSkinItem::setMode(Mode mode)
{
    mMode = mode;
    refresh();
}

void OnionSkinItem::setCounts(int before, int after)
{
    mBefore = qBound(0, before, 20);
    mAfter = qBound(0, after, 20);
    refresh();
}

void OnionSkinItem::setSelectionOnly(bool on)
{
    mSelectionOnly = on;
    refresh();
}

void OnionSkinItem::collectTimes()
{
    mEarlier.clear();
    mLater.clear();
    const Animation *anim = mScene->currentAnimation();
    if (!anim || anim->length() <= 0)
        return;
    const int now = mScene->currentTime();
    const int length = anim->length();
    if (mMode == Mode::Keys) {
        QList<int> times;
        for (int i = 0; i < anim->mainlineKeyCount(); ++i)
            times.append(anim->mainlineKey(i)->currentTime());
        for (int i = int(times.size()) - 1; i >= 0 && mEarlier.size() < mBefore; --i) {
            if (times[i] < now)
                mEarlier.append(times[i]);
        }
        for (int i = 0; i < times.size() && mLater.size() < mAfter; ++i) {
            if (times[i] > now)
                mLater.append(times[i]);
        }
        return;
    }
    const int step = anim->snappingInterval() > 0 ? anim->snappingInterval() : 100;
    auto place = [&](int t, QList<int> &into) {
        if (anim->isLooping())
            t = ((t % length) + length) % length;
        if (t >= 0 && t <= length && t != now && !mEarlier.contains(t) && !mLater.contains(t))
            into.append(t);
    };
    for (int k = 1; k <= mBefore; ++k)
        place(now - k * step, mEarlier);
    for (int k = 1; k <= mAfter; ++k)
        place(now + k * step, mLater);
}

void OnionSkinItem::refresh()
{
    prepareGeometryChange();
    mImages.clear();
    mBounds = QRectF();
    if (!mOn || !mScene->currentAnimation() || !mScene->entityInstance()) {
        update();
        return;
    }
    collectTimes();
    QSet<int> selected;
    for (const ObjectGraphicsProxy *p : mScene->selectedProxies())
        selected.insert(p->timelineIndex());

    EntityInstance ghost(mScene->currentEntity(), mScene->currentAnimation());
    auto pose = [&](int time, int distance, bool earlier) {
        ghost.setCurrentTime(time);
        ghost.refresh();
        for (const PoseItem &item : ghost.pose().objects) {
            if (mSelectionOnly && !selected.contains(item.timelineIndex))
                continue;
            if (!item.shownFile || !item.shownFile->isImage())
                continue;
            const QImage &image = item.shownFile->image();
            Image ghostImage;
            ghostImage.transform.translate(item.x, item.y);
            ghostImage.transform.rotate(item.angle);
            ghostImage.transform.scale(item.xScale, item.yScale);
            ghostImage.rect = QRectF(-item.pivotX * image.width(), -item.pivotY * image.height(),
                                     image.width(), image.height());
            ghostImage.file = item.shownFile->name();
            ghostImage.image = image;
            // Fainter with distance.
            ghostImage.opacity = item.alpha * 0.5 / distance;
            ghostImage.earlier = earlier;
            mBounds = mBounds.united(ghostImage.transform.mapRect(ghostImage.rect));
            mImages.push_back(ghostImage);
        }
    };
    // The farthest first, so the nearest copies lie on top.
    for (int i = int(mEarlier.size()) - 1; i >= 0; --i)
        pose(mEarlier[i], i + 1, true);
    for (int i = int(mLater.size()) - 1; i >= 0; --i)
        pose(mLater[i], i + 1, false);
    update();
}

const QPixmap &OnionSkinItem::tinted(const Image &ghost)
{
    const bool earlier = ghost.earlier;
    const QString key = ghost.file + (earlier ? QLatin1String("|earlier") : QLatin1String("|later"));
    auto it = mTinted.find(key);
    if (it != mTinted.end())
        return it.value();
    QImage image = ghost.image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter p(&image);
    p.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    p.fillRect(image.rect(), earlier ? QColor(230, 40, 40, 170) : QColor(40, 190, 60, 170));
    p.end();
    return mTinted.insert(key, QPixmap::fromImage(image)).value();
}

QRectF OnionSkinItem::boundingRect() const
{
    return mBounds;
}

void OnionSkinItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->setRenderHint(QPainter::SmoothPixmapTransform, mScene->smoothTransform());
    const QTransform base = painter->transform();
    for (const Image &image : mImages) {
        const QPixmap &pixmap = tinted(image);
        if (pixmap.isNull())
            continue;
        painter->setTransform(image.transform * base);
        painter->setOpacity(image.opacity);
        painter->drawPixmap(image.rect, pixmap, QRectF(pixmap.rect()));
    }
    painter->setTransform(base);
    painter->setOpacity(1.0);
}

} // namespace Morvane
