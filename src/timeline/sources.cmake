# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    timeline/commands/animationsettingscommands.cpp
    timeline/commands/animationsettingscommands.h
    timeline/commands/keyselectioncommand.cpp
    timeline/commands/keyselectioncommand.h
    timeline/dragpreview.cpp
    timeline/dragpreview.h
    timeline/keyedits.cpp
    timeline/keyedits.h
    timeline/mainlineview.cpp
    timeline/mainlineview.h
    timeline/snappingoptionsdialog.cpp
    timeline/snappingoptionsdialog.h
    timeline/timelineeditor.cpp
    timeline/timelineeditor.h
    timeline/timelineitems.cpp
    timeline/timelineitems.h
    timeline/timelinelabelview.cpp
    timeline/timelinelabelview.h
    timeline/timelinerows.cpp
    timeline/timelinerows.h
    timeline/timelineview.cpp
    timeline/timelineviewedits.cpp
    timeline/timelineview.h
)
