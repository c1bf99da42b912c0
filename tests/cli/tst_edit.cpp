// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clirunner.h"
#include "io/projectfile.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;
using Morvane::Testing::CliRun;
using Morvane::Testing::runCli;

class TestEdit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void keyMoves_data();
    void keyMoves();
    void oneUndoGivesTheSavedBytes_data();
    void oneUndoGivesTheSavedBytes();
    void failingStepSavesNothing_data();
    void failingStepSavesNothing();
    void setWritesFileConventions();
    void outputFormFollowsExtension();
    void randomScriptUndoesAndRedoes();

private:
    QString project() const { return mDir.path() + QStringLiteral("/hero/hero.rigx"); }
    // Runs the steps on the walk animation, saving to `out` (the project when empty).
    CliRun edit(const QJsonArray &steps, const QString &out = QString(),
                const QJsonObject &extra = {});
    QByteArray baseline();

    QTemporaryDir mDir;
    QByteArray mBaseline;
    int mScripts = 0;
};

namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void copyTree(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString target = to + path.mid(from.size());
        QDir().mkpath(QFileInfo(target).path());
        QFile::remove(target);
        QVERIFY(QFile::copy(path, target));
    }
}

// What the tool said on stderr, without the platform's notes about the session it
// runs in (an offscreen run under a bare environment mentions its runtime folder).
QByteArray said(const CliRun &run)
{
    QByteArray out;
    for (const QByteArray &line : run.err.split('\n')) {
        if (!line.isEmpty() && !line.startsWith("QStandardPaths:"))
            out += line + '\n';
    }
    return out;
}

QJsonObject parseObject(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

QJsonArray parseArray(const QString &text)
{
    return QJsonDocument::fromJson(text.toUtf8()).array();
}

struct Opened
{
    RigxData document;
    Animation *walk = nullptr;
    explicit Opened(const QString &path)
    {
        if (ProjectFile::open(&document, path) && document.entity(0))
            walk = document.entity(0)->animation(QStringLiteral("walk"));
    }
    QString times(const QString &line) const
    {
        QStringList out;
        if (line == QLatin1String("mainline")) {
            for (int i = 0; i < walk->mainlineKeyCount(); ++i)
                out << QString::number(walk->mainlineKey(i)->currentTime());
        } else {
            const Timeline *tl = walk->timelineFromObjectName(line);
            for (int i = 0; tl && i < tl->keyCount(); ++i)
                out << QString::number(tl->key(i)->time(true));
        }
        return out.join(QLatin1Char(','));
    }
    double angleAt(const QString &line, int time) const
    {
        const Timeline *tl = walk->timelineFromObjectName(line);
        const TimelineKey *k = tl ? tl->actualKeyFromTime(time) : nullptr;
        return k ? k->info().angle : qQNaN();
    }
};

} // namespace

void TestEdit::init()
{
    QVERIFY(mDir.isValid());
    copyTree(QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero"), mDir.path() + QStringLiteral("/hero"));
}

CliRun TestEdit::edit(const QJsonArray &steps, const QString &out, const QJsonObject &extra)
{
    QJsonObject script = extra;
    if (!script.contains(QLatin1String("animation")))
        script.insert(QStringLiteral("animation"), QStringLiteral("walk"));
    script.insert(QStringLiteral("steps"), steps);
    const QString path = mDir.path() + QStringLiteral("/script_%1.json").arg(mScripts++);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return CliRun();
    file.write(QJsonDocument(script).toJson());
    file.close();
    QStringList arguments{QStringLiteral("edit"), project(), path};
    if (!out.isEmpty())
        arguments << QStringLiteral("--out") << out;
    return runCli(arguments);
}

// The project as the tool saves it untouched.
QByteArray TestEdit::baseline()
{
    const QString out = mDir.path() + QStringLiteral("/hero/baseline.rigx");
    const CliRun run = edit(QJsonArray(), out);
    if (run.exitCode != 0)
        return QByteArray();
    return readAll(out);
}

void TestEdit::keyMoves_data()
{
    QTest::addColumn<QString>("changes"); // a "move" step's changes, or a whole step
    QTest::addColumn<QString>("mainline");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("times");
    QTest::addColumn<QString>("carried"); // "T@FROM": the line's key at T is the one from FROM

    // The walk: mainline and every line keyed at 0, 200, 400 and 600 ms; 800 ms long.
    QTest::newRow("mainline key onto another leaves one, with its keys")
        << R"([{"line": "mainline", "from": 200, "to": 400}])" << "0,400,600" << "hip"
        << "0,400,600" << "400@200";
    QTest::newRow("mainline key to a free time")
        << R"([{"line": "mainline", "from": 200, "to": 300}])" << "0,300,400,600" << "spine"
        << "0,300,400,600" << "300@200";
    QTest::newRow("timeline key to a free time makes a mainline key")
        << R"([{"line": "hip", "from": 200, "to": 300}])" << "0,200,300,400,600" << "hip"
        << "0,300,400,600" << "300@200";
    QTest::newRow("timeline key onto another of its line replaces it")
        << R"([{"line": "hip", "from": 200, "to": 400}])" << "0,200,400,600" << "hip"
        << "0,400,600" << "400@200";
    QTest::newRow("a drag past the end stops at the end")
        << R"([{"line": "torso", "from": 600, "to": 5000}])" << "0,200,400,600,800" << "torso"
        << "0,200,400,800" << "800@600";
    QTest::newRow("a drag before the start stops at the start")
        << R"([{"line": "torso", "from": 200, "to": -70}])" << "0,200,400,600" << "torso"
        << "0,400,600" << "0@200";
    QTest::newRow("two keys of a line pushed along together")
        << R"([{"line": "head", "from": 200, "to": 400}, {"line": "head", "from": 400, "to": 600}])"
        << "0,200,400,600" << "head" << "0,400,600" << "600@400";
    // Retimes: new time = earliest + (time - earliest) x factor, truncated.
    QTest::newRow("keys of a line scaled by 1.5")
        << R"({"do": "scale-times", "keys": [{"line": "head", "time": 200}, {"line": "head", "time": 400}], "factor": 1.5})"
        << "0,200,400,500,600" << "head" << "0,200,500,600" << "500@400";
    QTest::newRow("mainline keys scaled by a half take their keys")
        << R"({"do": "scale-times", "keys": [{"line": "mainline", "time": 400}, {"line": "mainline", "time": 600}], "factor": 0.5})"
        << "0,200,400,500" << "torso" << "0,200,400,500" << "500@600";
    QTest::newRow("a scaled time truncated past a key it does not meet")
        << R"({"do": "scale-times", "keys": [{"line": "head", "time": 200}, {"line": "head", "time": 600}], "factor": 0.333})"
        << "0,200,333,400,600" << "head" << "0,200,333,400" << "333@600";
    QTest::newRow("scaled keys make way for one another, latest first")
        << R"({"do": "scale-times", "keys": [{"line": "head", "time": 0}, {"line": "head", "time": 200}, {"line": "head", "time": 400}], "factor": 2})"
        << "0,200,400,600,800" << "head" << "0,400,600,800" << "800@400";
}

void TestEdit::keyMoves()
{
    QFETCH(QString, changes);
    QFETCH(QString, mainline);
    QFETCH(QString, line);
    QFETCH(QString, times);
    QFETCH(QString, carried);

    const Opened before(project());
    QVERIFY(before.walk);
    const QStringList carry = carried.split(QLatin1Char('@'));
    const double angle = before.angleAt(line, carry.at(1).toInt());

    const QString out = mDir.path() + QStringLiteral("/hero/moved.rigx");
    const QJsonObject step = changes.startsWith(QLatin1Char('{'))
                                 ? parseObject(changes.toUtf8())
                                 : QJsonObject{{"do", "move"}, {"changes", parseArray(changes)}};
    const CliRun run = edit(QJsonArray{step}, out);
    QCOMPARE(said(run), QByteArray());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(parseObject(run.out).value(QLatin1String("undo")).toArray(),
             (QJsonArray{QStringLiteral("keys moved")}));

    const Opened after(out);
    QVERIFY(after.walk);
    QCOMPARE(after.times(QStringLiteral("mainline")), mainline);
    QCOMPARE(after.times(line), times);
    QCOMPARE(after.angleAt(line, carry.at(0).toInt()), angle);
}

void TestEdit::oneUndoGivesTheSavedBytes_data()
{
    QTest::addColumn<QString>("step");
    QTest::addColumn<QString>("label");

    QTest::newRow("move") << R"({"do": "move", "changes": [{"line": "hip", "from": 200, "to": 250}]})"
                          << "keys moved";
    QTest::newRow("move mainline")
        << R"({"do": "move", "changes": [{"line": "mainline", "from": 400, "to": 200}]})"
        << "keys moved";
    QTest::newRow("delete") << R"({"do": "delete", "line": "head", "time": 400})" << "key deleted";
    QTest::newRow("delete mainline") << R"({"do": "delete", "line": "mainline", "time": 200})"
                                     << "key deleted";
    QTest::newRow("curve")
        << R"({"do": "curve", "line": "torso", "time": 0, "curve_type": "bezier", "c": [0.25, 0.1, 0.75, 0.9]})"
        << "curve changed";
    QTest::newRow("curve mainline")
        << R"({"do": "curve", "line": "mainline", "time": 200, "curve_type": "cubic", "c": [0.2, 0.8]})"
        << "curve changed";
    QTest::newRow("length") << R"({"do": "length", "length": 500})" << "animation length changed";
    QTest::newRow("clone") << R"({"do": "clone-animation"})" << "animation cloned";
    QTest::newRow("set") << R"({"do": "set", "object": "head", "x": 12.5, "angle": 30})"
                         << "head changed";
    QTest::newRow("zorder") << R"({"do": "zorder", "object": "head", "to": "bottom"})" << "";
    QTest::newRow("parent") << R"({"do": "parent", "object": "head", "bone": "hip"})"
                            << "head re-parented";
    QTest::newRow("unparent") << R"({"do": "parent", "object": "head", "bone": null})"
                              << "head re-parented";
}

void TestEdit::oneUndoGivesTheSavedBytes()
{
    QFETCH(QString, step);
    QFETCH(QString, label);
    const QByteArray original = baseline();
    QVERIFY(!original.isEmpty());
    const QJsonObject stepObject = parseObject(step.toUtf8());
    const QString out = mDir.path() + QStringLiteral("/hero/out.rigx");

    const QJsonArray timeFirst{QJsonObject{{"do", "time"}, {"time", 300}}, stepObject};
    CliRun run = edit(timeFirst, out);
    QCOMPARE(said(run), QByteArray());
    QCOMPARE(run.exitCode, 0);
    const QJsonObject result = parseObject(run.out);
    QCOMPARE(result.value(QLatin1String("steps")).toInt(), 2);
    QCOMPARE(result.value(QLatin1String("index")).toInt(), 1);
    if (!label.isEmpty())
        QCOMPARE(result.value(QLatin1String("undo")).toArray(), (QJsonArray{label}));
    const QByteArray edited = readAll(out);
    QVERIFY(edited != original);

    QJsonArray undone = timeFirst;
    undone.append(QJsonObject{{"do", "undo"}});
    run = edit(undone, out);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(parseObject(run.out).value(QLatin1String("index")).toInt(), 0);
    QCOMPARE(readAll(out), original);

    undone.append(QJsonObject{{"do", "redo"}});
    run = edit(undone, out);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(readAll(out), edited);
}

void TestEdit::failingStepSavesNothing_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("error");

    QTest::newRow("unknown object")
        << R"([{"do": "set", "object": "tail", "x": 1}])"
        << "Error: step 1: no object \"tail\" in animation \"walk\"\n";
    QTest::newRow("unknown line")
        << R"([{"do": "delete", "line": "tail", "time": 0}])"
        << "Error: step 1: no object or line \"tail\" in animation \"walk\"\n";
    QTest::newRow("no key there")
        << R"([{"do": "time", "time": 100}, {"do": "delete", "line": "hip", "time": 100}])"
        << "Error: step 2: no key of \"hip\" at 100 ms\n";
    QTest::newRow("time outside")
        << R"([{"do": "time", "time": 801}])"
        << "Error: step 1: time 801 ms is outside the animation (0 to 800 ms)\n";
    QTest::newRow("move from outside")
        << R"([{"do": "move", "changes": [{"line": "hip", "from": -5, "to": 0}]}])"
        << "Error: step 1: time -5 ms is outside the animation (0 to 800 ms)\n";
    QTest::newRow("mandatory key")
        << R"([{"do": "delete", "line": "hip", "time": 0}, {"do": "delete", "line": "hip", "time": 200},
              {"do": "delete", "line": "hip", "time": 400}, {"do": "delete", "line": "hip", "time": 600}])"
        << "Error: step 4: the key of \"hip\" at 600 ms is mandatory (the only key of its timeline)\n";
    QTest::newRow("nothing to undo")
        << R"([{"do": "length", "length": 900}, {"do": "undo", "count": 2}])"
        << "Error: step 2: nothing to undo\n";
    QTest::newRow("nothing to redo") << R"([{"do": "redo"}])" << "Error: step 1: nothing to redo\n";
    QTest::newRow("scale by nothing")
        << R"([{"do": "scale-times", "keys": [{"line": "hip", "time": 200}], "factor": 0}])"
        << "Error: step 1: \"factor\" takes a number above 0\n";
    QTest::newRow("a scaled key whose time is taken stays")
        << R"([{"do": "scale-times", "keys": [{"line": "head", "time": 0}, {"line": "head", "time": 400}], "factor": 1.5}])"
        << "Error: step 1: no key moves\n";
    QTest::newRow("unknown step") << R"([{"do": "explode"}])"
                                  << "Error: step 1: unknown step \"explode\"\n";
    QTest::newRow("no do") << R"([{"time": 3}])" << "Error: step 1: missing \"do\"\n";
    QTest::newRow("bad curve")
        << R"([{"do": "curve", "line": "hip", "time": 0, "curve_type": "wobbly"}])"
        << "Error: step 1: \"curve_type\" takes instant, linear, quadratic, cubic, quartic, quintic or bezier\n";
    QTest::newRow("curve parameter out of range")
        << R"([{"do": "curve", "line": "hip", "time": 0, "curve_type": "quadratic", "c": [7]}])"
        << "Error: step 1: \"c\" 1 must be a number from -2 to 3\n";
    QTest::newRow("fractional time") << R"([{"do": "time", "time": 2.5}])"
                                     << "Error: step 1: \"time\" takes a whole number\n";
    QTest::newRow("text for a number") << R"([{"do": "set", "object": "hip", "x": "3"}])"
                                       << "Error: step 1: \"x\" takes a number\n";
    QTest::newRow("bone parent that is a sprite")
        << R"([{"do": "parent", "object": "head", "bone": "torso"}])"
        << "Error: step 1: \"torso\" is not a bone\n";
    QTest::newRow("negative length") << R"([{"do": "length", "length": -1}])"
                                     << "Error: step 1: a length of -1 ms is below 0\n";
}

void TestEdit::failingStepSavesNothing()
{
    QFETCH(QString, steps);
    QFETCH(QString, error);
    const QByteArray before = readAll(project());
    const CliRun run = edit(parseArray(steps));
    QCOMPARE(run.exitCode, 2);
    QCOMPARE(QString::fromUtf8(said(run)), error);
    QCOMPARE(run.out, QByteArray());
    QCOMPARE(readAll(project()), before);
}

// Values go in as the file writes them: y up, angles counter-clockwise, pivot y from
// the bottom; the key at the current time holds them afterwards.
void TestEdit::setWritesFileConventions()
{
    const QString out = mDir.path() + QStringLiteral("/hero/set.rigj");
    const CliRun run = edit(QJsonArray{QJsonObject{{"do", "time"}, {"time", 200}},
                                       QJsonObject{{"do", "set"}, {"object", "head"}, {"x", 10.5},
                                                   {"y", 20}, {"angle", 30}, {"scale_x", 2},
                                                   {"pivot_y", 0.25}, {"a", 0.5}}},
                            out);
    QCOMPARE(run.exitCode, 0);
    const Opened after(out);
    QVERIFY(after.walk);
    const TimelineKey *k = after.walk->timelineFromObjectName(QStringLiteral("head"))->actualKeyFromTime(200);
    QVERIFY(k);
    QCOMPARE(k->info().x, 10.5);
    QCOMPARE(k->info().y, -20.0);
    QCOMPARE(k->info().angle, 330.0);
    QCOMPARE(k->info().xScale, 2.0);
    QCOMPARE(k->info().pivotY(false), 0.75);
    QCOMPARE(k->info().alpha, 0.5);
    // The JSON form was written: it opens as JSON.
    QVERIFY(readAll(out).trimmed().startsWith('{'));
}

void TestEdit::outputFormFollowsExtension()
{
    // Without --out the project itself is written: an edit shows in it.
    const QByteArray before = readAll(project());
    const CliRun run = edit(QJsonArray{QJsonObject{{"do", "length"}, {"length", 1000}}});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(readAll(project()) != before);
    QVERIFY(readAll(project()).contains("name=\"walk\" length=\"1000\""));
    // Another entity and animation by index.
    const CliRun byIndex = edit(QJsonArray{QJsonObject{{"do", "length"}, {"length", 700}}}, QString(),
                                QJsonObject{{"entity", 0}, {"animation", 0}});
    QCOMPARE(byIndex.exitCode, 0);
    QVERIFY(readAll(project()).contains("name=\"idle\" length=\"700\""));
    const CliRun missing = edit(QJsonArray(), QString(), QJsonObject{{"animation", "fly"}});
    QCOMPARE(missing.exitCode, 2);
    QVERIFY(said(missing).contains("no animation \"fly\""));
}

// A seeded random script of edits: undoing all of it gives the untouched project's bytes,
// redoing all of it the edited project's.
void TestEdit::randomScriptUndoesAndRedoes()
{
    const QByteArray original = baseline();
    QVERIFY(!original.isEmpty());
    QRandomGenerator random(20261122);
    const QStringList lines{"mainline", "hip", "spine", "torso", "head", "front_upper_leg",
                            "back_lower_arm", "lantern"};
    const QStringList curves{"instant", "linear", "quadratic", "cubic", "bezier"};
    const auto pick = [&](const QStringList &from) { return from.at(random.bounded(int(from.size()))); };
    const auto time = [&] { return int(random.bounded(9)) * 100; };

    QJsonArray steps;
    int edits = 0;
    int retimes = 0;
    const QString out = mDir.path() + QStringLiteral("/hero/random.rigx");
    for (int attempt = 0; attempt < 60 && edits < 14; ++attempt) {
        QJsonObject step;
        switch (random.bounded(8)) {
        case 0:
            step = {{"do", "set"}, {"object", pick(lines.mid(1))}, {"x", random.bounded(200) - 100},
                    {"angle", random.bounded(360)}};
            steps.append(QJsonObject{{"do", "time"}, {"time", time()}});
            break;
        case 1:
            step = {{"do", "move"},
                    {"changes", QJsonArray{QJsonObject{{"line", pick(lines)}, {"from", time()},
                                                       {"to", time() + 50}}}}};
            break;
        case 2:
            step = {{"do", "delete"}, {"line", pick(lines)}, {"time", time()}};
            break;
        case 3:
            step = {{"do", "curve"}, {"line", pick(lines)}, {"time", time()}, {"curve_type", pick(curves)}};
            break;
        case 4:
            step = {{"do", "clone-animation"}};
            break;
        case 5:
            step = {{"do", "length"}, {"length", 600 + random.bounded(5) * 100}};
            break;
        case 6: {
            // Two keys of a line (where the walk has keys), by factors below
            // and above 1, some of them not whole.
            const QString line = pick(lines);
            const int first = int(random.bounded(3)) * 200;
            step = {{"do", "scale-times"},
                    {"keys", QJsonArray{QJsonObject{{"line", line}, {"time", first}},
                                        QJsonObject{{"line", line}, {"time", first + 200}}}},
                    {"factor", 0.25 * (1 + random.bounded(9))}};
            break;
        }
        default:
            step = {{"do", random.bounded(2) ? "undo" : "redo"}};
            break;
        }
        QJsonArray candidate = steps;
        candidate.append(step);
        const CliRun run = edit(candidate, out);
        if (run.exitCode == 0) {
            steps = candidate;
            ++edits;
            retimes += step.value(QLatin1String("do")) == QLatin1String("scale-times") ? 1 : 0;
        } else {
            QCOMPARE(run.exitCode, 2); // refused, never crashed
            while (!steps.isEmpty() && steps.last().toObject().value("do") == QLatin1String("time"))
                steps.removeLast();
        }
    }
    QVERIFY(edits >= 8);
    QVERIFY(retimes >= 1);
    CliRun run = edit(steps, out);
    QCOMPARE(run.exitCode, 0);
    const QByteArray final = readAll(out);
    const int index = parseObject(run.out).value(QLatin1String("index")).toInt();
    const int count = parseObject(run.out).value(QLatin1String("undo")).toArray().size();

    QJsonArray all = steps;
    if (index > 0)
        all.append(QJsonObject{{"do", "undo"}, {"count", index}});
    run = edit(all, out);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(readAll(out), original);
    all.append(QJsonObject{{"do", "redo"}, {"count", count}});
    run = edit(all, out);
    QCOMPARE(run.exitCode, 0);
    // Redoing everything goes past where the script stood; undo back to it.
    if (count > index)
        all.append(QJsonObject{{"do", "undo"}, {"count", count - index}});
    run = edit(all, out);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(readAll(out), final);
}

QTEST_GUILESS_MAIN(TestEdit)
#include "tst_edit.moc"
