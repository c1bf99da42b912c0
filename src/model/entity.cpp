// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/entity.h"

#include "model/animation.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/naming.h"
#include "model/object.h"
#include "model/ownedlist.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

#include <QHash>

namespace Morvane {

int Entity::currentEntityId = 0;

Entity::Entity(const QString &name, bool withAnimation)
    : MorvaneModelItem(MorvaneItemType::Entity)
    , mId(currentEntityId++)
    , mName(name)
{
    if (withAnimation)
        appendAnimation(new Animation(QStringLiteral("NewAnimation"), true));
}

Entity::~Entity()
{
    clearAllLinksAndChildren();
}

Object *Entity::object(int index) const
{
    return ownedAt(mObjects, index);
}

Object *Entity::objectFromName(const QString &name) const
{
    for (const auto &o : mObjects) {
        if (o->name() == name)
            return o.get();
    }
    return nullptr;
}

int Entity::indexOfObject(const Object *object) const
{
    return indexOfOwned(mObjects, object);
}

void Entity::appendObject(Object *object, int index, bool makeUnique)
{
    if (!object)
        return;
    if (makeUnique)
        object->setName(uniqueObjectName(object->name()));
    object->setParentItem(this);
    if (index < 0 || index >= int(mObjects.size())) {
        mObjects.emplace_back(object);
        return;
    }
    mObjects.emplace(mObjects.begin() + index, object);
    // Value lines are kept by object index: those of the objects behind move up.
    for (const auto &anim : mAnimations)
        anim->insertObjectLineHolder(index);
}

bool Entity::deleteObject(const QString &name)
{
    Object *o = objectFromName(name);
    if (!o)
        return false;
    for (const auto &anim : mAnimations) {
        for (int i = anim->timelineCount(); i-- > 0;) {
            if (anim->timeline(i)->object() == o)
                anim->deleteTimeline(i);
        }
    }
    removeObject(o);
    delete o;
    return true;
}

bool Entity::removeObject(Object *object)
{
    const int i = indexOfObject(object);
    if (i < 0)
        return false;
    mObjects[size_t(i)].release();
    mObjects.erase(mObjects.begin() + i);
    object->setParentItem(nullptr);
    // Value lines are kept by object index: the object's own go, later ones move down.
    for (const auto &anim : mAnimations)
        anim->removeObjectLineHolder(i);
    return true;
}

void Entity::clearObjects()
{
    mObjects.clear();
}

bool Entity::objectInUse(int index) const
{
    const Object *o = object(index);
    if (!o)
        return false;
    for (const auto &anim : mAnimations) {
        for (int i = 0; i < anim->timelineCount(); ++i) {
            if (anim->timeline(i)->object() == o)
                return true;
        }
    }
    return false;
}

QStringList Entity::objectNames(int type) const
{
    QStringList names;
    names.reserve(int(mObjects.size()));
    for (const auto &o : mObjects) {
        if (type == -1 || o->objectType() == type)
            names.append(o->name());
    }
    return names;
}

QString Entity::uniqueObjectName(const QString &name) const
{
    return uniqueName(name, objectNames());
}

void Entity::renameDoubleUnderscoredObjects()
{
    for (const auto &o : mObjects) {
        if (!o->name().startsWith(QLatin1String("__")))
            continue;
        QString base = o->objectTypeString();
        if (base.isEmpty())
            base = QStringLiteral("object");
        o->setName(QString()); // its own placeholder name must not block the new one
        o->setName(uniqueObjectName(base));
    }
}

Animation *Entity::animation(int index) const
{
    return ownedAt(mAnimations, index);
}

Animation *Entity::animation(const QString &name) const
{
    for (const auto &a : mAnimations) {
        if (a->name() == name)
            return a.get();
    }
    return nullptr;
}

int Entity::indexOfAnimation(const Animation *animation) const
{
    return indexOfOwned(mAnimations, animation);
}

void Entity::appendAnimation(Animation *animation)
{
    insertAnimation(-1, animation);
}

void Entity::insertAnimation(int index, Animation *animation)
{
    if (!animation)
        return;
    animation->setParentItem(this);
    if (index < 0 || index > int(mAnimations.size()))
        mAnimations.emplace_back(animation);
    else
        mAnimations.emplace(mAnimations.begin() + index, animation);
}

void Entity::deleteAnimation(int index)
{
    delete removeAnimation(index);
}

Animation *Entity::removeAnimation(int index)
{
    if (index < 0 || index >= int(mAnimations.size()))
        return nullptr;
    Animation *a = mAnimations[size_t(index)].release();
    mAnimations.erase(mAnimations.begin() + index);
    a->setParentItem(nullptr);
    return a;
}

QStringList Entity::animationNames(const Animation *except) const
{
    QStringList names;
    for (const auto &a : mAnimations) {
        if (a.get() != except)
            names.append(a->name());
    }
    return names;
}

QString Entity::uniqueAnimationName(const QString &name) const
{
    return uniqueName(name, animationNames());
}

void Entity::setTo(const Entity &other, bool copyName)
{
    if (&other == this)
        return;
    clearAllLinksAndChildren();
    if (copyName)
        mName = other.mName;
    mCharMaps = other.mCharMaps;
    mActiveCharMaps = other.mActiveCharMaps;
    mValInfos = other.mValInfos;
    QHash<const Object *, Object *> objectCopies;
    for (const auto &o : other.mObjects) {
        auto *copy = new Object(*o);
        objectCopies.insert(o.get(), copy);
        appendObject(copy, -1, false);
    }
    for (const auto &a : other.mAnimations) {
        auto *copy = new Animation(*a);
        for (int i = 0; i < copy->timelineCount(); ++i) {
            Timeline *tl = copy->timeline(i);
            tl->setObject(objectCopies.value(a->timeline(i)->object(), nullptr));
        }
        appendAnimation(copy);
    }
}

Address Entity::address() const
{
    const RigxData *doc = document();
    Address a(const_cast<RigxData *>(doc));
    a.set(0, doc ? doc->indexOfEntity(this) : -1);
    a.setDirectPointer(const_cast<Entity *>(this));
    return a;
}

int Entity::indexOfChild(const MorvaneModelItem *child) const
{
    if (!child)
        return -1;
    if (child->morvaneItemType() == MorvaneItemType::Object)
        return indexOfObject(static_cast<const Object *>(child));
    if (child->morvaneItemType() == MorvaneItemType::Animation)
        return indexOfAnimation(static_cast<const Animation *>(child));
    return -1;
}

bool Entity::removeChildItem(MorvaneModelItem *child)
{
    if (!child)
        return false;
    if (child->morvaneItemType() == MorvaneItemType::Object)
        return removeObject(static_cast<Object *>(child));
    if (child->morvaneItemType() == MorvaneItemType::Animation) {
        Animation *a = removeAnimation(indexOfAnimation(static_cast<Animation *>(child)));
        return a != nullptr;
    }
    return false;
}

void Entity::clearAllLinksAndChildren()
{
    MorvaneModelItem::clearAllLinksAndChildren();
    // Animations first: their timelines point at the objects.
    mAnimations.clear();
    mObjects.clear();
}

void Entity::updateRefCurrentInfo(int time, bool curved)
{
    for (const auto &animation : mAnimations)
        animation->updateRefCurrentInfo(time, curved);
}

const CharacterMap *Entity::charMap(int index) const
{
    if (index < 0 || index >= charMapCount())
        return nullptr;
    return &mCharMaps.at(index);
}

CharacterMap *Entity::charMapFromName(const QString &name)
{
    for (CharacterMap &map : mCharMaps) {
        if (map.name() == name)
            return &map;
    }
    return nullptr;
}

const CharacterMap *Entity::charMapFromName(const QString &name) const
{
    return const_cast<Entity *>(this)->charMapFromName(name);
}

CharacterMap *Entity::charMapFromId(int id)
{
    for (CharacterMap &map : mCharMaps) {
        if (map.id() == id)
            return &map;
    }
    return nullptr;
}

const CharacterMap *Entity::charMapFromId(int id) const
{
    return const_cast<Entity *>(this)->charMapFromId(id);
}

QStringList Entity::charMapNames() const
{
    QStringList names;
    names.reserve(mCharMaps.size());
    for (const CharacterMap &map : mCharMaps)
        names.append(map.name());
    return names;
}

QString Entity::uniqueCharMapName(const QString &name) const
{
    return uniqueName(name, charMapNames());
}

bool Entity::charMapsContainFile(const File *file) const
{
    if (!file)
        return false;
    const Address address = file->address();
    for (const CharacterMap &map : mCharMaps) {
        if (map.containsFile(address))
            return true;
    }
    return false;
}

void Entity::appendCharMap(const CharacterMap &map, int index)
{
    if (index < 0 || index > charMapCount())
        mCharMaps.append(map);
    else
        mCharMaps.insert(index, map);
    applyMaps();
}

bool Entity::editCharMap(const QString &name, const CharacterMap &map)
{
    CharacterMap *existing = charMapFromName(name);
    if (!existing)
        return false;
    // The id stays, so the map keeps its place in the active list.
    const int id = existing->id();
    *existing = map;
    existing->setId(id);
    applyMaps();
    return true;
}

bool Entity::deleteCharMap(const QString &name)
{
    for (int i = 0; i < charMapCount(); ++i) {
        if (mCharMaps.at(i).name() == name) {
            mCharMaps.removeAt(i);
            refreshActiveCharMaps();
            applyMaps();
            return true;
        }
    }
    return false;
}

void Entity::makeCharMapActive(const QString &name, bool active)
{
    const CharacterMap *map = charMapFromName(name);
    if (!map)
        return;
    const int position = mActiveCharMaps.indexOf(map->id());
    if (active == (position >= 0))
        return;
    if (active)
        mActiveCharMaps.append(map->id());
    else
        mActiveCharMaps.removeAt(position);
    applyMaps();
}

bool Entity::isCharMapActive(const QString &name) const
{
    const CharacterMap *map = charMapFromName(name);
    return map && mActiveCharMaps.contains(map->id());
}

void Entity::setActiveCharMaps(const QList<int> &ids)
{
    mActiveCharMaps = ids;
    refreshActiveCharMaps();
    applyMaps();
}

void Entity::refreshActiveCharMaps()
{
    for (int i = int(mActiveCharMaps.size()); i-- > 0;) {
        if (!charMapFromId(mActiveCharMaps.at(i)))
            mActiveCharMaps.removeAt(i);
    }
    if (RigxData *doc = document())
        doc->emitRefreshedCharMaps();
}

void Entity::clearActiveCharMaps()
{
    RigxData *doc = document();
    if (!doc)
        return;
    for (int i = 0; i < doc->folderCount(); ++i) {
        const Folder *folder = doc->folder(i);
        for (int j = 0; j < folder->fileCount(); ++j)
            folder->file(j)->clearRedirect();
    }
}

void Entity::applyCharMap(const CharacterMap &map)
{
    RigxData *doc = document();
    if (!doc)
        return;
    for (const MapInstruction &instruction : map.instructions()) {
        Address source = instruction.source;
        if (!source.document())
            source.setDocument(doc);
        File *file = source.file(false);
        if (!file)
            continue;
        Address target = instruction.target;
        if (!target.document())
            target.setDocument(doc);
        // An empty redirect means "shows itself": a hidden image needs an
        // address that names no file.
        if (target.isEmpty())
            target = Address(doc, {-1, -1});
        file->redirect() = target;
    }
}

void Entity::applyMaps()
{
    clearActiveCharMaps();
    for (int id : std::as_const(mActiveCharMaps)) {
        if (const CharacterMap *map = charMapFromId(id))
            applyCharMap(*map);
    }
    if (RigxData *doc = document())
        doc->emitRefreshedCharMaps();
}

} // namespace Morvane
