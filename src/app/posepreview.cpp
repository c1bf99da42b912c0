// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "posepreview.h"

#include "eval/entityinstance.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/object.h"
#include "model/rigxdata.h"

#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QGraphicsSimpleTextItem>
#include <QPainter>
#include <QTimer>

namespace Morvane {

// Draws the pose of an entity instance, sub-entities included, in canvas
// space (y down, angles clockwise).
class PosePreviewItem : public QGraphicsItem
{
public:
    void setInstance(EntityInstance *instance)
    {
        mInstance = instance;
        update();
    }

    QRectF boundingRect() const override { return QRectF(-1500, -1500, 3000, 3000); }

    void paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *) override
    {
        if (!mInstance)
            return;
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->setRenderHint(QPainter::Antialiasing);
        paintInstance(painter, *mInstance);
        paintBones(painter, mInstance->pose());
    }

private:
    static void applyTransform(QPainter *painter, const PoseItem &item)
    {
        painter->translate(item.x, item.y);
        painter->rotate(item.angle);
        painter->scale(item.xScale, item.yScale);
    }

    void paintInstance(QPainter *painter, const EntityInstance &instance)
    {
        const Pose &pose = instance.pose();
        std::vector<const PoseItem *> order;
        order.reserve(pose.objects.size());
        for (const PoseItem &item : pose.objects)
            order.push_back(&item);
        std::stable_sort(order.begin(), order.end(),
                         [](const PoseItem *a, const PoseItem *b) { return a->z < b->z; });

        for (const PoseItem *item : order) {
            if (item->object && item->object->isSubEntity()) {
                SubEntityInstance *sub = instance.subEntityForTimeline(item->timelineIndex);
                if (!sub || !sub->isShown())
                    continue;
                painter->save();
                applyTransform(painter, *item);
                painter->setOpacity(painter->opacity() * item->alpha);
                paintInstance(painter, *sub);
                painter->restore();
                continue;
            }
            if (!item->shownFile || !item->shownFile->isImage())
                continue;
            const QPixmap &pixmap = pixmapFor(item->shownFile);
            const double width = pixmap.width();
            const double height = pixmap.height();
            painter->save();
            applyTransform(painter, *item);
            painter->setOpacity(painter->opacity() * item->alpha);
            painter->drawPixmap(QRectF(-item->pivotX * width, -item->pivotY * height, width, height),
                                pixmap, pixmap.rect());
            painter->restore();
        }
    }

    static void paintBones(QPainter *painter, const Pose &pose)
    {
        painter->save();
        painter->setPen(QPen(QColor(255, 160, 47, 110), 0));
        painter->setBrush(QColor(255, 160, 47, 35));
        for (const PoseItem &bone : pose.bones) {
            const double length = (bone.width > 0 ? bone.width : 200.0) * bone.xScale;
            painter->save();
            painter->translate(bone.x, bone.y);
            painter->rotate(bone.angle);
            const QPointF shape[] = {{0, 0}, {length * 0.15, -3}, {length, 0}, {length * 0.15, 3}};
            painter->drawPolygon(shape, 4);
            painter->restore();
        }
        painter->restore();
    }

    const QPixmap &pixmapFor(const File *file)
    {
        auto it = mPixmaps.find(file);
        if (it == mPixmaps.end())
            it = mPixmaps.insert(file, QPixmap::fromImage(file->image()));
        return it.value();
    }

    EntityInstance *mInstance = nullptr;
    QHash<const File *, QPixmap> mPixmaps;

public:
    void clearPixmaps() { mPixmaps.clear(); }
};

PosePreview::PosePreview(QGraphicsScene *scene, QObject *parent)
    : QObject(parent)
    , mScene(scene)
    , mItem(new PosePreviewItem)
    , mLabel(new QGraphicsSimpleTextItem)
    , mTimer(new QTimer(this))
{
    mScene->addItem(mItem);
    mScene->addItem(mLabel);
    mLabel->setBrush(QColor(0x30, 0x30, 0x30));
    mTimer->setInterval(33);
    connect(mTimer, &QTimer::timeout, this, [this] {
        const int elapsed = int(mClock.restart());
        advance(qBound(1, elapsed, 100));
    });
}

PosePreview::~PosePreview()
{
    // The owner deletes the preview while the scene still exists.
    detachFromScene();
    delete mItem;
    delete mLabel;
}

void PosePreview::detachFromScene()
{
    mTimer->stop();
    mItem->setInstance(nullptr);
    if (mItem->scene())
        mScene->removeItem(mItem);
    if (mLabel->scene())
        mScene->removeItem(mLabel);
}

void PosePreview::setDocument(RigxData *document)
{
    mTimer->stop();
    mItem->setInstance(nullptr);
    mItem->clearPixmaps();
    mInstance.reset();
    mDocument = document;
    mAnimationIndex = 0;
    mPlayed = 0;
    Entity *entity = document && document->entityCount() > 0 ? document->entity(0) : nullptr;
    if (entity && entity->animationCount() > 0) {
        mInstance = std::make_unique<EntityInstance>(entity, entity->animation(0));
        mInstance->setCurrentTime(0);
        mInstance->refresh();
        mItem->setInstance(mInstance.get());
        mClock.start();
        mTimer->start();
    }
    updateLabel();
}

QString PosePreview::currentAnimationName() const
{
    return mInstance && mInstance->currentAnimation() ? mInstance->currentAnimation()->name()
                                                      : QString();
}

void PosePreview::showAnimation(int index)
{
    Entity *entity = mInstance ? mInstance->entity() : nullptr;
    if (!entity || entity->animationCount() == 0)
        return;
    mAnimationIndex = index % entity->animationCount();
    mInstance->setAnimation(entity, entity->animation(mAnimationIndex));
    mInstance->setCurrentTime(0);
    mInstance->refresh();
    mPlayed = 0;
    updateLabel();
}

void PosePreview::advance(int ms)
{
    if (!mInstance || !mInstance->currentAnimation())
        return;
    const int length = qMax(1, mInstance->currentAnimation()->length());
    mPlayed += ms;
    // Each animation plays for at least two seconds, then the next one.
    if (mPlayed >= qMax(2000, length) && mPlayed % length < ms) {
        showAnimation(mAnimationIndex + 1);
        mItem->update();
        return;
    }
    mInstance->advanceTime(ms);
    mInstance->setCurrentTime((mInstance->currentTime() + ms) % length);
    mInstance->refresh();
    mItem->update();
}

void PosePreview::updateLabel()
{
    const QString animation = currentAnimationName();
    if (animation.isEmpty()) {
        mLabel->setText(QString());
        return;
    }
    mLabel->setText(tr("Preview: %1 / %2").arg(mInstance->entity()->name(), animation));
    mLabel->setPos(-mLabel->boundingRect().width() / 2, 140);
}

} // namespace Morvane
