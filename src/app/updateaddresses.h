// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QUrl>

namespace Morvane {

// The six web addresses of the update check. They all hang off one base
// address, which the environment variable MORVANE_UPDATE_URL or the settings
// key "updateBaseUrl" can replace (tests point it at a local server).
class UpdateAddresses
{
public:
    // This build's date; a check page holding this number or more means a
    // newer build is out.
    static constexpr int buildDate = 20150425;

    static QUrl base();
    static QUrl checkPage(bool allUpdates);
    static QUrl changeLog(bool allUpdates);
    static QUrl downloadPage(bool beta);

    // The build date written on a check page: the text up to the first zero
    // byte, read as a base-10 integer; anything unparsable gives 0.
    static int parseBuildDate(const QByteArray &body);
};

} // namespace Morvane
