// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "eval/pose.h"
#include "model/tweeninfo.h"

#include <QHash>

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
/// A mainline key's references are read the first time a time falls in it,
/// so `evaluate` fills the evaluator as it goes: one evaluator serves one
/// thread at a time.
///
/// The values equal those of `ObjectRef::unmappedInfo` at the time that
/// `Animation::sampleTime` gives: to the bit for references without a parent,
/// within rounding where parents are composed.
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
    // A timeline key as the spans are built from it.
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
        double pivotX;
        double pivotY;
        int time;
        int curve; // index into mCurves, -1 for linear
        bool defaultPivot;
        const File *pivotFile; // the file whose default pivot the key may follow
        const File *file;
        const TimelineKey *key;
    };
    struct Line
    {
        int firstKey;  // into mKeyTimes
        int keyCount;
        int firstSpan; // into mKeySpans: keyCount + 1 of them, from before the first key
        const Timeline *timeline;
        const Object *object;
    };
    // The blend from one key towards the next: the start values and the
    // differences, so that a blend is a multiply-add per value. mSpans holds
    // one per reference of each mainline key, for the pair in force at that
    // key's time, side by side in evaluation order: a pose reads one run of
    // memory from front to back instead of two keys scattered per reference.
    // mKeySpans holds one per timeline key, for times that fall elsewhere.
    struct Span
    {
        double x;
        double y;
        double angle; // already turned the short way towards the next key
        double xScale;
        double yScale;
        double alpha;
        double dx;
        double dy;
        double dAngle;
        double dXScale;
        double dYScale;
        double dAlpha;
        double start;  // time of the first key
        double length; // time of the next key - start; infinite when held
        int from;      // the span holds for from <= time < until
        int until;
        int curve; // index into mCurves, -1 for linear (and when held)
        int parentSlot; // bones: an earlier slot of the same key; -1 at the root
        unsigned inherit; // Inherit bits of the reference's object

        double width;
        double height;
        double dWidth;
        double dHeight;
        double pivotX;
        double pivotY;
        const File *pivotFile; // set when both keys follow the file's pivot
        const File *file;
        const TimelineKey *key;
        const TimelineKey *nextKey;
        const ObjectRef *ref;
        int line;
    };
    struct MainKey
    {
        const MainlineKey *key;
        TweenInfo curve;
        int firstRef; // into mSpans, bones first, then objects in z order; -1 until read
        int boneCount;
        int objectCount;
    };

    Span keySpan(const Key *keys, int n, int first) const;
    const MainKey &mainKeyAt(int index) const;
    void readReferences(MainKey &main) const;
    int spanAt(int line, int time) const;
    void evaluateSpan(const Span &span, int sampleTime, PoseItem &out) const;
    void blend(const Span &span, const Span &owner, int sampleTime, PoseItem &out) const;

    const Animation *mAnimation = nullptr;
    int mLength = 0;
    bool mLooping = false;
    int mMaxBones = 0;
    int mMaxObjects = 0;
    std::vector<int> mMainTimes;
    mutable std::vector<MainKey> mMainKeys;
    mutable std::vector<Span> mSpans;
    QHash<const Timeline *, int> mLineOf;
    // Scratch of `readReferences`, kept so that posing does not allocate.
    mutable std::vector<int> mSlotOf;
    mutable std::vector<char> mPlaced;
    mutable std::vector<int> mStack;
    std::vector<Line> mLines;
    std::vector<int> mKeyTimes;
    std::vector<Span> mKeySpans; // every line's blends from each key, in time order
    std::vector<TweenInfo> mCurves;
};

} // namespace Morvane
