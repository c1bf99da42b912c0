// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/variables/ownerpicker.h"

#include "canvas/editorsession.h"
#include "canvas/objectgraphicsproxy.h"
#include "meta/metaowner.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/timeline.h"

#include <QScopedValueRollback>

namespace Morvane {

OwnerPicker::OwnerPicker(EditorSession *session, QWidget *parent)
    : QComboBox(parent)
    , mSession(session)
{
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    connect(this, &QComboBox::currentIndexChanged, this, [this] {
        if (!mFilling)
            Q_EMIT ownerChanged();
    });
    if (session) {
        connect(session, &EditorSession::documentChanged, this, &OwnerPicker::followSelection);
        connect(session, &EditorSession::animationChanged, this, &OwnerPicker::followSelection);
        connect(session, &EditorSession::selectionChanged, this, &OwnerPicker::followSelection);
        connect(session, &EditorSession::documentEdited, this, &OwnerPicker::refill);
    }
    followSelection();
}

Entity *OwnerPicker::entity() const
{
    return mSession ? mSession->currentEntity() : nullptr;
}

int OwnerPicker::objectIndex() const
{
    return currentIndex() < 0 ? -1 : currentData().toInt();
}

void OwnerPicker::setObjectIndex(int index)
{
    const int row = findData(index);
    setCurrentIndex(row >= 0 ? row : 0);
}

Object *OwnerPicker::object() const
{
    Entity *e = entity();
    return e && objectIndex() >= 0 ? e->object(objectIndex()) : nullptr;
}

MetaOwner OwnerPicker::linesOwner() const
{
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    return objectIndex() < 0 ? MetaOwner::forAnimation(animation)
                             : MetaOwner::forAnimationObject(animation, objectIndex());
}

void OwnerPicker::refill()
{
    const int kept = objectIndex();
    {
        const QScopedValueRollback<bool> guard(mFilling, true);
        clear();
        if (Entity *e = entity()) {
            addItem(tr("%1 (entity)").arg(e->name()), -1);
            for (int i = 0; i < e->objectCount(); ++i)
                addItem(e->object(i)->name(), i);
        }
        const int row = findData(kept);
        setCurrentIndex(row >= 0 ? row : 0);
    }
    if (objectIndex() != kept)
        Q_EMIT ownerChanged();
}

void OwnerPicker::followSelection()
{
    int index = -1;
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    const QList<ObjectGraphicsProxy *> selection = mSession ? mSession->selection()
                                                            : QList<ObjectGraphicsProxy *>();
    if (animation && !selection.isEmpty()) {
        const Timeline *timeline = animation->timeline(selection.last()->timelineIndex());
        const Object *object = timeline ? timeline->object() : nullptr;
        Entity *e = entity();
        index = object && e ? e->indexOfObject(object) : -1;
    }
    {
        const QScopedValueRollback<bool> guard(mFilling, true);
        refill();
        const int row = findData(index);
        setCurrentIndex(row >= 0 ? row : 0);
    }
    Q_EMIT ownerChanged();
}

} // namespace Morvane
