// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// The timeline view on an animation of 200 timelines of 500 keys (100,000 key
// markers): building the rows, one repaint of a 1600 x 400 viewport at three
// zooms (the whole animation, ten and a hundred times closer), and one step
// of a drag of 1,000 selected keys (the move, the canvas following it and the
// repaint that shows it).
// Aims: repaint and drag step under 16 ms each.

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"
#include "projectgenerator.h"
#include "timeline/timelineview.h"

#include <QApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QUndoStack>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <memory>

using namespace Morvane;

namespace {

constexpr int Timelines = 200;
constexpr int Keys = 500;

struct Bench
{
    Bench()
        : document(&stack)
        , session(&scene)
    {
        buildProject(document, ProjectShape{1, Timelines, Keys, false});
        scene.setDocument(&document);
        view = std::make_unique<TimelineView>(&session);
        // The viewport is 1600 x 400 inside the scroll bars.
        view->resize(1600 + view->verticalScrollBar()->sizeHint().width(),
                     400 + view->horizontalScrollBar()->sizeHint().height());
        view->show();
        QApplication::processEvents();
    }

    QUndoStack stack;
    RigxData document;
    MorvaneCanvasScene scene;
    EditorSession session;
    std::unique_ptr<TimelineView> view;
};

// Made on first use and gone before the application object is.
std::unique_ptr<Bench> sBench;

Bench &bench()
{
    if (!sBench)
        sBench = std::make_unique<Bench>();
    return *sBench;
}

void sendMouse(QWidget *to, QEvent::Type type, const QPointF &pos, Qt::MouseButtons buttons)
{
    QMouseEvent event(type, pos, to->mapToGlobal(pos),
                      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                      Qt::NoModifier);
    QApplication::sendEvent(to, &event);
}

void buildRows(benchmark::State &state)
{
    Bench &b = bench();
    for (auto _ : state)
        b.view->refresh();
    state.counters["markers"] = double(Timelines) * Keys;
}

// Zoom 0 fits the animation; 1 and 2 are ten and a hundred times closer.
void repaint(benchmark::State &state)
{
    Bench &b = bench();
    b.view->setZoomFactor(-1);
    const double fit = b.view->zoomFactor();
    b.view->setZoomFactor(fit * (state.range(0) == 0 ? 1 : state.range(0) == 1 ? 10 : 100));
    b.view->horizontalScrollBar()->setValue(b.view->horizontalScrollBar()->maximum() / 3);
    b.view->verticalScrollBar()->setValue(b.view->verticalScrollBar()->maximum() / 2);
    for (auto _ : state)
        b.view->viewport()->repaint();
    state.counters["px/ms"] = b.view->zoomFactor();
}

void dragStep(benchmark::State &state)
{
    Bench &b = bench();
    TimelineView *view = b.view.get();
    view->setZoomFactor(-1);
    view->setZoomFactor(view->zoomFactor() * 10);
    view->horizontalScrollBar()->setValue(0);
    view->verticalScrollBar()->setValue(0);
    view->clearKeySelection();
    // 1,000 keys: the first 100 of the first ten timelines, selected directly
    // (the selection is not what is measured).
    int selected = 0;
    for (TimelineGraphicsProxy *row : view->rows()) {
        if (row == view->mainlineRow())
            continue;
        for (size_t k = 0; k < 100 && k < row->keys().size(); ++k)
            row->keys()[k]->setSelected(true);
        selected += 100;
        if (selected >= 1000)
            break;
    }
    TimelineGraphicsProxy *first = view->rows()[1];
    TimelineKeyGraphicsProxy *grabbed = first->keys()[10];
    const QPointF press = view->mapFromScene(grabbed->scenePos() + QPointF(0, -10));
    sendMouse(view->viewport(), QEvent::MouseButtonPress, press, Qt::LeftButton);
    int step = 0;
    for (auto _ : state) {
        step = (step + 1) % 40;
        sendMouse(view->viewport(), QEvent::MouseMove, press + QPointF(10 + step * 3, 0),
                  Qt::LeftButton);
        view->viewport()->repaint();
    }
    state.counters["selected"] = double(view->selectedKeys().size());
    // Each step includes the canvas following the drag.
    state.counters["canvas"] = b.scene.isPreviewing() ? 1 : 0;
    // Let go without recording: the benchmark measures the drag itself.
    view->refresh();
}

} // namespace

BENCHMARK(buildRows)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(repaint)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(dragStep)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    sBench.reset();
    benchmark::Shutdown();
    return 0;
}
