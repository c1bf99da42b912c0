# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    ui/batchconvert/batchconvert.cpp
    ui/batchconvert/batchconvert.h
)
