// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>
#include <QVariant>

namespace Morvane {

/// The type of a variable; the values are those the editor has always used.
enum class VarType : int {
    Invalid = 1,
    Cluster = 2,
    String = 3,
    Int = 4,
    Float = 5,
    Tag = 6,
};

/// The file name of a type: "invalid", "cluster", "string", "int", "float", "tag".
QString varTypeToString(VarType type);
/// The type named `name` (exact, case-sensitive); `VarType::Invalid` for
/// anything unknown.
VarType varTypeFromString(const QString &name);

/// `value` turned into the variant a variable of `type` holds: an int for int
/// variables (a fractional value truncated toward zero, out-of-range clamped),
/// a double for float, a string for string; anything unconvertible gives the
/// type's zero value. Cluster and tag values are passed through.
QVariant varValueForType(VarType type, const QVariant &value);

/// The zero value of `type` (0, 0.0 or the empty string).
QVariant varZeroValue(VarType type);

} // namespace Morvane
