// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/valinfo.h"
#include "model/commands/commandids.h"

#include <QList>
#include <QStringList>

namespace Morvane {

class Entity;
class Object;
class RigxData;
struct MetaOwner;

/// The ordered variable declarations of one entity or one object.
///
/// The editing operations take the owner that holds this collection: with an
/// owner inside a document, each change is one undoable step
/// ("Variable Decleration Changed") that stores the whole collection before
/// and after; with a null owner the change is applied directly. Names are
/// unique within a collection: adding or renaming to a taken name is refused.
class ValInfoCollection
{
public:
    int infoCount() const { return int(mInfos.size()); }
    bool isEmpty() const { return mInfos.isEmpty(); }

    /// Lookups return null, -1 or an empty name when nothing matches.
    const ValInfo *infoFromId(int id) const;
    const ValInfo *infoFromName(const QString &name) const;
    const ValInfo *infoFromIndex(int index) const;
    int indexFromId(int id) const;
    QString nameFromId(int id) const;
    int idFromName(const QString &name) const;
    QStringList namesToStringList() const;
    const QList<ValInfo> &infos() const { return mInfos; }

    /// Adds a declaration with the next free id and `defaultValue` converted
    /// to `type`. Returns the new id, or -1 when the name is empty or taken or
    /// the type is invalid.
    int addValInfo(const QString &name, const QVariant &defaultValue, VarType type, Entity *owner);
    int addValInfo(const QString &name, const QVariant &defaultValue, VarType type, Object *owner);
    /// Each returns false (and changes nothing) when `id` is unknown or the
    /// change would change nothing or is refused.
    bool removeValInfo(int id, Entity *owner);
    bool removeValInfo(int id, Object *owner);
    bool renameVal(int id, const QString &name, Entity *owner);
    bool renameVal(int id, const QString &name, Object *owner);
    /// Changing the type converts the default to the new type.
    bool editVarType(int id, VarType type, Entity *owner);
    bool editVarType(int id, VarType type, Object *owner);
    /// A field that streams values while the user types or drags passes
    /// `CommandId::EditVarDefault`, so the gesture is one step.
    bool editDefaultVal(int id, const QVariant &value, Entity *owner,
                        CommandId mergeId = CommandId::None);
    bool editDefaultVal(int id, const QVariant &value, Object *owner,
                        CommandId mergeId = CommandId::None);

    /// Without undo, for readers: appends `info` as it is (its id kept).
    /// Refused (false) when its id or name is already used.
    bool appendInfo(const ValInfo &info);
    /// The id a new declaration gets: one above the largest in use, 0 when empty.
    int nextId() const;
    void clear() { mInfos.clear(); }

    bool operator==(const ValInfoCollection &other) const { return mInfos == other.mInfos; }
    bool operator!=(const ValInfoCollection &other) const { return !(*this == other); }

private:
    int addValInfo(const QString &name, const QVariant &defaultValue, VarType type,
                   RigxData *document, const MetaOwner &owner);
    bool removeValInfo(int id, RigxData *document, const MetaOwner &owner);
    bool renameVal(int id, const QString &name, RigxData *document, const MetaOwner &owner);
    bool editVarType(int id, VarType type, RigxData *document, const MetaOwner &owner);
    bool editDefaultVal(int id, const QVariant &value, RigxData *document, const MetaOwner &owner,
                        CommandId mergeId);
    /// Makes `after` the content, through the undo stack when possible.
    void commit(const ValInfoCollection &after, RigxData *document, const MetaOwner &owner,
                CommandId mergeId = CommandId::None);

    QList<ValInfo> mInfos;
};

} // namespace Morvane
