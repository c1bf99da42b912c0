// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/palette/thumbnailloader.h"

#include "model/imagecache.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>

namespace Morvane {

ThumbnailLoader::ThumbnailLoader(QObject *parent)
    : QObject(parent)
{
    // The editor shares the machine with the canvas: one decoder is enough.
    mPool.setMaxThreadCount(1);
}

ThumbnailLoader::~ThumbnailLoader()
{
    // Workers post to this object; none may outlive it.
    mPool.clear();
    mPool.waitForDone();
}

QImage ThumbnailLoader::decode(const QString &path)
{
    QFile file;
    QString why;
    if (!ImageCache::openImageFile(path, &file, &why))
        return QImage();
    QImageReader reader(&file);
    const QSize size = reader.size();
    if (!size.isValid() || qint64(size.width()) * size.height() > MaxPixels)
        return QImage();
    if (size.width() > Side || size.height() > Side)
        reader.setScaledSize(size.scaled(Side, Side, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    QImage image = reader.read();
    return image.isNull() ? QImage() : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

QImage ThumbnailLoader::thumbnail(const QString &path)
{
    const QFileInfo info(path);
    const QDateTime modified = info.lastModified();
    const qint64 size = info.size();
    auto it = mCache.constFind(path);
    if (it != mCache.constEnd() && it->modified == modified && it->size == size)
        return it->image;
    if (mPending.contains(path))
        return QImage();
    mPending.insert(path);
    ++mDecodes;
    mPool.start([this, path, modified, size] {
        const QImage image = decode(path);
        QMetaObject::invokeMethod(
            this, [this, path, image, modified, size] { store(path, image, modified, size); },
            Qt::QueuedConnection);
    });
    return QImage();
}

void ThumbnailLoader::store(const QString &path, const QImage &image, const QDateTime &modified,
                            qint64 size)
{
    mPending.remove(path);
    mCache.insert(path, Entry{image, modified, size, image.isNull()});
    Q_EMIT ready(path);
}

} // namespace Morvane
