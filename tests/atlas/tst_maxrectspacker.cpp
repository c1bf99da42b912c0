// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "atlas/maxrectspacker.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Morvane;

class TestMaxRectsPacker : public QObject
{
    Q_OBJECT

private slots:
    void properties_data();
    void properties();
    void fillsExactly();
    void refusesWhatCannotFit_data();
    void refusesWhatCannotFit();
};

void TestMaxRectsPacker::properties_data()
{
    QTest::addColumn<int>("spacing");
    QTest::addColumn<bool>("rotate");
    QTest::addColumn<quint32>("seed");

    for (const int spacing : {0, 1, 3})
        for (const bool rotate : {false, true})
            for (const quint32 seed : {1u, 2u, 3u})
                QTest::addRow("spacing %d, %s, seed %u", spacing, rotate ? "rotating" : "upright",
                              seed)
                    << spacing << rotate << seed;
}

void TestMaxRectsPacker::properties()
{
    QFETCH(int, spacing);
    QFETCH(bool, rotate);
    QFETCH(quint32, seed);

    const QSize bin(200, 150);
    MaxRectsPacker packer(bin, rotate, spacing);
    QRandomGenerator random(seed);
    QList<QRect> placed;
    int refused = 0;
    qint64 area = 0;
    for (int i = 0; i < 300; ++i) {
        const QSize size(random.bounded(1, 40), random.bounded(1, 40));
        QRect where;
        bool turned = false;
        if (!packer.insert(size, &where, &turned)) {
            ++refused;
            continue;
        }
        QCOMPARE(where.size(), turned ? size.transposed() : size);
        QVERIFY(rotate || !turned);
        QVERIFY2(QRect(QPoint(0, 0), bin).contains(where), "outside the bin");
        // At least `spacing` pixels between any two.
        const QRect spaced = where.adjusted(0, 0, spacing, spacing);
        for (const QRect &other : std::as_const(placed))
            QVERIFY2(!spaced.intersects(other.adjusted(0, 0, spacing, spacing)),
                     "closer than the spacing");
        placed.append(where);
        area += qint64(size.width()) * size.height();
    }
    QVERIFY(refused > 0);
    // MaxRects is known to fill well; a bin less than half full would mean a broken split.
    QVERIFY2(area * 2 > qint64(bin.width()) * bin.height(), qPrintable(QString::number(area)));
    QVERIFY(packer.usedSize().width() <= bin.width() && packer.usedSize().height() <= bin.height());
}

void TestMaxRectsPacker::fillsExactly()
{
    // 16 x 16 squares tile a 64 x 48 bin exactly, with 2 pixels between them when the bin
    // grows by 2 for each but the last column and row.
    for (const int spacing : {0, 2}) {
        const QSize bin(4 * 16 + 3 * spacing, 3 * 16 + 2 * spacing);
        MaxRectsPacker packer(bin, false, spacing);
        QRect where;
        bool turned = false;
        for (int i = 0; i < 12; ++i)
            QVERIFY2(packer.insert(QSize(16, 16), &where, &turned), qPrintable(QString::number(i)));
        QVERIFY(!packer.insert(QSize(1, 1), &where, &turned));
        QCOMPARE(packer.usedSize(), bin);
    }
}

void TestMaxRectsPacker::refusesWhatCannotFit_data()
{
    QTest::addColumn<QSize>("bin");
    QTest::addColumn<bool>("rotate");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("fits");

    QTest::newRow("too wide") << QSize(10, 30) << false << QSize(20, 5) << false;
    QTest::newRow("too wide, fits turned") << QSize(10, 30) << true << QSize(20, 5) << true;
    QTest::newRow("exactly the bin") << QSize(10, 30) << false << QSize(10, 30) << true;
    QTest::newRow("empty size") << QSize(10, 30) << true << QSize(0, 5) << false;
    QTest::newRow("negative size") << QSize(10, 30) << true << QSize(-4, 5) << false;
    QTest::newRow("empty bin") << QSize(0, 0) << true << QSize(1, 1) << false;
    QTest::newRow("huge") << QSize(10, 30) << true << QSize(2147483647, 2147483647) << false;
}

void TestMaxRectsPacker::refusesWhatCannotFit()
{
    QFETCH(QSize, bin);
    QFETCH(bool, rotate);
    QFETCH(QSize, size);
    QFETCH(bool, fits);

    MaxRectsPacker packer(bin, rotate, 1);
    QRect where;
    bool turned = false;
    QCOMPARE(packer.insert(size, &where, &turned), fits);
}

QTEST_GUILESS_MAIN(TestMaxRectsPacker)
#include "tst_maxrectspacker.moc"
