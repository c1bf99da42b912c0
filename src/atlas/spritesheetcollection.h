// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "atlas/jsonspritesheet.h"

#include <QImage>
#include <QSet>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>

namespace Morvane {

/// The sprite sheets of one project, kept by name: the description's path relative to the
/// project directory. Sheets load on their first request and stay until `clear`; a sheet
/// that loads empty is not kept, and is not read again before `clear` either.
class SpriteSheetCollection
{
public:
    /// The directory names are taken relative to; changing it forgets every sheet.
    void setProjectDirectory(const QString &directory);
    QString projectDirectory() const { return mDirectory; }

    /// `path` without the project directory in front (and without leading "/").
    QString sheetName(const QString &path) const;

    /// Loads the sheet at `path` (absolute, or relative to the project directory) and
    /// keeps it under its name; with `reload` a sheet already kept is read again. Returns
    /// the kept sheet, or null when it loaded empty.
    JsonSpriteSheet *appendSpriteSheet(const QString &path, bool reload = false);
    /// The sheet kept under `name`'s sheet name; when there is none and `load` is set, it
    /// is loaded first. Null when there is no such sheet. Owned by the collection.
    JsonSpriteSheet *spriteSheet(const QString &name, bool load);
    /// The sheet image of a kept sheet, or a null image.
    QImage spriteSheetImageFromFileName(const QString &name);
    /// The sheet image's path of a kept sheet, or "".
    QString spriteSheetImageFileNameFromSheetFileName(const QString &name);

    /// Sheets kept, and their names in ascending order.
    int count() const { return int(mSheets.size()); }
    QStringList names() const;
    void clear();

    /// Pixels that newly loaded sheets may still take together.
    qint64 pixelBudget() const { return mBudget; }
    void setPixelBudget(qint64 pixels) { mBudget = pixels; }
    /// Pixels held by the kept sheets.
    qint64 pixels() const;
    /// What went wrong while loading, one line each, in order.
    QStringList warnings() const { return mWarnings; }

private:
    QString fullPath(const QString &name) const;

    QString mDirectory;
    std::map<QString, std::unique_ptr<JsonSpriteSheet>> mSheets;
    QSet<QString> mFailed;
    qint64 mBudget = JsonSpriteSheet::DefaultPixelBudget;
    QStringList mWarnings;
};

} // namespace Morvane
