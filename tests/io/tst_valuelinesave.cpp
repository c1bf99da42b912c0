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
    void removeObjectMovesValueLines_data();
    void removeObjectMovesValueLines();
    void insertedObjectMovesValueLines();
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

void TestValueLineSave::removeObjectMovesValueLines_data()
{
    QTest::addColumn<QString>("removed");
    QTest::addColumn<bool>("destroy"); // through deleteObject
    QTest::addColumn<QList<double>>("remaining"); // values of the lines left, in order
    QTest::newRow("remove first") << "a" << false << QList<double>{2.0, 3.0};
    QTest::newRow("remove middle") << "b" << false << QList<double>{1.0, 3.0};
    QTest::newRow("remove last") << "c" << false << QList<double>{1.0, 2.0};
    QTest::newRow("delete middle") << "b" << true << QList<double>{1.0, 3.0};
    QTest::newRow("delete first") << "a" << true << QList<double>{2.0, 3.0};
}

void TestValueLineSave::removeObjectMovesValueLines()
{
    QFETCH(QString, removed);
    QFETCH(bool, destroy);
    QFETCH(QList<double>, remaining);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.rigx"));
    Fixture fixture(path, Object::Point,
                    {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    fixture.setValue(QStringLiteral("a"), 0, 1.0);
    fixture.setValue(QStringLiteral("b"), 0, 2.0);
    fixture.setValue(QStringLiteral("c"), 0, 3.0);

    Object *object = fixture.entity->objectFromName(removed);
    if (destroy) {
        QVERIFY(fixture.entity->deleteObject(removed));
    } else {
        QVERIFY(fixture.entity->removeObject(object));
        delete object;
    }
    // Object 0 is the sprite; the others follow in order, each still with its own line.
    QCOMPARE(fixture.entity->objectCount(), 3);
    for (int i = 0; i < 2; ++i) {
        const QList<QPair<int, double>> expected = {{0, remaining.at(i)}};
        QCOMPARE(floatKeys(fixture.entity, fixture.animation, i + 1), expected);
    }
    QVERIFY(!fixture.animation->objectLineHolder(3));

    // Saved and read back, each object has its own line.
    TestHost host;
    QVERIFY(ProjectFile::save(&fixture.document, path, {}, &host));
    RigxData reopened;
    QVERIFY(ProjectFile::open(&reopened, path, &host));
    const Entity *entity = reopened.entity(0);
    QCOMPARE(entity->objectCount(), 3);
    for (int i = 0; i < 2; ++i) {
        const QList<QPair<int, double>> expected = {{0, remaining.at(i)}};
        QCOMPARE(floatKeys(entity, entity->animation(0), i + 1), expected);
    }
}

void TestValueLineSave::insertedObjectMovesValueLines()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("p.rigx"));
    Fixture fixture(path, Object::Point, {QStringLiteral("a"), QStringLiteral("b")});
    fixture.setValue(QStringLiteral("a"), 0, 1.0);
    fixture.setValue(QStringLiteral("b"), 0, 2.0);
    // Between "a" (index 1) and "b" (index 2), after the sprite at index 0.
    fixture.entity->appendObject(new Object(QStringLiteral("new"), Object::Point), 2);
    const QList<QPair<int, double>> first = {{0, 1.0}};
    const QList<QPair<int, double>> second = {{0, 2.0}};
    QCOMPARE(floatKeys(fixture.entity, fixture.animation, 1), first);
    QVERIFY(!fixture.animation->objectLineHolder(2));
    QCOMPARE(floatKeys(fixture.entity, fixture.animation, 3), second);

    TestHost host;
    QVERIFY(ProjectFile::save(&fixture.document, path, {}, &host));
    RigxData reopened;
    QVERIFY(ProjectFile::open(&reopened, path, &host));
    const Entity *entity = reopened.entity(0);
    const auto keysOf = [entity](const char *name) {
        return floatKeys(entity, entity->animation(0),
                         entity->indexOfObject(entity->objectFromName(QString::fromLatin1(name))));
    };
    QCOMPARE(keysOf("a"), first);
    QCOMPARE(keysOf("b"), second);
}

QTEST_GUILESS_MAIN(TestValueLineSave)
#include "tst_valuelinesave.moc"
