// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QComboBox>
#include <QPointer>

namespace Morvane {

class EditorSession;
class Entity;
class Object;
class RigxData;
struct MetaOwner;

/// Chooses whose variables or tags a panel shows: the current entity or one of
/// its objects. It follows the canvas selection (the last selected object, or
/// the entity when nothing is selected) and can be set by hand.
class OwnerPicker : public QComboBox
{
    Q_OBJECT

public:
    explicit OwnerPicker(EditorSession *session, QWidget *parent = nullptr);

    /// -1 for the entity, else the object's index in the entity.
    int objectIndex() const;
    void setObjectIndex(int index);
    Entity *entity() const;
    /// Null for the entity.
    Object *object() const;
    /// The owner's value lines in the current animation.
    MetaOwner linesOwner() const;

public Q_SLOTS:
    /// Lists the entity and its objects again, keeping the choice.
    void refill();
    void followSelection();

Q_SIGNALS:
    void ownerChanged();

private:
    QPointer<EditorSession> mSession;
    bool mFilling = false;
};

} // namespace Morvane
