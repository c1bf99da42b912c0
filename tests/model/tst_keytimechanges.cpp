// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/animation.h"
#include "model/commands/animationcommands.h"
#include "model/entity.h"
#include "model/keytimechangeinstructionset.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinefilter.h"
#include "model/timelinekey.h"
#include "projectgenerator.h"

#include <QTest>
#include <QUndoStack>

using namespace Morvane;

class TestKeyTimeChanges : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void instructionSet_data();
    void instructionSet();
    void movedLines_data();
    void movedLines();
    void filteredLinesNameShownTimelines();
    void setCurrentTime_data();
    void setCurrentTime();
    void cloneAnimation_data();
    void cloneAnimation();
    void changeAnimationSkipsGoneTarget();
    void orphanKeysGainMainlineKeysWithUndo_data();
    void orphanKeysGainMainlineKeysWithUndo();
};

namespace {

// A document of one entity: timelines part_0 (a bone), part_1 and part_2
// (sprites), each keyed at 0, 40, 80 and 120 ms; the animation lasts 160 ms.
struct Fixture
{
    QUndoStack stack;
    RigxData document{&stack};
    Fixture(int animations = 1)
    {
        buildProject(document, ProjectShape{animations, 3, 4, false});
    }
    Animation *animation(int index = 0) const { return document.entity(0)->animation(index); }
    QByteArray bytes() { return savedXml(document); }
};

QString times(const Animation *anim, int line)
{
    QStringList out;
    if (line < 0) {
        for (int i = 0; i < anim->mainlineKeyCount(); ++i)
            out << QString::number(anim->mainlineKey(i)->currentTime());
    } else {
        const Timeline *tl = anim->timeline(line);
        for (int i = 0; i < tl->keyCount(); ++i)
            out << QString::number(tl->key(i)->time(true));
    }
    return out.join(QLatin1Char(','));
}

// "L:FROM>TO" separated by spaces; L is the line of the set.
KeyTimeChangeInstructionSet parseSet(const QString &text)
{
    KeyTimeChangeInstructionSet set;
    for (const QString &change : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QStringList lineRest = change.split(QLatin1Char(':'));
        const QStringList fromTo = lineRest.at(1).split(QLatin1Char('>'));
        set.appendKeyChange(lineRest.at(0).toInt(), fromTo.at(0).toInt(), fromTo.at(1).toInt());
    }
    return set;
}

// Every timeline key hangs under the mainline key at its time, which refers
// to its timeline; every reference shows a key of its timeline in force.
void verifyConsistent(const Animation *anim)
{
    for (int t = 0; t < anim->timelineCount(); ++t) {
        const Timeline *tl = anim->timeline(t);
        for (int i = 0; i < tl->keyCount(); ++i) {
            const TimelineKey *k = tl->key(i);
            QVERIFY2(k->mainKey(), qPrintable(QStringLiteral("key %1 of %2").arg(i).arg(t)));
            QCOMPARE(k->mainKey()->currentTime(), k->time(true));
            QVERIFY(k->mainKey()->refFromTimeline(tl));
            QCOMPARE(k->mainKey()->refFromTimeline(tl)->key(), k);
            if (i > 0)
                QVERIFY(tl->key(i - 1)->time(true) < k->time(true));
        }
    }
    for (int m = 0; m < anim->mainlineKeyCount(); ++m) {
        const MainlineKey *mk = anim->mainlineKey(m);
        if (m > 0)
            QVERIFY(anim->mainlineKey(m - 1)->currentTime() < mk->currentTime());
        for (int r = 0; r < mk->refCount(); ++r) {
            const TimelineKey *k = mk->ref(r)->key();
            QVERIFY(k);
            QVERIFY(k->time(true) <= mk->currentTime());
            const TimelineKey *next = k->parentTimeline()->key(k->parentTimeline()->indexOfKey(k) + 1);
            QVERIFY(!next || next->time(true) > mk->currentTime());
        }
    }
}

} // namespace

void TestKeyTimeChanges::instructionSet_data()
{
    QTest::addColumn<QString>("changes");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("expected"); // per line, "old>new" joined

    QTest::newRow("as appended") << "0:40>80 1:40>80 1:80>120" << "" << "40>80|40>80,80>120";
    QTest::newRow("padded lines") << "2:0>10" << "" << "||0>10";
    QTest::newRow("cancel on one line") << "0:40>80 1:40>80 2:40>80" << "line 1 40"
                                        << "40>80|40>40|40>80";
    QTest::newRow("cancel everywhere") << "0:40>80 1:40>80 2:40>80 2:80>100" << "all 40 true"
                                       << "40>40|40>40|40>40,80>100";
    QTest::newRow("cancel timelines only") << "0:40>80 1:40>80 2:40>80" << "all 40 false"
                                           << "40>80|40>40|40>40";
    QTest::newRow("shared with mainline, last skipped")
        << "0:0>20 0:40>60 1:0>20 1:40>60 2:40>60" << "shared true"
        << "0>20,40>60|0>0,40>60|40>60";
    QTest::newRow("shared with mainline, all")
        << "0:0>20 0:40>60 1:0>20 1:40>60 2:40>60" << "shared false"
        << "0>20,40>60|0>0,40>40|40>40";
    QTest::newRow("unmoved mainline key keeps its keys")
        << "0:40>40 0:80>100 1:40>60" << "shared false" << "40>40,80>100|40>60";
    QTest::newRow("set new time") << "1:40>80 1:80>120" << "set 1 1 90" << "|40>80,80>90";
    QTest::newRow("set out of range is ignored") << "1:40>80" << "set 1 5 90" << "|40>80";
}

void TestKeyTimeChanges::instructionSet()
{
    QFETCH(QString, changes);
    QFETCH(QString, operation);
    QFETCH(QString, expected);
    KeyTimeChangeInstructionSet set = parseSet(changes);
    const QStringList op = operation.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (op.value(0) == QLatin1String("line"))
        set.removeChangesAtOldTime(op.at(1).toInt(), op.at(2).toInt());
    else if (op.value(0) == QLatin1String("all"))
        set.removeAllChangesAtOldTime(op.at(1).toInt(), op.at(2) == QLatin1String("true"));
    else if (op.value(0) == QLatin1String("shared"))
        set.removeAllChangesFromSharedKeysWithZeroLine(op.at(1) == QLatin1String("true"));
    else if (op.value(0) == QLatin1String("set"))
        set.setNewTime(op.at(1).toInt(), op.at(2).toInt(), op.at(3).toInt());

    QStringList lines;
    for (int l = 0; l < set.lineCount(); ++l) {
        QStringList keys;
        for (int i = 0; i < set.keyCount(l); ++i)
            keys << QStringLiteral("%1>%2").arg(set.oldKeyTime(l, i)).arg(set.newKeyTime(l, i));
        lines << keys.join(QLatin1Char(','));
    }
    QCOMPARE(lines.join(QLatin1Char('|')), expected);
    // Outside the set there is nothing: -1.
    QCOMPARE(set.oldKeyTime(-1, 0), -1);
    QCOMPARE(set.newKeyTime(set.lineCount(), 0), -1);
    QCOMPARE(set.oldKeyTime(0, set.keyCount(0)), -1);
    QCOMPARE(set.newKeyTime(0, -1), -1);
    QCOMPARE(set.keyCount(set.lineCount()), 0);
}

void TestKeyTimeChanges::movedLines_data()
{
    QTest::addColumn<QString>("changes");
    QTest::addColumn<QString>("mainline");
    QTest::addColumn<QStringList>("timelines");
    // "T@FROM" : the timeline's key at T holds what the key at FROM held before.
    QTest::addColumn<QString>("carried");

    const QString all = QStringLiteral("0,40,80,120");
    QTest::newRow("mainline key onto another merges, carrying its keys")
        << "0:40>80 1:40>80 2:40>80 3:40>80" << "0,80,120"
        << QStringList{"0,80,120", "0,80,120", "0,80,120"} << "80@40";
    QTest::newRow("mainline key alone to a free time")
        << "0:40>60" << "0,60,80,120" << QStringList{"0,60,80,120", "0,60,80,120", "0,60,80,120"}
        << "60@40";
    QTest::newRow("timeline key to a free time splits the mainline")
        << "3:40>60" << "0,40,60,80,120" << QStringList{all, all, "0,60,80,120"} << "60@40";
    QTest::newRow("timeline key onto another of its timeline replaces it")
        << "3:40>80" << "0,40,80,120" << QStringList{all, all, "0,80,120"} << "80@40";
    QTest::newRow("neighbouring timeline keys pushed together")
        << "3:40>80 3:80>120" << "0,40,80,120" << QStringList{all, all, "0,80,120"} << "120@80";
    QTest::newRow("neighbouring mainline keys pushed together")
        << "0:40>80 0:80>120" << "0,80,120" << QStringList{"0,80,120", "0,80,120", "0,80,120"}
        << "120@80";
    QTest::newRow("two timeline keys meeting: the last named stays")
        << "3:40>100 3:80>100" << "0,40,80,100,120" << QStringList{all, all, "0,100,120"}
        << "100@80";
    QTest::newRow("keys swapping places")
        << "3:40>80 3:80>40" << "0,40,80,120" << QStringList{all, all, all} << "40@80";
    QTest::newRow("nothing moves") << "0:40>40 3:80>80" << "0,40,80,120"
                                   << QStringList{all, all, all} << "80@80";
    QTest::newRow("a change with no key there does nothing")
        << "3:50>70" << "0,40,80,120" << QStringList{all, all, all} << "40@40";
    QTest::newRow("the last key out past the others")
        << "3:120>150" << "0,40,80,120,150" << QStringList{all, all, "0,40,80,150"} << "150@120";
}

void TestKeyTimeChanges::movedLines()
{
    QFETCH(QString, changes);
    QFETCH(QString, mainline);
    QFETCH(QStringList, timelines);
    QFETCH(QString, carried);

    Fixture f;
    Animation *anim = f.animation();
    const QByteArray before = f.bytes();
    const QStringList carry = carried.split(QLatin1Char('@'));
    // The second sprite's line carries the checked values (line 3 in the set).
    const DisplayInfo moved = anim->timeline(2)->actualKeyFromTime(carry.at(1).toInt())->info();

    anim->setLinesToMovedLinesCommand(parseSet(changes), TimelineFilter());
    QCOMPARE(times(anim, -1), mainline);
    for (int t = 0; t < timelines.size(); ++t)
        QCOMPARE(times(anim, t), timelines.at(t));
    const TimelineKey *landed = anim->timeline(2)->actualKeyFromTime(carry.at(0).toInt());
    QVERIFY(landed);
    QCOMPARE(landed->info().x, moved.x);
    QCOMPARE(landed->info().angle, moved.angle);
    verifyConsistent(anim);

    // One step on the stack, which gives the saved bytes back both ways.
    QCOMPARE(f.stack.count(), 1);
    const QByteArray after = f.bytes();
    f.stack.undo();
    QCOMPARE(f.bytes(), before);
    f.stack.redo();
    QCOMPARE(f.bytes(), after);
    verifyConsistent(f.animation());
}

void TestKeyTimeChanges::filteredLinesNameShownTimelines()
{
    Fixture f;
    Animation *anim = f.animation();
    TimelineFilter noBones;
    noBones.showBones = false;
    QCOMPARE(anim->filteredTimelineCount(TimelineFilter()), 3);
    QCOMPARE(anim->filteredTimelineCount(noBones), 2);
    QCOMPARE(anim->filteredTimeline(0, noBones), anim->timeline(1));
    QCOMPARE(anim->filteredTimeline(2, noBones), nullptr);
    QCOMPARE(anim->filteredTimeline(-1, TimelineFilter()), nullptr);
    TimelineFilter selected;
    selected.showSelectedOnly = true;
    selected.selectedTimelines = {2};
    QCOMPARE(anim->filteredTimelineCount(selected), 1);
    QCOMPARE(anim->filteredTimeline(0, selected), anim->timeline(2));

    // Line 1 is the first shown timeline: the sprite part_1, not the bone.
    anim->setLinesToMovedLinesCommand(parseSet(QStringLiteral("1:40>60")), noBones);
    QCOMPARE(times(anim, 0), QStringLiteral("0,40,80,120"));
    QCOMPARE(times(anim, 1), QStringLiteral("0,60,80,120"));
    // A line past the shown timelines names nothing.
    anim->setLinesToMovedLinesCommand(parseSet(QStringLiteral("2:80>100")), selected);
    QCOMPARE(times(anim, 2), QStringLiteral("0,40,80,120"));
}

void TestKeyTimeChanges::setCurrentTime_data()
{
    QTest::addColumn<int>("to");
    QTest::addColumn<bool>("force");
    QTest::addColumn<bool>("moveChildren");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("mainline");
    QTest::addColumn<int>("childTime");

    QTest::newRow("free time") << 60 << false << true << true << "0,60,80,120" << 60;
    QTest::newRow("taken time refused") << 80 << false << true << false << "0,40,80,120" << 40;
    QTest::newRow("taken time forced") << 80 << true << true << true << "0,80,80,120" << 80;
    QTest::newRow("children stay") << 100 << false << false << true << "0,80,100,120" << 40;
    QTest::newRow("own time") << 40 << false << true << true << "0,40,80,120" << 40;
}

void TestKeyTimeChanges::setCurrentTime()
{
    QFETCH(int, to);
    QFETCH(bool, force);
    QFETCH(bool, moveChildren);
    QFETCH(bool, accepted);
    QFETCH(QString, mainline);
    QFETCH(int, childTime);

    Fixture f;
    Animation *anim = f.animation();
    MainlineKey *key = anim->mainlineKeyAtExactTime(40);
    TimelineKey *child = key->childTimeKey(0);
    QVERIFY(child);
    QCOMPARE(key->setCurrentTime(to, force, moveChildren), accepted);
    QCOMPARE(times(anim, -1), mainline);
    QCOMPARE(child->cachedTime(), childTime);

    // The undoable form moves the key and its keys alike, and undoes to the saved bytes.
    if (force || !moveChildren)
        return;
    Fixture g;
    const QByteArray before = g.bytes();
    g.stack.push(new SetMainlineKeyTimeCommand(g.animation()->mainlineKeyAtExactTime(40), 40, to));
    QCOMPARE(times(g.animation(), -1), mainline);
    QCOMPARE(times(g.animation(), 1), mainline);
    g.stack.undo();
    QCOMPARE(g.bytes(), before);
}

void TestKeyTimeChanges::cloneAnimation_data()
{
    QTest::addColumn<double>("hold");
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("speed");
    QTest::addColumn<double>("step");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QList<int>>("lengths");
    QTest::addColumn<QString>("lastMainline");

    QTest::newRow("plain") << 0.0 << 0 << 1.0 << 1.0 << QStringList{"move_0", "move_0_000", "move_1"}
                           << QList<int>{160, 160, 160} << "0,40,80,120";
    QTest::newRow("twice as fast, then four times")
        << 0.0 << 1 << 2.0 << 2.0 << QStringList{"move_0", "move_0_000", "move_0_001", "move_1"}
        << QList<int>{160, 80, 40, 160} << "0,10,20,30";
    QTest::newRow("slower with holds")
        << 15.0 << 2 << 0.5 << 1.0
        << QStringList{"move_0", "move_0_000", "move_0_001", "move_0_002", "move_1"}
        << QList<int>{160, 320, 335, 350, 160} << "0,80,160,240";
    QTest::newRow("hostile numbers fall back")
        << qQNaN() << -5 << -1.0 << 0.0 << QStringList{"move_0", "move_0_000", "move_1"}
        << QList<int>{160, 160, 160} << "0,40,80,120";
}

void TestKeyTimeChanges::cloneAnimation()
{
    QFETCH(double, hold);
    QFETCH(int, count);
    QFETCH(double, speed);
    QFETCH(double, step);
    QFETCH(QStringList, names);
    QFETCH(QList<int>, lengths);
    QFETCH(QString, lastMainline);

    Fixture f(2);
    const QByteArray before = f.bytes();
    Entity *entity = f.document.entity(0);
    f.stack.push(new CloneAnimationCommand(f.animation(0), hold, count, speed, step));
    QCOMPARE(entity->animationNames(), names);
    QList<int> gotLengths;
    for (int i = 0; i < entity->animationCount(); ++i)
        gotLengths << entity->animation(i)->length();
    QCOMPARE(gotLengths, lengths);
    const Animation *last = entity->animation(entity->animationCount() - 2);
    QCOMPARE(times(last, -1), lastMainline);
    verifyConsistent(last);
    const QByteArray after = f.bytes();
    f.stack.undo();
    QCOMPARE(f.bytes(), before);
    f.stack.redo();
    QCOMPARE(f.bytes(), after);
}

void TestKeyTimeChanges::changeAnimationSkipsGoneTarget()
{
    Fixture f(2);
    Animation *second = f.animation(1);
    second->setLinesToMovedLinesCommand(parseSet(QStringLiteral("0:40>60")), TimelineFilter());
    QCOMPARE(times(f.animation(1), -1), QStringLiteral("0,60,80,120"));
    // The animation it names is gone: undo and redo do nothing, and nothing crashes.
    delete f.document.entity(0)->removeAnimation(1);
    const QByteArray without = f.bytes();
    f.stack.undo();
    QCOMPARE(f.bytes(), without);
    f.stack.redo();
    QCOMPARE(f.bytes(), without);
}

void TestKeyTimeChanges::orphanKeysGainMainlineKeysWithUndo_data()
{
    QTest::addColumn<bool>("withUndo");
    QTest::newRow("with undo") << true;
    QTest::newRow("without") << false;
}

// A key of part_2 taken off its mainline key and given a time of its own, as an
// edit in progress leaves it, gains a mainline key there; the undoable form
// does it in steps that undo back to the start.
void TestKeyTimeChanges::orphanKeysGainMainlineKeysWithUndo()
{
    QFETCH(bool, withUndo);
    Fixture f;
    Animation *anim = f.animation();
    Timeline *tl = anim->timeline(2);
    TimelineKey *k = tl->actualKeyFromTime(40);
    MainlineKey *former = k->mainKey();
    former->removeChildKey(k);
    k->setCachedTime(60);
    const int refsBefore = former->refCount();

    anim->appendMainKeysForOrphanTimeKeys(withUndo);
    QCOMPARE(times(anim, -1), QStringLiteral("0,40,60,80,120"));
    MainlineKey *made = anim->mainlineKeyAtExactTime(60);
    QCOMPARE(k->mainKey(), made);
    QVERIFY(made->refFromTimeline(tl));
    QCOMPARE(made->refFromTimeline(tl)->key(), k);
    // A copy of the key in force there: every reference it had, in its order, showing the
    // same keys but the moved one.
    QCOMPARE(made->refCount(), refsBefore);
    QVERIFY(made->id() != former->id());
    for (int r = 0; r < made->refCount(); ++r) {
        QCOMPARE(made->ref(r)->timeline(), former->ref(r)->timeline());
        QCOMPARE(made->ref(r)->key(), made->ref(r)->timeline() == tl ? k : former->ref(r)->key());
    }
    QCOMPARE(f.stack.count(), withUndo ? 2 : 0);
    if (!withUndo) {
        // Nothing left to do a second time.
        anim->appendMainKeysForOrphanTimeKeys(false);
        QCOMPARE(times(anim, -1), QStringLiteral("0,40,60,80,120"));
        QCOMPARE(made->refCount(), refsBefore);
    }
    if (!withUndo)
        return;
    while (f.stack.canUndo())
        f.stack.undo();
    QCOMPARE(times(anim, -1), QStringLiteral("0,40,80,120"));
    QCOMPARE(k->mainKey(), nullptr);
    f.stack.redo();
    f.stack.redo();
    QCOMPARE(times(anim, -1), QStringLiteral("0,40,60,80,120"));
    QCOMPARE(k->mainKey(), anim->mainlineKeyAtExactTime(60));
}

QTEST_GUILESS_MAIN(TestKeyTimeChanges)
#include "tst_keytimechanges.moc"
