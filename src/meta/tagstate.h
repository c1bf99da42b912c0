// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/tag.h"

#include <QList>
#include <QStringList>

namespace Morvane {

class TagManager;

/// The set of tag uids active at a moment, with the tag list it refers to
/// (not owned; may be null). Uids of tags that were removed from the list may
/// stay in a state: listing through the manager leaves them out.
class TagState
{
public:
    enum TagRequestType { AllTags = 0, ActiveTags = 1, InactiveTags = 2 };

    TagState() = default;
    explicit TagState(const QList<int> &uids, const TagManager *manager = nullptr);

    /// The uids, ascending, each once.
    const QList<int> &ids() const { return mIds; }
    void setIds(const QList<int> &uids);
    void addId(int uid);
    void removeId(int uid);
    bool containsId(int uid) const;
    bool isEmpty() const { return mIds.isEmpty(); }

    const TagManager *manager() const { return mManager; }
    void setManager(const TagManager *manager) { mManager = manager; }

    /// The name of the tag `uid` in the manager; empty when unknown.
    QString tagName(int uid) const;
    /// The position of tag `uid` in the manager, -1 when unknown.
    int tagIndexInManager(int uid) const;
    /// The manager's tags filtered by `type` (see `TagManager::getTags`).
    QList<Tag> tagList(int type) const;

    /// Same uids (the manager is not compared).
    bool operator==(const TagState &other) const { return mIds == other.mIds; }
    bool operator!=(const TagState &other) const { return !(*this == other); }

private:
    QList<int> mIds;
    const TagManager *mManager = nullptr;
};

} // namespace Morvane
