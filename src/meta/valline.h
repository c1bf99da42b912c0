// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/valkey.h"

#include <memory>
#include <vector>

namespace Morvane {

class TagManager;

/// The keys of one variable (or of the tags) of one owner in one animation,
/// sorted by time; at most one key per time. Owns its keys; key ids are kept
/// equal to their positions.
class ValLine
{
public:
    explicit ValLine(int varId = -1)
        : mVarId(varId)
    {
    }
    ValLine(const ValLine &other);
    ValLine &operator=(const ValLine &other);
    virtual ~ValLine() = default;

    /// A new empty line of `type` for variable `varId`; null for an invalid type.
    static std::unique_ptr<ValLine> create(VarType type, int varId);

    virtual VarType type() const = 0;
    virtual std::unique_ptr<ValLine> clone() const = 0;

    /// The value at `time` (milliseconds) of an animation `length` long; the
    /// variant of the line's kind. `defaultValue` is the variable's default.
    virtual QVariant valueFromTime(int time, bool looping, const QVariant &defaultValue,
                                   int length) const = 0;
    /// A new key of the line's kind at `time` holding the line's value there,
    /// so that inserting it changes nothing that is shown.
    virtual std::unique_ptr<ValKey>
    createTempKeyFromTime(int time, bool looping, const QVariant &defaultValue, int length) const;

    int varId() const { return mVarId; }
    void setVarId(int id) { mVarId = id; }

    int keyCount() const { return int(mKeys.size()); }
    bool isEmpty() const { return mKeys.empty(); }
    /// Null when out of range.
    ValKey *key(int index) const;
    /// The key standing exactly at `time`, or null.
    ValKey *keyAtTime(int time) const;
    int indexOfKeyAtTime(int time) const;

    /// Takes `key` in at its time, replacing a key already there. Refused
    /// (false, key dropped) when the key is null or of another kind.
    bool setKey(std::unique_ptr<ValKey> key);
    /// Replaces all keys by `keys` in any order (of keys sharing a time the
    /// last wins; null keys and keys of another kind are dropped). Sorts once,
    /// so readers use it for long lines.
    void setKeys(std::vector<std::unique_ptr<ValKey>> keys);
    bool deleteKeyAtTime(int time);
    /// Moves the key at `from` to `to`, replacing a key standing at `to`.
    bool setKeyTime(int from, int to);
    /// Moves every key by `offset` ms (times saturate at the int range).
    void offsetAllKeys(int offset);
    void clearKeys() { mKeys.clear(); }

    /// Same kind, variable, and keys.
    bool equals(const ValLine &other) const;

protected:
    /// Stepping rule of string and tag lines: the index of the key in force at
    /// `time` (the last at or before it; before the first key, the last key
    /// when looping); -1 when none is.
    int stepIndexFromTime(int time, bool looping) const;

private:
    std::vector<std::unique_ptr<ValKey>>::const_iterator lowerBound(int time) const;
    void normalize();
    void renumberFrom(size_t index);

    int mVarId = -1;
    std::vector<std::unique_ptr<ValKey>> mKeys;
};

/// Common base of the lines whose keys blend (int and float).
class TweenableLine : public ValLine
{
public:
    using ValLine::ValLine;

    /// The keys around `time` and the eased ratio between them. `a` and `b`
    /// stay null (ratio 0) on an empty line; `b` stays null when the value is
    /// `a`'s alone. In a looping animation the pair wraps from the last key to
    /// the first.
    void valKeyAAndBFromTime(int time, int length, bool looping, const ValKey **a, const ValKey **b,
                             double *ratio) const;
    std::unique_ptr<ValKey> createTempKeyFromTime(int time, bool looping,
                                                  const QVariant &defaultValue,
                                                  int length) const override;

protected:
    /// The blended value; false when the line has no key.
    bool blendedValue(int time, int length, bool looping, double *value) const;
};

class IntLine : public TweenableLine
{
public:
    using TweenableLine::TweenableLine;
    VarType type() const override { return VarType::Int; }
    std::unique_ptr<ValLine> clone() const override { return std::make_unique<IntLine>(*this); }
    /// Outside 0..length the default (int lines only); else the blend
    /// truncated toward zero.
    QVariant valueFromTime(int time, bool looping, const QVariant &defaultValue,
                           int length) const override;
    int valFromTime(int time, bool looping, int defaultValue, int length) const;
};

class FloatLine : public TweenableLine
{
public:
    using TweenableLine::TweenableLine;
    VarType type() const override { return VarType::Float; }
    std::unique_ptr<ValLine> clone() const override { return std::make_unique<FloatLine>(*this); }
    QVariant valueFromTime(int time, bool looping, const QVariant &defaultValue,
                           int length) const override;
    double valFromTime(int time, bool looping, double defaultValue, int length) const;
};

class StringLine : public ValLine
{
public:
    using ValLine::ValLine;
    VarType type() const override { return VarType::String; }
    std::unique_ptr<ValLine> clone() const override { return std::make_unique<StringLine>(*this); }
    QVariant valueFromTime(int time, bool looping, const QVariant &defaultValue,
                           int length) const override;
    QString valFromTime(int time, bool looping, const QString &defaultValue) const;
};

/// The tags of one owner over time; keys are steps.
class TagLine : public ValLine
{
public:
    TagLine()
        : ValLine(-1)
    {
    }
    VarType type() const override { return VarType::Tag; }
    std::unique_ptr<ValLine> clone() const override { return std::make_unique<TagLine>(*this); }
    /// The active uids as QList<int>.
    QVariant valueFromTime(int time, bool looping, const QVariant &defaultValue,
                           int length) const override;
    /// The empty set on an empty line, and before the first key unless looping.
    TagState valFromTime(int time, bool looping, const TagManager *manager = nullptr) const;
};

/// Stores its keys; evaluation of clusters is not defined yet, so it yields
/// the default.
class ClusterLine : public ValLine
{
public:
    using ValLine::ValLine;
    VarType type() const override { return VarType::Cluster; }
    std::unique_ptr<ValLine> clone() const override { return std::make_unique<ClusterLine>(*this); }
    QVariant valueFromTime(int time, bool looping, const QVariant &defaultValue,
                           int length) const override;
};

} // namespace Morvane
