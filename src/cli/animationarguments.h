// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringList>

class QCommandLineParser;

namespace Morvane {

class Entity;
class Animation;
class RigxData;

/// The arguments of the commands that look at one animation at one time:
/// FILE --time MS [--entity NAME|INDEX] [--animation NAME|INDEX] [--charmap NAME]...
struct AnimationArguments
{
    QString path;
    QString entityText;    // null: the first entity
    QString animationText; // null: the first animation
    int time = 0;          // milliseconds
    QStringList charMaps;  // in the order given

    /// Adds --time, --entity, --animation (and --charmap with `withCharMaps`) and FILE.
    static void addOptions(QCommandLineParser &parser, bool withCharMaps);

    /// Reads what `addOptions` added from a parsed `parser`. A missing --time or a time
    /// that is not a whole number is reported as a usage error of `command`; then the
    /// exit status comes back, else `CliSuccess`.
    int read(const QCommandLineParser &parser, const char *command);

    /// The entity and animation the arguments name in `document` (a name first, then a
    /// decimal index; the first when not given). When either names nothing, the data
    /// error is reported and its exit status comes back, else `CliSuccess`.
    int select(RigxData &document, Entity **entity, Animation **animation) const;

    /// `read`, then opening the project into `document` (its warnings printed), then
    /// `select`: the first failure's exit status, else `CliSuccess`.
    int load(const QCommandLineParser &parser, const char *command, RigxData &document,
             Entity **entity, Animation **animation);
};

} // namespace Morvane
