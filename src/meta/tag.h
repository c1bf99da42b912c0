// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>

namespace Morvane {

/// A project-wide label that animations and objects switch on and off over
/// time. Keys refer to tags by uid only, so renaming changes no key.
class Tag
{
public:
    /// The uid of the invalid tag that lookups return when they find nothing.
    static constexpr int InvalidId = -32000;
    /// Process-wide uid counter, incremented on each use, never reset.
    static int currentUniqueId;

    /// A negative `uid` takes the next counter value; 0 or more is kept.
    explicit Tag(const QString &name = QString(), int uid = -1);
    static Tag invalidTag();

    int uid() const { return mUid; }
    QString name() const { return mName; }
    void rename(const QString &name) { mName = name; }
    bool isValid() const { return mUid != InvalidId; }

    bool operator==(const Tag &other) const { return mUid == other.mUid && mName == other.mName; }
    bool operator!=(const Tag &other) const { return !(*this == other); }

private:
    struct InvalidMarker
    {
    };
    explicit Tag(InvalidMarker);

    int mUid;
    QString mName;
};

} // namespace Morvane
