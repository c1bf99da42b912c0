# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_CORE_SOURCES
    io/json.cpp
    io/json.h
    io/jsonprojectreader.cpp
    io/jsonprojectreader.h
    io/jsonprojectwriter.cpp
    io/jsonprojectwriter.h
    io/jsonwriter.cpp
    io/jsonwriter.h
    io/metareader.h
    io/metawriter.cpp
    io/metawriter.h
    io/numberformat.cpp
    io/numberformat.h
    io/projectconversion.cpp
    io/projectconversion.h
    io/projectfile.cpp
    io/projectfile.h
    io/projectiohost.cpp
    io/projectiohost.h
    io/projectreader.h
    io/projectsaveoptions.h
    io/projectsink.h
    io/projectwriter.cpp
    io/projectwriter.h
    io/utf8encoder.h
    io/xmlprojectreader.cpp
    io/xmlprojectreader.h
    io/xmlprojectwriter.cpp
    io/xmlprojectwriter.h
    io/xmlwriter.cpp
    io/xmlwriter.h
)
