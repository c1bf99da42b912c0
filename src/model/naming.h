// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>
#include <QStringList>

namespace Morvane {

/// Makes `name` unique among `existing` with "_" and a three-digit counter:
/// bone stays bone when free, then bone_000, bone_001; a name that already
/// ends in "_" and three digits counts on from them (arm_007 -> arm_008).
QString uniqueName(const QString &name, const QStringList &existing);

/// `prefix` followed by the decimal text of `number`, left-padded with "0" to
/// at least `digits` digits (a minus sign stays in front of the padding).
QString paddedNumber(qint64 number, int digits, const QString &prefix = QString());

} // namespace Morvane
