// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "cli/editclipboardsteps.h"

#include "canvas/clipboard/clipboardpaste.h"
#include "canvas/clipboard/copy.h"
#include "canvas/morvanecanvasscene.h"
#include "meta/valinfocollection.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/timeline.h"

#include <QJsonArray>

#include <memory>

namespace Morvane {

namespace {

Copy &runCopy()
{
    static std::unique_ptr<Copy> copy = std::make_unique<Copy>();
    return *copy;
}

Animation *shownAnimation(EditContext &context, QString *error)
{
    Animation *animation = context.scene ? context.scene->currentAnimation() : nullptr;
    if (!animation)
        *error = QStringLiteral("no animation is shown");
    return animation;
}

int timelineIndex(const Animation *animation, const QString &name)
{
    for (int i = 0; i < animation->timelineCount(); ++i) {
        if (animation->timeline(i)->name() == name)
            return i;
    }
    return -1;
}

} // namespace

QString stepCopyFrame(EditContext &context, const QJsonObject &)
{
    QString error;
    if (!shownAnimation(context, &error))
        return error;
    if (!runCopy().copySceneFrame(context.scene))
        return QStringLiteral("copy-frame: nothing is shown at %1 ms").arg(context.scene->currentTime());
    return QString();
}

QString stepCopyKeys(EditContext &context, const QJsonObject &step)
{
    QString error;
    Animation *animation = shownAnimation(context, &error);
    if (!animation)
        return error;
    const QJsonValue keys = step.value(QStringLiteral("keys"));
    if (!keys.isArray() || keys.toArray().isEmpty())
        return QStringLiteral("copy-keys needs \"keys\": a list of {\"line\": NAME, \"time\": T}");
    const ValInfoCollection &variables = animation->parentEntity()->valInfoCollection();
    QList<CopiedKey> copied;
    QList<CopiedValueKey> copiedValues;
    for (const QJsonValue &entry : keys.toArray()) {
        const QJsonObject key = entry.toObject();
        const QJsonValue time = key.value(QStringLiteral("time"));
        const QString line = key.value(QStringLiteral("line")).toString();
        if (!entry.isObject() || line.isEmpty() || !time.isDouble() || time.toDouble() < 0
            || time.toDouble() != double(time.toInt()))
            return QStringLiteral("copy-keys: each key needs a \"line\" name and a whole \"time\" "
                                  "of 0 or more");
        const int t = time.toInt();
        if (line == QLatin1String("mainline")) {
            copied.append({-1, t});
        } else if (const int index = timelineIndex(animation, line); index >= 0) {
            copied.append({index, t});
        } else if (const ValInfo *variable = variables.infoFromName(line)) {
            copiedValues.append({-1, {variable->type, variable->id}, t});
        } else {
            return QStringLiteral("copy-keys: no timeline or variable is named \"%1\"").arg(line);
        }
    }
    if (!runCopy().copyKeys(animation, copied, copiedValues))
        return QStringLiteral("copy-keys: none of the keys exists");
    return QString();
}

QString stepPaste(EditContext &context, const QJsonObject &)
{
    QString error;
    if (!shownAnimation(context, &error))
        return error;
    QString message;
    if (!pasteKeys(context.scene, &runCopy(), context.scene->currentTime(), &message))
        return QStringLiteral("paste: ") + message;
    return QString();
}

QString stepPasteAllKeys(EditContext &context, const QJsonObject &)
{
    QString error;
    if (!shownAnimation(context, &error))
        return error;
    QString message;
    if (!pasteToAllKeys(context.scene, &runCopy(), &message))
        return QStringLiteral("paste-all-keys: ") + message;
    return QString();
}

QString stepCopyToAllFrames(EditContext &context, const QJsonObject &step)
{
    QString error;
    Animation *animation = shownAnimation(context, &error);
    if (!animation)
        return error;
    const QJsonValue objects = step.value(QStringLiteral("objects"));
    if (!objects.isArray() || objects.toArray().isEmpty())
        return QStringLiteral("copy-to-all-frames needs \"objects\": a list of names");
    QList<int> timelines;
    for (const QJsonValue &name : objects.toArray()) {
        const int index = timelineIndex(animation, name.toString());
        if (!name.isString() || index < 0)
            return QStringLiteral("copy-to-all-frames: no timeline is named \"%1\"")
                .arg(name.toString());
        timelines.append(index);
    }
    CopiedProperty property = CopiedProperty::All;
    const QJsonValue word = step.value(QStringLiteral("property"));
    if (!word.isNull() && !word.isUndefined()
        && (!copiedPropertyFromName(word.toString(), &property) || property == CopiedProperty::All))
        return QStringLiteral("copy-to-all-frames: \"property\" is one of x, y, scale_x, scale_y, "
                              "angle, a, or null");
    QString message;
    if (!copyToAllFrames(context.scene, timelines, property, &message))
        return QStringLiteral("copy-to-all-frames: ") + message;
    return QString();
}

} // namespace Morvane
