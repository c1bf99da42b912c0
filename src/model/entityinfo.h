// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"

namespace Morvane {

/// The sub-entity part of a timeline key: which entity and animation the
/// sub-entity plays, and how its time follows the parent.
class EntityInfo
{
public:
    enum RatioControl { TimeRatioControl = 0, SpeedRatioControl = 1 };

    EntityInfo() = default;
    /// The blend of two keys' sub-entity data at ratio `r`: `a`'s animation
    /// until r reaches 1, then `b`'s; the ratio that `a`'s method uses is
    /// interpolated linearly, everything else is `a`'s.
    EntityInfo(const EntityInfo &a, const EntityInfo &b, double r);
    EntityInfo(const EntityInfo &other) = default;
    EntityInfo &operator=(const EntityInfo &other) = default;

    /// Entity index and animation index (positions 0 and 1).
    Address animation;
    /// Position in the sub-animation as a fraction of its length.
    double timeRatio = 0.0;
    /// Playback speed relative to the parent.
    double speedRatio = 1.0;
    int ratioControlMethod = TimeRatioControl;

    bool isUsingSpeed() const { return ratioControlMethod == SpeedRatioControl; }
};

} // namespace Morvane
