// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/gifencoder.h"

#include "export/gifpalette.h"

#include <QCoreApplication>
#include <QMutex>
#include <QRect>
#include <QThread>
#include <QThreadPool>

#include <Magick++.h>

#include <exception>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace Morvane {

namespace {

// The library's colour macros name its quantum type unqualified.
using MagickCore::Quantum;

constexpr MagickCore::MagickSizeType MiB = 1024 * 1024;
constexpr int MaxSide = 16384;

Quantum quantum(int channel)
{
    return Quantum(channel * (double(QuantumRange) / 255.0));
}

// A palette image of the library's own: its colour map is `palette`, its
// pixels the palette's entries at `indexes`. The writer takes such an image
// as it is, without reducing its colours again.
Magick::Image paletteImage(const std::vector<uint8_t> &indexes, const QSize &size,
                           const GifPalette &palette)
{
    const size_t w = size_t(size.width()), h = size_t(size.height());
    Magick::Image image(Magick::Geometry(w, h), Magick::Color(0, 0, 0));
    image.modifyImage();
    MagickCore::Image *core = image.image();
    if (!MagickCore::AcquireImageColormap(core, size_t(palette.colours.size())))
        throw std::runtime_error("no memory for the colour map");
    for (qsizetype i = 0; i < palette.colours.size(); ++i) {
        const QRgb c = palette.colours[i];
        MagickCore::PixelPacket &entry = core->colormap[i];
        entry.red = quantum(qRed(c));
        entry.green = quantum(qGreen(c));
        entry.blue = quantum(qBlue(c));
        entry.opacity = i == palette.transparent ? TransparentOpacity : OpaqueOpacity;
    }
    core->matte = palette.transparent >= 0 ? MagickCore::MagickTrue : MagickCore::MagickFalse;
    // The file's background colour is the clear entry: viewers that restore a
    // frame's area to it then show transparency, not the first colour.
    if (palette.transparent >= 0)
        core->background_color = core->colormap[palette.transparent];
    for (size_t y = 0; y < h; ++y) {
        MagickCore::PixelPacket *pixels =
            MagickCore::GetAuthenticPixels(core, 0, ssize_t(y), w, 1, &core->exception);
        MagickCore::IndexPacket *index = MagickCore::GetAuthenticIndexQueue(core);
        if (!pixels || !index)
            throw std::runtime_error("no memory for the pixels");
        const uint8_t *row = &indexes[y * w];
        for (size_t x = 0; x < w; ++x) {
            index[x] = MagickCore::IndexPacket(row[x]);
            pixels[x] = core->colormap[row[x]];
        }
        if (!MagickCore::SyncAuthenticPixels(core, &core->exception))
            throw std::runtime_error("cannot store the pixels");
    }
    return image;
}

} // namespace

struct GifEncoder::Private
{
    struct Frame
    {
        QImage source;
        QImage flat;
        int delay = 0;
        QPoint position;
        GifPalette palette; // a palette of its own, when frames do not share one
        Magick::Image image;
    };

    GifOptions options;
    QRgb padding = 0;
    QThreadPool pool;
    std::vector<std::unique_ptr<Frame>> frames;
    QMutex mutex;
    GifHistogram shared;
    QString error;

    // Runs `work` on the pool; the first failure is kept.
    template<typename Work> void start(Work work)
    {
        pool.start([this, work] {
            try {
                work();
            } catch (const std::exception &e) {
                QMutexLocker lock(&mutex);
                if (error.isEmpty())
                    error = QString::fromLocal8Bit(e.what());
            } catch (...) {
                QMutexLocker lock(&mutex);
                if (error.isEmpty())
                    error = QCoreApplication::translate("GifEncoder", "unknown failure");
            }
        });
    }

    void prepare(Frame *frame)
    {
        frame->flat = flattenAlpha(frame->source, options);
        frame->source = QImage();
        GifHistogram counted;
        counted.add(frame->flat);
        if (options.sharedPalette) {
            QMutexLocker lock(&mutex);
            shared.merge(counted);
        } else {
            frame->palette = GifPalette::build(counted);
        }
    }

    void finishFrame(Frame *frame, const QPoint &origin, const QSize &canvas,
                     const GifPalette *palette)
    {
        const QSize size = frame->flat.size();
        const QPoint at = frame->position - origin;
        if (!palette) {
            if (size != canvas) {
                // The padding takes part in this frame's own colours.
                GifHistogram counted;
                counted.add(frame->flat);
                counted.add(padding, qint64(canvas.width()) * canvas.height()
                                         - qint64(size.width()) * size.height());
                frame->palette = GifPalette::build(counted);
            }
            palette = &frame->palette;
        }
        const std::vector<uint8_t> indexes =
            palette->map(frame->flat, at, canvas, padding, options.dither);
        frame->flat = QImage();
        Magick::Image image = paletteImage(indexes, canvas, *palette);
        image.quiet(true); // warnings are not failures
        image.magick("GIF");
        image.animationDelay(size_t(qMax(0, frame->delay)));
        image.gifDisposeMethod(MagickCore::BackgroundDispose);
        image.animationIterations(size_t(qMax(0, options.loopCount)));
        frame->image = std::move(image);
    }
};

GifEncoder::GifEncoder(const GifOptions &options, const QColor &padding)
    : d(std::make_unique<Private>())
{
    initialize();
    d->options = options;
    d->pool.setMaxThreadCount(qMax(1, QThread::idealThreadCount()));
    QImage one(1, 1, QImage::Format_ARGB32);
    one.fill(padding.isValid() ? padding : QColor(Qt::transparent));
    d->padding = flattenAlpha(one, options).pixel(0, 0);
}

GifEncoder::~GifEncoder()
{
    d->pool.waitForDone();
}

void GifEncoder::addFrame(const QImage &frame, int delay, const QPoint &position)
{
    auto owned = std::make_unique<Private::Frame>();
    Private::Frame *f = owned.get();
    f->source = frame;
    f->delay = delay;
    f->position = position;
    d->frames.push_back(std::move(owned));
    d->start([this, f] { d->prepare(f); });
}

bool GifEncoder::finish(QByteArray *gif, QString *error)
{
    auto fail = [error](const QString &why) {
        if (error)
            *error = QCoreApplication::translate("GifEncoder", "Cannot make the GIF: %1").arg(why);
        return false;
    };
    if (d->frames.empty())
        return fail(QCoreApplication::translate("GifEncoder", "there are no frames"));
    d->pool.waitForDone();
    if (!d->error.isEmpty())
        return fail(d->error);
    // The canvas is the box of all frames in their places.
    QRect box;
    for (const auto &frame : d->frames)
        box |= QRect(frame->position, frame->flat.size());
    const QPoint origin = box.topLeft();
    const QSize canvas = box.size();
    // Frames far apart would make a canvas beyond what a GIF or memory holds.
    if (canvas.width() > MaxSide || canvas.height() > MaxSide)
        return fail(QCoreApplication::translate("GifEncoder", "the frames span %1 × %2 pixels, "
                                                              "more than %3 a side")
                        .arg(canvas.width())
                        .arg(canvas.height())
                        .arg(MaxSide));
    GifPalette palette;
    if (d->options.sharedPalette) {
        for (const auto &frame : d->frames) {
            const QSize size = frame->flat.size();
            d->shared.add(d->padding, qint64(canvas.width()) * canvas.height()
                                          - qint64(size.width()) * size.height());
        }
        palette = GifPalette::build(d->shared);
    }
    const GifPalette *sharedPalette = d->options.sharedPalette ? &palette : nullptr;
    for (const auto &frame : d->frames) {
        Private::Frame *f = frame.get();
        d->start([this, f, origin, canvas, sharedPalette] {
            d->finishFrame(f, origin, canvas, sharedPalette);
        });
    }
    d->pool.waitForDone();
    if (!d->error.isEmpty())
        return fail(d->error);
    try {
        std::vector<Magick::Image> images;
        images.reserve(d->frames.size());
        for (const auto &frame : d->frames)
            images.push_back(frame->image);
        d->frames.clear();
        Magick::Blob blob;
        Magick::writeImages(images.begin(), images.end(), &blob, true);
        if (blob.length() == 0)
            return fail(QCoreApplication::translate("GifEncoder", "the library wrote nothing"));
        *gif = QByteArray(static_cast<const char *>(blob.data()), qsizetype(blob.length()));
        return true;
    } catch (const std::exception &e) {
        return fail(QString::fromLocal8Bit(e.what()));
    } catch (...) {
        return fail(QCoreApplication::translate("GifEncoder", "unknown failure"));
    }
}

bool GifEncoder::encode(const QList<QImage> &frames, const QList<int> &delays,
                        const GifOptions &options, QByteArray *gif, QString *error)
{
    GifEncoder encoder(options);
    for (qsizetype i = 0; i < frames.size(); ++i)
        encoder.addFrame(frames[i], delays.value(i, 0));
    return encoder.finish(gif, error);
}

void GifEncoder::initialize()
{
    static std::once_flag once;
    std::call_once(once, [] {
        Magick::InitializeMagick(nullptr);
        // Limits of our own, whatever the system's policy allows: exports are
        // at most a few thousand pixels a side and never need the disk.
        Magick::ResourceLimits::memory(1024 * MiB);
        Magick::ResourceLimits::map(2048 * MiB);
        Magick::ResourceLimits::disk(4096 * MiB);
        Magick::ResourceLimits::width(MaxSide);
        Magick::ResourceLimits::height(MaxSide);
        Magick::ResourceLimits::area(256 * MiB);
        Magick::ResourceLimits::listLength(100000);
        Magick::ResourceLimits::thread(MagickCore::MagickSizeType(qMax(1, QThread::idealThreadCount())));
    });
}

QImage GifEncoder::flattenAlpha(const QImage &image, const GifOptions &options)
{
    QImage out = image.convertToFormat(QImage::Format_ARGB32);
    const bool matte = options.matte.isValid();
    const int mr = options.matte.red(), mg = options.matte.green(), mb = options.matte.blue();
    for (int y = 0; y < out.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(out.scanLine(y));
        for (int x = 0; x < out.width(); ++x) {
            const QRgb p = line[x];
            const int a = qAlpha(p);
            if (a == 255)
                continue;
            if (matte) {
                if (a == 0) {
                    line[x] = qRgba(0, 0, 0, 0);
                    continue;
                }
                // Rounded blend of the colour over the matte by its alpha.
                auto blend = [a](int c, int m) { return (c * a + m * (255 - a) + 127) / 255; };
                line[x] = qRgb(blend(qRed(p), mr), blend(qGreen(p), mg), blend(qBlue(p), mb));
            } else {
                line[x] = a < options.alphaThreshold ? qRgba(0, 0, 0, 0)
                                                     : qRgba(qRed(p), qGreen(p), qBlue(p), 255);
            }
        }
    }
    return out;
}

} // namespace Morvane
