// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "atlas/spritesheetcollection.h"

#include <QHash>
#include <QImage>
#include <QPointF>
#include <QSize>
#include <QString>
#include <QStringList>

class QFile;

namespace Morvane {

/// The decoded images of one project, and the safe way to read an image file.
///
/// Only regular files are read, after following links: a FIFO, a device, a
/// directory or a socket named as an image would block or never end, so it
/// counts as missing and the reason is given. Reading through ".." or a link
/// stays allowed: artists share art folders between projects.
///
/// Each image is decoded once per project, however many names spell its path
/// (the key is the file's canonical path), and the decoded images together stay
/// within a pixel budget: an image beyond it is not decoded, a warning names it
/// once, and its files show the placeholder. Placeholders are shared per size,
/// for at most `MaxPlaceholderSizes` sizes. The project's sprite sheets live here
/// too and share the budget: a file of an atlas folder shows a frame of its sheet.
class ImageCache
{
public:
    /// Pixels of all decoded images of one project together.
    static constexpr qint64 DefaultPixelBudget = 512LL * 1024 * 1024;
    /// The largest single image read at all, in pixels.
    static constexpr qint64 MaxImagePixels = 16384LL * 16384LL;
    /// Placeholders are at most this wide and high, whatever size a file claims.
    static constexpr int MaxPlaceholderSide = 1024;
    /// Distinct placeholder sizes kept; files of further sizes share the
    /// 123 x 128 one.
    static constexpr int MaxPlaceholderSizes = 32;

    ImageCache() = default;
    ImageCache(const ImageCache &) = delete;
    ImageCache &operator=(const ImageCache &) = delete;

    /// Opens `path` for reading when it is a regular, non-empty file (links
    /// followed). Otherwise false, with `why` telling what it is instead ("is a
    /// FIFO, not an image file"), or empty when there is no such file.
    static bool openImageFile(const QString &path, QFile *file, QString *why);
    /// The image's pixel size read from its header, without decoding pixels;
    /// invalid when it cannot be read as an image (`why` as for `openImageFile`).
    static QSize imageSize(const QString &path, QString *why);
    /// `path` made absolute and cleaned of ".", ".." and doubled separators.
    static QString cleanPath(const QString &path);
    /// The grey, crossed stand-in for an image of `size`, at most
    /// `MaxPlaceholderSide` a side. Not counted against any budget.
    static QImage makePlaceholder(QSize size);

    /// The image at `path` (absolute), decoded on its first request; a null image
    /// when it cannot be decoded or does not fit the budget. `name` (the file's
    /// name in the project) is what warnings call it.
    QImage image(const QString &path, const QString &name);
    /// A shared placeholder for an image of `size`.
    QImage placeholder(QSize size);
    /// The frame named `frame` of the sprite sheet whose description is `sheet`
    /// (relative to `projectDirectory`), the sheet loaded on its first request;
    /// a null image when the sheet or the frame is not there.
    QImage atlasFrame(const QString &projectDirectory, const QString &sheet,
                      const QString &frame);
    /// The frame's own pivot when its sheet is loaded and gives one.
    bool atlasFramePivot(const QString &projectDirectory, const QString &sheet,
                         const QString &frame, QPointF *pivot);
    /// The sprite sheets loaded so far.
    SpriteSheetCollection &spriteSheets() { return mSpriteSheets; }

    qint64 pixelBudget() const { return mBudget; }
    void setPixelBudget(qint64 pixels) { mBudget = pixels; }
    /// Pixels of the images decoded and the sprite sheets loaded now.
    qint64 pixels() const { return mPixels + mSpriteSheets.pixels(); }
    /// How many images were decoded since the last `clear`.
    int decodeCount() const { return mDecodes; }
    /// One line per image that was left out, in order.
    QStringList warnings() const { return mWarnings; }
    /// Forgets every image (the files are read again on their next request).
    void clear();

private:
    QImage decode(const QString &path, const QString &name);
    void warn(const QString &line);

    QHash<QString, QImage> mImages; // a null image for one that could not be used
    QHash<QSize, QImage> mPlaceholders;
    SpriteSheetCollection mSpriteSheets;
    qint64 mBudget = DefaultPixelBudget;
    qint64 mPixels = 0;
    int mDecodes = 0;
    QStringList mWarnings;
};

} // namespace Morvane
