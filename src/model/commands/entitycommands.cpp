// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/entitycommands.h"

#include "model/animation.h"
#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/timelinekey.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

#include <QCoreApplication>

#include <functional>

#include <cmath>

namespace Morvane {

namespace {

// A detached animation refers to its objects by pointer, and those may be
// destroyed and made again while it waits on the stack: keep their rows instead.
QList<int> objectRows(const Animation &animation, const Entity *entity)
{
    QList<int> rows;
    for (int i = 0; i < animation.timelineCount(); ++i)
        rows.append(entity ? entity->indexOfObject(animation.timeline(i)->object()) : -1);
    return rows;
}

void bindObjects(Animation *animation, const Entity *entity, const QList<int> &rows)
{
    for (int i = 0; i < animation->timelineCount() && i < rows.size(); ++i)
        animation->timeline(i)->setObject(entity->object(rows.at(i)));
}

template <typename Visit> void forEachSubEntityKey(RigxData *document, Visit visit)
{
    for (int e = 0; document && e < document->entityCount(); ++e) {
        Entity *entity = document->entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            Animation *animation = entity->animation(a);
            for (int t = 0; t < animation->timelineCount(); ++t) {
                Timeline *timeline = animation->timeline(t);
                if (!timeline->isSubEntity())
                    continue;
                for (int k = 0; k < timeline->keyCount(); ++k) {
                    TimelineKey *key = timeline->key(k);
                    if (key->hasEntityOrSoundInfo())
                        visit(key, key->entityInfo().animation);
                }
            }
        }
    }
}

} // namespace

// Sub-entity keys name their animation by entity and animation row. Before rows shift,
// every such name is resolved so that it holds the animation itself.
void SubEntityTargets::pin(RigxData *document)
{
    forEachSubEntityKey(document, [](TimelineKey *, Address &target) { target.animation(); });
}

// After rows shifted: the rows are read back from the animations held. With `cut`, a key
// whose animation went with the change is set to name none, and remembered for `restore`.
void SubEntityTargets::reindex(RigxData *document, bool cut)
{
    forEachSubEntityKey(document, [this, document, cut](TimelineKey *key, Address &target) {
        auto *animation = static_cast<Animation *>(target.directPointer());
        Entity *entity = animation ? animation->parentEntity() : nullptr;
        const int entityRow = entity ? document->indexOfEntity(entity) : -1;
        if (entityRow >= 0) {
            target.set(0, entityRow);
            target.set(1, entity->indexOfAnimation(animation));
        } else if (cut && target.entityIndex() >= 0) {
            Address keyAddress = key->address();
            keyAddress.setDirectPointer(key);
            mCut.append({keyAddress, target.toList()});
            target = Address(document, {-1, -1});
        }
    });
}

// Gives the keys that `reindex` cut their animation's rows back, once `reinsert` has put
// that animation at those rows again.
void SubEntityTargets::restore(RigxData *document, const std::function<void()> &reinsert)
{
    pin(document);
    // The keys are found before the rows shift back; nothing in between destroys them.
    QList<TimelineKey *> keys;
    for (const Cut &cut : std::as_const(mCut))
        keys.append(cut.key.key());
    reinsert();
    reindex(document, false);
    for (qsizetype i = 0; i < keys.size(); ++i) {
        if (keys.at(i))
            keys.at(i)->entityInfo().animation = Address(document, mCut.at(i).rows);
    }
    mCut.clear();
}

AppendEntityCommand::AppendEntityCommand(RigxData *document, const QString &name,
                                         QUndoCommand *parent)
    : QUndoCommand(QCoreApplication::translate("Morvane", "new entity"), parent)
    , mDocument(document)
    , mName(name)
{}

void AppendEntityCommand::redo()
{
    mIndex = -1;
    if (!mDocument)
        return;
    mDocument->appendEntity(new Entity(mName, true));
    mIndex = mDocument->entityCount() - 1;
    mDocument->emitEntityAnimationStructureChanged();
}

void AppendEntityCommand::undo()
{
    Entity *entity = mDocument && mIndex >= 0 ? mDocument->entity(mIndex) : nullptr;
    if (!entity || mIndex != mDocument->entityCount() - 1 || entity->name() != mName)
        return;
    mDocument->deleteEntity(mIndex);
    mIndex = -1;
    mDocument->emitEntityAnimationStructureChanged();
}

RemoveEntityCommand::RemoveEntityCommand(Entity *entity, QUndoCommand *parent)
    : QUndoCommand(QCoreApplication::translate("Morvane", "entity deleted"), parent)
    , mEntity(entity ? freshAddress(entity->address()) : Address())
{
    if (entity) {
        mSnapshot = std::make_unique<Entity>(entity->name());
        mSnapshot->setTo(*entity);
        mSnapshot->setId(entity->id());
    }
}

RemoveEntityCommand::~RemoveEntityCommand() = default;

void RemoveEntityCommand::redo()
{
    mRemoved = false;
    RigxData *document = mEntity.document();
    Entity *entity = freshAddress(mEntity).entity();
    if (!entity || !mSnapshot || entity->name() != mSnapshot->name())
        return;
    mTargets.pin(document);
    document->deleteEntity(mEntity.entityIndex());
    mTargets.reindex(document, true);
    mRemoved = true;
    document->emitEntityAnimationStructureChanged();
}

void RemoveEntityCommand::undo()
{
    RigxData *document = mEntity.document();
    if (!mRemoved || !document)
        return;
    auto *entity = new Entity(mSnapshot->name());
    entity->setTo(*mSnapshot);
    entity->setId(mSnapshot->id());
    mTargets.restore(document, [&] {
        document->appendEntity(entity, qMin(mEntity.entityIndex(), document->entityCount()));
    });
    mRemoved = false;
    document->emitEntityAnimationStructureChanged();
}

InsertAnimationCommand::InsertAnimationCommand(Entity *entity,
                                               std::unique_ptr<Animation> animation, int index,
                                               QUndoCommand *parent)
    : QUndoCommand(QCoreApplication::translate("Morvane", "new animation"), parent)
    , mEntity(entity ? freshAddress(entity->address()) : Address())
    , mTemplate(std::move(animation))
    , mIndex(index)
{
    if (mTemplate)
        mObjectIndexes = objectRows(*mTemplate, entity);
}

InsertAnimationCommand::~InsertAnimationCommand() = default;

void InsertAnimationCommand::redo()
{
    mInsertedAt = -1;
    Entity *entity = freshAddress(mEntity).entity();
    if (!entity || !mTemplate)
        return;
    auto copy = mTemplate->clone();
    bindObjects(copy.get(), entity, mObjectIndexes);
    const int at = mIndex < 0 || mIndex > entity->animationCount() ? entity->animationCount()
                                                                   : mIndex;
    mTargets.restore(entity->document(), [&] { entity->insertAnimation(at, copy.release()); });
    mInsertedAt = at;
    if (RigxData *document = entity->document())
        document->emitEntityAnimationStructureChanged();
}

void InsertAnimationCommand::undo()
{
    Entity *entity = freshAddress(mEntity).entity();
    Animation *animation = entity && mInsertedAt >= 0 ? entity->animation(mInsertedAt) : nullptr;
    if (!animation || animation->name() != mTemplate->name())
        return;
    // Keys that came to point into the new animation (made after it) are cut here and
    // given back when it returns.
    mTargets.pin(entity->document());
    entity->deleteAnimation(mInsertedAt);
    mTargets.reindex(entity->document(), true);
    mInsertedAt = -1;
    if (RigxData *document = entity->document())
        document->emitEntityAnimationStructureChanged();
}

RemoveAnimationCommand::RemoveAnimationCommand(Animation *animation, QUndoCommand *parent)
    : QUndoCommand(QCoreApplication::translate("Morvane", "animation deleted"), parent)
    , mAnimation(animation ? freshAddress(animation->address()) : Address())
{
    if (animation) {
        mSnapshot = animation->clone();
        mObjectIndexes = objectRows(*animation, animation->parentEntity());
    }
}

RemoveAnimationCommand::~RemoveAnimationCommand() = default;

void RemoveAnimationCommand::redo()
{
    mRemoved = false;
    Animation *animation = freshAddress(mAnimation).animation();
    Entity *entity = animation ? animation->parentEntity() : nullptr;
    if (!entity || !mSnapshot || animation->name() != mSnapshot->name())
        return;
    mTargets.pin(entity->document());
    entity->deleteAnimation(mAnimation.animationIndex());
    mTargets.reindex(entity->document(), true);
    mRemoved = true;
    if (RigxData *document = entity->document())
        document->emitEntityAnimationStructureChanged();
}

void RemoveAnimationCommand::undo()
{
    Entity *entity = mRemoved ? Address(mAnimation.document(), {mAnimation.entityIndex()}).entity()
                              : nullptr;
    if (!entity)
        return;
    auto copy = mSnapshot->clone();
    bindObjects(copy.get(), entity, mObjectIndexes);
    mTargets.restore(entity->document(), [&] {
        entity->insertAnimation(qMin(mAnimation.animationIndex(), entity->animationCount()),
                                copy.release());
    });
    mRemoved = false;
    if (RigxData *document = entity->document())
        document->emitEntityAnimationStructureChanged();
}

ChangeEntityName::ChangeEntityName(Entity *entity, const QString &name, QUndoCommand *parent)
    : ChangeValue(QCoreApplication::translate("Morvane", "entity renamed"),
                  {Change{freshAddress(entity->address()), entity->name(), name}},
                  CommandId::None, parent)
{}

Entity *ChangeEntityName::target(const Address &address) const
{
    return inDocument(freshAddress(address).entity(), address);
}

void ChangeEntityName::setValue(Entity *entity, const QString &name) const
{
    entity->setName(name);
}

void ChangeEntityName::changed(RigxData *document) const
{
    document->emitEntityAnimationStructureChanged();
}

AnimationSettings AnimationSettings::of(const Animation &animation)
{
    AnimationSettings s;
    s.name = animation.name();
    s.length = animation.length();
    s.loopingMode = animation.loopingMode();
    s.loopTo = animation.loopTo();
    s.snappingInterval = animation.snappingInterval();
    return s;
}

ChangeAnimationSettings::ChangeAnimationSettings(Animation *animation,
                                                 const AnimationSettings &settings,
                                                 QUndoCommand *parent)
    : ChangeValue(QCoreApplication::translate("Morvane", "animation changed"),
                  {Change{freshAddress(animation->address()), AnimationSettings::of(*animation),
                          settings}},
                  CommandId::None, parent)
{}

Animation *ChangeAnimationSettings::target(const Address &address) const
{
    return inDocument(freshAddress(address).animation(), address);
}

void ChangeAnimationSettings::setValue(Animation *animation,
                                       const AnimationSettings &settings) const
{
    animation->setName(settings.name);
    animation->setLength(settings.length);
    animation->setLoopingMode(settings.loopingMode);
    animation->setLoopTo(settings.loopTo);
    animation->setSnappingInterval(settings.snappingInterval);
}

void ChangeAnimationSettings::changed(RigxData *document) const
{
    document->emitEntityAnimationStructureChanged();
}

std::unique_ptr<Animation> retimedAnimation(const Animation &animation, double speed, int hold,
                                            QString *error)
{
    const auto fail = [error](const QString &why) {
        if (error)
            *error = why;
        return std::unique_ptr<Animation>();
    };
    if (!(speed > 0.0) || !std::isfinite(speed) || hold < 0)
        return fail(QCoreApplication::translate("Morvane", "The speed must be above 0 and the hold "
                                                           "at least 0."));
    constexpr double MaxTime = 2147483647.0 / 2;
    const auto retime = [speed, hold](int time) {
        const double scaled = std::round(time / speed);
        return scaled > 0 ? scaled + hold : scaled;
    };
    if (retime(animation.length()) > MaxTime)
        return fail(QCoreApplication::translate("Morvane", "The copy would be too long."));
    int previous = -1;
    for (int i = 0; i < animation.mainlineKeyCount(); ++i) {
        const int time = int(retime(animation.mainlineKey(i)->currentTime()));
        if (time <= previous)
            return fail(QCoreApplication::translate(
                "Morvane", "At this speed two keys would fall on the same millisecond."));
        previous = time;
    }
    auto copy = animation.clone();
    // Keys without a mainline key (sounds, events) first: the mainline keys
    // then set the times of their own children.
    for (int t = 0; t < copy->timelineCount(); ++t) {
        const Timeline *timeline = copy->timeline(t);
        for (int k = 0; k < timeline->keyCount(); ++k) {
            TimelineKey *key = timeline->key(k);
            if (!key->mainKey())
                key->setCachedTime(int(retime(key->time())));
        }
    }
    // Setting a time re-sorts the mainline and may pass a key not yet moved, so
    // take the keys first, force every time, and sort once at the end.
    QList<MainlineKey *> keys;
    for (int i = 0; i < copy->mainlineKeyCount(); ++i)
        keys.append(copy->mainlineKey(i));
    for (MainlineKey *key : std::as_const(keys))
        key->setCurrentTime(int(retime(key->currentTime())), true, true);
    copy->sortMainlineKeysByTime();
    copy->setLength(std::max(1, int(retime(animation.length()))));
    copy->setLoopTo(std::min(copy->length(), int(retime(animation.loopTo()))));
    return copy;
}

} // namespace Morvane
