// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "atlas/jsonframe.h"

#include <QHash>
#include <QImage>
#include <QMap>
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace Morvane {

/// One sprite sheet made by a texture packer: a "JSON hash" description and the sheet
/// image it names, with every frame cut out at its full, untrimmed size.
///
/// Everything read from the pair is bounded: the description's length, the sheet's and
/// each frame's pixels, and the pixels of all images together (`pixelBudget`). What
/// breaks a bound, or cannot be read, leaves the frame (or the whole sheet) empty and adds
/// a line to `warnings()`; nothing in a description can crash or stall the loader.
class JsonSpriteSheet
{
public:
    /// Longest description read, in bytes.
    static constexpr qint64 MaxDescriptionBytes = 32LL * 1024 * 1024;
    /// Largest sheet image and largest single frame, in pixels.
    static constexpr qint64 MaxImagePixels = 16384LL * 16384LL;
    /// Pixels of the sheet, its transposed copy and all frames together, by default.
    static constexpr qint64 DefaultPixelBudget = 256LL * 1024 * 1024;
    /// Sibling sheets ("meta.related_multi_packs") read into one sheet at most.
    static constexpr int MaxRelatedSheets = 64;

    JsonSpriteSheet() = default;
    /// Loads the pair at once (`setSpriteSheetFile`).
    explicit JsonSpriteSheet(const QString &path, qint64 pixelBudget = DefaultPixelBudget);

    /// Forgets what was loaded and loads the description at `path` and its sheet image
    /// (from the description's directory), then the sibling sheets it lists. Returns
    /// whether any frame was loaded.
    bool setSpriteSheetFile(const QString &path);

    /// The frame stored under exactly `name` (directory part included); a null image when
    /// there is no such frame or it could not be cut.
    QImage pixmapFromFileName(const QString &name) const;
    /// The frame's own pivot (0..1, y from the top edge) when the description gives one
    /// as "pivot" or "anchor".
    bool framePivot(const QString &name, QPointF *pivot) const;
    /// Every frame name, ascending.
    QStringList frameNames() const { return mFrames.keys(); }

    /// One frame entry of the description; a missing member reads as 0 or false.
    static JsonFrame frameFromJson(const QVariantMap &entry);
    /// The frame cut out of the sheet at its source size: transparent outside the packed
    /// rectangle, which lies at the offset. Null when the sheet is null or a size is not
    /// positive or too large; a rectangle reaching outside the sheet is clipped to it.
    QImage pixmapFromJsonFrame(const JsonFrame &frame);

    bool isEmpty() const { return mFrames.isEmpty(); }
    void clear();

    QImage image() const { return mImage; }
    QString imageFileName() const { return mImageFileName; }
    QString fileName() const { return mFileName; }

    qint64 pixelBudget() const { return mBudget; }
    void setPixelBudget(qint64 pixels) { mBudget = pixels; }
    /// Pixels held now: the sheet, its transposed copy and the frames.
    qint64 pixels() const { return mPixels; }
    QStringList warnings() const { return mWarnings; }

private:
    bool loadOne(const QString &path, QVariantMap *meta);
    bool loadImage(const QString &path);
    bool reserve(qint64 pixels, const QString &what);
    void warn(const QString &line);

    QImage mImage;
    QImage mTransposed; // holds the sheet's pixel (x, y) at (y, x); made on first need
    QString mImageFileName;
    QString mFileName;
    QMap<QString, QImage> mFrames;
    QHash<QString, QPointF> mPivots;
    qint64 mBudget = DefaultPixelBudget;
    qint64 mPixels = 0;
    QStringList mWarnings;
};

} // namespace Morvane
