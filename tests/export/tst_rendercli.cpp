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
    // Options and files as words apart.
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("json");
    QTest::addColumn<QString>("files");
    // The sprite moves from (20, 30) to (60, 10) over 400 ms, then holds; 800 ms long.
    QTest::newRow("numbered, default interval")
        << "--out OUT/walk.png --trim 0,0,100,50"
        << "{\"frames\":8,\"times\":[0,100,200,300,400,500,600,700],\"width\":100,"
           "\"height\":50,\"source\":[0,0,100,50]}"
        << "walk_000.png walk_001.png walk_002.png walk_003.png walk_004.png walk_005.png "
           "walk_006.png walk_007.png";
    QTest::newRow("sheet at 5 fps, 200 %")
        << "--out OUT/s.png --sheet --columns 2 --fps 5 --scale 200"
        << "{\"frames\":4,\"times\":[0,200,400,600],\"width\":100,\"height\":60,"
           "\"source\":[20,10,70,40]}"
        << "s.png s.json";
    QTest::newRow("gif of keyframes, each frame trimmed")
        << "--out OUT/k.gif --keyframes-only --trim frame --background #336699 --loop 3 "
           "--palette-per-frame"
        << "{\"frames\":2,\"times\":[0,400],\"width\":10,\"height\":10,\"source\":[20,30,30,40]}"
        << "k.gif";
    QTest::newRow("scale by width and height")
        << "--out OUT/h.png --interval 800 --scale 50,300 --pixel-art"
        << "{\"frames\":1,\"times\":[0],\"width\":25,\"height\":90,\"source\":[20,10,70,40]}"
        << "h_000.png";
}

void TestRenderCli::prints()
{
    QFETCH(QString, options);
    QFETCH(QString, json);
    QFETCH(QString, files);
    TinyProject project({{0, QPointF(20, 30)}, {400, QPointF(60, 10)}});
    QVERIFY(project.ok);
    const QString out = project.out(QStringLiteral("out"));
    QVERIFY(QDir().mkpath(out));
    options.replace(QStringLiteral("OUT"), out);
    const CliRun run = runCli(QStringList{QStringLiteral("render"), project.path()}
                              + options.split(QLatin1Char(' ')));
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QJsonObject printed = QJsonDocument::fromJson(run.out).object();
    QStringList expectedPaths;
    for (const QString &f : files.split(QLatin1Char(' ')))
        expectedPaths.append(out + QLatin1Char('/') + f);
    QCOMPARE(printed.take(QStringLiteral("files")).toVariant().toStringList(), expectedPaths);
    QCOMPARE(printed, QJsonDocument::fromJson(json.toUtf8()).object());
    QStringList listed = files.split(QLatin1Char(' '));
    listed.sort();
    QCOMPARE(QDir(out).entryList(QDir::Files, QDir::Name), listed);
}

void TestRenderCli::badOptions_data()
{
    QTest::addColumn<QString>("options"); // words apart
    QTest::addColumn<QString>("message");
    QTest::newRow("no --out") << "" << "missing --out";
    QTest::newRow("other suffix") << "--out a.jpg" << "--out must end in .png or .gif";
    QTest::newRow("gif sheet") << "--out a.gif --sheet" << "--sheet writes a PNG";
    QTest::newRow("two frame options") << "--out a.png --fps 10 --interval 50" << "give one of";
    QTest::newRow("zero interval") << "--out a.png --interval 0" << "--interval takes";
    QTest::newRow("bad scale") << "--out a.png --scale -5" << "--scale takes";
    QTest::newRow("upside-down trim") << "--out a.png --trim 10,10,0,20" << "--trim takes";
    QTest::newRow("named colour") << "--out a.png --background red" << "--background takes";
    QTest::newRow("gif option on png") << "--out a.png --loop 2" << "are for a GIF";
    QTest::newRow("bad dither") << "--out a.gif --dither fancy" << "--dither takes";
    QTest::newRow("columns without sheet") << "--out a.png --columns 2" << "--columns needs --sheet";
}

void TestRenderCli::badOptions()
{
    QFETCH(QString, options);
    QFETCH(QString, message);
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    const CliRun run = runCli(QStringList{QStringLiteral("render"), project.path()}
                              + options.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(QString::fromLocal8Bit(run.err).contains(message), run.err.constData());
    QVERIFY(run.out.isEmpty());
}

void TestRenderCli::dataErrors_data()
{
    QTest::addColumn<QString>("options"); // words apart
    QTest::addColumn<QString>("message");
    QTest::newRow("no such animation") << "--animation run" << "no animation \"run\"";
    QTest::newRow("no such character map") << "--charmap Knight" << "no character map \"Knight\"";
    QTest::newRow("unwritable output") << "--out NOWHERE/x/y.png" << "NOWHERE/x/y_000.png";
}

void TestRenderCli::dataErrors()
{
    QFETCH(QString, options);
    QFETCH(QString, message);
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    // A file where a folder should be.
    const QString nowhere = project.out(QStringLiteral("nowhere"));
    QFile blocker(nowhere);
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    options.replace(QStringLiteral("NOWHERE"), nowhere);
    message.replace(QStringLiteral("NOWHERE"), nowhere);
    QStringList args{QStringLiteral("render"), project.path()};
    args += options.split(QLatin1Char(' '));
    if (!options.contains(QStringLiteral("--out")))
        args << QStringLiteral("--out") << project.out(QStringLiteral("z.png"));
    const CliRun run = runCli(args);
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
