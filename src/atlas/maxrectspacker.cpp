// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "atlas/maxrectspacker.h"

#include <limits>

namespace Morvane {

MaxRectsPacker::MaxRectsPacker(QSize bin, bool allowRotation, int spacing)
    : mBin(bin.expandedTo(QSize(0, 0)).boundedTo(QSize(MaxSide, MaxSide)))
    , mRotate(allowRotation)
    , mSpacing(qBound(0, spacing, MaxSide))
{
    // The spacing after the last column and row falls outside the bin.
    if (!mBin.isEmpty())
        mFree.append(QRect(0, 0, mBin.width() + mSpacing, mBin.height() + mSpacing));
}

bool MaxRectsPacker::insert(QSize size, QRect *placed, bool *rotated)
{
    if (size.width() <= 0 || size.height() <= 0)
        return false;
    const qint64 w = qint64(size.width()) + mSpacing;
    const qint64 h = qint64(size.height()) + mSpacing;
    qint64 bestShort = std::numeric_limits<qint64>::max();
    qint64 bestLong = bestShort;
    QRect best;
    bool bestRotated = false;
    const auto consider = [&](const QRect &free, qint64 width, qint64 height, bool turned) {
        if (width > free.width() || height > free.height())
            return;
        const qint64 dx = free.width() - width;
        const qint64 dy = free.height() - height;
        const qint64 shortSide = qMin(dx, dy);
        const qint64 longSide = qMax(dx, dy);
        if (shortSide < bestShort || (shortSide == bestShort && longSide < bestLong)) {
            bestShort = shortSide;
            bestLong = longSide;
            best = QRect(free.x(), free.y(), int(width), int(height));
            bestRotated = turned;
        }
    };
    for (const QRect &free : std::as_const(mFree)) {
        consider(free, w, h, false);
        if (mRotate && w != h)
            consider(free, h, w, true);
    }
    if (best.isEmpty())
        return false;
    place(best);
    *rotated = bestRotated;
    *placed = QRect(best.x(), best.y(), best.width() - mSpacing, best.height() - mSpacing);
    mUsed = mUsed.expandedTo(QSize(placed->right() + 1, placed->bottom() + 1));
    return true;
}

void MaxRectsPacker::place(const QRect &node)
{
    // Every free rectangle the new one cuts into is replaced by the up to four maximal
    // rectangles left around it.
    QList<QRect> next;
    next.reserve(mFree.size() + 4);
    for (const QRect &free : std::as_const(mFree)) {
        if (!free.intersects(node)) {
            next.append(free);
            continue;
        }
        if (node.left() > free.left())
            next.append(QRect(free.left(), free.top(), node.left() - free.left(), free.height()));
        if (node.right() < free.right())
            next.append(
                QRect(node.right() + 1, free.top(), free.right() - node.right(), free.height()));
        if (node.top() > free.top())
            next.append(QRect(free.left(), free.top(), free.width(), node.top() - free.top()));
        if (node.bottom() < free.bottom())
            next.append(
                QRect(free.left(), node.bottom() + 1, free.width(), free.bottom() - node.bottom()));
    }
    mFree = next;
    prune();
}

void MaxRectsPacker::prune()
{
    // A free rectangle inside another adds no place to put anything.
    for (qsizetype i = 0; i < mFree.size(); ++i) {
        for (qsizetype j = i + 1; j < mFree.size(); ++j) {
            if (mFree.at(j).contains(mFree.at(i))) {
                mFree.removeAt(i);
                --i;
                break;
            }
            if (mFree.at(i).contains(mFree.at(j))) {
                mFree.removeAt(j);
                --j;
            }
        }
    }
}

} // namespace Morvane
