// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/valinfocollection.h"

#include "meta/editvarcollectioncommand.h"
#include "meta/metaowner.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"

#include <algorithm>

namespace Morvane {

namespace {

RigxData *documentOf(const MorvaneModelItem *item)
{
    return item ? item->document() : nullptr;
}

} // namespace

const ValInfo *ValInfoCollection::infoFromId(int id) const
{
    for (const ValInfo &info : mInfos) {
        if (info.id == id)
            return &info;
    }
    return nullptr;
}

const ValInfo *ValInfoCollection::infoFromName(const QString &name) const
{
    for (const ValInfo &info : mInfos) {
        if (info.name == name)
            return &info;
    }
    return nullptr;
}

const ValInfo *ValInfoCollection::infoFromIndex(int index) const
{
    if (index < 0 || index >= mInfos.size())
        return nullptr;
    return &mInfos.at(index);
}

int ValInfoCollection::indexFromId(int id) const
{
    for (int i = 0; i < mInfos.size(); ++i) {
        if (mInfos.at(i).id == id)
            return i;
    }
    return -1;
}

QString ValInfoCollection::nameFromId(int id) const
{
    const ValInfo *info = infoFromId(id);
    return info ? info->name : QString();
}

int ValInfoCollection::idFromName(const QString &name) const
{
    const ValInfo *info = infoFromName(name);
    return info ? info->id : -1;
}

QStringList ValInfoCollection::namesToStringList() const
{
    QStringList names;
    names.reserve(mInfos.size());
    for (const ValInfo &info : mInfos)
        names.append(info.name);
    return names;
}

int ValInfoCollection::nextId() const
{
    int next = 0;
    for (const ValInfo &info : mInfos)
        next = std::max(next, info.id + 1);
    return next;
}

bool ValInfoCollection::appendInfo(const ValInfo &info)
{
    if (infoFromId(info.id) || infoFromName(info.name))
        return false;
    mInfos.append(info);
    return true;
}

int ValInfoCollection::addValInfo(const QString &name, const QVariant &defaultValue, VarType type,
                                  Entity *owner)
{
    return addValInfo(name, defaultValue, type, documentOf(owner), MetaOwner::forEntity(owner));
}

int ValInfoCollection::addValInfo(const QString &name, const QVariant &defaultValue, VarType type,
                                  Object *owner)
{
    return addValInfo(name, defaultValue, type, documentOf(owner), MetaOwner::forObject(owner));
}

bool ValInfoCollection::removeValInfo(int id, Entity *owner)
{
    return removeValInfo(id, documentOf(owner), MetaOwner::forEntity(owner));
}

bool ValInfoCollection::removeValInfo(int id, Object *owner)
{
    return removeValInfo(id, documentOf(owner), MetaOwner::forObject(owner));
}

bool ValInfoCollection::renameVal(int id, const QString &name, Entity *owner)
{
    return renameVal(id, name, documentOf(owner), MetaOwner::forEntity(owner));
}

bool ValInfoCollection::renameVal(int id, const QString &name, Object *owner)
{
    return renameVal(id, name, documentOf(owner), MetaOwner::forObject(owner));
}

bool ValInfoCollection::editVarType(int id, VarType type, Entity *owner)
{
    return editVarType(id, type, documentOf(owner), MetaOwner::forEntity(owner));
}

bool ValInfoCollection::editVarType(int id, VarType type, Object *owner)
{
    return editVarType(id, type, documentOf(owner), MetaOwner::forObject(owner));
}

bool ValInfoCollection::editDefaultVal(int id, const QVariant &value, Entity *owner,
                                       CommandId mergeId)
{
    return editDefaultVal(id, value, documentOf(owner), MetaOwner::forEntity(owner), mergeId);
}

bool ValInfoCollection::editDefaultVal(int id, const QVariant &value, Object *owner,
                                       CommandId mergeId)
{
    return editDefaultVal(id, value, documentOf(owner), MetaOwner::forObject(owner), mergeId);
}

int ValInfoCollection::addValInfo(const QString &name, const QVariant &defaultValue, VarType type,
                                  RigxData *document, const MetaOwner &owner)
{
    if (name.isEmpty() || infoFromName(name) || type == VarType::Invalid)
        return -1;
    ValInfoCollection after = *this;
    ValInfo info;
    info.id = nextId();
    info.name = name;
    info.type = type;
    info.defaultValue = varValueForType(type, defaultValue);
    after.mInfos.append(info);
    commit(after, document, owner);
    return info.id;
}

bool ValInfoCollection::removeValInfo(int id, RigxData *document, const MetaOwner &owner)
{
    const int index = indexFromId(id);
    if (index < 0)
        return false;
    ValInfoCollection after = *this;
    after.mInfos.removeAt(index);
    commit(after, document, owner);
    return true;
}

bool ValInfoCollection::renameVal(int id, const QString &name, RigxData *document,
                                  const MetaOwner &owner)
{
    const int index = indexFromId(id);
    if (index < 0 || name.isEmpty() || infoFromName(name))
        return false;
    ValInfoCollection after = *this;
    after.mInfos[index].name = name;
    commit(after, document, owner);
    return true;
}

bool ValInfoCollection::editVarType(int id, VarType type, RigxData *document,
                                    const MetaOwner &owner)
{
    const int index = indexFromId(id);
    if (index < 0 || type == VarType::Invalid || mInfos.at(index).type == type)
        return false;
    ValInfoCollection after = *this;
    ValInfo &info = after.mInfos[index];
    info.type = type;
    info.defaultValue = varValueForType(type, info.defaultValue);
    commit(after, document, owner);
    return true;
}

bool ValInfoCollection::editDefaultVal(int id, const QVariant &value, RigxData *document,
                                       const MetaOwner &owner, CommandId mergeId)
{
    const int index = indexFromId(id);
    if (index < 0)
        return false;
    const QVariant converted = varValueForType(mInfos.at(index).type, value);
    if (converted == mInfos.at(index).defaultValue)
        return false;
    ValInfoCollection after = *this;
    after.mInfos[index].defaultValue = converted;
    commit(after, document, owner, mergeId);
    return true;
}

void ValInfoCollection::commit(const ValInfoCollection &after, RigxData *document,
                               const MetaOwner &owner, CommandId mergeId)
{
    // Only go through the stack when the owner really resolves to this
    // collection; otherwise the command would change some other collection.
    if (document && owner.infoCollection(document) == this) {
        document->pushUndo(new EditVarCollectionCommand(document, owner, *this, after, mergeId));
        return;
    }
    *this = after;
}

} // namespace Morvane
