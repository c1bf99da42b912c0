// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "morvanesettings.h"
#include "morvanesettingsdialog.h"
#include "saveoptionsdialog.h"
#include "updatecheckoptionsdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTest>
#include <QTimeEdit>
#include <QUndoCommand>

using namespace Morvane;

class TestMorvaneSettings : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void storedValuesAreRead_data();
    void storedValuesAreRead();
    void suppressionNests();
    void pushUndoWithoutWindowAppliesAndDeletes();
    void saveOptionsApply();
    void saveOptionsOpeningRewritesOpenGL();
    void settingsDialogApply_data();
    void settingsDialogApply();
    void settingsDialogShowsStored();
    void updateOptionsDialogStoresChoice();
};

void TestMorvaneSettings::init()
{
    Test::useTestSettings();
    QSettings().clear();
    MorvaneSettings::resetToDefaults();
}

void TestMorvaneSettings::storedValuesAreRead_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("absent"); // what an empty store gives
    QTest::addColumn<QVariant>("value");
    auto row = [](const char *key, const QVariant &absent, const QVariant &value) {
        QTest::newRow(key) << QString::fromLatin1(key) << absent << value;
    };
    row("saveAbsoluteAnimationPoseData", false, true);
    row("saveSpriteFrameData", false, true);
    row("saveObjInfoNamesUniqueToFile", false, true);
    row("prettifyXML", true, false);
    row("prettifyJson", true, false);
    row("openGLEnabled", true, false);
    row("updateCheckSettings", 0, 2);
    row("autoSaveInterval", 5, 17);
    row("autoSaveEnabled", true, false);
    row("texturePackerPath", QString(), QString("/opt/tp"));
    row("alwaysPlaySubEntities", true, false);
}

void TestMorvaneSettings::storedValuesAreRead()
{
    QFETCH(QString, key);
    QFETCH(QVariant, absent);
    QFETCH(QVariant, value);
    const auto read = [] {
        QSettings store;
        MorvaneSettings::readAll(store);
        return QHash<QString, QVariant>{
            {"saveAbsoluteAnimationPoseData", MorvaneSettings::saveAbsoluteAnimationPoseData},
            {"saveSpriteFrameData", MorvaneSettings::saveSpriteFrameData},
            {"saveObjInfoNamesUniqueToFile", MorvaneSettings::saveObjInfoNamesUniqueToFile},
            {"prettifyXML", MorvaneSettings::prettifyXML},
            {"prettifyJson", MorvaneSettings::prettifyJson},
            {"openGLEnabled", MorvaneSettings::openGLEnabled},
            {"updateCheckSettings", MorvaneSettings::updateCheckSettings},
            {"autoSaveInterval", MorvaneSettings::autoSaveInterval},
            {"autoSaveEnabled", MorvaneSettings::autoSaveEnabled},
            {"texturePackerPath", MorvaneSettings::texturePackerPath},
            {"alwaysPlaySubEntities", MorvaneSettings::alwaysPlaySubEntities},
        };
    };
    QCOMPARE(read().value(key), absent);
    QSettings().setValue(key, value);
    QCOMPARE(read().value(key), value);
}

void TestMorvaneSettings::suppressionNests()
{
    QVERIFY(!MorvaneSettings::suppressAutoSave());
    MorvaneSettings::startSuppressAutoSave();
    MorvaneSettings::startSuppressAutoSave();
    MorvaneSettings::endSuppressAutoSave();
    QVERIFY(MorvaneSettings::suppressAutoSave());
    MorvaneSettings::endSuppressAutoSave();
    QVERIFY(!MorvaneSettings::suppressAutoSave());

    MorvaneSettings::reportRefreshStart();
    QVERIFY(MorvaneSettings::refreshSuppressed());
    MorvaneSettings::reportRefreshEnd();
    QVERIFY(!MorvaneSettings::refreshSuppressed());
}

namespace {

class TrackedCommand : public QUndoCommand
{
public:
    TrackedCommand(bool *deleted, int *redone)
        : mDeleted(deleted)
        , mRedone(redone)
    {
    }
    ~TrackedCommand() override { *mDeleted = true; }
    void redo() override { ++*mRedone; }

private:
    bool *mDeleted;
    int *mRedone;
};

} // namespace

void TestMorvaneSettings::pushUndoWithoutWindowAppliesAndDeletes()
{
    QVERIFY(!MorvaneSettings::mainWindow);
    // Without a window nothing keeps history: applied once, then deleted.
    bool deleted = false;
    int redone = 0;
    MorvaneSettings::pushUndo(new TrackedCommand(&deleted, &redone));
    QVERIFY(deleted);
    QCOMPARE(redone, 1);
    // Macros without a window do nothing and must not crash.
    MorvaneSettings::beginUndoMacro("macro");
    MorvaneSettings::endUndoMacro();
}

void TestMorvaneSettings::saveOptionsApply()
{
    QPointer<SaveOptionsDialog> dialog = new SaveOptionsDialog;
    const QList<QCheckBox *> boxes = dialog->findChildren<QCheckBox *>();
    QCOMPARE(boxes.size(), 5);
    // Flip every box, then apply.
    for (QCheckBox *box : boxes)
        box->setChecked(!box->isChecked());
    dialog->show();
    dialog->apply();
    QSettings store;
    QCOMPARE(store.value("prettifyXML").toBool(), false);
    QCOMPARE(store.value("prettifyJson").toBool(), false);
    QCOMPARE(store.value("saveSpriteFrameData").toBool(), true);
    QCOMPARE(store.value("saveAbsoluteAnimationPoseData").toBool(), true);
    QCOMPARE(store.value("saveObjInfoNamesUniqueToFile").toBool(), true);
    QCOMPARE(MorvaneSettings::prettifyXML, false);
    QCOMPARE(MorvaneSettings::saveObjInfoNamesUniqueToFile, true);
    // Apply closes the dialog, which deletes itself.
    QTRY_VERIFY(dialog.isNull());
}

void TestMorvaneSettings::saveOptionsOpeningRewritesOpenGL()
{
    MorvaneSettings::openGLEnabled = false;
    QVERIFY(!QSettings().contains("openGLEnabled"));
    auto *dialog = new SaveOptionsDialog;
    QCOMPARE(QSettings().value("openGLEnabled").toBool(), false);
    delete dialog;
}

void TestMorvaneSettings::settingsDialogApply_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QTime>("frequency");
    QTest::addColumn<QString>("radio");
    QTest::addColumn<int>("expectedChoice");
    QTest::addColumn<int>("expectedInterval");
    QTest::newRow("stable, 1h05") << true << QTime(1, 5) << "stableRadio" << 1 << 65;
    QTest::newRow("all, 0h30") << true << QTime(0, 30) << "allRadio" << 2 << 30;
    QTest::newRow("never, off") << false << QTime(0, 5) << "neverRadio" << 3 << 5;
    QTest::newRow("no radio keeps choice") << true << QTime(0, 0) << "" << 0 << 0;
}

void TestMorvaneSettings::settingsDialogApply()
{
    QFETCH(bool, enabled);
    QFETCH(QTime, frequency);
    QFETCH(QString, radio);
    QFETCH(int, expectedChoice);
    QFETCH(int, expectedInterval);

    MorvaneSettingsDialog dialog;
    if (!radio.isEmpty())
        dialog.findChild<QRadioButton *>(radio)->setChecked(true);
    dialog.findChild<QGroupBox *>()->setChecked(enabled);
    dialog.findChild<QTimeEdit *>()->setTime(frequency);
    dialog.applyChoices();

    QSettings store;
    QCOMPARE(MorvaneSettings::updateCheckSettings, expectedChoice);
    QCOMPARE(store.value("updateCheckSettings").toInt(), expectedChoice);
    QCOMPARE(MorvaneSettings::autoSaveInterval, expectedInterval);
    QCOMPARE(store.value("autoSaveInterval").toInt(), expectedInterval);
    QCOMPARE(MorvaneSettings::autoSaveEnabled, enabled);
    QCOMPARE(store.value("autoSaveEnabled").toBool(), enabled);
}

void TestMorvaneSettings::settingsDialogShowsStored()
{
    MorvaneSettings::autoSaveInterval = 125;
    MorvaneSettings::updateCheckSettings = 2;
    MorvaneSettingsDialog dialog;
    // The interval in minutes shows as hours and minutes; the stored choice is checked.
    QCOMPARE(dialog.findChild<QTimeEdit *>()->time(), QTime(2, 5));
    QVERIFY(dialog.findChild<QRadioButton *>("allRadio")->isChecked());
}

void TestMorvaneSettings::updateOptionsDialogStoresChoice()
{
    UpdateCheckOptionsDialog dialog;
    QPushButton *ok = dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok);
    QVERIFY(!ok->isEnabled());
    dialog.findChild<QRadioButton *>("allRadio")->click();
    QVERIFY(ok->isEnabled());
    ok->click();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(MorvaneSettings::updateCheckSettings, 2);
    QCOMPARE(QSettings().value("updateCheckSettings").toInt(), 2);
}

QTEST_MAIN(TestMorvaneSettings)
#include "tst_morvanesettings.moc"
