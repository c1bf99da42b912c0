# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
# bench_export: numbered PNGs and GIFs of the example beside bare loops.
if(TARGET morvane_editor)
    morvane_add_bench(bench_export bench_export.cpp)
    pkg_check_modules(BENCH_MAGICKPP REQUIRED Magick++)
    target_compile_options(bench_export PRIVATE ${BENCH_MAGICKPP_CFLAGS})
    target_link_libraries(bench_export PRIVATE morvane_editor ${BENCH_MAGICKPP_LINK_LIBRARIES})
    target_compile_definitions(bench_export PRIVATE MORVANE_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
endif()
