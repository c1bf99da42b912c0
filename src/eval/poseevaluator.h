// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "eval/pose.h"
#include "eval/tweeninfo.h"

#include <vector>

namespace Morvane {

class Animation;
class File;

/// Computes whole poses of one animation quickly: the animation's keys and
/// references are read once into flat arrays, with each mainline key's bones
/// in parent-before-child order, and `evaluate` then only blends and composes.
///
/// The evaluator keeps pointers into the model: after any change of the
/// animation (keys, references, curves, times, object infos, a file's default
/// pivot) call `rebuild` before evaluating again. Character maps need no
/// rebuild: the shown file is read live from the files' redirects.
///
/// The values equal those of `ObjectRef::unmappedInfo` at the time that
/// `Animation::sampleTime` gives.
class PoseEvaluator
{
public:
    PoseEvaluator() = default;
    explicit PoseEvaluator(const Animation *animation) { rebuild(animation); }

    /// Reads `animation` (null clears).
    void rebuild(const Animation *animation);
    void clear() { rebuild(nullptr); }
    const Animation *animation() const { return mAnimation; }

    /// The largest number of bones / objects any mainline key references.
    int maxBoneCount() const { return mMaxBones; }
    int maxObjectCount() const { return mMaxObjects; }
    /// Gives `pose` room for any time, so that `evaluate` never allocates.
    void reserve(Pose &pose) const;

    /// The pose at `time` (milliseconds, clamped to 0..length): the mainline
    /// key in force eases the time, each reference's timeline is blended at
    /// that eased time and composed onto its parent bone. Does not allocate
    /// once `pose` has room (see `reserve`).
    void evaluate(int time, Pose &pose) const;

    /// The index of the mainline key in force at `time`, -1 when none is.
    int mainlineKeyIndexAt(int time) const;

private:
    // About two cache lines per key, the blended values first; a key and the
    // next one of its timeline are neighbours, so a blend reads one stretch
    // of memory. Curves other than linear are kept apart in mCurves.
    struct Key
    {
        double x;
        double y;
        double angle;
        double xScale;
        double yScale;
        double alpha;
        double width;
        double height;
        int time;
        int curve; // index into mCurves, -1 for linear
        bool defaultPivot;
        double pivotX;
        double pivotY;
        const File *pivotFile; // the file whose default pivot the key may follow
        const File *file;
        const TimelineKey *key;
    };
    struct Line
    {
        int firstKey;
        int keyCount;
        const Timeline *timeline;
        const Object *object;
    };
    struct Ref
    {
        const ObjectRef *ref;
        int line;
        int parentSlot; // bones: an earlier slot of the same key; -1 at the root
        int keyHint;    // the referenced key's position in its line, -1 unknown
    };
    struct MainKey
    {
        const MainlineKey *key;
        TweenInfo curve;
        int firstRef; // bones first, then objects in z order
        int boneCount;
        int objectCount;
    };

    void evaluateRef(const Ref &ref, int sampleTime, PoseItem &out) const;

    const Animation *mAnimation = nullptr;
    int mLength = 0;
    bool mLooping = false;
    int mMaxBones = 0;
    int mMaxObjects = 0;
    std::vector<int> mMainTimes;
    std::vector<MainKey> mMainKeys;
    std::vector<Ref> mRefs;
    std::vector<Line> mLines;
    std::vector<int> mKeyTimes;
    std::vector<Key> mKeys;
    std::vector<TweenInfo> mCurves;
};

} // namespace Morvane
