// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/lineid.h"
#include "meta/valline.h"

#include <QString>

#include <memory>
#include <vector>

namespace Morvane {

class RigxData;
class TagManager;
struct MetaOwner;

/// The value lines and the tag line of one owner (an entity's own, or one
/// object's) in one animation. A value type: copies are deep, so undo commands
/// keep whole before-and-after copies.
///
/// The `...Command` operations change the holder that `owner` names in
/// `document` as one undoable step ("key set", "key deleted", "key time
/// changed"); without a document (or when the owner does not name this holder)
/// they change this holder directly. They return false and change nothing
/// when there is nothing to change.
class ValueLineHolder
{
public:
    /// What `earliestTime` gives when no line holds a key.
    static constexpr int NoTime = -32000;

    ValueLineHolder() = default;
    ValueLineHolder(const ValueLineHolder &other);
    ValueLineHolder &operator=(const ValueLineHolder &other);
    ValueLineHolder(ValueLineHolder &&) = default;
    ValueLineHolder &operator=(ValueLineHolder &&) = default;
    ~ValueLineHolder() = default;

    /// The line named by `id` (the tag line for a tag id); null when the
    /// variable has no line yet.
    ValLine *line(const LineId &id) const;
    /// The same, creating an empty line when there is none; null for an
    /// invalid type.
    ValLine *lineForEditing(const LineId &id);
    /// Variable lines in (type, variable id) order, the tag line aside.
    int lineCount() const { return int(mLines.size()); }
    ValLine *lineAt(int index) const;
    const TagLine &tagLine() const { return mTagLine; }
    TagLine &tagLine() { return mTagLine; }

    /// The line's value at `time` in an animation `length` ms long; the
    /// default when the variable has no line.
    QVariant valueFromTime(const LineId &id, int time, int length, bool looping,
                           const QVariant &defaultValue) const;
    TagState tagStateFromTime(int time, bool looping, const TagManager *manager = nullptr) const;

    void offsetAllKeys(int offset);
    /// The time of the earliest key on any line, `NoTime` when none.
    int earliestTime() const;
    /// Whether any line, the tag line included, holds a key.
    bool anyValLinesHaveKeys() const;
    void clearAllKeys();

    /// Sets `key` at `time` on the line (replacing a key there). The key must
    /// be of the line's kind.
    bool setKeyCommand(RigxData *document, const MetaOwner &owner, const LineId &id,
                       std::unique_ptr<ValKey> key, int time);
    bool deleteKeyCommand(RigxData *document, const MetaOwner &owner, const LineTimeId &id);
    /// Moves the key at `id.time` to `newTime` (replacing a key there).
    bool setKeyTimeCommand(RigxData *document, const MetaOwner &owner, const LineTimeId &id,
                           int newTime);
    /// Inserts a key at `id.time` holding the line's current value there.
    bool createTweenedKeyAtTimeCommand(RigxData *document, const MetaOwner &owner,
                                       const LineTimeId &id, bool looping,
                                       const QVariant &defaultValue, int length);
    /// Removes every key of every line, as one "key deleted" step.
    bool clearAllKeysCommand(RigxData *document, const MetaOwner &owner);

    /// Same lines with the same keys (empty lines count as absent).
    bool operator==(const ValueLineHolder &other) const;
    bool operator!=(const ValueLineHolder &other) const { return !(*this == other); }

private:
    void commit(const ValueLineHolder &after, RigxData *document, const MetaOwner &owner,
                const QString &text);

    std::vector<std::unique_ptr<ValLine>> mLines;
    TagLine mTagLine;
};

} // namespace Morvane
