// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "projectcontroller.h"

#include <QDir>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;

class TestProjectController : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void recentFiles();
    void verifySaveChanged_data();
    void verifySaveChanged();
    void openKeepsTheDocumentObject();
    void openWarningsInOneBox_data();
    void openWarningsInOneBox();
    void saveNewVersion();
    void saveErrorShowsTheIoText();
    void mergeAsksAndKeepsSavable_data();
    void mergeAsksAndKeepsSavable();

private:
    Test::AppFixture mFixture;
    std::unique_ptr<QWidget> mWindow;
    QUndoStack *mStack = nullptr;
    ProjectController *mProject = nullptr;
};

void TestProjectController::init()
{
    mFixture.init();
    mWindow = std::make_unique<QWidget>();
    mStack = new QUndoStack(mWindow.get());
    mProject = new ProjectController(mStack, QStringLiteral("r4.1"), mWindow.get());
}

void TestProjectController::cleanup()
{
    mWindow.reset();
    mFixture.cleanup();
}

void TestProjectController::recentFiles()
{
    QMenu menu;
    mProject->setRecentFilesMenu(&menu);
    QCOMPARE(menu.actions().size(), 7);
    for (int i = 0; i < 7; ++i) {
        QCOMPARE(menu.actions().at(i)->data().toInt(), i);
        QVERIFY(!menu.actions().at(i)->isVisible());
        mProject->addRecentFile(QStringLiteral("/p/%1.rigx").arg(i));
    }
    // Reopening moves the entry to the top without duplicating it; an eighth
    // distinct file pushes the oldest out.
    mProject->addRecentFile(QStringLiteral("/p/2.rigx"));
    mProject->addRecentFile(QStringLiteral("/p/7.rigx"));
    QCOMPARE(mProject->recentFiles(),
             QStringList({"/p/7.rigx", "/p/2.rigx", "/p/6.rigx", "/p/5.rigx", "/p/4.rigx",
                          "/p/3.rigx", "/p/1.rigx"}));
    for (int i = 0; i < 7; ++i) {
        QVERIFY(menu.actions().at(i)->isVisible());
        QCOMPARE(menu.actions().at(i)->text(), mProject->recentFiles().at(i));
    }
    // A list read at start-up is cut to seven and hides the unused slots.
    mProject->setRecentFiles({"/a.rigx", "/b.rigj"});
    QVERIFY(menu.actions().at(1)->isVisible());
    QVERIFY(!menu.actions().at(2)->isVisible());
}

void TestProjectController::verifySaveChanged_data()
{
    QTest::addColumn<bool>("dirty");
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("expected");
    QTest::newRow("clean asks nothing") << false << "exiting" << int(QMessageBox::Cancel) << true;
    QTest::newRow("exiting, cancel") << true << "exiting" << int(QMessageBox::Cancel) << false;
    QTest::newRow("loading, no") << true << "loading a project" << int(QMessageBox::No) << true;
}

void TestProjectController::verifySaveChanged()
{
    QFETCH(bool, dirty);
    QFETCH(QString, what);
    QFETCH(int, button);
    QFETCH(bool, expected);
    if (dirty)
        mStack->push(Test::dirtyCommand());
    QString seen;
    Test::ModalAnswerer answerer([&](QWidget *modal) {
        seen = Test::clickInMessageBox(modal, QMessageBox::StandardButton(button));
    });
    QCOMPARE(mProject->verifySaveChanged(what), expected);
    QTest::qWait(dirty ? 0 : 50);
    QCOMPARE(seen, dirty ? QStringLiteral("Save changes?|You have unsaved changes, would you like "
                                          "to save before ") +
                               what + QLatin1Char('?')
                         : QString());
}

void TestProjectController::openKeepsTheDocumentObject()
{
    const QString good = mFixture.path("good.rigx");
    const QString other = mFixture.path("other.rigj");
    const QString bad = mFixture.path("bad.rigx");
    QVERIFY(Test::writeProject(good, QStringLiteral("knight")));
    QVERIFY(Test::writeProject(other, QStringLiteral("wizard")));
    QVERIFY(Test::writeFile(bad, "<?xml version=\"1.0\"?>\n<other_root/>\n"));
    RigxData *document = mProject->document();
    QSignalSpy changed(mProject, &ProjectController::projectChanged);

    QVERIFY(mProject->open(good));
    mStack->push(Test::dirtyCommand());
    QString shown;
    Test::ModalAnswerer answerer([&](QWidget *modal) { shown = Test::clickInMessageBox(modal); });
    QVERIFY(!mProject->open(bad));
    QVERIFY(shown.contains(QStringLiteral("Not a Morvane file")));
    // Content, path, recent list and history of the open project stay.
    QCOMPARE(mProject->filePath(), good);
    QVERIFY(document->entity(QStringLiteral("knight")));
    QCOMPARE(mProject->recentFiles(), QStringList(good));
    QCOMPARE(mStack->count(), 1);

    QVERIFY(mProject->open(other));
    QCOMPARE(mProject->document(), document);
    QCOMPARE(document->entityCount(), 1);
    QVERIFY(document->entity(QStringLiteral("wizard")));
    QCOMPARE(mProject->filePath(), other);
    QCOMPARE(mProject->recentFiles(), QStringList({other, good}));
    QVERIFY(mStack->isClean());
    QCOMPARE(mStack->count(), 0);
    QCOMPARE(changed.count(), 3);
}

void TestProjectController::openWarningsInOneBox_data()
{
    QTest::addColumn<int>("unknownObjects");
    QTest::addColumn<int>("lines");
    QTest::addColumn<QString>("last");
    QTest::newRow("all listed") << 3 << 3
                                << "Object type \"dragon2\" is unknown; the object is skipped";
    QTest::newRow("cut with a count") << 14 << 11 << "... and 4 more.";
}

void TestProjectController::openWarningsInOneBox()
{
    QFETCH(int, unknownObjects);
    QFETCH(int, lines);
    QFETCH(QString, last);
    QByteArray text = "<morvane_data><entity name=\"e\">";
    for (int i = 0; i < unknownObjects; ++i)
        text += "<obj_info name=\"o" + QByteArray::number(i) + "\" type=\"dragon" +
                QByteArray::number(i) + "\"/>";
    const QString path = mFixture.path("warned.rigx");
    QVERIFY(Test::writeFile(path, text + "</entity></morvane_data>"));

    QStringList boxes;
    QString details;
    Test::ModalAnswerer answerer(
        [&](QWidget *modal) {
            if (auto *box = qobject_cast<QMessageBox *>(modal))
                details = box->detailedText();
            boxes << Test::clickInMessageBox(modal);
        },
        Test::ModalAnswerer::Every);
    QVERIFY(mProject->open(path));
    QTest::qWait(50);
    QCOMPARE(boxes.size(), 1);
    const QStringList parts = boxes.first().split(QLatin1Char('|'));
    QCOMPARE(parts.size(), 3);
    QCOMPARE(parts.at(0), QString("Open Morvane Project"));
    QCOMPARE(parts.at(1), QString("warned.rigx was opened, but parts of it could not be used:"));
    const QStringList shown = parts.at(2).split(QLatin1Char('\n'));
    QCOMPARE(shown.size(), lines);
    QCOMPARE(shown.first(), QString("Object type \"dragon0\" is unknown; the object is skipped"));
    QCOMPARE(shown.last(), last);
    // What is cut from the text is behind the details.
    QCOMPARE(details.isEmpty() ? 0 : details.split(QLatin1Char('\n')).size(),
             lines == unknownObjects ? 0 : unknownObjects);
}

void TestProjectController::saveNewVersion()
{
    // The next free name on disk: 008 is taken, so 007 goes on at 009.
    const QString path = mFixture.path("walk_007.rigx");
    const QString target = mFixture.path("walk_009.rigx");
    QVERIFY(Test::writeProject(path));
    QVERIFY(Test::writeProject(mFixture.path("walk_008.rigx"), QStringLiteral("other")));
    QVERIFY(mProject->open(path));
    mStack->push(Test::dirtyCommand());
    QVERIFY(mProject->saveNewVersion());
    QCOMPARE(mProject->filePath(), target);
    QCOMPARE(mProject->recentFiles().first(), target);
    QVERIFY(mStack->isClean());
    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QVERIFY(ProjectFile::open(&reread, target));
    QVERIFY(reread.entity(QStringLiteral("hero")));
}

void TestProjectController::saveErrorShowsTheIoText()
{
    const QString folder = mFixture.path("gone");
    QVERIFY(QDir().mkpath(folder));
    const QString path = folder + QStringLiteral("/hero.rigx");
    QVERIFY(Test::writeProject(path));
    QVERIFY(mProject->open(path));
    QVERIFY(QDir(folder).removeRecursively());
    // What the io layer says about the same save, for comparison.
    RigxData copy(nullptr, QStringLiteral("r4.1"));
    copy.setFilePath(path);
    QString ioError;
    QVERIFY(!ProjectFile::save(&copy, path, ProjectSaveOptions(), nullptr, &ioError));
    QVERIFY(ioError.contains(path));

    mStack->push(Test::dirtyCommand());
    QString shown;
    Test::ModalAnswerer answerer([&](QWidget *modal) { shown = Test::clickInMessageBox(modal); });
    QVERIFY(!mProject->save());
    QCOMPARE(shown,
             QStringLiteral("Save Morvane Project|The project could not be saved.\n\n") + ioError);
    QVERIFY(!mStack->isClean());
    QCOMPARE(mProject->filePath(), path);
}

void TestProjectController::mergeAsksAndKeepsSavable_data()
{
    QTest::addColumn<bool>("accept");
    QTest::newRow("yes") << true;
    QTest::newRow("no") << false;
}

void TestProjectController::mergeAsksAndKeepsSavable()
{
    QFETCH(bool, accept);
    const QString path = mFixture.path("hero.rigx");
    QVERIFY(Test::writeProject(path));
    QVERIFY(QDir(mFixture.folder()).mkdir("other"));
    const QString other = mFixture.path("other/guest.rigx");
    QVERIFY(Test::writeProject(other));
    QVERIFY(mProject->open(path));

    QString question;
    Test::ModalAnswerer answerer([&](QWidget *modal) {
        question = Test::clickInMessageBox(modal, accept ? QMessageBox::Yes : QMessageBox::No);
    });
    QCOMPARE(mProject->importProject(other), accept);
    QCOMPARE(question, QString("Merge Projects?|Are you sure you want to merge guest.rigx and all "
                               "of it's images into this project?\n"
                               "                     This action cannot be undone."));
    QCOMPARE(mProject->document()->entityCount(), accept ? 2 : 1);
    QCOMPARE(bool(mProject->document()->entity(QStringLiteral("hero_000"))), accept);
    // A merged project differs from its file and can be saved.
    QCOMPARE(mStack->isClean(), !accept);
    QCOMPARE(mProject->filePath(), path);
}

QTEST_MAIN(TestProjectController)
#include "tst_projectcontroller.moc"
