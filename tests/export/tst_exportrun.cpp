// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// Whole export runs into files: which frames, which names, what the sheet and
// its JSON hold, and what stays when a run stops.

#include "exporttesthelpers.h"

#include "atlas/jsonspritesheet.h"
#include "export/animationexporter.h"
#include "model/animation.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <unistd.h>

using namespace Morvane;
using namespace Morvane::Testing;

class TestExportRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void frameTimes_data();
    void frameTimes();
    void numberedFiles_data();
    void numberedFiles();
    void trimToEachFrame_data();
    void trimToEachFrame();
    void trimToAnimation();
    void sheetLayout_data();
    void sheetLayout();
    void premultiplied();
    void cancelKeepsWrittenFiles();
    void failedWriteNamesTheFile_data();
    void failedWriteNamesTheFile();
    void hostileNamesStayFileNames_data();
    void hostileNamesStayFileNames();
};

void TestExportRun::frameTimes_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("interval");
    QTest::addColumn<bool>("keyframesOnly");
    QTest::addColumn<QList<int>>("times");
    QTest::addColumn<QList<int>>("durations");
    QTest::addColumn<int>("trimmed");

    QTest::newRow("divides") << 800 << 100 << false << QList<int>{0, 100, 200, 300, 400, 500, 600, 700}
                             << QList<int>(8, 100) << 0;
    QTest::newRow("rounds up") << 800 << 300 << false << QList<int>{0, 300, 600}
                               << QList<int>(3, 300) << 200;
    QTest::newRow("rounds down") << 800 << 350 << false << QList<int>{0, 350} << QList<int>(2, 350)
                                 << 100;
    QTest::newRow("longer than the animation") << 800 << 5000 << false << QList<int>{0}
                                               << QList<int>{5000} << 800;
    // Keys at 0, 300 and 500 of 800: the last lasts until the end.
    QTest::newRow("keyframes") << 800 << 100 << true << QList<int>{0, 300, 500}
                               << QList<int>{300, 200, 300} << 0;
}

void TestExportRun::frameTimes()
{
    QFETCH(int, length);
    QFETCH(int, interval);
    QFETCH(bool, keyframesOnly);
    QFETCH(QList<int>, times);
    QFETCH(QList<int>, durations);
    QFETCH(int, trimmed);
    TinyProject project({{0, QPointF(0, 0)}, {300, QPointF(10, 0)}, {500, QPointF(20, 0)}}, length);
    QVERIFY(project.ok);
    ExportOptions options;
    options.interval = interval;
    options.keyframesOnly = keyframesOnly;
    const QList<FrameTime> frames = exportFrameTimes(project.scene.currentAnimation(), options);
    QList<int> gotTimes, gotDurations;
    for (const FrameTime &f : frames) {
        gotTimes.append(f.time);
        gotDurations.append(f.duration);
    }
    QCOMPARE(gotTimes, times);
    QCOMPARE(gotDurations, durations);
    QCOMPARE(trimmedRemainder(length, interval), trimmed);
}

void TestExportRun::numberedFiles_data()
{
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    QTest::newRow("walk.png") << QStringLiteral("walk.png") << QStringLiteral("walk_000.png")
                              << QStringLiteral("walk_007.png");
    QTest::newRow("only the last suffix goes") << QStringLiteral("walk.v2.png")
                                               << QStringLiteral("walk.v2_000.png")
                                               << QStringLiteral("walk.v2_007.png");
}

void TestExportRun::numberedFiles()
{
    QFETCH(QString, output);
    QFETCH(QString, first);
    QFETCH(QString, last);
    // Moving 5 units right every 100 ms.
    TinyProject project({{0, QPointF(0, 0)}, {800, QPointF(40, 0)}});
    QVERIFY(project.ok);
    ExportOptions options;
    options.trim = TrimType::Custom;
    options.customRect = QRectF(0, 0, 50, 10);
    const ExportResult result = AnimationExporter::run(&project.scene, options, project.out(output));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.files.size(), 8);
    QCOMPARE(result.files.first(), project.out(first));
    QCOMPARE(result.files.last(), project.out(last));
    for (qsizetype i = 0; i < result.files.size(); ++i) {
        // Frame i shows the sprite 5 × i to the right.
        const QImage image(result.files[i]);
        QCOMPARE(image.size(), QSize(50, 10));
        const QRect red(int(5 * i), 0, 10, 10);
        const QStringList wrong = wrongPixels(image, [&](int x, int y) {
            return red.contains(x, y) ? qRgb(255, 0, 0) : qRgba(0, 0, 0, 0);
        });
        QVERIFY2(wrong.isEmpty(), qPrintable(result.files[i] + QLatin1Char(' ') + wrong.join(u';')));
    }
}

void TestExportRun::trimToEachFrame_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<QSize>("size");
    // On a sheet: each frame's place in the box of all frames, and that box.
    QTest::addColumn<QList<QPoint>>("offsets");
    QTest::addColumn<QSize>("box");
    // The sprite's top left at (-7, 12), (3, 4), (13, -4), (23, -12): a box of
    // 40 × 34 from (-7, -12).
    QTest::newRow("100 %") << 100.0 << QSize(10, 10)
                           << QList<QPoint>{{0, 24}, {10, 16}, {20, 8}, {30, 0}} << QSize(40, 34);
    QTest::newRow("200 %") << 200.0 << QSize(20, 20)
                           << QList<QPoint>{{0, 48}, {20, 32}, {40, 16}, {60, 0}} << QSize(80, 68);
    // 7.2, 4.8 and 2.4 round; 12 × 10.2 holds the last frame.
    QTest::newRow("30 %") << 30.0 << QSize(3, 3)
                          << QList<QPoint>{{0, 7}, {3, 5}, {6, 2}, {9, 0}} << QSize(12, 10);
}

void TestExportRun::trimToEachFrame()
{
    QFETCH(double, scale);
    QFETCH(QSize, size);
    TinyProject project({{0, QPointF(-7, 12)}, {800, QPointF(33, -20)}});
    QVERIFY(project.ok);
    ExportOptions options;
    options.trim = TrimType::EachFrame;
    options.scaleWidth = options.scaleHeight = scale;
    options.interval = 200;
    const ExportResult result = AnimationExporter::run(&project.scene, options, project.out(QStringLiteral("f.png")));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.files.size(), 4);
    QCOMPARE(result.frameSize, size);
    QCOMPARE(result.source, QRectF(-7, 12, 10, 10));
    for (const QString &file : result.files) {
        const QImage image(file);
        QCOMPARE(image.size(), size);
        QCOMPARE(image.pixel(size.width() / 2, size.height() / 2), qRgb(255, 0, 0));
    }

    QFETCH(QList<QPoint>, offsets);
    QFETCH(QSize, box);
    options.kind = ExportKind::SpriteSheet;
    const ExportResult sheet = AnimationExporter::run(&project.scene, options, project.out(QStringLiteral("s.png")));
    QVERIFY2(sheet.ok, qPrintable(sheet.error));
    QFile file(sheet.files.value(1));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject frames = QJsonDocument::fromJson(file.readAll()).object().value(QStringLiteral("frames")).toObject();
    QCOMPARE(frames.size(), offsets.size());
    JsonSpriteSheet atlas(sheet.files.value(1));
    for (qsizetype k = 0; k < offsets.size(); ++k) {
        const QString name = QStringLiteral("s_00%1.png").arg(k);
        const QJsonObject frame = frames.value(name).toObject();
        QVERIFY(frame.value(QStringLiteral("trimmed")).toBool());
        const QJsonObject placed = frame.value(QStringLiteral("spriteSourceSize")).toObject();
        QCOMPARE(QPoint(placed.value(QStringLiteral("x")).toInt(), placed.value(QStringLiteral("y")).toInt()),
                 offsets[k]);
        const QJsonObject source = frame.value(QStringLiteral("sourceSize")).toObject();
        QCOMPARE(QSize(source.value(QStringLiteral("w")).toInt(), source.value(QStringLiteral("h")).toInt()), box);
        // The atlas reader puts the frame back in its place.
        const QImage back = atlas.pixmapFromFileName(name);
        QCOMPARE(back.size(), box);
        QCOMPARE(back.pixel(offsets[k] + QPoint(size.width() / 2, size.height() / 2)), qRgb(255, 0, 0));
    }
}

void TestExportRun::trimToAnimation()
{
    // From (0, 0) to (40, -20): the union of every frame's and key's sprite.
    TinyProject project({{0, QPointF(0, 0)}, {800, QPointF(40, -20)}});
    QVERIFY(project.ok);
    ExportOptions options;
    options.interval = 400;
    const ExportResult result = AnimationExporter::run(&project.scene, options, project.out(QStringLiteral("a.png")));
    QVERIFY2(result.ok, qPrintable(result.error));
    // Frames at 0 and 400, (0, 0) and (20, -10), and the key at 800, (40, -20).
    QCOMPARE(result.source, QRectF(0, -20, 50, 30));
    QCOMPARE(result.frameSize, QSize(50, 30));
    const QImage second(result.files.value(1));
    QCOMPARE(second.pixel(25, 15), qRgb(255, 0, 0));
    QCOMPARE(qAlpha(second.pixel(5, 25)), 0);
    QCOMPARE(qAlpha(second.pixel(45, 5)), 0);
}

void TestExportRun::sheetLayout_data()
{
    QTest::addColumn<int>("perRow");
    QTest::addColumn<QSize>("sheet");
    QTest::addColumn<QList<QPoint>>("cells");
    // Five frames of 30 × 10.
    QTest::newRow("one row") << 0 << QSize(150, 10)
                             << QList<QPoint>{{0, 0}, {30, 0}, {60, 0}, {90, 0}, {120, 0}};
    QTest::newRow("two per row") << 2 << QSize(60, 30)
                                 << QList<QPoint>{{0, 0}, {30, 0}, {0, 10}, {30, 10}, {0, 20}};
    QTest::newRow("one column") << 1 << QSize(30, 50)
                                << QList<QPoint>{{0, 0}, {0, 10}, {0, 20}, {0, 30}, {0, 40}};
    QTest::newRow("more per row than frames") << 9 << QSize(150, 10)
                                              << QList<QPoint>{{0, 0}, {30, 0}, {60, 0}, {90, 0}, {120, 0}};
}

void TestExportRun::sheetLayout()
{
    QFETCH(int, perRow);
    QFETCH(QSize, sheet);
    QFETCH(QList<QPoint>, cells);
    // 5 units right every 100 ms over 500 ms.
    TinyProject project({{0, QPointF(0, 0)}, {500, QPointF(25, 0)}}, 500);
    QVERIFY(project.ok);
    ExportOptions options;
    options.kind = ExportKind::SpriteSheet;
    options.trim = TrimType::Custom;
    options.customRect = QRectF(0, 0, 30, 10);
    options.framesPerRow = perRow;
    const ExportResult result = AnimationExporter::run(&project.scene, options, project.out(QStringLiteral("walk.png")));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.files, (QStringList{project.out(QStringLiteral("walk.png")),
                                        project.out(QStringLiteral("walk.json"))}));
    const QImage image(result.files[0]);
    QCOMPARE(image.size(), sheet);
    for (qsizetype k = 0; k < cells.size(); ++k) {
        // Frame k's sprite starts 5 × k into its cell.
        QCOMPARE(image.pixel(cells[k] + QPoint(int(5 * k), 0)), qRgb(255, 0, 0));
        QCOMPARE(image.pixel(cells[k] + QPoint(int(5 * k) + 9, 9)), qRgb(255, 0, 0));
        if (k > 0)
            QCOMPARE(qAlpha(image.pixel(cells[k] + QPoint(int(5 * k) - 1, 0))), 0);
    }

    QFile file(result.files[1]);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject json = QJsonDocument::fromJson(file.readAll()).object();
    const QJsonObject frames = json.value(QStringLiteral("frames")).toObject();
    QCOMPARE(frames.size(), 5);
    for (qsizetype k = 0; k < cells.size(); ++k) {
        const QJsonObject frame = frames.value(QStringLiteral("walk_00%1.png").arg(k)).toObject();
        const QJsonObject rect = frame.value(QStringLiteral("frame")).toObject();
        QCOMPARE(rect.value(QStringLiteral("x")).toInt(), cells[k].x());
        QCOMPARE(rect.value(QStringLiteral("y")).toInt(), cells[k].y());
        QCOMPARE(rect.value(QStringLiteral("w")).toInt(), 30);
        QCOMPARE(rect.value(QStringLiteral("h")).toInt(), 10);
        QCOMPARE(frame.value(QStringLiteral("sourceSize")).toObject().value(QStringLiteral("w")).toInt(), 30);
        QCOMPARE(frame.value(QStringLiteral("duration")).toInt(), 100);
    }
    const QJsonObject meta = json.value(QStringLiteral("meta")).toObject();
    QCOMPARE(meta.value(QStringLiteral("image")).toString(), QStringLiteral("walk.png"));
    QCOMPARE(meta.value(QStringLiteral("interval")).toInt(), 100);

    // The atlas reader cuts the same frames out again.
    JsonSpriteSheet atlas(result.files[1]);
    QVERIFY(!atlas.isEmpty());
    const QImage third = atlas.pixmapFromFileName(QStringLiteral("walk_002.png"));
    QCOMPARE(third.size(), QSize(30, 10));
    QCOMPARE(third.pixel(10, 5), qRgb(255, 0, 0));
    QCOMPARE(qAlpha(third.pixel(9, 5)), 0);
}

void TestExportRun::premultiplied()
{
    // Half-transparent red: stored as (128, 0, 0, 128) premultiplied, (255, 0, 0, 128) plain.
    TinyProject project({{0, QPointF(0, 0)}}, 100, 100, QColor(255, 0, 0, 128));
    QVERIFY(project.ok);
    ExportOptions options;
    options.trim = TrimType::EachFrame;
    for (bool pm : {false, true}) {
        options.premultiplied = pm;
        const ExportResult result = AnimationExporter::run(
            &project.scene, options, project.out(pm ? QStringLiteral("pm.png") : QStringLiteral("plain.png")));
        QVERIFY2(result.ok, qPrintable(result.error));
        const QImage image = QImage(result.files.value(0)).convertToFormat(QImage::Format_ARGB32);
        const QRgb p = image.pixel(5, 5);
        QCOMPARE(qAlpha(p), 128);
        QVERIFY2(qAbs(qRed(p) - (pm ? 128 : 255)) <= 1, qPrintable(QString::number(p, 16)));
    }
}

void TestExportRun::cancelKeepsWrittenFiles()
{
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    ExportOptions options;
    int calls = 0;
    const ExportResult result = AnimationExporter::run(
        &project.scene, options, project.out(QStringLiteral("c.png")), [&calls](int done, int total) {
            ++calls;
            return !(done == 2 && total == 8);
        });
    QVERIFY(!result.ok);
    QVERIFY(result.cancelled);
    QVERIFY(result.error.isEmpty());
    QCOMPARE(calls, 2);
    QCOMPARE(result.files, (QStringList{project.out(QStringLiteral("c_000.png")),
                                        project.out(QStringLiteral("c_001.png"))}));
    QVERIFY(QFileInfo::exists(project.out(QStringLiteral("c_001.png"))));
    QVERIFY(!QFileInfo::exists(project.out(QStringLiteral("c_002.png"))));
    QCOMPARE(project.scene.currentTime(), 0);
}

void TestExportRun::failedWriteNamesTheFile_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("readOnlyFolder");
    QTest::addColumn<QString>("named");
    QTest::newRow("numbered, read-only folder") << int(ExportKind::NumberedPngs) << true
                                               << QStringLiteral("out/x_000.png");
    QTest::newRow("numbered, a folder in the way") << int(ExportKind::NumberedPngs) << false
                                                  << QStringLiteral("out/x_000.png");
    QTest::newRow("sheet, a folder in the way") << int(ExportKind::SpriteSheet) << false
                                               << QStringLiteral("out/x.png");
    QTest::newRow("gif, read-only folder") << int(ExportKind::Gif) << true
                                           << QStringLiteral("out/x.gif");
}

void TestExportRun::failedWriteNamesTheFile()
{
    QFETCH(int, kind);
    QFETCH(bool, readOnlyFolder);
    QFETCH(QString, named);
    if (readOnlyFolder && ::geteuid() == 0)
        QSKIP("the superuser writes into read-only folders");
    TinyProject project({{0, QPointF(0, 0)}});
    QVERIFY(project.ok);
    QDir(project.dir.path()).mkpath(QStringLiteral("out"));
    const QString folder = project.out(QStringLiteral("out"));
    if (readOnlyFolder)
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    else
        QVERIFY(QDir(project.dir.path()).mkpath(named));
    ExportOptions options;
    options.kind = ExportKind(kind);
    const ExportResult result = AnimationExporter::run(&project.scene, options, project.out(QStringLiteral("out/x.png")));
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QVERIFY(!result.ok);
    QVERIFY2(result.error.contains(project.out(named)), qPrintable(result.error));
    QCOMPARE(project.scene.currentTime(), 0);
}

void TestExportRun::hostileNamesStayFileNames_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("written");
    QTest::newRow("coder prefix, gif") << int(ExportKind::Gif) << QStringLiteral("gif:x.gif")
                                       << QStringLiteral("gif:x.gif");
    QTest::newRow("pipe, gif") << int(ExportKind::Gif) << QStringLiteral("|touch pwned.gif")
                               << QStringLiteral("|touch pwned.gif");
    QTest::newRow("coder prefix, png") << int(ExportKind::NumberedPngs) << QStringLiteral("png:y.png")
                                       << QStringLiteral("png:y_000.png");
    QTest::newRow("pipe, sheet") << int(ExportKind::SpriteSheet) << QStringLiteral("|touch pwned.png")
                                 << QStringLiteral("|touch pwned.png");
}

void TestExportRun::hostileNamesStayFileNames()
{
    QFETCH(int, kind);
    QFETCH(QString, output);
    QFETCH(QString, written);
    TinyProject project({{0, QPointF(0, 0)}}, 200);
    QVERIFY(project.ok);
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(project.dir.path()));
    ExportOptions options;
    options.kind = ExportKind(kind);
    const ExportResult result = AnimationExporter::run(&project.scene, options, project.out(output));
    QDir::setCurrent(before);
    QVERIFY2(result.ok, qPrintable(result.error));
    QVERIFY(QFileInfo(project.out(written)).isFile());
    QVERIFY(!QFileInfo::exists(project.out(QStringLiteral("pwned"))));
    QVERIFY(!QFileInfo::exists(project.out(QStringLiteral("x.gif"))));
}

QTEST_MAIN(TestExportRun)
#include "tst_exportrun.moc"
