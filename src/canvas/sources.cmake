# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    canvas/canvascolors.h
    canvas/canvaseditor.cpp
    canvas/canvaseditor.h
    canvas/editorsession.cpp
    canvas/editorsession.h
    canvas/commands/canvascommands.cpp
    canvas/commands/canvascommands.h
    canvas/morvanecanvasscene.cpp
    canvas/morvanecanvasscene.h
    canvas/morvanegraphicsview.cpp
    canvas/morvanegraphicsview.h
    canvas/objectgraphicsproxy.cpp
    canvas/onionskinitem.cpp
    canvas/onionskinitem.h
    canvas/objectgraphicsproxy.h
    canvas/tools/abstracttool.h
    canvas/tools/bonetool.cpp
    canvas/tools/bonetool.h
    canvas/tools/pantool.cpp
    canvas/tools/pantool.h
    canvas/tools/selecttool.cpp
    canvas/tools/selecttool.h
    canvas/tools/toolmanager.cpp
    canvas/tools/toolmanager.h
    canvas/transformcontrolitemgroup.cpp
    canvas/transformcontrolitemgroup.h
    canvas/twoboneik.cpp
    canvas/twoboneik.h
)
include(canvas/clipboard/sources.cmake)
list(APPEND MORVANE_EDITOR_RESOURCES canvas/canvas.qrc)
