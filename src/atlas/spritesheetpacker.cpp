// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "atlas/spritesheetpacker.h"

#include "atlas/maxrectspacker.h"
#include "io/json.h"

#include <QDir>
#include <QSaveFile>
#include <QVariantMap>

#include <algorithm>
#include <vector>

namespace Morvane {

namespace {

struct Item
{
    QString name;
    QImage image;   // ARGB32, trimmed when trimming
    QRect trimRect; // where `image` lies in the source
    QSize source;
    QRect placed; // in the sheet, without extrusion
    bool rotated = false;
    int sheet = -1;
};

QVariantMap rectMap(int x, int y, int w, int h)
{
    return {{QStringLiteral("x"), x},
            {QStringLiteral("y"), y},
            {QStringLiteral("w"), w},
            {QStringLiteral("h"), h}};
}

QVariantMap sizeMap(int w, int h)
{
    return {{QStringLiteral("w"), w}, {QStringLiteral("h"), h}};
}

// Turns an image a quarter clockwise: its pixel (u, v) lands at (height - 1 - v, u).
QImage turnedClockwise(const QImage &image)
{
    QImage turned(image.height(), image.width(), QImage::Format_ARGB32);
    for (int v = 0; v < image.height(); ++v) {
        const auto *row = reinterpret_cast<const quint32 *>(image.constScanLine(v));
        for (int u = 0; u < image.width(); ++u)
            reinterpret_cast<quint32 *>(turned.scanLine(u))[image.height() - 1 - v] = row[u];
    }
    return turned;
}

// Draws `image` at `at` and repeats its outermost pixels `extrude` times around it.
void drawExtruded(QImage *sheet, const QImage &image, QPoint at, int extrude)
{
    for (int y = -extrude; y < image.height() + extrude; ++y) {
        const int sy = qBound(0, y, image.height() - 1);
        const int ty = at.y() + y;
        if (ty < 0 || ty >= sheet->height())
            continue;
        const auto *from = reinterpret_cast<const quint32 *>(image.constScanLine(sy));
        auto *to = reinterpret_cast<quint32 *>(sheet->scanLine(ty));
        for (int x = -extrude; x < image.width() + extrude; ++x) {
            const int tx = at.x() + x;
            if (tx >= 0 && tx < sheet->width())
                to[tx] = from[qBound(0, x, image.width() - 1)];
        }
    }
}

bool writeBytes(const QString &path, const QByteArray &bytes, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        *error = QStringLiteral("Cannot write file %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace

QRect SpriteSheetPacker::opaqueRect(const QImage &image)
{
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    int left = argb.width();
    int right = -1;
    int top = argb.height();
    int bottom = -1;
    for (int y = 0; y < argb.height(); ++y) {
        const auto *row = reinterpret_cast<const quint32 *>(argb.constScanLine(y));
        for (int x = 0; x < argb.width(); ++x) {
            if (qAlpha(row[x]) == 0)
                continue;
            left = qMin(left, x);
            right = qMax(right, x);
            top = qMin(top, y);
            bottom = qMax(bottom, y);
        }
    }
    if (right < 0)
        return QRect();
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

QStringList SpriteSheetPacker::pack(const QMap<QString, QImage> &images, const Options &options,
                                    const QString &directory, QString *error)
{
    const int maxSize = qBound(1, options.maxSize, MaxSheetSide);
    const int padding = qBound(0, options.padding, maxSize);
    const int extrude = qBound(0, options.extrude, maxSize);

    std::vector<Item> items;
    for (auto it = images.constBegin(); it != images.constEnd(); ++it) {
        if (it.value().isNull())
            continue;
        Item item;
        item.name = it.key();
        item.source = it.value().size();
        const QImage argb = it.value().convertToFormat(QImage::Format_ARGB32);
        item.trimRect = QRect(QPoint(0, 0), item.source);
        if (options.trim) {
            // A wholly transparent image keeps one pixel, so that it still has a frame.
            const QRect opaque = opaqueRect(argb);
            item.trimRect = opaque.isEmpty() ? QRect(0, 0, 1, 1) : opaque;
        }
        item.image = argb.copy(item.trimRect);
        items.push_back(item);
    }
    // Largest first: the big ones find room while the bin is still open.
    std::stable_sort(items.begin(), items.end(), [](const Item &a, const Item &b) {
        const int sideA = qMax(a.image.width(), a.image.height());
        const int sideB = qMax(b.image.width(), b.image.height());
        if (sideA != sideB)
            return sideA > sideB;
        return qint64(a.image.width()) * a.image.height() >
               qint64(b.image.width()) * b.image.height();
    });

    // Fill one sheet after the other with what is left.
    std::vector<MaxRectsPacker> bins;
    size_t left = items.size();
    while (left > 0) {
        bins.emplace_back(QSize(maxSize, maxSize), options.rotate, padding);
        MaxRectsPacker &bin = bins.back();
        const int sheet = int(bins.size()) - 1;
        for (Item &item : items) {
            if (item.sheet >= 0)
                continue;
            QRect where;
            bool rotated = false;
            const QSize size = item.image.size() + QSize(2 * extrude, 2 * extrude);
            if (!bin.insert(size, &where, &rotated))
                continue;
            item.sheet = sheet;
            item.rotated = rotated;
            item.placed = where.adjusted(extrude, extrude, -extrude, -extrude);
            --left;
        }
        if (bin.usedSize().isEmpty()) {
            *error = QStringLiteral("An image is larger than the sheet's maximum size (%1 "
                                    "pixels)")
                         .arg(maxSize);
            return {};
        }
    }

    if (!QDir().mkpath(directory)) {
        *error = QStringLiteral("Cannot create directory %1").arg(directory);
        return {};
    }
    QStringList descriptions;
    QStringList imageNames;
    for (size_t s = 0; s < bins.size(); ++s) {
        const QString base =
            s == 0 ? options.baseName : options.baseName + QLatin1Char('-') + QString::number(s);
        descriptions.append(base + QStringLiteral(".json"));
        imageNames.append(base + QStringLiteral(".png"));
    }
    for (size_t s = 0; s < bins.size(); ++s) {
        QImage sheet(bins[s].usedSize(), QImage::Format_ARGB32);
        if (sheet.isNull()) {
            *error = QStringLiteral("Not enough memory for a sheet of %1 x %2 pixels")
                         .arg(bins[s].usedSize().width())
                         .arg(bins[s].usedSize().height());
            return {};
        }
        sheet.fill(Qt::transparent);
        QVariantMap frames;
        for (const Item &item : items) {
            if (item.sheet != int(s))
                continue;
            const QImage stored = item.rotated ? turnedClockwise(item.image) : item.image;
            drawExtruded(&sheet, stored, item.placed.topLeft(), extrude);
            const QRect &trim = item.trimRect;
            QVariantMap frame;
            // The frame's size is the upright one, also for a frame stored turned.
            frame.insert(QStringLiteral("frame"),
                         rectMap(item.placed.x(), item.placed.y(), trim.width(), trim.height()));
            frame.insert(QStringLiteral("rotated"), item.rotated);
            frame.insert(QStringLiteral("trimmed"), trim.size() != item.source);
            frame.insert(QStringLiteral("spriteSourceSize"),
                         rectMap(trim.x(), trim.y(), trim.width(), trim.height()));
            frame.insert(QStringLiteral("sourceSize"),
                         sizeMap(item.source.width(), item.source.height()));
            frames.insert(item.name, frame);
        }
        QVariantMap meta{
            {QStringLiteral("app"), QStringLiteral("Morvane")},
            {QStringLiteral("version"), QStringLiteral("1.0")},
            {QStringLiteral("image"), imageNames.at(qsizetype(s))},
            {QStringLiteral("format"), QStringLiteral("RGBA8888")},
            {QStringLiteral("size"), sizeMap(sheet.width(), sheet.height())},
            {QStringLiteral("scale"), QStringLiteral("1")},
        };
        if (s == 0 && bins.size() > 1)
            meta.insert(QStringLiteral("related_multi_packs"), QStringList(descriptions.mid(1)));
        const QString imagePath = directory + QLatin1Char('/') + imageNames.at(qsizetype(s));
        QSaveFile png(imagePath);
        if (!png.open(QIODevice::WriteOnly) || !sheet.save(&png, "PNG") || !png.commit()) {
            *error = QStringLiteral("Cannot write file %1: %2").arg(imagePath, png.errorString());
            return {};
        }
        const QVariantMap description{{QStringLiteral("frames"), frames},
                                      {QStringLiteral("meta"), meta}};
        if (!writeBytes(directory + QLatin1Char('/') + descriptions.at(qsizetype(s)),
                        Json::encodeToUtf8(description), error))
            return {};
    }
    return descriptions;
}

} // namespace Morvane
