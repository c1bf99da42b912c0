// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "atlas/jsonspritesheet.h"
#include "atlas/spritesheetcollection.h"
#include "projecttext.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Morvane;
using Morvane::Testing::writeFile;

namespace {

// Distinct opaque colours, so a pixel tells where it came from.
const QRgb A = qRgba(255, 0, 0, 255);
const QRgb B = qRgba(0, 255, 0, 255);
const QRgb C = qRgba(0, 0, 255, 255);
const QRgb D = qRgba(255, 255, 0, 255);
const QRgb E = qRgba(0, 255, 255, 255);
const QRgb F = qRgba(255, 0, 255, 255);
const QRgb G = qRgba(10, 20, 30, 128); // half transparent: must arrive unblended
const QRgb Z = qRgba(0, 0, 0, 0);

// A sheet of 4 x 4 pixels. Columns 0-1 of rows 0-2 hold the frame
//     A B C
//     D E F
// turned a quarter clockwise; columns 2-3 of row 3 hold the upright frame "G A"; the
// rest is a grey that no frame may show.
QImage handSheet()
{
    const QRgb grey = qRgba(90, 90, 90, 255);
    const QRgb rows[4][4] = {
        {D, A, grey, grey},
        {E, B, grey, grey},
        {F, C, grey, grey},
        {grey, grey, G, A},
    };
    QImage sheet(4, 4, QImage::Format_ARGB32);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            sheet.setPixel(x, y, rows[y][x]);
    return sheet;
}

QByteArray frameJson(int x, int y, int w, int h, bool rotated, int offsetX, int offsetY,
                     int sourceW, int sourceH)
{
    return QStringLiteral("{\"frame\":{\"x\":%1,\"y\":%2,\"w\":%3,\"h\":%4},\"rotated\":%5,"
                          "\"trimmed\":true,\"spriteSourceSize\":{\"x\":%6,\"y\":%7,\"w\":%3,"
                          "\"h\":%4},\"sourceSize\":{\"w\":%8,\"h\":%9}}")
        .arg(x)
        .arg(y)
        .arg(w)
        .arg(h)
        .arg(rotated ? QStringLiteral("true") : QStringLiteral("false"))
        .arg(offsetX)
        .arg(offsetY)
        .arg(sourceW)
        .arg(sourceH)
        .toUtf8();
}

QByteArray description(const QByteArray &frames, const QByteArray &image = "sheet.png")
{
    return "{\"frames\":{" + frames + "},\"meta\":{\"image\":\"" + image +
           "\",\"size\":{\"w\":4,\"h\":4}}}";
}

int visiblePixels(const QImage &image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += qAlpha(image.pixel(x, y)) != 0;
    return count;
}

} // namespace

class TestJsonSpriteSheet : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void frames_data();
    void frames();
    void frameNamesMatchExactly();
    void hostile_data();
    void hostile();
    void budget();
    void relatedSheets();
    void collectionNames();
    void emptySheetNotKept();

private:
    QString path(const QString &name) const { return mDir->filePath(name); }
    std::unique_ptr<QTemporaryDir> mDir;
};

void TestJsonSpriteSheet::init()
{
    mDir = std::make_unique<QTemporaryDir>();
    QVERIFY(mDir->isValid());
    QVERIFY(handSheet().save(path(QStringLiteral("sheet.png"))));
}

void TestJsonSpriteSheet::frames_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QSize>("size");
    // The expected picture, row by row.
    QTest::addColumn<QList<QRgb>>("pixels");

    QTest::newRow("upright, untrimmed")
        << frameJson(2, 3, 2, 1, false, 0, 0, 2, 1) << QSize(2, 1) << QList<QRgb>{G, A};
    QTest::newRow("upright, trimmed at (1, 2)")
        << frameJson(2, 3, 2, 1, false, 1, 2, 4, 4) << QSize(4, 4)
        << QList<QRgb>{Z, Z, Z, Z, Z, Z, Z, Z, Z, G, A, Z, Z, Z, Z, Z};
    QTest::newRow("rotated comes out upright")
        << frameJson(0, 0, 3, 2, true, 0, 0, 3, 2) << QSize(3, 2) << QList<QRgb>{A, B, C, D, E, F};
    QTest::newRow("rotated and trimmed at (1, 1)")
        << frameJson(0, 0, 3, 2, true, 1, 1, 5, 4) << QSize(5, 4)
        << QList<QRgb>{Z, Z, Z, Z, Z, Z, A, B, C, Z, Z, D, E, F, Z, Z, Z, Z, Z, Z};
    QTest::newRow("rotated, reaching past the sheet's left edge: clipped")
        << frameJson(-1, 0, 3, 2, true, 0, 0, 3, 2) << QSize(3, 2) << QList<QRgb>{D, E, F, Z, Z, Z};
}

void TestJsonSpriteSheet::frames()
{
    QFETCH(QByteArray, frame);
    QFETCH(QSize, size);
    QFETCH(QList<QRgb>, pixels);

    QVERIFY(writeFile(path(QStringLiteral("a.json")), description("\"f\":" + frame)));
    JsonSpriteSheet sheet(path(QStringLiteral("a.json")));
    const QImage image = sheet.pixmapFromFileName(QStringLiteral("f"));
    QCOMPARE(image.size(), size);
    QCOMPARE(image.format(), QImage::Format_ARGB32);
    QList<QRgb> got;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            got.append(image.pixel(x, y));
    QCOMPARE(got, pixels);
}

void TestJsonSpriteSheet::frameNamesMatchExactly()
{
    // A trimmed 2 x 1 frame in a 64 x 64 source at (3, 5).
    QVERIFY(writeFile(path(QStringLiteral("a.json")),
                     description("\"arm/upper.png\":" + frameJson(2, 3, 2, 1, false, 3, 5, 64, 64) +
                                 ",\"upper.png\":" + frameJson(0, 0, 3, 2, true, 0, 0, 3, 2))));
    JsonSpriteSheet sheet(path(QStringLiteral("a.json")));
    QCOMPARE(sheet.frameNames(),
             QStringList({QStringLiteral("arm/upper.png"), QStringLiteral("upper.png")}));
    const QImage trimmed = sheet.pixmapFromFileName(QStringLiteral("arm/upper.png"));
    QCOMPARE(trimmed.size(), QSize(64, 64));
    QCOMPARE(visiblePixels(trimmed), 2);
    QCOMPARE(trimmed.pixel(3, 5), G);
    QCOMPARE(trimmed.pixel(4, 5), A);
    QCOMPARE(sheet.pixmapFromFileName(QStringLiteral("upper.png")).size(), QSize(3, 2));
    for (const char *other : {"Arm/upper.png", "/arm/upper.png", "arm/upper", "arm\\upper.png"})
        QVERIFY2(sheet.pixmapFromFileName(QString::fromLatin1(other)).isNull(), other);
}

void TestJsonSpriteSheet::hostile_data()
{
    QTest::addColumn<QByteArray>("text");
    // What "sheet.png" is: 0 the hand sheet, 1 text, 2 nothing, 3 a directory.
    QTest::addColumn<int>("image");
    // The frame "f": its size, or an invalid size when it must be absent.
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("visible");

    const QByteArray good = description("\"f\":" + frameJson(2, 3, 2, 1, false, 0, 0, 2, 1));
    QTest::newRow("sheet image is text") << good << 1 << QSize() << 0;
    QTest::newRow("sheet image missing") << good << 2 << QSize() << 0;
    QTest::newRow("sheet image is a directory") << good << 3 << QSize() << 0;
    QTest::newRow("not JSON") << QByteArray("{\"frames\":") << 0 << QSize() << 0;
    QTest::newRow("top level is an array") << QByteArray("[1,2]") << 0 << QSize() << 0;
    QTest::newRow("no meta") << QByteArray("{\"frames\":{\"f\":" +
                                           frameJson(2, 3, 2, 1, false, 0, 0, 2, 1) + "}}")
                             << 0 << QSize() << 0;
    QTest::newRow("image escapes upward")
        << description("\"f\":" + frameJson(2, 3, 2, 1, false, 0, 0, 2, 1), "../../../nothing.png")
        << 0 << QSize() << 0;
    QTest::newRow("frames is a number") << QByteArray("{\"frames\":7,\"meta\":{\"image\":"
                                                      "\"sheet.png\"}}")
                                        << 0 << QSize() << 0;
    QTest::newRow("missing members") << description("\"f\":{}") << 0 << QSize() << 0;
    QTest::newRow("strings for numbers")
        << description("\"f\":{\"frame\":{\"x\":\"0\",\"y\":0,\"w\":\"2\",\"h\":1},"
                       "\"sourceSize\":{\"w\":2,\"h\":1}}")
        << 0 << QSize() << 0;
    QTest::newRow("negative size")
        << description("\"f\":" + frameJson(0, 0, -2, 1, false, 0, 0, 2, 1)) << 0 << QSize() << 0;
    QTest::newRow("negative source size")
        << description("\"f\":" + frameJson(0, 0, 2, 1, false, 0, 0, -2, 1)) << 0 << QSize() << 0;
    QTest::newRow("huge source size")
        << description("\"f\":{\"frame\":{\"x\":0,\"y\":0,\"w\":2,\"h\":1},"
                       "\"sourceSize\":{\"w\":1e12,\"h\":1e12}}")
        << 0 << QSize() << 0;
    QTest::newRow("huge frame, clipped to the sheet")
        << description("\"f\":{\"frame\":{\"x\":2,\"y\":3,\"w\":4000000000,\"h\":1e300},"
                       "\"sourceSize\":{\"w\":3,\"h\":2}}")
        << 0 << QSize(3, 2) << 2;
    QTest::newRow("huge rotated frame, clipped to the sheet")
        << description("\"f\":{\"frame\":{\"x\":2147483647,\"y\":-2147483648,\"w\":2147483647,"
                       "\"h\":2147483647},\"rotated\":true,\"sourceSize\":{\"w\":3,\"h\":2}}")
        << 0 << QSize(3, 2) << 0;
    QTest::newRow("frame outside the sheet")
        << description("\"f\":" + frameJson(100, 100, 2, 1, false, 0, 0, 2, 1)) << 0 << QSize(2, 1)
        << 0;
    QTest::newRow("offset far outside the source")
        << description("\"f\":" + frameJson(2, 3, 2, 1, false, 2147483647, -2147483647, 2, 1)) << 0
        << QSize(2, 1) << 0;
    QTest::newRow("related sheets name itself and nothing")
        << QByteArray("{\"frames\":{\"f\":" + frameJson(2, 3, 2, 1, false, 0, 0, 2, 1) +
                      "},\"meta\":{\"image\":\"sheet.png\",\"related_multi_packs\":[\"a.json\","
                      "\"none.json\",7,null]}}")
        << 0 << QSize(2, 1) << 2;
}

void TestJsonSpriteSheet::hostile()
{
    QFETCH(QByteArray, text);
    QFETCH(int, image);
    QFETCH(QSize, size);
    QFETCH(int, visible);

    const QString sheetPath = path(QStringLiteral("sheet.png"));
    QVERIFY(QFile::remove(sheetPath));
    if (image == 0)
        QVERIFY(handSheet().save(sheetPath));
    else if (image == 1)
        QVERIFY(writeFile(sheetPath, "frames are not pixels\n"));
    else if (image == 3)
        QVERIFY(QDir(mDir->path()).mkdir(QStringLiteral("sheet.png")));
    QVERIFY(writeFile(path(QStringLiteral("a.json")), text));

    JsonSpriteSheet sheet(path(QStringLiteral("a.json")));
    const QImage frame = sheet.pixmapFromFileName(QStringLiteral("f"));
    QCOMPARE(frame.isNull(), !size.isValid());
    if (size.isValid())
        QCOMPARE(frame.size(), size);
    QCOMPARE(sheet.isEmpty(), !size.isValid());
    QCOMPARE(visiblePixels(frame), visible);
    // Every row is something the user should hear about.
    QVERIFY(!sheet.warnings().isEmpty());
}

void TestJsonSpriteSheet::budget()
{
    // Ten frames of 10 x 10 pixels each; the budget holds the sheet and three of them.
    QByteArray frames;
    for (int i = 0; i < 10; ++i)
        frames += (i ? "," : "") + QByteArray("\"f") + QByteArray::number(i) +
                  "\":" + frameJson(2, 3, 2, 1, false, 0, 0, 10, 10);
    QVERIFY(writeFile(path(QStringLiteral("a.json")), description(frames)));
    JsonSpriteSheet sheet(path(QStringLiteral("a.json")), 16 + 3 * 100 + 50);
    QCOMPARE(sheet.frameNames(),
             QStringList({QStringLiteral("f0"), QStringLiteral("f1"), QStringLiteral("f2")}));
    QVERIFY(sheet.pixels() <= sheet.pixelBudget());
    QVERIFY(!sheet.warnings().isEmpty());
}

void TestJsonSpriteSheet::relatedSheets()
{
    QImage second(1, 1, QImage::Format_ARGB32);
    second.setPixel(0, 0, B);
    QVERIFY(second.save(path(QStringLiteral("sheet-1.png"))));
    QVERIFY(writeFile(path(QStringLiteral("a.json")),
                     "{\"frames\":{\"f\":" + frameJson(2, 3, 2, 1, false, 0, 0, 2, 1) +
                         "},\"meta\":{\"image\":\"sheet.png\","
                         "\"related_multi_packs\":[\"a-1.json\"]}}"));
    // The sibling also names a frame "f": the first sheet's wins.
    QVERIFY(writeFile(path(QStringLiteral("a-1.json")),
                     "{\"frames\":{\"f\":" + frameJson(0, 0, 1, 1, false, 0, 0, 1, 1) +
                         ",\"g\":" + frameJson(0, 0, 1, 1, false, 0, 0, 1, 1) +
                         "},\"meta\":{\"image\":\"sheet-1.png\","
                         "\"related_multi_packs\":[\"a.json\"]}}"));
    JsonSpriteSheet sheet(path(QStringLiteral("a.json")));
    QCOMPARE(sheet.frameNames(), QStringList({QStringLiteral("f"), QStringLiteral("g")}));
    QCOMPARE(sheet.pixmapFromFileName(QStringLiteral("f")).size(), QSize(2, 1));
    QCOMPARE(sheet.pixmapFromFileName(QStringLiteral("g")).pixel(0, 0), B);
}

void TestJsonSpriteSheet::collectionNames()
{
    QVERIFY(QDir(mDir->path()).mkdir(QStringLiteral("art")));
    QVERIFY(handSheet().save(path(QStringLiteral("art/sheet.png"))));
    QVERIFY(writeFile(path(QStringLiteral("art/a.json")),
                     description("\"f\":" + frameJson(2, 3, 2, 1, false, 0, 0, 2, 1))));
    SpriteSheetCollection sheets;
    sheets.setProjectDirectory(mDir->path());
    JsonSpriteSheet *relative = sheets.spriteSheet(QStringLiteral("art/a.json"), true);
    QVERIFY(relative);
    QCOMPARE(sheets.spriteSheet(path(QStringLiteral("art/a.json")), false), relative);
    QCOMPARE(sheets.spriteSheet(path(QStringLiteral("art/a.json")), true), relative);
    QCOMPARE(sheets.count(), 1);
    QCOMPARE(sheets.names(), QStringList(QStringLiteral("art/a.json")));
    QCOMPARE(sheets.spriteSheetImageFileNameFromSheetFileName(QStringLiteral("art/a.json")),
             relative->imageFileName());
    QCOMPARE(QFileInfo(relative->imageFileName()).canonicalFilePath(),
             QFileInfo(path(QStringLiteral("art/sheet.png"))).canonicalFilePath());
    QCOMPARE(sheets.spriteSheetImageFromFileName(QStringLiteral("art/a.json")).size(), QSize(4, 4));
    QVERIFY(sheets.spriteSheetImageFromFileName(QStringLiteral("art/b.json")).isNull());
    QCOMPARE(sheets.spriteSheetImageFileNameFromSheetFileName(QStringLiteral("art/b.json")),
             QString());
}

void TestJsonSpriteSheet::emptySheetNotKept()
{
    QVERIFY(writeFile(path(QStringLiteral("a.json")), description("\"f\":{}")));
    SpriteSheetCollection sheets;
    sheets.setProjectDirectory(mDir->path());
    QVERIFY(!sheets.spriteSheet(QStringLiteral("a.json"), true));
    QVERIFY(!sheets.appendSpriteSheet(QStringLiteral("a.json")));
    QCOMPARE(sheets.count(), 0);
    QVERIFY(!sheets.warnings().isEmpty());
    // Repaired on disk, it loads once the collection is cleared.
    QVERIFY(writeFile(path(QStringLiteral("a.json")),
                     description("\"f\":" + frameJson(2, 3, 2, 1, false, 0, 0, 2, 1))));
    QVERIFY(!sheets.spriteSheet(QStringLiteral("a.json"), true));
    sheets.clear();
    QVERIFY(sheets.spriteSheet(QStringLiteral("a.json"), true));
    QCOMPARE(sheets.count(), 1);
}

QTEST_GUILESS_MAIN(TestJsonSpriteSheet)
#include "tst_jsonspritesheet.moc"
