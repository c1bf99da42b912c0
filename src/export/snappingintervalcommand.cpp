// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/snappingintervalcommand.h"

#include "model/animation.h"
#include "model/commands/timelinekeycommands.h"
#include "model/rigxdata.h"

#include <QCoreApplication>

namespace Morvane {

namespace {

std::vector<ChangeValue<Animation, int>::Change> intervalChanges(const QList<Animation *> &animations,
                                                                 int interval)
{
    std::vector<ChangeValue<Animation, int>::Change> changes;
    for (Animation *animation : animations) {
        if (animation && animation->snappingInterval() != interval)
            changes.push_back({freshAddress(animation->address()), animation->snappingInterval(),
                               interval});
    }
    return changes;
}

} // namespace

SetSnappingIntervals::SetSnappingIntervals(const QList<Animation *> &animations, int interval,
                                           QUndoCommand *parent)
    : ChangeValue(QCoreApplication::translate("Morvane", "animation intervals set on export"),
                  intervalChanges(animations, interval), CommandId::None, parent)
{
}

Animation *SetSnappingIntervals::target(const Address &address) const
{
    return inDocument(freshAddress(address).animation(), address);
}

void SetSnappingIntervals::setValue(Animation *animation, const int &interval) const
{
    animation->setSnappingInterval(interval);
}

void SetSnappingIntervals::changed(RigxData *document) const
{
    document->emitEntityAnimationStructureChanged();
}

} // namespace Morvane
