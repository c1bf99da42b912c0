// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "atlas/spritesheetcollection.h"

#include <QDir>

namespace Morvane {

void SpriteSheetCollection::setProjectDirectory(const QString &directory)
{
    QString cleaned = directory.isEmpty() ? QString() : QDir::cleanPath(directory);
    if (cleaned == mDirectory)
        return;
    clear();
    mDirectory = cleaned;
}

QString SpriteSheetCollection::sheetName(const QString &path) const
{
    QString name = path;
    name.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (!mDirectory.isEmpty()) {
        const QString prefix =
            mDirectory.endsWith(QLatin1Char('/')) ? mDirectory : mDirectory + QLatin1Char('/');
        if (name.startsWith(prefix))
            name.remove(0, prefix.size());
    }
    while (!mDirectory.isEmpty() && name.startsWith(QLatin1Char('/')))
        name.remove(0, 1);
    return name;
}

QString SpriteSheetCollection::fullPath(const QString &name) const
{
    if (mDirectory.isEmpty() || QDir::isAbsolutePath(name))
        return name;
    return mDirectory + QLatin1Char('/') + name;
}

JsonSpriteSheet *SpriteSheetCollection::appendSpriteSheet(const QString &path, bool reload)
{
    const QString name = sheetName(path);
    const auto kept = mSheets.find(name);
    if (kept != mSheets.end()) {
        if (!reload)
            return kept->second.get();
        mSheets.erase(kept);
    }
    auto sheet = std::make_unique<JsonSpriteSheet>();
    sheet->setPixelBudget(qMax<qint64>(0, mBudget - pixels()));
    sheet->setSpriteSheetFile(fullPath(name));
    mWarnings += sheet->warnings();
    if (sheet->isEmpty()) {
        mFailed.insert(name);
        return nullptr;
    }
    mFailed.remove(name);
    JsonSpriteSheet *result = sheet.get();
    mSheets.emplace(name, std::move(sheet));
    return result;
}

JsonSpriteSheet *SpriteSheetCollection::spriteSheet(const QString &name, bool load)
{
    const QString key = sheetName(name);
    const auto kept = mSheets.find(key);
    if (kept != mSheets.end())
        return kept->second.get();
    // A sheet that failed is not read again for each of its files.
    if (!load || key.isEmpty() || mFailed.contains(key))
        return nullptr;
    return appendSpriteSheet(key);
}

QImage SpriteSheetCollection::spriteSheetImageFromFileName(const QString &name)
{
    const JsonSpriteSheet *sheet = spriteSheet(name, false);
    return sheet ? sheet->image() : QImage();
}

QString SpriteSheetCollection::spriteSheetImageFileNameFromSheetFileName(const QString &name)
{
    const JsonSpriteSheet *sheet = spriteSheet(name, false);
    return sheet ? sheet->imageFileName() : QString();
}

QStringList SpriteSheetCollection::names() const
{
    QStringList result;
    for (const auto &[name, sheet] : mSheets)
        result.append(name);
    return result;
}

void SpriteSheetCollection::clear()
{
    mSheets.clear();
    mFailed.clear();
    mWarnings.clear();
}

qint64 SpriteSheetCollection::pixels() const
{
    qint64 total = 0;
    for (const auto &[name, sheet] : mSheets)
        total += sheet->pixels();
    return total;
}

} // namespace Morvane
