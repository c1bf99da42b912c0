// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "autosaver.h"
#include "keyshortcutdockwidget.h"
#include "morvanewindow.h"
#include "projectcontroller.h"
#include "ui_morvanewindow.h"

#include <QMenuBar>
#include <QStatusBar>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QUndoStack>

using namespace Morvane;

class TestMorvaneWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void identityAndTitle();
    void actions_data();
    void actions();
    void menusAndShortcutList();
    void unopenedArguments_data();
    void unopenedArguments();
    void recentFilesRestoredAtStart();
    void cancelKeepsWindowAndSettings();
    void closeWritesSettings();
    void backgroundColours();
    void settingsLocatorsFollowWindow();

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
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QCOMPARE(MorvaneSettings::mainWindow, &window);
    QVERIFY(MorvaneWindow::rigx);
    QVERIFY(MorvaneSettings::mainScene);
    QCOMPARE(window.windowTitle(), QString("Morvane          [Unsaved Project]"));
    QVERIFY(window.isMaximized());
    // No project yet: project actions are off.
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
    QVERIFY(!window.ui()->actionSave_Project_As->isEnabled());
    QVERIFY(window.ui()->actionNew_Project->isEnabled());
    QVERIFY(window.ui()->actionLoad_Project->isEnabled());
    // No GL context exists on the offscreen platform.
    QCOMPARE(window.ui()->graphicsView->property("openGLViewport").toBool(), false);
    // Autosave is on every five minutes by default.
    QVERIFY(window.autoSaver()->timer()->isActive());
    QCOMPARE(window.autoSaver()->timer()->interval(), 5 * 60000);
    // Hidden for good by this build.
    for (QAction *hidden : {window.ui()->actionAlways_Play_Subentities,
                            window.ui()->actionExport_Baked_Project,
                            window.ui()->actionBatch_Export_To_PNG_GIF,
                            window.ui()->actionSave_Project_As_Legacy})
        QVERIFY(!hidden->isVisible());
    QVERIFY(window.ui()->actionSave_New_Version->isVisible());
}

void TestMorvaneWindow::actions_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QKeySequence>("shortcut");
    QTest::newRow("new") << "actionNew_Project" << "New Project..." << QKeySequence(QKeySequence::New);
    QTest::newRow("open") << "actionLoad_Project" << "Open Project..." << QKeySequence(QKeySequence::Open);
    QTest::newRow("save") << "actionSave_Project" << "Save Project" << QKeySequence(QKeySequence::Save);
    QTest::newRow("save as") << "actionSave_Project_As" << "Save Project As..."
                             << QKeySequence(QKeySequence::SaveAs);
    QTest::newRow("new version") << "actionSave_New_Version" << "Save New Version"
                                 << QKeySequence("Ctrl++");
    QTest::newRow("copy frame") << "actionCopy_Current_Frame" << "Copy Current Frame"
                                << QKeySequence("Ctrl+Shift+C");
    QTest::newRow("copy children") << "actionCopy_with_children" << "Copy with children"
                                   << QKeySequence("Ctrl+Alt+Shift+C");
    QTest::newRow("to all frames") << "actionCopy_Selection_To_All_Frames"
                                   << "Copy Selection To All Frames" << QKeySequence("Ctrl+D");
    QTest::newRow("alt paste") << "actionAltPaste" << "Paste To All Keys" << QKeySequence("Ctrl+Shift+V");
    QTest::newRow("delete all frames") << "actionDelete_From_All_Frames" << "Delete From All Frames"
                                       << QKeySequence("Shift+Del");
    QTest::newRow("z up") << "actionMove_Up_in_Z_Order" << "Move Up in Z-Order" << QKeySequence("Ctrl+Up");
    QTest::newRow("z bottom") << "actionMove_To_Bottom_in_Z_Order" << "Move To Bottom in Z-Order"
                              << QKeySequence("Ctrl+Left");
    QTest::newRow("center") << "actionCenterView" << "Center View" << QKeySequence("F");
    QTest::newRow("zoom restore") << "actionRestore_Zoom" << "Restore Zoom"
                                  << QKeySequence("Ctrl+Alt+Shift+Space");
    QTest::newRow("lock sprites") << "actionLock_Sprites" << "Lock Sprites" << QKeySequence("0");
    QTest::newRow("show sprites") << "actionShow_Sprites_2" << "Show Sprites" << QKeySequence("9");
    QTest::newRow("force names") << "actionForce_names" << "Force names"
                                 << QKeySequence("Ctrl+Alt+Shift+F");
    QTest::newRow("exit") << "actionExit" << "Exit" << QKeySequence(QKeySequence::Quit);
    QTest::newRow("gl") << "actionDisable_Open_GL_requires_restart"
                        << "Disable Open GL (requires restart)" << QKeySequence();
    QTest::newRow("grey") << "actionGrey" << "Set Canvas Background to Grey" << QKeySequence();
    QTest::newRow("reset") << "actionReset_all_Show_this_again_settings"
                           << "Reset all 'Show this again' settings" << QKeySequence();
    QTest::newRow("tps") << "actionGenerate_TexturePacker_Spritesheet_tps"
                         << "Generate TexturePacker Spritesheet file (*.tps)" << QKeySequence();
}

void TestMorvaneWindow::actions()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QKeySequence, shortcut);
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    auto *action = window.findChild<QAction *>(name);
    QVERIFY2(action, qPrintable(name));
    QCOMPARE(action->text(), text);
    QCOMPARE(action->shortcut(), shortcut);
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

    // It starts closed and floating, listing the actions' final keys by text.
    auto *dock = window.findChild<KeyShortcutDockWidget *>();
    QVERIFY(dock->isFloating());
    QVERIFY(!dock->isVisible());
    QStringList texts;
    QStringList rows;
    for (int row = 0; row < dock->table()->rowCount(); ++row) {
        texts << dock->table()->item(row, 0)->text();
        rows << texts.last() + QLatin1Char('=') + dock->table()->item(row, 1)->text();
    }
    QVERIFY(rows.contains(QStringLiteral("Save Project=")
                          + QKeySequence(QKeySequence::Save).toString(QKeySequence::NativeText)));
    QVERIFY(rows.contains(QStringLiteral("Shortcut List=Shift+Esc")));
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

void TestMorvaneWindow::recentFilesRestoredAtStart()
{
    QSettings().setValue("recentFiles", QStringList({"/a.rigx", "/b.rigj"}));
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QCOMPARE(window.project()->recentFiles(), QStringList({"/a.rigx", "/b.rigj"}));
    const QList<QAction *> actions = window.ui()->menuOpen_Recent_Project->actions();
    QCOMPARE(actions.size(), 7);
    QCOMPARE(actions.at(1)->text(), QString("/b.rigj"));
    QVERIFY(!actions.at(2)->isVisible());
}

void TestMorvaneWindow::cancelKeepsWindowAndSettings()
{
    auto *window = new MorvaneWindow(QStringLiteral("r4.1"), {});
    window->project()->addRecentFile(QStringLiteral("/p/a.rigx"));
    window->undoStack()->push(new Test::DirtyCommand);
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

void TestMorvaneWindow::closeWritesSettings()
{
    {
        MorvaneWindow window(QStringLiteral("r4.1"), {});
        window.project()->addRecentFile(QStringLiteral("/p/a.rigx"));
        window.project()->addRecentFile(QStringLiteral("/p/b.rigx"));
        QVERIFY(window.close());
    }
    QSettings store;
    QCOMPARE(store.value("recentFiles").toStringList(), QStringList({"/p/b.rigx", "/p/a.rigx"}));
    QVERIFY(!store.value("morvaneWindowGeometry").toByteArray().isEmpty());
    QVERIFY(!store.value("morvaneWindowState").toByteArray().isEmpty());
    QVERIFY(store.contains("lastDirectory"));
}

void TestMorvaneWindow::backgroundColours()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    window.ui()->actionBlack->setEnabled(true);
    window.ui()->actionBlack->trigger();
    QCOMPARE(window.canvasBackground(), QColor(Qt::black));
    window.ui()->actionWhite->setEnabled(true);
    window.ui()->actionWhite->trigger();
    QCOMPARE(window.canvasBackground(), QColor(Qt::white));
    window.ui()->actionGrey->setEnabled(true);
    window.ui()->actionGrey->trigger();
    QCOMPARE(window.canvasBackground(), QColor(Qt::lightGray));
}

void TestMorvaneWindow::settingsLocatorsFollowWindow()
{
    {
        MorvaneWindow window(QStringLiteral("r4.1"), {});
        QCOMPARE(MorvaneSettings::mainRigx(), MorvaneWindow::rigx);
        QVERIFY(MorvaneSettings::tagManager());
        // Commands reach the window's stack, and macros group them.
        MorvaneSettings::beginUndoMacro(QStringLiteral("both"));
        MorvaneSettings::pushUndo(new Test::DirtyCommand);
        MorvaneSettings::pushUndo(new Test::DirtyCommand);
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

QTEST_MAIN(TestMorvaneWindow)
#include "tst_morvanewindow.moc"
