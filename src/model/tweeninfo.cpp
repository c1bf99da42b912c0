// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "tweeninfo.h"

#include <QPainter>
#include <QPainterPath>
#include <QRectF>

#include <algorithm>
#include <cmath>

namespace Morvane {

namespace {

double clampParameter(double value)
{
    // NaN must not slip through std::clamp unchanged.
    if (std::isnan(value))
        return 0.0;
    return std::clamp(value, TweenInfo::MinParameter, TweenInfo::MaxParameter);
}

inline double lerp(double p, double q, double t)
{
    return p + (q - p) * t;
}

inline double cubic(double p0, double p1, double p2, double p3, double t)
{
    const double a = lerp(p0, p1, t);
    const double b = lerp(p1, p2, t);
    const double c = lerp(p2, p3, t);
    const double d = lerp(a, b, t);
    const double e = lerp(b, c, t);
    return lerp(d, e, t);
}

constexpr double Third = 1.0 / 3.0;
constexpr double TwoThirds = 2.0 / 3.0;

} // namespace

TweenInfo::TweenInfo(double c1)
{
    setParameters(int(CurveType::Quadratic), {c1});
}

TweenInfo::TweenInfo(double c1, double c2)
{
    setParameters(int(CurveType::Cubic), {c1, c2});
}

TweenInfo::TweenInfo(double c1, double c2, double c3)
{
    setParameters(int(CurveType::Quartic), {c1, c2, c3});
}

TweenInfo::TweenInfo(double c1, double c2, double c3, double c4)
{
    setParameters(int(CurveType::Quintic), {c1, c2, c3, c4});
}

TweenInfo TweenInfo::instantInfo()
{
    TweenInfo info;
    info.setCurveToInstant();
    return info;
}

TweenInfo TweenInfo::createBezier(double x1, double y1, double x2, double y2)
{
    TweenInfo info;
    info.setCurveTypeToBezier(x1, y1, x2, y2);
    return info;
}

void TweenInfo::setParameters(int type, std::initializer_list<double> params)
{
    Q_ASSERT(params.size() <= MaxParameters);
    mType = qint8(type);
    mCount = qint8(params.size());
    mC.fill(0.0);
    int i = 0;
    for (double value : params)
        mC[i++] = clampParameter(value);
}

double TweenInfo::cAt(int index) const
{
    if (index < 0 || index >= mCount)
        return 0.0;
    return mC[index];
}

QString TweenInfo::curveTypeString(int type)
{
    switch (type) {
    case int(CurveType::Bezier):
        return QStringLiteral("bezier");
    case int(CurveType::Instant):
        return QStringLiteral("instant");
    case int(CurveType::Linear):
        return QStringLiteral("linear");
    case int(CurveType::Quadratic):
        return QStringLiteral("quadratic");
    case int(CurveType::Cubic):
        return QStringLiteral("cubic");
    case int(CurveType::Quartic):
        return QStringLiteral("quartic");
    case int(CurveType::Quintic):
        return QStringLiteral("quintic");
    }
    return QString();
}

void TweenInfo::setCurveType(int type)
{
    switch (type) {
    case int(CurveType::Bezier):
        setCurveToBezier();
        break;
    case int(CurveType::Instant):
        setCurveToInstant();
        break;
    case int(CurveType::Linear):
        setCurveToLinear();
        break;
    case int(CurveType::Quadratic):
        setCurveToQuadratic();
        break;
    case int(CurveType::Cubic):
        setCurveToCubic();
        break;
    case int(CurveType::Quartic):
        setCurveToQuartic();
        break;
    case int(CurveType::Quintic):
        setCurveToQuintic();
        break;
    default:
        break;
    }
}

void TweenInfo::setCurveType(const QString &name)
{
    for (int type = int(CurveType::Bezier); type <= int(CurveType::Quintic); ++type) {
        if (name == curveTypeString(type)) {
            setCurveType(type);
            return;
        }
    }
}

void TweenInfo::setCurveType(const QVector<double> &params)
{
    if (params.size() > MaxParameters)
        return;
    static constexpr CurveType typeForCount[] = {CurveType::Linear, CurveType::Quadratic,
                                                 CurveType::Cubic, CurveType::Quartic,
                                                 CurveType::Quintic};
    mType = qint8(typeForCount[params.size()]);
    mCount = qint8(params.size());
    mC.fill(0.0);
    for (int i = 0; i < mCount; ++i)
        mC[i] = clampParameter(params.at(i));
}

void TweenInfo::setCurveToLinear()
{
    setParameters(int(CurveType::Linear), {});
}

void TweenInfo::setCurveToInstant()
{
    setParameters(int(CurveType::Instant), {});
}

void TweenInfo::setCurveToBezier()
{
    if (!isBezier())
        setParameters(int(CurveType::Bezier), {Third, Third, TwoThirds, TwoThirds});
}

void TweenInfo::setCurveToQuadratic()
{
    if (!isQuadratic())
        setParameters(int(CurveType::Quadratic), {0.5});
}

void TweenInfo::setCurveToCubic()
{
    if (!isCubic())
        setParameters(int(CurveType::Cubic), {Third, TwoThirds});
}

void TweenInfo::setCurveToQuartic()
{
    // Tests for quadratic on purpose (not quartic): a quadratic curve is kept,
    // and asking a quartic curve for quartic again resets it to the defaults.
    if (!isQuadratic())
        setParameters(int(CurveType::Quartic), {0.25, 0.5, 0.75});
}

void TweenInfo::setCurveToQuintic()
{
    // Same deliberate test as setCurveToQuartic().
    if (!isQuadratic())
        setParameters(int(CurveType::Quintic), {0.2, 0.4, 0.6, 0.8});
}

void TweenInfo::setCurveTypeToQuadratic(double c1)
{
    setParameters(int(CurveType::Quadratic), {c1});
}

void TweenInfo::setCurveTypeToBezier(double x1, double y1, double x2, double y2)
{
    setParameters(int(CurveType::Bezier), {x1, y1, x2, y2});
}

void TweenInfo::setC(int index, double value)
{
    if (index < 0 || index >= mCount)
        return;
    mC[index] = clampParameter(value);
}

void TweenInfo::setIn(double x, double y)
{
    setC(0, std::clamp(std::isnan(x) ? 0.0 : x, 0.0, 1.0));
    setC(1, y);
}

void TweenInfo::setOut(double x, double y)
{
    setC(2, std::clamp(std::isnan(x) ? 0.0 : x, 0.0, 1.0));
    setC(3, y);
}

double TweenInfo::trueT(double t) const
{
    switch (mType) {
    case int(CurveType::Instant):
        return t >= 1.0 ? 1.0 : 0.0;
    case int(CurveType::Linear):
        return t;
    case int(CurveType::Quadratic): {
        const double c1 = cAt(0);
        return lerp(lerp(0.0, c1, t), lerp(c1, 1.0, t), t);
    }
    case int(CurveType::Cubic):
        return cubic(0.0, cAt(0), cAt(1), 1.0, t);
    case int(CurveType::Quartic): {
        const double u = cubic(0.0, cAt(0), cAt(1), cAt(2), t);
        const double v = cubic(cAt(0), cAt(1), cAt(2), 1.0, t);
        return lerp(u, v, t);
    }
    case int(CurveType::Quintic): {
        const double s = 1.0 - t;
        const double t2 = t * t;
        const double s2 = s * s;
        return cAt(0) * 5.0 * t * s2 * s2 + cAt(1) * 10.0 * t2 * s2 * s +
               cAt(2) * 10.0 * t2 * t * s2 + cAt(3) * 5.0 * t2 * t2 * s + t2 * t2 * t;
    }
    case int(CurveType::Bezier):
        return bezierT(t);
    }
    return 0.0;
}

double TweenInfo::bezierT(double t) const
{
    const double cx = 3.0 * cAt(0);
    const double bx = 3.0 * (cAt(2) - cAt(0)) - cx;
    const double ax = 1.0 - cx - bx;
    const double cy = 3.0 * cAt(1);
    const double by = 3.0 * (cAt(3) - cAt(1)) - cy;
    const double ay = 1.0 - cy - by;

    const auto sampleX = [&](double s) { return ((ax * s + bx) * s + cx) * s; };
    const auto sampleDX = [&](double s) { return (3.0 * ax * s + 2.0 * bx) * s + cx; };
    const auto sampleY = [&](double s) { return ((ay * s + by) * s + cy) * s; };

    // The tolerance is 1 / (200 * duration) with the duration fixed at 1.
    constexpr double epsilon = 1.0 / 200.0;

    double s = t;
    for (int i = 0; i < 8; ++i) {
        const double e = sampleX(s) - t;
        if (std::abs(e) < epsilon)
            return sampleY(s);
        const double d = sampleDX(s);
        if (std::abs(d) < 1e-6)
            break;
        s -= e / d;
    }

    if (t < 0.0)
        return sampleY(0.0);
    if (t > 1.0)
        return sampleY(1.0);

    double lo = 0.0;
    double hi = 1.0;
    s = t;
    // x is continuous with a bounded slope, so the halving finds the tolerance
    // long before the interval collapses; the cap only guards against NaN
    // parameters.
    for (int i = 0; i < 200 && lo < hi; ++i) {
        const double x = sampleX(s);
        if (std::abs(x - t) < epsilon)
            return sampleY(s);
        if (x < t)
            lo = s;
        else
            hi = s;
        s = lo + (hi - lo) * 0.5;
    }
    return sampleY(s);
}

bool TweenInfo::operator==(const TweenInfo &other) const
{
    return mType == other.mType && (isLinear() || isInstant());
}

void TweenInfo::drawCurve(QPainter *painter, const QRectF &rect) const
{
    if (!painter)
        return;
    const QRectF r = rect.adjusted(1.0, 1.0, -1.0, -1.0);
    const auto point = [&r](double x, double y) {
        return QPointF(r.left() + x * r.width(), r.bottom() - y * r.height());
    };

    painter->save();
    painter->setPen(QPen(QColor(100, 100, 200, 255), 3));
    painter->setBrush(Qt::NoBrush);
    if (isInstant()) {
        painter->drawLine(r.bottomLeft(), r.bottomRight());
        painter->drawLine(r.bottomRight(), r.topRight());
    } else if (isLinear()) {
        painter->drawLine(r.bottomLeft(), r.topRight());
    } else if (isBezier()) {
        QPainterPath path(r.bottomLeft());
        path.cubicTo(point(cAt(0), cAt(1)), point(cAt(2), cAt(3)), r.topRight());
        painter->drawPath(path);
    } else if (is1D()) {
        constexpr int Segments = 29;
        QPointF previous = point(0.0, trueT(0.0));
        for (int i = 1; i <= Segments; ++i) {
            const double t = double(i) / Segments;
            const QPointF next = point(t, trueT(t));
            painter->drawLine(previous, next);
            previous = next;
        }
    }
    painter->restore();
}

} // namespace Morvane
