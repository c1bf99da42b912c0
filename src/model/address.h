// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/itemlink.h"

#include <QList>
#include <QVariant>

#include <array>
#include <initializer_list>

namespace Morvane {

class Animation;
class Entity;
class File;
class Folder;
class MainlineKey;
class MorvaneModelItem;
class Object;
class ObjectRef;
class RigxData;
class Timeline;
class TimelineKey;

/// Names a model item by a short list of indexes from the document root down,
/// plus a cached direct pointer that is dropped when the item is destroyed.
///
/// Meaning of the indexes by position:
///   files:             folder unique id, file unique id
///   objects:           entity index, object index
///   animation content: entity index, animation index, timeline index (or
///                      mainline key index), key index (or reference type),
///                      reference index
/// Resolving prefers the direct pointer; without one the document is asked and
/// the result cached. What contains the addressed item (the entity of an
/// animation's address) is found through the leading indexes and never cached.
/// Resolvers return null when nothing (or an item of another kind) stands at the
/// indexes, or when no document is set.
class Address
{
public:
    // The longest address, a reference's, has five.
    static constexpr int MaxIndexes = 6;

    Address() = default;
    explicit Address(RigxData *document);
    Address(RigxData *document, std::initializer_list<int> indexes,
            MorvaneModelItem *item = nullptr);
    Address(RigxData *document, const QList<int> &indexes, MorvaneModelItem *item = nullptr);
    /// From a stored list value (the clipboard's form); anything that is not a
    /// list of integers gives an empty address.
    Address(RigxData *document, const QVariant &stored);
    Address(const Address &other);
    Address &operator=(const Address &other);
    ~Address();

    RigxData *document() const { return mDocument; }
    void setDocument(RigxData *document) { mDocument = document; }

    int size() const { return mSize; }
    bool isEmpty() const { return mSize == 0; }
    /// The index at `position`, -1 when the list is too short.
    int at(int position) const;
    /// Sets the index at `position`, growing the list with -1 as needed.
    void set(int position, int value);
    void push_back(int value);
    void clearIndexes() { mSize = 0; }
    QList<int> toList() const;
    QVariant toVariant() const;

    /// Equal when the index lists are equal (document and pointer ignored).
    bool operator==(const Address &other) const;
    bool operator!=(const Address &other) const { return !(*this == other); }

    // Accessors by position (-1 when the list is too short).
    int folderId() const { return at(0); }
    int fileId() const { return at(1); }
    int entityIndex() const { return at(0); }
    int objectId() const { return at(1); }
    int animationIndex() const { return at(1); }
    int timelineId() const { return at(2); }
    int mainlineKeyIndex() const { return at(2); }
    int keyIndex() const { return at(3); }
    int refType() const { return at(3); }
    int refIndex() const { return at(4); }

    // Resolution.
    Entity *entity() const;
    Animation *animation() const;
    MainlineKey *mainlineKey() const;
    Timeline *timeline() const;
    TimelineKey *key() const;
    ObjectRef *ref() const;
    Object *object() const;
    Folder *folder() const;
    /// The addressed file; with `followRedirect` the file a character map
    /// currently shows in its place (null when the map hides it).
    File *file(bool followRedirect = false) const;

    const MainlineKey *mainlineKeyConst() const { return mainlineKey(); }
    const Timeline *timelineConst() const { return timeline(); }
    const ObjectRef *refConst() const { return ref(); }
    const Object *objectConst() const { return object(); }

    /// Points the address at `item` (registering with it, after unregistering
    /// from the previous item). Takes the item's document when the address has
    /// none.
    void setDirectPointer(MorvaneModelItem *item);
    MorvaneModelItem *directPointer() const { return mDirect.item(); }
    bool isValid() const { return !mDirect.isEmpty(); }
    void invalidate();

private:
    MorvaneModelItem *resolve(int kind) const;

    RigxData *mDocument = nullptr;
    std::array<int, MaxIndexes> mIndexes{};
    int mSize = 0;
    ItemLink mDirect; // registered with the item, dropped when it goes
};

/// A holder of one address that model objects keep as a member (a file's
/// linked file, a key's link to its mainline key, a sub-entity's animation).
class AddressWrapper
{
public:
    AddressWrapper() = default;
    AddressWrapper(const Address &address)
        : mAddress(address)
    {}
    AddressWrapper &operator=(const Address &address)
    {
        mAddress = address;
        return *this;
    }

    Address &address() { return mAddress; }
    const Address &address() const { return mAddress; }
    Address *operator->() { return &mAddress; }
    const Address *operator->() const { return &mAddress; }

private:
    Address mAddress;
};

} // namespace Morvane
