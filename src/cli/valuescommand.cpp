// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "valuescommand.h"

#include "animationarguments.h"
#include "clicommand.h"
#include "io/json.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"

#include <QCommandLineParser>

#include <cstdio>

namespace Morvane {

namespace {

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

QVariantMap ValuesCommand::describe(const RigxData &document, const Entity &entity,
                                    const Animation &animation, int time)
{
    const TagManager &tags = document.tagManager();
    QVariantMap objects;
    for (int o = 0; o < entity.objectCount(); ++o) {
        const Object *object = entity.object(o);
        const ValueLineHolder *holder = animation.objectLineHolder(o);
        const bool hasTags = holder && !holder->tagLine().isEmpty();
        if (object->valInfoCollection().isEmpty() && !hasTags)
            continue;
        objects.insert(
            object->name(),
            QVariantMap{{QStringLiteral("variables"),
                         variablesAt(object->valInfoCollection(), holder, animation, time)},
                        {QStringLiteral("tags"), tagsAt(tags, holder, animation, time)}});
    }
    const ValueLineHolder *own = &animation.ownLineHolder();
    return QVariantMap{
        {QStringLiteral("entity"), entity.name()},
        {QStringLiteral("animation"), animation.name()},
        {QStringLiteral("time"), time},
        {QStringLiteral("variables"),
         variablesAt(entity.valInfoCollection(), own, animation, time)},
        {QStringLiteral("tags"), tagsAt(tags, own, animation, time)},
        {QStringLiteral("objects"), objects},
    };
}

void ValuesCommand::addOptions(QCommandLineParser &parser)
{
    AnimationArguments::addOptions(parser, false);
}

int ValuesCommand::run(const QCommandLineParser &parser)
{
    AnimationArguments args;
    RigxData document;
    Entity *entity = nullptr;
    Animation *animation = nullptr;
    if (const int status = args.load(parser, "values", document, &entity, &animation))
        return status;

    const QByteArray text = Json::encodeToUtf8(describe(document, *entity, *animation, args.time),
                                               Json::Format::Pretty);
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fputc('\n', stdout);
    return CliSuccess;
}

} // namespace Morvane
