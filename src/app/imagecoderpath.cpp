// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "imagecoderpath.h"

#include <QDir>
#include <QFileInfo>

namespace Morvane {

QString imageCoderPath(const QString &programDirectory)
{
    if (programDirectory.isEmpty())
        return QString();
    const QDir dir(programDirectory);
    const QString coders = dir.filePath(QStringLiteral("coders"));
    if (QFileInfo(coders).isDir())
        return coders;
    // Coder modules are named after their format (png.la, png.so); the
    // program's own shared libraries start with "lib" and are no coders.
    const QStringList modules =
        dir.entryList({QStringLiteral("*.la"), QStringLiteral("*.so")}, QDir::Files);
    for (const QString &name : modules) {
        if (!name.startsWith(QLatin1String("lib")))
            return dir.path();
    }
    return QString();
}

} // namespace Morvane
