// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "editscript.h"

#include "editclipboardsteps.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "io/numberformat.h"
#include "model/animation.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "timeline/keyedits.h"

#include <QJsonArray>
#include <QUndoStack>

#include <cmath>
#include <limits>

namespace Morvane {

namespace {

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// A whole number of milliseconds (or any whole number) from `step[key]`.
bool wholeNumber(const QJsonObject &step, const char *key, int *out, QString *error)
{
    const QJsonValue v = step.value(QLatin1String(key));
    const double d = v.toDouble(std::numeric_limits<double>::quiet_NaN());
    if (!v.isDouble() || !std::isfinite(d) || d != std::floor(d) || d < -2147483648.0
        || d > 2147483647.0) {
        *error = v.isUndefined() ? QStringLiteral("missing \"%1\"").arg(QLatin1String(key))
                                 : QStringLiteral("\"%1\" takes a whole number").arg(QLatin1String(key));
        return false;
    }
    *out = int(d);
    return true;
}

bool timeInAnimation(const Animation *anim, int time, QString *error)
{
    if (time >= 0 && time <= anim->length())
        return true;
    *error = QStringLiteral("time %1 ms is outside the animation (0 to %2 ms)")
                 .arg(time)
                 .arg(anim->length());
    return false;
}

// -1 for "mainline", else the index of the timeline of the object named so.
bool lineIndex(const Animation *anim, const QJsonValue &value, int *out, QString *error)
{
    if (!value.isString()) {
        *error = value.isUndefined() ? QStringLiteral("missing \"line\"")
                                     : QStringLiteral("\"line\" takes \"mainline\" or a name");
        return false;
    }
    const QString name = value.toString();
    if (name == QLatin1String("mainline")) {
        *out = -1;
        return true;
    }
    const Timeline *tl = anim->timelineFromObjectName(name);
    if (!tl) {
        *error = QStringLiteral("no object or line %1 in animation %2").arg(quoted(name), quoted(anim->name()));
        return false;
    }
    *out = anim->indexOfTimeline(tl);
    return true;
}

bool objectProxy(EditContext &context, const QJsonValue &value, const char *key,
                 ObjectGraphicsProxy **out, QString *error)
{
    const Animation *anim = context.scene->currentAnimation();
    if (!value.isString()) {
        *error = value.isUndefined() ? QStringLiteral("missing \"%1\"").arg(QLatin1String(key))
                                     : QStringLiteral("\"%1\" takes a name").arg(QLatin1String(key));
        return false;
    }
    const Timeline *tl = anim->timelineFromObjectName(value.toString());
    ObjectGraphicsProxy *proxy = tl ? context.scene->timelineProxy(anim->indexOfTimeline(tl)) : nullptr;
    if (!proxy) {
        *error = QStringLiteral("no object %1 in animation %2")
                     .arg(quoted(value.toString()), quoted(anim->name()));
        return false;
    }
    *out = proxy;
    return true;
}

// The key a step names by "line" and "time".
bool keyId(const Animation *anim, const QJsonObject &step, KeyEdits::KeyId *out, QString *error)
{
    if (!lineIndex(anim, step.value(QLatin1String("line")), &out->timeline, error)
        || !wholeNumber(step, "time", &out->time, error) || !timeInAnimation(anim, out->time, error))
        return false;
    return true;
}

QString stepTime(EditContext &context, const QJsonObject &step)
{
    QString error;
    int time = 0;
    if (!wholeNumber(step, "time", &time, &error)
        || !timeInAnimation(context.scene->currentAnimation(), time, &error))
        return error;
    context.session->setCurrentTime(time);
    return QString();
}

QString stepSet(EditContext &context, const QJsonObject &step)
{
    QString error;
    ObjectGraphicsProxy *proxy = nullptr;
    if (!objectProxy(context, step.value(QLatin1String("object")), "object", &proxy, &error))
        return error;
    Animation *anim = context.scene->currentAnimation();
    Timeline *tl = anim->timeline(proxy->timelineIndex());

    // What the file writes, turned into the model's conventions.
    struct Field
    {
        const char *name;
        NumberMapping mapping;
    };
    static const Field fields[] = {
        {"x", NumberMapping::Same},       {"y", NumberMapping::Negated},
        {"angle", NumberMapping::FromFullTurn}, {"scale_x", NumberMapping::Same},
        {"scale_y", NumberMapping::Same}, {"pivot_x", NumberMapping::Same},
        {"pivot_y", NumberMapping::FromOne}, {"a", NumberMapping::Same},
    };
    QHash<QString, double> values;
    for (const Field &field : fields) {
        const QJsonValue v = step.value(QLatin1String(field.name));
        if (v.isUndefined())
            continue;
        const double d = v.toDouble(std::numeric_limits<double>::quiet_NaN());
        if (!v.isDouble() || !std::isfinite(d))
            return QStringLiteral("\"%1\" takes a number").arg(QLatin1String(field.name));
        values.insert(QLatin1String(field.name), NumberFormat::toModel(d, field.mapping));
    }
    for (auto it = step.constBegin(); it != step.constEnd(); ++it) {
        if (it.key() != QLatin1String("do") && it.key() != QLatin1String("object")
            && !values.contains(it.key()))
            return QStringLiteral("\"set\" has no field %1").arg(quoted(it.key()));
    }

    const int time = context.scene->currentTime();
    TimelineKey key = tl->keyFromTime(anim->sampleTime(time));
    DisplayInfo info = key.info();
    info.x = values.value(QStringLiteral("x"), info.x);
    info.y = values.value(QStringLiteral("y"), info.y);
    info.angle = values.value(QStringLiteral("angle"), info.angle);
    info.xScale = values.value(QStringLiteral("scale_x"), info.xScale);
    info.yScale = values.value(QStringLiteral("scale_y"), info.yScale);
    info.alpha = values.value(QStringLiteral("a"), info.alpha);
    if (values.contains(QStringLiteral("pivot_x")))
        info.setPivotX(values.value(QStringLiteral("pivot_x")), false);
    if (values.contains(QStringLiteral("pivot_y")))
        info.setPivotY(values.value(QStringLiteral("pivot_y")), false);
    key.setInfo(info);
    key.setCachedTime(time);

    MorvaneCanvasScene *scene = context.scene;
    scene->setSelectedProxies({proxy});
    scene->startUndoWithSelection(proxy->name() + QStringLiteral(" changed"));
    scene->noteTimelineChanged(proxy->timelineIndex());
    tl->createUndoFromKey(key, false, false, false);
    scene->endUndoWithSelection(false, false, true);
    return QString();
}

QString stepMove(EditContext &context, const QJsonObject &step)
{
    Animation *anim = context.scene->currentAnimation();
    const QJsonValue changes = step.value(QLatin1String("changes"));
    if (!changes.isArray() || changes.toArray().isEmpty())
        return QStringLiteral("\"changes\" takes a list of {\"line\", \"from\", \"to\"}");
    // Line 0 is the mainline, line i + 1 the timeline at index i (every
    // timeline shown).
    KeyTimeChangeInstructionSet set;
    for (const QJsonValue &value : changes.toArray()) {
        const QJsonObject change = value.toObject();
        QString error;
        int line = 0;
        int from = 0;
        int to = 0;
        if (!value.isObject() || !lineIndex(anim, change.value(QLatin1String("line")), &line, &error)
            || !wholeNumber(change, "from", &from, &error) || !wholeNumber(change, "to", &to, &error)
            || !timeInAnimation(anim, from, &error))
            return error.isEmpty() ? QStringLiteral("a change is not an object") : error;
        const bool exists = line < 0 ? anim->mainlineKeyAtExactTime(from) != nullptr
                                     : anim->timeline(line)->actualKeyFromTime(from) != nullptr;
        if (!exists)
            return line < 0 ? QStringLiteral("no mainline key at %1 ms").arg(from)
                            : QStringLiteral("no key of %1 at %2 ms")
                                  .arg(quoted(anim->timeline(line)->name()))
                                  .arg(from);
        // As a drag: clamped to the animation.
        set.appendKeyChange(line + 1, from, std::clamp(to, 0, anim->length()));
    }
    KeyEdits::recordKeyMove(context.scene, set, TimelineFilter(), nullptr, nullptr);
    return QString();
}

QString stepDelete(EditContext &context, const QJsonObject &step)
{
    QString error;
    KeyEdits::KeyId id;
    if (!keyId(context.scene->currentAnimation(), step, &id, &error))
        return error;
    if (!KeyEdits::deleteKeys(context.scene, {id}, &error))
        return error;
    return QString();
}

QString stepCurve(EditContext &context, const QJsonObject &step)
{
    QString error;
    KeyEdits::KeyId id;
    if (!keyId(context.scene->currentAnimation(), step, &id, &error))
        return error;
    const QString type = step.value(QLatin1String("curve_type")).toString();
    TweenInfo curve;
    curve.setCurveType(type);
    if (curve.curveTypeName() != type || type.isEmpty())
        return QStringLiteral("\"curve_type\" takes instant, linear, quadratic, cubic, quartic, "
                              "quintic or bezier");
    const QJsonValue c = step.value(QLatin1String("c"));
    if (!c.isUndefined()) {
        const QJsonArray list = c.toArray();
        if (!c.isArray() || list.size() != curve.cCount())
            return QStringLiteral("\"c\" takes %1 numbers for %2").arg(curve.cCount()).arg(type);
        for (int i = 0; i < list.size(); ++i) {
            const double d = list.at(i).toDouble(std::numeric_limits<double>::quiet_NaN());
            const bool handleX = curve.isBezier() && i % 2 == 0;
            const double low = handleX ? 0.0 : TweenInfo::MinParameter;
            const double high = handleX ? 1.0 : TweenInfo::MaxParameter;
            if (!list.at(i).isDouble() || !(d >= low && d <= high))
                return QStringLiteral("\"c\" %1 must be a number from %2 to %3")
                    .arg(i + 1)
                    .arg(low)
                    .arg(high);
            curve.setC(i, d);
        }
    }
    if (!KeyEdits::changeCurve(context.scene, {id}, curve, &error))
        return error;
    return QString();
}

QString stepScaleTimes(EditContext &context, const QJsonObject &step)
{
    const Animation *anim = context.scene->currentAnimation();
    const QJsonValue keys = step.value(QLatin1String("keys"));
    if (!keys.isArray() || keys.toArray().isEmpty())
        return QStringLiteral("\"keys\" takes a list of {\"line\", \"time\"}");
    QList<KeyEdits::KeyId> ids;
    QString error;
    for (const QJsonValue &value : keys.toArray()) {
        KeyEdits::KeyId id;
        if (!value.isObject())
            return QStringLiteral("a key is not an object");
        if (!keyId(anim, value.toObject(), &id, &error))
            return error;
        ids.append(id);
    }
    const QJsonValue factor = step.value(QLatin1String("factor"));
    const double f = factor.toDouble(std::numeric_limits<double>::quiet_NaN());
    if (!factor.isDouble() || !std::isfinite(f) || f <= 0)
        return QStringLiteral("\"factor\" takes a number above 0");
    if (!KeyEdits::scaleKeyTimes(context.scene, ids, f, &error))
        return error;
    return QString();
}

QString stepParent(EditContext &context, const QJsonObject &step)
{
    QString error;
    ObjectGraphicsProxy *proxy = nullptr;
    if (!objectProxy(context, step.value(QLatin1String("object")), "object", &proxy, &error))
        return error;
    MorvaneCanvasScene *scene = context.scene;
    const QJsonValue boneValue = step.value(QLatin1String("bone"));
    if (!boneValue.isNull()) {
        ObjectGraphicsProxy *bone = nullptr;
        if (!objectProxy(context, boneValue, "bone", &bone, &error))
            return error;
        if (!bone->isBone())
            return QStringLiteral("%1 is not a bone").arg(quoted(bone->name()));
        if (bone == proxy)
            return QStringLiteral("%1 cannot be its own parent").arg(quoted(bone->name()));
        scene->setSelectedProxies({proxy});
        scene->reparentSelection(bone);
        return QString();
    }
    // Off its parent bone: the same macro and command as a parenting, with no
    // parent and the place it has on the canvas.
    scene->setSelectedProxies({proxy});
    scene->unparentSelection(proxy->name() + QStringLiteral(" re-parented"));
    return QString();
}

QString stepZOrder(EditContext &context, const QJsonObject &step)
{
    QString error;
    ObjectGraphicsProxy *proxy = nullptr;
    if (!objectProxy(context, step.value(QLatin1String("object")), "object", &proxy, &error))
        return error;
    if (proxy->isBone())
        return QStringLiteral("%1 is a bone: bones have no drawing order").arg(quoted(proxy->name()));
    using ZMove = MorvaneCanvasScene::ZMove;
    const QString to = step.value(QLatin1String("to")).toString();
    ZMove move;
    if (to == QLatin1String("up"))
        move = ZMove::Up;
    else if (to == QLatin1String("down"))
        move = ZMove::Down;
    else if (to == QLatin1String("top"))
        move = ZMove::ToTop;
    else if (to == QLatin1String("bottom"))
        move = ZMove::ToBottom;
    else
        return QStringLiteral("\"to\" takes up, down, top or bottom");
    context.scene->setSelectedProxies({proxy});
    context.scene->moveSelectionInZOrder(move);
    return QString();
}

QString stepCopyZOrder(EditContext &context, const QJsonObject &)
{
    context.scene->copyZOrderToOtherFrames();
    return QString();
}

QString stepCloneAnimation(EditContext &context, const QJsonObject &)
{
    QString error;
    if (!KeyEdits::cloneAnimation(context.scene, &error))
        return error;
    return QString();
}

QString stepLength(EditContext &context, const QJsonObject &step)
{
    QString error;
    int length = 0;
    if (!wholeNumber(step, "length", &length, &error)
        || !KeyEdits::setAnimationLength(context.scene, length, &error))
        return error;
    return QString();
}

QString undoOrRedo(EditContext &context, const QJsonObject &step, bool undo)
{
    int count = 1;
    QString error;
    if (step.contains(QLatin1String("count")) && !wholeNumber(step, "count", &count, &error))
        return error;
    if (count < 1)
        return QStringLiteral("\"count\" takes a number from 1");
    QUndoStack *stack = context.document->undoStack();
    for (int i = 0; i < count; ++i) {
        if (undo ? !stack->canUndo() : !stack->canRedo())
            return undo ? QStringLiteral("nothing to undo") : QStringLiteral("nothing to redo");
        if (undo)
            stack->undo();
        else
            stack->redo();
    }
    return QString();
}

QString stepUndo(EditContext &context, const QJsonObject &step)
{
    return undoOrRedo(context, step, true);
}

QString stepRedo(EditContext &context, const QJsonObject &step)
{
    return undoOrRedo(context, step, false);
}

// One line per step; keep the editing steps before undo and redo.
const EditStep sSteps[] = {
    {"time", &stepTime},
    {"set", &stepSet},
    {"move", &stepMove},
    {"delete", &stepDelete},
    {"curve", &stepCurve},
    {"scale-times", &stepScaleTimes},
    {"parent", &stepParent},
    {"zorder", &stepZOrder},
    {"copy-zorder", &stepCopyZOrder},
    {"clone-animation", &stepCloneAnimation},
    {"length", &stepLength},
    {"undo", &stepUndo},
    {"redo", &stepRedo},
    {"copy-frame", &stepCopyFrame},
    {"copy-keys", &stepCopyKeys},
    {"paste", &stepPaste},
    {"paste-all-keys", &stepPasteAllKeys},
    {"copy-to-all-frames", &stepCopyToAllFrames},
};

} // namespace

const EditStep *findEditStep(const QString &name)
{
    for (const EditStep &step : sSteps) {
        if (name == QLatin1String(step.name))
            return &step;
    }
    return nullptr;
}

QStringList editStepNames()
{
    QStringList names;
    for (const EditStep &step : sSteps)
        names << QLatin1String(step.name);
    return names;
}

} // namespace Morvane
