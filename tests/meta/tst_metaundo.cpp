// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/metaowner.h"
#include "meta/valinfocollection.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

#include <QTest>
#include <QUndoStack>

using namespace Morvane;

class TestMetaUndo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lookups();
    void declarationEdits_data();
    void declarationEdits();
    void refusedDeclarationEdits();
    void keyEdits_data();
    void keyEdits();
    void ownerGoneMakesStepNoOp();
    void copiesCarryVariablesAndLines();
    void deletingObjectShiftsLines();
};

namespace {

struct Fixture
{
    QUndoStack stack;
    RigxData doc{&stack};
    Entity *entity = nullptr;
    Object *object = nullptr;
    Animation *animation = nullptr;

    Fixture()
    {
        entity = new Entity(QStringLiteral("hero"), true);
        doc.appendEntity(entity);
        entity->appendObject(new Object(QStringLiteral("arm"), Object::Sprite));
        entity->appendObject(new Object(QStringLiteral("leg"), Object::Sprite));
        object = entity->object(1);
        animation = entity->animation(0);
    }
};

} // namespace

void TestMetaUndo::lookups()
{
    ValInfoCollection c;
    QVERIFY(c.isEmpty());
    QCOMPARE(c.addValInfo(QStringLiteral("hp"), 10, VarType::Int, static_cast<Entity *>(nullptr)),
             0);
    QCOMPARE(c.addValInfo(QStringLiteral("speed"), QStringLiteral("1.5"), VarType::Float,
                          static_cast<Entity *>(nullptr)),
             1);
    QCOMPARE(c.infoCount(), 2);
    QCOMPARE(c.nameFromId(1), QStringLiteral("speed"));
    QCOMPARE(c.idFromName(QStringLiteral("hp")), 0);
    QCOMPARE(c.idFromName(QStringLiteral("none")), -1);
    QCOMPARE(c.infoFromName(QStringLiteral("speed"))->defaultValue, QVariant(1.5));
    QCOMPARE(c.infoFromIndex(0)->type, VarType::Int);
    QVERIFY(!c.infoFromIndex(2));
    QVERIFY(!c.infoFromId(7));
    QCOMPARE(c.indexFromId(1), 1);
    QCOMPARE(c.namesToStringList(), (QStringList{QStringLiteral("hp"), QStringLiteral("speed")}));
    // Ids are never reused while higher ones exist.
    QVERIFY(c.removeValInfo(0, static_cast<Entity *>(nullptr)));
    QCOMPARE(c.nextId(), 2);
}

void TestMetaUndo::declarationEdits_data()
{
    QTest::addColumn<bool>("onObject");
    QTest::addColumn<int>("edit");
    for (bool onObject : {false, true}) {
        const char *owner = onObject ? "object" : "entity";
        QTest::addRow("%s add", owner) << onObject << 0;
        QTest::addRow("%s remove", owner) << onObject << 1;
        QTest::addRow("%s rename", owner) << onObject << 2;
        QTest::addRow("%s type", owner) << onObject << 3;
        QTest::addRow("%s default", owner) << onObject << 4;
    }
}

void TestMetaUndo::declarationEdits()
{
    QFETCH(bool, onObject);
    QFETCH(int, edit);
    Fixture f;
    ValInfoCollection &c = onObject ? f.object->valInfoCollection() : f.entity->valInfoCollection();
    auto add = [&](const QString &name, const QVariant &value, VarType type) {
        return onObject ? c.addValInfo(name, value, type, f.object)
                        : c.addValInfo(name, value, type, f.entity);
    };
    const int hp = add(QStringLiteral("hp"), 3, VarType::Int);
    add(QStringLiteral("mood"), QStringLiteral("calm"), VarType::String);
    QCOMPARE(f.stack.count(), 2);
    const ValInfoCollection before = c;

    bool changed = false;
    switch (edit) {
    case 0:
        changed = add(QStringLiteral("speed"), 2.5, VarType::Float) == 2;
        break;
    case 1:
        changed = onObject ? c.removeValInfo(hp, f.object) : c.removeValInfo(hp, f.entity);
        break;
    case 2:
        changed = onObject ? c.renameVal(hp, QStringLiteral("life"), f.object)
                           : c.renameVal(hp, QStringLiteral("life"), f.entity);
        break;
    case 3:
        changed = onObject ? c.editVarType(hp, VarType::Float, f.object)
                           : c.editVarType(hp, VarType::Float, f.entity);
        break;
    case 4:
        changed =
            onObject ? c.editDefaultVal(hp, 9.8, f.object) : c.editDefaultVal(hp, 9.8, f.entity);
        break;
    }
    QVERIFY(changed);
    QCOMPARE(f.stack.count(), 3);
    QCOMPARE(f.stack.text(2), QStringLiteral("Variable Decleration Changed"));
    const ValInfoCollection after = c;
    QVERIFY(after != before);
    if (edit == 4)
        QCOMPARE(c.infoFromId(hp)->defaultValue, QVariant(9)); // int default truncated
    if (edit == 3)
        QCOMPARE(c.infoFromId(hp)->defaultValue, QVariant(3.0));

    f.stack.undo();
    QVERIFY(c == before);
    f.stack.redo();
    QVERIFY(c == after);
    // The other owner's declarations were never touched.
    const ValInfoCollection &other =
        onObject ? f.entity->valInfoCollection() : f.object->valInfoCollection();
    QVERIFY(other.isEmpty());
}

void TestMetaUndo::refusedDeclarationEdits()
{
    Fixture f;
    ValInfoCollection &c = f.entity->valInfoCollection();
    const int a = c.addValInfo(QStringLiteral("a"), 1, VarType::Int, f.entity);
    c.addValInfo(QStringLiteral("b"), 1, VarType::Int, f.entity);
    const int count = f.stack.count();
    QCOMPARE(c.addValInfo(QStringLiteral("a"), 1, VarType::Int, f.entity), -1);
    QCOMPARE(c.addValInfo(QStringLiteral("c"), 1, VarType::Invalid, f.entity), -1);
    QCOMPARE(c.addValInfo(QString(), 1, VarType::Int, f.entity), -1);
    QVERIFY(!c.renameVal(a, QStringLiteral("b"), f.entity));
    QVERIFY(!c.renameVal(99, QStringLiteral("z"), f.entity));
    QVERIFY(!c.editVarType(a, VarType::Int, f.entity));
    QVERIFY(!c.editDefaultVal(a, 1, f.entity));
    QVERIFY(!c.removeValInfo(99, f.entity));
    QCOMPARE(f.stack.count(), count);
}

void TestMetaUndo::keyEdits_data()
{
    QTest::addColumn<bool>("onObject");
    QTest::addColumn<int>("edit");
    QTest::addColumn<QString>("text");
    for (bool onObject : {false, true}) {
        const char *owner = onObject ? "object" : "entity";
        QTest::addRow("%s set", owner) << onObject << 0 << QStringLiteral("key set");
        QTest::addRow("%s replace", owner) << onObject << 1 << QStringLiteral("key set");
        QTest::addRow("%s delete", owner) << onObject << 2 << QStringLiteral("key deleted");
        QTest::addRow("%s time", owner) << onObject << 3 << QStringLiteral("key time changed");
        QTest::addRow("%s tweened", owner) << onObject << 4 << QStringLiteral("key set");
        QTest::addRow("%s tag", owner) << onObject << 5 << QStringLiteral("key set");
        QTest::addRow("%s clear", owner) << onObject << 6 << QStringLiteral("key deleted");
    }
}

void TestMetaUndo::keyEdits()
{
    QFETCH(bool, onObject);
    QFETCH(int, edit);
    QFETCH(QString, text);
    Fixture f;
    const MetaOwner owner = onObject ? MetaOwner::forAnimationObject(f.animation, 1)
                                     : MetaOwner::forAnimation(f.animation);
    ValueLineHolder *holder = owner.lineHolder(&f.doc);
    QVERIFY(holder);
    QCOMPARE(holder, onObject ? f.animation->objectLineHolder(1) : &f.animation->ownLineHolder());

    const LineId line{VarType::Int, 0};
    QVERIFY(holder->setKeyCommand(&f.doc, owner, line, std::make_unique<IntKey>(0, 0), 0));
    QVERIFY(holder->setKeyCommand(&f.doc, owner, line, std::make_unique<IntKey>(0, 10), 100));
    QCOMPARE(f.stack.count(), 2);
    QCOMPARE(holder->line(line)->keyCount(), 2);
    const ValueLineHolder before = *holder;

    switch (edit) {
    case 0:
        QVERIFY(holder->setKeyCommand(&f.doc, owner, line, std::make_unique<IntKey>(0, 4), 50));
        break;
    case 1:
        QVERIFY(holder->setKeyCommand(&f.doc, owner, line, std::make_unique<IntKey>(0, 4), 100));
        break;
    case 2:
        QVERIFY(holder->deleteKeyCommand(&f.doc, owner, {line, 100}));
        break;
    case 3:
        QVERIFY(holder->setKeyTimeCommand(&f.doc, owner, {line, 100}, 300));
        break;
    case 4:
        QVERIFY(holder->createTweenedKeyAtTimeCommand(&f.doc, owner, {line, 25}, false, 7, 1000));
        QCOMPARE(holder->line(line)->keyAtTime(25)->value(), QVariant(2));
        break;
    case 5:
        QVERIFY(holder->setKeyCommand(&f.doc, owner, LineId::tagLine(),
                                      std::make_unique<TagKey>(0, TagState({4})), 500));
        break;
    case 6:
        QVERIFY(holder->clearAllKeysCommand(&f.doc, owner));
        break;
    }
    QCOMPARE(f.stack.count(), 3);
    QCOMPARE(f.stack.text(2), text);
    const ValueLineHolder after = *holder;
    QVERIFY(after != before);

    f.stack.undo();
    QVERIFY(*holder == before);
    f.stack.redo();
    QVERIFY(*holder == after);
    // The other holder of the animation stayed empty.
    if (onObject)
        QVERIFY(!f.animation->ownLineHolder().anyValLinesHaveKeys());
    else
        QVERIFY(!f.animation->objectLineHolder(1));
}

void TestMetaUndo::ownerGoneMakesStepNoOp()
{
    Fixture f;
    const MetaOwner owner = MetaOwner::forAnimation(f.animation);
    ValueLineHolder &holder = f.animation->ownLineHolder();
    QVERIFY(holder.setKeyCommand(&f.doc, owner, {VarType::Float, 0},
                                 std::make_unique<FloatKey>(0, 1.0), 10));
    f.entity->valInfoCollection().addValInfo(QStringLiteral("v"), 1.0, VarType::Float, f.entity);
    f.doc.deleteEntity(0);
    // Neither step finds its owner any more; both must do nothing.
    f.stack.undo();
    f.stack.undo();
    f.stack.redo();
    f.stack.redo();
    QCOMPARE(f.doc.entityCount(), 0);

    // A holder edited through an owner naming another holder changes itself only.
    ValueLineHolder loose;
    QVERIFY(
        loose.setKeyCommand(&f.doc, owner, {VarType::Int, 0}, std::make_unique<IntKey>(0, 1), 0));
    QVERIFY(loose.anyValLinesHaveKeys());
    QVERIFY(!loose.setKeyCommand(&f.doc, owner, {VarType::Int, 0},
                                 std::make_unique<FloatKey>(0, 1.0), 0));
}

void TestMetaUndo::copiesCarryVariablesAndLines()
{
    Fixture f;
    f.entity->valInfoCollection().addValInfo(QStringLiteral("v"), 2, VarType::Int, f.entity);
    f.object->valInfoCollection().addValInfo(QStringLiteral("w"), QStringLiteral("s"),
                                             VarType::String, f.object);
    f.animation->ownLineHolder()
        .lineForEditing({VarType::Int, 0})
        ->setKey(std::make_unique<IntKey>(10, 5));
    f.animation->objectLineHolder(1, true)->tagLine().setKey(
        std::make_unique<TagKey>(0, TagState({1})));

    Entity copy;
    copy.setTo(*f.entity);
    QVERIFY(copy.valInfoCollection() == f.entity->valInfoCollection());
    QVERIFY(copy.object(1)->valInfoCollection() == f.object->valInfoCollection());
    QVERIFY(copy.animation(0)->ownLineHolder() == f.animation->ownLineHolder());
    QVERIFY(copy.animation(0)->objectLineHolder(1));
    QVERIFY(*copy.animation(0)->objectLineHolder(1) == *f.animation->objectLineHolder(1));

    // Deep: changing the copy leaves the original.
    copy.animation(0)->ownLineHolder().clearAllKeys();
    QVERIFY(f.animation->ownLineHolder().anyValLinesHaveKeys());
}

void TestMetaUndo::deletingObjectShiftsLines()
{
    Fixture f;
    f.entity->appendObject(new Object(QStringLiteral("head"), Object::Sprite));
    f.animation->objectLineHolder(0, true)->tagLine().setKey(
        std::make_unique<TagKey>(0, TagState({0})));
    f.animation->objectLineHolder(2, true)->tagLine().setKey(
        std::make_unique<TagKey>(0, TagState({2})));
    QVERIFY(f.entity->deleteObject(QStringLiteral("arm")));
    QVERIFY(!f.animation->objectLineHolder(2));
    QCOMPARE(f.entity->object(1)->name(), QStringLiteral("head"));
    QVERIFY(f.animation->objectLineHolder(1));
    QCOMPARE(f.animation->objectLineHolder(1)->tagLine().key(0)->value().value<QList<int>>(),
             QList<int>{2});
}

QTEST_GUILESS_MAIN(TestMetaUndo)
#include "tst_metaundo.moc"
