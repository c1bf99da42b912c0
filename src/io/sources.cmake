# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_CORE_SOURCES
    io/json.cpp
    io/json.h
    io/jsonwriter.cpp
    io/jsonwriter.h
    io/numberformat.cpp
    io/numberformat.h
    io/xmlwriter.cpp
    io/xmlwriter.h
)
