// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "projectnaming.h"

#include "model/naming.h"

#include <QFileInfo>

namespace Morvane {

QString nextVersionPath(const QString &path, const std::function<bool(const QString &)> &exists)
{
    // Split at the last dot of the file name only; a dot in a directory name
    // is not a suffix.
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    QString base = path;
    QString suffix;
    if (dot > slash) {
        base = path.left(dot);
        suffix = QLatin1Char('.') + path.mid(dot + 1).toLower();
    }

    int counter = 0;
    if (base.size() - slash - 1 >= 4 && base.at(base.size() - 4) == QLatin1Char('_')) {
        bool ok = false;
        const int found = base.right(3).toInt(&ok, 10);
        if (ok && found >= 0) {
            counter = found;
            base.chop(4);
        }
    }

    QString candidate = base + paddedNumber(counter, 3, QStringLiteral("_")) + suffix;
    while (exists(candidate)) {
        ++counter;
        candidate = base + paddedNumber(counter, 3, QStringLiteral("_")) + suffix;
    }
    return candidate;
}

QString autoSaveFileName(const QString &projectFileName)
{
    static const QString newProject = QStringLiteral("NewProject.autosave.rigx");
    if (projectFileName.isEmpty() || projectFileName.endsWith(QLatin1Char('/')))
        return newProject;
    QString name = projectFileName.mid(projectFileName.lastIndexOf(QLatin1Char('/')) + 1);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot >= 0)
        name.truncate(dot);
    return name + QStringLiteral(".autosave.rigx");
}

bool isOpenableProjectArgument(const QString &argument)
{
    if (!argument.endsWith(QStringLiteral("rigx")) && !argument.endsWith(QStringLiteral("rigj")))
        return false;
    const QFileInfo info(argument);
    return info.exists() && info.isFile();
}

} // namespace Morvane
