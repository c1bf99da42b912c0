// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/address.h"

#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

namespace Morvane {

namespace {
enum ResolveKind {
    ResolveEntity,
    ResolveAnimation,
    ResolveMainlineKey,
    ResolveTimeline,
    ResolveKey,
    ResolveRef,
    ResolveObject,
    ResolveFolder,
    ResolveFile,
};

bool matchesKind(const MorvaneModelItem *item, int kind)
{
    switch (item->morvaneItemType()) {
    case MorvaneItemType::Entity:
        return kind == ResolveEntity;
    case MorvaneItemType::Animation:
        return kind == ResolveAnimation;
    case MorvaneItemType::MainlineKey:
        return kind == ResolveMainlineKey;
    case MorvaneItemType::Timeline:
        return kind == ResolveTimeline;
    case MorvaneItemType::TimelineKey:
        return kind == ResolveKey;
    case MorvaneItemType::BoneRef:
    case MorvaneItemType::ZRef:
        return kind == ResolveRef;
    case MorvaneItemType::Object:
        return kind == ResolveObject;
    case MorvaneItemType::Folder:
        return kind == ResolveFolder;
    case MorvaneItemType::File:
        return kind == ResolveFile;
    default:
        return false;
    }
}
// How many leading indexes name an item of `kind`.
int indexesNaming(int kind)
{
    switch (kind) {
    case ResolveEntity:
    case ResolveFolder:
        return 1;
    case ResolveAnimation:
    case ResolveObject:
    case ResolveFile:
        return 2;
    case ResolveMainlineKey:
    case ResolveTimeline:
        return 3;
    case ResolveKey:
        return 4;
    default:
        return 5;
    }
}
} // namespace

Address::Address(RigxData *document)
    : mDocument(document)
{}

Address::Address(RigxData *document, std::initializer_list<int> indexes, MorvaneModelItem *item)
    : mDocument(document)
{
    for (int i : indexes)
        push_back(i);
    if (item)
        setDirectPointer(item);
}

Address::Address(RigxData *document, const QList<int> &indexes, MorvaneModelItem *item)
    : mDocument(document)
{
    for (int i : indexes)
        push_back(i);
    if (item)
        setDirectPointer(item);
}

Address::Address(RigxData *document, const QVariant &stored)
    : mDocument(document)
{
    // Only a real list counts: QVariant would happily turn a string into one.
    if (stored.typeId() != QMetaType::QVariantList && stored.typeId() != QMetaType::QStringList)
        return;
    const QVariantList list = stored.toList();
    for (const QVariant &v : list) {
        bool ok = false;
        const int i = v.toInt(&ok);
        if (!ok) {
            mSize = 0;
            return;
        }
        push_back(i);
    }
}

Address::Address(const Address &other) = default;

Address &Address::operator=(const Address &other) = default;

Address::~Address() = default;

int Address::at(int position) const
{
    if (position < 0 || position >= mSize)
        return -1;
    return mIndexes[position];
}

void Address::set(int position, int value)
{
    if (position < 0 || position >= MaxIndexes)
        return;
    while (mSize <= position)
        mIndexes[mSize++] = -1;
    mIndexes[position] = value;
}

void Address::push_back(int value)
{
    if (mSize < MaxIndexes)
        mIndexes[mSize++] = value;
}

QList<int> Address::toList() const
{
    return QList<int>(mIndexes.begin(), mIndexes.begin() + mSize);
}

QVariant Address::toVariant() const
{
    QVariantList list;
    list.reserve(mSize);
    for (int i = 0; i < mSize; ++i)
        list.append(mIndexes[i]);
    return list;
}

bool Address::operator==(const Address &other) const
{
    if (mSize != other.mSize)
        return false;
    for (int i = 0; i < mSize; ++i) {
        if (mIndexes[i] != other.mIndexes[i])
            return false;
    }
    return true;
}

void Address::setDirectPointer(MorvaneModelItem *item)
{
    if (item && !mDocument)
        mDocument = item->document();
    mDirect.set(item);
}

void Address::invalidate()
{
    mDirect.set(nullptr);
}

MorvaneModelItem *Address::resolve(int kind) const
{
    MorvaneModelItem *direct = mDirect.item();
    if (direct && matchesKind(direct, kind))
        return direct;
    // Asked for what contains the addressed item (an animation's address asked for its
    // entity), the leading indexes answer, and nothing is cached: the cache holds what
    // the whole address names.
    const bool container = indexesNaming(kind) < mSize;
    if (direct && !container)
        return nullptr;
    if (!mDocument)
        return nullptr;

    MorvaneModelItem *found = nullptr;
    switch (kind) {
    case ResolveEntity:
        found = mDocument->entity(at(0));
        break;
    case ResolveAnimation:
        found = mDocument->animationFromNumericIndexes(at(0), at(1));
        break;
    case ResolveMainlineKey:
        found = mDocument->mainlineKeyFromNumericIndexes(at(0), at(1), at(2));
        break;
    case ResolveTimeline:
        found = mDocument->timelineFromNumericIndexes(at(0), at(1), at(2));
        break;
    case ResolveKey:
        found = mDocument->keyFromNumericIndexes(at(0), at(1), at(2), at(3));
        break;
    case ResolveRef:
        found = mDocument->refFromNumericIndexes(at(0), at(1), at(2), at(3), at(4));
        break;
    case ResolveObject:
        found = mDocument->objectFromNumericIndexes(at(0), at(1));
        break;
    case ResolveFolder:
        found = mDocument->folderFromId(at(0));
        break;
    case ResolveFile:
        found = mDocument->fileFromIds(at(0), at(1));
        break;
    }
    if (found && !container)
        mDirect.set(found);
    return found;
}

Entity *Address::entity() const
{
    return static_cast<Entity *>(resolve(ResolveEntity));
}

Animation *Address::animation() const
{
    return static_cast<Animation *>(resolve(ResolveAnimation));
}

MainlineKey *Address::mainlineKey() const
{
    return static_cast<MainlineKey *>(resolve(ResolveMainlineKey));
}

Timeline *Address::timeline() const
{
    return static_cast<Timeline *>(resolve(ResolveTimeline));
}

TimelineKey *Address::key() const
{
    return static_cast<TimelineKey *>(resolve(ResolveKey));
}

ObjectRef *Address::ref() const
{
    return static_cast<ObjectRef *>(resolve(ResolveRef));
}

Object *Address::object() const
{
    return static_cast<Object *>(resolve(ResolveObject));
}

Folder *Address::folder() const
{
    return static_cast<Folder *>(resolve(ResolveFolder));
}

File *Address::file(bool followRedirect) const
{
    File *f = static_cast<File *>(resolve(ResolveFile));
    if (f && followRedirect)
        return f->redirectedFile();
    return f;
}

} // namespace Morvane
