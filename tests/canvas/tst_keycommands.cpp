// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvastesthelpers.h"

#include "model/commands/mainlinekeycommands.h"
#include "model/commands/timelinekeycommands.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QTest>

using namespace Morvane;
using namespace Morvane::Testing;

class TestKeyCommands : public QObject
{
    Q_OBJECT

private slots:
    void createUndoFromKey_data();
    void createUndoFromKey();
    void zOrderAndParenting_data();
    void zOrderAndParenting();
    void unresolvedTargetsAreNoOps();
};

void TestKeyCommands::createUndoFromKey_data()
{
    QTest::addColumn<QString>("animation");
    QTest::addColumn<int>("time");
    QTest::addColumn<bool>("mainlineKeyFirst");
    QTest::addColumn<int>("newMainlineKeys");
    QTest::addColumn<int>("newTimelineKeys");

    QTest::newRow("key exists: info changes") << "idle" << 0 << false << 0 << 0;
    QTest::newRow("no key, no mainline key") << "idle" << 300 << false << 1 << 1;
    QTest::newRow("no key, mainline key there") << "walk" << 300 << true << 1 << 1;
    QTest::newRow("no key near the end") << "walk" << 799 << false << 1 << 1;
}

void TestKeyCommands::createUndoFromKey()
{
    QFETCH(QString, animation);
    QFETCH(int, time);
    QFETCH(bool, mainlineKeyFirst);
    QFETCH(int, newMainlineKeys);
    QFETCH(int, newTimelineKeys);

    HeroProject hero;
    QVERIFY(hero.ok);
    Animation *anim = hero.animation(animation);
    QVERIFY(anim);
    const QByteArray before = hero.savedBytes();
    QVERIFY(!before.isEmpty());

    // A sprite timeline: the last one is drawn, keyed at the mainline keys.
    Timeline *tl = nullptr;
    for (int i = 0; i < anim->timelineCount() && !tl; ++i) {
        if (anim->timeline(i)->isSprite())
            tl = anim->timeline(i);
    }
    QVERIFY(tl);
    const int mainlineKeys = anim->mainlineKeyCount();
    const int keys = tl->keyCount();

    hero.stack.beginMacro(QStringLiteral("edit"));
    if (mainlineKeyFirst)
        hero.document.pushUndo(new AppendMainlineKeyCommand(anim, time));
    TimelineKey key = tl->keyFromTime(time);
    key.info().x += 17.25;
    key.info().angle = 33.0;
    key.setCachedTime(time);
    tl->createUndoFromKey(key);
    hero.stack.endMacro();

    QCOMPARE(anim->mainlineKeyCount(), mainlineKeys + newMainlineKeys);
    QCOMPARE(tl->keyCount(), keys + newTimelineKeys);
    TimelineKey *made = tl->actualKeyFromTime(time);
    QVERIFY(made);
    QCOMPARE(made->info().x, key.info().x);
    QCOMPARE(made->info().angle, 33.0);
    // The mainline key at that time refers to the key and owns it.
    MainlineKey *mk = anim->mainlineKeyAtExactTime(time);
    QVERIFY(mk);
    QVERIFY(mk->refFromTimeline(tl));
    QCOMPARE(mk->refFromTimeline(tl)->key(), made);
    QCOMPARE(made->mainKey(), mk);

    QVERIFY(hero.savedBytes() != before);
    QVERIFY(hero.undoRedoRoundTrip(before));
    QCOMPARE(anim->mainlineKeyCount(), mainlineKeys);
    QCOMPARE(tl->keyCount(), keys);
}

void TestKeyCommands::zOrderAndParenting_data()
{
    QTest::addColumn<QString>("operation");
    QTest::newRow("move to top") << "z-top";
    QTest::newRow("move to bottom") << "z-bottom";
    QTest::newRow("copy z-order to other keys") << "z-overwrite";
    QTest::newRow("re-parent to another bone") << "parent";
    QTest::newRow("re-parent to the root") << "unparent";
    QTest::newRow("a bone under its own child is refused") << "cycle";
}

void TestKeyCommands::zOrderAndParenting()
{
    QFETCH(QString, operation);
    HeroProject hero;
    QVERIFY(hero.ok);
    Animation *anim = hero.animation(QStringLiteral("walk"));
    MainlineKey *mk = anim->mainlineKey(0);
    QVERIFY(mk->zRefCount() > 2);
    QVERIFY(mk->boneRefCount() > 2);
    const QByteArray before = hero.savedBytes();

    const int last = mk->zRefCount() - 1;
    const Timeline *front = mk->zRef(last)->timeline();
    const Timeline *back = mk->zRef(0)->timeline();
    const BoneRef *backParent = mk->zRef(0)->parentRef();
    bool expectChange = true;
    if (operation == QLatin1String("z-top")) {
        hero.document.pushUndo(new ChangeZOrderCommand(mk, 0, last));
        QCOMPARE(mk->zRef(last)->timeline(), back);
        QCOMPARE(mk->zRef(last)->parentRef(), backParent);
    } else if (operation == QLatin1String("z-bottom")) {
        hero.document.pushUndo(new ChangeZOrderCommand(mk, last, 0));
        QCOMPARE(mk->zRef(0)->timeline(), front);
    } else if (operation == QLatin1String("z-overwrite")) {
        hero.stack.beginMacro(QStringLiteral("z"));
        hero.document.pushUndo(new ChangeZOrderCommand(mk, 0, last));
        hero.document.pushUndo(new OverwriteZOrderCommand(mk));
        hero.stack.endMacro();
        for (int k = 1; k < anim->mainlineKeyCount(); ++k) {
            const MainlineKey *other = anim->mainlineKey(k);
            QCOMPARE(other->zRefCount(), mk->zRefCount());
            for (int i = 0; i < mk->zRefCount(); ++i)
                QCOMPARE(other->zRef(i)->timeline(), mk->zRef(i)->timeline());
        }
    } else {
        // A bone with a parent, re-parented.
        BoneRef *bone = nullptr;
        for (int i = 0; i < mk->boneRefCount() && !bone; ++i) {
            if (mk->boneRef(i)->parentRef() && mk->boneRef(i)->parentRef()->parentRef())
                bone = mk->boneRef(i);
        }
        QVERIFY(bone);
        BoneRef *newParent = nullptr;
        if (operation == QLatin1String("parent")) {
            newParent = mk->boneRef(0) == bone->parentRef() ? mk->boneRef(1) : mk->boneRef(0);
        } else if (operation == QLatin1String("cycle")) {
            // The bone's grandparent under the bone itself.
            bone = bone->parentRef()->parentRef();
            for (int i = 0; i < mk->boneRefCount() && !newParent; ++i) {
                if (mk->boneRef(i)->parentRef() == bone)
                    newParent = mk->boneRef(i);
            }
            QVERIFY(newParent);
            expectChange = false;
        }
        DisplayInfo info = bone->key()->info();
        info.x += 5;
        hero.document.pushUndo(new ChangeParentingCommand(bone, newParent, info));
        if (expectChange)
            QCOMPARE(bone->parentRef(), newParent);
    }
    QCOMPARE(hero.savedBytes() != before, expectChange);
    QVERIFY(hero.undoRedoRoundTrip(before));
}

void TestKeyCommands::unresolvedTargetsAreNoOps()
{
    HeroProject hero;
    QVERIFY(hero.ok);
    Entity *entity = hero.document.entity(0);
    Animation *anim = hero.animation(QStringLiteral("walk"));
    Timeline *tl = anim->timeline(0);
    TimelineKey key = tl->keyFromTime(300);
    key.setCachedTime(300);
    TimeKeyDisplayInfoChangeCommand change(tl->key(0), key.info());
    AppendTimelineKeyCommand append(key, tl);
    AppendMainlineKeyCommand mainline(anim, 300);
    ChangeZOrderCommand z(anim->mainlineKey(0), 0, 1);
    OverwriteZOrderCommand overwrite(anim->mainlineKey(0));
    RemoveRefCommand removeRef(anim->mainlineKey(0), tl);
    RemoveTimelineKeyCommand removeKey(tl->key(0));
    // Every animation goes: nothing resolves any more.
    while (entity->animationCount() > 0)
        entity->deleteAnimation(0);
    for (QUndoCommand *c : std::initializer_list<QUndoCommand *>{&change, &append, &mainline, &z,
                                                                &overwrite, &removeRef, &removeKey}) {
        c->redo();
        c->undo();
    }
    QCOMPARE(entity->animationCount(), 0);
}

QTEST_GUILESS_MAIN(TestKeyCommands)
#include "tst_keycommands.moc"
