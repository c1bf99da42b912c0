// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "testhost.h"

#include "io/projectfile.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QDir>
#include <QDirIterator>
#include <QMap>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <sys/stat.h>
#include <sys/sysmacros.h>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

void writeImage(const QString &path, const QColor &color)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QImage image(8, 4, QImage::Format_ARGB32);
    image.fill(color);
    QVERIFY(image.save(path, "PNG"));
}

// A project with one entity and one sprite key per image name.
QByteArray projectText(const QString &entity, const QStringList &images)
{
    QByteArray text = "<morvane_data><folder id=\"0\">";
    for (int i = 0; i < images.size(); ++i)
        text += "<file id=\"" + QByteArray::number(i) + "\" name=\"" + images.at(i).toUtf8()
                + "\" width=\"8\" height=\"4\"/>";
    text += "</folder><entity name=\"" + entity.toUtf8() + "\">";
    for (int i = 0; i < images.size(); ++i)
        text += "<obj_info name=\"s" + QByteArray::number(i) + "\" type=\"sprite\"/>";
    text += "<animation name=\"a\"><mainline><key>";
    for (int i = 0; i < images.size(); ++i)
        text += "<object_ref timeline=\"" + QByteArray::number(i) + "\" key=\"0\" z_index=\""
                + QByteArray::number(i) + "\"/>";
    text += "</key></mainline>";
    for (int i = 0; i < images.size(); ++i)
        text += "<timeline id=\"" + QByteArray::number(i) + "\" obj=\"" + QByteArray::number(i)
                + "\"><key><object folder=\"0\" file=\"" + QByteArray::number(i)
                + "\"/></key></timeline>";
    return text + "</animation></entity></morvane_data>";
}

// A project whose entity "hero" shows, through a sub-entity key, animation `animation` of
// its entity `entity` ("hat" is entity 1, with two animations).
QByteArray subEntityProjectText(int entity, int animation)
{
    return "<morvane_data><entity id=\"0\" name=\"hero\"><obj_info name=\"sub\" type=\"entity\"/>"
           "<animation id=\"0\" name=\"walk\"><timeline id=\"0\" obj=\"0\" name=\"sub\" "
           "object_type=\"entity\"><key id=\"0\"><object entity=\""
           + QByteArray::number(entity) + "\" animation=\"" + QByteArray::number(animation)
           + "\" t=\"0.5\"/></key></timeline></animation></entity>"
             "<entity id=\"1\" name=\"hat\"><animation id=\"0\" name=\"idle\"/>"
             "<animation id=\"1\" name=\"spin\"/></entity></morvane_data>";
}

// Every regular file and link below `directory` with its content or target.
QMap<QString, QByteArray> treeBelow(const QString &directory)
{
    QMap<QString, QByteArray> tree;
    QDirIterator it(directory,
                    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info(path);
        if (info.isSymLink())
            tree.insert(path.mid(directory.size() + 1), "-> " + info.symLinkTarget().toUtf8());
        else if (info.isFile())
            tree.insert(path.mid(directory.size() + 1), readAll(path));
        else if (info.isDir())
            tree.insert(path.mid(directory.size() + 1) + QLatin1Char('/'), QByteArray());
        else
            tree.insert(path.mid(directory.size() + 1), "special");
    }
    return tree;
}

QStringList filesBelow(const QString &directory)
{
    QStringList files;
    QDirIterator it(directory, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next().mid(directory.size() + 1));
    files.sort();
    return files;
}

} // namespace

class TestMerge : public QObject
{
    Q_OBJECT

private slots:
    void mergesEntitiesAndImages();
    void declinedMergeChangesNothing();
    void subEntitiesAreRemapped_data();
    void subEntitiesAreRemapped();
    void linksAreFollowedOnlyInside_data();
    void linksAreFollowedOnlyInside();
    void resolveInside_data();
    void resolveInside();
    void freeName_data();
    void freeName();
};

void TestMerge::mergesEntitiesAndImages()
{
    QTemporaryDir root;
    const QString mainDir = root.filePath(QStringLiteral("main"));
    const QString otherDir = root.filePath(QStringLiteral("other"));
    writeImage(mainDir + QStringLiteral("/hero.png"), Qt::red);
    writeImage(otherDir + QStringLiteral("/parts/arm.png"), Qt::green);
    writeImage(otherDir + QStringLiteral("/leg.png"), Qt::blue);
    writeImage(root.filePath(QStringLiteral("evil.png")), Qt::black);
    // The copy target of parts/arm.png is taken already.
    writeImage(mainDir + QStringLiteral("/friend/parts/arm.png"), Qt::white);
    QVERIFY(writeFile(mainDir + QStringLiteral("/main.rigx"),
                     projectText(QStringLiteral("hero"), {QStringLiteral("hero.png")})));
    QVERIFY(writeFile(otherDir + QStringLiteral("/friend.rigx"),
                     projectText(QStringLiteral("hero"),
                                 {QStringLiteral("parts/arm.png"), QStringLiteral("leg.png"),
                                  QStringLiteral("../evil.png"),
                                  QStringLiteral("parts/../../evil.png")})));
    const QStringList rootBefore = filesBelow(root.path());

    TestHost host;
    RigxData document;
    QUndoStack stack;
    document.setUndoStack(&stack);
    QVERIFY(ProjectFile::open(&document, mainDir + QStringLiteral("/main.rigx"), &host));
    stack.push(new QUndoCommand(QStringLiteral("edit")));
    QStringList warnings;
    QVERIFY(ProjectFile::importInto(&document, otherDir + QStringLiteral("/friend.rigx"), &host,
                                    nullptr, &warnings));
    QCOMPARE(host.askedMerge, QStringLiteral("friend.rigx"));
    QCOMPARE(stack.count(), 0);

    // Entities: a taken name gets a counter.
    QCOMPARE(document.entityNames(), (QStringList{QStringLiteral("hero"), QStringLiteral("hero_000")}));

    // Images: copied below a folder named after the merged file; a taken name gets "_2";
    // paths that leave the other project's folder are refused and nothing lands outside.
    QStringList expected = rootBefore;
    expected << QStringLiteral("main/friend/parts/arm_2.png") << QStringLiteral("main/friend/leg.png");
    expected.sort();
    QCOMPARE(filesBelow(root.path()), expected);
    QCOMPARE(readAll(mainDir + QStringLiteral("/friend/parts/arm_2.png")),
             readAll(otherDir + QStringLiteral("/parts/arm.png")));
    QCOMPARE(warnings.filter(QStringLiteral("Refused image path")).size(), 2);

    // Keys of the merged entity show the copies.
    const Animation *animation = document.entity(1)->animation(0);
    QCOMPARE(animation->timeline(0)->key(0)->fileInfo().file()->name(),
             QStringLiteral("friend/parts/arm_2.png"));
    QCOMPARE(animation->timeline(1)->key(0)->fileInfo().file()->name(),
             QStringLiteral("friend/leg.png"));
    QVERIFY(animation->timeline(1)->key(0)->fileInfo().file()->imageLoaded());
    QVERIFY(!animation->timeline(2)->key(0)->fileInfo().isValid());

    // The merged project saves and opens again.
    QVERIFY(ProjectFile::save(&document, mainDir + QStringLiteral("/merged.rigx"), {}, &host));
    RigxData back;
    QVERIFY(ProjectFile::open(&back, mainDir + QStringLiteral("/merged.rigx"), &host));
    QCOMPARE(back.entityCount(), 2);
    QVERIFY(host.lines.isEmpty());
}

void TestMerge::declinedMergeChangesNothing()
{
    QTemporaryDir root;
    QVERIFY(writeFile(root.filePath(QStringLiteral("main.rigx")),
                     projectText(QStringLiteral("hero"), {QStringLiteral("a.png")})));
    QVERIFY(writeFile(root.filePath(QStringLiteral("other.rigx")),
                     projectText(QStringLiteral("villain"), {QStringLiteral("b.png")})));
    TestHost host;
    host.acceptMerge = false;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, root.filePath(QStringLiteral("main.rigx")), &host));
    QString error = QStringLiteral("unset");
    QVERIFY(!ProjectFile::importInto(&document, root.filePath(QStringLiteral("other.rigx")), &host,
                                     &error));
    QVERIFY(error.isEmpty());
    QCOMPARE(document.entityCount(), 1);
    QVERIFY(!QFileInfo::exists(root.filePath(QStringLiteral("other"))));
    QCOMPARE(host.suppressDepth, 0);
}

void TestMerge::subEntitiesAreRemapped_data()
{
    QTest::addColumn<int>("merges");
    QTest::addColumn<int>("entity");    // the sub-entity key's entity in the merged file
    QTest::addColumn<int>("animation"); // and its animation
    QTest::newRow("one merge") << 1 << 1 << 1;
    QTest::newRow("first animation") << 1 << 1 << 0;
    QTest::newRow("merged twice") << 2 << 1 << 1;
    QTest::newRow("showing itself") << 1 << 0 << 0;
    QTest::newRow("entity that does not exist") << 1 << 7 << 0;
    QTest::newRow("animation that does not exist") << 1 << 1 << 5;
}

void TestMerge::subEntitiesAreRemapped()
{
    QFETCH(int, merges);
    QFETCH(int, entity);
    QFETCH(int, animation);
    QTemporaryDir root;
    const QString mainPath = root.filePath(QStringLiteral("main.rigx"));
    QVERIFY(writeFile(mainPath, projectText(QStringLiteral("a"), {QStringLiteral("a.png")})));
    QVERIFY(writeFile(root.filePath(QStringLiteral("other.rigx")),
                     subEntityProjectText(entity, animation)));
    TestHost host;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, mainPath, &host));
    // A second entity here, so the merged ones do not start at the indexes they had.
    document.appendEntity(new Entity(QStringLiteral("b"), true));
    const bool exists = entity <= 1 && animation <= (entity == 1 ? 1 : 0);
    for (int m = 0; m < merges; ++m) {
        const int offset = document.entityCount();
        QStringList warnings;
        QVERIFY(ProjectFile::importInto(&document, root.filePath(QStringLiteral("other.rigx")),
                                        &host, nullptr, &warnings));
        QCOMPARE(document.entityCount(), offset + 2);
        const TimelineKey *key = document.entity(offset)->animation(0)->timeline(0)->key(0);
        const Address &shown = key->entityInfo().animation;
        if (!exists) {
            QVERIFY(!shown.animation());
            continue;
        }
        QCOMPARE(shown.entityIndex(), offset + entity);
        QCOMPARE(shown.animationIndex(), animation);
        QCOMPARE(shown.animation(), document.entity(offset + entity)->animation(animation));
    }

    // Saved and read again, the key still shows the merged entity's animation.
    const QString merged = root.filePath(QStringLiteral("merged.rigx"));
    QVERIFY(ProjectFile::save(&document, merged, {}, &host));
    RigxData back;
    QVERIFY(ProjectFile::open(&back, merged, &host));
    const int last = back.entityCount() - 2;
    const Address &shown =
        back.entity(last)->animation(0)->timeline(0)->key(0)->entityInfo().animation;
    if (exists)
        QCOMPARE(shown.animation(), back.entity(last + entity)->animation(animation));
    else
        QVERIFY(!shown.animation());
}

void TestMerge::linksAreFollowedOnlyInside_data()
{
    // Set-up lines, made in order below the root folder (which holds "main/main.rigx"
    // and "other/friend.rigx"): "file NAME", "dir NAME", "link NAME TARGET" (TARGET
    // absolute when it starts with "/", "@" standing for the root), "fifo NAME",
    // "device NAME".
    QTest::addColumn<QStringList>("setup");
    QTest::addColumn<QString>("image");    // the image's name in the merged project
    QTest::addColumn<QString>("copiedAs"); // below main/, empty when refused
    QTest::addColumn<QString>("source");   // the file whose bytes the copy holds
    QTest::newRow("plain file") << QStringList{QStringLiteral("file other/a.png")} << "a.png"
                                << "friend/a.png" << "other/a.png";
    QTest::newRow("file link leading out")
        << QStringList{QStringLiteral("file secret.png"),
                       QStringLiteral("link other/shadow.png @/secret.png")}
        << "shadow.png" << "" << "";
    QTest::newRow("file link to a system file")
        << QStringList{QStringLiteral("link other/shadow.png /etc/shadow")} << "shadow.png" << ""
        << "";
    QTest::newRow("file link staying inside")
        << QStringList{QStringLiteral("file other/real.png"),
                       QStringLiteral("link other/alias.png real.png")}
        << "alias.png" << "friend/alias.png" << "other/real.png";
    QTest::newRow("folder link leading out")
        << QStringList{QStringLiteral("file outside/arm.png"),
                       QStringLiteral("link other/parts @/outside")}
        << "parts/arm.png" << "" << "";
    QTest::newRow("folder link staying inside")
        << QStringList{QStringLiteral("file other/real/arm.png"),
                       QStringLiteral("link other/parts real")}
        << "parts/arm.png" << "friend/parts/arm.png" << "other/real/arm.png";
    QTest::newRow("dangling file link")
        << QStringList{QStringLiteral("link other/gone.png nothing.png")} << "gone.png" << "" << "";
    QTest::newRow("dangling link leading out")
        << QStringList{QStringLiteral("link other/gone.png /nonexistent/x.png")} << "gone.png"
        << "" << "";
    QTest::newRow("pipe") << QStringList{QStringLiteral("fifo other/pipe.png")} << "pipe.png" << ""
                          << "";
    QTest::newRow("device") << QStringList{QStringLiteral("device other/zero.png")} << "zero.png"
                            << "" << "";
    QTest::newRow("merge folder links out")
        << QStringList{QStringLiteral("file other/a.png"), QStringLiteral("dir outside"),
                       QStringLiteral("link main/friend @/outside")}
        << "a.png" << "" << "";
    QTest::newRow("merge subfolder links out")
        << QStringList{QStringLiteral("file other/parts/arm.png"), QStringLiteral("dir outside"),
                       QStringLiteral("dir main/friend"),
                       QStringLiteral("link main/friend/parts @/outside")}
        << "parts/arm.png" << "" << "";
    QTest::newRow("merge folder links inside")
        << QStringList{QStringLiteral("file other/a.png"), QStringLiteral("dir main/art"),
                       QStringLiteral("link main/friend art")}
        << "a.png" << "friend/a.png" << "other/a.png";
    QTest::newRow("dangling link at the copy's name")
        << QStringList{QStringLiteral("file other/a.png"), QStringLiteral("dir outside"),
                       QStringLiteral("dir main/friend"),
                       QStringLiteral("link main/friend/a.png @/outside/new.png")}
        << "a.png" << "friend/a_2.png" << "other/a.png";
    QTest::newRow("link to an outside file at the copy's name")
        << QStringList{QStringLiteral("file other/a.png"), QStringLiteral("file victim.png"),
                       QStringLiteral("dir main/friend"),
                       QStringLiteral("link main/friend/a.png @/victim.png")}
        << "a.png" << "friend/a_2.png" << "other/a.png";
}

void TestMerge::linksAreFollowedOnlyInside()
{
    QFETCH(QStringList, setup);
    QFETCH(QString, image);
    QFETCH(QString, copiedAs);
    QFETCH(QString, source);
    QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkpath(QStringLiteral("main")));
    QVERIFY(QDir(root.path()).mkpath(QStringLiteral("other")));
    int color = 0;
    for (const QString &line : std::as_const(setup)) {
        const QStringList parts = line.split(QLatin1Char(' '));
        const QString path = root.filePath(parts.at(1));
        QDir().mkpath(QFileInfo(path).absolutePath());
        const QByteArray name = QFile::encodeName(path);
        if (parts.at(0) == QLatin1String("file")) {
            writeImage(path, QColor::fromHsv(40 * color++, 255, 255));
        } else if (parts.at(0) == QLatin1String("dir")) {
            QVERIFY(QDir().mkpath(path));
        } else if (parts.at(0) == QLatin1String("link")) {
            QString target = parts.at(2);
            target.replace(QLatin1Char('@'), root.path());
            QCOMPARE(::symlink(QFile::encodeName(target).constData(), name.constData()), 0);
        } else if (parts.at(0) == QLatin1String("fifo")) {
            QCOMPARE(::mkfifo(name.constData(), 0600), 0);
        } else if (parts.at(0) == QLatin1String("device")) {
            if (::mknod(name.constData(), S_IFCHR | 0666, makedev(1, 5)) != 0)
                QSKIP("making a device node needs root");
        }
    }
    QVERIFY(writeFile(root.filePath(QStringLiteral("main/main.rigx")),
                     projectText(QStringLiteral("hero"), {QStringLiteral("hero.png")})));
    QVERIFY(writeFile(root.filePath(QStringLiteral("other/friend.rigx")),
                     projectText(QStringLiteral("friend"), {image})));
    const QMap<QString, QByteArray> before = treeBelow(root.path());

    TestHost host;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, root.filePath(QStringLiteral("main/main.rigx")), &host));
    QStringList warnings;
    QVERIFY(ProjectFile::importInto(&document, root.filePath(QStringLiteral("other/friend.rigx")),
                                    &host, nullptr, &warnings));
    const TimelineKey *key = document.entity(1)->animation(0)->timeline(0)->key(0);

    // Nothing changed anywhere but the copy, if there is one.
    QMap<QString, QByteArray> after = treeBelow(root.path());
    if (!copiedAs.isEmpty()) {
        const QString copy = root.filePath(QStringLiteral("main/") + copiedAs);
        QVERIFY(!QFileInfo(copy).isSymLink());
        QCOMPARE(readAll(copy), readAll(root.filePath(source)));
        QVERIFY(key->fileInfo().file());
        QCOMPARE(key->fileInfo().file()->name(), copiedAs);
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
        // The copy (where a link inside the project led it) and the folders made for it.
        const QByteArray bytes = readAll(root.filePath(source));
        for (auto it = after.begin(); it != after.end();) {
            if (!before.contains(it.key()) && it.key().startsWith(QLatin1String("main/"))
                && (it.key().endsWith(QLatin1Char('/')) || it.value() == bytes))
                it = after.erase(it);
            else
                ++it;
        }
    } else {
        QVERIFY(!key->fileInfo().isValid());
        QCOMPARE(warnings.size(), 1);
        QVERIFY2(warnings.first().startsWith(QStringLiteral("Refused image \"") + image),
                 qPrintable(warnings.first()));
        // A refused image may leave the empty merge folder behind, never a file.
        after.remove(QStringLiteral("main/friend/"));
        if (before.contains(QStringLiteral("main/friend/")))
            after.insert(QStringLiteral("main/friend/"), QByteArray());
    }
    QCOMPARE(after, before);
}

void TestMerge::resolveInside_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QString>("resolved");
    QTest::newRow("plain") << "parts/arm.png" << "/p/m/parts/arm.png";
    QTest::newRow("dot segments") << "./a//b/./c.png" << "/p/m/a/b/c.png";
    QTest::newRow("inner parent stays inside") << "a/../b.png" << "/p/m/b.png";
    QTest::newRow("parent") << "../x.png" << "";
    QTest::newRow("parent after a folder") << "a/../../x.png" << "";
    QTest::newRow("only parent") << ".." << "";
    QTest::newRow("absolute") << "/etc/passwd" << "";
    QTest::newRow("drive letter") << "C:/x.png" << "";
    QTest::newRow("drive letter without slash") << "c:x.png" << "";
    QTest::newRow("backslash") << "a\\..\\..\\x.png" << "";
    QTest::newRow("empty") << "" << "";
    QTest::newRow("current folder") << "." << "";
}

void TestMerge::resolveInside()
{
    QFETCH(QString, relative);
    QFETCH(QString, resolved);
    QCOMPARE(ProjectFile::resolveInside(QStringLiteral("/p/m"), relative), resolved);
}

void TestMerge::freeName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("taken");
    QTest::addColumn<QString>("result");
    QTest::newRow("free") << "/x/a.png" << QStringList{} << "/x/a.png";
    QTest::newRow("taken once") << "/x/a.png" << QStringList{QStringLiteral("/x/a.png")} << "/x/a_2.png";
    QTest::newRow("taken twice") << "/x/a.png"
                                 << QStringList{QStringLiteral("/x/a.png"), QStringLiteral("/x/a_2.png")}
                                 << "/x/a_3.png";
    QTest::newRow("no extension") << "/x/readme" << QStringList{QStringLiteral("/x/readme")}
                                  << "/x/readme_2";
    QTest::newRow("dot in folder only") << "/x.d/readme" << QStringList{QStringLiteral("/x.d/readme")}
                                        << "/x.d/readme_2";
    QTest::newRow("two extensions") << "/x/a.tar.gz" << QStringList{QStringLiteral("/x/a.tar.gz")}
                                    << "/x/a.tar_2.gz";
}

void TestMerge::freeName()
{
    QFETCH(QString, path);
    QFETCH(QStringList, taken);
    QFETCH(QString, result);
    QTemporaryDir dir;
    const QString base = dir.path();
    QStringList takenHere;
    for (const QString &t : std::as_const(taken))
        takenHere.append(base + t);
    QCOMPARE(ProjectFile::freeName(base + path, takenHere), base + result);
}

QTEST_GUILESS_MAIN(TestMerge)
#include "tst_merge.moc"
