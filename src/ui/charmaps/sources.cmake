# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    ui/charmaps/charmapspanel.cpp
    ui/charmaps/charmapspanel.h)
