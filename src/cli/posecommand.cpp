// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "posecommand.h"

#include "animationarguments.h"
#include "clicommand.h"
#include "eval/entityinstance.h"
#include "io/numberformat.h"
#include "io/projectfile.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

#include <cmath>
#include <cstdio>

namespace Morvane {

namespace {

int usageError(const QString &message = QString())
{
    return cliUsageError("pose", PoseCommand::Usage, message);
}

/// A small JSON writer that keeps the keys in the documented order.
class Writer
{
public:
    void raw(const char *text) { mOut.append(text); }

    void string(const QString &text)
    {
        mOut.append('"');
        for (const char c : text.toUtf8()) {
            const auto u = static_cast<unsigned char>(c);
            if (c == '"' || c == '\\') {
                mOut.append('\\');
                mOut.append(c);
            } else if (u < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", u);
                mOut.append(escaped);
            } else {
                mOut.append(c);
            }
        }
        mOut.append('"');
    }

    void key(const char *name)
    {
        if (!mFirst)
            mOut.append(", ");
        mFirst = false;
        mOut.append('"');
        mOut.append(name);
        mOut.append("\": ");
    }
    void beginObject()
    {
        mOut.append('{');
        mFirst = true;
    }
    void endObject()
    {
        mOut.append('}');
        mFirst = false;
    }

    void number(double value)
    {
        char buffer[NumberFormat::BufferSize];
        const int n = NumberFormat::writeReal6(buffer, value);
        if (n == 2 && buffer[0] == '-' && buffer[1] == '0')
            mOut.append('0');
        else
            mOut.append(buffer, n);
    }
    void integer(int value) { mOut.append(QByteArray::number(value)); }
    /// Degrees in [0, 360) after rounding to the printed precision.
    void angle(double degrees)
    {
        double rounded = std::round(degrees * 1e6) / 1e6;
        if (rounded >= 360.0 || rounded <= -360.0)
            rounded = std::fmod(rounded, 360.0);
        if (rounded < 0.0)
            rounded += 360.0;
        if (rounded >= 360.0)
            rounded = 0.0;
        number(rounded);
    }
    QByteArray take() { return std::move(mOut); }

private:
    QByteArray mOut;
    bool mFirst = true;
};

QString itemName(const PoseItem &item)
{
    if (item.object)
        return item.object->name();
    return item.timeline ? item.timeline->name() : QString();
}

void writeBoneHead(Writer &w, const Pose &pose, const PoseItem &item)
{
    w.key("name");
    w.string(itemName(item));
    w.key("timeline");
    w.integer(item.timelineIndex);
    w.key("parent");
    if (item.parent >= 0) {
        w.string(itemName(pose.bones[size_t(item.parent)]));
    } else {
        w.raw("null");
    }
}

void writeSpatial(Writer &w, const PoseItem &item)
{
    w.key("x");
    w.number(item.x);
    w.key("y");
    w.number(item.y);
    w.key("angle");
    w.angle(item.angle);
    w.key("scale_x");
    w.number(item.xScale);
    w.key("scale_y");
    w.number(item.yScale);
    w.key("alpha");
    w.number(item.alpha);
}

} // namespace

QByteArray PoseCommand::describe(const EntityInstance &instance, int time)
{
    const Pose &pose = instance.pose();
    Writer w;
    w.beginObject();
    w.key("entity");
    w.string(instance.entity() ? instance.entity()->name() : QString());
    w.key("animation");
    w.string(instance.currentAnimation() ? instance.currentAnimation()->name() : QString());
    w.key("time");
    w.integer(time);

    w.raw(",\n \"bones\": [");
    for (size_t i = 0; i < pose.bones.size(); ++i) {
        const PoseItem &bone = pose.bones[i];
        w.raw(i ? ",\n  " : "\n  ");
        w.beginObject();
        writeBoneHead(w, pose, bone);
        writeSpatial(w, bone);
        w.endObject();
    }
    w.raw(pose.bones.empty() ? "]" : "\n ]");

    w.raw(",\n \"objects\": [");
    for (size_t i = 0; i < pose.objects.size(); ++i) {
        const PoseItem &object = pose.objects[i];
        w.raw(i ? ",\n  " : "\n  ");
        w.beginObject();
        w.key("name");
        w.string(itemName(object));
        w.key("type");
        w.string(object.timeline ? object.timeline->objectTypeString() : QString());
        w.key("timeline");
        w.integer(object.timelineIndex);
        w.key("parent");
        if (object.parent >= 0) {
            w.string(itemName(pose.bones[size_t(object.parent)]));
        } else {
            w.raw("null");
        }
        w.key("z");
        w.integer(object.z);
        writeSpatial(w, object);
        w.key("pivot_x");
        w.number(object.pivotX);
        w.key("pivot_y");
        w.number(object.pivotY);
        w.key("image");
        const bool sprite = object.timeline && object.timeline->isSprite();
        if (sprite && object.shownFile) {
            w.string(object.shownFile->name());
        } else {
            w.raw("null");
        }
        if (object.timeline && object.timeline->isSubEntity()) {
            const SubEntityInstance *sub = instance.subEntityForTimeline(object.timelineIndex);
            const Entity *entity = sub ? sub->entity() : nullptr;
            const Animation *animation = sub ? sub->currentAnimation() : nullptr;
            w.key("entity");
            if (entity && animation)
                w.string(entity->name());
            else
                w.raw("null");
            w.key("animation");
            if (animation)
                w.string(animation->name());
            else
                w.raw("null");
            w.key("sub_time");
            w.integer(sub ? sub->currentTime() : 0);
        }
        w.endObject();
    }
    w.raw(pose.objects.empty() ? "]}\n" : "\n ]}\n");
    return w.take();
}

int PoseCommand::run(const QStringList &arguments)
{
    AnimationArguments args;
    if (!parseAnimationArguments(arguments, true, "pose", PoseCommand::Usage, &args))
        return CliUsage;
    const int time = args.time;

    RigxData document;
    if (!ProjectFile::open(&document, args.path))
        return CliFileError;

    int entityIndex = -1;
    int animationIndex = -1;
    if (!selectAnimation(document, args, "pose", PoseCommand::Usage, &entityIndex,
                         &animationIndex))
        return CliUsage;
    Entity *entity = document.entity(entityIndex);
    for (const QString &name : std::as_const(args.charMaps)) {
        if (!entity->charMapFromName(name))
            return usageError(QLatin1String("no character map \"") + name +
                              QLatin1String("\" in entity ") + entity->name());
        entity->makeCharMapActive(name, true);
    }

    EntityInstance instance(entity, entity->animation(animationIndex));
    instance.setCurrentTime(time);
    // Speed-driven sub-entities keep their own clocks: count them as played
    // from 0 up to this time.
    instance.advanceTime(instance.pose().time);
    for (const QString &warning : instance.warnings())
        std::fprintf(stderr, "morvane-cli pose: %s\n", qPrintable(warning));

    const QByteArray text = describe(instance, time);
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    return CliSuccess;
}

int runPoseCommand(const QStringList &args)
{
    return PoseCommand::run(args);
}

} // namespace Morvane
