// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "export/exportoptions.h"

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QList>
#include <QPoint>
#include <QString>

#include <memory>

namespace Morvane {

/// Animated GIFs through Magick++, entirely in memory: frames go in as pixel
/// buffers and the file comes out as bytes, so no file name ever reaches the
/// image library (where a prefix such as "gif:" or "|" would mean something).
/// The library runs under resource limits of our own.
///
/// Frames are handed over one by one while the caller renders the next: their
/// alpha is flattened and their colours counted on worker threads. The colours
/// are reduced here, not by the library, whose colour reduction clears a
/// large cache on every call: the library only receives palette images and
/// writes them.
class GifEncoder
{
public:
    /// Frames are placed on a canvas that holds them all; what they leave
    /// free shows `padding` (invalid: transparent).
    explicit GifEncoder(const GifOptions &options, const QColor &padding = QColor());
    ~GifEncoder();
    GifEncoder(const GifEncoder &) = delete;
    GifEncoder &operator=(const GifEncoder &) = delete;

    /// Queues a frame shown for `delay` hundredths of a second, its top left
    /// at `position` (pixels; only the positions relative to one another
    /// count). The work on it starts at once on a worker thread.
    void addFrame(const QImage &frame, int delay, const QPoint &position = QPoint());
    /// The GIF of the frames added, each restoring the background when it goes
    /// (disposal 2). False with `error` set when there are no frames or the
    /// library fails.
    bool finish(QByteArray *gif, QString *error);

    /// `frames` and their `delays` as one GIF, in one call.
    static bool encode(const QList<QImage> &frames, const QList<int> &delays,
                       const GifOptions &options, QByteArray *gif, QString *error);

    /// `image` with one-bit alpha as a GIF holds it: with a valid matte colour,
    /// every pixel not fully transparent is blended over the matte and made
    /// opaque; otherwise pixels below the alpha threshold become transparent
    /// and the others opaque, keeping their colour. Plain (not premultiplied)
    /// ARGB comes back.
    static QImage flattenAlpha(const QImage &image, const GifOptions &options);

    /// Sets up the library once per process with our resource limits.
    static void initialize();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace Morvane
