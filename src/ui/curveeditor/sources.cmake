# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    ui/curveeditor/curveeditor.cpp
    ui/curveeditor/curveeditor.h
    ui/curveeditor/curvetypes.h
    ui/curveeditor/curveview.cpp
    ui/curveeditor/curveview.h)
