// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>

class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace Morvane {

/// Asks how to copy an animation: the copy's name, how many times as fast it
/// plays ("Speed") and how long it holds its first pose ("Hold start"). The
/// caller builds the copy from the answers (`retimedAnimation`).
class SpecialCloneDialog : public QDialog
{
    Q_OBJECT

public:
    /// `length` is the source's length in milliseconds, for the preview line.
    SpecialCloneDialog(const QString &name, int length, QWidget *parent = nullptr);

    QString name() const;
    double speed() const;
    int hold() const;

private:
    void updatePreview();

    int mLength;
    QLineEdit *mName;
    QDoubleSpinBox *mSpeed;
    QSpinBox *mHold;
    QLabel *mPreview;
};

} // namespace Morvane
