// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "autosaver.h"

#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QUndoStack>

using namespace Morvane;

class TestAutoSaver : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void writesAnXmlCopy_data();
    void writesAnXmlCopy();
    void restartsAfterChange();
    void waitsWhileSuppressedOrRunning();
    void timerFollowsSettings_data();
    void timerFollowsSettings();
    void statusText();

private:
    // A document at `fileName` in the test folder (a folder alone ends in "/").
    void openDocument(const QString &fileName);

    Test::AppFixture mFixture;
    std::unique_ptr<RigxData> mDocument;
    std::unique_ptr<QUndoStack> mStack;
    std::unique_ptr<QStatusBar> mStatusBar;
    std::unique_ptr<AutoSaver> mSaver;
};

void TestAutoSaver::init()
{
    mFixture.init();
    mStack = std::make_unique<QUndoStack>();
    mDocument = std::make_unique<RigxData>(mStack.get(), QStringLiteral("r4.1"));
    mStatusBar = std::make_unique<QStatusBar>();
    mSaver = std::make_unique<AutoSaver>(mDocument.get(), mStack.get(), mStatusBar.get());
}

void TestAutoSaver::cleanup()
{
    mSaver.reset();
    mStack.reset();
    mDocument.reset();
    mStatusBar.reset();
    mFixture.cleanup();
}

void TestAutoSaver::openDocument(const QString &fileName)
{
    mDocument->appendEmptyEntity()->setName(QStringLiteral("hero"));
    mDocument->setFilePath(mFixture.folder() + QLatin1Char('/') + fileName);
}

void TestAutoSaver::writesAnXmlCopy_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("json project") << "hero.rigj"
                                  << "hero.autosave.rigx";
    QTest::newRow("never saved") << ""
                                 << "NewProject.autosave.rigx";
}

void TestAutoSaver::writesAnXmlCopy()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    openDocument(name);
    const QString pathBefore = mDocument->filePath();
    mStack->push(Test::dirtyCommand());
    QSignalSpy finished(mSaver.get(), &AutoSaver::finished);
    QVERIFY(mSaver->start());
    QVERIFY(MorvaneSettings::suppressAutoSave());
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toString(), mFixture.path(expected));
    QCOMPARE(finished.at(0).at(1).toBool(), true);
    QVERIFY(!MorvaneSettings::suppressAutoSave());
    QCOMPARE(mStatusBar->currentMessage(), QString("AutoSaving... (100%)"));

    // Always the XML form, a project that opens again, and the document keeps
    // its own path and unsaved state.
    QFile file(mFixture.path(expected));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().startsWith("<?xml"));
    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QVERIFY(ProjectFile::open(&reread, mFixture.path(expected)));
    QVERIFY(reread.entity(QStringLiteral("hero")));
    QCOMPARE(mDocument->filePath(), pathBefore);
    QVERIFY(!mStack->isClean());
}

void TestAutoSaver::restartsAfterChange()
{
    openDocument(QStringLiteral("hero.rigx"));
    QSignalSpy finished(mSaver.get(), &AutoSaver::finished);
    QVERIFY(mSaver->start());
    // A change while the copy is being written makes that copy stale.
    mDocument->entity(0)->setName(QStringLiteral("changed"));
    mStack->push(Test::dirtyCommand());
    QTRY_COMPARE(finished.count(), 2);
    QTest::qWait(50);
    QCOMPARE(finished.count(), 2);
    QVERIFY(!mSaver->isRunning());
    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QVERIFY(ProjectFile::open(&reread, mFixture.path("hero.autosave.rigx")));
    QVERIFY(reread.entity(QStringLiteral("changed")));
}

void TestAutoSaver::waitsWhileSuppressedOrRunning()
{
    // Nothing to save into before the project has a folder.
    QVERIFY(!mSaver->start());
    QVERIFY(!mSaver->isRunning());
    QVERIFY(!MorvaneSettings::suppressAutoSave());
    openDocument(QStringLiteral("hero.rigx"));
    MorvaneSettings::startSuppressAutoSave();
    QVERIFY(!mSaver->start());
    MorvaneSettings::endSuppressAutoSave();
    QVERIFY(!QFile::exists(mFixture.path("hero.autosave.rigx")));
    QVERIFY(mSaver->start());
    // A second start while one runs is refused rather than stacked.
    QVERIFY(!mSaver->start());
    QTRY_VERIFY(!mSaver->isRunning());
    QVERIFY(QFile::exists(mFixture.path("hero.autosave.rigx")));
}

void TestAutoSaver::timerFollowsSettings_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<int>("minutes");
    QTest::addColumn<bool>("running");
    QTest::newRow("five minutes") << true << 5 << true;
    QTest::newRow("zero minutes") << true << 0 << false;
    QTest::newRow("disabled") << false << 5 << false;
}

void TestAutoSaver::timerFollowsSettings()
{
    QFETCH(bool, enabled);
    QFETCH(int, minutes);
    QFETCH(bool, running);
    MorvaneSettings::autoSaveEnabled = enabled;
    MorvaneSettings::autoSaveInterval = minutes;
    mSaver->applySettings();
    QCOMPARE(mSaver->timer()->isActive(), running);
    if (running)
        QCOMPARE(mSaver->timer()->interval(), minutes * 60000);
}

void TestAutoSaver::statusText()
{
    mSaver->showStatus(3, 40);
    QCOMPARE(mStatusBar->currentMessage(), QString("AutoSaving... (40%)"));
    mSaver->showStatus(1, -1);
    QCOMPARE(mStatusBar->currentMessage(), QString("AutoSaving."));
    mStatusBar->showMessage(QStringLiteral("Changes made. Restarting AutoSave..."));
    mSaver->showStatus(2, 10);
    QCOMPARE(mStatusBar->currentMessage(), QString("Changes made. Restarting AutoSave..."));
}

QTEST_MAIN(TestAutoSaver)
#include "tst_autosaver.moc"
