// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "saveoptionsdialog.h"

#include "morvanesettings.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

namespace Morvane {

SaveOptionsDialog::SaveOptionsDialog(QWidget *parent)
    : QDialog(parent)
    , mPrettifyXml(new QCheckBox(tr("Prettify XML"), this))
    , mPrettifyJson(new QCheckBox(tr("Prettify Json"), this))
    , mSpriteFrameData(new QCheckBox(tr("Save sprite object/frame data in obj_info tags"), this))
    , mAbsolutePose(new QCheckBox(tr("Save initial animation position as absolute values"), this))
    , mUniqueNames(
          new QCheckBox(tr("Make object names in obj_info tags unique to the entire file"), this))
{
    setWindowTitle(tr("Custom Save Options"));
    setAttribute(Qt::WA_DeleteOnClose);

    // Opening the dialog also writes the OpenGL choice back unchanged.
    QSettings().setValue("openGLEnabled", MorvaneSettings::openGLEnabled);

    mPrettifyXml->setChecked(MorvaneSettings::prettifyXML);
    mPrettifyJson->setChecked(MorvaneSettings::prettifyJson);
    mSpriteFrameData->setChecked(MorvaneSettings::saveSpriteFrameData);
    mAbsolutePose->setChecked(MorvaneSettings::saveAbsoluteAnimationPoseData);
    mUniqueNames->setChecked(MorvaneSettings::saveObjInfoNamesUniqueToFile);

    auto *formatting = new QGroupBox(tr("Save Formatting"), this);
    auto *formattingLayout = new QVBoxLayout(formatting);
    formattingLayout->addWidget(mPrettifyXml);
    formattingLayout->addWidget(mPrettifyJson);

    auto *extras = new QGroupBox(tr("Additional Data for Authoring Tools"), this);
    auto *extrasLayout = new QVBoxLayout(extras);
    extrasLayout->addWidget(mSpriteFrameData);
    extrasLayout->addWidget(mAbsolutePose);
    extrasLayout->addWidget(mUniqueNames);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Apply | QDialogButtonBox::Cancel, this);
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            &SaveOptionsDialog::apply);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(formatting);
    layout->addWidget(extras);
    layout->addWidget(buttons);
}

void SaveOptionsDialog::apply()
{
    MorvaneSettings::prettifyXML = mPrettifyXml->isChecked();
    MorvaneSettings::prettifyJson = mPrettifyJson->isChecked();
    MorvaneSettings::saveSpriteFrameData = mSpriteFrameData->isChecked();
    MorvaneSettings::saveAbsoluteAnimationPoseData = mAbsolutePose->isChecked();
    MorvaneSettings::saveObjInfoNamesUniqueToFile = mUniqueNames->isChecked();

    QSettings store;
    store.setValue("prettifyXML", MorvaneSettings::prettifyXML);
    store.setValue("prettifyJson", MorvaneSettings::prettifyJson);
    store.setValue("saveSpriteFrameData", MorvaneSettings::saveSpriteFrameData);
    store.setValue("saveAbsoluteAnimationPoseData", MorvaneSettings::saveAbsoluteAnimationPoseData);
    store.setValue("saveObjInfoNamesUniqueToFile", MorvaneSettings::saveObjInfoNamesUniqueToFile);
    accept();
}

} // namespace Morvane
