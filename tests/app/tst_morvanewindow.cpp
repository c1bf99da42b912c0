// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "autosaver.h"
#include "ui/shortcuts/keyshortcutdockwidget.h"
#include "model/animation.h"
#include "model/file.h"
#include "model/object.h"
#include "morvanewindow.h"
#include "canvas/canvaseditor.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/morvanegraphicsview.h"
#include "canvas/objectgraphicsproxy.h"
#include "canvas/clipboard/clipboardeditor.h"
#include "canvas/editorsession.h"
#include "model/mainlinekey.h"
#include "timeline/timelineeditor.h"
#include "timeline/timelineitems.h"
#include "timeline/timelinerows.h"
#include "timeline/timelineview.h"
#include "projectcontroller.h"
#include "projectgenerator.h"
#include "testfiles.h"
#include "ui_morvanewindow.h"

#include <QDir>
#include <QMenuBar>
#include <QStatusBar>
#include <QTableWidget>
#include <QToolBar>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <QUndoStack>

#include <array>

using namespace Morvane;
using Test::windowTitle;
using Test::writeProject;

class TestMorvaneWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void identityAndTitle();
    void actions();
    void menusAndShortcutList();
    void unopenedArguments_data();
    void unopenedArguments();
    void cancelKeepsWindowAndSettings();
    void settingsRoundTrip();
    void backgroundColours();
    void reopeningMovesToTop();
    void saveActionFollowsProject();
    void exampleOpens_data();
    void exampleOpens();
    void absolutePoseOption_data();
    void absolutePoseOption();
    void canvasDragUndoSave();
    void timelineKeysCopyPaste();
    void canvasActionsFollowWindow();

private:
    Test::AppFixture mFixture;
};

void TestMorvaneWindow::init()
{
    mFixture.init();
}

void TestMorvaneWindow::cleanup()
{
    mFixture.cleanup();
}

void TestMorvaneWindow::identityAndTitle()
{
    {
        MorvaneWindow window(QStringLiteral("r4.1"), {});
        QCOMPARE(MorvaneSettings::mainWindow, &window);
        QVERIFY(MorvaneWindow::rigx);
        QCOMPARE(MorvaneSettings::mainRigx(), MorvaneWindow::rigx);
        QVERIFY(MorvaneSettings::mainScene);
        QVERIFY(MorvaneSettings::tagManager());
        QCOMPARE(window.windowTitle(), QString("Morvane          [Unsaved Project]"));
        QVERIFY(window.isMaximized());
        // No project yet: project actions are off.
        QVERIFY(!window.ui()->actionSave_Project->isEnabled());
        QVERIFY(!window.ui()->actionSave_Project_As->isEnabled());
        QVERIFY(window.ui()->actionNew_Project->isEnabled());
        QVERIFY(window.ui()->actionLoad_Project->isEnabled());
        // Nor do the canvas's, nor the canvas itself.
        QVERIFY(!window.ui()->actionZoom_In->isEnabled());
        QVERIFY(!window.ui()->actionDelete->isEnabled());
        QVERIFY(!window.canvas()->isEnabled());
        // No GL context exists on the offscreen platform.
        QCOMPARE(window.canvas()->view()->property("openGLViewport").toBool(), false);
        // Autosave is on every five minutes by default.
        QVERIFY(window.autoSaver()->timer()->isActive());
        QCOMPARE(window.autoSaver()->timer()->interval(), 5 * 60000);
        // Hidden for good by this build.
        for (QAction *hidden :
             {window.ui()->actionAlways_Play_Subentities, window.ui()->actionExport_Baked_Project,
              window.ui()->actionBatch_Export_To_PNG_GIF,
              window.ui()->actionSave_Project_As_Legacy})
            QVERIFY(!hidden->isVisible());
        QVERIFY(window.ui()->actionSave_New_Version->isVisible());
        // Commands reach the window's stack, and macros group them.
        MorvaneSettings::beginUndoMacro(QStringLiteral("both"));
        MorvaneSettings::pushUndo(Test::dirtyCommand());
        MorvaneSettings::pushUndo(Test::dirtyCommand());
        MorvaneSettings::endUndoMacro();
        QCOMPARE(window.undoStack()->count(), 1);
        QCOMPARE(window.undoStack()->text(0), QString("both"));
        QVERIFY(window.ui()->actionSave_Project->isEnabled());
        window.undoStack()->setClean();
    }
    // Gone with the window.
    QCOMPARE(MorvaneSettings::mainWindow, nullptr);
    QCOMPARE(MorvaneSettings::mainRigx(), nullptr);
    QCOMPARE(MorvaneSettings::tagManager(), nullptr);
}

// The actions whose keys are not the platform's standard ones, with their texts.
void TestMorvaneWindow::actions()
{
    const QList<std::array<const char *, 3>> table = {
        {"actionSave_New_Version", "Save New Version", "Ctrl++"},
        {"actionCopy_Current_Frame", "Copy Current Frame", "Ctrl+Shift+C"},
        {"actionCopy_with_children", "Copy with children", "Ctrl+Alt+Shift+C"},
        {"actionCopy_Selection_To_All_Frames", "Copy Selection To All Frames", "Ctrl+D"},
        {"actionAltPaste", "Paste To All Keys", "Ctrl+Shift+V"},
        {"actionDelete_From_All_Frames", "Delete From All Frames", "Shift+Del"},
        {"actionMove_Up_in_Z_Order", "Move Up in Z-Order", "Ctrl+Up"},
        {"actionMove_To_Bottom_in_Z_Order", "Move To Bottom in Z-Order", "Ctrl+Left"},
        {"actionCenterView", "Center View", "F"},
        {"actionRestore_Zoom", "Restore Zoom", "Ctrl+Alt+Shift+Space"},
        {"actionLock_Sprites", "Lock Sprites", "0"},
        {"actionShow_Sprites_2", "Show Sprites", "9"},
        {"actionForce_names", "Force names", "Ctrl+Alt+Shift+F"},
    };
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    for (const auto &[name, text, shortcut] : table) {
        auto *action = window.findChild<QAction *>(QLatin1String(name));
        QVERIFY2(action, name);
        QCOMPARE(action->text(), QString::fromLatin1(text));
        QCOMPARE(action->shortcut(), QKeySequence(QString::fromLatin1(shortcut)));
    }
}

void TestMorvaneWindow::menusAndShortcutList()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QStringList titles;
    for (QAction *action : window.menuBar()->actions())
        titles << action->text();
    QCOMPARE(titles, QStringList({"File", "Edit", "Window", "Modes", "View", "Help"}));

    // The shortcut list sits in the Help menu just before the example.
    const QList<QAction *> help = window.ui()->menuHelp->actions();
    const int example = help.indexOf(window.ui()->actionDownload_Example_Character);
    QVERIFY(example > 0);
    QCOMPARE(help.at(example - 1)->text(), QString("Shortcut List"));
    QCOMPARE(help.at(example - 1)->shortcut(), QKeySequence("Shift+Esc"));

    // It starts closed and floating, its rows sorted by text.
    auto *dock = window.findChild<KeyShortcutDockWidget *>();
    QVERIFY(dock->isFloating());
    QVERIFY(!dock->isVisible());
    QStringList texts;
    for (int row = 0; row < dock->table()->rowCount(); ++row)
        texts << dock->table()->item(row, 0)->text();
    QStringList sorted = texts;
    sorted.sort();
    QCOMPARE(texts, sorted);
}

void TestMorvaneWindow::unopenedArguments_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("create");
    QTest::newRow("upper case") << "hero.RIGX" << true;
    QTest::newRow("missing") << "gone.rigx" << false;
}

// Arguments that are not existing project files are ignored without a word.
void TestMorvaneWindow::unopenedArguments()
{
    QFETCH(QString, name);
    QFETCH(bool, create);
    const QString path = mFixture.path(name);
    if (create)
        QVERIFY(Test::writeFile(path, "<morvane_data/>\n"));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), QString());
    QCOMPARE(window.windowTitle(), Test::windowTitle(QString()));
    QVERIFY(window.project()->recentFiles().isEmpty());
    QCOMPARE(window.statusBar()->currentMessage(), QString());
}

void TestMorvaneWindow::cancelKeepsWindowAndSettings()
{
    auto *window = new MorvaneWindow(QStringLiteral("r4.1"), {});
    window->project()->addRecentFile(QStringLiteral("/p/a.rigx"));
    window->undoStack()->push(Test::dirtyCommand());
    QString seen;
    Test::ModalAnswerer answerer(
        [&](QWidget *modal) { seen = Test::clickInMessageBox(modal, QMessageBox::Cancel); });
    QVERIFY(!window->close());
    QVERIFY(seen.endsWith(QStringLiteral("before exiting?")));
    QVERIFY(window->isVisible());
    QSettings store;
    QVERIFY(!store.contains("recentFiles"));
    QVERIFY(!store.contains("morvaneWindowGeometry"));
    window->undoStack()->setClean();
    delete window;
}

// What a closed window stores, the next one reads.
void TestMorvaneWindow::settingsRoundTrip()
{
    {
        MorvaneWindow window(QStringLiteral("r4.1"), {});
        window.project()->addRecentFile(QStringLiteral("/p/a.rigx"));
        window.project()->addRecentFile(QStringLiteral("/p/b.rigj"));
        QVERIFY(window.close());
    }
    QSettings store;
    QCOMPARE(store.value("recentFiles").toStringList(), QStringList({"/p/b.rigj", "/p/a.rigx"}));
    QVERIFY(!store.value("morvaneWindowGeometry").toByteArray().isEmpty());
    QVERIFY(!store.value("morvaneWindowState").toByteArray().isEmpty());
    QVERIFY(store.contains("lastDirectory"));

    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QCOMPARE(window.project()->recentFiles(), QStringList({"/p/b.rigj", "/p/a.rigx"}));
    const QList<QAction *> actions = window.ui()->menuOpen_Recent_Project->actions();
    QCOMPARE(actions.at(1)->text(), QString("/p/a.rigx"));
    QVERIFY(!actions.at(2)->isVisible());
}

void TestMorvaneWindow::backgroundColours()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    const QList<QPair<QAction *, QColor>> choices = {{window.ui()->actionBlack, Qt::black},
                                                     {window.ui()->actionWhite, Qt::white},
                                                     {window.ui()->actionGrey, Qt::lightGray}};
    for (const auto &[action, colour] : choices) {
        action->setEnabled(true);
        action->trigger();
        QCOMPARE(window.canvasBackground(), colour);
    }
}

void TestMorvaneWindow::reopeningMovesToTop()
{
    const QString a = mFixture.path("a.rigx");
    const QString b = mFixture.path("b.rigx");
    const QString bad = mFixture.path("bad.rigx");
    QVERIFY(writeProject(a));
    QVERIFY(writeProject(b));
    QVERIFY(Test::writeFile(bad, "<?xml version=\"1.0\"?>\n<other_root/>\n"));
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    window.project()->loadOnOpen(a);
    window.project()->loadOnOpen(b);
    // A file that fails to open leaves the project and its title alone.
    Test::ModalAnswerer answerer([](QWidget *modal) { Test::clickInMessageBox(modal); });
    window.project()->loadOnOpen(bad);
    QVERIFY(answerer.answered());
    QCOMPARE(window.windowTitle(), windowTitle(b));
    // Opening through the recent menu's second entry moves it up again.
    window.ui()->menuOpen_Recent_Project->actions().at(1)->trigger();
    QCOMPARE(window.projectFilePath(), a);
    QCOMPARE(window.windowTitle(), windowTitle(a));
    QCOMPARE(window.project()->recentFiles(), QStringList({a, b}));
}

void TestMorvaneWindow::saveActionFollowsProject()
{
    const QString path = mFixture.path("walk.rigx");
    QVERIFY(writeProject(path));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    window.undoStack()->push(Test::dirtyCommand());
    QVERIFY(window.ui()->actionSave_Project->isEnabled());
    window.ui()->actionSave_New_Version->trigger();
    QCOMPARE(window.windowTitle(), windowTitle(mFixture.path("walk_000.rigx")));
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
}

void TestMorvaneWindow::exampleOpens_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("xml") << "hero.rigx";
    QTest::newRow("json") << "hero.rigj";
}

void TestMorvaneWindow::exampleOpens()
{
    QFETCH(QString, name);
    const QString path = QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero/") + name;
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), path);
    QCOMPARE(window.windowTitle(), windowTitle(path));
    QCOMPARE(window.project()->recentFiles(), QStringList(path));
    // A freshly loaded project is clean: nothing to save, but it can be saved as.
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
    QVERIFY(window.ui()->actionSave_Project_As->isEnabled());
    RigxData *document = MorvaneWindow::rigx;
    QVERIFY(!document->hasMissingImages());
    QVERIFY(document->entity(QStringLiteral("hero")));
    QVERIFY(document->entity(QStringLiteral("lantern")));

    // The canvas edits the first animation of the first entity at its start.
    MorvaneCanvasScene *scene = window.canvas()->scene();
    QCOMPARE(scene->model(), document);
    QVERIFY(scene->currentAnimation());
    QCOMPARE(scene->currentAnimation()->name(), QString("idle"));
    QCOMPARE(scene->currentTime(), 0);
    QVERIFY(scene->instTimelineProxyCount() > 0);
    // A project without entities shows nothing.
    window.project()->newProject(mFixture.folder());
    QVERIFY(!scene->currentAnimation());
    QCOMPARE(scene->instTimelineProxyCount(), 0);
}

void TestMorvaneWindow::absolutePoseOption_data()
{
    QTest::addColumn<bool>("absolute");
    QTest::newRow("off") << false;
    QTest::newRow("on") << true;
}

// Copies the example into `folder`, so that nothing is written into the source tree;
// returns the project's path.
static QString copyExample(const QString &folder)
{
    return Testing::copyTree(QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero"), folder)
               ? folder + QStringLiteral("/hero.rigx")
               : QString();
}

void TestMorvaneWindow::absolutePoseOption()
{
    QFETCH(bool, absolute);
    const QString path = copyExample(mFixture.folder());
    QVERIFY(!path.isEmpty());

    // Read from the store at start-up, as the Custom Save Options dialog leaves it.
    QSettings().setValue("saveAbsoluteAnimationPoseData", absolute);
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), path);
    window.undoStack()->push(Test::dirtyCommand());
    window.ui()->actionSave_Project->trigger();
    QVERIFY(window.undoStack()->isClean());

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray saved = file.readAll();
    QCOMPARE(saved.contains("abs_x="), absolute);
}

void TestMorvaneWindow::canvasDragUndoSave()
{
    const QString path = copyExample(mFixture.folder());
    QVERIFY(!path.isEmpty());
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    RigxData *document = window.project()->document();
    const QByteArray before = savedXml(*document);
    QVERIFY(!before.isEmpty());
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
    QVERIFY(!window.ui()->actionUndo->isEnabled());

    // Press in the middle of a sprite on the real view and drag it.
    MorvaneGraphicsView *view = window.canvas()->view();
    MorvaneCanvasScene *scene = window.canvas()->scene();
    ObjectGraphicsProxy *sprite = nullptr;
    for (int i = 0; i < scene->instTimelineProxyCount() && !sprite; ++i) {
        ObjectGraphicsProxy *proxy = scene->instTimelineProxyFromIndex(i);
        if (!proxy->isBone() && proxy->isShownInPose() && !proxy->isLocked())
            sprite = proxy;
    }
    QVERIFY(sprite);
    const QPoint from = view->mapFromScene(sprite->mapToScene(sprite->localRect().center()));
    QVERIFY(view->viewport()->rect().contains(from));
    const QPoint to = from + QPoint(40, 25);
    QTest::mousePress(view->viewport(), Qt::LeftButton, {}, from);
    for (int step = 1; step <= 4; ++step)
        QTest::mouseMove(view->viewport(), from + (to - from) * step / 4);
    QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, to);

    // The edit went through the window's stack: the project is modified.
    QVERIFY(!window.undoStack()->isClean());
    QVERIFY(window.ui()->actionSave_Project->isEnabled());
    QVERIFY(window.ui()->actionUndo->isEnabled());
    const QByteArray moved = savedXml(*document);
    QVERIFY(moved != before);

    // Undo gives the saved bytes back, Redo the moved ones.
    window.ui()->actionUndo->trigger();
    QVERIFY(window.undoStack()->isClean());
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
    QCOMPARE(savedXml(*document), before);
    QVERIFY(window.ui()->actionRedo->isEnabled());
    window.ui()->actionRedo->trigger();
    QCOMPARE(savedXml(*document), moved);

    // Save writes the change to the project's own file, and the canvas goes on showing
    // what it showed: the animation, the time, the selection and the view.
    EditorSession *session = window.canvas()->session();
    session->setCurrentAnimation(document->entity(0)->animation(QStringLiteral("walk")));
    session->setCurrentTime(300);
    session->setSelection({scene->instTimelineProxyFromIndex(1)});
    const QString selected = session->selection().value(0)->name();
    const QTransform viewTransform = view->transform();
    QVERIFY(window.ui()->actionSave_Project->isEnabled());
    QTest::keyClick(&window, Qt::Key_S, Qt::ControlModifier);
    QVERIFY(window.undoStack()->isClean());
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
    QCOMPARE(session->currentAnimation()->name(), QStringLiteral("walk"));
    QCOMPARE(session->currentTime(), 300);
    QCOMPARE(session->selection().size(), 1);
    QCOMPARE(session->selection().value(0)->name(), selected);
    QCoreApplication::processEvents();
    QCOMPARE(view->transform(), viewTransform);
    QCOMPARE(savedXml(*document), moved);
    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QVERIFY(ProjectFile::open(&reread, path));
    QCOMPARE(window.projectFilePath(), path);
    QCOMPARE(savedXml(reread), moved);
}

void TestMorvaneWindow::timelineKeysCopyPaste()
{
    const QString path = copyExample(mFixture.folder());
    QVERIFY(!path.isEmpty());
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    RigxData *document = window.project()->document();
    const QByteArray before = savedXml(*document);
    auto *timeline = window.findChild<TimelineEditor *>();
    QVERIFY(timeline);
    TimelineView *view = timeline->timelineView();
    EditorSession *session = window.canvas()->session();
    Animation *animation = session->currentAnimation();
    QVERIFY(animation);
    const int keysBefore = animation->mainlineKeyCount();

    // Click the mainline key at 0 in the timeline, then Copy with the timeline focused.
    TimelineKeyGraphicsProxy *marker = nullptr;
    for (QGraphicsItem *item : view->scene()->items()) {
        auto *key = qgraphicsitem_cast<TimelineKeyGraphicsProxy *>(item);
        if (key && key->row()->id().kind == RowId::Kind::Mainline && key->currentTime() == 0)
            marker = key;
    }
    QVERIFY(marker);
    view->setFocus();
    const QPoint at = view->mapFromScene(marker->sceneBoundingRect().center());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
    QVERIFY(!view->selectedKeys().isEmpty());
    view->setFocus();
    window.ui()->actionCopy->trigger();
    auto *clipboard = window.findChild<ClipboardEditor *>();
    QVERIFY(clipboard);
    QVERIFY(!clipboard->ownCopy()->isFrameCopy());
    QVERIFY(clipboard->ownCopy()->copiedKeyCount() > 1);
    QCOMPARE(savedXml(*document), before); // copying changes nothing

    // Paste at 300: a mainline key stands there now; one undo gives the bytes back.
    session->setCurrentTime(300);
    window.ui()->actionPaste->trigger();
    animation = session->currentAnimation();
    QVERIFY(animation->mainlineKeyAtExactTime(300));
    QCOMPARE(animation->mainlineKeyCount(), keysBefore + 1);
    const QByteArray pasted = savedXml(*document);
    window.ui()->actionUndo->trigger();
    QCOMPARE(savedXml(*document), before);
    window.ui()->actionRedo->trigger();
    QCOMPARE(savedXml(*document), pasted);

    // The timeline pastes the same copy at 900 in one more step.
    session->setCurrentTime(900);
    QVERIFY(view->pasteKeys(clipboard->ownCopy()));
    QVERIFY(session->currentAnimation()->mainlineKeyAtExactTime(900));
    window.ui()->actionUndo->trigger();
    QCOMPARE(savedXml(*document), pasted);
}

void TestMorvaneWindow::canvasActionsFollowWindow()
{
    const QString path = copyExample(mFixture.folder());
    QVERIFY(!path.isEmpty());
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    CanvasEditor *editor = window.canvas();

    // With the editor's own bar hidden, each of its actions is still in a
    // menu or toolbar of the window, itself or through its window twin.
    QVERIFY(editor->toolBar()->isHidden());
    QSet<QAction *> reachable;
    for (QWidget *bar : window.findChildren<QWidget *>()) {
        if ((qobject_cast<QMenu *>(bar) || qobject_cast<QToolBar *>(bar)) && bar != editor->toolBar())
            for (QAction *action : bar->actions())
                reachable.insert(action);
    }
    for (QAction *action : editor->editorActions()) {
        bool twin = false;
        for (QAction *windowAction : reachable)
            twin = twin || (windowAction->objectName() == action->objectName()
                            && windowAction != action);
        QVERIFY2(reachable.contains(action) || twin || action->objectName() == "actionCenter_View",
                 qPrintable(action->text()));
    }
    QCOMPARE(editor->action("actionZoom_In")->shortcut(), QKeySequence());
    QCOMPARE(window.ui()->actionZoom_In->shortcut(), QKeySequence("Ctrl+Space"));

    // The window's actions drive the editor's and mirror their state.
    QVERIFY(window.ui()->actionZoom_In->isEnabled());
    const int zoom = editor->view()->zoomPercent();
    window.ui()->actionZoom_In->trigger();
    QVERIFY(editor->view()->zoomPercent() > zoom);
    window.ui()->actionRestore_Zoom->trigger();
    QCOMPARE(editor->view()->zoomPercent(), 100);
    QVERIFY(window.ui()->actionPixel_Art_Mode->isEnabled());
    window.ui()->actionPixel_Art_Mode->trigger();
    QVERIFY(editor->action("actionPixel_Art_Mode")->isChecked());
    // Pixel art turns smoothing off: the window's Smooth Sampling follows.
    QVERIFY(!window.ui()->actionSmooth_Sampling->isEnabled());
    editor->action("actionPixel_Art_Mode")->trigger();
    QVERIFY(!window.ui()->actionPixel_Art_Mode->isChecked());
    QVERIFY(window.ui()->actionSmooth_Sampling->isEnabled());

    // Select All then Delete on the window removes the pose's objects, undoably.
    window.ui()->actionSelect_All->trigger();
    QVERIFY(!editor->scene()->selectedProxies().isEmpty());
    window.ui()->actionDelete->trigger();
    QVERIFY(!window.undoStack()->isClean());
    window.ui()->actionUndo->trigger();
    QVERIFY(window.undoStack()->isClean());
}

QTEST_MAIN(TestMorvaneWindow)
#include "tst_morvanewindow.moc"
