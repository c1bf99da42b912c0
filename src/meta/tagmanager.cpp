// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/tagmanager.h"

#include "meta/metaowner.h"
#include "meta/tagchangecommand.h"
#include "meta/tagstate.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"

namespace Morvane {

Tag TagManager::tag(int index) const
{
    if (index < 0 || index >= mTags.size())
        return Tag::invalidTag();
    return mTags.at(index);
}

Tag TagManager::tagFromId(int uid) const
{
    return tag(indexOfTag(uid));
}

Tag TagManager::tagFromName(const QString &name) const
{
    for (const Tag &t : mTags) {
        if (t.name() == name)
            return t;
    }
    return Tag::invalidTag();
}

int TagManager::indexOfTag(int uid) const
{
    for (int i = 0; i < mTags.size(); ++i) {
        if (mTags.at(i).uid() == uid)
            return i;
    }
    return -1;
}

bool TagManager::containsName(const QString &name) const
{
    return tagFromName(name).isValid();
}

int TagManager::addTag(const QString &name, RigxData *project)
{
    if (name.isEmpty() || containsName(name))
        return -1;
    // The counter is process-wide but lists may come from files with uids of
    // their own: skip any that this list already uses.
    Tag tag(name);
    while (indexOfTag(tag.uid()) >= 0)
        tag = Tag(name);
    TagManager after = *this;
    after.mTags.append(tag);
    commit(after, project);
    return tag.uid();
}

bool TagManager::removeTag(int uid, RigxData *project)
{
    const int index = indexOfTag(uid);
    if (index < 0)
        return false;
    TagManager after = *this;
    after.mTags.removeAt(index);
    commit(after, project);
    return true;
}

bool TagManager::renameTag(int uid, const QString &name, RigxData *project)
{
    const int index = indexOfTag(uid);
    if (index < 0 || name.isEmpty() || containsName(name))
        return false;
    TagManager after = *this;
    after.mTags[index].rename(name);
    commit(after, project);
    return true;
}

bool TagManager::appendTag(const Tag &tag)
{
    if (!tag.isValid() || indexOfTag(tag.uid()) >= 0 || containsName(tag.name()))
        return false;
    mTags.append(tag);
    return true;
}

QHash<int, int> TagManager::mergeTags(const TagManager &other)
{
    QHash<int, int> uids;
    for (const Tag &tag : other.mTags) {
        const Tag existing = tagFromName(tag.name());
        if (existing.isValid()) {
            uids.insert(tag.uid(), existing.uid());
            continue;
        }
        // Keep the uid when it is free here, so the merged keys stay as they are.
        Tag added = indexOfTag(tag.uid()) < 0 ? tag : Tag(tag.name());
        while (indexOfTag(added.uid()) >= 0)
            added = Tag(tag.name());
        mTags.append(added);
        uids.insert(tag.uid(), added.uid());
    }
    return uids;
}

void TagManager::remapTagUids(Entity *entity, const QHash<int, int> &uids)
{
    auto remap = [&uids](ValueLineHolder &holder) {
        TagLine &line = holder.tagLine();
        for (int k = 0; k < line.keyCount(); ++k) {
            TagState &state = static_cast<TagKey *>(line.key(k))->state();
            QList<int> mapped;
            for (int uid : state.ids()) {
                if (uids.contains(uid))
                    mapped.append(uids.value(uid));
            }
            state.setIds(mapped);
        }
    };
    for (int a = 0; a < entity->animationCount(); ++a) {
        Animation *animation = entity->animation(a);
        remap(animation->ownLineHolder());
        for (int o = 0; o < entity->objectCount(); ++o) {
            if (ValueLineHolder *holder = animation->objectLineHolder(o))
                remap(*holder);
        }
    }
}

QList<Tag> TagManager::getTags(const TagState *state, int type) const
{
    if (!state || type == TagState::AllTags)
        return mTags;
    QList<Tag> result;
    if (type != TagState::ActiveTags && type != TagState::InactiveTags)
        return result;
    const bool wantActive = type == TagState::ActiveTags;
    for (const Tag &t : mTags) {
        if (state->containsId(t.uid()) == wantActive)
            result.append(t);
    }
    return result;
}

QStringList TagManager::tagsToStringList(const TagState *state, int type) const
{
    QStringList names;
    const QList<Tag> list = getTags(state, type);
    for (const Tag &t : list)
        names.append(t.name());
    return names;
}

void TagManager::commit(const TagManager &after, RigxData *project)
{
    if (project && &project->tagManager() == this) {
        project->pushUndo(new TagChangeCommand(project, *this, after));
        return;
    }
    *this = after;
}

} // namespace Morvane
