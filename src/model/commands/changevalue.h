// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/commands/commandids.h"
#include "model/morvanemodelitem.h"

#include <QUndoCommand>

#include <typeinfo>
#include <utility>
#include <vector>

namespace Morvane {

/// `item` when it belongs to the document `address` resolves in; null otherwise. An
/// address keeps pointing at an item that was taken out of the tree but not destroyed,
/// and a command must not change such an item.
template <typename Item> Item *inDocument(Item *item, const Address &address)
{
    return item && item->document() == address.document() ? item : nullptr;
}

/// The undo command for changing values in place: for each target, the address that
/// finds it and its value before and after. A subclass says how an address finds its
/// target (`target`) and how a value is put there (`setValue`); pushing goes through
/// `RigxData::pushUndo`.
///
/// - Every undo and redo looks each target up again. A target that no longer resolves
///   is skipped, so a step whose targets are all gone changes nothing.
/// - Several targets (a multi-selection) change in one step; redo walks them in order,
///   undo backwards.
/// - Built with a merge id, a command absorbs the next one pushed on top of it when
///   that one has the same id, class and targets: the first before values and the last
///   after values remain, so the merged step is the net change of the gesture.
/// - When every after value equals its before value, at creation or after a merge, the
///   command is obsolete: the stack drops it, and without a stack it is not applied.
///
/// `Value` must be copyable and comparable with `==`.
template <typename Target, typename Value> class ChangeValue : public QUndoCommand
{
public:
    struct Change
    {
        Address address;
        Value before;
        Value after;
    };

    void undo() override
    {
        RigxData *document = nullptr;
        for (auto it = mChanges.rbegin(); it != mChanges.rend(); ++it)
            apply(*it, it->before, &document);
        if (document)
            changed(document);
    }

    void redo() override
    {
        RigxData *document = nullptr;
        for (const Change &change : mChanges)
            apply(change, change.after, &document);
        if (document)
            changed(document);
    }

    int id() const override { return int(mMergeId); }

    bool mergeWith(const QUndoCommand *other) override
    {
        const auto *next = dynamic_cast<const ChangeValue *>(other);
        if (!next || typeid(*next) != typeid(*this) || next->mChanges.size() != mChanges.size())
            return false;
        for (size_t i = 0; i < mChanges.size(); ++i) {
            if (next->mChanges[i].address != mChanges[i].address ||
                next->mChanges[i].address.document() != mChanges[i].address.document())
                return false;
        }
        for (size_t i = 0; i < mChanges.size(); ++i)
            mChanges[i].after = next->mChanges[i].after;
        setObsolete(isUnchanged());
        return true;
    }

    const std::vector<Change> &changes() const { return mChanges; }

protected:
    ChangeValue(const QString &text, std::vector<Change> changes, CommandId mergeId,
                QUndoCommand *parent)
        : QUndoCommand(text, parent)
        , mChanges(std::move(changes))
        , mMergeId(mergeId)
    {
        setObsolete(isUnchanged());
    }

    /// The target `address` names now; null when it does not resolve.
    virtual Target *target(const Address &address) const = 0;
    virtual void setValue(Target *target, const Value &value) const = 0;
    /// Called once after a step that reached a target, to tell the views.
    virtual void changed(RigxData *document) const { Q_UNUSED(document); }

private:
    void apply(const Change &change, const Value &value, RigxData **document)
    {
        if (Target *found = target(change.address)) {
            setValue(found, value);
            *document = change.address.document();
        }
    }

    bool isUnchanged() const
    {
        for (const Change &change : mChanges) {
            if (!(change.before == change.after))
                return false;
        }
        return true;
    }

    std::vector<Change> mChanges;
    CommandId mMergeId;
};

} // namespace Morvane
