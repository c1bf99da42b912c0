// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/displayinfo.h"
#include "model/object.h"

namespace Morvane {

/// What a child takes from its parent bone; alpha is always taken.
enum Inherit : unsigned {
    InheritPosition = 0x1,
    InheritAngle = 0x2,
    InheritScale = 0x4,
    InheritAll = 0x7,
};

/// The object info's inherit flags as `Inherit` bits; bones and skins never
/// inherit scale (a parent's scale stretches the distance to them, not their
/// own shape). Null (no object info) inherits everything.
inline unsigned inheritFlags(const Object *object)
{
    if (!object)
        return InheritAll;
    return (object->inhPos() ? unsigned(InheritPosition) : 0u) |
           (object->inhAngle() ? unsigned(InheritAngle) : 0u) |
           (object->inhScale() && !object->isBone() && !object->isSkin() ? unsigned(InheritScale)
                                                                         : 0u);
}

/// Position, angle and scale are independent in the composition: each value
/// the child does not inherit is the same in the parent's space as in the
/// canvas's, so it passes through either way.
inline void keepUninherited(DisplayInfo &out, const DisplayInfo &in, unsigned inherit)
{
    if (!(inherit & InheritPosition)) {
        out.x = in.x;
        out.y = in.y;
    }
    if (!(inherit & InheritAngle))
        out.angle = in.angle;
    if (!(inherit & InheritScale)) {
        out.xScale = in.xScale;
        out.yScale = in.yScale;
    }
}

/// `local` composed onto `parent` (`DisplayInfo::unmapFromParentInfo`) for a
/// child that inherits only what `inherit` names.
inline DisplayInfo unmapFromParent(const DisplayInfo &local, const DisplayInfo &parent,
                                   unsigned inherit)
{
    DisplayInfo world = local.unmapFromParentInfo(parent);
    if (inherit != InheritAll)
        keepUninherited(world, local, inherit);
    return world;
}

/// The inverse: `world` in `parent`'s space for such a child. A zero parent
/// scale or alpha gives infinities, as `mapToParentInfo` does.
inline DisplayInfo mapToParent(const DisplayInfo &world, const DisplayInfo &parent,
                               unsigned inherit)
{
    DisplayInfo local = world.mapToParentInfo(parent);
    if (inherit != InheritAll)
        keepUninherited(local, world, inherit);
    return local;
}

} // namespace Morvane
