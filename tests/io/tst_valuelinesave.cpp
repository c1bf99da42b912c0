// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "testhost.h"

#include "io/projectfile.h"
#include "meta/metaowner.h"
#include "meta/valinfocollection.h"
#include "meta/valkey.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

// A project whose entity "e" has a keyed sprite "s" in animation "a", and the objects
// named in `names` (of `type`), each with a float variable "f".
struct Fixture
{
    RigxData document;
    Entity *entity = nullptr;
    Animation *animation = nullptr;

    Fixture(const QString &path, int type, const QStringList &names)
    {
        document.setFilePath(path);
        auto *folder = new Folder(QString());
        document.appendFolder(folder);
        auto *file = new File(QStringLiteral("a.png"), 0.5, 0.5, File::Image,
                              document.projectDirectory());
        folder->appendFile(file);
        entity = new Entity(QStringLiteral("e"));
        document.appendEntity(entity);
        auto *sprite = new Object(QStringLiteral("s"), Object::Sprite);
        entity->appendObject(sprite);
        for (const QString &name : names) {
            auto *object = new Object(name, type);
            entity->appendObject(object, -1, false);
            object->valInfoCollection().addValInfo(QStringLiteral("f"), 0.0, VarType::Float,
                                                   object);
        }
        animation = new Animation(QStringLiteral("a"), true);
        animation->setLength(1000);
        entity->appendAnimation(animation);
        auto *timeline = new Timeline(sprite, QStringLiteral("s"));
        animation->appendTimeline(timeline);
        auto *key = new TimelineKey(FileInfo(file->address()), DisplayInfo());
        timeline->appendTimelineKey(key, true, false);
        animation->appendMainKeysForOrphanTimeKeys(false);
    }

    // Sets a key of the object's "f" line in the animation, the way the editor does.
    void setValue(const QString &name, int time, double value)
    {
        const Object *object = entity->objectFromName(name);
        QVERIFY(object);
        const int objectIndex = entity->indexOfObject(object);
        const MetaOwner owner = MetaOwner::forAnimationObject(animation, objectIndex);
        ValueLineHolder *holder = owner.lineHolder(&document);
        QVERIFY(holder);
        const int id = object->valInfoCollection().idFromName(QStringLiteral("f"));
        QVERIFY(holder->setKeyCommand(&document, owner, {VarType::Float, id},
                                      std::make_unique<FloatKey>(time, value), time));
    }
};

// The keys (time, value) of the float line "f" of the object at `objectIndex`.
QList<QPair<int, double>> floatKeys(const Entity *entity, const Animation *animation,
                                    int objectIndex)
{
    QList<QPair<int, double>> keys;
    const Object *object = entity->object(objectIndex);
    const ValueLineHolder *holder = animation->objectLineHolder(objectIndex);
    if (!object || !holder)
        return keys;
    const ValLine *line =
        holder->line({VarType::Float, object->valInfoCollection().idFromName(QStringLiteral("f"))});
    for (int k = 0; line && k < line->keyCount(); ++k)
        keys.append({line->key(k)->time(), line->key(k)->value().toDouble()});
    return keys;
}

} // namespace

class TestValueLineSave : public QObject
{
    Q_OBJECT

private slots:
    void linesWithoutTimelineAreKept_data();
    void linesWithoutTimelineAreKept();
    void editedObjectListMovesValueLines_data();
    void editedObjectListMovesValueLines();
};

void TestValueLineSave::linesWithoutTimelineAreKept_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("form");
    const QList<QPair<const char *, int>> types = {{"sprite", Object::Sprite},
                                                   {"point", Object::Point},
                                                   {"bone", Object::Bone},
                                                   {"sound", Object::Sound},
                                                   {"event", Object::Event}};
    for (const auto &type : types) {
        for (const char *form : {"rigx", "rigj"})
            QTest::addRow("%s %s", type.first, form) << type.second << QString::fromLatin1(form);
    }
}

void TestValueLineSave::linesWithoutTimelineAreKept()
{
    // An object keyed only on its value lines in an animation has no timeline there.
    QFETCH(int, type);
    QFETCH(QString, form);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.") + form);
    Fixture fixture(path, type, {QStringLiteral("o")});
    fixture.setValue(QStringLiteral("o"), 0, -2.5);
    fixture.setValue(QStringLiteral("o"), 250, 1.5);
    const int objectIndex = fixture.entity->indexOfObject(
        fixture.entity->objectFromName(QStringLiteral("o")));
    const QList<QPair<int, double>> expected = {{0, -2.5}, {250, 1.5}};
    QCOMPARE(floatKeys(fixture.entity, fixture.animation, objectIndex), expected);

    TestHost host;
    QVERIFY(ProjectFile::save(&fixture.document, path, {}, &host));
    const QByteArray saved = readAll(path);
    RigxData reopened;
    QVERIFY(ProjectFile::open(&reopened, path, &host));
    const Entity *entity = reopened.entity(0);
    const Object *object = entity->objectFromName(QStringLiteral("o"));
    QVERIFY(object);
    QCOMPARE(object->objectType(), type);
    // The keyless timeline that carried the lines is gone again.
    QCOMPARE(entity->animation(0)->timelineCount(), 1);
    QCOMPARE(floatKeys(entity, entity->animation(0), entity->indexOfObject(object)), expected);
    const QString again = dir.filePath(QStringLiteral("again.") + form);
    QVERIFY(ProjectFile::save(&reopened, again, {}, &host));
    QCOMPARE(readAll(again), saved);
    QVERIFY(host.lines.isEmpty());
}

void TestValueLineSave::editedObjectListMovesValueLines_data()
{
    QTest::addColumn<QString>("edit");      // "remove NAME", "delete NAME" or "insert"
    QTest::addColumn<QStringList>("after"); // the objects after the sprite, "name=value of f"
    QTest::newRow("remove first") << "remove a" << QStringList{"b=2", "c=3"};
    QTest::newRow("remove middle") << "remove b" << QStringList{"a=1", "c=3"};
    QTest::newRow("remove last") << "remove c" << QStringList{"a=1", "b=2"};
    QTest::newRow("delete middle") << "delete b" << QStringList{"a=1", "c=3"};
    QTest::newRow("delete first") << "delete a" << QStringList{"b=2", "c=3"};
    // Between "a" and "b", after the sprite at index 0; the new object has no line.
    QTest::newRow("insert") << "insert" << QStringList{"a=1", "new", "b=2", "c=3"};
}

void TestValueLineSave::editedObjectListMovesValueLines()
{
    QFETCH(QString, edit);
    QFETCH(QStringList, after);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.rigx"));
    Fixture fixture(path, Object::Point,
                    {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    fixture.setValue(QStringLiteral("a"), 0, 1.0);
    fixture.setValue(QStringLiteral("b"), 0, 2.0);
    fixture.setValue(QStringLiteral("c"), 0, 3.0);
    const QString name = edit.section(QLatin1Char(' '), 1);
    if (edit.startsWith(QLatin1String("delete"))) {
        QVERIFY(fixture.entity->deleteObject(name));
    } else if (edit.startsWith(QLatin1String("remove"))) {
        Object *object = fixture.entity->objectFromName(name);
        QVERIFY(fixture.entity->removeObject(object));
        delete object;
    } else {
        fixture.entity->appendObject(new Object(QStringLiteral("new"), Object::Point), 2);
    }
    // Each object still has its own line, or none; no line is left past the last object.
    QCOMPARE(fixture.entity->objectCount(), after.size() + 1);
    for (int i = 0; i < after.size(); ++i) {
        QCOMPARE(fixture.entity->object(i + 1)->name(),
                 after.at(i).section(QLatin1Char('='), 0, 0));
        if (!after.at(i).contains(QLatin1Char('=')))
            QVERIFY(!fixture.animation->objectLineHolder(i + 1));
        else
            QCOMPARE(floatKeys(fixture.entity, fixture.animation, i + 1),
                     (QList<QPair<int, double>>{
                         {0, after.at(i).section(QLatin1Char('='), 1).toDouble()}}));
    }
    QVERIFY(!fixture.animation->objectLineHolder(after.size() + 1));

    // Saved and read back, each object keyed on its line has that line.
    TestHost host;
    QVERIFY(ProjectFile::save(&fixture.document, path, {}, &host));
    RigxData reopened;
    QVERIFY(ProjectFile::open(&reopened, path, &host));
    const Entity *entity = reopened.entity(0);
    for (const QString &object : std::as_const(after)) {
        if (!object.contains(QLatin1Char('=')))
            continue;
        const int index =
            entity->indexOfObject(entity->objectFromName(object.section(QLatin1Char('='), 0, 0)));
        QCOMPARE(floatKeys(entity, entity->animation(0), index),
                 (QList<QPair<int, double>>{{0, object.section(QLatin1Char('='), 1).toDouble()}}));
    }
}

QTEST_GUILESS_MAIN(TestValueLineSave)
#include "tst_valuelinesave.moc"
