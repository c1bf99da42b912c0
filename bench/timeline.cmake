# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
# bench_timeline: recording key moves and their memory; bench_timelineview: the views.
foreach(b bench_timeline bench_timelineview)
    if(TARGET morvane_editor AND EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/${b}.cpp")
        morvane_add_bench(${b} ${b}.cpp)
        target_link_libraries(${b} PRIVATE morvane_editor)
    endif()
endforeach()
