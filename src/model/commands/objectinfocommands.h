// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/commands/changevalue.h"

#include <QList>
#include <QString>

namespace Morvane {

class Object;

/// Which parts of its parent bone's transform an object follows.
struct InheritFlags
{
    bool position = true;
    bool angle = true;
    bool scale = true;

    static InheritFlags of(const Object *object);
    bool operator==(const InheritFlags &) const = default;
};

/// Sets the inherit flags of one or more object infos in one step. Each object
/// is found by (entity index, object index) on every undo and redo.
class ObjectInheritChangeCommand : public ChangeValue<Object, InheritFlags>
{
public:
    ObjectInheritChangeCommand(const QList<Object *> &objects, const InheritFlags &after,
                               QUndoCommand *parent = nullptr);

protected:
    Object *target(const Address &address) const override;
    void setValue(Object *object, const InheritFlags &flags) const override;
};

/// Renames an object info and the timelines that animate it in every
/// animation. The caller makes the name unique (`Entity::uniqueObjectName`).
class ObjectNameChangeCommand : public ChangeValue<Object, QString>
{
public:
    ObjectNameChangeCommand(Object *object, const QString &name, QUndoCommand *parent = nullptr);

protected:
    Object *target(const Address &address) const override;
    void setValue(Object *object, const QString &name) const override;
    void changed(RigxData *document) const override;
};

} // namespace Morvane
