// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "infocommand.h"

#include "clicommand.h"
#include "io/json.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QCommandLineParser>

#include <cstdio>

namespace Morvane {

namespace {

QString loopingText(const Animation &animation)
{
    switch (animation.loopingMode()) {
    case Animation::NoLooping:
        return QStringLiteral("false");
    case Animation::PingPong:
        return QStringLiteral("ping_pong");
    default:
        return QStringLiteral("true");
    }
}

QVariantMap describeAnimation(const Animation &animation)
{
    QVariantList mainlineTimes;
    for (int m = 0; m < animation.mainlineKeyCount(); ++m)
        mainlineTimes.append(animation.mainlineKey(m)->currentTime());
    QVariantList timelines;
    for (int t = 0; t < animation.timelineCount(); ++t) {
        const Timeline *timeline = animation.timeline(t);
        QVariantList times;
        for (int k = 0; k < timeline->keyCount(); ++k)
            times.append(timeline->key(k)->time(true));
        timelines.append(QVariantMap{{QStringLiteral("name"), timeline->name()},
                                     {QStringLiteral("object_type"), timeline->objectTypeString()},
                                     {QStringLiteral("key_times"), times}});
    }
    return QVariantMap{{QStringLiteral("name"), animation.name()},
                       {QStringLiteral("length"), animation.length()},
                       {QStringLiteral("looping"), loopingText(animation)},
                       {QStringLiteral("loop_to"), animation.loopTo()},
                       {QStringLiteral("interval"), animation.snappingInterval()},
                       {QStringLiteral("mainline_key_times"), mainlineTimes},
                       {QStringLiteral("timelines"), timelines}};
}

} // namespace

QVariantMap InfoCommand::describe(const RigxData &document)
{
    QVariantList folders;
    for (int f = 0; f < document.folderCount(); ++f) {
        const Folder *folder = document.folder(f);
        QVariantList files;
        for (int i = 0; i < folder->fileCount(); ++i) {
            const File *file = folder->file(i);
            const QPointF pivot = file->pivot(false);
            files.append(
                QVariantMap{{QStringLiteral("name"), file->name()},
                            {QStringLiteral("type"), file->typeString()},
                            {QStringLiteral("width"), file->width()},
                            {QStringLiteral("height"), file->height()},
                            {QStringLiteral("pivot_x"), pivot.x()},
                            {QStringLiteral("pivot_y"), pivot.y()},
                            {QStringLiteral("missing"), file->isImage() && !file->imageLoaded()}});
        }
        folders.append(QVariantMap{{QStringLiteral("name"), folder->name()},
                                   {QStringLiteral("files"), files}});
    }
    QVariantList entities;
    for (int e = 0; e < document.entityCount(); ++e) {
        const Entity *entity = document.entity(e);
        QVariantList objects;
        for (int o = 0; o < entity->objectCount(); ++o) {
            const Object *object = entity->object(o);
            objects.append(QVariantMap{{QStringLiteral("name"), object->name()},
                                       {QStringLiteral("type"), object->objectTypeString()}});
        }
        QVariantList animations;
        for (int a = 0; a < entity->animationCount(); ++a)
            animations.append(describeAnimation(*entity->animation(a)));
        entities.append(QVariantMap{{QStringLiteral("name"), entity->name()},
                                    {QStringLiteral("objects"), objects},
                                    {QStringLiteral("character_maps"), entity->charMapNames()},
                                    {QStringLiteral("animations"), animations}});
    }
    return QVariantMap{{QStringLiteral("folders"), folders},
                       {QStringLiteral("entities"), entities}};
}

void InfoCommand::addOptions(QCommandLineParser &parser)
{
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("The project, .rigx or .rigj."));
}

int InfoCommand::run(const QCommandLineParser &parser)
{
    RigxData document;
    if (!cliOpenProject(&document, parser.positionalArguments().at(0)))
        return CliDataError;
    const QByteArray text = Json::encodeToUtf8(describe(document), Json::Format::Pretty);
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fputc('\n', stdout);
    return CliSuccess;
}

} // namespace Morvane
