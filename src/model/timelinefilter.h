// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/object.h"
#include "model/timeline.h"

#include <QSet>

namespace Morvane {

/// Which timelines of an animation get rows in the timeline view, and so which
/// timeline a line of a key-time change set names. A default filter shows
/// every timeline.
struct TimelineFilter
{
    bool showBones = true;
    bool showSprites = true;
    bool showBoxes = true;
    bool showPoints = true;
    bool showSkins = true;
    bool showSubEntities = true;
    bool showSounds = true;
    bool showEvents = true;
    /// With `showSelectedOnly`, only the timelines whose indexes are in
    /// `selectedTimelines` are shown (and then only those the types let through).
    bool showSelectedOnly = false;
    QSet<int> selectedTimelines;

    /// Whether the timeline at `index` of its animation is shown.
    bool accepts(const Timeline *timeline, int index) const
    {
        if (!timeline)
            return false;
        if (showSelectedOnly && !selectedTimelines.contains(index))
            return false;
        switch (timeline->objectType()) {
        case Object::Bone:
            return showBones;
        case Object::Sprite:
        case Object::GuideSprite:
            return showSprites;
        case Object::Box:
        case Object::GuideBox:
        case Object::GuideLine:
            return showBoxes;
        case Object::Point:
            return showPoints;
        case Object::Skin:
            return showSkins;
        case Object::SubEntity:
            return showSubEntities;
        case Object::Sound:
            return showSounds;
        case Object::Event:
            return showEvents;
        default:
            return true;
        }
    }

    bool showsEverything() const
    {
        return showBones && showSprites && showBoxes && showPoints && showSkins
               && showSubEntities && showSounds && showEvents && !showSelectedOnly;
    }
};

} // namespace Morvane
