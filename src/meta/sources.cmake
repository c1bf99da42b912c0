# SPDX-License-Identifier: GPL-3.0-or-later
list(APPEND MORVANE_CORE_SOURCES
)
