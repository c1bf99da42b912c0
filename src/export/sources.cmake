# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers

# Magick++ writes the GIFs; only the encoder sees its headers and flags.
pkg_check_modules(MAGICKPP REQUIRED Magick++)
set_source_files_properties(export/gifencoder.cpp PROPERTIES COMPILE_OPTIONS "${MAGICKPP_CFLAGS}")
list(APPEND MORVANE_EDITOR_LIBRARIES ${MAGICKPP_LINK_LIBRARIES})

list(APPEND MORVANE_EDITOR_SOURCES
    export/animationexporter.cpp
    export/animationexporter.h
    export/doubleprogressdialog.cpp
    export/doubleprogressdialog.h
    export/exportoptions.cpp
    export/exportoptions.h
    export/exporttopngdialog.cpp
    export/exporttopngdialog.h
    export/framerenderer.cpp
    export/framerenderer.h
    export/gifencoder.cpp
    export/gifencoder.h
    export/gifpalette.cpp
    export/gifpalette.h
    export/imagefilewriter.cpp
    export/imagefilewriter.h
    export/snappingintervalcommand.cpp
    export/snappingintervalcommand.h
)
