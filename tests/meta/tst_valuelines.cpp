// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/valline.h"
#include "meta/valuelineholder.h"

#include <QPointF>
#include <QTest>

#include <limits>

using namespace Morvane;

class TestValueLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tweenableLine_data();
    void tweenableLine();
    void easedCurveIsUsed();
    void stringStepping_data();
    void stringStepping();
    void tagStepping_data();
    void tagStepping();
    void setKeyReplacesAndSorts();
    void setKeyTimeMovesOntoKey();
    void setKeysSortsAndKeepsLast();
    void offsetSaturatesAndMerges();
    void createTempKeyKeepsValueAndCurve();
    void holderLookupsAndBulkOperations();
    void holderCopyIsDeep();
    void clusterLineYieldsDefault();
    void hostileTimesDoNotOverflow();
    void varTypeNames();
};

static std::unique_ptr<IntLine> makeIntLine(const QList<QPair<int, int>> &keys)
{
    auto line = std::make_unique<IntLine>(0);
    for (const auto &k : keys)
        line->setKey(std::make_unique<IntKey>(k.first, k.second));
    return line;
}

static std::unique_ptr<FloatLine> makeFloatLine(const QList<QPair<int, double>> &keys)
{
    auto line = std::make_unique<FloatLine>(0);
    for (const auto &k : keys)
        line->setKey(std::make_unique<FloatKey>(k.first, k.second));
    return line;
}

void TestValueLines::tweenableLine_data()
{
    QTest::addColumn<bool>("isInt");
    QTest::addColumn<QList<QPointF>>("keys"); // (time, value), linear
    QTest::addColumn<int>("time");
    QTest::addColumn<bool>("looping");
    QTest::addColumn<double>("expected");

    // Length 1000, default 7.
    const QList<QPointF> up{{0, 0}, {100, 10}};
    QTest::newRow("int 2.5 truncates to 2") << true << up << 25 << false << 2.0;
    QTest::newRow("int at second key") << true << up << 100 << false << 10.0;
    QTest::newRow("int after last key holds") << true << up << 500 << false << 10.0;
    QTest::newRow("int at length") << true << up << 1000 << false << 10.0;
    QTest::newRow("int below 0 gives default") << true << up << -5 << false << 7.0;
    QTest::newRow("int past length gives default") << true << up << 1001 << false << 7.0;
    QTest::newRow("int below 0 looping gives default") << true << up << -5 << true << 7.0;
    // Looping: from 100 the value blends back toward 0 at 1000 (ratio 450/900).
    QTest::newRow("int looping wrap 10 to 0 at 550") << true << up << 550 << true << 5.0;
    // Truncation is toward zero: 1 to 2 at 0.99 gives 1, -1 to -2 at 0.5 gives -1.
    QTest::newRow("int 1.99 gives 1")
        << true << QList<QPointF>{{0, 1}, {100, 2}} << 99 << false << 1.0;
    const QList<QPointF> down{{0, -1}, {100, -2}};
    QTest::newRow("int -1.99 gives -1") << true << down << 99 << false << -1.0;
    QTest::newRow("int at -2") << true << down << 100 << false << -2.0;
    QTest::newRow("int empty line gives default") << true << QList<QPointF>{} << 10 << true << 7.0;

    // Float lines have no range check.
    QTest::newRow("float 25") << false << up << 25 << false << 2.5;
    QTest::newRow("float -5 gives the first key") << false << up << -5 << false << 0.0;
    QTest::newRow("float past length gives the last key") << false << up << 1001 << false << 10.0;
    // Looping past the length keeps blending across the loop point:
    // a = 10 at 100, b = 0 at 1000; ratio (1100 - 100) / 900.
    QTest::newRow("float past length looping wraps")
        << false << up << 1100 << true << 10.0 - 10.0 * 1000.0 / 900.0;

    // Keys 0 at 100 and 10 at 900: the wrap from the last key to the first.
    const QList<QPointF> inner{{100, 0}, {900, 10}};
    QTest::newRow("950 looping: 10 toward 0 at ratio 0.25") << false << inner << 950 << true << 7.5;
    QTest::newRow("50 looping: before the first key, ratio 0.75")
        << false << inner << 50 << true << 2.5;
    QTest::newRow("950 not looping holds the last key") << false << inner << 950 << false << 10.0;
    QTest::newRow("50 not looping holds the first key") << false << inner << 50 << false << 0.0;
    QTest::newRow("500 between keys") << false << inner << 500 << true << 5.0;
}

void TestValueLines::tweenableLine()
{
    QFETCH(bool, isInt);
    QFETCH(QList<QPointF>, keys);
    QFETCH(int, time);
    QFETCH(bool, looping);
    QFETCH(double, expected);
    if (isInt) {
        IntLine line(0);
        for (const QPointF &k : keys)
            line.setKey(std::make_unique<IntKey>(int(k.x()), int(k.y())));
        QCOMPARE(line.valFromTime(time, looping, 7, 1000), int(expected));
        QCOMPARE(line.valueFromTime(time, looping, QVariant(7), 1000), QVariant(int(expected)));
    } else {
        FloatLine line(0);
        for (const QPointF &k : keys)
            line.setKey(std::make_unique<FloatKey>(int(k.x()), k.y()));
        QVERIFY(qAbs(line.valFromTime(time, looping, 7.0, 1000) - expected) < 1e-9);
    }
}

void TestValueLines::easedCurveIsUsed()
{
    // An instant key holds its value until the next key.
    auto line = makeFloatLine({{0, 0.0}, {100, 10.0}});
    line->key(0)->setCurve(TweenInfo::instantInfo());
    QCOMPARE(line->valFromTime(99, false, 0.0, 1000), 0.0);
    QCOMPARE(line->valFromTime(100, false, 0.0, 1000), 10.0);
    // A quadratic curve with c1 = 0 eases in: at half time t^2 = 0.25.
    line->key(0)->setCurve(TweenInfo(0.0));
    QCOMPARE(line->valFromTime(50, false, 0.0, 1000), 2.5);

    const ValKey *a = nullptr;
    const ValKey *b = nullptr;
    double ratio = -1.0;
    line->valKeyAAndBFromTime(50, 1000, false, &a, &b, &ratio);
    QCOMPARE(a, line->key(0));
    QCOMPARE(b, line->key(1));
    QCOMPARE(ratio, 0.25);
    // One key only: no pair even when looping.
    FloatLine single(0);
    single.setKey(std::make_unique<FloatKey>(300, 4.0));
    single.valKeyAAndBFromTime(100, 1000, true, &a, &b, &ratio);
    QCOMPARE(a, single.key(0));
    QVERIFY(!b);
    QCOMPARE(ratio, 0.0);
}

void TestValueLines::stringStepping_data()
{
    QTest::addColumn<int>("time");
    QTest::addColumn<bool>("looping");
    QTest::addColumn<QString>("expected");

    // Keys "a" at 200 and "b" at 600, default "def".
    QTest::newRow("before first, not looping") << 100 << false << QStringLiteral("def");
    QTest::newRow("before first, looping") << 100 << true << QStringLiteral("b");
    QTest::newRow("exactly at first") << 200 << false << QStringLiteral("a");
    QTest::newRow("between") << 599 << false << QStringLiteral("a");
    QTest::newRow("exactly at second") << 600 << true << QStringLiteral("b");
    QTest::newRow("after last") << 5000 << false << QStringLiteral("b");
}

void TestValueLines::stringStepping()
{
    QFETCH(int, time);
    QFETCH(bool, looping);
    QFETCH(QString, expected);
    StringLine line(3);
    line.setKey(std::make_unique<StringKey>(600, QStringLiteral("b")));
    line.setKey(std::make_unique<StringKey>(200, QStringLiteral("a")));
    QCOMPARE(line.valFromTime(time, looping, QStringLiteral("def")), expected);

    // Unlike tweenable lines, a single key wraps too.
    StringLine single(3);
    single.setKey(std::make_unique<StringKey>(200, QStringLiteral("only")));
    QCOMPARE(single.valFromTime(100, true, QStringLiteral("def")), QStringLiteral("only"));
    StringLine empty(3);
    QCOMPARE(empty.valFromTime(100, true, QStringLiteral("def")), QStringLiteral("def"));
}

void TestValueLines::tagStepping_data()
{
    QTest::addColumn<int>("time");
    QTest::addColumn<bool>("looping");
    QTest::addColumn<QList<int>>("expected");

    // Keys {1, 2} at 500 and {3} at 800.
    QTest::newRow("before first, looping wraps from the end") << 100 << true << QList<int>{3};
    QTest::newRow("before first, not looping is empty") << 100 << false << QList<int>{};
    QTest::newRow("at first") << 500 << false << QList<int>{1, 2};
    QTest::newRow("between") << 700 << false << QList<int>{1, 2};
    QTest::newRow("after last") << 900 << false << QList<int>{3};
}

void TestValueLines::tagStepping()
{
    QFETCH(int, time);
    QFETCH(bool, looping);
    QFETCH(QList<int>, expected);
    TagLine line;
    line.setKey(std::make_unique<TagKey>(800, TagState({3})));
    line.setKey(std::make_unique<TagKey>(500, TagState({2, 1})));
    QCOMPARE(line.valFromTime(time, looping).ids(), expected);

    // The only key at 500: looping gives its set at 100, not looping nothing.
    TagLine single;
    single.setKey(std::make_unique<TagKey>(500, TagState({7})));
    QCOMPARE(single.valFromTime(100, true).ids(), QList<int>{7});
    QVERIFY(single.valFromTime(100, false).isEmpty());
    QVERIFY(TagLine().valFromTime(100, true).isEmpty());
}

void TestValueLines::setKeyReplacesAndSorts()
{
    IntLine line(0);
    QVERIFY(line.setKey(std::make_unique<IntKey>(300, 3)));
    QVERIFY(line.setKey(std::make_unique<IntKey>(100, 1)));
    QVERIFY(line.setKey(std::make_unique<IntKey>(200, 2)));
    QVERIFY(line.setKey(std::make_unique<IntKey>(200, 20)));
    QCOMPARE(line.keyCount(), 3);
    QCOMPARE(line.key(0)->time(), 100);
    QCOMPARE(line.key(1)->value(), QVariant(20));
    QCOMPARE(line.key(2)->time(), 300);
    // Ids follow positions.
    QCOMPARE(line.key(2)->id(), 2);
    // A key of another kind is refused.
    QVERIFY(!line.setKey(std::make_unique<FloatKey>(400, 1.0)));
    QVERIFY(!line.setKey(nullptr));
    QCOMPARE(line.keyCount(), 3);
}

void TestValueLines::setKeyTimeMovesOntoKey()
{
    auto line = makeIntLine({{0, 0}, {100, 1}, {200, 2}});
    QVERIFY(line->setKeyTime(0, 150));
    QCOMPARE(line->keyCount(), 3);
    QCOMPARE(line->key(1)->time(), 150);
    QCOMPARE(line->key(1)->value(), QVariant(0));
    // Moving onto another key replaces it.
    QVERIFY(line->setKeyTime(150, 200));
    QCOMPARE(line->keyCount(), 2);
    QCOMPARE(line->key(1)->value(), QVariant(0));
    QVERIFY(!line->setKeyTime(999, 5));
}

void TestValueLines::setKeysSortsAndKeepsLast()
{
    // A long line given backwards, with one time given twice.
    const int count = 20000;
    std::vector<std::unique_ptr<ValKey>> keys;
    for (int i = count; i-- > 0;)
        keys.push_back(std::make_unique<IntKey>(i * 10, i));
    keys.push_back(std::make_unique<IntKey>(50, -1));
    keys.push_back(nullptr);
    keys.push_back(std::make_unique<StringKey>(7, QStringLiteral("wrong kind")));
    IntLine line(0);
    line.setKeys(std::move(keys));
    QCOMPARE(line.keyCount(), count);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(line.key(i)->time(), i * 10);
        QCOMPARE(line.key(i)->id(), i);
    }
    QCOMPARE(line.keyAtTime(50)->value(), QVariant(-1));
    QCOMPARE(line.keyAtTime(60)->value(), QVariant(6));
    QVERIFY(!line.keyAtTime(55));
    QCOMPARE(line.indexOfKeyAtTime(count * 10 - 10), count - 1);
    // Inserting in the middle renumbers what follows.
    QVERIFY(line.setKey(std::make_unique<IntKey>(15, 100)));
    QCOMPARE(line.key(2)->time(), 15);
    QCOMPARE(line.key(count)->id(), count);
}

void TestValueLines::offsetSaturatesAndMerges()
{
    auto line = makeIntLine({{0, 1}, {100, 2}, {std::numeric_limits<int>::max() - 5, 3}});
    line->offsetAllKeys(-100);
    QCOMPARE(line->key(0)->time(), -100);
    QCOMPARE(line->key(1)->time(), 0);
    line->offsetAllKeys(std::numeric_limits<int>::max());
    // The last two keys both reach the largest time: the later one stays.
    QCOMPARE(line->keyCount(), 2);
    QCOMPARE(line->key(1)->time(), std::numeric_limits<int>::max());
    QCOMPARE(line->key(1)->value(), QVariant(3));
    QCOMPARE(line->key(1)->id(), 1);
}

void TestValueLines::createTempKeyKeepsValueAndCurve()
{
    auto line = makeIntLine({{0, 0}, {100, 10}});
    line->key(0)->setCurve(TweenInfo(0.25, 0.75));
    const int shown = line->valFromTime(40, false, 0, 1000);
    std::unique_ptr<ValKey> key = line->createTempKeyFromTime(40, false, 0, 1000);
    QCOMPARE(key->type(), VarType::Int);
    QCOMPARE(key->time(), 40);
    QCOMPARE(key->value(), QVariant(shown));
    QVERIFY(key->curve().isCubic());

    StringLine strings(1);
    std::unique_ptr<ValKey> s = strings.createTempKeyFromTime(10, false, QStringLiteral("d"), 100);
    QCOMPARE(s->value(), QVariant(QStringLiteral("d")));
}

void TestValueLines::holderLookupsAndBulkOperations()
{
    ValueLineHolder holder;
    const LineId ints{VarType::Int, 2};
    const LineId strings{VarType::String, 0};
    QVERIFY(!holder.line(ints));
    QCOMPARE(holder.earliestTime(), ValueLineHolder::NoTime);
    QVERIFY(!holder.anyValLinesHaveKeys());
    // No line: the default, converted to the type.
    QCOMPARE(holder.valueFromTime(ints, 10, 1000, true, QVariant(3.7)), QVariant(3));

    holder.lineForEditing(ints)->setKey(std::make_unique<IntKey>(300, 5));
    holder.lineForEditing(strings)->setKey(std::make_unique<StringKey>(250, QStringLiteral("x")));
    holder.tagLine().setKey(std::make_unique<TagKey>(400, TagState({1})));
    QCOMPARE(holder.lineCount(), 2);
    // Lines are ordered by type, then variable id.
    QCOMPARE(holder.lineAt(0)->type(), VarType::String);
    QCOMPARE(holder.earliestTime(), 250);
    QVERIFY(holder.anyValLinesHaveKeys());
    QCOMPARE(holder.valueFromTime(ints, 500, 1000, false, 0), QVariant(5));
    QCOMPARE(holder.tagStateFromTime(500, false).ids(), QList<int>{1});

    holder.offsetAllKeys(-50);
    QCOMPARE(holder.earliestTime(), 200);
    QCOMPARE(holder.line(ints)->key(0)->time(), 250);
    QCOMPARE(holder.tagLine().key(0)->time(), 350);

    holder.clearAllKeys();
    QVERIFY(!holder.anyValLinesHaveKeys());
    QCOMPARE(holder.earliestTime(), ValueLineHolder::NoTime);

    // The tag line alone counts as keys.
    holder.tagLine().setKey(std::make_unique<TagKey>(0, TagState()));
    QVERIFY(holder.anyValLinesHaveKeys());
    QCOMPARE(holder.earliestTime(), 0);
}

void TestValueLines::holderCopyIsDeep()
{
    ValueLineHolder holder;
    holder.lineForEditing({VarType::Float, 0})->setKey(std::make_unique<FloatKey>(0, 1.0));
    ValueLineHolder copy = holder;
    QVERIFY(copy == holder);
    copy.line({VarType::Float, 0})->key(0)->setValue(2.0);
    QCOMPARE(holder.line({VarType::Float, 0})->key(0)->value(), QVariant(1.0));
    QVERIFY(copy != holder);
    // An empty line counts as no line.
    ValueLineHolder withEmpty = holder;
    withEmpty.lineForEditing({VarType::Int, 9});
    QVERIFY(withEmpty == holder);
}

void TestValueLines::clusterLineYieldsDefault()
{
    ClusterLine line(4);
    line.setKey(std::make_unique<ClusterKey>(0, QVariantList{1, 2}));
    QCOMPARE(line.keyCount(), 1);
    QCOMPARE(line.valueFromTime(0, false, QVariant(QStringLiteral("d")), 100),
             QVariant(QStringLiteral("d")));
}

void TestValueLines::hostileTimesDoNotOverflow()
{
    const int big = std::numeric_limits<int>::max();
    auto line = makeFloatLine({{big - 1, 1.0}, {-big, 3.0}});
    // Only finiteness matters here: the sums must not overflow.
    QVERIFY(std::isfinite(line->valFromTime(0, true, 0.0, big)));
    QVERIFY(std::isfinite(line->valFromTime(big, true, 0.0, big)));
    auto ints =
        makeIntLine({{0, std::numeric_limits<int>::max()}, {10, std::numeric_limits<int>::min()}});
    QCOMPARE(ints->valFromTime(0, false, 0, 100), std::numeric_limits<int>::max());
    QCOMPARE(ints->valFromTime(10, false, 0, 100), std::numeric_limits<int>::min());
}

void TestValueLines::varTypeNames()
{
    const QList<QPair<QString, VarType>> types = {{QStringLiteral("invalid"), VarType::Invalid},
                                                  {QStringLiteral("cluster"), VarType::Cluster},
                                                  {QStringLiteral("string"), VarType::String},
                                                  {QStringLiteral("int"), VarType::Int},
                                                  {QStringLiteral("float"), VarType::Float},
                                                  {QStringLiteral("tag"), VarType::Tag}};
    for (const auto &[name, type] : types) {
        QCOMPARE(varTypeFromString(name), type);
        QCOMPARE(varTypeToString(type), name);
        QCOMPARE(varTypeFromString(name.toUpper()), VarType::Invalid);
    }
    QCOMPARE(varTypeFromString(QStringLiteral("double")), VarType::Invalid);
}

QTEST_GUILESS_MAIN(TestValueLines)
#include "tst_valuelines.moc"
