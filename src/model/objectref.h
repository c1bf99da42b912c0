// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/displayinfo.h"
#include "model/address.h"
#include "model/morvanemodelitem.h"

namespace Morvane {

class BoneRef;
class MainlineKey;
class Timeline;
class TimelineKey;

/// A reference of a mainline key to the timeline key that a bone or object
/// takes its values from while that mainline key is in force.
class ObjectRef : public MorvaneModelItem
{
public:
    enum RefType { BoneRefType = 0, ZRefType = 1 };

    ~ObjectRef() override;

    bool isBoneRef() const { return morvaneItemType() == MorvaneItemType::BoneRef; }
    int refType() const { return isBoneRef() ? BoneRefType : ZRefType; }

    /// Position among the references of its kind in its mainline key.
    int id() const { return mId; }
    void setId(int id) { mId = id; }

    /// The parent bone reference in the same mainline key, or null.
    BoneRef *parentRef() const { return mParent; }
    void setParentRef(BoneRef *parent) { mParent = parent; }

    /// The referenced key, or null when it is gone.
    TimelineKey *key() const;
    /// The timeline of the referenced key.
    Timeline *timeline() const;
    /// Index of the referenced key in its timeline, -1 when unresolved.
    int keyIndex() const;
    void setKey(TimelineKey *key);
    const Address &keyAddress() const { return mKey; }

    MainlineKey *parentMainlineKey() const;

    /// The cached world state at the current time (evaluation fills it).
    DisplayInfo &currentInfo() { return mCurrentInfo; }
    const DisplayInfo &currentInfo() const { return mCurrentInfo; }

    /// (entity, animation, mainline key index, ref type, ref index).
    Address address() const;

    // Evaluation.
    /// The world state at `sampleTime`: the referenced timeline's blended local
    /// state composed onto the parent bone's world state, up the whole chain.
    /// A chain deeper than `MaxParentDepth` (a cycle) is cut there.
    DisplayInfo unmappedInfo(int sampleTime) const;
    /// Stores `unmappedInfo(sampleTime)` as the current info.
    void updateCurrentInfo(int sampleTime);
    static constexpr int MaxParentDepth = 256;

protected:
    ObjectRef(MorvaneItemType type, TimelineKey *key, BoneRef *parent);
    ObjectRef(const ObjectRef &other);

private:
    int mId = 0;
    BoneRef *mParent = nullptr; // not owned: a sibling reference
    Address mKey;
    DisplayInfo mCurrentInfo;
};

class BoneRef : public ObjectRef
{
public:
    explicit BoneRef(TimelineKey *key = nullptr, BoneRef *parent = nullptr)
        : ObjectRef(MorvaneItemType::BoneRef, key, parent)
    {}
    BoneRef(const BoneRef &other) = default;
};

/// An object reference; its position in the mainline key is its z order
/// (0 drawn first, at the back).
class ZRef : public ObjectRef
{
public:
    explicit ZRef(TimelineKey *key = nullptr, BoneRef *parent = nullptr)
        : ObjectRef(MorvaneItemType::ZRef, key, parent)
    {}
    ZRef(const ZRef &other) = default;

    /// The z index read from a file, used once to order the references.
    int loadZIndex() const { return mLoadZIndex; }
    void setLoadZIndex(int z) { mLoadZIndex = z; }
    /// The current drawing position in the mainline key.
    int zIndex() const;

private:
    int mLoadZIndex = 0;
};

} // namespace Morvane
