// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QList>
#include <QString>

#include <utility>

class QAction;

namespace Ui {
class MorvaneWindow;
}

namespace Morvane {

// The window's action table: which actions get the platform's standard keys,
// which need an open project, and which wait for later parts of the editor.
class WindowActions
{
public:
    // New, Open, Save, Save As, Close, Quit, Undo, Redo, Cut, Copy, Paste,
    // Delete and Select All get the platform's standard key sequences.
    static void applyStandardShortcuts(Ui::MorvaneWindow *ui);
    // Enabled only while a project is open.
    static QList<QAction *> projectDependent(Ui::MorvaneWindow *ui);
    // Features that come with later parts of the editor: always disabled.
    static QList<QAction *> pending(Ui::MorvaneWindow *ui);
    // The window's actions that drive the canvas editor's, with the object
    // name of the editor's action each stands for.
    static QList<std::pair<QAction *, QString>> canvasLinks(Ui::MorvaneWindow *ui);
};

} // namespace Morvane
