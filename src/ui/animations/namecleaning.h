// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>

namespace Morvane {

/// A name typed for an entity, animation or object made safe to keep: control
/// characters become spaces, the ends are trimmed and the length is capped at
/// `MaxNameLength`. Empty when nothing usable is left (the edit is refused).
QString cleanedName(const QString &typed);

/// A new file name for an image typed in the palette: the same cleaning, and
/// empty (refused) when it holds a "/" or "\", is "." or "..", or starts with "<".
QString cleanedFileName(const QString &typed);

constexpr int MaxNameLength = 200;

} // namespace Morvane
