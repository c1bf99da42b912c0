// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"

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

    DisplayInfo() = default;

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
    const Address &fileLink() const { return mFileLink; }
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

private:
    File *linkedFile() const;

    unsigned char mFlags = 0;
    Address mFileLink;
    double mPivotX = 0.0;
    double mPivotY = 0.0;
};

} // namespace Morvane
