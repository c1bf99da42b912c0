// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// An animation of 200 timelines x 500 keys (100,000 keys). The "keys moved"
// record of a drag of 1,000 of them (five neighbouring keys in every
// timeline, 10 ms along), canvas refresh included, after an earlier drag and
// its undo and as the first record after the project opens; the aim is under
// 100 ms. After the benchmarks, 200 such drags are recorded on one undo stack,
// undone and redone, and the memory they keep is printed per step; the aim is
// under 100 MB above the document for all 200.

#include "canvas/morvanecanvasscene.h"
#include "model/animation.h"
#include "model/commands/animationcommands.h"
#include "model/keytimechangeinstructionset.h"
#include "model/rigxdata.h"
#include "model/timelinefilter.h"
#include "projectgenerator.h"
#include "timeline/keyedits.h"

#include <QApplication>
#include <QUndoStack>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <memory>

using namespace Morvane;

namespace {

constexpr int Timelines = 200;
constexpr int Keys = 500;
constexpr int Step = 40;        // the generator's key spacing, ms
constexpr int FirstMoved = 100; // the index of the first moved key of each timeline
constexpr int MovedPerLine = 5;

struct Rig
{
    Rig()
    {
        buildProject(document, ProjectShape{1, Timelines, Keys, false});
        document.setUndoStack(&stack);
        scene.setDocument(&document);
    }
    // Moves the five keys of every timeline from `offset` ms after their
    // first place to `offset + by`.
    bool drag(int offset, int by)
    {
        KeyTimeChangeInstructionSet set;
        for (int t = 0; t < Timelines; ++t) {
            for (int k = 0; k < MovedPerLine; ++k) {
                const int time = (FirstMoved + k) * Step + offset;
                set.appendKeyChange(t + 1, time, time + by);
            }
        }
        return KeyEdits::recordKeyMove(&scene, set, TimelineFilter(), nullptr, nullptr);
    }

    RigxData document;
    QUndoStack stack;
    MorvaneCanvasScene scene;
};

qsizetype heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return qsizetype(info.uordblks + info.hblkhd);
}

void BM_RecordKeysMoved(benchmark::State &state)
{
    Rig rig;
    for (auto _ : state) {
        if (!rig.drag(0, 10))
            state.SkipWithError("nothing moved");
        state.PauseTiming();
        rig.stack.undo();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_RecordKeysMoved)->Unit(benchmark::kMillisecond)->Iterations(10);

// The first record after a project opens, when no state of the animation has
// been taken yet.
void BM_FirstRecordKeysMoved(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto rig = std::make_unique<Rig>();
        state.ResumeTiming();
        if (!rig->drag(0, 10))
            state.SkipWithError("nothing moved");
        state.PauseTiming();
        rig.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_FirstRecordKeysMoved)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_UndoKeysMoved(benchmark::State &state)
{
    Rig rig;
    rig.drag(0, 10);
    for (auto _ : state) {
        rig.stack.undo();
        state.PauseTiming();
        rig.stack.redo();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_UndoKeysMoved)->Unit(benchmark::kMillisecond)->Iterations(10);

// Two hundred drags to and fro on one stack, as a long session would leave,
// then all undone and redone: a command takes its "after" state at its first
// undo, so only then does the stack hold everything it can.
void printMemoryOfRecordedDrags()
{
    malloc_trim(0);
    const qsizetype empty = heapInUse();
    Rig rig;
    malloc_trim(0);
    const qsizetype document = heapInUse() - empty;
    constexpr int Drags = 200;
    for (int i = 0; i < Drags; ++i)
        rig.drag(i % 2 == 0 ? 0 : 10, i % 2 == 0 ? 10 : -10);
    malloc_trim(0);
    const qsizetype recorded = heapInUse() - empty - document;
    rig.stack.setIndex(0);
    rig.stack.setIndex(rig.stack.count());
    malloc_trim(0);
    const qsizetype kept = heapInUse() - empty - document;
    qsizetype stored = 0;
    for (int i = 0; i < rig.stack.count(); ++i) {
        const QUndoCommand *macro = rig.stack.command(i);
        for (int c = 0; c < macro->childCount(); ++c) {
            if (const auto *change = dynamic_cast<const ChangeAnimationCommand *>(macro->child(c)))
                stored += change->storedBytes();
        }
    }
    std::printf("document of %d x %d keys: %.1f MB on the heap\n", Timelines, Keys,
                double(document) / 1e6);
    std::printf("%d recorded drags of %d keys: %.1f MB above the document as recorded; "
                "undone and redone, %.1f MB, %.0f bytes per step "
                "(states %.0f bytes per step, shared key values %.1f MB)\n",
                rig.stack.count(), Timelines * MovedPerLine, double(recorded) / 1e6,
                double(kept) / 1e6,
                double(kept) / Drags, double(stored) / Drags,
                double(ChangeAnimationCommand::sharedKeyBytes(&rig.document)) / 1e6);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    // The memory run takes a minute; profiling the benchmarks can leave it out.
    if (!qEnvironmentVariableIsSet("MORVANE_BENCH_NO_MEMORY"))
        printMemoryOfRecordedDrags();
    benchmark::Shutdown();
    return 0;
}
