// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "updatechecker.h"

#include "morvanesettingsdialog.h"
#include "updateaddresses.h"
#include "updateavailabledialog.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QWidget>

namespace Morvane {

UpdateChecker::UpdateChecker(QNetworkAccessManager *network, QWidget *window)
    : QObject(window)
    , mNetwork(network)
    , mWindow(window)
{
}

void UpdateChecker::checkForAnyUpdate(MorvaneSettingsDialog *dialog)
{
    start(true, dialog);
}

void UpdateChecker::checkForStableUpdate(MorvaneSettingsDialog *dialog)
{
    start(false, dialog);
}

void UpdateChecker::start(bool allUpdates, MorvaneSettingsDialog *dialog)
{
    if (dialog)
        dialog->setDownloadStatus(QString());
    mCheckingAllUpdates = allUpdates;
    mNetwork->get(QNetworkRequest(UpdateAddresses::checkPage(allUpdates)));
    // Connected anew on every check and never undone: a later reply reaches
    // the handler once per check made so far.
    connect(mNetwork, &QNetworkAccessManager::finished, this, &UpdateChecker::fileDownloaded);
}

void UpdateChecker::fileDownloaded(QNetworkReply *reply)
{
    const int date = UpdateAddresses::parseBuildDate(reply->readAll());
    reply->deleteLater();
    if (date >= UpdateAddresses::buildDate) {
        UpdateAvailableDialog dialog(mWindow, mCheckingAllUpdates);
        dialog.exec();
    } else if (mSettingsDialog) {
        mSettingsDialog->setDownloadStatus(tr("Update check successful.  No new updates."));
    } else {
        emit statusMessage(tr("Update check successful.  You already have the latest version."),
                           5000);
    }
}

} // namespace Morvane
