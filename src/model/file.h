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

/// One image or sound of the project, named by its path relative to the
/// project directory. Holds the default pivot (0..1, y from the top edge) and
/// the pixel size of the loaded image; a file whose image does not load keeps
/// the placeholder size 123 x 128.
class File : public MorvaneModelItem
{
public:
    enum Type { Image = 0, Sound = 1 };
    static constexpr int PlaceholderWidth = 123;
    static constexpr int PlaceholderHeight = 128;

    /// Process-wide id counter, never reset during a run.
    static int nextUniqueId;

    /// Loads the image from `projectDirectory` joined with `name` (unless the
    /// file is a sound). With `withoutId` the file gets id -1.
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

    /// The loaded image; a placeholder of the placeholder size when missing.
    const QImage &image() const;
    bool imageLoaded() const { return mLoaded; }
    /// Loads the image from `fullPath`; on failure keeps the current size and
    /// marks the file missing. Returns whether it loaded.
    bool refreshPixmapToFile(const QString &fullPath);
    /// Reloads from the file's own full path.
    bool refreshPixmap() { return refreshPixmapToFile(fullPath()); }
    /// Whether the image can still be found on disk.
    bool fileStillValid() const;
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
    double mPivotX = 0.0;
    double mPivotY = 0.0;
    int mWidth = PlaceholderWidth;
    int mHeight = PlaceholderHeight;
    int mType = Image;
    int mId = -1;
    AddressWrapper mLinked;
    mutable QImage mImage;
    bool mLoaded = false;
    QString mName;
    QString mProjectDirectory; // used until the file is attached to a document
    Address mRedirect;         // empty: shows itself
};

} // namespace Morvane
