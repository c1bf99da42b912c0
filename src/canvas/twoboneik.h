// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QPointF>

namespace Morvane {

/// The analytic two-bone solution in canvas space (y down, degrees clockwise).
/// A chain of a root joint, a middle joint and an end is turned about the root
/// and the middle joint so that the end meets `target`, keeping both segment
/// lengths and the side the chain bends to. A target out of reach straightens
/// the chain towards it (or folds it, when too close). Returns the turns of the
/// first and second segment in degrees; the second is relative to where the
/// first turn carries it.
struct TwoBoneTurns
{
    double first = 0.0;
    double second = 0.0;
};

TwoBoneTurns solveTwoBoneIk(const QPointF &root, const QPointF &middle, const QPointF &end,
                            const QPointF &target);

/// The turn that makes the segment from `origin` to `end` aim at `target`.
double aimTurn(const QPointF &origin, const QPointF &end, const QPointF &target);

} // namespace Morvane
