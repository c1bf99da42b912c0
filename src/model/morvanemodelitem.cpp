// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/morvanemodelitem.h"

#include "model/address.h"
#include "model/file.h"
#include "model/itemlink.h"
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
    for (const ItemLink *link = mFirstLink; link; link = link->mNext)
        ++n;
    return n;
}

void MorvaneModelItem::dropRegisteredAddresses()
{
    ItemLink *link = mFirstLink;
    mFirstLink = nullptr;
    while (link) {
        ItemLink *next = link->mNext;
        link->mItem = nullptr;
        link->mPrev = nullptr;
        link->mNext = nullptr;
        link = next;
    }
}

void ItemLink::registerWith(MorvaneModelItem *item) const
{
    auto *self = const_cast<ItemLink *>(this);
    mItem = item;
    mPrev = nullptr;
    mNext = item->mFirstLink;
    if (item->mFirstLink)
        item->mFirstLink->mPrev = self;
    item->mFirstLink = self;
}

void ItemLink::unregister() const
{
    if (!mItem)
        return;
    if (mPrev)
        mPrev->mNext = mNext;
    else
        mItem->mFirstLink = mNext;
    if (mNext)
        mNext->mPrev = mPrev;
    mItem = nullptr;
    mPrev = nullptr;
    mNext = nullptr;
}

FileLink::FileLink(File *file)
    : ItemLink(file)
{}

File *FileLink::file(bool followRedirect) const
{
    MorvaneModelItem *linked = item();
    if (!linked || linked->morvaneItemType() != MorvaneItemType::File)
        return nullptr;
    auto *f = static_cast<File *>(linked);
    return followRedirect ? f->redirectedFile() : f;
}

} // namespace Morvane
