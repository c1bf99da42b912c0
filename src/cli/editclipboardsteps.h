// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "cli/editscript.h"

namespace Morvane {

// The clipboard's steps of `morvane-cli edit`. One copy lives for the whole
// run, as in the window: a copy step replaces it, the paste steps take it.

/// {"do": "copy-frame"}: every object shown at the current time.
QString stepCopyFrame(EditContext &context, const QJsonObject &step);
/// {"do": "copy-keys", "keys": [{"line": NAME, "time": T}, ...]}: NAME is
/// "mainline" (the mainline key with everything at its time), a timeline's
/// name, or a variable of the entity.
QString stepCopyKeys(EditContext &context, const QJsonObject &step);
/// {"do": "paste"}: at the current time.
QString stepPaste(EditContext &context, const QJsonObject &step);
/// {"do": "paste-all-keys"}: the copy's first moment onto every mainline key.
QString stepPasteAllKeys(EditContext &context, const QJsonObject &step);
/// {"do": "copy-to-all-frames", "objects": [NAME, ...], "property": WORD | null}:
/// WORD is "x", "y", "scale_x", "scale_y", "angle" or "a"; null or absent
/// copies the whole state.
QString stepCopyToAllFrames(EditContext &context, const QJsonObject &step);

} // namespace Morvane
