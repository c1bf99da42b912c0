// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "testhost.h"

#include "io/projectfile.h"
#include "model/rigxdata.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

using Attributes = QList<QPair<QByteArray, QByteArray>>;

// One key's attributes of each kind of key the generated project holds.
struct KeyNumbers
{
    Attributes sprite; // x, y, angle, pivot_x, pivot_y, scale_x, scale_y, a
    Attributes bone;   // x, y, angle, scale_x, scale_y, a
    Attributes sound;  // panning, volume
    QByteArray value;  // a float variable's value
};

QByteArray attributesText(const Attributes &attributes)
{
    QByteArray text;
    for (const auto &attribute : attributes)
        text += ' ' + attribute.first + "=\"" + attribute.second + '"';
    return text;
}

// A project written by hand, not by the writer under test: a sprite, a bone and a sound
// timeline with one key per entry of `keys`, a float variable keyed with the same count,
// and the file and box pivots (six significant digits in the file) given.
QByteArray generatedProject(const QList<KeyNumbers> &keys, const QByteArray &pivot)
{
    QByteArray text = "<?xml version=\"1.0\"?>\n<morvane_data rigx_version=\"1.0\">"
                      "<folder id=\"0\"><file id=\"0\" name=\"a.png\" width=\"8\" height=\"4\" "
                      "pivot_x=\""
                      + pivot + "\" pivot_y=\"" + pivot
                      + "\"/><file id=\"1\" name=\"s.ogg\" type=\"sound\"/></folder>"
                        "<entity id=\"0\" name=\"e\">"
                        "<obj_info name=\"s\" type=\"sprite\"/>"
                        "<obj_info name=\"b\" type=\"bone\" w=\"20\" h=\"4\"/>"
                        "<obj_info name=\"box\" type=\"box\" w=\"3\" h=\"5\" pivot_x=\""
                      + pivot + "\" pivot_y=\"" + pivot
                      + "\"/>"
                        "<var_defs><i id=\"0\" name=\"f\" type=\"float\" default=\"0\"/></var_defs>"
                        "<animation id=\"0\" name=\"a\" length=\"100000\">";
    const auto timeline = [&](const char *head, const char *element, const char *content,
                              auto attributesOf) {
        text += head;
        for (int k = 0; k < keys.size(); ++k) {
            text += "<key id=\"" + QByteArray::number(k) + "\" time=\"" + QByteArray::number(k * 10)
                    + "\"><" + element + content + attributesText(attributesOf(keys.at(k)))
                    + "/></key>";
        }
        text += QByteArray("</") + QByteArray(head).mid(1, QByteArray(head).indexOf(' ') - 1)
                + '>';
    };
    timeline("<timeline id=\"0\" obj=\"0\" name=\"s\">", "object", " folder=\"0\" file=\"0\"",
             [](const KeyNumbers &key) { return key.sprite; });
    timeline("<timeline id=\"1\" obj=\"1\" name=\"b\" object_type=\"bone\">", "bone", "",
             [](const KeyNumbers &key) { return key.bone; });
    timeline("<soundline id=\"2\" obj=\"3\" name=\"snd\">", "object", " folder=\"0\" file=\"1\"",
             [](const KeyNumbers &key) { return key.sound; });
    text += "<meta><varline id=\"0\" def=\"0\">";
    for (int k = 0; k < keys.size(); ++k)
        text += "<key id=\"" + QByteArray::number(k) + "\" time=\"" + QByteArray::number(k * 10)
                + "\" val=\"" + keys.at(k).value + "\"/>";
    text += "</varline></meta></animation></entity></morvane_data>\n";
    return text;
}

// Opens `from` and saves it as `to`; the saved bytes.
QByteArray convert(const QString &from, const QString &to)
{
    TestHost host;
    RigxData document;
    if (!ProjectFile::open(&document, from, &host))
        return "open failed: " + host.lines.join(QLatin1Char('\n')).toUtf8();
    if (!ProjectFile::save(&document, to, {}, &host))
        return "save failed: " + host.lines.join(QLatin1Char('\n')).toUtf8();
    return readAll(to);
}

// The attributes of the keys of the timeline of `kind` ("object" of the sprite timeline,
// "bone"), key by key, from a written XML file.
QList<Attributes> xmlKeyAttributes(const QByteArray &text, const QByteArray &kind, int timelineId)
{
    QList<Attributes> keys;
    QXmlStreamReader reader(text);
    int timeline = -1;
    while (!reader.atEnd()) {
        if (!reader.readNextStartElement())
            continue;
        if (reader.name() == QLatin1String("timeline"))
            timeline = reader.attributes().value(QLatin1String("id")).toInt();
        if (reader.name() == QLatin1String(kind) && timeline == timelineId) {
            Attributes attributes;
            for (const QXmlStreamAttribute &attribute : reader.attributes()) {
                const QByteArray name = attribute.name().toUtf8();
                if (name != "folder" && name != "file")
                    attributes.append({name, attribute.value().toUtf8()});
            }
            std::sort(attributes.begin(), attributes.end());
            keys.append(attributes);
        }
    }
    return keys;
}

// The same from the JSON form: each key's "object" or "bone" object of the timeline at
// `timelineIndex` (keys of one object are written in ascending order). The project's names
// hold no blanks, so all blanks can go first.
QList<Attributes> jsonKeyAttributes(QByteArray text, const QByteArray &kind, int timelineIndex)
{
    text = text.simplified().replace(' ', QByteArray());
    QList<Attributes> keys;
    const int start = text.indexOf("\"timeline\":[");
    int position = start;
    for (int t = 0; t <= timelineIndex && position >= 0; ++t)
        position = text.indexOf(QByteArray("{\"id\":" + QByteArray::number(t) + ",\"key\":["),
                                position);
    if (position < 0)
        return keys;
    const int end = text.indexOf("],\"name\":", position);
    static const QRegularExpression element(QStringLiteral("\"%1\":\\{([^{}]*)\\}"));
    static const QRegularExpression pair(QStringLiteral("\"(\\w+)\":([^,]+)"));
    const QString part = QString::fromUtf8(text.mid(position, end - position));
    const QRegularExpression forKind(element.pattern().arg(QString::fromUtf8(kind)));
    for (auto match = forKind.globalMatch(part); match.hasNext();) {
        const QString body = match.next().captured(1);
        Attributes attributes;
        for (auto field = pair.globalMatch(body); field.hasNext();) {
            const auto item = field.next();
            const QByteArray name = item.captured(1).toUtf8();
            if (name != "folder" && name != "file")
                attributes.append({name, item.captured(2).toUtf8()});
        }
        std::sort(attributes.begin(), attributes.end());
        keys.append(attributes);
    }
    return keys;
}

// Whether the six-decimal form holds `text` exactly: printf's correctly rounded "%.6f",
// trimmed, gives it back.
bool sixDecimalsHold(const QByteArray &text)
{
    char buffer[512];
    int length = std::snprintf(buffer, sizeof buffer, "%.6f", text.toDouble());
    while (length > 0 && buffer[length - 1] == '0')
        --length;
    if (length > 0 && buffer[length - 1] == '.')
        --length;
    return QByteArray(buffer, length) == text;
}

} // namespace

class TestNumberRoundTrip : public QObject
{
    Q_OBJECT

private slots:
    void roundedNumbersSaveStably_data();
    void roundedNumbersSaveStably();
    void formsChainGivesFirstGenerationBack();
};

void TestNumberRoundTrip::roundedNumbersSaveStably_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("form");
    const QList<QByteArray> values = {
        "-0.0000001",   "-1e-9",       "0.0000005",    "-0.0000005",  "0.0000004999999",
        "-0.0000004999999", "0.0000005000001", "-0.0000005000001", "-0.0000015",
        "-0.0000025",   "2.9999995",   "-2.9999995",   "1.0000004",   "0.9999996",
        "1.0000005",    "359.9999996", "360.0000004",  "0.0000001",   "-360.0000001",
        "1e-300",       "-1e-300"};
    for (const QByteArray &value : values) {
        for (const QString &form : {QStringLiteral("rigx"), QStringLiteral("rigj")})
            QTest::addRow("%s %s", value.constData(), qPrintable(form)) << value << form;
    }
}

void TestNumberRoundTrip::roundedNumbersSaveStably()
{
    // The value in every number of a key, the file pivots and a variable: whatever the
    // writer rounds, the saved file saves again to the same bytes.
    QFETCH(QByteArray, value);
    QFETCH(QString, form);
    KeyNumbers key;
    for (const char *name : {"x", "y", "angle", "pivot_x", "pivot_y", "scale_x", "scale_y", "a"})
        key.sprite.append({name, value});
    for (const char *name : {"x", "y", "angle", "scale_x", "scale_y", "a"})
        key.bone.append({name, value});
    key.sound = {{"panning", value}, {"volume", value}};
    key.value = value;
    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("source.rigx"));
    QVERIFY(writeFile(source, generatedProject({key, key}, value)));

    const QString first = dir.filePath(QStringLiteral("first.") + form);
    const QString second = dir.filePath(QStringLiteral("second.") + form);
    const QByteArray saved = convert(source, first);
    QVERIFY2(saved.startsWith(form == QLatin1String("rigx") ? "<?xml" : "{"), saved.constData());
    QCOMPARE(convert(first, second), saved);
}

void TestNumberRoundTrip::formsChainGivesFirstGenerationBack()
{
    // Numbers the six-decimal form holds, at its edges: they pass from XML to JSON and back
    // unchanged, angles (kept in the model as 360 minus the file's) included.
    QList<QByteArray> values = {
        "0.1", "-0.1", "0.000001", "-0.000001", "0.3", "0.7", "0.25", "1.000001", "0.999999",
        "2.5", "-2.5", "123.456789", "-999999.999999", "1000000.000001", "9999999.999999",
        "12345678.123456", "99999999.999999", "123456789.123456", "-2147483647.999999",
        "4503599627370495.5", "100000000000000000000", "0.000123", "1e-06", "-0.000999"};
    QList<QByteArray> angles = {"0.1",  "0.000001", "359.999999", "359.9",     "0",
                                "180",  "90.5",     "0.5",        "270.123456", "1",
                                "45",   "359",      "0.000002",   "12.000001"};
    QRandomGenerator random(2026);
    for (int i = 0; i < 300; ++i) {
        char text[64];
        std::snprintf(text, sizeof text, "%.*f", random.bounded(1, 7),
                      random.generateDouble() * 360.0);
        QByteArray angle(text);
        while (angle.endsWith('0'))
            angle.chop(1);
        if (angle.endsWith('.'))
            angle.chop(1);
        angles.append(angle);
        std::snprintf(text, sizeof text, "%.*f", random.bounded(1, 7),
                      (random.generateDouble() - 0.5) * std::pow(10.0, random.bounded(0, 10)));
        QByteArray number(text);
        while (number.endsWith('0'))
            number.chop(1);
        if (number.endsWith('.'))
            number.chop(1);
        if (number != "0" && number != "-0" && number != "1")
            values.append(number);
    }
    values.erase(std::remove_if(values.begin(), values.end(),
                                [](const QByteArray &v) { return !sixDecimalsHold(v); }),
                 values.end());
    QVERIFY(values.size() > 250);

    QList<KeyNumbers> keys;
    QList<Attributes> expectedSprite;
    for (int k = 0; k < angles.size(); ++k) {
        const QByteArray &v = values.at(k % values.size());
        const QByteArray &w = values.at((k * 7 + 3) % values.size());
        const QByteArray &u = values.at((k * 13 + 5) % values.size());
        KeyNumbers key;
        // Scales and alpha of 1, and a position of 0, are defaults and left out.
        key.sprite = {{"x", v},       {"y", w},       {"angle", angles.at(k)},
                      {"pivot_x", u}, {"pivot_y", v}, {"scale_x", w},
                      {"scale_y", u}, {"a", v}};
        key.bone = {{"x", u}, {"y", v}, {"angle", angles.at(k)}, {"scale_x", v}, {"a", w}};
        key.sound = {{"panning", "0.25"}, {"volume", "0.123457"}};
        key.value = w;
        keys.append(key);
        Attributes sorted = key.sprite;
        std::sort(sorted.begin(), sorted.end());
        expectedSprite.append(sorted);
    }

    QTemporaryDir dir;
    const QString source = dir.filePath(QStringLiteral("source.rigx"));
    QVERIFY(writeFile(source, generatedProject(keys, "0.123457")));
    const QString x0 = dir.filePath(QStringLiteral("x0.rigx"));
    const QString j1 = dir.filePath(QStringLiteral("j1.rigj"));
    const QString x1 = dir.filePath(QStringLiteral("x1.rigx"));
    const QString j2 = dir.filePath(QStringLiteral("j2.rigj"));
    const QString x2 = dir.filePath(QStringLiteral("x2.rigx"));
    const QByteArray firstXml = convert(source, x0);
    const QByteArray firstJson = convert(x0, j1);
    const QByteArray secondXml = convert(j1, x1);
    const QByteArray secondJson = convert(x1, j2);
    QVERIFY(firstXml.startsWith("<?xml"));
    QVERIFY(firstJson.startsWith("{"));

    // Every key number is written as the file had it, in both forms.
    QCOMPARE(xmlKeyAttributes(firstXml, "object", 0), expectedSprite);
    QCOMPARE(jsonKeyAttributes(firstJson, "object", 0), expectedSprite);
    QCOMPARE(jsonKeyAttributes(firstJson, "bone", 1), xmlKeyAttributes(firstXml, "bone", 1));

    QVERIFY(secondXml == firstXml);
    QVERIFY(secondJson == firstJson);
    QVERIFY(convert(j2, x2) == firstXml);
}

QTEST_GUILESS_MAIN(TestNumberRoundTrip)
#include "tst_numberroundtrip.moc"
