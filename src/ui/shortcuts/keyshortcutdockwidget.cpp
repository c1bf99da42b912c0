// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "keyshortcutdockwidget.h"

#include "shortcutclashes.h"

#include <QAbstractButton>
#include <QAction>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTableWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace Morvane {

namespace {

// Where an action's key works: the whole window, or the piece that holds it (the canvas
// editor's keys work while it has the focus).
QString whereText(const QAction *action)
{
    if (action->shortcutContext() != Qt::WidgetShortcut
        && action->shortcutContext() != Qt::WidgetWithChildrenShortcut)
        return KeyShortcutDockWidget::tr("Window");
    // The piece itself, not a tool bar, its buttons or a menu that also show the action.
    for (QObject *object : action->associatedObjects()) {
        auto *widget = qobject_cast<QWidget *>(object);
        if (!widget || qobject_cast<QToolBar *>(widget) || qobject_cast<QMenu *>(widget)
            || qobject_cast<QAbstractButton *>(widget))
            continue;
        if (!widget->accessibleName().isEmpty())
            return widget->accessibleName();
        QString name = QString::fromLatin1(widget->metaObject()->className());
        name = name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
        if (name.endsWith(QLatin1String("Editor")) && name.size() > 6)
            name.chop(6);
        return name;
    }
    return QString();
}

} // namespace

KeyShortcutDockWidget::KeyShortcutDockWidget(QWidget *parent)
    : QDockWidget(tr("Shortcut List"), parent)
    , mSearch(new QLineEdit)
    , mKey(new QKeySequenceEdit)
    , mTable(new QTableWidget)
{
    setObjectName("keyShortcutDock");
    QAction *toggle = toggleViewAction();
    toggle->setText(tr("Shortcut List"));
    toggle->setShortcut(QKeySequence(Qt::SHIFT | Qt::Key_Escape));

    mSearch->setPlaceholderText(tr("Search actions or keys"));
    mSearch->setClearButtonEnabled(true);
    mKey->setToolTip(tr("Press a key here to see what it does"));
    auto *clearKey = new QToolButton;
    clearKey->setText(tr("Clear"));
    connect(clearKey, &QToolButton::clicked, mKey, &QKeySequenceEdit::clear);
    connect(mSearch, &QLineEdit::textChanged, this, &KeyShortcutDockWidget::applyFilter);
    connect(mKey, &QKeySequenceEdit::keySequenceChanged, this,
            &KeyShortcutDockWidget::applyFilter);

    mTable->setColumnCount(3);
    mTable->setHorizontalHeaderLabels({tr("Action"), tr("Shortcut"), tr("Where")});
    mTable->verticalHeader()->hide();
    mTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    mTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    mTable->setAlternatingRowColors(true);
    mTable->horizontalHeader()->setStretchLastSection(true);
    mTable->verticalHeader()->setDefaultSectionSize(mTable->fontMetrics().height() + 6);

    auto *keyRow = new QHBoxLayout;
    keyRow->addWidget(new QLabel(tr("Key:")));
    keyRow->addWidget(mKey, 1);
    keyRow->addWidget(clearKey);
    auto *panel = new QWidget;
    auto *layout = new QVBoxLayout(panel);
    layout->addWidget(mSearch);
    layout->addLayout(keyRow);
    layout->addWidget(mTable);
    setWidget(panel);

    // Enabled states change with the open project: the marks are made again when shown.
    connect(this, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        if (!visible)
            return;
        // A floating list first shows at its contents' small hint; give it room to read.
        if (isFloating() && (width() < 400 || height() < 400))
            resize(qMax(width(), 460), qMax(height(), 560));
        QList<QAction *> actions;
        for (const QPointer<QAction> &action : std::as_const(mActions)) {
            if (action)
                actions << action;
        }
        fill(actions, mWindow);
    });
}

void KeyShortcutDockWidget::fill(const QList<QAction *> &actions, QWidget *window)
{
    mActions.clear();
    for (QAction *action : actions)
        mActions << action;
    mWindow = window;
    QList<QAction *> clashing;
    if (window) {
        for (const ShortcutClashes::Clash &clash : ShortcutClashes::find(window, actions))
            clashing += clash.actions;
    }
    mTable->setRowCount(0);
    mTable->setSortingEnabled(false);
    int row = 0;
    for (QAction *action : actions) {
        if (action->shortcut().isEmpty() || action->text().isEmpty())
            continue;
        mTable->insertRow(row);
        auto *text = new QTableWidgetItem(action->text().remove(QLatin1Char('&')));
        // Every key of the action ("Ctrl+X; Shift+Del"), so a second key is not hidden.
        auto *key = new QTableWidgetItem(
            QKeySequence::listToString(action->shortcuts(), QKeySequence::NativeText));
        // Keys the search matches in either spelling: as shown, and portable.
        QStringList portable;
        for (const QKeySequence &sequence : action->shortcuts())
            portable << sequence.toString(QKeySequence::PortableText);
        key->setData(Qt::UserRole, portable);
        auto *where = new QTableWidgetItem(whereText(action));
        if (clashing.contains(action)) {
            for (QTableWidgetItem *item : {text, key, where}) {
                item->setForeground(Qt::red);
                item->setToolTip(tr("Another action has this key too: neither works by key."));
            }
        }
        mTable->setItem(row, ActionColumn, text);
        mTable->setItem(row, ShortcutColumn, key);
        mTable->setItem(row, WhereColumn, where);
        ++row;
    }
    mTable->sortItems(ActionColumn);
    mTable->resizeColumnToContents(ActionColumn);
    mTable->resizeColumnToContents(ShortcutColumn);
    applyFilter();
}

void KeyShortcutDockWidget::applyFilter()
{
    const QString search = mSearch->text().trimmed();
    const QKeySequence key = mKey->keySequence();
    for (int row = 0; row < mTable->rowCount(); ++row) {
        const QTableWidgetItem *text = mTable->item(row, ActionColumn);
        const QTableWidgetItem *shortcut = mTable->item(row, ShortcutColumn);
        const QStringList keys = shortcut->data(Qt::UserRole).toStringList();
        bool shown = search.isEmpty() || text->text().contains(search, Qt::CaseInsensitive)
                     || shortcut->text().contains(search, Qt::CaseInsensitive)
                     || !keys.filter(search, Qt::CaseInsensitive).isEmpty();
        if (!key.isEmpty()) {
            bool found = false;
            for (const QString &portable : keys)
                found = found || QKeySequence(portable, QKeySequence::PortableText) == key;
            shown = shown && found;
        }
        mTable->setRowHidden(row, !shown);
    }
}

int KeyShortcutDockWidget::shownRowCount() const
{
    int shown = 0;
    for (int row = 0; row < mTable->rowCount(); ++row)
        shown += mTable->isRowHidden(row) ? 0 : 1;
    return shown;
}

} // namespace Morvane
