// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "keyshortcutdockwidget.h"

#include <QAction>
#include <QHeaderView>
#include <QTableWidget>

namespace Morvane {

KeyShortcutDockWidget::KeyShortcutDockWidget(QWidget *parent)
    : QDockWidget(tr("Shortcut List"), parent)
    , mTable(new QTableWidget(this))
{
    setObjectName("keyShortcutDock");
    QAction *toggle = toggleViewAction();
    toggle->setText(tr("Shortcut List"));
    toggle->setShortcut(QKeySequence(Qt::SHIFT | Qt::Key_Escape));
    mTable->setColumnCount(2);
    mTable->setHorizontalHeaderLabels({tr("Action"), tr("Shortcut")});
    mTable->verticalHeader()->hide();
    mTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    mTable->horizontalHeader()->setStretchLastSection(true);
    setWidget(mTable);
}

void KeyShortcutDockWidget::fill(const QList<QAction *> &actions)
{
    mTable->setRowCount(0);
    mTable->setSortingEnabled(false);
    int row = 0;
    for (QAction *action : actions) {
        if (action->shortcut().isEmpty() || action->text().isEmpty())
            continue;
        mTable->insertRow(row);
        mTable->setItem(row, 0, new QTableWidgetItem(action->text()));
        mTable->setItem(row, 1, new QTableWidgetItem(
                                    action->shortcut().toString(QKeySequence::NativeText)));
        ++row;
    }
    mTable->sortItems(0);
    mTable->resizeColumnToContents(0);
}

} // namespace Morvane
