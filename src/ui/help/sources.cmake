# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    ui/help/helpviewer.cpp
    ui/help/helpviewer.h
)
list(APPEND MORVANE_EDITOR_RESOURCES ui/help/manual.qrc)
