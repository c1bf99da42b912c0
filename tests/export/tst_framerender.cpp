// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// The pixels of rendered frames against positions worked out by hand: a 10 × 10
// sprite with its top left at (20, 30) on the canvas.

#include "exporttesthelpers.h"

#include "canvas/objectgraphicsproxy.h"
#include "canvas/onionskinitem.h"
#include "export/framerenderer.h"

#include <QTest>

using namespace Morvane;
using namespace Morvane::Testing;

class TestFrameRender : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void spriteLandsOnItsPixels_data();
    void spriteLandsOnItsPixels();
    void onlyTheArtShowsAndTheSceneComesBack();
    void frameBounds_data();
    void frameBounds();
    void pixelArtRect_data();
    void pixelArtRect();
    void watermarkRect_data();
    void watermarkRect();
    void watermarkPixels();
};

void TestFrameRender::spriteLandsOnItsPixels_data()
{
    QTest::addColumn<QRectF>("source");
    QTest::addColumn<QSize>("output");
    QTest::addColumn<bool>("pixelArt");
    QTest::addColumn<bool>("smooth");
    QTest::addColumn<QColor>("background");
    QTest::addColumn<QRect>("red");

    const QColor none(Qt::transparent);
    const QRectF canvas(0, 0, 40, 50);
    QTest::newRow("100 %") << canvas << QSize(40, 50) << false << true << none
                           << QRect(20, 30, 10, 10);
    QTest::newRow("200 %") << canvas << QSize(80, 100) << false << true << none
                           << QRect(40, 60, 20, 20);
    QTest::newRow("200 %, no smoothing") << canvas << QSize(80, 100) << false << false << none
                                         << QRect(40, 60, 20, 20);
    QTest::newRow("200 %, pixel art") << canvas << QSize(80, 100) << true << true << none
                                      << QRect(40, 60, 20, 20);
    QTest::newRow("150 % wide, 50 % high") << canvas << QSize(60, 25) << false << false << none
                                           << QRect(30, 15, 15, 5);
    QTest::newRow("filled") << canvas << QSize(40, 50) << false << true << QColor(0, 0, 255)
                            << QRect(20, 30, 10, 10);
    QTest::newRow("source off the origin") << QRectF(15, 25, 20, 20) << QSize(20, 20) << false
                                           << true << QColor(0, 255, 0) << QRect(5, 5, 10, 10);
    // Pixel art snaps the source to the whole pixels (18, 28) to (26, 36)
    // inclusive: 1 to 1 into 9 × 9, with the sprite from (2, 2) on.
    QTest::newRow("pixel art snaps the source") << QRectF(17.5, 27.5, 10, 10) << QSize(9, 9)
                                                << true << true << none << QRect(2, 2, 7, 7);
    QTest::newRow("source beside the sprite") << QRectF(-20, -20, 30, 30) << QSize(30, 30) << false
                                              << true << none << QRect();
}

void TestFrameRender::spriteLandsOnItsPixels()
{
    QFETCH(QRectF, source);
    QFETCH(QSize, output);
    QFETCH(bool, pixelArt);
    QFETCH(bool, smooth);
    QFETCH(QColor, background);
    QFETCH(QRect, red);

    TinyProject project({{0, QPointF(20, 30)}});
    QVERIFY(project.ok);
    ExportOptions options;
    options.pixelArt = pixelArt;
    options.smooth = smooth;
    FrameRenderer renderer(&project.scene, options);
    renderer.setTime(0);
    const QImage image = renderer.exportPngToImage(QRectF(QPointF(0, 0), QSizeF(output)), source,
                                                   background);
    QCOMPARE(image.size(), output);
    const QRgb outside = background.rgba();
    const QStringList wrong = wrongPixels(image, [&](int x, int y) {
        return red.contains(x, y) ? qRgb(255, 0, 0) : outside;
    });
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QStringLiteral("; "))));
}

void TestFrameRender::onlyTheArtShowsAndTheSceneComesBack()
{
    // Selected and hovered, with the onion skin on: still only the sprite, and
    // afterwards the scene as it was.
    TinyProject project({{0, QPointF(20, 30)}, {400, QPointF(0, 0)}});
    QVERIFY(project.ok);
    MorvaneCanvasScene &scene = project.scene;
    scene.setCurrentTime(250);
    scene.onionSkin()->setOn(true);
    scene.setSmoothTransform(true);
    scene.setSelectedProxies({scene.instTimelineProxyFromIndex(0), scene.instTimelineProxyFromIndex(1)});
    scene.setHoveredProxy(scene.instTimelineProxyFromIndex(0));
    QList<bool> shown;
    for (QGraphicsItem *item : scene.items(Qt::AscendingOrder))
        shown.append(item->isVisible());
    {
        ExportOptions options;
        options.pixelArt = true;
        FrameRenderer renderer(&scene, options);
        QVERIFY(!scene.onionSkin()->isOn());
        QVERIFY(!scene.smoothTransform());
        renderer.setTime(0);
        const QImage image = renderer.exportPngToImage(QRectF(0, 0, 40, 50), QRectF(0, 0, 40, 50),
                                                       QColor(Qt::transparent));
        const QStringList wrong = wrongPixels(image, [](int x, int y) {
            return QRect(20, 30, 10, 10).contains(x, y) ? qRgb(255, 0, 0) : qRgba(0, 0, 0, 0);
        });
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(QStringLiteral("; "))));
    }
    QCOMPARE(scene.currentTime(), 250);
    QVERIFY(scene.onionSkin()->isOn());
    QVERIFY(scene.smoothTransform());
    QCOMPARE(scene.selectedProxies().size(), 2);
    // Every editor item shows as it did.
    QList<bool> after;
    for (QGraphicsItem *item : scene.items(Qt::AscendingOrder))
        after.append(item->isVisible());
    QCOMPARE(after, shown);
}

void TestFrameRender::frameBounds_data()
{
    QTest::addColumn<int>("time");
    QTest::addColumn<QRectF>("bounds");
    // Linear from (20, 30) at 0 to (60, 10) at 400, then held.
    QTest::newRow("first key") << 0 << QRectF(20, 30, 10, 10);
    QTest::newRow("half way") << 200 << QRectF(40, 20, 10, 10);
    QTest::newRow("after the last key") << 700 << QRectF(60, 10, 10, 10);
}

void TestFrameRender::frameBounds()
{
    QFETCH(int, time);
    QFETCH(QRectF, bounds);
    TinyProject project({{0, QPointF(20, 30)}, {400, QPointF(60, 10)}});
    QVERIFY(project.ok);
    FrameRenderer renderer(&project.scene, ExportOptions());
    renderer.setTime(time);
    const QRectF got = renderer.frameBounds();
    QVERIFY2(qAbs(got.left() - bounds.left()) < 1e-9 && qAbs(got.top() - bounds.top()) < 1e-9
                 && qAbs(got.width() - bounds.width()) < 1e-9
                 && qAbs(got.height() - bounds.height()) < 1e-9,
             qPrintable(QStringLiteral("%1 %2 %3 %4").arg(got.left()).arg(got.top())
                            .arg(got.width()).arg(got.height())));
}

void TestFrameRender::pixelArtRect_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<QRect>("whole");
    QTest::newRow("whole already") << QRectF(0, 0, 10, 10) << QRect(0, 0, 10, 10);
    QTest::newRow("fractions shrink inward") << QRectF(0.5, 0.25, 10.2, 9.9) << QRect(1, 1, 9, 9);
    QTest::newRow("negative") << QRectF(-3.7, -2.2, 5.7, 4.2) << QRect(-3, -2, 5, 4);
    QTest::newRow("thinner than a pixel") << QRectF(2.2, 2.2, 0.6, 3) << QRect(3, 3, 0, 2);
}

void TestFrameRender::pixelArtRect()
{
    QFETCH(QRectF, rect);
    QFETCH(QRect, whole);
    QCOMPARE(FrameRenderer::pixelArtRect(rect), whole);
}

void TestFrameRender::watermarkRect_data()
{
    QTest::addColumn<QSize>("output");
    QTest::addColumn<QSize>("mark");
    QTest::addColumn<QString>("size");
    QTest::addColumn<bool>("keepAspect");
    QTest::addColumn<int>("position");
    QTest::addColumn<QRect>("rect");

    const QString keep = QStringLiteral("keep");
    QTest::newRow("top left") << QSize(100, 50) << QSize(20, 10) << keep << true << 0
                              << QRect(0, 0, 20, 10);
    QTest::newRow("centre") << QSize(100, 50) << QSize(20, 10) << keep << true << 4
                            << QRect(40, 20, 20, 10);
    QTest::newRow("bottom right") << QSize(100, 50) << QSize(20, 10) << keep << true << 8
                                  << QRect(80, 40, 20, 10);
    QTest::newRow("top right") << QSize(100, 50) << QSize(20, 10) << keep << true << 2
                               << QRect(80, 0, 20, 10);
    QTest::newRow("bottom centre") << QSize(100, 50) << QSize(20, 10) << keep << true << 7
                                   << QRect(40, 40, 20, 10);
    QTest::newRow("too big, kept") << QSize(100, 50) << QSize(200, 20) << keep << true << 0
                                   << QRect(0, 0, 200, 20);
    QTest::newRow("shrink, aspect") << QSize(100, 50) << QSize(200, 20) << QStringLiteral("shrink")
                                    << true << 4 << QRect(0, 20, 100, 10);
    QTest::newRow("shrink leaves a small one") << QSize(100, 50) << QSize(20, 10)
                                               << QStringLiteral("shrink") << true << 0
                                               << QRect(0, 0, 20, 10);
    QTest::newRow("expand, aspect") << QSize(100, 50) << QSize(20, 20) << QStringLiteral("expand")
                                    << true << 5 << QRect(50, 0, 50, 50);
    QTest::newRow("expand, stretched") << QSize(100, 50) << QSize(20, 20)
                                       << QStringLiteral("expand") << false << 0
                                       << QRect(0, 0, 100, 50);
    QTest::newRow("expand leaves a big one") << QSize(100, 50) << QSize(200, 20)
                                             << QStringLiteral("expand") << true << 0
                                             << QRect(0, 0, 200, 20);
    QTest::newRow("either way") << QSize(100, 50) << QSize(200, 20)
                                << QStringLiteral("shrink or expand") << false << 8
                                << QRect(0, 0, 100, 50);
}

void TestFrameRender::watermarkRect()
{
    QFETCH(QSize, output);
    QFETCH(QSize, mark);
    QFETCH(QString, size);
    QFETCH(bool, keepAspect);
    QFETCH(int, position);
    QFETCH(QRect, rect);
    WatermarkOptions options;
    QVERIFY(watermarkSizeFromKey(size, &options.size));
    options.keepAspectRatio = keepAspect;
    options.position = position;
    QCOMPARE(FrameRenderer::watermarkRect(output, mark, options), rect);
}

void TestFrameRender::watermarkPixels()
{
    TinyProject project({{0, QPointF(20, 30)}});
    QVERIFY(project.ok);
    QImage mark(4, 4, QImage::Format_ARGB32);
    mark.fill(QColor(0, 0, 255));
    const QString markPath = project.out(QStringLiteral("mark.png"));
    QVERIFY(mark.save(markPath));
    ExportOptions options;
    options.watermark.enabled = true;
    options.watermark.fileName = markPath;
    options.watermark.opacity = 50;
    options.watermark.position = 8;
    FrameRenderer renderer(&project.scene, options);
    renderer.setTime(0);
    // Over white, half blue: (127 or 128, 127 or 128, 255).
    const QImage image = renderer.exportPngToImage(QRectF(0, 0, 40, 50), QRectF(0, 0, 40, 50),
                                                   QColor(Qt::white))
                             .convertToFormat(QImage::Format_ARGB32);
    for (const QPoint &p : {QPoint(36, 46), QPoint(39, 49)}) {
        const QRgb c = image.pixel(p);
        QVERIFY2(qAbs(qRed(c) - 127) <= 1 && qAbs(qGreen(c) - 127) <= 1 && qBlue(c) == 255,
                 qPrintable(QString::number(c, 16)));
    }
    QCOMPARE(image.pixel(35, 46), qRgb(255, 255, 255));
    QCOMPARE(image.pixel(25, 35), qRgb(255, 0, 0));
}

QTEST_MAIN(TestFrameRender)
#include "tst_framerender.moc"
