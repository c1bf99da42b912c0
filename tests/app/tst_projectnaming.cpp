// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "imagecoderpath.h"
#include "projectnaming.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;

class TestProjectNaming : public QObject
{
    Q_OBJECT

private slots:
    void nextVersion_data();
    void nextVersion();
    void autoSaveName_data();
    void autoSaveName();
    void openableArgument_data();
    void openableArgument();
    void imageCoders_data();
    void imageCoders();
};

void TestProjectNaming::nextVersion_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no counter") << "/p/walk.rigx" << QStringList{"/p/walk.rigx"}
                                << "/p/walk_000.rigx";
    QTest::newRow("counter continues") << "/p/walk_007.rigx" << QStringList{"/p/walk_007.rigx"}
                                       << "/p/walk_008.rigx";
    QTest::newRow("letters are no counter") << "/p/walk_ab1.rigx" << QStringList{}
                                            << "/p/walk_ab1_000.rigx";
    QTest::newRow("first free from zero") << "/p/walk.rigx"
                                          << QStringList{"/p/walk_000.rigx", "/p/walk_001.rigx"}
                                          << "/p/walk_002.rigx";
    QTest::newRow("four digits beyond 999") << "/p/walk_999.rigx" << QStringList{"/p/walk_999.rigx"}
                                            << "/p/walk_1000.rigx";
    QTest::newRow("suffix lower-cased") << "/p/Walk.RIGJ" << QStringList{} << "/p/Walk_000.rigj";
    QTest::newRow("dot in directory only") << "/p.d/walk" << QStringList{} << "/p.d/walk_000";
    QTest::newRow("short name") << "/p/_12.rigx" << QStringList{} << "/p/_12_000.rigx";
}

void TestProjectNaming::nextVersion()
{
    QFETCH(QString, path);
    QFETCH(QStringList, existing);
    QFETCH(QString, expected);
    const QString result =
        nextVersionPath(path, [&existing](const QString &candidate) { return existing.contains(candidate); });
    QCOMPARE(result, expected);
}

void TestProjectNaming::autoSaveName_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("expected");
    QTest::newRow("xml") << "/p/hero.rigx" << "hero.autosave.rigx";
    QTest::newRow("json is saved as xml") << "/p/hero.rigj" << "hero.autosave.rigx";
    QTest::newRow("no dot") << "/p/hero" << "hero.autosave.rigx";
    QTest::newRow("two dots") << "/p/hero.v2.rigx" << "hero.v2.autosave.rigx";
    QTest::newRow("dot only in folder") << "/p.d/hero" << "hero.autosave.rigx";
    QTest::newRow("never saved") << "" << "NewProject.autosave.rigx";
    QTest::newRow("folder only") << "/p/" << "NewProject.autosave.rigx";
}

void TestProjectNaming::autoSaveName()
{
    QFETCH(QString, fileName);
    QFETCH(QString, expected);
    QCOMPARE(autoSaveFileName(fileName), expected);
}

void TestProjectNaming::openableArgument_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("create");
    QTest::addColumn<bool>("expected");
    QTest::newRow("rigx") << "a.rigx" << true << true;
    QTest::newRow("rigj") << "a.rigj" << true << true;
    QTest::newRow("upper case") << "a.RIGX" << true << false;
    QTest::newRow("missing") << "b.rigx" << false << false;
    QTest::newRow("missing, upper case") << "b.RIGJ" << false << false;
    QTest::newRow("other ending") << "a.xml" << true << false;
    QTest::newRow("missing, other ending") << "b.xml" << false << false;
    QTest::newRow("ending without dot") << "arigx" << true << true;
}

void TestProjectNaming::openableArgument()
{
    QFETCH(QString, name);
    QFETCH(bool, create);
    QFETCH(bool, expected);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    if (create) {
        QFile file(dir.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QCOMPARE(isOpenableProjectArgument(dir.filePath(name)), expected);
    // A directory is not a project file, whatever its name.
    QVERIFY(QDir(dir.path()).mkdir("folder.rigx"));
    QVERIFY(!isOpenableProjectArgument(dir.filePath("folder.rigx")));
}

void TestProjectNaming::imageCoders_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("expected");
    // "-" stands for the program's folder; "" for nothing set.
    QTest::newRow("bare program") << QStringList{"morvane", "morvane-cli"} << "";
    QTest::newRow("own libraries only") << QStringList{"morvane", "libfoo.so", "libfoo.la"} << "";
    QTest::newRow("coder modules beside it") << QStringList{"morvane", "png.la", "png.so"} << "-";
    QTest::newRow("a lone module") << QStringList{"morvane", "jpeg.so"} << "-";
    QTest::newRow("coders folder") << QStringList{"morvane", "coders/"} << "-/coders";
    QTest::newRow("a file named coders") << QStringList{"morvane", "coders"} << "";
    QTest::newRow("module folder is no module") << QStringList{"png.so/"} << "";
}

void TestProjectNaming::imageCoders()
{
    QFETCH(QStringList, files);
    QFETCH(QString, expected);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    for (const QString &name : files) {
        if (name.endsWith(QLatin1Char('/'))) {
            QVERIFY(QDir(dir.path()).mkdir(name.chopped(1)));
        } else {
            QFile file(dir.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly));
        }
    }
    expected.replace(QLatin1Char('-'), dir.path());
    QCOMPARE(imageCoderPath(dir.path()), expected);
    QCOMPARE(imageCoderPath(QString()), QString());
}

QTEST_GUILESS_MAIN(TestProjectNaming)
#include "tst_projectnaming.moc"
