// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"

#include <QList>
#include <QString>

namespace Morvane {

/// One redirection of a character map: objects showing the source file show
/// the target file instead. A target that resolves to no file (an empty
/// address included) hides the image.
struct MapInstruction
{
    Address source;
    Address target;

    /// Whether the instruction hides the image rather than swapping it.
    bool hidesImage() const { return target.isEmpty() || target.file(false) == nullptr; }
    bool operator==(const MapInstruction &other) const
    {
        return source == other.source && target == other.target;
    }
};

/// An ordered list of file redirections of an entity, applied while the map is
/// active (see `Entity::applyMaps`). A value type: copies keep the id.
///
/// Readers build maps with `setName` and `addMap` and append them with
/// `Entity::appendCharMap`; writers walk `instructions()`. File addresses are
/// (folder id, file id) as the model gives them (`File::address()`).
class CharacterMap
{
public:
    /// Process-wide id counter, never reset during a run.
    static int nextUniqueId;

    /// A new map with the next id.
    explicit CharacterMap(const QString &name = QString());
    CharacterMap(const CharacterMap &other) = default;
    CharacterMap &operator=(const CharacterMap &other) = default;

    int id() const { return mId; }
    void setId(int id) { mId = id; }
    QString name() const { return mName; }
    void setName(const QString &name) { mName = name; }

    const QList<MapInstruction> &instructions() const { return mInstructions; }
    int instructionCount() const { return int(mInstructions.size()); }
    /// Null when out of range.
    const MapInstruction *instruction(int index) const;

    /// Redirects `source` to `target` (an empty target hides it): replaces the
    /// target of the instruction for `source`, or appends a new instruction.
    MapInstruction &addMap(const Address &source, const Address &target = Address());
    /// Removes the first instruction for `source`; nothing when there is none.
    void removeMap(const Address &source);
    /// Whether `file` is the source or the target of any instruction.
    bool containsFile(const Address &file) const;
    /// The first instruction whose source is the file with id `fileId`, or null.
    const MapInstruction *mapFromOriginal(int fileId) const;
    void clear() { mInstructions.clear(); }

    /// Same name and the same instructions in the same order (ids ignored).
    bool operator==(const CharacterMap &other) const;
    bool operator!=(const CharacterMap &other) const { return !(*this == other); }

private:
    int mId;
    QString mName;
    QList<MapInstruction> mInstructions;
};

} // namespace Morvane
