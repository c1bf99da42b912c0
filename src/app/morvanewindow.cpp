// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "morvanewindow.h"

#include "io/projectfile.h"
#include "io/xmlprojectwriter.h"
#include "model/displayinfo.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "actionicons.h"
#include "morvanesettings.h"
#include "morvanesettingsdialog.h"
#include "posepreview.h"
#include "projectnaming.h"
#include "saveoptionsdialog.h"
#include "tutorialdialog.h"
#include "ui_morvanewindow.h"
#include "updateaddresses.h"
#include "updateavailabledialog.h"
#include "updatecheckoptionsdialog.h"
#include "windowprojectiohost.h"

#include <QAbstractButton>
#include <QApplication>
#include <QBuffer>
#include <QCloseEvent>
#include <QColorDialog>
#include <QDateTime>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QGraphicsScene>
#include <QGraphicsSimpleTextItem>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLWidget>
#include <QSaveFile>
#include <QScreen>
#include <QSettings>
#include <QStatusBar>
#include <QStyle>
#include <QStyleFactory>
#include <QTableWidget>
#include <QThread>
#include <QTimer>
#include <QUndoStack>

#include <cstdlib>

// The library's resources are linked statically and need registering.
static void initMorvaneResources()
{
    Q_INIT_RESOURCE(morvane);
}

namespace Morvane {

RigxData *MorvaneWindow::rigx = nullptr;

namespace {

const QColor defaultBackground(0xa0, 0xa0, 0xa4);

} // namespace

MorvaneWindow::MorvaneWindow(const QString &version, const QStringList &arguments,
                             QWidget *parent)
    : QMainWindow(parent)
    , mUi(new Ui::MorvaneWindow)
    , mNetworkManager(new QNetworkAccessManager(this))
    , mSettings(new MorvaneSettings(this))
    , mUndoStack(new QUndoStack(this))
{
    // The image library looks for its coders beside the program.
    qputenv("MAGICK_CODER_MODULE_PATH", QCoreApplication::applicationDirPath().toUtf8());
    qputenv("LD_LIBRARY_PATH", "/usr/local/lib");

    MorvaneSettings::mainWindow = this;
    mUi->setupUi(this);
    initMorvaneResources();
    setWindowIcon(QIcon(QStringLiteral(":/icons/morvane.svg")));
    if (windowIcon().isNull())
        setWindowIcon(ActionIcons::applicationIcon());
    // Never shown by this build; hidden again with the others further down.
    mUi->actionAlways_Play_Subentities->setVisible(false);
    mPlaceholderScene = new QGraphicsScene(this);
    mUi->graphicsView->installEventFilter(this);
    mUi->graphicsView->setScene(mPlaceholderScene);
    MorvaneSettings::mainScene = mUi->graphicsView->scene();

    mKeyShortcutDock = new QDockWidget(tr("Shortcut List"), this);
    mKeyShortcutDock->setObjectName("keyShortcutDock");
    QAction *shortcutToggle = mKeyShortcutDock->toggleViewAction();
    shortcutToggle->setText(tr("Shortcut List"));
    shortcutToggle->setShortcut(QKeySequence(Qt::SHIFT | Qt::Key_Escape));
    addDockWidget(Qt::RightDockWidgetArea, mKeyShortcutDock);
    mKeyShortcutDock->show();
    mKeyShortcutDock->setFloating(true);
    mKeyShortcutDock->hide();
    mUi->menuHelp->insertAction(mUi->actionDownload_Example_Character, shortcutToggle);

    mVersion = version;
    // The classic style is gone from current toolkits; Fusion is its heir.
    if (!QApplication::setStyle(QStringLiteral("cleanlooks")))
        QApplication::setStyle(QStringLiteral("Fusion"));
    setMouseTracking(true);

    mUi->menuOpen_Recent_Project->removeAction(mUi->nullFile);
    for (int i = 0; i < maxRecentFiles; ++i) {
        auto *action = new QAction(this);
        action->setVisible(false);
        action->setData(i);
        connect(action, &QAction::triggered, this, &MorvaneWindow::openRecentFile);
        mUi->menuOpen_Recent_Project->addAction(action);
        mRecentFileActions.append(action);
    }

    // Without a window manager (a bare virtual display) maximising does
    // nothing, so start at the screen's size anyway.
    if (QScreen *screen = QGuiApplication::primaryScreen())
        setGeometry(screen->availableGeometry());
    showMaximized();
    setupRigx(version);
    enableProjectActions(false);
    setupWidgets(false);
    setupConnections();
    setupShorcuts();
    ActionIcons::apply(mUi);

    QCoreApplication::setOrganizationName(QStringLiteral("Tallowcraft"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("tallowcraft.org"));
    QCoreApplication::setApplicationName(QStringLiteral("Morvane"));
    QSettings store;

    std::srand(static_cast<unsigned>(QDateTime::currentSecsSinceEpoch()));

    MorvaneSettings::readAll(store);
    mUi->actionUse_Multi_Threading->setChecked(MorvaneSettings::multiThreadingEnabled);
    mUi->actionDisable_Open_GL_requires_restart->setChecked(!MorvaneSettings::openGLEnabled);
    mUi->actionAlways_Play_Subentities->setChecked(MorvaneSettings::alwaysPlaySubEntities);

    setupCanvasViewport();

    if (MorvaneSettings::updateCheckSettings == 0) {
        UpdateCheckOptionsDialog dialog(this);
        dialog.exec();
    }
    if (MorvaneSettings::updateCheckSettings == 2)
        checkForAnyUpdate(nullptr);
    else if (MorvaneSettings::updateCheckSettings == 1)
        checkForStableUpdate(nullptr);

    restoreGeometry(store.value("morvaneWindowGeometry").toByteArray());
    mRecentFiles = store.value("recentFiles").toStringList();
    while (mRecentFiles.size() > maxRecentFiles)
        mRecentFiles.removeLast();
    updateRecentFileActions();

    mAutoSaveTimer = new QTimer(this);
    mAutoSaveTimer->setObjectName("autoSaveTimer");
    mAutoSaveTimer->setInterval(MorvaneSettings::autoSaveInterval * 60000);
    if (MorvaneSettings::autoSaveEnabled && MorvaneSettings::autoSaveInterval >= 1)
        mAutoSaveTimer->start();
    connect(mAutoSaveTimer, &QTimer::timeout, this, &MorvaneWindow::on_autoSave_timeout);

    // Kept with their handlers, but this build never shows them.
    mUi->actionAlways_Play_Subentities->setVisible(false);
    mUi->actionExport_Baked_Project->setVisible(false);
    mUi->actionBatch_Export_To_PNG_GIF->setVisible(false);
    mUi->actionSave_Project_As_Legacy->setVisible(false);

    if (!arguments.isEmpty() && isOpenableProjectArgument(arguments.last()))
        loadOnOpen(arguments.last());

    setMorvaneWindowTitle();
    showMaximized();
    connect(mUi->actionVideo_Help, &QAction::triggered, this, &MorvaneWindow::showTutorialDialog);
    MorvaneSettings::showMessageAboutMissingImages =
        store.value("showMessageAboutMissingImages", true).toBool();
    MorvaneSettings::showMessageAboutSavingToTheWrongDirectory =
        store.value("showMessageAboutSavingToTheWrongDirectory", true).toBool();
    if (store.value("showVideoHelpOnStartup", true).toBool())
        showTutorialDialog();
    // The view has its final size only once the window is shown.
    QTimer::singleShot(0, this, [this] { mUi->graphicsView->centerOn(0, 0); });
}

MorvaneWindow::~MorvaneWindow()
{
    // The preview reads the document and draws into the scene: it goes first.
    delete mPreview;
    mPreview = nullptr;
    if (MorvaneSettings::mainWindow == this) {
        MorvaneSettings::mainWindow = nullptr;
        MorvaneSettings::mainScene = nullptr;
    }
    if (mAutoSaveThread)
        mAutoSaveThread->wait();
    if (ProjectFile::host() == mIoHost.get())
        ProjectFile::setDefaultHost(nullptr);
    if (rigx == mRigx.get())
        rigx = nullptr;
    delete mUi;
}

void MorvaneWindow::setupWidgets(bool projectLoaded)
{
    Q_UNUSED(projectLoaded);
    if (!mDockWidgets.isEmpty())
        return;

    // Panels arrive with their own features; until then each dock is an empty
    // panel so the layout and the Window menu are already in place.
    struct DockSpec
    {
        const char *objectName;
        const char *title;
        Qt::DockWidgetArea area;
    };
    const DockSpec specs[] = {
        {"paletteDock", QT_TR_NOOP("Palette"), Qt::LeftDockWidgetArea},
        {"animationDock", QT_TR_NOOP("Animations"), Qt::LeftDockWidgetArea},
        {"objectPropertiesDock", QT_TR_NOOP("Object Properties"), Qt::RightDockWidgetArea},
        {"characterMapDock", QT_TR_NOOP("Character Maps"), Qt::RightDockWidgetArea},
        {"variablesDock", QT_TR_NOOP("Variables"), Qt::RightDockWidgetArea},
        {"tagsDock", QT_TR_NOOP("Tags"), Qt::RightDockWidgetArea},
        {"timelineDock", QT_TR_NOOP("Timeline"), Qt::BottomDockWidgetArea},
        {"curveEditorDock", QT_TR_NOOP("Curve Editor"), Qt::BottomDockWidgetArea},
    };
    QDockWidget *previous[4] = {};
    for (const DockSpec &entry : specs) {
        auto *dock = new QDockWidget(tr(entry.title), this);
        dock->setObjectName(QLatin1String(entry.objectName));
        auto *panel = new QWidget(dock);
        panel->setMinimumSize(200, 120);
        dock->setWidget(panel);
        addDockWidget(entry.area, dock);
        QDockWidget *&last = previous[entry.area == Qt::LeftDockWidgetArea    ? 0
                                     : entry.area == Qt::RightDockWidgetArea ? 1
                                                                            : 2];
        if (last && entry.area != Qt::LeftDockWidgetArea)
            tabifyDockWidget(last, dock);
        last = dock;
        mDockWidgets.append(dock);
        mUi->menuWindow->addAction(dock->toggleViewAction());
    }
    // The first tab of each tabbed area is the one shown.
    for (QDockWidget *dock : std::as_const(mDockWidgets)) {
        if (dock->objectName() == QLatin1String("objectPropertiesDock")
            || dock->objectName() == QLatin1String("timelineDock"))
            dock->raise();
    }
    mUi->menuWindow->addSeparator();
    for (QToolBar *bar : {mUi->fileToolbar, mUi->editToolbar, mUi->viewToolbar,
                          mUi->canvasToolbar, mUi->snappingToolbar})
        mUi->menuWindow->addAction(bar->toggleViewAction());

    // The shortcut list is filled from the actions themselves so it stays true.
    auto *table = new QTableWidget(mKeyShortcutDock);
    table->setColumnCount(2);
    table->setHorizontalHeaderLabels({tr("Action"), tr("Shortcut")});
    table->verticalHeader()->hide();
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    const QList<QAction *> all = findChildren<QAction *>();
    int row = 0;
    for (QAction *action : all) {
        if (action->shortcut().isEmpty() || action->text().isEmpty())
            continue;
        table->insertRow(row);
        table->setItem(row, 0, new QTableWidgetItem(action->text()));
        table->setItem(row, 1,
                       new QTableWidgetItem(action->shortcut().toString(QKeySequence::NativeText)));
        ++row;
    }
    table->sortItems(0);
    table->horizontalHeader()->setStretchLastSection(true);
    table->resizeColumnToContents(0);
    mKeyShortcutDock->setWidget(table);
    mKeyShortcutDock->resize(420, 520);

    auto *text = mPlaceholderScene->addSimpleText(
        tr("Canvas editing is not part of this build yet."));
    text->setBrush(QColor(0x50, 0x50, 0x50));
    text->setPos(-text->boundingRect().width() / 2, 162);
    mPreview = new PosePreview(mPlaceholderScene, this);
    const QPen axisPen(QColor(0x70, 0x70, 0x70), 0);
    mPlaceholderScene->addLine(-40, 0, 40, 0, axisPen);
    mPlaceholderScene->addLine(0, -40, 0, 40, axisPen);
    mPlaceholderScene->setSceneRect(-2000, -2000, 4000, 4000);
    setCanvasBackground(defaultBackground);
    mUi->graphicsView->centerOn(0, 0);
}

void MorvaneWindow::setupConnections()
{
    connect(mUi->actionUndo, &QAction::triggered, mUndoStack, &QUndoStack::undo);
    connect(mUi->actionRedo, &QAction::triggered, mUndoStack, &QUndoStack::redo);
    connect(mUndoStack, &QUndoStack::canUndoChanged, mUi->actionUndo, &QAction::setEnabled);
    connect(mUndoStack, &QUndoStack::canRedoChanged, mUi->actionRedo, &QAction::setEnabled);
    mUi->actionUndo->setEnabled(false);
    mUi->actionRedo->setEnabled(false);
    connect(mUndoStack, &QUndoStack::cleanChanged, this,
            [this](bool clean) { mUi->actionSave_Project->setEnabled(!clean); });
    connect(mUndoStack, &QUndoStack::indexChanged, this, [this] {
        ++mChangeCount;
        if (mPreview)
            mPreview->setDocument(mRigx.get());
    });
    connect(mUi->actionUse_Multi_Threading, &QAction::toggled, mSettings,
            &MorvaneSettings::enableMultiThreading);
}

void MorvaneWindow::setupShorcuts()
{
    mUi->actionNew_Project->setShortcuts(QKeySequence::New);
    mUi->actionLoad_Project->setShortcuts(QKeySequence::Open);
    mUi->actionSave_Project->setShortcuts(QKeySequence::Save);
    mUi->actionSave_Project_As->setShortcuts(QKeySequence::SaveAs);
    mUi->actionClose_Project->setShortcuts(QKeySequence::Close);
    mUi->actionExit->setShortcuts(QKeySequence::Quit);
    mUi->actionUndo->setShortcuts(QKeySequence::Undo);
    mUi->actionRedo->setShortcuts(QKeySequence::Redo);
    mUi->actionCut->setShortcuts(QKeySequence::Cut);
    mUi->actionCopy->setShortcuts(QKeySequence::Copy);
    mUi->actionPaste->setShortcuts(QKeySequence::Paste);
    mUi->actionDelete->setShortcuts(QKeySequence::Delete);
    mUi->actionSelect_All->setShortcuts(QKeySequence::SelectAll);

    // Actions outside every menu still need to live on the window for their
    // keys to work.
    addActions({mUi->actionCopy_with_child_sprites, mUi->actionCopy_with_child_bones,
                mUi->actionCopy_with_children, mUi->actionDelete_All_Instances,
                mUi->actionForce_names});

    // Features that come with later parts of the editor.
    mPendingActions = {
        mUi->actionSave_Project_As_Legacy,
        mUi->actionExport_To_PNG,
        mUi->actionBatch_Export_To_PNG_GIF,
        mUi->actionExport_Baked_Project,
        mUi->actionGenerate_TexturePacker_Spritesheet_tps,
        mUi->actionGenerate_Sprite_Sheet_from_Project_Textures,
        mUi->actionBatch_Convert_Between_rigx_rigj,
        mUi->actionSave_As_Resized_Project_and_images,
        mUi->actionClose_Project,
        mUi->actionCut,
        mUi->actionCopy,
        mUi->actionPaste,
        mUi->actionCopy_Current_Frame,
        mUi->actionCopy_with_child_sprites,
        mUi->actionCopy_with_child_bones,
        mUi->actionCopy_with_children,
        mUi->actionCopy_Selection_To_All_Frames,
        mUi->actionAltPaste,
        mUi->actionDelete,
        mUi->actionDelete_From_All_Frames,
        mUi->actionDelete_All_Instances,
        mUi->actionSelect_All,
        mUi->actionMove_Up_in_Z_Order,
        mUi->actionMove_Down_In_Z_Order,
        mUi->actionMove_To_Top_in_Z_Order,
        mUi->actionMove_To_Bottom_in_Z_Order,
        mUi->actionCopy_Z_Order_to_Other_Frames,
        mUi->actionShow_Bones,
        mUi->actionLock_Bones,
        mUi->actionShow_Sprites_2,
        mUi->actionLock_Sprites,
        mUi->actionForce_names,
        mUi->actionSmooth_Sampling,
        mUi->actionPixel_Art_Mode,
        mUi->actionRotation_Snapping,
    };
    for (QAction *action : std::as_const(mPendingActions))
        action->setEnabled(false);
}

void MorvaneWindow::setupCanvasViewport()
{
    // The GL viewport needs a real context; the offscreen and minimal
    // platforms have none and would crash inside the GL widget.
    const QString platform = QGuiApplication::platformName();
    bool useGl = MorvaneSettings::openGLEnabled && platform != QLatin1String("offscreen")
                 && platform != QLatin1String("minimal") && !qEnvironmentVariableIsSet("MORVANE_NO_GL");
    if (useGl) {
        QOpenGLContext probe;
        QOffscreenSurface surface;
        surface.create();
        useGl = probe.create() && surface.isValid() && probe.makeCurrent(&surface);
        if (useGl)
            probe.doneCurrent();
    }
    if (useGl)
        mUi->graphicsView->setViewport(new QOpenGLWidget);
    else
        mUi->graphicsView->setViewport(new QWidget);
    mUi->graphicsView->setProperty("openGLViewport", useGl);
}

void MorvaneWindow::enableProjectActions(bool enabled)
{
    mProjectActions = {mUi->actionSave_Project_As,  mUi->actionSave_New_Version,
                       mUi->actionImport_Another_Project_Into_Current,
                       mUi->actionCenterView,       mUi->actionZoom_In,
                       mUi->actionZoom_Out,         mUi->actionRestore_Zoom,
                       mUi->actionWhite,            mUi->actionBlack,
                       mUi->actionGrey,             mUi->actionColorBackground};
    for (QAction *action : std::as_const(mProjectActions))
        action->setEnabled(enabled && !mPendingActions.contains(action));
    mUi->actionSave_Project->setEnabled(enabled && !mUndoStack->isClean());
    mUi->graphicsView->setEnabled(enabled);
}

void MorvaneWindow::setMorvaneWindowTitle()
{
    const QString path = projectFilePath();
    setWindowTitle(QStringLiteral("Morvane ") + QString(9, QLatin1Char(' '))
                   + (path.isEmpty() ? QStringLiteral("[Unsaved Project]") : path));
}

bool MorvaneWindow::verifySaveChanged(const QString &what)
{
    if (mUndoStack->isClean())
        return true;
    QMessageBox box(QMessageBox::Warning, tr("Save changes?"),
                    tr("You have unsaved changes, would you like to save before ") + what
                        + QLatin1Char('?'),
                    QMessageBox::Save | QMessageBox::No | QMessageBox::Cancel, this);
    box.setDefaultButton(QMessageBox::Save);
    box.setEscapeButton(QMessageBox::Cancel);
    switch (box.exec()) {
    case QMessageBox::Save:
        mUi->actionSave_Project->trigger();
        return true;
    case QMessageBox::No:
        return true;
    default:
        return false;
    }
}

void MorvaneWindow::addRecentFile(const QString &path)
{
    mRecentFiles.removeAll(path);
    mRecentFiles.prepend(path);
    while (mRecentFiles.size() >= maxRecentFiles + 1)
        mRecentFiles.removeLast();
    updateRecentFileActions();
}

void MorvaneWindow::updateRecentFileActions()
{
    for (int i = 0; i < mRecentFileActions.size(); ++i) {
        QAction *action = mRecentFileActions.at(i);
        if (i < mRecentFiles.size()) {
            action->setText(mRecentFiles.at(i));
            action->setVisible(true);
        } else {
            action->setVisible(false);
        }
    }
}

void MorvaneWindow::loadOnOpen(const QString &path)
{
    if (path.isEmpty())
        return;
    openProject(QFileInfo(path).absoluteFilePath());
}

bool MorvaneWindow::openProject(const QString &path)
{
    // The file is read completely before the document changes, so a failed
    // open leaves the current project, its title and the recent list alone.
    mPreview->setDocument(nullptr);
    const bool opened = openDocument(path);
    mPreview->setDocument(mRigx.get());
    if (!opened) {
        setMorvaneWindowTitle();
        return false;
    }
    openWindowsAndInit(false);
    mUi->actionSave_Project->setEnabled(false);
    addRecentFile(path);
    setMorvaneWindowTitle();
    return true;
}

void MorvaneWindow::openRecentFile()
{
    auto *action = qobject_cast<QAction *>(sender());
    if (!action)
        return;
    if (!verifySaveChanged(tr("loading the project project")))
        return;
    const int index = action->data().toInt();
    if (index >= 0 && index < mRecentFiles.size())
        openProject(mRecentFiles.at(index));
}

void MorvaneWindow::openWindowsAndInit(bool newProject)
{
    Q_UNUSED(newProject);
    mUndoStack->clear();
    mUndoStack->setClean();
    enableProjectActions(true);
    MorvaneSettings::shownMissingImagesOnceForThisFile = false;
}

bool MorvaneWindow::eventFilter(QObject *watched, QEvent *event)
{
    // Keep the origin, where characters stand, in the middle of the view.
    if (watched == mUi->graphicsView && event->type() == QEvent::Resize)
        QTimer::singleShot(0, this, [this] { mUi->graphicsView->centerOn(0, 0); });
    return QMainWindow::eventFilter(watched, event);
}

void MorvaneWindow::closeEvent(QCloseEvent *event)
{
    if (!verifySaveChanged(tr("exiting"))) {
        event->ignore();
        return;
    }
    QSettings store;
    store.setValue("morvaneWindowGeometry", saveGeometry());
    store.setValue("morvaneWindowState", saveState());
    store.setValue("lastDirectory", projectFilePath());
    store.setValue("recentFiles", mRecentFiles);
    mPreview->detachFromScene();
    if (MorvaneSettings::mainScene)
        MorvaneSettings::mainScene->clear();
    event->accept();
}

void MorvaneWindow::on_actionNew_Project_triggered()
{
    if (!verifySaveChanged(tr("creating a new project")))
        return;
    QMessageBox box(QMessageBox::Information, tr("New Project"),
                    tr("Choose the root folder for your project."),
                    QMessageBox::Ok | QMessageBox::Cancel, this);
    box.setInformativeText(tr("Choose a folder that contains the only images you want for your "
                              "project. The images can be in subfolders as well."));
    if (box.exec() != QMessageBox::Ok)
        return;
    QString folder = QFileDialog::getExistingDirectory(
        this, tr("Choose a new project folder."),
        QSettings().value("lastDirectory", QStringLiteral(".")).toString());
    if (folder.isEmpty())
        return;
    newProject(folder);
}

void MorvaneWindow::newProject(const QString &folder)
{
    const QString path = QDir::fromNativeSeparators(folder);
    mPreview->setDocument(nullptr);
    clearDocument();
    // The folder alone, with a trailing "/": the project has no file name yet.
    setDocumentPath(path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/'));
    openWindowsAndInit(true);
    mPreview->setDocument(mRigx.get());
    setMorvaneWindowTitle();
}

void MorvaneWindow::on_actionLoad_Project_triggered()
{
    if (!verifySaveChanged(tr("loading a project")))
        return;
    const QString start = !projectFolder().isEmpty()
                              ? projectFolder()
                              : QSettings().value("lastDirectory", QStringLiteral(".")).toString();
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Open Morvane Project"), start,
        tr("all Morvane files (*.rigx *.rigj);;rigx Files (*.rigx);;rigj files (*.rigj)"));
    loadOnOpen(path);
}

void MorvaneWindow::on_actionSave_Project_triggered()
{
    const QString path = projectFilePath();
    if (path.isEmpty()) {
        saveAs();
        return;
    }
    if (!saveDocument(path))
        return;
    addRecentFile(path);
    mUndoStack->setClean();
    mUi->actionSave_Project->setEnabled(false);
}

void MorvaneWindow::on_actionSave_Project_As_triggered()
{
    saveAs();
}

bool MorvaneWindow::saveAs()
{
    const QString start = projectFilePath().isEmpty()
                              ? QSettings().value("lastDirectory", QStringLiteral(".")).toString()
                              : projectFilePath();
    QString selectedFilter;
    QString path = QFileDialog::getSaveFileName(
        this, tr("Save Morvane Project"), start,
        tr("rigx/xml file (*.rigx);;rigj/json file (*.rigj)"), &selectedFilter);
    if (path.isEmpty())
        return false;
    path = QDir::fromNativeSeparators(path);
    if (!path.endsWith(QStringLiteral(".rigx"), Qt::CaseInsensitive)
        && !path.endsWith(QStringLiteral(".rigj"), Qt::CaseInsensitive))
        path += selectedFilter.contains(QStringLiteral("rigj")) ? QStringLiteral(".rigj")
                                                                 : QStringLiteral(".rigx");
    const QString oldFolder = projectFolder();
    if (!saveDocument(path))
        return false;
    mUndoStack->setClean();
    setDocumentPath(path);
    setMorvaneWindowTitle();
    addRecentFile(path);
    if (projectFolder() != oldFolder)
        mRigx->refreshAllPixmaps();
    return true;
}

void MorvaneWindow::on_actionSave_New_Version_triggered()
{
    const QString path = projectFilePath();
    if (path.isEmpty()) {
        saveAs();
        return;
    }
    const QString target =
        nextVersionPath(path, [](const QString &candidate) { return QFileInfo::exists(candidate); });
    if (!saveDocument(target))
        return;
    setDocumentPath(target);
    addRecentFile(target);
    mUndoStack->setClean();
    setMorvaneWindowTitle();
}

void MorvaneWindow::on_actionImport_Another_Project_Into_Current_triggered()
{
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Import Another Project Into Current"), projectFolder(),
        tr("all Morvane files (*.rigx *.rigj);;rigx Files (*.rigx);;rigj files (*.rigj)"));
    if (!path.isEmpty())
        importProject(path);
}

bool MorvaneWindow::importProject(const QString &path)
{
    QString error;
    QStringList warnings;
    mPreview->setDocument(nullptr);
    const bool merged = ProjectFile::importInto(mRigx.get(), path, mIoHost.get(), &error, &warnings);
    mPreview->setDocument(mRigx.get());
    if (!merged) {
        if (!error.isEmpty())
            QMessageBox::warning(this, tr("Import Another Project Into Current"),
                                 tr("The project could not be merged.\n\n%1").arg(error));
        return false;
    }
    // The merge cleared the undo history, but the project now differs from
    // its file: it must stay savable.
    mUndoStack->resetClean();
    mUi->actionSave_Project->setEnabled(true);
    if (!warnings.isEmpty())
        QMessageBox::information(this, tr("Import Another Project Into Current"),
                                 warnings.join(QLatin1Char('\n')));
    return true;
}

void MorvaneWindow::on_actionCustom_Save_Options_triggered()
{
    auto *dialog = new SaveOptionsDialog(this);
    dialog->open();
}

void MorvaneWindow::on_actionExit_triggered()
{
    close();
}

void MorvaneWindow::on_actionSettings_triggered()
{
    auto *dialog = new MorvaneSettingsDialog(this);
    mSettingsDialog = dialog;
    connect(dialog, &MorvaneSettingsDialog::checkForStableUpdateRequested, this,
            qOverload<>(&MorvaneWindow::checkForStableUpdate));
    connect(dialog, &MorvaneSettingsDialog::checkForAnyUpdateRequested, this,
            qOverload<>(&MorvaneWindow::checkForAnyUpdate));
    if (dialog->exec() == QDialog::Accepted) {
        dialog->applyChoices();
        applyAutoSaveSettings();
    }
    delete dialog;
}

void MorvaneWindow::applyAutoSaveSettings()
{
    if (MorvaneSettings::autoSaveEnabled && MorvaneSettings::autoSaveInterval > 0) {
        mAutoSaveTimer->setInterval(MorvaneSettings::autoSaveInterval * 60000);
        mAutoSaveTimer->start();
    } else {
        mAutoSaveTimer->stop();
    }
}

void MorvaneWindow::on_actionCenterView_triggered()
{
    mUi->graphicsView->centerOn(0, 0);
}

void MorvaneWindow::on_actionZoom_In_triggered()
{
    mZoomPercent = qMin(10000, mZoomPercent * 5 / 4 + 1);
    mUi->graphicsView->setTransform(QTransform::fromScale(mZoomPercent / 100.0, mZoomPercent / 100.0));
}

void MorvaneWindow::on_actionZoom_Out_triggered()
{
    mZoomPercent = qMax(1, mZoomPercent * 4 / 5);
    mUi->graphicsView->setTransform(QTransform::fromScale(mZoomPercent / 100.0, mZoomPercent / 100.0));
}

void MorvaneWindow::on_actionRestore_Zoom_triggered()
{
    mZoomPercent = 100;
    mUi->graphicsView->resetTransform();
}

void MorvaneWindow::on_actionDisable_Open_GL_requires_restart_triggered(bool checked)
{
    MorvaneSettings::openGLEnabled = !checked;
    QSettings().setValue("openGLEnabled", MorvaneSettings::openGLEnabled);
}

QColor MorvaneWindow::canvasBackground() const
{
    return mUi->graphicsView->backgroundBrush().color();
}

void MorvaneWindow::setCanvasBackground(const QColor &color)
{
    mUi->graphicsView->setBackgroundBrush(color);
}

void MorvaneWindow::on_actionWhite_triggered()
{
    setCanvasBackground(Qt::white);
}

void MorvaneWindow::on_actionBlack_triggered()
{
    setCanvasBackground(Qt::black);
}

void MorvaneWindow::on_actionGrey_triggered()
{
    setCanvasBackground(Qt::lightGray);
}

void MorvaneWindow::on_actionColorBackground_triggered()
{
    const QColor color = QColorDialog::getColor(canvasBackground(), this);
    if (color.isValid())
        setCanvasBackground(color);
}

void MorvaneWindow::on_actionAlways_Play_Subentities_triggered(bool checked)
{
    MorvaneSettings::alwaysPlaySubEntities = checked;
    QSettings().setValue("alwaysPlaySubEntities", checked);
}

void MorvaneWindow::on_actionHelp_triggered()
{
    showTutorialDialog();
}

void MorvaneWindow::showTutorialDialog()
{
    auto *dialog = new TutorialDialog(this);
    dialog->show();
}

void MorvaneWindow::on_actionDownload_Example_Character_triggered()
{
    // The example character ships with the program, so nothing is fetched.
    const QStringList candidates = {
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/morvane/examples/hero/hero.rigx"),
        QStringLiteral(MORVANE_SOURCE_EXAMPLES "/hero/hero.rigx"),
    };
    for (const QString &candidate : candidates) {
        if (QFileInfo::exists(candidate)) {
            if (verifySaveChanged(tr("loading a project")))
                loadOnOpen(QFileInfo(candidate).canonicalFilePath());
            return;
        }
    }
    statusBar()->showMessage(tr("The example character is not installed."), 5000);
}

void MorvaneWindow::on_actionReset_all_Show_this_again_settings_triggered()
{
    QSettings store;
    store.setValue("showMessageAboutMissingImages", true);
    store.setValue("showMessageAboutSavingToTheWrongDirectory", true);
    store.setValue("showVideoHelpOnStartup", true);
    MorvaneSettings::showMessageAboutMissingImages = true;
    MorvaneSettings::showMessageAboutSavingToTheWrongDirectory = true;
}

void MorvaneWindow::on_actionAbout_triggered()
{
    QMessageBox::about(this, tr("About Morvane"),
                       tr("<h3>Morvane %1</h3><p>A 2D skeletal cut-out animation editor.</p>"
                          "<p>Copyright 2026 The Morvane developers. Licensed under the GNU "
                          "General Public License, version 3 or later.</p>")
                           .arg(mVersion));
}

// Update check -----------------------------------------------------------

void MorvaneWindow::checkForAnyUpdate()
{
    checkForAnyUpdate(mSettingsDialog);
}

void MorvaneWindow::checkForStableUpdate()
{
    checkForStableUpdate(mSettingsDialog);
}

void MorvaneWindow::checkForAnyUpdate(MorvaneSettingsDialog *dialog)
{
    startUpdateCheck(true, dialog);
}

void MorvaneWindow::checkForStableUpdate(MorvaneSettingsDialog *dialog)
{
    startUpdateCheck(false, dialog);
}

void MorvaneWindow::startUpdateCheck(bool allUpdates, MorvaneSettingsDialog *dialog)
{
    if (dialog)
        dialog->setDownloadStatus(QString());
    mCheckingAllUpdates = allUpdates;
    mNetworkManager->get(QNetworkRequest(UpdateAddresses::checkPage(allUpdates)));
    // Connected anew on every check and never undone: a later reply reaches
    // the handler once per check made so far.
    connect(mNetworkManager, &QNetworkAccessManager::finished, this, &MorvaneWindow::fileDownloaded);
}

void MorvaneWindow::fileDownloaded(QNetworkReply *reply)
{
    const int date = UpdateAddresses::parseBuildDate(reply->readAll());
    reply->deleteLater();
    if (date >= UpdateAddresses::buildDate) {
        showUpdateAvailable(mCheckingAllUpdates);
    } else if (mSettingsDialog) {
        mSettingsDialog->setDownloadStatus(tr("Update check successful.  No new updates."));
    } else {
        statusBar()->showMessage(
            tr("Update check successful.  You already have the latest version."), 5000);
    }
}

void MorvaneWindow::showUpdateAvailable(bool allUpdates)
{
    UpdateAvailableDialog dialog(this, allUpdates);
    dialog.exec();
}

// Document access ----------------------------------------------------------

void MorvaneWindow::setupRigx(const QString &version)
{
    mRigx = std::make_unique<RigxData>(mUndoStack, version, this);
    rigx = mRigx.get();
    mIoHost = std::make_unique<WindowProjectIoHost>(this);
    ProjectFile::setDefaultHost(mIoHost.get());
}

QString MorvaneWindow::projectFilePath() const
{
    // A new project knows only its folder (a path ending in "/").
    const QString path = mRigx ? mRigx->filePath() : QString();
    return path.endsWith(QLatin1Char('/')) ? QString() : path;
}

QString MorvaneWindow::projectFolder() const
{
    return mRigx ? mRigx->projectDirectory() : QString();
}

void MorvaneWindow::setDocumentPath(const QString &path)
{
    mRigx->setFilePath(path);
}

void MorvaneWindow::clearDocument()
{
    mRigx->clear();
}

ProjectSaveOptions MorvaneWindow::saveOptions() const
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

bool MorvaneWindow::openDocument(const QString &path)
{
    MorvaneSettings::shownMissingImagesOnceForThisFile = false;
    QString error;
    // A fresh document can take a large file in less memory (its animations are parsed
    // one at a time), and the open project stays as it is until the new one is complete.
    auto fresh = std::make_unique<RigxData>(mUndoStack, mRigx->kind(), this);
    if (ProjectFile::open(fresh.get(), path, mIoHost.get(), &error)) {
        // Commands on the stack point into the old document: they go before it does.
        mUndoStack->clear();
        mRigx = std::move(fresh);
        rigx = mRigx.get();
        return true;
    }
    QMessageBox::warning(this, tr("Open Morvane Project"),
                         tr("The project could not be opened.\n\n%1").arg(error));
    return false;
}

bool MorvaneWindow::saveDocument(const QString &path)
{
    QString error;
    // Saving tidies the document (empty timelines, unused files), so the
    // preview lets go of it meanwhile.
    mPreview->setDocument(nullptr);
    const bool saved =
        ProjectFile::save(mRigx.get(), path, saveOptions(), mIoHost.get(), &error);
    mPreview->setDocument(mRigx.get());
    if (saved)
        return true;
    // An empty error means the user chose not to save there.
    if (!error.isEmpty())
        QMessageBox::warning(this, tr("Save Morvane Project"),
                             tr("The project could not be saved.\n\n%1").arg(error));
    return false;
}

// Autosave -------------------------------------------------------------------

void MorvaneWindow::on_autoSave_timeout()
{
    startAutoSave();
}

bool MorvaneWindow::startAutoSave()
{
    if (!mRigx || projectFolder().isEmpty())
        return false;
    if (mAutoSaveRunning || MorvaneSettings::suppressAutoSave())
        return false;

    const QString target =
        projectFolder() + QLatin1Char('/') + autoSaveFileName(mRigx->filePath());
    MorvaneSettings::startSuppressAutoSave();
    mAutoSaveRunning = true;
    updateAutoSaveStatus(1, 0);

    // The snapshot is the finished file in memory, taken on this thread so the
    // document is never read while it changes; only the disk write, the slow
    // part, runs on the worker.
    auto snapshot = std::make_shared<QByteArray>();
    {
        QBuffer buffer(snapshot.get());
        buffer.open(QIODevice::WriteOnly);
        mPreview->setDocument(nullptr);
        XmlProjectWriter::write(*mRigx, &buffer, saveOptions());
        mPreview->setDocument(mRigx.get());
    }
    updateAutoSaveStatus(2, 50);
    const quint64 changeCount = mChangeCount;
    auto ok = std::make_shared<bool>(false);
    QThread *worker = QThread::create([snapshot, target, ok] {
        QSaveFile file(target);
        *ok = file.open(QIODevice::WriteOnly) && file.write(*snapshot) == snapshot->size()
              && file.commit();
    });
    mAutoSaveThread = worker;
    connect(worker, &QThread::finished, this, [this, worker, target, ok, changeCount] {
        worker->deleteLater();
        finishAutoSave(target, *ok, changeCount);
    });
    worker->start(QThread::LowPriority);
    return true;
}

void MorvaneWindow::finishAutoSave(const QString &path, bool ok, quint64 changeCount)
{
    mAutoSaveRunning = false;
    MorvaneSettings::endSuppressAutoSave();
    emit autoSaveFinished(path, ok);
    if (!ok) {
        statusBar()->showMessage(tr("AutoSave failed: cannot write %1")
                                     .arg(QDir::toNativeSeparators(path)),
                                 5000);
        return;
    }
    if (changeCount != mChangeCount) {
        // The project changed while the copy was written: it is already stale.
        statusBar()->showMessage(tr("Changes made. Restarting AutoSave..."), 1500);
        startAutoSave();
        return;
    }
    updateAutoSaveStatus(3, 100);
}

void MorvaneWindow::updateAutoSaveStatus(int dots, int percent)
{
    const QString restarting = tr("Changes made. Restarting AutoSave...");
    if (statusBar()->currentMessage() == restarting)
        return;
    QString text = tr("AutoSaving") + QString(dots, QLatin1Char('.'));
    if (percent >= 0)
        text += QStringLiteral(" (") + QString::number(percent) + QStringLiteral("%)");
    statusBar()->showMessage(text, 400);
}

} // namespace Morvane
