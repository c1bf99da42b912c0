// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/projectsaveoptions.h"
#include "io/xmlprojectreader.h"
#include "io/xmlprojectwriter.h"
#include "model/animation.h"
#include "model/commands/entitycommands.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QBuffer>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;

namespace {

// "hero" shows animation "spin" of "hat" (entity 2) through a sub-entity key; "extra"
// stands between them.
const QByteArray sProject
    = "<morvane_data><entity id=\"0\" name=\"hero\"><obj_info name=\"sub\" type=\"entity\"/>"
      "<animation id=\"0\" name=\"walk\" length=\"500\"><mainline><key id=\"0\">"
      "<object_ref id=\"0\" timeline=\"0\" key=\"0\" z_index=\"0\"/></key></mainline>"
      "<timeline id=\"0\" obj=\"0\" name=\"sub\" object_type=\"entity\"><key id=\"0\">"
      "<object entity=\"2\" animation=\"1\" t=\"0.5\"/></key></timeline></animation></entity>"
      "<entity id=\"1\" name=\"extra\"><animation id=\"0\" name=\"a\" length=\"100\"/></entity>"
      "<entity id=\"2\" name=\"hat\"><animation id=\"0\" name=\"idle\" length=\"100\"/>"
      "<animation id=\"1\" name=\"spin\" length=\"100\"/></entity></morvane_data>";

QByteArray saved(RigxData &document)
{
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    XmlProjectWriter::write(document, &buffer, ProjectSaveOptions());
    return out;
}

const Address &subEntityTarget(RigxData &document)
{
    return document.entity(0)->animation(0)->timeline(0)->key(0)->entityInfo().animation;
}

} // namespace

class TestStructureCommands : public QObject
{
    Q_OBJECT

private slots:
    void subEntityKeysFollowRows_data();
    void subEntityKeysFollowRows();
    void containersResolveThroughLeadingIndexes();
};

void TestStructureCommands::subEntityKeysFollowRows_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QList<int>>("rows"); // what the key names after the change
    QTest::newRow("entity before it deleted") << "remove extra" << QList<int>{1, 1};
    QTest::newRow("animation before it deleted") << "remove idle" << QList<int>{2, 0};
    QTest::newRow("animation inserted before it") << "insert" << QList<int>{2, 2};
    QTest::newRow("its entity deleted") << "remove hat" << QList<int>{-1, -1};
    QTest::newRow("its animation deleted") << "remove spin" << QList<int>{-1, -1};
}

// Deleting or inserting entities and animations shifts the rows a sub-entity key names
// its animation by; the key must keep showing the same animation, and undo must give the
// project's bytes back.
void TestStructureCommands::subEntityKeysFollowRows()
{
    QFETCH(QString, change);
    QFETCH(QList<int>, rows);
    XmlProjectReader reader;
    QString error;
    QVERIFY(reader.parse(sProject, &error));
    RigxData document;
    reader.read(&document);
    QUndoStack stack;
    document.setUndoStack(&stack);
    const QByteArray original = saved(document);
    QVERIFY(original.contains("entity=\"2\" animation=\"1\""));

    Entity *hat = document.entity(2);
    if (change == QLatin1String("remove extra"))
        stack.push(new RemoveEntityCommand(document.entity(1)));
    else if (change == QLatin1String("remove hat"))
        stack.push(new RemoveEntityCommand(hat));
    else if (change == QLatin1String("remove idle"))
        stack.push(new RemoveAnimationCommand(hat->animation(0)));
    else if (change == QLatin1String("remove spin"))
        stack.push(new RemoveAnimationCommand(hat->animation(1)));
    else
        stack.push(new InsertAnimationCommand(hat, std::make_unique<Animation>(QStringLiteral("new")), 0));
    QCOMPARE(subEntityTarget(document).toList(), rows);
    if (rows.at(0) >= 0)
        QCOMPARE(subEntityTarget(document).animation()->name(), QStringLiteral("spin"));
    else
        QVERIFY(!subEntityTarget(document).animation());
    const QByteArray changed = saved(document);

    stack.undo();
    QCOMPARE(saved(document), original);
    QCOMPARE(subEntityTarget(document).animation()->name(), QStringLiteral("spin"));
    stack.redo();
    QCOMPARE(saved(document), changed);
    stack.undo();
    QCOMPARE(saved(document), original);
    document.setUndoStack(nullptr);
}

void TestStructureCommands::containersResolveThroughLeadingIndexes()
{
    XmlProjectReader reader;
    QString error;
    QVERIFY(reader.parse(sProject, &error));
    RigxData document;
    reader.read(&document);
    // Asking an animation's address for its entity first must not make it forget what it
    // names.
    const Address animation(&document, {2, 1});
    QCOMPARE(animation.entity(), document.entity(2));
    QCOMPARE(animation.animation(), document.entity(2)->animation(1));
    QCOMPARE(animation.entity(), document.entity(2));
    const Address key(&document, {0, 0, 0, 0});
    QCOMPARE(key.timeline(), document.entity(0)->animation(0)->timeline(0));
    QCOMPARE(key.key(), document.entity(0)->animation(0)->timeline(0)->key(0));
    // A mainline key's address is no timeline's, even where a timeline has that row.
    const Address mainline(&document, {0, 0, 0}, document.entity(0)->animation(0)->mainlineKey(0));
    QVERIFY(!mainline.timeline());
    QCOMPARE(mainline.animation(), document.entity(0)->animation(0));
}

QTEST_GUILESS_MAIN(TestStructureCommands)
#include "tst_structurecommands.moc"
