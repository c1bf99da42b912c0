// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clirunner.h"
#include "testhost.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;

namespace {

using Morvane::Testing::runCli;
using Run = Morvane::Testing::CliRun;


} // namespace

class TestCli : public QObject
{
    Q_OBJECT

private slots:
    void exitStatus_data();
    void exitStatus();
    void info();
    void convertRoundTrip();
    void convertCompact();
};

void TestCli::exitStatus_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<QByteArray>("errStart");
    QTest::newRow("version") << QStringList{QStringLiteral("--version")} << 0 << QByteArray("r4.1\n")
                             << QByteArray();
    QTest::newRow("nothing") << QStringList{} << 1 << QByteArray() << QByteArray("Usage:");
    QTest::newRow("unknown command") << QStringList{QStringLiteral("explode")} << 1 << QByteArray()
                                     << QByteArray("morvane-cli: unknown command");
    QTest::newRow("convert needs two paths")
        << QStringList{QStringLiteral("convert"), QStringLiteral("a.rigx")} << 1 << QByteArray()
        << QByteArray("Usage: morvane-cli convert");
    QTest::newRow("unknown option")
        << QStringList{QStringLiteral("convert"), QStringLiteral("a.rigx"), QStringLiteral("b.rigj"),
                       QStringLiteral("--fast")}
        << 1 << QByteArray() << QByteArray("morvane-cli convert: unknown option --fast");
    QTest::newRow("info needs a file") << QStringList{QStringLiteral("info")} << 1 << QByteArray()
                                       << QByteArray("Usage: morvane-cli info");
    QTest::newRow("missing input")
        << QStringList{QStringLiteral("info"), QStringLiteral("/nonexistent/a.rigx")} << 2
        << QByteArray() << QByteArray("Error: Cannot read file-/nonexistent/a.rigx: ");
    QTest::newRow("unwritable output")
        << QStringList{QStringLiteral("convert"), testData("canonical.rigx"),
                       QStringLiteral("/nonexistent/dir/b.rigj")}
        << 2 << QByteArray() << QByteArray("Error: Cannot write file /nonexistent/dir/b.rigj: ");
    QTest::newRow("broken input")
        << QStringList{QStringLiteral("info"), testData("broken.rigx")} << 2 << QByteArray()
        << QByteArray("Error: Failed to parse file ");
}

void TestCli::exitStatus()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, out);
    QFETCH(QByteArray, errStart);
    const Run run = runCli(arguments);
    QCOMPARE(run.exitCode, exitCode);
    QCOMPARE(run.out, out);
    QVERIFY2(run.err.startsWith(errStart), run.err.constData());
}

void TestCli::info()
{
    const Run run = runCli({QStringLiteral("info"), testData("canonical.rigx")});
    QCOMPARE(run.exitCode, 0);
    QJsonParseError error;
    const QJsonObject root = QJsonDocument::fromJson(run.out, &error).object();
    QCOMPARE(error.error, QJsonParseError::NoError);

    const QJsonObject body = root.value(QLatin1String("folders")).toArray().at(0).toObject();
    QCOMPARE(body.value(QLatin1String("name")).toString(), QStringLiteral("body"));
    const QJsonObject torso = body.value(QLatin1String("files")).toArray().at(0).toObject();
    QCOMPARE(torso.value(QLatin1String("name")).toString(), QStringLiteral("body/torso.png"));
    QCOMPARE(torso.value(QLatin1String("width")).toInt(), 40);
    QCOMPARE(torso.value(QLatin1String("pivot_y")).toDouble(), 0.75);
    QCOMPARE(torso.value(QLatin1String("missing")).toBool(), true);
    const QJsonObject step = root.value(QLatin1String("folders")).toArray().at(1).toObject()
                                 .value(QLatin1String("files")).toArray().at(0).toObject();
    QCOMPARE(step.value(QLatin1String("type")).toString(), QStringLiteral("sound"));

    const QJsonObject hero = root.value(QLatin1String("entities")).toArray().at(0).toObject();
    QCOMPARE(hero.value(QLatin1String("name")).toString(), QStringLiteral("hero"));
    const QJsonArray objects = hero.value(QLatin1String("objects")).toArray();
    QCOMPARE(objects.at(0).toObject().value(QLatin1String("type")).toString(), QStringLiteral("bone"));
    const QJsonArray animations = hero.value(QLatin1String("animations")).toArray();
    const QJsonObject walk = animations.at(0).toObject();
    QCOMPARE(walk.value(QLatin1String("looping")).toString(), QStringLiteral("false"));
    QCOMPARE(walk.value(QLatin1String("loop_to")).toInt(), 100);
    QCOMPARE(walk.value(QLatin1String("interval")).toInt(), 50);
    QCOMPARE(walk.value(QLatin1String("mainline_key_times")).toArray(), (QJsonArray{0, 400}));
    const QJsonObject spine = walk.value(QLatin1String("timelines")).toArray().at(0).toObject();
    QCOMPARE(spine.value(QLatin1String("object_type")).toString(), QStringLiteral("bone"));
    QCOMPARE(spine.value(QLatin1String("key_times")).toArray(), (QJsonArray{0, 400}));
    QCOMPARE(animations.at(1).toObject().value(QLatin1String("looping")).toString(),
             QStringLiteral("ping_pong"));
    const QJsonObject gem = root.value(QLatin1String("entities")).toArray().at(1).toObject();
    QCOMPARE(gem.value(QLatin1String("animations")).toArray().at(0).toObject()
                 .value(QLatin1String("looping")).toString(),
             QStringLiteral("true"));
}

void TestCli::convertRoundTrip()
{
    QTemporaryDir dir;
    const QString json = dir.filePath(QStringLiteral("p.rigj"));
    const QString xml = dir.filePath(QStringLiteral("p.rigx"));
    QCOMPARE(runCli({QStringLiteral("convert"), testData("canonical.rigx"), json}).exitCode, 0);
    QCOMPARE(readAll(json), readAll(testData("canonical.rigj")));
    QCOMPARE(runCli({QStringLiteral("convert"), json, xml, QStringLiteral("--pretty")}).exitCode, 0);
    QCOMPARE(readAll(xml), readAll(testData("canonical.rigx")));
}

void TestCli::convertCompact()
{
    QTemporaryDir dir;
    const QString xml = dir.filePath(QStringLiteral("c.rigx"));
    QCOMPARE(runCli({QStringLiteral("convert"), QStringLiteral("--compact"),
                     testData("canonical.rigx"), xml})
                 .exitCode,
             0);
    QCOMPARE(readAll(xml), readAll(testData("canonical-compact.rigx")));
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
