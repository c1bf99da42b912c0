// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/doubleprogressdialog.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace Morvane {

DoubleProgressDialog::DoubleProgressDialog(const QString &cancelText, QWidget *parent)
    : QDialog(parent)
    , mOuterLabel(new QLabel(this))
    , mOuterBar(new QProgressBar(this))
    , mInnerLabel(new QLabel(this))
    , mInnerBar(new QProgressBar(this))
    , mCancel(new QPushButton(cancelText, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(mOuterLabel);
    layout->addWidget(mOuterBar);
    layout->addWidget(mInnerLabel);
    layout->addWidget(mInnerBar);
    layout->addWidget(mCancel, 0, Qt::AlignRight);
    connect(mCancel, &QPushButton::clicked, this, &DoubleProgressDialog::reject);
    setMinimumWidth(360);
}

void DoubleProgressDialog::setOuter(const QString &text, int value, int maximum)
{
    mOuterLabel->setText(text);
    mOuterBar->setRange(0, qMax(1, maximum));
    mOuterBar->setValue(value);
}

void DoubleProgressDialog::setInner(const QString &text, int value, int maximum)
{
    mInnerLabel->setText(text);
    mInnerBar->setRange(0, qMax(1, maximum));
    mInnerBar->setValue(value);
}

void DoubleProgressDialog::reject()
{
    // Stays open until the run notices: the frame being written finishes first.
    mCanceled = true;
    mCancel->setEnabled(false);
}

} // namespace Morvane
