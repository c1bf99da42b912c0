# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_CORE_SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/charactermap.cpp
    ${CMAKE_CURRENT_LIST_DIR}/charactermap.h
    ${CMAKE_CURRENT_LIST_DIR}/displayinfo.cpp
    ${CMAKE_CURRENT_LIST_DIR}/displayinfo.h
    ${CMAKE_CURRENT_LIST_DIR}/entityinfo.cpp
    ${CMAKE_CURRENT_LIST_DIR}/entityinfo.h
    ${CMAKE_CURRENT_LIST_DIR}/entityinstance.cpp
    ${CMAKE_CURRENT_LIST_DIR}/entityinstance.h
    ${CMAKE_CURRENT_LIST_DIR}/keyinterpolation.cpp
    ${CMAKE_CURRENT_LIST_DIR}/pose.h
    ${CMAKE_CURRENT_LIST_DIR}/poseevaluator.cpp
    ${CMAKE_CURRENT_LIST_DIR}/poseevaluator.h
    ${CMAKE_CURRENT_LIST_DIR}/tweeninfo.cpp
    ${CMAKE_CURRENT_LIST_DIR}/tweeninfo.h
)
