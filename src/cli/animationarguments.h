// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringList>

namespace Morvane {

class RigxData;

/// The arguments of the commands that look at one animation at one time:
/// FILE [--entity NAME|INDEX] [--animation NAME|INDEX] --time MS [--charmap NAME]...
struct AnimationArguments
{
    QString path;
    QString entityText;    // null: the first entity
    QString animationText; // null: the first animation
    int time = 0;          // milliseconds
    QStringList charMaps;  // in the order given
};

/// Prints "morvane-cli COMMAND: MESSAGE" (when there is one) and the usage line
/// on stderr; returns the usage exit status.
int cliUsageError(const char *command, const char *usage, const QString &message = QString());

/// Parses `arguments`; --charmap is accepted only with `allowCharMaps`. On bad
/// usage prints why and returns false.
bool parseAnimationArguments(const QStringList &arguments, bool allowCharMaps, const char *command,
                             const char *usage, AnimationArguments *out);

/// The entity and animation the arguments name in `document` (a name first,
/// then a decimal index; the first when not given). Prints why and returns
/// false when either names nothing.
bool selectAnimation(const RigxData &document, const AnimationArguments &arguments,
                     const char *command, const char *usage, int *entityIndex,
                     int *animationIndex);

} // namespace Morvane
