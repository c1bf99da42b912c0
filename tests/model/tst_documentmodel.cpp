// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;

class TestDocumentModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fileLoadsImageOrKeepsPlaceholder();
    void lookupsReturnNullOutOfRange();
    void removeUnusedFiles();
    void objectDefaultsAndTypes_data();
    void objectDefaultsAndTypes();
    void objectTypeFromGuideFlag();
    void uniqueObjectNames();
    void renameDoubleUnderscoredObjects();
    void deleteObjectTakesItsTimelines();
    void entityWithAnimationStartsWithKeyAtZero();
    void setToCopiesIntoAnotherEntity();
};

static void writePng(const QString &path, int w, int h)
{
    QImage img(w, h, QImage::Format_ARGB32);
    img.fill(Qt::red);
    QVERIFY(img.save(path));
}

void TestDocumentModel::fileLoadsImageOrKeepsPlaceholder()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    writePng(dir.filePath(QStringLiteral("hero.png")), 40, 30);

    File loaded(QStringLiteral("/hero.png"), 0.5, 0.5, File::Image, dir.path());
    QCOMPARE(loaded.name(), QStringLiteral("hero.png"));
    QVERIFY(loaded.imageLoaded());
    QCOMPARE(loaded.width(), 40);
    QCOMPARE(loaded.height(), 30);

    File missing(QStringLiteral("nothere.png"), 0, 0, File::Image, dir.path());
    QVERIFY(!missing.imageLoaded());
    QCOMPARE(missing.width(), 123);
    QCOMPARE(missing.height(), 128);
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
    RigxData doc;
    auto *folder = new Folder(QStringLiteral("arms"));
    doc.appendFolder(folder);
    auto *file = new File(QStringLiteral("arms/a.png"));
    folder->appendFile(file);
    Entity *e = doc.appendEmptyEntity();

    QCOMPARE(doc.folder(0), folder);
    QCOMPARE(doc.folder(1), nullptr);
    QCOMPARE(doc.folder(-1), nullptr);
    QCOMPARE(doc.folder(QStringLiteral("arms")), folder);
    QCOMPARE(doc.folderFromId(folder->id()), folder);
    QCOMPARE(doc.file(0, 0), file);
    QCOMPARE(doc.file(0, 1), nullptr);
    QCOMPARE(doc.file(3, 0), nullptr);
    QCOMPARE(doc.fileFromIds(folder->id(), file->id()), file);
    QCOMPARE(doc.fileFromIds(folder->id(), file->id() + 1000), nullptr);
    QCOMPARE(doc.file(QStringLiteral("/arms/a.png")), file);
    QCOMPARE(doc.entity(0), e);
    QCOMPARE(doc.entity(1), nullptr);
    QCOMPARE(doc.entity(e->name()), e);
    QCOMPARE(doc.entityFromId(e->id()), e);
    QCOMPARE(e->animation(5), nullptr);
    QCOMPARE(e->object(0), nullptr);
    QCOMPARE(doc.keyFromNumericIndexes(0, 0, 0, 0), nullptr);
    QCOMPARE(doc.mainlineKeyFromNumericIndexes(0, 0, 0), e->animation(0)->mainlineKey(0));
    QCOMPARE(doc.mainlineKeyFromNumericIndexes(0, 0, 1), nullptr);
    QCOMPARE(file->parentFolder(), folder);
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

void TestDocumentModel::removeUnusedFiles()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("img")));
    writePng(dir.filePath(QStringLiteral("img/present.png")), 8, 8);

    RigxData doc;
    doc.setFilePath(dir.filePath(QStringLiteral("project.rigx")));
    auto *img = new Folder(QStringLiteral("img"));
    doc.appendFolder(img);
    auto *present = new File(QStringLiteral("img/present.png"), 0, 0, File::Image, dir.path());
    auto *usedMissing = new File(QStringLiteral("img/used.png"), 0, 0, File::Image, dir.path());
    auto *unusedMissing = new File(QStringLiteral("img/gone.png"), 0, 0, File::Image, dir.path());
    img->appendFile(present);
    img->appendFile(usedMissing);
    img->appendFile(unusedMissing);
    auto *lonely = new Folder(QStringLiteral("lonely"));
    doc.appendFolder(lonely);
    lonely->appendFile(new File(QStringLiteral("lonely/x.png"), 0, 0, File::Image, dir.path()));

    Entity *e = doc.appendEmptyEntity();
    auto *sprite = new Object(QStringLiteral("arm"), Object::Sprite);
    e->appendObject(sprite);
    Animation *anim = e->animation(0);
    Timeline *tl = anim->appendObjectAsTimeline(sprite);
    auto *key = new TimelineKey;
    key->fileInfo().setAddress(usedMissing->address());
    tl->appendTimelineKey(key);

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

void TestDocumentModel::objectDefaultsAndTypes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shortName");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");

    QTest::newRow("bone") << int(Object::Bone) << "bone" << "bn" << 200.0 << 10.0;
    QTest::newRow("sprite") << int(Object::Sprite) << "sprite" << "spr" << 0.0 << 0.0;
    QTest::newRow("box") << int(Object::Box) << "box" << "bx" << 100.0 << 100.0;
    QTest::newRow("point") << int(Object::Point) << "point" << "pt" << 0.0 << 0.0;
    QTest::newRow("entity") << int(Object::SubEntity) << "entity" << "ent" << 0.0 << 0.0;
    QTest::newRow("sound") << int(Object::Sound) << "sound" << "snd" << 0.0 << 0.0;
    QTest::newRow("guide_sprite") << int(Object::GuideSprite) << "guide_sprite" << "gdspr" << 0.0
                                  << 0.0;
    QTest::newRow("guideline") << int(Object::GuideLine) << "guideline" << "gdln" << 0.0 << 0.0;
    QTest::newRow("guide_box") << int(Object::GuideBox) << "guide_box" << "gdbox" << 100.0
                               << 100.0;
    QTest::newRow("event") << int(Object::Event) << "event" << "ev" << 0.0 << 0.0;
    QTest::newRow("skin") << int(Object::Skin) << "skin" << "skn" << 0.0 << 0.0;
}

void TestDocumentModel::objectDefaultsAndTypes()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QFETCH(QString, shortName);
    QFETCH(double, width);
    QFETCH(double, height);

    Object o(QStringLiteral("o"), type);
    QCOMPARE(o.objectTypeString(), name);
    QCOMPARE(o.objectTypeString(true), shortName);
    QCOMPARE(Object::objectTypeFromString(name), type);
    QCOMPARE(Object::objectTypeFromString(shortName), type);
    QCOMPARE(o.width(), width);
    QCOMPARE(o.height(), height);
    QVERIFY(o.inhPos() && o.inhAngle() && o.inhScale());
    QVERIFY(!o.anchored());
}

void TestDocumentModel::objectTypeFromGuideFlag()
{
    QCOMPARE(Object::objectTypeFromString(QStringLiteral("sprite"), true), int(Object::GuideSprite));
    QCOMPARE(Object::objectTypeFromString(QStringLiteral("box"), true), int(Object::GuideBox));
    QCOMPARE(Object::objectTypeFromString(QStringLiteral("bone"), true), int(Object::Bone));
    QCOMPARE(Object::objectTypeFromString(QStringLiteral("Sprite")), 0);
    QCOMPARE(Object::objectTypeString(12345), QString());
}

void TestDocumentModel::uniqueObjectNames()
{
    Entity e;
    e.appendObject(new Object(QStringLiteral("sprite")));
    e.appendObject(new Object(QStringLiteral("sprite")));
    QCOMPARE(e.objectNames(), (QStringList{"sprite", "sprite_000"}));
    e.appendObject(new Object(QStringLiteral("sprite")));
    QCOMPARE(e.object(2)->name(), QStringLiteral("sprite_001"));
    e.appendObject(new Object(QStringLiteral("bone"), Object::Bone));
    QCOMPARE(e.objectNames(Object::Bone), QStringList{"bone"});
    QCOMPARE(e.objectFromName(QStringLiteral("sprite_000")), e.object(1));
}

void TestDocumentModel::renameDoubleUnderscoredObjects()
{
    Entity e;
    e.appendObject(new Object(QStringLiteral("sprite")));
    e.appendObject(new Object(QStringLiteral("__object_000")), -1, false);
    e.appendObject(new Object(QStringLiteral("__object_001"), Object::Bone), -1, false);
    e.renameDoubleUnderscoredObjects();
    QCOMPARE(e.objectNames(), (QStringList{"sprite", "sprite_000", "bone"}));
}

void TestDocumentModel::deleteObjectTakesItsTimelines()
{
    RigxData doc;
    Entity *e = doc.appendEmptyEntity();
    auto *arm = new Object(QStringLiteral("arm"));
    auto *leg = new Object(QStringLiteral("leg"));
    e->appendObject(arm);
    e->appendObject(leg);
    Animation *anim = e->animation(0);
    anim->appendObjectAsTimeline(arm)->appendTimelineKey(new TimelineKey);
    anim->appendObjectAsTimeline(leg)->appendTimelineKey(new TimelineKey);
    anim->appendMainKeysForOrphanTimeKeys();
    QCOMPARE(anim->mainlineKey(0)->zRefCount(), 2);
    QVERIFY(e->objectInUse(0));

    QVERIFY(e->deleteObject(QStringLiteral("arm")));
    QCOMPARE(anim->timelineCount(), 1);
    QCOMPARE(anim->timeline(0)->object(), leg);
    QCOMPARE(anim->timeline(0)->id(), 0);
    QCOMPARE(anim->mainlineKey(0)->zRefCount(), 1);
    QCOMPARE(anim->mainlineKey(0)->zRef(0)->timeline(), anim->timeline(0));
    QVERIFY(!e->deleteObject(QStringLiteral("arm")));
}

void TestDocumentModel::entityWithAnimationStartsWithKeyAtZero()
{
    Entity withAnim(QStringLiteral("hero"), true);
    QCOMPARE(withAnim.animationCount(), 1);
    QCOMPARE(withAnim.animation(0)->name(), QStringLiteral("NewAnimation"));
    QCOMPARE(withAnim.animation(0)->mainlineKeyCount(), 1);
    QCOMPARE(withAnim.animation(0)->mainlineKey(0)->currentTime(), 0);
    QCOMPARE(withAnim.animation(0)->length(), 1000);
    QVERIFY(withAnim.animation(0)->isLooping());

    Entity bare;
    QCOMPARE(bare.animationCount(), 0);
    QCOMPARE(bare.id(), withAnim.id() + 1);

    RigxData doc;
    doc.appendEmptyEntity();
    doc.appendEmptyEntity();
    QCOMPARE(doc.entityNames(), (QStringList{"entity_000", "entity_001"}));
}

void TestDocumentModel::setToCopiesIntoAnotherEntity()
{
    Entity source(QStringLiteral("hero"), true);
    auto *arm = new Object(QStringLiteral("arm"));
    source.appendObject(arm);
    source.animation(0)->appendObjectAsTimeline(arm)->appendTimelineKey(new TimelineKey);
    source.animation(0)->appendMainKeysForOrphanTimeKeys();

    Entity copy(QStringLiteral("other"));
    copy.setTo(source, true);
    QCOMPARE(copy.name(), QStringLiteral("hero"));
    QCOMPARE(copy.objectCount(), 1);
    QVERIFY(copy.object(0) != arm);
    QCOMPARE(copy.animation(0)->timeline(0)->object(), copy.object(0));
    QCOMPARE(copy.animation(0)->mainlineKey(0)->zRef(0)->key(),
             copy.animation(0)->timeline(0)->key(0));
}

QTEST_GUILESS_MAIN(TestDocumentModel)
#include "tst_documentmodel.moc"
