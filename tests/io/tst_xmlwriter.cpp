// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/xmlwriter.h"

#include <QBuffer>
#include <QRandomGenerator>
#include <QTest>
#include <QXmlStreamWriter>

using namespace Morvane;

namespace {

// Random text mixing what needs escaping, what must be dropped and non-ASCII.
QString randomText(QRandomGenerator &random)
{
    static const char16_t pool[] = {u'a', u'Z', u'0', u' ', u'<', u'>', u'&', u'"', u'\'',
                                    u'\n', u'\r', u'\t', u'\x01', u'\x1f', u'\xe9',
                                    u'\x4e2d', u'\xfffe', u'\xd83d', u'\xde00', u'\xdc00'};
    QString text;
    const int length = int(random.bounded(0, 12));
    for (int i = 0; i < length; ++i)
        text.append(QChar(pool[random.bounded(int(std::size(pool)))]));
    return text;
}

// Drops what XML 1.0 cannot hold, as both writers are expected to.
QString xmlClean(const QString &text)
{
    QString clean;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size()
            && QChar::isLowSurrogate(text.at(i + 1).unicode())) {
            clean.append(text.at(i));
            clean.append(text.at(++i));
            continue;
        }
        if (QChar::isSurrogate(c) || c == 0xFFFE || c == 0xFFFF)
            continue;
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            continue;
        clean.append(QChar(c));
    }
    return clean;
}

} // namespace

class TestXmlWriter : public QObject
{
    Q_OBJECT

private slots:
    void matchesQtWriter_data();
    void matchesQtWriter();
    void escaping_data();
    void escaping();
    void numberAttributes();
    void largeOutputIsFlushed();
    void deviceFailureIsReported();
};

void TestXmlWriter::matchesQtWriter_data()
{
    QTest::addColumn<bool>("autoFormatting");
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 20; ++seed) {
        QTest::addRow("formatted %u", seed) << true << seed;
        QTest::addRow("compact %u", seed) << false << seed;
    }
}

// The same random sequence of calls must give the same bytes as QXmlStreamWriter, for
// texts without characters that the two writers treat differently (invalid ones).
void TestXmlWriter::matchesQtWriter()
{
    QFETCH(bool, autoFormatting);
    QFETCH(quint32, seed);

    QByteArray ours;
    QByteArray theirs;
    QBuffer ourDevice(&ours);
    QBuffer theirDevice(&theirs);
    ourDevice.open(QIODevice::WriteOnly);
    theirDevice.open(QIODevice::WriteOnly);
    {
        XmlWriter writer(&ourDevice);
        writer.setAutoFormatting(autoFormatting);
        QXmlStreamWriter reference(&theirDevice);
        reference.setAutoFormatting(autoFormatting);
        reference.setAutoFormattingIndent(4);

        QRandomGenerator random(seed);
        writer.writeStartDocument();
        reference.writeStartDocument();
        writer.writeStartElement("root");
        reference.writeStartElement(QStringLiteral("root"));
        int depth = 1;
        bool inStart = true;
        for (int step = 0; step < 200; ++step) {
            const int action = int(random.bounded(10));
            if (action < 4 && depth < 8) {
                const QByteArray name = "e" + QByteArray::number(random.bounded(3));
                writer.writeStartElement(std::string_view(name.constData(), size_t(name.size())));
                reference.writeStartElement(QString::fromLatin1(name));
                ++depth;
                inStart = true;
            } else if (action < 6 && inStart) {
                const QByteArray name = "a" + QByteArray::number(step);
                const QString value = xmlClean(randomText(random));
                writer.writeAttribute(std::string_view(name.constData(), size_t(name.size())),
                                      value);
                reference.writeAttribute(QString::fromLatin1(name), value);
            } else if (action < 7) {
                const QString text = xmlClean(randomText(random));
                writer.writeCharacters(text);
                reference.writeCharacters(text);
                inStart = false;
            } else if (depth > 1) {
                writer.writeEndElement();
                reference.writeEndElement();
                --depth;
                inStart = false;
            }
        }
        writer.writeEndDocument();
        reference.writeEndDocument();
        QVERIFY(!writer.hasError());
    }
    QCOMPARE(ours, theirs);
}

void TestXmlWriter::escaping_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("attribute");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("markup") << QStringLiteral("<a & \"b\" 'c'>")
                            << QByteArray("&lt;a &amp; &quot;b&quot; 'c'&gt;")
                            << QByteArray("&lt;a &amp; &quot;b&quot; 'c'&gt;");
    QTest::newRow("line breaks and tabs") << QStringLiteral("1\n2\r3\t4")
                                          << QByteArray("1&#10;2&#13;3&#9;4")
                                          << QByteArray("1\n2\r3\t4");
    QTest::newRow("control characters dropped")
        << QString(QStringLiteral("a") + QChar(0x01) + QChar(0x1b) + QStringLiteral("b"))
        << QByteArray("ab") << QByteArray("ab");
    QTest::newRow("non-ASCII as UTF-8") << QString::fromUtf8("héllo 中")
                                        << QByteArray("h\xc3\xa9llo \xe4\xb8\xad")
                                        << QByteArray("h\xc3\xa9llo \xe4\xb8\xad");
    QTest::newRow("surrogate pair kept") << QString::fromUtf8("\xf0\x9f\x98\x80")
                                         << QByteArray("\xf0\x9f\x98\x80")
                                         << QByteArray("\xf0\x9f\x98\x80");
    QTest::newRow("lone surrogate dropped")
        << QString(QStringLiteral("x") + QChar(0xD800) + QStringLiteral("y")) << QByteArray("xy")
        << QByteArray("xy");
    QTest::newRow("noncharacter dropped") << QString(QChar(0xFFFE)) << QByteArray()
                                          << QByteArray();
    // Long texts are escaped in pieces; a pair split by a piece's end stays one character.
    const QString smile = QString::fromUtf8("\xf0\x9f\x98\x80");
    QTest::newRow("pair across a piece")
        << QString(QString(1023, QLatin1Char('a')) + smile + QStringLiteral("z"))
        << QByteArray(QByteArray(1023, 'a') + "\xf0\x9f\x98\x80z")
        << QByteArray(QByteArray(1023, 'a') + "\xf0\x9f\x98\x80z");
    QTest::newRow("escapes filling many pieces")
        << QStringLiteral("<&\"").repeated(5000)
        << QByteArray("&lt;&amp;&quot;").repeated(5000)
        << QByteArray("&lt;&amp;&quot;").repeated(5000);
    QTest::newRow("longer than the buffer") << QString::fromUtf8("\xc3\xa9\n").repeated(100000)
                                            << QByteArray("\xc3\xa9&#10;").repeated(100000)
                                            << QByteArray("\xc3\xa9\n").repeated(100000);
}

void TestXmlWriter::escaping()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, attribute);
    QFETCH(QByteArray, text);

    QByteArray out;
    QBuffer device(&out);
    device.open(QIODevice::WriteOnly);
    {
        XmlWriter writer(&device);
        writer.writeStartElement("e");
        writer.writeAttribute("v", value);
        writer.writeCharacters(value);
        writer.writeEndElement();
        writer.flush();
    }
    QCOMPARE(out, "<e v=\"" + attribute + "\">" + text + "</e>");

    // The UTF-8 entry point escapes the same way (for text that UTF-8 can carry).
    if (QString::fromUtf8(value.toUtf8()) != value)
        return;
    QByteArray utf8Out;
    QBuffer utf8Device(&utf8Out);
    utf8Device.open(QIODevice::WriteOnly);
    {
        XmlWriter writer(&utf8Device);
        writer.writeStartElement("e");
        const QByteArray utf8 = value.toUtf8();
        writer.writeAttribute("v", std::string_view(utf8.constData(), size_t(utf8.size())));
        writer.writeEndElement();
    }
    QCOMPARE(utf8Out, "<e v=\"" + attribute + "\"/>");
}

void TestXmlWriter::numberAttributes()
{
    QByteArray out;
    QBuffer device(&out);
    device.open(QIODevice::WriteOnly);
    {
        XmlWriter writer(&device);
        writer.writeStartElement("k");
        writer.writeIntegerAttribute("i", -42);
        writer.writeReal6Attribute("r", 2.5000001);
        writer.writeG6Attribute("g", 1234567.0);
        writer.writeEndElement();
    }
    QCOMPARE(out, QByteArray("<k i=\"-42\" r=\"2.5\" g=\"1.23457e+06\"/>"));
}

void TestXmlWriter::largeOutputIsFlushed()
{
    QByteArray out;
    QBuffer device(&out);
    device.open(QIODevice::WriteOnly);
    XmlWriter writer(&device);
    writer.writeStartElement("root");
    for (int i = 0; i < 20000; ++i) {
        writer.writeStartElement("item");
        writer.writeIntegerAttribute("id", i);
        writer.writeEndElement();
    }
    // Output reaches the device while writing, not only at the end.
    QVERIFY(out.size() > 100000);
    writer.writeEndDocument();
    QVERIFY(out.endsWith("<item id=\"19999\"/></root>\n"));
}

void TestXmlWriter::deviceFailureIsReported()
{
    QByteArray out;
    QBuffer device(&out);
    device.open(QIODevice::ReadOnly); // writing is refused
    XmlWriter writer(&device);
    writer.writeStartDocument();
    writer.writeStartElement("root");
    writer.writeEndDocument();
    QVERIFY(writer.hasError());
    QVERIFY(!writer.errorString().isEmpty());
    QVERIFY(!writer.flush());
}

QTEST_GUILESS_MAIN(TestXmlWriter)
#include "tst_xmlwriter.moc"
