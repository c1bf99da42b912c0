// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <vector>

namespace Morvane {

class Animation;
class File;
class MainlineKey;
class Object;
class ObjectRef;
class Timeline;
class TimelineKey;

/// One bone or object of a pose, in canvas space: y grows downward, angles
/// are degrees clockwise in 0..360, the pivot is a fraction of the image with
/// y from the top edge. The pointers name model items and are valid only as
/// long as the model is unchanged.
struct PoseItem
{
    const ObjectRef *ref = nullptr;
    const Timeline *timeline = nullptr;
    const Object *object = nullptr; // null when the timeline animates no object
    /// The key in force and the key it blends towards (the same when held),
    /// with the eased blend ratio: what sub-entity data is blended from.
    const TimelineKey *key = nullptr;
    const TimelineKey *nextKey = nullptr;
    double ratio = 0.0;
    /// The key's own file, and the file shown in its place after character
    /// maps; `shownFile` is null when a map hides the image or there is none.
    const File *file = nullptr;
    const File *shownFile = nullptr;
    int timelineIndex = -1;
    /// Index of the parent bone in `Pose::bones`, -1 at the root.
    int parent = -1;
    /// Objects: drawing position, 0 at the back. Bones: -1.
    int z = -1;

    double x = 0.0;
    double y = 0.0;
    double angle = 0.0;
    double xScale = 1.0;
    double yScale = 1.0;
    double alpha = 1.0;
    double width = 0.0;
    double height = 0.0;
    double pivotX = 0.0;
    double pivotY = 0.0;
    /// Bones only: cosine and sine of `angle`, for composing children.
    double cosAngle = 1.0;
    double sinAngle = 0.0;
};

/// The whole pose of an animation at one time: every bone and object that the
/// mainline key in force references, with world values.
struct Pose
{
    const Animation *animation = nullptr;
    /// Null when no mainline key is in force (the pose is then empty).
    const MainlineKey *mainlineKey = nullptr;
    /// The requested time (clamped to the animation) and the eased time at
    /// which the timelines were sampled, milliseconds.
    int time = 0;
    int sampleTime = 0;
    /// Parents before children.
    std::vector<PoseItem> bones;
    /// Back to front.
    std::vector<PoseItem> objects;
};

} // namespace Morvane
