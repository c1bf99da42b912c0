// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/tweeninfo.h"

#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <limits>

using Morvane::TweenInfo;

Q_DECLARE_METATYPE(TweenInfo)

namespace {

constexpr double Third = 1.0 / 3.0;
constexpr double TwoThirds = 2.0 / 3.0;

TweenInfo fromType(int type)
{
    TweenInfo curve;
    curve.setCurveType(type);
    return curve;
}

bool near(double a, double b, double tolerance = 1e-12)
{
    return std::abs(a - b) <= tolerance;
}

} // namespace

class TstTweenInfo : public QObject
{
    Q_OBJECT

private slots:
    void trueT_data();
    void trueT();
    void linearEquivalents_data();
    void linearEquivalents();
    void bezierAgainstSampling_data();
    void bezierAgainstSampling();
    void drawCurve_data();
    void drawCurve();
};

void TstTweenInfo::trueT_data()
{
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<double>("t");
    QTest::addColumn<double>("expected");

    const TweenInfo instant = TweenInfo::instantInfo();
    QTest::newRow("instant 0") << instant << 0.0 << 0.0;
    QTest::newRow("instant 0.5") << instant << 0.5 << 0.0;
    QTest::newRow("instant 1") << instant << 1.0 << 1.0;
    QTest::newRow("instant 1.5") << instant << 1.5 << 1.0;

    QTest::newRow("linear 0.25") << TweenInfo() << 0.25 << 0.25;
    QTest::newRow("linear unclamped") << TweenInfo() << -0.5 << -0.5;

    // t^2 and 1 - (1 - t)^2
    QTest::newRow("quadratic 0 at 0.5") << TweenInfo(0.0) << 0.5 << 0.25;
    QTest::newRow("quadratic 1 at 0.5") << TweenInfo(1.0) << 0.5 << 0.75;
    QTest::newRow("quadratic 3 overshoots") << TweenInfo(3.0) << 0.5 << 1.75;

    // 3t(1-t)^2 c1 + 3t^2(1-t) c2 + t^3
    QTest::newRow("cubic 0,1 at 0.25") << TweenInfo(0.0, 1.0) << 0.25 << 0.15625;
    QTest::newRow("cubic 1,0 at 0.25") << TweenInfo(1.0, 0.0) << 0.25 << 0.4375;
    QTest::newRow("cubic -2,3 at 0.25") << TweenInfo(-2.0, 3.0) << 0.25 << -0.40625;

    // 4ts^3 c1 + 6t^2s^2 c2 + 4t^3s c3 + t^4
    QTest::newRow("quartic 0,0,0 at 0.5") << TweenInfo(0.0, 0.0, 0.0) << 0.5 << 0.0625;
    QTest::newRow("quartic 1,0,0 at 0.5") << TweenInfo(1.0, 0.0, 0.0) << 0.5 << 0.3125;
    QTest::newRow("quartic 0,0,1 at 0.25")
        << TweenInfo(0.0, 0.0, 1.0) << 0.25 << 4 * 0.015625 * 0.75 + 0.00390625;

    // 5ts^4 c1 + 10t^2s^3 c2 + 10t^3s^2 c3 + 5t^4s c4 + t^5
    QTest::newRow("quintic zeros at 0.5") << TweenInfo(0.0, 0.0, 0.0, 0.0) << 0.5 << 0.03125;
    QTest::newRow("quintic threes at 0.5") << TweenInfo(3.0, 3.0, 3.0, 3.0) << 0.5 << 2.84375;
    QTest::newRow("quintic 1,0,0,0 at 0.5")
        << TweenInfo(1.0, 0.0, 0.0, 0.0) << 0.5 << 0.15625 + 0.03125;
    QTest::newRow("quintic 0,0,0,1 at 0.2")
        << TweenInfo(0.0, 0.0, 0.0, 1.0) << 0.2 << 5 * 0.0016 * 0.8 + 0.00032;
    QTest::newRow("quintic at 1") << TweenInfo(3.0, -2.0, 3.0, -2.0) << 1.0 << 1.0;

    // The symmetric ease-in-out is exact at its centre.
    QTest::newRow("bezier 0,0,1,1 at 0.5") << TweenInfo::createBezier(0, 0, 1, 1) << 0.5 << 0.5;

    // How parameters get set, seen through the values (quadratic at 0.5 is
    // 0.5 c1 + 0.25, quintic zeros t^5).
    auto quadratic = [](double c1) {
        TweenInfo curve(0.5);
        curve.setC(0, c1);
        return curve;
    };
    QTest::newRow("c1 set to 5 is kept at 3") << quadratic(5.0) << 0.5 << 1.75;
    QTest::newRow("c1 set to -7 is kept at -2") << quadratic(-7.0) << 0.5 << -0.75;
    QTest::newRow("c1 set to NaN reads 0") << quadratic(std::nan("")) << 0.5 << 0.25;
    QTest::newRow("constructor keeps the range") << TweenInfo(5.0) << 0.5 << 1.75;
    TweenInfo quintic(0.0, 0.0, 0.0, 0.0);
    quintic.setC(4, 1.0);
    QTest::newRow("a fifth parameter is ignored") << quintic << 0.5 << 0.03125;
    TweenInfo fromList = TweenInfo::createBezier(0.5, 0.5, 0.5, 0.5);
    fromList.setCurveType(QVector<double>{0.0, 0.0, 0.0, 0.0});
    QTest::newRow("four parameters make a quintic") << fromList << 0.5 << 0.03125;
    // The quartic switch tests for quadratic: a quadratic curve stays one.
    TweenInfo keptQuadratic(0.0);
    keptQuadratic.setCurveType(int(TweenInfo::CurveType::Quartic));
    QTest::newRow("quadratic stays quadratic for quartic") << keptQuadratic << 0.5 << 0.25;
    TweenInfo wrongCase(0.0);
    wrongCase.setCurveType(QStringLiteral("Cubic"));
    QTest::newRow("a name in another case changes nothing") << wrongCase << 0.5 << 0.25;
    // A key read with only c1 keeps the type's defaults for c2 and c3:
    // (4 * 0.9 + 6 * 0.5 + 4 * 0.75 + 1) / 16.
    TweenInfo quarticRead;
    quarticRead.setCurveType(QStringLiteral("quartic"));
    quarticRead.setC(0, 0.9);
    QTest::newRow("quartic read with c1 only") << quarticRead << 0.5 << 0.6625;
}

void TstTweenInfo::trueT()
{
    QFETCH(TweenInfo, curve);
    QFETCH(double, t);
    QFETCH(double, expected);
    const double actual = curve.trueT(t);
    QVERIFY2(near(actual, expected, 1e-12),
             qPrintable(QStringLiteral("got %1, want %2").arg(actual, 0, 'g', 17).arg(expected)));
}

void TstTweenInfo::linearEquivalents_data()
{
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<double>("t");

    const QList<QPair<const char *, TweenInfo>> curves = {
        {"quadratic", TweenInfo(0.5)},
        {"cubic", TweenInfo(Third, TwoThirds)},
        {"quartic", TweenInfo(0.25, 0.5, 0.75)},
        {"quintic", TweenInfo(0.2, 0.4, 0.6, 0.8)},
        {"bezier", TweenInfo::createBezier(Third, Third, TwoThirds, TwoThirds)},
        {"default quadratic", fromType(0)},
        {"default cubic", fromType(1)},
        {"default quartic", fromType(2)},
        {"default quintic", fromType(3)},
        {"default bezier", fromType(-3)},
    };
    for (const auto &[name, curve] : curves) {
        for (int i = 0; i <= 10; ++i) {
            const double t = i / 10.0;
            QTest::addRow("%s %.1f", name, t) << curve << t;
        }
    }
}

void TstTweenInfo::linearEquivalents()
{
    QFETCH(TweenInfo, curve);
    QFETCH(double, t);
    QVERIFY2(near(curve.trueT(t), t, 1e-12), qPrintable(QString::number(curve.trueT(t), 'g', 17)));
}

void TstTweenInfo::bezierAgainstSampling_data()
{
    QTest::addColumn<double>("x1");
    QTest::addColumn<double>("y1");
    QTest::addColumn<double>("x2");
    QTest::addColumn<double>("y2");

    // Flat spots in x (zero slope at an end or in the middle) send the solver
    // from Newton's method to halving.
    QTest::newRow("ease in out") << 0.0 << 0.0 << 1.0 << 1.0;
    QTest::newRow("flat middle") << 1.0 << 0.0 << 0.0 << 1.0;
    QTest::newRow("flat middle overshoot") << 1.0 << 3.0 << 0.0 << -2.0;
    QTest::newRow("ease in") << 0.42 << 0.0 << 1.0 << 1.0;
    QTest::newRow("ease out") << 0.0 << 0.0 << 0.58 << 1.0;
    QTest::newRow("back") << 0.6 << -0.28 << 0.735 << 0.045;
    QTest::newRow("corner") << 1.0 << 0.0 << 1.0 << 0.0;

    QRandomGenerator random(20260422);
    for (int i = 0; i < 40; ++i) {
        const double x1 = random.generateDouble();
        const double y1 = -2.0 + 5.0 * random.generateDouble();
        const double x2 = random.generateDouble();
        const double y2 = -2.0 + 5.0 * random.generateDouble();
        QTest::addRow("random %d", i) << x1 << y1 << x2 << y2;
    }
}

void TstTweenInfo::bezierAgainstSampling()
{
    QFETCH(double, x1);
    QFETCH(double, y1);
    QFETCH(double, x2);
    QFETCH(double, y2);
    const TweenInfo curve = TweenInfo::createBezier(x1, y1, x2, y2);

    // Brute-force reference from the parametric form (Bernstein, independent of
    // the solver's polynomial coefficients).
    constexpr int Samples = 100000;
    QVector<double> xs(Samples + 1);
    QVector<double> ys(Samples + 1);
    for (int i = 0; i <= Samples; ++i) {
        const double s = double(i) / Samples;
        const double u = 1.0 - s;
        xs[i] = 3 * u * u * s * x1 + 3 * u * s * s * x2 + s * s * s;
        ys[i] = 3 * u * u * s * y1 + 3 * u * s * s * y2 + s * s * s;
    }

    // The solver stops once its x is within 0.005 of t: the answer must be the
    // curve's y at some such x. The small slacks cover the sampling step.
    constexpr double Tolerance = 0.005;
    constexpr double XSlack = 1e-4;
    constexpr double YSlack = 1e-3;
    for (int k = 0; k <= 40; ++k) {
        const double t = k / 40.0;
        double lo = std::numeric_limits<double>::infinity();
        double hi = -lo;
        for (int i = 0; i <= Samples; ++i) {
            if (std::abs(xs[i] - t) <= Tolerance + XSlack) {
                lo = std::min(lo, ys[i]);
                hi = std::max(hi, ys[i]);
            }
        }
        QVERIFY(lo <= hi);
        const double actual = curve.trueT(t);
        QVERIFY2(actual >= lo - YSlack && actual <= hi + YSlack,
                 qPrintable(QStringLiteral("t %1: got %2, curve gives %3..%4")
                                .arg(t)
                                .arg(actual)
                                .arg(lo)
                                .arg(hi)));
    }
}

void TstTweenInfo::drawCurve_data()
{
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<QPoint>("drawn");
    QTest::addColumn<QPoint>("empty");

    // 100 x 100 image, drawing area (1, 1)..(99, 99): y = 99 - 98 * value.
    QTest::newRow("linear") << TweenInfo() << QPoint(50, 50) << QPoint(20, 20);
    QTest::newRow("instant bottom") << TweenInfo::instantInfo() << QPoint(50, 99) << QPoint(50, 50);
    QTest::newRow("instant right") << TweenInfo::instantInfo() << QPoint(98, 50) << QPoint(2, 2);
    QTest::newRow("quadratic 0") << TweenInfo(0.0) << QPoint(50, 74) << QPoint(50, 50);
    QTest::newRow("bezier linear") << fromType(-3) << QPoint(50, 50) << QPoint(80, 80);
    QTest::newRow("cubic linear") << fromType(1) << QPoint(30, 69) << QPoint(30, 30);
}

void TstTweenInfo::drawCurve()
{
    QFETCH(TweenInfo, curve);
    QFETCH(QPoint, drawn);
    QFETCH(QPoint, empty);

    QImage image(100, 100, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        curve.drawCurve(&painter, QRectF(0, 0, 100, 100));
    }
    QCOMPARE(QColor(image.pixel(drawn)), QColor(100, 100, 200));
    QCOMPARE(qAlpha(image.pixel(empty)), 0);
}

QTEST_GUILESS_MAIN(TstTweenInfo)
#include "tst_tweeninfo.moc"
