// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringList>
#include <QVariantMap>

namespace Morvane {

class Animation;
class RigxData;

/// `morvane-cli values FILE [--entity NAME|INDEX] [--animation NAME|INDEX] --time MS`:
/// the variables and active tags of an animation at a time, as JSON on stdout:
///
///   {"entity": NAME, "animation": NAME, "time": MS,
///    "variables": {NAME: VALUE}, "tags": [NAMES],
///    "objects": {OBJECTNAME: {"variables": {...}, "tags": [...]}}}
///
/// Every declared variable is listed with its value at that time (the default
/// where nothing is keyed); tags come in tag-list order. Objects are listed
/// when they declare variables or have tag keys in the animation. Entity and
/// animation default to the first; a name is looked up before an index.
class ValuesCommand
{
public:
    static constexpr const char *Usage =
        "values FILE [--entity NAME|INDEX] [--animation NAME|INDEX] --time MS";
    static constexpr const char *Summary = "variables and active tags at a time as JSON on stdout";

    static int run(const QStringList &arguments);
    /// The description that `run` prints, for the animation at `animationIndex`
    /// of the entity at `entityIndex` (both valid).
    static QVariantMap describe(const RigxData &document, int entityIndex, int animationIndex,
                                int time);
};

/// The entry point of the "values" command (`ValuesCommand::run`).
int runValuesCommand(const QStringList &args);

} // namespace Morvane
