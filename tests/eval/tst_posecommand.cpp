// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clirunner.h"
#include "evaltesthelpers.h"
#include "io/projectfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;
using Morvane::Testing::info;
using Morvane::Testing::Rig;

namespace {

using Morvane::Testing::runCli;
using Run = Morvane::Testing::CliRun;


Run runPose(const QStringList &arguments)
{
    return runCli(QStringList{QStringLiteral("pose")} + arguments);
}

bool near(double a, double b)
{
    return std::abs(a - b) <= 1e-6;
}

QJsonObject byName(const QJsonArray &items, const QString &name)
{
    for (const QJsonValue &item : items) {
        if (item.toObject().value(QStringLiteral("name")).toString() == name)
            return item.toObject();
    }
    return QJsonObject();
}

} // namespace

class TstPoseCommand : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void pose_data();
    void pose();
    void blendsAndHoldsAfterRoundTrip_data();
    void blendsAndHoldsAfterRoundTrip();
    void characterMaps_data();
    void characterMaps();
    void exitStatus_data();
    void exitStatus();

private:
    QTemporaryDir mDir;
    QString mXml;
    QString mJson;
};

void TstPoseCommand::initTestCase()
{
    QVERIFY(mDir.isValid());
    // hero/walk: an arm bone turned a quarter and stretched, a hand on it, a head
    // at the root in front, and a lamp sub-entity at half its 750 ms animation.
    Rig rig(1000, true);
    File *hand = rig.file(QStringLiteral("hand.png"), 0.5, 0.5);
    File *head = rig.file(QStringLiteral("head.png"));
    File *helmet = rig.file(QStringLiteral("helmet.png"));
    Timeline *arm = rig.timeline(QStringLiteral("arm"), Object::Bone);
    Timeline *handLine = rig.timeline(QStringLiteral("hand"), Object::Sprite, arm);
    Timeline *headLine = rig.timeline(QStringLiteral("head"));
    Timeline *lampLine = rig.timeline(QStringLiteral("lamp"), Object::SubEntity, arm);
    rig.key(arm, 0, info(100, 100, 90, 2, 1, 0.5));
    rig.key(arm, 500, info(200, 100, 90, 2, 1, 0.5));
    DisplayInfo handState = info(10, 0, 0, 1, 1, 0.8);
    handState.setDefaultPivot(true, hand->address());
    rig.key(handLine, 0, handState, TweenInfo(), hand);
    DisplayInfo headState = info(0, -50, 350);
    rig.key(headLine, 0, headState, TweenInfo(), head);
    headState.angle = 10;
    rig.key(headLine, 500, headState, TweenInfo(), head);
    TimelineKey *lampKey = rig.key(lampLine, 0, info(0, 0));
    lampKey->entityInfo().animation = Address(&rig.document, {1, 0});
    lampKey->entityInfo().timeRatio = 0.5;
    rig.link();

    auto *lamp = new Entity(QStringLiteral("lamp"));
    rig.document.appendEntity(lamp);
    auto *glow = new Animation(QStringLiteral("glow"));
    glow->setLength(750);
    lamp->appendAnimation(glow);
    glow->appendMainlineKey(new MainlineKey, 0, true, true);

    CharacterMap knight(QStringLiteral("knight"));
    knight.addMap(head->address(), helmet->address());
    CharacterMap bare(QStringLiteral("bare"));
    bare.addMap(head->address());
    rig.entity->appendCharMap(knight);
    rig.entity->appendCharMap(bare);

    mXml = mDir.filePath(QStringLiteral("hero.rigx"));
    mJson = mDir.filePath(QStringLiteral("hero.rigj"));
    QString error;
    QVERIFY2(ProjectFile::save(&rig.document, mXml, ProjectSaveOptions(), nullptr, &error),
             qPrintable(error));
    QVERIFY2(ProjectFile::save(&rig.document, mJson, ProjectSaveOptions(), nullptr, &error),
             qPrintable(error));
}

void TstPoseCommand::pose_data()
{
    QTest::addColumn<bool>("json");
    QTest::newRow("xml") << false;
    QTest::newRow("json") << true;
}

void TstPoseCommand::pose()
{
    QFETCH(bool, json);
    const Run run = runPose({json ? mJson : mXml, QStringLiteral("--time"), QStringLiteral("0")});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QJsonParseError parseError;
    const QJsonObject pose = QJsonDocument::fromJson(run.out, &parseError).object();
    QVERIFY2(parseError.error == QJsonParseError::NoError, run.out.constData());

    QCOMPARE(pose.value(QStringLiteral("entity")).toString(), QStringLiteral("hero"));
    QCOMPARE(pose.value(QStringLiteral("animation")).toString(), QStringLiteral("walk"));
    QCOMPARE(pose.value(QStringLiteral("time")).toInt(), 0);

    const QJsonArray bones = pose.value(QStringLiteral("bones")).toArray();
    QCOMPARE(bones.size(), 1);
    const QJsonObject arm = bones.at(0).toObject();
    QCOMPARE(arm.value(QStringLiteral("name")).toString(), QStringLiteral("arm"));
    QVERIFY(arm.value(QStringLiteral("parent")).isNull());
    QCOMPARE(arm.value(QStringLiteral("x")).toDouble(), 100.0);
    QCOMPARE(arm.value(QStringLiteral("angle")).toDouble(), 90.0);
    QCOMPARE(arm.value(QStringLiteral("scale_x")).toDouble(), 2.0);

    const QJsonArray objects = pose.value(QStringLiteral("objects")).toArray();
    QCOMPARE(objects.size(), 3);
    const QJsonObject hand = objects.at(0).toObject();
    QCOMPARE(hand.value(QStringLiteral("name")).toString(), QStringLiteral("hand"));
    QCOMPARE(hand.value(QStringLiteral("type")).toString(), QStringLiteral("sprite"));
    QCOMPARE(hand.value(QStringLiteral("parent")).toString(), QStringLiteral("arm"));
    QCOMPARE(hand.value(QStringLiteral("z")).toInt(), 0);
    QCOMPARE(hand.value(QStringLiteral("x")).toDouble(), 100.0);
    QCOMPARE(hand.value(QStringLiteral("y")).toDouble(), 120.0);
    QCOMPARE(hand.value(QStringLiteral("angle")).toDouble(), 90.0);
    QVERIFY(near(hand.value(QStringLiteral("alpha")).toDouble(), 0.4));
    QCOMPARE(hand.value(QStringLiteral("pivot_x")).toDouble(), 0.5);
    QCOMPARE(hand.value(QStringLiteral("image")).toString(), QStringLiteral("hand.png"));

    const QJsonObject head = objects.at(1).toObject();
    QCOMPARE(head.value(QStringLiteral("name")).toString(), QStringLiteral("head"));
    QCOMPARE(head.value(QStringLiteral("z")).toInt(), 1);
    QCOMPARE(head.value(QStringLiteral("y")).toDouble(), -50.0);
    QCOMPARE(head.value(QStringLiteral("angle")).toDouble(), 350.0);
    QCOMPARE(head.value(QStringLiteral("image")).toString(), QStringLiteral("head.png"));

    const QJsonObject lamp = objects.at(2).toObject();
    QCOMPARE(lamp.value(QStringLiteral("type")).toString(), QStringLiteral("entity"));
    QCOMPARE(lamp.value(QStringLiteral("entity")).toString(), QStringLiteral("lamp"));
    QCOMPARE(lamp.value(QStringLiteral("animation")).toString(), QStringLiteral("glow"));
    QCOMPARE(lamp.value(QStringLiteral("sub_time")).toInt(), 375);
    QVERIFY(lamp.value(QStringLiteral("image")).isNull());
    QVERIFY(!hand.contains(QStringLiteral("sub_time")));
}

void TstPoseCommand::blendsAndHoldsAfterRoundTrip_data()
{
    QTest::addColumn<bool>("json");
    QTest::addColumn<int>("time");
    QTest::addColumn<double>("armX");
    QTest::addColumn<double>("headAngle");

    for (bool json : {false, true}) {
        const char *form = json ? "json" : "xml";
        QTest::addRow("%s halfway", form) << json << 250 << 150.0 << 0.0;
        QTest::addRow("%s quarter", form) << json << 125 << 125.0 << 355.0;
        // After the last key the loop blends back towards the first key.
        QTest::addRow("%s wrapping", form) << json << 750 << 150.0 << 0.0;
        QTest::addRow("%s clamped", form) << json << 4000 << 100.0 << 350.0;
    }
}

void TstPoseCommand::blendsAndHoldsAfterRoundTrip()
{
    QFETCH(bool, json);
    QFETCH(int, time);
    QFETCH(double, armX);
    QFETCH(double, headAngle);
    const Run run = runPose({json ? mJson : mXml, QStringLiteral("--time"), QString::number(time),
                             QStringLiteral("--entity"), QStringLiteral("hero"),
                             QStringLiteral("--animation"), QStringLiteral("0")});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QJsonObject pose = QJsonDocument::fromJson(run.out).object();
    QCOMPARE(pose.value(QStringLiteral("time")).toInt(), time);
    const QJsonObject arm =
        byName(pose.value(QStringLiteral("bones")).toArray(), QStringLiteral("arm"));
    QVERIFY(near(arm.value(QStringLiteral("x")).toDouble(), armX));
    const QJsonObject head =
        byName(pose.value(QStringLiteral("objects")).toArray(), QStringLiteral("head"));
    const double angle = head.value(QStringLiteral("angle")).toDouble();
    QVERIFY(angle >= 0.0 && angle < 360.0);
    QVERIFY2(near(angle, headAngle), qPrintable(QString::number(angle)));
}

void TstPoseCommand::characterMaps_data()
{
    QTest::addColumn<bool>("json");
    QTest::addColumn<QStringList>("maps");
    QTest::addColumn<QString>("image"); // empty: null

    for (bool json : {false, true}) {
        const char *form = json ? "json" : "xml";
        QTest::addRow("%s none", form) << json << QStringList() << QStringLiteral("head.png");
        QTest::addRow("%s knight", form)
            << json << QStringList{"knight"} << QStringLiteral("helmet.png");
        QTest::addRow("%s bare", form) << json << QStringList{"bare"} << QString();
        QTest::addRow("%s bare then knight", form)
            << json << QStringList{"bare", "knight"} << QStringLiteral("helmet.png");
        QTest::addRow("%s knight then bare", form)
            << json << QStringList{"knight", "bare"} << QString();
    }
}

void TstPoseCommand::characterMaps()
{
    QFETCH(bool, json);
    QFETCH(QStringList, maps);
    QFETCH(QString, image);
    QStringList arguments{json ? mJson : mXml, QStringLiteral("--time"), QStringLiteral("100")};
    for (const QString &map : std::as_const(maps))
        arguments << QStringLiteral("--charmap") << map;
    const Run run = runPose(arguments);
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QJsonObject pose = QJsonDocument::fromJson(run.out).object();
    const QJsonArray objects = pose.value(QStringLiteral("objects")).toArray();
    const QJsonValue shown = byName(objects, QStringLiteral("head")).value(QStringLiteral("image"));
    if (image.isEmpty())
        QVERIFY(shown.isNull());
    else
        QCOMPARE(shown.toString(), image);
    // The hand is not mapped.
    QCOMPARE(byName(objects, QStringLiteral("hand")).value(QStringLiteral("image")).toString(),
             QStringLiteral("hand.png"));
}

void TstPoseCommand::exitStatus_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");

    const QString xml = QStringLiteral("@xml");
    QTest::newRow("help") << QStringList{"pose", "--help"} << 0;
    QTest::newRow("no time") << QStringList{"pose", xml} << 1;
    QTest::newRow("no file") << QStringList{"pose", "--time", "5"} << 1;
    QTest::newRow("time not a number") << QStringList{"pose", xml, "--time", "5.5"} << 1;
    QTest::newRow("time without value") << QStringList{"pose", xml, "--time"} << 1;
    QTest::newRow("two files") << QStringList{"pose", xml, xml, "--time", "5"} << 1;
    QTest::newRow("unknown option") << QStringList{"pose", xml, "--time", "5", "--fast"} << 1;
    QTest::newRow("unknown entity")
        << QStringList{"pose", xml, "--time", "5", "--entity", "x"} << 1;
    QTest::newRow("entity index out of range")
        << QStringList{"pose", xml, "--time", "5", "--entity", "2"} << 1;
    QTest::newRow("unknown animation")
        << QStringList{"pose", xml, "--time", "5", "--animation", "run"} << 1;
    QTest::newRow("unknown map") << QStringList{"pose", xml, "--time", "5", "--charmap", "Knight"}
                                 << 1;
    QTest::newRow("missing file") << QStringList{"pose", "/nonexistent/a.rigx", "--time", "5"} << 2;
    QTest::newRow("second entity") << QStringList{"pose", xml, "--time", "5", "--entity", "1"} << 0;
}

void TstPoseCommand::exitStatus()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    arguments.replaceInStrings(QStringLiteral("@xml"), mXml);
    const Run run = runCli(arguments);
    QCOMPARE(run.exitCode, exitCode);
    if (exitCode != 0)
        QVERIFY(!run.err.isEmpty());
    else
        QVERIFY(!run.out.isEmpty());
}

QTEST_GUILESS_MAIN(TstPoseCommand)
#include "tst_posecommand.moc"
