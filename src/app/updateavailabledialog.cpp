// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "updateavailabledialog.h"

#include "updateaddresses.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace Morvane {

UpdateAvailableDialog::UpdateAvailableDialog(QWidget *parent, bool allUpdates)
    : QDialog(parent)
    , mAllUpdates(allUpdates)
    , mDetails(new QTextBrowser(this))
    , mNetwork(new QNetworkAccessManager(this))
{
    setWindowTitle(tr("Update Available"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("A new version of Morvane is available for download!"), this));
    layout->addWidget(new QLabel(tr("Details:"), this));
    mDetails->setObjectName("details");
    mDetails->setOpenLinks(false);
    layout->addWidget(mDetails);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName("buttonBox");
    buttons->button(QDialogButtonBox::Ok)->setText(tr("Go to Download Page"));
    connect(buttons, &QDialogButtonBox::accepted, this, &UpdateAvailableDialog::on_buttonBox_accepted);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    resize(520, 400);

    QNetworkReply *reply = mNetwork->get(QNetworkRequest(UpdateAddresses::changeLog(allUpdates)));
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        if (reply->error() == QNetworkReply::NoError)
            mDetails->setPlainText(QString::fromUtf8(reply->readAll()));
    });
}

QString UpdateAvailableDialog::changeLogText() const
{
    return mDetails->toPlainText();
}

void UpdateAvailableDialog::on_buttonBox_accepted()
{
    QDesktopServices::openUrl(UpdateAddresses::downloadPage(mAllUpdates));
    accept();
}

} // namespace Morvane
