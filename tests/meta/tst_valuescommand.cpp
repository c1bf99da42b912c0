// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clirunner.h"
#include "io/projectfile.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;

class TestValuesCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void values_data();
    void values();
    void objects();
    void bothFormsAgree();
    void exitStatus_data();
    void exitStatus();

private:
    QTemporaryDir mDir;
    QString mXml;
    QString mJson;
};

namespace {

using Run = Morvane::Testing::CliRun;

// The values command with no display, as on a build server.
Run runCli(const QStringList &arguments)
{
    return Morvane::Testing::runCli(QStringList{QStringLiteral("values")} + arguments);
}

void addAnimation(Entity *entity, Object *object, const QString &name, bool looping)
{
    auto *animation = new Animation(name, true);
    animation->setLoopingMode(looping ? Animation::Looping : Animation::NoLooping);
    entity->appendAnimation(animation);
    auto *timeline = new Timeline(object, object->name());
    animation->appendTimeline(timeline);
    auto *key = new TimelineKey;
    key->setCachedTime(0);
    timeline->appendTimelineKey(key, true, false);
    animation->appendMainKeysForOrphanTimeKeys(false);

    ValueLineHolder &own = animation->ownLineHolder();
    ValLine *hp = own.lineForEditing({VarType::Int, 0});
    hp->setKey(std::make_unique<IntKey>(0, 0));
    hp->setKey(std::make_unique<IntKey>(100, 10));
    ValLine *mood = own.lineForEditing({VarType::String, 2});
    mood->setKey(std::make_unique<StringKey>(200, QStringLiteral("angry")));
    own.tagLine().setKey(std::make_unique<TagKey>(500, TagState({2, 0})));

    ValueLineHolder *stepLines = animation->objectLineHolder(0, true);
    ValLine *volume = stepLines->lineForEditing({VarType::Float, 0});
    volume->setKey(std::make_unique<FloatKey>(100, 0.0));
    volume->setKey(std::make_unique<FloatKey>(900, 10.0));
    stepLines->tagLine().setKey(std::make_unique<TagKey>(0, TagState({1})));
}

} // namespace

void TestValuesCommand::initTestCase()
{
    QVERIFY(mDir.isValid());
    Tag::currentUniqueId = 0; // the fixture names tags 0, 1, 2 by uid
    RigxData doc;
    QCOMPARE(doc.tagManager().addTag(QStringLiteral("jump"), nullptr), 0);
    QCOMPARE(doc.tagManager().addTag(QStringLiteral("land"), nullptr), 1);
    QCOMPARE(doc.tagManager().addTag(QStringLiteral("air"), nullptr), 2);

    auto *entity = new Entity(QStringLiteral("hero"));
    doc.appendEntity(entity);
    auto *step = new Object(QStringLiteral("step"), Object::Event);
    entity->appendObject(step);
    auto *plain = new Object(QStringLiteral("plain"), Object::Bone);
    entity->appendObject(plain);
    Entity *const noOwner = nullptr;
    Object *const noObject = nullptr;
    ValInfoCollection &vars = entity->valInfoCollection();
    vars.addValInfo(QStringLiteral("hp"), 7, VarType::Int, noOwner);
    vars.addValInfo(QStringLiteral("speed"), 1.5, VarType::Float, noOwner);
    vars.addValInfo(QStringLiteral("mood"), QStringLiteral("calm"), VarType::String, noOwner);
    step->valInfoCollection().addValInfo(QStringLiteral("volume"), 0.5, VarType::Float, noObject);

    addAnimation(entity, step, QStringLiteral("walk"), true);
    addAnimation(entity, step, QStringLiteral("idle"), false);

    auto *other = new Entity(QStringLiteral("prop"));
    doc.appendEntity(other);
    other->appendAnimation(new Animation(QStringLiteral("still"), true));

    mXml = mDir.filePath(QStringLiteral("project.rigx"));
    mJson = mDir.filePath(QStringLiteral("project.rigj"));
    QString error;
    QVERIFY2(ProjectFile::save(&doc, mXml, ProjectSaveOptions(), nullptr, &error),
             qPrintable(error));
    QVERIFY2(ProjectFile::save(&doc, mJson, ProjectSaveOptions(), nullptr, &error),
             qPrintable(error));
}

void TestValuesCommand::values_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("animation");
    QTest::addColumn<int>("hp");
    QTest::addColumn<QString>("mood");
    QTest::addColumn<QStringList>("tags");

    // Looping "walk": the int blend wraps back toward 0 after 100, the string
    // and the tags wrap from their last key before their first.
    QTest::newRow("walk at 25") << QStringList{QStringLiteral("--time"), QStringLiteral("25")}
                                << "walk" << 2 << "angry"
                                << QStringList{QStringLiteral("jump"), QStringLiteral("air")};
    QTest::newRow("walk at 99") << QStringList{QStringLiteral("--time"), QStringLiteral("99")}
                                << "walk" << 9 << "angry"
                                << QStringList{QStringLiteral("jump"), QStringLiteral("air")};
    QTest::newRow("walk past length: int default")
        << QStringList{QStringLiteral("--time"), QStringLiteral("1200")} << "walk" << 7 << "angry"
        << QStringList{QStringLiteral("jump"), QStringLiteral("air")};
    QTest::newRow("idle by name before first keys")
        << QStringList{QStringLiteral("--animation"), QStringLiteral("idle"),
                       QStringLiteral("--time"), QStringLiteral("150")}
        << "idle" << 10 << "calm" << QStringList{};
    QTest::newRow("idle by index and entity by name")
        << QStringList{QStringLiteral("--entity"),    QStringLiteral("hero"),
                       QStringLiteral("--animation"), QStringLiteral("1"),
                       QStringLiteral("--time"),      QStringLiteral("600")}
        << "idle" << 10 << "angry" << QStringList{QStringLiteral("jump"), QStringLiteral("air")};
}

void TestValuesCommand::values()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, animation);
    QFETCH(int, hp);
    QFETCH(QString, mood);
    QFETCH(QStringList, tags);
    const Run run = runCli(QStringList{mXml} + arguments);
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QJsonObject root = QJsonDocument::fromJson(run.out).object();
    QCOMPARE(root.value(QStringLiteral("entity")).toString(), QStringLiteral("hero"));
    QCOMPARE(root.value(QStringLiteral("animation")).toString(), animation);
    QCOMPARE(root.value(QStringLiteral("time")).toInt(), arguments.last().toInt());
    const QJsonObject variables = root.value(QStringLiteral("variables")).toObject();
    QCOMPARE(variables.size(), 3);
    QCOMPARE(variables.value(QStringLiteral("hp")).toInt(-1), hp);
    QCOMPARE(variables.value(QStringLiteral("speed")).toDouble(), 1.5);
    QCOMPARE(variables.value(QStringLiteral("mood")).toString(), mood);
    QStringList found;
    for (const QJsonValue &tag : root.value(QStringLiteral("tags")).toArray())
        found.append(tag.toString());
    QCOMPARE(found, tags);
}

void TestValuesCommand::objects()
{
    const Run run = runCli({mXml, QStringLiteral("--time"), QStringLiteral("950")});
    QCOMPARE(run.exitCode, 0);
    const QJsonObject objects =
        QJsonDocument::fromJson(run.out).object().value(QStringLiteral("objects")).toObject();
    // The bone declares nothing and has no tags: not listed.
    QCOMPARE(objects.keys(), QStringList{QStringLiteral("step")});
    const QJsonObject step = objects.value(QStringLiteral("step")).toObject();
    // Float keys 0 at 100 and 10 at 900 in a looping 1000 ms animation: 7.5 at 950.
    QCOMPARE(step.value(QStringLiteral("variables"))
                 .toObject()
                 .value(QStringLiteral("volume"))
                 .toDouble(),
             7.5);
    QCOMPARE(step.value(QStringLiteral("tags")).toArray(), QJsonArray{QStringLiteral("land")});

    // An entity without anything declared gives empty lists.
    const Run prop = runCli({mXml, QStringLiteral("--entity"), QStringLiteral("1"),
                             QStringLiteral("--time"), QStringLiteral("0")});
    QCOMPARE(prop.exitCode, 0);
    const QJsonObject root = QJsonDocument::fromJson(prop.out).object();
    QCOMPARE(root.value(QStringLiteral("entity")).toString(), QStringLiteral("prop"));
    QVERIFY(root.value(QStringLiteral("variables")).toObject().isEmpty());
    QVERIFY(root.value(QStringLiteral("tags")).toArray().isEmpty());
    QVERIFY(root.value(QStringLiteral("objects")).toObject().isEmpty());
}

void TestValuesCommand::bothFormsAgree()
{
    for (const char *time : {"0", "333", "950"}) {
        const QStringList arguments{QStringLiteral("--time"), QString::fromLatin1(time)};
        const Run xml = runCli(QStringList{mXml} + arguments);
        const Run json = runCli(QStringList{mJson} + arguments);
        QCOMPARE(xml.exitCode, 0);
        QCOMPARE(json.exitCode, 0);
        QCOMPARE(json.out, xml.out);
    }
}

void TestValuesCommand::exitStatus_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("no time") << QStringList{QStringLiteral("@XML")} << 1;
    QTest::newRow("time not a number")
        << QStringList{QStringLiteral("@XML"), QStringLiteral("--time"), QStringLiteral("soon")}
        << 1;
    QTest::newRow("time without value")
        << QStringList{QStringLiteral("@XML"), QStringLiteral("--time")} << 1;
    QTest::newRow("unknown option")
        << QStringList{QStringLiteral("@XML"), QStringLiteral("--frame"), QStringLiteral("3")} << 1;
    QTest::newRow("unknown entity")
        << QStringList{QStringLiteral("@XML"), QStringLiteral("--entity"),
                       QStringLiteral("villain"), QStringLiteral("--time"), QStringLiteral("0")}
        << 1;
    QTest::newRow("entity index out of range")
        << QStringList{QStringLiteral("@XML"), QStringLiteral("--entity"), QStringLiteral("2"),
                       QStringLiteral("--time"), QStringLiteral("0")}
        << 1;
    QTest::newRow("unknown animation")
        << QStringList{QStringLiteral("@XML"), QStringLiteral("--animation"), QStringLiteral("run"),
                       QStringLiteral("--time"), QStringLiteral("0")}
        << 1;
    QTest::newRow("missing file") << QStringList{QStringLiteral("/nonexistent/x.rigx"),
                                                 QStringLiteral("--time"), QStringLiteral("0")}
                                  << 2;
    QTest::newRow("negative time is fine")
        << QStringList{QStringLiteral("@XML"), QStringLiteral("--time"), QStringLiteral("-5")} << 0;
}

void TestValuesCommand::exitStatus()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    arguments.replaceInStrings(QStringLiteral("@XML"), mXml);
    const Run run = runCli(arguments);
    QCOMPARE(run.exitCode, exitCode);
    if (exitCode != 0) {
        QVERIFY(run.out.isEmpty());
        QVERIFY(!run.err.isEmpty());
    }
}

QTEST_GUILESS_MAIN(TestValuesCommand)
#include "tst_valuescommand.moc"
