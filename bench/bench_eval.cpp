// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// Full-pose evaluation of a rig with 100 bones (a tree 10 deep) and 100 sprites,
// 30 keys per timeline, at random times. Each iteration poses the whole rig
// once, so the reported time is the cost of one pose; run with the default
// repetitions and read the median.

#include "eval/entityinstance.h"
#include "eval/poseevaluator.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QRandomGenerator>

#include <benchmark/benchmark.h>
#include <memory>
#include <vector>

using namespace Morvane;

namespace {

constexpr int BoneCount = 100;
constexpr int SpriteCount = 100;
constexpr int KeyCount = 30;
constexpr int Length = 1000;

enum class Curves { Linear, Mixed };

// How often the mainline has a key: at every key time, as the editor keeps
// it, or only at every fifth, so that most blends fall between mainline keys
// and take the pairs their references do not name.
enum class Mainline { EveryKey, Sparse };

struct BenchRig
{
    explicit BenchRig(Curves curves, Mainline mainline = Mainline::EveryKey)
    {
        QRandomGenerator random(2026);
        auto value = [&random](double lo, double hi) {
            return lo + (hi - lo) * random.generateDouble();
        };
        auto curve = [&]() {
            if (curves == Curves::Linear)
                return TweenInfo();
            const int pick = int(random.bounded(10));
            if (pick < 6)
                return TweenInfo();
            if (pick < 9)
                return TweenInfo(value(0, 1), value(0, 1));
            return TweenInfo::createBezier(value(0, 1), value(0, 1), value(0, 1), value(0, 1));
        };

        entity = new Entity(QStringLiteral("rig"));
        document.appendEntity(entity);
        animation = new Animation(QStringLiteral("anim"));
        animation->setLength(Length);
        entity->appendAnimation(animation);
        std::vector<int> times;
        const int mainlineEvery = mainline == Mainline::Sparse ? 5 : 1;
        for (int k = 0; k < KeyCount; ++k) {
            times.push_back(k * Length / KeyCount);
            if (k % mainlineEvery == 0)
                animation->appendMainlineKey(new MainlineKey, times.back(), true, true);
        }

        // Bones: a root, then rows of ten each hanging from the row above, so
        // the deepest bone is ten levels down.
        std::vector<int> parents;
        std::vector<Timeline *> lines;
        for (int i = 0; i < BoneCount + SpriteCount; ++i) {
            const bool bone = i < BoneCount;
            auto *object =
                new Object(QStringLiteral("o%1").arg(i), bone ? Object::Bone : Object::Sprite);
            entity->appendObject(object);
            lines.push_back(animation->appendObjectAsTimeline(object));
            if (bone)
                parents.push_back(i == 0 ? -1 : (i < 10 ? 0 : i - 10));
            else
                parents.push_back(int(random.bounded(BoneCount)));
            for (int t : times) {
                DisplayInfo info;
                info.x = value(-50, 50);
                info.y = value(-50, 50);
                info.angle = value(0, 360);
                info.xScale = value(0.8, 1.2);
                info.yScale = value(0.8, 1.2);
                info.alpha = value(0.5, 1);
                auto *key = new TimelineKey(FileInfo(), info, curve());
                key->setCachedTime(t);
                lines.back()->appendTimelineKey(key);
            }
        }
        for (int m = 0; m < animation->mainlineKeyCount(); ++m) {
            MainlineKey *mk = animation->mainlineKey(m);
            mk->setCurve(curve());
            std::vector<BoneRef *> boneRefs;
            for (int i = 0; i < BoneCount + SpriteCount; ++i) {
                ObjectRef *ref = mk->appendRef(lines[size_t(i)], m * mainlineEvery);
                if (i < BoneCount)
                    boneRefs.push_back(static_cast<BoneRef *>(ref));
                if (parents[size_t(i)] >= 0)
                    ref->setParentRef(boneRefs[size_t(parents[size_t(i)])]);
            }
        }

        for (int i = 0; i < 1024; ++i)
            sampleTimes.push_back(int(random.bounded(Length + 1)));
    }

    RigxData document;
    Entity *entity = nullptr;
    Animation *animation = nullptr;
    std::vector<int> sampleTimes;
};

BenchRig &rig(Curves curves, Mainline mainline = Mainline::EveryKey)
{
    static BenchRig linear(Curves::Linear);
    static BenchRig mixed(Curves::Mixed);
    static BenchRig sparse(Curves::Linear, Mainline::Sparse);
    if (mainline == Mainline::Sparse)
        return sparse;
    return curves == Curves::Linear ? linear : mixed;
}

void poseEvaluator(benchmark::State &state, Curves curves, Mainline mainline)
{
    const BenchRig &r = rig(curves, mainline);
    const PoseEvaluator evaluator(r.animation);
    Pose pose;
    evaluator.reserve(pose);
    size_t i = 0;
    for (auto _ : state) {
        evaluator.evaluate(r.sampleTimes[i++ & 1023], pose);
        benchmark::DoNotOptimize(pose.objects.data());
        benchmark::ClobberMemory();
    }
    state.counters["refs"] = double(pose.bones.size() + pose.objects.size());
}

// Two alternating times: the keys stay in the cache, as while the canvas
// plays a short stretch. The gap to poseEvaluator is memory traffic.
void warmCache(benchmark::State &state)
{
    const BenchRig &r = rig(Curves::Linear);
    const PoseEvaluator evaluator(r.animation);
    Pose pose;
    evaluator.reserve(pose);
    size_t i = 0;
    for (auto _ : state) {
        evaluator.evaluate(r.sampleTimes[(i++ & 1) * 7], pose);
        benchmark::DoNotOptimize(pose.objects.data());
        benchmark::ClobberMemory();
    }
}

// What the canvas calls: the instance re-poses itself at a new time.
void entityInstance(benchmark::State &state)
{
    BenchRig &r = rig(Curves::Linear);
    EntityInstance instance(r.entity, r.animation);
    instance.setCurrentTime(0);
    size_t i = 0;
    for (auto _ : state) {
        instance.setCurrentTime(r.sampleTimes[i++ & 1023]);
        benchmark::DoNotOptimize(instance.pose().objects.data());
    }
}

// The model's one-reference-at-a-time path, for comparison: each reference
// blends and composes its whole parent chain again.
void modelPath(benchmark::State &state)
{
    const BenchRig &r = rig(Curves::Linear);
    size_t i = 0;
    for (auto _ : state) {
        const int t = r.sampleTimes[i++ & 1023];
        const MainlineKey *mk = r.animation->mainlineKeyFromTime(t);
        const int sample = r.animation->sampleTime(t);
        for (int k = 0; k < mk->refCount(); ++k) {
            const DisplayInfo world = mk->ref(k)->unmappedInfo(sample);
            benchmark::DoNotOptimize(world.x);
        }
    }
}

// Building the flat arrays, done once after each edit of the animation.
void rebuild(benchmark::State &state)
{
    const BenchRig &r = rig(Curves::Linear);
    PoseEvaluator evaluator;
    for (auto _ : state) {
        evaluator.rebuild(r.animation);
        benchmark::DoNotOptimize(evaluator.maxBoneCount());
    }
}

} // namespace

BENCHMARK_CAPTURE(poseEvaluator, linear, Curves::Linear, Mainline::EveryKey)
    ->Repetitions(9)
    ->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(poseEvaluator, mixed_curves, Curves::Mixed, Mainline::EveryKey)
    ->Repetitions(9)
    ->ReportAggregatesOnly(true);
BENCHMARK_CAPTURE(poseEvaluator, sparse_mainline, Curves::Linear, Mainline::Sparse)
    ->Repetitions(9)
    ->ReportAggregatesOnly(true);
BENCHMARK(warmCache)->Repetitions(9)->ReportAggregatesOnly(true);
BENCHMARK(entityInstance)->Repetitions(9)->ReportAggregatesOnly(true);
BENCHMARK(modelPath)->Repetitions(3)->ReportAggregatesOnly(true);
BENCHMARK(rebuild)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
