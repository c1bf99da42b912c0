// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/gifpalette.h"

#include <QHash>
#include <QRect>

#include <algorithm>
#include <cmath>

namespace Morvane {

namespace {

constexpr int CellBits = 5;
constexpr int CacheBits = 6;

int cellOf(QRgb c)
{
    constexpr int s = 8 - CellBits;
    return ((qRed(c) >> s) << (2 * CellBits)) | ((qGreen(c) >> s) << CellBits) | (qBlue(c) >> s);
}

struct Entry
{
    double channel[3];
    double count;
};

struct Box
{
    int begin;
    int end;
    double score; // the squared error the box's mean leaves; -1 when it cannot split
    int axis;     // the channel that spreads the most
};

void measure(const std::vector<Entry> &entries, Box &box)
{
    double n = 0, sum[3] = {0, 0, 0}, squares[3] = {0, 0, 0};
    for (int i = box.begin; i < box.end; ++i) {
        const Entry &e = entries[size_t(i)];
        n += e.count;
        for (int c = 0; c < 3; ++c) {
            sum[c] += e.channel[c] * e.count;
            squares[c] += e.channel[c] * e.channel[c] * e.count;
        }
    }
    box.axis = 0;
    box.score = 0;
    double widest = -1;
    for (int c = 0; c < 3; ++c) {
        const double error = squares[c] - sum[c] * sum[c] / n;
        box.score += error;
        if (error > widest) {
            widest = error;
            box.axis = c;
        }
    }
    if (box.end - box.begin < 2)
        box.score = -1;
}

QRgb meanColour(const double sum[3], double n)
{
    auto channel = [n](double s) { return qBound(0, int(std::lround(s / n)), 255); };
    return qRgb(channel(sum[0]), channel(sum[1]), channel(sum[2]));
}

int distance(QRgb a, int r, int g, int b)
{
    const int dr = qRed(a) - r, dg = qGreen(a) - g, db = qBlue(a) - b;
    return dr * dr + dg * dg + db * db;
}

int nearest(const QList<QRgb> &colours, int skip, int r, int g, int b)
{
    int best = -1, bestDistance = 0;
    for (int i = 0; i < colours.size(); ++i) {
        if (i == skip)
            continue;
        const int d = distance(colours[i], r, g, b);
        if (best < 0 || d < bestDistance) {
            best = i;
            bestDistance = d;
        }
    }
    return best;
}

QList<QRgb> medianCut(const GifHistogram &histogram, int target)
{
    std::vector<Entry> entries;
    for (const GifHistogram::Cell &cell : histogram.cells()) {
        if (!cell.count)
            continue;
        const double n = double(cell.count);
        entries.push_back({{cell.red / n, cell.green / n, cell.blue / n}, n});
    }
    if (entries.empty())
        return {};
    std::vector<Box> boxes{{0, int(entries.size()), 0, 0}};
    measure(entries, boxes.front());
    while (int(boxes.size()) < target) {
        auto widest = std::max_element(boxes.begin(), boxes.end(), [](const Box &a, const Box &b) {
            return a.score < b.score;
        });
        if (widest->score <= 0)
            break;
        Box box = *widest;
        const int axis = box.axis;
        std::sort(entries.begin() + box.begin, entries.begin() + box.end,
                  [axis](const Entry &a, const Entry &b) { return a.channel[axis] < b.channel[axis]; });
        double total = 0;
        for (int i = box.begin; i < box.end; ++i)
            total += entries[size_t(i)].count;
        // The weighted median, leaving at least one cell on each side.
        int split = box.begin + 1;
        for (double below = entries[size_t(box.begin)].count; split < box.end - 1 && below < total / 2;
             ++split)
            below += entries[size_t(split)].count;
        Box low{box.begin, split, 0, 0}, high{split, box.end, 0, 0};
        measure(entries, low);
        measure(entries, high);
        *widest = low;
        boxes.push_back(high);
    }
    QList<QRgb> colours;
    for (const Box &box : boxes) {
        double n = 0, sum[3] = {0, 0, 0};
        for (int i = box.begin; i < box.end; ++i) {
            const Entry &e = entries[size_t(i)];
            n += e.count;
            for (int c = 0; c < 3; ++c)
                sum[c] += e.channel[c] * e.count;
        }
        colours.append(meanColour(sum, n));
    }
    // Two rounds of moving each colour to the mean of the cells nearest to it:
    // the boxes' means are good starts but not the best fit.
    for (int round = 0; round < 2; ++round) {
        std::vector<double> sums(size_t(colours.size()) * 4, 0.0);
        for (const Entry &e : entries) {
            const int i = nearest(colours, -1, int(e.channel[0]), int(e.channel[1]), int(e.channel[2]));
            double *s = &sums[size_t(i) * 4];
            for (int c = 0; c < 3; ++c)
                s[c] += e.channel[c] * e.count;
            s[3] += e.count;
        }
        for (int i = 0; i < colours.size(); ++i) {
            const double *s = &sums[size_t(i) * 4];
            if (s[3] > 0)
                colours[i] = meanColour(s, s[3]);
        }
    }
    return colours;
}

} // namespace

GifHistogram::GifHistogram()
    : mCells(size_t(1) << (3 * CellBits))
{
}

void GifHistogram::add(QRgb colour, qint64 count)
{
    if (count <= 0)
        return;
    if (qAlpha(colour) == 0) {
        mTransparent += count;
        return;
    }
    Cell &cell = mCells[size_t(cellOf(colour))];
    cell.count += quint64(count);
    cell.red += quint64(qRed(colour)) * quint64(count);
    cell.green += quint64(qGreen(colour)) * quint64(count);
    cell.blue += quint64(qBlue(colour)) * quint64(count);
    if (!mMany) {
        mExact.insert(colour | 0xff000000u);
        if (mExact.size() > 256) {
            mMany = true;
            mExact.clear();
        }
    }
}

void GifHistogram::add(const QImage &flat)
{
    for (int y = 0; y < flat.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(flat.constScanLine(y));
        // Runs of one colour are counted at once: art has large flat areas.
        for (int x = 0; x < flat.width();) {
            const QRgb c = line[x];
            int end = x + 1;
            while (end < flat.width() && line[end] == c)
                ++end;
            add(c, end - x);
            x = end;
        }
    }
}

void GifHistogram::merge(const GifHistogram &other)
{
    for (size_t i = 0; i < mCells.size(); ++i) {
        mCells[i].count += other.mCells[i].count;
        mCells[i].red += other.mCells[i].red;
        mCells[i].green += other.mCells[i].green;
        mCells[i].blue += other.mCells[i].blue;
    }
    mTransparent += other.mTransparent;
    mMany = mMany || other.mMany;
    if (!mMany) {
        mExact.unite(other.mExact);
        if (mExact.size() > 256)
            mMany = true;
    }
    if (mMany)
        mExact.clear();
}

GifPalette GifPalette::build(const GifHistogram &histogram)
{
    GifPalette palette;
    const bool clear = histogram.transparentCount() > 0;
    const int room = clear ? 255 : 256;
    if (!histogram.hasManyColours() && histogram.exactColours().size() <= room) {
        palette.colours = histogram.exactColours().values();
        std::sort(palette.colours.begin(), palette.colours.end());
        palette.exact = true;
    } else {
        palette.colours = medianCut(histogram, room);
    }
    if (clear) {
        palette.transparent = int(palette.colours.size());
        palette.colours.append(qRgba(0, 0, 0, 0));
    }
    // A GIF needs one colour even for frames that show nothing.
    if (palette.colours.isEmpty())
        palette.colours.append(qRgb(0, 0, 0));
    return palette;
}

std::vector<uint8_t> GifPalette::map(const QImage &flat, const QPoint &at, const QSize &canvas,
                                     QRgb padding, GifDither dither) const
{
    const int w = canvas.width(), h = canvas.height();
    std::vector<uint8_t> out(size_t(w) * size_t(h), 0);
    // Exact colours by table; others through a cache of the nearest colour
    // for each cell of 6 bits a channel, filled as cells come up.
    QHash<QRgb, int> exactIndex;
    if (exact) {
        for (int i = 0; i < colours.size(); ++i) {
            if (i != transparent)
                exactIndex.insert(colours[i], i);
        }
    }
    std::vector<int16_t> cache;
    auto lookup = [&](int r, int g, int b) -> int {
        if (exact) {
            const int i = exactIndex.value(qRgb(r, g, b), -1);
            if (i >= 0)
                return i;
        }
        if (cache.empty())
            cache.assign(size_t(1) << (3 * CacheBits), int16_t(-1));
        constexpr int s = 8 - CacheBits;
        int16_t &slot = cache[size_t(((r >> s) << (2 * CacheBits)) | ((g >> s) << CacheBits) | (b >> s))];
        if (slot < 0)
            slot = int16_t(qMax(0, nearest(colours, transparent, r, g, b)));
        return slot;
    };
    const QRect inside = QRect(at, flat.size()) & QRect(QPoint(0, 0), canvas);
    auto pixel = [&](int x, int y) -> QRgb {
        return inside.contains(x, y)
                   ? reinterpret_cast<const QRgb *>(flat.constScanLine(y - at.y()))[x - at.x()]
                   : padding;
    };
    const int clearIndex = qMax(0, transparent);
    if (dither == GifDither::Ordered && !exact) {
        // Offsets of -15 to +16 from the pattern: enough to mix two
        // neighbouring colours of a palette of 256.
        static constexpr int Bayer[8][8] = {
            {0, 32, 8, 40, 2, 34, 10, 42},   {48, 16, 56, 24, 50, 18, 58, 26},
            {12, 44, 4, 36, 14, 46, 6, 38},  {60, 28, 52, 20, 62, 30, 54, 22},
            {3, 35, 11, 43, 1, 33, 9, 41},   {51, 19, 59, 27, 49, 17, 57, 25},
            {15, 47, 7, 39, 13, 45, 5, 37},  {63, 31, 55, 23, 61, 29, 53, 21},
        };
        for (int y = 0; y < h; ++y) {
            uint8_t *row = &out[size_t(y) * size_t(w)];
            for (int x = 0; x < w; ++x) {
                const QRgb c = pixel(x, y);
                if (!qAlpha(c)) {
                    row[x] = uint8_t(clearIndex);
                    continue;
                }
                // A colour the palette holds within a step or two stays as it
                // is: flat areas keep no pattern.
                const int plain = lookup(qRed(c), qGreen(c), qBlue(c));
                if (distance(colours[plain], qRed(c), qGreen(c), qBlue(c)) <= 12) {
                    row[x] = uint8_t(plain);
                    continue;
                }
                const int offset = (Bayer[y & 7][x & 7] - 31) / 2;
                row[x] = uint8_t(lookup(qBound(0, qRed(c) + offset, 255),
                                        qBound(0, qGreen(c) + offset, 255),
                                        qBound(0, qBlue(c) + offset, 255)));
            }
        }
        return out;
    }
    if (dither != GifDither::FloydSteinberg || exact) {
        for (int y = 0; y < h; ++y) {
            uint8_t *row = &out[size_t(y) * size_t(w)];
            QRgb last = ~pixel(0, y);
            int lastIndex = 0;
            for (int x = 0; x < w; ++x) {
                const QRgb c = pixel(x, y);
                if (c != last) {
                    last = c;
                    lastIndex = qAlpha(c) ? lookup(qRed(c), qGreen(c), qBlue(c)) : clearIndex;
                }
                row[x] = uint8_t(lastIndex);
            }
        }
        return out;
    }
    // Floyd–Steinberg in sixteenths, along rows that turn at each end so the
    // error does not pile up on one side.
    std::vector<int> current(size_t(w + 2) * 3, 0), next(size_t(w + 2) * 3, 0);
    for (int y = 0; y < h; ++y) {
        std::fill(next.begin(), next.end(), 0);
        const bool forward = (y % 2) == 0;
        const int step = forward ? 1 : -1;
        uint8_t *row = &out[size_t(y) * size_t(w)];
        for (int i = 0; i < w; ++i) {
            const int x = forward ? i : w - 1 - i;
            const QRgb c = pixel(x, y);
            if (!qAlpha(c)) {
                row[x] = uint8_t(clearIndex);
                continue;
            }
            int *e = &current[size_t(x + 1) * 3];
            const int v[3] = {qBound(0, qRed(c) + (e[0] + 8) / 16, 255),
                              qBound(0, qGreen(c) + (e[1] + 8) / 16, 255),
                              qBound(0, qBlue(c) + (e[2] + 8) / 16, 255)};
            const int index = lookup(v[0], v[1], v[2]);
            row[x] = uint8_t(index);
            const QRgb chosen = colours[index];
            const int got[3] = {qRed(chosen), qGreen(chosen), qBlue(chosen)};
            for (int k = 0; k < 3; ++k) {
                const int error = v[k] - got[k];
                current[size_t(x + 1 + step) * 3 + size_t(k)] += error * 7;
                next[size_t(x + 1 - step) * 3 + size_t(k)] += error * 3;
                next[size_t(x + 1) * 3 + size_t(k)] += error * 5;
                next[size_t(x + 1 + step) * 3 + size_t(k)] += error;
            }
        }
        std::swap(current, next);
    }
    return out;
}

} // namespace Morvane
