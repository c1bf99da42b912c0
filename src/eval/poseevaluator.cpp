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

inline double normalizedAngle(double degrees)
{
    if (degrees >= 0.0 && degrees <= 360.0)
        return degrees;
    return DisplayInfo::normalizedAngle(degrees);
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
            mKeyTimes.push_back(key->time(true));
            mKeys.push_back(Key{info.x, info.y, info.angle, info.xScale, info.yScale, info.alpha,
                                info.width, info.height, info.pivotX(false), info.pivotY(false),
                                pivotFile, key->fileInfo().file(), key, key->curve(),
                                info.defaultPivot()});
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
    pose.bones.clear();
    pose.objects.clear();

    const int index = mainlineKeyIndexAt(pose.time);
    if (index < 0)
        return;
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

    pose.bones.resize(size_t(main.boneCount));
    pose.objects.resize(size_t(main.objectCount));
    const Ref *ref = mRefs.data() + main.firstRef;
    for (int i = 0; i < main.boneCount; ++i, ++ref) {
        PoseItem &out = pose.bones[size_t(i)];
        evaluateRef(*ref, pose.sampleTime, out);
        if (ref->parentSlot >= 0) {
            const PoseItem &parent = pose.bones[size_t(ref->parentSlot)];
            const double sx = out.x * parent.xScale;
            const double sy = out.y * parent.yScale;
            out.x = sx * parent.cosAngle - sy * parent.sinAngle + parent.x;
            out.y = sx * parent.sinAngle + sy * parent.cosAngle + parent.y;
            const double local = parent.xScale * parent.yScale < 0.0 ? 360.0 - out.angle
                                                                    : out.angle;
            out.angle = normalizedAngle(local + parent.angle);
            out.xScale *= parent.xScale;
            out.yScale *= parent.yScale;
            out.alpha *= parent.alpha;
        }
        const double radians = out.angle / DisplayInfo::DegreesPerRadian;
        out.cosAngle = std::cos(radians);
        out.sinAngle = std::sin(radians);
    }
    for (int i = 0; i < main.objectCount; ++i, ++ref) {
        PoseItem &out = pose.objects[size_t(i)];
        evaluateRef(*ref, pose.sampleTime, out);
        out.z = i;
        if (ref->parentSlot >= 0) {
            const PoseItem &parent = pose.bones[size_t(ref->parentSlot)];
            const double sx = out.x * parent.xScale;
            const double sy = out.y * parent.yScale;
            out.x = sx * parent.cosAngle - sy * parent.sinAngle + parent.x;
            out.y = sx * parent.sinAngle + sy * parent.cosAngle + parent.y;
            const double local = parent.xScale * parent.yScale < 0.0 ? 360.0 - out.angle
                                                                    : out.angle;
            out.angle = normalizedAngle(local + parent.angle);
            out.xScale *= parent.xScale;
            out.yScale *= parent.yScale;
            out.alpha *= parent.alpha;
        }
        out.shownFile = out.file ? out.file->redirectedFile() : nullptr;
    }
}

void PoseEvaluator::evaluateRef(const Ref &ref, int sampleTime, PoseItem &out) const
{
    const Line &line = mLines[size_t(ref.line)];
    const int *times = mKeyTimes.data() + line.firstKey;
    const int n = line.keyCount;

    // The last key at or before the time: usually the referenced one.
    int ia = ref.keyHint;
    if (ia < 0 || times[ia] > sampleTime || (ia + 1 < n && times[ia + 1] <= sampleTime))
        ia = int(std::upper_bound(times, times + n, sampleTime) - times) - 1;

    int ib = -1;
    double r = 0.0;
    if (ia < 0) {
        ia = 0; // before the first key: it holds
    } else {
        double bTime = 0.0;
        if (ia + 1 < n) {
            ib = ia + 1;
            bTime = times[ib];
        } else if (mLooping) {
            ib = 0;
            bTime = double(times[0]) + mLength;
        }
        const double aTime = times[ia];
        if (ib >= 0 && bTime > aTime)
            r = mKeys[size_t(line.firstKey + ia)].curve.trueT((sampleTime - aTime) / (bTime - aTime));
        else
            ib = -1;
    }
    if (ib < 0)
        ib = ia;

    const Key &a = mKeys[size_t(line.firstKey + ia)];
    const Key &b = mKeys[size_t(line.firstKey + ib)];
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
    if (to - from < -180.0 || to - from > 180.0)
        DisplayInfo::shortWayAngles(from, to);
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
