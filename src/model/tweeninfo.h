// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>
#include <QVector>

#include <array>

class QPainter;
class QRectF;

namespace Morvane {

/// The easing curve a key carries: maps the linear progress between a key and
/// the next (a ratio, normally 0..1) to an eased progress with `trueT`.
///
/// A small value type: the parameters are stored inline, so copying is cheap.
/// Every stored parameter lies in [-2, 3]; parameters beyond `cCount()` read
/// as 0.0.
class TweenInfo
{
public:
    /// Curve types with the values they have in files and in the editor.
    enum class CurveType : int {
        Bezier = -3,
        Instant = -2,
        Linear = -1,
        Quadratic = 0,
        Cubic = 1,
        Quartic = 2,
        Quintic = 3,
    };

    static constexpr int MaxParameters = 4;
    static constexpr double MinParameter = -2.0;
    static constexpr double MaxParameter = 3.0;

    /// A linear curve without parameters.
    TweenInfo() = default;
    /// Quadratic, cubic, quartic and quintic curves with the given parameters.
    explicit TweenInfo(double c1);
    TweenInfo(double c1, double c2);
    TweenInfo(double c1, double c2, double c3);
    TweenInfo(double c1, double c2, double c3, double c4);

    static TweenInfo instantInfo();
    /// A unit cubic bezier from (0,0) to (1,1) with control points (x1, y1), (x2, y2).
    static TweenInfo createBezier(double x1, double y1, double x2, double y2);

    int curveType() const { return mType; }
    bool isBezier() const { return mType == int(CurveType::Bezier); }
    bool isInstant() const { return mType == int(CurveType::Instant); }
    bool isLinear() const { return mType == int(CurveType::Linear); }
    bool isQuadratic() const { return mType == int(CurveType::Quadratic); }
    bool isCubic() const { return mType == int(CurveType::Cubic); }
    bool isQuartic() const { return mType == int(CurveType::Quartic); }
    bool isQuintic() const { return mType == int(CurveType::Quintic); }
    /// The polynomial family (quadratic to quintic).
    bool is1D() const
    {
        return mType >= int(CurveType::Quadratic) && mType <= int(CurveType::Quintic);
    }
    /// The polynomial family and bezier: everything but linear and instant.
    bool isEased() const { return is1D() || isBezier(); }

    int cCount() const { return mCount; }
    /// Parameter `index` (0-based), 0.0 when the curve has no such parameter.
    double cAt(int index) const;

    /// The stored name ("linear", "bezier", ...); empty for an unknown type.
    QString curveTypeName() const { return curveTypeString(mType); }
    static QString curveTypeString(int type);

    /// Switches type and installs that type's default parameters. Keeps the
    /// current parameters when the curve already has the type, except that
    /// quartic and quintic test for a quadratic curve instead: a quadratic curve
    /// stays quadratic, and a quartic or quintic curve is reset to the defaults.
    /// Unknown type values change nothing.
    void setCurveType(int type);
    void setCurveType(CurveType type) { setCurveType(int(type)); }
    /// Case-sensitive name lookup; an unknown name changes nothing.
    void setCurveType(const QString &name);
    /// Replaces the parameters; 0..4 of them give linear, quadratic, cubic,
    /// quartic, quintic (never bezier). A longer list changes nothing.
    void setCurveType(const QVector<double> &params);
    void setCurveTypeToCSize(const QVector<double> &params) { setCurveType(params); }

    void setCurveToLinear();
    void setCurveToInstant();
    void setCurveToBezier();
    void setCurveToQuadratic();
    void setCurveToCubic();
    void setCurveToQuartic();
    void setCurveToQuintic();
    void setCurveTypeToQuadratic(double c1);
    void setCurveTypeToBezier(double x1, double y1, double x2, double y2);

    /// Stores `value` clamped to [-2, 3]; an index outside the list is ignored.
    void setC(int index, double value);
    /// Bezier handles: x is kept in [0, 1] (c1 / c3), y in [-2, 3] (c2 / c4).
    void setIn(double x, double y);
    void setOut(double x, double y);

    /// The eased ratio for the linear progress `t`; not clamped, so parameters
    /// outside [0, 1] overshoot.
    double trueT(double t) const;

    /// Equal only when both are linear or both are instant: eased curves never
    /// compare equal, so a caller comparing old and new always sees a change.
    bool operator==(const TweenInfo &other) const;
    bool operator!=(const TweenInfo &other) const { return !(*this == other); }

    /// Preview of the curve inside `rect` (bottom-left is (0,0), top-right (1,1)).
    void drawCurve(QPainter *painter, const QRectF &rect) const;

private:
    void setParameters(int type, std::initializer_list<double> params);
    double bezierT(double t) const;

    std::array<double, MaxParameters> mC{};
    qint8 mCount = 0;
    qint8 mType = qint8(CurveType::Linear);
};

} // namespace Morvane
