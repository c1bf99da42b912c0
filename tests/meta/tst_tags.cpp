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
    void edits_data();
    void edits();
    void getTags_data();
    void getTags();
    void removedTagLeavesKeysButIsNotListed();
    void looseManagerChangesDirectly();
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

enum TagEdit { Add, Rename, Remove };

void TestTags::edits_data()
{
    QTest::addColumn<int>("edit");
    QTest::addColumn<int>("tag"); // 0 "a", 1 "b", 2 an unknown uid
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("withStack");
    QTest::addColumn<QStringList>("expected"); // empty: refused, nothing changes

    const QStringList refused;
    for (bool stack : {true, false}) {
        const char *mode = stack ? "" : ", no stack";
        QTest::addRow("add%s", mode) << int(Add) << 0 << "c" << stack << QStringList{"a", "b", "c"};
        QTest::addRow("add differing in case%s", mode)
            << int(Add) << 0 << "A" << stack << QStringList{"a", "b", "A"};
        QTest::addRow("add existing%s", mode) << int(Add) << 0 << "b" << stack << refused;
        QTest::addRow("add empty%s", mode) << int(Add) << 0 << "" << stack << refused;
        QTest::addRow("rename%s", mode)
            << int(Rename) << 0 << "c" << stack << QStringList{"c", "b"};
        QTest::addRow("rename to a taken name%s", mode)
            << int(Rename) << 0 << "b" << stack << refused;
        QTest::addRow("rename to empty%s", mode) << int(Rename) << 0 << "" << stack << refused;
        QTest::addRow("rename unknown%s", mode) << int(Rename) << 2 << "c" << stack << refused;
        QTest::addRow("remove%s", mode) << int(Remove) << 0 << "" << stack << QStringList{"b"};
        QTest::addRow("remove unknown%s", mode) << int(Remove) << 2 << "" << stack << refused;
    }
}

void TestTags::edits()
{
    QFETCH(int, edit);
    QFETCH(int, tag);
    QFETCH(QString, name);
    QFETCH(bool, withStack);
    QFETCH(QStringList, expected);
    QUndoStack stack;
    RigxData doc(withStack ? &stack : nullptr);
    TagManager &tags = doc.tagManager();
    const QList<int> uids{tags.addTag(QStringLiteral("a"), nullptr),
                          tags.addTag(QStringLiteral("b"), nullptr), -77};
    const QStringList before = tags.tagsToStringList();
    bool accepted = false;
    switch (edit) {
    case Add:
        accepted = tags.addTag(name, &doc) >= 0;
        break;
    case Rename:
        accepted = tags.renameTag(uids[tag], name, &doc);
        break;
    case Remove:
        accepted = tags.removeTag(uids[tag], &doc);
        break;
    }
    QCOMPARE(accepted, !expected.isEmpty());
    QCOMPARE(tags.tagsToStringList(), accepted ? expected : before);
    QCOMPARE(stack.count(), accepted && withStack ? 1 : 0);
    if (edit == Rename && accepted)
        QCOMPARE(tags.tagFromId(uids[tag]).name(), name);
    if (stack.canUndo()) {
        stack.undo();
        QCOMPARE(tags.tagsToStringList(), before);
    }
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

void TestTags::looseManagerChangesDirectly()
{
    // A manager that is not the project's changes itself, never the project.
    QUndoStack stack;
    RigxData doc(&stack);
    TagManager loose;
    QVERIFY(loose.addTag(QStringLiteral("x"), &doc) >= 0);
    QCOMPARE(loose.tagCount(), 1);
    QCOMPARE(doc.tagManager().tagCount(), 0);
    QCOMPARE(stack.count(), 0);
}

QTEST_GUILESS_MAIN(TestTags)
#include "tst_tags.moc"
