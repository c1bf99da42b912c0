// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clirunner.h"
#include "testfiles.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using Morvane::Testing::CliRun;
using Morvane::Testing::readAll;
using Morvane::Testing::runCli;

namespace {

QString dataPath(const QString &name)
{
    return QStringLiteral(MORVANE_TEST_DATA_DIR "/") + name;
}

// A step of `path` is an object key, an array index, the element of an array whose "name"
// it is, or "#" for the number of entries.
QJsonValue lookUp(QJsonValue value, const QString &path)
{
    for (const QString &step : path.split(QLatin1Char('/'))) {
        if (step == QLatin1String("#"))
            return value.isArray() ? value.toArray().size() : value.toObject().size();
        if (value.isObject()) {
            value = value.toObject().value(step);
            continue;
        }
        const QJsonArray array = value.toArray();
        bool isIndex = false;
        const int index = step.toInt(&isIndex);
        value = isIndex ? array.at(index) : QJsonValue(QJsonValue::Undefined);
        for (int i = 0; !isIndex && i < array.size(); ++i) {
            if (array.at(i)[QLatin1String("name")] == step)
                value = array.at(i);
        }
    }
    return value;
}

// Strings bare, "absent" for nothing, everything else as compact JSON.
QString text(const QJsonValue &value)
{
    if (value.isString())
        return value.toString();
    if (value.isUndefined())
        return QStringLiteral("absent");
    const QByteArray json = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(json.mid(1, json.size() - 2));
}

} // namespace

class TestCli : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void exitStatus_data();
    void exitStatus();
    void output_data();
    void output();
    void convert_data();
    void convert();
    void warnings();

private:
    // "@name": a fixture of tests/data/cli (or io), as XML or as the JSON made from it.
    QString resolve(const QString &argument, bool json) const
    {
        if (!argument.startsWith(QLatin1Char('@')))
            return argument;
        const QString name = argument.mid(1);
        if (json)
            return mDir.filePath(name + QLatin1String(".rigj"));
        const QString inCli = dataPath(QLatin1String("cli/") + name + QLatin1String(".rigx"));
        return QFile::exists(inCli) ? inCli : dataPath(QLatin1String("io/") + name + ".rigx");
    }

    QTemporaryDir mDir;
};

void TestCli::initTestCase()
{
    QVERIFY(mDir.isValid());
    for (const char *name : {"@canonical", "@pose", "@values"}) {
        const QString fixture = QLatin1String(name);
        const CliRun run = runCli({"convert", resolve(fixture, false), resolve(fixture, true)});
        QVERIFY2(run.exitCode == 0, run.err.constData());
    }
}

void TestCli::exitStatus_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("fragment"); // in stderr, or in stdout on success

    QTest::newRow("version") << QStringList{"--version"} << 0 << "r4.1\n";
    QTest::newRow("help") << QStringList{"--help"} << 0 << "Commands:\n  convert";
    QTest::newRow("info help") << QStringList{"info", "--help"} << 0
                               << "Usage: morvane-cli info [options] FILE";
    QTest::newRow("convert help") << QStringList{"convert", "-h"} << 0 << "--compact";
    QTest::newRow("pose help") << QStringList{"pose", "@pose", "--help"} << 0 << "--charmap <NAME>";
    QTest::newRow("values help") << QStringList{"values", "--help"} << 0
                                 << "--animation <NAME|INDEX>";
    QTest::newRow("second entity") << QStringList{"pose", "@pose", "--time", "5", "--entity", "1"}
                                   << 0 << "\"animation\": \"glow\"";
    QTest::newRow("negative time")
        << QStringList{"values", "--time=-5", "@values"} << 0 << "\"time\": -5";
    QTest::newRow("warnings") << QStringList{"info", "@dangling"} << 0 << "Warning: @dangling: ";

    QTest::newRow("nothing") << QStringList{} << 1 << "morvane-cli: missing COMMAND";
    QTest::newRow("unknown command")
        << QStringList{"explode"} << 1 << "unknown command \"explode\"";
    QTest::newRow("unknown tool option") << QStringList{"--fast"} << 1 << "Unknown option 'fast'";
    QTest::newRow("info without file") << QStringList{"info"} << 1 << "info: missing FILE";
    QTest::newRow("info with two")
        << QStringList{"info", "a", "b"} << 1 << "unexpected argument \"b\"";
    QTest::newRow("convert with one") << QStringList{"convert", "a.rigx"} << 1 << "missing OUTPUT";
    QTest::newRow("convert option") << QStringList{"convert", "@canonical", "b.rigj", "--fast"} << 1
                                    << "convert: Unknown option 'fast'";
    QTest::newRow("no time") << QStringList{"pose", "@pose"} << 1 << "missing --time";
    QTest::newRow("no file") << QStringList{"pose", "--time", "5"} << 1 << "missing FILE";
    QTest::newRow("fraction") << QStringList{"pose", "@pose", "--time", "5.5"} << 1
                              << "not \"5.5\"";
    QTest::newRow("word") << QStringList{"values", "@values", "--time=soon"} << 1 << "not \"soon\"";
    QTest::newRow("time without value")
        << QStringList{"values", "@values", "--time"} << 1 << "Missing value after '--time'";
    QTest::newRow("pose option") << QStringList{"pose", "@pose", "--time", "5", "--fast"} << 1
                                 << "pose: Unknown option 'fast'";
    QTest::newRow("values takes no map")
        << QStringList{"values", "@values", "--time", "5", "--charmap", "x"} << 1
        << "Unknown option 'charmap'";

    QTest::newRow("missing file") << QStringList{"info", "/nonexistent/a.rigx"} << 2
                                  << "Error: Cannot read file-/nonexistent/a.rigx: ";
    QTest::newRow("missing pose file") << QStringList{"pose", "/nonexistent/a.rigx", "--time", "5"}
                                       << 2 << "Error: Cannot read file-/nonexistent/a.rigx: ";
    QTest::newRow("unwritable") << QStringList{"convert", "@canonical", "/nonexistent/d/b.rigj"}
                                << 2 << "Error: Cannot write file /nonexistent/d/b.rigj: ";
    QTest::newRow("broken") << QStringList{"values", "@broken", "--time", "0"} << 2
                            << "Error: Failed to parse file ";
    QTest::newRow("unknown entity")
        << QStringList{"pose", "@pose", "--time", "5", "--entity", "villain"} << 2
        << "Error: @pose: no entity \"villain\"";
    QTest::newRow("entity index out of range")
        << QStringList{"values", "@values", "--entity", "2", "--time", "0"} << 2
        << "Error: @values: no entity \"2\"";
    QTest::newRow("unknown animation")
        << QStringList{"values", "@values", "--time", "5", "--animation", "run"} << 2
        << "Error: @values: no animation \"run\" in entity \"hero\"";
    QTest::newRow("unknown map") << QStringList{"pose", "@pose",     "--time",
                                                "5",    "--charmap", "Knight"}
                                 << 2
                                 << "Error: @pose: no character map \"Knight\" in entity \"hero\"";
    QTest::newRow("no entity") << QStringList{"values", "@empty", "--time", "0"} << 2
                               << "Error: @empty: the project has no entity";
    QTest::newRow("no animation") << QStringList{"pose", "@dangling", "--time", "0",
                                                 "--entity=prop"}
                                  << 2 << "Error: @dangling: entity \"prop\" has no animation";
}

void TestCli::exitStatus()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, fragment);
    for (QString &argument : arguments) {
        if (argument.startsWith(QLatin1Char('@')))
            fragment.replace(argument, resolve(argument, false));
        argument = resolve(argument, false);
    }
    const CliRun run = runCli(arguments);
    QVERIFY2(run.exitCode == exitCode, run.err.constData());
    QVERIFY2(QString::fromUtf8(run.err + run.out).contains(fragment), run.err.constData());
    if (exitCode != 0)
        QVERIFY(run.out.isEmpty());
    if (exitCode == 1)
        QVERIFY(run.err.contains(" --help' for more information.\n"));
}

void TestCli::output_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("expected"); // "path=value ...", see lookUp() and text()

    QTest::newRow("info") << QStringList{"info", "@canonical"}
                          << "folders/0/name=body folders/body/files/0/name=body/torso.png "
                             "folders/body/files/0/width=40 folders/body/files/0/pivot_y=0.75 "
                             "folders/body/files/0/missing=true folders/1/files/0/type=sound "
                             "entities/0/name=hero entities/hero/objects/0/type=bone "
                             "entities/hero/character_maps=[] entities/hero/animations/0/name=walk "
                             "entities/hero/animations/walk/looping=false "
                             "entities/hero/animations/walk/loop_to=100 "
                             "entities/hero/animations/walk/interval=50 "
                             "entities/hero/animations/walk/mainline_key_times=[0,400] "
                             "entities/hero/animations/walk/timelines/0/object_type=bone "
                             "entities/hero/animations/walk/timelines/0/key_times=[0,400] "
                             "entities/hero/animations/1/looping=ping_pong "
                             "entities/gem/animations/0/looping=true";
    QTest::newRow("info maps") << QStringList{"info", "@pose"}
                               << "entities/hero/character_maps=[\"knight\",\"bare\"]";

    // hero/walk: an arm bone turned a quarter and stretched, a hand on it, a head at the
    // root in front, and a lamp sub-entity at half its 750 ms animation.
    QTest::newRow("pose") << QStringList{"pose", "@pose", "--time", "0"}
                          << "entity=hero animation=walk time=0 bones/#=1 bones/0/name=arm "
                             "bones/arm/parent=null bones/arm/x=100 bones/arm/angle=90 "
                             "bones/arm/scale_x=2 objects/#=3 objects/0/name=hand "
                             "objects/hand/type=sprite objects/hand/parent=arm objects/hand/z=0 "
                             "objects/hand/x=100 objects/hand/y=120 objects/hand/angle=90 "
                             "objects/hand/alpha=0.4 objects/hand/pivot_x=0.5 "
                             "objects/hand/image=hand.png objects/hand/sub_time=absent "
                             "objects/1/name=head objects/head/z=1 objects/head/y=-50 "
                             "objects/head/angle=350 objects/head/image=head.png "
                             "objects/2/name=lamp objects/lamp/type=entity "
                             "objects/lamp/entity=lamp objects/lamp/animation=glow "
                             "objects/lamp/sub_time=375 objects/lamp/image=null";
    // The arm moves from x 100 to 200 by 500 ms; the head turns from 350 through 0 to 10.
    // After the last key the loop blends back towards the first; past the end it holds.
    const QStringList byName{"--entity", "hero", "--animation=0"};
    QTest::newRow("halfway") << QStringList{"pose", "@pose", "--time=250"} + byName
                             << "bones/arm/x=150 objects/head/angle=0";
    QTest::newRow("quarter") << QStringList{"pose", "--time", "125", "@pose"} + byName
                             << "bones/arm/x=125 objects/head/angle=355";
    QTest::newRow("wrapping") << QStringList{"pose", "@pose", "--time", "750"} + byName
                              << "bones/arm/x=150 objects/head/angle=0";
    QTest::newRow("clamped") << QStringList{"pose", "@pose", "--time", "4000"} + byName
                             << "time=4000 bones/arm/x=100 objects/head/angle=350";
    // Maps apply in the order given; none of them maps the hand.
    const QStringList at100{"pose", "@pose", "--time", "100"};
    const QString hand = QStringLiteral(" objects/hand/image=hand.png");
    QTest::newRow("no map") << at100 << "objects/head/image=head.png" + hand;
    QTest::newRow("knight") << at100 + QStringList{"--charmap", "knight"}
                            << "objects/head/image=helmet.png" + hand;
    QTest::newRow("bare") << at100 + QStringList{"--charmap=bare"}
                          << "objects/head/image=null" + hand;
    QTest::newRow("bare then knight") << at100 + QStringList{"--charmap=bare", "--charmap=knight"}
                                      << "objects/head/image=helmet.png" + hand;
    QTest::newRow("knight then bare") << at100 + QStringList{"--charmap=knight", "--charmap=bare"}
                                      << "objects/head/image=null" + hand;

    // Looping "walk": hp is keyed 0 at 0 and 10 at 100 and blends back toward 0 after 100;
    // mood is "angry" from 200 and the tags "jump" and "air" from 500, both wrapping round
    // to the start. "idle" does not loop. Past the length the int falls back to its default.
    const QString angry = QStringLiteral(" variables/mood=angry variables/#=3 "
                                         "variables/speed=1.5 tags=[\"jump\",\"air\"]");
    QTest::newRow("walk at 25") << QStringList{"values", "@values", "--time", "25"}
                                << "entity=hero animation=walk time=25 variables/hp=2" + angry;
    QTest::newRow("walk at 99") << QStringList{"values", "@values", "--time", "99"}
                                << "variables/hp=9" + angry;
    QTest::newRow("walk past length")
        << QStringList{"values", "@values", "--time", "1200"} << "variables/hp=7" + angry;
    QTest::newRow("idle before first keys")
        << QStringList{"values", "--animation", "idle", "--time", "150", "@values"}
        << "animation=idle variables/hp=10 variables/mood=calm tags=[]";
    QTest::newRow("idle by index")
        << QStringList{"values", "@values", "--entity=hero", "--animation=1", "--time=600"}
        << "animation=idle variables/hp=10" + angry;
    // The bone declares nothing and has no tags: not listed. The event's float is keyed
    // 0 at 100 and 10 at 900: 7.5 at 950 on the way back round the loop.
    QTest::newRow("objects") << QStringList{"values", "@values", "--time", "950"}
                             << "objects/#=1 objects/step/variables/volume=7.5 "
                                "objects/step/tags=[\"land\"]";
    QTest::newRow("nothing declared")
        << QStringList{"values", "@values", "--entity", "1", "--time", "0"}
        << "entity=prop variables={} tags=[] objects={}";
}

// Each row runs on the XML fixture and on the JSON made from it: both print the same.
void TestCli::output()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, expected);
    QByteArray outputs[2];
    for (bool json : {false, true}) {
        QStringList resolved;
        for (const QString &argument : std::as_const(arguments))
            resolved.append(resolve(argument, json));
        const CliRun run = runCli(resolved);
        QVERIFY2(run.exitCode == 0, run.err.constData());
        outputs[json] = run.out;
    }
    QCOMPARE(outputs[1], outputs[0]);
    QJsonParseError error;
    const QJsonObject root = QJsonDocument::fromJson(outputs[0], &error).object();
    QVERIFY2(error.error == QJsonParseError::NoError, outputs[0].constData());
    for (const QString &line : expected.split(QLatin1Char(' '))) {
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        QCOMPARE(line.left(equals) + '=' + text(lookUp(root, line.left(equals))), line);
    }
}

void TestCli::convert_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<bool>("fromJson");
    QTest::addColumn<QString>("expected"); // tests/data/io/ file; its extension is the form

    QTest::newRow("to json") << QStringList{} << false << "canonical.rigj";
    QTest::newRow("back to xml") << QStringList{"--pretty"} << true << "canonical.rigx";
    QTest::newRow("compact") << QStringList{"--compact"} << true << "canonical-compact.rigx";
    QTest::newRow("pretty wins") << QStringList{"--compact", "--pretty"} << false
                                 << "canonical.rigx";
    QTest::newRow("compact wins") << QStringList{"--pretty", "--compact"} << false
                                  << "canonical-compact.rigx";
}

void TestCli::convert()
{
    QFETCH(QStringList, options);
    QFETCH(bool, fromJson);
    QFETCH(QString, expected);
    const QString output = mDir.filePath(QLatin1String("out.") + expected.right(4));
    const CliRun run = runCli(QStringList{"convert"} + options +
                              QStringList{resolve("@canonical", fromJson), output});
    QVERIFY2(run.exitCode == 0 && run.out.isEmpty(), run.err.constData());
    QCOMPARE(readAll(output), readAll(dataPath(QLatin1String("io/") + expected)));
}

// Dropped data is shown, a screenful at most, and the rest counted; what was written is
// clean.
void TestCli::warnings()
{
    const QString source = resolve("@dangling", false);
    const QString output = mDir.filePath(QStringLiteral("dangling.rigj"));
    const CliRun run = runCli({"convert", source, output});
    QCOMPARE(run.exitCode, 0);
    const QStringList lines = QString::fromUtf8(run.err).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 21);
    for (int i = 0; i < 20; ++i)
        QVERIFY2(lines.at(i).startsWith("Warning: " + source + ": "), qPrintable(lines.at(i)));
    const QRegularExpressionMatch more =
        QRegularExpression(QStringLiteral("^\\.\\.\\. and (\\d+) more warnings$"))
            .match(lines.last());
    QVERIFY2(more.hasMatch() && more.captured(1).toInt() >= 5, qPrintable(lines.last()));

    const CliRun reread = runCli({"info", output});
    QCOMPARE(reread.exitCode, 0);
    QCOMPARE(reread.err, QByteArray());
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"
