// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "updateaddresses.h"

#include <QSettings>

namespace Morvane {

QUrl UpdateAddresses::base()
{
    QString text = qEnvironmentVariable("MORVANE_UPDATE_URL");
    if (text.isEmpty())
        text = QSettings().value("updateBaseUrl").toString();
    if (text.isEmpty())
        text = QStringLiteral("https://updates.tallowcraft.example/morvane/");
    if (!text.endsWith(QLatin1Char('/')))
        text.append(QLatin1Char('/'));
    return QUrl(text);
}

QUrl UpdateAddresses::checkPage(bool allUpdates)
{
    return base().resolved(QUrl(allUpdates ? QStringLiteral("updates/all.txt")
                                           : QStringLiteral("updates/stable.txt")));
}

QUrl UpdateAddresses::changeLog(bool allUpdates)
{
    return base().resolved(QUrl(allUpdates ? QStringLiteral("updates/changes-all.txt")
                                           : QStringLiteral("updates/changes-stable.txt")));
}

QUrl UpdateAddresses::downloadPage(bool beta)
{
    return base().resolved(QUrl(beta ? QStringLiteral("download/beta.html")
                                     : QStringLiteral("download/stable.html")));
}

int UpdateAddresses::parseBuildDate(const QByteArray &body)
{
    const int zero = body.indexOf('\0');
    const QByteArray text = zero >= 0 ? body.left(zero) : body;
    bool ok = false;
    const int value = text.toInt(&ok, 10);
    return ok ? value : 0;
}

} // namespace Morvane
