// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "atlas/jsonspritesheet.h"

#include "io/json.h"
#include "model/imagecache.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QSet>

#include <cmath>
#include <cstring>

namespace Morvane {

namespace {

// Only numbers count; a string or an object where a number belongs reads as 0. Values
// beyond 32 bits are clamped, so that "huge" stays huge instead of wrapping round.
qint32 intMember(const QVariantMap &map, const QString &key)
{
    const QVariant value = map.value(key);
    const int type = value.metaType().id();
    if (type != QMetaType::Double && type != QMetaType::LongLong && type != QMetaType::Int &&
        type != QMetaType::ULongLong)
        return 0;
    const double number = value.toDouble();
    if (!std::isfinite(number))
        return 0;
    if (number >= 2147483647.0)
        return std::numeric_limits<qint32>::max();
    if (number <= -2147483648.0)
        return std::numeric_limits<qint32>::min();
    return qint32(number);
}

bool boolMember(const QVariantMap &map, const QString &key)
{
    const QVariant value = map.value(key);
    return value.metaType().id() == QMetaType::Bool && value.toBool();
}

bool pointMember(const QVariantMap &entry, const QString &key, QPointF *point)
{
    const QVariantMap map = entry.value(key).toMap();
    const QVariant x = map.value(QStringLiteral("x"));
    const QVariant y = map.value(QStringLiteral("y"));
    bool okX = false;
    bool okY = false;
    const double px = x.toDouble(&okX);
    const double py = y.toDouble(&okY);
    if (x.metaType().id() == QMetaType::QString || y.metaType().id() == QMetaType::QString ||
        !okX || !okY || !std::isfinite(px) || !std::isfinite(py))
        return false;
    *point = QPointF(px, py);
    return true;
}

// Copies `src` into `dst` with its top left corner at (x, y), clipped to `dst`. Both are
// 32 bits a pixel; pixels are copied, not blended, so they arrive unchanged.
void blit(QImage *dst, const QImage &src, qint64 x, qint64 y)
{
    const qint64 left = qMax<qint64>(0, x);
    const qint64 top = qMax<qint64>(0, y);
    const qint64 right = qMin<qint64>(dst->width(), x + src.width());
    const qint64 bottom = qMin<qint64>(dst->height(), y + src.height());
    if (right <= left || bottom <= top)
        return;
    const size_t bytes = size_t(right - left) * 4;
    for (qint64 row = top; row < bottom; ++row) {
        const uchar *from = src.constScanLine(int(row - y)) + (left - x) * 4;
        std::memcpy(dst->scanLine(int(row)) + left * 4, from, bytes);
    }
}

// Clips the rectangle (x, y, w, h) to (0, 0, width, height); false when nothing is left.
bool clip(qint64 x, qint64 y, qint64 w, qint64 h, int width, int height, QRect *clipped)
{
    const qint64 left = qMax<qint64>(0, x);
    const qint64 top = qMax<qint64>(0, y);
    const qint64 right = qMin<qint64>(width, x + w);
    const qint64 bottom = qMin<qint64>(height, y + h);
    if (right <= left || bottom <= top)
        return false;
    *clipped = QRect(int(left), int(top), int(right - left), int(bottom - top));
    return true;
}

} // namespace

JsonSpriteSheet::JsonSpriteSheet(const QString &path, qint64 pixelBudget)
    : mBudget(pixelBudget)
{
    setSpriteSheetFile(path);
}

bool JsonSpriteSheet::setSpriteSheetFile(const QString &path)
{
    clear();
    QVariantMap meta;
    if (!loadOne(path, &meta))
        return false;

    // Packers that split a sheet list the siblings in the first one's "meta"; their frames
    // join this sheet. Siblings' own lists are not followed, so no chain can loop.
    const QVariantList related = meta.value(QStringLiteral("related_multi_packs")).toList();
    const QString directory = QFileInfo(path).absolutePath();
    QSet<QString> seen{QFileInfo(path).absoluteFilePath()};
    int read = 0;
    for (const QVariant &item : related) {
        if (item.metaType().id() != QMetaType::QString)
            continue;
        const QString siblingPath =
            QFileInfo(directory + QLatin1Char('/') + item.toString()).absoluteFilePath();
        if (seen.contains(siblingPath))
            continue;
        seen.insert(siblingPath);
        if (++read > MaxRelatedSheets) {
            warn(QStringLiteral("Sprite sheet \"%1\" lists more than %2 related sheets; the "
                                "rest are not read.")
                     .arg(mFileName)
                     .arg(MaxRelatedSheets));
            break;
        }
        JsonSpriteSheet sibling;
        sibling.mBudget = mBudget - mPixels;
        QVariantMap ignored;
        sibling.loadOne(siblingPath, &ignored);
        mWarnings += sibling.mWarnings;
        mPixels += sibling.mPixels;
        for (auto it = sibling.mFrames.constBegin(); it != sibling.mFrames.constEnd(); ++it) {
            if (mFrames.contains(it.key()))
                continue;
            mFrames.insert(it.key(), it.value());
            if (sibling.mPivots.contains(it.key()))
                mPivots.insert(it.key(), sibling.mPivots.value(it.key()));
        }
    }
    return !isEmpty();
}

bool JsonSpriteSheet::loadOne(const QString &path, QVariantMap *meta)
{
    mFileName = path;
    QFile file;
    QString why;
    if (!ImageCache::openImageFile(path, &file, &why)) {
        warn(QStringLiteral("Sprite sheet \"%1\" cannot be read: %2.")
                 .arg(path, why.isEmpty() ? file.errorString() : why));
        return false;
    }
    if (file.size() > MaxDescriptionBytes) {
        warn(QStringLiteral("Sprite sheet \"%1\" is longer than %2 MB; it is not read.")
                 .arg(path)
                 .arg(MaxDescriptionBytes / (1024 * 1024)));
        return false;
    }
    QString error;
    const QVariantMap description = Json::decodeUtf8(file.readAll(), &error);
    if (!error.isEmpty()) {
        warn(QStringLiteral("Sprite sheet \"%1\" cannot be parsed: %2.").arg(path, error));
        return false;
    }
    *meta = description.value(QStringLiteral("meta")).toMap();
    const QVariant imageName = meta->value(QStringLiteral("image"));
    if (imageName.metaType().id() != QMetaType::QString || imageName.toString().isEmpty()) {
        warn(QStringLiteral("Sprite sheet \"%1\" names no image.").arg(path));
        return false;
    }
    mImageFileName = QFileInfo(path).absolutePath() + QLatin1Char('/') + imageName.toString();
    if (!loadImage(mImageFileName))
        return false;

    // The "JSON hash" layout keys frames by name; the array layout names them inside.
    const QVariant frames = description.value(QStringLiteral("frames"));
    QMap<QString, QVariantMap> entries;
    if (frames.metaType().id() == QMetaType::QVariantList) {
        for (const QVariant &item : frames.toList()) {
            const QVariantMap entry = item.toMap();
            const QVariant name = entry.value(QStringLiteral("filename"));
            if (name.metaType().id() == QMetaType::QString)
                entries.insert(name.toString(), entry);
        }
    } else {
        const QVariantMap map = frames.toMap();
        for (auto it = map.constBegin(); it != map.constEnd(); ++it)
            entries.insert(it.key(), it.value().toMap());
    }
    for (auto it = entries.constBegin(); it != entries.constEnd(); ++it) {
        const JsonFrame frame = frameFromJson(it.value());
        const QImage pixmap = pixmapFromJsonFrame(frame);
        if (pixmap.isNull()) {
            warn(QStringLiteral("Sprite sheet \"%1\": frame \"%2\" has no usable size; it is "
                                "left empty.")
                     .arg(path, it.key()));
            continue;
        }
        mFrames.insert(it.key(), pixmap);
        QPointF pivot;
        if (pointMember(it.value(), QStringLiteral("pivot"), &pivot) ||
            pointMember(it.value(), QStringLiteral("anchor"), &pivot))
            mPivots.insert(it.key(), pivot);
    }
    if (mFrames.isEmpty())
        warn(QStringLiteral("Sprite sheet \"%1\" has no frames.").arg(path));
    return !mFrames.isEmpty();
}

bool JsonSpriteSheet::loadImage(const QString &path)
{
    QFile file;
    QString why;
    if (!ImageCache::openImageFile(path, &file, &why)) {
        warn(QStringLiteral("Sprite sheet \"%1\": its image \"%2\" cannot be read: %3.")
                 .arg(mFileName, path, why.isEmpty() ? file.errorString() : why));
        return false;
    }
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    const auto tooLarge = [&](QSize s) {
        if (qint64(s.width()) * s.height() <= MaxImagePixels)
            return false;
        warn(QStringLiteral("Sprite sheet \"%1\": its image is too large (%2 x %3 pixels).")
                 .arg(mFileName)
                 .arg(s.width())
                 .arg(s.height()));
        return true;
    };
    if (size.isValid() && tooLarge(size))
        return false;
    if (size.isValid() && !reserve(qint64(size.width()) * size.height(), QStringLiteral("image")))
        return false;
    QImage image = reader.read();
    if (image.isNull()) {
        warn(QStringLiteral("Sprite sheet \"%1\": \"%2\" is not an image it can read (%3).")
                 .arg(mFileName, path, reader.errorString()));
        mPixels = 0;
        return false;
    }
    if (image.size() != size) {
        // The header did not tell the size, or not the truth.
        mPixels = 0;
        if (tooLarge(image.size()) ||
            !reserve(qint64(image.width()) * image.height(), QStringLiteral("image")))
            return false;
    }
    // One known layout, so frames copy with plain memory copies and keep exact pixels.
    mImage = image.convertToFormat(QImage::Format_ARGB32);
    return !mImage.isNull();
}

QImage JsonSpriteSheet::pixmapFromFileName(const QString &name) const
{
    return mFrames.value(name);
}

bool JsonSpriteSheet::framePivot(const QString &name, QPointF *pivot) const
{
    const auto it = mPivots.constFind(name);
    if (it == mPivots.constEnd())
        return false;
    *pivot = it.value();
    return true;
}

JsonFrame JsonSpriteSheet::frameFromJson(const QVariantMap &entry)
{
    const QVariantMap frame = entry.value(QStringLiteral("frame")).toMap();
    const QVariantMap spriteSource = entry.value(QStringLiteral("spriteSourceSize")).toMap();
    const QVariantMap source = entry.value(QStringLiteral("sourceSize")).toMap();
    JsonFrame result;
    result.width = intMember(frame, QStringLiteral("w"));
    result.height = intMember(frame, QStringLiteral("h"));
    result.x = intMember(frame, QStringLiteral("x"));
    result.y = intMember(frame, QStringLiteral("y"));
    result.rotated = boolMember(entry, QStringLiteral("rotated"));
    result.trimmed = boolMember(entry, QStringLiteral("trimmed"));
    result.offsetX = intMember(spriteSource, QStringLiteral("x"));
    result.offsetY = intMember(spriteSource, QStringLiteral("y"));
    result.sourceWidth = intMember(source, QStringLiteral("w"));
    result.sourceHeight = intMember(source, QStringLiteral("h"));
    return result;
}

QImage JsonSpriteSheet::pixmapFromJsonFrame(const JsonFrame &frame)
{
    if (mImage.isNull() || frame.width <= 0 || frame.height <= 0 || frame.sourceWidth < 1 ||
        frame.sourceHeight < 1)
        return QImage();
    const qint64 area = qint64(frame.sourceWidth) * frame.sourceHeight;
    if (area > MaxImagePixels || !reserve(area, QStringLiteral("frame")))
        return QImage();
    QImage result(frame.sourceWidth, frame.sourceHeight, QImage::Format_ARGB32);
    if (result.isNull()) {
        mPixels -= area;
        return QImage();
    }
    result.fill(Qt::transparent);

    QRect part;
    if (!frame.rotated) {
        if (clip(frame.x, frame.y, frame.width, frame.height, mImage.width(), mImage.height(),
                 &part)) {
            blit(&result, mImage.copy(part), qint64(frame.offsetX) + part.x() - frame.x,
                 qint64(frame.offsetY) + part.y() - frame.y);
        }
    } else {
        // A rotated frame covers `height` columns and `width` rows of the sheet.
        if (mTransposed.isNull()) {
            if (!reserve(qint64(mImage.width()) * mImage.height(), QStringLiteral("rotated copy")))
                return result;
            // Made once for all rotated frames: the sheet's pixel (x, y) lands at (y, x), so
            // a frame turned a quarter clockwise reads back upside down and one vertical
            // flip sets it upright.
            mTransposed = QImage(mImage.height(), mImage.width(), QImage::Format_ARGB32);
            for (int y = 0; y < mImage.height(); ++y) {
                const auto *row = reinterpret_cast<const quint32 *>(mImage.constScanLine(y));
                for (int x = 0; x < mImage.width(); ++x)
                    reinterpret_cast<quint32 *>(mTransposed.scanLine(x))[y] = row[x];
            }
        }
        if (clip(frame.y, frame.x, frame.width, frame.height, mTransposed.width(),
                 mTransposed.height(), &part)) {
            // Row r of the full rectangle ends up at row height - 1 - r after the flip.
            const qint64 top = qint64(frame.height) - (qint64(part.bottom()) + 1 - frame.x);
            blit(&result, mTransposed.copy(part).mirrored(false, true),
                 qint64(frame.offsetX) + part.x() - frame.y, qint64(frame.offsetY) + top);
        }
    }
    if (part.isEmpty() || part.width() != frame.width || part.height() != frame.height)
        warn(QStringLiteral("Sprite sheet \"%1\": a frame reaches outside the sheet; it is "
                            "clipped.")
                 .arg(mFileName));
    if (frame.offsetX < 0 || frame.offsetY < 0 ||
        qint64(frame.offsetX) + frame.width > frame.sourceWidth ||
        qint64(frame.offsetY) + frame.height > frame.sourceHeight)
        warn(QStringLiteral("Sprite sheet \"%1\": a frame lies outside its source size; it is "
                            "clipped.")
                 .arg(mFileName));
    return result;
}

void JsonSpriteSheet::clear()
{
    mImage = QImage();
    mTransposed = QImage();
    mImageFileName.clear();
    mFileName.clear();
    mFrames.clear();
    mPivots.clear();
    mPixels = 0;
    mWarnings.clear();
}

bool JsonSpriteSheet::reserve(qint64 pixels, const QString &what)
{
    if (mPixels + pixels <= mBudget) {
        mPixels += pixels;
        return true;
    }
    warn(QStringLiteral("Sprite sheet \"%1\": the %2 would take more than %3 megapixels; it is "
                        "left out.")
             .arg(mFileName, what)
             .arg(mBudget / (1024 * 1024)));
    return false;
}

void JsonSpriteSheet::warn(const QString &line)
{
    // A description of many broken frames must not flood the log.
    constexpr int MaxWarnings = 20;
    if (mWarnings.size() < MaxWarnings) {
        qWarning("%s", qPrintable(line));
        mWarnings.append(line);
    } else if (mWarnings.size() == MaxWarnings) {
        mWarnings.append(
            QStringLiteral("Sprite sheet \"%1\": further problems are not listed.").arg(mFileName));
    }
}

} // namespace Morvane
