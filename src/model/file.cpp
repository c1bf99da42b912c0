// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/file.h"

#include "model/folder.h"
#include "model/rigxdata.h"

#include <QColor>
#include <QFileInfo>
#include <QImageReader>
#include <QPainter>

namespace Morvane {

int File::nextUniqueId = 0;

File::File(const QString &name, double pivotX, double pivotY, int type,
           const QString &projectDirectory, bool withoutId)
    : MorvaneModelItem(MorvaneItemType::File)
    , mPivotX(pivotX)
    , mPivotY(pivotY)
    , mType(type == Sound ? Sound : Image)
    , mId(withoutId ? -1 : nextUniqueId++)
    , mName(removeLeadingSlashes(name))
    , mProjectDirectory(projectDirectory)
{
    if (isImage() && !projectDirectory.isEmpty())
        refreshPixmapToFile(fullPath());
}

File::~File() = default;

QString File::typeString() const
{
    return mType == Sound ? QStringLiteral("sound") : QStringLiteral("image");
}

QPointF File::pivot(bool followLink) const
{
    if (followLink && !mLinked->isEmpty()) {
        const File *linked = mLinked->file();
        if (linked && linked != this)
            return linked->pivot(false);
    }
    return QPointF(mPivotX, mPivotY);
}

void File::setPivotPoint(double x, double y)
{
    mPivotX = x;
    mPivotY = y;
}

void File::setSize(int width, int height)
{
    mWidth = width;
    mHeight = height;
}

const QImage &File::image() const
{
    if (mImage.isNull())
        const_cast<File *>(this)->setPlaceholderImage();
    return mImage;
}

void File::setPlaceholderImage()
{
    // A visible stand-in: grey box with a cross, so a missing image can still
    // be selected and moved.
    QImage placeholder(qMax(1, mWidth), qMax(1, mHeight), QImage::Format_ARGB32_Premultiplied);
    placeholder.fill(QColor(128, 128, 128, 160));
    QPainter p(&placeholder);
    p.setPen(QColor(200, 40, 40));
    p.drawRect(0, 0, placeholder.width() - 1, placeholder.height() - 1);
    p.drawLine(0, 0, placeholder.width() - 1, placeholder.height() - 1);
    p.drawLine(0, placeholder.height() - 1, placeholder.width() - 1, 0);
    p.end();
    mImage = placeholder;
    mLoaded = false;
}

bool File::refreshPixmapToFile(const QString &fullPath)
{
    if (!isImage())
        return false;
    // Only a regular file is read: a pipe or a device under an image's name would block
    // or never end.
    if (!QFileInfo(fullPath).isFile()) {
        mLoaded = false;
        return false;
    }
    QImageReader reader(fullPath);
    // Guard against decompression bombs from a hostile project folder.
    const QSize size = reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() > 16384LL * 16384LL) {
        mLoaded = false;
        return false;
    }
    QImage img = reader.read();
    if (img.isNull()) {
        mLoaded = false;
        return false;
    }
    mImage = img;
    mWidth = img.width();
    mHeight = img.height();
    mLoaded = true;
    return true;
}

bool File::fileStillValid() const
{
    return QFileInfo::exists(fullPath());
}

QString File::fullPath() const
{
    QString dir;
    if (RigxData *doc = document())
        dir = doc->projectDirectory();
    if (dir.isEmpty())
        dir = mProjectDirectory;
    if (dir.isEmpty())
        return mName;
    if (!dir.endsWith(QLatin1Char('/')))
        dir += QLatin1Char('/');
    return dir + mName;
}

Address File::address() const
{
    const Folder *folder = parentFolder();
    return Address(document(), {folder ? folder->id() : -1, mId}, const_cast<File *>(this));
}

Folder *File::parentFolder() const
{
    MorvaneModelItem *p = parentItem();
    if (p && p->morvaneItemType() == MorvaneItemType::Folder)
        return static_cast<Folder *>(p);
    return nullptr;
}

File *File::redirectedFile() const
{
    if (mRedirect.isEmpty())
        return const_cast<File *>(this);
    return mRedirect.file(false);
}

QString File::validatePath(const QString &path) const
{
    if (RigxData *doc = document())
        return doc->validatePath(path, true);
    return removeLeadingSlashes(QString(path).replace(QLatin1Char('\\'), QLatin1Char('/')));
}

QString File::removeLeadingSlashes(QString path)
{
    while (path.startsWith(QLatin1Char('/')))
        path.remove(0, 1);
    return path;
}

bool File::checkFileIndexed(const QString &path) const
{
    return validatePath(path) == mName;
}

} // namespace Morvane
