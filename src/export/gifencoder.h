// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "export/exportoptions.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>

namespace Morvane {

/// Animated GIFs through Magick++, entirely in memory: frames go in as pixel
/// buffers and the file comes out as bytes, so no file name ever reaches the
/// image library (where a prefix such as "gif:" or "|" would mean something).
/// The library runs under resource limits of our own.
class GifEncoder
{
public:
    /// The GIF of `frames` (all of one size), frame i shown for `delays[i]`
    /// hundredths of a second, each frame restoring the background when it
    /// goes (disposal 2). Frames with transparency first pass through
    /// `flattenAlpha`. False with `error` set when the library fails.
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
};

} // namespace Morvane
