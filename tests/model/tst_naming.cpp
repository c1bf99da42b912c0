// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/file.h"
#include "model/naming.h"
#include "model/rigxdata.h"

#include <QTest>

using namespace Morvane;

class TestNaming : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void uniqueName_data();
    void uniqueName();
    void paddedNumber_data();
    void paddedNumber();
    void validatePath_data();
    void validatePath();
    void bracketDirectories_data();
    void bracketDirectories();
};

void TestNaming::uniqueName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("expected");

    QTest::newRow("free name stays") << "bone" << QStringList{"arm"} << "bone";
    QTest::newRow("taken gets _000") << "bone" << QStringList{"bone"} << "bone_000";
    QTest::newRow("next free counter") << "bone" << QStringList{"bone", "bone_000"} << "bone_001";
    QTest::newRow("gap is filled first")
        << "bone" << QStringList{"bone", "bone_001"} << "bone_000";
    QTest::newRow("suffixed counts on") << "arm_007" << QStringList{"arm_007"} << "arm_008";
    QTest::newRow("suffixed free stays") << "arm_007" << QStringList{"arm"} << "arm_007";
    QTest::newRow("suffix skips taken")
        << "arm_007" << QStringList{"arm_007", "arm_008", "arm_009"} << "arm_010";
    QTest::newRow("beyond three digits")
        << "leg_999" << QStringList{"leg_999"} << "leg_1000";
    QTest::newRow("letters are not a counter")
        << "walk_ab1" << QStringList{"walk_ab1"} << "walk_ab1_000";
    QTest::newRow("two digits are not a counter")
        << "a_12" << QStringList{"a_12"} << "a_12_000";
    QTest::newRow("empty name") << "" << QStringList{""} << "_000";
    QTest::newRow("bare suffix") << "_005" << QStringList{"_005"} << "_006";
}

void TestNaming::uniqueName()
{
    QFETCH(QString, name);
    QFETCH(QStringList, existing);
    QFETCH(QString, expected);
    QCOMPARE(Morvane::uniqueName(name, existing), expected);
}

void TestNaming::paddedNumber_data()
{
    QTest::addColumn<qint64>("number");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("expected");

    QTest::newRow("pads") << qint64(7) << 3 << "walk_" << "walk_007";
    QTest::newRow("exact width") << qint64(123) << 3 << "" << "123";
    QTest::newRow("wider than digits") << qint64(12345) << 4 << "f" << "f12345";
    QTest::newRow("zero") << qint64(0) << 4 << "" << "0000";
    QTest::newRow("negative") << qint64(-5) << 3 << "" << "-005";
}

void TestNaming::paddedNumber()
{
    QFETCH(qint64, number);
    QFETCH(int, digits);
    QFETCH(QString, prefix);
    QFETCH(QString, expected);
    QCOMPARE(Morvane::paddedNumber(number, digits, prefix), expected);
}

void TestNaming::validatePath_data()
{
    QTest::addColumn<QString>("projectFile");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("strip");
    QTest::addColumn<QString>("expected");

    QTest::newRow("backslashes under project")
        << "C:/art/project.rigx" << "C:\\art\\hero.png" << true << "hero.png";
    QTest::newRow("double leading slash") << "" << "//sprites/a.png" << true << "sprites/a.png";
    QTest::newRow("absolute under project")
        << "/home/u/proj/p.rigx" << "/home/u/proj/img/a.png" << true << "img/a.png";
    QTest::newRow("no strip keeps dir")
        << "/home/u/proj/p.rigx" << "/home/u/proj/a.png" << false << "home/u/proj/a.png";
    QTest::newRow("outside project loses only slashes")
        << "/home/u/proj/p.rigx" << "/tmp/a.png" << true << "tmp/a.png";
    QTest::newRow("similar prefix is not the project")
        << "/home/u/proj/p.rigx" << "/home/u/project2/a.png" << true << "home/u/project2/a.png";
    QTest::newRow("relative stays") << "/p/x.rigx" << "a/b.png" << true << "a/b.png";
}

void TestNaming::validatePath()
{
    QFETCH(QString, projectFile);
    QFETCH(QString, path);
    QFETCH(bool, strip);
    QFETCH(QString, expected);
    RigxData doc;
    doc.setFilePath(projectFile);
    QCOMPARE(doc.validatePath(path, strip), expected);
}

void TestNaming::bracketDirectories_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("withoutBracket");
    QTest::addColumn<QString>("bracketName");

    QTest::newRow("atlas folder") << "<hero>/arms/a.png" << "arms/a.png" << "hero";
    QTest::newRow("plain") << "arms/a.png" << "arms/a.png" << "";
    QTest::newRow("two brackets keep the last")
        << "<a>/<b>/c.png" << "c.png" << "a";
    QTest::newRow("unclosed") << "<abc" << "<abc" << "";
}

void TestNaming::bracketDirectories()
{
    QFETCH(QString, name);
    QFETCH(QString, withoutBracket);
    QFETCH(QString, bracketName);
    QCOMPARE(RigxData::removeBeginningBracketDirectory(name), withoutBracket);
    QCOMPARE(RigxData::extractNameFromBrackets(name), bracketName);
    QCOMPARE(File::removeLeadingSlashes(QStringLiteral("///") + name), name);
}

QTEST_GUILESS_MAIN(TestNaming)
#include "tst_naming.moc"
