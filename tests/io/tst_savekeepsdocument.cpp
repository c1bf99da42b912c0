// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "testhost.h"

#include "io/projectfile.h"
#include "model/animation.h"
#include "model/commands/objectcommands.h"
#include "model/entity.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;
using Morvane::Testing::readAll;
using Morvane::Testing::writeFile;

// Saving leaves out what the file does not need (timelines without keys, images that are
// gone and unused), but must not take it from the document: the undo stack addresses
// timelines and files by position, and a save between an edit and its undo would make the
// undo find another timeline or another image.
class TestSaveKeepsDocument : public QObject
{
    Q_OBJECT

private slots:
    void saveLeavesOutButKeeps_data();
    void saveLeavesOutButKeeps();
    void bonesWrittenParentsFirstInPlace();
};

void TestSaveKeepsDocument::saveLeavesOutButKeeps_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("xml") << QStringLiteral("p.rigx");
    QTest::newRow("json") << QStringLiteral("p.rigj");
}

void TestSaveKeepsDocument::saveLeavesOutButKeeps()
{
    QFETCH(QString, name);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(Qt::red);
    for (const char *file : {"a.png", "b.png", "c.png"})
        QVERIFY(image.save(dir.filePath(QString::fromLatin1(file))));
    // b.png is used by nothing; c.png by the second sprite.
    const QByteArray text
        = "<morvane_data><folder id=\"0\"><file id=\"0\" name=\"a.png\" width=\"4\" height=\"4\"/>"
          "<file id=\"1\" name=\"b.png\" width=\"4\" height=\"4\"/>"
          "<file id=\"2\" name=\"c.png\" width=\"4\" height=\"4\"/></folder>"
          "<entity id=\"0\" name=\"e\"><animation id=\"0\" name=\"a\" length=\"500\"><mainline>"
          "<key id=\"0\"><object_ref id=\"0\" timeline=\"0\" key=\"0\" z_index=\"0\"/>"
          "<object_ref id=\"1\" timeline=\"1\" key=\"0\" z_index=\"1\"/></key></mainline>"
          "<timeline id=\"0\" name=\"one\"><key id=\"0\"><object folder=\"0\" file=\"0\"/></key>"
          "</timeline><timeline id=\"1\" name=\"two\"><key id=\"0\"><object folder=\"0\" "
          "file=\"2\" x=\"7\"/></key></timeline></animation></entity></morvane_data>";
    const QString source = dir.filePath(QStringLiteral("source.rigx"));
    QVERIFY(writeFile(source, text));

    RigxData document;
    TestHost host;
    QVERIFY(ProjectFile::open(&document, source, &host));
    const QString path = dir.filePath(name);
    QVERIFY(ProjectFile::save(&document, path, ProjectSaveOptions(), &host));
    const QByteArray before = readAll(path);
    QVERIFY(before.contains("b.png"));

    // b.png vanishes from the disk while the editor runs, and an edit adds a timeline that
    // has no keys yet.
    QVERIFY(QFile::remove(dir.filePath(QStringLiteral("b.png"))));
    QUndoStack stack;
    document.setUndoStack(&stack);
    Animation *animation = document.entity(0)->animation(0);
    stack.push(new AppendTimelineCommand(animation, 0, QStringLiteral("extra")));
    QCOMPARE(animation->timelineCount(), 3);

    QVERIFY(ProjectFile::save(&document, path, ProjectSaveOptions(), &host));
    const QByteArray saved = readAll(path);
    QVERIFY(!saved.contains("b.png"));
    QVERIFY(!saved.contains("extra"));
    QVERIFY(saved.contains("c.png"));
    // The document still has both; the written ids count only what was written.
    QCOMPARE(animation->timelineCount(), 3);
    QCOMPARE(document.folder(0)->fileCount(), 3);

    // The saved file reads back and saves to the same bytes.
    RigxData reread;
    QVERIFY(ProjectFile::open(&reread, path, &host));
    QCOMPARE(reread.folder(0)->fileCount(), 2);
    const QString again = dir.filePath(QStringLiteral("again.") + QFileInfo(name).suffix());
    QVERIFY(ProjectFile::save(&reread, again, ProjectSaveOptions(), &host));
    QCOMPARE(readAll(again), saved);

    // Undo after the save takes away the timeline it added, not another one.
    stack.undo();
    QCOMPARE(animation->timelineCount(), 2);
    QCOMPARE(animation->timeline(1)->name(), QStringLiteral("two"));
    QVERIFY(ProjectFile::save(&document, path, ProjectSaveOptions(), &host));
    QCOMPARE(readAll(path), saved);
    document.setUndoStack(nullptr);
}

// A file may list a child bone before its parent; saving writes the parent first, but the
// key's own order stays, since undo commands name references by position.
void TestSaveKeepsDocument::bonesWrittenParentsFirstInPlace()
{
    const QByteArray text
        = "<morvane_data><entity id=\"0\" name=\"e\"><obj_info name=\"arm\" type=\"bone\"/>"
          "<obj_info name=\"hand\" type=\"bone\"/><animation id=\"0\" name=\"a\" length=\"500\">"
          "<mainline><key id=\"0\"><bone_ref id=\"0\" parent=\"1\" timeline=\"1\" key=\"0\"/>"
          "<bone_ref id=\"1\" timeline=\"0\" key=\"0\"/></key></mainline>"
          "<timeline id=\"0\" obj=\"0\" name=\"arm\" object_type=\"bone\"><key id=\"0\">"
          "<bone x=\"10\"/></key></timeline><timeline id=\"1\" obj=\"1\" name=\"hand\" "
          "object_type=\"bone\"><key id=\"0\"><bone x=\"5\"/></key></timeline></animation>"
          "</entity></morvane_data>";
    RigxData document;
    QStringList warnings;
    QVERIFY(Testing::readText(text, &document, &warnings));
    const MainlineKey *key = document.entity(0)->animation(0)->mainlineKey(0);
    QCOMPARE(key->boneRefCount(), 2);
    const BoneRef *hand = key->boneRef(0);
    QCOMPARE(hand->parentRef(), key->boneRef(1));

    const QByteArray saved = Testing::writeXml(document);
    QCOMPARE(key->boneRef(0), hand);
    const qsizetype arm = saved.indexOf("<bone_ref id=\"0\" timeline=\"0\"");
    const qsizetype child = saved.indexOf("<bone_ref id=\"1\" parent=\"0\" timeline=\"1\"");
    QVERIFY2(arm >= 0 && child > arm, saved.constData());
    // What was written reads back and writes the same.
    QCOMPARE(Testing::rewrittenXml(saved), saved);
}

QTEST_GUILESS_MAIN(TestSaveKeepsDocument)
#include "tst_savekeepsdocument.moc"
