// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/valuelineholder.h"

#include "meta/editvaluelineholdercommand.h"
#include "meta/metaowner.h"
#include "model/rigxdata.h"

#include <algorithm>

namespace Morvane {

namespace {

bool lineBefore(const ValLine &line, const LineId &id)
{
    if (line.type() != id.type)
        return int(line.type()) < int(id.type);
    return line.varId() < id.varId;
}

} // namespace

ValueLineHolder::ValueLineHolder(const ValueLineHolder &other)
    : mTagLine(other.mTagLine)
{
    mLines.reserve(other.mLines.size());
    for (const auto &line : other.mLines)
        mLines.push_back(line->clone());
}

ValueLineHolder &ValueLineHolder::operator=(const ValueLineHolder &other)
{
    if (this == &other)
        return *this;
    mTagLine = other.mTagLine;
    mLines.clear();
    for (const auto &line : other.mLines)
        mLines.push_back(line->clone());
    return *this;
}

ValLine *ValueLineHolder::line(const LineId &id) const
{
    if (id.isTagLine())
        return const_cast<TagLine *>(&mTagLine);
    const auto it =
        std::lower_bound(mLines.begin(), mLines.end(), id,
                         [](const auto &line, const LineId &i) { return lineBefore(*line, i); });
    if (it != mLines.end() && (*it)->type() == id.type && (*it)->varId() == id.varId)
        return it->get();
    return nullptr;
}

ValLine *ValueLineHolder::lineForEditing(const LineId &id)
{
    if (ValLine *existing = line(id))
        return existing;
    std::unique_ptr<ValLine> created = ValLine::create(id.type, id.varId);
    if (!created)
        return nullptr;
    const auto it =
        std::lower_bound(mLines.begin(), mLines.end(), id,
                         [](const auto &line, const LineId &i) { return lineBefore(*line, i); });
    return mLines.insert(it, std::move(created))->get();
}

ValLine *ValueLineHolder::lineAt(int index) const
{
    if (index < 0 || index >= lineCount())
        return nullptr;
    return mLines[size_t(index)].get();
}

QVariant ValueLineHolder::valueFromTime(const LineId &id, int time, int length, bool looping,
                                        const QVariant &defaultValue) const
{
    const ValLine *l = line(id);
    if (!l)
        return varValueForType(id.type, defaultValue);
    return l->valueFromTime(time, looping, defaultValue, length);
}

TagState ValueLineHolder::tagStateFromTime(int time, bool looping, const TagManager *manager) const
{
    return mTagLine.valFromTime(time, looping, manager);
}

void ValueLineHolder::offsetAllKeys(int offset)
{
    for (auto &l : mLines)
        l->offsetAllKeys(offset);
    mTagLine.offsetAllKeys(offset);
}

int ValueLineHolder::earliestTime() const
{
    bool any = false;
    int earliest = 0;
    auto consider = [&](const ValLine &l) {
        if (l.isEmpty())
            return;
        const int t = l.key(0)->time();
        if (!any || t < earliest)
            earliest = t;
        any = true;
    };
    for (const auto &l : mLines)
        consider(*l);
    consider(mTagLine);
    return any ? earliest : NoTime;
}

bool ValueLineHolder::anyValLinesHaveKeys() const
{
    if (!mTagLine.isEmpty())
        return true;
    return std::any_of(mLines.begin(), mLines.end(), [](const auto &l) { return !l->isEmpty(); });
}

void ValueLineHolder::clearAllKeys()
{
    mLines.clear();
    mTagLine.clearKeys();
}

bool ValueLineHolder::setKeyCommand(RigxData *document, const MetaOwner &owner, const LineId &id,
                                    std::unique_ptr<ValKey> key, int time)
{
    if (!key || key->type() != id.type)
        return false;
    ValueLineHolder after = *this;
    ValLine *target = after.lineForEditing(id);
    if (!target)
        return false;
    key->setTime(time);
    if (!target->setKey(std::move(key)))
        return false;
    if (after == *this)
        return false;
    commit(after, document, owner, QStringLiteral("key set"));
    return true;
}

bool ValueLineHolder::deleteKeyCommand(RigxData *document, const MetaOwner &owner,
                                       const LineTimeId &id)
{
    const ValLine *current = line(id.line);
    if (!current || !current->keyAtTime(id.time))
        return false;
    ValueLineHolder after = *this;
    after.line(id.line)->deleteKeyAtTime(id.time);
    commit(after, document, owner, QStringLiteral("key deleted"));
    return true;
}

bool ValueLineHolder::setKeyTimeCommand(RigxData *document, const MetaOwner &owner,
                                        const LineTimeId &id, int newTime)
{
    const ValLine *current = line(id.line);
    if (!current || !current->keyAtTime(id.time) || id.time == newTime)
        return false;
    ValueLineHolder after = *this;
    after.line(id.line)->setKeyTime(id.time, newTime);
    commit(after, document, owner, QStringLiteral("key time changed"));
    return true;
}

bool ValueLineHolder::createTweenedKeyAtTimeCommand(RigxData *document, const MetaOwner &owner,
                                                    const LineTimeId &id, bool looping,
                                                    const QVariant &defaultValue, int length)
{
    const ValLine *current = line(id.line);
    if (current && current->keyAtTime(id.time))
        return false;
    std::unique_ptr<ValKey> key;
    if (current) {
        key = current->createTempKeyFromTime(id.time, looping, defaultValue, length);
    } else {
        const QVariant value = varValueForType(id.line.type, defaultValue);
        key = ValKey::create(id.line.type, id.time, value);
    }
    return setKeyCommand(document, owner, id.line, std::move(key), id.time);
}

bool ValueLineHolder::clearAllKeysCommand(RigxData *document, const MetaOwner &owner)
{
    if (!anyValLinesHaveKeys())
        return false;
    ValueLineHolder after = *this;
    after.clearAllKeys();
    commit(after, document, owner, QStringLiteral("key deleted"));
    return true;
}

bool ValueLineHolder::operator==(const ValueLineHolder &other) const
{
    if (!mTagLine.equals(other.mTagLine))
        return false;
    auto nonEmpty = [](const ValueLineHolder &h) {
        std::vector<const ValLine *> lines;
        for (const auto &l : h.mLines) {
            if (!l->isEmpty())
                lines.push_back(l.get());
        }
        return lines;
    };
    const auto mine = nonEmpty(*this);
    const auto theirs = nonEmpty(other);
    if (mine.size() != theirs.size())
        return false;
    for (size_t i = 0; i < mine.size(); ++i) {
        if (!mine[i]->equals(*theirs[i]))
            return false;
    }
    return true;
}

void ValueLineHolder::commit(const ValueLineHolder &after, RigxData *document,
                             const MetaOwner &owner, const QString &text)
{
    if (document && owner.lineHolder(document) == this) {
        document->pushUndo(new EditValueLineHolderCommand(document, owner, *this, after, text));
        return;
    }
    *this = after;
}

} // namespace Morvane
