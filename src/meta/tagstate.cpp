// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/tagstate.h"

#include "meta/tagmanager.h"

#include <algorithm>

namespace Morvane {

TagState::TagState(const QList<int> &uids, const TagManager *manager)
    : mManager(manager)
{
    setIds(uids);
}

void TagState::setIds(const QList<int> &uids)
{
    mIds = uids;
    std::sort(mIds.begin(), mIds.end());
    mIds.erase(std::unique(mIds.begin(), mIds.end()), mIds.end());
}

void TagState::addId(int uid)
{
    const auto it = std::lower_bound(mIds.begin(), mIds.end(), uid);
    if (it == mIds.end() || *it != uid)
        mIds.insert(it, uid);
}

void TagState::removeId(int uid)
{
    mIds.removeOne(uid);
}

bool TagState::containsId(int uid) const
{
    return std::binary_search(mIds.cbegin(), mIds.cend(), uid);
}

QString TagState::tagName(int uid) const
{
    return mManager ? mManager->tagFromId(uid).name() : QString();
}

int TagState::tagIndexInManager(int uid) const
{
    return mManager ? mManager->indexOfTag(uid) : -1;
}

QList<Tag> TagState::tagList(int type) const
{
    return mManager ? mManager->getTags(this, type) : QList<Tag>();
}

} // namespace Morvane
