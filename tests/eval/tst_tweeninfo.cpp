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

QVector<double> params(const TweenInfo &curve)
{
    QVector<double> result;
    for (int i = 0; i < curve.cCount(); ++i)
        result.append(curve.cAt(i));
    return result;
}

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
    void defaults();
    void constructors();
    void trueT_data();
    void trueT();
    void linearEquivalents_data();
    void linearEquivalents();
    void bezierAgainstSampling_data();
    void bezierAgainstSampling();
    void setC_data();
    void setC();
    void setInOut();
    void setCurveTypeInt_data();
    void setCurveTypeInt();
    void setCurveTypeName_data();
    void setCurveTypeName();
    void curveTypeString_data();
    void curveTypeString();
    void setCurveTypeParams_data();
    void setCurveTypeParams();
    void readingKeepsDefaults_data();
    void readingKeepsDefaults();
    void equality_data();
    void equality();
    void drawCurve_data();
    void drawCurve();
};

void TstTweenInfo::defaults()
{
    const TweenInfo linear;
    QVERIFY(linear.isLinear());
    QCOMPARE(linear.cCount(), 0);
    QCOMPARE(linear.curveTypeName(), QStringLiteral("linear"));
    QVERIFY(!linear.isEased());

    const TweenInfo instant = TweenInfo::instantInfo();
    QVERIFY(instant.isInstant());
    QCOMPARE(instant.cCount(), 0);
    QVERIFY(!instant.isEased());
    QVERIFY(!instant.is1D());

    QCOMPARE(linear.cAt(-1), 0.0);
    QCOMPARE(linear.cAt(0), 0.0);
    QCOMPARE(TweenInfo(0.7).cAt(1), 0.0);
    QCOMPARE(TweenInfo(0.7).cAt(100), 0.0);
}

void TstTweenInfo::constructors()
{
    const TweenInfo quadratic(0.7);
    QVERIFY(quadratic.isQuadratic());
    QVERIFY(quadratic.is1D());
    QCOMPARE(params(quadratic), (QVector<double>{0.7}));

    const TweenInfo cubic(0.1, 0.2);
    QVERIFY(cubic.isCubic());
    QCOMPARE(params(cubic), (QVector<double>{0.1, 0.2}));

    const TweenInfo quartic(0.1, 0.2, 0.3);
    QVERIFY(quartic.isQuartic());
    QCOMPARE(params(quartic), (QVector<double>{0.1, 0.2, 0.3}));

    const TweenInfo quintic(0.1, 0.2, 0.3, 0.4);
    QVERIFY(quintic.isQuintic());
    QVERIFY(quintic.isEased());
    QCOMPARE(params(quintic), (QVector<double>{0.1, 0.2, 0.3, 0.4}));

    const TweenInfo bezier = TweenInfo::createBezier(0.1, 0.2, 0.3, 0.4);
    QVERIFY(bezier.isBezier());
    QVERIFY(bezier.isEased());
    QVERIFY(!bezier.is1D());
    QCOMPARE(params(bezier), (QVector<double>{0.1, 0.2, 0.3, 0.4}));

    // Constructors keep the parameter range too.
    QCOMPARE(params(TweenInfo(5.0)), (QVector<double>{3.0}));
    QCOMPARE(params(TweenInfo::createBezier(-5.0, 9.0, 0.5, std::nan(""))),
             (QVector<double>{-2.0, 3.0, 0.5, 0.0}));
}

void TstTweenInfo::trueT_data()
{
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<double>("t");
    QTest::addColumn<double>("expected");

    const TweenInfo instant = TweenInfo::instantInfo();
    QTest::newRow("instant 0") << instant << 0.0 << 0.0;
    QTest::newRow("instant 0.5") << instant << 0.5 << 0.0;
    QTest::newRow("instant 0.999") << instant << 0.999 << 0.0;
    QTest::newRow("instant 1") << instant << 1.0 << 1.0;
    QTest::newRow("instant 1.5") << instant << 1.5 << 1.0;

    QTest::newRow("linear 0.25") << TweenInfo() << 0.25 << 0.25;
    QTest::newRow("linear unclamped below") << TweenInfo() << -0.5 << -0.5;
    QTest::newRow("linear unclamped above") << TweenInfo() << 1.5 << 1.5;

    // t^2 and 1 - (1 - t)^2
    QTest::newRow("quadratic 0 at 0.5") << TweenInfo(0.0) << 0.5 << 0.25;
    QTest::newRow("quadratic 0 at 0.3") << TweenInfo(0.0) << 0.3 << 0.09;
    QTest::newRow("quadratic 1 at 0.5") << TweenInfo(1.0) << 0.5 << 0.75;
    QTest::newRow("quadratic 3 overshoots") << TweenInfo(3.0) << 0.5 << 1.75;

    // 3t(1-t)^2 c1 + 3t^2(1-t) c2 + t^3
    QTest::newRow("cubic 0,1 at 0.25") << TweenInfo(0.0, 1.0) << 0.25 << 0.15625;
    QTest::newRow("cubic 1,0 at 0.25") << TweenInfo(1.0, 0.0) << 0.25 << 0.4375;
    QTest::newRow("cubic 0,0 at 0.5") << TweenInfo(0.0, 0.0) << 0.5 << 0.125;
    QTest::newRow("cubic -2,3 at 0.25") << TweenInfo(-2.0, 3.0) << 0.25 << -0.40625;

    // 4ts^3 c1 + 6t^2s^2 c2 + 4t^3s c3 + t^4
    QTest::newRow("quartic 0,0,0 at 0.5") << TweenInfo(0.0, 0.0, 0.0) << 0.5 << 0.0625;
    QTest::newRow("quartic 1,1,1 at 0.5") << TweenInfo(1.0, 1.0, 1.0) << 0.5 << 0.9375;
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

    // The symmetric ease-in-out is exact at its centre; the linear one is the identity.
    QTest::newRow("bezier 0,0,1,1 at 0.5") << TweenInfo::createBezier(0, 0, 1, 1) << 0.5 << 0.5;
    QTest::newRow("bezier 0,0,1,1 at 0") << TweenInfo::createBezier(0, 0, 1, 1) << 0.0 << 0.0;
    QTest::newRow("bezier 0,0,1,1 at 1") << TweenInfo::createBezier(0, 0, 1, 1) << 1.0 << 1.0;
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

void TstTweenInfo::setC_data()
{
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("value");
    QTest::addColumn<QVector<double>>("expected");

    const TweenInfo quintic(0.2, 0.4, 0.6, 0.8);
    QTest::newRow("in range") << quintic << 1 << 0.9 << QVector<double>{0.2, 0.9, 0.6, 0.8};
    QTest::newRow("clamped high") << quintic << 0 << 5.0 << QVector<double>{3.0, 0.4, 0.6, 0.8};
    QTest::newRow("clamped low") << quintic << 0 << -7.0 << QVector<double>{-2.0, 0.4, 0.6, 0.8};
    QTest::newRow("upper bound kept") << quintic << 3 << 3.0 << QVector<double>{0.2, 0.4, 0.6, 3.0};
    QTest::newRow("nan becomes 0")
        << quintic << 2 << std::nan("") << QVector<double>{0.2, 0.4, 0.0, 0.8};
    QTest::newRow("index 4 ignored") << quintic << 4 << 1.0 << QVector<double>{0.2, 0.4, 0.6, 0.8};
    QTest::newRow("negative index ignored")
        << quintic << -1 << 1.0 << QVector<double>{0.2, 0.4, 0.6, 0.8};
    QTest::newRow("beyond a quadratic") << TweenInfo(0.5) << 1 << 1.0 << QVector<double>{0.5};
    QTest::newRow("linear has none") << TweenInfo() << 0 << 1.0 << QVector<double>{};
    QTest::newRow("bezier x not limited") << TweenInfo::createBezier(0.1, 0.2, 0.3, 0.4) << 0 << 2.5
                                          << QVector<double>{2.5, 0.2, 0.3, 0.4};
}

void TstTweenInfo::setC()
{
    QFETCH(TweenInfo, curve);
    QFETCH(int, index);
    QFETCH(double, value);
    QFETCH(QVector<double>, expected);
    const int type = curve.curveType();
    curve.setC(index, value);
    QCOMPARE(params(curve), expected);
    QCOMPARE(curve.curveType(), type);
    QCOMPARE(curve.cAt(4), 0.0);
}

void TstTweenInfo::setInOut()
{
    TweenInfo curve = TweenInfo::createBezier(0.5, 0.5, 0.5, 0.5);
    curve.setIn(1.5, 4.0);
    curve.setOut(-0.5, -3.0);
    QCOMPARE(params(curve), (QVector<double>{1.0, 3.0, 0.0, -2.0}));
    curve.setIn(0.25, -1.5);
    curve.setOut(0.75, 2.5);
    QCOMPARE(params(curve), (QVector<double>{0.25, -1.5, 0.75, 2.5}));

    // Only the parameters that exist are touched.
    TweenInfo quadratic(0.5);
    quadratic.setOut(0.1, 0.1);
    quadratic.setIn(2.0, 0.0);
    QCOMPARE(params(quadratic), (QVector<double>{1.0}));
}

void TstTweenInfo::setCurveTypeInt_data()
{
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("expectedType");
    QTest::addColumn<QVector<double>>("expected");

    const TweenInfo quadratic(0.7);
    const TweenInfo cubic(0.1, 0.9);
    const TweenInfo quartic(0.1, 0.1, 0.1);
    const TweenInfo quintic(0.1, 0.1, 0.1, 0.1);
    const TweenInfo bezier = TweenInfo::createBezier(0.1, 0.2, 0.3, 0.4);
    const QVector<double> quarticDefaults{0.25, 0.5, 0.75};
    const QVector<double> quinticDefaults{0.2, 0.4, 0.6, 0.8};

    QTest::newRow("linear to bezier")
        << TweenInfo() << -3 << -3 << QVector<double>{Third, Third, TwoThirds, TwoThirds};
    QTest::newRow("linear to quadratic") << TweenInfo() << 0 << 0 << QVector<double>{0.5};
    QTest::newRow("linear to cubic") << TweenInfo() << 1 << 1 << QVector<double>{Third, TwoThirds};
    QTest::newRow("linear to quartic") << TweenInfo() << 2 << 2 << quarticDefaults;
    QTest::newRow("linear to quintic") << TweenInfo() << 3 << 3 << quinticDefaults;
    QTest::newRow("cubic to linear") << cubic << -1 << -1 << QVector<double>{};
    QTest::newRow("cubic to instant") << cubic << -2 << -2 << QVector<double>{};
    QTest::newRow("bezier to linear") << bezier << -1 << -1 << QVector<double>{};
    QTest::newRow("cubic to quartic") << cubic << 2 << 2 << quarticDefaults;
    QTest::newRow("bezier to quintic") << bezier << 3 << 3 << quinticDefaults;

    QTest::newRow("quadratic kept") << quadratic << 0 << 0 << QVector<double>{0.7};
    QTest::newRow("cubic kept") << cubic << 1 << 1 << QVector<double>{0.1, 0.9};
    QTest::newRow("bezier kept") << bezier << -3 << -3 << QVector<double>{0.1, 0.2, 0.3, 0.4};

    // The quartic and quintic switches test for quadratic, not for themselves.
    QTest::newRow("quadratic refuses quartic") << quadratic << 2 << 0 << QVector<double>{0.7};
    QTest::newRow("quadratic refuses quintic") << quadratic << 3 << 0 << QVector<double>{0.7};
    QTest::newRow("quartic reset") << quartic << 2 << 2 << quarticDefaults;
    QTest::newRow("quintic reset") << quintic << 3 << 3 << quinticDefaults;
    QTest::newRow("quartic to quintic") << quartic << 3 << 3 << quinticDefaults;
    QTest::newRow("quartic to quadratic") << quartic << 0 << 0 << QVector<double>{0.5};

    QTest::newRow("unknown 4") << cubic << 4 << 1 << QVector<double>{0.1, 0.9};
    QTest::newRow("unknown -4") << cubic << -4 << 1 << QVector<double>{0.1, 0.9};
}

void TstTweenInfo::setCurveTypeInt()
{
    QFETCH(TweenInfo, curve);
    QFETCH(int, type);
    QFETCH(int, expectedType);
    QFETCH(QVector<double>, expected);
    curve.setCurveType(type);
    QCOMPARE(curve.curveType(), expectedType);
    QCOMPARE(params(curve), expected);
}

void TstTweenInfo::setCurveTypeName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("expectedType");
    QTest::addColumn<int>("expectedCount");

    QTest::newRow("bezier") << QStringLiteral("bezier") << -3 << 4;
    QTest::newRow("instant") << QStringLiteral("instant") << -2 << 0;
    QTest::newRow("linear") << QStringLiteral("linear") << -1 << 0;
    QTest::newRow("quadratic") << QStringLiteral("quadratic") << 0 << 1;
    QTest::newRow("cubic") << QStringLiteral("cubic") << 1 << 2;
    QTest::newRow("quartic") << QStringLiteral("quartic") << 2 << 3;
    QTest::newRow("quintic") << QStringLiteral("quintic") << 3 << 4;
    QTest::newRow("Cubic") << QStringLiteral("Cubic") << -1 << 0;
    QTest::newRow("CUBIC") << QStringLiteral("CUBIC") << -1 << 0;
    QTest::newRow("padded") << QStringLiteral(" cubic") << -1 << 0;
    QTest::newRow("empty") << QString() << -1 << 0;
    QTest::newRow("number") << QStringLiteral("1") << -1 << 0;
}

void TstTweenInfo::setCurveTypeName()
{
    QFETCH(QString, name);
    QFETCH(int, expectedType);
    QFETCH(int, expectedCount);
    TweenInfo curve;
    curve.setCurveType(name);
    QCOMPARE(curve.curveType(), expectedType);
    QCOMPARE(curve.cCount(), expectedCount);
}

void TstTweenInfo::curveTypeString_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");

    QTest::newRow("-3") << -3 << QStringLiteral("bezier");
    QTest::newRow("-2") << -2 << QStringLiteral("instant");
    QTest::newRow("-1") << -1 << QStringLiteral("linear");
    QTest::newRow("0") << 0 << QStringLiteral("quadratic");
    QTest::newRow("1") << 1 << QStringLiteral("cubic");
    QTest::newRow("2") << 2 << QStringLiteral("quartic");
    QTest::newRow("3") << 3 << QStringLiteral("quintic");
    QTest::newRow("4") << 4 << QString();
    QTest::newRow("-4") << -4 << QString();
}

void TstTweenInfo::curveTypeString()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QCOMPARE(TweenInfo::curveTypeString(type), name);
    const TweenInfo curve = fromType(type);
    if (!name.isEmpty())
        QCOMPARE(curve.curveTypeName(), name);
}

void TstTweenInfo::setCurveTypeParams_data()
{
    QTest::addColumn<TweenInfo>("curve");
    QTest::addColumn<QVector<double>>("list");
    QTest::addColumn<int>("expectedType");
    QTest::addColumn<QVector<double>>("expected");

    const TweenInfo bezier = TweenInfo::createBezier(0.1, 0.2, 0.3, 0.4);
    QTest::newRow("none") << bezier << QVector<double>{} << -1 << QVector<double>{};
    QTest::newRow("one") << TweenInfo() << QVector<double>{0.1} << 0 << QVector<double>{0.1};
    QTest::newRow("two") << TweenInfo() << QVector<double>{0.1, 0.2} << 1
                         << QVector<double>{0.1, 0.2};
    QTest::newRow("three clamped")
        << TweenInfo() << QVector<double>{9.0, 0.2, -9.0} << 2 << QVector<double>{3.0, 0.2, -2.0};
    QTest::newRow("four is quintic") << bezier << QVector<double>{0.5, 0.6, 0.7, 0.8} << 3
                                     << QVector<double>{0.5, 0.6, 0.7, 0.8};
    QTest::newRow("five unchanged")
        << bezier << QVector<double>{1, 1, 1, 1, 1} << -3 << QVector<double>{0.1, 0.2, 0.3, 0.4};
}

void TstTweenInfo::setCurveTypeParams()
{
    QFETCH(TweenInfo, curve);
    QFETCH(QVector<double>, list);
    QFETCH(int, expectedType);
    QFETCH(QVector<double>, expected);
    curve.setCurveType(list);
    QCOMPARE(curve.curveType(), expectedType);
    QCOMPARE(params(curve), expected);
    QCOMPARE(curve.cAt(expected.size()), 0.0);
}

void TstTweenInfo::readingKeepsDefaults_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QVector<double>>("attributes"); // NaN: attribute absent
    QTest::addColumn<QVector<double>>("expected");

    const double absent = std::nan("");
    QTest::newRow("quartic c1 only")
        << QStringLiteral("quartic") << QVector<double>{0.9} << QVector<double>{0.9, 0.5, 0.75};
    QTest::newRow("quintic c3 only")
        << QStringLiteral("quintic") << QVector<double>{absent, absent, 0.1}
        << QVector<double>{0.2, 0.4, 0.1, 0.8};
    QTest::newRow("cubic with extra c3")
        << QStringLiteral("cubic") << QVector<double>{0.0, 1.0, 0.5} << QVector<double>{0.0, 1.0};
    QTest::newRow("bezier clamped")
        << QStringLiteral("bezier") << QVector<double>{0.5, 7.0, 0.5, -7.0}
        << QVector<double>{0.5, 3.0, 0.5, -2.0};
    QTest::newRow("unknown type stays linear")
        << QStringLiteral("Quartic") << QVector<double>{0.9} << QVector<double>{};
}

void TstTweenInfo::readingKeepsDefaults()
{
    QFETCH(QString, type);
    QFETCH(QVector<double>, attributes);
    QFETCH(QVector<double>, expected);

    // What a key reader does: install the type's defaults, then apply each
    // cN attribute that is present.
    TweenInfo curve;
    curve.setCurveType(type);
    for (int i = 0; i < curve.cCount(); ++i) {
        if (i < attributes.size() && !std::isnan(attributes.at(i)))
            curve.setC(i, attributes.at(i));
    }
    for (int i = curve.cCount(); i < attributes.size(); ++i)
        curve.setC(i, attributes.at(i));
    QCOMPARE(params(curve), expected);
}

void TstTweenInfo::equality_data()
{
    QTest::addColumn<TweenInfo>("a");
    QTest::addColumn<TweenInfo>("b");
    QTest::addColumn<bool>("equal");

    const TweenInfo instant = TweenInfo::instantInfo();
    QTest::newRow("linear") << TweenInfo() << TweenInfo() << true;
    QTest::newRow("instant") << instant << instant << true;
    QTest::newRow("linear and instant") << TweenInfo() << instant << false;
    QTest::newRow("equal cubics") << TweenInfo(0.1, 0.9) << TweenInfo(0.1, 0.9) << false;
    QTest::newRow("equal quadratics") << TweenInfo(0.5) << TweenInfo(0.5) << false;
    QTest::newRow("equal beziers")
        << TweenInfo::createBezier(0, 0, 1, 1) << TweenInfo::createBezier(0, 0, 1, 1) << false;
    QTest::newRow("linear-equivalent quadratic") << TweenInfo(0.5) << TweenInfo() << false;
    QTest::newRow("linear made from cubic") << fromType(-1) << TweenInfo() << true;
}

void TstTweenInfo::equality()
{
    QFETCH(TweenInfo, a);
    QFETCH(TweenInfo, b);
    QFETCH(bool, equal);
    QCOMPARE(a == b, equal);
    QCOMPARE(b == a, equal);
    QCOMPARE(a != b, !equal);
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
