// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/commands/changevalue.h"

#include <QList>

namespace Morvane {

class Animation;

/// Sets the snapping interval (milliseconds) of several animations in one
/// step: an export that makes its frame interval the animations' own, so
/// that playback and the next export start from it. Animations that already
/// have the interval are left out; with none left the command is obsolete.
class SetSnappingIntervals : public ChangeValue<Animation, int>
{
public:
    SetSnappingIntervals(const QList<Animation *> &animations, int interval,
                         QUndoCommand *parent = nullptr);

protected:
    Animation *target(const Address &address) const override;
    void setValue(Animation *animation, const int &interval) const override;
    void changed(RigxData *document) const override;
};

} // namespace Morvane
