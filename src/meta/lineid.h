// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/vartype.h"

namespace Morvane {

/// Which line of a `ValueLineHolder`: a variable's line (its type and id), or
/// the tag line (type `VarType::Tag`, no variable).
struct LineId
{
    VarType type = VarType::Invalid;
    int varId = -1;

    static LineId tagLine() { return {VarType::Tag, -1}; }
    bool isTagLine() const { return type == VarType::Tag; }
    bool operator==(const LineId &) const = default;
};

/// A line and a key time on it (milliseconds).
struct LineTimeId
{
    LineId line;
    int time = 0;

    bool operator==(const LineTimeId &) const = default;
};

} // namespace Morvane
