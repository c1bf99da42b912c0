// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QColor>

namespace Morvane::CanvasColors {

inline QColor selection()
{
    return QColor(0xff, 0xa0, 0x2f); // "#ffa02f"
}

inline QColor hover()
{
    return QColor(0xd5, 0x9e, 0x5d); // "#d59e5d"
}

} // namespace Morvane::CanvasColors
