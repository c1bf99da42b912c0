// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "eval/poseevaluator.h"

#include "eval/displayinfo.h"
#include "model/animation.h"
#include "model/file.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Morvane {

namespace {

int truncatedTime(double t)
{
    if (!(t > double(std::numeric_limits<int>::min())))
        return std::numeric_limits<int>::min();
    if (!(t < double(std::numeric_limits<int>::max())))
        return std::numeric_limits<int>::max();
    return int(t);
}

/// Sine and cosine of an angle in degrees (0..360). Whole quarter turns come
/// off exactly, so right angles give exact 0 and 1; the rest is the classic
/// kernel polynomials on [-45, 45] degrees, evaluated in pairs to shorten the
/// chain of dependent steps: within an ulp or two of the library functions
/// and several times faster.
inline void sinCosDegrees(double degrees, double *sine, double *cosine)
{
    if (!(degrees >= 0.0 && degrees <= 360.0)) {
        const double radians = degrees / DisplayInfo::DegreesPerRadian;
        *sine = std::sin(radians);
        *cosine = std::cos(radians);
        return;
    }
    const int quarter = int(degrees * (1.0 / 90.0) + 0.5);
    const double x = (degrees - quarter * 90.0) * (3.14159265358979323846 / 180.0);
    const double z = x * x;
    const double z2 = z * z;

    const double s01 = -1.66666666666666324348e-01 + z * 8.33333333332248946124e-03;
    const double s23 = -1.98412698298579493134e-04 + z * 2.75573137070700676789e-06;
    const double s45 = -2.50507602534068634195e-08 + z * 1.58969099521155010221e-10;
    const double s = x + x * z * (s01 + z2 * (s23 + z2 * s45));

    const double c01 = 4.16666666666666019037e-02 + z * -1.38888888888741095749e-03;
    const double c23 = 2.48015872894767294178e-05 + z * -2.75573143513906633035e-07;
    const double c45 = 2.08757232129817482790e-09 + z * -1.13596475577881948265e-11;
    const double c = 1.0 - 0.5 * z + z2 * (c01 + z2 * (c23 + z2 * c45));

    switch (quarter & 3) {
    case 0:
        *sine = s;
        *cosine = c;
        break;
    case 1:
        *sine = c;
        *cosine = -s;
        break;
    case 2:
        *sine = -s;
        *cosine = -c;
        break;
    default:
        *sine = -c;
        *cosine = s;
        break;
    }
}

inline double normalizedAngle(double degrees)
{
    // One turn either way covers blends of normalised angles and compositions.
    if (degrees < 0.0)
        degrees += 360.0;
    else if (degrees > 360.0)
        degrees -= 360.0;
    if (degrees >= 0.0 && degrees <= 360.0)
        return degrees;
    return DisplayInfo::normalizedAngle(degrees);
}

// A local state composed onto its parent bone's world state (whose sine and
// cosine are already known): scale, then rotate, then translate; a mirrored
// parent reverses the child's angle.
inline void composeOntoParent(PoseItem &out, const PoseItem &parent)
{
    const double sx = out.x * parent.xScale;
    const double sy = out.y * parent.yScale;
    out.x = sx * parent.cosAngle - sy * parent.sinAngle + parent.x;
    out.y = sx * parent.sinAngle + sy * parent.cosAngle + parent.y;
    const double local = parent.xScale * parent.yScale < 0.0 ? 360.0 - out.angle : out.angle;
    out.angle = normalizedAngle(local + parent.angle);
    out.xScale *= parent.xScale;
    out.yScale *= parent.yScale;
    out.alpha *= parent.alpha;
}

} // namespace

void PoseEvaluator::rebuild(const Animation *animation)
{
    mAnimation = animation;
    mLength = 0;
    mLooping = false;
    mMaxBones = 0;
    mMaxObjects = 0;
    mMainTimes.clear();
    mMainKeys.clear();
    mRefs.clear();
    mLines.clear();
    mKeyTimes.clear();
    mKeys.clear();
    mCurves.clear();
    if (!animation)
        return;
    mLength = animation->length();
    mLooping = animation->isLooping();

    // Timelines: keys in time order (stable, as the model keeps them), flat.
    QHash<const Timeline *, int> lineOf;
    QHash<const TimelineKey *, int> positionOf;
    std::vector<int> order;
    for (int i = 0; i < animation->timelineCount(); ++i) {
        const Timeline *tl = animation->timeline(i);
        lineOf.insert(tl, i);
        Line line{int(mKeys.size()), tl->keyCount(), tl, tl->object()};
        order.resize(size_t(tl->keyCount()));
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [tl](int a, int b) {
            return tl->key(a)->time(true) < tl->key(b)->time(true);
        });
        for (int k = 0; k < line.keyCount; ++k) {
            const TimelineKey *key = tl->key(order[size_t(k)]);
            const DisplayInfo &info = key->info();
            positionOf.insert(key, k);
            const File *pivotFile = nullptr;
            if (!info.fileLink().isEmpty())
                pivotFile = info.fileLink().file(false);
            const int time = key->time(true);
            mKeyTimes.push_back(time);
            int curve = -1;
            if (!key->curve().isLinear()) {
                curve = int(mCurves.size());
                mCurves.push_back(key->curve());
            }
            mKeys.push_back(Key{info.x, info.y, info.angle, info.xScale, info.yScale, info.alpha,
                                info.width, info.height, time, curve, info.defaultPivot(),
                                info.pivotX(false), info.pivotY(false), pivotFile,
                                key->fileInfo().file(), key});
        }
        mLines.push_back(line);
    }

    // Mainline keys in time order, each with its bones parents first.
    std::vector<const MainlineKey *> keys;
    for (int i = 0; i < animation->mainlineKeyCount(); ++i)
        keys.push_back(animation->mainlineKey(i));
    std::stable_sort(keys.begin(), keys.end(), [](const MainlineKey *a, const MainlineKey *b) {
        return a->currentTime() < b->currentTime();
    });

    std::vector<int> slotOf;
    std::vector<bool> placed;
    std::vector<int> stack;
    for (const MainlineKey *mk : keys) {
        MainKey main{mk, mk->curve(), int(mRefs.size()), 0, 0};
        const int boneCount = mk->boneRefCount();
        slotOf.assign(size_t(boneCount), -1);
        placed.assign(size_t(boneCount), false);

        auto lineFor = [&](const ObjectRef *ref, int *hint) {
            const TimelineKey *key = ref->key();
            const Timeline *tl = key ? key->parentTimeline() : nullptr;
            const int line = lineOf.value(tl, -1);
            *hint = line >= 0 ? positionOf.value(key, -1) : -1;
            return line;
        };
        auto appendBone = [&](int index, int parentSlot) {
            const BoneRef *ref = mk->boneRef(index);
            int hint = -1;
            const int line = lineFor(ref, &hint);
            placed[size_t(index)] = true;
            if (line < 0 || mLines[size_t(line)].keyCount == 0)
                return; // nothing to evaluate: its children hang at the root
            slotOf[size_t(index)] = main.boneCount++;
            mRefs.push_back(Ref{ref, line, parentSlot, hint});
        };

        // Depth first from the roots; what no root reaches (a parent cycle, a
        // parent in another mainline key) follows as roots.
        auto parentIndex = [mk](const ObjectRef *ref) {
            return ref->parentRef() ? mk->indexOfBoneRef(ref->parentRef()) : -1;
        };
        for (int pass = 0; pass < 2; ++pass) {
            for (int root = 0; root < boneCount; ++root) {
                if (placed[size_t(root)])
                    continue;
                if (pass == 0 && parentIndex(mk->boneRef(root)) >= 0)
                    continue;
                stack.assign(1, root);
                appendBone(root, -1);
                while (!stack.empty()) {
                    const int parent = stack.back();
                    bool descended = false;
                    for (int c = 0; c < boneCount; ++c) {
                        if (!placed[size_t(c)] && parentIndex(mk->boneRef(c)) == parent) {
                            appendBone(c, slotOf[size_t(parent)]);
                            stack.push_back(c);
                            descended = true;
                            break;
                        }
                    }
                    if (!descended)
                        stack.pop_back();
                }
            }
        }

        for (int z = 0; z < mk->zRefCount(); ++z) {
            const ZRef *ref = mk->zRef(z);
            int hint = -1;
            const int line = lineFor(ref, &hint);
            if (line < 0 || mLines[size_t(line)].keyCount == 0)
                continue;
            const int parent = parentIndex(ref);
            mRefs.push_back(Ref{ref, line, parent >= 0 ? slotOf[size_t(parent)] : -1, hint});
            ++main.objectCount;
        }
        mMaxBones = std::max(mMaxBones, main.boneCount);
        mMaxObjects = std::max(mMaxObjects, main.objectCount);
        mMainTimes.push_back(mk->currentTime());
        mMainKeys.push_back(main);
    }
}

void PoseEvaluator::reserve(Pose &pose) const
{
    pose.bones.reserve(size_t(mMaxBones));
    pose.objects.reserve(size_t(mMaxObjects));
}

int PoseEvaluator::mainlineKeyIndexAt(int time) const
{
    const int t = std::clamp(time, 0, std::max(mLength, 0));
    const auto it = std::upper_bound(mMainTimes.begin(), mMainTimes.end(), t);
    return int(it - mMainTimes.begin()) - 1;
}

void PoseEvaluator::evaluate(int time, Pose &pose) const
{
    pose.animation = mAnimation;
    pose.mainlineKey = nullptr;
    pose.time = std::clamp(time, 0, std::max(mLength, 0));
    pose.sampleTime = pose.time;

    const int index = mainlineKeyIndexAt(pose.time);
    if (index < 0) {
        pose.bones.clear();
        pose.objects.clear();
        return;
    }
    const MainKey &main = mMainKeys[size_t(index)];
    pose.mainlineKey = main.key;

    // The mainline key eases time towards the next key (after the last one,
    // towards the first key one length later); a lone key samples its own time.
    const double start = mMainTimes[size_t(index)];
    double end = start;
    if (size_t(index) + 1 < mMainTimes.size())
        end = mMainTimes[size_t(index) + 1];
    else if (mMainTimes.size() > 1)
        end = double(mMainTimes.front()) + mLength;
    if (end != start) {
        const double ratio = (pose.time - start) / (end - start);
        pose.sampleTime = truncatedTime(start + main.curve.trueT(ratio) * (end - start));
    } else {
        pose.sampleTime = int(start);
    }

    // The items are overwritten below: only resize, never clear, so that they
    // are not constructed afresh each time.
    if (pose.bones.size() != size_t(main.boneCount))
        pose.bones.resize(size_t(main.boneCount));
    if (pose.objects.size() != size_t(main.objectCount))
        pose.objects.resize(size_t(main.objectCount));
    const Ref *ref = mRefs.data() + main.firstRef;
    for (int i = 0; i < main.boneCount; ++i, ++ref) {
        PoseItem &out = pose.bones[size_t(i)];
        evaluateRef(*ref, pose.sampleTime, out);
        if (ref->parentSlot >= 0)
            composeOntoParent(out, pose.bones[size_t(ref->parentSlot)]);
        sinCosDegrees(out.angle, &out.sinAngle, &out.cosAngle);
    }
    for (int i = 0; i < main.objectCount; ++i, ++ref) {
        PoseItem &out = pose.objects[size_t(i)];
        evaluateRef(*ref, pose.sampleTime, out);
        out.z = i;
        if (ref->parentSlot >= 0)
            composeOntoParent(out, pose.bones[size_t(ref->parentSlot)]);
        out.shownFile = out.file ? out.file->redirectedFile() : nullptr;
    }
}

void PoseEvaluator::evaluateRef(const Ref &ref, int sampleTime, PoseItem &out) const
{
    const Line &line = mLines[size_t(ref.line)];
    const Key *keys = mKeys.data() + line.firstKey;
    const int n = line.keyCount;

    // The last key at or before the time: usually the referenced one.
    int ia = ref.keyHint;
    if (ia < 0 || keys[ia].time > sampleTime || (ia + 1 < n && keys[ia + 1].time <= sampleTime)) {
        const int *times = mKeyTimes.data() + line.firstKey;
        ia = int(std::upper_bound(times, times + n, sampleTime) - times) - 1;
    }

    int ib = -1;
    double r = 0.0;
    if (ia < 0) {
        ia = 0; // before the first key: it holds
    } else {
        double bTime = 0.0;
        if (ia + 1 < n) {
            ib = ia + 1;
            bTime = keys[ib].time;
        } else if (mLooping) {
            ib = 0;
            bTime = double(keys[0].time) + mLength;
        }
        const double aTime = keys[ia].time;
        if (ib >= 0 && bTime > aTime) {
            r = (sampleTime - aTime) / (bTime - aTime);
            const int curve = keys[ia].curve;
            if (curve >= 0)
                r = mCurves[size_t(curve)].trueT(r);
        } else {
            ib = -1;
        }
    }
    if (ib < 0)
        ib = ia;

    const Key &a = keys[ia];
    const Key &b = keys[ib];
    out.ref = ref.ref;
    out.timeline = line.timeline;
    out.object = line.object;
    out.key = a.key;
    out.nextKey = b.key;
    out.ratio = r;
    out.file = a.file;
    out.shownFile = nullptr;
    out.timelineIndex = ref.line;
    out.parent = ref.parentSlot;
    out.z = -1;

    out.x = a.x + (b.x - a.x) * r;
    out.y = a.y + (b.y - a.y) * r;
    out.xScale = a.xScale + (b.xScale - a.xScale) * r;
    out.yScale = a.yScale + (b.yScale - a.yScale) * r;
    out.alpha = a.alpha + (b.alpha - a.alpha) * r;
    out.width = a.width + (b.width - a.width) * r;
    out.height = a.height + (b.height - a.height) * r;
    double from = a.angle;
    double to = b.angle;
    const double d = to - from;
    if (d < -180.0) {
        from -= 360.0;
        if (to - from < -180.0)
            DisplayInfo::shortWayAngles(from, to);
    } else if (d > 180.0) {
        to -= 360.0;
        if (to - from > 180.0)
            DisplayInfo::shortWayAngles(from, to);
    }
    out.angle = normalizedAngle(from + (to - from) * r);
    if (a.defaultPivot && b.defaultPivot && a.pivotFile) {
        const QPointF pivot = a.pivotFile->pivot();
        out.pivotX = pivot.x();
        out.pivotY = pivot.y();
    } else {
        out.pivotX = a.pivotX;
        out.pivotY = a.pivotY;
    }
}

} // namespace Morvane
