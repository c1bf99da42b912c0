// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/charactermap.h"
#include "eval/poseevaluator.h"
#include "evaltesthelpers.h"

#include <QSignalSpy>
#include <QTest>

using namespace Morvane;
using Morvane::Testing::info;
using Morvane::Testing::Rig;

namespace {

/// Files a, b, c, d and the maps
///   red:  a -> b
///   blue: a -> c, b -> d
///   hide: a hidden
///   next: b -> c
struct MapRig
{
    MapRig()
    {
        for (const char *name : {"a.png", "b.png", "c.png", "d.png"})
            files.append(rig.file(QString::fromLatin1(name)));
        CharacterMap red(QStringLiteral("red"));
        red.addMap(address(0), address(1));
        CharacterMap blue(QStringLiteral("blue"));
        blue.addMap(address(0), address(2));
        blue.addMap(address(1), address(3));
        CharacterMap hide(QStringLiteral("hide"));
        hide.addMap(address(0));
        CharacterMap next(QStringLiteral("next"));
        next.addMap(address(1), address(2));
        for (const CharacterMap &map : {red, blue, hide, next})
            rig.entity->appendCharMap(map);
    }

    Address address(int file) const { return files.at(file)->address(); }

    /// What each file shows: its name without ".png", "-" when hidden.
    QStringList shown() const
    {
        QStringList result;
        for (const File *f : files) {
            const File *s = f->redirectedFile();
            result.append(s ? s->name().chopped(4) : QStringLiteral("-"));
        }
        return result;
    }

    QStringList activeNames() const
    {
        QStringList names;
        for (int id : rig.entity->activeMap())
            names.append(rig.entity->charMapFromId(id)->name());
        return names;
    }

    Rig rig;
    QList<File *> files;
};

} // namespace

class TstCharacterMap : public QObject
{
    Q_OBJECT

private slots:
    void instructions();
    void applyInOrder_data();
    void applyInOrder();
    void namesIdsAndCopies();
    void hiddenImageStandsIn();
    void poseFollowsMapsWithoutRebuild();
};

void TstCharacterMap::instructions()
{
    CharacterMap map(QStringLiteral("m"));
    const Address one(nullptr, {0, 1});
    const Address two(nullptr, {0, 2});
    const Address three(nullptr, {1, 3});
    map.addMap(one, two);
    map.addMap(two, three);
    // A second map of one source replaces the first in its place.
    MapInstruction &replaced = map.addMap(one, three);
    QCOMPARE(map.instructionCount(), 2);
    QVERIFY(replaced.target == three);
    QVERIFY(map.instruction(0)->source == one);
    QVERIFY(map.instruction(0)->target == three);
    QCOMPARE(map.instruction(2), nullptr);
    QVERIFY(map.containsFile(three)); // a target only
    QVERIFY(!map.containsFile(Address(nullptr, {0, 3})));
    QVERIFY(map.mapFromOriginal(1)->target == three);
    QCOMPARE(map.mapFromOriginal(3), nullptr);

    const Address hidden(nullptr, {0, 13});
    QVERIFY(map.addMap(hidden).hidesImage());
    QVERIFY(map.containsFile(hidden));
    QVERIFY(map.mapFromOriginal(13)->hidesImage());

    map.removeMap(Address(nullptr, {5, 5}));
    QCOMPARE(map.instructionCount(), 3);
    map.removeMap(one);
    QCOMPARE(map.instructionCount(), 2);
    QVERIFY(map.instruction(0)->source == two);
    map.clear();
    QCOMPARE(map.instructionCount(), 0);
}

void TstCharacterMap::applyInOrder_data()
{
    // "+name" activates, "-name" deactivates, "!name" deletes, "~name" edits the map into
    // "crimson" (c -> d), "=name" sets the active list to an unknown id and that map's.
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("active");
    QTest::addColumn<QStringList>("expected"); // what a, b, c, d show

    const QStringList none{"a", "b", "c", "d"};
    QTest::newRow("none") << QStringList{} << QStringList{} << none;
    QTest::newRow("red") << QStringList{"+red"} << QStringList{"red"}
                         << QStringList{"b", "b", "c", "d"};
    QTest::newRow("later wins") << QStringList{"+red", "+blue"} << QStringList{"red", "blue"}
                                << QStringList{"c", "d", "c", "d"};
    QTest::newRow("other order") << QStringList{"+blue", "+red"} << QStringList{"blue", "red"}
                                 << QStringList{"b", "d", "c", "d"};
    QTest::newRow("hidden") << QStringList{"+red", "+hide"} << QStringList{"red", "hide"}
                            << QStringList{"-", "b", "c", "d"};
    QTest::newRow("shown again") << QStringList{"+hide", "+red"} << QStringList{"hide", "red"}
                                 << QStringList{"b", "b", "c", "d"};
    // a -> b and b -> c: a shows b, not c.
    QTest::newRow("followed once") << QStringList{"+red", "+next"} << QStringList{"red", "next"}
                                   << QStringList{"b", "c", "c", "d"};
    QTest::newRow("activating twice does not move")
        << QStringList{"+red", "+blue", "+red"} << QStringList{"red", "blue"}
        << QStringList{"c", "d", "c", "d"};
    QTest::newRow("deactivating shows the earlier map")
        << QStringList{"+red", "+blue", "-blue", "-blue"} << QStringList{"red"}
        << QStringList{"b", "b", "c", "d"};
    QTest::newRow("names match in case only") << QStringList{"+Red"} << QStringList{} << none;
    QTest::newRow("deleting an active map reapplies the others")
        << QStringList{"+red", "+hide", "+next", "!hide"} << QStringList{"red", "next"}
        << QStringList{"b", "c", "c", "d"};
    QTest::newRow("an edited map keeps its place")
        << QStringList{"+red", "+blue", "~red"} << QStringList{"crimson", "blue"}
        << QStringList{"c", "d", "d", "d"};
    QTest::newRow("ids that name no map are dropped")
        << QStringList{"=red"} << QStringList{"red"} << QStringList{"b", "b", "c", "d"};
}

void TstCharacterMap::applyInOrder()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, active);
    QFETCH(QStringList, expected);
    MapRig m;
    Entity *entity = m.rig.entity;
    QSignalSpy refreshed(&m.rig.document, &RigxData::refreshedCharMaps);
    for (const QString &step : std::as_const(steps)) {
        const QString name = step.mid(1);
        switch (step.at(0).toLatin1()) {
        case '!':
            refreshed.clear();
            QVERIFY(entity->deleteCharMap(name));
            QVERIFY(!refreshed.isEmpty());
            break;
        case '~': {
            CharacterMap edited(QStringLiteral("crimson"));
            edited.addMap(m.address(2), m.address(3));
            QVERIFY(entity->editCharMap(name, edited));
            break;
        }
        case '=':
            entity->setActiveCharMaps({-5, entity->charMapFromName(name)->id()});
            break;
        default:
            entity->makeCharMapActive(name, step.startsWith(QLatin1Char('+')));
        }
    }
    QCOMPARE(m.activeNames(), active);
    QCOMPARE(m.shown(), expected);
    for (const QString &name : entity->charMapNames())
        QCOMPARE(entity->isCharMapActive(name), active.contains(name));
}

void TstCharacterMap::namesIdsAndCopies()
{
    MapRig m;
    Entity *entity = m.rig.entity;
    File *unused = m.rig.file(QStringLiteral("e.png"));
    QVERIFY(entity->charMapsContainFile(m.files.at(0)));
    QVERIFY(entity->charMapsContainFile(m.files.at(3))); // a target only
    QVERIFY(!entity->charMapsContainFile(unused));
    QVERIFY(!entity->charMapsContainFile(nullptr));
    QCOMPARE(entity->charMapFromId(-5), nullptr);
    QCOMPARE(entity->charMap(4), nullptr);

    // An edit keeps the map's id under its new name.
    const int id = entity->charMapFromName(QStringLiteral("red"))->id();
    CharacterMap edited(QStringLiteral("crimson"));
    QVERIFY(entity->editCharMap(QStringLiteral("red"), edited));
    QCOMPARE(entity->charMapFromName(QStringLiteral("crimson"))->id(), id);
    QCOMPARE(entity->charMapFromName(QStringLiteral("red")), nullptr);
    QVERIFY(!entity->editCharMap(QStringLiteral("red"), edited));

    // New names are made unique against the maps left.
    QVERIFY(entity->deleteCharMap(QStringLiteral("hide")));
    QVERIFY(!entity->deleteCharMap(QStringLiteral("hide")));
    QCOMPARE(entity->charMapNames(), (QStringList{"crimson", "blue", "next"}));
    QCOMPARE(entity->uniqueCharMapName(QStringLiteral("hide")), QStringLiteral("hide"));
    QCOMPARE(entity->uniqueCharMapName(QStringLiteral("blue")), QStringLiteral("blue_000"));

    // A copy has the same maps with the same, still distinct, ids and the same active list.
    entity->makeCharMapActive(QStringLiteral("blue"), true);
    Entity copy;
    copy.setTo(*entity);
    QCOMPARE(copy.charMapNames(), entity->charMapNames());
    QCOMPARE(copy.activeMap(), entity->activeMap());
    QVERIFY(*copy.charMap(1) == *entity->charMap(1));
    QCOMPARE(copy.charMap(1)->id(), entity->charMap(1)->id());
    QVERIFY(copy.charMap(0)->id() != copy.charMap(1)->id());
}

void TstCharacterMap::hiddenImageStandsIn()
{
    MapRig m;
    m.rig.entity->makeCharMapActive(QStringLiteral("hide"), true);
    const FileInfo a(m.address(0));
    const QImage shown = a.pixmap(true);
    QCOMPARE(shown.size(), QSize(50, 50));
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x)
            QCOMPARE(qAlpha(shown.pixel(x, y)), 0);
    }
    QCOMPARE(a.pixmap(false).size(), m.files.at(0)->image().size());
    QVERIFY(a.pixmap(false).size() != QSize(50, 50));
}

void TstCharacterMap::poseFollowsMapsWithoutRebuild()
{
    MapRig m;
    Timeline *sprite = m.rig.timeline(QStringLiteral("head"));
    m.rig.key(sprite, 0, info(0, 0), TweenInfo(), m.files.at(0));
    m.rig.link();
    PoseEvaluator evaluator(m.rig.animation);
    Pose pose;

    evaluator.evaluate(0, pose);
    QCOMPARE(pose.objects.front().file, m.files.at(0));
    QCOMPARE(pose.objects.front().shownFile, m.files.at(0));
    m.rig.entity->makeCharMapActive(QStringLiteral("blue"), true);
    evaluator.evaluate(0, pose);
    QCOMPARE(pose.objects.front().shownFile, m.files.at(2));
    m.rig.entity->makeCharMapActive(QStringLiteral("hide"), true);
    evaluator.evaluate(0, pose);
    QCOMPARE(pose.objects.front().file, m.files.at(0));
    QCOMPARE(pose.objects.front().shownFile, nullptr);
}

QTEST_GUILESS_MAIN(TstCharacterMap)
#include "tst_charactermap.moc"
