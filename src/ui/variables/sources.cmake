# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    ui/variables/ownerpicker.cpp
    ui/variables/ownerpicker.h
    ui/variables/tagspanel.cpp
    ui/variables/tagspanel.h
    ui/variables/variablespanel.cpp
    ui/variables/variablespanel.h)
