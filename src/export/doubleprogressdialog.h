// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace Morvane {

/// Progress of a run in two levels: the outer step (an animation of a batch)
/// and the inner one (its frames), with one button to stop the whole run.
class DoubleProgressDialog : public QDialog
{
    Q_OBJECT

public:
    explicit DoubleProgressDialog(const QString &cancelText, QWidget *parent = nullptr);

    void setOuter(const QString &text, int value, int maximum);
    void setInner(const QString &text, int value, int maximum);
    bool wasCanceled() const { return mCanceled; }
    QPushButton *cancelButton() const { return mCancel; }

protected:
    void reject() override;

private:
    QLabel *mOuterLabel;
    QProgressBar *mOuterBar;
    QLabel *mInnerLabel;
    QProgressBar *mInnerBar;
    QPushButton *mCancel;
    bool mCanceled = false;
};

} // namespace Morvane
