// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "testhost.h"

#include "io/json.h"
#include "io/jsonprojectwriter.h"
#include "io/projectfile.h"
#include "io/xmlprojectwriter.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QBuffer>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace Morvane;

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

// A project of `animations` animations, each with bones and sprites keyed `keys` times, with
// values that exercise every number form (negative, fractional, large).
void buildProject(RigxData &document, int animations, int timelines, int keys)
{
    auto *folder = new Folder(QStringLiteral("parts"));
    document.appendFolder(folder);
    QList<File *> files;
    for (int i = 0; i < 7; ++i) {
        auto *file = new File(QStringLiteral("parts/p%1.png").arg(i), 0.5, 0.25, File::Image,
                              document.projectDirectory());
        file->setSize(10 + i, 20 + i);
        folder->appendFile(file);
        files.append(file);
    }
    auto *entity = new Entity(QStringLiteral("figure \"one\" <é>"));
    document.appendEntity(entity);
    QList<Object *> objects;
    for (int o = 0; o < timelines; ++o) {
        auto *object = new Object(QStringLiteral("part_%1").arg(o),
                                  o % 3 == 0 ? Object::Bone : Object::Sprite);
        entity->appendObject(object, -1, false);
        objects.append(object);
    }
    for (int a = 0; a < animations; ++a) {
        auto *animation = new Animation(QStringLiteral("move_%1").arg(a), a % 2 == 0);
        animation->setLength(keys * 50);
        entity->appendAnimation(animation);
        for (int t = 0; t < timelines; ++t) {
            auto *timeline = new Timeline(objects.at(t), objects.at(t)->name());
            animation->appendTimeline(timeline, -1, true);
            for (int k = 0; k < keys; ++k) {
                DisplayInfo info;
                info.x = std::sin(a + t * 0.7 + k * 0.31) * 12345.678;
                info.y = -std::cos(a * 0.2 + t + k) * 250.0;
                info.angle = std::fmod(a * 11.0 + t * 29.0 + k * 13.7, 360.0);
                info.xScale = 1.0 + (k % 4) * 0.125;
                info.alpha = k % 3 == 0 ? 0.3 : 1.0;
                info.setPivotX(0.5);
                info.setPivotY(0.25);
                FileInfo file;
                if (!objects.at(t)->isBone())
                    file = FileInfo(files.at((a + t + k) % files.size())->address());
                auto *key = new TimelineKey(file, info);
                key->setCachedTime(k * 50);
                timeline->appendTimelineKey(key, false, false);
            }
        }
        animation->appendMainKeysForOrphanTimeKeys(false);
    }
}

QByteArray writeJson(RigxData &document, bool pretty)
{
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    ProjectSaveOptions options;
    options.prettifyJson = pretty;
    JsonProjectWriter::write(document, &buffer, options);
    return out;
}

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
    QTest::newRow("xml compact") << QStringLiteral("p.rigx") << false;
    QTest::newRow("json") << QStringLiteral("p.rigj") << true;
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
    buildProject(document, 6, 8, 12);
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
    // The writers work without anyone listening (the autosave snapshot, the tests).
    RigxData document;
    buildProject(document, 2, 3, 4);
    QByteArray xml;
    QBuffer buffer(&xml);
    buffer.open(QIODevice::WriteOnly);
    QVERIFY(XmlProjectWriter::write(document, &buffer, {}));
    QVERIFY(xml.endsWith("</morvane_data>\n"));
    QList<int> heard;
    QByteArray again;
    QBuffer second(&again);
    second.open(QIODevice::WriteOnly);
    QVERIFY(XmlProjectWriter::write(document, &second, {}, nullptr,
                                    [&heard](int percent) { heard.append(percent); }));
    QCOMPARE(again, xml);
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
    buildProject(document, animations, 12, keys);
    const QByteArray text = writeJson(document, pretty);
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
        buildProject(document, 4, 30, 150);
        QVERIFY(ProjectFile::save(&document, path, {}, &host));
    }
    const QByteArray saved = readAll(path);
    // Past 2 MiB, where the XML reader keeps the text in memory of its own.
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
