// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/keycurvecommands.h"

#include "model/commands/timelinekeycommands.h"

#include <QObject>

namespace Morvane {

namespace {

std::vector<ChangeValue<TimelineKey, TweenInfo>::Change>
curveChanges(const QList<std::pair<TimelineKey *, TweenInfo>> &keys)
{
    std::vector<ChangeValue<TimelineKey, TweenInfo>::Change> changes;
    for (const auto &[key, curve] : keys) {
        if (key && key->parentTimeline())
            changes.push_back({freshAddress(key->address()), key->curve(), curve});
    }
    return changes;
}

QList<std::pair<TimelineKey *, TweenInfo>> sameCurve(const QList<TimelineKey *> &keys,
                                                     const TweenInfo &curve)
{
    QList<std::pair<TimelineKey *, TweenInfo>> result;
    for (TimelineKey *key : keys)
        result.append({key, curve});
    return result;
}

} // namespace

TimelineKeyCurveChangeCommand::TimelineKeyCurveChangeCommand(const QList<TimelineKey *> &keys,
                                                             const TweenInfo &after,
                                                             QUndoCommand *parent)
    : TimelineKeyCurveChangeCommand(sameCurve(keys, after), parent)
{}

TimelineKeyCurveChangeCommand::TimelineKeyCurveChangeCommand(
    const QList<std::pair<TimelineKey *, TweenInfo>> &keys, QUndoCommand *parent)
    : ChangeValue(QObject::tr("curve changed"), curveChanges(keys), CommandId::None, parent)
{}

TimelineKey *TimelineKeyCurveChangeCommand::target(const Address &address) const
{
    return inDocument(freshAddress(address).key(), address);
}

} // namespace Morvane
