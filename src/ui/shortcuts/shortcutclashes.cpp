// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "shortcutclashes.h"

#include <QAction>
#include <QMenu>
#include <QWidget>

namespace Morvane {

namespace {

// Unlike QWidget::isAncestorOf, crosses into pop-ups and floating docks: a window's menus
// are windows of their own, but their keys are the window's.
bool ownedBy(const QWidget *widget, const QWidget *window)
{
    for (const QWidget *w = widget; w; w = w->parentWidget()) {
        if (w == window)
            return true;
    }
    return false;
}

// The widgets through which `action`'s key reaches `window`; empty when it cannot.
QList<QWidget *> hosts(QAction *action, QWidget *window)
{
    QList<QWidget *> found;
    for (QObject *object : action->associatedObjects()) {
        auto *widget = qobject_cast<QWidget *>(object);
        if (!widget || !ownedBy(widget, window))
            continue;
        // A menu is shown on demand; a hidden widget of the window takes no keys.
        if (qobject_cast<QMenu *>(widget) || widget == window || widget->isVisibleTo(window))
            found.append(widget);
    }
    return found;
}

bool widgetContext(const QAction *action)
{
    return action->shortcutContext() == Qt::WidgetShortcut
           || action->shortcutContext() == Qt::WidgetWithChildrenShortcut;
}

// Whether keys of widget-context actions on `a` and `b` can be live at once.
bool sameFocus(const QWidget *a, const QWidget *b)
{
    return a == b || ownedBy(a, b) || ownedBy(b, a);
}

bool meet(QAction *a, QAction *b, QWidget *window)
{
    if (!widgetContext(a) || !widgetContext(b))
        return true;
    const QList<QWidget *> onA = hosts(a, window);
    const QList<QWidget *> onB = hosts(b, window);
    for (const QWidget *x : onA) {
        for (const QWidget *y : onB) {
            if (sameFocus(x, y))
                return true;
        }
    }
    return false;
}

} // namespace

bool ShortcutClashes::isLive(QAction *action, QWidget *window)
{
    return action->isEnabled() && action->isVisible() && !action->shortcuts().isEmpty()
           && !hosts(action, window).isEmpty();
}

QList<ShortcutClashes::Clash> ShortcutClashes::find(QWidget *window)
{
    return find(window, window->findChildren<QAction *>());
}

QList<ShortcutClashes::Clash> ShortcutClashes::find(QWidget *window,
                                                     const QList<QAction *> &actions)
{
    QList<QAction *> live;
    for (QAction *action : actions) {
        if (!live.contains(action) && isLive(action, window))
            live.append(action);
    }
    QList<Clash> clashes;
    for (int i = 0; i < live.size(); ++i) {
        for (const QKeySequence &key : live.at(i)->shortcuts()) {
            if (key.isEmpty())
                continue;
            // Each clash is reported once, from its first action.
            bool seen = false;
            for (const Clash &clash : std::as_const(clashes))
                seen = seen || (clash.key == key && clash.actions.contains(live.at(i)));
            if (seen)
                continue;
            Clash clash{key, {live.at(i)}};
            for (int j = i + 1; j < live.size(); ++j) {
                if (live.at(j)->shortcuts().contains(key) && meet(live.at(i), live.at(j), window))
                    clash.actions.append(live.at(j));
            }
            if (clash.actions.size() > 1)
                clashes.append(clash);
        }
    }
    return clashes;
}

QString ShortcutClashes::describe(const QList<Clash> &clashes)
{
    QStringList lines;
    for (const Clash &clash : clashes) {
        QStringList names;
        for (const QAction *action : clash.actions)
            names << action->text().remove(QLatin1Char('&'));
        lines << clash.key.toString(QKeySequence::PortableText) + QStringLiteral(": ")
                     + names.join(QStringLiteral(", "));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace Morvane
