// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/naming.h"

#include <QSet>

namespace Morvane {

QString uniqueName(const QString &name, const QStringList &existing)
{
    QString base = name;
    int number = -1; // no number yet: the first numbered candidate is _000
    if (name.size() >= 4 && name.at(name.size() - 4) == QLatin1Char('_')) {
        const QStringView digits = QStringView(name).right(3);
        bool allDigits = true;
        for (QChar c : digits)
            allDigits = allDigits && c.isDigit() && c.unicode() < 128;
        if (allDigits) {
            number = digits.toInt();
            base = name.left(name.size() - 4);
        }
    }

    const QSet<QString> taken(existing.begin(), existing.end());
    auto candidate = [&](int n) {
        return n < 0 ? base : paddedNumber(n, 3, base + QLatin1Char('_'));
    };
    QString result = candidate(number);
    while (taken.contains(result))
        result = candidate(++number);
    return result;
}

QString paddedNumber(qint64 number, int digits, const QString &prefix)
{
    QString text = QString::number(number < 0 ? -number : number);
    if (text.size() < digits)
        text.prepend(QString(digits - text.size(), QLatin1Char('0')));
    if (number < 0)
        text.prepend(QLatin1Char('-'));
    return prefix + text;
}

} // namespace Morvane
