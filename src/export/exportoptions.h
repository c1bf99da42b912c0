// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QColor>
#include <QList>
#include <QRectF>
#include <QString>

class QSettings;

namespace Morvane {

class Animation;

/// How the frames leave the program.
enum class ExportKind { NumberedPngs, SpriteSheet, Gif };

/// Where the source rectangle of each frame comes from.
enum class TrimType { Animation, EachFrame, Entity, AllEntities, Custom };

/// Scaling of a watermark that does not fit the output as it is.
enum class WatermarkSize { Keep, Shrink, Expand, ShrinkOrExpand };

/// How semi-transparent colours become a GIF's one-bit transparency.
enum class GifDither { None, Ordered, FloydSteinberg };

struct WatermarkOptions
{
    bool enabled = false;
    QString fileName;
    /// Percent, 0 to 100.
    int opacity = 100;
    WatermarkSize size = WatermarkSize::Keep;
    /// 0 to 8: the cell of a 3 by 3 grid, row by row from the top left.
    int position = 8;
    bool keepAspectRatio = true;
};

struct GifOptions
{
    /// 0 plays forever.
    int loopCount = 0;
    GifDither dither = GifDither::FloydSteinberg;
    /// Pixels of a transparent background with less alpha than this (0 to 255)
    /// become transparent, the others opaque.
    int alphaThreshold = 128;
    /// When valid, semi-transparent pixels are blended over this colour
    /// instead, and only fully transparent ones stay transparent.
    QColor matte;
    /// One palette for all frames (steady colours, a smaller file) or one per
    /// frame (truer colours where frames differ much).
    bool sharedPalette = true;
};

/// Everything one export run needs to know besides the animation and the
/// output name. Times are milliseconds; rectangles are canvas coordinates
/// (y grows downward).
struct ExportOptions
{
    ExportKind kind = ExportKind::NumberedPngs;
    /// Percentages of the source rectangle's size.
    double scaleWidth = 100.0;
    double scaleHeight = 100.0;
    bool constrainProportions = true;
    TrimType trim = TrimType::Animation;
    QRectF customRect = QRectF(-100.0, -100.0, 200.0, 200.0);
    /// Sheet frames per row.
    int framesPerRow = 0; // 0: every frame in one row
    /// Distance of evenly spaced frames.
    int interval = 100;
    bool keyframesOnly = false;
    /// Fill with `background` instead of leaving the image transparent.
    bool fillBackground = false;
    QColor background = QColor(0xa0, 0xa0, 0xa4);
    bool pixelArt = false;
    bool smooth = true;
    /// Colours multiplied by alpha in the written PNGs, as game engines blend them.
    bool premultiplied = false;
    WatermarkOptions watermark;
    GifOptions gif;
    /// Batch export of every animation of the entity (the dialog's).
    bool batch = false;
    bool batchVertical = false;
    bool batchSetIntervals = false;

    /// Reads the options remembered under the export keys; missing keys keep
    /// the defaults above.
    void load(QSettings &settings);
    void save(QSettings &settings) const;
};

/// The settings words of the options, as stored.
QString exportKindKey(ExportKind kind);
QString trimTypeKey(TrimType trim);
QString watermarkSizeKey(WatermarkSize size);
bool exportKindFromKey(const QString &text, ExportKind *kind);
bool trimTypeFromKey(const QString &text, TrimType *trim);
bool watermarkSizeFromKey(const QString &text, WatermarkSize *size);

/// round(length / interval) frames (at least one), 0 for a non-positive interval.
int evenFrameCount(int length, int interval);
/// What the evenly spaced frames leave out at the end: length mod interval.
int trimmedRemainder(int length, int interval);

/// One frame of a run: its time and how long it shows (milliseconds).
struct FrameTime
{
    int time = 0;
    int duration = 0;
    bool operator==(const FrameTime &o) const { return time == o.time && duration == o.duration; }
};

/// The frames of `animation` under `options`: one per mainline key (each
/// lasting until the next, the last until the end) with keyframes only, else
/// at 0, interval, 2 × interval, ... below the length.
QList<FrameTime> exportFrameTimes(const Animation *animation, const ExportOptions &options);

/// The sheet's rows for `frames` frames at `perRow` per row (at least one).
int getOtherOrientationNumberOfTiles(int frames, int perRow);

} // namespace Morvane
