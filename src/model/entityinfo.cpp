// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/entityinfo.h"

namespace Morvane {

EntityInfo::EntityInfo(const EntityInfo &a, const EntityInfo &b, double r)
    : animation(r < 1.0 ? a.animation : b.animation)
    , timeRatio(a.timeRatio)
    , speedRatio(a.speedRatio)
    , ratioControlMethod(a.ratioControlMethod)
{
    if (isUsingSpeed())
        speedRatio = a.speedRatio + (b.speedRatio - a.speedRatio) * r;
    else
        timeRatio = a.timeRatio + (b.timeRatio - a.timeRatio) * r;
}

} // namespace Morvane
