// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/editvarcollectioncommand.h"

#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"

namespace Morvane {

EditVarCollectionCommand::EditVarCollectionCommand(RigxData *document, const MetaOwner &owner,
                                                   const ValInfoCollection &before,
                                                   const ValInfoCollection &after,
                                                   CommandId mergeId, QUndoCommand *parent)
    : EditVarCollectionCommand({{owner.declarationsAddress(document), before, after}}, mergeId,
                               parent)
{
}

EditVarCollectionCommand::EditVarCollectionCommand(std::vector<Change> changes, CommandId mergeId,
                                                   QUndoCommand *parent)
    : ChangeValue(QStringLiteral("Variable Decleration Changed"), std::move(changes), mergeId,
                  parent)
{
}

ValInfoCollection *EditVarCollectionCommand::collectionAt(const Address &address)
{
    if (address.size() == 1) {
        Entity *entity = inDocument(address.entity(), address);
        return entity ? &entity->valInfoCollection() : nullptr;
    }
    Object *object = inDocument(address.object(), address);
    return object ? &object->valInfoCollection() : nullptr;
}

void EditVarCollectionCommand::changed(RigxData *document) const
{
    document->emitRefreshVariables();
}

} // namespace Morvane
