// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/exportoptions.h"

#include "model/animation.h"
#include "model/mainlinekey.h"

#include <QSettings>

#include <cmath>

namespace Morvane {

namespace {

struct KindName
{
    ExportKind kind;
    const char *key;
};
const KindName sKinds[] = {
    {ExportKind::NumberedPngs, "numbered pngs"},
    {ExportKind::SpriteSheet, "png spritesheet"},
    {ExportKind::Gif, "gif"},
};

struct TrimName
{
    TrimType trim;
    const char *key;
};
const TrimName sTrims[] = {
    {TrimType::Animation, "trim rect to animation"},
    {TrimType::EachFrame, "trim rect to each frame"},
    {TrimType::Entity, "trim rect to entity"},
    {TrimType::AllEntities, "trim rect to all entities"},
    {TrimType::Custom, "custom rect..."},
};

struct SizeName
{
    WatermarkSize size;
    const char *key;
};
const SizeName sSizes[] = {
    {WatermarkSize::Keep, "keep"},
    {WatermarkSize::Shrink, "shrink"},
    {WatermarkSize::Expand, "expand"},
    {WatermarkSize::ShrinkOrExpand, "shrink or expand"},
};

const char *const sDitherKeys[] = {"none", "ordered", "floyd-steinberg"};

QString key(const char *text)
{
    return QLatin1String(text);
}

} // namespace

QString exportKindKey(ExportKind kind)
{
    for (const KindName &k : sKinds) {
        if (k.kind == kind)
            return QLatin1String(k.key);
    }
    return QLatin1String(sKinds[0].key);
}

QString trimTypeKey(TrimType trim)
{
    for (const TrimName &t : sTrims) {
        if (t.trim == trim)
            return QLatin1String(t.key);
    }
    return QLatin1String(sTrims[0].key);
}

QString watermarkSizeKey(WatermarkSize size)
{
    for (const SizeName &s : sSizes) {
        if (s.size == size)
            return QLatin1String(s.key);
    }
    return QLatin1String(sSizes[0].key);
}

bool exportKindFromKey(const QString &text, ExportKind *kind)
{
    for (const KindName &k : sKinds) {
        if (text == QLatin1String(k.key)) {
            *kind = k.kind;
            return true;
        }
    }
    return false;
}

bool trimTypeFromKey(const QString &text, TrimType *trim)
{
    for (const TrimName &t : sTrims) {
        if (text == QLatin1String(t.key)) {
            *trim = t.trim;
            return true;
        }
    }
    return false;
}

bool watermarkSizeFromKey(const QString &text, WatermarkSize *size)
{
    for (const SizeName &s : sSizes) {
        if (text == QLatin1String(s.key)) {
            *size = s.size;
            return true;
        }
    }
    return false;
}

void ExportOptions::load(QSettings &s)
{
    // A value of the wrong kind in the store (edited by hand) keeps the default.
    auto real = [&s](const char *name, double fallback) {
        bool ok = false;
        const double v = s.value(key(name), fallback).toDouble(&ok);
        return ok && std::isfinite(v) ? v : fallback;
    };
    auto whole = [&s](const char *name, int fallback) {
        bool ok = false;
        const int v = s.value(key(name), fallback).toInt(&ok);
        return ok ? v : fallback;
    };
    auto flag = [&s](const char *name, bool fallback) {
        return s.value(key(name), fallback).toBool();
    };
    exportKindFromKey(s.value(key("png export file type")).toString(), &kind);
    scaleWidth = real("png export output scale width", scaleWidth);
    scaleHeight = real("png export output scale height", scaleHeight);
    constrainProportions = flag("png export output scale proportions", constrainProportions);
    trimTypeFromKey(s.value(key("export trim type")).toString(), &trim);
    const double left = real("export trim left", customRect.left());
    const double top = real("export trim top", customRect.top());
    const double right = real("export trim right", customRect.right());
    const double bottom = real("export trim bottom", customRect.bottom());
    customRect = QRectF(QPointF(left, top), QPointF(right, bottom)).normalized();
    framesPerRow = qMax(0, whole("png export horiz frames", framesPerRow));
    interval = qMax(1, whole("png export source frame interval", interval));
    keyframesOnly = flag("png export keyframes only", keyframesOnly);
    fillBackground = flag("png export fill background", fillBackground);
    watermark.enabled = flag("png export watermark enabled", watermark.enabled);
    watermark.fileName = s.value(key("png export watermark filename"), watermark.fileName).toString();
    watermark.opacity = qBound(0, whole("png export watermark opacity", watermark.opacity), 100);
    watermarkSizeFromKey(s.value(key("png export watermark size")).toString(), &watermark.size);
    watermark.position = qBound(0, whole("png export watermark position", watermark.position), 8);
    watermark.keepAspectRatio = flag("png export watermark keep aspect ratio",
                                     watermark.keepAspectRatio);
    batch = flag("export batch", batch);
    batchVertical = flag("export batch use vertical sheet value", batchVertical);
    batchSetIntervals = flag("export batch overwrite anim fps", batchSetIntervals);
    premultiplied = flag("png export premultiplied alpha", premultiplied);
    gif.loopCount = qMax(0, whole("gif export loop count", gif.loopCount));
    const QString dither = s.value(key("gif export dither")).toString();
    for (int i = 0; i < 3; ++i) {
        if (dither == QLatin1String(sDitherKeys[i]))
            gif.dither = GifDither(i);
    }
    gif.alphaThreshold = qBound(0, whole("gif export alpha threshold", gif.alphaThreshold), 255);
    const QColor matte(s.value(key("gif export matte")).toString());
    gif.matte = matte.isValid() ? matte : QColor();
    gif.sharedPalette = flag("gif export shared palette", gif.sharedPalette);
}

void ExportOptions::save(QSettings &s) const
{
    s.setValue(key("png export file type"), exportKindKey(kind));
    s.setValue(key("png export output scale width"), scaleWidth);
    s.setValue(key("png export output scale height"), scaleHeight);
    s.setValue(key("png export output scale proportions"), constrainProportions);
    s.setValue(key("export trim type"), trimTypeKey(trim));
    s.setValue(key("export trim left"), customRect.left());
    s.setValue(key("export trim top"), customRect.top());
    s.setValue(key("export trim right"), customRect.right());
    s.setValue(key("export trim bottom"), customRect.bottom());
    s.setValue(key("png export horiz frames"), framesPerRow);
    s.setValue(key("png export source frame interval"), interval);
    s.setValue(key("png export keyframes only"), keyframesOnly);
    s.setValue(key("png export fill background"), fillBackground);
    s.setValue(key("png export watermark enabled"), watermark.enabled);
    s.setValue(key("png export watermark filename"), watermark.fileName);
    s.setValue(key("png export watermark opacity"), watermark.opacity);
    s.setValue(key("png export watermark size"), watermarkSizeKey(watermark.size));
    s.setValue(key("png export watermark position"), watermark.position);
    s.setValue(key("png export watermark keep aspect ratio"), watermark.keepAspectRatio);
    s.setValue(key("export batch"), batch);
    s.setValue(key("export batch use vertical sheet value"), batchVertical);
    s.setValue(key("export batch overwrite anim fps"), batchSetIntervals);
    s.setValue(key("png export premultiplied alpha"), premultiplied);
    s.setValue(key("gif export loop count"), gif.loopCount);
    s.setValue(key("gif export dither"), QLatin1String(sDitherKeys[int(gif.dither)]));
    s.setValue(key("gif export alpha threshold"), gif.alphaThreshold);
    s.setValue(key("gif export matte"), gif.matte.isValid() ? gif.matte.name() : QString());
    s.setValue(key("gif export shared palette"), gif.sharedPalette);
}

int evenFrameCount(int length, int interval)
{
    if (interval <= 0)
        return 0;
    return qMax(1, int(std::lround(double(qMax(0, length)) / interval)));
}

int trimmedRemainder(int length, int interval)
{
    return interval > 0 ? qMax(0, length) % interval : 0;
}

QList<FrameTime> exportFrameTimes(const Animation *animation, const ExportOptions &options)
{
    QList<FrameTime> frames;
    if (!animation)
        return frames;
    const int length = qMax(0, animation->length());
    if (options.keyframesOnly) {
        for (int i = 0; i < animation->mainlineKeyCount(); ++i) {
            const int t = animation->mainlineKey(i)->currentTime();
            if (t > length)
                break;
            if (!frames.isEmpty())
                frames.last().duration = t - frames.last().time;
            frames.append({t, 0});
        }
        if (!frames.isEmpty())
            frames.last().duration = qMax(0, length - frames.last().time);
        return frames;
    }
    const int count = evenFrameCount(length, options.interval);
    for (int k = 0; k < count; ++k)
        frames.append({k * options.interval, options.interval});
    return frames;
}

int getOtherOrientationNumberOfTiles(int frames, int perRow)
{
    if (perRow <= 0 || frames <= 0)
        return 1;
    return (frames + perRow - 1) / perRow;
}

} // namespace Morvane
