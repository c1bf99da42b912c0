// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QImage>
#include <QMap>
#include <QString>
#include <QStringList>

namespace Morvane {

/// Packs named images into sprite sheets and writes each as a PNG with a "JSON hash"
/// description beside it, the layout `JsonSpriteSheet` and common game engines read.
class SpriteSheetPacker
{
public:
    struct Options
    {
        /// Largest sheet width and height, in pixels.
        int maxSize = 2048;
        /// Cut fully transparent borders off before packing.
        bool trim = false;
        /// Allow frames to be stored turned a quarter clockwise.
        bool rotate = false;
        /// Transparent pixels between frames.
        int padding = 2;
        /// Edge pixels repeated around each frame, against bleeding when filtered.
        int extrude = 0;
        /// Sheets are named BASE.json/BASE.png, then BASE-1.json/BASE-1.png, ...
        QString baseName = QStringLiteral("atlas");
    };

    /// Sheets are at most this many pixels a side, whatever the options ask.
    static constexpr int MaxSheetSide = 8192;

    /// Packs `images` (frame name to image) into as many sheets as they need and writes
    /// them to `directory`. The first sheet's description lists the others as related
    /// packs, so loading it loads them all. Returns the description files written (the
    /// first one first), or an empty list with `error` set; images that fit into no sheet
    /// at all (larger than the maximum size) fail the whole run.
    static QStringList pack(const QMap<QString, QImage> &images, const Options &options,
                            const QString &directory, QString *error);

    /// The smallest rectangle holding every pixel that is not fully transparent; empty
    /// for an image that is transparent throughout.
    static QRect opaqueRect(const QImage &image);
};

} // namespace Morvane
