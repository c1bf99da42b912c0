// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/animation.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

using namespace Morvane;

class TestMainline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keyFromTime_data();
    void keyFromTime();
    void halvingSearchEqualsScan();
    void appendRefusesTakenTime();
    void orphanKeysGainMainlineKeys();
    void detachedKeyReportsNoTime();
    void appendSortsAndLinks();
    void sortTracksFollowedPosition();
    void editingLookupsEqualScans_data();
    void editingLookupsEqualScans();
    void movedMainlineKeyFindsItsPlace();
    void removeKeyAndMandatory();
    void deletingMainlineKeyDeletesItsKeys();
    void boneSaveOrder();
    void boneSaveOrderSurvivesCycle();
    void zOrderFromLoadIndexes();
    void deepCopyIsExactAndSelfContained();
};

// An animation with mainline keys at the given times.
static std::unique_ptr<Animation> animationWithKeys(const QList<int> &times, int length = 1000)
{
    auto anim = std::make_unique<Animation>(QStringLiteral("a"));
    anim->setLength(length);
    for (int t : times)
        anim->appendMainlineKey(new MainlineKey, t, true, true);
    return anim;
}

// The plain rule: clamp, then the key at t, or the last key before it.
static int referenceKeyTime(const QList<int> &sortedTimes, int t, int length, bool exact)
{
    t = qBound(0, t, length);
    int found = -1;
    for (int kt : sortedTimes) {
        if (kt == t)
            return kt;
        if (kt < t)
            found = kt;
    }
    return exact ? -1 : found;
}

void TestMainline::keyFromTime_data()
{
    QTest::addColumn<QList<int>>("times");
    QTest::addColumn<int>("t");
    QTest::addColumn<bool>("exact");
    QTest::addColumn<int>("expected"); // time of the key found, -1 for none

    const QList<int> few{0, 200, 500};
    const QList<int> many{0, 100, 200, 300, 400, 500, 600, 700};
    QTest::newRow("exact hit") << few << 200 << true << 200;
    QTest::newRow("exact miss") << few << 250 << true << -1;
    QTest::newRow("in force") << few << 250 << false << 200;
    QTest::newRow("negative clamps to 0") << few << -50 << true << 0;
    QTest::newRow("beyond length clamps") << QList<int>{0, 1000} << 5000 << true << 1000;
    QTest::newRow("before first key") << QList<int>{100, 200} << 50 << false << -1;
    QTest::newRow("halving hit") << many << 600 << true << 600;
    QTest::newRow("halving in force") << many << 650 << false << 600;
    QTest::newRow("halving miss") << many << 650 << true << -1;
    QTest::newRow("halving last") << many << 999 << false << 700;
}

void TestMainline::keyFromTime()
{
    QFETCH(QList<int>, times);
    QFETCH(int, t);
    QFETCH(bool, exact);
    QFETCH(int, expected);
    auto anim = animationWithKeys(times);
    const MainlineKey *k = anim->mainlineKeyFromTime(t, exact);
    QCOMPARE(k ? k->currentTime() : -1, expected);
}

void TestMainline::halvingSearchEqualsScan()
{
    QRandomGenerator rng(1234);
    for (int round = 0; round < 200; ++round) {
        const int length = 100 + int(rng.bounded(2000));
        const int count = 1 + int(rng.bounded(20));
        QList<int> times{0};
        while (times.size() < count) {
            const int t = int(rng.bounded(length + 1));
            if (!times.contains(t))
                times.append(t);
        }
        std::sort(times.begin(), times.end());
        auto anim = animationWithKeys(times, length);
        QCOMPARE(anim->mainlineKeyCount(), times.size());
        for (int probe = 0; probe < 50; ++probe) {
            const int t = int(rng.bounded(length + 200)) - 100;
            for (bool exact : {false, true}) {
                const MainlineKey *k = anim->mainlineKeyFromTime(t, exact);
                QCOMPARE(k ? k->currentTime() : -1, referenceKeyTime(times, t, length, exact));
            }
        }
    }
}

void TestMainline::appendRefusesTakenTime()
{
    auto anim = animationWithKeys({0, 500});
    const int before = Animation::currentMainKeyId;
    QCOMPARE(anim->appendMainlineKey(new MainlineKey, 500, true, true), -2);
    QCOMPARE(anim->mainlineKeyCount(), 2);
    QCOMPARE(Animation::currentMainKeyId, before);
    QCOMPARE(anim->appendMainlineKey(nullptr, 10), -2);

    auto *own = new MainlineKey;
    own->setCurrentTime(250);
    const int id = anim->appendMainlineKey(own, -1, true, true, true);
    QCOMPARE(id, before);
    QCOMPARE(own->id(), id);
    QVERIFY(own->editorFlag());
    QCOMPARE(anim->mainlineKey(1), own);
    QCOMPARE(own->parentAnimation(), anim.get());
    QCOMPARE(anim->appendMainlineKey(new MainlineKey, 750, true, false), -2);
    QCOMPARE(anim->mainlineKeyCount(), 4);
}

void TestMainline::orphanKeysGainMainlineKeys()
{
    RigxData doc;
    Entity *e = doc.appendEmptyEntity();
    auto *arm = new Object(QStringLiteral("arm"));
    auto *leg = new Object(QStringLiteral("leg"));
    e->appendObject(arm);
    e->appendObject(leg);
    Animation *anim = e->animation(0);
    anim->appendMainlineKey(new MainlineKey, 500, true, true);

    Timeline *armLine = anim->appendObjectAsTimeline(arm);
    Timeline *legLine = anim->appendObjectAsTimeline(leg);
    for (int t : {0, 500}) {
        for (Timeline *tl : {armLine, legLine}) {
            auto *k = new TimelineKey;
            k->setCachedTime(t);
            tl->appendTimelineKey(k);
        }
    }
    anim->appendMainKeysForOrphanTimeKeys();
    QCOMPARE(anim->mainlineKeyCount(), 2);
    QCOMPARE(anim->mainlineKey(0)->zRefCount(), 2);

    auto *orphan = new TimelineKey;
    orphan->setCachedTime(250);
    orphan->info().x = 42;
    armLine->appendTimelineKey(orphan);
    QCOMPARE(orphan->mainKey(), nullptr);
    QCOMPARE(armLine->indexOfKey(orphan), 1);

    anim->appendMainKeysForOrphanTimeKeys();
    QCOMPARE(anim->mainlineKeyCount(), 3);
    MainlineKey *added = anim->mainlineKey(1);
    QCOMPARE(added->currentTime(), 250);
    QCOMPARE(orphan->mainKey(), added);
    QCOMPARE(orphan->time(false), 250);
    // A copy of the key in force at 0: both objects, in the same z order; the
    // arm now takes its values from the new key, the leg still from its key at 0.
    QCOMPARE(added->zRefCount(), 2);
    QCOMPARE(added->zRef(0)->timeline(), armLine);
    QCOMPARE(added->zRef(0)->key(), orphan);
    QCOMPARE(added->zRef(1)->timeline(), legLine);
    QCOMPARE(added->zRef(1)->key(), legLine->key(0));
    QVERIFY(added->id() != anim->mainlineKey(0)->id());
    QCOMPARE(added->childTimeKeyCount(), 1);

    // Running it again changes nothing.
    anim->appendMainKeysForOrphanTimeKeys();
    QCOMPARE(anim->mainlineKeyCount(), 3);
    QCOMPARE(added->zRefCount(), 2);
}

void TestMainline::detachedKeyReportsNoTime()
{
    TimelineKey k;
    k.setCachedTime(120);
    QCOMPARE(k.time(false), -26);
    QCOMPARE(k.time(true), 120);

    auto anim = animationWithKeys({0, 300});
    Timeline *tl = new Timeline;
    anim->appendTimeline(tl);
    auto *linked = new TimelineKey;
    linked->setCachedTime(300);
    tl->appendTimelineKey(linked);
    QCOMPARE(linked->mainKey(), anim->mainlineKey(1));
    anim->mainlineKey(1)->setCurrentTime(400);
    QCOMPARE(linked->time(false), 400);

    anim->deleteMainlineKey(1, false);
    QCOMPARE(linked->mainKey(), nullptr);
    QCOMPARE(linked->time(false), -26);
    QCOMPARE(linked->time(true), 400);
}

void TestMainline::appendSortsAndLinks()
{
    Timeline tl;
    for (int t : {0, 500, 300}) {
        auto *k = new TimelineKey;
        k->setCachedTime(t);
        tl.appendTimelineKey(k, true, false);
    }
    QCOMPARE(tl.key(0)->time(), 0);
    QCOMPARE(tl.key(1)->time(), 300);
    QCOMPARE(tl.key(2)->time(), 500);
    QCOMPARE(tl.actualKeyFromTime(300), tl.key(1));
    QCOMPARE(tl.actualKeyFromTime(301), nullptr);
    QCOMPARE(tl.keyFromTimes(100, 400), tl.key(1));
}

void TestMainline::sortTracksFollowedPosition()
{
    Timeline tl;
    for (int t : {0, 200, 400, 600}) {
        auto *k = new TimelineKey;
        k->setCachedTime(t);
        tl.appendTimelineKey(k, false, false);
    }
    TimelineKey *moved = tl.key(3);
    moved->setCachedTime(100);
    const int pos = tl.sortKeysByTime(3);
    QCOMPARE(pos, 1);
    QCOMPARE(tl.key(pos), moved);

    // Equal times keep their order; a followed key that did not move stays.
    TimelineKey *first = tl.key(0);
    tl.key(2)->setCachedTime(0);
    TimelineKey *second = tl.key(2);
    QCOMPARE(tl.sortKeysByTime(0), 0);
    QCOMPARE(tl.key(0), first);
    QCOMPARE(tl.key(1), second);
}

void TestMainline::editingLookupsEqualScans_data()
{
    QTest::addColumn<int>("keys");
    QTest::addColumn<int>("timeRange");
    QTest::newRow("few, many equal times") << 12 << 4;
    QTest::newRow("many, some equal times") << 400 << 300;
    QTest::newRow("many, distinct times") << 400 << 100000;
}

// Keys appended at random times, then found, indexed and removed: the searches by halving
// give what a plain scan of the list gives, and equal times keep the order of appending.
void TestMainline::editingLookupsEqualScans()
{
    QFETCH(int, keys);
    QFETCH(int, timeRange);
    QRandomGenerator random(quint32(keys * 31 + timeRange));
    Timeline tl;
    QList<QPair<int, int>> expected; // (time, append number), in stable time order
    for (int i = 0; i < keys; ++i) {
        auto *k = new TimelineKey;
        const int time = int(random.bounded(timeRange));
        k->setCachedTime(time);
        k->setId(i);
        tl.appendTimelineKey(k, true, false);
        expected.append({time, i});
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    QCOMPARE(tl.keyCount(), keys);
    for (int i = 0; i < keys; ++i) {
        QCOMPARE(tl.key(i)->time(), expected.at(i).first);
        QCOMPARE(tl.key(i)->id(), expected.at(i).second);
        QCOMPARE(tl.indexOfKey(tl.key(i)), i);
    }
    for (int time = -1; time <= timeRange; ++time) {
        TimelineKey *scan = nullptr;
        for (int i = 0; i < tl.keyCount() && !scan; ++i) {
            if (tl.key(i)->time() == time)
                scan = tl.key(i);
        }
        QCOMPARE(tl.actualKeyFromTime(time), scan);
        TimelineKey *inRange = nullptr;
        for (int i = 0; i < tl.keyCount() && !inRange; ++i) {
            if (tl.key(i)->time() >= time && tl.key(i)->time() <= time + 2)
                inRange = tl.key(i);
        }
        QCOMPARE(tl.keyFromTimes(time, time + 2), inRange);
    }
    // Removing by time takes the first key at that time.
    while (tl.keyCount() > 0) {
        const int index = int(random.bounded(tl.keyCount()));
        const int time = tl.key(index)->time();
        TimelineKey *first = tl.key(index);
        for (int i = index; i >= 0 && tl.key(i)->time() == time; --i)
            first = tl.key(i);
        const int count = tl.keyCount();
        QVERIFY(tl.deleteKeyByTime(time));
        QCOMPARE(tl.keyCount(), count - 1);
        QCOMPARE(tl.indexOfKey(first), -1);
    }
}

// A mainline key whose time changes with sorting on moves to its place, either way.
void TestMainline::movedMainlineKeyFindsItsPlace()
{
    auto anim = animationWithKeys({0, 100, 200, 300, 400, 500, 600}, 1000);
    MainlineKey *key = anim->mainlineKey(5);
    key->setCurrentTime(150, true);
    QCOMPARE(anim->indexOfMainlineKey(key), 2);
    key->setCurrentTime(650, true);
    QCOMPARE(anim->indexOfMainlineKey(key), 6);
    QList<int> times;
    for (int i = 0; i < anim->mainlineKeyCount(); ++i)
        times.append(anim->mainlineKey(i)->currentTime());
    QCOMPARE(times, (QList<int>{0, 100, 200, 300, 400, 600, 650}));
    for (int i = 0; i < anim->mainlineKeyCount(); ++i) {
        QCOMPARE(anim->mainlineKeyAtExactTime(times.at(i)), anim->mainlineKey(i));
        QCOMPARE(anim->indexOfMainlineKey(anim->mainlineKey(i)), i);
    }
    // A time already taken is refused wherever it lies.
    QCOMPARE(anim->appendMainlineKey(new MainlineKey, 300, true, true), -2);
    QCOMPARE(anim->appendMainlineKey(new MainlineKey, 0, true, true), -2);
    QVERIFY(anim->appendMainlineKey(new MainlineKey, 250, true, true) >= 0);
    QCOMPARE(anim->mainlineKey(3)->currentTime(), 250);
}

void TestMainline::removeKeyAndMandatory()
{
    auto anim = animationWithKeys({0, 100});
    auto *tl = new Timeline;
    anim->appendTimeline(tl);
    auto *a = new TimelineKey;
    tl->appendTimelineKey(a);
    QVERIFY(a->keyIsMandatory());
    auto *b = new TimelineKey;
    b->setCachedTime(100);
    tl->appendTimelineKey(b);
    QVERIFY(!a->keyIsMandatory());
    QCOMPARE(anim->mainlineKey(1)->childTimeKeyCount(), 1);

    Timeline other;
    QVERIFY(!other.removeKey(b)); // not its key
    QVERIFY(tl->removeKey(b, false));
    QCOMPARE(anim->mainlineKey(1)->childTimeKeyCount(), 0);
    QCOMPARE(b->parentTimeline(), nullptr);
    QCOMPARE(b->time(false), -26);
    delete b;
    QVERIFY(a->keyIsMandatory());
    QVERIFY(tl->deleteKeyByTime(0));
    QCOMPARE(tl->keyCount(), 0);
}

void TestMainline::deletingMainlineKeyDeletesItsKeys()
{
    RigxData doc;
    Entity *e = doc.appendEmptyEntity();
    auto *arm = new Object(QStringLiteral("arm"));
    e->appendObject(arm);
    Animation *anim = e->animation(0);
    Timeline *tl = anim->appendObjectAsTimeline(arm);
    for (int t : {0, 300}) {
        auto *k = new TimelineKey;
        k->setCachedTime(t);
        tl->appendTimelineKey(k);
    }
    anim->appendMainKeysForOrphanTimeKeys();
    QCOMPARE(anim->mainlineKeyCount(), 2);
    QCOMPARE(tl->keyCount(), 2);

    anim->deleteMainlineKeyByTime(300);
    QCOMPARE(anim->mainlineKeyCount(), 1);
    QCOMPARE(tl->keyCount(), 1);
    QCOMPARE(tl->key(0)->time(false), 0);
}

// Bone refs b0 <- b1 <- b2 and b0 <- b3, stored children first.
void TestMainline::boneSaveOrder()
{
    MainlineKey mk;
    auto *child2 = new BoneRef;
    auto *child1 = new BoneRef;
    auto *root = new BoneRef;
    auto *sibling = new BoneRef;
    mk.appendBoneRef(child2);
    mk.appendBoneRef(child1);
    mk.appendBoneRef(root);
    mk.appendBoneRef(sibling);
    child2->setParentRef(child1);
    child1->setParentRef(root);
    sibling->setParentRef(root);
    auto *z = new ZRef(nullptr, child2);
    mk.appendZRef(z);

    mk.applyBoneSaveSortIds();
    QCOMPARE(mk.boneRef(0), root);
    QCOMPARE(mk.boneRef(1), child1);
    QCOMPARE(mk.boneRef(2), child2);
    QCOMPARE(mk.boneRef(3), sibling);
    for (int i = 0; i < mk.boneRefCount(); ++i) {
        QCOMPARE(mk.boneRef(i)->id(), i);
        if (const BoneRef *p = mk.boneRef(i)->parentRef())
            QVERIFY(p->id() < i);
    }
    QCOMPARE(z->parentRef(), child2);
}

void TestMainline::boneSaveOrderSurvivesCycle()
{
    MainlineKey mk;
    auto *a = new BoneRef;
    auto *b = new BoneRef;
    auto *root = new BoneRef;
    mk.appendBoneRef(a);
    mk.appendBoneRef(b);
    mk.appendBoneRef(root);
    a->setParentRef(b);
    b->setParentRef(a);
    mk.applyBoneSaveSortIds();
    QCOMPARE(mk.boneRefCount(), 3);
    QCOMPARE(mk.boneRef(0), root);
    // The cycle is cut: every parent precedes its child.
    for (int i = 0; i < mk.boneRefCount(); ++i) {
        if (const BoneRef *p = mk.boneRef(i)->parentRef())
            QVERIFY(p->id() < i);
    }
}

void TestMainline::zOrderFromLoadIndexes()
{
    MainlineKey mk;
    QList<ZRef *> refs;
    for (int z : {2, 0, 1}) {
        auto *r = new ZRef;
        r->setLoadZIndex(z);
        mk.appendZRef(r);
        refs.append(r);
    }
    mk.sortRefsByLoadZIndex();
    QCOMPARE(mk.zRef(0), refs[1]);
    QCOMPARE(mk.zRef(1), refs[2]);
    QCOMPARE(mk.zRef(2), refs[0]);
    QCOMPARE(refs[0]->zIndex(), 2);
    QCOMPARE(refs[0]->id(), 2);
}

void TestMainline::deepCopyIsExactAndSelfContained()
{
    RigxData doc;
    Entity *e = doc.appendEmptyEntity();
    auto *bone = new Object(QStringLiteral("bone"), Object::Bone);
    auto *arm = new Object(QStringLiteral("arm"));
    e->appendObject(bone);
    e->appendObject(arm);
    Animation *anim = e->animation(0);
    anim->setLength(800);
    anim->setLoopingMode(Animation::PingPong);
    Timeline *boneLine = anim->appendObjectAsTimeline(bone);
    Timeline *armLine = anim->appendObjectAsTimeline(arm);
    for (int t : {0, 400}) {
        auto *bk = new TimelineKey;
        bk->setCachedTime(t);
        bk->info().angle = t / 10.0;
        boneLine->appendTimelineKey(bk);
        auto *ak = new TimelineKey;
        ak->setCachedTime(t);
        ak->info().x = t;
        armLine->appendTimelineKey(ak);
    }
    anim->appendMainKeysForOrphanTimeKeys();
    for (int i = 0; i < anim->mainlineKeyCount(); ++i)
        anim->mainlineKey(i)->zRef(0)->setParentRef(anim->mainlineKey(i)->boneRef(0));
    anim->mainlineKey(1)->setCurve(TweenInfo(0.25));

    const std::unique_ptr<Animation> copy = anim->clone();
    QCOMPARE(copy->length(), 800);
    QCOMPARE(copy->loopingMode(), int(Animation::PingPong));
    QCOMPARE(copy->mainlineKeyCount(), 2);
    QCOMPARE(copy->timelineCount(), 2);
    for (int m = 0; m < 2; ++m) {
        const MainlineKey *orig = anim->mainlineKey(m);
        const MainlineKey *mk = copy->mainlineKey(m);
        QCOMPARE(mk->currentTime(), orig->currentTime());
        QCOMPARE(mk->id(), orig->id());
        QCOMPARE(mk->curve().curveType(), orig->curve().curveType());
        QCOMPARE(mk->curve().cAt(0), orig->curve().cAt(0));
        QCOMPARE(mk->boneRefCount(), 1);
        QCOMPARE(mk->zRefCount(), 1);
        // Links point inside the copy, at the same places.
        QCOMPARE(mk->zRef(0)->parentRef(), mk->boneRef(0));
        QCOMPARE(mk->boneRef(0)->timeline(), copy->timeline(0));
        QCOMPARE(mk->zRef(0)->timeline(), copy->timeline(1));
        QCOMPARE(mk->zRef(0)->keyIndex(), orig->zRef(0)->keyIndex());
        QCOMPARE(mk->childTimeKeyCount(), 2);
        QCOMPARE(mk->childTimeKey(0)->mainKey(), mk);
    }
    QCOMPARE(copy->timeline(0)->object(), bone);
    QCOMPARE(copy->timeline(1)->key(1)->info().x, 400.0);
    QCOMPARE(copy->timeline(0)->key(1)->info().angle, 40.0);

    // The copy lives on when the original goes.
    e->deleteAnimation(0);
    QCOMPARE(copy->mainlineKey(1)->zRef(0)->key()->time(false), 400);
    QCOMPARE(copy->timeline(1)->key(1)->mainKey(), copy->mainlineKey(1));
}

QTEST_GUILESS_MAIN(TestMainline)
#include "tst_mainline.moc"
