// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/animations/specialclonedialog.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

#include <cmath>

namespace Morvane {

SpecialCloneDialog::SpecialCloneDialog(const QString &name, int length, QWidget *parent)
    : QDialog(parent)
    , mLength(length)
    , mName(new QLineEdit(name, this))
    , mSpeed(new QDoubleSpinBox(this))
    , mHold(new QSpinBox(this))
    , mPreview(new QLabel(this))
{
    setWindowTitle(tr("Special Clone"));
    mName->setObjectName(QStringLiteral("nameEdit"));
    mName->setToolTip(tr("Name of the copy; made unique among the entity's animations"));
    mSpeed->setObjectName(QStringLiteral("speedSpin"));
    mSpeed->setRange(0.05, 20.0);
    mSpeed->setDecimals(2);
    mSpeed->setSingleStep(0.25);
    mSpeed->setValue(1.0);
    mSpeed->setSuffix(tr(" x"));
    mSpeed->setToolTip(tr("How many times as fast the copy plays: every key time and the length "
                          "are divided by it, so 2 gives a copy twice as fast and half as long, "
                          "0.5 one half as fast and twice as long"));
    mHold->setObjectName(QStringLiteral("holdSpin"));
    mHold->setRange(0, 600000);
    mHold->setSuffix(tr(" ms"));
    mHold->setToolTip(tr("Milliseconds the copy holds its first pose before it moves: every key "
                         "after the first one comes this much later, and the length grows by it"));
    mPreview->setObjectName(QStringLiteral("previewLabel"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *form = new QFormLayout(this);
    form->addRow(tr("Name"), mName);
    form->addRow(tr("Speed"), mSpeed);
    form->addRow(tr("Hold start"), mHold);
    form->addRow(mPreview);
    form->addRow(buttons);
    connect(mSpeed, &QDoubleSpinBox::valueChanged, this, &SpecialCloneDialog::updatePreview);
    connect(mHold, &QSpinBox::valueChanged, this, &SpecialCloneDialog::updatePreview);
    updatePreview();
}

QString SpecialCloneDialog::name() const
{
    return mName->text();
}

double SpecialCloneDialog::speed() const
{
    return mSpeed->value();
}

int SpecialCloneDialog::hold() const
{
    return mHold->value();
}

void SpecialCloneDialog::updatePreview()
{
    const int length = int(std::round(mLength / speed())) + hold();
    mPreview->setText(tr("Length: %1 ms becomes %2 ms").arg(mLength).arg(length));
}

} // namespace Morvane
