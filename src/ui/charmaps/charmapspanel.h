// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"

#include <QPointer>
#include <QWidget>

class QComboBox;
class QMimeData;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace Morvane {

class CharacterMap;
class EditorSession;
class Entity;

/// The current entity's character maps: create, rename (edit the name in the
/// list) and delete maps; per map, the images it swaps and what shows in
/// their place (another image or nothing); an image dragged from the palette
/// onto a swap is shown instead, and below the swaps it adds one. Ticking maps
/// makes them active in the order they were ticked, later ones winning for the
/// same image, and the canvas shows the result at once. Map edits are undo steps; which maps are
/// active is a view of the entity, as hiding objects is, and is not.
class CharMapsPanel : public QWidget
{
    Q_OBJECT

public:
    explicit CharMapsPanel(EditorSession *session, QWidget *parent = nullptr);

    QTreeWidget *mapList() const { return mMaps; }
    QTreeWidget *instructionList() const { return mInstructions; }
    QComboBox *sourceBox() const { return mSource; }
    QComboBox *targetBox() const { return mTarget; }
    QPushButton *button(const QString &objectName) const;
    /// The map shown below the list, empty when none.
    QString currentMapName() const;

public Q_SLOTS:
    void refresh();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Address droppedImage(const QMimeData *data) const;
    Entity *entity() const;
    const CharacterMap *currentMap() const;
    void fillFileBox(QComboBox *box, bool withHidden);
    void showInstructions();
    void addMap();
    void renameMap(const QString &name, const QString &text);
    void deleteMap();
    void setActive(const QString &name, bool active);
    void addInstruction();
    void removeInstruction();
    void retarget(int row, const Address &target);
    void push(const CharacterMap &after);

    QPointer<EditorSession> mSession;
    QTreeWidget *mMaps;
    QTreeWidget *mInstructions;
    QComboBox *mSource;
    QComboBox *mTarget;
    QString mCurrentName;
    bool mUpdating = false;
};

} // namespace Morvane
