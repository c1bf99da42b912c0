// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/vartype.h"

#include <QString>
#include <QVariant>

namespace Morvane {

/// One variable declaration of an entity or an object.
struct ValInfo
{
    /// Unique within its collection; value lines refer to the variable by it.
    int id = -1;
    QString name;
    VarType type = VarType::Invalid;
    /// Held as the type's variant (int, double or QString).
    QVariant defaultValue;

    bool operator==(const ValInfo &other) const
    {
        return id == other.id && name == other.name && type == other.type &&
               defaultValue == other.defaultValue;
    }
    bool operator!=(const ValInfo &other) const { return !(*this == other); }
};

} // namespace Morvane
