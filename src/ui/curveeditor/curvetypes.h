// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/tweeninfo.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

namespace Morvane::CurveTypes {

/// The curve types in the order the editor offers them.
inline QList<int> offered()
{
    using T = TweenInfo::CurveType;
    return {int(T::Linear), int(T::Instant), int(T::Quadratic), int(T::Cubic),
            int(T::Quartic), int(T::Quintic), int(T::Bezier)};
}

/// What a user reads for a curve type.
inline QString label(int type)
{
    const QString name = TweenInfo::curveTypeString(type);
    if (name.isEmpty())
        return QCoreApplication::translate("CurveTypes", "(unknown)");
    return QCoreApplication::translate("CurveTypes", name.toUtf8().constData());
}

/// `curve` switched to `type`: unchanged when it has that type already,
/// otherwise the type's default parameters. Switching starts from a linear
/// curve, because a quadratic one refuses to become quartic or quintic.
inline TweenInfo switched(const TweenInfo &curve, int type)
{
    if (curve.curveType() == type)
        return curve;
    TweenInfo result;
    result.setCurveType(type);
    return result;
}

} // namespace Morvane::CurveTypes
