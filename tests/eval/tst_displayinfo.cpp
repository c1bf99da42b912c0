// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/displayinfo.h"
#include "model/entityinfo.h"
#include "evaltesthelpers.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>

using namespace Morvane;
using Morvane::Testing::describe;
using Morvane::Testing::differs;
using Morvane::Testing::info;
using Morvane::Testing::near;
using Morvane::Testing::sameAngle;

Q_DECLARE_METATYPE(Morvane::DisplayInfo)

class TstDisplayInfo : public QObject
{
    Q_OBJECT

private slots:
    void blendAngles_data();
    void blendAngles();
    void blendFields();
    void compose_data();
    void compose();
    void identityParentLeavesChild();
    void mapToParentAndReparentRoundTrip();
    void offsets_data();
    void offsets();
    void normalizeAngleAndScale_data();
    void normalizeAngleAndScale();
    void normalizedAngle_data();
    void normalizedAngle();
    void spin_data();
    void spin();
    void hostileAnglesTerminate();
    void entityInfoBlend_data();
    void entityInfoBlend();
};

void TstDisplayInfo::blendAngles_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<double>("r");
    QTest::addColumn<double>("expected");

    QTest::newRow("350 to 10 through 0") << 350.0 << 10.0 << 0.5 << 0.0;
    QTest::newRow("10 to 350 at a quarter") << 10.0 << 350.0 << 0.25 << 5.0;
    QTest::newRow("350 to 10 at a quarter") << 350.0 << 10.0 << 0.25 << 355.0;
    QTest::newRow("plain") << 30.0 << 90.0 << 0.5 << 60.0;
    QTest::newRow("exactly half a turn goes up") << 0.0 << 180.0 << 0.5 << 90.0;
    QTest::newRow("270 to 0 goes up") << 270.0 << 0.0 << 0.5 << 315.0;
    QTest::newRow("0 to 270 goes down") << 0.0 << 270.0 << 0.5 << 315.0;
    QTest::newRow("ratio 1 is the target") << 350.0 << 10.0 << 1.0 << 10.0;
    QTest::newRow("overshoot wraps") << 350.0 << 10.0 << 2.0 << 30.0;
    QTest::newRow("undershoot wraps") << 10.0 << 30.0 << -1.0 << 350.0;
}

void TstDisplayInfo::blendAngles()
{
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(double, r);
    QFETCH(double, expected);
    const DisplayInfo blended(info(0, 0, from), info(0, 0, to), r);
    QVERIFY2(sameAngle(blended.angle, expected), qPrintable(QString::number(blended.angle)));
    QVERIFY(blended.angle >= 0.0 && blended.angle <= 360.0);
}

void TstDisplayInfo::blendFields()
{
    DisplayInfo a = info(10, 20, 0, 1, 2, 1);
    a.width = 100;
    a.height = 50;
    a.color = QColor(Qt::red);
    DisplayInfo b = info(30, -20, 0, 3, -2, 0);
    b.width = 200;
    b.height = 0;
    b.color = QColor(Qt::blue);

    const DisplayInfo quarter(a, b, 0.25);
    QCOMPARE(quarter.x, 15.0);
    QCOMPARE(quarter.y, 10.0);
    QCOMPARE(quarter.xScale, 1.5);
    QCOMPARE(quarter.yScale, 1.0);
    QCOMPARE(quarter.alpha, 0.75);
    QCOMPARE(quarter.width, 125.0);
    QCOMPARE(quarter.height, 37.5);
    QCOMPARE(quarter.color, QColor(Qt::red));

    Testing::Rig rig;
    File *image = rig.file(QStringLiteral("arm.png"), 0.25, 0.75);
    a.setPivotX(0.1);
    a.setPivotY(0.2);
    a.setDefaultPivot(true, image->address());
    b.setPivotX(0.9);
    b.setPivotY(0.8);

    // Only a follows the file: the blend keeps a's own pivot and no flag.
    const DisplayInfo mixed(a, b, 0.5);
    QVERIFY(!mixed.defaultPivot());
    QCOMPARE(mixed.pivotX(true), 0.1);
    QCOMPARE(mixed.pivotY(true), 0.2);

    // Both follow their files: the blend reads a's file.
    b.setDefaultPivot(true, Address());
    const DisplayInfo both(a, b, 0.5);
    QVERIFY(both.defaultPivot());
    QCOMPARE(both.pivotX(true), 0.25);
    QCOMPARE(both.pivotY(true), 0.75);
    QCOMPARE(both.pivotX(false), 0.1);
    QCOMPARE(both.fileLink().file(), image);
}

void TstDisplayInfo::compose_data()
{
    QTest::addColumn<DisplayInfo>("parent");
    QTest::addColumn<DisplayInfo>("child");
    QTest::addColumn<DisplayInfo>("expected");

    QTest::newRow("turned and stretched bone")
        << info(100, 100, 90, 2, 1) << info(10, 0) << info(100, 120, 90, 2, 1);
    QTest::newRow("scale before rotation")
        << info(0, 0, 90, 1, 3) << info(0, 10) << info(-30, 0, 90, 1, 3);
    QTest::newRow("mirrored x plus parent angle")
        << info(0, 0, 20, -1, 1) << info(0, 0, 30) << info(0, 0, 350, -1, 1);
    QTest::newRow("mirrored y reverses angle")
        << info(0, 0, 0, 1, -1) << info(0, 0, 30) << info(0, 0, 330, 1, -1);
    QTest::newRow("both mirrored keeps sense")
        << info(0, 0, 0, -1, -1) << info(10, 0, 30) << info(-10, 0, 30, -1, -1);
    QTest::newRow("angles wrap") << info(5, 5, 300) << info(0, 0, 90) << info(5, 5, 30);
}

void TstDisplayInfo::compose()
{
    QFETCH(DisplayInfo, parent);
    QFETCH(DisplayInfo, child);
    QFETCH(DisplayInfo, expected);
    const QString wrong = differs(child.unmapFromParentInfo(parent), expected);
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong));
}

void TstDisplayInfo::identityParentLeavesChild()
{
    DisplayInfo identity;
    identity.color = QColor(Qt::white);
    QVERIFY(identity.isIdentityInfo());
    DisplayInfo notIdentity = identity;
    notIdentity.alpha = 0.5;
    QVERIFY(!notIdentity.isIdentityInfo());
    // No tint is not white.
    QVERIFY(!DisplayInfo().isIdentityInfo());

    DisplayInfo child = info(3, 4, 400, 2, 2, 0.5);
    const DisplayInfo world = child.unmapFromParentInfo(identity);
    QCOMPARE(world.angle, 400.0); // returned untouched, not even normalised
    QCOMPARE(world.x, 3.0);
    QCOMPARE(child.mapToParentInfo(identity).angle, 400.0);
}

// Random parents, mirrored or not: mapping a world info back gives the local
// one, and reparenting keeps the world info.
void TstDisplayInfo::mapToParentAndReparentRoundTrip()
{
    QRandomGenerator random(424242);
    auto value = [&random](double lo, double hi) {
        return lo + (hi - lo) * random.generateDouble();
    };
    auto scale = [&](void) {
        const double s = value(0.1, 3.0);
        return random.bounded(2) ? s : -s;
    };
    auto parent = [&]() {
        return info(value(-500, 500), value(-500, 500), value(0, 360), scale(), scale(),
                    value(0.05, 1));
    };
    for (int i = 0; i < 2000; ++i) {
        const DisplayInfo oldParent = parent();
        const DisplayInfo newParent = parent();
        const DisplayInfo local =
            info(value(-500, 500), value(-500, 500), value(0, 360), scale(), scale(), value(0, 1));
        const DisplayInfo world = local.unmapFromParentInfo(oldParent);
        const DisplayInfo back = world.mapToParentInfo(oldParent);
        QString wrong = differs(back, local, 1e-7);
        QVERIFY2(wrong.isEmpty(), qPrintable(describe(oldParent) + QLatin1Char(' ') + wrong));
        QVERIFY(back.angle >= 0.0 && back.angle <= 360.0);
        const DisplayInfo moved = local.reparentedInfo(oldParent, newParent);
        wrong = differs(moved.unmapFromParentInfo(newParent), world, 1e-7);
        QVERIFY2(wrong.isEmpty(), qPrintable(describe(newParent) + QLatin1Char(' ') + wrong));
    }
}

void TstDisplayInfo::offsets_data()
{
    QTest::addColumn<double>("px");
    QTest::addColumn<double>("py");
    QTest::addColumn<double>("pangle");
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("expectedX");
    QTest::addColumn<double>("expectedY");

    QTest::newRow("unturned") << 10.0 << 10.0 << 0.0 << 13.0 << 14.0 << 3.0 << 4.0;
    QTest::newRow("quarter turn") << 100.0 << 100.0 << 90.0 << 100.0 << 120.0 << 20.0 << 0.0;
    QTest::newRow("half turn") << 0.0 << 0.0 << 180.0 << 5.0 << 0.0 << -5.0 << 0.0;
    QTest::newRow("same point") << 7.0 << 7.0 << 33.0 << 7.0 << 7.0 << 0.0 << 0.0;
}

void TstDisplayInfo::offsets()
{
    QFETCH(double, px);
    QFETCH(double, py);
    QFETCH(double, pangle);
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(double, expectedX);
    QFETCH(double, expectedY);
    QVERIFY(near(DisplayInfo::GetXOffset(px, py, pangle, x, y), expectedX));
    QVERIFY(near(DisplayInfo::GetYOffset(px, py, pangle, x, y), expectedY));
}

void TstDisplayInfo::normalizeAngleAndScale_data()
{
    QTest::addColumn<DisplayInfo>("before");
    QTest::addColumn<DisplayInfo>("after");

    QTest::newRow("both negative") << info(1, 2, 30, -2, -3) << info(1, 2, 210, 2, 3);
    QTest::newRow("both negative wraps") << info(0, 0, 200, -1, -1) << info(0, 0, 20, 1, 1);
    QTest::newRow("one negative stays") << info(0, 0, 30, -1, 2) << info(0, 0, 30, -1, 2);
    QTest::newRow("positive stays") << info(0, 0, 30, 1, 2) << info(0, 0, 30, 1, 2);
}

void TstDisplayInfo::normalizeAngleAndScale()
{
    QFETCH(DisplayInfo, before);
    QFETCH(DisplayInfo, after);
    DisplayInfo d = before;
    d.normalizeAngleAndScale();
    QVERIFY(sameAngle(d.angle, after.angle));
    QCOMPARE(d.xScale, after.xScale);
    QCOMPARE(d.yScale, after.yScale);
    QCOMPARE(d.x, after.x);

    // The same pose: a child point lands in the same place.
    const DisplayInfo child = info(10, 5);
    const DisplayInfo p = child.unmapFromParentInfo(before);
    const DisplayInfo q = child.unmapFromParentInfo(d);
    QVERIFY(near(p.x, q.x) && near(p.y, q.y));
}

void TstDisplayInfo::normalizedAngle_data()
{
    QTest::addColumn<double>("angle");
    QTest::addColumn<double>("expected");

    QTest::newRow("in range") << 123.0 << 123.0;
    QTest::newRow("360 stays") << 360.0 << 360.0;
    QTest::newRow("negative") << -90.0 << 270.0;
    QTest::newRow("over") << 450.0 << 90.0;
    QTest::newRow("many turns") << 3600.0 + 45.0 << 45.0;
    QTest::newRow("many turns down") << -3600.0 - 45.0 << 315.0;
    QTest::newRow("infinite") << qInf() << 0.0;
    QTest::newRow("nan") << qQNaN() << 0.0;
}

void TstDisplayInfo::normalizedAngle()
{
    QFETCH(double, angle);
    QFETCH(double, expected);
    QVERIFY(near(DisplayInfo::normalizedAngle(angle), expected, 1e-9));
}

void TstDisplayInfo::spin_data()
{
    QTest::addColumn<double>("angle");
    QTest::addColumn<double>("next");
    QTest::addColumn<int>("spin");

    QTest::newRow("no turn") << 0.0 << 0.000001 << 0;
    QTest::newRow("turn up") << 0.0 << 90.0 << -1;
    QTest::newRow("turn down") << 90.0 << 0.0 << 1;
    QTest::newRow("up through 360") << 350.0 << 10.0 << -1;
    QTest::newRow("down through 0") << 10.0 << 350.0 << 1;
    QTest::newRow("half turn goes up") << 0.0 << 180.0 << -1;
}

void TstDisplayInfo::spin()
{
    QFETCH(double, angle);
    QFETCH(double, next);
    QFETCH(int, spin);
    QCOMPARE(DisplayInfo::spinToNext(angle, next), spin);
}

void TstDisplayInfo::hostileAnglesTerminate()
{
    for (double huge : {1e20, -1e20, 1e300, -1e300, 7.5e6}) {
        const DisplayInfo blended(info(0, 0, huge), info(0, 0, 10), 0.5);
        QVERIFY(blended.angle >= 0.0 && blended.angle <= 360.0);
        const DisplayInfo other(info(0, 0, 10), info(0, 0, huge), 0.5);
        QVERIFY(other.angle >= 0.0 && other.angle <= 360.0);
        QVERIFY(DisplayInfo::spinToNext(huge, 0.0) != 0 || huge == 0.0);
    }
    const DisplayInfo nan(info(0, 0, qQNaN()), info(0, 0, 10), 0.5);
    QCOMPARE(nan.angle, 0.0);
}

void TstDisplayInfo::entityInfoBlend_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<double>("r");
    QTest::addColumn<double>("timeRatio");
    QTest::addColumn<double>("speedRatio");
    QTest::addColumn<int>("animationIndex");

    QTest::newRow("time ratio blends") << 0 << 0.25 << 0.3 << 1.0 << 0;
    QTest::newRow("speed blends") << 1 << 0.25 << 0.2 << 1.5 << 0;
    QTest::newRow("animation switches at 1") << 0 << 1.0 << 0.6 << 1.0 << 1;
    QTest::newRow("not before 1") << 1 << 0.999 << 0.2 << 2.998 << 0;
}

void TstDisplayInfo::entityInfoBlend()
{
    QFETCH(int, method);
    QFETCH(double, r);
    QFETCH(double, timeRatio);
    QFETCH(double, speedRatio);
    QFETCH(int, animationIndex);

    EntityInfo a;
    a.animation = Address(nullptr, {0, 0});
    a.ratioControlMethod = method;
    a.timeRatio = 0.2;
    a.speedRatio = 1.0;
    EntityInfo b;
    b.animation = Address(nullptr, {0, 1});
    b.ratioControlMethod = 1 - method;
    b.timeRatio = 0.6;
    b.speedRatio = 3.0;

    const EntityInfo blended(a, b, r);
    QCOMPARE(blended.ratioControlMethod, method);
    QVERIFY(near(blended.timeRatio, timeRatio));
    QVERIFY(near(blended.speedRatio, speedRatio));
    QCOMPARE(blended.animation.animationIndex(), animationIndex);
}

QTEST_GUILESS_MAIN(TstDisplayInfo)
#include "tst_displayinfo.moc"
