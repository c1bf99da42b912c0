// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

namespace Morvane {

class File;
class MorvaneModelItem;

/// A weak pointer to a model item: it registers with the item (an intrusive list, so O(1)
/// both ways) and reads null once the item is destroyed. `Address` keeps its direct pointer
/// in one; on its own it is the small form for links that are never looked up by position.
class ItemLink
{
public:
    ItemLink() = default;
    explicit ItemLink(MorvaneModelItem *item) { set(item); }
    ItemLink(const ItemLink &other) { set(other.mItem); }
    ItemLink &operator=(const ItemLink &other)
    {
        set(other.mItem);
        return *this;
    }
    ~ItemLink() { unregister(); }

    MorvaneModelItem *item() const { return mItem; }
    bool isEmpty() const { return mItem == nullptr; }
    /// Points the link at `item` (null clears).
    void set(MorvaneModelItem *item) const
    {
        if (item == mItem)
            return;
        unregister();
        if (item)
            registerWith(item);
    }

private:
    friend class MorvaneModelItem;
    void registerWith(MorvaneModelItem *item) const;
    void unregister() const;

    mutable MorvaneModelItem *mItem = nullptr;
    mutable ItemLink *mPrev = nullptr;
    mutable ItemLink *mNext = nullptr;
};

/// A link to a file: what a key's spatial state follows for its default pivot.
class FileLink : public ItemLink
{
public:
    FileLink() = default;
    explicit FileLink(File *file);

    /// The file, or with `followRedirect` the file the active character maps show in its
    /// place (null when a map hides it, or when the file is gone).
    File *file(bool followRedirect = false) const;
};

} // namespace Morvane
