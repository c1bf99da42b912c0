# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_CORE_SOURCES
    meta/editvaluelineholdercommand.cpp
    meta/editvaluelineholdercommand.h
    meta/editvarcollectioncommand.cpp
    meta/editvarcollectioncommand.h
    meta/lineid.h
    meta/metaowner.cpp
    meta/metaowner.h
    meta/tag.cpp
    meta/tag.h
    meta/tagchangecommand.cpp
    meta/tagchangecommand.h
    meta/tagmanager.cpp
    meta/tagmanager.h
    meta/tagstate.cpp
    meta/tagstate.h
    meta/valinfo.h
    meta/valinfocollection.cpp
    meta/valinfocollection.h
    meta/valkey.cpp
    meta/valkey.h
    meta/valline.cpp
    meta/valline.h
    meta/valuelineholder.cpp
    meta/valuelineholder.h
    meta/vartype.cpp
    meta/vartype.h
)
