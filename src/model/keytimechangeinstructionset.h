// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QList>
#include <QPair>

namespace Morvane {

/// The key moves of one drag, line by line, each a pair (old time, new time)
/// in milliseconds. Line 0 is the mainline; line i >= 1 is the (i - 1)-th
/// timeline of the animation as a `TimelineFilter` shows it.
///
/// A change is never taken out once appended: cancelling one sets its new
/// time back to its old time, so the positions of the others stay put.
class KeyTimeChangeInstructionSet
{
public:
    /// Appends to `line`; `line` == lineCount() appends a new line first. A
    /// line further out is padded with empty lines; a negative one is ignored.
    void appendKeyChange(int line, int oldTime, int newTime);
    int lineCount() const { return int(mLines.size()); }
    int keyCount(int line) const;
    /// -1 when the line or the index is out of range.
    int oldKeyTime(int line, int index) const;
    int newKeyTime(int line, int index) const;
    void setNewTime(int line, int index, int time);
    /// Cancels every change of `line` whose old time is `time`.
    void removeChangesAtOldTime(int line, int time);
    /// Cancels the changes at old time `time` on every line, from line 0 with
    /// `includeMainline`, else from line 1.
    void removeAllChangesAtOldTime(int time, bool includeMainline);
    /// For every mainline change that moves (all but the last one with
    /// `skipLast`), cancels the timeline changes at its old time: those keys
    /// belong to the moved mainline key and go with it.
    void removeAllChangesFromSharedKeysWithZeroLine(bool skipLast);

    /// Whether any change has different old and new times.
    bool movesAnything() const;

private:
    using Change = QPair<int, int>; // (old, new)
    QList<QList<Change>> mLines;
};

} // namespace Morvane
