// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/clipboard/copy.h"

#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "io/jsonprojectreader.h"
#include "io/jsonprojectwriter.h"
#include "io/projectsaveoptions.h"
#include "meta/valkey.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QBuffer>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QSet>

#include <algorithm>

namespace Morvane {

namespace {

const QString kKind = QStringLiteral("clipboard");
const char *const kAnimationNames[] = {"rel", "abs", "paste"};
// No key of a project lies this late: the start of an empty mainline.
constexpr int kNoMainlineTime = 2000000000;

} // namespace

Copy::Copy()
    : RigxData(nullptr, kKind)
{
    clearCopies();
}

Copy::~Copy() = default;

Entity *Copy::copiedEntity() const
{
    return entity(0);
}

Animation *Copy::copiedRelAnimation() const
{
    Entity *e = copiedEntity();
    return e ? e->animation(0) : nullptr;
}

Animation *Copy::copiedAbsAnimation() const
{
    Entity *e = copiedEntity();
    return e ? e->animation(1) : nullptr;
}

Animation *Copy::pasteReadySlot() const
{
    Entity *e = copiedEntity();
    return e ? e->animation(2) : nullptr;
}

static bool holdsValueKeys(const Animation &animation)
{
    if (animation.ownLineHolder().anyValLinesHaveKeys())
        return true;
    for (const auto &[index, holder] : animation.objectLineHolders()) {
        if (holder.anyValLinesHaveKeys())
            return true;
    }
    return false;
}

static int valueKeyCount(const ValueLineHolder &holder)
{
    int count = holder.tagLine().keyCount();
    for (int i = 0; i < holder.lineCount(); ++i)
        count += holder.lineAt(i)->keyCount();
    return count;
}

bool Copy::isEmptyCopy() const
{
    const Animation *rel = copiedRelAnimation();
    return !rel || (rel->mainlineKeyCount() == 0 && !holdsValueKeys(*rel));
}

int Copy::copiedKeyCount() const
{
    const Animation *rel = copiedRelAnimation();
    if (!rel)
        return 0;
    int count = valueKeyCount(rel->ownLineHolder());
    for (const auto &[index, holder] : rel->objectLineHolders())
        count += valueKeyCount(holder);
    for (int i = 0; i < rel->timelineCount(); ++i)
        count += rel->timeline(i)->keyCount();
    return count;
}

void Copy::clearCopies()
{
    clearEntities();
    clearFiles();
    mFrameCopy = false;
    auto *e = new Entity(QString(), false);
    for (const char *name : kAnimationNames)
        e->appendAnimation(new Animation(QLatin1String(name), false));
    appendEntity(e);
}

void Copy::startFrom(Entity *source, MorvaneCanvasScene *scene, int length)
{
    clearCopies();
    mScene = scene;
    Entity *e = copiedEntity();
    e->setName(source->name());
    e->valInfoCollection() = source->valInfoCollection();
    // Every object info comes along, so that object ids mean the same here.
    for (int i = 0; i < source->objectCount(); ++i) {
        auto *object = new Object(*source->object(i));
        object->defaultState() = mapKeyFiles(object->defaultState(), this, true);
        e->appendObject(object, -1, false);
    }
    // Lookups by time clamp to the length: the copy is as long as its source.
    for (int i = 0; i < 3; ++i)
        e->animation(i)->setLength(length);
}

void Copy::replaceAnimation(int index, Animation *animation)
{
    Entity *e = copiedEntity();
    delete e->removeAnimation(index);
    e->insertAnimation(index, animation);
}

FileInfo Copy::mapFile(const FileInfo &info, RigxData *document, bool create, bool *missing)
{
    const File *file = info.file();
    const Folder *folder = file ? file->parentFolder() : nullptr;
    if (!file || !folder || !document)
        return FileInfo();
    Folder *targetFolder = document->folder(folder->name());
    File *target = targetFolder ? targetFolder->file(file->name()) : nullptr;
    if (!target && create) {
        if (!targetFolder) {
            targetFolder = new Folder(folder->name());
            document->appendFolder(targetFolder);
        }
        const QPointF pivot = file->pivot(false);
        // No project folder: nothing is read from disk for the copy's files.
        target = new File(file->name(), pivot.x(), pivot.y(), file->type(), QString());
        targetFolder->appendFile(target);
    }
    if (!target) {
        if (missing)
            *missing = true;
        return FileInfo();
    }
    return FileInfo(target->address());
}

TimelineKey Copy::mapKeyFiles(const TimelineKey &key, RigxData *document, bool create,
                              bool *missing)
{
    TimelineKey mapped(key);
    mapped.setFileInfo(mapFile(key.fileInfo(), document, create, missing));
    if (key.info().defaultPivot()) {
        DisplayInfo info = mapped.info();
        info.setDefaultPivot(true, mapped.fileInfo().address());
        mapped.setInfo(info);
    }
    if (key.hasEntityOrSoundInfo() && !key.entityInfo().animation.isEmpty()) {
        // Sub-entity animations are named by position in either project.
        EntityInfo entityInfo = key.entityInfo();
        entityInfo.animation = Address(document, key.entityInfo().animation.toList());
        mapped.entityInfo() = entityInfo;
    }
    return mapped;
}

TimelineKey *Copy::putKey(int objectIndex, const TimelineKey &values, int time)
{
    Animation *rel = copiedRelAnimation();
    Object *object = copiedEntity()->object(objectIndex);
    if (!object)
        return nullptr;
    Timeline *timeline = rel->timelineFromObjectId(objectIndex);
    if (!timeline)
        timeline = rel->appendObjectAsTimeline(object);
    const TimelineKey mapped = mapKeyFiles(values, this, true);
    if (TimelineKey *existing = timeline->actualKeyFromTime(time, true, false)) {
        *existing = mapped;
        return existing;
    }
    auto *key = new TimelineKey(mapped);
    key->setCachedTime(time);
    timeline->appendTimelineKey(key, true, true);
    return key;
}

void Copy::appendSceneAsMainlineKey(MorvaneCanvasScene *scene, const QList<int> &timelines)
{
    Animation *source = scene ? scene->currentAnimation() : nullptr;
    if (!source)
        return;
    const int time = scene->currentTime();
    const MainlineKey *inForce = source->mainlineKeyFromTime(time, false);
    if (!inForce)
        return;
    Animation *rel = copiedRelAnimation();
    if (!rel->mainlineKeyAtExactTime(time)) {
        auto *key = new MainlineKey;
        key->setCurve(inForce->curve());
        rel->appendMainlineKey(key, time, true, true);
    }
    MainlineKey *target = rel->mainlineKeyAtExactTime(time);
    const int sampleTime = source->sampleTime(time);
    const Entity *entity = source->parentEntity();
    QHash<const ObjectRef *, ObjectRef *> copied;
    for (int i = 0; i < inForce->refCount(); ++i) {
        const ObjectRef *ref = inForce->ref(i);
        Timeline *timeline = ref->timeline();
        const int timelineIndex = source->indexOfTimeline(timeline);
        if (!timeline || !timelines.contains(timelineIndex))
            continue;
        const int objectIndex = entity->indexOfObject(timeline->object());
        // The state shown now, blended between keys; the rest from the key in force.
        TimelineKey *key = putKey(objectIndex, timeline->keyFromTime(sampleTime), time);
        if (!key)
            continue;
        Timeline *own = key->parentTimeline();
        ObjectRef *copy = target->refFromTimeline(own);
        if (!copy)
            copy = target->appendRef(own, own->indexOfKey(key));
        else
            copy->setKey(key);
        copied.insert(ref, copy);
    }
    for (auto it = copied.constBegin(); it != copied.constEnd(); ++it) {
        ObjectRef *parent = copied.value(it.key()->parentRef(), nullptr);
        if (parent && parent->isBoneRef())
            it.value()->setParentRef(static_cast<BoneRef *>(parent));
    }
    rel->setLength(std::max(rel->length(), time));
}

bool Copy::copySceneFrame(MorvaneCanvasScene *scene, const QList<int> &timelines)
{
    Animation *source = scene ? scene->currentAnimation() : nullptr;
    Entity *entity = scene ? scene->currentEntity() : nullptr;
    if (!source || !entity) {
        clearCopies();
        return false;
    }
    QList<int> chosen;
    for (int i = 0; i < scene->instTimelineProxyCount(); ++i) {
        const ObjectGraphicsProxy *proxy = scene->instTimelineProxyFromIndex(i);
        if (!proxy || !proxy->isShownInPose() || !proxy->isVisible())
            continue;
        if (timelines.isEmpty() || timelines.contains(proxy->timelineIndex()))
            chosen.append(proxy->timelineIndex());
    }
    startFrom(entity, scene, source->length());
    mFrameCopy = true;
    if (chosen.isEmpty())
        return false;
    appendSceneAsMainlineKey(scene, chosen);
    takeAbsFromRel();
    normalizeKeysToZero();
    pasteReadyClone();
    return !isEmptyCopy();
}

bool Copy::copyKeys(Animation *animation, const QList<CopiedKey> &keys,
                    const QList<CopiedValueKey> &valueKeys)
{
    Entity *entity = animation ? animation->parentEntity() : nullptr;
    if (!entity) {
        clearCopies();
        return false;
    }
    startFrom(entity, nullptr, animation->length());
    // Per time, the timelines whose keys come along (-1 for all of them).
    QMap<int, QSet<int>> byTime;
    for (const CopiedKey &k : keys)
        byTime[k.time].insert(k.timeline);
    Animation *rel = copiedRelAnimation();
    for (auto it = byTime.constBegin(); it != byTime.constEnd(); ++it) {
        const int time = it.key();
        const MainlineKey *source = animation->mainlineKeyAtExactTime(time);
        if (!source)
            continue;
        const bool whole = it.value().contains(-1);
        QHash<const ObjectRef *, ObjectRef *> copied;
        MainlineKey *target = nullptr;
        for (int i = 0; i < source->refCount(); ++i) {
            const ObjectRef *ref = source->ref(i);
            TimelineKey *sourceKey = ref->key();
            Timeline *timeline = ref->timeline();
            const int timelineIndex = animation->indexOfTimeline(timeline);
            if (!sourceKey || sourceKey->time() != time
                || (!whole && !it.value().contains(timelineIndex)))
                continue;
            if (!target) {
                auto *key = new MainlineKey;
                key->setCurve(source->curve());
                rel->appendMainlineKey(key, time, true, true);
                target = rel->mainlineKeyAtExactTime(time);
            }
            TimelineKey *key = putKey(entity->indexOfObject(timeline->object()), *sourceKey, time);
            if (!key)
                continue;
            Timeline *own = key->parentTimeline();
            ObjectRef *copy = target->refFromTimeline(own);
            if (!copy)
                copy = target->appendRef(own, own->indexOfKey(key));
            copied.insert(ref, copy);
        }
        for (auto c = copied.constBegin(); c != copied.constEnd(); ++c) {
            ObjectRef *parent = copied.value(c.key()->parentRef(), nullptr);
            if (parent && parent->isBoneRef())
                c.value()->setParentRef(static_cast<BoneRef *>(parent));
        }
        if (whole) {
            // The variable and tag keys of that moment come along.
            auto copyAt = [time](const ValueLineHolder &from, ValueLineHolder &to) {
                for (int i = 0; i < from.lineCount(); ++i) {
                    const ValLine *line = from.lineAt(i);
                    if (const ValKey *key = line->keyAtTime(time)) {
                        if (ValLine *own = to.lineForEditing({line->type(), line->varId()}))
                            own->setKey(key->clone());
                    }
                }
                if (const ValKey *key = from.tagLine().keyAtTime(time))
                    to.tagLine().setKey(key->clone());
            };
            copyAt(animation->ownLineHolder(), rel->ownLineHolder());
            for (const auto &[index, holder] : animation->objectLineHolders())
                copyAt(holder, *rel->objectLineHolder(index, true));
        }
        rel->setLength(std::max(rel->length(), time));
    }
    for (const CopiedValueKey &k : valueKeys) {
        const ValueLineHolder *from = k.objectIndex < 0 ? &animation->ownLineHolder()
                                                        : animation->objectLineHolder(k.objectIndex);
        const ValLine *line = from ? from->line(k.line) : nullptr;
        const ValKey *key = line ? line->keyAtTime(k.time) : nullptr;
        if (!key)
            continue;
        ValueLineHolder &to = k.objectIndex < 0 ? rel->ownLineHolder()
                                                : *rel->objectLineHolder(k.objectIndex, true);
        if (ValLine *own = to.lineForEditing(k.line))
            own->setKey(key->clone());
        rel->setLength(std::max(rel->length(), k.time));
    }
    takeAbsFromRel();
    normalizeKeysToZero();
    pasteReadyClone();
    return !isEmptyCopy();
}

void Copy::takeAbsFromRel()
{
    auto *abs = new Animation(*copiedRelAnimation());
    abs->setName(QStringLiteral("abs"));
    replaceAnimation(1, abs);
}

void Copy::normalizeKeysToZero()
{
    Animation *rel = copiedRelAnimation();
    if (!rel)
        return;
    int start = rel->mainlineKeyCount() > 0 ? rel->mainlineKey(0)->currentTime() : kNoMainlineTime;
    auto consider = [&start](const ValueLineHolder &holder) {
        const int t = holder.earliestTime();
        if (t != ValueLineHolder::NoTime && holder.anyValLinesHaveKeys())
            start = std::min(start, t);
    };
    consider(rel->ownLineHolder());
    for (const auto &[index, holder] : rel->objectLineHolders())
        consider(holder);
    if (start == kNoMainlineTime || start == 0)
        return;
    rel->ownLineHolder().offsetAllKeys(-start);
    for (const auto &[index, holder] : rel->objectLineHolders())
        rel->objectLineHolder(index)->offsetAllKeys(-start);
    // In time order, each key lands below every key not yet moved, so no two
    // keys ever meet; the child timeline keys move along.
    for (int i = 0; i < rel->mainlineKeyCount(); ++i) {
        MainlineKey *key = rel->mainlineKey(i);
        key->setCurrentTime(key->currentTime() - start, false, true);
    }
}

void Copy::pasteReadyClone()
{
    auto *paste = new Animation(*copiedRelAnimation());
    paste->setName(QStringLiteral("paste"));
    // The timeline keys follow their mainline key itself, not its id, so new
    // ids need no relinking.
    for (int i = 0; i < paste->mainlineKeyCount(); ++i)
        paste->mainlineKey(i)->setId(Animation::currentMainKeyId++);
    replaceAnimation(2, paste);
}

QByteArray Copy::toJson()
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    ProjectSaveOptions options;
    JsonProjectWriter::write(*this, &buffer, options);
    return buffer.data();
}

std::unique_ptr<Copy> Copy::fromJson(const QByteArray &text, QString *error)
{
    auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return std::unique_ptr<Copy>();
    };
    QJsonParseError parseError;
    const QJsonDocument json = QJsonDocument::fromJson(text, &parseError);
    if (parseError.error != QJsonParseError::NoError || !json.isObject())
        return fail(tr("The clipboard holds no Morvane copy."));
    if (json.object().value(QStringLiteral("generator_version")).toString() != kKind)
        return fail(tr("The clipboard holds a project, not a Morvane copy."));
    JsonProjectReader reader;
    QString readError;
    if (!reader.parse(text, &readError))
        return fail(tr("The Morvane copy on the clipboard is damaged: %1").arg(readError));
    auto copy = std::make_unique<Copy>();
    copy->clearEntities();
    QStringList warnings;
    reader.read(copy.get(), &warnings);
    Entity *e = copy->copiedEntity();
    bool shaped = copy->entityCount() == 1 && e && e->animationCount() == 3;
    for (int i = 0; shaped && i < 3; ++i)
        shaped = e->animation(i)->name() == QLatin1String(kAnimationNames[i]);
    // Each sub-entity key may have warned that its animation is not here; any
    // other warning means the reader dropped or changed something.
    int subEntityKeys = 0;
    for (int a = 0; shaped && a < 3; ++a) {
        const Animation *animation = e->animation(a);
        for (int t = 0; t < animation->timelineCount(); ++t) {
            if (animation->timeline(t)->isSubEntity())
                subEntityKeys += animation->timeline(t)->keyCount();
        }
    }
    if (!shaped || warnings.size() > subEntityKeys)
        return fail(tr("The Morvane copy on the clipboard is damaged."));
    copy->mFrameCopy = false;
    return copy;
}

} // namespace Morvane
