// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/tagchangecommand.h"

#include "model/rigxdata.h"

namespace Morvane {

TagChangeCommand::TagChangeCommand(RigxData *project, const TagManager &before,
                                   const TagManager &after, QUndoCommand *parent)
    : ChangeValue(QStringLiteral("Tags Changed"), {{Address(project), before, after}},
                  CommandId::None, parent)
{
}

TagManager *TagChangeCommand::target(const Address &address) const
{
    RigxData *document = address.document();
    return document ? &document->tagManager() : nullptr;
}

void TagChangeCommand::setValue(TagManager *target, const TagManager &value) const
{
    target->overwriteTags(value);
}

void TagChangeCommand::changed(RigxData *document) const
{
    document->emitRefreshVariables();
}

} // namespace Morvane
