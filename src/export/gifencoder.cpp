// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/gifencoder.h"

#include <QCoreApplication>
#include <QSet>
#include <QThread>

#include <Magick++.h>

#include <exception>
#include <mutex>
#include <vector>

namespace Morvane {

namespace {

constexpr MagickCore::MagickSizeType MiB = 1024 * 1024;

// Whether `frames` hold at most 256 colours (transparent counting as one):
// then they need no quantizing, keep their exact colours, and skip the
// library's error-diffusion cache (128 MB, cleared on every use).
bool fitsOnePalette(const std::vector<QImage> &frames)
{
    QSet<QRgb> colours;
    for (const QImage &image : frames) {
        for (int y = 0; y < image.height(); ++y) {
            const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            QRgb last = line[0] ^ 1u;
            for (int x = 0; x < image.width(); ++x) {
                if (line[x] == last)
                    continue;
                last = line[x];
                colours.insert(qAlpha(last) ? last : 0u);
                if (colours.size() > 256)
                    return false;
            }
        }
    }
    return true;
}

} // namespace

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
        Magick::ResourceLimits::width(16384);
        Magick::ResourceLimits::height(16384);
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

bool GifEncoder::encode(const QList<QImage> &frames, const QList<int> &delays,
                        const GifOptions &options, QByteArray *gif, QString *error)
{
    auto fail = [error](const QString &why) {
        if (error)
            *error = QCoreApplication::translate("GifEncoder", "Cannot make the GIF: %1").arg(why);
        return false;
    };
    if (frames.isEmpty())
        return fail(QCoreApplication::translate("GifEncoder", "there are no frames"));
    initialize();
    try {
        std::vector<QImage> flat;
        flat.reserve(size_t(frames.size()));
        for (const QImage &frame : frames)
            flat.push_back(flattenAlpha(frame, options));
        const bool fits = fitsOnePalette(flat);
        std::vector<Magick::Image> images;
        images.reserve(flat.size());
        const char *map = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "BGRA" : "ARGB";
        for (size_t i = 0; i < flat.size(); ++i) {
            // Rows of ARGB32 are exactly width × 4 bytes: the buffer is one block.
            Magick::Image image(size_t(flat[i].width()), size_t(flat[i].height()), map,
                                Magick::CharPixel, flat[i].constBits());
            image.quiet(true); // warnings are not failures
            image.magick("GIF");
            image.animationDelay(size_t(qMax(0, delays.value(qsizetype(i), 0))));
            image.gifDisposeMethod(MagickCore::BackgroundDispose);
            image.animationIterations(size_t(qMax(0, options.loopCount)));
            if (!fits) {
                image.quantizeColors(256);
                image.quantizeDither(options.dither == GifDither::FloydSteinberg);
                if (options.dither == GifDither::FloydSteinberg)
                    image.quantizeDitherMethod(MagickCore::FloydSteinbergDitherMethod);
                if (options.dither == GifDither::Ordered) {
                    // Six levels a channel: 216 colours, within a GIF palette.
                    image.orderedDither("o8x8,6");
                }
                if (!options.sharedPalette)
                    image.quantize();
            }
            images.push_back(std::move(image));
        }
        if (!fits && options.sharedPalette)
            Magick::quantizeImages(images.begin(), images.end());
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

} // namespace Morvane
