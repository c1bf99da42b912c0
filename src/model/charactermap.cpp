// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/charactermap.h"

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

} // namespace Morvane
