// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "packdialog.h"

#include "atlas/bindatlascommand.h"
#include "atlas/spritesheetpacker.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace Morvane {

namespace {

// The folder's name as the palette shows it; the project folder itself has none.
QString folderLabel(const Folder *folder)
{
    const QString name = folder->name();
    return name.isEmpty() || name == QLatin1String(".") ? PackDialog::tr("(project folder)")
                                                        : name;
}

// "1 image", "3 images": the texts are not translated, so no plural forms come from there.
QString counted(int count, const char *one, const char *many)
{
    return QString::number(count) + QLatin1Char(' ')
           + (count == 1 ? PackDialog::tr(one) : PackDialog::tr(many));
}

bool hasImages(const Folder *folder)
{
    for (int i = 0; i < folder->fileCount(); ++i) {
        if (folder->file(i)->isImage())
            return true;
    }
    return false;
}

} // namespace

PackDialog::PackDialog(RigxData *document, QWidget *parent)
    : QDialog(parent)
    , mDocument(document)
{
    setObjectName(QStringLiteral("PackDialog"));
    setWindowTitle(tr("Create Spritesheet from Project Textures (JSON hash)"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto *images = new QGroupBox(tr("Images"), this);
    mAllImages = new QRadioButton(tr("All images of the project"), images);
    mChosenFolders = new QRadioButton(tr("The images of the chosen folders:"), images);
    mAllImages->setChecked(true);
    mFolders = new QListWidget(images);
    mFolders->setObjectName(QStringLiteral("folders"));
    auto *imagesLayout = new QVBoxLayout(images);
    imagesLayout->addWidget(mAllImages);
    imagesLayout->addWidget(mChosenFolders);
    imagesLayout->addWidget(mFolders);

    auto *sheet = new QGroupBox(tr("Sheets"), this);
    mMaxSize = new QSpinBox(sheet);
    mMaxSize->setObjectName(QStringLiteral("maxSize"));
    mMaxSize->setRange(16, SpriteSheetPacker::MaxSheetSide);
    mMaxSize->setValue(2048);
    mMaxSize->setSuffix(tr(" px"));
    mPadding = new QSpinBox(sheet);
    mPadding->setObjectName(QStringLiteral("padding"));
    mPadding->setRange(0, 64);
    mPadding->setValue(2);
    mPadding->setSuffix(tr(" px"));
    mExtrude = new QSpinBox(sheet);
    mExtrude->setObjectName(QStringLiteral("extrude"));
    mExtrude->setRange(0, 16);
    mExtrude->setSuffix(tr(" px"));
    mTrim = new QCheckBox(tr("Trim transparent borders"), sheet);
    mRotate = new QCheckBox(tr("Allow rotated frames"), sheet);
    auto *sheetLayout = new QFormLayout(sheet);
    sheetLayout->addRow(tr("Maximum size:"), mMaxSize);
    sheetLayout->addRow(tr("Padding:"), mPadding);
    sheetLayout->addRow(tr("Extrusion:"), mExtrude);
    sheetLayout->addRow(QString(), mTrim);
    sheetLayout->addRow(QString(), mRotate);

    auto *output = new QGroupBox(tr("Output"), this);
    mOutput = new QLineEdit(output);
    mOutput->setObjectName(QStringLiteral("outputFolder"));
    const QString projectDirectory = mDocument->projectDirectory();
    if (!projectDirectory.isEmpty())
        mOutput->setText(QDir(projectDirectory).filePath(QStringLiteral("atlas")));
    auto *browse = new QPushButton(tr("Browse..."), output);
    connect(browse, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getExistingDirectory(
            this, tr("Choose the folder for the sprite sheets"), mOutput->text());
        if (!chosen.isEmpty())
            mOutput->setText(chosen);
    });
    auto *outputRow = new QHBoxLayout;
    outputRow->addWidget(mOutput, 1);
    outputRow->addWidget(browse);
    mBaseName = new QLineEdit(QStringLiteral("atlas"), output);
    mBaseName->setObjectName(QStringLiteral("sheetName"));
    mBind = new QCheckBox(tr("Let the packed folders show the new sheets (undoable)"), output);
    mBind->setChecked(true);
    auto *outputLayout = new QFormLayout(output);
    outputLayout->addRow(tr("Folder:"), outputRow);
    outputLayout->addRow(tr("Sheet name:"), mBaseName);
    outputLayout->addRow(QString(), mBind);

    mButtons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Close, this);
    mButtons->button(QDialogButtonBox::Ok)->setText(tr("Pack"));
    connect(mButtons, &QDialogButtonBox::accepted, this, &PackDialog::pack);
    connect(mButtons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *columns = new QHBoxLayout;
    columns->addWidget(images, 1);
    auto *right = new QVBoxLayout;
    right->addWidget(sheet);
    right->addStretch();
    columns->addLayout(right);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addWidget(output);
    layout->addWidget(mButtons);

    connect(mAllImages, &QRadioButton::toggled, this, &PackDialog::updateEnabled);
    fillFolders();
    updateEnabled();
}

void PackDialog::fillFolders()
{
    mFolders->clear();
    for (int f = 0; f < mDocument->folderCount(); ++f) {
        const Folder *folder = mDocument->folder(f);
        // A folder already showing a sheet has nothing of its own to pack.
        if (folder->spriteSheet() || !hasImages(folder))
            continue;
        auto *item = new QListWidgetItem(folderLabel(folder), mFolders);
        item->setData(Qt::UserRole, f);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Checked);
    }
}

void PackDialog::updateEnabled()
{
    mFolders->setEnabled(mChosenFolders->isChecked());
}

QList<int> PackDialog::chosenFolders() const
{
    QList<int> folders;
    for (int row = 0; row < mFolders->count(); ++row) {
        const QListWidgetItem *item = mFolders->item(row);
        if (mAllImages->isChecked() || item->checkState() == Qt::Checked)
            folders << item->data(Qt::UserRole).toInt();
    }
    return folders;
}

void PackDialog::report(bool ok, const QString &message)
{
    mMessage = message;
    emit packed(ok, message);
    if (ok)
        QMessageBox::information(this, windowTitle(), message);
    else
        QMessageBox::warning(this, windowTitle(), message);
}

void PackDialog::pack()
{
    mWritten.clear();
    const QString projectDirectory = mDocument->projectDirectory();
    if (projectDirectory.isEmpty())
        return report(false, tr("Open or create a project first."));
    const QString out = QDir::cleanPath(QDir(projectDirectory).absoluteFilePath(mOutput->text().trimmed()));
    if (mOutput->text().trimmed().isEmpty())
        return report(false, tr("Choose the folder the sprite sheets are written to."));
    const QString baseName = mBaseName->text().trimmed();
    if (baseName.isEmpty() || baseName.contains(QLatin1Char('/'))
        || baseName.contains(QLatin1Char('\\')))
        return report(false, tr("The sheet name must be a plain file name without a folder."));
    const QString relativeOut = QDir(projectDirectory).relativeFilePath(out);
    const bool bind = mBind->isChecked();
    // The bound files name their sheet relative to the project, so it must lie inside.
    if (bind && (relativeOut.startsWith(QLatin1String("..")) || QDir::isAbsolutePath(relativeOut)))
        return report(false, tr("To let the folders show the sheets, the output folder must "
                                "lie inside the project folder (%1).")
                                 .arg(QDir::toNativeSeparators(projectDirectory)));

    const QList<int> folders = chosenFolders();
    if (folders.isEmpty())
        return report(false, tr("Choose at least one folder to pack."));

    const QString firstSheet = QDir(out).filePath(baseName + QStringLiteral(".json"));
    if (QFileInfo::exists(firstSheet)
        && QMessageBox::question(this, windowTitle(),
                                 tr("%1 exists already. Replace it and its sheets?")
                                     .arg(QDir::toNativeSeparators(firstSheet)))
               != QMessageBox::Yes)
        return;

    int imageCount = 0;
    for (const int f : folders) {
        if (const Folder *folder = mDocument->folder(f))
            imageCount += folder->fileCount();
    }
    QProgressDialog progress(tr("Reading the images..."), tr("Cancel"), 0, imageCount + 2, this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(500);

    // Frames are named after the files, so a bound folder's files find them by name.
    QMap<QString, QImage> images;
    QList<int> packedFolders;
    QStringList missing;
    int step = 0;
    for (const int f : folders) {
        const Folder *folder = mDocument->folder(f);
        if (!folder || folder->spriteSheet())
            continue;
        bool any = false;
        for (int i = 0; i < folder->fileCount(); ++i) {
            progress.setValue(++step);
            if (progress.wasCanceled())
                return;
            const File *file = folder->file(i);
            if (!file->isImage())
                continue;
            if (!file->imageLoaded()) {
                missing << file->name();
                continue;
            }
            images.insert(file->name(), file->image());
            any = true;
        }
        if (any)
            packedFolders << f;
    }
    if (images.isEmpty())
        return report(false, tr("The chosen folders hold no image that could be read."));

    progress.setLabelText(tr("Packing %1...").arg(counted(int(images.size()), "image", "images")));
    progress.setValue(++step);
    SpriteSheetPacker::Options options;
    options.maxSize = mMaxSize->value();
    options.trim = mTrim->isChecked();
    options.rotate = mRotate->isChecked();
    options.padding = mPadding->value();
    options.extrude = mExtrude->value();
    options.baseName = baseName;
    if (!QDir().mkpath(out))
        return report(false, tr("The folder %1 could not be created.")
                                 .arg(QDir::toNativeSeparators(out)));
    QString error;
    const QStringList sheets = SpriteSheetPacker::pack(images, options, out, &error);
    if (sheets.isEmpty())
        return report(false, tr("Packing failed: %1").arg(error));
    for (const QString &sheet : sheets)
        mWritten << QDir(out).absoluteFilePath(sheet);

    progress.setLabelText(tr("Binding the folders..."));
    progress.setValue(++step);
    QString bound;
    if (bind) {
        const QString atlas =
            QDir(projectDirectory).relativeFilePath(QDir(out).absoluteFilePath(sheets.first()));
        auto *command = new BindAtlasCommand(mDocument, packedFolders, atlas);
        command->setText(tr("Bind Folders to Sprite Sheet"));
        const int count = command->folderCount();
        RigxData::pushUndo(mDocument, command);
        bound = tr(" %1 now the sheets' frames; Edit > Undo reverts that.")
                    .arg(count == 1 ? tr("The packed folder shows")
                                    : tr("The %1 packed folders show").arg(count));
    }
    progress.setValue(imageCount + 2);

    QString message = tr("Packed %1 into %2 in %3.")
                          .arg(counted(int(images.size()), "image", "images"),
                               counted(int(sheets.size()), "sheet", "sheets"),
                               QDir::toNativeSeparators(out))
                      + bound;
    if (!missing.isEmpty())
        message += tr("\n\nLeft out, not found on disk: %1").arg(missing.join(QStringLiteral(", ")));
    report(true, message);
    accept();
}

} // namespace Morvane
