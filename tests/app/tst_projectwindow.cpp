// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "apptesthelpers.h"
#include "model/charactermap.h"
#include "eval/entityinstance.h"
#include "io/projectfile.h"
#include "model/file.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "morvanesettings.h"
#include "morvanewindow.h"
#include "posepreview.h"
#include "ui_morvanewindow.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QSettings>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;

namespace {

class DirtyCommand : public QUndoCommand
{
public:
    DirtyCommand()
        : QUndoCommand(QStringLiteral("dirty"))
    {
    }
};

// Writes a small valid project (one entity named `entityName`) to `path`.
bool writeProject(const QString &path, const QString &entityName = QStringLiteral("hero"))
{
    RigxData document(nullptr, QStringLiteral("r4.1"));
    Entity *entity = document.appendEmptyEntity();
    entity->setName(entityName);
    QString error;
    const bool ok = ProjectFile::save(&document, path, ProjectSaveOptions(), nullptr, &error);
    if (!ok)
        qWarning() << error;
    return ok;
}

QString title(const QString &path)
{
    return QStringLiteral("Morvane ") + QString(9, QLatin1Char(' ')) + path;
}

} // namespace

class TestProjectWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void startWithArgumentOpens_data();
    void startWithArgumentOpens();
    void reopeningMovesToTop();
    void failedOpenKeepsProject();
    void saveNewVersion_data();
    void saveNewVersion();
    void saveInPlace();
    void autoSaveNames_data();
    void autoSaveNames();
    void autoSaveOfNewProject();
    void autoSaveRestartsAfterChange();
    void autoSaveWaitsWhileSuppressed();
    void autoSaveNeedsProjectFolder();
    void mergeAsksAndKeepsSavable_data();
    void mergeAsksAndKeepsSavable();
    void exampleOpens_data();
    void exampleOpens();
    void previewPlaysEveryAnimation();
    void absolutePoseOption_data();
    void absolutePoseOption();

private:
    QTemporaryDir *mDir = nullptr;
};

void TestProjectWindow::init()
{
    Test::useTestSettings();
    MorvaneSettings::resetToDefaults();
    mDir = new QTemporaryDir;
    QVERIFY(mDir->isValid());
}

void TestProjectWindow::cleanup()
{
    delete mDir;
    mDir = nullptr;
}

void TestProjectWindow::startWithArgumentOpens_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("xml") << "hero.rigx";
    QTest::newRow("json") << "hero.rigj";
}

void TestProjectWindow::startWithArgumentOpens()
{
    QFETCH(QString, name);
    const QString path = mDir->filePath(name);
    QVERIFY(writeProject(path, QStringLiteral("knight")));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), path);
    QCOMPARE(window.windowTitle(), title(path));
    QCOMPARE(window.recentFiles(), QStringList(path));
    QVERIFY(MorvaneWindow::rigx->entity(QStringLiteral("knight")));
    // A freshly loaded project is clean: nothing to save, but it can be saved as.
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
    QVERIFY(window.ui()->actionSave_Project_As->isEnabled());
}

void TestProjectWindow::reopeningMovesToTop()
{
    const QString a = mDir->filePath("a.rigx");
    const QString b = mDir->filePath("b.rigx");
    QVERIFY(writeProject(a));
    QVERIFY(writeProject(b));
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    window.loadOnOpen(a);
    window.loadOnOpen(b);
    QCOMPARE(window.recentFiles(), QStringList({b, a}));
    window.loadOnOpen(a);
    QCOMPARE(window.recentFiles(), QStringList({a, b}));

    // Opening through the recent menu's second entry moves it up again.
    window.ui()->menuOpen_Recent_Project->actions().at(1)->trigger();
    QCOMPARE(window.projectFilePath(), b);
    QCOMPARE(window.recentFiles(), QStringList({b, a}));
}

void TestProjectWindow::failedOpenKeepsProject()
{
    const QString good = mDir->filePath("good.rigx");
    const QString bad = mDir->filePath("bad.rigx");
    QVERIFY(writeProject(good));
    {
        QFile file(bad);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<?xml version=\"1.0\"?>\n<other_root/>\n");
    }
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), good});
    QString shown;
    Test::ModalAnswerer answerer([&shown](QWidget *modal) {
        if (auto *box = qobject_cast<QMessageBox *>(modal)) {
            shown = box->text();
            box->accept();
        }
    });
    window.loadOnOpen(bad);
    QVERIFY(shown.contains(QStringLiteral("Not a Morvane file")));
    QCOMPARE(window.projectFilePath(), good);
    QCOMPARE(window.windowTitle(), title(good));
    QCOMPARE(window.recentFiles(), QStringList(good));
    QVERIFY(MorvaneWindow::rigx->entity(QStringLiteral("hero")));
}

void TestProjectWindow::saveNewVersion_data()
{
    QTest::addColumn<QString>("open");
    QTest::addColumn<QStringList>("others");
    QTest::addColumn<QString>("expected");
    QTest::newRow("walk") << "walk.rigx" << QStringList() << "walk_000.rigx";
    QTest::newRow("walk_007") << "walk_007.rigx" << QStringList() << "walk_008.rigx";
    QTest::newRow("walk_007, 008 taken") << "walk_007.rigx" << QStringList("walk_008.rigx")
                                         << "walk_009.rigx";
    QTest::newRow("walk_ab1") << "walk_ab1.rigx" << QStringList() << "walk_ab1_000.rigx";
    QTest::newRow("json stays json") << "walk.rigj" << QStringList() << "walk_000.rigj";
}

void TestProjectWindow::saveNewVersion()
{
    QFETCH(QString, open);
    QFETCH(QStringList, others);
    QFETCH(QString, expected);
    const QString path = mDir->filePath(open);
    QVERIFY(writeProject(path));
    for (const QString &other : others)
        QVERIFY(writeProject(mDir->filePath(other), QStringLiteral("other")));

    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    window.undoStack()->push(new DirtyCommand);
    QVERIFY(window.ui()->actionSave_Project->isEnabled());
    window.ui()->actionSave_New_Version->trigger();

    const QString target = mDir->filePath(expected);
    QVERIFY(QFile::exists(target));
    QCOMPARE(window.projectFilePath(), target);
    QCOMPARE(window.windowTitle(), title(target));
    QCOMPARE(window.recentFiles().first(), target);
    QVERIFY(window.undoStack()->isClean());
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());

    // What was written is this project, readable again.
    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QVERIFY(ProjectFile::open(&reread, target));
    QVERIFY(reread.entity(QStringLiteral("hero")));
}

void TestProjectWindow::saveInPlace()
{
    const QString path = mDir->filePath("hero.rigx");
    QVERIFY(writeProject(path));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    MorvaneWindow::rigx->entity(0)->setName(QStringLiteral("renamed"));
    window.undoStack()->push(new DirtyCommand);
    window.ui()->actionSave_Project->trigger();
    QVERIFY(window.undoStack()->isClean());
    QVERIFY(!window.ui()->actionSave_Project->isEnabled());
    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QVERIFY(ProjectFile::open(&reread, path));
    QVERIFY(reread.entity(QStringLiteral("renamed")));
}

void TestProjectWindow::autoSaveNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("xml") << "hero.rigx" << "hero.autosave.rigx";
    QTest::newRow("json autosaves as xml") << "hero.rigj" << "hero.autosave.rigx";
}

void TestProjectWindow::autoSaveNames()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    const QString path = mDir->filePath(name);
    QVERIFY(writeProject(path));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    window.undoStack()->push(new DirtyCommand);
    const QString titleBefore = window.windowTitle();
    const QStringList recentBefore = window.recentFiles();

    QSignalSpy finished(&window, &MorvaneWindow::autoSaveFinished);
    QVERIFY(window.startAutoSave());
    QVERIFY(MorvaneSettings::suppressAutoSave());
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toString(), mDir->filePath(expected));
    QCOMPARE(finished.at(0).at(1).toBool(), true);
    QVERIFY(!MorvaneSettings::suppressAutoSave());

    // Always the XML form, and a project that opens again.
    QFile file(mDir->filePath(expected));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("<morvane_data"));
    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QVERIFY(ProjectFile::open(&reread, mDir->filePath(expected)));
    QVERIFY(reread.entity(QStringLiteral("hero")));

    // Nothing about the open project changed.
    QCOMPARE(window.projectFilePath(), path);
    QCOMPARE(window.windowTitle(), titleBefore);
    QCOMPARE(window.recentFiles(), recentBefore);
    QVERIFY(!window.undoStack()->isClean());
    QVERIFY(window.ui()->actionSave_Project->isEnabled());
    window.undoStack()->setClean();
}

void TestProjectWindow::autoSaveOfNewProject()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    window.newProject(mDir->path());
    QCOMPARE(window.windowTitle(), title(QStringLiteral("[Unsaved Project]")));
    QSignalSpy finished(&window, &MorvaneWindow::autoSaveFinished);
    QVERIFY(window.startAutoSave());
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toString(), mDir->filePath("NewProject.autosave.rigx"));
    QVERIFY(QFile::exists(mDir->filePath("NewProject.autosave.rigx")));
    QCOMPARE(window.projectFilePath(), QString());
    QCOMPARE(window.windowTitle(), title(QStringLiteral("[Unsaved Project]")));
    QVERIFY(window.recentFiles().isEmpty());
}

void TestProjectWindow::autoSaveRestartsAfterChange()
{
    const QString path = mDir->filePath("hero.rigx");
    QVERIFY(writeProject(path));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QSignalSpy finished(&window, &MorvaneWindow::autoSaveFinished);
    QVERIFY(window.startAutoSave());
    // A change while the copy is being written makes that copy stale.
    MorvaneWindow::rigx->entity(0)->setName(QStringLiteral("changed"));
    window.undoStack()->push(new DirtyCommand);
    QTRY_COMPARE(finished.count(), 2);
    QTest::qWait(50);
    QCOMPARE(finished.count(), 2);
    QVERIFY(!window.autoSaveRunning());
    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QVERIFY(ProjectFile::open(&reread, mDir->filePath("hero.autosave.rigx")));
    QVERIFY(reread.entity(QStringLiteral("changed")));
    window.undoStack()->setClean();
}

void TestProjectWindow::autoSaveWaitsWhileSuppressed()
{
    const QString path = mDir->filePath("hero.rigx");
    QVERIFY(writeProject(path));
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    MorvaneSettings::startSuppressAutoSave();
    QVERIFY(!window.startAutoSave());
    MorvaneSettings::endSuppressAutoSave();
    QVERIFY(!QFile::exists(mDir->filePath("hero.autosave.rigx")));
    QVERIFY(window.startAutoSave());
    // A second start while one runs is refused rather than stacked.
    QVERIFY(!window.startAutoSave());
    QTRY_VERIFY(!window.autoSaveRunning());
}

void TestProjectWindow::autoSaveNeedsProjectFolder()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QVERIFY(!window.startAutoSave());
    QVERIFY(!window.autoSaveRunning());
}

void TestProjectWindow::mergeAsksAndKeepsSavable_data()
{
    QTest::addColumn<bool>("accept");
    QTest::newRow("yes") << true;
    QTest::newRow("no") << false;
}

void TestProjectWindow::mergeAsksAndKeepsSavable()
{
    QFETCH(bool, accept);
    const QString path = mDir->filePath("hero.rigx");
    QVERIFY(writeProject(path));
    QVERIFY(QDir(mDir->path()).mkdir("other"));
    const QString other = mDir->filePath("other/guest.rigx");
    QVERIFY(writeProject(other));

    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QString question;
    Test::ModalAnswerer answerer([&](QWidget *modal) {
        auto *box = qobject_cast<QMessageBox *>(modal);
        if (!box)
            return;
        question = box->windowTitle() + QLatin1Char('|') + box->text();
        box->button(accept ? QMessageBox::Yes : QMessageBox::No)->click();
    });
    QCOMPARE(window.importProject(other), accept);
    QCOMPARE(question, QString("Merge Projects?|Are you sure you want to merge guest.rigx and all "
                               "of it's images into this project?\n"
                               "                     This action cannot be undone."));
    QCOMPARE(MorvaneWindow::rigx->entityCount(), accept ? 2 : 1);
    QCOMPARE(bool(MorvaneWindow::rigx->entity(QStringLiteral("hero_000"))), accept);
    // A merged project differs from its file and can be saved.
    QCOMPARE(window.ui()->actionSave_Project->isEnabled(), accept);
    QCOMPARE(window.projectFilePath(), path);
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
    window.newProject(mDir->path());
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
        QVERIFY(QDir(mDir->path()).mkpath(sub));
        for (const QString &image : QDir(source + QLatin1Char('/') + sub).entryList({"*.png"}))
            QVERIFY(QFile::copy(source + QLatin1Char('/') + sub + QLatin1Char('/') + image,
                                mDir->filePath(sub + QLatin1Char('/') + image)));
    }
    const QString path = mDir->filePath("hero.rigx");
    QVERIFY(QFile::copy(source + QStringLiteral("/hero.rigx"), path));

    // Read from the store at start-up, as the Custom Save Options dialog leaves it.
    QSettings().setValue("saveAbsoluteAnimationPoseData", absolute);
    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane"), path});
    QCOMPARE(window.projectFilePath(), path);
    window.undoStack()->push(new DirtyCommand);
    window.ui()->actionSave_Project->trigger();
    QVERIFY(window.undoStack()->isClean());

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray saved = file.readAll();
    QCOMPARE(saved.contains("abs_x="), absolute);
}

QTEST_MAIN(TestProjectWindow)
#include "tst_projectwindow.moc"
