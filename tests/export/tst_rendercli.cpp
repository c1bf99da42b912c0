// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// morvane-cli render, run as a user runs it: what it prints, what it writes,
// how it refuses bad options, and that a project packed into sprite sheets
// renders the same pixels as the original.

#include "clirunner.h"
#include "exporttesthelpers.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace Morvane;
using namespace Morvane::Testing;

class TestRenderCli : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void prints_data();
    void prints();
    void badOptions_data();
    void badOptions();
    void dataErrors_data();
    void dataErrors();
    void packedProjectRendersTheSame();
};

void TestRenderCli::prints_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("json");
    QTest::addColumn<QStringList>("files");
    // The sprite moves from (20, 30) to (60, 10) over 400 ms, then holds; 800 ms long.
    QTest::newRow("numbered, default interval")
        << QStringList{QStringLiteral("--out"), QStringLiteral("OUT/walk.png"), QStringLiteral("--trim"),
                       QStringLiteral("0,0,100,50")}
        << QStringLiteral("{\"frames\":8,\"times\":[0,100,200,300,400,500,600,700],\"width\":100,"
                          "\"height\":50,\"source\":[0,0,100,50]}")
        << QStringList{QStringLiteral("walk_000.png"), QStringLiteral("walk_001.png"),
                       QStringLiteral("walk_002.png"), QStringLiteral("walk_003.png"),
                       QStringLiteral("walk_004.png"), QStringLiteral("walk_005.png"),
                       QStringLiteral("walk_006.png"), QStringLiteral("walk_007.png")};
    QTest::newRow("sheet at 5 fps, 200 %")
        << QStringList{QStringLiteral("--out"), QStringLiteral("OUT/s.png"), QStringLiteral("--sheet"),
                       QStringLiteral("--columns"), QStringLiteral("2"), QStringLiteral("--fps"),
                       QStringLiteral("5"), QStringLiteral("--scale"), QStringLiteral("200")}
        << QStringLiteral("{\"frames\":4,\"times\":[0,200,400,600],\"width\":100,\"height\":60,"
                          "\"source\":[20,10,70,40]}")
        << QStringList{QStringLiteral("s.png"), QStringLiteral("s.json")};
    QTest::newRow("gif of keyframes, each frame trimmed")
        << QStringList{QStringLiteral("--out"), QStringLiteral("OUT/k.gif"),
                       QStringLiteral("--keyframes-only"), QStringLiteral("--trim"),
                       QStringLiteral("frame"), QStringLiteral("--background"),
                       QStringLiteral("#336699"), QStringLiteral("--loop"), QStringLiteral("3"),
                       QStringLiteral("--palette-per-frame")}
        << QStringLiteral("{\"frames\":2,\"times\":[0,400],\"width\":10,\"height\":10,"
                          "\"source\":[20,30,30,40]}")
        << QStringList{QStringLiteral("k.gif")};
    QTest::newRow("scale by width and height")
        << QStringList{QStringLiteral("--out"), QStringLiteral("OUT/h.png"), QStringLiteral("--interval"),
                       QStringLiteral("800"), QStringLiteral("--scale"), QStringLiteral("50,300"),
                       QStringLiteral("--pixel-art")}
        << QStringLiteral("{\"frames\":1,\"times\":[0],\"width\":25,\"height\":90,"
                          "\"source\":[20,10,70,40]}")
        << QStringList{QStringLiteral("h_000.png")};
}

void TestRenderCli::prints()
{
    QFETCH(QStringList, options);
    QFETCH(QString, json);
    QFETCH(QStringList, files);
    TinyProject project({{0, QPointF(20, 30)}, {400, QPointF(60, 10)}});
    QVERIFY(project.ok);
    const QString out = project.out(QStringLiteral("out"));
    QVERIFY(QDir().mkpath(out));
    options.replaceInStrings(QStringLiteral("OUT"), out);
    const CliRun run = runCli(QStringList{QStringLiteral("render"), project.path()} + options);
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QJsonObject printed = QJsonDocument::fromJson(run.out).object();
    QStringList expectedPaths;
    for (const QString &f : files)
        expectedPaths.append(out + QLatin1Char('/') + f);
    QCOMPARE(printed.take(QStringLiteral("files")).toVariant().toStringList(), expectedPaths);
    QCOMPARE(printed, QJsonDocument::fromJson(json.toUtf8()).object());
    QStringList listed = files;
    listed.sort();
    QCOMPARE(QDir(out).entryList(QDir::Files, QDir::Name), listed);
}

void TestRenderCli::badOptions_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("message");
    QTest::newRow("no --out") << QStringList() << QStringLiteral("missing --out");
    QTest::newRow("other suffix") << QStringList{QStringLiteral("--out"), QStringLiteral("a.jpg")}
                                  << QStringLiteral("--out must end in .png or .gif");
    QTest::newRow("gif sheet") << QStringList{QStringLiteral("--out"), QStringLiteral("a.gif"),
                                              QStringLiteral("--sheet")}
                               << QStringLiteral("--sheet writes a PNG");
    QTest::newRow("two frame options")
        << QStringList{QStringLiteral("--out"), QStringLiteral("a.png"), QStringLiteral("--fps"),
                       QStringLiteral("10"), QStringLiteral("--interval"), QStringLiteral("50")}
        << QStringLiteral("give one of");
    QTest::newRow("zero interval") << QStringList{QStringLiteral("--out"), QStringLiteral("a.png"),
                                                  QStringLiteral("--interval"), QStringLiteral("0")}
                                   << QStringLiteral("--interval takes");
    QTest::newRow("bad scale") << QStringList{QStringLiteral("--out"), QStringLiteral("a.png"),
                                              QStringLiteral("--scale"), QStringLiteral("-5")}
                               << QStringLiteral("--scale takes");
    QTest::newRow("upside-down trim")
        << QStringList{QStringLiteral("--out"), QStringLiteral("a.png"), QStringLiteral("--trim"),
                       QStringLiteral("10,10,0,20")}
        << QStringLiteral("--trim takes");
    QTest::newRow("named colour") << QStringList{QStringLiteral("--out"), QStringLiteral("a.png"),
                                                 QStringLiteral("--background"), QStringLiteral("red")}
                                  << QStringLiteral("--background takes");
    QTest::newRow("gif option on png")
        << QStringList{QStringLiteral("--out"), QStringLiteral("a.png"), QStringLiteral("--loop"),
                       QStringLiteral("2")}
        << QStringLiteral("are for a GIF");
    QTest::newRow("bad dither") << QStringList{QStringLiteral("--out"), QStringLiteral("a.gif"),
                                               QStringLiteral("--dither"), QStringLiteral("fancy")}
                                << QStringLiteral("--dither takes");
    QTest::newRow("columns without sheet")
        << QStringList{QStringLiteral("--out"), QStringLiteral("a.png"), QStringLiteral("--columns"),
                       QStringLiteral("2")}
        << QStringLiteral("--columns needs --sheet");
}

void TestRenderCli::badOptions()
{
    QFETCH(QStringList, options);
    QFETCH(QString, message);
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    const CliRun run = runCli(QStringList{QStringLiteral("render"), project.path()} + options);
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(QString::fromLocal8Bit(run.err).contains(message), run.err.constData());
    QVERIFY(run.out.isEmpty());
}

void TestRenderCli::dataErrors_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("message");
    QTest::newRow("no such animation")
        << QStringList{QStringLiteral("--animation"), QStringLiteral("run")}
        << QStringLiteral("no animation \"run\"");
    QTest::newRow("no such character map")
        << QStringList{QStringLiteral("--charmap"), QStringLiteral("Knight")}
        << QStringLiteral("no character map \"Knight\"");
    QTest::newRow("unwritable output")
        << QStringList{QStringLiteral("--out"), QStringLiteral("NOWHERE/x/y.png")}
        << QStringLiteral("NOWHERE/x/y_000.png");
}

void TestRenderCli::dataErrors()
{
    QFETCH(QStringList, options);
    QFETCH(QString, message);
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    // A file where a folder should be.
    const QString nowhere = project.out(QStringLiteral("nowhere"));
    QFile blocker(nowhere);
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    options.replaceInStrings(QStringLiteral("NOWHERE"), nowhere);
    message.replace(QStringLiteral("NOWHERE"), nowhere);
    if (!options.contains(QStringLiteral("--out")))
        options << QStringLiteral("--out") << project.out(QStringLiteral("z.png"));
    const CliRun run = runCli(QStringList{QStringLiteral("render"), project.path()} + options);
    QCOMPARE(run.exitCode, 2);
    bool told = false;
    for (const QString &line : QString::fromLocal8Bit(run.err).split(QLatin1Char('\n')))
        told |= line.startsWith(QStringLiteral("Error: ")) && line.contains(message);
    QVERIFY2(told, run.err.constData());
    QVERIFY(run.out.isEmpty());
}

void TestRenderCli::packedProjectRendersTheSame()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString hero = dir.filePath(QStringLiteral("hero"));
    QDirIterator it(QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero"), QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString from = it.next();
        const QString to = hero + from.mid(int(sizeof(MORVANE_SOURCE_DIR "/examples/hero")) - 1);
        QVERIFY(QDir().mkpath(QFileInfo(to).path()));
        QVERIFY(QFile::copy(from, to));
    }
    const CliRun pack = runCli({QStringLiteral("pack"), hero + QStringLiteral("/hero.rigx"),
                                QStringLiteral("--out"), hero + QStringLiteral("/sheets"),
                                QStringLiteral("--trim"), QStringLiteral("--rotate"),
                                QStringLiteral("--bind"), hero + QStringLiteral("/packed.rigx")});
    QVERIFY2(pack.exitCode == 0, pack.err.constData());
    QImage frames[2];
    const QString projects[2] = {QStringLiteral("hero.rigx"), QStringLiteral("packed.rigx")};
    for (int i = 0; i < 2; ++i) {
        const QString out = dir.filePath(QStringLiteral("frame%1.png").arg(i));
        const CliRun run = runCli({QStringLiteral("render"), hero + QLatin1Char('/') + projects[i],
                                   QStringLiteral("--animation"), QStringLiteral("walk"),
                                   QStringLiteral("--interval"), QStringLiteral("300"),
                                   QStringLiteral("--trim"), QStringLiteral("-150,-250,150,50"),
                                   QStringLiteral("--out"), out});
        QVERIFY2(run.exitCode == 0, run.err.constData());
        frames[i] = QImage(dir.filePath(QStringLiteral("frame%1_001.png").arg(i)))
                        .convertToFormat(QImage::Format_ARGB32);
    }
    QCOMPARE(frames[0].size(), QSize(300, 300));
    // Something is drawn, and every pixel agrees.
    int drawn = 0;
    for (int y = 0; y < frames[0].height(); ++y) {
        for (int x = 0; x < frames[0].width(); ++x)
            drawn += qAlpha(frames[0].pixel(x, y)) > 0;
    }
    QVERIFY(drawn > 1000);
    QVERIFY(frames[0] == frames[1]);
}

QTEST_MAIN(TestRenderCli)
#include "tst_rendercli.moc"
