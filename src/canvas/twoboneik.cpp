// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/twoboneik.h"

#include <QLineF>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace Morvane {

namespace {

double direction(const QPointF &from, const QPointF &to)
{
    return qRadiansToDegrees(std::atan2(to.y() - from.y(), to.x() - from.x()));
}

QPointF along(const QPointF &from, double degrees, double length)
{
    const double r = qDegreesToRadians(degrees);
    return from + QPointF(std::cos(r), std::sin(r)) * length;
}

} // namespace

double aimTurn(const QPointF &origin, const QPointF &end, const QPointF &target)
{
    if (origin == target)
        return 0.0;
    return direction(origin, target) - direction(origin, end);
}

TwoBoneTurns solveTwoBoneIk(const QPointF &root, const QPointF &middle, const QPointF &end,
                            const QPointF &target)
{
    TwoBoneTurns turns;
    const double l1 = QLineF(root, middle).length();
    const double l2 = QLineF(middle, end).length();
    if (l1 <= 0.0 || l2 <= 0.0 || root == target) {
        turns.second = l2 > 0.0 ? aimTurn(middle, end, target) : 0.0;
        return turns;
    }
    const double distance = std::clamp(QLineF(root, target).length(), std::abs(l1 - l2), l1 + l2);
    // The side of the bend: the sign of the turn from the first segment to the second.
    const QPointF u = middle - root;
    const QPointF v = end - middle;
    const double cross = u.x() * v.y() - u.y() * v.x();
    const double side = cross < 0 ? 1.0 : -1.0;
    double cosine = (l1 * l1 + distance * distance - l2 * l2) / (2 * l1 * distance);
    cosine = std::clamp(cosine, -1.0, 1.0);
    const double base = direction(root, target);
    const double firstAngle = base + side * qRadiansToDegrees(std::acos(cosine));
    const QPointF newMiddle = along(root, firstAngle, l1);
    const QPointF reach = along(root, base, distance);
    turns.first = firstAngle - direction(root, middle);
    turns.second = direction(newMiddle, reach) - (direction(middle, end) + turns.first);
    return turns;
}

} // namespace Morvane
