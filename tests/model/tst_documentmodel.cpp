// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "modeltesthelpers.h"
#include "testfiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;
using namespace Morvane::Testing;

class TestDocumentModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fileLoadsImageOrKeepsPlaceholder();
    void lookupsReturnNullOutOfRange();
    void removeUnusedFiles();
    void objectTypes_data();
    void objectTypes();
    void objectNamesStayUnique();
    void deleteObjectTakesItsTimelines();
    void newEntitiesAndCopies();
};

void TestDocumentModel::fileLoadsImageOrKeepsPlaceholder()
{
    QTemporaryDir dir;
    QVERIFY(writePng(dir.filePath(QStringLiteral("hero.png")), QSize(40, 30)));

    File loaded(QStringLiteral("/hero.png"), 0.5, 0.5, File::Image, dir.path());
    QCOMPARE(loaded.name(), QStringLiteral("hero.png"));
    QVERIFY(loaded.imageLoaded());
    QCOMPARE(QSize(loaded.width(), loaded.height()), QSize(40, 30));

    File missing(QStringLiteral("nothere.png"), 0, 0, File::Image, dir.path());
    QVERIFY(!missing.imageLoaded());
    QCOMPARE(QSize(missing.width(), missing.height()), QSize(123, 128));
    QCOMPARE(missing.image().size(), QSize(123, 128));
    QVERIFY(!missing.fileStillValid());

    File sound(QStringLiteral("beep.wav"), 0, 0, File::Sound, dir.path());
    QVERIFY(sound.isSound());
    QCOMPARE(sound.typeString(), QStringLiteral("sound"));
    QCOMPARE(loaded.typeString(), QStringLiteral("image"));

    // Ids come from the process-wide counter unless the loader opts out.
    File a(QStringLiteral("a.png"));
    File b(QStringLiteral("b.png"));
    QCOMPARE(b.id(), a.id() + 1);
    QCOMPARE(File(QStringLiteral("c.png"), 0, 0, File::Image, QString(), true).id(), -1);
}

void TestDocumentModel::lookupsReturnNullOutOfRange()
{
    KeyedDocument k({}, {});
    RigxData &doc = k.doc;
    auto *folder = new Folder(QStringLiteral("arms"));
    doc.appendFolder(folder);
    auto *file = new File(QStringLiteral("arms/a.png"));
    folder->appendFile(file);

    QCOMPARE(doc.folder(-1), nullptr);
    QCOMPARE(doc.folder(QStringLiteral("arms")), folder);
    QCOMPARE(doc.file(0, 1), nullptr);
    QCOMPARE(doc.file(3, 0), nullptr);
    QCOMPARE(doc.fileFromIds(folder->id(), file->id()), file);
    QCOMPARE(doc.fileFromIds(folder->id(), file->id() + 1000), nullptr);
    QCOMPARE(doc.file(QStringLiteral("/arms/a.png")), file);
    QCOMPARE(doc.entity(1), nullptr);
    QCOMPARE(doc.entityFromId(k.entity->id()), k.entity);
    QCOMPARE(k.entity->animation(5), nullptr);
    QCOMPARE(doc.keyFromNumericIndexes(0, 0, 0, 0), nullptr);
    QCOMPARE(doc.mainlineKeyFromNumericIndexes(0, 0, 0), k.anim->mainlineKey(0));
    QCOMPARE(doc.mainlineKeyFromNumericIndexes(0, 0, 1), nullptr);
    QCOMPARE(file->document(), &doc);
    QCOMPARE(file->row(), 0);
    QCOMPARE(doc.fullAnimationCount(), 1);

    // The palette order sorts across folders, case-insensitively.
    auto *other = new Folder(QStringLiteral("legs"));
    doc.appendFolder(other);
    auto *b = new File(QStringLiteral("B.png"));
    auto *c = new File(QStringLiteral("c.png"));
    other->appendFile(c);
    other->appendFile(b);
    QCOMPARE(doc.flattenedFiles(), (QList<File *>{file, b, c}));
    doc.deleteFolder(1);
    QCOMPARE(doc.flattenedFiles(), QList<File *>{file});
}

// Unused files and the folders they leave empty go; a missing file still in use stays,
// listed as missing and drawn as the placeholder.
void TestDocumentModel::removeUnusedFiles()
{
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("img")));
    QVERIFY(writePng(dir.filePath(QStringLiteral("img/present.png")), QSize(8, 8)));

    KeyedDocument k({{"arm", Object::Sprite}}, {0});
    RigxData &doc = k.doc;
    doc.setFilePath(dir.filePath(QStringLiteral("project.rigx")));
    auto *img = new Folder(QStringLiteral("img"));
    doc.appendFolder(img);
    const auto add = [&](Folder *folder, const char *name) {
        auto *file = new File(QString::fromLatin1(name), 0, 0, File::Image, dir.path());
        folder->appendFile(file);
        return file;
    };
    File *present = add(img, "img/present.png");
    File *usedMissing = add(img, "img/used.png");
    add(img, "img/gone.png");
    auto *lonely = new Folder(QStringLiteral("lonely"));
    doc.appendFolder(lonely);
    add(lonely, "lonely/x.png");
    TimelineKey *key = k.anim->timeline(0)->key(0);
    key->fileInfo().setAddress(usedMissing->address());

    doc.removeUnusedFiles();

    QCOMPARE(doc.folderCount(), 1);
    QCOMPARE(doc.folder(0), img);
    QCOMPARE(img->fileCount(), 2);
    QCOMPARE(img->file(0), present);
    QCOMPARE(img->file(1), usedMissing);
    QVERIFY(doc.hasMissingImages());
    QCOMPARE(doc.missingImageFullPaths(),
             QStringList{dir.filePath(QStringLiteral("img/used.png"))});
    QCOMPARE(usedMissing->image().size(), QSize(123, 128));
    QCOMPARE(key->fileInfo().file(), usedMissing);
}

void TestDocumentModel::objectTypes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shortName");
    QTest::addColumn<QSizeF>("size");

    QTest::newRow("bone") << int(Object::Bone) << "bone" << "bn" << QSizeF(200, 10);
    QTest::newRow("sprite") << int(Object::Sprite) << "sprite" << "spr" << QSizeF();
    QTest::newRow("box") << int(Object::Box) << "box" << "bx" << QSizeF(100, 100);
    QTest::newRow("point") << int(Object::Point) << "point" << "pt" << QSizeF();
    QTest::newRow("entity") << int(Object::SubEntity) << "entity" << "ent" << QSizeF();
    QTest::newRow("sound") << int(Object::Sound) << "sound" << "snd" << QSizeF();
    QTest::newRow("guide_sprite") << int(Object::GuideSprite) << "guide_sprite" << "gdspr"
                                  << QSizeF();
    QTest::newRow("guideline") << int(Object::GuideLine) << "guideline" << "gdln" << QSizeF();
    QTest::newRow("guide_box") << int(Object::GuideBox) << "guide_box" << "gdbox"
                               << QSizeF(100, 100);
    QTest::newRow("event") << int(Object::Event) << "event" << "ev" << QSizeF();
    QTest::newRow("skin") << int(Object::Skin) << "skin" << "skn" << QSizeF();
}

// Each type's names read back to it; the file's guide flag turns a sprite or box into its
// guide; anything else reads as no type.
void TestDocumentModel::objectTypes()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QFETCH(QString, shortName);
    QFETCH(QSizeF, size);

    Object o(QStringLiteral("o"), type);
    QCOMPARE(o.objectTypeString(), name);
    QCOMPARE(o.objectTypeString(true), shortName);
    QCOMPARE(Object::objectTypeFromString(name), type);
    QCOMPARE(Object::objectTypeFromString(shortName), type);
    QCOMPARE(QSizeF(o.width(), o.height()), size.isValid() ? size : QSizeF(0, 0));
    QVERIFY(o.inhPos() && o.inhAngle() && o.inhScale());
    QVERIFY(!o.anchored());
    const int guide = type == Object::Sprite ? Object::GuideSprite
                      : type == Object::Box  ? Object::GuideBox
                                             : type;
    QCOMPARE(Object::objectTypeFromString(name, true), guide);
    QCOMPARE(Object::objectTypeFromString(name.toUpper()), 0);
    QCOMPARE(Object::objectTypeString(12345), QString());
}

void TestDocumentModel::objectNamesStayUnique()
{
    Entity e;
    for (int i = 0; i < 3; ++i)
        e.appendObject(new Object(QStringLiteral("sprite")));
    e.appendObject(new Object(QStringLiteral("bone"), Object::Bone));
    QCOMPARE(e.objectNames(), (QStringList{"sprite", "sprite_000", "sprite_001", "bone"}));
    QCOMPARE(e.objectNames(Object::Bone), QStringList{"bone"});
    QCOMPARE(e.objectFromName(QStringLiteral("sprite_000")), e.object(1));

    // Placeholder names a reader gave are replaced by the type's own, kept unique.
    Entity read;
    read.appendObject(new Object(QStringLiteral("sprite")));
    read.appendObject(new Object(QStringLiteral("__object_000")), -1, false);
    read.appendObject(new Object(QStringLiteral("__object_001"), Object::Bone), -1, false);
    read.renameDoubleUnderscoredObjects();
    QCOMPARE(read.objectNames(), (QStringList{"sprite", "sprite_000", "bone"}));
}

void TestDocumentModel::deleteObjectTakesItsTimelines()
{
    KeyedDocument k({{"arm", Object::Sprite}, {"leg", Object::Sprite}}, {0});
    Animation *anim = k.anim;
    QCOMPARE(anim->mainlineKey(0)->zRefCount(), 2);
    QVERIFY(k.entity->objectInUse(0));

    QVERIFY(k.entity->deleteObject(QStringLiteral("arm")));
    QCOMPARE(anim->timelineCount(), 1);
    QCOMPARE(anim->timeline(0)->object(), k.entity->object(0));
    QCOMPARE(anim->timeline(0)->id(), 0);
    QCOMPARE(anim->mainlineKey(0)->zRefCount(), 1);
    QCOMPARE(anim->mainlineKey(0)->zRef(0)->timeline(), anim->timeline(0));
    QVERIFY(!k.entity->deleteObject(QStringLiteral("arm")));
}

void TestDocumentModel::newEntitiesAndCopies()
{
    // A new entity with an animation starts with a mainline key at 0.
    Entity withAnim(QStringLiteral("hero"), true);
    const Animation *first = withAnim.animation(0);
    QCOMPARE(withAnim.animationCount(), 1);
    QCOMPARE(first->name(), QStringLiteral("NewAnimation"));
    QCOMPARE(first->mainlineKeyCount(), 1);
    QCOMPARE(first->mainlineKey(0)->currentTime(), 0);
    QCOMPARE(first->length(), 1000);
    QVERIFY(first->isLooping());
    QCOMPARE(Entity().id(), withAnim.id() + 1);

    KeyedDocument k({{"arm", Object::Sprite}}, {0});
    k.doc.appendEmptyEntity();
    QCOMPARE(k.doc.entityNames(), (QStringList{"entity_000", "entity_001"}));

    // A copy into another entity links its keys to its own objects.
    Entity copy(QStringLiteral("other"));
    copy.setTo(*k.entity, true);
    QCOMPARE(copy.name(), QStringLiteral("entity_000"));
    QCOMPARE(copy.objectCount(), 1);
    QVERIFY(copy.object(0) != k.entity->object(0));
    QCOMPARE(copy.animation(0)->timeline(0)->object(), copy.object(0));
    QCOMPARE(copy.animation(0)->mainlineKey(0)->zRef(0)->key(),
             copy.animation(0)->timeline(0)->key(0));
}

QTEST_GUILESS_MAIN(TestDocumentModel)
#include "tst_documentmodel.moc"
