// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QList>
#include <QString>

#include <utility>

namespace Morvane::Testing {

/// A document built in code: one entity whose first animation has a timeline per object,
/// each keyed at `times` (x = time + the object's index, angle = time / 10), and a mainline
/// key at every one of those times.
struct KeyedDocument
{
    using Objects = QList<std::pair<QString, int>>;

    explicit KeyedDocument(const Objects &objects = {{"arm", Object::Sprite},
                                                     {"leg", Object::Sprite}},
                           const QList<int> &times = {0, 500})
    {
        entity = doc.appendEmptyEntity();
        anim = entity->animation(0);
        for (int o = 0; o < objects.size(); ++o) {
            auto *object = new Object(objects.at(o).first, objects.at(o).second);
            entity->appendObject(object);
            Timeline *timeline = anim->appendObjectAsTimeline(object);
            for (int t : times) {
                auto *key = new TimelineKey;
                key->setCachedTime(t);
                key->info().x = t + o;
                key->info().angle = t / 10.0;
                timeline->appendTimelineKey(key);
            }
        }
        anim->appendMainKeysForOrphanTimeKeys();
    }

    RigxData doc;
    Entity *entity = nullptr;
    Animation *anim = nullptr;
};

} // namespace Morvane::Testing
