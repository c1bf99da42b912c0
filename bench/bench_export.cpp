// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// Exports of the example's idle animation, 60 frames (every 20 ms of 1200):
// - numbered PNGs of 512 × 512 at 100 % through the exporter, beside a bare
//   loop that renders the same frames and saves each with QImage::save;
// - a GIF of 256 × 256 (50 %) through the exporter with its default options
//   (one palette for all frames, Floyd–Steinberg), beside a bare Magick++
//   write of the same frames with the same settings.
// What each GIF side measures:
// - gifExport: everything the exporter does, from the scene: rendering the
//   60 frames, flattening their alpha, reducing their colours to one palette
//   with error diffusion, handing palette images to Magick++, writeImages to
//   a blob, writing the file.
// - bareGif: the frames rendered beforehand (not timed) as QImages; timed are
//   their conversion to Magick::Image, Magick++'s reduction to one palette of
//   256 colours with Floyd–Steinberg (quantizeImages), writeImages to a blob
//   and writing the file.
// - gifExportPerFramePalette: the exporter with a palette per frame.
// Wall-clock time (the exporter works on worker threads). After the
// benchmarks the ratios are printed; the aims are a numbered export at least
// 1.6 times faster than the bare loop and a GIF within 1.2 times the bare write.

#include "canvas/morvanecanvasscene.h"
#include "export/animationexporter.h"
#include "export/framerenderer.h"
#include "export/gifencoder.h"
#include "io/projectfile.h"
#include "model/entity.h"
#include "model/rigxdata.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <Magick++.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

using namespace Morvane;

namespace {

constexpr int Interval = 20;
constexpr int Frames = 60;

struct Example
{
    Example()
    {
        QString error;
        ok = ProjectFile::open(&document, QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero/hero.rigx"),
                               nullptr, &error);
        scene.setDocument(&document);
        if (ok)
            scene.setCurrentAnimation(document.entity(0)->animation(QStringLiteral("idle")));
    }
    ~Example() { scene.setDocument(nullptr); }

    ExportOptions options(ExportKind kind, double scale) const
    {
        ExportOptions o;
        o.kind = kind;
        o.interval = Interval;
        o.trim = TrimType::Custom;
        o.customRect = QRectF(-256, -400, 512, 512);
        o.scaleWidth = o.scaleHeight = scale;
        return o;
    }

    RigxData document;
    MorvaneCanvasScene scene;
    QTemporaryDir dir;
    bool ok = false;
};

Example &example()
{
    static Example e;
    return e;
}

bool runNumbered()
{
    Example &e = example();
    const ExportOptions o = e.options(ExportKind::NumberedPngs, 100);
    const ExportResult r = AnimationExporter::run(&e.scene, o, e.dir.filePath(QStringLiteral("n.png")));
    return r.ok && r.files.size() == Frames;
}

bool runBareNumbered()
{
    Example &e = example();
    const ExportOptions o = e.options(ExportKind::NumberedPngs, 100);
    FrameRenderer renderer(&e.scene, o);
    bool ok = true;
    for (int i = 0; i < Frames; ++i) {
        renderer.setTime(i * Interval);
        const QImage image = renderer.exportPngToImage(QRectF(0, 0, 512, 512), o.customRect,
                                                       QColor(Qt::transparent));
        ok &= image.save(e.dir.filePath(QStringLiteral("bare_%1.png").arg(i)));
    }
    return ok;
}

const std::vector<QImage> &gifFrames()
{
    static std::vector<QImage> frames;
    if (frames.empty()) {
        Example &e = example();
        const ExportOptions o = e.options(ExportKind::Gif, 50);
        FrameRenderer renderer(&e.scene, o);
        for (int i = 0; i < Frames; ++i) {
            renderer.setTime(i * Interval);
            frames.push_back(renderer.exportPngToImage(QRectF(0, 0, 256, 256), o.customRect,
                                                       QColor(Qt::transparent))
                                 .convertToFormat(QImage::Format_ARGB32));
        }
    }
    return frames;
}

bool runGif()
{
    Example &e = example();
    const ExportOptions o = e.options(ExportKind::Gif, 50);
    return AnimationExporter::run(&e.scene, o, e.dir.filePath(QStringLiteral("g.gif"))).ok;
}

bool runGifPerFramePalette()
{
    Example &e = example();
    ExportOptions o = e.options(ExportKind::Gif, 50);
    o.gif.sharedPalette = false;
    return AnimationExporter::run(&e.scene, o, e.dir.filePath(QStringLiteral("f.gif"))).ok;
}

// The same frames through Magick++ alone, with the export's default colour
// settings: one palette of 256 colours for all frames, Floyd–Steinberg.
bool runBareGif()
{
    Example &e = example();
    GifEncoder::initialize();
    std::vector<Magick::Image> images;
    for (const QImage &f : gifFrames()) {
        Magick::Image image(size_t(f.width()), size_t(f.height()), "BGRA", Magick::CharPixel,
                            f.constBits());
        image.magick("GIF");
        image.animationDelay(Interval / 10);
        image.gifDisposeMethod(MagickCore::BackgroundDispose);
        image.quantizeColors(256);
        image.quantizeDither(true);
        image.quantizeDitherMethod(MagickCore::FloydSteinbergDitherMethod);
        images.push_back(std::move(image));
    }
    Magick::quantizeImages(images.begin(), images.end());
    Magick::Blob blob;
    Magick::writeImages(images.begin(), images.end(), &blob, true);
    QFile file(e.dir.filePath(QStringLiteral("bare.gif")));
    return file.open(QIODevice::WriteOnly)
           && file.write(static_cast<const char *>(blob.data()), qint64(blob.length()))
                  == qint64(blob.length());
}

void run(benchmark::State &state, bool (*body)())
{
    for (auto _ : state) {
        if (!body())
            state.SkipWithError("the run failed");
    }
}

// Wall-clock milliseconds of one run, the best of three.
double bestMs(bool (*body)())
{
    double best = 1e300;
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer timer;
        timer.start();
        body();
        best = std::min(best, timer.nsecsElapsed() / 1e6);
    }
    return best;
}

} // namespace

BENCHMARK_CAPTURE(run, numberedExport, runNumbered)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(run, bareNumbered, runBareNumbered)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(run, gifExport, runGif)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(run, bareGif, runBareGif)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(run, gifExportPerFramePalette, runGifPerFramePalette)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (!example().ok) {
        std::fprintf(stderr, "cannot open the example\n");
        return 1;
    }
    // Rendered once, before any timing: the bare GIF write starts from them.
    gifFrames();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    const double numbered = bestMs(runNumbered), bareNumbered = bestMs(runBareNumbered);
    const double gif = bestMs(runGif), bareGif = bestMs(runBareGif);
    const double perFrame = bestMs(runGifPerFramePalette);
    std::printf("numbered PNGs: export %.0f ms, bare loop %.0f ms, %.2f times faster (aim: 1.6)\n",
                numbered, bareNumbered, bareNumbered / numbered);
    std::printf("GIF: export %.0f ms, bare write %.0f ms, ratio %.2f (aim: at most 1.2)\n", gif,
                bareGif, gif / bareGif);
    std::printf("GIF with a palette per frame: export %.0f ms\n", perFrame);
    benchmark::Shutdown();
    return 0;
}
