// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/metaowner.h"
#include "meta/valuelineholder.h"
#include "model/commands/changevalue.h"

namespace Morvane {

class RigxData;

/// One change of value lines ("key set", "key deleted", "key time changed"):
/// the whole holder of each owner in one animation before and after. A holder
/// is found by the address (entity index, animation index) for the entity's
/// own lines and (entity index, animation index, object index) for an
/// object's.
class EditValueLineHolderCommand : public ChangeValue<ValueLineHolder, ValueLineHolder>
{
public:
    EditValueLineHolderCommand(RigxData *document, const MetaOwner &owner,
                               const ValueLineHolder &before, const ValueLineHolder &after,
                               const QString &text, QUndoCommand *parent = nullptr);

    /// The holder `address` names now, made empty for an object that has no
    /// lines yet; null when the animation or the object does not resolve.
    static ValueLineHolder *holderAt(const Address &address);

protected:
    ValueLineHolder *target(const Address &address) const override { return holderAt(address); }
    void setValue(ValueLineHolder *target, const ValueLineHolder &value) const override
    {
        *target = value;
    }
    void changed(RigxData *document) const override;
};

} // namespace Morvane
