// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// GIFs read back byte by byte: frame delays, disposal, the loop count, and the
// pixels of each frame.

#include "exporttesthelpers.h"

#include "export/animationexporter.h"
#include "export/gifencoder.h"

#include <QBuffer>
#include <QImageReader>
#include <QSet>
#include <QTest>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

struct GifFacts
{
    QList<int> delays;
    QList<int> disposals;
    int loops = -1; // -1: no loop extension
};

// Walks the GIF's blocks: graphic control extensions give each frame's delay
// and disposal, the application extension the loop count.
GifFacts readGif(const QByteArray &gif)
{
    GifFacts facts;
    const auto *d = reinterpret_cast<const unsigned char *>(gif.constData());
    const qsizetype n = gif.size();
    if (n < 13 || !gif.startsWith("GIF8"))
        return facts;
    qsizetype i = 13;
    if (d[10] & 0x80)
        i += 3 * (qsizetype(1) << ((d[10] & 7) + 1));
    auto skipSubBlocks = [&](qsizetype at) {
        while (at < n && d[at] != 0)
            at += d[at] + 1;
        return at + 1;
    };
    while (i < n) {
        if (d[i] == 0x3b)
            break;
        if (d[i] == 0x21 && i + 2 < n) {
            const unsigned char label = d[i + 1];
            if (label == 0xf9 && i + 7 < n) {
                facts.disposals.append((d[i + 3] >> 2) & 7);
                facts.delays.append(d[i + 4] | (d[i + 5] << 8));
            } else if (label == 0xff && i + 18 < n
                       && QByteArray(reinterpret_cast<const char *>(d + i + 3), 11) == "NETSCAPE2.0") {
                facts.loops = d[i + 16] | (d[i + 17] << 8);
            }
            i = skipSubBlocks(i + 2);
        } else if (d[i] == 0x2c && i + 10 < n) {
            qsizetype at = i + 10;
            if (d[i + 9] & 0x80)
                at += 3 * (qsizetype(1) << ((d[i + 9] & 7) + 1));
            i = skipSubBlocks(at + 1); // past the LZW code size
        } else {
            break;
        }
    }
    return facts;
}

QList<QImage> gifFrames(const QByteArray &gif)
{
    QByteArray bytes = gif;
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "gif");
    QList<QImage> frames;
    QImage image;
    while (reader.read(&image))
        frames.append(image.convertToFormat(QImage::Format_ARGB32));
    return frames;
}

} // namespace

class TestGifEncoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void flattenAlpha_data();
    void flattenAlpha();
    void delaysAndLoops_data();
    void delaysAndLoops();
    void framePixels_data();
    void framePixels();
    void quantizedFrames_data();
    void quantizedFrames();
    void smallerFramesArePadded_data();
    void smallerFramesArePadded();
    void framesTooFarApart();
};

void TestGifEncoder::flattenAlpha_data()
{
    QTest::addColumn<QRgb>("in");
    QTest::addColumn<int>("threshold");
    QTest::addColumn<QColor>("matte");
    QTest::addColumn<QRgb>("out");
    const QColor none;
    QTest::newRow("opaque stays") << qRgba(10, 20, 30, 255) << 128 << none << qRgba(10, 20, 30, 255);
    QTest::newRow("below the threshold") << qRgba(255, 0, 0, 127) << 128 << none << qRgba(0, 0, 0, 0);
    QTest::newRow("at the threshold") << qRgba(255, 0, 0, 128) << 128 << none << qRgba(255, 0, 0, 255);
    QTest::newRow("threshold 0 keeps all") << qRgba(0, 255, 0, 1) << 0 << none << qRgba(0, 255, 0, 255);
    // (255 × 128 + 255 × 127 + 127) / 255 = 255; (0 × 128 + 255 × 127 + 127) / 255 = 127.
    QTest::newRow("over a white matte") << qRgba(255, 0, 0, 128) << 128 << QColor(Qt::white)
                                        << qRgba(255, 127, 127, 255);
    QTest::newRow("faint over a black matte") << qRgba(200, 100, 50, 51) << 128 << QColor(Qt::black)
                                              << qRgba(40, 20, 10, 255);
    QTest::newRow("clear stays clear over a matte") << qRgba(200, 100, 50, 0) << 128
                                                    << QColor(Qt::white) << qRgba(0, 0, 0, 0);
}

void TestGifEncoder::flattenAlpha()
{
    QFETCH(QRgb, in);
    QFETCH(int, threshold);
    QFETCH(QColor, matte);
    QFETCH(QRgb, out);
    QImage image(1, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, in);
    GifOptions options;
    options.alphaThreshold = threshold;
    options.matte = matte;
    const QImage flat = GifEncoder::flattenAlpha(image, options);
    QCOMPARE(QString::number(flat.pixel(0, 0), 16), QString::number(out, 16));
}

void TestGifEncoder::delaysAndLoops_data()
{
    QTest::addColumn<int>("interval");
    QTest::addColumn<bool>("keyframesOnly");
    QTest::addColumn<int>("loop");
    QTest::addColumn<QList<int>>("delays");
    // The file's loop field counts repeats after the first play; none at all plays once.
    QTest::addColumn<int>("repeats");
    QTest::newRow("100 ms") << 100 << false << 0 << QList<int>(8, 10) << 0;
    QTest::newRow("33 ms") << 33 << false << 0 << QList<int>(24, 3) << 0;
    QTest::newRow("16 ms plays at the fastest a viewer shows") << 16 << false << 0
                                                              << QList<int>(50, 2) << 0;
    QTest::newRow("twice") << 200 << false << 2 << QList<int>(4, 20) << 1;
    QTest::newRow("once") << 200 << false << 1 << QList<int>(4, 20) << -1;
    // Keys at 0, 300 and 500 of 800: the last lasts until the end.
    QTest::newRow("keyframes only") << 100 << true << 0 << QList<int>{30, 20, 30} << 0;
}

void TestGifEncoder::delaysAndLoops()
{
    QFETCH(int, interval);
    QFETCH(bool, keyframesOnly);
    QFETCH(int, loop);
    QFETCH(QList<int>, delays);
    QFETCH(int, repeats);
    TinyProject project({{0, QPointF(0, 0)}, {300, QPointF(10, 0)}, {500, QPointF(20, 0)}});
    QVERIFY(project.ok);
    ExportOptions options;
    options.kind = ExportKind::Gif;
    options.interval = interval;
    options.keyframesOnly = keyframesOnly;
    options.gif.loopCount = loop;
    const ExportResult result = AnimationExporter::run(&project.scene, options, project.out(QStringLiteral("w.png")));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.files, QStringList{project.out(QStringLiteral("w.gif"))});
    QFile file(result.files.first());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const GifFacts facts = readGif(file.readAll());
    QCOMPARE(facts.delays, delays);
    QCOMPARE(facts.disposals, QList<int>(delays.size(), 2));
    QCOMPARE(facts.loops, repeats);
    // Nothing but the GIF is left behind.
    QCOMPARE(QDir(project.dir.path()).entryList(QDir::Files),
             (QStringList{QStringLiteral("tiny.rigx"), QStringLiteral("w.gif")}));
}

void TestGifEncoder::framePixels_data()
{
    QTest::addColumn<int>("dither");
    QTest::addColumn<bool>("shared");
    QTest::addColumn<QColor>("background");
    QTest::newRow("transparent, Floyd-Steinberg") << int(GifDither::FloydSteinberg) << false << QColor();
    QTest::newRow("transparent, ordered") << int(GifDither::Ordered) << false << QColor();
    QTest::newRow("filled, shared palette") << int(GifDither::None) << true << QColor(0, 0, 255);
}

void TestGifEncoder::framePixels()
{
    QFETCH(int, dither);
    QFETCH(bool, shared);
    QFETCH(QColor, background);
    // 10 units right every 400 ms.
    TinyProject project({{0, QPointF(0, 0)}, {800, QPointF(20, 0)}});
    QVERIFY(project.ok);
    ExportOptions options;
    options.kind = ExportKind::Gif;
    options.interval = 400;
    options.trim = TrimType::Custom;
    options.customRect = QRectF(0, 0, 30, 10);
    options.fillBackground = background.isValid();
    options.background = background;
    options.gif.dither = GifDither(dither);
    options.gif.sharedPalette = shared;
    const ExportResult result = AnimationExporter::run(&project.scene, options, project.out(QStringLiteral("p.gif")));
    QVERIFY2(result.ok, qPrintable(result.error));
    QFile file(result.files.value(0));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QImage> frames = gifFrames(file.readAll());
    QCOMPARE(frames.size(), 2);
    const QRgb outside = background.isValid() ? background.rgb() : qRgba(0, 0, 0, 0);
    for (qsizetype k = 0; k < frames.size(); ++k) {
        QCOMPARE(frames[k].size(), QSize(30, 10));
        const QRect red(int(10 * k), 0, 10, 10);
        const QStringList wrong = wrongPixels(frames[k], [&](int x, int y) {
            return red.contains(x, y) ? qRgb(255, 0, 0) : outside;
        });
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u';')));
    }
}

void TestGifEncoder::quantizedFrames_data()
{
    QTest::addColumn<int>("dither");
    QTest::addColumn<bool>("shared");
    QTest::newRow("none") << int(GifDither::None) << false;
    QTest::newRow("ordered") << int(GifDither::Ordered) << false;
    QTest::newRow("Floyd-Steinberg") << int(GifDither::FloydSteinberg) << false;
    QTest::newRow("Floyd-Steinberg, shared palette") << int(GifDither::FloydSteinberg) << true;
}

void TestGifEncoder::quantizedFrames()
{
    QFETCH(int, dither);
    QFETCH(bool, shared);
    // Hundreds of colours in a 32 × 24 gradient, a flat area of one colour
    // below, and a clear column on the left: more than a palette holds, so
    // the colours are reduced.
    const QRgb flat = qRgb(100, 150, 200);
    QList<QImage> frames;
    for (int f = 0; f < 2; ++f) {
        QImage image(32, 32, QImage::Format_ARGB32);
        for (int y = 0; y < 32; ++y) {
            for (int x = 0; x < 32; ++x)
                image.setPixel(x, y, x == 0 ? qRgba(0, 0, 0, 0)
                                     : y >= 24 ? flat
                                               : qRgb(x * 8, y * 8, (f * 128 + x * y) % 256));
        }
        frames.append(image);
    }
    GifOptions options;
    options.dither = GifDither(dither);
    options.sharedPalette = shared;
    QByteArray gif;
    QString error;
    QVERIFY2(GifEncoder::encode(frames, {5, 7}, options, &gif, &error), qPrintable(error));
    QCOMPARE(readGif(gif).delays, (QList<int>{5, 7}));
    const QList<QImage> back = gifFrames(gif);
    QCOMPARE(back.size(), 2);
    for (int f = 0; f < 2; ++f) {
        QCOMPARE(back[f].size(), QSize(32, 32));
        QSet<QRgb> colours;
        double error = 0;
        for (int y = 0; y < 32; ++y) {
            QCOMPARE(qAlpha(back[f].pixel(0, y)), 0);
            for (int x = 1; x < 32; ++x) {
                const QRgb a = frames[f].pixel(x, y), b = back[f].pixel(x, y);
                QCOMPARE(qAlpha(b), 255);
                colours.insert(b);
                error += qAbs(qRed(a) - qRed(b)) + qAbs(qGreen(a) - qGreen(b)) + qAbs(qBlue(a) - qBlue(b));
            }
        }
        QVERIFY(colours.size() <= 256);
        // The flat area stays flat: no pattern, no noise.
        QSet<QRgb> flatColours;
        for (int y = 26; y < 32; ++y) {
            for (int x = 1; x < 32; ++x)
                flatColours.insert(back[f].pixel(x, y));
        }
        QCOMPARE(flatColours.size(), 1);
        // Close on average: a colour step of a reduced palette, not a wrong image.
        QVERIFY2(error / (31 * 32 * 3) < 24, qPrintable(QString::number(error / (31 * 32 * 3))));
    }
}

void TestGifEncoder::smallerFramesArePadded_data()
{
    QTest::addColumn<bool>("shared");
    QTest::addColumn<QColor>("padding");
    QTest::addColumn<QPoint>("at"); // the small frame's place against the large one's (5, 5)
    QTest::newRow("shared palette, filled") << true << QColor(0, 255, 0) << QPoint(5, 5);
    QTest::newRow("own palettes, filled") << false << QColor(0, 255, 0) << QPoint(7, 7);
    QTest::newRow("shared palette, transparent") << true << QColor() << QPoint(7, 5);
    QTest::newRow("own palettes, transparent") << false << QColor() << QPoint(5, 7);
}

void TestGifEncoder::smallerFramesArePadded()
{
    QFETCH(bool, shared);
    QFETCH(QColor, padding);
    QFETCH(QPoint, at);
    // Frames trimmed one by one: a 4 × 3 red one with a clear corner, then a
    // 2 × 1 blue one in its place inside the first's box.
    QImage large(4, 3, QImage::Format_ARGB32);
    large.fill(Qt::red);
    large.setPixel(3, 2, qRgba(0, 0, 0, 0));
    QImage small(2, 1, QImage::Format_ARGB32_Premultiplied);
    small.fill(Qt::blue);
    GifOptions options;
    options.sharedPalette = shared;
    GifEncoder encoder(options, padding);
    encoder.addFrame(large, 10, QPoint(5, 5));
    encoder.addFrame(small, 10, at);
    QByteArray gif;
    QString error;
    QVERIFY2(encoder.finish(&gif, &error), qPrintable(error));
    const QList<QImage> back = gifFrames(gif);
    QCOMPARE(back.size(), 2);
    QCOMPARE(back[1].size(), QSize(4, 3));
    const QRgb around = padding.isValid() ? padding.rgb() : qRgba(0, 0, 0, 0);
    QStringList wrong = wrongPixels(back[0], [](int x, int y) {
        return x == 3 && y == 2 ? qRgba(0, 0, 0, 0) : qRgb(255, 0, 0);
    });
    wrong += wrongPixels(back[1], [&](int x, int y) {
        return QRect(at - QPoint(5, 5), QSize(2, 1)).contains(x, y) ? qRgb(0, 0, 255) : around;
    });
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u';')));
}

void TestGifEncoder::framesTooFarApart()
{
    QImage frame(2, 2, QImage::Format_ARGB32);
    frame.fill(Qt::red);
    GifEncoder encoder((GifOptions()));
    encoder.addFrame(frame, 10, QPoint(-10000, 0));
    encoder.addFrame(frame, 10, QPoint(10000, 0));
    QByteArray gif;
    QString error;
    QVERIFY(!encoder.finish(&gif, &error));
    QVERIFY2(error.contains(QStringLiteral("20002")), qPrintable(error));
}

QTEST_MAIN(TestGifEncoder)
#include "tst_gifencoder.moc"
