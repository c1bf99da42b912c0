// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QtGlobal>

namespace Morvane {

/// Where one frame of a sprite sheet lies, as a "JSON hash" description gives it. All
/// values in pixels. For a rotated frame, `width` and `height` are the upright frame's;
/// in the sheet it covers `height` columns and `width` rows, turned a quarter clockwise.
struct JsonFrame
{
    qint32 width = 0;
    qint32 height = 0;
    qint32 x = 0;
    qint32 y = 0;
    bool rotated = false;
    /// Transparent borders were cut off when packing; the frame lies at the offset inside
    /// an image of the source size.
    bool trimmed = false;
    qint32 offsetX = 0;
    qint32 offsetY = 0;
    qint32 sourceWidth = 0;
    qint32 sourceHeight = 0;
};

} // namespace Morvane
