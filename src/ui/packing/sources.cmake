# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    ui/packing/packdialog.cpp
    ui/packing/packdialog.h
)
