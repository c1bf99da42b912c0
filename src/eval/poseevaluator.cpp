// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "eval/poseevaluator.h"

#include "model/animation.h"
#include "model/displayinfo.h"
#include "model/file.h"
#include "model/inheritance.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "model/timeunits.h"

#include <QHash>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Morvane {

namespace {

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

    // The quadrant swaps sine and cosine and flips signs; done with bits, as
    // the quadrant of a random angle is no pattern a branch could learn.
    const unsigned q = unsigned(quarter);
    const double swapped[2][2] = {{s, c}, {c, s}};
    const double *pair = swapped[q & 1u];
    const std::uint64_t sineSign = std::uint64_t(q & 2u) << 62;
    const std::uint64_t cosineSign = std::uint64_t((q + 1u) & 2u) << 62;
    *sine = std::bit_cast<double>(std::bit_cast<std::uint64_t>(pair[0]) ^ sineSign);
    *cosine = std::bit_cast<double>(std::bit_cast<std::uint64_t>(pair[1]) ^ cosineSign);
}

inline double normalizedAngle(double degrees)
{
    // One turn either way covers blends of normalised angles and compositions.
    // Selected with masks rather than branches: which side a sum falls on is
    // as random as the angles, so a branch would be mispredicted half the time,
    // and compilers turn plain selections back into branches.
#if defined(__SSE2__)
    const __m128d turn = _mm_set_sd(360.0);
    __m128d d = _mm_set_sd(degrees);
    d = _mm_add_sd(d, _mm_and_pd(_mm_cmplt_sd(d, _mm_setzero_pd()), turn));
    d = _mm_sub_sd(d, _mm_and_pd(_mm_cmpgt_sd(d, turn), turn));
    degrees = _mm_cvtsd_f64(d);
#else
    if (degrees < 0.0)
        degrees += 360.0;
    else if (degrees > 360.0)
        degrees -= 360.0;
#endif
    if (degrees >= 0.0 && degrees <= 360.0) [[likely]]
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

// The same for a child that inherits only some of position, angle and scale
// (bones never inherit scale): what it does not inherit stays its own.
inline void composeOntoParent(PoseItem &out, const PoseItem &parent, unsigned inherit)
{
    if (inherit == InheritAll) [[likely]] {
        composeOntoParent(out, parent);
        return;
    }
    const double x = out.x;
    const double y = out.y;
    const double angle = out.angle;
    const double xScale = out.xScale;
    const double yScale = out.yScale;
    composeOntoParent(out, parent);
    if (!(inherit & InheritPosition)) {
        out.x = x;
        out.y = y;
    }
    if (!(inherit & InheritAngle))
        out.angle = angle;
    if (!(inherit & InheritScale)) {
        out.xScale = xScale;
        out.yScale = yScale;
    }
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
    mSpans.clear();
    mLines.clear();
    mKeyTimes.clear();
    mKeySpans.clear();
    mCurves.clear();
    mLineOf.clear();
    if (!animation)
        return;
    mLength = animation->length();
    mLooping = animation->isLooping();

    // Timelines: keys in time order (stable, as the model keeps them), flat,
    // and the blend from each key towards the next one.
    size_t keyCount = 0;
    for (int i = 0; i < animation->timelineCount(); ++i)
        keyCount += size_t(animation->timeline(i)->keyCount()) + 1;
    mKeyTimes.reserve(keyCount);
    mKeySpans.reserve(keyCount);
    std::vector<int> order;
    std::vector<int> times;
    std::vector<Key> keys;
    for (int i = 0; i < animation->timelineCount(); ++i) {
        const Timeline *tl = animation->timeline(i);
        mLineOf.insert(tl, i);
        Line line{int(mKeyTimes.size()), tl->keyCount(), int(mKeySpans.size()), tl, tl->object()};
        keys.clear();
        // A key's time is read through its mainline key: read each once. The
        // model keeps its keys in order almost always, so a pass that finds
        // them so spares the sort.
        times.resize(size_t(tl->keyCount()));
        for (int k = 0; k < tl->keyCount(); ++k)
            times[size_t(k)] = tl->key(k)->time(true);
        order.resize(size_t(tl->keyCount()));
        std::iota(order.begin(), order.end(), 0);
        if (!std::is_sorted(times.begin(), times.end())) {
            std::stable_sort(order.begin(), order.end(), [&times](int a, int b) {
                return times[size_t(a)] < times[size_t(b)];
            });
        }
        for (int k = 0; k < line.keyCount; ++k) {
            const TimelineKey *key = tl->key(order[size_t(k)]);
            const DisplayInfo &info = key->info();
            const File *pivotFile = nullptr;
            if (!info.fileLink().isEmpty())
                pivotFile = info.fileLink().file(false);
            const int time = times[size_t(order[size_t(k)])];
            mKeyTimes.push_back(time);
            int curve = -1;
            if (!key->curve().isLinear()) {
                curve = int(mCurves.size());
                mCurves.push_back(key->curve());
            }
            keys.push_back(Key{info.x, info.y, info.angle, info.xScale, info.yScale, info.alpha,
                               info.width, info.height, info.pivotX(false), info.pivotY(false),
                               time, curve, info.defaultPivot(), pivotFile,
                               key->fileInfo().file(), key});
        }
        // A timeline without keys (its object deleted from every frame) has
        // no spans; no reference reaches it.
        for (int k = -1; line.keyCount > 0 && k < line.keyCount; ++k)
            mKeySpans.push_back(keySpan(keys.data(), line.keyCount, k));
        mLines.push_back(line);
    }

    // Mainline keys in time order. Their references are read when a time
    // first falls in them (see `mainKeyAt`): after an edit the canvas shows
    // one time, and a large animation's other keys would only cost the wait.
    std::vector<const MainlineKey *> mainKeys;
    for (int i = 0; i < animation->mainlineKeyCount(); ++i)
        mainKeys.push_back(animation->mainlineKey(i));
    std::stable_sort(mainKeys.begin(), mainKeys.end(),
                     [](const MainlineKey *a, const MainlineKey *b) {
                         return a->currentTime() < b->currentTime();
                     });
    size_t refCount = 0;
    for (const MainlineKey *mk : mainKeys) {
        // Every reference counts towards the room a pose needs, including
        // those a reading leaves out (a timeline without keys).
        mMaxBones = std::max(mMaxBones, mk->boneRefCount());
        mMaxObjects = std::max(mMaxObjects, mk->zRefCount());
        refCount += size_t(mk->boneRefCount()) + size_t(mk->zRefCount());
        mMainTimes.push_back(mk->currentTime());
        mMainKeys.push_back(MainKey{mk, mk->curve(), -1, 0, 0});
    }
    // Room for every reference up front, so that reading them while posing
    // never allocates (the pages are only touched as they fill).
    mSpans.reserve(refCount);
    mSlotOf.reserve(size_t(mMaxBones));
    mPlaced.reserve(size_t(mMaxBones));
    mStack.reserve(size_t(mMaxBones));
}

const PoseEvaluator::MainKey &PoseEvaluator::mainKeyAt(int index) const
{
    MainKey &main = mMainKeys[size_t(index)];
    if (main.firstRef < 0)
        readReferences(main);
    return main;
}

// The spans of one mainline key's references, each with its bones parents
// first, appended to mSpans.
void PoseEvaluator::readReferences(MainKey &main) const
{
    const MainlineKey *mk = main.key;
    main.firstRef = int(mSpans.size());
    const int boneCount = mk->boneRefCount();
    std::vector<int> &slotOf = mSlotOf;
    std::vector<char> &placed = mPlaced;
    std::vector<int> &stack = mStack;
    slotOf.assign(size_t(boneCount), -1);
    placed.assign(size_t(boneCount), 0);

    // Each reference starts out blended for the mainline key's own time,
    // where eased mainline time starts too.
    auto lineFor = [&](const ObjectRef *ref) {
        const TimelineKey *key = ref->key();
        const Timeline *tl = key ? key->parentTimeline() : nullptr;
        const int line = mLineOf.value(tl, -1);
        return line >= 0 && mLines[size_t(line)].keyCount > 0 ? line : -1;
    };
    auto appendSpan = [&](const ObjectRef *ref, int line, int parentSlot) {
        Span span = mKeySpans[size_t(spanAt(line, mk->currentTime()))];
        span.parentSlot = parentSlot;
        span.inherit = inheritFlags(mLines[size_t(line)].object);
        span.ref = ref;
        span.line = line;
        mSpans.push_back(span);
    };
    auto appendBone = [&](int index, int parentSlot) {
        const BoneRef *ref = mk->boneRef(index);
        const int line = lineFor(ref);
        placed[size_t(index)] = 1;
        if (line < 0)
            return; // nothing to evaluate: its children hang at the root
        slotOf[size_t(index)] = main.boneCount++;
        appendSpan(ref, line, parentSlot);
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
        const int line = lineFor(ref);
        if (line < 0)
            continue;
        const int parent = parentIndex(ref);
        appendSpan(ref, line, parent >= 0 ? slotOf[size_t(parent)] : -1);
        ++main.objectCount;
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
    const MainKey &main = mainKeyAt(index);
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
    const int t = pose.sampleTime;
    const Span *span = mSpans.data() + main.firstRef;
    for (int i = 0; i < main.boneCount; ++i, ++span) {
        PoseItem &out = pose.bones[size_t(i)];
        evaluateSpan(*span, t, out);
        // The turn's sine and cosine come from the local angle, and a child's
        // from its parent's by the angle sum: a few products after the
        // parent's instead of a whole polynomial, as chains of bones wait on
        // each other.
        double sine;
        double cosine;
        sinCosDegrees(out.angle, &sine, &cosine);
        if (span->parentSlot >= 0) {
            const PoseItem &parent = pose.bones[size_t(span->parentSlot)];
            composeOntoParent(out, parent, span->inherit);
            if (span->inherit & InheritAngle) {
                if (parent.xScale * parent.yScale < 0.0)
                    sine = -sine;
                out.sinAngle = sine * parent.cosAngle + cosine * parent.sinAngle;
                out.cosAngle = cosine * parent.cosAngle - sine * parent.sinAngle;
            } else {
                out.sinAngle = sine;
                out.cosAngle = cosine;
            }
        } else {
            out.sinAngle = sine;
            out.cosAngle = cosine;
        }
    }
    for (int i = 0; i < main.objectCount; ++i, ++span) {
        PoseItem &out = pose.objects[size_t(i)];
        evaluateSpan(*span, t, out);
        out.z = i;
        if (span->parentSlot >= 0)
            composeOntoParent(out, pose.bones[size_t(span->parentSlot)], span->inherit);
        out.shownFile = out.file ? out.file->redirectedFile() : nullptr;
    }
}

int PoseEvaluator::spanAt(int line, int time) const
{
    // The last key at or before `time`, by halving without branches on the
    // comparisons: the time is anywhere, so they would be coin flips.
    const Line &l = mLines[size_t(line)];
    const int *first = mKeyTimes.data() + l.firstKey;
    int n = l.keyCount;
    const int *base = first;
    while (n > 1) {
        const int half = n / 2;
        base = base[half] <= time ? base + half : base;
        n -= half;
    }
    const int key = int(base - first) - int(*base > time);
    return l.firstSpan + key + 1;
}

// The blend from key `first` of a line's `n` keys (-1: before its first key,
// which then holds) towards the next one, or after the last key towards the
// first one a length later when looping.
PoseEvaluator::Span PoseEvaluator::keySpan(const Key *keys, int n, int first) const
{
    Q_ASSERT(n > 0 && first < n);
    Span span{};
    span.parentSlot = -1;
    span.inherit = InheritAll;
    span.line = -1;

    int ia = first;
    int ib = -1;
    double bTime = 0.0;
    span.from = std::numeric_limits<int>::min();
    span.until = keys[0].time;
    if (ia < 0) {
        ia = 0;
    } else {
        span.from = keys[ia].time;
        span.until = ia + 1 < n ? keys[ia + 1].time : std::numeric_limits<int>::max();
        if (ia + 1 < n) {
            ib = ia + 1;
            bTime = keys[ib].time;
        } else if (mLooping) {
            ib = 0;
            bTime = double(keys[0].time) + mLength;
        }
        if (ib >= 0 && !(bTime > keys[ia].time))
            ib = -1;
    }

    const Key &a = keys[ia];
    span.start = a.time;
    span.curve = -1;
    span.length = std::numeric_limits<double>::infinity(); // held: the ratio stays 0
    if (ib >= 0) {
        span.length = bTime - span.start;
        span.curve = a.curve;
    } else {
        ib = ia;
    }
    const Key &b = keys[ib];

    span.x = a.x;
    span.y = a.y;
    span.xScale = a.xScale;
    span.yScale = a.yScale;
    span.alpha = a.alpha;
    span.width = a.width;
    span.height = a.height;
    span.dx = b.x - a.x;
    span.dy = b.y - a.y;
    span.dXScale = b.xScale - a.xScale;
    span.dYScale = b.yScale - a.yScale;
    span.dAlpha = b.alpha - a.alpha;
    span.dWidth = b.width - a.width;
    span.dHeight = b.height - a.height;
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
    span.angle = from;
    span.dAngle = to - from;
    span.pivotFile = a.defaultPivot && b.defaultPivot ? a.pivotFile : nullptr;
    span.pivotX = a.pivotX;
    span.pivotY = a.pivotY;
    span.file = a.file;
    span.key = a.key;
    span.nextKey = b.key;
    return span;
}

inline void PoseEvaluator::evaluateSpan(const Span &span, int sampleTime, PoseItem &out) const
{
    if (sampleTime >= span.from && sampleTime < span.until) [[likely]] {
        blend(span, span, sampleTime, out);
        return;
    }
    // Another pair of keys is in force (keys between mainline keys, or an
    // eased mainline time beyond its key): blend that pair instead.
    blend(mKeySpans[size_t(spanAt(span.line, sampleTime))], span, sampleTime, out);
}

// The values of `span` for the reference of `owner`.
inline void PoseEvaluator::blend(const Span &span, const Span &owner, int sampleTime,
                                 PoseItem &out) const
{
    // Divided rather than multiplied by a stored inverse: the ratio then
    // equals the model's to the bit, and a curve that jumps at the end sees
    // exactly 1 there. It costs next to nothing beside the rest.
    double r = (sampleTime - span.start) / span.length;
    if (span.curve >= 0)
        r = mCurves[size_t(span.curve)].trueT(r);

    const Line &line = mLines[size_t(owner.line)];
    out.ref = owner.ref;
    out.timeline = line.timeline;
    out.object = line.object;
    out.key = span.key;
    out.nextKey = span.nextKey;
    out.ratio = r;
    out.file = span.file;
    out.shownFile = nullptr;
    out.timelineIndex = owner.line;
    out.parent = owner.parentSlot;
    out.z = -1;

    out.x = span.x + span.dx * r;
    out.y = span.y + span.dy * r;
    out.xScale = span.xScale + span.dXScale * r;
    out.yScale = span.yScale + span.dYScale * r;
    out.alpha = span.alpha + span.dAlpha * r;
    out.width = span.width + span.dWidth * r;
    out.height = span.height + span.dHeight * r;
    out.angle = normalizedAngle(span.angle + span.dAngle * r);
    if (span.pivotFile) {
        const QPointF pivot = span.pivotFile->pivot();
        out.pivotX = pivot.x();
        out.pivotY = pivot.y();
    } else {
        out.pivotX = span.pivotX;
        out.pivotY = span.pivotY;
    }
}

} // namespace Morvane
