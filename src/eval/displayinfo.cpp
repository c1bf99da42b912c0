// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "eval/displayinfo.h"

#include "model/file.h"

#include <cmath>

namespace Morvane {

void DisplayInfo::setDefaultPivot(bool on, const Address &file)
{
    if (on) {
        mFlags |= DefaultPivot;
        mFileLink = file;
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
        mFileLink = Address();
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
        mFileLink = Address();
    }
}

} // namespace Morvane
