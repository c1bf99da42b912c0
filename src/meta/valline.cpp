// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/valline.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Morvane {

ValLine::ValLine(const ValLine &other)
    : mVarId(other.mVarId)
{
    mKeys.reserve(other.mKeys.size());
    for (const auto &key : other.mKeys)
        mKeys.push_back(key->clone());
}

ValLine &ValLine::operator=(const ValLine &other)
{
    if (this == &other)
        return *this;
    mVarId = other.mVarId;
    mKeys.clear();
    for (const auto &key : other.mKeys)
        mKeys.push_back(key->clone());
    return *this;
}

std::unique_ptr<ValLine> ValLine::create(VarType type, int varId)
{
    switch (type) {
    case VarType::Int:
        return std::make_unique<IntLine>(varId);
    case VarType::Float:
        return std::make_unique<FloatLine>(varId);
    case VarType::String:
        return std::make_unique<StringLine>(varId);
    case VarType::Tag:
        return std::make_unique<TagLine>();
    case VarType::Cluster:
        return std::make_unique<ClusterLine>(varId);
    case VarType::Invalid:
        break;
    }
    return nullptr;
}

std::unique_ptr<ValKey> ValLine::createTempKeyFromTime(int time, bool looping,
                                                       const QVariant &defaultValue,
                                                       int length) const
{
    return ValKey::create(type(), time, valueFromTime(time, looping, defaultValue, length));
}

ValKey *ValLine::key(int index) const
{
    if (index < 0 || index >= keyCount())
        return nullptr;
    return mKeys[size_t(index)].get();
}

ValKey *ValLine::keyAtTime(int time) const
{
    return key(indexOfKeyAtTime(time));
}

std::vector<std::unique_ptr<ValKey>>::const_iterator ValLine::lowerBound(int time) const
{
    return std::lower_bound(mKeys.begin(), mKeys.end(), time,
                            [](const auto &key, int t) { return key->time() < t; });
}

int ValLine::indexOfKeyAtTime(int time) const
{
    const auto it = lowerBound(time);
    if (it == mKeys.end() || (*it)->time() != time)
        return -1;
    return int(it - mKeys.begin());
}

bool ValLine::setKey(std::unique_ptr<ValKey> key)
{
    if (!key || key->type() != type())
        return false;
    const size_t index = size_t(lowerBound(key->time()) - mKeys.begin());
    if (index < mKeys.size() && mKeys[index]->time() == key->time()) {
        key->setId(int(index));
        mKeys[index] = std::move(key);
        return true;
    }
    mKeys.insert(mKeys.begin() + std::ptrdiff_t(index), std::move(key));
    renumberFrom(index);
    return true;
}

void ValLine::setKeys(std::vector<std::unique_ptr<ValKey>> keys)
{
    mKeys.clear();
    mKeys.reserve(keys.size());
    for (auto &key : keys) {
        if (key && key->type() == type())
            mKeys.push_back(std::move(key));
    }
    normalize();
}

bool ValLine::deleteKeyAtTime(int time)
{
    const int index = indexOfKeyAtTime(time);
    if (index < 0)
        return false;
    mKeys.erase(mKeys.begin() + index);
    renumberFrom(size_t(index));
    return true;
}

bool ValLine::setKeyTime(int from, int to)
{
    const int index = indexOfKeyAtTime(from);
    if (index < 0)
        return false;
    if (from == to)
        return true;
    std::unique_ptr<ValKey> moving = std::move(mKeys[size_t(index)]);
    mKeys.erase(mKeys.begin() + index);
    moving->setTime(to);
    return setKey(std::move(moving));
}

void ValLine::offsetAllKeys(int offset)
{
    // Saturate instead of overflowing; keys pushed onto the same time merge.
    for (auto &key : mKeys) {
        const qint64 time = qint64(key->time()) + offset;
        key->setTime(int(std::clamp<qint64>(time, std::numeric_limits<int>::min(),
                                            std::numeric_limits<int>::max())));
    }
    normalize();
}

bool ValLine::equals(const ValLine &other) const
{
    if (type() != other.type() || mVarId != other.mVarId || keyCount() != other.keyCount())
        return false;
    for (size_t i = 0; i < mKeys.size(); ++i) {
        if (!mKeys[i]->equals(*other.mKeys[i]))
            return false;
    }
    return true;
}

int ValLine::stepIndexFromTime(int time, bool looping) const
{
    if (mKeys.empty())
        return -1;
    int found = -1;
    for (int i = 0; i < keyCount(); ++i) {
        if (mKeys[size_t(i)]->time() <= time)
            found = i;
        else
            break;
    }
    if (found < 0 && looping)
        found = keyCount() - 1; // before the first key the state wraps from the end
    return found;
}

void ValLine::normalize()
{
    std::stable_sort(mKeys.begin(), mKeys.end(),
                     [](const auto &a, const auto &b) { return a->time() < b->time(); });
    // Of keys sharing a time the last one given wins.
    std::vector<std::unique_ptr<ValKey>> kept;
    kept.reserve(mKeys.size());
    for (auto &key : mKeys) {
        if (!kept.empty() && kept.back()->time() == key->time())
            kept.back() = std::move(key);
        else
            kept.push_back(std::move(key));
    }
    mKeys = std::move(kept);
    renumberFrom(0);
}

void ValLine::renumberFrom(size_t index)
{
    for (size_t i = index; i < mKeys.size(); ++i)
        mKeys[i]->setId(int(i));
}

void TweenableLine::valKeyAAndBFromTime(int time, int length, bool looping, const ValKey **a,
                                        const ValKey **b, double *ratio) const
{
    *a = nullptr;
    *b = nullptr;
    *ratio = 0.0;
    const int count = keyCount();
    if (count == 0)
        return;

    bool later = false;
    for (int i = 0; i < count; ++i) {
        if (key(i)->time() <= time)
            continue;
        later = true;
        if (i > 0) {
            *b = key(i);
            *a = key(i - 1);
        } else if (count < 2 || !looping) {
            *a = key(0);
        } else {
            // Before every key of a looping animation: blend from the last key
            // across the loop point.
            *b = key(0);
            *a = key(count - 1);
        }
        break;
    }
    if (!later) {
        *a = key(count - 1);
        if (looping && count > 1)
            *b = key(0);
    }

    if (*a && *b) {
        // 64-bit sums: lengths and times come from files.
        const qint64 aT = (*a)->time();
        qint64 bT = (*b)->time();
        if (bT < aT)
            bT += length;
        if (bT == aT) {
            *ratio = (*a)->curve().trueT(0.0);
        } else {
            qint64 t = time;
            if (t < aT)
                t += length;
            *ratio = (*a)->curve().trueT(double(t - aT) / double(bT - aT));
        }
    }
}

bool TweenableLine::blendedValue(int time, int length, bool looping, double *value) const
{
    const ValKey *a = nullptr;
    const ValKey *b = nullptr;
    double ratio = 0.0;
    valKeyAAndBFromTime(time, length, looping, &a, &b, &ratio);
    if (!a)
        return false;
    const double av = a->value().toDouble();
    if (!b) {
        *value = av;
        return true;
    }
    const double bv = b->value().toDouble();
    *value = av + (bv - av) * ratio;
    return true;
}

std::unique_ptr<ValKey> TweenableLine::createTempKeyFromTime(int time, bool looping,
                                                             const QVariant &defaultValue,
                                                             int length) const
{
    std::unique_ptr<ValKey> key =
        ValLine::createTempKeyFromTime(time, looping, defaultValue, length);
    // The new key splits the segment it lands in, so it keeps that segment's curve.
    const ValKey *a = nullptr;
    const ValKey *b = nullptr;
    double ratio = 0.0;
    valKeyAAndBFromTime(time, length, looping, &a, &b, &ratio);
    if (key && a)
        key->setCurve(a->curve());
    return key;
}

int IntLine::valFromTime(int time, bool looping, int defaultValue, int length) const
{
    if (time < 0 || time > length)
        return defaultValue;
    double value = 0.0;
    if (!blendedValue(time, length, looping, &value))
        return defaultValue;
    return varValueForType(VarType::Int, value).toInt();
}

QVariant IntLine::valueFromTime(int time, bool looping, const QVariant &defaultValue,
                                int length) const
{
    const int def = varValueForType(VarType::Int, defaultValue).toInt();
    return QVariant(valFromTime(time, looping, def, length));
}

double FloatLine::valFromTime(int time, bool looping, double defaultValue, int length) const
{
    double value = 0.0;
    if (!blendedValue(time, length, looping, &value))
        return defaultValue;
    return value;
}

QVariant FloatLine::valueFromTime(int time, bool looping, const QVariant &defaultValue,
                                  int length) const
{
    const double def = varValueForType(VarType::Float, defaultValue).toDouble();
    return QVariant(valFromTime(time, looping, def, length));
}

QString StringLine::valFromTime(int time, bool looping, const QString &defaultValue) const
{
    const ValKey *k = key(stepIndexFromTime(time, looping));
    return k ? k->value().toString() : defaultValue;
}

QVariant StringLine::valueFromTime(int time, bool looping, const QVariant &defaultValue,
                                   int length) const
{
    Q_UNUSED(length);
    return QVariant(valFromTime(time, looping, defaultValue.toString()));
}

TagState TagLine::valFromTime(int time, bool looping, const TagManager *manager) const
{
    const ValKey *k = key(stepIndexFromTime(time, looping));
    TagState state = k ? static_cast<const TagKey *>(k)->state() : TagState();
    state.setManager(manager);
    return state;
}

QVariant TagLine::valueFromTime(int time, bool looping, const QVariant &defaultValue,
                                int length) const
{
    Q_UNUSED(defaultValue);
    Q_UNUSED(length);
    return QVariant::fromValue(valFromTime(time, looping).ids());
}

QVariant ClusterLine::valueFromTime(int time, bool looping, const QVariant &defaultValue,
                                    int length) const
{
    Q_UNUSED(time);
    Q_UNUSED(looping);
    Q_UNUSED(length);
    return defaultValue;
}

} // namespace Morvane
