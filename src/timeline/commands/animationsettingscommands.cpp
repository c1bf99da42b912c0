// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/commands/animationsettingscommands.h"

#include "model/animation.h"
#include "model/rigxdata.h"

#include <QCoreApplication>

namespace Morvane {

SetSnappingIntervalCommand::SetSnappingIntervalCommand(Animation *animation, int before, int after,
                                                       QUndoCommand *parent)
    : ChangeValue(QCoreApplication::translate("Timeline", "snapping interval changed"),
                  {{animation->address(), before, after}}, CommandId::None, parent)
{
}

Animation *SetSnappingIntervalCommand::target(const Address &address) const
{
    return inDocument(address.animation(), address);
}

void SetSnappingIntervalCommand::setValue(Animation *animation, const int &value) const
{
    animation->setSnappingInterval(value);
}

SetLoopingModeCommand::SetLoopingModeCommand(Animation *animation, int before, int after,
                                             QUndoCommand *parent)
    : ChangeValue(QCoreApplication::translate("Timeline", "looping changed"),
                  {{animation->address(), before, after}}, CommandId::None, parent)
{
}

Animation *SetLoopingModeCommand::target(const Address &address) const
{
    return inDocument(address.animation(), address);
}

void SetLoopingModeCommand::setValue(Animation *animation, const int &value) const
{
    animation->setLoopingMode(value);
}

void setSnappingIntervalCommand(Animation *animation, int before, int after)
{
    if (!animation || before == after || after <= 0)
        return;
    RigxData::pushUndo(animation->document(), new SetSnappingIntervalCommand(animation, before, after));
}

} // namespace Morvane
