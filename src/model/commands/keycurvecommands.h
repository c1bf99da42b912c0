// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/commands/changevalue.h"
#include "model/timelinekey.h"
#include "model/tweeninfo.h"

#include <QList>
#include <utility>

namespace Morvane {

/// Gives timeline keys new curves in one step: per key its address (entity,
/// animation, timeline, key) and its curve before and after. Eased curves never
/// compare equal, so such a change is never dropped as empty.
class TimelineKeyCurveChangeCommand : public ChangeValue<TimelineKey, TweenInfo>
{
public:
    /// Every key gets `after`.
    TimelineKeyCurveChangeCommand(const QList<TimelineKey *> &keys, const TweenInfo &after,
                                  QUndoCommand *parent = nullptr);
    /// Each key gets its own curve.
    explicit TimelineKeyCurveChangeCommand(const QList<std::pair<TimelineKey *, TweenInfo>> &keys,
                                           QUndoCommand *parent = nullptr);

protected:
    TimelineKey *target(const Address &address) const override;
    void setValue(TimelineKey *key, const TweenInfo &curve) const override
    {
        key->setCurve(curve);
    }
};

} // namespace Morvane
