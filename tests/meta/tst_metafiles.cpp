// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
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
#include "projecttext.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;
using namespace Morvane::Testing;

class TestMetaFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void golden_data();
    void golden();
    void danglingIdsAreDropped_data();
    void danglingIdsAreDropped();
    void hostileJson_data();
    void hostileJson();
    void removedTagIsNotWritten();
    void openingReplacesTags();
    void mergeBringsTagsAlong();
};

namespace {

enum Form { Xml, CompactXml, Json };

QByteArray write(RigxData &document, Form form)
{
    return written(document, form == Json, form != CompactXml);
}

QByteArray readGolden(const QString &name)
{
    return readAll(QStringLiteral(MORVANE_TEST_DATA_DIR "/meta/") + name);
}

void addKeys(Animation *animation, Timeline *timeline, const QList<int> &times)
{
    for (int time : times) {
        auto *key = new TimelineKey;
        key->setCachedTime(time);
        timeline->appendTimelineKey(key, true, false);
    }
    animation->appendMainKeysForOrphanTimeKeys(false);
}

// An entity with declarations on itself, a sprite and an event, three tags,
// and keyed lines for the entity, the sprite and the event.
struct Project
{
    QUndoStack stack;
    RigxData doc{&stack};
    Entity *entity = nullptr;
    Object *arm = nullptr;
    Object *step = nullptr;
    Animation *animation = nullptr;
    int jump = -1;
    int land = -1;
    int hidden = -1;

    Project()
    {
        TagManager &tags = doc.tagManager();
        jump = tags.addTag(QStringLiteral("jump"), nullptr);
        land = tags.addTag(QStringLiteral("land"), nullptr);
        hidden = tags.addTag(QStringLiteral("hidden <&\">"), nullptr);

        entity = new Entity(QStringLiteral("hero"));
        doc.appendEntity(entity);
        arm = new Object(QStringLiteral("arm"), Object::Sprite);
        entity->appendObject(arm);
        step = new Object(QStringLiteral("step"), Object::Event);
        entity->appendObject(step);
        animation = new Animation(QStringLiteral("walk"), true);
        entity->appendAnimation(animation);
        auto *armLine = new Timeline(arm, QStringLiteral("arm"));
        animation->appendTimeline(armLine);
        addKeys(animation, armLine, {0, 500});
        auto *stepLine = new Timeline(step, QStringLiteral("step"));
        animation->appendTimeline(stepLine);
        addKeys(animation, stepLine, {250});

        // Built without history: the tests count the steps of their own edits.
        Entity *const noOwner = nullptr;
        ValInfoCollection &vars = entity->valInfoCollection();
        vars.addValInfo(QStringLiteral("hp"), 3, VarType::Int, noOwner);
        vars.addValInfo(QStringLiteral("speed"), 1.5, VarType::Float, noOwner);
        vars.addValInfo(QStringLiteral("mood"), QStringLiteral("calm"), VarType::String, noOwner);
        arm->valInfoCollection().addValInfo(QStringLiteral("bend"), 0.25, VarType::Float, noOwner);
        step->valInfoCollection().addValInfo(QStringLiteral("sound"), QStringLiteral("tap"),
                                             VarType::String, noOwner);

        ValueLineHolder &own = animation->ownLineHolder();
        ValLine *hp = own.lineForEditing({VarType::Int, 0});
        hp->setKey(std::make_unique<IntKey>(0, 0));
        hp->setKey(std::make_unique<IntKey>(100, 10));
        hp->key(0)->setCurve(TweenInfo(0.25));
        ValLine *mood = own.lineForEditing({VarType::String, 2});
        mood->setKey(std::make_unique<StringKey>(200, QStringLiteral("angry \"really\"")));
        own.tagLine().setKey(std::make_unique<TagKey>(0, TagState({jump})));
        own.tagLine().setKey(std::make_unique<TagKey>(400, TagState({land, hidden})));
        own.tagLine().setKey(std::make_unique<TagKey>(800, TagState()));

        ValueLineHolder *armLines = animation->objectLineHolder(0, true);
        ValLine *bend = armLines->lineForEditing({VarType::Float, 0});
        bend->setKey(std::make_unique<FloatKey>(0, -0.5));
        bend->setKey(std::make_unique<FloatKey>(500, 2.125));
        bend->key(1)->setCurve(TweenInfo::instantInfo());

        ValueLineHolder *stepLines = animation->objectLineHolder(1, true);
        stepLines->tagLine().setKey(std::make_unique<TagKey>(250, TagState({land})));
        stepLines->lineForEditing({VarType::String, 0})
            ->setKey(std::make_unique<StringKey>(250, QStringLiteral("thud")));
    }
};

QByteArray lineWith(const QByteArray &text, const QByteArray &needle)
{
    for (const QByteArray &line : text.split('\n')) {
        if (line.contains(needle))
            return line.trimmed();
    }
    return QByteArray();
}

} // namespace

void TestMetaFiles::golden_data()
{
    QTest::addColumn<QString>("source"); // empty: the project built in code
    QTest::addColumn<int>("form");
    QTest::addColumn<QString>("expected");

    // One project with declarations on an entity, a sprite and an event, tags
    // (one with characters that need escaping), and int, float, string and tag
    // lines with eased and instant keys, in both forms and compact XML.
    const QString xml = QStringLiteral("meta.rigx");
    const QString compact = QStringLiteral("meta-compact.rigx");
    const QString json = QStringLiteral("meta.rigj");
    QTest::newRow("built, xml") << QString() << int(Xml) << xml;
    QTest::newRow("built, compact xml") << QString() << int(CompactXml) << compact;
    QTest::newRow("built, json") << QString() << int(Json) << json;
    QTest::newRow("xml") << xml << int(Xml) << xml;
    QTest::newRow("compact xml") << compact << int(CompactXml) << compact;
    QTest::newRow("json") << json << int(Json) << json;
    QTest::newRow("xml to json") << xml << int(Json) << json;
    QTest::newRow("json to xml") << json << int(Xml) << xml;
    QTest::newRow("compact to pretty") << compact << int(Xml) << xml;
}

void TestMetaFiles::golden()
{
    QFETCH(QString, source);
    QFETCH(int, form);
    QFETCH(QString, expected);
    Project p;
    RigxData read;
    RigxData *document = &p.doc;
    if (!source.isEmpty()) {
        const QByteArray text = readGolden(source);
        QVERIFY(!text.isEmpty());
        QStringList warnings;
        QVERIFY(readText(text, &read, &warnings));
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
        // What was read means what was built, not only what writes the same.
        QCOMPARE(read.tagManager().tagsToStringList(), p.doc.tagManager().tagsToStringList());
        const Entity *entity = read.entity(0);
        QVERIFY(entity->valInfoCollection() == p.entity->valInfoCollection());
        QVERIFY(entity->object(0)->valInfoCollection() == p.arm->valInfoCollection());
        QVERIFY(entity->object(1)->valInfoCollection() == p.step->valInfoCollection());
        const Animation *animation = entity->animation(0);
        QVERIFY(animation->ownLineHolder()
                    .line({VarType::Int, 0})
                    ->equals(*p.animation->ownLineHolder().line({VarType::Int, 0})));
        QVERIFY(*animation->objectLineHolder(0) == *p.animation->objectLineHolder(0));
        const ValLine *sound = animation->objectLineHolder(1)->line({VarType::String, 0});
        QVERIFY(sound->equals(*p.animation->objectLineHolder(1)->line({VarType::String, 0})));
        // Tag uids are the reading process's own: compare tags by name.
        const TagState own = animation->ownLineHolder().tagStateFromTime(500, true);
        QCOMPARE(read.tagManager().tagsToStringList(&own, 1),
                 (QStringList{QStringLiteral("land"), QStringLiteral("hidden <&\">")}));
        const TagState step = animation->objectLineHolder(1)->tagStateFromTime(300, true);
        QCOMPARE(read.tagManager().tagsToStringList(&step, 1), QStringList{QStringLiteral("land")});
        document = &read;
    }
    const QByteArray actual = write(*document, Form(form));
    const QByteArray wanted = readGolden(expected);
    if (actual != wanted) // left in the temporary folder for a diff against the golden file
        writeFile(QDir::temp().filePath(expected + QStringLiteral(".actual")), actual);
    QCOMPARE(actual, wanted);
}

void TestMetaFiles::danglingIdsAreDropped_data()
{
    QTest::addColumn<QByteArray>("meta");
    QTest::addColumn<int>("warnings");
    QTest::addColumn<int>("tagKeys");
    QTest::addColumn<int>("activeTags");
    QTest::addColumn<int>("varKeys");

    QTest::newRow("all good")
        << QByteArray("<tagline><key id=\"0\"><tag id=\"0\" t=\"1\"/></key></tagline>"
                      "<varline id=\"0\" def=\"4\"><key id=\"0\" val=\"7\"/></varline>")
        << 0 << 1 << 1 << 1;
    QTest::newRow("tag position past the list")
        << QByteArray("<tagline><key id=\"0\"><tag id=\"0\" t=\"2\"/><tag id=\"1\" "
                      "t=\"0\"/></key></tagline>")
        << 1 << 1 << 1 << 0;
    QTest::newRow("negative tag position")
        << QByteArray("<tagline><key id=\"0\"><tag id=\"0\" t=\"-1\"/></key></tagline>") << 1 << 1
        << 0 << 0;
    QTest::newRow("undeclared variable")
        << QByteArray("<varline id=\"0\" def=\"9\"><key id=\"0\" val=\"7\"/></varline>") << 1 << 0
        << 0 << 0;
    QTest::newRow("line without def")
        << QByteArray("<varline id=\"0\"><key id=\"0\" val=\"7\"/></varline>") << 1 << 0 << 0 << 0;
    // Each unreadable number is reported once.
    QTest::newRow("garbage values take defaults")
        << QByteArray(
               "<varline id=\"0\" def=\"4\"><key id=\"0\" time=\"x\" val=\"1e999\"/></varline>")
        << 2 << 0 << 0 << 1;
}

void TestMetaFiles::danglingIdsAreDropped()
{
    QFETCH(QByteArray, meta);
    QFETCH(int, warnings);
    QFETCH(int, tagKeys);
    QFETCH(int, activeTags);
    QFETCH(int, varKeys);
    const QByteArray text =
        "<?xml version=\"1.0\"?><morvane_data rigx_version=\"1.0\">"
        "<tag_list><i name=\"a\"/><i name=\"b\"/></tag_list>"
        "<entity id=\"0\" name=\"e\">"
        "<var_defs><i id=\"4\" name=\"n\" type=\"int\" default=\"2\"/>"
        "<i id=\"5\" name=\"bad\" type=\"double\"/></var_defs>"
        "<animation id=\"0\" name=\"a\" length=\"1000\"><mainline><key id=\"0\"/></mainline>"
        "<meta>" +
        meta + "</meta></animation></entity></morvane_data>";
    RigxData doc;
    QStringList found;
    QVERIFY(readText(text, &doc, &found));
    // The declaration of unknown type is always reported.
    QCOMPARE(found.size(), warnings + 1);
    Entity *entity = doc.entity(0);
    QCOMPARE(entity->valInfoCollection().infoCount(), 1);
    QCOMPARE(entity->valInfoCollection().infoFromId(4)->defaultValue, QVariant(2));
    const ValueLineHolder &holder = entity->animation(0)->ownLineHolder();
    QCOMPARE(holder.tagLine().keyCount(), tagKeys);
    if (tagKeys)
        QCOMPARE(holder.tagStateFromTime(0, false).ids().size(), activeTags);
    const ValLine *line = holder.line({VarType::Int, 4});
    QCOMPARE(line ? line->keyCount() : 0, varKeys);
    QCOMPARE(doc.tagManager().tagCount(), 2);
}

void TestMetaFiles::hostileJson_data()
{
    QTest::addColumn<QByteArray>("tagList");
    QTest::addColumn<QByteArray>("varDefs");
    QTest::addColumn<QByteArray>("meta");
    QTest::addColumn<int>("tags");
    QTest::addColumn<QVariant>("value");

    const QByteArray defs = R"([{"id": 0, "name": "n", "type": "int", "default": 4}])";
    const QByteArray meta = R"({"valline": [{"def": 0, "key": [{"val": 9}]}]})";
    QTest::newRow("well formed") << QByteArray(R"([{"name": "a"}])") << defs << meta << 1
                                 << QVariant(9);
    QTest::newRow("tag list not an array")
        << QByteArray(R"("a")") << defs << meta << 0 << QVariant(9);
    QTest::newRow("tag names of other types")
        << QByteArray(R"([{"name": 5}, {"name": null}, 7])") << defs << meta << 1 << QVariant(9);
    QTest::newRow("default of the wrong type")
        << QByteArray("[]")
        << QByteArray(R"([{"id": 0, "name": "n", "type": "int", "default": "x"}])")
        << QByteArray("{}") << 0 << QVariant(0);
    QTest::newRow("fractional int value truncates")
        << QByteArray("[]") << defs
        << QByteArray(R"({"valline": [{"def": 0, "key": [{"val": -2.7}]}]})") << 0 << QVariant(-2);
    QTest::newRow("value is an object")
        << QByteArray("[]") << defs
        << QByteArray(R"({"valline": [{"def": 0, "key": [{"val": {}}]}]})") << 0 << QVariant(0);
    QTest::newRow("meta is an array")
        << QByteArray("[]") << defs
        << QByteArray(R"([{"valline": [{"def": 0, "key": [{"val": 1}]}]}])") << 0 << QVariant(1);
    QTest::newRow("tagline of the wrong shape")
        << QByteArray(R"([{"name": "a"}])") << defs
        << QByteArray(R"({"tagline": [1, {"key": {"tag": "x"}}]})") << 1 << QVariant(4);
}

void TestMetaFiles::hostileJson()
{
    QFETCH(QByteArray, tagList);
    QFETCH(QByteArray, varDefs);
    QFETCH(QByteArray, meta);
    QFETCH(int, tags);
    QFETCH(QVariant, value);
    const QByteArray text = R"({"rigj_version": "1.0", "tag_list": )" + tagList +
                            R"(, "entity": [{"id": 0, "name": "e", "var_defs": )" + varDefs +
                            R"(, "animation": [{"id": 0, "name": "a", "length": 1000,
                               "mainline": {"key": [{"id": 0}]}, "meta": )" +
                            meta + "}]}]}";
    RigxData doc;
    QVERIFY(readText(text, &doc));
    QCOMPARE(doc.tagManager().tagCount(), tags);
    QCOMPARE(doc.entityCount(), 1);
    const Entity *entity = doc.entity(0);
    QCOMPARE(entity->valInfoCollection().infoCount(), 1);
    const ValInfo *info = entity->valInfoCollection().infoFromId(0);
    QCOMPARE(entity->animation(0)->ownLineHolder().valueFromTime({VarType::Int, 0}, 0, 1000, false,
                                                                 info->defaultValue),
             value);
}

void TestMetaFiles::removedTagIsNotWritten()
{
    Project p;
    QVERIFY(p.doc.tagManager().removeTag(p.jump, &p.doc));
    const QByteArray xml = writeXml(p.doc);
    // The key at 0 still lists the removed tag but writes nothing for it; the
    // remaining tags move up one position.
    QCOMPARE(lineWith(xml, "<key id=\"0\">"), QByteArray("<key id=\"0\">"));
    QVERIFY(xml.contains("<tag id=\"1\" t=\"1\"/>"));
    QVERIFY(!xml.contains("t=\"2\""));
    QVERIFY(p.animation->ownLineHolder().tagLine().key(0)->value().value<QList<int>>().contains(
        p.jump));
}

void TestMetaFiles::openingReplacesTags()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.rigx"));
    Project p;
    QVERIFY(ProjectFile::save(&p.doc, path));
    RigxData other;
    other.tagManager().addTag(QStringLiteral("stale"), nullptr);
    QVERIFY(ProjectFile::open(&other, path));
    QCOMPARE(other.tagManager().tagsToStringList(), p.doc.tagManager().tagsToStringList());
}

void TestMetaFiles::mergeBringsTagsAlong()
{
    QTemporaryDir dir;
    const QString theirs = dir.filePath(QStringLiteral("theirs.rigx"));
    {
        Project p;
        QVERIFY(ProjectFile::save(&p.doc, theirs));
    }
    // Ours shares "land" (under another uid) and has a tag of its own.
    RigxData ours;
    const int own = ours.tagManager().addTag(QStringLiteral("own"), nullptr);
    const int land = ours.tagManager().addTag(QStringLiteral("land"), nullptr);
    ours.appendEntity(new Entity(QStringLiteral("hero"), true));
    QVERIFY(ProjectFile::save(&ours, dir.filePath(QStringLiteral("ours.rigx"))));
    QVERIFY(ProjectFile::importInto(&ours, theirs));

    QCOMPARE(ours.tagManager().tagsToStringList(),
             (QStringList{QStringLiteral("own"), QStringLiteral("land"), QStringLiteral("jump"),
                          QStringLiteral("hidden <&\">")}));
    QCOMPARE(ours.tagManager().tagFromName(QStringLiteral("own")).uid(), own);
    Entity *merged = ours.entity(1);
    QCOMPARE(merged->name(), QStringLiteral("hero_000"));
    const TagManager &tags = ours.tagManager();
    const TagState atStep = merged->animation(0)->objectLineHolder(1)->tagStateFromTime(300, false);
    QCOMPARE(atStep.ids(), QList<int>{land});
    const TagState at500 =
        merged->animation(0)->ownLineHolder().tagStateFromTime(500, false, &tags);
    QCOMPARE(tags.tagsToStringList(&at500, 1),
             (QStringList{QStringLiteral("land"), QStringLiteral("hidden <&\">")}));
    // Variables come along with their entity.
    QCOMPARE(merged->valInfoCollection().namesToStringList(),
             (QStringList{QStringLiteral("hp"), QStringLiteral("speed"), QStringLiteral("mood")}));
}

QTEST_GUILESS_MAIN(TestMetaFiles)
#include "tst_metafiles.moc"
