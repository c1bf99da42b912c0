// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QHash>

#include <memory>
#include <vector>

namespace Morvane {

class Animation;
class Timeline;
class TimelineGraphicsProxy;

/// What the canvas shows while keys are dragged in the timeline: a small
/// detached animation holding, around one time, what the shown animation will
/// hold there once the drag is recorded (the mainline key in force with its
/// hierarchy and drawing order, and each timeline's keys around the time at
/// their new times), built from the markers' positions. The document stays as
/// it is until the drag ends; building costs a few keys per timeline, not the
/// whole animation.
class DragPreview
{
public:
    DragPreview();
    ~DragPreview();

    /// Notes the rows of a drag that starts on `animation` (the rows must stay
    /// until `clear`): the mainline row and the timeline rows by timeline.
    void begin(const Animation *animation, const std::vector<TimelineGraphicsProxy *> &rows);
    /// The stand-in for `timeMs`, owned until the build after next or `clear`; null
    /// when the rows no longer match the animation.
    Animation *build(const Animation *animation, int timeMs);
    void clear();
    bool isActive() const { return mMainline != nullptr; }

private:
    const TimelineGraphicsProxy *mMainline = nullptr;
    // By timeline index; null where the filters give a timeline no row.
    std::vector<const TimelineGraphicsProxy *> mRows;
    // Rows with selected keys (the only ones whose keys can move).
    std::vector<bool> mMoving;
    QHash<const Timeline *, int> mTimelineIndex;
    std::unique_ptr<Animation> mPreview;
    // The stand-in built before: the canvas may still point at it until it
    // takes the new one.
    std::unique_ptr<Animation> mRetired;
};

} // namespace Morvane
