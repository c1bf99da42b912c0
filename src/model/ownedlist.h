// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <memory>
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

} // namespace Morvane
