// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "valuescommand.h"

#include "clicommand.h"
#include "io/json.h"
#include "io/projectfile.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"

#include <cstdio>

namespace Morvane {

namespace {

int usageError(const QString &message = QString())
{
    if (!message.isEmpty())
        std::fprintf(stderr, "morvane-cli values: %s\n", qPrintable(message));
    std::fprintf(stderr, "Usage: morvane-cli %s\n", ValuesCommand::Usage);
    return CliUsage;
}

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

QVariantMap variablesAt(const ValInfoCollection &definitions, const ValueLineHolder *holder,
                        const Animation &animation, int time)
{
    QVariantMap variables;
    for (const ValInfo &info : definitions.infos()) {
        QVariant value = info.defaultValue;
        if (holder)
            value = holder->valueFromTime({info.type, info.id}, time, animation.length(),
                                          animation.isLooping(), info.defaultValue);
        variables.insert(info.name, value);
    }
    return variables;
}

QStringList tagsAt(const TagManager &tags, const ValueLineHolder *holder,
                   const Animation &animation, int time)
{
    if (!holder)
        return {};
    const TagState state = holder->tagStateFromTime(time, animation.isLooping(), &tags);
    return tags.tagsToStringList(&state, TagState::ActiveTags);
}

} // namespace

QVariantMap ValuesCommand::describe(const RigxData &document, int entityIndex, int animationIndex,
                                    int time)
{
    const Entity *entity = document.entity(entityIndex);
    const Animation *animation = entity->animation(animationIndex);
    const TagManager &tags = document.tagManager();

    QVariantMap objects;
    for (int o = 0; o < entity->objectCount(); ++o) {
        const Object *object = entity->object(o);
        const ValueLineHolder *holder = animation->objectLineHolder(o);
        const bool hasTags = holder && !holder->tagLine().isEmpty();
        if (object->valInfoCollection().isEmpty() && !hasTags)
            continue;
        objects.insert(
            object->name(),
            QVariantMap{{QStringLiteral("variables"),
                         variablesAt(object->valInfoCollection(), holder, *animation, time)},
                        {QStringLiteral("tags"), tagsAt(tags, holder, *animation, time)}});
    }
    const ValueLineHolder *own = &animation->ownLineHolder();
    return QVariantMap{
        {QStringLiteral("entity"), entity->name()},
        {QStringLiteral("animation"), animation->name()},
        {QStringLiteral("time"), time},
        {QStringLiteral("variables"),
         variablesAt(entity->valInfoCollection(), own, *animation, time)},
        {QStringLiteral("tags"), tagsAt(tags, own, *animation, time)},
        {QStringLiteral("objects"), objects},
    };
}

int ValuesCommand::run(const QStringList &arguments)
{
    QString path;
    QString entityText;
    QString animationText;
    QString timeText;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        QString *target = nullptr;
        if (argument == QLatin1String("--entity"))
            target = &entityText;
        else if (argument == QLatin1String("--animation"))
            target = &animationText;
        else if (argument == QLatin1String("--time"))
            target = &timeText;
        if (target) {
            if (i + 1 >= arguments.size())
                return usageError(argument + QLatin1String(" needs a value"));
            *target = arguments.at(++i);
            continue;
        }
        if (argument.startsWith(QLatin1String("--")) || !path.isEmpty())
            return usageError(QLatin1String("unexpected argument \"") + argument +
                              QLatin1Char('"'));
        path = argument;
    }
    if (path.isEmpty() || timeText.isNull())
        return usageError();
    bool timeOk = false;
    const int time = timeText.toInt(&timeOk);
    if (!timeOk)
        return usageError(QLatin1String("--time takes whole milliseconds, not \"") + timeText +
                          QLatin1Char('"'));

    RigxData document;
    if (!ProjectFile::open(&document, path))
        return CliFileError;

    const int entityIndex = pickIndex(entityText, document.entityCount(), [&](const QString &name) {
        const Entity *e = document.entity(name);
        return e ? document.indexOfEntity(e) : -1;
    });
    if (entityIndex < 0)
        return usageError(QLatin1String("no entity \"") + entityText + QLatin1String("\" in ") +
                          path);
    const Entity *entity = document.entity(entityIndex);
    const int animationIndex =
        pickIndex(animationText, entity->animationCount(), [&](const QString &name) {
            const Animation *a = entity->animation(name);
            return a ? entity->indexOfAnimation(a) : -1;
        });
    if (animationIndex < 0)
        return usageError(QLatin1String("no animation \"") + animationText +
                          QLatin1String("\" in entity ") + entity->name());

    const QByteArray text = Json::encodeToUtf8(
        describe(document, entityIndex, animationIndex, time), Json::Format::Pretty);
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fputc('\n', stdout);
    return CliSuccess;
}

int runValuesCommand(const QStringList &args)
{
    return ValuesCommand::run(args);
}

} // namespace Morvane
