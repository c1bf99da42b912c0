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
#include <QImage>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;

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
    QVERIFY(writeAll(mainDir + QStringLiteral("/main.rigx"),
                     projectText(QStringLiteral("hero"), {QStringLiteral("hero.png")})));
    QVERIFY(writeAll(otherDir + QStringLiteral("/friend.rigx"),
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
    QVERIFY(writeAll(root.filePath(QStringLiteral("main.rigx")),
                     projectText(QStringLiteral("hero"), {QStringLiteral("a.png")})));
    QVERIFY(writeAll(root.filePath(QStringLiteral("other.rigx")),
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
