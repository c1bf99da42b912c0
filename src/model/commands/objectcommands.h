// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"

#include <QString>
#include <QUndoCommand>

namespace Morvane {

class Animation;
class Entity;
class Object;
class Timeline;

/// Appends an object info (a copy of `object`) to an entity; undo takes the
/// appended one out again. Nothing happens when the entity no longer resolves
/// or, on undo, when the last object is not the one appended.
class AppendObjectCommand : public QUndoCommand
{
public:
    AppendObjectCommand(Entity *entity, const Object &object, QUndoCommand *parent = nullptr);
    ~AppendObjectCommand() override;

    void redo() override;
    void undo() override;

private:
    Address mEntity;
    Object *mObject; // the template, owned
    int mIndex = -1;
};

/// Appends an empty timeline for the entity's object at `objectIndex` to an
/// animation; undo removes it when it is still the last one and empty.
class AppendTimelineCommand : public QUndoCommand
{
public:
    AppendTimelineCommand(Animation *animation, int objectIndex, const QString &name,
                          QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    Address mAnimation;
    int mObjectIndex;
    QString mName;
    int mIndex = -1;
};

/// Takes an animation's timeline out once it holds no keys and no mainline
/// key refers to it (saving drops such a timeline, which no undo step could
/// bring back); undo puts it back at its place.
class RemoveTimelineCommand : public QUndoCommand
{
public:
    RemoveTimelineCommand(Animation *animation, int index, QUndoCommand *parent = nullptr);
    ~RemoveTimelineCommand() override;

    void redo() override;
    void undo() override;

private:
    Address mAnimation;
    int mIndex;
    Timeline *mRemoved = nullptr; // owned while taken out
};

} // namespace Morvane
