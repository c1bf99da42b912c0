// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/charactermap.h"
#include "meta/valinfocollection.h"
#include "model/address.h"
#include "model/morvanemodelitem.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace Morvane {

class Animation;
class File;
class Object;
class RigxData;

/// One animated character or prop: its object infos and animations (and its
/// character maps and variable definitions).
class Entity : public MorvaneModelItem
{
public:
    /// Process-wide id counter, never reset during a run.
    static int currentEntityId;

    /// With `withAnimation`, the entity gets an animation "NewAnimation" with
    /// a mainline key at 0.
    explicit Entity(const QString &name = QStringLiteral("entity_000"), bool withAnimation = false);
    ~Entity() override;

    int id() const { return mId; }
    void setId(int id) { mId = id; }
    QString name() const { return mName; }
    void setName(const QString &name) { mName = name; }

    // Object infos; the object's index is its id.
    Object *object(int index) const;
    int objectCount() const { return int(mObjects.size()); }
    Object *objectFromId(int id) const { return object(id); }
    Object *objectFromName(const QString &name) const;
    int indexOfObject(const Object *object) const;
    /// Takes ownership; `index` -1 appends; with `makeUnique` the name is made
    /// unique among the entity's object names first.
    void appendObject(Object *object, int index = -1, bool makeUnique = true);
    /// Deletes the named object and its timelines in every animation.
    bool deleteObject(const QString &name);
    /// Takes the object out without destroying it; the caller owns it. Its value lines in
    /// every animation are dropped and those of the objects after it move down one index.
    bool removeObject(Object *object);
    void clearObjects();
    /// Whether any timeline of any animation animates the object at `index`.
    bool objectInUse(int index) const;
    /// Names of the objects of `type` (every type for -1), in order.
    QStringList objectNames(int type = -1) const;
    QString uniqueObjectName(const QString &name) const;
    /// Gives objects named "__..." (placeholders of nameless objects read from
    /// old files) unique names made from their type.
    void renameDoubleUnderscoredObjects();

    // Animations; the animation's index is its id.
    Animation *animation(int index) const;
    Animation *animation(const QString &name) const;
    Animation *animationFromId(int id) const { return animation(id); }
    int animationCount() const { return int(mAnimations.size()); }
    int indexOfAnimation(const Animation *animation) const;
    void appendAnimation(Animation *animation);
    void insertAnimation(int index, Animation *animation);
    void deleteAnimation(int index);
    /// Takes the animation out without destroying it; the caller owns it.
    Animation *removeAnimation(int index);
    QStringList animationNames(const Animation *except = nullptr) const;
    QStringList animationNameList() const { return animationNames(); }
    QString uniqueAnimationName(const QString &name) const;

    /// The entity's variable declarations ("var_defs").
    ValInfoCollection &valInfoCollection() { return mValInfos; }
    const ValInfoCollection &valInfoCollection() const { return mValInfos; }

    // Character maps. The maps are kept in
    // order; the active list holds map ids in the order they are applied, so a
    // later map wins for the same source file. The redirects they set live on
    // the project's files and are shared by all entities.
    int charMapCount() const { return int(mCharMaps.size()); }
    /// Null when out of range.
    const CharacterMap *charMap(int index) const;
    const QList<CharacterMap> &charMaps() const { return mCharMaps; }
    /// Null when no map has that name / id.
    CharacterMap *charMapFromName(const QString &name);
    const CharacterMap *charMapFromName(const QString &name) const;
    CharacterMap *charMapFromId(int id);
    const CharacterMap *charMapFromId(int id) const;
    QStringList charMapNames() const;
    QString uniqueCharMapName(const QString &name) const;
    /// Whether a character map of this entity names `file` (as source or target).
    bool charMapsContainFile(const File *file) const;
    /// Inserts a copy of `map` at `index` (-1 appends), then re-applies.
    void appendCharMap(const CharacterMap &map, int index = -1);
    /// Gives the map named `name` the name and instructions of `map`, keeping
    /// its id (and so its place in the active list), then re-applies. False
    /// when no map has that name.
    bool editCharMap(const QString &name, const CharacterMap &map);
    /// Deletes the map named `name`, drops it from the active list and
    /// re-applies. False when no map has that name.
    bool deleteCharMap(const QString &name);
    /// Appends the named map's id to the active list (unless it is there
    /// already) or removes it, and re-applies when the list changed. Unknown
    /// names change nothing.
    void makeCharMapActive(const QString &name, bool active);
    bool isCharMapActive(const QString &name) const;
    /// The active map ids, in the order they are applied.
    const QList<int> &activeMap() const { return mActiveCharMaps; }
    /// Replaces the active list (unknown ids are dropped) and re-applies.
    void setActiveCharMaps(const QList<int> &ids);
    /// Drops ids that name no map any more and tells the document.
    void refreshActiveCharMaps();
    /// Resets every file of the document to show itself, then applies the
    /// active maps in order, and tells the document.
    void applyMaps();
    /// Points the redirect of each source file of `map` at its target.
    void applyCharMap(const CharacterMap &map);
    /// Makes every file of the document show itself.
    void clearActiveCharMaps();

    /// Refreshes the cached world state of the references in force at `time`
    /// in every animation.
    void updateRefCurrentInfo(int time, bool curved = true);

    /// Replaces this entity's content (objects and animations) with a copy of
    /// `other`'s; with `copyName`, the name too.
    void setTo(const Entity &other, bool copyName = true);

    RigxData *parentRigx() const { return document(); }
    /// (entity index) with a direct pointer.
    Address address() const;

    int indexOfChild(const MorvaneModelItem *child) const override;
    bool removeChildItem(MorvaneModelItem *child) override;
    void clearAllLinksAndChildren() override;

private:
    int mId = -1;
    QString mName;
    std::vector<std::unique_ptr<Object>> mObjects;
    std::vector<std::unique_ptr<Animation>> mAnimations;
    QList<CharacterMap> mCharMaps;
    QList<int> mActiveCharMaps;
    ValInfoCollection mValInfos;
};

} // namespace Morvane
