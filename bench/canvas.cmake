# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
if(TARGET morvane_editor)
    morvane_add_bench(bench_canvas bench_canvas.cpp)
    target_link_libraries(bench_canvas PRIVATE morvane_editor)
endif()
