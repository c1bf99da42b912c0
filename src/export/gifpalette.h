// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "export/exportoptions.h"

#include <QImage>
#include <QList>
#include <QPoint>
#include <QSet>
#include <QSize>

#include <cstdint>
#include <vector>

namespace Morvane {

/// Counts the colours of GIF frames: a histogram of 5 bits a channel that
/// keeps each cell's exact colour sums, and the exact colours themselves while
/// there are at most 256. Frames come in with one-bit alpha (0 or 255):
/// transparent pixels are counted apart. Histograms of frames counted on
/// different threads merge into one.
class GifHistogram
{
public:
    GifHistogram();

    void add(const QImage &flat);
    void add(QRgb colour, qint64 count);
    void merge(const GifHistogram &other);

    /// Whether the frames use more than 256 opaque colours.
    bool hasManyColours() const { return mMany; }
    const QSet<QRgb> &exactColours() const { return mExact; }
    qint64 transparentCount() const { return mTransparent; }

    /// Per cell: pixel count and the sums of red, green and blue.
    struct Cell
    {
        quint64 count = 0;
        quint64 red = 0;
        quint64 green = 0;
        quint64 blue = 0;
    };
    const std::vector<Cell> &cells() const { return mCells; }

private:
    std::vector<Cell> mCells;
    QSet<QRgb> mExact;
    qint64 mTransparent = 0;
    bool mMany = false;
};

/// At most 256 colours; `transparent` is the index of the clear entry (-1: none).
/// An exact palette holds every colour of its frames, which map onto it unchanged.
struct GifPalette
{
    QList<QRgb> colours;
    int transparent = -1;
    bool exact = false;

    /// The frames' own colours when they fit; otherwise colours chosen by
    /// median cut of the histogram, refined towards the means of what each
    /// colour stands for. Deterministic: the same histogram gives the same palette.
    static GifPalette build(const GifHistogram &histogram);

    /// The indexes of `flat` (one-bit alpha) on a canvas of `canvas` pixels:
    /// the frame's top left at `at`, `padding` (one-bit alpha too) around it.
    /// Colours the palette lacks are made up by `dither`: Floyd–Steinberg error
    /// diffusion, or an 8 × 8 ordered pattern of small offsets for colours
    /// the palette lacks (flat areas of art, which it holds, stay flat). An
    /// exact palette needs neither.
    std::vector<uint8_t> map(const QImage &flat, const QPoint &at, const QSize &canvas,
                             QRgb padding, GifDither dither) const;
};

} // namespace Morvane
