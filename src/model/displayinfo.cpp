// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/displayinfo.h"

#include "model/file.h"

#include <cmath>

namespace Morvane {

DisplayInfo::DisplayInfo(const DisplayInfo &a, const DisplayInfo &b, double r)
    : x(a.x + (b.x - a.x) * r)
    , y(a.y + (b.y - a.y) * r)
    , xScale(a.xScale + (b.xScale - a.xScale) * r)
    , yScale(a.yScale + (b.yScale - a.yScale) * r)
    , width(a.width + (b.width - a.width) * r)
    , height(a.height + (b.height - a.height) * r)
    , alpha(a.alpha + (b.alpha - a.alpha) * r)
    , color(a.color)
    , mFlags(a.mFlags & b.mFlags)
    , mFileLink(a.mFileLink)
    , mPivotX(a.mPivotX)
    , mPivotY(a.mPivotY)
{
    double from = a.angle;
    double to = b.angle;
    shortWayAngles(from, to);
    angle = normalizedAngle(from + (to - from) * r);
}

bool DisplayInfo::isIdentityInfo() const
{
    return x == 0.0 && y == 0.0 && mPivotX == 0.0 && mPivotY == 0.0 && angle == 0.0 &&
           xScale == 1.0 && yScale == 1.0 && alpha == 1.0 && color == QColor(Qt::white);
}

DisplayInfo DisplayInfo::unmapFromParentInfo(const DisplayInfo &parent) const
{
    if (parent.isIdentityInfo())
        return *this;
    DisplayInfo world(*this);
    const double radians = parent.angle / DegreesPerRadian;
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const double sx = x * parent.xScale;
    const double sy = y * parent.yScale;
    world.x = sx * c - sy * s + parent.x;
    world.y = sx * s + sy * c + parent.y;
    const double local = parent.xScale * parent.yScale < 0.0 ? 360.0 - angle : angle;
    world.angle = normalizedAngle(local + parent.angle);
    world.xScale = xScale * parent.xScale;
    world.yScale = yScale * parent.yScale;
    world.alpha = alpha * parent.alpha;
    return world;
}

DisplayInfo DisplayInfo::mapToParentInfo(const DisplayInfo &parent) const
{
    if (parent.isIdentityInfo())
        return *this;
    DisplayInfo local(*this);
    local.x = GetXOffset(parent.x, parent.y, parent.angle, x, y) / parent.xScale;
    local.y = GetYOffset(parent.x, parent.y, parent.angle, x, y) / parent.yScale;
    double a = angle - parent.angle;
    if (parent.xScale * parent.yScale < 0.0)
        a = 360.0 - a;
    local.angle = normalizedAngle(a);
    local.xScale = xScale / parent.xScale;
    local.yScale = yScale / parent.yScale;
    local.alpha = alpha / parent.alpha;
    return local;
}

DisplayInfo DisplayInfo::reparentedInfo(const DisplayInfo &oldParent,
                                        const DisplayInfo &newParent) const
{
    return unmapFromParentInfo(oldParent).mapToParentInfo(newParent);
}

void DisplayInfo::normalizeAngleAndScale()
{
    if (xScale < 0.0 && yScale < 0.0) {
        xScale = -xScale;
        yScale = -yScale;
        angle = normalizedAngle(angle - 180.0);
    }
}

double DisplayInfo::GetXOffset(double px, double py, double pangle, double x, double y)
{
    const double dx = x - px;
    const double dy = y - py;
    const double d = std::sqrt(dx * dx + dy * dy);
    const double a = std::atan2(dy, dx) - pangle / DegreesPerRadian;
    return d * std::cos(a);
}

double DisplayInfo::GetYOffset(double px, double py, double pangle, double x, double y)
{
    const double dx = x - px;
    const double dy = y - py;
    const double d = std::sqrt(dx * dx + dy * dy);
    const double a = std::atan2(dy, dx) - pangle / DegreesPerRadian;
    return d * std::sin(a);
}

double DisplayInfo::normalizedAngle(double degrees)
{
    if (!std::isfinite(degrees))
        return 0.0;
    // Whole turns at once for far-off values; the loops then take at most two steps.
    if (degrees < -720.0 || degrees > 720.0)
        degrees = std::fmod(degrees, 360.0);
    while (degrees < 0.0)
        degrees += 360.0;
    while (degrees > 360.0)
        degrees -= 360.0;
    return degrees;
}

void DisplayInfo::shortWayAngles(double &from, double &to)
{
    if (!std::isfinite(from) || !std::isfinite(to))
        return;
    // Whole turns at once so that hostile angles cannot keep the loops busy
    // (or stall them where a turn is below the precision of the value).
    if (std::abs(from) > 1e6 || std::abs(to) > 1e6) {
        from = std::fmod(from, 360.0);
        to = std::fmod(to, 360.0);
    }
    const double d = to - from;
    if (d > 720.0 || d < -720.0)
        to = from + std::fmod(d, 360.0);
    while (to - from < -180.0)
        from -= 360.0;
    while (to - from > 180.0)
        to -= 360.0;
}

int DisplayInfo::spinToNext(double angle, double nextAngle)
{
    if (std::abs(nextAngle - angle) < 1e-5)
        return 0;
    shortWayAngles(angle, nextAngle);
    return nextAngle > angle ? -1 : 1;
}

void DisplayInfo::setDefaultPivot(bool on, const Address &file)
{
    if (on) {
        mFlags |= DefaultPivot;
        mFileLink.set(file.file(false));
    } else {
        mFlags &= ~DefaultPivot;
    }
}

File *DisplayInfo::linkedFile() const
{
    if (!defaultPivot() || mFileLink.isEmpty())
        return nullptr;
    return mFileLink.file(false);
}

double DisplayInfo::pivotX(bool useDefault) const
{
    if (useDefault) {
        if (const File *f = linkedFile())
            return f->pivot().x();
    }
    return mPivotX;
}

double DisplayInfo::pivotY(bool useDefault) const
{
    if (useDefault) {
        if (const File *f = linkedFile())
            return f->pivot().y();
    }
    return mPivotY;
}

void DisplayInfo::setPivotX(double value, bool useDefault)
{
    if (std::isnan(value))
        value = 0.0;
    if (useDefault) {
        if (File *f = linkedFile()) {
            f->setPivotPoint(value, f->pivot(false).y());
            return;
        }
    }
    mPivotX = value;
    if (!useDefault) {
        mFlags &= ~DefaultPivot;
        mFileLink.set(nullptr);
    }
}

void DisplayInfo::setPivotY(double value, bool useDefault)
{
    if (std::isnan(value))
        value = 0.0;
    if (useDefault) {
        if (File *f = linkedFile()) {
            f->setPivotPoint(f->pivot(false).x(), value);
            return;
        }
    }
    mPivotY = value;
    if (!useDefault) {
        mFlags &= ~DefaultPivot;
        mFileLink.set(nullptr);
    }
}

} // namespace Morvane
