// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/tag.h"

#include <QHash>
#include <QList>
#include <QStringList>

namespace Morvane {

class Entity;
class RigxData;
class TagState;

/// The project's ordered list of tags ("tag_list" in the files).
///
/// The editing operations take the project: when it is given, each change is
/// one undoable `TagChangeCommand` holding the list before and after (applied
/// directly when the project keeps no undo stack); with a null project the
/// change is applied without history.
class TagManager
{
public:
    int tagCount() const { return int(mTags.size()); }
    const QList<Tag> &tags() const { return mTags; }
    /// The tag at `index`, or the invalid tag.
    Tag tag(int index) const;
    /// The tag with `uid`, or the invalid tag.
    Tag tagFromId(int uid) const;
    /// The tag named exactly `name`, or the invalid tag.
    Tag tagFromName(const QString &name) const;
    int indexOfTag(int uid) const;
    bool containsName(const QString &name) const;

    /// Appends a tag with a fresh uid unless the name is empty or a tag of
    /// that name exists (exact comparison). Returns the new uid, or -1.
    int addTag(const QString &name, RigxData *project);
    /// Removes the tag `uid`; keys that still list it are left as they are.
    /// False for an unknown uid.
    bool removeTag(int uid, RigxData *project);
    /// Renames the tag `uid`; refused (false) when another tag has the name,
    /// the name is empty, or the uid is unknown.
    bool renameTag(int uid, const QString &name, RigxData *project);
    /// Replaces the whole list (the command's undo and redo).
    void overwriteTags(const TagManager &other) { mTags = other.mTags; }

    /// Without undo, for readers: appends `tag`; refused when its uid or name
    /// is taken.
    bool appendTag(const Tag &tag);
    /// Without undo, for merging another project in: adds the tags of `other`
    /// whose names this list lacks and returns, for every tag of `other`, the
    /// uid that names it here.
    QHash<int, int> mergeTags(const TagManager &other);
    /// Rewrites the tag keys of every animation of `entity` through `uids`
    /// (from `mergeTags`); uids it does not map are dropped.
    static void remapTagUids(Entity *entity, const QHash<int, int> &uids);
    void clear() { mTags.clear(); }

    /// The tags in list order filtered by `type`: with no state or type 0 all
    /// tags; 1 those the state contains; 2 those it does not; any other type none.
    QList<Tag> getTags(const TagState *state, int type) const;
    QStringList tagsToStringList(const TagState *state = nullptr, int type = 0) const;

    bool operator==(const TagManager &other) const { return mTags == other.mTags; }
    bool operator!=(const TagManager &other) const { return !(*this == other); }

private:
    void commit(const TagManager &after, RigxData *project);

    QList<Tag> mTags;
};

} // namespace Morvane
