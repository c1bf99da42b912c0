// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDockWidget>
#include <QPointer>

class QKeySequenceEdit;
class QLineEdit;
class QTableWidget;

namespace Morvane {

/// "Shortcut List": a dock listing every action that has a text and a key, sorted by text,
/// with where the key works ("Window", or the editor piece it belongs to). A search field
/// narrows the list by action text or key text, a key field by the key pressed in it.
/// Keys that two live actions share are marked. Filled from the actions themselves, so it
/// stays true; its toggle action carries the text "Shortcut List" and Shift+Esc.
class KeyShortcutDockWidget : public QDockWidget
{
    Q_OBJECT

public:
    enum Column { ActionColumn, ShortcutColumn, WhereColumn };

    explicit KeyShortcutDockWidget(QWidget *parent = nullptr);

    /// Lists the shortcuts of `actions` (those without text or key are skipped) and marks
    /// the keys that clash inside `window` (none marked without one).
    void fill(const QList<QAction *> &actions, QWidget *window = nullptr);

    QTableWidget *table() const { return mTable; }
    QLineEdit *searchField() const { return mSearch; }
    QKeySequenceEdit *keyField() const { return mKey; }
    /// The rows the search leaves shown.
    int shownRowCount() const;

private:
    void applyFilter();

    QLineEdit *mSearch;
    QKeySequenceEdit *mKey;
    QTableWidget *mTable;
    QList<QPointer<QAction>> mActions;
    QPointer<QWidget> mWindow;
};

} // namespace Morvane
