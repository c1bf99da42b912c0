// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "eval/entityinstance.h"
#include "model/animation.h"
#include "model/charactermap.h"
#include "model/file.h"
#include "model/object.h"
#include "morvanewindow.h"
#include "posepreview.h"
#include "projectcontroller.h"
#include "ui_morvanewindow.h"

#include <QDir>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;
using Test::windowTitle;
using Test::writeProject;

class TestProjectWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startWithArgumentOpens();
    void reopeningMovesToTop();
    void failedOpenKeepsProject();
    void saveActionFollowsProject();
    void exampleOpens_data();
    void exampleOpens();
    void previewPlaysEveryAnimation();
    void absolutePoseOption_data();
    void absolutePoseOption();

private:
    Test::AppFixture mFixture;
};

void TestProjectWindow::init()
{
    mFixture.init();
}

void TestProjectWindow::cleanup()
{
    mFixture.cleanup();
}

void TestProjectWindow::startWithArgumentOpens()
{
    const QString path = mFixture.path("hero.rigj");
    QVERIFY(writeProject(path, QStringLiteral("knight")));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), path);
    QCOMPARE(window.windowTitle(), windowTitle(path));
    QCOMPARE(window.project()->recentFiles(), QStringList(path));
    QVERIFY(MorvaneWindow::rigx->entity(QStringLiteral("knight")));
    // A freshly loaded project is clean: nothing to save, but it can be saved as.
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
    QVERIFY(window.ui()->actionSave_Project_As->isEnabled());
}

void TestProjectWindow::reopeningMovesToTop()
{
    const QString a = mFixture.path("a.rigx");
    const QString b = mFixture.path("b.rigx");
    QVERIFY(writeProject(a));
    QVERIFY(writeProject(b));
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    RigxData *document = MorvaneWindow::rigx;
    window.project()->loadOnOpen(a);
    window.project()->loadOnOpen(b);
    QCOMPARE(window.project()->recentFiles(), QStringList({b, a}));
    // One document for the whole run: opening reads into it.
    QCOMPARE(MorvaneWindow::rigx, document);
    QCOMPARE(MorvaneSettings::mainRigx(), document);
    // Opening through the recent menu's second entry moves it up again.
    window.ui()->menuOpen_Recent_Project->actions().at(1)->trigger();
    QCOMPARE(window.projectFilePath(), a);
    QCOMPARE(window.windowTitle(), windowTitle(a));
    QCOMPARE(window.project()->recentFiles(), QStringList({a, b}));
}

void TestProjectWindow::failedOpenKeepsProject()
{
    const QString good = mFixture.path("good.rigx");
    const QString bad = mFixture.path("bad.rigx");
    QVERIFY(writeProject(good));
    QVERIFY(Test::writeFile(bad, "<?xml version=\"1.0\"?>\n<other_root/>\n"));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), good});
    RigxData *document = MorvaneWindow::rigx;
    QString shown;
    Test::ModalAnswerer answerer([&shown](QWidget *modal) { shown = Test::clickInMessageBox(modal); });
    window.project()->loadOnOpen(bad);
    QVERIFY(shown.contains(QStringLiteral("Not a Morvane file")));
    QCOMPARE(window.projectFilePath(), good);
    QCOMPARE(window.windowTitle(), windowTitle(good));
    QCOMPARE(MorvaneWindow::rigx, document);
    QVERIFY(document->entity(QStringLiteral("hero")));
}

void TestProjectWindow::saveActionFollowsProject()
{
    const QString path = mFixture.path("walk.rigx");
    const QString guest = mFixture.path("other/guest.rigx");
    QVERIFY(writeProject(path));
    QVERIFY(QDir(mFixture.folder()).mkdir("other"));
    QVERIFY(writeProject(guest));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    window.undoStack()->push(new Test::DirtyCommand);
    QVERIFY(window.ui()->actionSave_Project->isEnabled());
    window.ui()->actionSave_New_Version->trigger();
    QCOMPARE(window.windowTitle(), windowTitle(mFixture.path("walk_000.rigx")));
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());

    // A merge cannot be undone, but the project differs from its file.
    Test::ModalAnswerer answerer(
        [](QWidget *modal) { Test::clickInMessageBox(modal, QMessageBox::Yes); });
    QVERIFY(window.project()->importProject(guest));
    QVERIFY(window.ui()->actionSave_Project->isEnabled());
    window.undoStack()->setClean();
}

void TestProjectWindow::exampleOpens_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("xml") << "hero.rigx";
    QTest::newRow("json") << "hero.rigj";
}

void TestProjectWindow::exampleOpens()
{
    QFETCH(QString, name);
    const QString path = QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero/") + name;
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), path);
    RigxData *document = MorvaneWindow::rigx;
    QVERIFY(!document->hasMissingImages());
    Entity *hero = document->entity(QStringLiteral("hero"));
    Entity *lantern = document->entity(QStringLiteral("lantern"));
    QVERIFY(hero);
    QVERIFY(lantern);
    QVERIFY(hero->animationCount() >= 2);
    QVERIFY(hero->animation(0)->mainlineKeyCount() >= 2);
    // The hero carries the lantern as a sub-entity playing its animation.
    bool carriesLantern = false;
    for (int i = 0; i < hero->objectCount(); ++i) {
        const Object *object = hero->object(i);
        if (object->isSubEntity() && object->name() == QLatin1String("lantern"))
            carriesLantern = true;
    }
    QVERIFY(carriesLantern);

    // The knight map swaps the head and torso images while it is active.
    const CharacterMap *knight = hero->charMapFromName(QStringLiteral("knight"));
    QVERIFY(knight);
    QCOMPARE(knight->instructionCount(), 2);
    const auto shownFor = [hero](const QString &fileName) {
        EntityInstance instance(hero);
        instance.setCurrentTime(0);
        instance.refresh();
        for (const PoseItem &item : instance.pose().objects) {
            if (item.file && item.file->name() == fileName)
                return item.shownFile ? item.shownFile->name() : QStringLiteral("(hidden)");
        }
        return QString();
    };
    QCOMPARE(shownFor(QStringLiteral("body/head.png")), QString("body/head.png"));
    hero->makeCharMapActive(QStringLiteral("knight"), true);
    QCOMPARE(shownFor(QStringLiteral("body/head.png")), QString("costume/head_knight.png"));
    QCOMPARE(shownFor(QStringLiteral("body/torso.png")), QString("costume/torso_knight.png"));
    hero->makeCharMapActive(QStringLiteral("knight"), false);
}

void TestProjectWindow::previewPlaysEveryAnimation()
{
    const QString path = QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero/hero.rigx");
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.preview()->currentAnimationName(), QString("idle"));
    QStringList seen{window.preview()->currentAnimationName()};
    for (int step = 0; step < 400 && seen.size() < 3; ++step) {
        window.preview()->advance(50);
        if (seen.last() != window.preview()->currentAnimationName())
            seen << window.preview()->currentAnimationName();
    }
    QCOMPARE(seen, QStringList({"idle", "walk", "idle"}));
    // A project without entities shows nothing.
    window.project()->newProject(mFixture.folder());
    QCOMPARE(window.preview()->currentAnimationName(), QString());
}

void TestProjectWindow::absolutePoseOption_data()
{
    QTest::addColumn<bool>("absolute");
    QTest::newRow("off") << false;
    QTest::newRow("on") << true;
}

void TestProjectWindow::absolutePoseOption()
{
    QFETCH(bool, absolute);
    // A copy of the example, so its images resolve and nothing is written
    // into the source tree.
    const QString source = QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero");
    for (const QString &sub : {QStringLiteral("body"), QStringLiteral("costume"), QStringLiteral("props")}) {
        QVERIFY(QDir(mFixture.folder()).mkpath(sub));
        for (const QString &image : QDir(source + QLatin1Char('/') + sub).entryList({"*.png"}))
            QVERIFY(QFile::copy(source + QLatin1Char('/') + sub + QLatin1Char('/') + image,
                                mFixture.path(sub + QLatin1Char('/') + image)));
    }
    const QString path = mFixture.path("hero.rigx");
    QVERIFY(QFile::copy(source + QStringLiteral("/hero.rigx"), path));

    // Read from the store at start-up, as the Custom Save Options dialog leaves it.
    QSettings().setValue("saveAbsoluteAnimationPoseData", absolute);
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), path);
    window.undoStack()->push(new Test::DirtyCommand);
    window.ui()->actionSave_Project->trigger();
    QVERIFY(window.undoStack()->isClean());

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray saved = file.readAll();
    QCOMPARE(saved.contains("abs_x="), absolute);
}

QTEST_MAIN(TestProjectWindow)
#include "tst_projectwindow.moc"
