// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/projectfile.h"
#include "meta/editvarcollectioncommand.h"
#include "meta/metaowner.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "projectgenerator.h"

#include <QTest>
#include <QUndoStack>

#include <memory>

using namespace Morvane;

class TestChangeValue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pushUndo_data();
    void pushUndo();
    void merging_data();
    void merging();
    void obsoleteAtCreationIsDropped();
    void severalTargets();
    void removedTargetMakesStepNoOp_data();
    void removedTargetMakesStepNoOp();
};

namespace {

class CountingCommand : public QUndoCommand
{
public:
    CountingCommand(int *redone, bool *deleted)
        : mRedone(redone)
        , mDeleted(deleted)
    {
    }
    ~CountingCommand() override { *mDeleted = true; }
    void redo() override { ++*mRedone; }

private:
    int *mRedone;
    bool *mDeleted;
};

// The golden project of the meta tests: entity "hero" declares hp (int 3, id
// 0); object 0 "arm" declares bend (float 0.25, id 0); object 1 "step" is the
// last object, declaring sound (string, id 0); "walk" is the only animation,
// with lines for all three.
struct Project
{
    QUndoStack stack;
    RigxData doc;
    Entity *entity = nullptr;
    Object *arm = nullptr;

    explicit Project(bool withStack = true)
        : doc(withStack ? &stack : nullptr)
    {
        if (!ProjectFile::open(&doc, QStringLiteral(MORVANE_TEST_DATA_DIR "/meta/meta.rigx")))
            return;
        entity = doc.entity(0);
        arm = entity->object(0);
    }
    bool setDefault(bool onArm, const QVariant &value, CommandId id)
    {
        return onArm ? arm->valInfoCollection().editDefaultVal(0, value, arm, id)
                     : entity->valInfoCollection().editDefaultVal(0, value, entity, id);
    }
};

} // namespace

void TestChangeValue::pushUndo_data()
{
    QTest::addColumn<int>("document"); // 0 with a stack, 1 without, 2 none at all
    QTest::addColumn<bool>("obsolete");
    QTest::addColumn<int>("redone");
    QTest::addColumn<bool>("deleted");

    QTest::newRow("stack") << 0 << false << 1 << false;
    QTest::newRow("stack, obsolete") << 0 << true << 0 << true;
    QTest::newRow("no stack") << 1 << false << 1 << true;
    QTest::newRow("no stack, obsolete") << 1 << true << 0 << true;
    QTest::newRow("no document") << 2 << false << 1 << true;
}

void TestChangeValue::pushUndo()
{
    QFETCH(int, document);
    QFETCH(bool, obsolete);
    QFETCH(int, redone);
    QFETCH(bool, deleted);
    QUndoStack stack;
    RigxData doc(document == 0 ? &stack : nullptr);
    int redoCount = 0;
    bool wasDeleted = false;
    auto *command = new CountingCommand(&redoCount, &wasDeleted);
    command->setObsolete(obsolete);
    RigxData::pushUndo(document == 2 ? nullptr : &doc, command);
    QCOMPARE(redoCount, redone);
    QCOMPARE(wasDeleted, deleted);
    QCOMPARE(stack.count(), deleted ? 0 : 1);
}

void TestChangeValue::merging_data()
{
    QTest::addColumn<bool>("secondOnArm");
    QTest::addColumn<bool>("firstMerges");
    QTest::addColumn<QVariant>("second");
    QTest::addColumn<int>("steps");

    // Both edit a default, the first to 4: hp (int 3) or arm's bend (float).
    QTest::newRow("one gesture") << false << true << QVariant(5) << 1;
    QTest::newRow("back to the start") << false << true << QVariant(3) << 0;
    QTest::newRow("another owner") << true << true << QVariant(5) << 2;
    QTest::newRow("first without merge id") << false << false << QVariant(5) << 2;
}

void TestChangeValue::merging()
{
    QFETCH(bool, secondOnArm);
    QFETCH(bool, firstMerges);
    QFETCH(QVariant, second);
    QFETCH(int, steps);
    Project p;
    QVERIFY(p.entity);
    p.stack.setClean();
    const QByteArray before = savedXml(p.doc);
    QVERIFY(p.setDefault(false, 4, firstMerges ? CommandId::EditVarDefault : CommandId::None));
    QVERIFY(p.setDefault(secondOnArm, second, CommandId::EditVarDefault));
    QCOMPARE(p.stack.count(), steps);
    QCOMPARE(p.stack.isClean(), steps == 0);
    const QByteArray after = savedXml(p.doc);

    // The same net change made without history gives the same bytes.
    Project net(false);
    if (secondOnArm || !firstMerges)
        net.setDefault(false, 4, CommandId::None);
    net.setDefault(secondOnArm, second, CommandId::None);
    QCOMPARE(after, savedXml(net.doc));

    while (p.stack.canUndo())
        p.stack.undo();
    QCOMPARE(savedXml(p.doc), before);
    while (p.stack.canRedo())
        p.stack.redo();
    QCOMPARE(savedXml(p.doc), after);
}

void TestChangeValue::obsoleteAtCreationIsDropped()
{
    Project p;
    QVERIFY(p.entity);
    const ValInfoCollection same = p.entity->valInfoCollection();
    p.doc.pushUndo(
        new EditVarCollectionCommand(&p.doc, MetaOwner::forEntity(p.entity), same, same));
    QCOMPARE(p.stack.count(), 0);
}

void TestChangeValue::severalTargets()
{
    Project p;
    QVERIFY(p.entity);
    Object *step = p.entity->object(1);
    const QByteArray before = savedXml(p.doc);
    ValInfoCollection &entityVars = p.entity->valInfoCollection();
    ValInfoCollection &stepVars = step->valInfoCollection();
    auto addToBoth = [&](const QString &name) {
        Entity *const noOwner = nullptr;
        ValInfoCollection entityAfter = entityVars;
        entityAfter.addValInfo(name, 1, VarType::Int, noOwner);
        ValInfoCollection stepAfter = stepVars;
        stepAfter.addValInfo(name, 1, VarType::Int, noOwner);
        std::vector<EditVarCollectionCommand::Change> changes{
            {MetaOwner::forEntity(p.entity).declarationsAddress(&p.doc), entityVars, entityAfter},
            {MetaOwner::forObject(step).declarationsAddress(&p.doc), stepVars, stepAfter}};
        p.doc.pushUndo(new EditVarCollectionCommand(changes, CommandId::EditVarDefault));
    };
    addToBoth(QStringLiteral("x"));
    QVERIFY(entityVars.infoFromName(QStringLiteral("x")));
    QVERIFY(stepVars.infoFromName(QStringLiteral("x")));
    // A second step on the same targets merges into one.
    addToBoth(QStringLiteral("y"));
    QCOMPARE(p.stack.count(), 1);
    const QByteArray after = savedXml(p.doc);
    p.stack.undo();
    QCOMPARE(savedXml(p.doc), before);
    p.stack.redo();
    QCOMPARE(savedXml(p.doc), after);

    // With one target gone, the other still changes.
    QVERIFY(p.entity->deleteObject(QStringLiteral("step")));
    p.stack.undo();
    QVERIFY(!entityVars.infoFromName(QStringLiteral("x")));
    QCOMPARE(entityVars.infoCount(), 3);
}

void TestChangeValue::removedTargetMakesStepNoOp_data()
{
    QTest::addColumn<int>("target");
    QTest::newRow("entity declarations, entity deleted") << 0;
    QTest::newRow("object declarations, object deleted") << 1;
    QTest::newRow("entity lines, animation deleted") << 2;
    QTest::newRow("object lines, object deleted") << 3;
    QTest::newRow("entity lines, animation taken out") << 4;
}

void TestChangeValue::removedTargetMakesStepNoOp()
{
    QFETCH(int, target);
    Project p;
    QVERIFY(p.entity);
    Object *step = p.entity->object(1);
    Animation *animation = p.entity->animation(0);
    const LineId hp{VarType::Int, 0};
    switch (target) {
    case 0:
        QVERIFY(p.entity->valInfoCollection().renameVal(0, QStringLiteral("life"), p.entity));
        p.doc.deleteEntity(0);
        break;
    case 1:
        QVERIFY(step->valInfoCollection().renameVal(0, QStringLiteral("noise"), step));
        QVERIFY(p.entity->deleteObject(QStringLiteral("step")));
        break;
    case 2:
    case 4:
        QVERIFY(animation->ownLineHolder().deleteKeyCommand(
            &p.doc, MetaOwner::forAnimation(animation), {hp, 100}));
        break;
    case 3:
        QVERIFY(animation->objectLineHolder(1)->clearAllKeysCommand(
            &p.doc, MetaOwner::forAnimationObject(animation, 1)));
        QVERIFY(p.entity->deleteObject(QStringLiteral("step")));
        break;
    }
    if (target == 2)
        p.entity->deleteAnimation(0);
    std::unique_ptr<Animation> takenOut(target == 4 ? p.entity->removeAnimation(0) : nullptr);
    const QByteArray removed = savedXml(p.doc);
    p.stack.undo();
    QCOMPARE(savedXml(p.doc), removed);
    p.stack.redo();
    QCOMPARE(savedXml(p.doc), removed);
    // An item out of the tree is not the document's: the step leaves it too.
    if (takenOut) {
        p.stack.undo();
        QVERIFY(!takenOut->ownLineHolder().line(hp)->keyAtTime(100));
    }
}

QTEST_GUILESS_MAIN(TestChangeValue)
#include "tst_changevalue.moc"
