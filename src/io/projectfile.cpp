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
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QThreadPool>
#include <QUndoStack>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
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

// Why `target` is no regular file (after following links); empty when it is one or when
// nothing stands there. A save never replaces such a thing (renaming over it would take
// the name from what it is), and opening never reads one (a pipe would wait for ever).
QString notRegularFile(const QString &target)
{
    struct stat status;
    if (::stat(QFile::encodeName(target).constData(), &status) != 0)
        return QString();
    if (S_ISREG(status.st_mode))
        return QString();
    if (S_ISDIR(status.st_mode))
        return QStringLiteral("it is a folder, not a regular file");
    if (S_ISFIFO(status.st_mode))
        return QStringLiteral("it is a pipe, not a regular file");
    if (S_ISSOCK(status.st_mode))
        return QStringLiteral("it is a socket, not a regular file");
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode))
        return QStringLiteral("it is a device, not a regular file");
    return QStringLiteral("it is not a regular file");
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
        const QString special = notRegularFile(path);
        if (!special.isEmpty())
            return fail(host, error,
                        QStringLiteral("Error: Cannot read file-") + path + QStringLiteral(": ")
                            + special);
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

namespace {

// Temporary files of a save sit beside their target under a name no one else uses, so
// that leftovers of a killed save can be told apart and removed: ".NAME.morvane-save-"
// and six letters or digits.
const QLatin1String sTemporaryInfix(".morvane-save-");
constexpr int sTemporarySuffixLength = 6;

QString systemError(int code)
{
    return QString::fromLocal8Bit(std::strerror(code));
}

// Whether anything has the name, a dangling symbolic link included.
bool nameTaken(const QString &path)
{
    struct stat status;
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0;
}

// The file a save writes: `path`, or the file its symbolic links lead to (the link itself
// is kept, as text editors keep it). False with the reason when the links go round.
bool resolveSaveTarget(const QString &path, QString *target, QString *reason)
{
    QString current = QFileInfo(path).absoluteFilePath();
    for (int hop = 0; hop < 40; ++hop) {
        const QFileInfo info(current);
        if (!info.isSymLink()) {
            *target = current;
            return true;
        }
        current = info.symLinkTarget();
    }
    *reason = systemError(ELOOP);
    return false;
}

// Removes what earlier saves of `target` left behind when they were killed before the
// rename: our temporary files that no living save holds (each save keeps a lock on its
// own until it is renamed or removed).
void removeStaleTemporaries(const QString &target)
{
    const QFileInfo info(target);
    const QString prefix = QLatin1Char('.') + info.fileName() + sTemporaryInfix;
    const QDir directory = info.absoluteDir();
    const QStringList names =
        directory.entryList(QDir::Files | QDir::Hidden | QDir::System | QDir::NoSymLinks);
    for (const QString &name : names) {
        if (name.size() != prefix.size() + sTemporarySuffixLength || !name.startsWith(prefix))
            continue;
        const QStringView suffix = QStringView(name).mid(prefix.size());
        if (!std::all_of(suffix.begin(), suffix.end(), [](QChar c) {
                return c.unicode() < 128 && std::isalnum(int(c.unicode()));
            }))
            continue;
        const QByteArray path = QFile::encodeName(directory.filePath(name));
        const int fd = ::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0)
            continue;
        struct stat status;
        if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid()
            && ::flock(fd, LOCK_EX | LOCK_NB) == 0)
            ::unlink(path.constData());
        ::close(fd);
    }
}

// Writes to a file descriptor through a buffer of its own, and keeps the system's reason
// when a write fails (QFile reports a full disk as "Unknown error").
class DescriptorDevice final : public QIODevice
{
public:
    explicit DescriptorDevice(int fd)
        : mFd(fd)
    {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        mBuffer.reserve(Capacity);
    }

    /// Hands everything written so far to the system.
    bool flushBuffer()
    {
        if (mBuffer.isEmpty())
            return !mFailed;
        const bool written = writeFully(mBuffer.constData(), mBuffer.size());
        mBuffer.clear();
        return written;
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        if (mFailed)
            return -1;
        if (mBuffer.size() + size > Capacity && !flushBuffer())
            return -1;
        if (size >= Capacity)
            return writeFully(data, size) ? size : -1;
        mBuffer.append(data, size);
        return size;
    }

private:
    static constexpr qsizetype Capacity = 1 << 16;

    bool writeFully(const char *data, qint64 size)
    {
        while (size > 0 && !mFailed) {
            const ssize_t done = ::write(mFd, data, size_t(size));
            if (done < 0 && errno == EINTR)
                continue;
            if (done <= 0) {
                mFailed = true;
                setErrorString(systemError(done < 0 ? errno : EIO));
                break;
            }
            data += done;
            size -= done;
        }
        return !mFailed;
    }

    int mFd;
    bool mFailed = false;
    QByteArray mBuffer;
};

// A new temporary file beside `target`, open for writing and locked; -1 with the reason
// on failure. Created with 0666 so that the process's umask applies as to any new file;
// the permissions of a file it replaces are copied over.
int createTemporary(const QString &target, QString *temporaryPath, QString *reason)
{
    const QFileInfo info(target);
    static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    for (int attempt = 0; attempt < 100; ++attempt) {
        QString suffix;
        for (int i = 0; i < sTemporarySuffixLength; ++i)
            suffix += QLatin1Char(letters[QRandomGenerator::global()->bounded(62)]);
        const QString candidate = info.absoluteDir().filePath(
            QLatin1Char('.') + info.fileName() + sTemporaryInfix + suffix);
        const int fd = ::open(QFile::encodeName(candidate).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            *reason = systemError(errno);
            return -1;
        }
        ::flock(fd, LOCK_EX | LOCK_NB);
        struct stat old;
        if (::stat(QFile::encodeName(target).constData(), &old) == 0)
            ::fchmod(fd, old.st_mode & 07777);
        *temporaryPath = candidate;
        return fd;
    }
    *reason = systemError(EEXIST);
    return -1;
}

} // namespace

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

    QString reason;
    QString written;
    if (!resolveSaveTarget(path, &written, &reason))
        return fail(host, error, prefix + reason);
    reason = notRegularFile(written);
    if (!reason.isEmpty())
        return fail(host, error, prefix + reason);
    // A file its owner made read-only is not replaced behind their back, though the folder
    // would allow the rename.
    if (nameTaken(written) && ::access(QFile::encodeName(written).constData(), W_OK) != 0)
        return fail(host, error, prefix + systemError(errno));

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

    removeStaleTemporaries(written);
    QString temporaryPath;
    const int fd = createTemporary(written, &temporaryPath, &reason);
    if (fd < 0)
        return fail(host, error, prefix + reason);
    const QByteArray temporaryName = QFile::encodeName(temporaryPath);
    DescriptorDevice file(fd);
    // Every failure from here on removes the temporary file and leaves the old one as it was.
    const auto abandon = [&](const QString &why) {
        ::close(fd);
        ::unlink(temporaryName.constData());
        host->endProgress();
        return fail(host, error, prefix + why);
    };

    host->beginProgress(QStringLiteral("Saving ") + target.fileName());
    // The last few percent are left for the commit, which waits for the disk.
    const auto progress = [host](int percent) { host->progress(percent * 95 / 100); };
    QString writeError;
    const bool wrote =
        form == Form::Json
            ? JsonProjectWriter::write(*document, &file, options, &writeError, progress)
            : XmlProjectWriter::write(*document, &file, options, &writeError, progress);
    if (!wrote)
        return abandon(writeError.isEmpty() ? file.errorString() : writeError);
    if (!file.flushBuffer())
        return abandon(file.errorString());
    // The data must be on the disk before the name points at it, or a crash soon after
    // can leave an empty file under the old name.
    if (::fsync(fd) != 0 && errno != EINVAL && errno != ENOTSUP)
        return abandon(systemError(errno));
    // Replacing a large file frees its blocks inside the rename, which the user waits for;
    // holding the old file open moves that work to the close, done on a worker afterwards.
    const int replaced = openReplacedFile(written);
    const bool renamed = ::rename(temporaryName.constData(),
                                  QFile::encodeName(written).constData()) == 0;
    const int renameError = errno;
    if (replaced >= 0)
        QThreadPool::globalInstance()->start([replaced] { ::close(replaced); });
    if (!renamed)
        return abandon(systemError(renameError));
    ::close(fd);
    syncDirectory(QFileInfo(written).absolutePath());
    host->progress(100);
    host->endProgress();
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

namespace {

// Whether the real path `canonical` is `directory` or lies below it (both canonical).
bool canonicalInside(const QString &canonical, const QString &directory)
{
    return !canonical.isEmpty() && !directory.isEmpty()
           && (canonical == directory || canonical.startsWith(directory + QLatin1Char('/'))
               || directory == QLatin1String("/"));
}

// The real path of `path`'s nearest existing ancestor (or of itself).
QString canonicalExistingPart(const QString &path)
{
    QString current = QDir::cleanPath(path);
    while (!current.isEmpty()) {
        const QString canonical = QFileInfo(current).canonicalFilePath();
        if (!canonical.isEmpty())
            return canonical;
        const int slash = current.lastIndexOf(QLatin1Char('/'));
        if (slash <= 0)
            return QString();
        current = current.left(slash);
    }
    return QString();
}

// Why the image at `source` (a path inside the other project's folder) is not copied, or
// empty when it is a regular file whose real path lies in `sourceRoot` (canonical).
QString refusedSource(const QString &source, const QString &sourceRoot)
{
    const QString canonical = QFileInfo(source).canonicalFilePath();
    if (canonical.isEmpty())
        return QStringLiteral("it is a link that leads nowhere");
    if (!canonicalInside(canonical, sourceRoot))
        return QStringLiteral("it leads outside the merged project's folder");
    struct stat status;
    if (::stat(QFile::encodeName(canonical).constData(), &status) != 0
        || !S_ISREG(status.st_mode))
        return QStringLiteral("it is not a regular file");
    return QString();
}

// Creates the folders up to `directory` unless its real path would leave `root`
// (canonical): no folder is made through a link that leads out.
bool makeFolderInside(const QString &directory, const QString &root)
{
    if (!canonicalInside(canonicalExistingPart(directory), root))
        return false;
    if (!QDir().mkpath(directory))
        return false;
    return canonicalInside(QFileInfo(directory).canonicalFilePath(), root);
}

// Copies the regular file `source` (a real path) to the new file `destination`, which must
// not exist yet in any form, so that no link there is followed. False with the reason.
bool copyNewFile(const QString &source, const QString &destination, QString *reason)
{
    const int in = ::open(QFile::encodeName(source).constData(),
                          O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (in < 0) {
        *reason = systemError(errno);
        return false;
    }
    struct stat status;
    if (::fstat(in, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(in);
        *reason = QStringLiteral("it is not a regular file");
        return false;
    }
    const QByteArray target = QFile::encodeName(destination);
    const int out = ::open(target.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                           0666);
    if (out < 0) {
        *reason = systemError(errno);
        ::close(in);
        return false;
    }
    char buffer[1 << 16];
    bool ok = true;
    for (;;) {
        const ssize_t got = ::read(in, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            ok = got == 0;
            break;
        }
        for (ssize_t done = 0; ok && done < got;) {
            const ssize_t put = ::write(out, buffer + done, size_t(got - done));
            if (put < 0 && errno == EINTR)
                continue;
            ok = put > 0;
            done += put > 0 ? put : 0;
        }
        if (!ok)
            break;
    }
    if (!ok)
        *reason = systemError(errno);
    ::close(in);
    if (::close(out) != 0 && ok) {
        ok = false;
        *reason = systemError(errno);
    }
    if (!ok)
        ::unlink(target.constData());
    return ok;
}

} // namespace

QString ProjectFile::freeName(const QString &path, const QStringList &taken)
{
    if (!taken.contains(path) && !nameTaken(path))
        return path;
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    // A dot that starts the name (".hidden") or lies in a directory is no extension.
    const bool hasExtension = dot > slash + 1;
    const QString stem = hasExtension ? path.left(dot) : path;
    const QString extension = hasExtension ? path.mid(dot) : QString();
    for (int n = 2;; ++n) {
        const QString candidate = stem + QLatin1Char('_') + QString::number(n) + extension;
        if (!taken.contains(candidate) && !nameTaken(candidate))
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
    // map to null and their keys show nothing. Links are followed only where they stay
    // inside: the real path of what is read lies in the other project's folder, the real
    // path of what is written in this one's.
    const QString sourceRoot = QFileInfo(sourceDirectory).canonicalFilePath();
    const QString targetRoot = QFileInfo(targetDirectory).canonicalFilePath();
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
            // A name nothing stands at is a missing image: its file is kept, as on opening.
            if (nameTaken(source)) {
                const QString refusal = refusedSource(source, sourceRoot);
                if (!refusal.isEmpty()) {
                    notes.append(
                        QStringLiteral("Refused image \"%1\": %2").arg(old->name(), refusal));
                    replacements.insert(old, nullptr);
                    continue;
                }
                if (!makeFolderInside(QFileInfo(destination).absolutePath(), targetRoot)) {
                    notes.append(QStringLiteral("Refused image \"%1\": its copy cannot be placed "
                                                "inside the project folder")
                                     .arg(old->name()));
                    replacements.insert(old, nullptr);
                    continue;
                }
                destination = freeName(destination, claimed);
                claimed.append(destination);
                QString reason;
                if (!copyNewFile(QFileInfo(source).canonicalFilePath(), destination, &reason))
                    notes.append(QStringLiteral("Could not copy \"%1\" to \"%2\": %3")
                                     .arg(source, destination, reason));
            } else {
                destination = freeName(destination, claimed);
                claimed.append(destination);
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
