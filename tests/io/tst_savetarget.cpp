// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "testhost.h"

#include "io/projectfile.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

// A project of `keys` bone keys, so that its text is roughly 100 bytes per key.
void buildProject(RigxData &document, int keys)
{
    auto *entity = new Entity(QStringLiteral("e"));
    document.appendEntity(entity);
    auto *bone = new Object(QStringLiteral("b"), Object::Bone);
    entity->appendObject(bone);
    auto *animation = new Animation(QStringLiteral("a"), true);
    animation->setLength(keys * 10);
    entity->appendAnimation(animation);
    auto *timeline = new Timeline(bone, QStringLiteral("b"));
    animation->appendTimeline(timeline);
    for (int k = 0; k < keys; ++k) {
        DisplayInfo info;
        info.x = k * 1.25;
        info.angle = k % 360;
        auto *key = new TimelineKey(FileInfo(), info);
        key->setCachedTime(k * 10);
        timeline->appendTimelineKey(key, false, false);
    }
    animation->appendMainKeysForOrphanTimeKeys(false);
}

mode_t fileType(const QString &path)
{
    struct stat status;
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        return 0;
    return status.st_mode & S_IFMT;
}

QStringList entries(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                         | QDir::NoDotAndDotDot,
                                     QDir::Name);
}

const QRegularExpression
    sTemporaryName(QStringLiteral("^\\.p\\.rigx\\.morvane-save-[A-Za-z0-9]{6}$"));

// Kills its own process when the save is half written: a crash between creating the
// temporary file and renaming it.
class KillingHost : public TestHost
{
public:
    void progress(int percent) override
    {
        if (percent >= 50)
            ::kill(::getpid(), SIGKILL);
    }
};

} // namespace

class TestSaveTarget : public QObject
{
    Q_OBJECT

private slots:
    void savingThroughLinkKeepsLink_data();
    void savingThroughLinkKeepsLink();
    void specialTargetsAreRefused_data();
    void specialTargetsAreRefused();
    void readOnlyFileIsKept();
    void staleTemporariesAreRemoved();
    void fullDiskNamesReason_data();
    void fullDiskNamesReason();
};

void TestSaveTarget::savingThroughLinkKeepsLink_data()
{
    QTest::addColumn<QStringList>("links"); // "name>target" pairs, made in order
    QTest::addColumn<QString>("saved");     // the name saved to
    QTest::addColumn<QString>("written");   // the file that must hold the project
    QTest::newRow("relative") << QStringList{QStringLiteral("p.rigx>real.rigx")} << "p.rigx"
                              << "real.rigx";
    QTest::newRow("into another folder")
        << QStringList{QStringLiteral("p.rigx>sub/real.rigx")} << "p.rigx" << "sub/real.rigx";
    QTest::newRow("absolute") << QStringList{QStringLiteral("p.rigx>@/sub/real.rigx")}
                              << "p.rigx" << "sub/real.rigx";
    QTest::newRow("chain") << QStringList{QStringLiteral("sub/mid.rigx>real.rigx"),
                                          QStringLiteral("p.rigx>sub/mid.rigx")}
                           << "p.rigx" << "sub/real.rigx";
    QTest::newRow("dangling") << QStringList{QStringLiteral("p.rigj>new.rigj")} << "p.rigj"
                              << "new.rigj";
}

void TestSaveTarget::savingThroughLinkKeepsLink()
{
    QFETCH(QStringList, links);
    QFETCH(QString, saved);
    QFETCH(QString, written);
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("sub")));
    if (!written.startsWith(QLatin1String("new")))
        QVERIFY(writeFile(dir.filePath(written), "old"));
    QHash<QString, QByteArray> linkTexts;
    for (const QString &pair : std::as_const(links)) {
        const QString name = pair.section(QLatin1Char('>'), 0, 0);
        QString target = pair.section(QLatin1Char('>'), 1);
        // Relative targets are taken from the link's own folder.
        target.replace(QLatin1Char('@'), dir.path());
        const QByteArray text = QFile::encodeName(target);
        QCOMPARE(::symlink(text.constData(), QFile::encodeName(dir.filePath(name)).constData()),
                 0);
        linkTexts.insert(name, text);
    }

    TestHost host;
    RigxData document;
    buildProject(document, 3);
    const QString path = dir.filePath(saved);
    QVERIFY(ProjectFile::save(&document, path, {}, &host));
    QVERIFY(host.lines.isEmpty());
    // The links are still links, pointing where they pointed.
    for (auto it = linkTexts.cbegin(); it != linkTexts.cend(); ++it) {
        QCOMPARE(fileType(dir.filePath(it.key())), mode_t(S_IFLNK));
        char buffer[4096];
        const ssize_t length = ::readlink(QFile::encodeName(dir.filePath(it.key())).constData(),
                                          buffer, sizeof buffer);
        QCOMPARE(QByteArray(buffer, int(length)), it.value());
    }
    QCOMPARE(fileType(dir.filePath(written)), mode_t(S_IFREG));
    const QByteArray text = readAll(dir.filePath(written));
    QVERIFY(text.startsWith(saved.endsWith(QLatin1String("rigx")) ? "<?xml" : "{"));
    QCOMPARE(readAll(path), text);
    QCOMPARE(document.filePath(), path);
    // Nothing else appeared beside either name.
    QVERIFY(entries(dir.path()).filter(QStringLiteral("morvane-save")).isEmpty());
    QVERIFY(entries(dir.filePath(QStringLiteral("sub")))
                .filter(QStringLiteral("morvane-save"))
                .isEmpty());
}

void TestSaveTarget::specialTargetsAreRefused_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("reason");
    QTest::newRow("null device") << "device" << "it is a device, not a regular file";
    QTest::newRow("pipe") << "pipe" << "it is a pipe, not a regular file";
    QTest::newRow("folder") << "folder" << "it is a folder, not a regular file";
    QTest::newRow("socket") << "socket" << "it is a socket, not a regular file";
    QTest::newRow("link to a pipe") << "link to pipe" << "it is a pipe, not a regular file";
    QTest::newRow("link to a device") << "link to device" << "it is a device, not a regular file";
    QTest::newRow("links in a circle") << "loop" << "Too many levels of symbolic links";
}

void TestSaveTarget::specialTargetsAreRefused()
{
    // Renaming a saved file over any of these would take the name from it; as root, even
    // a device node would be replaced.
    QFETCH(QString, kind);
    QFETCH(QString, reason);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.rigx"));
    const QString node =
        kind.startsWith(QLatin1String("link")) ? dir.filePath(QStringLiteral("node")) : path;
    const QByteArray nodeName = QFile::encodeName(node);
    int socketFd = -1;
    if (kind.endsWith(QLatin1String("device"))) {
        if (::mknod(nodeName.constData(), S_IFCHR | 0666, makedev(1, 3)) != 0)
            QSKIP("making a device node needs root");
    } else if (kind.endsWith(QLatin1String("pipe"))) {
        QCOMPARE(::mkfifo(nodeName.constData(), 0600), 0);
    } else if (kind == QLatin1String("folder")) {
        QVERIFY(QDir().mkdir(node));
    } else if (kind == QLatin1String("socket")) {
        socketFd = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        QVERIFY(size_t(nodeName.size()) < sizeof address.sun_path);
        std::memcpy(address.sun_path, nodeName.constData(), size_t(nodeName.size()));
        QCOMPARE(::bind(socketFd, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    } else if (kind == QLatin1String("loop")) {
        QCOMPARE(::symlink("q.rigx", QFile::encodeName(path).constData()), 0);
        QCOMPARE(::symlink("p.rigx", QFile::encodeName(dir.filePath(QStringLiteral("q.rigx")))
                                         .constData()),
                 0);
    }
    if (node != path)
        QCOMPARE(::symlink("node", QFile::encodeName(path).constData()), 0);
    struct stat before;
    QCOMPARE(::lstat(nodeName.constData(), &before), 0);
    const QStringList entriesBefore = entries(dir.path());

    TestHost host;
    RigxData document;
    buildProject(document, 3);
    QString error;
    QVERIFY(!ProjectFile::save(&document, path, {}, &host, &error));
    const QString line = QStringLiteral("Error: Cannot write file ") + path + QStringLiteral(": ")
                         + reason;
    QCOMPARE(error, line);
    QCOMPARE(host.lines, QStringList{line});
    QCOMPARE(host.suppressDepth, 0);

    // Untouched: the same node of the same kind, and nothing new beside it.
    struct stat after;
    QCOMPARE(::lstat(nodeName.constData(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(after.st_mode, before.st_mode);
    QCOMPARE(after.st_rdev, before.st_rdev);
    QCOMPARE(entries(dir.path()), entriesBefore);
    if (socketFd >= 0)
        ::close(socketFd);
}

void TestSaveTarget::readOnlyFileIsKept()
{
    // Permissions do not bind the superuser: the save runs as an ordinary user in a child.
    if (::geteuid() != 0)
        QSKIP("changing to another user needs root");
    QTemporaryDir dir;
    QCOMPARE(::chmod(QFile::encodeName(dir.path()).constData(), 0777), 0);
    const QString path = dir.filePath(QStringLiteral("p.rigx"));
    QVERIFY(writeFile(path, "old"));
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0444), 0);
    RigxData document;
    buildProject(document, 3);
    const pid_t child = ::fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        if (::setgid(65534) != 0 || ::setuid(65534) != 0)
            ::_exit(3);
        TestHost host;
        QString error;
        const bool saved = ProjectFile::save(&document, path, {}, &host, &error);
        const QString line = QStringLiteral("Error: Cannot write file ") + path
                             + QStringLiteral(": Permission denied");
        ::_exit(saved ? 1 : error == line && host.lines == QStringList{line} ? 0 : 2);
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
    QCOMPARE(readAll(path), QByteArray("old"));
}

void TestSaveTarget::staleTemporariesAreRemoved()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.rigx"));
    QVERIFY(writeFile(path, "old"));

    // A save killed half way leaves its temporary file.
    RigxData big;
    buildProject(big, 5000);
    const pid_t child = ::fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        KillingHost host;
        ProjectFile::save(&big, path, {}, &host);
        ::_exit(0);
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    QCOMPARE(readAll(path), QByteArray("old"));
    const QStringList left = entries(dir.path()).filter(sTemporaryName);
    QCOMPARE(left.size(), 1);
    QVERIFY(readAll(dir.filePath(left.first())).startsWith("<?xml"));

    // Names that are not a stale temporary file of this save are kept: other files, other
    // projects' temporaries, links, and a temporary file a living save still holds.
    const QStringList kept = {QStringLiteral("p.rigx.backup"),
                              QStringLiteral(".p.rigx.morvane-save-abc"),
                              QStringLiteral(".p.rigx.morvane-save-abcdefg"),
                              QStringLiteral(".q.rigx.morvane-save-abcdef"),
                              QStringLiteral(".p.rigx.morvane-save-held01")};
    for (const QString &name : kept)
        QVERIFY(writeFile(dir.filePath(name), "keep"));
    const QString outside = dir.filePath(QStringLiteral("outside.txt"));
    QVERIFY(writeFile(outside, "keep"));
    const QString linked = dir.filePath(QStringLiteral(".p.rigx.morvane-save-link01"));
    QCOMPARE(::symlink("outside.txt", QFile::encodeName(linked).constData()), 0);
    const int held = ::open(QFile::encodeName(dir.filePath(kept.last())).constData(), O_RDONLY);
    QVERIFY(held >= 0);
    QCOMPARE(::flock(held, LOCK_EX | LOCK_NB), 0);

    TestHost host;
    RigxData document;
    buildProject(document, 3);
    QVERIFY(ProjectFile::save(&document, path, {}, &host));
    ::close(held);
    QVERIFY(readAll(path).startsWith("<?xml"));
    QVERIFY(!QFileInfo::exists(dir.filePath(left.first())));
    for (const QString &name : kept)
        QCOMPARE(readAll(dir.filePath(name)), QByteArray("keep"));
    QCOMPARE(fileType(linked), mode_t(S_IFLNK));
    QCOMPARE(readAll(outside), QByteArray("keep"));
}

void TestSaveTarget::fullDiskNamesReason_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("xml") << "p.rigx";
    QTest::newRow("json") << "p.rigj";
}

void TestSaveTarget::fullDiskNamesReason()
{
    // A real full disk: a small memory file system, which only root may mount.
    QFETCH(QString, name);
    QTemporaryDir dir;
    const QString mountPoint = dir.filePath(QStringLiteral("small"));
    QVERIFY(QDir().mkdir(mountPoint));
    const QByteArray mountName = QFile::encodeName(mountPoint);
    if (::mount("tmpfs", mountName.constData(), "tmpfs", 0, "size=64k") != 0)
        QSKIP("mounting a small file system needs root");
    struct Unmount
    {
        QByteArray point;
        ~Unmount() { ::umount2(point.constData(), MNT_DETACH); }
    } unmount{mountName};

    const QString path = mountPoint + QLatin1Char('/') + name;
    TestHost host;
    {
        RigxData small;
        buildProject(small, 3);
        QVERIFY(ProjectFile::save(&small, path, {}, &host));
    }
    const QByteArray old = readAll(path);
    RigxData document;
    buildProject(document, 5000);
    QString error;
    QVERIFY(!ProjectFile::save(&document, path, {}, &host, &error));
    const QString line = QStringLiteral("Error: Cannot write file ") + path
                         + QStringLiteral(": No space left on device");
    QCOMPARE(error, line);
    QCOMPARE(host.lines, QStringList{line});
    // The old file is whole and the half-written one is gone, so the space is free again.
    QCOMPARE(readAll(path), old);
    QCOMPARE(entries(mountPoint), QStringList{name});
    QCOMPARE(host.suppressDepth, 0);
}

QTEST_GUILESS_MAIN(TestSaveTarget)
#include "tst_savetarget.moc"
