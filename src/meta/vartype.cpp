// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/vartype.h"

#include <cmath>
#include <limits>

namespace Morvane {

QString varTypeToString(VarType type)
{
    switch (type) {
    case VarType::Cluster:
        return QStringLiteral("cluster");
    case VarType::String:
        return QStringLiteral("string");
    case VarType::Int:
        return QStringLiteral("int");
    case VarType::Float:
        return QStringLiteral("float");
    case VarType::Tag:
        return QStringLiteral("tag");
    case VarType::Invalid:
        break;
    }
    return QStringLiteral("invalid");
}

VarType varTypeFromString(const QString &name)
{
    if (name == QLatin1String("cluster"))
        return VarType::Cluster;
    if (name == QLatin1String("string"))
        return VarType::String;
    if (name == QLatin1String("int"))
        return VarType::Int;
    if (name == QLatin1String("float"))
        return VarType::Float;
    if (name == QLatin1String("tag"))
        return VarType::Tag;
    return VarType::Invalid;
}

QVariant varZeroValue(VarType type)
{
    switch (type) {
    case VarType::Int:
        return QVariant(0);
    case VarType::Float:
        return QVariant(0.0);
    case VarType::String:
        return QVariant(QString());
    default:
        return QVariant();
    }
}

QVariant varValueForType(VarType type, const QVariant &value)
{
    switch (type) {
    case VarType::Int: {
        bool ok = false;
        const double d = value.toDouble(&ok);
        if (!ok || !std::isfinite(d))
            return QVariant(0);
        // Truncate toward zero like the line evaluation does; clamp so the
        // conversion of a huge value stays defined.
        const double t = std::trunc(d);
        if (t <= double(std::numeric_limits<int>::min()))
            return QVariant(std::numeric_limits<int>::min());
        if (t >= double(std::numeric_limits<int>::max()))
            return QVariant(std::numeric_limits<int>::max());
        return QVariant(int(t));
    }
    case VarType::Float: {
        bool ok = false;
        const double d = value.toDouble(&ok);
        return QVariant(ok && std::isfinite(d) ? d : 0.0);
    }
    case VarType::String:
        return QVariant(value.toString());
    default:
        return value;
    }
}

} // namespace Morvane
