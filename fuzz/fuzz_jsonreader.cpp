// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "fuzzchecks.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Morvane::FuzzChecks::jsonReader(
        QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    return 0;
}
