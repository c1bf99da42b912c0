// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/charmapcommands.h"

#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"

#include <QObject>

namespace Morvane {

namespace {

Address entityAddress(Entity *entity)
{
    return entity ? freshAddress(entity->address()) : Address();
}

Entity *entityAt(const Address &address)
{
    return address.isEmpty() ? nullptr : freshAddress(address).entity();
}

} // namespace

AppendCharMapCommand::AppendCharMapCommand(Entity *entity, const CharacterMap &map, int index,
                                           QUndoCommand *parent)
    : QUndoCommand(QObject::tr("character map added"), parent)
    , mEntity(entityAddress(entity))
    , mMap(map)
    , mIndex(index)
{
    if (entity)
        mMap.setName(entity->uniqueCharMapName(map.name()));
}

void AppendCharMapCommand::redo()
{
    if (Entity *entity = entityAt(mEntity))
        entity->appendCharMap(mMap, mIndex);
}

void AppendCharMapCommand::undo()
{
    if (Entity *entity = entityAt(mEntity))
        entity->deleteCharMap(mMap.name());
}

EditCharMapCommand::EditCharMapCommand(Entity *entity, const QString &name,
                                       const CharacterMap &after, QUndoCommand *parent)
    : QUndoCommand(QObject::tr("character map changed"), parent)
    , mEntity(entityAddress(entity))
    , mAfter(after)
{
    const CharacterMap *map = entity ? entity->charMapFromName(name) : nullptr;
    if (!map)
        return;
    mBefore = *map;
    // A new name must not take another map's.
    if (after.name() != name && entity->charMapFromName(after.name()))
        mAfter.setName(entity->uniqueCharMapName(after.name()));
    if (mAfter.name().isEmpty())
        mAfter.setName(name);
    mValid = true;
    setObsolete(mBefore == mAfter);
}

void EditCharMapCommand::redo()
{
    if (Entity *entity = entityAt(mEntity); entity && mValid)
        entity->editCharMap(mBefore.name(), mAfter);
}

void EditCharMapCommand::undo()
{
    if (Entity *entity = entityAt(mEntity); entity && mValid)
        entity->editCharMap(mAfter.name(), mBefore);
}

DeleteCharMapCommand::DeleteCharMapCommand(Entity *entity, const QString &name,
                                           QUndoCommand *parent)
    : QUndoCommand(QObject::tr("character map deleted"), parent)
    , mEntity(entityAddress(entity))
{
    if (!entity)
        return;
    for (int i = 0; i < entity->charMapCount(); ++i) {
        if (entity->charMap(i)->name() == name) {
            mMap = *entity->charMap(i);
            mIndex = i;
            break;
        }
    }
    mActiveBefore = entity->activeMap();
}

void DeleteCharMapCommand::redo()
{
    if (Entity *entity = entityAt(mEntity); entity && mIndex >= 0)
        entity->deleteCharMap(mMap.name());
}

void DeleteCharMapCommand::undo()
{
    Entity *entity = entityAt(mEntity);
    if (!entity || mIndex < 0 || entity->charMapFromName(mMap.name()))
        return;
    entity->appendCharMap(mMap, mIndex);
    // The copy keeps its id, so the saved active list names it again.
    if (mActiveBefore.contains(mMap.id()))
        entity->setActiveCharMaps(mActiveBefore);
}

} // namespace Morvane
