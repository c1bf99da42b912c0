// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <functional>

namespace Morvane {

class DisplayInfo;
class ZRef;

/// The user's save options that change what the project writers emit. The window fills
/// them from its settings; the command-line tool and the tests use the defaults.
struct ProjectSaveOptions
{
    /// Indented XML (4 spaces per level) instead of one line.
    bool prettifyXml = true;
    /// Tab-indented JSON instead of one line without blanks.
    bool prettifyJson = true;
    /// `obj_info` names become "entity_object" with the object's own name in `realname`.
    bool objInfoNamesUniqueToFile = false;
    /// Written as `pixel_mode` "1" on the root.
    bool pixelArtMode = false;
    /// When set, sprite object references also carry their evaluated world pose
    /// (`abs_x`...), for readers that do not compose bones themselves. The function fills
    /// the pose of a reference at its mainline key's time and returns false when it has
    /// none. Evaluation lives outside the file code, so it is handed in.
    std::function<bool(const ZRef &ref, DisplayInfo *pose)> absolutePose;
};

} // namespace Morvane
