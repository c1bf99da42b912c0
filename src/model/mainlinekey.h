// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/tweeninfo.h"
#include "model/address.h"
#include "model/morvanemodelitem.h"

#include <QList>

#include <memory>
#include <vector>

namespace Morvane {

class Animation;
class BoneRef;
class ObjectRef;
class Timeline;
class TimelineKey;
class ZRef;

/// One moment of the mainline: from its time until the next mainline key it
/// fixes which bones and objects exist, their parenting, the drawing order
/// (position in the object references) and the timeline keys they use.
class MainlineKey : public MorvaneModelItem
{
public:
    static constexpr int NoId = -26;

    MainlineKey();
    /// A copy of the curve, time, id, editor flags and references (pointing at
    /// the same timeline keys, with the same parenting); no child keys.
    MainlineKey(const MainlineKey &other);
    MainlineKey &operator=(const MainlineKey &) = delete;
    ~MainlineKey() override;

    int id() const { return mId; }
    void setId(int id) { mId = id; }
    /// Milliseconds; -1 until set.
    int currentTime() const { return mTime; }
    /// Sets the time. Without `force`, refused (false, nothing changes) when
    /// another mainline key of the animation stands exactly at `time`; with
    /// `moveChildren`, the child timeline keys take the time too. The key then
    /// moves to its place in the animation's time order.
    bool setCurrentTime(int time, bool force = false, bool moveChildren = true);
    TweenInfo &curve() { return mCurve; }
    const TweenInfo &curve() const { return mCurve; }
    void setCurve(const TweenInfo &curve) { mCurve = curve; }
    bool editorFlag() const { return mEditorFlag; }
    void setEditorFlag(bool on) { mEditorFlag = on; }
    bool onionSkinFlag() const { return mOnionSkinFlag; }
    void setOnionSkinFlag(bool on) { mOnionSkinFlag = on; }

    // References.
    int refCount() const { return boneRefCount() + zRefCount(); }
    int boneRefCount() const { return int(mBoneRefs.size()); }
    int zRefCount() const { return int(mZRefs.size()); }
    BoneRef *boneRef(int index) const;
    ZRef *zRef(int index) const;
    /// Bone references first, then object references; null out of range.
    ObjectRef *ref(int index) const;
    BoneRef *boneRefFromId(int id) const;
    ZRef *zRefFromId(int id) const;
    ObjectRef *refFromId(int type, int id) const;
    ObjectRef *refFromTypeAndIndex(int type, int index) const;
    /// The reference that takes values from `timeline`, or null.
    ObjectRef *refFromTimeline(const Timeline *timeline, int startIndex = 0) const;
    int indexOfBoneRef(const ObjectRef *ref) const;
    int indexOfZRef(const ObjectRef *ref) const;

    /// Take ownership; `index` -1 appends. Ids are renumbered to positions.
    void appendBoneRef(BoneRef *ref, int index = -1);
    void appendZRef(ZRef *ref, int index = -1);
    /// A reference of the right kind for the timeline, pointing at its key at
    /// `keyIndex`; objects are appended in front (at the end of the z order).
    ObjectRef *appendRef(Timeline *timeline, int keyIndex);
    void appendRef(ObjectRef *ref, int type, int index = -1);
    /// Remove without destroying; children of a removed bone lose their parent.
    bool removeBoneRef(BoneRef *ref);
    bool removeZRef(ZRef *ref);
    void deleteBoneRef(int index);
    void deleteZOrderRef(int index);
    /// Removes (and with `destroy` deletes) the reference; with `deleteKey`,
    /// also the referenced timeline key when it is a child of this key.
    void deleteRef(ObjectRef *ref, bool destroy = true, bool deleteKey = false);

    // Child timeline keys: those whose time is this key's time (not owned).
    void addChildTimelineKey(TimelineKey *key);
    void removeChildKey(TimelineKey *key);
    TimelineKey *childTimeKey(int index) const;
    int childTimeKeyCount() const { return int(mChildKeys.size()); }

    /// The next mainline key of the animation, or null for the last one.
    MainlineKey *nextMainlineKey() const;
    Animation *parentAnimation() const;

    /// The positions of the bone references depth first from the roots, a
    /// parent before its children (children in stored order); references
    /// caught in a parent cycle follow in stored order. `reached` gets how many
    /// come before those. Saving writes in this order.
    std::vector<int> boneSaveOrder(int *reached = nullptr) const;
    /// Reorders the bone references by `boneSaveOrder` and renumbers them.
    /// References caught in a parent cycle come last with their parent cleared.
    void applyBoneSaveSortIds();
    /// Orders the object references by the z index they were read with.
    void sortRefsByLoadZIndex(bool renumber = true);

    /// (entity, animation, mainline key index) with a direct pointer.
    Address address() const;

    // Evaluation.
    /// The time at which timelines are sampled while this key is in force at
    /// `t` (milliseconds): eased by this key's curve between its time and the
    /// next key's, or after the last key the first key's plus the animation's
    /// length. A lone key gives its own time; without animation, `t`.
    double curvedTime(double t) const;
    /// Refreshes the cached world state of every reference at `sampleTime`.
    void updateCurrentInfo(int sampleTime);

    int indexOfChild(const MorvaneModelItem *child) const override;
    bool removeChildItem(MorvaneModelItem *child) override;
    void clearAllLinksAndChildren() override;

private:
    void renumberBoneRefs();
    void renumberZRefs();
    void detachChildKeys();

    TweenInfo mCurve;
    int mId = NoId;
    int mTime = -1;
    bool mEditorFlag = false;
    bool mOnionSkinFlag = false;
    std::vector<std::unique_ptr<BoneRef>> mBoneRefs;
    std::vector<std::unique_ptr<ZRef>> mZRefs;
    QList<TimelineKey *> mChildKeys;
};

} // namespace Morvane
