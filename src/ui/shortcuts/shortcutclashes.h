// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QKeySequence>
#include <QList>

class QAction;
class QWidget;

namespace Morvane {

/// Finds keys that two live actions of one window answer to at the same time. Qt triggers
/// neither of them then (an "ambiguous shortcut"), so each such pair is a fault.
///
/// An action is live when it is enabled and visible, has a key, and sits on a widget of
/// the window (a menu counts when the window owns it). Actions with a window or
/// application context meet every other live action of the window; actions with a widget
/// context (the canvas editor's) meet the window's and those of the same widget, its
/// ancestors and its children.
class ShortcutClashes
{
public:
    struct Clash
    {
        QKeySequence key;
        /// At least two, in the order the window holds them.
        QList<QAction *> actions;
    };

    /// Every clash among the live actions of `window` and of the widgets it holds.
    static QList<Clash> find(QWidget *window);
    /// The same among `actions` only, as they sit in `window`.
    static QList<Clash> find(QWidget *window, const QList<QAction *> &actions);
    /// Whether `action` can be triggered by its key inside `window`.
    static bool isLive(QAction *action, QWidget *window);
    /// "Ctrl+Shift+C: Copy Current Frame, Copy with child sprites", one line per clash.
    static QString describe(const QList<Clash> &clashes);
};

} // namespace Morvane
