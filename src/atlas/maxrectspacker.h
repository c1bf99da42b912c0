// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QList>
#include <QRect>
#include <QSize>

namespace Morvane {

/// Places rectangles into one bin with the MaxRects method: it keeps every maximal free
/// rectangle and puts each new one where the shorter leftover side is smallest.
///
/// Rectangles never overlap and stay inside the bin. Sizes include whatever spacing the
/// caller wants between images: with `spacing`, each rectangle is placed as if it were
/// that much wider and higher, and the bin as if it were that much larger too, so that
/// images are at least `spacing` apart but may touch the bin's right and bottom edges.
class MaxRectsPacker
{
public:
    /// Bins and spacings are at most this many pixels a side.
    static constexpr int MaxSide = 1 << 20;

    MaxRectsPacker(QSize bin, bool allowRotation, int spacing = 0);

    /// Places a rectangle of `size`; false when it fits nowhere (nothing changes then).
    /// `placed` is where it lies in the bin, turned a quarter (width and height swapped)
    /// when `rotated` comes back true.
    bool insert(QSize size, QRect *placed, bool *rotated);

    /// The smallest size holding every placed rectangle.
    QSize usedSize() const { return mUsed; }
    QSize binSize() const { return mBin; }

private:
    void place(const QRect &node);
    void prune();

    QSize mBin;
    bool mRotate;
    int mSpacing;
    QList<QRect> mFree;
    QSize mUsed;
};

} // namespace Morvane
