// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "morvanewindow.h"

#include "io/projectfile.h"
#include "model/rigxdata.h"
#include "actionicons.h"
#include "canvas/canvaseditor.h"
#include "canvas/clipboard/clipboardeditor.h"
#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/morvanegraphicsview.h"
#include "canvas/tools/toolmanager.h"
#include "export/exporttopngdialog.h"
#include "canvashost.h"
#include "model/animation.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "timeline/mainlineview.h"
#include "timeline/timelineeditor.h"
#include "timeline/timelineitems.h"
#include "timeline/timelinerows.h"
#include "timeline/timelineview.h"
#include "autosaver.h"
#include "imagecoderpath.h"
#include "ui/shortcuts/keyshortcutdockwidget.h"
#include "morvanesettings.h"
#include "morvanesettingsdialog.h"
#include "projectcontroller.h"
#include "projectnaming.h"
#include "saveoptionsdialog.h"
#include "tutorialdialog.h"
#include "ui/animations/animationspanel.h"
#include "ui/batchconvert/batchconvert.h"
#include "ui/charmaps/charmapspanel.h"
#include "ui/curveeditor/curveeditor.h"
#include "ui/help/helpviewer.h"
#include "ui/packing/packdialog.h"
#include "ui/palette/palettepanel.h"
#include "ui/properties/propertiespanel.h"
#include "ui/variables/tagspanel.h"
#include "ui/variables/variablespanel.h"
#include "ui_morvanewindow.h"
#include "updatechecker.h"
#include "updatecheckoptionsdialog.h"
#include "windowactions.h"
#include "windowprojectiohost.h"

#include <QApplication>
#include <QCloseEvent>
#include <QColorDialog>
#include <QDateTime>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLWidget>
#include <QScreen>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QUndoStack>

#include <cstdlib>

// The library's resources are linked statically and need registering.
static void initMorvaneResources()
{
    Q_INIT_RESOURCE(morvane);
}

namespace Morvane {

namespace {

// The addresses of the object keys selected in the timeline.
QList<Address> selectedTimelineKeys(const TimelineView *view, const EditorSession *session)
{
    QList<Address> keys;
    const Animation *animation = session->currentAnimation();
    if (!animation)
        return keys;
    for (const TimelineKeyGraphicsProxy *marker : view->selectedKeys()) {
        const RowId &row = marker->row()->id();
        if (row.kind != RowId::Kind::Timeline)
            continue;
        const Timeline *timeline = animation->timeline(row.timeline);
        if (const TimelineKey *key = timeline ? timeline->actualKeyFromTime(marker->currentTime())
                                              : nullptr)
            keys.append(key->address());
    }
    return keys;
}

// The keys selected in the timeline when it has the focus: a mainline key
// stands for itself and every key at its time.
QList<CopiedKey> focusedTimelineKeys(const TimelineView *view)
{
    QList<CopiedKey> keys;
    if (!view->hasFocus() && !view->viewport()->hasFocus())
        return keys;
    for (const TimelineKeyGraphicsProxy *marker : view->selectedKeys()) {
        const RowId &row = marker->row()->id();
        CopiedKey key;
        key.time = marker->currentTime();
        if (row.kind == RowId::Kind::Timeline)
            key.timeline = row.timeline;
        else if (row.kind != RowId::Kind::Mainline)
            continue;
        if (!keys.contains(key))
            keys.append(key);
    }
    return keys;
}

} // namespace

RigxData *MorvaneWindow::rigx = nullptr;

MorvaneWindow::MorvaneWindow(const QString &version, const QStringList &arguments,
                             QWidget *parent)
    : QMainWindow(parent)
    , mUi(new Ui::MorvaneWindow)
    , mNetworkManager(new QNetworkAccessManager(this))
    , mSettings(new MorvaneSettings(this))
    , mUndoStack(new QUndoStack(this))
    , mVersion(version)
{
    // Coders shipped beside the program win; without them the image library
    // must find the system's, so nothing is set.
    const QString coders = imageCoderPath(QCoreApplication::applicationDirPath());
    if (!coders.isEmpty())
        qputenv("MAGICK_CODER_MODULE_PATH", coders.toUtf8());
    qputenv("LD_LIBRARY_PATH", "/usr/local/lib");

    MorvaneSettings::mainWindow = this;
    mUi->setupUi(this);
    initMorvaneResources();
    setWindowIcon(QIcon(QStringLiteral(":/icons/morvane.svg")));
    if (windowIcon().isNull())
        setWindowIcon(ActionIcons::applicationIcon());
    auto *editor = new CanvasEditor(this);
    mUi->centralLayout->addWidget(editor);
    mCanvas = new CanvasHost(editor, mUndoStack, statusBar(), this);
    MorvaneSettings::mainScene = editor->scene();
    EditorSession::setCurrent(editor->session());

    mKeyShortcutDock = new KeyShortcutDockWidget(this);
    addDockWidget(Qt::RightDockWidgetArea, mKeyShortcutDock);
    mKeyShortcutDock->show();
    mKeyShortcutDock->setFloating(true);
    mKeyShortcutDock->hide();
    mUi->menuHelp->insertAction(mUi->actionDownload_Example_Character,
                                mKeyShortcutDock->toggleViewAction());

    // The classic style is gone from current toolkits; Fusion is its heir.
    if (!QApplication::setStyle(QStringLiteral("cleanlooks")))
        QApplication::setStyle(QStringLiteral("Fusion"));
    setMouseTracking(true);

    mProject = new ProjectController(mUndoStack, version, this);
    mUi->menuOpen_Recent_Project->removeAction(mUi->nullFile);
    mProject->setRecentFilesMenu(mUi->menuOpen_Recent_Project);

    // Without a window manager (a bare virtual display) maximising does
    // nothing, so start at the screen's size anyway.
    if (QScreen *screen = QGuiApplication::primaryScreen())
        setGeometry(screen->availableGeometry());
    showMaximized();
    rigx = mProject->document();
    ProjectFile::setDefaultHost(mProject->ioHost());
    setupWidgets();
    setupConnections();
    setupShorcuts();
    enableProjectActions(false);
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

    mUpdateChecker = new UpdateChecker(mNetworkManager, this);
    connect(mUpdateChecker, &UpdateChecker::statusMessage, statusBar(), &QStatusBar::showMessage);
    if (MorvaneSettings::updateCheckSettings == 0) {
        UpdateCheckOptionsDialog dialog(this);
        dialog.exec();
    }
    if (MorvaneSettings::updateCheckSettings == 2)
        mUpdateChecker->checkForAnyUpdate(nullptr);
    else if (MorvaneSettings::updateCheckSettings == 1)
        mUpdateChecker->checkForStableUpdate(nullptr);

    restoreGeometry(store.value("morvaneWindowGeometry").toByteArray());
    mProject->setRecentFiles(store.value("recentFiles").toStringList());

    mAutoSaver = new AutoSaver(mProject->document(), mUndoStack, statusBar(), this);
    mAutoSaver->setSaveOptions(&ProjectController::saveOptions);

    // Kept with their handlers, but this build never shows them.
    mUi->actionAlways_Play_Subentities->setVisible(false);
    mUi->actionExport_Baked_Project->setVisible(false);
    mUi->actionBatch_Export_To_PNG_GIF->setVisible(false);
    mUi->actionSave_Project_As_Legacy->setVisible(false);

    openCommandLineProject(arguments);

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
    QTimer::singleShot(0, this, [this] { canvas()->view()->centerView(); });
}

MorvaneWindow::~MorvaneWindow()
{
    // The canvas reads the document: it lets go first, then a copy still being
    // written goes, then the document.
    mCanvas->setDocument(nullptr);
    // The stack outlives this body (a child, deleted by QWidget) and says it
    // is clean again as it goes: nothing that listens may still run then.
    mUndoStack->disconnect();
    if (MorvaneSettings::mainWindow == this) {
        MorvaneSettings::mainWindow = nullptr;
        MorvaneSettings::mainScene = nullptr;
        EditorSession::setCurrent(nullptr);
    }
    delete mAutoSaver;
    if (ProjectFile::host() == mProject->ioHost())
        ProjectFile::setDefaultHost(nullptr);
    if (rigx == mProject->document())
        rigx = nullptr;
    delete mProject;
    delete mUi;
}

void MorvaneWindow::openCommandLineProject(const QStringList &arguments)
{
    if (arguments.isEmpty())
        return;
    const QString path = arguments.last();
    // Anything that is not an existing project file is ignored without a word,
    // as the program path (always first) must be.
    if (isOpenableProjectArgument(path))
        mProject->loadOnOpen(path);
}

void MorvaneWindow::setupWidgets()
{
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
    // The Palette and Animations column runs the window's full height: on a
    // 1000-pixel screen the timeline across the bottom left them a few rows.
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
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
    // The timeline takes its dock's place holder.
    TimelineEditor *timelineEditor = nullptr;
    for (QDockWidget *dock : std::as_const(mDockWidgets)) {
        if (dock->objectName() != QLatin1String("timelineDock"))
            continue;
        auto *timeline = new TimelineEditor(canvas()->session(), dock);
        timelineEditor = timeline;
        delete dock->widget();
        dock->setWidget(timeline);
        connect(timeline, &TimelineEditor::statusMessage, this,
                [this](const QString &text) { statusBar()->showMessage(text, 5000); });
        connect(timeline, &TimelineEditor::snappingOptionsChanged, this, [] {
            MorvaneSettings::snappingEnabled = TimelineView::snappingEnabled;
            MorvaneSettings::useSnappingFramesAsUnits = MainlineView::useFramesAsUnits;
            MorvaneSettings::lastSnappingInterval = Animation::lastSnappingInterval;
        });
    }
    // The panels that exist replace their empty stand-ins.
    EditorSession *session = canvas()->session();
    for (QDockWidget *dock : std::as_const(mDockWidgets)) {
        const QString name = dock->objectName();
        QWidget *panel = nullptr;
        if (name == QLatin1String("paletteDock"))
            panel = new PalettePanel(session, dock);
        else if (name == QLatin1String("animationDock"))
            panel = new AnimationsPanel(session, dock);
        else if (name == QLatin1String("objectPropertiesDock"))
            panel = new PropertiesPanel(session);
        else if (name == QLatin1String("characterMapDock"))
            panel = new CharMapsPanel(session);
        else if (name == QLatin1String("variablesDock"))
            panel = new VariablesPanel(session);
        else if (name == QLatin1String("tagsDock"))
            panel = new TagsPanel(session);
        else if (name == QLatin1String("curveEditorDock")) {
            auto *curves = new CurveEditor(session);
            if (timelineEditor) {
                // Keys selected in the timeline are the curve editor's keys.
                TimelineView *view = timelineEditor->timelineView();
                connect(view, &TimelineView::keySelectionChanged, curves, [view, session, curves] {
                    const QList<Address> keys = selectedTimelineKeys(view, session);
                    if (!keys.isEmpty())
                        curves->setKeys(keys);
                });
            }
            panel = curves;
        }
        if (panel) {
            delete dock->widget();
            dock->setWidget(panel);
        }
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
    connect(mUi->actionUse_Multi_Threading, &QAction::toggled, mSettings,
            &MorvaneSettings::enableMultiThreading);

    ProjectController *project = mProject;
    connect(mUi->actionNew_Project, &QAction::triggered, project, &ProjectController::newProjectFlow);
    connect(mUi->actionLoad_Project, &QAction::triggered, project, &ProjectController::openFlow);
    connect(mUi->actionSave_Project, &QAction::triggered, project, &ProjectController::save);
    connect(mUi->actionSave_Project_As, &QAction::triggered, project, &ProjectController::saveAs);
    connect(mUi->actionSave_New_Version, &QAction::triggered, project,
            &ProjectController::saveNewVersion);
    connect(mUi->actionImport_Another_Project_Into_Current, &QAction::triggered, project,
            &ProjectController::importFlow);
    connect(project, &ProjectController::documentAboutToChange, this,
            [this] { mCanvas->setDocument(nullptr); });
    connect(project, &ProjectController::documentChanged, this,
            [this] { mCanvas->setDocument(rigx); });
    connect(project, &ProjectController::projectChanged, this, [this] {
        enableProjectActions(mProject->hasProject());
        setMorvaneWindowTitle();
    });

    connect(mUi->actionHelp, &QAction::triggered, this, [this] { HelpViewer::showManual(this); });
    connect(mUi->actionBatch_Convert_Between_rigx_rigj, &QAction::triggered, this, [this] {
        auto *dialog = new BatchConvert(rigx, this);
        dialog->setSaveOptions(ProjectController::saveOptions());
        dialog->setSaveProject([this] { return mProject->save(); });
        connect(dialog, &BatchConvert::runStarted, this, [this] { mCanvas->setDocument(nullptr); });
        connect(dialog, &BatchConvert::runFinished, mProject, &ProjectController::documentChanged);
        connect(dialog, &BatchConvert::runFinished, mProject, &ProjectController::projectChanged);
        dialog->open();
    });
    connect(mUi->actionGenerate_Sprite_Sheet_from_Project_Textures, &QAction::triggered, this,
            [this] { (new PackDialog(rigx, this))->open(); });
    const QList<QAction *> fileActions = mUi->menuFile->actions();
    mUi->menuFile->insertAction(
        fileActions.value(fileActions.indexOf(mUi->actionGenerate_TexturePacker_Spritesheet_tps) + 1),
        mUi->actionGenerate_Sprite_Sheet_from_Project_Textures);
    connect(mUi->actionExit, &QAction::triggered, this, &QWidget::close);
}

void MorvaneWindow::setupShorcuts()
{
    WindowActions::applyStandardShortcuts(mUi);
    // Actions outside every menu still need to live on the window for their
    // keys to work.
    addActions({mUi->actionCopy_with_child_sprites, mUi->actionCopy_with_child_bones,
                mUi->actionCopy_with_children, mUi->actionDelete_All_Instances,
                mUi->actionForce_names});
    mPendingActions = WindowActions::pending(mUi);
    // Export renders through the canvas's scene; the dialog owns the rest.
    mPendingActions.removeOne(mUi->actionExport_To_PNG);
    connect(mUi->actionExport_To_PNG, &QAction::triggered, this, [this] {
        ExportToPngDialog dialog(canvas()->session(), this);
        if (QAction *pixelArt = canvas()->action(QStringLiteral("actionPixel_Art_Mode")))
            dialog.setPixelArt(pixelArt->isChecked());
        dialog.exec();
    });
    for (QAction *action : std::as_const(mPendingActions))
        action->setEnabled(false);
    for (const auto &[action, name] : WindowActions::canvasLinks(mUi))
        mCanvas->link(action, name);
    // The form's clipboard entries drive the clipboard's actions and take
    // their keys (one key, one action).
    mClipboard = new ClipboardEditor(canvas()->scene(), this);
    mClipboard->registerWithCanvas(canvas());
    connect(mClipboard, &ClipboardEditor::statusMessage, this,
            [this](const QString &text) { statusBar()->showMessage(text, 5000); });
    // While the timeline has the focus, Copy takes its selected keys.
    if (auto *timeline = findChild<TimelineEditor *>()) {
        TimelineView *view = timeline->timelineView();
        mClipboard->setKeySource([view] { return focusedTimelineKeys(view); });
    }
    for (QAction *own : mClipboard->actions()) {
        if (auto *entry = findChild<QAction *>(own->objectName(), Qt::FindDirectChildrenOnly)) {
            entry->setShortcuts(own->shortcuts());
            own->setShortcuts({});
            connect(entry, &QAction::triggered, own, &QAction::trigger);
        }
    }
    // Copy with child sprites has no key of its own: the menu is its way in.
    mUi->menuEdit->insertActions(mUi->actionCopy_Selection_To_All_Frames,
                                 {mUi->actionCopy_with_child_sprites,
                                  mUi->actionCopy_with_child_bones, mUi->actionCopy_with_children});
    // The editor's other actions: tools on the canvas toolbar, the rest in
    // the menus where an animator looks for them, so its own bar would only
    // repeat them. Clone's usual key belongs
    // to Copy Selection To All Frames here.
    CanvasEditor *editor = canvas();
    editor->toolBar()->hide();
    QAction *clone = editor->action(QStringLiteral("actionClone"));
    clone->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+D")));
    const QList<QAction *> tools = editor->toolManager()->actions();
    QAction *firstMode = mUi->canvasToolbar->actions().value(0);
    mUi->canvasToolbar->insertActions(firstMode, tools);
    mUi->canvasToolbar->insertSeparator(firstMode);
    mUi->menuEdit->insertAction(mUi->actionSelect_All, clone);
    mUi->menuBackground_Color->insertActions(
        mUi->actionWhite, {editor->action(QStringLiteral("actionLight_Background")),
                           editor->action(QStringLiteral("actionDark_Background"))});
    mUi->menuView->addSeparator();
    for (const char *name :
         {"actionOnion_Skin", "actionOnion_Skin_By_Keys", "actionOnion_Skin_Selection_Only"})
        mUi->menuView->addAction(editor->action(QLatin1String(name)));
    mKeyShortcutDock->fill(findChildren<QAction *>(), this);
    mKeyShortcutDock->resize(420, 520);
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
        canvas()->view()->setViewport(new QOpenGLWidget);
    canvas()->view()->setProperty("openGLViewport", useGl);
}

void MorvaneWindow::enableProjectActions(bool enabled)
{
    const QList<QAction *> projectActions = WindowActions::projectDependent(mUi);
    for (QAction *action : projectActions)
        action->setEnabled(enabled && !mPendingActions.contains(action));
    mUi->actionSave_Project->setEnabled(enabled && !mUndoStack->isClean());
    mCanvas->setProjectOpen(enabled);
    canvas()->setEnabled(enabled);
}

QString MorvaneWindow::projectFilePath() const
{
    return mProject ? mProject->filePath() : QString();
}

void MorvaneWindow::setMorvaneWindowTitle()
{
    const QString path = projectFilePath();
    setWindowTitle(QStringLiteral("Morvane ") + QString(9, QLatin1Char(' '))
                   + (path.isEmpty() ? QStringLiteral("[Unsaved Project]") : path));
}

CanvasEditor *MorvaneWindow::canvas() const
{
    return mCanvas->editor();
}

void MorvaneWindow::closeEvent(QCloseEvent *event)
{
    if (!mProject->verifySaveChanged(tr("exiting"))) {
        event->ignore();
        return;
    }
    QSettings store;
    store.setValue("morvaneWindowGeometry", saveGeometry());
    store.setValue("morvaneWindowState", saveState());
    store.setValue("lastDirectory", projectFilePath());
    store.setValue("recentFiles", mProject->recentFiles());
    mCanvas->setDocument(nullptr);
    event->accept();
}

void MorvaneWindow::on_actionCustom_Save_Options_triggered()
{
    auto *dialog = new SaveOptionsDialog(this);
    dialog->open();
}

void MorvaneWindow::on_actionSettings_triggered()
{
    auto *dialog = new MorvaneSettingsDialog(this);
    mUpdateChecker->setSettingsDialog(dialog);
    connect(dialog, &MorvaneSettingsDialog::checkForStableUpdateRequested, mUpdateChecker,
            qOverload<>(&UpdateChecker::checkForStableUpdate));
    connect(dialog, &MorvaneSettingsDialog::checkForAnyUpdateRequested, mUpdateChecker,
            qOverload<>(&UpdateChecker::checkForAnyUpdate));
    if (dialog->exec() == QDialog::Accepted) {
        dialog->applyChoices();
        mAutoSaver->applySettings();
    }
    delete dialog;
}

void MorvaneWindow::on_actionDisable_Open_GL_requires_restart_triggered(bool checked)
{
    MorvaneSettings::openGLEnabled = !checked;
    QSettings().setValue("openGLEnabled", MorvaneSettings::openGLEnabled);
}

QColor MorvaneWindow::canvasBackground() const
{
    return canvas()->backgroundColor();
}

void MorvaneWindow::setCanvasBackground(const QColor &color)
{
    canvas()->setBackgroundColor(color);
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
            if (mProject->verifySaveChanged(tr("loading a project")))
                mProject->loadOnOpen(QFileInfo(candidate).canonicalFilePath());
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
                          "<p>Help &gt; Help opens the manual; Help &gt; Shortcut List shows "
                          "every key.</p>"
                          "<p>Copyright 2026 The Morvane developers. Licensed under the GNU "
                          "General Public License, version 3 or later.</p>")
                           .arg(mVersion));
}

} // namespace Morvane
