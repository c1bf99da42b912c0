# SPDX-License-Identifier: GPL-3.0-or-later
list(APPEND MORVANE_CORE_SOURCES
    atlas/bindatlascommand.cpp
    atlas/bindatlascommand.h
    atlas/jsonframe.h
    atlas/jsonspritesheet.cpp
    atlas/jsonspritesheet.h
    atlas/maxrectspacker.cpp
    atlas/maxrectspacker.h
    atlas/spritesheetcollection.cpp
    atlas/spritesheetcollection.h
    atlas/spritesheetpacker.cpp
    atlas/spritesheetpacker.h
)
