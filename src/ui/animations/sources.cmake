# SPDX-License-Identifier: GPL-3.0-or-later
list(APPEND MORVANE_EDITOR_SOURCES
    ui/animations/animationspanel.cpp
    ui/animations/animationspanel.h
    ui/animations/namecleaning.cpp
    ui/animations/namecleaning.h
    ui/animations/specialclonedialog.cpp
    ui/animations/specialclonedialog.h
)
