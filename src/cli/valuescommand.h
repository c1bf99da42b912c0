// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QVariantMap>

class QCommandLineParser;

namespace Morvane {

class Animation;
class Entity;
class RigxData;

/// `morvane-cli values FILE --time MS [--entity NAME|INDEX] [--animation NAME|INDEX]`:
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
    static constexpr const char *Arguments = "FILE";
    static constexpr const char *Summary = "Variables and active tags at a time as JSON on stdout.";

    static void addOptions(QCommandLineParser &parser);
    static int run(const QCommandLineParser &parser);
    /// The description that `run` prints for `animation` of `entity` in `document`.
    static QVariantMap describe(const RigxData &document, const Entity &entity,
                                const Animation &animation, int time);
};

} // namespace Morvane
