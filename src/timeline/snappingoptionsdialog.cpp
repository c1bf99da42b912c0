// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/snappingoptionsdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace Morvane {

SnappingOptionsDialog::SnappingOptionsDialog(bool enabled, int intervalMs, bool framesAsUnits,
                                             QWidget *parent)
    : QDialog(parent)
    , mEnabled(new QCheckBox(tr("Snap key times"), this))
    , mInterval(new QSpinBox(this))
    , mFps(new QDoubleSpinBox(this))
    , mFrames(new QRadioButton(tr("Frames"), this))
    , mMilliseconds(new QRadioButton(tr("Milliseconds"), this))
{
    setWindowTitle(tr("Snapping Options"));
    setObjectName(QStringLiteral("snappingOptionsDialog"));
    mEnabled->setChecked(enabled);
    mInterval->setRange(1, 100000);
    mInterval->setSuffix(tr(" ms"));
    mInterval->setValue(std::max(1, intervalMs));
    mInterval->setObjectName(QStringLiteral("intervalField"));
    mFps->setRange(0.01, 1000.0);
    mFps->setDecimals(2);
    mFps->setValue(1000.0 / mInterval->value());
    mFps->setObjectName(QStringLiteral("fpsField"));
    mFrames->setChecked(framesAsUnits);
    mMilliseconds->setChecked(!framesAsUnits);

    connect(mInterval, &QSpinBox::valueChanged, this, [this](int ms) {
        if (mSyncing)
            return;
        mSyncing = true;
        mFps->setValue(1000.0 / ms);
        mSyncing = false;
        Q_EMIT intervalChanged(ms);
    });
    connect(mFps, &QDoubleSpinBox::valueChanged, this, [this](double fps) {
        if (mSyncing || !(fps > 0))
            return;
        mSyncing = true;
        mInterval->setValue(std::max(1, int(1000.0 / fps)));
        mSyncing = false;
        Q_EMIT intervalChanged(mInterval->value());
    });

    auto *form = new QFormLayout;
    form->addRow(mEnabled);
    form->addRow(tr("Interval:"), mInterval);
    form->addRow(tr("Frames per second:"), mFps);
    auto *units = new QHBoxLayout;
    units->addWidget(mFrames);
    units->addWidget(mMilliseconds);
    form->addRow(tr("Show times as:"), units);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

bool SnappingOptionsDialog::snappingEnabled() const
{
    return mEnabled->isChecked();
}

int SnappingOptionsDialog::interval() const
{
    return mInterval->value();
}

bool SnappingOptionsDialog::framesAsUnits() const
{
    return mFrames->isChecked();
}

} // namespace Morvane
