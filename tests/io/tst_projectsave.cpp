// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/json.h"
#include "io/projectfile.h"
#include "io/xmlprojectwriter.h"
#include "model/rigxdata.h"
#include "projectgenerator.h"
#include "testhost.h"

#include <QBuffer>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

// Records the progress calls of a save, and where they fell relative to begin and end.
class ProgressHost : public TestHost
{
public:
    void beginProgress(const QString &) override { events.append(-1); }
    void endProgress() override { events.append(-2); }
    void progress(int percent) override { events.append(percent); }

    QList<int> events; // -1 begin, -2 end, else a percentage
};

} // namespace

class TestProjectSave : public QObject
{
    Q_OBJECT

private slots:
    void progressRisesToHundred_data();
    void progressRisesToHundred();
    void progressWithoutHostIsQuiet();
    void jsonKeysAscendAtEveryLevel_data();
    void jsonKeysAscendAtEveryLevel();
    void largeProjectRoundTrips_data();
    void largeProjectRoundTrips();
};

void TestProjectSave::progressRisesToHundred_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("pretty");
    QTest::newRow("xml") << QStringLiteral("p.rigx") << true;
    QTest::newRow("json compact") << QStringLiteral("p.rigj") << false;
}

void TestProjectSave::progressRisesToHundred()
{
    QFETCH(QString, name);
    QFETCH(bool, pretty);
    QTemporaryDir dir;
    RigxData document;
    const QString path = dir.filePath(name);
    document.setFilePath(path);
    const int keys = 6 * 8 * 12;
    buildProject(document, {6, 8, 12, true});
    ProjectSaveOptions options;
    options.prettifyXml = pretty;
    options.prettifyJson = pretty;
    ProgressHost host;
    QVERIFY(ProjectFile::save(&document, path, options, &host));

    // Begin first, end last, and only percentages in between.
    QVERIFY(host.events.size() > 2);
    QCOMPARE(host.events.first(), -1);
    QCOMPARE(host.events.last(), -2);
    const QList<int> values = host.events.mid(1, host.events.size() - 2);
    int previous = 0;
    for (int value : values) {
        QVERIFY2(value >= previous && value <= 100,
                 qPrintable(QStringLiteral("%1 after %2").arg(value).arg(previous)));
        previous = value;
    }
    QCOMPARE(values.last(), 100);
    // A moving bar, but not a call per key.
    QVERIFY2(values.size() >= 6, qPrintable(QString::number(values.size())));
    QVERIFY2(values.size() < keys / 2, qPrintable(QString::number(values.size())));
    // The bar passes through the middle instead of jumping from start to end.
    QVERIFY(std::any_of(values.begin(), values.end(),
                        [](int value) { return value >= 25 && value <= 75; }));
}

void TestProjectSave::progressWithoutHostIsQuiet()
{
    // The writers work without anyone listening (the autosave snapshot): a callback alone
    // hears the progress, and the bytes are those of a save nobody follows.
    RigxData document;
    buildProject(document, {2, 3, 4, true});
    QList<int> heard;
    QByteArray xml;
    QBuffer buffer(&xml);
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(XmlProjectWriter::write(document, &buffer, {}, nullptr,
                                    [&heard](int percent) { heard.append(percent); }));
    QCOMPARE(xml, written(document));
    QVERIFY(!heard.isEmpty());
    QCOMPARE(heard.last(), 100);
}

void TestProjectSave::jsonKeysAscendAtEveryLevel_data()
{
    QTest::addColumn<int>("animations");
    QTest::addColumn<int>("keys");
    QTest::addColumn<bool>("pretty");
    QTest::newRow("small") << 2 << 3 << true;
    QTest::newRow("small compact") << 2 << 3 << false;
    // Animations of several hundred kilobytes are assembled from pieces instead of copied.
    QTest::newRow("large animations") << 3 << 150 << true;
    QTest::newRow("large animations compact") << 3 << 150 << false;
}

void TestProjectSave::jsonKeysAscendAtEveryLevel()
{
    QFETCH(int, animations);
    QFETCH(int, keys);
    QFETCH(bool, pretty);
    RigxData document;
    buildProject(document, {animations, 12, keys, true});
    const QByteArray text = written(document, true, pretty);
    if (keys > 100)
        QVERIFY(text.size() > animations * (1 << 18));

    // The general encoder writes any map with sorted keys in the same layout, so parsing
    // the output and encoding it again must give the very same bytes.
    QJsonParseError error;
    const QJsonDocument parsed = QJsonDocument::fromJson(text, &error);
    QCOMPARE(error.error, QJsonParseError::NoError);
    const QByteArray again = Json::encodeToUtf8(parsed.toVariant().toMap(),
                                                pretty ? Json::Format::Pretty
                                                       : Json::Format::Compact);
    QCOMPARE(again.size(), text.size());
    QVERIFY(again == text);
}

void TestProjectSave::largeProjectRoundTrips_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("xml") << QStringLiteral("big.rigx");
    QTest::newRow("json") << QStringLiteral("big.rigj");
}

void TestProjectSave::largeProjectRoundTrips()
{
    QFETCH(QString, name);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    TestHost host;
    {
        RigxData document;
        document.setFilePath(path);
        buildProject(document, {4, 30, 150, true});
        QVERIFY(ProjectFile::save(&document, path, {}, &host));
    }
    const QByteArray saved = readAll(path);
    // Several megabytes, well past any buffer of the writers and readers.
    QVERIFY(saved.size() > (1 << 21));
    RigxData reopened;
    QVERIFY(ProjectFile::open(&reopened, path, &host));
    const QString copy = dir.filePath(QStringLiteral("copy_") + name);
    QVERIFY(ProjectFile::save(&reopened, copy, {}, &host));
    QVERIFY(readAll(copy) == saved);
    QVERIFY(host.lines.isEmpty());
}

QTEST_GUILESS_MAIN(TestProjectSave)
#include "tst_projectsave.moc"
