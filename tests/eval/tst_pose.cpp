// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "eval/entityinstance.h"
#include "eval/poseevaluator.h"
#include "evaltesthelpers.h"
#include "model/inheritance.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>
#include <numeric>

// Counts heap allocations so that a test can prove that posing allocates
// nothing once warmed up.
static std::atomic<long> sAllocations{0};

void *operator new(std::size_t size)
{
    ++sAllocations;
    if (void *p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}

// Replaced too, so that what the library allocates without throwing (a
// stable sort's buffer) comes from the same heap the deletes above free to.
void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    ++sAllocations;
    return std::malloc(size ? size : 1);
}

void operator delete(void *p) noexcept
{
    std::free(p);
}

void operator delete(void *p, std::size_t) noexcept
{
    std::free(p);
}

using namespace Morvane;
using Morvane::Testing::differs;
using Morvane::Testing::info;
using Morvane::Testing::near;
using Morvane::Testing::Rig;
using Morvane::Testing::sameAngle;

Q_DECLARE_METATYPE(Morvane::DisplayInfo)
Q_DECLARE_METATYPE(Morvane::TweenInfo)

namespace {

const PoseItem *findItem(const Pose &pose, const Timeline *tl)
{
    for (const PoseItem &item : pose.bones) {
        if (item.timeline == tl)
            return &item;
    }
    for (const PoseItem &item : pose.objects) {
        if (item.timeline == tl)
            return &item;
    }
    return nullptr;
}

/// The pose at `time` from the evaluator, after checking it against the
/// model's one-reference-at-a-time path.
Pose poseAt(const Animation *animation, int time)
{
    Pose pose;
    PoseEvaluator(animation).evaluate(time, pose);
    const int sampleTime = animation->sampleTime(time);
    if (pose.sampleTime != sampleTime)
        qFatal("sample time %d, model says %d", pose.sampleTime, sampleTime);
    for (const auto *list : {&pose.bones, &pose.objects}) {
        for (const PoseItem &item : *list) {
            const DisplayInfo world = item.ref->unmappedInfo(sampleTime);
            if (!near(world.x, item.x, 1e-7) || !near(world.y, item.y, 1e-7) ||
                !sameAngle(world.angle, item.angle, 1e-7) || !near(world.xScale, item.xScale) ||
                !near(world.yScale, item.yScale) || !near(world.alpha, item.alpha) ||
                world.pivotX(true) != item.pivotX || world.pivotY(true) != item.pivotY) {
                qFatal("evaluator and model disagree at %d: (%g, %g, %g) vs (%g, %g, %g)", time,
                       item.x, item.y, item.angle, world.x, world.y, world.angle);
            }
        }
    }
    return pose;
}

} // namespace

class TstPose : public QObject
{
    Q_OBJECT

private slots:
    void curvedTime_data();
    void curvedTime();
    void keyPair_data();
    void keyPair();
    void blendedKeyCarriesFirstKeysData();
    void chain_data();
    void chain();
    void inheritFlags_data();
    void inheritFlags();
    void keysBetweenMainlineKeys_data();
    void keysBetweenMainlineKeys();
    void hostileKeysPoseSafely_data();
    void hostileKeysPoseSafely();
    void loopingWrapsAndNonLoopingHolds_data();
    void loopingWrapsAndNonLoopingHolds();
    void bonesParentsFirstAndObjectsInZOrder();
    void childrenFollowEveryTurnOfTheBone();
    void parentCycleTerminates();
    void evaluatorMatchesModel();
    void posingDoesNotAllocate();
};

void TstPose::curvedTime_data()
{
    QTest::addColumn<QList<int>>("times");
    QTest::addColumn<int>("keyTime");
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<bool>("looping");
    QTest::addColumn<double>("t");
    QTest::addColumn<double>("expected");

    QTest::newRow("single key") << QList<int>{0} << 0 << TweenInfo() << true << 600.0 << 0.0;
    QTest::newRow("single later key")
        << QList<int>{200} << 200 << TweenInfo(0.0) << true << 700.0 << 200.0;
    QTest::newRow("linear") << QList<int>{0, 100} << 0 << TweenInfo() << true << 30.0 << 30.0;
    QTest::newRow("eased") << QList<int>{0, 100} << 0 << TweenInfo(0.0) << true << 50.0 << 25.0;
    QTest::newRow("instant") << QList<int>{0, 100} << 0 << TweenInfo::instantInfo() << true << 99.0
                             << 0.0;
    QTest::newRow("last key wraps")
        << QList<int>{0, 600} << 600 << TweenInfo(0.0) << true << 800.0 << 700.0;
    QTest::newRow("wraps without looping too")
        << QList<int>{0, 600} << 600 << TweenInfo(0.0) << false << 800.0 << 700.0;
    QTest::newRow("wrap from a later first key")
        << QList<int>{100, 600} << 600 << TweenInfo() << true << 850.0 << 850.0;
}

void TstPose::curvedTime()
{
    QFETCH(QList<int>, times);
    QFETCH(int, keyTime);
    QFETCH(TweenInfo, curve);
    QFETCH(bool, looping);
    QFETCH(double, t);
    QFETCH(double, expected);

    Rig rig(1000, looping);
    for (int time : times)
        rig.mainlineKey(time);
    MainlineKey *key = rig.mainlineKey(keyTime);
    key->setCurve(curve);
    QVERIFY(near(key->curvedTime(t), expected));
    QCOMPARE(rig.animation->sampleTime(int(t)), int(expected));
    QCOMPARE(rig.animation->sampleTime(int(t), false), int(t));
    QCOMPARE(poseAt(rig.animation, int(t)).sampleTime, int(expected));
    EntityInstance instance(rig.entity);
    instance.setCurrentTime(int(t));
    QCOMPARE(instance.currentTime(), int(t));
    QCOMPARE(instance.currentTime(true), int(expected));
    // A key outside any animation has no time to curve.
    MainlineKey detached;
    detached.setCurve(curve);
    QCOMPARE(detached.curvedTime(t), t);
}

void TstPose::keyPair_data()
{
    QTest::addColumn<QList<int>>("times"); // key i has x = 10 * i
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<bool>("looping");
    QTest::addColumn<int>("t");
    QTest::addColumn<double>("expectedX");

    const QList<int> two{0, 100};
    QTest::newRow("linear quarter") << two << TweenInfo() << true << 25 << 2.5;
    QTest::newRow("at a key") << QList<int>{0, 100, 200} << TweenInfo() << false << 100 << 10.0;
    QTest::newRow("instant holds") << two << TweenInfo::instantInfo() << false << 99 << 0.0;
    QTest::newRow("instant jumps at the next key")
        << two << TweenInfo::instantInfo() << false << 100 << 10.0;
    QTest::newRow("eased key") << two << TweenInfo(0.0) << false << 50 << 2.5;
    QTest::newRow("before the first key holds it")
        << QList<int>{100, 200} << TweenInfo() << true << 50 << 0.0;
    QTest::newRow("after the last key holds")
        << QList<int>{0, 500} << TweenInfo() << false << 750 << 10.0;
    QTest::newRow("after the last key wraps when looping")
        << QList<int>{0, 500} << TweenInfo() << true << 750 << 5.0;
    QTest::newRow("wrap to a later first key")
        << QList<int>{200, 600} << TweenInfo() << true << 900 << 5.0;
    QTest::newRow("single key") << QList<int>{300} << TweenInfo() << true << 800 << 0.0;
}

void TstPose::keyPair()
{
    QFETCH(QList<int>, times);
    QFETCH(TweenInfo, curve);
    QFETCH(bool, looping);
    QFETCH(int, t);
    QFETCH(double, expectedX);

    Rig rig(1000, looping);
    Timeline *tl = rig.timeline(QStringLiteral("s"));
    for (int i = 0; i < times.size(); ++i)
        rig.key(tl, times.at(i), info(10.0 * i, 0), curve);
    rig.link();

    QVERIFY(near(tl->displayInfoFromTime(t).x, expectedX));
    QVERIFY(near(tl->keyFromTime(t).info().x, expectedX));

    // The full pose agrees wherever a mainline key references the timeline.
    const Pose pose = poseAt(rig.animation, t);
    if (const PoseItem *item = findItem(pose, tl))
        QVERIFY2(near(item->x, expectedX), qPrintable(QString::number(item->x)));
    else
        QVERIFY(t < times.first());
}

void TstPose::blendedKeyCarriesFirstKeysData()
{
    Rig rig(1000, false);
    File *first = rig.file(QStringLiteral("a.png"), 0.5, 0.25);
    File *second = rig.file(QStringLiteral("b.png"));
    Timeline *tl = rig.timeline(QStringLiteral("s"));
    // Keys at 0 and 100 follow their files' pivots; the key at 200 has its own.
    DisplayInfo own = info(0, 0);
    own.setPivotX(0.1);
    own.setPivotY(0.9);
    DisplayInfo following = own;
    following.setDefaultPivot(true, first->address());
    following.x = 100;
    TimelineKey *a = rig.key(tl, 0, following, TweenInfo(), first);
    TimelineKey *b = rig.key(tl, 100, following, TweenInfo(), second);
    a->info().x = 0;
    rig.key(tl, 200, own, TweenInfo(), first);
    rig.link();
    a->soundInfo().volume = 0.0;
    b->soundInfo().volume = 1.0;
    b->soundInfo().trigger = true;

    const TimelineKey mid = tl->keyFromTime(40);
    QCOMPARE(mid.fileInfo().file(), first);
    QCOMPARE(mid.info().x, 40.0);
    QCOMPARE(mid.soundInfo().volume, 0.4);
    QVERIFY(!mid.soundInfo().trigger); // only at the keys themselves
    QCOMPARE(tl->keyFromTime(100).fileInfo().file(), second);
    QCOMPARE(mid.parentTimeline(), nullptr);

    Timeline empty;
    QCOMPARE(empty.displayInfoFromTime(10).x, 0.0);
    QCOMPARE(empty.keyFromTime(10).fileInfo().file(), nullptr);

    QCOMPARE(poseAt(rig.animation, 50).objects.front().pivotX, 0.5);
    QCOMPARE(poseAt(rig.animation, 50).objects.front().pivotY, 0.25);
    // Towards a key with its own pivot: the first key's own pivot.
    QCOMPARE(poseAt(rig.animation, 150).objects.front().pivotX, 0.1);
    QCOMPARE(poseAt(rig.animation, 250).objects.front().pivotY, 0.9);
}

void TstPose::chain_data()
{
    QTest::addColumn<DisplayInfo>("upper");    // bone
    QTest::addColumn<DisplayInfo>("lower");    // bone under upper
    QTest::addColumn<DisplayInfo>("sprite");   // under lower
    QTest::addColumn<DisplayInfo>("expected"); // the sprite in the world

    // Bones never inherit scale: the lower bone is unscaled, so is the sprite.
    QTest::newRow("turned and stretched")
        << info(100, 100, 90, 2, 1) << info(0, 0) << info(10, 0) << info(100, 110, 90, 1, 1);
    // The upper bone's scale still stretches the distance to the lower bone.
    QTest::newRow("scale moves the child bone, not its size")
        << info(0, 0, 0, 2, 1) << info(50, 0) << info(10, 0) << info(110, 0, 0, 1, 1);
    QTest::newRow("alpha multiplies down the chain")
        << info(0, 0, 0, 1, 1, 0.5) << info(0, 0, 0, 1, 1, 0.5) << info(0, 0, 0, 1, 1, 0.8)
        << info(0, 0, 0, 1, 1, 0.2);
    // The mirror reverses the lower bone's angle (360 - 30) but, its scale not
    // being inherited, not the sprite's: 10 + 330.
    QTest::newRow("mirror reverses the angle of the bone below it")
        << info(0, 0, 0, -1, 1) << info(10, 0, 30) << info(0, 0, 10) << info(-10, 0, 340, 1, 1);
}

void TstPose::inheritFlags_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("pos");
    QTest::addColumn<bool>("angle");
    QTest::addColumn<bool>("scale");
    QTest::addColumn<DisplayInfo>("bone");
    QTest::addColumn<DisplayInfo>("child");
    QTest::addColumn<DisplayInfo>("expected");

    // Under a bone at (100, 50) turned 90 degrees with scales 2 and 3 and half
    // alpha, the child's offset (10, 20) scales to (20, 60) and turns to
    // (-60, 20): it lands at (40, 70).
    const DisplayInfo bone = info(100, 50, 90, 2, 3, 0.5);
    const DisplayInfo child = info(10, 20, 30, 1.5, 0.5, 0.8);
    QTest::newRow("sprite inherits all") << int(Object::Sprite) << true << true << true << bone
                                         << child << info(40, 70, 120, 3, 1.5, 0.4);
    QTest::newRow("sprite without position") << int(Object::Sprite) << false << true << true << bone
                                             << child << info(10, 20, 120, 3, 1.5, 0.4);
    QTest::newRow("sprite without angle") << int(Object::Sprite) << true << false << true << bone
                                          << child << info(40, 70, 30, 3, 1.5, 0.4);
    QTest::newRow("sprite without scale") << int(Object::Sprite) << true << true << false << bone
                                          << child << info(40, 70, 120, 1.5, 0.5, 0.4);
    QTest::newRow("sprite inherits only alpha") << int(Object::Sprite) << false << false << false
                                                << bone << child << info(10, 20, 30, 1.5, 0.5, 0.4);
    QTest::newRow("bone never inherits scale") << int(Object::Bone) << true << true << true << bone
                                               << child << info(40, 70, 120, 1.5, 0.5, 0.4);
    QTest::newRow("point inherits all") << int(Object::Point) << true << true << true << bone
                                        << child << info(40, 70, 120, 3, 1.5, 0.4);
    // Not inheriting the angle also ignores the mirror's reversal of it.
    QTest::newRow("mirrored, angle inherited")
        << int(Object::Sprite) << true << true << true << info(0, 0, 0, -1, 1) << info(10, 0, 30)
        << info(-10, 0, 330, -1, 1);
    QTest::newRow("mirrored, angle not inherited")
        << int(Object::Sprite) << true << false << true << info(0, 0, 0, -1, 1) << info(10, 0, 30)
        << info(-10, 0, 30, -1, 1);
}

void TstPose::inheritFlags()
{
    QFETCH(int, type);
    QFETCH(bool, pos);
    QFETCH(bool, angle);
    QFETCH(bool, scale);
    QFETCH(DisplayInfo, bone);
    QFETCH(DisplayInfo, child);
    QFETCH(DisplayInfo, expected);

    Rig rig;
    Timeline *boneLine = rig.timeline(QStringLiteral("arm"), Object::Bone);
    Timeline *childLine = rig.timeline(QStringLiteral("hand"), type, boneLine);
    childLine->object()->setInheritPos(pos);
    childLine->object()->setInheritAngle(angle);
    childLine->object()->setInheritScale(scale);
    rig.key(boneLine, 0, bone);
    rig.key(childLine, 0, child);
    rig.link();

    const Pose pose = poseAt(rig.animation, 0); // the model's path agrees
    const PoseItem *item = findItem(pose, childLine);
    QVERIFY(item);
    QString wrong = differs(
        info(item->x, item->y, item->angle, item->xScale, item->yScale, item->alpha), expected);
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong));

    // Editing maps the world state back into the same local key.
    const unsigned flags = Morvane::inheritFlags(childLine->object());
    wrong = differs(mapToParent(expected, bone, flags), child, 1e-9);
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
}

void TstPose::chain()
{
    QFETCH(DisplayInfo, upper);
    QFETCH(DisplayInfo, lower);
    QFETCH(DisplayInfo, sprite);
    QFETCH(DisplayInfo, expected);

    Rig rig;
    Timeline *upperLine = rig.timeline(QStringLiteral("upper"), Object::Bone);
    Timeline *lowerLine = rig.timeline(QStringLiteral("lower"), Object::Bone, upperLine);
    Timeline *spriteLine = rig.timeline(QStringLiteral("hand"), Object::Sprite, lowerLine);
    rig.key(upperLine, 0, upper);
    rig.key(lowerLine, 0, lower);
    rig.key(spriteLine, 0, sprite);
    rig.link();

    const Pose pose = poseAt(rig.animation, 500);
    QCOMPARE(pose.bones.size(), size_t(2));
    QCOMPARE(pose.objects.size(), size_t(1));
    const PoseItem &hand = pose.objects.front();
    QCOMPARE(hand.parent, 1);
    QString wrong =
        differs(info(hand.x, hand.y, hand.angle, hand.xScale, hand.yScale, hand.alpha), expected);
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong));

    // The model's cached world infos agree, and the keys keep their local values.
    rig.entity->updateRefCurrentInfo(500);
    wrong = differs(rig.mainlineKey(0)->zRef(0)->currentInfo(), expected);
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
    QCOMPARE(spriteLine->key(0)->info().x, sprite.x);
}

void TstPose::keysBetweenMainlineKeys_data()
{
    QTest::addColumn<bool>("looping");
    QTest::addColumn<int>("t");
    QTest::addColumn<double>("expectedX");
    QTest::addColumn<int>("keyIndex");
    QTest::addColumn<int>("nextKeyIndex");

    // Bone keys at 0, 200, 400, 600 with x = 0, 20, 60, 40; mainline keys
    // only at 0 and 500, referencing the keys at 0 and 400.
    QTest::newRow("the referenced pair") << false << 100 << 10.0 << 0 << 1;
    QTest::newRow("a later pair under the same mainline key") << false << 300 << 40.0 << 1 << 2;
    QTest::newRow("the last pair before the next mainline key") << false << 450 << 55.0 << 2 << 3;
    QTest::newRow("the second mainline key's pair") << true << 550 << 45.0 << 2 << 3;
    QTest::newRow("past the last key holds") << false << 700 << 40.0 << 3 << 3;
    QTest::newRow("past the last key wraps to the first") << true << 800 << 20.0 << 3 << 0;
}

void TstPose::keysBetweenMainlineKeys()
{
    QFETCH(bool, looping);
    QFETCH(int, t);
    QFETCH(double, expectedX);
    QFETCH(int, keyIndex);
    QFETCH(int, nextKeyIndex);

    Rig rig(1000, looping);
    Timeline *bone = rig.timeline(QStringLiteral("bone"), Object::Bone);
    Timeline *sprite = rig.timeline(QStringLiteral("sprite"), Object::Sprite, bone);
    rig.mainlineKey(0);
    rig.mainlineKey(500);
    const double xs[] = {0.0, 20.0, 60.0, 40.0};
    for (int i = 0; i < 4; ++i)
        rig.key(bone, 200 * i, info(xs[i], 0, 90), TweenInfo(), nullptr, false);
    rig.key(sprite, 0, info(0, 5));
    rig.link();
    QCOMPARE(rig.mainlineKey(500)->boneRef(0)->key(), bone->key(2));

    const Pose pose = poseAt(rig.animation, t); // compares with the model
    QCOMPARE(pose.bones.size(), size_t(1));
    const PoseItem &item = pose.bones.front();
    QVERIFY(near(item.x, expectedX));
    QCOMPARE(item.key, bone->key(keyIndex));
    QCOMPARE(item.nextKey, bone->key(nextKeyIndex));
    // The child follows the bone's blended place, turned a quarter.
    QVERIFY(near(pose.objects.front().x, expectedX - 5.0));
    QVERIFY(near(pose.objects.front().y, 0.0));

    // The same evaluator gives the same pose after any other time.
    PoseEvaluator evaluator(rig.animation);
    Pose again;
    evaluator.evaluate(1000 - t, again);
    evaluator.evaluate(t, again);
    QCOMPARE(again.bones.front().x, item.x);
    QCOMPARE(again.bones.front().key, item.key);
}

void TstPose::hostileKeysPoseSafely_data()
{
    QTest::addColumn<QList<int>>("times");
    QTest::addColumn<QList<double>>("angles");
    QTest::addColumn<bool>("compareWithModel");

    QTest::newRow("not a number") << QList<int>{0, 500} << QList<double>{qQNaN(), 10.0} << true;
    QTest::newRow("far turns") << QList<int>{0, 500} << QList<double>{1e300, -1e300} << true;
    QTest::newRow("unnormalised") << QList<int>{0, 500} << QList<double>{-725.0, 1000.0} << true;
    QTest::newRow("one time twice")
        << QList<int>{0, 300, 300, 600} << QList<double>{0.0, 90.0, 180.0, 270.0} << true;
    QTest::newRow("times far out")
        << QList<int>{-2000000000, 2000000000} << QList<double>{10.0, 20.0} << true;
    QTest::newRow("infinite turn") << QList<int>{0, 500} << QList<double>{qInf(), 10.0} << false;
}

void TstPose::hostileKeysPoseSafely()
{
    QFETCH(QList<int>, times);
    QFETCH(QList<double>, angles);
    QFETCH(bool, compareWithModel);

    Rig rig(1000, true);
    Timeline *bone = rig.timeline(QStringLiteral("bone"), Object::Bone);
    Timeline *sprite = rig.timeline(QStringLiteral("sprite"), Object::Sprite, bone);
    rig.mainlineKey(0);
    for (int i = 0; i < times.size(); ++i)
        rig.key(bone, times[i], info(i, 0, angles[i]), TweenInfo(), nullptr, false);
    rig.key(sprite, 0, info(10, 0));
    rig.link();

    PoseEvaluator evaluator(rig.animation);
    Pose pose;
    for (int t : {-5, 0, 150, 300, 450, 999, 1000, 5000}) {
        evaluator.evaluate(t, pose);
        QCOMPARE(pose.bones.size(), size_t(1));
        QCOMPARE(pose.objects.size(), size_t(1));
        for (const PoseItem *item : {&pose.bones.front(), &pose.objects.front()})
            QVERIFY2(item->angle >= 0.0 && item->angle <= 360.0, qPrintable(QString::number(t)));
        if (compareWithModel)
            poseAt(rig.animation, t);
    }
}

void TstPose::loopingWrapsAndNonLoopingHolds_data()
{
    QTest::addColumn<bool>("looping");
    QTest::addColumn<int>("t");
    QTest::addColumn<double>("expectedX");

    QTest::newRow("looping, at the end") << true << 1000 << 0.0;
    QTest::newRow("looping, past the end is clamped") << true << 5000 << 0.0;
    QTest::newRow("not looping, at the end") << false << 1000 << 100.0;
    QTest::newRow("negative time is clamped") << false << -50 << 0.0;
}

void TstPose::loopingWrapsAndNonLoopingHolds()
{
    QFETCH(bool, looping);
    QFETCH(int, t);
    QFETCH(double, expectedX);

    Rig rig(1000, looping);
    Timeline *sprite = rig.timeline(QStringLiteral("s"));
    rig.key(sprite, 0, info(0, 0));
    rig.key(sprite, 500, info(100, 0));
    rig.link();
    EntityInstance instance(rig.entity);
    instance.setCurrentTime(t);
    QVERIFY2(near(instance.pose().objects.front().x, expectedX),
             qPrintable(QString::number(instance.pose().objects.front().x)));
}

void TstPose::bonesParentsFirstAndObjectsInZOrder()
{
    Rig rig;
    // Created children first, so that the references are not parent-first.
    Timeline *hand = rig.timeline(QStringLiteral("hand"), Object::Bone);
    Timeline *lower = rig.timeline(QStringLiteral("lower"), Object::Bone);
    Timeline *upper = rig.timeline(QStringLiteral("upper"), Object::Bone);
    rig.parentOf.insert(hand, lower);
    rig.parentOf.insert(lower, upper);
    Timeline *back = rig.timeline(QStringLiteral("back"));
    // What deleting an object from every frame leaves: its timeline, empty, and not posed.
    rig.timeline(QStringLiteral("gone"));
    Timeline *front = rig.timeline(QStringLiteral("front"));
    rig.parentOf.insert(front, hand);
    for (Timeline *tl : {hand, lower, upper})
        rig.key(tl, 0, info(10, 0, 90));
    rig.key(back, 0, info(0, 0));
    rig.key(front, 0, info(1, 0));
    rig.link();
    QCOMPARE(rig.mainlineKey(0)->boneRef(0)->timeline(), hand);

    const Pose pose = poseAt(rig.animation, 0);
    QCOMPARE(pose.bones.size(), size_t(3));
    QCOMPARE(pose.bones[0].timeline, upper);
    QCOMPARE(pose.bones[1].timeline, lower);
    QCOMPARE(pose.bones[2].timeline, hand);
    for (size_t i = 0; i < pose.bones.size(); ++i)
        QVERIFY(pose.bones[i].parent < int(i));
    QCOMPARE(pose.objects.size(), size_t(2));
    QCOMPARE(pose.objects[0].timeline, back);
    QCOMPARE(pose.objects[0].z, 0);
    QCOMPARE(pose.objects[1].timeline, front);
    QCOMPARE(pose.objects[1].z, 1);
    QCOMPARE(pose.objects[1].parent, 2);
    // Arms of 10 px, each turned a quarter more: (10, 0), (10, 10), (0, 10);
    // the front sprite lies 1 px along the hand, which points up the screen.
    QVERIFY(near(pose.bones[2].x, 0.0) && near(pose.bones[2].y, 10.0));
    QVERIFY(near(pose.objects[1].x, 0.0) && near(pose.objects[1].y, 9.0));
    QVERIFY(near(pose.objects[1].angle, 270.0));
}

void TstPose::childrenFollowEveryTurnOfTheBone()
{
    // A long arm makes small errors of the turn visible in the position.
    Rig rig(36000, false);
    Timeline *bone = rig.timeline(QStringLiteral("bone"), Object::Bone);
    Timeline *sprite = rig.timeline(QStringLiteral("tip"), Object::Sprite, bone);
    rig.key(bone, 0, info(0, 0, 0));
    rig.key(bone, 36000, info(0, 0, 359.99));
    rig.key(sprite, 0, info(1000, 0));
    rig.link();
    PoseEvaluator evaluator(rig.animation);
    Pose pose;
    for (int t = 0; t <= 36000; t += 37) {
        evaluator.evaluate(t, pose);
        const double radians = pose.bones.front().angle / DisplayInfo::DegreesPerRadian;
        const PoseItem &tip = pose.objects.front();
        QVERIFY2(near(tip.x, 1000.0 * std::cos(radians), 1e-10), qPrintable(QString::number(t)));
        QVERIFY2(near(tip.y, 1000.0 * std::sin(radians), 1e-10), qPrintable(QString::number(t)));
    }
    // Right angles are exact.
    for (double angle : {0.0, 90.0, 180.0, 270.0, 360.0}) {
        rig.animation->timeline(0)->key(0)->info().angle = angle;
        evaluator.rebuild(rig.animation);
        evaluator.evaluate(0, pose);
        const double radians = angle / DisplayInfo::DegreesPerRadian;
        QCOMPARE(pose.objects.front().x, std::round(1000.0 * std::cos(radians)));
        QCOMPARE(pose.objects.front().y, std::round(1000.0 * std::sin(radians)));
    }
}

void TstPose::parentCycleTerminates()
{
    Rig rig;
    Timeline *a = rig.timeline(QStringLiteral("a"), Object::Bone);
    Timeline *b = rig.timeline(QStringLiteral("b"), Object::Bone, a);
    rig.key(a, 0, info(1, 0));
    rig.key(b, 0, info(2, 0));
    rig.link();
    MainlineKey *mk = rig.mainlineKey(0);
    mk->boneRef(0)->setParentRef(mk->boneRef(1)); // a <-> b

    Pose pose;
    PoseEvaluator(rig.animation).evaluate(0, pose);
    // The cycle is cut at one bone: each bone once, parents still first.
    QCOMPARE(pose.bones.size(), size_t(2));
    QVERIFY(pose.bones[0].timeline != pose.bones[1].timeline);
    QCOMPARE(pose.bones[0].parent, -1);
    QVERIFY(pose.bones[1].parent < 1);
    const DisplayInfo world = mk->boneRef(0)->unmappedInfo(0);
    QVERIFY(std::isfinite(world.x));
}

void TstPose::evaluatorMatchesModel()
{
    QRandomGenerator random(777);
    auto value = [&random](double lo, double hi) {
        return lo + (hi - lo) * random.generateDouble();
    };
    auto curve = [&]() {
        switch (random.bounded(6)) {
        case 0:
            return TweenInfo::instantInfo();
        case 1:
            return TweenInfo(value(-1, 2));
        case 2:
            return TweenInfo(value(0, 1), value(0, 1));
        case 3:
            return TweenInfo::createBezier(value(0, 1), value(-1, 2), value(0, 1), value(-1, 2));
        default:
            return TweenInfo();
        }
    };

    for (int round = 0; round < 6; ++round) {
        Rig rig(1000 + int(random.bounded(1000)), random.bounded(2) == 0);
        QList<Timeline *> bones;
        for (int i = 0; i < 12; ++i)
            bones.append(rig.timeline(QStringLiteral("b%1").arg(i), Object::Bone));
        // A random tree whose parents are not created first.
        QList<int> rank(bones.size());
        std::iota(rank.begin(), rank.end(), 0);
        std::shuffle(rank.begin(), rank.end(), random);
        for (int i = 0; i < bones.size(); ++i) {
            if (rank[i] == 0)
                continue;
            const int parentRank = int(random.bounded(rank[i]));
            rig.parentOf.insert(bones[i], bones[rank.indexOf(parentRank)]);
        }
        QList<Timeline *> sprites;
        for (int i = 0; i < 12; ++i) {
            Timeline *parent =
                random.bounded(4) ? bones[int(random.bounded(bones.size()))] : nullptr;
            sprites.append(rig.timeline(QStringLiteral("s%1").arg(i), Object::Sprite, parent));
            // Some inherit only part of their parent's state.
            Object *object = sprites.last()->object();
            object->setInheritPos(random.bounded(4) != 0);
            object->setInheritAngle(random.bounded(4) != 0);
            object->setInheritScale(random.bounded(4) != 0);
        }
        for (Timeline *tl : bones + sprites) {
            QList<int> times{0};
            for (int k = 0; k < 5; ++k)
                times.append(int(random.bounded(rig.animation->length())));
            for (int t : times) {
                if (tl->actualKeyFromTime(t))
                    continue;
                auto scale = [&]() { return random.bounded(5) ? value(0.2, 2) : -value(0.2, 2); };
                rig.key(tl, t,
                        info(value(-100, 100), value(-100, 100), value(0, 360), scale(), scale(),
                             value(0, 1)),
                        curve());
            }
        }
        rig.link();
        for (int m = 0; m < rig.animation->mainlineKeyCount(); ++m)
            rig.animation->mainlineKey(m)->setCurve(curve());

        for (int probe = 0; probe < 200; ++probe) {
            const int t = int(random.bounded(rig.animation->length() + 1));
            const Pose pose = poseAt(rig.animation, t); // compares with the model
            const MainlineKey *mk = rig.animation->mainlineKeyFromTime(t);
            QCOMPARE(pose.mainlineKey, mk);
            QCOMPARE(int(pose.bones.size()), mk->boneRefCount());
            QCOMPARE(int(pose.objects.size()), mk->zRefCount());
            for (size_t i = 0; i < pose.bones.size(); ++i) {
                QVERIFY(pose.bones[i].parent < int(i));
                QVERIFY(pose.bones[i].angle >= 0.0 && pose.bones[i].angle <= 360.0);
            }
            // Without a parent nothing is composed: the blend is the model's
            // to the bit, whichever pair of keys was prepared ahead.
            const int sampleTime = rig.animation->sampleTime(t);
            for (const auto *list : {&pose.bones, &pose.objects}) {
                for (const PoseItem &item : *list) {
                    if (item.ref->parentRef())
                        continue;
                    const DisplayInfo local = item.ref->unmappedInfo(sampleTime);
                    QVERIFY(local.x == item.x && local.y == item.y);
                    QVERIFY(local.angle == item.angle);
                    QVERIFY(local.xScale == item.xScale && local.yScale == item.yScale);
                    QVERIFY(local.alpha == item.alpha);
                }
            }
        }
    }
}

void TstPose::posingDoesNotAllocate()
{
    Rig rig;
    Timeline *bone = rig.timeline(QStringLiteral("bone"), Object::Bone);
    Timeline *sprite = rig.timeline(QStringLiteral("sprite"), Object::Sprite, bone);
    Timeline *child = rig.timeline(QStringLiteral("sub"), Object::SubEntity, bone);
    auto *other = new Entity(QStringLiteral("prop"));
    rig.document.appendEntity(other);
    auto *otherAnimation = new Animation(QStringLiteral("spin"));
    other->appendAnimation(otherAnimation);
    for (int t = 0; t < 1000; t += 100) {
        rig.key(bone, t, info(t, 0, t));
        rig.key(sprite, t, info(0, t), TweenInfo(0.3, 0.7));
        TimelineKey *k = rig.key(child, t, info(0, 0));
        k->entityInfo().animation = Address(&rig.document, {1, 0});
        k->entityInfo().timeRatio = t / 1000.0;
    }
    rig.link();

    EntityInstance instance(rig.entity);
    instance.setCurrentTime(0);
    QCOMPARE(instance.subEntityCount(), 1);
    const long before = sAllocations.load();
    for (int t = 0; t <= 1000; t += 7)
        instance.setCurrentTime(t);
    instance.advanceTime(16);
    QCOMPARE(sAllocations.load() - before, 0L);
    QCOMPARE(instance.subEntity(0)->currentAnimation(), otherAnimation);
}

QTEST_GUILESS_MAIN(TstPose)
#include "tst_pose.moc"
