// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/valkey.h"

namespace Morvane {

namespace {

bool sameCurve(const TweenInfo &a, const TweenInfo &b)
{
    if (a.curveType() != b.curveType() || a.cCount() != b.cCount())
        return false;
    for (int i = 0; i < a.cCount(); ++i) {
        if (a.cAt(i) != b.cAt(i))
            return false;
    }
    return true;
}

} // namespace

std::unique_ptr<ValKey> ValKey::create(VarType type, int time, const QVariant &value)
{
    std::unique_ptr<ValKey> key;
    switch (type) {
    case VarType::Int:
        key = std::make_unique<IntKey>(time);
        break;
    case VarType::Float:
        key = std::make_unique<FloatKey>(time);
        break;
    case VarType::String:
        key = std::make_unique<StringKey>(time);
        break;
    case VarType::Tag:
        key = std::make_unique<TagKey>(time);
        break;
    case VarType::Cluster:
        key = std::make_unique<ClusterKey>(time);
        break;
    case VarType::Invalid:
        return nullptr;
    }
    if (value.isValid())
        key->setValue(value);
    return key;
}

bool ValKey::equals(const ValKey &other) const
{
    return type() == other.type() && mTime == other.mTime && mId == other.mId &&
           value() == other.value() && sameCurve(mCurve, other.mCurve);
}

void IntKey::setValue(const QVariant &value)
{
    mValue = varValueForType(VarType::Int, value).toInt();
}

void FloatKey::setValue(const QVariant &value)
{
    mValue = varValueForType(VarType::Float, value).toDouble();
}

void TagKey::setValue(const QVariant &value)
{
    mState.setIds(value.value<QList<int>>());
}

} // namespace Morvane
