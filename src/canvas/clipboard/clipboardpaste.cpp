// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/clipboard/clipboardpaste.h"

#include "canvas/clipboard/copy.h"
#include "canvas/commands/canvascommands.h"
#include "canvas/morvanecanvasscene.h"
#include "meta/valinfocollection.h"
#include "meta/valkey.h"
#include "model/animation.h"
#include "model/commands/animationcommands.h"
#include "model/commands/objectcommands.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QCoreApplication>
#include <QHash>
#include <QSet>
#include <QUndoStack>

namespace Morvane {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Morvane::Clipboard", text);
}

/// "1 key" or "3 keys": the count with the word that fits it.
QString counted(int n, const char *one, const char *many)
{
    return tr(n == 1 ? one : many).arg(n);
}

struct PastePlan
{
    Copy *copy = nullptr;
    QList<int> origins;      // where the slot's time 0 lands, milliseconds
    bool firstMomentOnly = false;
    CopiedProperty property = CopiedProperty::All;
    bool addMissing = true;  // objects and references the target lacks are made
    bool withValueLines = true;
    bool withCurves = true;
    QString label;
};

Timeline *timelineOf(const Animation *animation, const Object *object)
{
    for (int i = 0; i < animation->timelineCount(); ++i) {
        if (animation->timeline(i)->object() == object)
            return animation->timeline(i);
    }
    return nullptr;
}

bool createsCycle(const ObjectRef *ref, const ObjectRef *parent)
{
    int depth = 0;
    for (const ObjectRef *p = parent; p && depth < ObjectRef::MaxParentDepth; p = p->parentRef(), ++depth) {
        if (p == ref)
            return true;
    }
    return false;
}

void setProperty(DisplayInfo &to, const DisplayInfo &from, CopiedProperty property)
{
    switch (property) {
    case CopiedProperty::All:
        to = from;
        break;
    case CopiedProperty::X:
        to.x = from.x;
        break;
    case CopiedProperty::Y:
        to.y = from.y;
        break;
    case CopiedProperty::ScaleX:
        to.xScale = from.xScale;
        break;
    case CopiedProperty::ScaleY:
        to.yScale = from.yScale;
        break;
    case CopiedProperty::Angle:
        to.angle = from.angle;
        break;
    case CopiedProperty::Alpha:
        to.alpha = from.alpha;
        break;
    }
}

/// The mainline key at `time`, made as a copy of the one in force there when
/// none stands there (its references keep pointing at the keys in force).
MainlineKey *mainlineKeyAt(Animation *animation, int time, int id)
{
    if (MainlineKey *key = animation->mainlineKeyAtExactTime(time))
        return key;
    const MainlineKey *inForce = animation->mainlineKeyFromTime(time, false);
    auto *key = inForce ? new MainlineKey(*inForce) : new MainlineKey;
    key->setId(id);
    key->setEditorFlag(false);
    key->setOnionSkinFlag(false);
    animation->appendMainlineKey(key, time, true, false);
    return animation->mainlineKeyAtExactTime(time);
}

struct Counts
{
    int pasted = 0;
    int leftOut = 0;
    int unmatchedVariables = 0;
};

void pasteHolder(const ValueLineHolder &from, ValueLineHolder &to, const ValInfoCollection &fromInfos,
                 const ValInfoCollection &toInfos, int origin, int length, Counts *counts)
{
    auto pasteLine = [&](const ValLine &line, ValLine *target) {
        for (int k = 0; k < line.keyCount(); ++k) {
            const int time = origin + line.key(k)->time();
            if (time < 0 || time > length) {
                ++counts->leftOut;
                continue;
            }
            std::unique_ptr<ValKey> key = line.key(k)->clone();
            key->setTime(time);
            if (target->setKey(std::move(key)))
                ++counts->pasted;
        }
    };
    for (int i = 0; i < from.lineCount(); ++i) {
        const ValLine *line = from.lineAt(i);
        const ValInfo *info = toInfos.infoFromName(fromInfos.nameFromId(line->varId()));
        ValLine *target = info && info->type == line->type()
                              ? to.lineForEditing({line->type(), info->id})
                              : nullptr;
        if (!target) {
            counts->unmatchedVariables += line->isEmpty() ? 0 : 1;
            continue;
        }
        pasteLine(*line, target);
    }
    pasteLine(from.tagLine(), &to.tagLine());
}

struct Frame
{
    const MainlineKey *key;
    int time;
};

/// Builds the pasted animation from a copy of `target`; `objectMap` gives each
/// copied object's index in `entity`.
std::unique_ptr<Animation> buildAfter(const PastePlan &plan, const QList<Frame> &frames,
                                      Animation *target, Entity *entity, RigxData *document,
                                      const QHash<int, int> &objectMap, Counts *counts)
{
    Entity *clipEntity = plan.copy->copiedEntity();
    const Animation *slot = plan.copy->pasteReadySlot();
    std::unique_ptr<Animation> after = target->clone();
    Animation *a = after.get();
    const int length = a->length();
    for (const Frame &frame : frames) {
        MainlineKey *mainline = nullptr;
        QList<std::pair<const ObjectRef *, ObjectRef *>> placed;
        for (int r = 0; r < frame.key->refCount(); ++r) {
            const ObjectRef *ref = frame.key->ref(r);
            const Timeline *copiedTimeline = ref->timeline();
            const TimelineKey *copiedKey = ref->key();
            if (!copiedTimeline || !copiedKey)
                continue;
            const int objectIndex =
                objectMap.value(clipEntity->indexOfObject(copiedTimeline->object()), -1);
            Object *object = entity->object(objectIndex);
            if (!object)
                continue;
            Timeline *timeline = timelineOf(a, object);
            const MainlineKey *inForce = a->mainlineKeyFromTime(frame.time, false);
            const bool shown = timeline && inForce && inForce->refFromTimeline(timeline);
            if (!shown && !plan.addMissing)
                continue;
            if (!mainline)
                mainline = mainlineKeyAt(a, frame.time, frame.key->id());
            if (!timeline) {
                timeline = new Timeline(object, object->name());
                a->appendTimeline(timeline);
            }
            TimelineKey *existing = timeline->actualKeyFromTime(frame.time, true, false);
            TimelineKey values = existing ? *existing
                                          : timeline->keyFromTime(a->sampleTime(frame.time));
            if (plan.property == CopiedProperty::All) {
                const TweenInfo curve = values.curve();
                const int id = values.id();
                const EntityInfo entityInfo = std::as_const(values).entityInfo();
                values = Copy::mapKeyFiles(*copiedKey, document, false);
                values.setId(id);
                // A copy read back from text has lost its sub-entity animations
                // (they belong to the source project): keep the one shown here.
                if (timeline->isSubEntity() && !entityInfo.animation.isEmpty()
                    && std::as_const(values).entityInfo().animation.isEmpty())
                    values.entityInfo() = entityInfo;
                if (!plan.withCurves)
                    values.setCurve(curve);
            } else {
                DisplayInfo info = values.info();
                setProperty(info, copiedKey->info(), plan.property);
                values.setInfo(info);
            }
            TimelineKey *key = existing;
            if (existing) {
                *existing = values;
            } else {
                key = new TimelineKey(values);
                key->setCachedTime(frame.time);
                timeline->appendTimelineKey(key, true, true);
            }
            ObjectRef *own = mainline->refFromTimeline(timeline);
            if (!own)
                own = mainline->appendRef(timeline, timeline->indexOfKey(key));
            else
                own->setKey(key);
            placed.append({ref, own});
            ++counts->pasted;
        }
        if (plan.property != CopiedProperty::All)
            continue;
        for (const auto &[ref, own] : placed) {
            if (!ref->parentRef())
                continue;
            for (const auto &[otherRef, otherOwn] : placed) {
                if (otherRef == ref->parentRef() && otherOwn->isBoneRef()
                    && !createsCycle(own, otherOwn))
                    own->setParentRef(static_cast<BoneRef *>(otherOwn));
            }
        }
    }
    if (plan.withValueLines) {
        for (int origin : plan.origins) {
            pasteHolder(slot->ownLineHolder(), a->ownLineHolder(), clipEntity->valInfoCollection(),
                        entity->valInfoCollection(), origin, length, counts);
            for (const auto &[copiedIndex, holder] : slot->objectLineHolders()) {
                const Object *object = entity->object(objectMap.value(copiedIndex, -1));
                const Object *copied = clipEntity->object(copiedIndex);
                if (!object || !copied)
                    continue;
                pasteHolder(holder, *a->objectLineHolder(entity->indexOfObject(object), true),
                            copied->valInfoCollection(), object->valInfoCollection(), origin,
                            length, counts);
            }
        }
    }
    return after;
}

void push(RigxData *document, QUndoCommand *command)
{
    RigxData::pushUndo(document, command);
}

bool runPaste(MorvaneCanvasScene *scene, const PastePlan &plan, QString *message)
{
    auto say = [message](const QString &text) {
        if (message)
            *message = text;
    };
    Animation *target = scene ? scene->currentAnimation() : nullptr;
    Entity *entity = scene ? scene->currentEntity() : nullptr;
    RigxData *document = scene ? scene->model() : nullptr;
    if (!target || !entity || !document || scene->isRecording()) {
        say(tr("No animation is open to paste into."));
        return false;
    }
    const Animation *slot = plan.copy ? plan.copy->pasteReadySlot() : nullptr;
    Entity *clipEntity = plan.copy ? plan.copy->copiedEntity() : nullptr;
    if (!slot || !clipEntity || plan.copy->isEmptyCopy()) {
        say(tr("Nothing to paste."));
        return false;
    }

    QList<Frame> frames;
    Counts counts;
    QSet<int> wanted;
    for (int origin : plan.origins) {
        const int keys = plan.firstMomentOnly ? std::min(1, slot->mainlineKeyCount())
                                              : slot->mainlineKeyCount();
        for (int i = 0; i < keys; ++i) {
            const MainlineKey *key = slot->mainlineKey(i);
            const int time = origin + key->currentTime();
            if (time < 0 || time > target->length()) {
                counts.leftOut += key->refCount();
                continue;
            }
            frames.append({key, time});
            for (int r = 0; r < key->refCount(); ++r) {
                if (const Timeline *timeline = key->ref(r)->timeline())
                    wanted.insert(clipEntity->indexOfObject(timeline->object()));
            }
        }
    }
    if (plan.withValueLines) {
        for (const auto &[index, holder] : slot->objectLineHolders()) {
            if (holder.anyValLinesHaveKeys())
                wanted.insert(index);
        }
    }

    // Object ids mean the same only within the entity the copy came from.
    const bool sameEntity = clipEntity->name() == entity->name();
    QHash<int, int> objectMap;
    QList<int> toCreate;
    for (int copiedIndex : std::as_const(wanted)) {
        const Object *copied = clipEntity->object(copiedIndex);
        if (!copied)
            continue;
        const Object *byId = sameEntity ? entity->object(copiedIndex) : nullptr;
        if (byId && byId->objectType() != copied->objectType())
            byId = nullptr;
        const Object *byName = entity->objectFromName(copied->name());
        if (byName && byName->objectType() != copied->objectType())
            byName = nullptr;
        // The id when the name agrees too; a copy read back from text may
        // number objects without an info of their own differently. Then the
        // name, then the id alone (an object renamed since the copy).
        if (byId && (byId == byName || !byName))
            objectMap.insert(copiedIndex, copiedIndex);
        else if (byName)
            objectMap.insert(copiedIndex, entity->indexOfObject(byName));
        else if (plan.addMissing)
            toCreate.append(copiedIndex);
    }
    std::sort(toCreate.begin(), toCreate.end());

    if (plan.property == CopiedProperty::All) {
        for (const Frame &frame : std::as_const(frames)) {
            for (int r = 0; r < frame.key->refCount(); ++r) {
                const TimelineKey *key = frame.key->ref(r)->key();
                bool missing = false;
                if (key)
                    Copy::mapFile(key->fileInfo(), document, false, &missing);
                if (missing) {
                    say(tr("Nothing was pasted: the image \"%1\" is not in this project.")
                            .arg(key->fileInfo().file()->name()));
                    return false;
                }
            }
        }
    }

    // Without new objects the result is known before anything is pushed, so a
    // paste that changes nothing records nothing.
    std::unique_ptr<Animation> after;
    if (toCreate.isEmpty()) {
        after = buildAfter(plan, frames, target, entity, document, objectMap, &counts);
        if (counts.pasted == 0) {
            say(counts.leftOut > 0 ? tr("Nothing was pasted: the keys would land past the end.")
                                   : tr("Nothing was pasted: no copied object is here."));
            return false;
        }
    }

    QUndoStack *stack = document->undoStack();
    if (stack)
        stack->beginMacro(plan.label);
    push(document, new RefreshTimelineCommand(scene, false));
    push(document, new ObjectSelectionCommand(scene, false));
    for (int copiedIndex : std::as_const(toCreate)) {
        Object object(*clipEntity->object(copiedIndex));
        object.setName(entity->uniqueObjectName(object.name()));
        object.defaultState() = Copy::mapKeyFiles(object.defaultState(), document, false);
        push(document, new AppendObjectCommand(entity, object));
        objectMap.insert(copiedIndex, entity->objectCount() - 1);
    }
    if (!after)
        after = buildAfter(plan, frames, target, entity, document, objectMap, &counts);
    push(document, new ChangeAnimationCommand(target, *after, plan.label));
    push(document, new ObjectSelectionCommand(scene, true));
    push(document, new RefreshTimelineCommand(scene, true));
    if (stack)
        stack->endMacro();
    else
        scene->refresh();

    QString text = counted(counts.pasted, "%1 key pasted.", "%1 keys pasted.");
    if (!toCreate.isEmpty())
        text += QLatin1Char(' ')
                + counted(int(toCreate.size()), "%1 object added.", "%1 objects added.");
    if (counts.leftOut > 0)
        text += QLatin1Char(' ')
                + counted(counts.leftOut, "%1 key past the end left out.",
                          "%1 keys past the end left out.");
    if (counts.unmatchedVariables > 0)
        text += QLatin1Char(' ')
                + counted(counts.unmatchedVariables,
                          "%1 variable line left out: no variable of its name and type here.",
                          "%1 variable lines left out: no variables of their names and types here.");
    say(text);
    return true;
}

} // namespace

bool copiedPropertyFromName(const QString &name, CopiedProperty *property)
{
    static const std::pair<const char *, CopiedProperty> names[] = {
        {"all", CopiedProperty::All},         {"x", CopiedProperty::X},
        {"y", CopiedProperty::Y},             {"scale_x", CopiedProperty::ScaleX},
        {"scale_y", CopiedProperty::ScaleY},  {"angle", CopiedProperty::Angle},
        {"a", CopiedProperty::Alpha},
    };
    for (const auto &[word, value] : names) {
        if (name == QLatin1String(word)) {
            *property = value;
            return true;
        }
    }
    return false;
}

bool pasteKeys(MorvaneCanvasScene *scene, Copy *copy, int atTime, QString *message)
{
    if (copy)
        copy->pasteReadyClone();
    PastePlan plan;
    plan.copy = copy;
    plan.origins = {atTime};
    plan.label = tr("keys pasted");
    return runPaste(scene, plan, message);
}

bool pasteToAllKeys(MorvaneCanvasScene *scene, Copy *copy, QString *message)
{
    Animation *animation = scene ? scene->currentAnimation() : nullptr;
    if (copy)
        copy->pasteReadyClone();
    PastePlan plan;
    plan.copy = copy;
    for (int i = 0; animation && i < animation->mainlineKeyCount(); ++i)
        plan.origins.append(animation->mainlineKey(i)->currentTime());
    plan.firstMomentOnly = true;
    plan.withValueLines = false;
    plan.withCurves = false;
    plan.label = tr("pasted to all keys");
    return runPaste(scene, plan, message);
}

bool copyToAllFrames(MorvaneCanvasScene *scene, const QList<int> &timelines,
                     CopiedProperty property, QString *message)
{
    Animation *animation = scene ? scene->currentAnimation() : nullptr;
    Copy copy;
    if (!animation || timelines.isEmpty() || !copy.copySceneFrame(scene, timelines)) {
        if (message)
            *message = tr("Select the items to copy to all frames first.");
        return false;
    }
    PastePlan plan;
    plan.copy = &copy;
    for (int i = 0; i < animation->mainlineKeyCount(); ++i) {
        const int time = animation->mainlineKey(i)->currentTime();
        if (time != scene->currentTime())
            plan.origins.append(time);
    }
    plan.property = property;
    plan.addMissing = false;
    plan.withValueLines = false;
    plan.withCurves = false;
    plan.label = property == CopiedProperty::All ? tr("copied to all frames")
                                                 : tr("property copied to all frames");
    if (plan.origins.isEmpty()) {
        if (message)
            *message = tr("The animation has no other mainline key to copy to.");
        return false;
    }
    return runPaste(scene, plan, message);
}

} // namespace Morvane
