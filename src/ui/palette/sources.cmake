# SPDX-License-Identifier: GPL-3.0-or-later
list(APPEND MORVANE_EDITOR_SOURCES
    ui/palette/palettepanel.cpp
    ui/palette/palettepanel.h
    ui/palette/palettetree.cpp
    ui/palette/palettetree.h
    ui/palette/pivotpreview.cpp
    ui/palette/pivotpreview.h
    ui/palette/thumbnailloader.cpp
    ui/palette/thumbnailloader.h
)
