// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "morvanesettingsdialog.h"

#include "morvanesettings.h"
#include "updatecheckchoice.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>
#include <QTime>
#include <QTimeEdit>
#include <QVBoxLayout>

namespace Morvane {

MorvaneSettingsDialog::MorvaneSettingsDialog(QWidget *parent)
    : QDialog(parent)
    , mUpdateChoice(new UpdateCheckChoice(this))
    , mDownloadStatus(new QLabel(this))
    , mAutoSaveBox(new QGroupBox(tr("Enable AutoSave"), this))
    , mFrequency(new QTimeEdit(this))
{
    setWindowTitle(tr("Morvane Settings"));
    auto *tabs = new QTabWidget(this);

    auto *updates = new QWidget(tabs);
    auto *updatesLayout = new QVBoxLayout(updates);
    mUpdateChoice->setChoice(MorvaneSettings::updateCheckSettings);
    updatesLayout->addWidget(mUpdateChoice);
    auto *checkStable = new QPushButton(tr("Check for stable updates now"), updates);
    checkStable->setObjectName("checkStableButton");
    auto *checkAny = new QPushButton(tr("Check for stable or beta updates now"), updates);
    checkAny->setObjectName("checkAnyButton");
    updatesLayout->addWidget(checkStable);
    updatesLayout->addWidget(checkAny);
    mDownloadStatus->setObjectName("downloadStatus");
    updatesLayout->addWidget(mDownloadStatus);
    updatesLayout->addStretch();
    tabs->addTab(updates, tr("Program Updates"));
    connect(checkStable, &QPushButton::clicked, this,
            &MorvaneSettingsDialog::checkForStableUpdateRequested);
    connect(checkAny, &QPushButton::clicked, this,
            &MorvaneSettingsDialog::checkForAnyUpdateRequested);

    auto *autoSave = new QWidget(tabs);
    auto *autoSaveLayout = new QVBoxLayout(autoSave);
    mAutoSaveBox->setCheckable(true);
    mAutoSaveBox->setChecked(MorvaneSettings::autoSaveEnabled);
    auto *form = new QFormLayout(mAutoSaveBox);
    mFrequency->setDisplayFormat("HH:mm");
    const int interval = qBound(0, MorvaneSettings::autoSaveInterval, 23 * 60 + 59);
    mFrequency->setTime(QTime(interval / 60, interval % 60));
    form->addRow(tr("Frequency:"), mFrequency);
    auto *help = new QLabel(
        tr("Enable AutoSave to have Morvane automatically save a copy of your project to the "
           "project directory with the name format projectName.auto.rigx (or .rigj) at the "
           "frequencyl you set above (hours:minutes)"),
        mAutoSaveBox);
    help->setWordWrap(true);
    form->addRow(help);
    autoSaveLayout->addWidget(mAutoSaveBox);
    autoSaveLayout->addStretch();
    tabs->addTab(autoSave, tr("AutoSave"));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("Save Settings"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(buttons);
    resize(560, 360);
}

void MorvaneSettingsDialog::setDownloadStatus(const QString &text)
{
    mDownloadStatus->setText(text);
}

QString MorvaneSettingsDialog::downloadStatus() const
{
    return mDownloadStatus->text();
}

void MorvaneSettingsDialog::applyChoices()
{
    // With no radio checked the stored choice stays as it was.
    if (const int choice = mUpdateChoice->choice(); choice != 0)
        MorvaneSettings::updateCheckSettings = choice;
    const QTime frequency = mFrequency->time();
    MorvaneSettings::autoSaveInterval = frequency.hour() * 60 + frequency.minute();
    MorvaneSettings::autoSaveEnabled = mAutoSaveBox->isChecked();

    QSettings store;
    store.setValue("updateCheckSettings", MorvaneSettings::updateCheckSettings);
    store.setValue("autoSaveInterval", MorvaneSettings::autoSaveInterval);
    store.setValue("autoSaveEnabled", MorvaneSettings::autoSaveEnabled);
}

} // namespace Morvane
