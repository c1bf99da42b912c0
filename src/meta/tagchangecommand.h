// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/tagmanager.h"
#include "model/commands/changevalue.h"

namespace Morvane {

class RigxData;

/// One change of the project's tag list ("Tags Changed"), stored as the whole
/// list before and after. Its target is the document itself: an address with
/// no indexes.
class TagChangeCommand : public ChangeValue<TagManager, TagManager>
{
public:
    TagChangeCommand(RigxData *project, const TagManager &before, const TagManager &after,
                     QUndoCommand *parent = nullptr);

protected:
    TagManager *target(const Address &address) const override;
    void setValue(TagManager *target, const TagManager &value) const override;
    void changed(RigxData *document) const override;
};

} // namespace Morvane
