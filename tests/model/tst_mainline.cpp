// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "modeltesthelpers.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

using namespace Morvane;
using namespace Morvane::Testing;

class TestMainline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void halvingSearchEqualsScan();
    void mainlineKeysStaySortedAndUnique();
    void keyLifecycle();
    void sortTracksFollowedPosition();
    void editingLookupsEqualScans_data();
    void editingLookupsEqualScans();
    void boneSaveOrder_data();
    void boneSaveOrder();
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

// Random key sets, some without a key at 0, probed before, inside and past the length
// against the plain rule: clamp, then the key at t, or the last key before it.
void TestMainline::halvingSearchEqualsScan()
{
    QRandomGenerator rng(1234);
    for (int round = 0; round < 200; ++round) {
        const int length = 100 + int(rng.bounded(2000));
        const int count = 1 + int(rng.bounded(20));
        QList<int> times;
        if (round % 3)
            times.append(0);
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
            const int clamped = qBound(0, t, length);
            int inForce = -1;
            for (int kt : std::as_const(times))
                inForce = kt <= clamped ? kt : inForce;
            for (bool exact : {false, true}) {
                const MainlineKey *k = anim->mainlineKeyFromTime(t, exact);
                QCOMPARE(k ? k->currentTime() : -1, exact && inForce != clamped ? -1 : inForce);
            }
        }
    }
}

// Appending refuses a taken time wherever it lies; a key whose time changes with sorting
// on moves to its place, either way.
void TestMainline::mainlineKeysStaySortedAndUnique()
{
    auto anim = animationWithKeys({0, 100, 200, 300, 400, 500, 600});
    const int nextId = Animation::currentMainKeyId;
    for (int taken : {0, 300, 600})
        QCOMPARE(anim->appendMainlineKey(new MainlineKey, taken, true, true), -2);
    QCOMPARE(anim->appendMainlineKey(nullptr, 10), -2);
    QCOMPARE(Animation::currentMainKeyId, nextId); // refusals use up no id

    auto *own = new MainlineKey;
    own->setCurrentTime(250);
    QCOMPARE(anim->appendMainlineKey(own, -1, true, true, true), nextId);
    QCOMPARE(own->id(), nextId);
    QVERIFY(own->editorFlag());
    QCOMPARE(anim->mainlineKey(3), own);
    QCOMPARE(own->parentAnimation(), anim.get());

    MainlineKey *key = anim->mainlineKey(6);
    key->setCurrentTime(150, true);
    QCOMPARE(anim->indexOfMainlineKey(key), 2);
    key->setCurrentTime(650, true);
    QCOMPARE(anim->indexOfMainlineKey(key), 7);
    const QList<int> expected{0, 100, 200, 250, 300, 400, 600, 650};
    QCOMPARE(anim->mainlineKeyCount(), expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        QCOMPARE(anim->mainlineKey(i)->currentTime(), expected.at(i));
        QCOMPARE(anim->mainlineKeyAtExactTime(expected.at(i)), anim->mainlineKey(i));
        QCOMPARE(anim->indexOfMainlineKey(anim->mainlineKey(i)), i);
    }
}

// A timeline key reads its time from its mainline key while it has one; taken off, it
// reports none; removing keys and mainline keys keeps both sides in step.
void TestMainline::keyLifecycle()
{
    TimelineKey loose;
    loose.setCachedTime(120);
    QCOMPARE(loose.time(false), -26);
    QCOMPARE(loose.time(true), 120);

    KeyedDocument k({{"arm", Object::Sprite}}, {0, 300, 600});
    Timeline *tl = k.anim->timeline(0);
    TimelineKey *linked = tl->key(1);
    QCOMPARE(linked->mainKey(), k.anim->mainlineKey(1));
    k.anim->mainlineKey(1)->setCurrentTime(400);
    QCOMPARE(linked->time(false), 400);
    k.anim->deleteMainlineKey(1, false);
    QCOMPARE(linked->mainKey(), nullptr);
    QCOMPARE(linked->time(false), -26);
    QCOMPARE(linked->time(true), 400);

    // Deleting a mainline key with its keys takes the timeline's key too.
    k.anim->deleteMainlineKeyByTime(600);
    QCOMPARE(k.anim->mainlineKeyCount(), 1);
    QCOMPARE(tl->keyCount(), 2);

    TimelineKey *first = tl->key(0);
    QVERIFY(!first->keyIsMandatory());
    QCOMPARE(k.anim->mainlineKey(0)->childTimeKeyCount(), 1);
    Timeline other;
    QVERIFY(!other.removeKey(first)); // not its key
    QVERIFY(tl->removeKey(first, false));
    QCOMPARE(k.anim->mainlineKey(0)->childTimeKeyCount(), 0);
    QCOMPARE(first->parentTimeline(), nullptr);
    QCOMPARE(first->time(false), -26);
    delete first;
    QVERIFY(tl->key(0)->keyIsMandatory()); // the only key left
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
    QCOMPARE(tl.sortKeysByTime(3), 1);
    QCOMPARE(tl.key(1), moved);

    // Equal times keep their order; a followed key that did not move stays.
    TimelineKey *first = tl.key(0);
    TimelineKey *second = tl.key(2);
    second->setCachedTime(0);
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
        TimelineKey *inRange = nullptr;
        for (int i = tl.keyCount() - 1; i >= 0; --i) {
            const int t = tl.key(i)->time();
            scan = t == time ? tl.key(i) : scan;
            inRange = t >= time && t <= time + 2 ? tl.key(i) : inRange;
        }
        QCOMPARE(tl.actualKeyFromTime(time), scan);
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

void TestMainline::boneSaveOrder_data()
{
    QTest::addColumn<QList<int>>("parents"); // per stored bone ref, its parent's index or -1
    QTest::addColumn<QList<int>>("expected"); // stored indexes in save order; empty: any valid
    // b0 <- b1 <- b2 and b0 <- b3, stored children first.
    QTest::newRow("children first") << QList<int>{1, 2, -1, 2} << QList<int>{2, 1, 0, 3};
    QTest::newRow("a cycle is cut") << QList<int>{1, 0, -1} << QList<int>{};
}

// Saving numbers bones so that every parent comes before its children.
void TestMainline::boneSaveOrder()
{
    QFETCH(QList<int>, parents);
    QFETCH(QList<int>, expected);
    MainlineKey mk;
    QList<BoneRef *> refs;
    for (int i = 0; i < parents.size(); ++i) {
        refs.append(new BoneRef);
        mk.appendBoneRef(refs.last());
    }
    for (int i = 0; i < parents.size(); ++i)
        refs[i]->setParentRef(parents.at(i) < 0 ? nullptr : refs[parents.at(i)]);
    auto *z = new ZRef(nullptr, refs.first());
    mk.appendZRef(z);

    mk.applyBoneSaveSortIds();
    QCOMPARE(mk.boneRefCount(), parents.size());
    QCOMPARE(mk.boneRef(0), refs[parents.indexOf(-1)]);
    for (int i = 0; i < expected.size(); ++i)
        QCOMPARE(mk.boneRef(i), refs[expected.at(i)]);
    for (int i = 0; i < mk.boneRefCount(); ++i) {
        QCOMPARE(mk.boneRef(i)->id(), i);
        if (const BoneRef *p = mk.boneRef(i)->parentRef())
            QVERIFY(p->id() < i);
    }
    QCOMPARE(z->parentRef(), refs.first());
}

void TestMainline::zOrderFromLoadIndexes()
{
    MainlineKey mk;
    QList<ZRef *> refs;
    for (int z : {2, 0, 1}) {
        refs.append(new ZRef);
        refs.last()->setLoadZIndex(z);
        mk.appendZRef(refs.last());
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
    KeyedDocument k({{"bone", Object::Bone}, {"arm", Object::Sprite}}, {0, 400});
    Animation *anim = k.anim;
    anim->setLength(800);
    anim->setLoopingMode(Animation::PingPong);
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
    QCOMPARE(copy->timeline(0)->object(), k.entity->object(0));
    QCOMPARE(copy->timeline(1)->key(1)->info().x, 401.0);
    QCOMPARE(copy->timeline(0)->key(1)->info().angle, 40.0);

    // The copy lives on when the original goes.
    k.entity->deleteAnimation(0);
    QCOMPARE(copy->mainlineKey(1)->zRef(0)->key()->time(false), 400);
    QCOMPARE(copy->timeline(1)->key(1)->mainKey(), copy->mainlineKey(1));
}

QTEST_GUILESS_MAIN(TestMainline)
#include "tst_mainline.moc"
