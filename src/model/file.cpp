// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/file.h"

#include "model/folder.h"
#include "model/imagecache.h"
#include "model/rigxdata.h"

#include <QFile>

#include <sys/stat.h>

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
    if (!mImage.isNull())
        return mImage;
    RigxData *doc = document();
    if (mLoaded && isAtlasFrame()) {
        if (doc)
            mImage = atlasFrame(doc);
        if (!mImage.isNull())
            return mImage;
    } else if (mLoaded) {
        if (doc) {
            mImage = doc->imageCache().image(mImagePath, mName);
        } else {
            // Not in a project: no budget to share, read it alone.
            ImageCache alone;
            mImage = alone.image(mImagePath, mName);
        }
        if (!mImage.isNull())
            return mImage;
    }
    const QSize size(mWidth, mHeight);
    mImage = doc ? doc->imageCache().placeholder(size) : ImageCache::makePlaceholder(size);
    return mImage;
}

void File::setPlaceholderImage()
{
    mImage = QImage();
    mLoaded = false;
}

bool File::refreshPixmapToFile(const QString &fullPath)
{
    if (!isImage())
        return false;
    mImage = QImage();
    if (isAtlasFrame()) {
        mImagePath.clear();
        mProblem.clear();
        // Outside a document there is no project directory to find the sheet in;
        // joining one binds the file.
        RigxData *doc = document();
        const QImage frame = doc ? atlasFrame(doc) : QImage();
        mLoaded = !frame.isNull();
        if (mLoaded) {
            mWidth = frame.width();
            mHeight = frame.height();
            // Packers may give a frame its pivot; it stands in for a default pivot the
            // project never set, once, when the file is first bound.
            QPointF framePivot;
            if (!mAtlasBound && mPivotX == 0.0 && mPivotY == 0.0
                && doc->imageCache().atlasFramePivot(
                    doc->projectDirectory(), RigxData::extractNameFromBrackets(mName),
                    RigxData::removeBeginningBracketDirectory(mName), &framePivot)) {
                mPivotX = framePivot.x();
                mPivotY = framePivot.y();
            }
            mAtlasBound = true;
        }
        return mLoaded;
    }
    mImagePath = ImageCache::cleanPath(fullPath);
    QString why;
    const QSize size = ImageCache::imageSize(mImagePath, &why);
    mProblem.clear();
    if (!why.isEmpty()) {
        mProblem = QStringLiteral("Image \"%1\" %2; it is shown as missing.").arg(mName, why);
        qWarning("%s", qPrintable(mProblem));
    }
    if (!size.isValid()) {
        mLoaded = false;
        return false;
    }
    mWidth = size.width();
    mHeight = size.height();
    mLoaded = true;
    return true;
}

bool File::isAtlasFrame() const
{
    return mName.startsWith(QLatin1Char('<')) && mName.contains(QLatin1String(">/"));
}

QImage File::atlasFrame(RigxData *document) const
{
    return document->imageCache().atlasFrame(document->projectDirectory(),
                                             RigxData::extractNameFromBrackets(mName),
                                             RigxData::removeBeginningBracketDirectory(mName));
}

bool File::fileStillValid() const
{
    if (isAtlasFrame()) {
        RigxData *doc = document();
        return doc && !atlasFrame(doc).isNull();
    }
    struct stat status;
    return ::stat(QFile::encodeName(fullPath()).constData(), &status) == 0 &&
           S_ISREG(status.st_mode);
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
