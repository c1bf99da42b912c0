// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QPointer>
#include <QWidget>

class QListWidget;
class QPushButton;

namespace Morvane {

class EditorSession;
class OwnerPicker;

/// The project's tags, ticked where they are on for the current entity or
/// object at the current time. Ticking or clearing one keys the owner's tag
/// line there. Adding, renaming (edit the name in the list) and deleting tags
/// change the project's list; deleting also takes the tag out of every key
/// that lists it, in the same undo step.
class TagsPanel : public QWidget
{
    Q_OBJECT

public:
    explicit TagsPanel(EditorSession *session, QWidget *parent = nullptr);

    OwnerPicker *ownerPicker() const { return mOwner; }
    QListWidget *list() const { return mList; }
    QPushButton *button(const QString &objectName) const;

public Q_SLOTS:
    void refresh();
    /// Ticks the tags that are on at the current time.
    void refreshChecks();

private:
    void addTag();
    void deleteTag();
    void renameTag(int uid, const QString &name);
    void switchTag(int uid, bool on);

    QPointer<EditorSession> mSession;
    OwnerPicker *mOwner;
    QListWidget *mList;
    bool mUpdating = false;
};

} // namespace Morvane
