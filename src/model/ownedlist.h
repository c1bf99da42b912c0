// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

namespace Morvane {

/// The item at `index` of an owning list, null out of range.
template <typename T> T *ownedAt(const std::vector<std::unique_ptr<T>> &list, int index)
{
    if (index < 0 || index >= int(list.size()))
        return nullptr;
    return list[size_t(index)].get();
}

/// The position of `item` in an owning list, -1 when it is not there.
template <typename T, typename U>
int indexOfOwned(const std::vector<std::unique_ptr<T>> &list, const U *item)
{
    for (size_t i = 0; i < list.size(); ++i) {
        if (list[i].get() == item)
            return int(i);
    }
    return -1;
}

/// Puts an owning list in the order of `keyOf(item)` (an int; items with equal keys keep
/// their order) in n log n, with each key taken once, and in one pass when it is in order
/// already. Returns where the item that was at `followed` is now; other values come back
/// as they are.
template <typename T, typename KeyOf>
int sortOwnedByKey(std::vector<std::unique_ptr<T>> *list, int followed, KeyOf keyOf)
{
    const size_t count = list->size();
    std::vector<int> keys(count);
    bool sorted = true;
    for (size_t i = 0; i < count; ++i) {
        keys[i] = keyOf(*(*list)[i]);
        if (i > 0 && keys[i] < keys[i - 1])
            sorted = false;
    }
    if (sorted)
        return followed;
    std::vector<size_t> order(count);
    std::iota(order.begin(), order.end(), size_t(0));
    std::stable_sort(order.begin(), order.end(),
                     [&keys](size_t a, size_t b) { return keys[a] < keys[b]; });
    std::vector<std::unique_ptr<T>> result;
    result.reserve(count);
    int moved = followed;
    for (size_t i = 0; i < count; ++i) {
        if (followed >= 0 && order[i] == size_t(followed))
            moved = int(i);
        result.push_back(std::move((*list)[order[i]]));
    }
    *list = std::move(result);
    return moved;
}

} // namespace Morvane
