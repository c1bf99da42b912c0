// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/metaowner.h"
#include "meta/valinfocollection.h"
#include "model/commands/changevalue.h"

namespace Morvane {

class RigxData;

/// One change of variable declarations ("Variable Decleration Changed"): the
/// whole collection of each owner before and after. An owner is found by the
/// address (entity index) for an entity's declarations and (entity index,
/// object index) for an object's.
class EditVarCollectionCommand : public ChangeValue<ValInfoCollection, ValInfoCollection>
{
public:
    EditVarCollectionCommand(RigxData *document, const MetaOwner &owner,
                             const ValInfoCollection &before, const ValInfoCollection &after,
                             CommandId mergeId = CommandId::None, QUndoCommand *parent = nullptr);
    /// Several owners in one step.
    explicit EditVarCollectionCommand(std::vector<Change> changes,
                                      CommandId mergeId = CommandId::None,
                                      QUndoCommand *parent = nullptr);

    /// The declarations `address` names now; null when it does not resolve.
    static ValInfoCollection *collectionAt(const Address &address);

protected:
    ValInfoCollection *target(const Address &address) const override
    {
        return collectionAt(address);
    }
    void setValue(ValInfoCollection *target, const ValInfoCollection &value) const override
    {
        *target = value;
    }
    void changed(RigxData *document) const override;
};

} // namespace Morvane
