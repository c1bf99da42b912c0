// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/tagmanager.h"
#include "meta/tagstate.h"
#include "meta/valline.h"
#include "model/rigxdata.h"

#include <QTest>
#include <QUndoStack>

using namespace Morvane;

class TestTags : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void uids();
    void addDuplicateChangesNothing();
    void renameToTakenNameDoesNothing();
    void undoRedoOfEachEdit_data();
    void undoRedoOfEachEdit();
    void getTags_data();
    void getTags();
    void removedTagLeavesKeysButIsNotListed();
    void withoutStackEditsApplyDirectly();
};

static QStringList names(const QList<Tag> &tags)
{
    QStringList result;
    for (const Tag &t : tags)
        result.append(t.name());
    return result;
}

void TestTags::uids()
{
    const int next = Tag::currentUniqueId;
    Tag a(QStringLiteral("a"));
    Tag b(QStringLiteral("b"), -5);
    Tag loaded(QStringLiteral("c"), 17);
    QCOMPARE(a.uid(), next);
    QCOMPARE(b.uid(), next + 1);
    QCOMPARE(loaded.uid(), 17);
    QCOMPARE(Tag::currentUniqueId, next + 2);
    QVERIFY(a.isValid());
    QVERIFY(!Tag::invalidTag().isValid());
    QCOMPARE(Tag::invalidTag().uid(), -32000);

    TagManager manager;
    QVERIFY(!manager.tagFromId(12345).isValid());
    QVERIFY(!manager.tagFromName(QStringLiteral("none")).isValid());
    QVERIFY(!manager.tag(-1).isValid());
    // A list read from a file may already use the counter's next value.
    QVERIFY(manager.appendTag(Tag(QStringLiteral("x"), Tag::currentUniqueId)));
    const int uid = manager.addTag(QStringLiteral("y"), nullptr);
    QVERIFY(uid >= 0);
    QVERIFY(uid != manager.tag(0).uid());
    QVERIFY(!manager.appendTag(Tag(QStringLiteral("x"))));
}

void TestTags::addDuplicateChangesNothing()
{
    QUndoStack stack;
    RigxData doc(&stack);
    TagManager &tags = doc.tagManager();
    QVERIFY(tags.addTag(QStringLiteral("hit"), &doc) >= 0);
    QCOMPARE(stack.count(), 1);
    const TagManager before = tags;
    QCOMPARE(tags.addTag(QStringLiteral("hit"), &doc), -1);
    QCOMPARE(tags.addTag(QString(), &doc), -1);
    QVERIFY(tags == before);
    QCOMPARE(stack.count(), 1);
    // Comparison is case-sensitive.
    QVERIFY(tags.addTag(QStringLiteral("Hit"), &doc) >= 0);
    QCOMPARE(tags.tagCount(), 2);
}

void TestTags::renameToTakenNameDoesNothing()
{
    QUndoStack stack;
    RigxData doc(&stack);
    TagManager &tags = doc.tagManager();
    const int a = tags.addTag(QStringLiteral("a"), &doc);
    tags.addTag(QStringLiteral("b"), &doc);
    const TagManager before = tags;
    QVERIFY(!tags.renameTag(a, QStringLiteral("b"), &doc));
    QVERIFY(!tags.renameTag(-77, QStringLiteral("c"), &doc));
    QVERIFY(tags == before);
    QCOMPARE(stack.count(), 2);
    QVERIFY(tags.renameTag(a, QStringLiteral("c"), &doc));
    QCOMPARE(tags.tagFromId(a).name(), QStringLiteral("c"));
    QCOMPARE(tags.tagCount(), 2);
}

void TestTags::undoRedoOfEachEdit_data()
{
    QTest::addColumn<int>("edit");
    QTest::newRow("add") << 0;
    QTest::newRow("remove") << 1;
    QTest::newRow("rename") << 2;
}

void TestTags::undoRedoOfEachEdit()
{
    QFETCH(int, edit);
    QUndoStack stack;
    RigxData doc(&stack);
    TagManager &tags = doc.tagManager();
    tags.addTag(QStringLiteral("one"), &doc);
    const int two = tags.addTag(QStringLiteral("two"), &doc);
    tags.addTag(QStringLiteral("three"), &doc);
    const TagManager before = tags;
    const int count = stack.count();

    switch (edit) {
    case 0:
        QVERIFY(tags.addTag(QStringLiteral("four"), &doc) >= 0);
        break;
    case 1:
        QVERIFY(tags.removeTag(two, &doc));
        break;
    case 2:
        QVERIFY(tags.renameTag(two, QStringLiteral("deux"), &doc));
        break;
    }
    QCOMPARE(stack.count(), count + 1);
    const TagManager after = tags;
    QVERIFY(after != before);

    stack.undo();
    QVERIFY(tags == before);
    stack.redo();
    QVERIFY(tags == after);
}

void TestTags::getTags_data()
{
    QTest::addColumn<bool>("withState");
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("expected");

    // Tags a, b, c, d in order; the state holds b and d.
    const QStringList all{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                          QStringLiteral("d")};
    QTest::newRow("no state") << false << 1 << all;
    QTest::newRow("all") << true << 0 << all;
    QTest::newRow("active") << true << 1 << QStringList{QStringLiteral("b"), QStringLiteral("d")};
    QTest::newRow("inactive") << true << 2 << QStringList{QStringLiteral("a"), QStringLiteral("c")};
    QTest::newRow("unknown type") << true << 3 << QStringList{};
    QTest::newRow("negative type") << true << -1 << QStringList{};
}

void TestTags::getTags()
{
    QFETCH(bool, withState);
    QFETCH(int, type);
    QFETCH(QStringList, expected);
    TagManager tags;
    QList<int> uids;
    for (const char *name : {"a", "b", "c", "d"})
        uids.append(tags.addTag(QString::fromLatin1(name), nullptr));
    // Out of list order on purpose: listing follows the manager's order.
    TagState state({uids[3], uids[1]}, &tags);
    QCOMPARE(names(tags.getTags(withState ? &state : nullptr, type)), expected);
    QCOMPARE(tags.tagsToStringList(withState ? &state : nullptr, type), expected);
    if (withState)
        QCOMPARE(names(state.tagList(type)), expected);
    QCOMPARE(state.tagName(uids[1]), QStringLiteral("b"));
    QCOMPARE(state.tagIndexInManager(uids[3]), 3);
    QCOMPARE(state.tagIndexInManager(-1), -1);
}

void TestTags::removedTagLeavesKeysButIsNotListed()
{
    QUndoStack stack;
    RigxData doc(&stack);
    TagManager &tags = doc.tagManager();
    const int keep = tags.addTag(QStringLiteral("keep"), &doc);
    const int gone = tags.addTag(QStringLiteral("gone"), &doc);
    TagLine line;
    line.setKey(std::make_unique<TagKey>(0, TagState({keep, gone})));

    QVERIFY(tags.removeTag(gone, &doc));
    QVERIFY(!tags.removeTag(gone, &doc));
    const TagState state = line.valFromTime(0, false, &tags);
    QVERIFY(state.containsId(gone));
    QCOMPARE(tags.tagsToStringList(&state, 1), QStringList{QStringLiteral("keep")});
    QCOMPARE(state.tagName(gone), QString());

    // Undoing the removal lists it again from the untouched key.
    stack.undo();
    QCOMPARE(tags.tagsToStringList(&state, 1),
             (QStringList{QStringLiteral("keep"), QStringLiteral("gone")}));
}

void TestTags::withoutStackEditsApplyDirectly()
{
    RigxData doc;
    TagManager &tags = doc.tagManager();
    const int uid = tags.addTag(QStringLiteral("t"), &doc);
    QCOMPARE(tags.tagCount(), 1);
    QVERIFY(tags.renameTag(uid, QStringLiteral("u"), &doc));
    QCOMPARE(tags.tag(0).name(), QStringLiteral("u"));
    QVERIFY(tags.removeTag(uid, &doc));
    QCOMPARE(tags.tagCount(), 0);
    // A manager that is not the project's is changed directly too.
    TagManager loose;
    loose.addTag(QStringLiteral("x"), &doc);
    QCOMPARE(loose.tagCount(), 1);
    QCOMPARE(tags.tagCount(), 0);
}

QTEST_GUILESS_MAIN(TestTags)
#include "tst_tags.moc"
