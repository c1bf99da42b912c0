// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "meta/tag.h"

namespace Morvane {

int Tag::currentUniqueId = 0;

Tag::Tag(const QString &name, int uid)
    : mUid(uid < 0 ? currentUniqueId++ : uid)
    , mName(name)
{
}

Tag::Tag(InvalidMarker)
    : mUid(InvalidId)
{
}

Tag Tag::invalidTag()
{
    return Tag(InvalidMarker{});
}

} // namespace Morvane
