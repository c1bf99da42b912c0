// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/commands/changevalue.h"

namespace Morvane {

class Animation;

/// The animation's snapping interval (milliseconds) as one undo step.
class SetSnappingIntervalCommand : public ChangeValue<Animation, int>
{
public:
    SetSnappingIntervalCommand(Animation *animation, int before, int after,
                               QUndoCommand *parent = nullptr);

protected:
    Animation *target(const Address &address) const override;
    void setValue(Animation *animation, const int &value) const override;
};

/// The animation's looping mode (`Animation::Looping`) as one undo step.
class SetLoopingModeCommand : public ChangeValue<Animation, int>
{
public:
    SetLoopingModeCommand(Animation *animation, int before, int after,
                          QUndoCommand *parent = nullptr);

protected:
    Animation *target(const Address &address) const override;
    void setValue(Animation *animation, const int &value) const override;
};

/// Pushes the change of `animation`'s snapping interval from `before` to
/// `after` on its document's stack; nothing when they are equal.
void setSnappingIntervalCommand(Animation *animation, int before, int after);

} // namespace Morvane
