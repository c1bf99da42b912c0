// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/json.h"
#include "projecttext.h"

#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <limits>

using namespace Morvane;

class TestJson : public QObject
{
    Q_OBJECT

private slots:
    void encode_data();
    void encode();
    void roundTrip_data();
    void roundTrip();
    void decodeErrors_data();
    void decodeErrors();
    void fromFile();
};

void TestJson::encode_data()
{
    QTest::addColumn<QVariantMap>("map");
    QTest::addColumn<bool>("pretty");
    QTest::addColumn<QByteArray>("text");

    QVariantMap folder;
    folder.insert(QStringLiteral("id"), 0);
    folder.insert(QStringLiteral("name"), QStringLiteral("arms"));
    folder.insert(QStringLiteral("file"),
                  QVariantList{QVariantMap{{QStringLiteral("id"), 0},
                                           {QStringLiteral("pivot_x"), 0.5}}});
    const QVariantMap root{{QStringLiteral("folder"), QVariantList{folder}},
                           {QStringLiteral("rigj_version"), QStringLiteral("1.0")}};
    QTest::newRow("pretty nesting with tabs")
        << root << true
        << QByteArray("{\n"
                      "\t\"folder\": [\n"
                      "\t\t{\n"
                      "\t\t\t\"file\": [\n"
                      "\t\t\t\t{\n"
                      "\t\t\t\t\t\"id\": 0,\n"
                      "\t\t\t\t\t\"pivot_x\": 0.5\n"
                      "\t\t\t\t}\n"
                      "\t\t\t],\n"
                      "\t\t\t\"id\": 0,\n"
                      "\t\t\t\"name\": \"arms\"\n"
                      "\t\t}\n"
                      "\t],\n"
                      "\t\"rigj_version\": \"1.0\"\n"
                      "}");
    QTest::newRow("compact is one line without blanks")
        << root << false
        << QByteArray("{\"folder\":[{\"file\":[{\"id\":0,\"pivot_x\":0.5}],\"id\":0,"
                      "\"name\":\"arms\"}],\"rigj_version\":\"1.0\"}");
    QTest::newRow("empty containers")
        << QVariantMap{{QStringLiteral("a"), QVariantList{}}, {QStringLiteral("b"), QVariantMap{}}}
        << true << QByteArray("{\n\t\"a\": [],\n\t\"b\": {}\n}");
    QTest::newRow("empty containers, compact")
        << QVariantMap{{QStringLiteral("a"), QVariantList{}}, {QStringLiteral("b"), QVariantMap{}}}
        << false << QByteArray("{\"a\":[],\"b\":{}}");
    QTest::newRow("empty map") << QVariantMap{} << true << QByteArray("{}");
    QTest::newRow("numbers in shortest form")
        << QVariantMap{{QStringLiteral("a"), 0.1},
                       {QStringLiteral("b"), 2.0},
                       {QStringLiteral("c"), -0.25},
                       {QStringLiteral("d"), 7},
                       {QStringLiteral("e"), qint64(-9007199254740993LL)},
                       {QStringLiteral("f"), 1e-8}}
        << false << QByteArray("{\"a\":0.1,\"b\":2,\"c\":-0.25,\"d\":7,\"e\":-9007199254740993,"
                               "\"f\":1e-8}");
    QTest::newRow("non-finite numbers are never written")
        << QVariantMap{{QStringLiteral("a"), std::nan("")},
                       {QStringLiteral("b"), std::numeric_limits<double>::infinity()},
                       {QStringLiteral("c"),
                        QVariantList{1, -std::numeric_limits<double>::infinity()}}}
        << false << QByteArray("{\"c\":[1,null]}");
    QTest::newRow("string escapes")
        << QVariantMap{{QStringLiteral("s"), QString(QStringLiteral("q\"b\\n\n\t") + QChar(0x01)
                                                     + QString::fromUtf8("é"))}}
        << false << QByteArray("{\"s\":\"q\\\"b\\\\n\\n\\t\\u0001\xc3\xa9\"}");
    QTest::newRow("booleans, null and string lists")
        << QVariantMap{{QStringLiteral("t"), true},
                       {QStringLiteral("n"), QVariant()},
                       {QStringLiteral("l"), QStringList{QStringLiteral("x")}}}
        << false << QByteArray("{\"l\":[\"x\"],\"n\":null,\"t\":true}");
}

void TestJson::encode()
{
    QFETCH(QVariantMap, map);
    QFETCH(bool, pretty);
    QFETCH(QByteArray, text);
    const Json::Format format = pretty ? Json::Format::Pretty : Json::Format::Compact;
    QCOMPARE(Json::encodeToUtf8(map, format), text);
    QCOMPARE(Json::encode(map, format), QString::fromUtf8(text));
}

void TestJson::roundTrip_data()
{
    QTest::addColumn<QVariantMap>("map");
    QTest::addColumn<bool>("pretty");
    QVariantMap deep;
    deep.insert(QStringLiteral("x"), 12.345678901234567);
    deep.insert(QStringLiteral("y"), -0.000001);
    deep.insert(QStringLiteral("z"), 1e300);
    deep.insert(QStringLiteral("name"), QString::fromUtf8("bön \"1\" \\ 中 \xf0\x9f\x98\x80"));
    deep.insert(QStringLiteral("list"), QVariantList{1, 2.5, QStringLiteral("s"), true,
                                                     QVariantMap{{QStringLiteral("k"), 3}}});
    const QVariantMap map{{QStringLiteral("deep"), deep}, {QStringLiteral("n"), 42}};
    QTest::newRow("pretty") << map << true;
    QTest::newRow("compact") << map << false;
    // Every control character is escaped so that a strict parser reads it back.
    QVariantMap controls;
    for (int i = 0; i < 50; ++i)
        controls.insert(QStringLiteral("k%1").arg(i), QVariantList{i * 0.1, QString(QChar(i + 1))});
    QTest::newRow("control characters") << controls << true;
}

void TestJson::roundTrip()
{
    QFETCH(QVariantMap, map);
    QFETCH(bool, pretty);
    const QString text = Json::encode(map, pretty ? Json::Format::Pretty : Json::Format::Compact);
    QString error;
    const QVariantMap back = Json::decode(text, &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    // Numbers come back as qint64 or double; compare through JSON values instead of
    // variant types.
    QCOMPARE(QJsonDocument::fromVariant(back), QJsonDocument::fromVariant(map));
    // Encoding what was decoded gives the same text.
    QCOMPARE(Json::encode(back, pretty ? Json::Format::Pretty : Json::Format::Compact), text);
}

void TestJson::decodeErrors_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("messageStart");
    QTest::newRow("unterminated object") << "{\"a\": 1" << "invalid termination by number at offset 7";
    QTest::newRow("script expression") << "({a: 1})" << "illegal value at offset 1";
    QTest::newRow("trailing comma") << "{\"a\": 1,}" << "object is missing after a comma at offset 9";
    QTest::newRow("comment") << "{/*x*/}" << "unterminated object at offset 2";
    QTest::newRow("array root") << "[1, 2]" << "the top-level value is not an object";
    QTest::newRow("empty") << "" << "illegal value at offset 0";
    QTest::newRow("garbage after") << "{} x" << "garbage at the end of the document at offset";
}

void TestJson::decodeErrors()
{
    QFETCH(QString, text);
    QFETCH(QString, messageStart);
    QString error;
    const QVariantMap map = Json::decode(text, &error);
    QVERIFY(map.isEmpty());
    QVERIFY(!error.isEmpty());
    QVERIFY2(error.startsWith(messageStart), qPrintable(error));
}

void TestJson::fromFile()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("a.rigj"));
    QVERIFY(Testing::writeFile(path, "{\"rigj_version\": \"1.0\", \"entity\": [{\"id\": 3}]}"));

    QString error;
    const QVariantMap map = Json::fromFile(path, &error);
    QVERIFY(error.isEmpty());
    QCOMPARE(map.value(QStringLiteral("rigj_version")).toString(), QStringLiteral("1.0"));
    QCOMPARE(map.value(QStringLiteral("entity")).toList().at(0).toMap().value(QStringLiteral("id")),
             QVariant(qint64(3)));

    const QVariantMap missing = Json::fromFile(dir.filePath(QStringLiteral("none.rigj")), &error);
    QVERIFY(missing.isEmpty());
    QVERIFY(!error.isEmpty());
}

QTEST_GUILESS_MAIN(TestJson)
#include "tst_json.moc"
