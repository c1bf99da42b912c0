// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>

class QNetworkAccessManager;
class QTextBrowser;

namespace Morvane {

// Announces a newer build with the change log of its channel. Accepting opens
// the download page of that channel in the desktop's browser.
class UpdateAvailableDialog : public QDialog
{
    Q_OBJECT

public:
    UpdateAvailableDialog(QWidget *parent, bool allUpdates);

    bool allUpdates() const { return mAllUpdates; }
    QString changeLogText() const;

private slots:
    void on_buttonBox_accepted();

private:
    bool mAllUpdates;
    QTextBrowser *mDetails;
    // Its own manager: the window's manager routes every reply to the update
    // check handler.
    QNetworkAccessManager *mNetwork;
};

} // namespace Morvane
