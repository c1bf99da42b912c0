// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QObject>
#include <QPointer>

class QNetworkAccessManager;
class QNetworkReply;
class QWidget;

namespace Morvane {

class MorvaneSettingsDialog;

// Asks the maker's site whether a newer build exists, on the stable channel or
// on all channels. A newer build opens the update dialog (parented to
// `window`); otherwise the result goes to the open settings dialog or, without
// one, out through statusMessage. The network manager is not owned.
class UpdateChecker : public QObject
{
    Q_OBJECT

public:
    UpdateChecker(QNetworkAccessManager *network, QWidget *window);

    // The settings dialog that shows results while it is open.
    void setSettingsDialog(MorvaneSettingsDialog *dialog) { mSettingsDialog = dialog; }
    bool checkingAllUpdates() const { return mCheckingAllUpdates; }

    void checkForAnyUpdate(MorvaneSettingsDialog *dialog);
    void checkForStableUpdate(MorvaneSettingsDialog *dialog);

public slots:
    // For the settings dialog's buttons: they report to that dialog.
    void checkForAnyUpdate() { checkForAnyUpdate(mSettingsDialog); }
    void checkForStableUpdate() { checkForStableUpdate(mSettingsDialog); }
    void fileDownloaded(QNetworkReply *reply);

signals:
    void statusMessage(const QString &text, int timeout);

private:
    void start(bool allUpdates, MorvaneSettingsDialog *dialog);

    QNetworkAccessManager *mNetwork;
    QWidget *mWindow;
    QPointer<MorvaneSettingsDialog> mSettingsDialog;
    bool mCheckingAllUpdates = false;
};

} // namespace Morvane
