// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>

class QCheckBox;
class QDoubleSpinBox;
class QRadioButton;
class QSpinBox;

namespace Morvane {

/// Time snapping: the switch (for the whole application), the interval in
/// milliseconds and, kept in step, as frames per second (fps = 1000 / ms,
/// ms = the integer part of 1000 / fps), and whether times show as frames.
/// `intervalChanged` lets the views follow at once; the caller records the
/// interval on accept.
class SnappingOptionsDialog : public QDialog
{
    Q_OBJECT

public:
    SnappingOptionsDialog(bool enabled, int intervalMs, bool framesAsUnits,
                          QWidget *parent = nullptr);

    bool snappingEnabled() const;
    int interval() const;
    bool framesAsUnits() const;

    QSpinBox *intervalField() const { return mInterval; }
    QDoubleSpinBox *fpsField() const { return mFps; }

Q_SIGNALS:
    void intervalChanged(int ms);

private:
    QCheckBox *mEnabled;
    QSpinBox *mInterval;
    QDoubleSpinBox *mFps;
    QRadioButton *mFrames;
    QRadioButton *mMilliseconds;
    bool mSyncing = false;
};

} // namespace Morvane
