# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_CORE_SOURCES
    ${CMAKE_CURRENT_LIST_DIR}/entityinstance.cpp
    ${CMAKE_CURRENT_LIST_DIR}/entityinstance.h
    ${CMAKE_CURRENT_LIST_DIR}/pose.h
    ${CMAKE_CURRENT_LIST_DIR}/poseevaluator.cpp
    ${CMAKE_CURRENT_LIST_DIR}/poseevaluator.h
)
