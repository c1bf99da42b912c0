# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_CORE_SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/tweeninfo.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tweeninfo.h
    ${CMAKE_CURRENT_LIST_DIR}/displayinfo.cpp
    ${CMAKE_CURRENT_LIST_DIR}/displayinfo.h
    ${CMAKE_CURRENT_LIST_DIR}/entityinfo.h
)
