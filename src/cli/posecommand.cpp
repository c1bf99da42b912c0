// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "posecommand.h"

#include "animationarguments.h"
#include "clicommand.h"
#include "eval/entityinstance.h"
#include "io/jsonwriter.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

#include <QCommandLineParser>

#include <cmath>
#include <cstdio>

namespace Morvane {

namespace {

// Six decimals at most: more is noise from the blending and would make the output depend
// on the order of floating-point operations.
double printed(double value)
{
    if (std::abs(value) < 1e15)
        value = std::round(value * 1e6) / 1e6;
    return value + 0.0; // no "-0"
}

// Degrees in [0, 360) after rounding to the printed precision.
double printedAngle(double degrees)
{
    double rounded = printed(degrees);
    if (rounded >= 360.0 || rounded <= -360.0)
        rounded = std::fmod(rounded, 360.0);
    if (rounded < 0.0)
        rounded += 360.0;
    return rounded >= 360.0 ? 0.0 : printed(rounded);
}

QString itemName(const PoseItem &item)
{
    if (item.object)
        return item.object->name();
    return item.timeline ? item.timeline->name() : QString();
}

void writeStringOrNull(JsonWriter &w, std::string_view key, const QString &text, bool present)
{
    w.key(key);
    if (present)
        w.value(QStringView(text));
    else
        w.valueNull();
}

// The keys every bone and object starts with; objects add "type" and "z" in between.
void writeHead(JsonWriter &w, const Pose &pose, const PoseItem &item, bool isObject)
{
    w.key("name");
    w.value(QStringView(itemName(item)));
    if (isObject) {
        w.key("type");
        w.value(QStringView(item.timeline ? item.timeline->objectTypeString() : QString()));
    }
    w.key("timeline");
    w.value(item.timelineIndex);
    const bool hasParent = item.parent >= 0;
    writeStringOrNull(w, "parent",
                      hasParent ? itemName(pose.bones[size_t(item.parent)]) : QString(), hasParent);
    if (isObject) {
        w.key("z");
        w.value(item.z);
    }
    w.key("x");
    w.value(printed(item.x));
    w.key("y");
    w.value(printed(item.y));
    w.key("angle");
    w.value(printedAngle(item.angle));
    w.key("scale_x");
    w.value(printed(item.xScale));
    w.key("scale_y");
    w.value(printed(item.yScale));
    w.key("alpha");
    w.value(printed(item.alpha));
}

void writeObjectTail(JsonWriter &w, const EntityInstance &instance, const PoseItem &object)
{
    w.key("pivot_x");
    w.value(printed(object.pivotX));
    w.key("pivot_y");
    w.value(printed(object.pivotY));
    const bool sprite = object.timeline && object.timeline->isSprite();
    writeStringOrNull(w, "image", object.shownFile ? object.shownFile->name() : QString(),
                      sprite && object.shownFile);
    if (sprite && object.shownFile) {
        // The size the canvas draws the image at: an atlas frame's source size.
        w.key("width");
        w.value(object.shownFile->width());
        w.key("height");
        w.value(object.shownFile->height());
    }
    if (!object.timeline || !object.timeline->isSubEntity())
        return;
    const SubEntityInstance *sub = instance.subEntityForTimeline(object.timelineIndex);
    const Entity *entity = sub ? sub->entity() : nullptr;
    const Animation *animation = sub ? sub->currentAnimation() : nullptr;
    writeStringOrNull(w, "entity", entity ? entity->name() : QString(), entity && animation);
    writeStringOrNull(w, "animation", animation ? animation->name() : QString(), animation);
    w.key("sub_time");
    w.value(sub ? sub->currentTime() : 0);
}

} // namespace

QByteArray PoseCommand::describe(const EntityInstance &instance, int time)
{
    const Pose &pose = instance.pose();
    std::string out;
    JsonWriter w(&out, true);
    w.beginObject();
    w.key("entity");
    w.value(QStringView(instance.entity() ? instance.entity()->name() : QString()));
    w.key("animation");
    w.value(
        QStringView(instance.currentAnimation() ? instance.currentAnimation()->name() : QString()));
    w.key("time");
    w.value(time);
    w.key("bones");
    w.beginArray();
    for (const PoseItem &bone : pose.bones) {
        w.beginObject();
        writeHead(w, pose, bone, false);
        w.endObject();
    }
    w.endArray();
    w.key("objects");
    w.beginArray();
    for (const PoseItem &object : pose.objects) {
        w.beginObject();
        writeHead(w, pose, object, true);
        writeObjectTail(w, instance, object);
        w.endObject();
    }
    w.endArray();
    w.endObject();
    out.push_back('\n');
    return QByteArray(out.data(), qsizetype(out.size()));
}

void PoseCommand::addOptions(QCommandLineParser &parser)
{
    AnimationArguments::addOptions(parser, true);
}

int PoseCommand::run(const QCommandLineParser &parser)
{
    AnimationArguments args;
    RigxData document;
    Entity *entity = nullptr;
    Animation *animation = nullptr;
    if (const int status = args.load(parser, "pose", document, &entity, &animation))
        return status;
    for (const QString &name : std::as_const(args.charMaps)) {
        if (!entity->charMapFromName(name))
            return cliDataError(args.path,
                                QStringLiteral("no character map \"%1\" in entity \"%2\"")
                                    .arg(name, entity->name()));
        entity->makeCharMapActive(name, true);
    }

    EntityInstance instance(entity, animation);
    instance.setCurrentTime(args.time);
    // Speed-driven sub-entities keep their own clocks: count them as played
    // from 0 up to this time.
    instance.advanceTime(instance.pose().time);
    for (const QString &warning : instance.warnings())
        std::fprintf(stderr, "morvane-cli pose: %s\n", qPrintable(warning));

    const QByteArray text = describe(instance, args.time);
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    return CliSuccess;
}

} // namespace Morvane
