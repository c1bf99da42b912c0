// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "batchconvert.h"

#include "io/projectconversion.h"
#include "io/projectfile.h"
#include "io/projectiohost.h"
#include "model/rigxdata.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QMessageBox>
#include <QProgressDialog>
#include <QRadioButton>
#include <QUndoStack>
#include <QVBoxLayout>

namespace Morvane {

namespace {

// Failures shown in the summary's text; the whole list is behind "Show Details...".
constexpr int ShownFailures = 10;

} // namespace

BatchConvert::BatchConvert(RigxData *document, QWidget *parent)
    : QDialog(parent)
    , mDocument(document)
{
    setObjectName(QStringLiteral("BatchConvert"));
    setWindowTitle(tr("Batch Convert between rigx(xml) and rigj(json)"));

    auto *conversion = new QGroupBox(tr("conversion"), this);
    mToJson = new QRadioButton(tr("rigx to rigj"), conversion);
    mToXml = new QRadioButton(tr("rigj to rigx"), conversion);
    mToJson->setChecked(true);
    auto *conversionLayout = new QVBoxLayout(conversion);
    conversionLayout->addWidget(mToJson);
    conversionLayout->addWidget(mToXml);

    auto *selection = new QGroupBox(tr("batch selection method"), this);
    mDirectories = new QRadioButton(tr("directories (recursive)"), selection);
    mFiles = new QRadioButton(tr("files"), selection);
    mDirectories->setChecked(true);
    auto *selectionLayout = new QVBoxLayout(selection);
    selectionLayout->addWidget(mDirectories);
    selectionLayout->addWidget(mFiles);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(conversion);
    layout->addWidget(selection);
    layout->addWidget(buttons);

    // The run starts once the form is gone, so its questions stand alone.
    connect(this, &QDialog::accepted, this, &BatchConvert::convert, Qt::QueuedConnection);
    connect(this, &QDialog::rejected, this, &QObject::deleteLater);
}

BatchConvert::~BatchConvert()
{
    delete mProgress;
}

QStringList BatchConvert::recurseFileList(const QString &directory, const QString &suffix)
{
    return ProjectConversion::recurseFileList(directory, suffix);
}

void BatchConvert::abort()
{
    if (mProgress) {
        mProgress->deleteLater();
        mProgress = nullptr;
    }
    deleteLater();
}

bool BatchConvert::event(QEvent *event)
{
    // A deletion asked for while files are converting (a cancel in the files mode) waits
    // for the end of the run, which goes on: the run still needs this dialog to finish.
    if (event->type() == QEvent::DeferredDelete && mRunning)
        return true;
    return QDialog::event(event);
}

bool BatchConvert::refuseForUnsavedChanges()
{
    QUndoStack *stack = mDocument->undoStack();
    if (!stack || stack->isClean())
        return false;
    QMessageBox box(QMessageBox::Warning, tr("Batch Convert"),
                    tr("The open project has unsaved changes. The conversion opens every file "
                       "in this window, so the project must be saved first."),
                    QMessageBox::Save | QMessageBox::Cancel, parentWidget());
    box.setInformativeText(tr("Save the project and convert?"));
    box.setDefaultButton(QMessageBox::Save);
    box.setEscapeButton(QMessageBox::Cancel);
    if (box.exec() != QMessageBox::Save || !mSaveProject)
        return true;
    return !mSaveProject() || !stack->isClean();
}

QStringList BatchConvert::chooseFiles(bool directories, const QString &source)
{
    QFileDialog dialog(parentWidget());
    dialog.setDirectory(QStringLiteral("/home"));
    if (directories) {
        dialog.setWindowTitle(tr("Select a directory to convert (recursively)"));
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
    } else {
        dialog.setWindowTitle(tr("Select one or more files to convert"));
        dialog.setFileMode(QFileDialog::ExistingFiles);
        dialog.setNameFilter(QStringLiteral("%1 (*.%1)").arg(source));
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    if (!directories)
        return dialog.selectedFiles();
    return recurseFileList(dialog.selectedFiles().constFirst(), source);
}

bool BatchConvert::confirm(const QString &source, const QString &target)
{
    QMessageBox box(QMessageBox::Warning, tr("Confirm Overwrite..."),
                    tr("Morvane will convert all selected ") + source + tr(" files to ") + target
                        + tr(" and overwrite existing ") + target
                        + tr(" files with the same name.\n\nAre you sure you wish to proceed?"),
                    QMessageBox::Ok | QMessageBox::Cancel, parentWidget());
    QFont font = box.font();
    if (font.pointSizeF() > 0)
        font.setPointSize(int(font.pointSizeF() * 1.4));
    box.setFont(font);
    box.setDefaultButton(QMessageBox::Cancel);
    return box.exec() == QMessageBox::Ok;
}

void BatchConvert::reopen(const QString &path)
{
    // A project never saved knows only its folder (a path ending in "/"): it was empty and
    // clean, so an empty document in that folder is the same project.
    if (!path.isEmpty() && !path.endsWith(QLatin1Char('/'))
        && ProjectFile::open(mDocument, path, ProjectIoHost::defaultHost())) {
        // fall through: the project is back
    } else {
        mDocument->clear();
        if (path.endsWith(QLatin1Char('/')))
            mDocument->setFilePath(path);
    }
    if (QUndoStack *stack = mDocument->undoStack()) {
        // The history spoke of the nodes before the run; they are new now.
        stack->clear();
        stack->setClean();
    }
}

void BatchConvert::convert()
{
    QWidget *window = parentWidget();
    if (refuseForUnsavedChanges()) {
        deleteLater();
        return;
    }
    const bool toJson = mToJson->isChecked();
    const bool directories = mDirectories->isChecked();
    const QString source = toJson ? QStringLiteral("rigx") : QStringLiteral("rigj");
    const QString target = toJson ? QStringLiteral("rigj") : QStringLiteral("rigx");

    const QStringList files = chooseFiles(directories, source);
    if (files.isEmpty() || !confirm(source, target)) {
        deleteLater();
        return;
    }

    const int count = int(files.size());
    mProgress = new QProgressDialog(tr("Converting ") + QString::number(count)
                                        + QLatin1Char(' ') + source + tr(" files to ") + target,
                                    tr("abort"), 0, count - 1, window);
    mProgress->setWindowModality(Qt::WindowModal);
    mProgress->setMinimumDuration(2000);
    if (directories)
        connect(mProgress, &QProgressDialog::canceled, this, &BatchConvert::abort);
    else
        connect(mProgress, &QProgressDialog::canceled, this, &QObject::deleteLater);

    mRunning = true;
    const QString previous = mDocument->filePath();
    emit runStarted();

    int converted = 0;
    QStringList failures;
    int index = 0;
    for (; index < count && mProgress; ++index) {
        const QString &file = files.at(index);
        const QString out = ProjectConversion::targetPath(file, target);
        mProgress->setLabelText(tr("converting %1 to %2 (%3/%4)")
                                    .arg(file, QFileInfo(out).fileName())
                                    .arg(index + 1)
                                    .arg(count));
        // Advancing the bar lets the cancel button be clicked; whether the run goes on is
        // looked at only before the next file.
        const auto advance = [&] {
            if (mProgress)
                mProgress->setValue(index);
        };
        QString error = ProjectConversion::sourceProblem(file, target);
        if (error.isEmpty()
            && ProjectConversion::convertFile(mDocument, file, out, mSaveOptions,
                                              ProjectIoHost::defaultHost(), &error, nullptr,
                                              advance)) {
            ++converted;
            continue;
        }
        if (error.isEmpty())
            error = tr("unknown error");
        failures << tr("%1: %2").arg(QDir::toNativeSeparators(file), error);
        advance();
    }
    const bool stopped = index < count;

    delete mProgress;
    reopen(previous);
    mRunning = false;
    emit runFinished();
    emit finished(converted, int(failures.size()), failures);
    deleteLater();

    // The summary's own event loop may delete the dialog: nothing of it is touched now.
    QString text = tr("Batch conversion finished: converted %1, failed %2.")
                       .arg(converted)
                       .arg(failures.size());
    if (stopped)
        text += tr(" Stopped after %1 of %2 files.").arg(index).arg(count);
    QMessageBox box(failures.isEmpty() ? QMessageBox::Information : QMessageBox::Warning,
                    tr("Batch Convert"), text, QMessageBox::Ok, window);
    if (!failures.isEmpty()) {
        QStringList shown = failures.mid(0, ShownFailures);
        if (failures.size() > ShownFailures)
            shown << tr("... and %n more.", nullptr, int(failures.size() - ShownFailures));
        box.setInformativeText(shown.join(QLatin1Char('\n')));
        box.setDetailedText(failures.join(QLatin1Char('\n')));
    }
    box.exec();
}

} // namespace Morvane
