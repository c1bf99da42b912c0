// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/animations/namecleaning.h"

namespace Morvane {

QString cleanedName(const QString &typed)
{
    QString name;
    name.reserve(typed.size());
    for (const QChar c : typed)
        name.append(c.category() == QChar::Other_Control || c.category() == QChar::Other_Format
                            || c == QChar::LineSeparator || c == QChar::ParagraphSeparator
                        ? QChar(u' ')
                        : c);
    name = name.trimmed();
    if (name.size() > MaxNameLength) {
        name.truncate(MaxNameLength);
        // Never leave half of a surrogate pair behind.
        if (name.back().isHighSurrogate())
            name.chop(1);
        name = name.trimmed();
    }
    return name;
}

QString cleanedFileName(const QString &typed)
{
    const QString name = cleanedName(typed);
    if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\'))
        || name == QLatin1String(".") || name == QLatin1String("..")
        || name.startsWith(QLatin1Char('<')))
        return QString();
    return name;
}

} // namespace Morvane
