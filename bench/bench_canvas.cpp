// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// One refresh plus one paint of the whole canvas into a 1600 x 1000 image at a
// random time, for a rig of 100 bones and N sprites of 64 x 64 (smooth
// sampling on), beside a bare loop that draws the same N images with QPainter
// at the same transforms. After the benchmarks, the ratio of the two is
// printed for each N; the aim is a scene within 1.5 times the bare loop.
// A drag frame (one mouse move of a drag of the root bone, which carries every
// other bone and sprite, through the select tool, and one paint) is timed and
// printed beside them, with the same aim.

#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "canvas/tools/selecttool.h"
#include "canvas/tools/toolmanager.h"
#include "canvas/transformcontrolitemgroup.h"
#include "eval/entityinstance.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QApplication>
#include <QGraphicsSceneMouseEvent>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>
#include <vector>

using namespace Morvane;

namespace {

constexpr int BoneCount = 100;
constexpr int KeyCount = 10;
constexpr int Length = 1000;
const QSize Target(1600, 1000);

struct CanvasRig
{
    explicit CanvasRig(int sprites)
    {
        QImage tile(64, 64, QImage::Format_ARGB32_Premultiplied);
        tile.fill(QColor(200, 120, 60, 220));
        tile.save(dir.path() + QStringLiteral("/tile.png"));
        document.setFilePath(dir.path() + QStringLiteral("/rig.rigx"));
        auto *folder = new Folder(QString());
        document.appendFolder(folder);
        auto *file = new File(QStringLiteral("tile.png"), 0.5, 0.5, File::Image, dir.path());
        folder->appendFile(file);

        QRandomGenerator random(2026);
        auto value = [&random](double lo, double hi) {
            return lo + (hi - lo) * random.generateDouble();
        };
        entity = new Entity(QStringLiteral("rig"));
        document.appendEntity(entity);
        animation = new Animation(QStringLiteral("anim"));
        animation->setLength(Length);
        entity->appendAnimation(animation);
        std::vector<int> times;
        for (int k = 0; k < KeyCount; ++k) {
            times.push_back(k * Length / KeyCount);
            animation->appendMainlineKey(new MainlineKey, times.back(), true, true);
        }
        std::vector<int> parents;
        std::vector<Timeline *> lines;
        for (int i = 0; i < BoneCount + sprites; ++i) {
            const bool bone = i < BoneCount;
            auto *object =
                new Object(QStringLiteral("o%1").arg(i), bone ? Object::Bone : Object::Sprite);
            entity->appendObject(object);
            lines.push_back(animation->appendObjectAsTimeline(object));
            parents.push_back(bone ? (i == 0 ? -1 : (i < 10 ? 0 : i - 10))
                                   : int(random.bounded(BoneCount)));
            for (int t : times) {
                DisplayInfo info;
                // Bones spread the rig over the canvas; sprites sit near their bone.
                info.x = bone ? value(-60, 60) : value(-30, 30);
                info.y = bone ? value(-40, 40) : value(-30, 30);
                info.angle = value(0, 360);
                info.alpha = value(0.6, 1);
                if (bone)
                    info.width = 40;
                auto *key = new TimelineKey(FileInfo(bone ? Address() : file->address()), info);
                key->setCachedTime(t);
                lines.back()->appendTimelineKey(key);
            }
        }
        for (int m = 0; m < animation->mainlineKeyCount(); ++m) {
            MainlineKey *mk = animation->mainlineKey(m);
            std::vector<BoneRef *> boneRefs;
            for (size_t i = 0; i < lines.size(); ++i) {
                ObjectRef *ref = mk->appendRef(lines[i], m);
                if (int(i) < BoneCount)
                    boneRefs.push_back(static_cast<BoneRef *>(ref));
                if (parents[i] >= 0)
                    ref->setParentRef(boneRefs[size_t(parents[i])]);
            }
        }
        for (int i = 0; i < 256; ++i)
            sampleTimes.push_back(int(random.bounded(Length + 1)));

        scene.setDocument(&document);
        scene.setSmoothTransform(true);
        scene.setToolManager(&tools);
        tools.registerTool(new SelectTool(&scene));
        pixmap = QPixmap::fromImage(file->image());

        // The bare loop's transforms: the same sprites at the same times.
        EntityInstance instance(entity, animation);
        for (int t : sampleTimes) {
            instance.setCurrentTime(t);
            instance.refresh();
            std::vector<std::pair<QTransform, double>> frame;
            for (const PoseItem &item : instance.pose().objects) {
                QTransform m;
                m.translate(item.x, item.y);
                m.rotate(item.angle);
                m.scale(item.xScale, item.yScale);
                frame.emplace_back(m, item.alpha);
            }
            transforms.push_back(std::move(frame));
        }
    }

    QTemporaryDir dir;
    RigxData document;
    Entity *entity = nullptr;
    Animation *animation = nullptr;
    MorvaneCanvasScene scene;
    ToolManager tools;
    QPixmap pixmap;
    bool dragging = false;
    QPointF dragStart;
    std::vector<int> sampleTimes;
    std::vector<std::vector<std::pair<QTransform, double>>> transforms;
};

CanvasRig &rig(int sprites)
{
    static std::map<int, std::unique_ptr<CanvasRig>> rigs;
    auto &r = rigs[sprites];
    if (!r)
        r = std::make_unique<CanvasRig>(sprites);
    return *r;
}

const QRectF Source(-400, -250, 800, 500); // scene area shown in the image

void sceneFrame(CanvasRig &r, QImage &image, size_t i)
{
    r.scene.setCurrentTime(r.sampleTimes[i % r.sampleTimes.size()]);
    image.fill(Qt::gray);
    QPainter painter(&image);
    r.scene.render(&painter, QRectF(QPointF(0, 0), Target), Source);
}

void sendMouse(MorvaneCanvasScene &scene, QEvent::Type type, const QPointF &pos)
{
    QGraphicsSceneMouseEvent event(type);
    event.setScenePos(pos);
    event.setButton(type == QEvent::GraphicsSceneMouseMove ? Qt::NoButton : Qt::LeftButton);
    event.setButtons(type == QEvent::GraphicsSceneMouseRelease ? Qt::NoButton : Qt::LeftButton);
    QCoreApplication::sendEvent(&scene, &event);
}

// One step of a drag of the root bone that never ends: the pointer goes round
// a circle; the document is not changed until the release.
void dragFrame(CanvasRig &r, QImage &image, size_t i)
{
    if (!r.dragging) {
        r.scene.setCurrentTime(r.sampleTimes[0]);
        // Everything else locked, so that the press picks the root bone.
        QList<ObjectGraphicsProxy *> others;
        for (int p = 1; p < r.scene.instTimelineProxyCount(); ++p)
            others.append(r.scene.instTimelineProxyFromIndex(p));
        r.scene.setSelectedProxies(others);
        r.scene.lockSelectedObjects();
        ObjectGraphicsProxy *root = r.scene.instTimelineProxyFromIndex(0);
        r.scene.setSelectedProxies({root});
        // On the bone's bar, away from the box's handles.
        for (double along = 0.1; along < 1.0; along += 0.05) {
            r.dragStart = root->mapToScene(QPointF(root->boneLength() * along, 0));
            if (r.scene.transformBox()->handleAt(r.dragStart) ==
                    TransformControlItemGroup::Inside &&
                r.scene.proxiesAt(r.dragStart).value(0) == root)
                break;
        }
        r.dragging = true;
        sendMouse(r.scene, QEvent::GraphicsSceneMousePress, r.dragStart);
    }
    const double a = double(i % 64) * (6.283185307179586 / 64);
    sendMouse(r.scene, QEvent::GraphicsSceneMouseMove,
              r.dragStart + QPointF(20 + 20 * std::cos(a), 20 * std::sin(a)));
    if (i == 0 && !r.scene.anyObjectMoved())
        std::fprintf(stderr, "the drag moved nothing\n");
    image.fill(Qt::gray);
    QPainter painter(&image);
    r.scene.render(&painter, QRectF(QPointF(0, 0), Target), Source);
}

void bareFrame(CanvasRig &r, QImage &image, size_t i)
{
    image.fill(Qt::gray);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QTransform view = QTransform::fromScale(Target.width() / Source.width(),
                                                  Target.height() / Source.height())
                                .translate(-Source.left(), -Source.top());
    const QRectF rect(-32, -32, 64, 64);
    for (const auto &[transform, alpha] : r.transforms[i % r.transforms.size()]) {
        painter.setTransform(transform * view);
        painter.setOpacity(alpha);
        painter.drawPixmap(rect, r.pixmap, QRectF(r.pixmap.rect()));
    }
}

void canvasScene(benchmark::State &state)
{
    CanvasRig &r = rig(int(state.range(0)));
    QImage image(Target, QImage::Format_ARGB32_Premultiplied);
    size_t i = 0;
    for (auto _ : state)
        sceneFrame(r, image, i++);
}

// The two halves of a scene frame apart: posing and updating the items, and painting.
void canvasRefreshOnly(benchmark::State &state)
{
    CanvasRig &r = rig(int(state.range(0)));
    size_t i = 0;
    for (auto _ : state)
        r.scene.setCurrentTime(r.sampleTimes[i++ % r.sampleTimes.size()]);
}

void canvasPaintOnly(benchmark::State &state)
{
    CanvasRig &r = rig(int(state.range(0)));
    QImage image(Target, QImage::Format_ARGB32_Premultiplied);
    r.scene.setCurrentTime(r.sampleTimes[0]);
    for (auto _ : state) {
        image.fill(Qt::gray);
        QPainter painter(&image);
        r.scene.render(&painter, QRectF(QPointF(0, 0), Target), Source);
    }
}

void canvasDragFrame(benchmark::State &state)
{
    CanvasRig &r = rig(int(state.range(0)));
    QImage image(Target, QImage::Format_ARGB32_Premultiplied);
    size_t i = 0;
    for (auto _ : state)
        dragFrame(r, image, i++);
}

void bareLoop(benchmark::State &state)
{
    CanvasRig &r = rig(int(state.range(0)));
    QImage image(Target, QImage::Format_ARGB32_Premultiplied);
    size_t i = 0;
    for (auto _ : state)
        bareFrame(r, image, i++);
}

double millisecondsPerFrame(void (*frame)(CanvasRig &, QImage &, size_t), CanvasRig &r)
{
    QImage image(Target, QImage::Format_ARGB32_Premultiplied);
    for (size_t i = 0; i < 10; ++i)
        frame(r, image, i);
    // Processor time of this process: on a shared, loaded machine the wall
    // clock mostly measures the other processes.
    const std::clock_t start = std::clock();
    constexpr int Frames = 100;
    for (size_t i = 0; i < Frames; ++i)
        frame(r, image, i);
    return double(std::clock() - start) * 1000.0 / CLOCKS_PER_SEC / Frames;
}

} // namespace

BENCHMARK(canvasScene)->Arg(200)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(canvasRefreshOnly)->Arg(200)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(canvasPaintOnly)->Arg(200)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(canvasDragFrame)->Arg(200)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(bareLoop)->Arg(200)->Arg(1000)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    for (int n : {200, 1000}) {
        CanvasRig &r = rig(n);
        const double scene = millisecondsPerFrame(sceneFrame, r);
        const double bare = millisecondsPerFrame(bareFrame, r);
        const double drag = millisecondsPerFrame(dragFrame, r);
        std::printf("N = %4d (processor time): scene %.2f ms, bare loop %.2f ms, ratio %.2f; "
                    "drag frame %.2f ms, ratio %.2f\n",
                    n, scene, bare, scene / bare, drag, drag / bare);
    }
    benchmark::Shutdown();
    return 0;
}
