// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "morvanesettings.h"
#include "morvanesettingsdialog.h"
#include "morvanewindow.h"
#include "testhttpserver.h"
#include "updateaddresses.h"
#include "updateavailabledialog.h"
#include "updatechecker.h"
#include "ui_morvanewindow.h"

#include <QDialogButtonBox>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>

using namespace Morvane;

class TestUpdateCheck : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void parse_data();
    void parse();
    void addressesFollowOverride();
    void checkAgainstServer_data();
    void checkAgainstServer();
    void resultGoesToOpenSettingsDialog();
    void updateDialogTexts();

private:
    Test::TestHttpServer mServer;
};

void TestUpdateCheck::initTestCase()
{
    // The test server is local; a proxy from the environment must not be used.
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    QVERIFY(mServer.listen());
    qputenv("MORVANE_UPDATE_URL", mServer.baseUrl().toString().toUtf8());
}

void TestUpdateCheck::init()
{
    Test::useTestSettings();
    MorvaneSettings::resetToDefaults();
}

void TestUpdateCheck::parse_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("expected");
    QTest::newRow("this build") << QByteArray("20150425") << 20150425;
    QTest::newRow("older") << QByteArray("20150424") << 20150424;
    QTest::newRow("letters after digits") << QByteArray("12ab") << 0;
    QTest::newRow("empty") << QByteArray() << 0;
    QTest::newRow("stops at zero byte") << QByteArray("20160101\0garbage", 16) << 20160101;
    QTest::newRow("newline is not a digit") << QByteArray("20160101\n") << 20160101;
    QTest::newRow("hex is not decimal") << QByteArray("0x1F") << 0;
}

void TestUpdateCheck::parse()
{
    QFETCH(QByteArray, body);
    QFETCH(int, expected);
    QCOMPARE(UpdateAddresses::parseBuildDate(body), expected);
}

void TestUpdateCheck::addressesFollowOverride()
{
    const QString base = mServer.baseUrl().toString();
    const QList<QUrl> urls = {UpdateAddresses::checkPage(true), UpdateAddresses::checkPage(false),
                              UpdateAddresses::changeLog(true), UpdateAddresses::changeLog(false),
                              UpdateAddresses::downloadPage(true),
                              UpdateAddresses::downloadPage(false)};
    QSet<QString> distinct;
    for (const QUrl &url : urls) {
        QVERIFY2(url.toString().startsWith(base), qPrintable(url.toString()));
        distinct.insert(url.toString());
    }
    QCOMPARE(distinct.size(), 6);
}

void TestUpdateCheck::checkAgainstServer_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("allUpdates");
    QTest::addColumn<bool>("dialogExpected");
    QTest::newRow("same date, stable") << QByteArray("20150425") << false << true;
    QTest::newRow("newer, all") << QByteArray("20160101") << true << true;
    QTest::newRow("older") << QByteArray("20150424") << false << false;
    QTest::newRow("garbage") << QByteArray("12ab") << true << false;
}

void TestUpdateCheck::checkAgainstServer()
{
    QFETCH(QByteArray, body);
    QFETCH(bool, allUpdates);
    QFETCH(bool, dialogExpected);
    mServer.setBody(body);

    QWidget window;
    QNetworkAccessManager network;
    UpdateChecker checker(&network, &window);
    QSignalSpy status(&checker, &UpdateChecker::statusMessage);
    QString seenTitle;
    bool seenChannel = !allUpdates;
    Test::ModalAnswerer answerer([&](QWidget *modal) {
        seenTitle = modal->windowTitle();
        if (auto *dialog = qobject_cast<UpdateAvailableDialog *>(modal))
            seenChannel = dialog->allUpdates();
        static_cast<QDialog *>(modal)->reject();
    });
    const int before = mServer.paths().size();
    if (allUpdates)
        checker.checkForAnyUpdate(nullptr);
    else
        checker.checkForStableUpdate(nullptr);

    if (dialogExpected) {
        QTRY_COMPARE(seenTitle, QString("Update Available"));
        QCOMPARE(seenChannel, allUpdates);
    } else {
        QTRY_COMPARE(status.count(), 1);
        QCOMPARE(status.at(0).at(0).toString(),
                 QString("Update check successful.  You already have the latest version."));
        QCOMPARE(status.at(0).at(1).toInt(), 5000);
        QVERIFY(!answerer.answered());
    }
    // A request of the previous row (its change list) may still arrive after `before` was
    // taken, so look for this row's check page among the later requests.
    const QString page = UpdateAddresses::checkPage(allUpdates).path();
    QTRY_VERIFY2(mServer.paths().mid(before).contains(page), qPrintable(page));
}

void TestUpdateCheck::resultGoesToOpenSettingsDialog()
{
    mServer.setBody("20150424");
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QString status;
    QString statusBarText = QStringLiteral("unchanged");
    Test::ModalAnswerer answerer([&](QWidget *modal) {
        auto *dialog = qobject_cast<MorvaneSettingsDialog *>(modal);
        QVERIFY(dialog);
        dialog->findChild<QPushButton *>("checkStableButton")->click();
        QTRY_VERIFY(!dialog->downloadStatus().isEmpty());
        status = dialog->downloadStatus();
        statusBarText = window.statusBar()->currentMessage();
        dialog->reject();
    });
    window.ui()->actionSettings->trigger();
    QCOMPARE(status, QString("Update check successful.  No new updates."));
    QCOMPARE(statusBarText, QString());
    // With the dialog gone, the result reaches the window's status bar.
    window.updateChecker()->checkForStableUpdate();
    QTRY_COMPARE(window.statusBar()->currentMessage(),
                 QString("Update check successful.  You already have the latest version."));
}

void TestUpdateCheck::updateDialogTexts()
{
    mServer.setBody("line one of the changes");
    UpdateAvailableDialog dialog(nullptr, true);
    QCOMPARE(dialog.windowTitle(), QString("Update Available"));
    auto *buttons = dialog.findChild<QDialogButtonBox *>("buttonBox");
    QCOMPARE(buttons->button(QDialogButtonBox::Ok)->text(), QString("Go to Download Page"));
    // The change log of the channel is fetched into the text view.
    QTRY_COMPARE(dialog.changeLogText(), QString("line one of the changes"));
    QCOMPARE(mServer.paths().last(), UpdateAddresses::changeLog(true).path());
}

QTEST_MAIN(TestUpdateCheck)
#include "tst_updatecheck.moc"
