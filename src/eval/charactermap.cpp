// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "eval/charactermap.h"

#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/naming.h"
#include "model/rigxdata.h"

namespace Morvane {

int CharacterMap::nextUniqueId = 0;

CharacterMap::CharacterMap(const QString &name)
    : mId(nextUniqueId++)
    , mName(name)
{
}

const MapInstruction *CharacterMap::instruction(int index) const
{
    if (index < 0 || index >= instructionCount())
        return nullptr;
    return &mInstructions.at(index);
}

MapInstruction &CharacterMap::addMap(const Address &source, const Address &target)
{
    for (MapInstruction &instruction : mInstructions) {
        if (instruction.source == source) {
            instruction.target = target;
            return instruction;
        }
    }
    mInstructions.append(MapInstruction{source, target});
    return mInstructions.last();
}

void CharacterMap::removeMap(const Address &source)
{
    for (int i = 0; i < instructionCount(); ++i) {
        if (mInstructions.at(i).source == source) {
            mInstructions.removeAt(i);
            return;
        }
    }
}

bool CharacterMap::containsFile(const Address &file) const
{
    for (const MapInstruction &instruction : mInstructions) {
        if (instruction.source == file || instruction.target == file)
            return true;
    }
    return false;
}

const MapInstruction *CharacterMap::mapFromOriginal(int fileId) const
{
    for (const MapInstruction &instruction : mInstructions) {
        if (instruction.source.fileId() == fileId)
            return &instruction;
    }
    return nullptr;
}

bool CharacterMap::operator==(const CharacterMap &other) const
{
    return mName == other.mName && mInstructions == other.mInstructions;
}

// Entity's character-map operations live here, beside the maps they apply.

const CharacterMap *Entity::charMap(int index) const
{
    if (index < 0 || index >= charMapCount())
        return nullptr;
    return &mCharMaps.at(index);
}

CharacterMap *Entity::charMapFromName(const QString &name)
{
    for (CharacterMap &map : mCharMaps) {
        if (map.name() == name)
            return &map;
    }
    return nullptr;
}

const CharacterMap *Entity::charMapFromName(const QString &name) const
{
    return const_cast<Entity *>(this)->charMapFromName(name);
}

CharacterMap *Entity::charMapFromId(int id)
{
    for (CharacterMap &map : mCharMaps) {
        if (map.id() == id)
            return &map;
    }
    return nullptr;
}

const CharacterMap *Entity::charMapFromId(int id) const
{
    return const_cast<Entity *>(this)->charMapFromId(id);
}

QStringList Entity::charMapNames() const
{
    QStringList names;
    names.reserve(mCharMaps.size());
    for (const CharacterMap &map : mCharMaps)
        names.append(map.name());
    return names;
}

QString Entity::uniqueCharMapName(const QString &name) const
{
    return uniqueName(name, charMapNames());
}

bool Entity::charMapsContainFile(const File *file) const
{
    if (!file)
        return false;
    const Address address = file->address();
    for (const CharacterMap &map : mCharMaps) {
        if (map.containsFile(address))
            return true;
    }
    return false;
}

void Entity::appendCharMap(const CharacterMap &map, int index)
{
    if (index < 0 || index > charMapCount())
        mCharMaps.append(map);
    else
        mCharMaps.insert(index, map);
    applyMaps();
}

bool Entity::editCharMap(const QString &name, const CharacterMap &map)
{
    CharacterMap *existing = charMapFromName(name);
    if (!existing)
        return false;
    // The id stays, so the map keeps its place in the active list.
    const int id = existing->id();
    *existing = map;
    existing->setId(id);
    applyMaps();
    return true;
}

bool Entity::deleteCharMap(const QString &name)
{
    for (int i = 0; i < charMapCount(); ++i) {
        if (mCharMaps.at(i).name() == name) {
            mCharMaps.removeAt(i);
            refreshActiveCharMaps();
            applyMaps();
            return true;
        }
    }
    return false;
}

void Entity::makeCharMapActive(const QString &name, bool active)
{
    const CharacterMap *map = charMapFromName(name);
    if (!map)
        return;
    const int position = mActiveCharMaps.indexOf(map->id());
    if (active == (position >= 0))
        return;
    if (active)
        mActiveCharMaps.append(map->id());
    else
        mActiveCharMaps.removeAt(position);
    applyMaps();
}

bool Entity::isCharMapActive(const QString &name) const
{
    const CharacterMap *map = charMapFromName(name);
    return map && mActiveCharMaps.contains(map->id());
}

void Entity::setActiveCharMaps(const QList<int> &ids)
{
    mActiveCharMaps = ids;
    refreshActiveCharMaps();
    applyMaps();
}

void Entity::refreshActiveCharMaps()
{
    for (int i = int(mActiveCharMaps.size()); i-- > 0;) {
        if (!charMapFromId(mActiveCharMaps.at(i)))
            mActiveCharMaps.removeAt(i);
    }
    if (RigxData *doc = document())
        doc->emitRefreshedCharMaps();
}

void Entity::clearActiveCharMaps()
{
    RigxData *doc = document();
    if (!doc)
        return;
    for (int i = 0; i < doc->folderCount(); ++i) {
        const Folder *folder = doc->folder(i);
        for (int j = 0; j < folder->fileCount(); ++j)
            folder->file(j)->clearRedirect();
    }
}

void Entity::applyCharMap(const CharacterMap &map)
{
    RigxData *doc = document();
    if (!doc)
        return;
    for (const MapInstruction &instruction : map.instructions()) {
        Address source = instruction.source;
        if (!source.document())
            source.setDocument(doc);
        File *file = source.file(false);
        if (!file)
            continue;
        Address target = instruction.target;
        if (!target.document())
            target.setDocument(doc);
        // An empty redirect means "shows itself": a hidden image needs an
        // address that names no file.
        if (target.isEmpty())
            target = Address(doc, {-1, -1});
        file->redirect() = target;
    }
}

void Entity::applyMaps()
{
    clearActiveCharMaps();
    for (int id : std::as_const(mActiveCharMaps)) {
        if (const CharacterMap *map = charMapFromId(id))
            applyCharMap(*map);
    }
    if (RigxData *doc = document())
        doc->emitRefreshedCharMaps();
}

} // namespace Morvane
