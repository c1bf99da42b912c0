# SPDX-License-Identifier: GPL-3.0-or-later
# SPDX-FileCopyrightText: 2026 The Morvane developers
list(APPEND MORVANE_EDITOR_SOURCES
    canvas/clipboard/clipboardeditor.cpp
    canvas/clipboard/clipboardeditor.h
    canvas/clipboard/clipboardpaste.cpp
    canvas/clipboard/clipboardpaste.h
    canvas/clipboard/copy.cpp
    canvas/clipboard/copy.h
    canvas/clipboard/morvaneclipboard.cpp
    canvas/clipboard/morvaneclipboard.h
)
