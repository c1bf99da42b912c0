// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "windowprojectiohost.h"

#include "morvanesettings.h"

#include <QCheckBox>
#include <QDir>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QSettings>

namespace Morvane {

namespace {

QString withSlash(const QString &path)
{
    QString result = QDir::fromNativeSeparators(path);
    if (!result.endsWith(QLatin1Char('/')))
        result += QLatin1Char('/');
    return result;
}

} // namespace

WindowProjectIoHost::WindowProjectIoHost(QWidget *window)
    : mWindow(window)
{
}

WindowProjectIoHost::~WindowProjectIoHost()
{
    delete mProgress;
}

void WindowProjectIoHost::beginProgress(const QString &label)
{
    if (!mProgress) {
        mProgress = new QProgressDialog(mWindow);
        mProgress->setWindowModality(Qt::WindowModal);
        mProgress->setCancelButton(nullptr);
        mProgress->setRange(0, 0);
        // Quick loads finish before anything flickers on screen.
        mProgress->setMinimumDuration(400);
    }
    mProgress->setLabelText(label);
    mProgress->setValue(0);
}

void WindowProjectIoHost::endProgress()
{
    if (mProgress) {
        mProgress->reset();
        mProgress->deleteLater();
    }
}

void WindowProjectIoHost::progress(int percent)
{
    if (!mProgress || percent == mProgress->value())
        return;
    if (mProgress->maximum() != 100)
        mProgress->setRange(0, 100);
    // A window-modal dialog processes events in setValue: that is what paints it
    // during a long synchronous job.
    mProgress->setValue(qBound(0, percent, 100));
}

void WindowProjectIoHost::suppressAutosave(bool suppress)
{
    if (suppress)
        MorvaneSettings::startSuppressAutoSave();
    else
        MorvaneSettings::endSuppressAutoSave();
}

bool WindowProjectIoHost::warnAboutNonHomeDirectory(const QString &projectDirectory,
                                                    const QString &directory)
{
    if (!MorvaneSettings::showMessageAboutSavingToTheWrongDirectory)
        return true;
    if (projectDirectory.isEmpty() || withSlash(projectDirectory) == withSlash(directory))
        return true;

    QMessageBox box(QMessageBox::Warning, QObject::tr("Save outside the project folder?"),
                    QObject::tr("You are saving the project outside its folder:\n%1\n\n"
                                "Images are stored relative to the project file, so they may "
                                "not be found from the new place.")
                        .arg(QDir::toNativeSeparators(withSlash(projectDirectory))),
                    QMessageBox::NoButton, mWindow);
    QPushButton *back = box.addButton(QObject::tr("Go Back"), QMessageBox::RejectRole);
    box.addButton(QObject::tr("Save Anyway"), QMessageBox::AcceptRole);
    box.setDefaultButton(back);
    auto *again = new QCheckBox(QObject::tr("Don't show this again"), &box);
    box.setCheckBox(again);
    box.exec();
    if (again->isChecked()) {
        MorvaneSettings::showMessageAboutSavingToTheWrongDirectory = false;
        QSettings().setValue("showMessageAboutSavingToTheWrongDirectory", false);
    }
    return box.clickedButton() != back;
}

bool WindowProjectIoHost::confirmMerge(const QString &fileName)
{
    const auto answer = QMessageBox::question(
        mWindow, QObject::tr("Merge Projects?"),
        QObject::tr("Are you sure you want to merge ") + fileName
            + QObject::tr(" and all of it's images into this project?\n")
            + QObject::tr("                     This action cannot be undone."),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    return answer == QMessageBox::Yes;
}

void WindowProjectIoHost::missingImages(const QStringList &fullPaths)
{
    MorvaneSettings::hasMissingImages = !fullPaths.isEmpty();
    MorvaneSettings::missingImageFullPaths = fullPaths;
    if (fullPaths.isEmpty() || !MorvaneSettings::showMessageAboutMissingImages
        || MorvaneSettings::shownMissingImagesOnceForThisFile)
        return;
    MorvaneSettings::shownMissingImagesOnceForThisFile = true;

    // Not modal: the project is usable with placeholders and the user may want
    // to look at it first.
    auto *box = new QMessageBox(QMessageBox::Warning, QObject::tr("Missing Images"),
                                QObject::tr("%n image(s) of this project could not be found. "
                                            "They are shown as placeholders.",
                                            nullptr, int(fullPaths.size())),
                                QMessageBox::Ok, mWindow);
    box->setDetailedText(fullPaths.join(QLatin1Char('\n')));
    box->setAttribute(Qt::WA_DeleteOnClose);
    auto *again = new QCheckBox(QObject::tr("Don't show this again"), box);
    box->setCheckBox(again);
    QObject::connect(again, &QCheckBox::toggled, box, [](bool checked) {
        MorvaneSettings::showMessageAboutMissingImages = !checked;
        QSettings().setValue("showMessageAboutMissingImages", !checked);
    });
    box->open();
}

void WindowProjectIoHost::diagnostic(const QString &line)
{
    mLastDiagnostic = line;
    ProjectIoHost::diagnostic(line);
}

} // namespace Morvane
