// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/morvanemodelitem.h"

#include <QImage>
#include <QPointF>
#include <QString>

namespace Morvane {

class Folder;
class RigxData;

/// One image or sound of the project, named by its path relative to the
/// project directory. Holds the default pivot (0..1, y from the top edge) and
/// the pixel size of its image; a file whose image cannot be read keeps the
/// placeholder size 123 x 128.
///
/// Loading a file reads only its image's size from the header; the pixels are
/// decoded when something asks for `image()`, through the document's
/// `ImageCache` (once per image and within its pixel budget).
///
/// A file of an atlas folder ("<sheet.json>/arm.png") shows the frame "arm.png"
/// of that sprite sheet instead: its size is the frame's source size. It is
/// bound once it belongs to a document, as the sheet is found through the
/// document's project directory.
class File : public MorvaneModelItem
{
public:
    enum Type { Image = 0, Sound = 1 };
    static constexpr int PlaceholderWidth = 123;
    static constexpr int PlaceholderHeight = 128;

    /// Process-wide id counter, never reset during a run.
    static int nextUniqueId;

    /// Reads the image's size from `projectDirectory` joined with `name` (unless
    /// the file is a sound). With `withoutId` the file gets id -1.
    File(const QString &name, double pivotX = 0.0, double pivotY = 0.0, int type = Image,
         const QString &projectDirectory = QString(), bool withoutId = false);
    ~File() override;

    QString name() const { return mName; }
    void setName(const QString &name) { mName = name; }
    int id() const { return mId; }
    void setId(int id) { mId = id; }
    int type() const { return mType; }
    bool isImage() const { return mType == Image; }
    bool isSound() const { return mType == Sound; }
    QString typeString() const;

    /// The default pivot. With `followLink`, a linked file's pivot wins.
    QPointF pivot(bool followLink = true) const;
    void setPivotPoint(double x, double y);
    AddressWrapper &linkedAddress() { return mLinked; }

    int width() const { return mWidth; }
    int height() const { return mHeight; }
    void setSize(int width, int height);

    /// The image, decoded on the first call; a placeholder of the file's size
    /// (at most `ImageCache::MaxPlaceholderSide` a side) when it is missing,
    /// cannot be decoded or does not fit the project's pixel budget.
    const QImage &image() const;
    /// Whether the image file was found and its size read (false: missing).
    bool imageLoaded() const { return mLoaded; }
    /// Why the image counts as missing although something is there ("Image
    /// \"a.png\" is a FIFO, not an image file; ..."), empty otherwise. Also given
    /// as a warning when found.
    QString imageProblem() const { return mProblem; }
    /// Reads the image's size from `fullPath`, which the image then comes from;
    /// on failure keeps the current size and marks the file missing. Decodes no
    /// pixels. Returns whether the size was read.
    bool refreshPixmapToFile(const QString &fullPath);
    /// Reads again from the file's own full path.
    bool refreshPixmap() { return refreshPixmapToFile(fullPath()); }
    /// Whether the image is still on disk as a regular file (links followed), or
    /// for an atlas file whether its sheet still holds the frame.
    bool fileStillValid() const;
    /// Whether the name starts with an atlas bracket directory.
    bool isAtlasFrame() const;
    /// Shows the placeholder from now on.
    void setPlaceholderImage();

    /// The project directory (from the document) joined with the name.
    QString fullPath() const;
    /// (folder unique id, file unique id) with a direct pointer to this file.
    Address address() const;
    Folder *parentFolder() const;

    /// What a character map currently shows in place of this file: this file
    /// when nothing redirects it, null when a map hides it.
    File *redirectedFile() const;
    Address &redirect() { return mRedirect; }
    /// Points the redirect back at this file.
    void clearRedirect() { mRedirect = Address(); }

    QString validatePath(const QString &path) const;
    static QString removeLeadingSlashes(QString path);
    bool checkFileIndexed(const QString &path) const;

private:
    QImage atlasFrame(RigxData *document) const;

    double mPivotX = 0.0;
    double mPivotY = 0.0;
    int mWidth = PlaceholderWidth;
    int mHeight = PlaceholderHeight;
    int mType = Image;
    int mId = -1;
    AddressWrapper mLinked;
    mutable QImage mImage; // null until asked for
    bool mLoaded = false;
    bool mAtlasBound = false; // an atlas frame was found for this file before
    QString mImagePath; // clean absolute path the image is read from
    QString mProblem;
    QString mName;
    QString mProjectDirectory; // used until the file is attached to a document
    Address mRedirect;         // empty: shows itself
};

} // namespace Morvane
