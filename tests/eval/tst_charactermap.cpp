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
    void addMapReplacesPerSource();
    void removeMapAndClear();
    void containsFileAndMapFromOriginal();
    void idsCountUpAndCopiesKeepThem();
    void applyInOrder_data();
    void applyInOrder();
    void activatingTwiceDoesNotMove();
    void deactivatingShowsEarlierMap();
    void deletingActiveMapReappliesOthers();
    void editKeepsIdAndPlace();
    void hiddenImageStandsIn();
    void poseFollowsMapsWithoutRebuild();
    void uniqueNames_data();
    void uniqueNames();
    void entityKnowsItsFiles();
    void unknownNamesChangeNothing();
    void setToCopiesMaps();
};

void TstCharacterMap::addMapReplacesPerSource()
{
    CharacterMap map(QStringLiteral("m"));
    const Address one(nullptr, {0, 1});
    const Address two(nullptr, {0, 2});
    const Address three(nullptr, {0, 3});
    map.addMap(one, two);
    map.addMap(two, three);
    MapInstruction &replaced = map.addMap(one, three);
    QCOMPARE(map.instructionCount(), 2);
    QVERIFY(replaced.target == three);
    QVERIFY(map.instruction(0)->source == one); // stays in its place
    QVERIFY(map.instruction(0)->target == three);
    QCOMPARE(map.instruction(2), nullptr);
    QVERIFY(map.addMap(three).hidesImage());
}

void TstCharacterMap::removeMapAndClear()
{
    CharacterMap map;
    const Address one(nullptr, {0, 1});
    const Address two(nullptr, {0, 2});
    map.addMap(one, two);
    map.addMap(two, one);
    map.removeMap(Address(nullptr, {5, 5}));
    QCOMPARE(map.instructionCount(), 2);
    map.removeMap(one);
    QCOMPARE(map.instructionCount(), 1);
    QVERIFY(map.instruction(0)->source == two);
    map.clear();
    QCOMPARE(map.instructionCount(), 0);
}

void TstCharacterMap::containsFileAndMapFromOriginal()
{
    CharacterMap map;
    map.addMap(Address(nullptr, {0, 11}), Address(nullptr, {1, 12}));
    map.addMap(Address(nullptr, {0, 13}));
    QVERIFY(map.containsFile(Address(nullptr, {0, 11})));
    QVERIFY(map.containsFile(Address(nullptr, {1, 12})));
    QVERIFY(!map.containsFile(Address(nullptr, {0, 12})));
    QVERIFY(map.containsFile(Address(nullptr, {0, 13})));
    QVERIFY(map.mapFromOriginal(11));
    QVERIFY(map.mapFromOriginal(11)->target == Address(nullptr, {1, 12}));
    QCOMPARE(map.mapFromOriginal(12), nullptr);
    QVERIFY(map.mapFromOriginal(13)->hidesImage());
}

void TstCharacterMap::idsCountUpAndCopiesKeepThem()
{
    const CharacterMap first;
    const CharacterMap second;
    QCOMPARE(second.id(), first.id() + 1);
    const CharacterMap copy = second;
    QCOMPARE(copy.id(), second.id());
    QVERIFY(copy == second);
    CharacterMap renamed = copy;
    renamed.setName(QStringLiteral("other"));
    QVERIFY(renamed != copy);
}

void TstCharacterMap::applyInOrder_data()
{
    QTest::addColumn<QStringList>("active");
    QTest::addColumn<QStringList>("expected"); // what a, b, c, d show

    QTest::newRow("none") << QStringList{} << QStringList{"a", "b", "c", "d"};
    QTest::newRow("red") << QStringList{"red"} << QStringList{"b", "b", "c", "d"};
    QTest::newRow("later wins") << QStringList{"red", "blue"} << QStringList{"c", "d", "c", "d"};
    QTest::newRow("other order") << QStringList{"blue", "red"} << QStringList{"b", "d", "c", "d"};
    QTest::newRow("hidden") << QStringList{"red", "hide"} << QStringList{"-", "b", "c", "d"};
    QTest::newRow("shown again") << QStringList{"hide", "red"} << QStringList{"b", "b", "c", "d"};
    // a -> b and b -> c: a shows b, not c.
    QTest::newRow("followed once") << QStringList{"red", "next"} << QStringList{"b", "c", "c", "d"};
}

void TstCharacterMap::applyInOrder()
{
    QFETCH(QStringList, active);
    QFETCH(QStringList, expected);
    MapRig m;
    for (const QString &name : std::as_const(active))
        m.rig.entity->makeCharMapActive(name, true);
    QCOMPARE(m.activeNames(), active);
    QCOMPARE(m.shown(), expected);
}

void TstCharacterMap::activatingTwiceDoesNotMove()
{
    MapRig m;
    m.rig.entity->makeCharMapActive(QStringLiteral("red"), true);
    m.rig.entity->makeCharMapActive(QStringLiteral("blue"), true);
    m.rig.entity->makeCharMapActive(QStringLiteral("red"), true);
    QCOMPARE(m.activeNames(), (QStringList{"red", "blue"}));
    QCOMPARE(m.shown().first(), QStringLiteral("c"));
    QVERIFY(m.rig.entity->isCharMapActive(QStringLiteral("red")));
    QVERIFY(!m.rig.entity->isCharMapActive(QStringLiteral("hide")));
}

void TstCharacterMap::deactivatingShowsEarlierMap()
{
    MapRig m;
    m.rig.entity->makeCharMapActive(QStringLiteral("red"), true);
    m.rig.entity->makeCharMapActive(QStringLiteral("blue"), true);
    m.rig.entity->makeCharMapActive(QStringLiteral("blue"), false);
    QCOMPARE(m.activeNames(), QStringList{"red"});
    QCOMPARE(m.shown(), (QStringList{"b", "b", "c", "d"}));
    m.rig.entity->makeCharMapActive(QStringLiteral("blue"), false); // not active: nothing
    QCOMPARE(m.activeNames(), QStringList{"red"});
}

void TstCharacterMap::deletingActiveMapReappliesOthers()
{
    MapRig m;
    QSignalSpy changed(&m.rig.document, &RigxData::refreshedCharMaps);
    for (const char *name : {"red", "hide", "next"})
        m.rig.entity->makeCharMapActive(QString::fromLatin1(name), true);
    QCOMPARE(m.shown(), (QStringList{"-", "c", "c", "d"}));
    changed.clear();

    QVERIFY(m.rig.entity->deleteCharMap(QStringLiteral("hide")));
    QVERIFY(!changed.isEmpty());
    QCOMPARE(m.activeNames(), (QStringList{"red", "next"}));
    QCOMPARE(m.shown(), (QStringList{"b", "c", "c", "d"}));
    QCOMPARE(m.rig.entity->charMapNames(), (QStringList{"red", "blue", "next"}));
    QVERIFY(!m.rig.entity->deleteCharMap(QStringLiteral("hide")));
}

void TstCharacterMap::editKeepsIdAndPlace()
{
    MapRig m;
    m.rig.entity->makeCharMapActive(QStringLiteral("red"), true);
    m.rig.entity->makeCharMapActive(QStringLiteral("blue"), true);
    const int id = m.rig.entity->charMapFromName(QStringLiteral("red"))->id();

    CharacterMap edited(QStringLiteral("crimson"));
    edited.addMap(m.address(2), m.address(3));
    QVERIFY(m.rig.entity->editCharMap(QStringLiteral("red"), edited));
    QCOMPARE(m.rig.entity->charMapFromName(QStringLiteral("crimson"))->id(), id);
    QCOMPARE(m.rig.entity->charMapFromName(QStringLiteral("red")), nullptr);
    QCOMPARE(m.activeNames(), (QStringList{"crimson", "blue"}));
    QCOMPARE(m.shown(), (QStringList{"c", "d", "d", "d"}));
    QVERIFY(!m.rig.entity->editCharMap(QStringLiteral("red"), edited));
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

void TstCharacterMap::uniqueNames_data()
{
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("proposed");
    QTest::addColumn<QString>("expected");

    QTest::newRow("free") << QStringList{"skin"} << QStringLiteral("armour")
                          << QStringLiteral("armour");
    QTest::newRow("taken") << QStringList{"skin"} << QStringLiteral("skin")
                           << QStringLiteral("skin_000");
    QTest::newRow("taken twice") << QStringList{"skin", "skin_000"} << QStringLiteral("skin")
                                 << QStringLiteral("skin_001");
    QTest::newRow("suffixed and taken") << QStringList{"skin", "skin_000"}
                                        << QStringLiteral("skin_000") << QStringLiteral("skin_001");
}

void TstCharacterMap::uniqueNames()
{
    QFETCH(QStringList, existing);
    QFETCH(QString, proposed);
    QFETCH(QString, expected);
    Rig rig;
    for (const QString &name : std::as_const(existing))
        rig.entity->appendCharMap(CharacterMap(name));
    QCOMPARE(rig.entity->uniqueCharMapName(proposed), expected);
}

void TstCharacterMap::entityKnowsItsFiles()
{
    MapRig m;
    File *unused = m.rig.file(QStringLiteral("e.png"));
    QVERIFY(m.rig.entity->charMapsContainFile(m.files.at(0)));
    QVERIFY(m.rig.entity->charMapsContainFile(m.files.at(3))); // a target only
    QVERIFY(!m.rig.entity->charMapsContainFile(unused));
    QVERIFY(!m.rig.entity->charMapsContainFile(nullptr));
}

void TstCharacterMap::unknownNamesChangeNothing()
{
    MapRig m;
    m.rig.entity->makeCharMapActive(QStringLiteral("Red"), true);
    QVERIFY(m.rig.entity->activeMap().isEmpty());
    QCOMPARE(m.rig.entity->charMapFromId(-5), nullptr);
    QCOMPARE(m.rig.entity->charMap(4), nullptr);

    // Ids that name no map are dropped from the active list.
    m.rig.entity->setActiveCharMaps(
        {-5, m.rig.entity->charMapFromName(QStringLiteral("red"))->id()});
    QCOMPARE(m.activeNames(), QStringList{"red"});
    QCOMPARE(m.shown().first(), QStringLiteral("b"));
}

void TstCharacterMap::setToCopiesMaps()
{
    MapRig m;
    m.rig.entity->makeCharMapActive(QStringLiteral("blue"), true);
    Entity copy;
    copy.setTo(*m.rig.entity);
    QCOMPARE(copy.charMapNames(), m.rig.entity->charMapNames());
    QCOMPARE(copy.activeMap(), m.rig.entity->activeMap());
    QVERIFY(*copy.charMap(1) == *m.rig.entity->charMap(1));
}

QTEST_GUILESS_MAIN(TstCharacterMap)
#include "tst_charactermap.moc"
