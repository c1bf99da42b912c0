// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/morvanemodelitem.h"

#include "model/address.h"
#include "model/rigxdata.h"

namespace Morvane {

MorvaneModelItem::MorvaneModelItem(MorvaneItemType type, MorvaneModelItem *parent)
    : mParentItem(parent)
    , mItemType(type)
{}

MorvaneModelItem::MorvaneModelItem(const MorvaneModelItem &other)
    : mItemType(other.mItemType)
{}

MorvaneModelItem &MorvaneModelItem::operator=(const MorvaneModelItem &other)
{
    // Tree links and registrations belong to the node, never to its value.
    mItemType = other.mItemType;
    return *this;
}

MorvaneModelItem::~MorvaneModelItem()
{
    dropRegisteredAddresses();
}

RigxData *MorvaneModelItem::document() const
{
    const MorvaneModelItem *item = this;
    while (item->mParentItem)
        item = item->mParentItem;
    if (item->mItemType != MorvaneItemType::Document)
        return nullptr;
    return static_cast<RigxData *>(const_cast<MorvaneModelItem *>(item));
}

int MorvaneModelItem::row() const
{
    return mParentItem ? mParentItem->indexOfChild(this) : -1;
}

int MorvaneModelItem::indexOfChild(const MorvaneModelItem *) const
{
    return -1;
}

bool MorvaneModelItem::removeChildItem(MorvaneModelItem *)
{
    return false;
}

void MorvaneModelItem::clearAllLinksAndChildren()
{
    dropRegisteredAddresses();
}

int MorvaneModelItem::registeredAddressCount() const
{
    int n = 0;
    for (const Address *a = mFirstAddress; a; a = a->mNextRegistered)
        ++n;
    return n;
}

void MorvaneModelItem::dropRegisteredAddresses()
{
    Address *a = mFirstAddress;
    mFirstAddress = nullptr;
    while (a) {
        Address *next = a->mNextRegistered;
        a->mDirect = nullptr;
        a->mPrevRegistered = nullptr;
        a->mNextRegistered = nullptr;
        a = next;
    }
}

} // namespace Morvane
