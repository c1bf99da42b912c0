// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "animationarguments.h"

#include "clicommand.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"

#include <cstdio>

namespace Morvane {

namespace {

// A name first, then a decimal index; -1 when neither names anything.
template <typename Lookup> int pickIndex(const QString &text, int count, Lookup indexOfName)
{
    if (text.isNull())
        return count > 0 ? 0 : -1;
    const int byName = indexOfName(text);
    if (byName >= 0)
        return byName;
    bool ok = false;
    const int index = text.toInt(&ok);
    return ok && index >= 0 && index < count ? index : -1;
}

} // namespace

int cliUsageError(const char *command, const char *usage, const QString &message)
{
    if (!message.isEmpty())
        std::fprintf(stderr, "morvane-cli %s: %s\n", command, qPrintable(message));
    std::fprintf(stderr, "Usage: morvane-cli %s\n", usage);
    return CliUsage;
}

bool parseAnimationArguments(const QStringList &arguments, bool allowCharMaps, const char *command,
                             const char *usage, AnimationArguments *out)
{
    QString timeText;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        QString *target = nullptr;
        QString charMap;
        if (argument == QLatin1String("--entity"))
            target = &out->entityText;
        else if (argument == QLatin1String("--animation"))
            target = &out->animationText;
        else if (argument == QLatin1String("--time"))
            target = &timeText;
        else if (allowCharMaps && argument == QLatin1String("--charmap"))
            target = &charMap;
        if (target) {
            if (i + 1 >= arguments.size()) {
                cliUsageError(command, usage, argument + QLatin1String(" needs a value"));
                return false;
            }
            *target = arguments.at(++i);
            if (target == &charMap)
                out->charMaps.append(charMap);
            continue;
        }
        if (argument.startsWith(QLatin1String("--")) || !out->path.isEmpty()) {
            cliUsageError(command, usage,
                          QLatin1String("unexpected argument \"") + argument + QLatin1Char('"'));
            return false;
        }
        out->path = argument;
    }
    if (out->path.isEmpty() || timeText.isNull()) {
        cliUsageError(command, usage);
        return false;
    }
    bool timeOk = false;
    out->time = timeText.toInt(&timeOk);
    if (!timeOk) {
        cliUsageError(command, usage,
                      QLatin1String("--time takes whole milliseconds, not \"") + timeText
                          + QLatin1Char('"'));
        return false;
    }
    return true;
}

bool selectAnimation(const RigxData &document, const AnimationArguments &arguments,
                     const char *command, const char *usage, int *entityIndex,
                     int *animationIndex)
{
    *entityIndex = pickIndex(arguments.entityText, document.entityCount(),
                             [&](const QString &name) {
                                 const Entity *e = document.entity(name);
                                 return e ? document.indexOfEntity(e) : -1;
                             });
    if (*entityIndex < 0) {
        cliUsageError(command, usage,
                      QLatin1String("no entity \"") + arguments.entityText
                          + QLatin1String("\" in ") + arguments.path);
        return false;
    }
    const Entity *entity = document.entity(*entityIndex);
    *animationIndex = pickIndex(arguments.animationText, entity->animationCount(),
                                [&](const QString &name) {
                                    const Animation *a = entity->animation(name);
                                    return a ? entity->indexOfAnimation(a) : -1;
                                });
    if (*animationIndex < 0) {
        cliUsageError(command, usage,
                      QLatin1String("no animation \"") + arguments.animationText
                          + QLatin1String("\" in entity ") + entity->name());
        return false;
    }
    return true;
}

} // namespace Morvane
