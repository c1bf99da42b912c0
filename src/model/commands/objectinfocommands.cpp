// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/commands/objectinfocommands.h"

#include "model/animation.h"
#include "model/commands/timelinekeycommands.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"

#include <QObject>

namespace Morvane {

namespace {

template <typename Value, typename Read>
std::vector<typename ChangeValue<Object, Value>::Change>
objectChanges(const QList<Object *> &objects, const Value &after, Read read)
{
    std::vector<typename ChangeValue<Object, Value>::Change> changes;
    for (Object *object : objects) {
        if (object && object->parentEntity())
            changes.push_back({freshAddress(object->address()), read(object), after});
    }
    return changes;
}

Object *objectAt(const Address &address)
{
    return inDocument(freshAddress(address).object(), address);
}

} // namespace

InheritFlags InheritFlags::of(const Object *object)
{
    if (!object)
        return {};
    return {object->inhPos(), object->inhAngle(), object->inhScale()};
}

ObjectInheritChangeCommand::ObjectInheritChangeCommand(const QList<Object *> &objects,
                                                       const InheritFlags &after,
                                                       QUndoCommand *parent)
    : ChangeValue(QObject::tr("inheritance changed"),
                  objectChanges(objects, after,
                                [](const Object *o) { return InheritFlags::of(o); }),
                  CommandId::None, parent)
{}

Object *ObjectInheritChangeCommand::target(const Address &address) const
{
    return objectAt(address);
}

void ObjectInheritChangeCommand::setValue(Object *object, const InheritFlags &flags) const
{
    object->setInheritPos(flags.position);
    object->setInheritAngle(flags.angle);
    object->setInheritScale(flags.scale);
}

ObjectNameChangeCommand::ObjectNameChangeCommand(Object *object, const QString &name,
                                                 QUndoCommand *parent)
    : ChangeValue(QObject::tr("object renamed"),
                  objectChanges(QList<Object *>{object}, name,
                                [](const Object *o) { return o->name(); }),
                  CommandId::None, parent)
{}

Object *ObjectNameChangeCommand::target(const Address &address) const
{
    return objectAt(address);
}

void ObjectNameChangeCommand::setValue(Object *object, const QString &name) const
{
    object->setName(name);
    Entity *entity = object->parentEntity();
    for (int a = 0; entity && a < entity->animationCount(); ++a) {
        Animation *animation = entity->animation(a);
        for (int t = 0; t < animation->timelineCount(); ++t) {
            if (Timeline *timeline = animation->timeline(t); timeline->object() == object)
                timeline->setName(name);
        }
    }
}

void ObjectNameChangeCommand::changed(RigxData *document) const
{
    document->emitObjectNamesChanged();
}

} // namespace Morvane
