// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

namespace Morvane {

class ItemLink;
class RigxData;

/// Kinds of model nodes; `morvaneItemType()` tells them apart without RTTI.
enum class MorvaneItemType {
    Document,
    Folder,
    File,
    Entity,
    Object,
    Animation,
    MainlineKey,
    BoneRef,
    ZRef,
    Timeline,
    TimelineKey,
    Other,
};

/// Base of every node of the project tree: parent link, row among siblings,
/// owning document and the addresses whose direct pointer names this node.
///
/// Nodes are plain classes (only the document is a QObject): projects hold
/// hundreds of thousands of keys. A parent owns its children; the parent link
/// never owns. Copying a node copies none of its tree links.
class MorvaneModelItem
{
public:
    explicit MorvaneModelItem(MorvaneItemType type, MorvaneModelItem *parent = nullptr);
    MorvaneModelItem(const MorvaneModelItem &other);
    MorvaneModelItem &operator=(const MorvaneModelItem &other);
    /// Every address that points here drops its direct pointer (it keeps its
    /// indexes, so it can resolve again later).
    virtual ~MorvaneModelItem();

    MorvaneItemType morvaneItemType() const { return mItemType; }
    MorvaneModelItem *parentItem() const { return mParentItem; }
    void setParentItem(MorvaneModelItem *parent) { mParentItem = parent; }

    /// The document this node belongs to, or null while detached.
    RigxData *document() const;
    /// Position among the parent's children of the same kind, -1 when detached.
    int row() const;

    /// Position of `child` among this node's children, -1 when it is not one.
    virtual int indexOfChild(const MorvaneModelItem *child) const;
    /// Takes `child` out of this node's children without destroying it.
    /// Returns false when it was not a child.
    virtual bool removeChildItem(MorvaneModelItem *child);
    /// Drops every address registered here and destroys all children.
    virtual void clearAllLinksAndChildren();

    /// Number of addresses whose direct pointer names this node.
    int registeredAddressCount() const;

private:
    friend class ItemLink;
    void dropRegisteredAddresses();

    MorvaneModelItem *mParentItem = nullptr;
    ItemLink *mFirstLink = nullptr; // intrusive list: O(1) (un)registration
    MorvaneItemType mItemType;
};

} // namespace Morvane
