// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/projectfile.h"
#include "meta/metaowner.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "projecttext.h"

#include <QMap>
#include <QRandomGenerator>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;
using Morvane::Testing::written;

class TestMetaUndo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void editUndoesToSavedBytes_data();
    void editUndoesToSavedBytes();
    void randomEditsUndoToSavedBytes();
    void looseCopiesChangeThemselves();
    void idsAreNotReused();
    void copiesCarryVariablesAndLines();
    void deletingObjectShiftsLines();
};

namespace {

// The golden project of tst_metafiles: an entity "hero" with variables hp (int,
// id 0), speed (float, 1) and mood (string, 2); a sprite "arm" (float "bend")
// and an event "step" (string "sound"); tags jump, land and "hidden <&\">"; and
// keyed lines for the entity, the arm and the step in the animation "walk".
struct Project
{
    QUndoStack stack;
    RigxData doc{&stack};
    Entity *entity = nullptr;
    Object *arm = nullptr;
    Object *step = nullptr;
    Animation *animation = nullptr;

    Project()
    {
        if (!ProjectFile::open(&doc, QStringLiteral(MORVANE_TEST_DATA_DIR "/meta/meta.rigx")))
            return;
        entity = doc.entity(0);
        arm = entity->object(0);
        step = entity->object(1);
        animation = entity->animation(0);
    }
    int tag(const char *name) const
    {
        return doc.tagManager().tagFromName(QString::fromUtf8(name)).uid();
    }
    ValueLineHolder &own() { return animation->ownLineHolder(); }
    ValueLineHolder &lines(int object) { return *animation->objectLineHolder(object, true); }
    MetaOwner ownOwner() const { return MetaOwner::forAnimation(animation); }
    MetaOwner objectOwner(int object) const
    {
        return MetaOwner::forAnimationObject(animation, object);
    }
};

enum Edit {
    AddTag,
    RemoveTag,
    RenameTag,
    AddEntityVariable,
    RemoveEntityVariable,
    RenameObjectVariable,
    ChangeVariableType,
    ChangeDefault,
    AddEventVariable,
    SetKey,
    ReplaceKey,
    DeleteKey,
    MoveKey,
    TweenedKey,
    SetTagKey,
    ClearObjectLines,
    // Refused: each pushes nothing and changes nothing.
    AddTakenName,
    AddInvalidType,
    AddEmptyName,
    RenameToTakenName,
    RenameUnknownId,
    TypeUnchanged,
    DefaultUnchanged,
    DefaultUnchangedAfterConversion,
    RemoveUnknownId,
    KeyOfAnotherKind,
    DeleteWhereNoKey,
};

// Runs one edit through the operations the views use; false when refused.
bool runEdit(Project &p, int edit)
{
    ValInfoCollection &vars = p.entity->valInfoCollection();
    switch (Edit(edit)) {
    case AddTag:
        return p.doc.tagManager().addTag(QStringLiteral("fall"), &p.doc) >= 0;
    case RemoveTag:
        return p.doc.tagManager().removeTag(p.tag("land"), &p.doc);
    case RenameTag:
        return p.doc.tagManager().renameTag(p.tag("land"), QStringLiteral("landed"), &p.doc);
    case AddEntityVariable:
        return vars.addValInfo(QStringLiteral("ammo"), 12, VarType::Int, p.entity) >= 0;
    case RemoveEntityVariable:
        return vars.removeValInfo(0, p.entity);
    case RenameObjectVariable:
        return p.arm->valInfoCollection().renameVal(0, QStringLiteral("flex"), p.arm);
    case ChangeVariableType:
        return vars.editVarType(1, VarType::String, p.entity);
    case ChangeDefault:
        return vars.editDefaultVal(2, QStringLiteral("sad"), p.entity);
    case AddEventVariable:
        return p.step->valInfoCollection().addValInfo(QStringLiteral("volume"), 0.5, VarType::Float,
                                                      p.step) >= 0;
    case SetKey:
        return p.own().setKeyCommand(&p.doc, p.ownOwner(), {VarType::Float, 1},
                                     std::make_unique<FloatKey>(0, 4.5), 300);
    case ReplaceKey:
        return p.own().setKeyCommand(&p.doc, p.ownOwner(), {VarType::Int, 0},
                                     std::make_unique<IntKey>(0, 4), 100);
    case DeleteKey:
        return p.own().deleteKeyCommand(&p.doc, p.ownOwner(), {{VarType::Int, 0}, 100});
    case MoveKey:
        return p.own().setKeyTimeCommand(&p.doc, p.ownOwner(), {{VarType::String, 2}, 200}, 700);
    case TweenedKey:
        return p.lines(0).createTweenedKeyAtTimeCommand(
            &p.doc, p.objectOwner(0), {{VarType::Float, 0}, 250}, true, 0.25, 1000);
    case SetTagKey:
        return p.own().setKeyCommand(&p.doc, p.ownOwner(), LineId::tagLine(),
                                     std::make_unique<TagKey>(0, TagState({p.tag("jump")})), 600);
    case ClearObjectLines:
        return p.lines(1).clearAllKeysCommand(&p.doc, p.objectOwner(1));
    case AddTakenName:
        return vars.addValInfo(QStringLiteral("hp"), 1, VarType::Int, p.entity) >= 0;
    case AddInvalidType:
        return vars.addValInfo(QStringLiteral("c"), 1, VarType::Invalid, p.entity) >= 0;
    case AddEmptyName:
        return vars.addValInfo(QString(), 1, VarType::Int, p.entity) >= 0;
    case RenameToTakenName:
        return vars.renameVal(0, QStringLiteral("speed"), p.entity);
    case RenameUnknownId:
        return vars.renameVal(99, QStringLiteral("z"), p.entity);
    case TypeUnchanged:
        return vars.editVarType(0, VarType::Int, p.entity);
    case DefaultUnchanged:
        return vars.editDefaultVal(0, 3, p.entity);
    case DefaultUnchangedAfterConversion:
        return vars.editDefaultVal(0, 3.9, p.entity); // an int default truncates to 3
    case RemoveUnknownId:
        return vars.removeValInfo(99, p.entity);
    case KeyOfAnotherKind:
        return p.own().setKeyCommand(&p.doc, p.ownOwner(), {VarType::Int, 0},
                                     std::make_unique<FloatKey>(0, 1.0), 0);
    case DeleteWhereNoKey:
        return p.own().deleteKeyCommand(&p.doc, p.ownOwner(), {{VarType::Int, 0}, 55});
    }
    return false;
}

} // namespace

void TestMetaUndo::editUndoesToSavedBytes_data()
{
    QTest::addColumn<int>("edit");
    QTest::addColumn<QString>("text");
    const QString tags = QStringLiteral("Tags Changed");
    const QString vars = QStringLiteral("Variable Decleration Changed");
    const QString set = QStringLiteral("key set");
    const QString deleted = QStringLiteral("key deleted");
    QTest::newRow("add tag") << int(AddTag) << tags;
    QTest::newRow("remove tag") << int(RemoveTag) << tags;
    QTest::newRow("rename tag") << int(RenameTag) << tags;
    QTest::newRow("add entity variable") << int(AddEntityVariable) << vars;
    QTest::newRow("remove entity variable") << int(RemoveEntityVariable) << vars;
    QTest::newRow("rename object variable") << int(RenameObjectVariable) << vars;
    QTest::newRow("change variable type") << int(ChangeVariableType) << vars;
    QTest::newRow("change default") << int(ChangeDefault) << vars;
    QTest::newRow("add event variable") << int(AddEventVariable) << vars;
    QTest::newRow("set key") << int(SetKey) << set;
    QTest::newRow("replace key") << int(ReplaceKey) << set;
    QTest::newRow("delete key") << int(DeleteKey) << deleted;
    QTest::newRow("move key") << int(MoveKey) << QStringLiteral("key time changed");
    QTest::newRow("tweened key") << int(TweenedKey) << set;
    QTest::newRow("set tag key") << int(SetTagKey) << set;
    QTest::newRow("clear object lines") << int(ClearObjectLines) << deleted;
    // An empty text: refused.
    QTest::newRow("name taken") << int(AddTakenName) << QString();
    QTest::newRow("invalid type") << int(AddInvalidType) << QString();
    QTest::newRow("empty name") << int(AddEmptyName) << QString();
    QTest::newRow("rename to a taken name") << int(RenameToTakenName) << QString();
    QTest::newRow("rename unknown id") << int(RenameUnknownId) << QString();
    QTest::newRow("type unchanged") << int(TypeUnchanged) << QString();
    QTest::newRow("default unchanged") << int(DefaultUnchanged) << QString();
    QTest::newRow("default unchanged after conversion")
        << int(DefaultUnchangedAfterConversion) << QString();
    QTest::newRow("remove unknown id") << int(RemoveUnknownId) << QString();
    QTest::newRow("key of another kind") << int(KeyOfAnotherKind) << QString();
    QTest::newRow("delete where no key is") << int(DeleteWhereNoKey) << QString();
}

void TestMetaUndo::editUndoesToSavedBytes()
{
    QFETCH(int, edit);
    QFETCH(QString, text);
    for (bool json : {false, true}) {
        Project p;
        QVERIFY(p.entity);
        const QByteArray before = written(p.doc, json);
        QCOMPARE(runEdit(p, edit), !text.isEmpty());
        if (text.isEmpty()) {
            QCOMPARE(p.stack.count(), 0);
            QCOMPARE(written(p.doc, json), before);
            continue;
        }
        QCOMPARE(p.stack.count(), 1);
        QCOMPARE(p.stack.text(0), text);
        const QByteArray after = written(p.doc, json);
        QVERIFY(after != before);
        p.stack.undo();
        QCOMPARE(written(p.doc, json), before);
        p.stack.redo();
        QCOMPARE(written(p.doc, json), after);
    }
}

void TestMetaUndo::randomEditsUndoToSavedBytes()
{
    // Random edits of every kind, some refused and some merging, checked
    // against the saved bytes at every step on the way down and back up.
    Project p;
    QVERIFY(p.entity);
    QRandomGenerator random(20261122);
    QMap<int, QByteArray> bytesAt;
    bytesAt[0] = written(p.doc, false);
    const QByteArray jsonBefore = written(p.doc, true);
    auto pick = [&](int n) { return int(random.bounded(n)); };
    const QStringList names{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("hp"),
                            QStringLiteral("mood"), QStringLiteral("c <&>")};
    const VarType types[] = {VarType::Int, VarType::Float, VarType::String};
    // After each edit: a refused one leaves the bytes as they were; a gesture
    // that came back to its start drops its step and gives the bytes below it.
    auto check = [&](int i) {
        const QByteArray now = written(p.doc, false);
        const int index = p.stack.index();
        const bool mayHaveMerged =
            index == bytesAt.lastKey() && index > 0 && p.stack.command(index - 1)->id() != -1;
        if (index <= bytesAt.lastKey() && !mayHaveMerged)
            QVERIFY2(now == bytesAt[index], qPrintable(QStringLiteral("edit %1").arg(i)));
        bytesAt[index] = now;
        while (bytesAt.lastKey() > index)
            bytesAt.remove(bytesAt.lastKey());
    };
    for (int i = 0; i < 300; ++i) {
        Object *object = p.entity->object(pick(2));
        ValInfoCollection &vars =
            pick(2) ? p.entity->valInfoCollection() : object->valInfoCollection();
        const bool onEntity = &vars == &p.entity->valInfoCollection();
        const int varId = pick(4);
        const int objectIndex = pick(3) - 1; // -1: the entity's own lines
        ValueLineHolder &holder = objectIndex < 0 ? p.own() : p.lines(objectIndex);
        const MetaOwner owner = objectIndex < 0 ? p.ownOwner() : p.objectOwner(objectIndex);
        const VarType type = types[pick(3)];
        const LineId line = pick(5) ? LineId{type, varId} : LineId::tagLine();
        const int time = pick(11) * 100;
        TagManager &tags = p.doc.tagManager();
        const int tagUid = tags.tag(pick(tags.tagCount() + 1)).uid();
        switch (pick(12)) {
        case 0:
            tags.addTag(names[pick(names.size())], &p.doc);
            break;
        case 1:
            tags.removeTag(tagUid, &p.doc);
            break;
        case 2:
            tags.renameTag(tagUid, names[pick(names.size())], &p.doc);
            break;
        case 3:
            onEntity ? vars.addValInfo(names[pick(names.size())], pick(9), type, p.entity)
                     : vars.addValInfo(names[pick(names.size())], pick(9), type, object);
            break;
        case 4:
            onEntity ? vars.removeValInfo(varId, p.entity) : vars.removeValInfo(varId, object);
            break;
        case 5:
            onEntity ? vars.editVarType(varId, type, p.entity)
                     : vars.editVarType(varId, type, object);
            break;
        case 6: {
            // A gesture of a few values; two in three stream with the merge id,
            // so they merge into one step or cancel out.
            const CommandId id = pick(3) ? CommandId::EditVarDefault : CommandId::None;
            for (int n = pick(4); n-- > 0; check(i)) {
                onEntity ? vars.editDefaultVal(varId, pick(3), p.entity, id)
                         : vars.editDefaultVal(varId, pick(3), object, id);
            }
            break;
        }
        case 7: {
            std::unique_ptr<ValKey> key = line.isTagLine()
                                              ? std::make_unique<TagKey>(0, TagState({tagUid}))
                                              : ValKey::create(type, 0, pick(5));
            holder.setKeyCommand(&p.doc, owner, line, std::move(key), time);
            break;
        }
        case 8:
            holder.deleteKeyCommand(&p.doc, owner, {line, time});
            break;
        case 9:
            holder.setKeyTimeCommand(&p.doc, owner, {line, time}, pick(11) * 100);
            break;
        case 10:
            holder.createTweenedKeyAtTimeCommand(&p.doc, owner, {line, time}, pick(2), 1, 1000);
            break;
        case 11:
            holder.clearAllKeysCommand(&p.doc, owner);
            break;
        }
        check(i);
    }
    const int top = p.stack.index();
    QVERIFY(top > 100);
    while (p.stack.canUndo()) {
        p.stack.undo();
        QCOMPARE(written(p.doc, false), bytesAt[p.stack.index()]);
    }
    QCOMPARE(written(p.doc, true), jsonBefore);
    while (p.stack.canRedo()) {
        p.stack.redo();
        QCOMPARE(written(p.doc, false), bytesAt[p.stack.index()]);
    }
    QCOMPARE(p.stack.index(), top);
}

void TestMetaUndo::looseCopiesChangeThemselves()
{
    // A copy edited with the owner of the original changes itself only: a
    // command would change the original instead.
    Project p;
    QVERIFY(p.entity);
    const QByteArray before = written(p.doc, false);
    ValueLineHolder lines = p.own();
    QVERIFY(lines.deleteKeyCommand(&p.doc, p.ownOwner(), {{VarType::Int, 0}, 100}));
    QVERIFY(!lines.line({VarType::Int, 0})->keyAtTime(100));
    ValInfoCollection vars = p.entity->valInfoCollection();
    QVERIFY(vars.renameVal(0, QStringLiteral("life"), p.entity));
    QCOMPARE(vars.nameFromId(0), QStringLiteral("life"));
    QCOMPARE(p.stack.count(), 0);
    QCOMPARE(written(p.doc, false), before);
}

void TestMetaUndo::idsAreNotReused()
{
    ValInfoCollection c;
    Entity *const noOwner = nullptr;
    QCOMPARE(c.addValInfo(QStringLiteral("hp"), 10, VarType::Int, noOwner), 0);
    QCOMPARE(c.addValInfo(QStringLiteral("speed"), QStringLiteral("1.5"), VarType::Float, noOwner),
             1);
    QCOMPARE(c.infoFromName(QStringLiteral("speed"))->defaultValue, QVariant(1.5));
    QVERIFY(c.removeValInfo(0, noOwner));
    QCOMPARE(c.nextId(), 2);
    QVERIFY(c.removeValInfo(1, noOwner));
    QCOMPARE(c.nextId(), 0);
}

void TestMetaUndo::copiesCarryVariablesAndLines()
{
    Project p;
    QVERIFY(p.entity);
    Entity copy;
    copy.setTo(*p.entity);
    QVERIFY(copy.valInfoCollection() == p.entity->valInfoCollection());
    QVERIFY(copy.object(0)->valInfoCollection() == p.arm->valInfoCollection());
    QVERIFY(copy.animation(0)->ownLineHolder() == p.own());
    QVERIFY(copy.animation(0)->objectLineHolder(1));
    QVERIFY(*copy.animation(0)->objectLineHolder(1) == p.lines(1));

    // Deep: changing the copy leaves the original.
    copy.animation(0)->ownLineHolder().clearAllKeys();
    QVERIFY(p.own().anyValLinesHaveKeys());
}

void TestMetaUndo::deletingObjectShiftsLines()
{
    Project p;
    QVERIFY(p.entity);
    p.entity->appendObject(new Object(QStringLiteral("head"), Object::Sprite));
    p.lines(2).tagLine().setKey(std::make_unique<TagKey>(0, TagState({2})));
    const ValueLineHolder stepLines = p.lines(1);
    QVERIFY(p.entity->deleteObject(QStringLiteral("arm")));
    QVERIFY(!p.animation->objectLineHolder(2));
    QCOMPARE(p.entity->object(1)->name(), QStringLiteral("head"));
    QVERIFY(*p.animation->objectLineHolder(0) == stepLines);
    QCOMPARE(p.animation->objectLineHolder(1)->tagLine().key(0)->value().value<QList<int>>(),
             QList<int>{2});
}

QTEST_GUILESS_MAIN(TestMetaUndo)
#include "tst_metaundo.moc"
