// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "export/exportoptions.h"

#include <QDialog>
#include <QPointer>

#include <functional>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace Morvane {

class DoubleProgressDialog;
class EditorSession;

/// "Export Keyframes to PNG/GIF": the options of an export of the current
/// animation (or, in a batch, of every animation of the current entity), the
/// question for the output name, and the run with its progress. Renders
/// through the session's canvas scene, whose time, onion skin and selection it
/// gives back afterwards. The options are remembered in the settings store
/// when an export ends.
class ExportToPngDialog : public QDialog
{
    Q_OBJECT

public:
    /// Asked for the output file: the caption and the filter ("(*.png)") come
    /// in, the chosen path (empty to give up) goes out.
    using FileChooser = std::function<QString(const QString &caption, const QString &filter)>;

    explicit ExportToPngDialog(EditorSession *session, QWidget *parent = nullptr);

    ExportOptions options() const;
    void setOptions(const ExportOptions &options);
    /// Follows the canvas's pixel-art mode (whole pixels, no smoothing).
    void setPixelArt(bool on);
    /// Replaces the save-file dialog (tests, scripted use).
    void setFileChooser(FileChooser chooser) { mChooser = std::move(chooser); }

    /// Asks for the output and exports; true when every file was written.
    bool performExport();
    /// The last failure's message (also shown in a message box), or empty.
    QString lastError() const { return mLastError; }
    /// Files written by the last export.
    QStringList writtenFiles() const { return mWritten; }

Q_SIGNALS:
    /// An export ended with `error` (empty on success or when stopped).
    void exportFinished(const QString &error);

private:
    void buildUi();
    void loadSettings();
    void fpsChanged();
    void intervalChanged();
    void scaleChanged(bool widthChanged);
    void customEdgeChanged();
    void customSizeChanged();
    void tilesChanged(bool horizontalChanged);
    void updateState();
    int frameCount() const;
    QColor canvasBackground() const;
    void chooseWatermark();
    bool exportOne(const ExportOptions &options, const QString &output, const QString &label,
                   DoubleProgressDialog *batch, int batchIndex, int batchCount);
    void fail(const QString &error);

    QPointer<EditorSession> mSession;
    FileChooser mChooser;
    QString mLastError;
    QStringList mWritten;
    bool mUpdating = false;

    QRadioButton *mNumbered;
    QRadioButton *mSheet;
    QRadioButton *mGif;
    QDoubleSpinBox *mScaleWidth;
    QDoubleSpinBox *mScaleHeight;
    QCheckBox *mConstrain;
    QButtonGroup *mTrimGroup;
    QDoubleSpinBox *mLeft;
    QDoubleSpinBox *mTop;
    QDoubleSpinBox *mRight;
    QDoubleSpinBox *mBottom;
    QDoubleSpinBox *mWidth;
    QDoubleSpinBox *mHeight;
    QSpinBox *mHorizontalFrames;
    QSpinBox *mVerticalFrames;
    QSpinBox *mInterval;
    QDoubleSpinBox *mFps;
    QCheckBox *mKeyframesOnly;
    QLabel *mTrimming;
    QLabel *mFrameCount;
    QCheckBox *mFillBackground;
    QCheckBox *mPixelArt;
    QCheckBox *mPremultiplied;
    QGroupBox *mWatermark;
    QPushButton *mWatermarkImage;
    QString mWatermarkFile;
    QSpinBox *mWatermarkOpacity;
    QButtonGroup *mWatermarkSize;
    QCheckBox *mWatermarkAspect;
    QButtonGroup *mWatermarkPosition;
    QGroupBox *mGifGroup;
    QSpinBox *mLoops;
    QComboBox *mDither;
    QSpinBox *mAlphaThreshold;
    QCheckBox *mUseMatte;
    QPushButton *mMatte;
    QColor mMatteColour = QColor(Qt::white);
    QCheckBox *mSharedPalette;
    QCheckBox *mBatch;
    QRadioButton *mBatchHorizontal;
    QRadioButton *mBatchVertical;
    QCheckBox *mBatchIntervals;
    QPushButton *mExport;
};

} // namespace Morvane
