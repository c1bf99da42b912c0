// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/json.h"
#include "io/projectfile.h"
#include "meta/tag.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "projectgenerator.h"
#include "testhost.h"

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

// A document with one sprite timeline whose keys have the given model angles and values.
struct SpriteProject
{
    RigxData document;
    Animation *animation = nullptr;
    Timeline *timeline = nullptr;
    File *file = nullptr;

    explicit SpriteProject(const QList<DisplayInfo> &keys, const QList<int> &times = {})
    {
        document.setFilePath(QStringLiteral("/nonexistent/project.rigx"));
        auto *folder = new Folder(QString());
        document.appendFolder(folder);
        file = new File(QStringLiteral("a.png"), 0.5, 0.5, File::Image, document.projectDirectory());
        folder->appendFile(file);
        auto *entity = new Entity(QStringLiteral("e"));
        document.appendEntity(entity);
        auto *object = new Object(QStringLiteral("s"), Object::Sprite);
        entity->appendObject(object);
        animation = new Animation(QStringLiteral("a"), true);
        entity->appendAnimation(animation);
        timeline = new Timeline(object, QStringLiteral("s"));
        animation->appendTimeline(timeline);
        for (int i = 0; i < keys.size(); ++i) {
            auto *key = new TimelineKey(FileInfo(file->address()), keys.at(i));
            key->setCachedTime(times.value(i, i * 100));
            timeline->appendTimelineKey(key, true, false);
        }
        animation->appendMainKeysForOrphanTimeKeys(false);
    }
};

DisplayInfo spriteInfo(double angle = 0.0)
{
    DisplayInfo info;
    info.angle = angle;
    info.setPivotX(0.5);
    info.setPivotY(0.5);
    return info;
}

// The text of the first line holding `needle`, trimmed.
QByteArray lineWith(const QByteArray &text, const QByteArray &needle)
{
    for (const QByteArray &line : text.split('\n')) {
        if (line.contains(needle))
            return line.trimmed();
    }
    return QByteArray();
}

} // namespace

class TestProjectFile : public QObject
{
    Q_OBJECT

private slots:
    void roundTripIsByteIdentical_data();
    void roundTripIsByteIdentical();
    void xmlJsonXmlGivesSameFile();
    void idsAreRemapped();
    void keyValues_data();
    void keyValues();
    void angleIsStoredBackNormalised();
    void spin_data();
    void spin();
    void animationAttributes();
    void pointsHaveNoObjInfo();
    void extensionCaseIsIgnored();
    void errorLines_data();
    void errorLines();
    void specialFilesAreNotRead_data();
    void specialFilesAreNotRead();
    void openReplacesOpenProject_data();
    void openReplacesOpenProject();
    void keysOutOfOrderLoadSorted_data();
    void keysOutOfOrderLoadSorted();
    void readerWarnings_data();
    void readerWarnings();
    void repeatedObjectNamesAreMadeUnique();
    void brokenAnimation_data();
    void brokenAnimation();
    void failedSaveKeepsOldFile();
    void hostileInput_data();
    void hostileInput();
    void jsonLayout();
    void inlineMainlineForm();
};

void TestProjectFile::roundTripIsByteIdentical_data()
{
    QTest::addColumn<QString>("fixture");
    QTest::addColumn<bool>("pretty");
    QTest::newRow("pretty xml") << testData("canonical.rigx") << true;
    QTest::newRow("compact xml") << testData("canonical-compact.rigx") << false;
    QTest::newRow("pretty json") << testData("canonical.rigj") << true;
}

void TestProjectFile::roundTripIsByteIdentical()
{
    QFETCH(QString, fixture);
    QFETCH(bool, pretty);
    QTemporaryDir dir;
    TestHost host;
    RigxData document;
    QStringList warnings;
    QVERIFY(ProjectFile::open(&document, fixture, &host, nullptr, &warnings));
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    ProjectSaveOptions options;
    options.prettifyXml = pretty;
    options.prettifyJson = pretty;
    const QString out = dir.filePath(QFileInfo(fixture).fileName());
    QVERIFY(ProjectFile::save(&document, out, options, &host));
    QCOMPARE(readAll(out), readAll(fixture));
    QVERIFY(host.lines.isEmpty());
    QCOMPARE(host.suppressDepth, 0);
}

void TestProjectFile::xmlJsonXmlGivesSameFile()
{
    QTemporaryDir dir;
    TestHost host;
    RigxData xml;
    QVERIFY(ProjectFile::open(&xml, testData("canonical.rigx"), &host));
    QVERIFY(ProjectFile::save(&xml, dir.filePath(QStringLiteral("p.rigj")), {}, &host));
    RigxData json;
    QVERIFY(ProjectFile::open(&json, dir.filePath(QStringLiteral("p.rigj")), &host));
    QVERIFY(ProjectFile::save(&json, dir.filePath(QStringLiteral("p.rigx")), {}, &host));
    QCOMPARE(readAll(dir.filePath(QStringLiteral("p.rigx"))), readAll(testData("canonical.rigx")));
}

void TestProjectFile::idsAreRemapped()
{
    TestHost host;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, testData("remapped-ids.rigx"), &host));
    QCOMPARE(document.folderCount(), 2);
    QCOMPARE(document.folder(0)->name(), QStringLiteral("body"));
    QCOMPARE(document.folder(1)->name(), QStringLiteral("sfx"));
    // File id 3 of folder 5 is the torso, file id 1 the head, whatever their positions.
    const Entity *hero = document.entity(0);
    QCOMPARE(hero->name(), QStringLiteral("hero"));
    const Animation *walk = hero->animation(0);
    QCOMPARE(walk->timeline(1)->key(0)->fileInfo().file()->name(), QStringLiteral("body/torso.png"));
    QCOMPARE(walk->timeline(2)->key(0)->fileInfo().file()->name(), QStringLiteral("body/head.png"));
    QCOMPARE(walk->timeline(6)->key(0)->fileInfo().file()->name(), QStringLiteral("sfx/step.ogg"));
    // Entity id 8 is the second entity.
    const Address &shown = walk->timeline(5)->key(0)->entityInfo().animation;
    QCOMPARE(shown.entityIndex(), 1);
    QCOMPARE(shown.animation(), document.entity(1)->animation(0));
    // A bone reference read later than its child still parents it.
    const MainlineKey *first = walk->mainlineKey(0);
    QCOMPARE(first->zRef(0)->timeline()->name(), QStringLiteral("head"));
    QCOMPARE(first->zRef(0)->parentRef(), first->boneRef(0));
    // File pivot y is stored from the bottom in the file.
    QCOMPARE(document.folder(0)->file(0)->pivot(false), QPointF(0.5, 0.75));
}

void TestProjectFile::keyValues_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("angle");
    QTest::addColumn<double>("alpha");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("defaults are left out")
        << 0.0 << 0.0 << 0.0 << 1.0 << QByteArray("<object folder=\"0\" file=\"0\"/>");
    QTest::newRow("tenth and integer")
        << 0.1 << 2.0 << 0.0 << 1.0 << QByteArray("<object folder=\"0\" file=\"0\" x=\"0.1\" y=\"-2\"/>");
    QTest::newRow("tiny y rounds to the default and is left out")
        << 0.0 << 0.0000004 << 0.0 << 1.0 << QByteArray("<object folder=\"0\" file=\"0\"/>");
    QTest::newRow("minus 90 degrees")
        << 0.0 << 0.0 << -90.0 << 1.0 << QByteArray("<object folder=\"0\" file=\"0\" angle=\"90\"/>");
    QTest::newRow("360 degrees written as 0")
        << 0.0 << 0.0 << 360.0 << 1.0 << QByteArray("<object folder=\"0\" file=\"0\" angle=\"0\"/>");
    QTest::newRow("many turns")
        << 0.0 << 0.0 << 1000.0 << 1.0 << QByteArray("<object folder=\"0\" file=\"0\" angle=\"80\"/>");
    QTest::newRow("alpha")
        << 0.0 << 0.0 << 0.0 << 0.25 << QByteArray("<object folder=\"0\" file=\"0\" a=\"0.25\"/>");
}

void TestProjectFile::keyValues()
{
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(double, angle);
    QFETCH(double, alpha);
    QFETCH(QByteArray, line);
    DisplayInfo info = spriteInfo(angle);
    info.x = x;
    info.y = y;
    info.alpha = alpha;
    SpriteProject project({info});
    const QByteArray text = writeXml(project.document);
    QCOMPARE(lineWith(text, "<object "), line);
}

void TestProjectFile::angleIsStoredBackNormalised()
{
    SpriteProject project({spriteInfo(-90.0)});
    writeXml(project.document);
    QCOMPARE(project.timeline->key(0)->info().angle, 270.0);
}

void TestProjectFile::spin_data()
{
    QTest::addColumn<double>("first");
    QTest::addColumn<double>("second");
    QTest::addColumn<QByteArray>("firstKey");
    QTest::addColumn<QByteArray>("secondKey");
    QTest::newRow("same angle") << 30.0 << 30.0 << QByteArray("<key id=\"0\" spin=\"0\">")
                                << QByteArray("<key id=\"1\" time=\"100\" spin=\"0\">");
    QTest::newRow("clockwise then back") << 10.0 << 50.0 << QByteArray("<key id=\"0\" spin=\"-1\">")
                                         << QByteArray("<key id=\"1\" time=\"100\">");
    QTest::newRow("shorter way over 0 is clockwise")
        << 350.0 << 20.0 << QByteArray("<key id=\"0\" spin=\"-1\">")
        << QByteArray("<key id=\"1\" time=\"100\">");
    QTest::newRow("shorter way back over 0") << 20.0 << 350.0 << QByteArray("<key id=\"0\">")
                                             << QByteArray("<key id=\"1\" time=\"100\" spin=\"-1\">");
    QTest::newRow("below the tolerance") << 10.0 << 10.000001
                                         << QByteArray("<key id=\"0\" spin=\"0\">")
                                         << QByteArray("<key id=\"1\" time=\"100\" spin=\"0\">");
}

void TestProjectFile::spin()
{
    QFETCH(double, first);
    QFETCH(double, second);
    QFETCH(QByteArray, firstKey);
    QFETCH(QByteArray, secondKey);
    SpriteProject project({spriteInfo(first), spriteInfo(second)});
    // Timeline keys only: mainline keys carry no spin.
    const QByteArray written = writeXml(project.document);
    const QByteArray text = written.mid(written.indexOf("<timeline"));
    QCOMPARE(lineWith(text, "<key id=\"0\""), firstKey);
    QCOMPARE(lineWith(text, "<key id=\"1\" time=\"100\""), secondKey);
    // A timeline with one key compares it with itself.
    SpriteProject single({spriteInfo(first)});
    const QByteArray singleText = writeXml(single.document);
    QCOMPARE(lineWith(singleText.mid(singleText.indexOf("<timeline")), "<key id=\"0\""),
             QByteArray("<key id=\"0\" spin=\"0\">"));
}

void TestProjectFile::animationAttributes()
{
    SpriteProject project({spriteInfo()});
    project.animation->setLoopingMode(Animation::NoLooping);
    project.animation->setLoopTo(0);
    QVERIFY(writeXml(project.document)
                .contains("<animation id=\"0\" name=\"a\" length=\"1000\" interval=\"100\" "
                          "looping=\"false\">"));
    project.animation->setLoopingMode(Animation::Looping);
    project.animation->setLoopTo(250);
    QVERIFY(writeXml(project.document)
                .contains("<animation id=\"0\" name=\"a\" length=\"1000\" interval=\"100\" "
                          "loop_to=\"250\">"));
    project.animation->setLoopingMode(Animation::PingPong);
    QVERIFY(writeXml(project.document).contains("looping=\"ping_pong\" loop_to=\"250\">"));
}

void TestProjectFile::pointsHaveNoObjInfo()
{
    RigxData document;
    auto *entity = new Entity(QStringLiteral("e"));
    document.appendEntity(entity);
    auto *point = new Object(QStringLiteral("p"), Object::Point);
    entity->appendObject(point);
    auto *animation = new Animation(QStringLiteral("a"), true);
    entity->appendAnimation(animation);
    auto *timeline = new Timeline(point, QStringLiteral("p"));
    animation->appendTimeline(timeline);
    DisplayInfo info;
    info.x = 3;
    timeline->appendTimelineKey(new TimelineKey(FileInfo(), info), true, false);
    animation->appendMainKeysForOrphanTimeKeys(false);

    const QByteArray text = writeXml(document);
    QVERIFY(!text.contains("<obj_info"));
    QVERIFY(text.contains("<timeline id=\"0\" obj=\"0\" name=\"p\" object_type=\"point\">"));

    // Reading it back rebuilds the point from its timeline.
    RigxData back;
    QVERIFY(readText(text, &back));
    QCOMPARE(back.entity(0)->objectCount(), 1);
    QVERIFY(back.entity(0)->object(0)->isPoint());
    QCOMPARE(back.entity(0)->animation(0)->timeline(0)->key(0)->info().x, 3.0);
    QCOMPARE(writeXml(back), text);
}

void TestProjectFile::extensionCaseIsIgnored()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("hero.RIGX"));
    QVERIFY(QFile::copy(testData("canonical.rigx"), path));
    TestHost host;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, path, &host));
    QCOMPARE(document.entityCount(), 2);
    QCOMPARE(ProjectFile::formFromPath(QStringLiteral("a.RigJ")), ProjectFile::Form::Json);
    QCOMPARE(ProjectFile::formFromPath(QStringLiteral("a.xml")), ProjectFile::Form::Unknown);
}

void TestProjectFile::errorLines_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("line");
    QTest::newRow("missing file") << "none.rigx" << QByteArray()
                                  << "Error: Cannot read file-%1: No such file or directory";
    QTest::newRow("broken xml")
        << "broken.rigx" << QByteArray("<?xml version=\"1.0\"?>\n<morvane_data>\n  <folder>\n</morvane_data>\n")
        << "Error: Failed to parse file %1: line 4, column 3: Start-end tags mismatch";
    // A project file never needs a DTD; refusing it keeps entity tricks out.
    QTest::newRow("document type")
        << "dtd.rigx"
        << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE m [<!ENTITY a \"aaaa\">]>"
                      "<morvane_data><entity name=\"&a;\"/></morvane_data>")
        << "Error: Failed to parse file %1: DTDs are not allowed in a Morvane file";
    QTest::newRow("wrong root") << "other.rigx" << QByteArray("<svg/>")
                                << "Error: Failed to parse file %1: Not a Morvane file";
    QTest::newRow("broken json") << "broken.rigj" << QByteArray("{\"entity\": [}")
                                 << "Error: Failed to parse file %1: object is missing after a comma at offset 13";
    QTest::newRow("json that is no project") << "other.rigj" << QByteArray("{\"a\": 1}")
                                             << "Error: Failed to parse file %1: Not a Morvane file";
    QTest::newRow("utf-16 json")
        << "wide.rigj" << QByteArray("\xff\xfe{\0\"\0e\0\"\0:\0 \0[\0]\0}\0", 20)
        << "Error: Failed to parse file %1: the file is not UTF-8 (it is UTF-16, little-endian)";
    // XML in UTF-16 with a mark or a declaration is read; without, nothing says what it is.
    QTest::newRow("utf-16 xml without byte order mark")
        << "wide.rigx" << QByteArray(" \0<\0m\0/\0>\0", 10)
        << "Error: Failed to parse file %1: the file is not UTF-8 (it looks like UTF-16, "
           "little-endian)";
    QTest::newRow("latin-1 json")
        << "latin.rigj" << QByteArray("{\"entity\": [{\"name\": \"h\xe4\"}]}")
        << "Error: Failed to parse file %1: the file is not UTF-8 (byte 0xe4 at offset 23 is "
           "not UTF-8)";
    QTest::newRow("script instead of json")
        << "script.rigj" << QByteArray("({entity: []})")
        << "Error: Failed to parse file %1: illegal value at offset 1";
}

void TestProjectFile::errorLines()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, line);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    if (!content.isEmpty())
        QVERIFY(writeFile(path, content));
    TestHost host;
    RigxData document;
    QString error;
    QVERIFY(!ProjectFile::open(&document, path, &host, &error));
    QCOMPARE(host.lines, QStringList{line.arg(path)});
    QCOMPARE(error, line.arg(path));
    QCOMPARE(host.suppressDepth, 0);
}

void TestProjectFile::specialFilesAreNotRead_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("reason");
    QTest::newRow("pipe") << "pipe" << "it is a pipe, not a regular file";
    QTest::newRow("folder") << "folder" << "it is a folder, not a regular file";
    QTest::newRow("link to a device") << "device" << "it is a device, not a regular file";
    // Opens, but fails at the first read: the process's own memory gives an I/O error there.
    QTest::newRow("read failure") << "memory"
                                  << "";
}

// A pipe under a project's name would make opening wait for a writer for ever. While the
// test runs, a thread keeps offering the pipe's other end, so that code which does open the
// pipe finishes (and fails the comparison) instead of hanging the suite.
void TestProjectFile::specialFilesAreNotRead()
{
    QFETCH(QString, kind);
    QFETCH(QString, reason);
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("special.rigx"));
    if (kind == QLatin1String("memory"))
        path = QStringLiteral("/proc/self/mem");
    if (kind == QLatin1String("memory") && !QFileInfo::exists(path))
        QSKIP("no /proc on this system");
    const QByteArray encoded = QFile::encodeName(path);
    if (kind == QLatin1String("pipe"))
        QCOMPARE(::mkfifo(encoded.constData(), 0600), 0);
    else if (kind == QLatin1String("folder"))
        QVERIFY(QDir().mkdir(path));
    else if (kind == QLatin1String("device"))
        QVERIFY(QFile::link(QStringLiteral("/dev/null"), path));
    std::atomic<bool> done = false;
    std::thread writer([&] {
        while (!done && kind == QLatin1String("pipe")) {
            const int fd = ::open(encoded.constData(), O_WRONLY | O_NONBLOCK);
            if (fd >= 0)
                ::close(fd);
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    TestHost host;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, testData("canonical.rigx"), &host));
    const QByteArray before = writeXml(document);
    QString error;
    const bool opened = ProjectFile::open(&document, path, &host, &error);
    done = true;
    writer.join();
    QVERIFY(!opened);
    if (reason.isEmpty())
        QVERIFY2(error.startsWith(QStringLiteral("Error: Cannot read file: ")), qPrintable(error));
    else
        QCOMPARE(error, QStringLiteral("Error: Cannot read file-%1: %2").arg(path, reason));
    QCOMPARE(host.lines, QStringList{error});
    QCOMPARE(writeXml(document), before);
}

void TestProjectFile::openReplacesOpenProject_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("secondName");
    QTest::newRow("xml over xml") << testData("canonical.rigx") << QStringLiteral("b.rigx");
    QTest::newRow("json over xml") << testData("canonical.rigx") << QStringLiteral("b.rigj");
    QTest::newRow("xml over json") << testData("canonical.rigj") << QStringLiteral("b.rigx");
}

// Opening into a document that holds a project replaces it in place: the same object, with
// exactly the new file's project, and addresses held across the open still resolve.
void TestProjectFile::openReplacesOpenProject()
{
    QFETCH(QString, first);
    QFETCH(QString, secondName);
    QTemporaryDir dir;
    const QString second = dir.filePath(secondName);
    TestHost host;
    {
        RigxData made;
        made.setFilePath(second);
        buildProject(made, {2, 3, 4, true});
        made.tagManager().appendTag(Tag(QStringLiteral("only in the second")));
        QVERIFY(ProjectFile::save(&made, second, {}, &host));
    }
    RigxData fresh;
    QVERIFY(ProjectFile::open(&fresh, second, &host));

    RigxData document;
    QVERIFY(ProjectFile::open(&document, first, &host));
    const QByteArray before = writeXml(document);
    Address held = document.entity(0)->animation(1)->address();
    QVERIFY(held.isValid());

    QStringList warnings;
    QVERIFY(ProjectFile::open(&document, second, &host, nullptr, &warnings));
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    QCOMPARE(document.filePath(), QFileInfo(second).absoluteFilePath());
    const QByteArray after = writeXml(document);
    QVERIFY(after != before);
    QCOMPARE(after, writeXml(fresh));
    QCOMPARE(document.tagManager().tagCount(), 1);
    QVERIFY(!held.isValid());
    QCOMPARE(held.animation(), document.entity(0)->animation(1));
    QVERIFY(host.lines.isEmpty());
}

void TestProjectFile::keysOutOfOrderLoadSorted_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("text");
    // Two timelines keyed at 300, 100, 0, 200 (x = time / 100); the mainline, when there
    // is one, lists the same times in another order and refers to keys by file position.
    QByteArray mainline = "<mainline>";
    const int order[] = {200, 0, 300, 100};
    const int filePosition[] = {3, 2, 0, 1}; // of 200, 0, 300, 100
    for (int i = 0; i < 4; ++i) {
        mainline += "<key time=\"" + QByteArray::number(order[i]) + "\">";
        for (int t = 0; t < 2; ++t)
            mainline += "<object_ref timeline=\"" + QByteArray::number(t) + "\" key=\""
                        + QByteArray::number(filePosition[i]) + "\" z_index=\""
                        + QByteArray::number(t) + "\"/>";
        mainline += "</key>";
    }
    mainline += "</mainline>";
    QByteArray timelines;
    for (int t = 0; t < 2; ++t) {
        timelines += "<timeline id=\"" + QByteArray::number(t) + "\" obj=\""
                     + QByteArray::number(t) + "\" object_type=\"point\">";
        for (int time : {300, 100, 0, 200})
            timelines += "<key time=\"" + QByteArray::number(time) + "\"><object x=\""
                         + QByteArray::number(time / 100) + "\"/></key>";
        timelines += "</timeline>";
    }
    const QByteArray head = "<morvane_data><entity name=\"e\"><animation name=\"a\" "
                            "length=\"400\">";
    const QByteArray tail = "</animation></entity></morvane_data>";
    QTest::newRow("xml with mainline") << "p.rigx" << head + mainline + timelines + tail;
    QTest::newRow("xml without mainline") << "p.rigx" << head + timelines + tail;

    QByteArray jsonMainline = "\"mainline\": {\"key\": [";
    for (int i = 0; i < 4; ++i) {
        jsonMainline += QByteArray(i ? ", " : "") + "{\"time\": " + QByteArray::number(order[i])
                        + ", \"object_ref\": [";
        for (int t = 0; t < 2; ++t)
            jsonMainline += QByteArray(t ? ", " : "") + "{\"timeline\": " + QByteArray::number(t)
                            + ", \"key\": " + QByteArray::number(filePosition[i])
                            + ", \"z_index\": " + QByteArray::number(t) + "}";
        jsonMainline += "]}";
    }
    jsonMainline += "]}, ";
    QByteArray jsonTimelines = "\"timeline\": [";
    for (int t = 0; t < 2; ++t) {
        jsonTimelines += QByteArray(t ? ", " : "") + "{\"id\": " + QByteArray::number(t)
                         + ", \"obj\": " + QByteArray::number(t)
                         + ", \"object_type\": \"point\", \"key\": [";
        bool firstKey = true;
        for (int time : {300, 100, 0, 200}) {
            jsonTimelines += QByteArray(firstKey ? "" : ", ") + "{\"time\": "
                             + QByteArray::number(time) + ", \"object\": {\"x\": "
                             + QByteArray::number(time / 100) + "}}";
            firstKey = false;
        }
        jsonTimelines += "]}";
    }
    jsonTimelines += "]";
    const QByteArray jsonHead = "{\"rigj_version\": \"1.0\", \"entity\": [{\"name\": \"e\", "
                                "\"animation\": [{\"name\": \"a\", \"length\": 400, ";
    const QByteArray jsonTail = "}]}]}";
    QTest::newRow("json with mainline")
        << "p.rigj" << jsonHead + jsonMainline + jsonTimelines + jsonTail;
    QTest::newRow("json without mainline") << "p.rigj" << jsonHead + jsonTimelines + jsonTail;
}

// Keys listed in any order load in time order, and each mainline key refers to the keys
// at its own time.
void TestProjectFile::keysOutOfOrderLoadSorted()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, text);
    QTemporaryDir dir;
    const QString path = dir.filePath(name);
    QVERIFY(writeFile(path, text));
    TestHost host;
    RigxData document;
    QStringList warnings;
    QVERIFY2(ProjectFile::open(&document, path, &host, nullptr, &warnings),
             qPrintable(host.lines.join(QLatin1Char('\n'))));
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    const Animation *animation = document.entity(0)->animation(0);
    QCOMPARE(animation->timelineCount(), 2);
    QCOMPARE(animation->mainlineKeyCount(), 4);
    for (int i = 0; i < 4; ++i) {
        const MainlineKey *mainKey = animation->mainlineKey(i);
        QCOMPARE(mainKey->currentTime(), i * 100);
        QCOMPARE(mainKey->zRefCount(), 2);
        for (int t = 0; t < 2; ++t) {
            const TimelineKey *key = animation->timeline(t)->key(i);
            QCOMPARE(key->time(false), i * 100);
            QCOMPARE(key->info().x, double(i));
            QCOMPARE(key->mainKey(), mainKey);
            QCOMPARE(mainKey->zRef(t)->key(), key);
        }
    }
    // Saved, the keys come out in time order.
    const QByteArray saved = writeXml(document);
    QVERIFY(saved.indexOf("time=\"100\"") < saved.indexOf("time=\"300\""));
}

void TestProjectFile::readerWarnings_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QStringList>("expected");
    const QByteArray xmlHead = "<morvane_data><folder id=\"0\"><file id=\"0\" name=\"a.png\"/>"
                               "</folder><entity name=\"e\"><obj_info name=\"b\" type=\"bone\"/>"
                               "<obj_info name=\"s\" type=\"sprite\"/><animation name=\"a\">";
    const QByteArray xmlTail = "</animation></entity></morvane_data>";
    const QByteArray jsonHead = "{\"folder\": [{\"id\": 0, \"file\": [{\"id\": 0, \"name\": "
                                "\"a.png\"}]}], \"entity\": [{\"name\": \"e\", \"obj_info\": "
                                "[{\"name\": \"b\", \"type\": \"bone\"}, {\"name\": \"s\", "
                                "\"type\": \"sprite\"}], \"animation\": [{\"name\": \"a\", ";
    const QByteArray jsonTail = "}]}]}";
    const QByteArray xmlBone = "<timeline id=\"0\" obj=\"0\" object_type=\"bone\"><key><bone/>"
                               "</key></timeline>";
    const QByteArray jsonBone = "{\"id\": 0, \"obj\": 0, \"object_type\": \"bone\", \"key\": "
                                "[{\"bone\": {}}]}";

    QTest::newRow("number out of range")
        << xmlHead + "<timeline id=\"0\" obj=\"1\"><key><object folder=\"0\" file=\"0\" "
                     "x=\"1e400\" y=\"-1e400\"/></key></timeline>" + xmlTail
        << jsonHead + "\"timeline\": [{\"id\": 0, \"obj\": 1, \"key\": [{\"object\": "
                      "{\"folder\": 0, \"file\": 0, \"x\": 1e400, \"y\": -1e400}}]}]" + jsonTail
        << QStringList{
               QStringLiteral("\"x\" of \"object\" holds \"1e400\", which is no number in range; "
                              "it is read as absent"),
               QStringLiteral("\"y\" of \"object\" holds \"-1e400\", which is no number in "
                              "range; it is read as absent")};
    QTest::newRow("missing file")
        << xmlHead + "<timeline id=\"0\" obj=\"1\"><key><object folder=\"3\" file=\"9\"/></key>"
                     "</timeline>" + xmlTail
        << jsonHead + "\"timeline\": [{\"id\": 0, \"obj\": 1, \"key\": [{\"object\": "
                      "{\"folder\": 3, \"file\": 9}}]}]" + jsonTail
        << QStringList{QStringLiteral("No file with folder 3 and file 9; the reference is dropped")};
    QTest::newRow("missing key and parent")
        << xmlHead + "<mainline><key><bone_ref id=\"0\" parent=\"7\" timeline=\"0\" key=\"0\"/>"
                     "<bone_ref id=\"1\" timeline=\"0\" key=\"4\"/></key></mainline>" + xmlBone
               + xmlTail
        << jsonHead + "\"mainline\": {\"key\": [{\"bone_ref\": [{\"id\": 0, \"parent\": 7, "
                      "\"timeline\": 0, \"key\": 0}, {\"id\": 1, \"timeline\": 0, \"key\": 4}]}]}, "
                      "\"timeline\": [" + jsonBone + "]" + jsonTail
        << QStringList{
               QStringLiteral("A reference in animation \"a\" names timeline 0 key 4, which does "
                              "not exist; it is dropped"),
               QStringLiteral("A reference in animation \"a\" at 0 ms names parent bone 7, which "
                              "does not exist; it keeps no parent")};
    QTest::newRow("clamped values")
        << xmlHead.left(xmlHead.size() - 1) + " length=\"-5\">"
               + "<mainline><key time=\"-20\"/></mainline><timeline id=\"0\" obj=\"1\">"
                 "<key time=\"-3\"><object folder=\"0\" file=\"0\" r=\"2\"/></key></timeline>"
               + xmlTail
        << jsonHead + "\"length\": -5, \"mainline\": {\"key\": [{\"time\": -20}]}, "
                      "\"timeline\": [{\"id\": 0, \"obj\": 1, \"key\": [{\"time\": -3, "
                      "\"object\": {\"folder\": 0, \"file\": 0, \"r\": 2}}]}]" + jsonTail
        << QStringList{
               QStringLiteral("The length of animation \"a\" is -5 ms; it is read as 0"),
               QStringLiteral("A key time in timeline \"s\" of animation \"a\" is -3 ms; it is "
                              "read as 0"),
               QStringLiteral("Colour channel \"r\" 2 of a key is outside 0..1; it is clamped "
                              "to 1"),
               QStringLiteral("A mainline key time of animation \"a\" is -20 ms; it is read as 0")};
    QTest::newRow("references of the wrong kind")
        << xmlHead + "<mainline><key><object_ref timeline=\"0\" key=\"0\"/><bone_ref "
                     "timeline=\"1\" key=\"0\"/></key></mainline>" + xmlBone
               + "<timeline id=\"1\" obj=\"1\"><key><object folder=\"0\" file=\"0\"/></key>"
                 "</timeline>" + xmlTail
        << jsonHead + "\"mainline\": {\"key\": [{\"object_ref\": [{\"timeline\": 0, \"key\": 0}], "
                      "\"bone_ref\": [{\"timeline\": 1, \"key\": 0}]}]}, \"timeline\": ["
               + jsonBone + ", {\"id\": 1, \"obj\": 1, \"key\": [{\"object\": {\"folder\": 0, "
                            "\"file\": 0}}]}]" + jsonTail
        << QStringList{
               QStringLiteral("A bone reference in animation \"a\" at 0 ms names timeline \"s\", "
                              "which is no bone; it is dropped"),
               QStringLiteral("An object reference in animation \"a\" at 0 ms names bone "
                              "timeline \"b\"; it is dropped")};
}

// Both forms report every fix-up that drops or changes data, with the same lines.
void TestProjectFile::readerWarnings()
{
    QFETCH(QByteArray, xml);
    QFETCH(QByteArray, json);
    QFETCH(QStringList, expected);
    RigxData fromXml;
    RigxData fromJson;
    QStringList xmlWarnings;
    QStringList jsonWarnings;
    QVERIFY(readText(xml, &fromXml, &xmlWarnings));
    QVERIFY(readText(json, &fromJson, &jsonWarnings));
    QCOMPARE(xmlWarnings, expected);
    QCOMPARE(jsonWarnings, expected);
    QCOMPARE(writeXml(fromJson), writeXml(fromXml));
}

void TestProjectFile::repeatedObjectNamesAreMadeUnique()
{
    RigxData document;
    QVERIFY(readText("<morvane_data><entity name=\"e\"><obj_info name=\"arm\" type=\"bone\"/>"
                     "<obj_info name=\"arm\" type=\"box\"/><obj_info name=\"leg\" "
                     "type=\"bone\"/><animation><timeline obj=\"7\" name=\"arm\" "
                     "object_type=\"point\"><key/></timeline></animation></entity>"
                     "</morvane_data>",
                     &document));
    const Entity *entity = document.entity(0);
    QCOMPARE(entity->objectNames(), (QStringList{QStringLiteral("arm"), QStringLiteral("arm_000"),
                                                 QStringLiteral("leg"), QStringLiteral("arm_001")}));
}

void TestProjectFile::brokenAnimation_data()
{
    QTest::addColumn<bool>("startEmpty");
    QTest::newRow("into an empty document") << true;
    QTest::newRow("into an open project") << false;
}

// A fault inside the second animation: the message names the place in the file, and the
// document is what it was before, empty or holding a project.
void TestProjectFile::brokenAnimation()
{
    QFETCH(bool, startEmpty);
    QByteArray text = readAll(testData("canonical.rigx"));
    const qsizetype spin = text.indexOf("<animation id=\"1\" name=\"spin\"");
    QVERIFY(spin > 0);
    const qsizetype mainline = text.indexOf("<mainline>", spin);
    text.replace(mainline, 10, "<mainline x=>");
    const QByteArray before = text.left(mainline);
    const int line = int(before.count('\n')) + 1;
    // At the '>' where the attribute's value should start.
    const int column = int(mainline - before.lastIndexOf('\n')) + 12;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("broken.rigx"));
    QVERIFY(writeFile(path, text));

    TestHost host;
    RigxData document;
    document.setFilePath(dir.filePath(QStringLiteral("earlier.rigx")));
    QByteArray previous;
    if (!startEmpty) {
        QVERIFY(ProjectFile::open(&document, testData("canonical.rigx"), &host));
        previous = writeXml(document);
    }
    const QString previousPath = document.filePath();
    QString error;
    QVERIFY(!ProjectFile::open(&document, path, &host, &error));
    QCOMPARE(error, QStringLiteral("Error: Failed to parse file %1: line %2, column %3: "
                                   "Error parsing element attribute")
                        .arg(path)
                        .arg(line)
                        .arg(column));
    QCOMPARE(document.filePath(), previousPath);
    if (startEmpty)
        QVERIFY(document.isEmpty());
    else
        QCOMPARE(writeXml(document), previous);
    QCOMPARE(host.suppressDepth, 0);
}

void TestProjectFile::failedSaveKeepsOldFile()
{
    QTemporaryDir dir;
    TestHost host;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, testData("canonical.rigx"), &host));
    // An unknown extension is refused before anything is written.
    const QString plain = dir.filePath(QStringLiteral("old.txt"));
    QVERIFY(writeFile(plain, "old"));
    QVERIFY(!ProjectFile::save(&document, plain, {}, &host));
    QCOMPARE(readAll(plain), QByteArray("old"));
    QCOMPARE(host.suppressDepth, 0);

    if (::geteuid() == 0)
        QSKIP("permissions do not bind the superuser");
    const QString folder = dir.filePath(QStringLiteral("locked"));
    QVERIFY(QDir().mkpath(folder));
    const QString target = folder + QStringLiteral("/p.rigx");
    QVERIFY(writeFile(target, "old content"));
    QVERIFY(QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    QVERIFY(!ProjectFile::save(&document, target, {}, &host));
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                      | QFileDevice::ExeOwner);
    QCOMPARE(readAll(target), QByteArray("old content"));
}

void TestProjectFile::hostileInput_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("entities");
    QTest::addColumn<bool>("warns");
    const QByteArray head = "<morvane_data><folder id=\"0\"><file id=\"0\" name=\"a.png\"/></folder>";
    QTest::newRow("dangling timeline and key")
        << head + "<entity name=\"e\"><obj_info name=\"s\" type=\"sprite\"/><animation name=\"a\">"
                  "<mainline><key><object_ref timeline=\"7\" key=\"0\"/><object_ref timeline=\"0\" "
                  "key=\"9\"/></key></mainline><timeline id=\"0\" obj=\"0\"><key><object folder=\"0\" "
                  "file=\"0\"/></key></timeline></animation></entity></morvane_data>"
        << 1 << true;
    QTest::newRow("dangling file") << head + "<entity name=\"e\"><obj_info name=\"s\" type=\"sprite\"/>"
                                             "<animation><mainline><key/></mainline><timeline obj=\"0\">"
                                             "<key><object folder=\"3\" file=\"3\"/></key></timeline>"
                                             "</animation></entity></morvane_data>"
                                   << 1 << true;
    QTest::newRow("bone parent cycle")
        << head + "<entity name=\"e\"><obj_info name=\"b\" type=\"bone\"/><obj_info name=\"c\" "
                  "type=\"bone\"/><animation><mainline><key><bone_ref id=\"0\" parent=\"1\" "
                  "timeline=\"0\" key=\"0\"/><bone_ref id=\"1\" parent=\"0\" timeline=\"1\" key=\"0\"/>"
                  "</key></mainline><timeline id=\"0\" obj=\"0\" object_type=\"bone\"><key><bone/>"
                  "</key></timeline><timeline id=\"1\" obj=\"1\" object_type=\"bone\"><key><bone/>"
                  "</key></timeline></animation></entity></morvane_data>"
        << 1 << true;
    QTest::newRow("non-finite and junk numbers")
        << head +
               "<entity name=\"e\"><obj_info name=\"s\" type=\"sprite\"/><animation length=\"nan\" "
               "interval=\"1e999\"><mainline><key time=\"-5\"/></mainline><timeline obj=\"0\">"
               "<key time=\"inf\"><object folder=\"0\" file=\"0\" x=\"nan\" y=\"1e400\" "
               "angle=\"-inf\" "
               "scale_x=\"0x10\"/></key></timeline></animation></entity></morvane_data>"
        << 1 << true;
    QString deep;
    for (int i = 0; i < 20000; ++i)
        deep += QStringLiteral("<x>");
    QTest::newRow("deep unknown nesting")
        << QByteArray("<morvane_data><entity name=\"e\"/>" + deep.toLatin1() + "</morvane_data>") << 1
        << false;
    // Read timelines are freed as the reader goes; a deep subtree must not be freed by
    // recursion.
    QString deepInTimeline;
    for (int i = 0; i < 200000; ++i)
        deepInTimeline += QStringLiteral("<x>");
    QTest::newRow("deep nesting inside a timeline")
        << QByteArray("<morvane_data><entity name=\"e\"><obj_info name=\"s\" type=\"sprite\"/>"
                      "<animation><mainline><key/></mainline><timeline obj=\"0\"><key>"
                      + deepInTimeline.toLatin1() + "</key></timeline></animation></entity>"
                      "</morvane_data>")
        << 1 << false;
    QTest::newRow("unknown object types") << QByteArray("<morvane_data><entity><obj_info type=\"dragon\"/>"
                                                        "<animation><timeline object_type=\"dragon\">"
                                                        "<key/></timeline></animation></entity>"
                                                        "</morvane_data>")
                                          << 1 << true;
}

void TestProjectFile::hostileInput()
{
    QFETCH(QByteArray, text);
    QFETCH(int, entities);
    QFETCH(bool, warns);
    RigxData document;
    QStringList warnings;
    QString error;
    if (!readText(text, &document, &warnings, &error)) {
        // Refusing is fine as long as it says why.
        QVERIFY(!error.isEmpty());
        return;
    }
    QCOMPARE(document.entityCount(), entities);
    QCOMPARE(!warnings.isEmpty(), warns);
    // Whatever was read can be written and read again.
    const QByteArray saved = writeXml(document);
    QCOMPARE(rewrittenXml(saved), saved);
}

// Compact JSON holds what the pretty fixture holds, in the general encoder's one-line layout.
void TestProjectFile::jsonLayout()
{
    QTemporaryDir dir;
    TestHost host;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, testData("canonical.rigx"), &host));
    ProjectSaveOptions compact;
    compact.prettifyJson = false;
    const QString path = dir.filePath(QStringLiteral("c.rigj"));
    QVERIFY(ProjectFile::save(&document, path, compact, &host));
    const QVariant pretty =
        QJsonDocument::fromJson(readAll(testData("canonical.rigj"))).toVariant();
    QCOMPARE(readAll(path), Json::encodeToUtf8(pretty.toMap(), Json::Format::Compact));
}

void TestProjectFile::inlineMainlineForm()
{
    const QByteArray text =
        "<morvane_data><folder id=\"0\"><file id=\"0\" name=\"a.png\"/></folder>"
        "<entity name=\"old\"><animation name=\"a\" length=\"500\"><mainline>"
        "<key><bone x=\"5\" angle=\"270\"/><object folder=\"0\" file=\"0\" parent=\"0\" "
        "x=\"1\"/><object name=\"marker\" object_type=\"point\" y=\"2\"/></key>"
        "<key time=\"250\"><object folder=\"0\" file=\"0\" x=\"3\"/></key>"
        "</mainline></animation></entity></morvane_data>";
    RigxData document;
    QStringList warnings;
    QVERIFY(readText(text, &document, &warnings));
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    const Entity *entity = document.entity(0);
    QCOMPARE(entity->objectCount(), 4);
    for (int o = 0; o < entity->objectCount(); ++o)
        QVERIFY2(!entity->object(o)->name().startsWith(QLatin1String("__")),
                 qPrintable(entity->object(o)->name()));
    QCOMPARE(entity->object(2)->name(), QStringLiteral("marker"));
    QVERIFY(entity->object(0)->isBone());
    QVERIFY(entity->object(2)->isPoint());
    const Animation *animation = entity->animation(0);
    QCOMPARE(animation->timelineCount(), 4);
    QCOMPARE(animation->timeline(0)->key(0)->info().angle, 90.0);
    const MainlineKey *first = animation->mainlineKey(0);
    QCOMPARE(first->boneRefCount(), 1);
    QCOMPARE(first->zRefCount(), 2);
    QCOMPARE(first->zRef(0)->parentRef(), first->boneRef(0));
    QCOMPARE(first->zRef(0)->key()->fileInfo().file()->name(), QStringLiteral("a.png"));
    QCOMPARE(animation->timeline(3)->key(0)->time(true), 250);
    QCOMPARE(animation->timeline(3)->name(), entity->object(3)->name());
    // It saves in the current form and reads back the same.
    const QByteArray saved = writeXml(document);
    QVERIFY(!saved.contains("__object"));
    QCOMPARE(rewrittenXml(saved), saved);
}

QTEST_GUILESS_MAIN(TestProjectFile)
#include "tst_projectfile.moc"
