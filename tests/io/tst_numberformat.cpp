// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/numberformat.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

using namespace Morvane;

class TestNumberFormat : public QObject
{
    Q_OBJECT

private slots:
    void real6_data();
    void real6();
    void g6_data();
    void g6();
    void real6MatchesPrintf();
    void g6MatchesPrintf();
    void shortest_data();
    void shortest();
    void shortestRoundTrips();
    void shortestFor_data();
    void shortestFor();
    void shortestForGivesTheFileTextBack_data();
    void shortestForGivesTheFileTextBack();
    void shortestForReadsBack_data();
    void shortestForReadsBack();
    void integer_data();
    void integer();
    void parseDouble_data();
    void parseDouble();
    void parseInt_data();
    void parseInt();
};

void TestNumberFormat::real6_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("tenth") << 0.1 << QByteArray("0.1");
    QTest::newRow("two") << 2.0 << QByteArray("2");
    // A value that rounds to zero keeps its sign, as the fixed form has it.
    QTest::newRow("tiny negative rounds to -0") << -0.0000004 << QByteArray("-0");
    // -5e-7 is stored just below the half: it rounds down.
    QTest::newRow("-5e-7") << -0.0000005 << QByteArray("-0");
    QTest::newRow("one step past -5e-7")
        << std::nextafter(-0.0000005, -1.0) << QByteArray("-0.000001");
    QTest::newRow("-2.5e-6 is stored above the half") << -0.0000025 << QByteArray("-0.000003");
    QTest::newRow("negative tie at 2^-21 rounds to zero") << -0.000000476837158203125
                                                          << QByteArray("-0");
    QTest::newRow("zero") << 0.0 << QByteArray("0");
    QTest::newRow("big exponent")
        << 1e20 << QByteArray("100000000000000000000");
    QTest::newRow("nan") << std::nan("") << QByteArray("0");
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity() << QByteArray("0");
    QTest::newRow("negative zero") << -0.0 << QByteArray("-0");
    // 2^-7 * 1e6 is exactly 7812.5: a tie goes to the even neighbour.
    QTest::newRow("exact tie rounds to even") << 0.0078125 << QByteArray("0.007812");
    QTest::newRow("exact tie rounds up to even") << 0.0234375 << QByteArray("0.023438");
    QTest::newRow("negative below a million") << -999999.9999996 << QByteArray("-1000000");
    QTest::newRow("past the fast range") << 12345678.9 << QByteArray("12345678.9");
}

void TestNumberFormat::real6()
{
    QFETCH(double, value);
    QFETCH(QByteArray, text);
    QCOMPARE(NumberFormat::real6(value), text);
}

void TestNumberFormat::g6_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("six digits") << 0.123456789 << QByteArray("0.123457");
    QTest::newRow("million switches to exponent") << 1000000.0 << QByteArray("1e+06");
    QTest::newRow("below 1e-4 switches to exponent") << 0.00001234 << QByteArray("1.234e-05");
    QTest::newRow("nan") << std::nan("") << QByteArray("0");
    QTest::newRow("negative zero") << -0.0 << QByteArray("0");
    QTest::newRow("tiny negative keeps its digits") << -1e-9 << QByteArray("-1e-09");
}

void TestNumberFormat::g6()
{
    QFETCH(double, value);
    QFETCH(QByteArray, text);
    QCOMPARE(NumberFormat::g6(value), text);
}

void TestNumberFormat::real6MatchesPrintf()
{
    // "%.6f" rounds the exact binary value; compare over many magnitudes, and at values
    // that lie on or next to a rounding tie, where a shortcut through scaling would slip.
    QRandomGenerator random(7);
    for (int i = 0; i < 60000; ++i) {
        double value;
        if (i % 3 == 0) {
            const double mantissa = random.generateDouble() * 2.0 - 1.0;
            value = mantissa * std::pow(10.0, random.bounded(-9, 10));
        } else {
            // Halfway between two millionths, moved by a few units in the last place.
            const double tie = (double(random.bounded(0, 20000000)) + 0.5) / 1e6;
            value = tie;
            for (int step = random.bounded(-3, 4); step != 0; step += step > 0 ? -1 : 1)
                value = std::nextafter(value, step > 0 ? 1e300 : -1e300);
            if (i % 2)
                value = -value;
        }
        char expected[400];
        int length = std::snprintf(expected, sizeof expected, "%.6f", value);
        while (length > 0 && expected[length - 1] == '0')
            --length;
        if (length > 0 && expected[length - 1] == '.')
            --length;
        QByteArray reference(expected, length);
        char buffer[NumberFormat::BufferSize];
        const int written = NumberFormat::writeReal6(buffer, value);
        QCOMPARE(QByteArray(buffer, written), reference);
    }
}

void TestNumberFormat::g6MatchesPrintf()
{
    // %g is the reference for this form; compare over many magnitudes.
    QRandomGenerator random(42);
    for (int i = 0; i < 20000; ++i) {
        const double mantissa = random.generateDouble() * 2.0 - 1.0;
        const double value = mantissa * std::pow(10.0, random.bounded(-12, 12));
        char expected[64];
        std::snprintf(expected, sizeof expected, "%g", value);
        QCOMPARE(NumberFormat::g6(value), QByteArray(expected));
        QVERIFY(NumberFormat::g6(value) != "-0");
    }
}

void TestNumberFormat::shortest_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("tenth") << 0.1 << QByteArray("0.1");
    QTest::newRow("two") << 2.0 << QByteArray("2");
    QTest::newRow("negative quarter") << -0.25 << QByteArray("-0.25");
    QTest::newRow("negative zero") << -0.0 << QByteArray("0");
    QTest::newRow("hundred thousand") << 100000.0 << QByteArray("100000");
    QTest::newRow("ten thousandth") << 0.0001 << QByteArray("0.0001");
    QTest::newRow("1e-7 stays fixed") << 1e-7 << QByteArray("0.0000001");
    QTest::newRow("below 1e-7") << 1e-8 << QByteArray("1e-8");
    QTest::newRow("from 1e21") << 1e21 << QByteArray("1e+21");
    QTest::newRow("2^53 + 2") << 9007199254740994.0 << QByteArray("9007199254740994");
    QTest::newRow("0.1 + 0.2") << 0.1 + 0.2 << QByteArray("0.30000000000000004");
    QTest::newRow("large negative integer") << -123456789012.0 << QByteArray("-123456789012");
    QTest::newRow("small exponent three digits") << 1.5e-300 << QByteArray("1.5e-300");
}

void TestNumberFormat::shortest()
{
    QFETCH(double, value);
    QFETCH(QByteArray, text);
    QCOMPARE(NumberFormat::shortest(value), text);
}

void TestNumberFormat::shortestRoundTrips()
{
    QRandomGenerator random(7);
    for (int i = 0; i < 20000; ++i) {
        double value;
        do {
            const quint64 bits = random.generate64();
            std::memcpy(&value, &bits, sizeof value);
        } while (!std::isfinite(value));
        const QByteArray text = NumberFormat::shortest(value);
        double back = 0.0;
        QVERIFY2(NumberFormat::parseDouble(text.constData(), text.constData() + text.size(), &back),
                 text.constData());
        if (value == 0.0)
            QCOMPARE(back, 0.0);
        else
            QCOMPARE(back, value);
    }
}

void TestNumberFormat::shortestFor_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("mapping");
    QTest::addColumn<QByteArray>("text");
    const int same = int(NumberMapping::Same);
    const int negated = int(NumberMapping::Negated);
    const int fromOne = int(NumberMapping::FromOne);
    const int turn = int(NumberMapping::FromFullTurn);
    QTest::newRow("plain") << 0.1 << same << QByteArray("0.1");
    QTest::newRow("negated") << -2.5 << negated << QByteArray("2.5");
    QTest::newRow("negated zero") << -0.0 << negated << QByteArray("0");
    // 360 - (360 - 0.1) is 0.10000000000002274; 0.1 reads back as the same angle.
    QTest::newRow("angle read as 0.1") << 360.0 - 0.1 << turn << QByteArray("0.1");
    QTest::newRow("angle read as 359.9") << 360.0 - 359.9 << turn << QByteArray("359.9");
    QTest::newRow("angle read as 0.000001") << 360.0 - 0.000001 << turn << QByteArray("0.000001");
    QTest::newRow("angle read as 123.456789") << 360.0 - 123.456789 << turn
                                               << QByteArray("123.456789");
    QTest::newRow("model angle 0") << 0.0 << turn << QByteArray("360");
    QTest::newRow("model angle 360") << 360.0 << turn << QByteArray("0");
    QTest::newRow("model angle -90") << -90.0 << turn << QByteArray("90");
    // No file angle reads back as this one: the nearest is written.
    QTest::newRow("angle finer than the file holds") << 1e-300 << turn << QByteArray("360");
    QTest::newRow("pivot read as 0.3") << 1.0 - 0.3 << fromOne << QByteArray("0.3");
    QTest::newRow("pivot read as 0.000001") << 1.0 - 0.000001 << fromOne
                                            << QByteArray("0.000001");
    QTest::newRow("pivot read as 1e20") << 1.0 - 1e20 << fromOne
                                        << QByteArray("100000000000000000000");
    QTest::newRow("nan") << std::nan("") << same << QByteArray("0");
}

void TestNumberFormat::shortestFor()
{
    QFETCH(double, value);
    QFETCH(int, mapping);
    QFETCH(QByteArray, text);
    QCOMPARE(NumberFormat::shortestFor(value, NumberMapping(mapping)), text);
}

void TestNumberFormat::shortestForGivesTheFileTextBack_data()
{
    QTest::addColumn<int>("mapping");
    QTest::addColumn<double>("low");
    QTest::addColumn<double>("high");
    QTest::newRow("angles") << int(NumberMapping::FromFullTurn) << 0.0 << 360.0;
    QTest::newRow("pivots") << int(NumberMapping::FromOne) << -3.0 << 4.0;
    QTest::newRow("large pivots") << int(NumberMapping::FromOne) << -1e9 << 1e9;
    QTest::newRow("positions") << int(NumberMapping::Negated) << -1e9 << 1e9;
}

void TestNumberFormat::shortestForGivesTheFileTextBack()
{
    // A number read from a file with six decimals is written as it was read, whatever the
    // model keeps in its place.
    QFETCH(int, mapping);
    QFETCH(double, low);
    QFETCH(double, high);
    QRandomGenerator random(11);
    for (int i = 0; i < 20000; ++i) {
        char text[64];
        const double drawn = low + random.generateDouble() * (high - low);
        const int digits = random.bounded(0, 7);
        const int length = std::snprintf(text, sizeof text, "%.*f", digits, drawn);
        double fileValue = 0.0;
        QVERIFY(NumberFormat::parseDouble(text, text + length, &fileValue));
        const double model = NumberFormat::toModel(fileValue, NumberMapping(mapping));
        QCOMPARE(NumberFormat::shortestFor(model, NumberMapping(mapping)),
                 NumberFormat::shortest(fileValue));
    }
}

void TestNumberFormat::shortestForReadsBack_data()
{
    QTest::addColumn<int>("mapping");
    QTest::newRow("angles") << int(NumberMapping::FromFullTurn);
    QTest::newRow("pivots") << int(NumberMapping::FromOne);
}

void TestNumberFormat::shortestForReadsBack()
{
    // Any model value, as an edit leaves it: the text reads back as it whenever some number
    // does, and is never longer than the plain shortest text of the file number.
    QFETCH(int, mapping);
    const NumberMapping how = NumberMapping(mapping);
    QRandomGenerator random(5);
    for (int i = 0; i < 20000; ++i) {
        const double model = how == NumberMapping::FromFullTurn
                                 ? random.generateDouble() * 360.0
                                 : random.generateDouble() * 2.0 - 0.5;
        const QByteArray text = NumberFormat::shortestFor(model, how);
        const QByteArray plain = NumberFormat::shortest(NumberFormat::toFile(model, how));
        QVERIFY2(text.size() <= plain.size(),
                 QByteArray(text + " longer than " + plain).constData());
        double back = 0.0;
        QVERIFY(NumberFormat::parseDouble(text.constData(), text.constData() + text.size(), &back));
        const double plainBack = NumberFormat::toModel(NumberFormat::toFile(model, how), how);
        if (plainBack == model)
            QCOMPARE(NumberFormat::toModel(back, how), model);
    }
}

void TestNumberFormat::integer_data()
{
    QTest::addColumn<qint64>("value");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("zero") << qint64(0) << QByteArray("0");
    QTest::newRow("negative") << qint64(-26) << QByteArray("-26");
    QTest::newRow("int max") << qint64(2147483647) << QByteArray("2147483647");
    QTest::newRow("int64 min") << std::numeric_limits<qint64>::min()
                               << QByteArray("-9223372036854775808");
}

void TestNumberFormat::integer()
{
    QFETCH(qint64, value);
    QFETCH(QByteArray, text);
    QCOMPARE(NumberFormat::integer(value), text);
}

void TestNumberFormat::parseDouble_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<double>("value");
    QTest::newRow("plain") << "1.5" << true << 1.5;
    QTest::newRow("blanks around") << " -2 " << true << -2.0;
    QTest::newRow("plus sign") << "+3" << true << 3.0;
    QTest::newRow("exponent") << "1e3" << true << 1000.0;
    QTest::newRow("leading dot") << ".5" << true << 0.5;
    QTest::newRow("empty") << "" << false << 0.0;
    QTest::newRow("blank") << "  " << false << 0.0;
    QTest::newRow("nan") << "nan" << false << 0.0;
    QTest::newRow("negative nan") << "-nan" << false << 0.0;
    QTest::newRow("infinity") << "inf" << false << 0.0;
    QTest::newRow("overflow") << "1e999" << false << 0.0;
    QTest::newRow("trailing junk") << "1.5px" << false << 0.0;
    QTest::newRow("comma decimal") << "1,5" << false << 0.0;
    QTest::newRow("hex") << "0x10" << false << 0.0;
    QTest::newRow("lone minus") << "-" << false << 0.0;
    QTest::newRow("non-latin") << QString::fromUtf8("１") << false << 0.0;
}

void TestNumberFormat::parseDouble()
{
    QFETCH(QString, text);
    QFETCH(bool, ok);
    QFETCH(double, value);
    double parsed = -999.0;
    QCOMPARE(NumberFormat::parseDouble(text, &parsed), ok);
    QCOMPARE(parsed, ok ? value : -999.0);
}

void TestNumberFormat::parseInt_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("value");
    QTest::newRow("plain") << "42" << true << 42;
    QTest::newRow("negative") << "-7" << true << -7;
    QTest::newRow("integral real") << "2.0" << true << 2;
    QTest::newRow("integral exponent") << "1e3" << true << 1000;
    QTest::newRow("fraction") << "2.5" << false << 0;
    QTest::newRow("above int range") << "2147483648" << false << 0;
    QTest::newRow("int min") << "-2147483648" << true << std::numeric_limits<int>::min();
    QTest::newRow("word") << "true" << false << 0;
    QTest::newRow("empty") << "" << false << 0;
}

void TestNumberFormat::parseInt()
{
    QFETCH(QString, text);
    QFETCH(bool, ok);
    QFETCH(int, value);
    int parsed = -999;
    QCOMPARE(NumberFormat::parseInt(text, &parsed), ok);
    QCOMPARE(parsed, ok ? value : -999);
}

QTEST_GUILESS_MAIN(TestNumberFormat)
#include "tst_numberformat.moc"
