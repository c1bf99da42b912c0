// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>

class QCommandLineParser;

namespace Morvane {

class EntityInstance;
class RigxData;

/// `morvane-cli pose FILE --time MS [--entity NAME|INDEX] [--animation NAME|INDEX]
/// [--charmap NAME]...`: what the canvas draws at a time, as JSON on stdout:
///
///   {"entity": NAME, "animation": NAME, "time": MS,
///    "bones":   [{"name", "timeline", "parent", "x", "y", "angle", "scale_x",
///                 "scale_y", "alpha"}],
///    "objects": [{"name", "type", "timeline", "parent", "z", "x", "y", "angle",
///                 "scale_x", "scale_y", "alpha", "pivot_x", "pivot_y", "image"}]}
///
/// World values in canvas space: y grows downward, angles are degrees clockwise in
/// [0, 360), pivot y counts from the top edge; numbers carry six decimals at most.
/// "timeline" is the timeline's index in the animation, "parent" the parent bone's
/// name or null. Bones come parents first, objects back to front. "image" is the
/// path of the image a sprite shows after character maps, null when a map hides it
/// (and for every other type). A sub-entity object also carries "entity",
/// "animation" (what it plays, null when its key names nothing) and "sub_time" (its
/// time in milliseconds; a speed-driven sub-entity counts as played from 0).
///
/// Entity and animation default to the first; a name is looked up before an index.
/// `--charmap` activates the named maps of the entity in the order given. Exit
/// codes are those of every command (`CliExit`).
class PoseCommand
{
public:
    static constexpr const char *Arguments = "FILE";
    static constexpr const char *Summary = "The world pose of an animation at a time as JSON.";

    static void addOptions(QCommandLineParser &parser);
    static int run(const QCommandLineParser &parser);
    /// The JSON that `run` prints for the instance posed at `time` (requested
    /// milliseconds, printed as given).
    static QByteArray describe(const EntityInstance &instance, int time);
};

} // namespace Morvane
