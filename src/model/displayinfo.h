// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/itemlink.h"

#include <QColor>

namespace Morvane {

class File;

/// The spatial state of one object or bone: local to its parent bone in a
/// key, or in canvas space once composed. Angles are degrees, clockwise,
/// kept in 0..360; y grows downward; the pivot is a fraction of the image
/// with y measured from the top edge.
class DisplayInfo
{
public:
    enum Flag : unsigned char { DefaultPivot = 0x1 };

    /// Degrees per radian: angles are stored in degrees.
    static constexpr double DegreesPerRadian = 57.29577951308232;

    DisplayInfo() = default;
    /// The blend of two keys' states at the (already eased) ratio `r`: numeric
    /// fields linearly, the angle the shorter way round; pivot, colour and file
    /// link are `a`'s, and the default-pivot flag stays only when both have it.
    DisplayInfo(const DisplayInfo &a, const DisplayInfo &b, double r);

    double x = 0.0;
    double y = 0.0;
    double angle = 0.0;
    double xScale = 1.0;
    double yScale = 1.0;
    double width = 0.0;
    double height = 0.0;
    double alpha = 1.0;
    QColor color; // invalid: no tint

    /// Whether the pivot is read from and written to the linked file.
    bool defaultPivot() const { return mFlags & DefaultPivot; }
    void setDefaultPivot(bool on, const Address &file = Address());
    const FileLink &fileLink() const { return mFileLink; }
    unsigned char flags() const { return mFlags; }
    void setFlags(unsigned char flags) { mFlags = flags; }

    /// With `useDefault`, a key that follows its file's default pivot reads the
    /// file's pivot; otherwise its own.
    double pivotX(bool useDefault = true) const;
    double pivotY(bool useDefault = true) const;
    /// With `useDefault` on a default-pivot key, writes the file's pivot;
    /// otherwise stores the key's own and drops the file link. NaN stores 0.
    void setPivotX(double value, bool useDefault = false);
    void setPivotY(double value, bool useDefault = false);

    /// Takes what a pose moves (position, angle, scales and alpha) from `pose`;
    /// size, pivot, tint and file stay.
    void setPose(const DisplayInfo &pose)
    {
        x = pose.x;
        y = pose.y;
        angle = pose.angle;
        xScale = pose.xScale;
        yScale = pose.yScale;
        alpha = pose.alpha;
    }

    /// Exactly the neutral parent: origin, no turn, unit scales, opaque, white,
    /// pivot at the top-left corner.
    bool isIdentityInfo() const;

    /// This local info seen in the space that contains `parent`: scale, then
    /// rotate, then translate; a mirrored parent (scales of opposite signs)
    /// reverses the sense of the angle; alphas multiply. The pivot stays ours.
    DisplayInfo unmapFromParentInfo(const DisplayInfo &parent) const;
    /// The inverse of `unmapFromParentInfo`: this world info in `parent`'s
    /// local space. A zero parent scale or alpha gives infinities (unchecked).
    DisplayInfo mapToParentInfo(const DisplayInfo &parent) const;
    /// This info under `oldParent` re-expressed under `newParent` with the same
    /// world result.
    DisplayInfo reparentedInfo(const DisplayInfo &oldParent, const DisplayInfo &newParent) const;
    /// Both scales negative is the same pose as both positive turned by 180
    /// degrees; switches to the latter.
    void normalizeAngleAndScale();

    /// The point (x, y) in the frame of a parent at (px, py) turned by `pangle`
    /// degrees, before the parent's scale.
    static double GetXOffset(double px, double py, double pangle, double x, double y);
    static double GetYOffset(double px, double py, double pangle, double x, double y);

    /// `degrees` brought into 0..360 (360 itself stays); non-finite gives 0.
    static double normalizedAngle(double degrees);
    /// Moves one of the two angles by whole turns so that going from `from` to
    /// `to` is the shorter way (at most 180 degrees).
    static void shortWayAngles(double &from, double &to);
    /// The rotation direction stored with a key whose angle is `angle` when the
    /// next key has `nextAngle`: 0 for no turn, -1 for clockwise on screen, 1
    /// for the file's default (counter-clockwise), which is not written.
    static int spinToNext(double angle, double nextAngle);

private:
    File *linkedFile() const;

    unsigned char mFlags = 0;
    FileLink mFileLink;
    double mPivotX = 0.0;
    double mPivotY = 0.0;
};

} // namespace Morvane
