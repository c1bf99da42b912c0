// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "projectconversion.h"

#include "io/projectfile.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace Morvane {

namespace {

// The reader's and writer's errors start with the diagnostic prefix; the reason alone reads
// better in a list of failures.
QString withoutPrefix(const QString &error)
{
    static const QLatin1String prefix("Error: ");
    return error.startsWith(prefix) ? error.mid(prefix.size()) : error;
}

} // namespace

QString ProjectConversion::otherSuffix(const QString &suffix)
{
    return suffix == QLatin1String("rigj") ? QStringLiteral("rigx") : QStringLiteral("rigj");
}

QStringList ProjectConversion::recurseFileList(const QString &directory, const QString &suffix)
{
    QStringList found;
    QDirIterator it(directory, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        if (it.fileInfo().suffix().compare(suffix, Qt::CaseInsensitive) == 0)
            found.append(file);
    }
    found.sort();
    return found;
}

QStringList ProjectConversion::batchFiles(const QStringList &paths, const QString &targetSuffix)
{
    const QString source = otherSuffix(targetSuffix);
    QStringList files;
    for (const QString &path : paths) {
        if (QFileInfo(path).isDir())
            files += recurseFileList(path, source);
        else
            files.append(path);
    }
    return files;
}

QString ProjectConversion::targetPath(const QString &file, const QString &targetSuffix)
{
    const QFileInfo info(file);
    const QString suffix = info.suffix();
    if (suffix.isEmpty())
        return file + QLatin1Char('.') + targetSuffix;
    return file.left(file.size() - suffix.size()) + targetSuffix;
}

QString ProjectConversion::sourceProblem(const QString &file, const QString &targetSuffix)
{
    struct stat status;
    if (::stat(QFile::encodeName(file).constData(), &status) != 0)
        return QStringLiteral("No such file or directory");
    if (!S_ISREG(status.st_mode))
        return QStringLiteral("not a regular file");
    const QString source = otherSuffix(targetSuffix);
    if (QFileInfo(file).suffix().compare(source, Qt::CaseInsensitive) != 0)
        return QStringLiteral("not a .%1 project file").arg(source);
    return QString();
}

bool ProjectConversion::convertFile(RigxData *document, const QString &file, const QString &out,
                                    const ProjectSaveOptions &options, ProjectIoHost *host,
                                    QString *error, QStringList *warnings,
                                    const std::function<void()> &opened)
{
    QString reason;
    QStringList openWarnings;
    if (!ProjectFile::open(document, file, host, &reason, &openWarnings)) {
        if (error)
            *error = withoutPrefix(reason);
        return false;
    }
    if (warnings)
        *warnings += openWarnings;
    if (opened)
        opened();
    if (!ProjectFile::save(document, out, options, host, &reason)) {
        if (error)
            *error = withoutPrefix(reason);
        return false;
    }
    return true;
}

} // namespace Morvane
