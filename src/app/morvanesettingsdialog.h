// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>

class QGroupBox;
class QLabel;
class QTimeEdit;

namespace Morvane {

class UpdateCheckChoice;

// "Settings...": the update channel, the manual update checks and autosave.
// Accepting writes the three keys; the window re-applies the autosave timer.
class MorvaneSettingsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit MorvaneSettingsDialog(QWidget *parent = nullptr);

    void setDownloadStatus(const QString &text);
    QString downloadStatus() const;

    // Stores the dialog's choices in the statics and the store.
    void applyChoices();

signals:
    void checkForStableUpdateRequested();
    void checkForAnyUpdateRequested();

private:
    UpdateCheckChoice *mUpdateChoice;
    QLabel *mDownloadStatus;
    QGroupBox *mAutoSaveBox;
    QTimeEdit *mFrequency;
};

} // namespace Morvane
