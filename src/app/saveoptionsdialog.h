// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>

class QCheckBox;

namespace Morvane {

// "Custom Save Options...": formatting and authoring-tool extras read by the
// project writers. Apply stores the five flags and closes; the dialog deletes
// itself on close.
class SaveOptionsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit SaveOptionsDialog(QWidget *parent = nullptr);

public slots:
    void apply();

private:
    QCheckBox *mPrettifyXml;
    QCheckBox *mPrettifyJson;
    QCheckBox *mSpriteFrameData;
    QCheckBox *mAbsolutePose;
    QCheckBox *mUniqueNames;
};

} // namespace Morvane
