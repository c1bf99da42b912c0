// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

// Small file chores the tests share: whole files in and out, a plain PNG, a folder copy.

#include <QByteArray>
#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QSize>
#include <QString>

namespace Morvane::Testing {

inline QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

/// A PNG of one colour.
inline bool writePng(const QString &path, QSize size, const QColor &colour = Qt::red)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(colour);
    return image.save(path, "PNG");
}

/// Copies the folder `from` with everything under it to `to`.
inline bool copyTree(const QString &from, const QString &to)
{
    QDir().mkpath(to);
    for (const QFileInfo &info :
         QDir(from).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString target = to + QLatin1Char('/') + info.fileName();
        const bool copied = info.isDir() ? copyTree(info.filePath(), target)
                                         : QFile::copy(info.filePath(), target);
        if (!copied)
            return false;
    }
    return true;
}

} // namespace Morvane::Testing
