# SPDX-License-Identifier: GPL-3.0-or-later
list(APPEND MORVANE_CORE_SOURCES
    atlas/jsonframe.h
    atlas/jsonspritesheet.cpp
    atlas/jsonspritesheet.h
    atlas/spritesheetcollection.cpp
    atlas/spritesheetcollection.h
)
