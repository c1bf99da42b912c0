// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/editvaluelineholdercommand.h"

#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"

namespace Morvane {

EditValueLineHolderCommand::EditValueLineHolderCommand(RigxData *document, const MetaOwner &owner,
                                                       const ValueLineHolder &before,
                                                       const ValueLineHolder &after,
                                                       const QString &text, QUndoCommand *parent)
    : ChangeValue(text, {{owner.linesAddress(document), before, after}}, CommandId::None, parent)
{
}

ValueLineHolder *EditValueLineHolderCommand::holderAt(const Address &address)
{
    Animation *animation = inDocument(address.animation(), address);
    if (!animation)
        return nullptr;
    if (address.size() < 3)
        return &animation->ownLineHolder();
    // Lines only for objects that exist.
    const Entity *entity = animation->parentEntity();
    const int objectIndex = address.at(2);
    if (!entity || !entity->object(objectIndex))
        return nullptr;
    return animation->objectLineHolder(objectIndex, true);
}

void EditValueLineHolderCommand::changed(RigxData *document) const
{
    document->emitRefreshTimelines();
}

} // namespace Morvane
