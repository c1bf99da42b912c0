// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/itemallocator.h"

#include <array>
#include <cstdint>
#include <mutex>
#include <new>

#include <sys/mman.h>

#if defined(__SANITIZE_ADDRESS__)
#define MORVANE_PLAIN_ALLOCATION 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer)
#define MORVANE_PLAIN_ALLOCATION 1
#endif
#endif

namespace Morvane {

namespace {

constexpr std::size_t SlabBytes = std::size_t(2) << 20;
constexpr std::size_t Granule = 16;
constexpr std::size_t MaxItemBytes = 1024;
constexpr std::size_t ClassCount = MaxItemBytes / Granule;

struct FreeItem
{
    FreeItem *next;
};

// Lives at the start of its slab; the items follow.
struct Slab
{
    Slab *prev;
    Slab *next;
    FreeItem *free;
    char *unused; // items past here were never handed out
    char *end;
    std::size_t itemBytes;
    std::size_t used;
    bool listed; // in its class's list of slabs with room
};

constexpr std::size_t HeaderBytes = (sizeof(Slab) + Granule - 1) / Granule * Granule;

struct SizeClass
{
    Slab *withRoom = nullptr;
    std::size_t slabCount = 0;
};

std::mutex sMutex;
std::array<SizeClass, ClassCount> sClasses;
std::size_t sReservedBytes = 0;

Slab *slabOf(void *pointer)
{
    return reinterpret_cast<Slab *>(reinterpret_cast<std::uintptr_t>(pointer) & ~(SlabBytes - 1));
}

// A block aligned to its size, so that an item finds its slab by masking its address.
void *mapAlignedSlab()
{
    void *mapped = mmap(nullptr, 2 * SlabBytes, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    const auto start = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned = (start + SlabBytes - 1) & ~(SlabBytes - 1);
    if (aligned > start)
        munmap(mapped, aligned - start);
    const std::uintptr_t tail = aligned + SlabBytes;
    const std::uintptr_t mappedEnd = start + 2 * SlabBytes;
    if (mappedEnd > tail)
        munmap(reinterpret_cast<void *>(tail), mappedEnd - tail);
    auto *slab = reinterpret_cast<void *>(aligned);
#ifdef MADV_HUGEPAGE
    // One fault per slab instead of one per page, where the system allows it.
    madvise(slab, SlabBytes, MADV_HUGEPAGE);
#endif
    return slab;
}

void link(SizeClass &sizeClass, Slab *slab)
{
    slab->prev = nullptr;
    slab->next = sizeClass.withRoom;
    if (sizeClass.withRoom)
        sizeClass.withRoom->prev = slab;
    sizeClass.withRoom = slab;
    slab->listed = true;
}

void unlink(SizeClass &sizeClass, Slab *slab)
{
    if (slab->prev)
        slab->prev->next = slab->next;
    else
        sizeClass.withRoom = slab->next;
    if (slab->next)
        slab->next->prev = slab->prev;
    slab->prev = slab->next = nullptr;
    slab->listed = false;
}

} // namespace

void *ItemAllocator::allocate(std::size_t size)
{
#ifdef MORVANE_PLAIN_ALLOCATION
    return ::operator new(size);
#else
    if (size == 0 || size > MaxItemBytes)
        return ::operator new(size);
    const std::size_t index = (size - 1) / Granule;
    const std::size_t itemBytes = (index + 1) * Granule;
    std::lock_guard<std::mutex> lock(sMutex);
    SizeClass &sizeClass = sClasses[index];
    Slab *slab = sizeClass.withRoom;
    if (!slab) {
        void *block = mapAlignedSlab();
        if (!block)
            throw std::bad_alloc();
        slab = static_cast<Slab *>(block);
        slab->free = nullptr;
        slab->unused = static_cast<char *>(block) + HeaderBytes;
        slab->end = static_cast<char *>(block) + SlabBytes;
        slab->itemBytes = itemBytes;
        slab->used = 0;
        link(sizeClass, slab);
        ++sizeClass.slabCount;
        sReservedBytes += SlabBytes;
    }
    void *item;
    if (slab->free) {
        item = slab->free;
        slab->free = slab->free->next;
    } else {
        item = slab->unused;
        slab->unused += itemBytes;
    }
    ++slab->used;
    if (!slab->free && slab->unused + itemBytes > slab->end)
        unlink(sizeClass, slab);
    return item;
#endif
}

void ItemAllocator::deallocate(void *pointer, std::size_t size) noexcept
{
#ifdef MORVANE_PLAIN_ALLOCATION
    ::operator delete(pointer);
#else
    if (!pointer)
        return;
    if (size == 0 || size > MaxItemBytes) {
        ::operator delete(pointer);
        return;
    }
    std::lock_guard<std::mutex> lock(sMutex);
    Slab *slab = slabOf(pointer);
    SizeClass &sizeClass = sClasses[(slab->itemBytes - 1) / Granule];
    auto *item = static_cast<FreeItem *>(pointer);
    item->next = slab->free;
    slab->free = item;
    --slab->used;
    if (!slab->listed)
        link(sizeClass, slab);
    // An empty slab goes back, unless it is the class's last: closing and opening a
    // project would otherwise map and unmap the same memory over and over.
    if (slab->used == 0 && sizeClass.slabCount > 1) {
        unlink(sizeClass, slab);
        --sizeClass.slabCount;
        sReservedBytes -= SlabBytes;
        munmap(slab, SlabBytes);
    }
#endif
}

std::size_t ItemAllocator::reservedBytes()
{
    std::lock_guard<std::mutex> lock(sMutex);
    return sReservedBytes;
}

} // namespace Morvane
