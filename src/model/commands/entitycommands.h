// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/commands/changevalue.h"

#include <QList>
#include <QString>
#include <QUndoCommand>

#include <functional>
#include <memory>

namespace Morvane {

class Animation;
class Entity;
class RigxData;

/// Keeps sub-entity keys naming the same animations while entity and animation rows
/// shift under them. A key whose animation is taken away is made to name none until the
/// animation comes back.
class SubEntityTargets
{
public:
    void pin(RigxData *document);
    void reindex(RigxData *document, bool cut);
    void restore(RigxData *document, const std::function<void()> &reinsert);

private:
    struct Cut
    {
        Address key;
        QList<int> rows;
    };
    QList<Cut> mCut;
};

/// Appends a new entity (a unique name, one animation "NewAnimation" with a
/// mainline key at 0) to the document; undo takes it out again when it is
/// still the last one.
class AppendEntityCommand : public QUndoCommand
{
public:
    AppendEntityCommand(RigxData *document, const QString &name, QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

private:
    RigxData *mDocument;
    QString mName;
    int mIndex = -1; // where redo put it
};

/// Takes an entity out of the document; undo puts a copy of what it held back
/// at its row.
class RemoveEntityCommand : public QUndoCommand
{
public:
    explicit RemoveEntityCommand(Entity *entity, QUndoCommand *parent = nullptr);
    ~RemoveEntityCommand() override;

    void redo() override;
    void undo() override;

private:
    Address mEntity;
    std::unique_ptr<Entity> mSnapshot; // owned copy, detached
    SubEntityTargets mTargets;
    bool mRemoved = false;
};

/// Inserts a copy of `animation` (detached, taken over) into an entity at
/// `index` (-1 appends); undo takes it out when the animation at that row
/// still has its name. New, cloned and specially cloned animations all enter
/// this way.
class InsertAnimationCommand : public QUndoCommand
{
public:
    InsertAnimationCommand(Entity *entity, std::unique_ptr<Animation> animation, int index = -1,
                           QUndoCommand *parent = nullptr);
    ~InsertAnimationCommand() override;

    void redo() override;
    void undo() override;

private:
    Address mEntity;
    std::unique_ptr<Animation> mTemplate;
    QList<int> mObjectIndexes; // per timeline, the entity's object it animates
    int mIndex;
    int mInsertedAt = -1;
    SubEntityTargets mTargets;
};

/// Takes an animation out of its entity; undo puts a copy back at its row.
class RemoveAnimationCommand : public QUndoCommand
{
public:
    explicit RemoveAnimationCommand(Animation *animation, QUndoCommand *parent = nullptr);
    ~RemoveAnimationCommand() override;

    void redo() override;
    void undo() override;

private:
    Address mAnimation;
    std::unique_ptr<Animation> mSnapshot;
    QList<int> mObjectIndexes;
    SubEntityTargets mTargets;
    bool mRemoved = false;
};

/// Renames entities. The caller makes the name unique.
class ChangeEntityName : public ChangeValue<Entity, QString>
{
public:
    ChangeEntityName(Entity *entity, const QString &name, QUndoCommand *parent = nullptr);

protected:
    Entity *target(const Address &address) const override;
    void setValue(Entity *entity, const QString &name) const override;
    void changed(RigxData *document) const override;
};

/// The animation values the list edits: name, length and loop-to
/// (milliseconds), looping mode, snapping interval (milliseconds).
struct AnimationSettings
{
    QString name;
    int length = 1000;
    int loopingMode = 1;
    int loopTo = 0;
    int snappingInterval = 100;

    static AnimationSettings of(const Animation &animation);
    bool operator==(const AnimationSettings &) const = default;
};

/// Changes an animation's name, length, looping or snapping interval in one
/// step. The caller makes the name unique.
class ChangeAnimationSettings : public ChangeValue<Animation, AnimationSettings>
{
public:
    ChangeAnimationSettings(Animation *animation, const AnimationSettings &settings,
                            QUndoCommand *parent = nullptr);

protected:
    Animation *target(const Address &address) const override;
    void setValue(Animation *animation, const AnimationSettings &settings) const override;
    void changed(RigxData *document) const override;
};

/// A copy of `animation` that plays `speed` times as fast (every key time and
/// the length divided by it, rounded to milliseconds) and then holds its first
/// pose `hold` milliseconds longer (every key after time 0 moves that much
/// later, the length grows by it). Null, with the reason in `error`, when the
/// speed is not above 0 or the hold is negative, or when two mainline keys
/// would fall on the same millisecond. Value lines keep their times.
std::unique_ptr<Animation> retimedAnimation(const Animation &animation, double speed, int hold,
                                            QString *error = nullptr);

} // namespace Morvane
