// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/morvanemodelitem.h"

#include <QString>

#include <memory>
#include <vector>

namespace Morvane {

class Entity;
class File;

/// A folder of image and sound files, named by its path relative to the
/// project directory ("" or "." for the root). An atlas folder's name starts
/// with a bracket directory: "<atlas>/".
class Folder : public MorvaneModelItem
{
public:
    /// Process-wide id counter, never reset during a run.
    static int nextUniqueId;

    /// With `withoutId` the folder gets id -1 (loaders assign ids themselves).
    explicit Folder(const QString &name = QString(), bool withoutId = false);
    ~Folder() override;

    int id() const { return mId; }
    void setId(int id) { mId = id; }
    QString name() const { return mName; }
    void setName(const QString &name) { mName = name; }

    /// Null when out of range / not found.
    File *file(int index) const;
    File *file(const QString &name) const;
    File *fileFromId(int id) const;
    int fileCount() const { return int(mFiles.size()); }
    int indexOfFile(const File *file) const;
    /// Takes ownership and makes this folder the file's parent.
    void appendFile(File *file);
    /// Removes and destroys the file at `index`.
    void deleteFile(int index);
    /// Removes without destroying; the caller owns the file afterwards.
    bool removeFile(File *file);

    bool spriteSheet() const;
    QString spriteSheetName() const;
    void refreshAllPixmaps();
    QString validatePath(const QString &path) const;
    Entity *parentEntity() const { return nullptr; }

    int indexOfChild(const MorvaneModelItem *child) const override;
    bool removeChildItem(MorvaneModelItem *child) override;
    void clearAllLinksAndChildren() override;

private:
    int mId = -1;
    QString mName;
    std::vector<std::unique_ptr<File>> mFiles;
};

} // namespace Morvane
