// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/vartype.h"

#include <QPointer>
#include <QVariant>
#include <QWidget>

class QPushButton;
class QTableWidget;

namespace Morvane {

class EditorSession;
class OwnerPicker;
class ValInfoCollection;

/// The variables of the current entity or of one of its objects: their
/// declarations (name, type, default) and, at the current time, their value
/// in the current animation. Changing a declaration is one undo step; setting
/// a value keys the variable's line at the current time.
class VariablesPanel : public QWidget
{
    Q_OBJECT

public:
    enum Column { NameColumn, TypeColumn, DefaultColumn, ValueColumn };

    explicit VariablesPanel(EditorSession *session, QWidget *parent = nullptr);

    OwnerPicker *ownerPicker() const { return mOwner; }
    QTableWidget *table() const { return mTable; }
    QPushButton *addButton() const { return mAdd; }
    QPushButton *removeButton() const { return mRemove; }

public Q_SLOTS:
    void refresh();
    /// The "Value now" column at the current time.
    void refreshValues();

private:
    ValInfoCollection *collection() const;
    void cellEdited(int row, int column, const QString &text);
    void addVariable();
    void removeVariable();
    void setType(int varId, VarType type);
    void setValueNow(int varId, const QVariant &value);
    bool rename(int varId, const QString &name);
    bool setDefault(int varId, const QVariant &value);

    QPointer<EditorSession> mSession;
    OwnerPicker *mOwner;
    QTableWidget *mTable;
    QPushButton *mAdd;
    QPushButton *mRemove;
    bool mUpdating = false;
};

} // namespace Morvane
