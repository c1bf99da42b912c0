// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/exporttopngdialog.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "export/animationexporter.h"
#include "export/doubleprogressdialog.h"
#include "export/snappingintervalcommand.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGraphicsView>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPixmap>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cmath>
#include <utility>
#include <memory>

namespace Morvane {

namespace {

QDoubleSpinBox *edgeBox(QWidget *parent, const char *name)
{
    auto *box = new QDoubleSpinBox(parent);
    box->setObjectName(QLatin1String(name));
    box->setRange(-100000.0, 100000.0);
    box->setDecimals(2);
    return box;
}

void setSwatch(QPushButton *button, const QColor &colour)
{
    button->setStyleSheet(QStringLiteral("background-color: %1").arg(colour.name()));
}

} // namespace

ExportToPngDialog::ExportToPngDialog(EditorSession *session, QWidget *parent)
    : QDialog(parent)
    , mSession(session)
{
    setWindowTitle(tr("Export Keyframes to PNG/GIF"));
    mChooser = [this](const QString &caption, const QString &filter) {
        return QFileDialog::getSaveFileName(this, caption, QString(), filter);
    };
    buildUi();
    loadSettings();
    updateState();
}

void ExportToPngDialog::buildUi()
{
    auto *layout = new QGridLayout(this);

    auto *kinds = new QGroupBox(tr("output"), this);
    auto *kindLayout = new QVBoxLayout(kinds);
    mNumbered = new QRadioButton(tr("separate numbered image files"), kinds);
    mSheet = new QRadioButton(tr("sprite strip or sprite sheet"), kinds);
    mGif = new QRadioButton(tr("animated gif"), kinds);
    mNumbered->setObjectName(QStringLiteral("numberedPngs"));
    mSheet->setObjectName(QStringLiteral("spriteSheet"));
    mGif->setObjectName(QStringLiteral("gif"));
    for (QRadioButton *b : {mNumbered, mSheet, mGif}) {
        kindLayout->addWidget(b);
        connect(b, &QRadioButton::toggled, this, &ExportToPngDialog::updateState);
    }
    mPremultiplied = new QCheckBox(tr("premultiplied alpha (for game engines)"), kinds);
    mPremultiplied->setObjectName(QStringLiteral("premultiplied"));
    kindLayout->addWidget(mPremultiplied);
    auto *tiles = new QGridLayout;
    mHorizontalFrames = new QSpinBox(kinds);
    mVerticalFrames = new QSpinBox(kinds);
    mHorizontalFrames->setObjectName(QStringLiteral("horizontalFrames"));
    mVerticalFrames->setObjectName(QStringLiteral("verticalFrames"));
    for (QSpinBox *box : {mHorizontalFrames, mVerticalFrames})
        box->setRange(1, 100000);
    tiles->addWidget(mHorizontalFrames, 0, 0);
    tiles->addWidget(new QLabel(tr("horizontal frames"), kinds), 0, 1);
    tiles->addWidget(mVerticalFrames, 1, 0);
    tiles->addWidget(new QLabel(tr("vertical frames"), kinds), 1, 1);
    kindLayout->addLayout(tiles);
    connect(mHorizontalFrames, &QSpinBox::valueChanged, this, [this] { tilesChanged(true); });
    connect(mVerticalFrames, &QSpinBox::valueChanged, this, [this] { tilesChanged(false); });
    layout->addWidget(kinds, 0, 0);

    auto *scale = new QGroupBox(tr("output scale"), this);
    auto *scaleLayout = new QGridLayout(scale);
    mScaleWidth = new QDoubleSpinBox(scale);
    mScaleHeight = new QDoubleSpinBox(scale);
    mScaleWidth->setObjectName(QStringLiteral("scaleWidth"));
    mScaleHeight->setObjectName(QStringLiteral("scaleHeight"));
    for (QDoubleSpinBox *box : {mScaleWidth, mScaleHeight}) {
        box->setRange(0.1, 10000.0);
        box->setSuffix(QStringLiteral(" %"));
    }
    mConstrain = new QCheckBox(tr("constrain proportions"), scale);
    mConstrain->setObjectName(QStringLiteral("constrainProportions"));
    scaleLayout->addWidget(new QLabel(tr("width:"), scale), 0, 0);
    scaleLayout->addWidget(mScaleWidth, 0, 1);
    scaleLayout->addWidget(new QLabel(tr("height:"), scale), 1, 0);
    scaleLayout->addWidget(mScaleHeight, 1, 1);
    scaleLayout->addWidget(mConstrain, 2, 0, 1, 2);
    connect(mScaleWidth, &QDoubleSpinBox::valueChanged, this, [this] { scaleChanged(true); });
    connect(mScaleHeight, &QDoubleSpinBox::valueChanged, this, [this] { scaleChanged(false); });
    mPixelArt = new QCheckBox(tr("pixel art (whole pixels, no smoothing)"), scale);
    mPixelArt->setObjectName(QStringLiteral("pixelArt"));
    scaleLayout->addWidget(mPixelArt, 3, 0, 1, 2);
    layout->addWidget(scale, 1, 0);

    auto *source = new QGroupBox(tr("source rectangle"), this);
    auto *sourceLayout = new QGridLayout(source);
    mTrimGroup = new QButtonGroup(this);
    const std::pair<TrimType, QString> trims[] = {
        {TrimType::Animation, tr("trim rect to animation")},
        {TrimType::EachFrame, tr("trim rect to each frame")},
        {TrimType::Entity, tr("trim rect to entity")},
        {TrimType::AllEntities, tr("trim rect to all entities")},
        {TrimType::Custom, tr("custom rect...")},
    };
    int row = 0;
    for (const auto &[trim, text] : trims) {
        auto *b = new QRadioButton(text, source);
        b->setObjectName(QStringLiteral("trim%1").arg(int(trim)));
        mTrimGroup->addButton(b, int(trim));
        sourceLayout->addWidget(b, row++, 0, 1, 4);
    }
    connect(mTrimGroup, &QButtonGroup::idToggled, this, &ExportToPngDialog::updateState);
    mLeft = edgeBox(source, "left");
    mTop = edgeBox(source, "top");
    mRight = edgeBox(source, "right");
    mBottom = edgeBox(source, "bottom");
    mWidth = edgeBox(source, "width");
    mHeight = edgeBox(source, "height");
    mWidth->setMinimum(0.01);
    mHeight->setMinimum(0.01);
    const std::pair<QString, QDoubleSpinBox *> edges[] = {
        {tr("left:"), mLeft}, {tr("top:"), mTop},       {tr("right:"), mRight},
        {tr("bottom:"), mBottom}, {tr("width:"), mWidth}, {tr("height:"), mHeight},
    };
    for (int i = 0; i < 6; ++i) {
        sourceLayout->addWidget(new QLabel(edges[i].first, source), row + i / 2, (i % 2) * 2);
        sourceLayout->addWidget(edges[i].second, row + i / 2, (i % 2) * 2 + 1);
    }
    for (QDoubleSpinBox *box : {mLeft, mTop, mRight, mBottom})
        connect(box, &QDoubleSpinBox::valueChanged, this, &ExportToPngDialog::customEdgeChanged);
    for (QDoubleSpinBox *box : {mWidth, mHeight})
        connect(box, &QDoubleSpinBox::valueChanged, this, &ExportToPngDialog::customSizeChanged);
    layout->addWidget(source, 0, 1, 2, 1);

    auto *frames = new QGroupBox(tr("source frames"), this);
    auto *framesLayout = new QGridLayout(frames);
    mInterval = new QSpinBox(frames);
    mInterval->setObjectName(QStringLiteral("interval"));
    mInterval->setRange(1, 3600000);
    mInterval->setSuffix(QStringLiteral(" ms"));
    mFps = new QDoubleSpinBox(frames);
    mFps->setObjectName(QStringLiteral("fps"));
    mFps->setRange(0.01, 1000.0);
    mFps->setDecimals(2);
    mKeyframesOnly = new QCheckBox(tr("keyframes only"), frames);
    mKeyframesOnly->setObjectName(QStringLiteral("keyframesOnly"));
    mTrimming = new QLabel(frames);
    mTrimming->setObjectName(QStringLiteral("trimming"));
    mFrameCount = new QLabel(frames);
    mFrameCount->setObjectName(QStringLiteral("frameCount"));
    framesLayout->addWidget(new QLabel(tr("interval:"), frames), 0, 0);
    framesLayout->addWidget(mInterval, 0, 1);
    framesLayout->addWidget(new QLabel(tr("fps:"), frames), 1, 0);
    framesLayout->addWidget(mFps, 1, 1);
    framesLayout->addWidget(mKeyframesOnly, 2, 0, 1, 2);
    framesLayout->addWidget(mFrameCount, 3, 0, 1, 2);
    framesLayout->addWidget(mTrimming, 4, 0, 1, 2);
    connect(mInterval, &QSpinBox::valueChanged, this, &ExportToPngDialog::intervalChanged);
    connect(mFps, &QDoubleSpinBox::valueChanged, this, &ExportToPngDialog::fpsChanged);
    connect(mKeyframesOnly, &QCheckBox::toggled, this, &ExportToPngDialog::updateState);
    layout->addWidget(frames, 2, 0);

    mFillBackground = new QCheckBox(
        tr("Fill Background with Current Canvas Background (uncheck for transparent background)"),
        this);
    mFillBackground->setObjectName(QStringLiteral("fillBackground"));
    connect(mFillBackground, &QCheckBox::toggled, this, &ExportToPngDialog::updateState);
    layout->addWidget(mFillBackground, 4, 0, 1, 2);

    mWatermark = new QGroupBox(tr("Watermark Output"), this);
    mWatermark->setObjectName(QStringLiteral("watermark"));
    mWatermark->setCheckable(true);
    auto *markLayout = new QGridLayout(mWatermark);
    mWatermarkImage = new QPushButton(tr("    click here to \n   select image"), mWatermark);
    mWatermarkImage->setObjectName(QStringLiteral("watermarkImage"));
    mWatermarkImage->setMinimumSize(96, 64);
    mWatermarkImage->setIconSize(QSize(80, 48));
    connect(mWatermarkImage, &QPushButton::clicked, this, &ExportToPngDialog::chooseWatermark);
    markLayout->addWidget(mWatermarkImage, 0, 0, 3, 1);
    markLayout->addWidget(new QLabel(tr("Opacity:"), mWatermark), 0, 1);
    mWatermarkOpacity = new QSpinBox(mWatermark);
    mWatermarkOpacity->setObjectName(QStringLiteral("watermarkOpacity"));
    mWatermarkOpacity->setRange(0, 100);
    mWatermarkOpacity->setSuffix(QStringLiteral(" %"));
    markLayout->addWidget(mWatermarkOpacity, 0, 2);
    mWatermarkSize = new QButtonGroup(this);
    const std::pair<WatermarkSize, QString> sizes[] = {
        {WatermarkSize::Keep, tr("Keep Original Size")},
        {WatermarkSize::Expand, tr("Stretch to fit if smaller than output")},
        {WatermarkSize::Shrink, tr("Shrink to fit if larger than output")},
        {WatermarkSize::ShrinkOrExpand, tr("Stretch or shrink to fit")},
    };
    int sizeRow = 3;
    for (const auto &[size, text] : sizes) {
        auto *b = new QRadioButton(text, mWatermark);
        mWatermarkSize->addButton(b, int(size));
        markLayout->addWidget(b, sizeRow++, 0, 1, 3);
    }
    mWatermarkAspect = new QCheckBox(tr("Keep original aspect ratio when stretching"), mWatermark);
    markLayout->addWidget(mWatermarkAspect, sizeRow, 0, 1, 3);
    // Where the mark sits: a 3 by 3 grid over the output.
    auto *grid = new QGridLayout;
    grid->addWidget(new QLabel(tr("Position:"), mWatermark), 0, 0, 3, 1);
    mWatermarkPosition = new QButtonGroup(this);
    const QString cells[9] = {tr("top left"),    tr("top"),    tr("top right"),
                              tr("left"),        tr("centre"), tr("right"),
                              tr("bottom left"), tr("bottom"), tr("bottom right")};
    for (int cell = 0; cell < 9; ++cell) {
        auto *b = new QRadioButton(mWatermark);
        b->setObjectName(QStringLiteral("watermarkPosition%1").arg(cell));
        b->setToolTip(tr("The watermark at the %1 of each frame").arg(cells[cell]));
        b->setAccessibleName(cells[cell]);
        mWatermarkPosition->addButton(b, cell);
        grid->addWidget(b, cell / 3, cell % 3 + 1);
    }
    markLayout->addLayout(grid, 1, 1, 2, 2);
    layout->addWidget(mWatermark, 2, 1, 2, 1);

    mGifGroup = new QGroupBox(tr("gif quality"), this);
    auto *gifLayout = new QGridLayout(mGifGroup);
    mLoops = new QSpinBox(mGifGroup);
    mLoops->setObjectName(QStringLiteral("loops"));
    mLoops->setRange(0, 65535);
    mLoops->setSpecialValueText(tr("forever"));
    mDither = new QComboBox(mGifGroup);
    mDither->setObjectName(QStringLiteral("dither"));
    mDither->addItems({tr("none"), tr("ordered"), tr("Floyd-Steinberg")});
    mAlphaThreshold = new QSpinBox(mGifGroup);
    mAlphaThreshold->setObjectName(QStringLiteral("alphaThreshold"));
    mAlphaThreshold->setRange(0, 255);
    mUseMatte = new QCheckBox(tr("blend soft edges over:"), mGifGroup);
    mUseMatte->setObjectName(QStringLiteral("useMatte"));
    mMatte = new QPushButton(mGifGroup);
    mMatte->setObjectName(QStringLiteral("matte"));
    setSwatch(mMatte, mMatteColour);
    connect(mMatte, &QPushButton::clicked, this, [this] {
        const QColor c = QColorDialog::getColor(mMatteColour, this);
        if (c.isValid()) {
            mMatteColour = c;
            setSwatch(mMatte, c);
        }
    });
    connect(mUseMatte, &QCheckBox::toggled, this, &ExportToPngDialog::updateState);
    mSharedPalette = new QCheckBox(tr("one palette for all frames"), mGifGroup);
    mSharedPalette->setObjectName(QStringLiteral("sharedPalette"));
    gifLayout->addWidget(new QLabel(tr("loops:"), mGifGroup), 0, 0);
    gifLayout->addWidget(mLoops, 0, 1);
    gifLayout->addWidget(new QLabel(tr("dithering:"), mGifGroup), 1, 0);
    gifLayout->addWidget(mDither, 1, 1);
    gifLayout->addWidget(new QLabel(tr("alpha threshold:"), mGifGroup), 2, 0);
    gifLayout->addWidget(mAlphaThreshold, 2, 1);
    gifLayout->addWidget(mUseMatte, 3, 0);
    gifLayout->addWidget(mMatte, 3, 1);
    gifLayout->addWidget(mSharedPalette, 4, 0, 1, 2);
    layout->addWidget(mGifGroup, 3, 0);

    auto *batch = new QGroupBox(this);
    auto *batchLayout = new QGridLayout(batch);
    mBatch = new QCheckBox(tr("batch export"), batch);
    mBatch->setObjectName(QStringLiteral("batch"));
    mBatchHorizontal = new QRadioButton(tr("horizontal"), batch);
    mBatchVertical = new QRadioButton(tr("vertical"), batch);
    mBatchVertical->setObjectName(QStringLiteral("batchVertical"));
    mBatchHorizontal->setToolTip(tr("Sprite sheets of a batch keep the number of columns "
                                    "set above"));
    mBatchVertical->setToolTip(tr("Sprite sheets of a batch keep the number of rows set above"));
    mBatchIntervals =
        new QCheckBox(tr("set animation intervals on export \n(playback and export defaults)"), batch);
    mBatchIntervals->setObjectName(QStringLiteral("batchIntervals"));
    mBatchIntervals->setToolTip(tr("Makes the export interval the snapping interval of every "
                                   "animation exported (one step to undo)"));
    batchLayout->addWidget(mBatch, 0, 0);
    batchLayout->addWidget(mBatchHorizontal, 0, 1);
    batchLayout->addWidget(mBatchVertical, 0, 2);
    batchLayout->addWidget(mBatchIntervals, 1, 0, 1, 3);
    connect(mBatch, &QCheckBox::toggled, this, &ExportToPngDialog::updateState);
    layout->addWidget(batch, 5, 0, 1, 2);

    auto *buttons = new QDialogButtonBox(this);
    mExport = buttons->addButton(tr("Export"), QDialogButtonBox::AcceptRole);
    mExport->setObjectName(QStringLiteral("export"));
    buttons->addButton(QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(mExport, &QPushButton::clicked, this, [this] {
        if (performExport())
            accept();
    });
    layout->addWidget(buttons, 6, 0, 1, 2);
}

void ExportToPngDialog::loadSettings()
{
    QSettings settings;
    ExportOptions options;
    if (mSession && mSession->currentAnimation())
        options.interval = qMax(1, mSession->currentAnimation()->snappingInterval());
    options.load(settings);
    setOptions(options);
}

ExportOptions ExportToPngDialog::options() const
{
    ExportOptions o;
    o.kind = mGif->isChecked()     ? ExportKind::Gif
             : mSheet->isChecked() ? ExportKind::SpriteSheet
                                   : ExportKind::NumberedPngs;
    o.scaleWidth = mScaleWidth->value();
    o.scaleHeight = mScaleHeight->value();
    o.constrainProportions = mConstrain->isChecked();
    o.trim = TrimType(qMax(0, mTrimGroup->checkedId()));
    o.customRect = QRectF(QPointF(mLeft->value(), mTop->value()),
                          QPointF(mRight->value(), mBottom->value()))
                       .normalized();
    o.framesPerRow = mHorizontalFrames->value();
    o.interval = mInterval->value();
    o.keyframesOnly = mKeyframesOnly->isChecked();
    o.fillBackground = mFillBackground->isChecked();
    o.background = canvasBackground();
    o.pixelArt = mPixelArt->isChecked();
    const MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    o.smooth = scene ? scene->smoothTransform() : true;
    o.premultiplied = mPremultiplied->isChecked();
    o.watermark.enabled = mWatermark->isChecked();
    o.watermark.fileName = mWatermarkFile;
    o.watermark.opacity = mWatermarkOpacity->value();
    o.watermark.size = WatermarkSize(qMax(0, mWatermarkSize->checkedId()));
    o.watermark.position = qMax(0, mWatermarkPosition->checkedId());
    o.watermark.keepAspectRatio = mWatermarkAspect->isChecked();
    o.gif.loopCount = mLoops->value();
    o.gif.dither = GifDither(qMax(0, mDither->currentIndex()));
    o.gif.alphaThreshold = mAlphaThreshold->value();
    o.gif.matte = mUseMatte->isChecked() ? mMatteColour : QColor();
    o.gif.sharedPalette = mSharedPalette->isChecked();
    o.batch = mBatch->isChecked();
    o.batchVertical = mBatchVertical->isChecked();
    o.batchSetIntervals = mBatchIntervals->isChecked();
    return o;
}

void ExportToPngDialog::setOptions(const ExportOptions &o)
{
    mUpdating = true;
    (o.kind == ExportKind::Gif       ? mGif
     : o.kind == ExportKind::SpriteSheet ? mSheet
                                         : mNumbered)
        ->setChecked(true);
    mScaleWidth->setValue(o.scaleWidth);
    mScaleHeight->setValue(o.scaleHeight);
    mConstrain->setChecked(o.constrainProportions);
    mTrimGroup->button(int(o.trim))->setChecked(true);
    const QRectF r = o.customRect.normalized();
    mLeft->setValue(r.left());
    mTop->setValue(r.top());
    mRight->setValue(r.right());
    mBottom->setValue(r.bottom());
    mWidth->setValue(r.width());
    mHeight->setValue(r.height());
    mInterval->setValue(qMax(1, o.interval));
    mFps->setValue(1000.0 / qMax(1, o.interval));
    mKeyframesOnly->setChecked(o.keyframesOnly);
    mFillBackground->setChecked(o.fillBackground);
    mPixelArt->setChecked(o.pixelArt);
    mPremultiplied->setChecked(o.premultiplied);
    mWatermark->setChecked(o.watermark.enabled);
    mWatermarkFile = o.watermark.fileName;
    const QPixmap preview(mWatermarkFile);
    mWatermarkImage->setIcon(preview.isNull() ? QIcon() : QIcon(preview));
    mWatermarkImage->setText(preview.isNull() ? tr("    click here to \n   select image") : QString());
    mWatermarkOpacity->setValue(o.watermark.opacity);
    mWatermarkSize->button(int(o.watermark.size))->setChecked(true);
    mWatermarkAspect->setChecked(o.watermark.keepAspectRatio);
    mWatermarkPosition->button(qBound(0, o.watermark.position, 8))->setChecked(true);
    mLoops->setValue(o.gif.loopCount);
    mDither->setCurrentIndex(int(o.gif.dither));
    mAlphaThreshold->setValue(o.gif.alphaThreshold);
    mUseMatte->setChecked(o.gif.matte.isValid());
    if (o.gif.matte.isValid()) {
        mMatteColour = o.gif.matte;
        setSwatch(mMatte, mMatteColour);
    }
    mSharedPalette->setChecked(o.gif.sharedPalette);
    mBatch->setChecked(o.batch);
    (o.batchVertical ? mBatchVertical : mBatchHorizontal)->setChecked(true);
    mBatchIntervals->setChecked(o.batchSetIntervals);
    const int perRow = o.framesPerRow > 0 ? o.framesPerRow : qMax(1, frameCount());
    mHorizontalFrames->setValue(perRow);
    mVerticalFrames->setValue(getOtherOrientationNumberOfTiles(frameCount(), perRow));
    mUpdating = false;
    updateState();
}

void ExportToPngDialog::setPixelArt(bool on)
{
    mPixelArt->setChecked(on);
}

int ExportToPngDialog::frameCount() const
{
    const Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    if (!animation)
        return 0;
    ExportOptions o;
    o.interval = mInterval->value();
    o.keyframesOnly = mKeyframesOnly->isChecked();
    return int(exportFrameTimes(animation, o).size());
}

void ExportToPngDialog::fpsChanged()
{
    if (mUpdating)
        return;
    mUpdating = true;
    mInterval->setValue(qMax(1, int(std::lround(1000.0 / mFps->value()))));
    mUpdating = false;
    tilesChanged(true);
    updateState();
}

void ExportToPngDialog::intervalChanged()
{
    if (mUpdating)
        return;
    mUpdating = true;
    mFps->setValue(1000.0 / mInterval->value());
    mUpdating = false;
    tilesChanged(true);
    updateState();
}

void ExportToPngDialog::scaleChanged(bool widthChanged)
{
    if (mUpdating)
        return;
    const double ratio = mScaleHeight->property("ratio").toDouble();
    if (!mConstrain->isChecked() || !(ratio > 0)) {
        mScaleHeight->setProperty("ratio", mScaleHeight->value() / mScaleWidth->value());
        return;
    }
    // The other side follows by the same factor: the output keeps its shape.
    mUpdating = true;
    if (widthChanged)
        mScaleHeight->setValue(mScaleWidth->value() * ratio);
    else
        mScaleWidth->setValue(mScaleHeight->value() / ratio);
    mUpdating = false;
}

void ExportToPngDialog::customEdgeChanged()
{
    if (mUpdating)
        return;
    mUpdating = true;
    mWidth->setValue(mRight->value() - mLeft->value());
    mHeight->setValue(mBottom->value() - mTop->value());
    mUpdating = false;
}

void ExportToPngDialog::customSizeChanged()
{
    if (mUpdating)
        return;
    mUpdating = true;
    mRight->setValue(mLeft->value() + mWidth->value());
    mBottom->setValue(mTop->value() + mHeight->value());
    mUpdating = false;
}

void ExportToPngDialog::tilesChanged(bool horizontalChanged)
{
    if (mUpdating)
        return;
    mUpdating = true;
    const int n = qMax(1, frameCount());
    if (horizontalChanged) {
        mVerticalFrames->setValue(getOtherOrientationNumberOfTiles(n, mHorizontalFrames->value()));
    } else {
        mHorizontalFrames->setValue(
            getOtherOrientationNumberOfTiles(n, mVerticalFrames->value()));
    }
    mUpdating = false;
}

void ExportToPngDialog::updateState()
{
    if (mUpdating)
        return;
    const Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    const int length = animation ? animation->length() : 0;
    const bool keys = mKeyframesOnly->isChecked();
    mInterval->setEnabled(!keys);
    mFps->setEnabled(!keys);
    const int rest = keys ? 0 : trimmedRemainder(length, mInterval->value());
    mTrimming->setText(rest ? tr("trimming ") + QString::number(rest) + tr(" ms") : QString());
    mTrimming->setVisible(rest != 0);
    mFrameCount->setText(tr("%n frame(s)", nullptr, frameCount()));
    const bool custom = mTrimGroup->checkedId() == int(TrimType::Custom);
    for (QDoubleSpinBox *box : {mLeft, mTop, mRight, mBottom, mWidth, mHeight})
        box->setEnabled(custom);
    const bool sheet = mSheet->isChecked();
    mHorizontalFrames->setEnabled(sheet);
    mVerticalFrames->setEnabled(sheet);
    mPremultiplied->setEnabled(!mGif->isChecked());
    mGifGroup->setEnabled(mGif->isChecked());
    mAlphaThreshold->setEnabled(!mUseMatte->isChecked());
    mMatte->setEnabled(mUseMatte->isChecked());
    mBatchHorizontal->setEnabled(mBatch->isChecked() && sheet);
    mBatchVertical->setEnabled(mBatch->isChecked() && sheet);
    // Keyframes only has no interval to hand on.
    mBatchIntervals->setEnabled(mBatch->isChecked() && !keys);
    // The ratio the constrained scale keeps.
    if (mScaleWidth->value() > 0)
        mScaleHeight->setProperty("ratio", mScaleHeight->value() / mScaleWidth->value());
    mExport->setEnabled(animation != nullptr);
}

QColor ExportToPngDialog::canvasBackground() const
{
    const MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    if (scene && !scene->views().isEmpty()) {
        const QBrush brush = scene->views().first()->backgroundBrush();
        if (brush.style() != Qt::NoBrush)
            return brush.color();
    }
    const QColor saved(QSettings().value(QStringLiteral("Canvas/background")).toString());
    return saved.isValid() ? saved : QColor(0xa0, 0xa0, 0xa4);
}

void ExportToPngDialog::chooseWatermark()
{
    const QString file = QFileDialog::getOpenFileName(this, tr("Choose a watermark image"),
                                                      QFileInfo(mWatermarkFile).path(),
                                                      tr("Images (*.png *.jpg *.jpeg *.bmp *.gif)"));
    if (file.isEmpty())
        return;
    ExportOptions o = options();
    o.watermark.fileName = file;
    o.watermark.enabled = true;
    setOptions(o);
}

void ExportToPngDialog::fail(const QString &error)
{
    mLastError = error;
    // Not blocking: the dialog stays usable and scripted runs go on.
    auto *box = new QMessageBox(QMessageBox::Warning, windowTitle(), error, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

bool ExportToPngDialog::exportOne(const ExportOptions &options, const QString &output,
                                  const QString &label, DoubleProgressDialog *batch,
                                  int batchIndex, int batchCount)
{
    MorvaneCanvasScene *scene = mSession->scene();
    const int total = int(exportFrameTimes(scene->currentAnimation(), options).size());
    std::unique_ptr<QProgressDialog> single;
    if (!batch) {
        single = std::make_unique<QProgressDialog>(tr("Exporting Images..."), tr("Abort Export"),
                                                   0, total, window());
        single->setWindowModality(Qt::WindowModal);
        single->setMinimumDuration(0);
        single->setValue(0);
    } else {
        batch->setInner(label, 0, total);
        batch->setOuter(batch->property("entityText").toString(), batchIndex, batchCount);
    }
    const ExportResult result = AnimationExporter::run(
        scene, options, output, [&](int done, int count) {
            if (single)
                single->setValue(done);
            else
                batch->setInner(label, done, count);
            QCoreApplication::processEvents();
            return !(single ? single->wasCanceled() : batch->wasCanceled());
        });
    mWritten += result.files;
    if (!result.ok && !result.cancelled) {
        fail(result.error);
        return false;
    }
    return result.ok;
}

bool ExportToPngDialog::performExport()
{
    mLastError.clear();
    mWritten.clear();
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    Animation *current = mSession ? mSession->currentAnimation() : nullptr;
    if (!scene || !current) {
        fail(tr("There is no animation to export."));
        return false;
    }
    ExportOptions o = options();
    QString caption;
    QString extension = QStringLiteral("png");
    switch (o.kind) {
    case ExportKind::Gif:
        caption = tr("Choose a file name for the exported gif");
        extension = QStringLiteral("gif");
        break;
    case ExportKind::SpriteSheet:
        caption = tr("Choose a file name for the exported spritesheet");
        break;
    case ExportKind::NumberedPngs:
        caption = tr("Pick a base file name for the image sequence (filename_00000.png,filename_00001, etc)");
        break;
    }
    QString output = mChooser(caption, QStringLiteral("(*.") + extension + QLatin1Char(')'));
    if (output.isEmpty())
        return false;
    // A name typed without the suffix keeps all of itself as the base name.
    if (QFileInfo(output).suffix().compare(extension, Qt::CaseInsensitive) != 0)
        output += QLatin1Char('.') + extension;

    bool ok = true;
    if (!o.batch) {
        ok = exportOne(o, output, QString(), nullptr, 0, 1);
    } else {
        Entity *entity = mSession->currentEntity();
        const QString base = AnimationExporter::baseName(output);
        DoubleProgressDialog progress(tr("Abort Export"), window());
        progress.setWindowTitle(tr("Exporting Images..."));
        progress.setWindowModality(Qt::WindowModal);
        progress.setProperty("entityText", QString(tr("Exporting Entity") + QLatin1Char(' ') + entity->name()));
        progress.show();
        const int count = entity->animationCount();
        QList<Animation *> exported;
        for (int i = 0; i < count && ok && !progress.wasCanceled(); ++i) {
            Animation *animation = entity->animation(i);
            mSession->setCurrentAnimation(animation);
            ExportOptions each = o;
            if (o.kind == ExportKind::SpriteSheet && o.batchVertical) {
                // The number of rows holds for every animation.
                const int n = int(exportFrameTimes(animation, o).size());
                each.framesPerRow = getOtherOrientationNumberOfTiles(n, mVerticalFrames->value());
            }
            ok = exportOne(each,
                           base + QLatin1Char('_') + animation->name() + QLatin1Char('.') + extension,
                           tr("animation:") + QLatin1Char(' ') + animation->name(), &progress, i,
                           count);
            if (ok)
                exported.append(animation);
        }
        // The animations exported in full take the interval, as one undoable step.
        if (o.batchSetIntervals && !o.keyframesOnly && !exported.isEmpty())
            RigxData::pushUndo(mSession->document(), new SetSnappingIntervals(exported, o.interval));
        // Back to the animation the user was on; a cancelled run is no failure.
        Entity *still = mSession->currentEntity();
        for (int i = 0; still && i < still->animationCount(); ++i) {
            if (still->animation(i) == current)
                mSession->setCurrentAnimation(current);
        }
        if (progress.wasCanceled())
            ok = false;
    }
    QSettings settings;
    o.save(settings);
    Q_EMIT exportFinished(mLastError);
    return ok;
}

} // namespace Morvane
