// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <limits>

namespace Morvane {

/// A computed time (milliseconds) as a whole time: truncated toward zero,
/// saturating at the ends of int, and NaN counting as the lowest time.
inline int truncatedTime(double t)
{
    if (!(t > double(std::numeric_limits<int>::min())))
        return std::numeric_limits<int>::min();
    if (!(t < double(std::numeric_limits<int>::max())))
        return std::numeric_limits<int>::max();
    return int(t);
}

} // namespace Morvane
