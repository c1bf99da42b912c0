// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDockWidget>

class QTableWidget;

namespace Morvane {

// "Shortcut List": a floating dock listing every action that has a text and a
// shortcut, sorted by text. Filled from the actions themselves so it stays true.
// Its toggle action carries the text "Shortcut List" and Shift+Esc.
class KeyShortcutDockWidget : public QDockWidget
{
    Q_OBJECT

public:
    explicit KeyShortcutDockWidget(QWidget *parent = nullptr);

    // Lists the shortcuts of `actions` (those without text or key are skipped).
    void fill(const QList<QAction *> &actions);
    QTableWidget *table() const { return mTable; }

private:
    QTableWidget *mTable;
};

} // namespace Morvane
