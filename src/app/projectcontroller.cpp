// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "projectcontroller.h"

#include "io/projectfile.h"
#include "model/displayinfo.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "morvanesettings.h"
#include "projectnaming.h"
#include "windowprojectiohost.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>
#include <QUndoStack>

namespace Morvane {

namespace {

// One box for any number of reader warnings: the first lines in the text, the
// count of the rest after them, and the whole list behind "Show Details...".
void showWarnings(QWidget *parent, const QString &title, const QString &intro,
                  const QStringList &warnings)
{
    if (warnings.isEmpty())
        return;
    constexpr int shownLines = 10;
    QStringList lines = warnings.mid(0, shownLines);
    if (warnings.size() > shownLines)
        lines << ProjectController::tr("... and %n more.", nullptr,
                                       int(warnings.size() - shownLines));
    QMessageBox box(QMessageBox::Warning, title, intro, QMessageBox::Ok, parent);
    box.setInformativeText(lines.join(QLatin1Char('\n')));
    if (warnings.size() > shownLines)
        box.setDetailedText(warnings.join(QLatin1Char('\n')));
    box.exec();
}

} // namespace

ProjectController::ProjectController(QUndoStack *undoStack, const QString &version,
                                     QWidget *window)
    : QObject(window)
    , mWindow(window)
    , mUndoStack(undoStack)
    , mDocument(std::make_unique<RigxData>(undoStack, version))
    , mIoHost(std::make_unique<WindowProjectIoHost>(window))
{
}

ProjectController::~ProjectController() = default;

QString ProjectController::filePath() const
{
    // A new project knows only its folder (a path ending in "/").
    const QString path = mDocument->filePath();
    return path.endsWith(QLatin1Char('/')) ? QString() : path;
}

QString ProjectController::folder() const
{
    return mDocument->projectDirectory();
}

ProjectSaveOptions ProjectController::saveOptions()
{
    ProjectSaveOptions options;
    options.prettifyXml = MorvaneSettings::prettifyXML;
    options.prettifyJson = MorvaneSettings::prettifyJson;
    options.objInfoNamesUniqueToFile = MorvaneSettings::saveObjInfoNamesUniqueToFile;
    options.pixelArtMode = MorvaneSettings::pixelArtMode;
    if (MorvaneSettings::saveAbsoluteAnimationPoseData) {
        // The world pose of a sprite at its own mainline key, for readers that
        // do not compose bones themselves.
        options.absolutePose = [](const ZRef &ref, DisplayInfo *pose) {
            const MainlineKey *key = ref.parentMainlineKey();
            if (!key)
                return false;
            *pose = ref.unmappedInfo(key->currentTime());
            return true;
        };
    }
    return options;
}

// Recent files ---------------------------------------------------------------

void ProjectController::setRecentFiles(const QStringList &files)
{
    mRecentFiles = files.mid(0, maxRecentFiles);
    updateRecentFileActions();
}

void ProjectController::addRecentFile(const QString &path)
{
    mRecentFiles.removeAll(path);
    mRecentFiles.prepend(path);
    while (mRecentFiles.size() > maxRecentFiles)
        mRecentFiles.removeLast();
    updateRecentFileActions();
}

void ProjectController::setRecentFilesMenu(QMenu *menu)
{
    for (int i = 0; i < maxRecentFiles; ++i) {
        auto *action = new QAction(menu);
        action->setVisible(false);
        action->setData(i);
        connect(action, &QAction::triggered, this, [this, i] { openRecentFile(i); });
        menu->addAction(action);
        mRecentFileActions.append(action);
    }
    updateRecentFileActions();
}

void ProjectController::updateRecentFileActions()
{
    for (int i = 0; i < mRecentFileActions.size(); ++i) {
        QAction *action = mRecentFileActions.at(i);
        action->setVisible(i < mRecentFiles.size());
        if (i < mRecentFiles.size())
            action->setText(mRecentFiles.at(i));
    }
}

void ProjectController::openRecentFile(int index)
{
    if (!verifySaveChanged(tr("loading the project project")))
        return;
    if (index >= 0 && index < mRecentFiles.size())
        open(mRecentFiles.at(index));
}

// Asking -----------------------------------------------------------------------

bool ProjectController::verifySaveChanged(const QString &what)
{
    if (mUndoStack->isClean())
        return true;
    QMessageBox box(QMessageBox::Warning, tr("Save changes?"),
                    tr("You have unsaved changes, would you like to save before ") + what
                        + QLatin1Char('?'),
                    QMessageBox::Save | QMessageBox::No | QMessageBox::Cancel, mWindow);
    box.setDefaultButton(QMessageBox::Save);
    box.setEscapeButton(QMessageBox::Cancel);
    switch (box.exec()) {
    case QMessageBox::Save:
        save();
        return true;
    case QMessageBox::No:
        return true;
    default:
        return false;
    }
}

void ProjectController::newProjectFlow()
{
    if (!verifySaveChanged(tr("creating a new project")))
        return;
    QMessageBox box(QMessageBox::Information, tr("New Project"),
                    tr("Choose the root folder for your project."),
                    QMessageBox::Ok | QMessageBox::Cancel, mWindow);
    box.setInformativeText(tr("Choose a folder that contains the only images you want for your "
                              "project. The images can be in subfolders as well."));
    if (box.exec() != QMessageBox::Ok)
        return;
    const QString chosen = QFileDialog::getExistingDirectory(
        mWindow, tr("Choose a new project folder."),
        QSettings().value("lastDirectory", QStringLiteral(".")).toString());
    if (!chosen.isEmpty())
        newProject(chosen);
}

void ProjectController::openFlow()
{
    if (!verifySaveChanged(tr("loading a project")))
        return;
    const QString start = hasProject()
                              ? folder()
                              : QSettings().value("lastDirectory", QStringLiteral(".")).toString();
    loadOnOpen(QFileDialog::getOpenFileName(
        mWindow, tr("Open Morvane Project"), start,
        tr("all Morvane files (*.rigx *.rigj);;rigx Files (*.rigx);;rigj files (*.rigj)")));
}

void ProjectController::importFlow()
{
    const QString path = QFileDialog::getOpenFileName(
        mWindow, tr("Import Another Project Into Current"), folder(),
        tr("all Morvane files (*.rigx *.rigj);;rigx Files (*.rigx);;rigj files (*.rigj)"));
    if (!path.isEmpty())
        importProject(path);
}

// Doing -------------------------------------------------------------------------

void ProjectController::newProject(const QString &chosenFolder)
{
    const QString path = QDir::fromNativeSeparators(chosenFolder);
    emit documentAboutToChange();
    mDocument->clear();
    // The folder alone, with a trailing "/": the project has no file name yet.
    mDocument->setFilePath(path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/'));
    mUndoStack->clear();
    mUndoStack->setClean();
    MorvaneSettings::shownMissingImagesOnceForThisFile = false;
    emit documentChanged();
    emit projectChanged();
}

void ProjectController::loadOnOpen(const QString &path)
{
    if (!path.isEmpty())
        open(QFileInfo(path).absoluteFilePath());
}

bool ProjectController::open(const QString &path)
{
    MorvaneSettings::shownMissingImagesOnceForThisFile = false;
    QString error;
    QStringList warnings;
    // The file is parsed completely before the document changes, so a failed
    // open leaves the current project, its title and the recent list alone.
    emit documentAboutToChange();
    const bool opened = ProjectFile::open(mDocument.get(), path, mIoHost.get(), &error, &warnings);
    emit documentChanged();
    if (!opened) {
        QMessageBox::warning(mWindow, tr("Open Morvane Project"),
                             tr("The project could not be opened.\n\n%1").arg(error));
        emit projectChanged();
        return false;
    }
    // The history belongs to the project that was open before.
    mUndoStack->clear();
    mUndoStack->setClean();
    MorvaneSettings::shownMissingImagesOnceForThisFile = false;
    addRecentFile(path);
    emit projectChanged();
    showWarnings(mWindow, tr("Open Morvane Project"),
                 tr("%1 was opened, but parts of it could not be used:")
                     .arg(QFileInfo(path).fileName()),
                 warnings);
    return true;
}

bool ProjectController::importProject(const QString &path)
{
    QString error;
    QStringList warnings;
    emit documentAboutToChange();
    const bool merged =
        ProjectFile::importInto(mDocument.get(), path, mIoHost.get(), &error, &warnings);
    emit documentChanged();
    if (!merged) {
        if (!error.isEmpty())
            QMessageBox::warning(mWindow, tr("Import Another Project Into Current"),
                                 tr("The project could not be merged.\n\n%1").arg(error));
        return false;
    }
    // The merge cleared the undo history, but the project now differs from
    // its file: it must stay savable.
    mUndoStack->resetClean();
    emit projectChanged();
    showWarnings(mWindow, tr("Import Another Project Into Current"),
                 tr("%1 was merged, but parts of it could not be used:")
                     .arg(QFileInfo(path).fileName()),
                 warnings);
    return true;
}

bool ProjectController::saveTo(const QString &path)
{
    QString error;
    // Saving leaves the document's items as they are, so the views keep the shown
    // animation, time, selection and zoom.
    const bool saved = ProjectFile::save(mDocument.get(), path, saveOptions(), mIoHost.get(), &error);
    // An empty error means the user chose not to save there. The io layer's
    // text names the file and the reason; it is shown as it is.
    if (!saved && !error.isEmpty())
        QMessageBox::warning(mWindow, tr("Save Morvane Project"),
                             tr("The project could not be saved.\n\n%1").arg(error));
    return saved;
}

bool ProjectController::save()
{
    const QString path = filePath();
    if (path.isEmpty())
        return saveAs();
    if (!saveTo(path))
        return false;
    addRecentFile(path);
    mUndoStack->setClean();
    emit projectChanged();
    return true;
}

bool ProjectController::saveAs()
{
    // A new project is saved into its own folder, where its images are.
    const QString start = !filePath().isEmpty() ? filePath()
                          : hasProject()
                              ? folder()
                              : QSettings().value("lastDirectory", QStringLiteral(".")).toString();
    QString selectedFilter;
    QString path = QFileDialog::getSaveFileName(
        mWindow, tr("Save Morvane Project"), start,
        tr("rigx/xml file (*.rigx);;rigj/json file (*.rigj)"), &selectedFilter);
    if (path.isEmpty())
        return false;
    path = QDir::fromNativeSeparators(path);
    if (!path.endsWith(QStringLiteral(".rigx"), Qt::CaseInsensitive)
        && !path.endsWith(QStringLiteral(".rigj"), Qt::CaseInsensitive))
        path += selectedFilter.contains(QStringLiteral("rigj")) ? QStringLiteral(".rigj")
                                                                 : QStringLiteral(".rigx");
    const QString oldFolder = folder();
    if (!saveTo(path))
        return false;
    mUndoStack->setClean();
    mDocument->setFilePath(path);
    addRecentFile(path);
    emit projectChanged();
    if (folder() != oldFolder)
        mDocument->refreshAllPixmaps();
    return true;
}

bool ProjectController::saveNewVersion()
{
    const QString path = filePath();
    if (path.isEmpty())
        return saveAs();
    const QString target =
        nextVersionPath(path, [](const QString &candidate) { return QFileInfo::exists(candidate); });
    if (!saveTo(target))
        return false;
    mDocument->setFilePath(target);
    addRecentFile(target);
    mUndoStack->setClean();
    emit projectChanged();
    return true;
}

} // namespace Morvane
