# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    ui/shortcuts/keyshortcutdockwidget.cpp
    ui/shortcuts/keyshortcutdockwidget.h
    ui/shortcuts/shortcutclashes.cpp
    ui/shortcuts/shortcutclashes.h
)
