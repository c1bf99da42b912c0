// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/charactermap.h"

#include <QList>
#include <QUndoCommand>

namespace Morvane {

class Entity;

/// Inserts a copy of a character map into an entity at `index` (-1 appends);
/// undo deletes it again. The entity is found by its index on every step; when
/// it no longer resolves both directions do nothing.
class AppendCharMapCommand : public QUndoCommand
{
public:
    AppendCharMapCommand(Entity *entity, const CharacterMap &map, int index = -1,
                         QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mEntity;
    CharacterMap mMap;
    int mIndex;
};

/// Gives the map named `name` the name and instructions of `after`; undo gives
/// back what it had. The map keeps its id, so an active map stays active in
/// its place.
class EditCharMapCommand : public QUndoCommand
{
public:
    EditCharMapCommand(Entity *entity, const QString &name, const CharacterMap &after,
                       QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;
    /// False when the entity has no map of that name: pushing it changes nothing.
    bool isValid() const { return mValid; }

private:
    Address mEntity;
    CharacterMap mBefore;
    CharacterMap mAfter;
    bool mValid = false;
};

/// Deletes the map named `name`; undo puts it back at its place and, when it
/// was active, back into the active list at its position.
class DeleteCharMapCommand : public QUndoCommand
{
public:
    DeleteCharMapCommand(Entity *entity, const QString &name, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;
    bool isValid() const { return mIndex >= 0; }

private:
    Address mEntity;
    CharacterMap mMap;
    int mIndex = -1;
    QList<int> mActiveBefore;
};

} // namespace Morvane
