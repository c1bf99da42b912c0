// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/imagecache.h"

#include "model/file.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Morvane {

namespace {

QString notAnImage(mode_t mode)
{
    if (S_ISFIFO(mode))
        return QStringLiteral("is a FIFO, not an image file");
    if (S_ISDIR(mode))
        return QStringLiteral("is a directory, not an image file");
    if (S_ISCHR(mode))
        return QStringLiteral("is a character device, not an image file");
    if (S_ISBLK(mode))
        return QStringLiteral("is a block device, not an image file");
    if (S_ISSOCK(mode))
        return QStringLiteral("is a socket, not an image file");
    return QStringLiteral("is not a regular file, not an image file");
}

qint64 area(QSize size)
{
    return qint64(qMax(0, size.width())) * qMax(0, size.height());
}

} // namespace

bool ImageCache::openImageFile(const QString &path, QFile *file, QString *why)
{
    why->clear();
    // Opened first and checked on the descriptor, not checked by name and then
    // opened: the name could be swapped for a FIFO in between. O_NONBLOCK keeps
    // the open itself from waiting for a writer when the name is a FIFO.
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        // A socket cannot be opened at all; say so rather than call it missing.
        struct stat status;
        if (errno == ENXIO && ::stat(QFile::encodeName(path).constData(), &status) == 0)
            *why = notAnImage(status.st_mode);
        return false;
    }
    struct stat status;
    if (::fstat(fd, &status) != 0) {
        ::close(fd);
        return false;
    }
    if (!S_ISREG(status.st_mode) || status.st_size == 0) {
        // An empty name in /proc can block on reading (it reports no size);
        // no image file is empty.
        *why = S_ISREG(status.st_mode) ? QStringLiteral("is empty, not an image file")
                                       : notAnImage(status.st_mode);
        ::close(fd);
        return false;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    if (!file->open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return false;
    }
    return true;
}

QSize ImageCache::imageSize(const QString &path, QString *why)
{
    QFile file;
    if (!openImageFile(path, &file, why))
        return QSize();
    QImageReader reader(&file);
    QSize size = reader.size();
    if (!size.isValid() && reader.canRead()) {
        // A format that does not tell its size up front: decode once to learn it.
        size = reader.read().size();
    }
    if (!size.isValid() || size.isEmpty())
        return QSize();
    if (area(size) > MaxImagePixels) {
        *why = QStringLiteral("is too large (%1 x %2 pixels)").arg(size.width()).arg(size.height());
        return QSize();
    }
    return size;
}

QString ImageCache::cleanPath(const QString &path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

QImage ImageCache::makePlaceholder(QSize size)
{
    // A visible stand-in: grey box with a cross, so a missing image can still
    // be selected and moved.
    size = size.expandedTo(QSize(1, 1)).boundedTo(QSize(MaxPlaceholderSide, MaxPlaceholderSide));
    QImage placeholder(size, QImage::Format_ARGB32_Premultiplied);
    if (placeholder.isNull())
        return placeholder;
    placeholder.fill(QColor(128, 128, 128, 160));
    QPainter p(&placeholder);
    p.setPen(QColor(200, 40, 40));
    p.drawRect(0, 0, placeholder.width() - 1, placeholder.height() - 1);
    p.drawLine(0, 0, placeholder.width() - 1, placeholder.height() - 1);
    p.drawLine(0, placeholder.height() - 1, placeholder.width() - 1, 0);
    p.end();
    return placeholder;
}

QImage ImageCache::image(const QString &path, const QString &name)
{
    // Every spelling of the path ("b.png", "./b.png", "x/../b.png", a link to it)
    // ends at the same canonical path; a file that is not there keeps its own.
    QString key = QFileInfo(path).canonicalFilePath();
    if (key.isEmpty())
        key = cleanPath(path);
    const auto it = mImages.constFind(key);
    if (it != mImages.constEnd())
        return it.value();
    const QImage decoded = decode(path, name);
    mImages.insert(key, decoded);
    return decoded;
}

QImage ImageCache::decode(const QString &path, const QString &name)
{
    QFile file;
    QString why;
    if (!openImageFile(path, &file, &why)) {
        if (!why.isEmpty())
            warn(QStringLiteral("Image \"%1\" %2; it is shown as missing.").arg(name, why));
        return QImage();
    }
    const auto overBudget = [&](QSize size) {
        if (pixels() + area(size) <= mBudget)
            return false;
        warn(QStringLiteral("Image \"%1\" (%2 x %3 pixels) is not loaded: the project's images "
                            "would take more than %4 megapixels. A placeholder is shown in its "
                            "place.")
                 .arg(name)
                 .arg(size.width())
                 .arg(size.height())
                 .arg(mBudget / (1024 * 1024)));
        return true;
    };
    QImageReader reader(&file);
    const QSize size = reader.size();
    if (size.isValid() && (area(size) > MaxImagePixels || overBudget(size)))
        return QImage();
    QImage image = reader.read();
    ++mDecodes;
    // The header may not have told the size, or not the truth.
    if (image.isNull() || (image.size() != size && overBudget(image.size())))
        return QImage();
    mPixels += area(image.size());
    return image;
}

QImage ImageCache::placeholder(QSize size)
{
    size = size.expandedTo(QSize(1, 1)).boundedTo(QSize(MaxPlaceholderSide, MaxPlaceholderSide));
    auto it = mPlaceholders.constFind(size);
    if (it != mPlaceholders.constEnd())
        return it.value();
    // Files may claim any number of sizes.
    if (mPlaceholders.size() >= MaxPlaceholderSizes) {
        size = QSize(File::PlaceholderWidth, File::PlaceholderHeight);
        it = mPlaceholders.constFind(size);
        if (it != mPlaceholders.constEnd())
            return it.value();
    }
    const QImage made = makePlaceholder(size);
    mPlaceholders.insert(size, made);
    return made;
}

QImage ImageCache::atlasFrame(const QString &projectDirectory, const QString &sheet,
                              const QString &frame)
{
    mSpriteSheets.setProjectDirectory(projectDirectory);
    const int known = int(mSpriteSheets.warnings().size());
    mSpriteSheets.setPixelBudget(qMax<qint64>(0, mBudget - mPixels));
    const JsonSpriteSheet *loaded = mSpriteSheets.spriteSheet(sheet, true);
    // The sheet printed its own warnings while loading; keep them with ours.
    mWarnings += mSpriteSheets.warnings().mid(known);
    return loaded ? loaded->pixmapFromFileName(frame) : QImage();
}

bool ImageCache::atlasFramePivot(const QString &projectDirectory, const QString &sheet,
                                 const QString &frame, QPointF *pivot)
{
    mSpriteSheets.setProjectDirectory(projectDirectory);
    const JsonSpriteSheet *loaded = mSpriteSheets.spriteSheet(sheet, false);
    return loaded && loaded->framePivot(frame, pivot);
}

void ImageCache::clear()
{
    mImages.clear();
    mPlaceholders.clear();
    mSpriteSheets.clear();
    mPixels = 0;
    mDecodes = 0;
    mWarnings.clear();
}

void ImageCache::warn(const QString &line)
{
    mWarnings.append(line);
    qWarning("%s", qPrintable(line));
}

} // namespace Morvane
