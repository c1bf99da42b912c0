// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/keytimechangeinstructionset.h"

namespace Morvane {

void KeyTimeChangeInstructionSet::appendKeyChange(int line, int oldTime, int newTime)
{
    if (line < 0)
        return;
    while (line >= lineCount())
        mLines.append(QList<Change>());
    mLines[line].append(Change(oldTime, newTime));
}

int KeyTimeChangeInstructionSet::keyCount(int line) const
{
    return line >= 0 && line < lineCount() ? int(mLines.at(line).size()) : 0;
}

int KeyTimeChangeInstructionSet::oldKeyTime(int line, int index) const
{
    if (index < 0 || index >= keyCount(line))
        return -1;
    return mLines.at(line).at(index).first;
}

int KeyTimeChangeInstructionSet::newKeyTime(int line, int index) const
{
    if (index < 0 || index >= keyCount(line))
        return -1;
    return mLines.at(line).at(index).second;
}

void KeyTimeChangeInstructionSet::setNewTime(int line, int index, int time)
{
    if (index < 0 || index >= keyCount(line))
        return;
    mLines[line][index].second = time;
}

void KeyTimeChangeInstructionSet::removeChangesAtOldTime(int line, int time)
{
    if (line < 0 || line >= lineCount())
        return;
    for (Change &c : mLines[line]) {
        if (c.first == time)
            c.second = c.first;
    }
}

void KeyTimeChangeInstructionSet::removeAllChangesAtOldTime(int time, bool includeMainline)
{
    for (int line = includeMainline ? 0 : 1; line < lineCount(); ++line)
        removeChangesAtOldTime(line, time);
}

void KeyTimeChangeInstructionSet::removeAllChangesFromSharedKeysWithZeroLine(bool skipLast)
{
    const int count = keyCount(0) - (skipLast ? 1 : 0);
    for (int i = 0; i < count; ++i) {
        const Change c = mLines.at(0).at(i);
        if (c.first != c.second)
            removeAllChangesAtOldTime(c.first, false);
    }
}

bool KeyTimeChangeInstructionSet::movesAnything() const
{
    for (const QList<Change> &line : mLines) {
        for (const Change &c : line) {
            if (c.first != c.second)
                return true;
        }
    }
    return false;
}

} // namespace Morvane
