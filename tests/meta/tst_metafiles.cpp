// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/jsonprojectreader.h"
#include "io/jsonprojectwriter.h"
#include "io/projectfile.h"
#include "io/xmlprojectreader.h"
#include "io/xmlprojectwriter.h"
#include "meta/metaowner.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;

class TestMetaFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void xmlLayout();
    void jsonLayout();
    void roundTrip_data();
    void roundTrip();
    void crossFormRoundTrip();
    void danglingIdsAreDropped_data();
    void danglingIdsAreDropped();
    void hostileJson_data();
    void hostileJson();
    void removedTagIsNotWritten();
    void openingReplacesTags();
    void mergeBringsTagsAlong();
    void undoGivesSavedBytesBack_data();
    void undoGivesSavedBytesBack();
};

namespace {

QByteArray writeXml(RigxData &document)
{
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    XmlProjectWriter::write(document, &buffer, ProjectSaveOptions());
    return out;
}

QByteArray writeJson(RigxData &document)
{
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    ProjectSaveOptions options;
    options.prettifyJson = true;
    JsonProjectWriter::write(document, &buffer, options);
    return out;
}

bool readXml(const QByteArray &text, RigxData *document, QStringList *warnings = nullptr)
{
    XmlProjectReader reader;
    QString error;
    if (!reader.parse(text, &error))
        return false;
    reader.read(document, warnings);
    return true;
}

bool readJson(const QByteArray &text, RigxData *document, QStringList *warnings = nullptr)
{
    JsonProjectReader reader;
    QString error;
    if (!reader.parse(text, &error))
        return false;
    reader.read(document, warnings);
    return true;
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

void TestMetaFiles::xmlLayout()
{
    Project p;
    const QByteArray xml = writeXml(p.doc);
    // The tag list sits between the folders and the entities.
    const int tagList = xml.indexOf("<tag_list>");
    QVERIFY(tagList > 0);
    QVERIFY(tagList < xml.indexOf("<entity"));
    QCOMPARE(lineWith(xml, "name=\"jump\""), QByteArray("<i name=\"jump\"/>"));
    QCOMPARE(lineWith(xml, "name=\"hidden"),
             QByteArray("<i name=\"hidden &lt;&amp;&quot;&gt;\"/>"));
    QCOMPARE(lineWith(xml, "name=\"hp\""),
             QByteArray("<i id=\"0\" name=\"hp\" type=\"int\" default=\"3\"/>"));
    QCOMPARE(lineWith(xml, "name=\"speed\""),
             QByteArray("<i id=\"1\" name=\"speed\" type=\"float\" default=\"1.5\"/>"));
    QCOMPARE(lineWith(xml, "name=\"mood\""),
             QByteArray("<i id=\"2\" name=\"mood\" type=\"string\" default=\"calm\"/>"));
    // The entity's declarations come after its obj_infos and before its animations.
    QVERIFY(xml.indexOf("name=\"hp\"") > xml.lastIndexOf("<obj_info"));
    QVERIFY(xml.indexOf("name=\"hp\"") < xml.indexOf("<animation"));
    // An event has no obj_info of its own unless it declares variables.
    QCOMPARE(lineWith(xml, "name=\"step\" type"),
             QByteArray("<obj_info name=\"step\" type=\"event\">"));

    QCOMPARE(lineWith(xml, "<varline id=\"0\" def=\"0\""),
             QByteArray("<varline id=\"0\" def=\"0\">"));
    QCOMPARE(lineWith(xml, "val=\"0\" curve_type"),
             QByteArray("<key id=\"0\" val=\"0\" curve_type=\"quadratic\" c1=\"0.25\"/>"));
    QCOMPARE(lineWith(xml, "val=\"10\""), QByteArray("<key id=\"1\" time=\"100\" val=\"10\"/>"));
    QCOMPARE(lineWith(xml, "val=\"angry"),
             QByteArray("<key id=\"0\" time=\"200\" val=\"angry &quot;really&quot;\"/>"));
    QCOMPARE(lineWith(xml, "val=\"2.125\""),
             QByteArray("<key id=\"1\" time=\"500\" val=\"2.125\" curve_type=\"instant\"/>"));
    // Tag keys name tags by list position; a key with no active tag is empty.
    QCOMPARE(lineWith(xml, "<tag id=\"1\""), QByteArray("<tag id=\"1\" t=\"2\"/>"));
    QCOMPARE(lineWith(xml, "time=\"800\""), QByteArray("<key id=\"2\" time=\"800\"/>"));

    // The animation's meta is its last child; the tag line precedes the var lines.
    const int animationMeta = xml.lastIndexOf("<meta>");
    QVERIFY(animationMeta > xml.lastIndexOf("</eventline>"));
    QVERIFY(xml.indexOf("<tagline>", animationMeta) < xml.indexOf("<varline", animationMeta));
    // Timelines carry their object's meta after their keys.
    const int eventline = xml.indexOf("<eventline");
    QVERIFY(xml.indexOf("<meta>", eventline) < xml.indexOf("</eventline>"));
    QVERIFY(xml.indexOf("<meta>", eventline) > xml.indexOf("<key", eventline));
}

void TestMetaFiles::jsonLayout()
{
    Project p;
    const QByteArray text = writeJson(p.doc);
    const QJsonObject root = QJsonDocument::fromJson(text).object();
    const QJsonArray tagList = root.value(QStringLiteral("tag_list")).toArray();
    QCOMPARE(tagList.size(), 3);
    QCOMPARE(tagList.at(0).toObject(),
             (QJsonObject{{QStringLiteral("name"), QStringLiteral("jump")}}));

    const QJsonObject entity = root.value(QStringLiteral("entity")).toArray().at(0).toObject();
    const QJsonArray defs = entity.value(QStringLiteral("var_defs")).toArray();
    QCOMPARE(defs.size(), 3);
    // Values are typed: int, number and string.
    QVERIFY(defs.at(0).toObject().value(QStringLiteral("default")).isDouble());
    QCOMPARE(defs.at(0).toObject().value(QStringLiteral("default")).toInt(), 3);
    QCOMPARE(defs.at(1).toObject().value(QStringLiteral("default")).toDouble(), 1.5);
    QCOMPARE(defs.at(2).toObject().value(QStringLiteral("default")).toString(),
             QStringLiteral("calm"));

    const QJsonObject animation =
        entity.value(QStringLiteral("animation")).toArray().at(0).toObject();
    const QJsonObject meta = animation.value(QStringLiteral("meta")).toObject();
    QVERIFY(!meta.contains(QStringLiteral("varline")));
    const QJsonArray vallines = meta.value(QStringLiteral("valline")).toArray();
    QCOMPARE(vallines.size(), 2);
    const QJsonObject hpKey =
        vallines.at(0).toObject().value(QStringLiteral("key")).toArray().at(1).toObject();
    QCOMPARE(hpKey.value(QStringLiteral("time")).toInt(), 100);
    QCOMPARE(hpKey.value(QStringLiteral("val")).toInt(), 10);
    const QJsonArray tagKeys =
        meta.value(QStringLiteral("tagline")).toObject().value(QStringLiteral("key")).toArray();
    QCOMPARE(tagKeys.size(), 3);
    QVERIFY(!tagKeys.at(0).toObject().contains(QStringLiteral("time")));
    const QJsonArray secondTags = tagKeys.at(1).toObject().value(QStringLiteral("tag")).toArray();
    QCOMPARE(secondTags.size(), 2);
    QCOMPARE(secondTags.at(1).toObject().value(QStringLiteral("t")).toInt(), 2);
    QVERIFY(!tagKeys.at(2).toObject().contains(QStringLiteral("tag")));
}

void TestMetaFiles::roundTrip_data()
{
    QTest::addColumn<bool>("json");
    QTest::newRow("xml") << false;
    QTest::newRow("json") << true;
}

void TestMetaFiles::roundTrip()
{
    QFETCH(bool, json);
    Project p;
    const QByteArray first = json ? writeJson(p.doc) : writeXml(p.doc);
    RigxData copy;
    QStringList warnings;
    QVERIFY(json ? readJson(first, &copy, &warnings) : readXml(first, &copy, &warnings));
    QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    const QByteArray second = json ? writeJson(copy) : writeXml(copy);
    QCOMPARE(second, first);

    // What was read means the same: declarations, values, and tags by name.
    QCOMPARE(copy.tagManager().tagsToStringList(), p.doc.tagManager().tagsToStringList());
    Entity *entity = copy.entity(0);
    QVERIFY(entity->valInfoCollection() == p.entity->valInfoCollection());
    QVERIFY(entity->object(0)->valInfoCollection() == p.arm->valInfoCollection());
    Animation *animation = entity->animation(0);
    QCOMPARE(animation->ownLineHolder().valueFromTime({VarType::Int, 0}, 50, 1000, true, 3),
             QVariant(3)); // quadratic c1 0.25 at half time: 0.375, so 3.75, truncated
    const TagState state =
        animation->ownLineHolder().tagStateFromTime(500, true, &copy.tagManager());
    QCOMPARE(copy.tagManager().tagsToStringList(&state, 1),
             (QStringList{QStringLiteral("land"), QStringLiteral("hidden <&\">")}));
    const ValueLineHolder *stepLines = animation->objectLineHolder(1);
    QVERIFY(stepLines);
    QCOMPARE(stepLines->valueFromTime({VarType::String, 0}, 300, 1000, false, QString()),
             QVariant(QStringLiteral("thud")));
    const ValueLineHolder *armLines = animation->objectLineHolder(0);
    QVERIFY(armLines);
    QVERIFY(*armLines == *p.animation->objectLineHolder(0));
    QVERIFY(animation->ownLineHolder()
                .line({VarType::String, 2})
                ->equals(*p.animation->ownLineHolder().line({VarType::String, 2})));
}

void TestMetaFiles::crossFormRoundTrip()
{
    Project p;
    const QByteArray xml = writeXml(p.doc);
    RigxData fromXml;
    QVERIFY(readXml(xml, &fromXml));
    RigxData fromJson;
    QVERIFY(readJson(writeJson(fromXml), &fromJson));
    QCOMPARE(writeXml(fromJson), xml);
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
    QVERIFY(readXml(text, &doc, &found));
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
    QVERIFY(readJson(text, &doc));
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

void TestMetaFiles::undoGivesSavedBytesBack_data()
{
    QTest::addColumn<int>("edit");
    const char *names[] = {"add tag",
                           "remove tag",
                           "rename tag",
                           "add entity variable",
                           "remove entity variable",
                           "rename object variable",
                           "change variable type",
                           "change default",
                           "set key",
                           "delete key",
                           "move key",
                           "tweened key",
                           "set tag key",
                           "clear object lines",
                           "add event variable"};
    for (int i = 0; i < int(std::size(names)); ++i)
        QTest::newRow(names[i]) << i;
}

void TestMetaFiles::undoGivesSavedBytesBack()
{
    QFETCH(int, edit);
    for (bool json : {false, true}) {
        Project p;
        auto save = [&] { return json ? writeJson(p.doc) : writeXml(p.doc); };
        const QByteArray before = save();
        const MetaOwner own = MetaOwner::forAnimation(p.animation);
        const MetaOwner arm = MetaOwner::forTimeline(p.animation->timeline(0));
        ValueLineHolder &ownLines = p.animation->ownLineHolder();
        bool done = false;
        switch (edit) {
        case 0:
            done = p.doc.tagManager().addTag(QStringLiteral("fall"), &p.doc) >= 0;
            break;
        case 1:
            done = p.doc.tagManager().removeTag(p.land, &p.doc);
            break;
        case 2:
            done = p.doc.tagManager().renameTag(p.land, QStringLiteral("landed"), &p.doc);
            break;
        case 3:
            done = p.entity->valInfoCollection().addValInfo(QStringLiteral("ammo"), 12,
                                                            VarType::Int, p.entity) >= 0;
            break;
        case 4:
            done = p.entity->valInfoCollection().removeValInfo(0, p.entity);
            break;
        case 5:
            done = p.arm->valInfoCollection().renameVal(0, QStringLiteral("flex"), p.arm);
            break;
        case 6:
            done = p.entity->valInfoCollection().editVarType(1, VarType::String, p.entity);
            break;
        case 7:
            done = p.entity->valInfoCollection().editDefaultVal(2, QStringLiteral("sad"), p.entity);
            break;
        case 8:
            done = ownLines.setKeyCommand(&p.doc, own, {VarType::Float, 1},
                                          std::make_unique<FloatKey>(0, 4.5), 300);
            break;
        case 9:
            done = ownLines.deleteKeyCommand(&p.doc, own, {{VarType::Int, 0}, 100});
            break;
        case 10:
            done = ownLines.setKeyTimeCommand(&p.doc, own, {{VarType::String, 2}, 200}, 700);
            break;
        case 11:
            done = p.animation->objectLineHolder(0)->createTweenedKeyAtTimeCommand(
                &p.doc, arm, {{VarType::Float, 0}, 250}, true, 0.25, 1000);
            break;
        case 12:
            done = ownLines.setKeyCommand(&p.doc, own, LineId::tagLine(),
                                          std::make_unique<TagKey>(0, TagState({p.hidden})), 600);
            break;
        case 13:
            done = p.animation->objectLineHolder(0)->clearAllKeysCommand(&p.doc, arm);
            break;
        case 14:
            done = p.step->valInfoCollection().addValInfo(QStringLiteral("volume"), 0.5,
                                                          VarType::Float, p.step) >= 0;
            break;
        }
        QVERIFY(done);
        QCOMPARE(p.stack.count(), 1);
        const QByteArray after = save();
        QVERIFY2(after != before, json ? "json" : "xml");
        p.stack.undo();
        QCOMPARE(save(), before);
        p.stack.redo();
        QCOMPARE(save(), after);
    }
}

QTEST_GUILESS_MAIN(TestMetaFiles)
#include "tst_metafiles.moc"
