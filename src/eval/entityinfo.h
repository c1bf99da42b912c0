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
