// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/entity.h"

#include "model/animation.h"
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
    if (index < 0 || index > int(mObjects.size()))
        mObjects.emplace_back(object);
    else
        mObjects.emplace(mObjects.begin() + index, object);
}

bool Entity::deleteObject(const QString &name)
{
    Object *o = objectFromName(name);
    if (!o)
        return false;
    const int objectIndex = indexOfObject(o);
    for (const auto &anim : mAnimations) {
        for (int i = anim->timelineCount(); i-- > 0;) {
            if (anim->timeline(i)->object() == o)
                anim->deleteTimeline(i);
        }
        anim->removeObjectLineHolder(objectIndex);
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

} // namespace Morvane
