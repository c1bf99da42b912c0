// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "eval/entityinstance.h"
#include "evaltesthelpers.h"
#include "io/projectfile.h"

#include <QTest>

using namespace Morvane;
using Morvane::Testing::info;
using Morvane::Testing::Rig;

namespace {

/// A parent entity ("hero", animation "walk", 1000 ms) whose one sub-entity
/// timeline shows entity 1 ("prop"), which has an animation of `propLength`.
struct SubRig
{
    explicit SubRig(int propLength = 1000)
    {
        prop = new Entity(QStringLiteral("prop"));
        rig.document.appendEntity(prop);
        propAnimation = new Animation(QStringLiteral("spin"));
        propAnimation->setLength(propLength);
        prop->appendAnimation(propAnimation);
        propAnimation->appendMainlineKey(new MainlineKey, 0, true, true);
        sub = rig.timeline(QStringLiteral("prop"), Object::SubEntity);
    }

    TimelineKey *key(int time, int method, double timeRatio, double speedRatio,
                     const Address &animation)
    {
        TimelineKey *k = rig.key(sub, time, info(0, 0));
        k->entityInfo().animation = animation;
        k->entityInfo().ratioControlMethod = method;
        k->entityInfo().timeRatio = timeRatio;
        k->entityInfo().speedRatio = speedRatio;
        return k;
    }

    Address propAddress() { return Address(&rig.document, {1, 0}); }

    Rig rig;
    Entity *prop = nullptr;
    Animation *propAnimation = nullptr;
    Timeline *sub = nullptr;
};

/// How many sub-entity instances each level below `instance` holds.
void countLevels(const EntityInstance &instance, QList<int> *levels)
{
    for (int i = 0; i < instance.subEntityCount(); ++i) {
        const SubEntityInstance *sub = instance.subEntity(i);
        while (levels->size() < sub->depth())
            levels->append(0);
        ++(*levels)[sub->depth() - 1];
        countLevels(*sub, levels);
    }
}

} // namespace

class TstEntityInstance : public QObject
{
    Q_OBJECT

private slots:
    void defaultsToFirstAnimation();
    void timeRatio_data();
    void timeRatio();
    void speedRatio_data();
    void speedRatio();
    void nestedSpeedScalesTheStep();
    void subEntityHiddenWithoutReference();
    void selfContainingEntityStops();
    void instanceBudget_data();
    void instanceBudget();
    void invalidateReadsEdits();
};

void TstEntityInstance::defaultsToFirstAnimation()
{
    Rig rig;
    EntityInstance instance(rig.entity);
    QCOMPARE(instance.currentAnimation(), rig.animation);
    instance.setCurrentTime(10);
    QVERIFY(instance.pose().bones.empty());
    QCOMPARE(instance.pose().mainlineKey, nullptr);

    EntityInstance empty;
    empty.setCurrentTime(5);
    QCOMPARE(empty.pose().animation, nullptr);
    QCOMPARE(empty.currentTime(true), 5);
}

void TstEntityInstance::timeRatio_data()
{
    QTest::addColumn<int>("propLength");
    QTest::addColumn<double>("ratio");
    QTest::addColumn<bool>("resolves");
    QTest::addColumn<int>("expected");

    QTest::newRow("half of 750") << 750 << 0.5 << true << 375;
    QTest::newRow("a third of 1000 truncates") << 1000 << 0.3333 << true << 333;
    QTest::newRow("ratio 1 is the end") << 640 << 1.0 << true << 640;
    QTest::newRow("unresolved uses 1000") << 750 << 0.25 << false << 250;
}

void TstEntityInstance::timeRatio()
{
    QFETCH(int, propLength);
    QFETCH(double, ratio);
    QFETCH(bool, resolves);
    QFETCH(int, expected);

    SubRig s(propLength);
    s.key(0, EntityInfo::TimeRatioControl, ratio, 1.0,
          resolves ? s.propAddress() : Address(&s.rig.document, {7, 3}));
    s.rig.link();

    EntityInstance instance(s.rig.entity);
    instance.setCurrentTime(0);
    QCOMPARE(instance.subEntityCount(), 1);
    SubEntityInstance *sub = instance.subEntity(0);
    QVERIFY(sub->isShown());
    QCOMPARE(sub->currentTime(), expected);
    QCOMPARE(sub->currentAnimation(), resolves ? s.propAnimation : nullptr);
    QCOMPARE(sub->depth(), 1);
    QCOMPARE(instance.subEntityForTimeline(0), sub);
}

void TstEntityInstance::speedRatio_data()
{
    QTest::addColumn<double>("speed");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("expected");

    QTest::newRow("double speed") << 2.0 << 0 << 40 << 80;
    QTest::newRow("wraps past the end") << 2.0 << 980 << 40 << 60;
    QTest::newRow("the end itself stays") << 1.0 << 960 << 40 << 1000;
    QTest::newRow("backwards wraps below 0") << -2.0 << 30 << 40 << 950;
    QTest::newRow("truncates toward zero") << 0.5 << 0 << 3 << 1;
    QTest::newRow("truncates backwards toward zero") << -0.5 << 500 << 3 << 498;
    QTest::newRow("many lengths at once") << 100.0 << 10 << 100 << 10;
    QTest::newRow("zero step does nothing") << 2.0 << 123 << 0 << 123;
}

void TstEntityInstance::speedRatio()
{
    QFETCH(double, speed);
    QFETCH(int, start);
    QFETCH(int, step);
    QFETCH(int, expected);

    SubRig s;
    s.key(0, EntityInfo::SpeedRatioControl, 0.0, speed, s.propAddress());
    s.rig.link();

    EntityInstance instance(s.rig.entity);
    instance.setCurrentTime(0);
    SubEntityInstance *sub = instance.subEntity(0);
    sub->setCurrentTime(start);
    instance.advanceTime(step);
    QCOMPARE(sub->currentTime(), expected);
    // Re-posing the parent keeps the sub-entity's own clock.
    instance.setCurrentTime(500);
    QCOMPARE(sub->currentTime(), expected);
}

void TstEntityInstance::nestedSpeedScalesTheStep()
{
    // hero shows prop at speed 2.5; prop shows gem at speed 1: gem moves by
    // the truncated scaled step.
    SubRig s;
    s.key(0, EntityInfo::SpeedRatioControl, 0.0, 2.5, s.propAddress());
    s.rig.link();

    auto *gem = new Entity(QStringLiteral("gem"));
    s.rig.document.appendEntity(gem);
    auto *gemAnimation = new Animation(QStringLiteral("shine"));
    gemAnimation->setLength(5000);
    gem->appendAnimation(gemAnimation);

    auto *gemObject = new Object(QStringLiteral("gem"), Object::SubEntity);
    s.prop->appendObject(gemObject);
    Timeline *gemLine = s.propAnimation->appendObjectAsTimeline(gemObject);
    auto *gemKey = new TimelineKey;
    gemKey->setCachedTime(0);
    gemKey->entityInfo().animation = Address(&s.rig.document, {2, 0});
    gemKey->entityInfo().ratioControlMethod = EntityInfo::SpeedRatioControl;
    gemKey->entityInfo().speedRatio = 1.0;
    gemLine->appendTimelineKey(gemKey);
    s.propAnimation->mainlineKey(0)->appendRef(gemLine, 0);

    EntityInstance instance(s.rig.entity);
    instance.setCurrentTime(0);
    SubEntityInstance *prop = instance.subEntity(0);
    QCOMPARE(prop->subEntityCount(), 1);
    SubEntityInstance *shine = prop->subEntity(0);
    QCOMPARE(shine->currentAnimation(), gemAnimation);
    QCOMPARE(shine->depth(), 2);

    instance.advanceTime(41); // 102.5
    QCOMPARE(prop->currentTime(), 102);
    QCOMPARE(shine->currentTime(), 102);
    instance.advanceTime(-1); // -2.5
    QCOMPARE(prop->currentTime(), 99);
    QCOMPARE(shine->currentTime(), 100);
}

void TstEntityInstance::subEntityHiddenWithoutReference()
{
    SubRig s;
    s.key(500, EntityInfo::TimeRatioControl, 0.5, 1.0, s.propAddress());
    s.rig.mainlineKey(0);
    s.rig.link(); // the key at 0 has no reference: nothing is keyed there yet

    EntityInstance instance(s.rig.entity);
    instance.setCurrentTime(100);
    QVERIFY(!instance.subEntity(0)->isShown());
    instance.setCurrentTime(600);
    QVERIFY(instance.subEntity(0)->isShown());
    QCOMPARE(instance.subEntity(0)->currentTime(), 500);
}

void TstEntityInstance::selfContainingEntityStops()
{
    // The hero shows itself: the nesting must end, with one warning.
    Rig rig;
    Timeline *self = rig.timeline(QStringLiteral("self"), Object::SubEntity);
    TimelineKey *k = rig.key(self, 0, info(0, 0));
    k->entityInfo().animation = Address(&rig.document, {0, 0});
    k->entityInfo().timeRatio = 0.5;
    rig.link();

    EntityInstance instance(rig.entity);
    instance.setCurrentTime(0);
    instance.setCurrentTime(10);
    instance.advanceTime(16);

    QCOMPARE(instance.warnings().size(), 1);
    QVERIFY(instance.warnings().first().contains(QLatin1String("deeper than 8 levels")));
    QVERIFY(instance.nestingLimitReached());
    QVERIFY(!instance.instanceLimitReached());
    QCOMPARE(instance.subEntityInstanceCount(), EntityInstance::MaxNestingDepth);
    int levels = 0;
    for (const EntityInstance *i = &instance; i->subEntityCount() > 0; i = i->subEntity(0))
        ++levels;
    QCOMPARE(levels, EntityInstance::MaxNestingDepth);
}

void TstEntityInstance::instanceBudget_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QList<int>>("levels");

    // Copies multiply per level; the budget fills the upper levels whole and
    // leaves the rest of the first level it cannot finish (2000 in all).
    QTest::newRow("five copies of itself")
        << QStringLiteral("self-copies-5.rigx") << QList<int>{5, 25, 125, 625, 1220};
    QTest::newRow("six copies of itself")
        << QStringLiteral("self-copies-6.rigx") << QList<int>{6, 36, 216, 1296, 446};
    QTest::newRow("nine entities, six copies of the next each, no cycle")
        << QStringLiteral("fanout-chain.rigx") << QList<int>{6, 36, 216, 1296, 446};
}

void TstEntityInstance::instanceBudget()
{
    QFETCH(QString, file);
    QFETCH(QList<int>, levels);

    RigxData document;
    QString error;
    QVERIFY2(ProjectFile::open(&document, QStringLiteral(MORVANE_TEST_DATA_DIR "/hostile/") + file,
                               nullptr, &error),
             qPrintable(error));
    EntityInstance instance(document.entity(0));
    instance.setCurrentTime(0);
    instance.advanceTime(16);
    instance.setCurrentTime(700);

    QCOMPARE(instance.subEntityInstanceCount(), EntityInstance::MaxSubEntityInstances);
    QList<int> counted;
    countLevels(instance, &counted);
    QCOMPARE(counted, levels);
    QVERIFY(instance.instanceLimitReached());
    QVERIFY(!instance.nestingLimitReached());
    QCOMPARE(instance.warnings().size(), 1);
    QVERIFY(instance.warnings().first().contains(QLatin1String("more than 2000 sub-entity")));

    // The deepest instances made are placeholders' parents: shown, posed, and
    // without children of their own.
    const EntityInstance *deepest = &instance;
    while (deepest->subEntityCount() > 0)
        deepest = deepest->subEntity(0);
    QCOMPARE(deepest->depth(), levels.size());
    QVERIFY(!deepest->pose().objects.empty());
    QCOMPARE(deepest->subEntityForTimeline(0), nullptr);
}

void TstEntityInstance::invalidateReadsEdits()
{
    Rig rig;
    Timeline *sprite = rig.timeline(QStringLiteral("s"));
    TimelineKey *k = rig.key(sprite, 0, info(5, 0));
    rig.link();

    EntityInstance instance(rig.entity);
    instance.setCurrentTime(0);
    QCOMPARE(instance.pose().objects.front().x, 5.0);
    k->info().x = 7.0;
    instance.invalidate();
    instance.refresh();
    QCOMPARE(instance.pose().objects.front().x, 7.0);
}

QTEST_GUILESS_MAIN(TstEntityInstance)
#include "tst_entityinstance.moc"
