// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/tweeninfo.h"
#include "meta/tagstate.h"
#include "meta/vartype.h"

#include <QString>
#include <QVariant>

#include <memory>

namespace Morvane {

/// One key of a value line: a time in milliseconds, a key id (its position in
/// the line once sorted) and, for int and float keys, the curve toward the
/// next key. The kinds below hold the value.
class ValKey
{
public:
    explicit ValKey(int time = 0)
        : mTime(time)
    {
    }
    virtual ~ValKey() = default;

    virtual VarType type() const = 0;
    virtual std::unique_ptr<ValKey> clone() const = 0;
    /// The value as a variant: int, double, QString, the tag uids as
    /// QList<int>, or a cluster's QVariantList.
    virtual QVariant value() const = 0;
    /// Takes `value` converted to the key's kind.
    virtual void setValue(const QVariant &value) = 0;
    /// Whether the key blends toward the next one (int and float keys).
    virtual bool isTweenable() const { return false; }

    /// A new key of `type` at `time` holding `value`; null for an invalid type.
    static std::unique_ptr<ValKey> create(VarType type, int time, const QVariant &value = {});

    int time() const { return mTime; }
    void setTime(int time) { mTime = time; }
    int id() const { return mId; }
    void setId(int id) { mId = id; }
    const TweenInfo &curve() const { return mCurve; }
    void setCurve(const TweenInfo &curve) { mCurve = curve; }

    /// Same kind, time, id, value and curve (curves compared by type and
    /// parameters, unlike `TweenInfo::operator==`).
    bool equals(const ValKey &other) const;

private:
    int mTime = 0;
    int mId = -1;
    TweenInfo mCurve;
};

class IntKey : public ValKey
{
public:
    explicit IntKey(int time = 0, qint32 value = 0)
        : ValKey(time)
        , mValue(value)
    {
    }
    VarType type() const override { return VarType::Int; }
    std::unique_ptr<ValKey> clone() const override { return std::make_unique<IntKey>(*this); }
    QVariant value() const override { return QVariant(mValue); }
    void setValue(const QVariant &value) override;
    bool isTweenable() const override { return true; }
    qint32 intValue() const { return mValue; }

private:
    qint32 mValue = 0;
};

class FloatKey : public ValKey
{
public:
    explicit FloatKey(int time = 0, double value = 0.0)
        : ValKey(time)
        , mValue(value)
    {
    }
    VarType type() const override { return VarType::Float; }
    std::unique_ptr<ValKey> clone() const override { return std::make_unique<FloatKey>(*this); }
    QVariant value() const override { return QVariant(mValue); }
    void setValue(const QVariant &value) override;
    bool isTweenable() const override { return true; }
    double floatValue() const { return mValue; }

private:
    double mValue = 0.0;
};

class StringKey : public ValKey
{
public:
    explicit StringKey(int time = 0, const QString &value = QString())
        : ValKey(time)
        , mValue(value)
    {
    }
    VarType type() const override { return VarType::String; }
    std::unique_ptr<ValKey> clone() const override { return std::make_unique<StringKey>(*this); }
    QVariant value() const override { return QVariant(mValue); }
    void setValue(const QVariant &value) override { mValue = value.toString(); }
    QString stringValue() const { return mValue; }

private:
    QString mValue;
};

/// The tags active from this key's time on.
class TagKey : public ValKey
{
public:
    explicit TagKey(int time = 0, const TagState &state = TagState())
        : ValKey(time)
        , mState(state)
    {
    }
    VarType type() const override { return VarType::Tag; }
    std::unique_ptr<ValKey> clone() const override { return std::make_unique<TagKey>(*this); }
    QVariant value() const override { return QVariant::fromValue(mState.ids()); }
    void setValue(const QVariant &value) override;
    const TagState &state() const { return mState; }
    TagState &state() { return mState; }

private:
    TagState mState;
};

/// Several values under one key. Only stored: a cluster's evaluation is not
/// defined yet, so its line always yields the default.
class ClusterKey : public ValKey
{
public:
    explicit ClusterKey(int time = 0, const QVariantList &values = {})
        : ValKey(time)
        , mValues(values)
    {
    }
    VarType type() const override { return VarType::Cluster; }
    std::unique_ptr<ValKey> clone() const override { return std::make_unique<ClusterKey>(*this); }
    QVariant value() const override { return QVariant(mValues); }
    void setValue(const QVariant &value) override { mValues = value.toList(); }

private:
    QVariantList mValues;
};

} // namespace Morvane
