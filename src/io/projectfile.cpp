// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "projectfile.h"

#include "io/jsonprojectreader.h"
#include "io/jsonprojectwriter.h"
#include "io/projectiohost.h"
#include "io/projectwriter.h"
#include "io/xmlprojectreader.h"
#include "io/xmlprojectwriter.h"
#include "meta/tagmanager.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/naming.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSaveFile>
#include <QThreadPool>
#include <QUndoStack>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Morvane {

namespace {

ProjectIoHost *sHost = nullptr;

// Holds autosave off for the lifetime of the guard.
class AutosaveGuard
{
public:
    explicit AutosaveGuard(ProjectIoHost *host)
        : mHost(host)
    {
        mHost->suppressAutosave(true);
    }
    ~AutosaveGuard() { mHost->suppressAutosave(false); }

private:
    ProjectIoHost *mHost;
};

bool fail(ProjectIoHost *host, QString *error, const QString &line)
{
    host->diagnostic(line);
    if (error)
        *error = line;
    return false;
}

// Makes a finished rename durable: without it a crash right after saving can lose the
// directory entry on some file systems.
void syncDirectory(const QString &directory)
{
    const QByteArray path = QFile::encodeName(directory);
    const int fd = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd);
    ::close(fd);
}

// The file a save is about to replace, held open (see `ProjectFile::save`), or -1. Only a
// regular file is held; opening does not wait, even for a pipe under that name.
int openReplacedFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(),
                          O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0)
        return -1;
    struct stat status;
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        return -1;
    }
    return fd;
}

ProjectFile::Form sniffForm(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return ProjectFile::Form::Xml;
    const QByteArray head = file.read(256).trimmed();
    return head.startsWith('{') ? ProjectFile::Form::Json : ProjectFile::Form::Xml;
}

} // namespace

ProjectFile::Form ProjectFile::formFromPath(const QString &path)
{
    const QString suffix = path.right(4).toLower();
    if (suffix == QLatin1String("rigx"))
        return Form::Xml;
    if (suffix == QLatin1String("rigj"))
        return Form::Json;
    return Form::Unknown;
}

ProjectSaveOptions &ProjectFile::defaultSaveOptions()
{
    static ProjectSaveOptions options;
    return options;
}

void ProjectFile::setDefaultHost(ProjectIoHost *host)
{
    sHost = host;
}

ProjectIoHost *ProjectFile::host(ProjectIoHost *given)
{
    if (given)
        return given;
    return sHost ? sHost : ProjectIoHost::defaultHost();
}

bool ProjectFile::open(RigxData *document, const QString &path, ProjectIoHost *givenHost,
                       QString *error, QStringList *warnings)
{
    ProjectIoHost *host = ProjectFile::host(givenHost);
    AutosaveGuard guard(host);
    {
        QFile probe(path);
        if (!probe.open(QIODevice::ReadOnly))
            return fail(host, error,
                        QStringLiteral("Error: Cannot read file-") + path + QStringLiteral(": ")
                            + probe.errorString());
    }
    host->beginProgress(QStringLiteral("Loading ") + QFileInfo(path).fileName());

    Form form = formFromPath(path);
    if (form == Form::Unknown)
        form = sniffForm(path);
    XmlProjectReader xmlReader;
    JsonProjectReader jsonReader;
    QString readError;
    QString parseError;
    const bool parsed = form == Form::Json ? jsonReader.parseFile(path, &readError, &parseError)
                                           : xmlReader.parseFile(path, &readError, &parseError);
    if (!parsed) {
        host->endProgress();
        if (!readError.isEmpty())
            return fail(host, error, QStringLiteral("Error: Cannot read file: ") + readError);
        return fail(host, error,
                    QStringLiteral("Error: Failed to parse file ") + path + QStringLiteral(": ")
                        + parseError);
    }

    // From here on nothing can fail: the tree is complete, and the readers drop what does
    // not fit instead of stopping. The document is cleared and filled in place, so that
    // everything holding it (addresses, views, the undo stack) stays valid.
    host->progress(10);
    document->clear();
    document->setFilePath(QFileInfo(path).absoluteFilePath());
    QStringList dropped;
    const auto progress = [host](int percent) { host->progress(10 + percent * 85 / 100); };
    if (form == Form::Json)
        jsonReader.read(document, &dropped, progress);
    else
        xmlReader.read(document, &dropped, progress);
    for (int e = 0; e < document->entityCount(); ++e) {
        Entity *entity = document->entity(e);
        for (int a = 0; a < entity->animationCount(); ++a)
            entity->animation(a)->deleteEmptyTimelines(true);
    }
    document->removeUnusedFiles();
    document->setCurrentEntity(0);
    host->endProgress();
    if (warnings)
        *warnings = dropped;
    document->emitEntityAnimationStructureChanged();
    if (document->hasMissingImages())
        host->missingImages(document->missingImageFullPaths());
    if (error)
        error->clear();
    return true;
}

bool ProjectFile::save(RigxData *document, const QString &path, const ProjectSaveOptions &options,
                       ProjectIoHost *givenHost, QString *error)
{
    ProjectIoHost *host = ProjectFile::host(givenHost);
    AutosaveGuard guard(host);
    const QString prefix = QStringLiteral("Error: Cannot write file ") + path
                           + QStringLiteral(": ");
    const Form form = formFromPath(path);
    if (form == Form::Unknown)
        return fail(host, error, prefix + QStringLiteral("the name must end in rigx or rigj"));

    const QFileInfo target(path);
    const QString directory = target.absolutePath();
    const QString projectDirectory = document->filePath().isEmpty()
                                         ? QString()
                                         : QFileInfo(document->filePath()).absolutePath();
    if (!projectDirectory.isEmpty()
        && QDir::cleanPath(projectDirectory) != QDir::cleanPath(directory)
        && !host->warnAboutNonHomeDirectory(projectDirectory, directory)) {
        if (error)
            error->clear();
        return false;
    }

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(host, error, prefix + file.errorString());

    host->beginProgress(QStringLiteral("Saving ") + target.fileName());
    ProjectWriter::prepareDocument(*document);
    // The last few percent are left for the commit, which waits for the disk.
    const auto progress = [host](int percent) { host->progress(percent * 95 / 100); };
    QString writeError;
    const bool written =
        form == Form::Json
            ? JsonProjectWriter::write(*document, &file, options, &writeError, progress)
            : XmlProjectWriter::write(*document, &file, options, &writeError, progress);
    if (!written) {
        file.cancelWriting();
        host->endProgress();
        return fail(host, error, prefix + writeError);
    }
    // Replacing a large file frees its blocks inside the rename, which the user waits for;
    // holding the old file open moves that work to the close, done on a worker afterwards.
    const int replaced = openReplacedFile(path);
    const bool committed = file.commit();
    if (replaced >= 0)
        QThreadPool::globalInstance()->start([replaced] { ::close(replaced); });
    if (committed) {
        syncDirectory(directory);
        host->progress(100);
    }
    host->endProgress();
    if (!committed)
        return fail(host, error, prefix + file.errorString());
    document->setFilePath(target.absoluteFilePath());
    if (error)
        error->clear();
    return true;
}

QString ProjectFile::resolveInside(const QString &directory, const QString &relativePath)
{
    if (relativePath.isEmpty() || relativePath.contains(QLatin1Char('\\'))
        || relativePath.startsWith(QLatin1Char('/')) || relativePath.contains(QChar(0)))
        return QString();
    static const QRegularExpression drive(QStringLiteral("^[A-Za-z]:"));
    if (drive.match(relativePath).hasMatch())
        return QString();
    const QString clean = QDir::cleanPath(relativePath);
    if (clean.isEmpty() || clean == QLatin1String(".") || clean == QLatin1String("..")
        || clean.startsWith(QLatin1String("../")) || clean.startsWith(QLatin1Char('/')))
        return QString();
    return directory + QLatin1Char('/') + clean;
}

QString ProjectFile::freeName(const QString &path, const QStringList &taken)
{
    if (!taken.contains(path) && !QFileInfo::exists(path))
        return path;
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    // A dot that starts the name (".hidden") or lies in a directory is no extension.
    const bool hasExtension = dot > slash + 1;
    const QString stem = hasExtension ? path.left(dot) : path;
    const QString extension = hasExtension ? path.mid(dot) : QString();
    for (int n = 2;; ++n) {
        const QString candidate = stem + QLatin1Char('_') + QString::number(n) + extension;
        if (!taken.contains(candidate) && !QFileInfo::exists(candidate))
            return candidate;
    }
}

bool ProjectFile::importInto(RigxData *document, const QString &path, ProjectIoHost *givenHost,
                             QString *error, QStringList *warnings)
{
    ProjectIoHost *host = ProjectFile::host(givenHost);
    AutosaveGuard guard(host);
    QStringList notes;
    if (document->filePath().isEmpty())
        return fail(host, error,
                    QStringLiteral("Error: Cannot write file ") + path
                        + QStringLiteral(": the open project has no folder yet; save it first"));

    // The other project lives on as a child of this document: copied keys may still hold
    // addresses that name it, and they must never point at freed memory.
    auto *other = new RigxData(nullptr, document->kind());
    if (!open(other, path, host, error, &notes)) {
        delete other;
        return false;
    }
    const QFileInfo info(path);
    if (!host->confirmMerge(info.fileName())) {
        delete other;
        if (error)
            error->clear();
        return false;
    }
    other->setParent(document);

    const QString targetDirectory = QFileInfo(document->filePath()).absolutePath();
    const QString sourceDirectory = QFileInfo(other->filePath()).absolutePath();
    const QString mergeFolder = info.completeBaseName();
    const QString mergeDirectory = resolveInside(targetDirectory, mergeFolder);
    if (mergeDirectory.isEmpty() || mergeFolder.contains(QLatin1Char('/'))) {
        delete other;
        return fail(host, error,
                    QStringLiteral("Error: Cannot write file ") + path
                        + QStringLiteral(": no folder can be named after it"));
    }

    // Copy every image and remember which file of this project replaces it; refused files
    // map to null and their keys show nothing.
    QHash<const File *, File *> replacements;
    QStringList claimed;
    for (int f = 0; f < other->folderCount(); ++f) {
        const Folder *folder = other->folder(f);
        for (int i = 0; i < folder->fileCount(); ++i) {
            const File *old = folder->file(i);
            const QString relative = RigxData::removeBeginningBracketDirectory(old->name());
            const QString source = resolveInside(sourceDirectory, relative);
            QString destination = resolveInside(mergeDirectory, relative);
            if (source.isEmpty() || destination.isEmpty()) {
                notes.append(QStringLiteral("Refused image path \"%1\": it leaves the project "
                                            "folder")
                                 .arg(old->name()));
                replacements.insert(old, nullptr);
                continue;
            }
            destination = freeName(destination, claimed);
            claimed.append(destination);
            if (QFileInfo::exists(source)) {
                QDir().mkpath(QFileInfo(destination).absolutePath());
                if (!QFile::copy(source, destination))
                    notes.append(QStringLiteral("Could not copy \"%1\" to \"%2\"")
                                     .arg(source, destination));
            }
            const QString name = destination.mid(targetDirectory.size() + 1);
            const int slash = name.lastIndexOf(QLatin1Char('/'));
            const QString folderName = slash < 0 ? QString() : name.left(slash);
            Folder *targetFolder = document->folder(folderName);
            if (!targetFolder) {
                targetFolder = new Folder(folderName);
                document->appendFolder(targetFolder);
            }
            File *file = targetFolder->file(name);
            if (!file) {
                const QPointF pivot = old->pivot(false);
                file = new File(name, pivot.x(), pivot.y(), old->type(), targetDirectory);
                targetFolder->appendFile(file);
                if (!file->imageLoaded() && file->isImage())
                    file->setSize(old->width(), old->height());
            }
            replacements.insert(old, file);
        }
    }
    for (int e = 0; e < other->entityCount(); ++e) {
        const Entity *entity = other->entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            const Animation *animation = entity->animation(a);
            for (int t = 0; t < animation->timelineCount(); ++t) {
                const Timeline *timeline = animation->timeline(t);
                for (int k = 0; k < timeline->keyCount(); ++k) {
                    TimelineKey *key = timeline->key(k);
                    const File *old = key->fileInfo().file();
                    if (!old || !replacements.contains(old))
                        continue;
                    File *replacement = replacements.value(old);
                    key->setFileInfo(replacement ? FileInfo(replacement->address()) : FileInfo());
                    if (key->info().defaultPivot() && replacement)
                        key->info().setDefaultPivot(true, replacement->address());
                }
            }
        }
    }

    // Entities keep their order; sub-entity keys are moved along by the entities already
    // here.
    const int offset = document->entityCount();
    for (int e = 0; e < other->entityCount(); ++e) {
        const Entity *source = other->entity(e);
        auto *entity = new Entity(uniqueName(source->name(), document->entityNames()), false);
        document->appendEntity(entity);
        entity->setTo(*source, false);
    }
    // Tag keys name tags by uid: bring the other project's tags along (one of the same
    // name is shared) and point the merged keys at them.
    const QHash<int, int> tagUids = document->tagManager().mergeTags(other->tagManager());
    for (int e = offset; e < document->entityCount(); ++e)
        TagManager::remapTagUids(document->entity(e), tagUids);
    for (int e = offset; e < document->entityCount(); ++e) {
        const Entity *entity = document->entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            const Animation *animation = entity->animation(a);
            for (int t = 0; t < animation->timelineCount(); ++t) {
                const Timeline *timeline = animation->timeline(t);
                if (!timeline->isSubEntity())
                    continue;
                for (int k = 0; k < timeline->keyCount(); ++k) {
                    EntityInfo &sub = timeline->key(k)->entityInfo();
                    const int entityIndex = sub.animation.entityIndex();
                    const int animationIndex = sub.animation.animationIndex();
                    const Entity *shown = document->entity(entityIndex + offset);
                    if (entityIndex < 0 || !shown || !shown->animation(animationIndex)) {
                        sub.animation = Address();
                        continue;
                    }
                    sub.animation = Address(document, {entityIndex + offset, animationIndex},
                                            shown->animation(animationIndex));
                }
            }
        }
    }

    if (QUndoStack *stack = document->undoStack())
        stack->clear();
    document->emitEntityAnimationStructureChanged();
    if (warnings)
        *warnings = notes;
    if (error)
        error->clear();
    return true;
}

} // namespace Morvane
