// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "morvanesettings.h"
#include "morvanewindow.h"
#include "ui_morvanewindow.h"

#include <QAbstractButton>
#include <QFile>
#include <QMenuBar>
#include <QStatusBar>
#include <QMessageBox>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUndoStack>

using namespace Morvane;

namespace {

// Makes the undo stack dirty without touching any document.
class DirtyCommand : public QUndoCommand
{
public:
    DirtyCommand()
        : QUndoCommand(QStringLiteral("dirty"))
    {
    }
};

QString clickInMessageBox(QWidget *modal, QMessageBox::StandardButton button)
{
    auto *box = qobject_cast<QMessageBox *>(modal);
    if (!box)
        return QString();
    const QString text = box->windowTitle() + QLatin1Char('|') + box->text();
    if (QAbstractButton *target = box->button(button))
        target->click();
    else
        box->reject();
    return text;
}

} // namespace

class TestMorvaneWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void identityAndTitle();
    void actions_data();
    void actions();
    void hiddenActionsStayHidden();
    void menusInBarOrder();
    void ignoredArguments_data();
    void ignoredArguments();
    void recentFiles();
    void recentFilesRestoredAtStart();
    void cleanStackAsksNothing();
    void verifySaveChangedTexts_data();
    void verifySaveChangedTexts();
    void cancelKeepsWindowAndSettings();
    void closeWritesSettings();
    void autoSaveTimerFollowsSettings_data();
    void autoSaveTimerFollowsSettings();
    void backgroundColours();
    void autoSaveStatusText();
    void settingsLocatorsFollowWindow();

private:
    QTemporaryDir *mDir = nullptr;
};

void TestMorvaneWindow::init()
{
    Test::useTestSettings();
    MorvaneSettings::resetToDefaults();
    mDir = new QTemporaryDir;
}

void TestMorvaneWindow::cleanup()
{
    delete mDir;
    mDir = nullptr;
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

void TestMorvaneWindow::hiddenActionsStayHidden()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QVERIFY(!window.ui()->actionAlways_Play_Subentities->isVisible());
    QVERIFY(!window.ui()->actionExport_Baked_Project->isVisible());
    QVERIFY(!window.ui()->actionBatch_Export_To_PNG_GIF->isVisible());
    QVERIFY(!window.ui()->actionSave_Project_As_Legacy->isVisible());
    QVERIFY(window.ui()->actionSave_New_Version->isVisible());
    QCOMPARE(window.ui()->actionRotation_Snapping->statusTip(),
             QString("Lock rotation to 45 degree angles"));
}

void TestMorvaneWindow::menusInBarOrder()
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

    // The form's placeholder is gone; seven hidden slots carry their index.
    const QList<QAction *> recent = window.ui()->menuOpen_Recent_Project->actions();
    QCOMPARE(recent.size(), 7);
    for (int i = 0; i < recent.size(); ++i) {
        QCOMPARE(recent.at(i)->data().toInt(), i);
        QVERIFY(!recent.at(i)->isVisible());
    }
}

void TestMorvaneWindow::ignoredArguments_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("create");
    QTest::newRow("upper case") << "hero.RIGX" << true;
    QTest::newRow("missing") << "gone.rigx" << false;
    QTest::newRow("other ending") << "hero.xml" << true;
}

void TestMorvaneWindow::ignoredArguments()
{
    QFETCH(QString, name);
    QFETCH(bool, create);
    const QString path = mDir->filePath(name);
    if (create) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<morvane_data/>\n");
    }
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), QString());
    QCOMPARE(window.windowTitle(), QString("Morvane          [Unsaved Project]"));
    QVERIFY(window.recentFiles().isEmpty());
}

void TestMorvaneWindow::recentFiles()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    for (int i = 0; i < 7; ++i)
        window.addRecentFile(QStringLiteral("/p/%1.rigx").arg(i));
    QCOMPARE(window.recentFiles().size(), 7);
    QCOMPARE(window.recentFiles().first(), QString("/p/6.rigx"));

    // Reopening moves the entry to the top without duplicating it.
    window.addRecentFile(QStringLiteral("/p/2.rigx"));
    QCOMPARE(window.recentFiles().size(), 7);
    QCOMPARE(window.recentFiles().first(), QString("/p/2.rigx"));
    QCOMPARE(window.recentFiles().count(QStringLiteral("/p/2.rigx")), 1);

    // An eighth distinct file pushes the oldest out.
    window.addRecentFile(QStringLiteral("/p/7.rigx"));
    QCOMPARE(window.recentFiles().size(), 7);
    QVERIFY(!window.recentFiles().contains(QStringLiteral("/p/0.rigx")));
    QCOMPARE(window.recentFiles(),
             QStringList({"/p/7.rigx", "/p/2.rigx", "/p/6.rigx", "/p/5.rigx", "/p/4.rigx",
                          "/p/3.rigx", "/p/1.rigx"}));

    const QList<QAction *> actions = window.ui()->menuOpen_Recent_Project->actions();
    for (int i = 0; i < 7; ++i) {
        QVERIFY(actions.at(i)->isVisible());
        QCOMPARE(actions.at(i)->text(), window.recentFiles().at(i));
    }
}

void TestMorvaneWindow::recentFilesRestoredAtStart()
{
    QSettings().setValue("recentFiles", QStringList({"/a.rigx", "/b.rigj"}));
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QCOMPARE(window.recentFiles(), QStringList({"/a.rigx", "/b.rigj"}));
    const QList<QAction *> actions = window.ui()->menuOpen_Recent_Project->actions();
    QVERIFY(actions.at(1)->isVisible());
    QCOMPARE(actions.at(1)->text(), QString("/b.rigj"));
    QVERIFY(!actions.at(2)->isVisible());
}

void TestMorvaneWindow::cleanStackAsksNothing()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    Test::ModalAnswerer answerer([](QWidget *modal) { clickInMessageBox(modal, QMessageBox::Cancel); });
    QVERIFY(window.verifySaveChanged(QStringLiteral("exiting")));
    QTest::qWait(50);
    QVERIFY(!answerer.answered());
}

void TestMorvaneWindow::verifySaveChangedTexts_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("expected");
    QTest::newRow("exiting, cancel") << "exiting" << int(QMessageBox::Cancel) << false;
    QTest::newRow("loading, no") << "loading a project" << int(QMessageBox::No) << true;
    QTest::newRow("recent, cancel") << "loading the project project" << int(QMessageBox::Cancel)
                                    << false;
    QTest::newRow("new, no") << "creating a new project" << int(QMessageBox::No) << true;
}

void TestMorvaneWindow::verifySaveChangedTexts()
{
    QFETCH(QString, what);
    QFETCH(int, button);
    QFETCH(bool, expected);
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    window.undoStack()->push(new DirtyCommand);
    QString seen;
    Test::ModalAnswerer answerer([&](QWidget *modal) {
        seen = clickInMessageBox(modal, QMessageBox::StandardButton(button));
    });
    QCOMPARE(window.verifySaveChanged(what), expected);
    QCOMPARE(seen, QString(QStringLiteral("Save changes?|You have unsaved changes, would you like "
                                          "to save before ")
                           + what + QStringLiteral("?")));
    window.undoStack()->setClean();
}

void TestMorvaneWindow::cancelKeepsWindowAndSettings()
{
    auto *window = new MorvaneWindow(QStringLiteral("r4.1"), {});
    window->addRecentFile(QStringLiteral("/p/a.rigx"));
    window->undoStack()->push(new DirtyCommand);
    QString seen;
    Test::ModalAnswerer answerer(
        [&](QWidget *modal) { seen = clickInMessageBox(modal, QMessageBox::Cancel); });
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
        window.addRecentFile(QStringLiteral("/p/a.rigx"));
        window.addRecentFile(QStringLiteral("/p/b.rigx"));
        QVERIFY(window.close());
    }
    QSettings store;
    QCOMPARE(store.value("recentFiles").toStringList(), QStringList({"/p/b.rigx", "/p/a.rigx"}));
    QVERIFY(!store.value("morvaneWindowGeometry").toByteArray().isEmpty());
    QVERIFY(!store.value("morvaneWindowState").toByteArray().isEmpty());
    QVERIFY(store.contains("lastDirectory"));
}

void TestMorvaneWindow::autoSaveTimerFollowsSettings_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<int>("minutes");
    QTest::addColumn<bool>("running");
    QTest::newRow("default five minutes") << true << 5 << true;
    QTest::newRow("zero minutes") << true << 0 << false;
    QTest::newRow("disabled") << false << 5 << false;
}

void TestMorvaneWindow::autoSaveTimerFollowsSettings()
{
    QFETCH(bool, enabled);
    QFETCH(int, minutes);
    QFETCH(bool, running);
    QSettings().setValue("autoSaveEnabled", enabled);
    QSettings().setValue("autoSaveInterval", minutes);
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QCOMPARE(window.autoSaveTimer()->isActive(), running);
    if (running)
        QCOMPARE(window.autoSaveTimer()->interval(), minutes * 60000);

    // Re-applying after a settings change starts or stops it the same way.
    MorvaneSettings::autoSaveEnabled = !enabled;
    MorvaneSettings::autoSaveInterval = 2;
    window.applyAutoSaveSettings();
    QCOMPARE(window.autoSaveTimer()->isActive(), !enabled);
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

void TestMorvaneWindow::autoSaveStatusText()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    window.updateAutoSaveStatus(3, 40);
    QCOMPARE(window.statusBar()->currentMessage(), QString("AutoSaving... (40%)"));
    window.updateAutoSaveStatus(1, -1);
    QCOMPARE(window.statusBar()->currentMessage(), QString("AutoSaving."));
    window.statusBar()->showMessage(QStringLiteral("Changes made. Restarting AutoSave..."));
    window.updateAutoSaveStatus(2, 10);
    QCOMPARE(window.statusBar()->currentMessage(), QString("Changes made. Restarting AutoSave..."));
}

void TestMorvaneWindow::settingsLocatorsFollowWindow()
{
    {
        MorvaneWindow window(QStringLiteral("r4.1"), {});
        QCOMPARE(MorvaneSettings::mainRigx(), MorvaneWindow::rigx);
        QVERIFY(MorvaneSettings::tagManager());
        // Commands reach the window's stack, and macros group them.
        MorvaneSettings::beginUndoMacro(QStringLiteral("both"));
        MorvaneSettings::pushUndo(new DirtyCommand);
        MorvaneSettings::pushUndo(new DirtyCommand);
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
