// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <cstddef>

namespace Morvane {

/// Memory for model items. A large project holds millions of small items of a few sizes
/// (keys, references), made in one burst when it opens: they come from slabs of one size
/// class each, taken from the system in 2 MiB blocks that may be backed by huge pages, so
/// that opening touches few pages and a key costs no allocator header. A slab whose items
/// are all freed goes back to the system. Thread-safe; larger requests, and every request
/// in sanitizer builds (so that they still see each item), go to the global allocator.
class ItemAllocator
{
public:
    static void *allocate(std::size_t size);
    static void deallocate(void *pointer, std::size_t size) noexcept;

    /// Bytes held in slabs, used or not (for tests and benchmarks).
    static std::size_t reservedBytes();
};

} // namespace Morvane
