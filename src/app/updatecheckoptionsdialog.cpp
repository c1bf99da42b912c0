// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "updatecheckoptionsdialog.h"

#include "morvanesettings.h"
#include "updatecheckchoice.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

namespace Morvane {

UpdateCheckOptionsDialog::UpdateCheckOptionsDialog(QWidget *parent)
    : QDialog(parent)
    , mChoice(new UpdateCheckChoice(this))
{
    setWindowTitle(tr("Automatic Update Settings"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(mChoice);
    auto *note = new QLabel(tr("You can manually check for updates or change your automatic "
                               "update settings later under 'Settings...' in the 'Edit' Menu"),
                            this);
    note->setWordWrap(true);
    layout->addWidget(note);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    QPushButton *ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(tr("Save Settings"));
    // Saving nothing would only bring the question back at the next start.
    ok->setEnabled(false);
    connect(mChoice, &UpdateCheckChoice::choiceChanged, ok, [ok] { ok->setEnabled(true); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    layout->addWidget(buttons);
}

void UpdateCheckOptionsDialog::accept()
{
    if (const int choice = mChoice->choice(); choice != 0) {
        MorvaneSettings::updateCheckSettings = choice;
        QSettings().setValue("updateCheckSettings", choice);
    }
    QDialog::accept();
}

} // namespace Morvane
