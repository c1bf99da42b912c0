// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "animationarguments.h"

#include "clicommand.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"

#include <QCommandLineParser>

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

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace

void AnimationArguments::addOptions(QCommandLineParser &parser, bool withCharMaps)
{
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("The project, .rigx or .rigj."));
    parser.addOption({QStringLiteral("time"),
                      QStringLiteral("The time in whole milliseconds (required)."),
                      QStringLiteral("MS")});
    parser.addOption({QStringLiteral("entity"),
                      QStringLiteral("The entity, by name or index (default: the first)."),
                      QStringLiteral("NAME|INDEX")});
    parser.addOption({QStringLiteral("animation"),
                      QStringLiteral("The animation of the entity, by name or index "
                                     "(default: the first)."),
                      QStringLiteral("NAME|INDEX")});
    if (withCharMaps)
        parser.addOption({QStringLiteral("charmap"),
                          QStringLiteral("Activates the entity's character map NAME; "
                                         "repeat it to apply several in order."),
                          QStringLiteral("NAME")});
}

int AnimationArguments::read(const QCommandLineParser &parser, const char *command)
{
    path = parser.positionalArguments().value(0);
    const auto valueOrNull = [&parser](const QString &name) {
        return parser.isSet(name) ? parser.value(name) : QString();
    };
    entityText = valueOrNull(QStringLiteral("entity"));
    animationText = valueOrNull(QStringLiteral("animation"));
    // Asking for an option the command does not have would print a warning.
    if (parser.optionNames().contains(QLatin1String("charmap")))
        charMaps = parser.values(QStringLiteral("charmap"));
    if (!parser.isSet(QStringLiteral("time")))
        return cliUsageError(command, QStringLiteral("missing --time"));
    const QString timeText = parser.value(QStringLiteral("time"));
    bool ok = false;
    time = timeText.toInt(&ok);
    if (!ok)
        return cliUsageError(command, QStringLiteral("--time takes whole milliseconds, not ") +
                                          quoted(timeText));
    return CliSuccess;
}

int AnimationArguments::load(const QCommandLineParser &parser, const char *command,
                             RigxData &document, Entity **entity, Animation **animation)
{
    if (const int status = read(parser, command))
        return status;
    if (!cliOpenProject(&document, path))
        return CliDataError;
    return select(document, entity, animation);
}

int AnimationArguments::select(RigxData &document, Entity **entity, Animation **animation) const
{
    if (document.entityCount() == 0)
        return cliDataError(path, QStringLiteral("the project has no entity"));
    const int entityIndex = pickIndex(entityText, document.entityCount(), [&](const QString &name) {
        const Entity *e = document.entity(name);
        return e ? document.indexOfEntity(e) : -1;
    });
    if (entityIndex < 0)
        return cliDataError(path, QStringLiteral("no entity ") + quoted(entityText));
    *entity = document.entity(entityIndex);
    if ((*entity)->animationCount() == 0)
        return cliDataError(
            path, QStringLiteral("entity %1 has no animation").arg(quoted((*entity)->name())));
    const int animationIndex =
        pickIndex(animationText, (*entity)->animationCount(), [&](const QString &name) {
            const Animation *a = (*entity)->animation(name);
            return a ? (*entity)->indexOfAnimation(a) : -1;
        });
    if (animationIndex < 0)
        return cliDataError(path, QStringLiteral("no animation %1 in entity %2")
                                      .arg(quoted(animationText), quoted((*entity)->name())));
    *animation = (*entity)->animation(animationIndex);
    return CliSuccess;
}

} // namespace Morvane
