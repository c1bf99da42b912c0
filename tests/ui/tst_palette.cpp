// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "treepaneltesthelpers.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "eval/entityinstance.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "ui/palette/palettepanel.h"
#include "ui/palette/palettetree.h"
#include "ui/palette/pivotpreview.h"
#include "ui/palette/thumbnailloader.h"

#include <QGraphicsSceneDragDropEvent>
#include <QImage>
#include <QMimeData>
#include <QPainter>
#include <QRegularExpression>
#include <QUndoStack>

#include <sys/stat.h>

#include <algorithm>
#include <cmath>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

using Fixture = PanelFixture<PalettePanel>;

QString projectDir(const Fixture &f)
{
    return f.hero.dir.path() + QStringLiteral("/hero");
}

bool writePng(const QString &path, QColor color, QSize size = QSize(10, 12))
{
    QDir().mkpath(QFileInfo(path).path());
    QImage image(size, QImage::Format_ARGB32);
    image.fill(color);
    return image.save(path, "PNG");
}

void pickImage(Fixture &f, const QString &name)
{
    QTreeWidgetItem *item = f.panel->itemFor(name);
    QVERIFY2(item, qPrintable(name));
    clickItem(f.panel->tree(), item);
    QCOMPARE(f.panel->tree()->currentItem(), item);
}

bool trigger(Fixture &f, const char *action)
{
    return clickAction(f.panel->findChild<QToolBar *>(), f.panel->action(QLatin1String(action)));
}

// Every timeline key of the document with the name of the file it shows.
QStringList keyFiles(RigxData &document)
{
    QStringList list;
    for (int e = 0; e < document.entityCount(); ++e) {
        const Entity *entity = document.entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            const Animation *animation = entity->animation(a);
            for (int t = 0; t < animation->timelineCount(); ++t) {
                const Timeline *timeline = animation->timeline(t);
                for (int k = 0; k < timeline->keyCount(); ++k) {
                    const File *file = timeline->key(k)->fileInfo().file();
                    list.append(file ? file->name() : QString());
                }
            }
        }
    }
    return list;
}

// The world position of the top-left corner of every image showing `file`,
// worked out from the pose (pivot offset in image pixels, scaled, turned) at
// the times of its keys. Between keys the pose blends the keys' turns and
// positions apart, so only a key's own time pins the image exactly.
QList<QPointF> imageCorners(RigxData &document, const File *file)
{
    QList<QPointF> corners;
    for (int e = 0; e < document.entityCount(); ++e) {
        Entity *entity = document.entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            Animation *animation = entity->animation(a);
            QSet<int> times;
            for (int t = 0; t < animation->timelineCount(); ++t) {
                for (int k = 0; k < animation->timeline(t)->keyCount(); ++k) {
                    if (animation->timeline(t)->key(k)->fileInfo().file() == file)
                        times.insert(animation->timeline(t)->key(k)->time());
                }
            }
            QList<int> sorted(times.begin(), times.end());
            std::sort(sorted.begin(), sorted.end());
            for (int time : std::as_const(sorted)) {
                EntityInstance instance(entity, animation);
                instance.setCurrentTime(time);
                instance.refresh();
                for (const PoseItem &item : instance.pose().objects) {
                    if (item.file != file || !item.key || item.key->time() != time)
                        continue;
                    const double ox = -item.pivotX * file->width() * item.xScale;
                    const double oy = -item.pivotY * file->height() * item.yScale;
                    const double r = item.angle / DisplayInfo::DegreesPerRadian;
                    corners.append(QPointF(item.x + ox * std::cos(r) - oy * std::sin(r),
                                           item.y + ox * std::sin(r) + oy * std::cos(r)));
                }
            }
        }
    }
    return corners;
}

} // namespace

class TestPalette : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsProjectImages();
    void filter_data();
    void filter();
    void renameImage_data();
    void renameImage();
    void replaceImage_data();
    void replaceImage();
    void missingImageFound_data();
    void missingImageFound();
    void pivotByClick_data();
    void pivotByClick();
    void dragMakesSprite_data();
    void dragMakesSprite();
    void watcherShowsNewImages_data();
    void watcherShowsNewImages();
    void thumbnails_data();
    void thumbnails();
    void spriteSheetFrames();
};

void TestPalette::listsProjectImages()
{
    Fixture f;
    QVERIFY(f.hero.ok);
    QStringList names;
    for (int i = 0; i < f.hero.document.folderCount(); ++i) {
        for (int j = 0; j < f.hero.document.folder(i)->fileCount(); ++j)
            names.append(f.hero.document.folder(i)->file(j)->name());
    }
    QCOMPARE(names.size(), 10);
    for (const QString &name : std::as_const(names)) {
        QTreeWidgetItem *item = f.panel->itemFor(name);
        QVERIFY2(item, qPrintable(name));
        QCOMPARE(item->data(0, PaletteTree::KindRole).toInt(), int(PaletteTree::ImageItem));
        // Under the item of its folder.
        QVERIFY(item->parent());
        QCOMPARE(item->parent()->text(0), QFileInfo(name).path());
    }
    QCOMPARE(f.panel->tree()->topLevelItemCount(), 3);
}

void TestPalette::filter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("shown");

    QTest::newRow("arm") << "arm" << QStringList{"body/lower_arm.png", "body/upper_arm.png"};
    QTest::newRow("case") << "KNIGHT"
                          << QStringList{"costume/head_knight.png", "costume/torso_knight.png"};
    QTest::newRow("folder part") << "props/"
                                 << QStringList{"props/flame.png", "props/lantern.png"};
    QTest::newRow("nothing") << "zzz" << QStringList{};
    QTest::newRow("regex is plain text") << ".*" << QStringList{};
}

void TestPalette::filter()
{
    QFETCH(QString, text);
    QFETCH(QStringList, shown);
    Fixture f;
    QVERIFY(f.hero.ok);
    f.panel->filterField()->setFocus();
    QTest::keyClicks(f.panel->filterField(), text);
    QStringList visible;
    int visibleFolders = 0;
    for (QTreeWidgetItemIterator it(f.panel->tree()); *it; ++it) {
        if ((*it)->isHidden() || ((*it)->parent() && (*it)->parent()->isHidden()))
            continue;
        if ((*it)->data(0, PaletteTree::KindRole).toInt() == PaletteTree::FolderItem)
            ++visibleFolders;
        else
            visible.append((*it)->data(0, PaletteTree::NameRole).toString());
    }
    visible.sort();
    QCOMPARE(visible, shown);
    // A folder shows only with something in it.
    QCOMPARE(visibleFolders > 0, !shown.isEmpty());
    // Clearing the field shows all again.
    f.panel->filterField()->clear();
    int all = 0;
    for (QTreeWidgetItemIterator it(f.panel->tree()); *it; ++it)
        all += !(*it)->isHidden() && (*it)->data(0, PaletteTree::KindRole).toInt() != PaletteTree::FolderItem;
    QCOMPARE(all, 10);
}

void TestPalette::renameImage_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("renamed"); // empty: refused

    QTest::newRow("plain") << "face.png" << "body/face.png";
    QTest::newRow("suffix kept") << "face" << "body/face.png";
    QTest::newRow("blanks trimmed") << "  face two.png  " << "body/face two.png";
    QTest::newRow("control characters") << "new\tname.png" << "body/new name.png";
    QTest::newRow("unicode") << QString::fromUtf8("t\xc3\xaate.png") << QString::fromUtf8("body/t\xc3\xaate.png");
    QTest::newRow("empty") << "" << "";
    QTest::newRow("slash") << "../escape.png" << "";
    QTest::newRow("backslash") << "a\\b.png" << "";
    QTest::newRow("dots") << ".." << "";
    QTest::newRow("bracket") << "<sheet.json>" << "";
    QTest::newRow("taken") << "torso.png" << "";
}

// Renaming an image renames it on disk and in the project; every key that
// showed it shows it under the new name; undo gives the bytes and the file back.
void TestPalette::renameImage()
{
    QFETCH(QString, typed);
    QFETCH(QString, renamed);
    Fixture f;
    QVERIFY(f.hero.ok);
    const QString old = QStringLiteral("body/head.png");
    const QByteArray before = f.hero.savedBytes();
    const QStringList keysBefore = keyFiles(f.hero.document);
    QVERIFY(keysBefore.count(old) > 0);
    pickImage(f, old);
    bool asked = false;
    answerText(f.panel, typed, &asked);
    QVERIFY(trigger(f, "actionRenameImage"));
    QVERIFY(asked);
    const QString dir = projectDir(f) + QLatin1Char('/');
    if (renamed.isEmpty()) {
        QCOMPARE(f.hero.stack.count(), 0);
        QCOMPARE(f.hero.savedBytes(), before);
        QVERIFY(QFileInfo::exists(dir + old));
        QVERIFY(!f.panel->message().isEmpty());
        return;
    }
    QCOMPARE(f.hero.stack.count(), 1);
    QStringList expected = keysBefore;
    expected.replaceInStrings(QRegularExpression(QStringLiteral("^body/head\\.png$")), renamed);
    QCOMPARE(keyFiles(f.hero.document), expected);
    QVERIFY(QFileInfo::exists(dir + renamed));
    QVERIFY(!QFileInfo::exists(dir + old));
    const File *file = f.hero.document.file(renamed, false);
    QVERIFY(file && file->imageLoaded());
    QVERIFY(f.panel->itemFor(renamed));
    QVERIFY(!f.panel->itemFor(old));
    const QByteArray after = f.hero.savedBytes();
    QVERIFY(after.contains(renamed.toUtf8()));
    QVERIFY(!after.contains(old.toUtf8()));

    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    QVERIFY(QFileInfo::exists(dir + old));
    QVERIFY(!QFileInfo::exists(dir + renamed));
    f.hero.stack.redo();
    QCOMPARE(f.hero.savedBytes(), after);
}

void TestPalette::replaceImage_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<bool>("newImage"); // the replacement is not in the project yet

    QTest::newRow("head by knight") << "body/head.png" << "costume/head_knight.png" << false;
    QTest::newRow("flame by lantern") << "props/flame.png" << "props/lantern.png" << false;
    QTest::newRow("by an image new to the project") << "body/torso.png" << "extra/torso_b.png" << true;
}

// Replacing an image through the palette saves what replacing the references
// in the model does, in one undo step.
void TestPalette::replaceImage()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(bool, newImage);
    Fixture f;
    QVERIFY(f.hero.ok);
    if (newImage) {
        QVERIFY(writePng(projectDir(f) + QLatin1Char('/') + to, Qt::red, QSize(56, 84)));
        f.panel->rebuild();
    }
    const QByteArray before = f.hero.savedBytes();
    const QStringList keysBefore = keyFiles(f.hero.document);
    pickImage(f, from);
    bool asked = false;
    answerItem(f.panel, to, &asked);
    QVERIFY(trigger(f, "actionReplaceImage"));
    QVERIFY(asked);
    QCOMPARE(f.hero.stack.count(), 1);
    QStringList expected = keysBefore;
    for (QString &name : expected) {
        if (name == from)
            name = to;
    }
    QCOMPARE(keyFiles(f.hero.document), expected);
    const QByteArray after = f.hero.savedBytes();

    HeroProject other;
    QVERIFY(other.ok);
    if (newImage) {
        QVERIFY(writePng(other.dir.path() + QStringLiteral("/hero/") + to, Qt::red, QSize(56, 84)));
        auto *folder = new Folder(QStringLiteral("extra"));
        other.document.appendFolder(folder);
        auto *file = new File(to, 0.5, 0.5);
        folder->appendFile(file);
        file->refreshPixmap();
    }
    other.document.replaceFileReferences(other.document.file(from, false)->address(),
                                         other.document.file(to, false)->address(), false);
    QCOMPARE(after, other.savedBytes());

    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    f.hero.stack.redo();
    QCOMPARE(f.hero.savedBytes(), after);
}

void TestPalette::missingImageFound_data()
{
    QTest::addColumn<QString>("movedTo"); // empty: deleted
    QTest::addColumn<QString>("decoy");   // a file of the same name that must not win

    QTest::newRow("subfolder") << "body/old/head.png" << "";
    QTest::newRow("deep elsewhere") << "archive/2024/spring/head.png" << "";
    QTest::newRow("project root") << "head.png" << "";
    QTest::newRow("nearest wins") << "body/old/head.png" << "z/y/x/w/head.png";
    QTest::newRow("gone for good") << "" << "";
}

// A missing image is found again by its name after being moved elsewhere under
// the project folder; the project follows in one undo step.
void TestPalette::missingImageFound()
{
    QFETCH(QString, movedTo);
    QFETCH(QString, decoy);
    HeroProject hero;
    QVERIFY(hero.ok);
    const QString dir = hero.dir.path() + QStringLiteral("/hero/");
    const QString old = QStringLiteral("body/head.png");
    if (!decoy.isEmpty()) {
        QDir().mkpath(QFileInfo(dir + decoy).path());
        QVERIFY(QFile::copy(dir + old, dir + decoy));
    }
    if (movedTo.isEmpty()) {
        QVERIFY(QFile::remove(dir + old));
    } else {
        QDir().mkpath(QFileInfo(dir + movedTo).path());
        QVERIFY(QFile::rename(dir + old, dir + movedTo));
    }
    QString error;
    QVERIFY(ProjectFile::open(&hero.document, hero.projectPath(), nullptr, &error));
    QVERIFY(!hero.document.file(old, false)->imageLoaded());
    const QByteArray before = hero.savedBytes();

    CanvasEditor editor;
    editor.setDocument(&hero.document);
    PalettePanel panel(editor.session());
    panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    QTreeWidgetItem *item = panel.itemFor(old);
    QVERIFY(item);
    QCOMPARE(item->data(0, PaletteTree::KindRole).toInt(), int(PaletteTree::MissingItem));
    QAction *find = panel.action(QStringLiteral("actionFindMissing"));
    QVERIFY(find->isEnabled());
    bool asked = false;
    if (!movedTo.isEmpty())
        answerQuestion(&panel, QMessageBox::Yes, &asked);
    QVERIFY(clickAction(panel.findChild<QToolBar *>(), find));
    if (movedTo.isEmpty()) {
        QCOMPARE(hero.stack.count(), 0);
        QVERIFY(panel.message().contains(QLatin1String("None")));
        editor.setDocument(nullptr);
        return;
    }
    QVERIFY(asked);
    QCOMPARE(hero.stack.count(), 1);
    const File *file = hero.document.file(movedTo, false);
    QVERIFY(file);
    QVERIFY(file->imageLoaded());
    QCOMPARE(QSize(file->width(), file->height()), QSize(64, 68));
    QCOMPARE(panel.itemFor(movedTo)->data(0, PaletteTree::KindRole).toInt(), int(PaletteTree::ImageItem));
    QVERIFY(!find->isEnabled());
    // The keys never lost the file; they show the found one.
    QVERIFY(keyFiles(hero.document).contains(movedTo));
    QVERIFY(!keyFiles(hero.document).contains(old));
    // Saved and opened again, the image is there.
    const QByteArray after = hero.savedBytes();
    RigxData reread;
    QVERIFY(ProjectFile::open(&reread, hero.dir.path() + QStringLiteral("/hero/saved_1.rigx"), nullptr, &error));
    QVERIFY(reread.file(movedTo, false) && reread.file(movedTo, false)->imageLoaded());

    hero.stack.undo();
    QCOMPARE(hero.savedBytes(), before);
    hero.stack.redo();
    QCOMPARE(hero.savedBytes(), after);
    editor.setDocument(nullptr);
}

void TestPalette::pivotByClick_data()
{
    QTest::addColumn<QString>("image");
    QTest::addColumn<QPointF>("fraction");
    QTest::addColumn<QSize>("panelSize");
    QTest::addColumn<bool>("newToProject");

    QTest::newRow("head, lower left") << "body/head.png" << QPointF(0.25, 0.75) << QSize(320, 600) << false;
    QTest::newRow("head, centre") << "body/head.png" << QPointF(0.5, 0.5) << QSize(320, 600) << false;
    QTest::newRow("upper arm, top, narrow panel") << "body/upper_arm.png" << QPointF(0.5, 0.1) << QSize(180, 500) << false;
    QTest::newRow("lower leg, corner") << "body/lower_leg.png" << QPointF(0.95, 0.05) << QSize(400, 700) << false;
    QTest::newRow("flame") << "props/flame.png" << QPointF(0.3, 0.9) << QSize(320, 600) << false;
    // Before its first use: the click adds it to the project with that pivot.
    QTest::newRow("image new to the project") << "props/gem.png" << QPointF(0.5, 0.8) << QSize(320, 600) << true;
}

// A click on the enlarged picture sets the default pivot there; every sprite
// that follows it stays where it was on screen at every time; undo restores.
void TestPalette::pivotByClick()
{
    QFETCH(QString, image);
    QFETCH(QPointF, fraction);
    QFETCH(QSize, panelSize);
    QFETCH(bool, newToProject);
    Fixture f;
    QVERIFY(f.hero.ok);
    if (newToProject)
        QVERIFY(writePng(projectDir(f) + QLatin1Char('/') + image, Qt::green, QSize(30, 40)));
    f.panel->resize(panelSize);
    f.panel->rebuild();
    QCoreApplication::processEvents();
    File *file = f.hero.document.file(image, false);
    QCOMPARE(!file, newToProject);
    const QList<QPointF> corners = file ? imageCorners(f.hero.document, file) : QList<QPointF>();
    QCOMPARE(corners.isEmpty(), newToProject);
    const QByteArray before = f.hero.savedBytes();
    pickImage(f, image);
    PivotPreview *preview = f.panel->preview();
    const QRectF rect = preview->imageRect();
    QVERIFY(!rect.isEmpty());
    const QPoint at(qRound(rect.left() + fraction.x() * rect.width()),
                    qRound(rect.top() + fraction.y() * rect.height()));
    QTest::mouseClick(preview, Qt::LeftButton, Qt::NoModifier, at);
    QCOMPARE(f.hero.stack.count(), 1);
    file = f.hero.document.file(image, false);
    QVERIFY(file);
    // Enlarged: the picture is bigger than the image, within the limit.
    QVERIFY(rect.width() >= file->width() || rect.height() >= file->height() * 0.9);
    const QPointF pivot = file->pivot(false);
    const double tolerance = 1.0 / rect.width() + 0.001;
    QVERIFY2(std::abs(pivot.x() - fraction.x()) <= tolerance, qPrintable(QString::number(pivot.x())));
    QVERIFY2(std::abs(pivot.y() - fraction.y()) <= 1.0 / rect.height() + 0.001,
             qPrintable(QString::number(pivot.y())));
    QCOMPARE(preview->pivot(), pivot);

    const QList<QPointF> moved = imageCorners(f.hero.document, file);
    QCOMPARE(moved.size(), corners.size());
    for (int i = 0; i < corners.size(); ++i) {
        QVERIFY2(QLineF(corners[i], moved[i]).length() < 1e-6,
                 qPrintable(QStringLiteral("%1: (%2, %3) became (%4, %5)")
                                .arg(i)
                                .arg(corners[i].x())
                                .arg(corners[i].y())
                                .arg(moved[i].x())
                                .arg(moved[i].y())));
    }
    // A click beside the picture changes nothing.
    QTest::mouseClick(preview, Qt::LeftButton, Qt::NoModifier, QPoint(1, 1));
    QCOMPARE(f.hero.stack.count(), 1);

    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
}

void TestPalette::dragMakesSprite_data()
{
    QTest::addColumn<QString>("image");
    QTest::addColumn<bool>("newToProject");

    QTest::newRow("project image") << "props/flame.png" << false;
    QTest::newRow("image new to the project") << "props/gem.png" << true;
    QTest::newRow("new image in a new folder") << "extra/gem two.png" << true;
    QTest::newRow("characters that mean something in a URL") << "props/#1 100%25?.png" << true;
}

// What the palette's drag carries is what the canvas makes a sprite of; an
// image new to the project joins it first.
void TestPalette::dragMakesSprite()
{
    QFETCH(QString, image);
    QFETCH(bool, newToProject);
    Fixture f;
    QVERIFY(f.hero.ok);
    if (newToProject) {
        QVERIFY(writePng(projectDir(f) + QLatin1Char('/') + image, Qt::green));
        f.panel->rebuild();
    }
    f.editor.setCurrentAnimation(f.hero.animation(QStringLiteral("idle")));
    const QByteArray before = f.hero.savedBytes();
    const int objects = f.hero.document.entity(0)->objectCount();
    QTreeWidgetItem *item = f.panel->itemFor(image);
    QVERIFY(item);
    QCOMPARE(item->data(0, PaletteTree::KindRole).toInt(),
             int(newToProject ? PaletteTree::DiskOnlyItem : PaletteTree::ImageItem));
    std::unique_ptr<QMimeData> mime(f.panel->tree()->mimeDataFor({item}));
    QVERIFY(mime);
    QCOMPARE(mime->urls().size(), 1);
    QCOMPARE(f.hero.document.file(image, false) != nullptr, true);

    QGraphicsSceneDragDropEvent drop(QEvent::GraphicsSceneDrop);
    drop.setMimeData(mime.get());
    drop.setScenePos(QPointF(40, -60));
    drop.setProposedAction(Qt::CopyAction);
    drop.setPossibleActions(Qt::CopyAction);
    QApplication::sendEvent(f.editor.scene(), &drop);
    QVERIFY(drop.isAccepted());
    QCOMPARE(f.hero.document.entity(0)->objectCount(), objects + 1);
    const Timeline *timeline = f.hero.animation(QStringLiteral("idle"))->timeline(
        f.hero.animation(QStringLiteral("idle"))->timelineCount() - 1);
    QCOMPARE(timeline->key(0)->fileInfo().file()->name(), image);
    QCOMPARE(timeline->key(0)->info().x, 40.0);
    QTRY_VERIFY(f.panel->itemFor(image)
                && f.panel->itemFor(image)->data(0, PaletteTree::KindRole).toInt()
                       == int(PaletteTree::ImageItem));

    while (f.hero.stack.canUndo())
        f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
}

void TestPalette::watcherShowsNewImages_data()
{
    QTest::addColumn<QString>("image");

    QTest::newRow("known folder") << "props/gem.png";
    QTest::newRow("project folder") << "gem.png";
    QTest::newRow("new folder") << "extra/gem.png";
}

void TestPalette::watcherShowsNewImages()
{
    QFETCH(QString, image);
    Fixture f;
    QVERIFY(f.hero.ok);
    QVERIFY(!f.panel->itemFor(image));
    QVERIFY(writePng(projectDir(f) + QLatin1Char('/') + image, Qt::blue));
    QTRY_VERIFY_WITH_TIMEOUT(f.panel->itemFor(image), 5000);
    QCOMPARE(f.panel->itemFor(image)->data(0, PaletteTree::KindRole).toInt(),
             int(PaletteTree::DiskOnlyItem));
    // Nothing of the document changed.
    QCOMPARE(f.hero.stack.count(), 0);
    QFile::remove(projectDir(f) + QLatin1Char('/') + image);
    QTRY_VERIFY_WITH_TIMEOUT(!f.panel->itemFor(image), 5000);
}

void TestPalette::thumbnails_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content"); // empty: a real image; "fifo": a named pipe
    QTest::addColumn<bool>("picture");
    QTest::addColumn<bool>("listed");

    QTest::newRow("image") << "props/lantern.png" << QByteArray() << true << true;
    QTest::newRow("text named png") << "props/fake.png" << QByteArray("not an image") << false << true;
    QTest::newRow("empty file") << "props/empty.png" << QByteArray("") << false << true;
    QTest::newRow("huge claimed size") << "props/huge.png"
                                       << QByteArray::fromHex("89504e470d0a1a0a0000000d4948445200007fff00007fff0806000000")
                                       << false << true;
    // Never opened: reading a pipe would wait for a writer forever.
    QTest::newRow("named pipe") << "props/pipe.png" << QByteArray("fifo") << false << false;
}

// Thumbnails come from the worker, once per file; files that are no image
// never hang the palette and get none.
void TestPalette::thumbnails()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(bool, picture);
    QFETCH(bool, listed);
    Fixture f;
    QVERIFY(f.hero.ok);
    const QString path = projectDir(f) + QLatin1Char('/') + name;
    if (content == "fifo") {
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    } else if (!picture || !content.isNull()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    f.panel->rebuild();
    QTreeWidgetItem *item = f.panel->itemFor(name);
    QCOMPARE(item != nullptr, listed);
    ThumbnailLoader *loader = f.panel->thumbnails();
    loader->waitForDone();
    QCoreApplication::processEvents();
    const QImage thumbnail = loader->thumbnail(path);
    QCOMPARE(!thumbnail.isNull(), picture);
    if (picture) {
        QVERIFY(thumbnail.width() <= ThumbnailLoader::Side && thumbnail.height() <= ThumbnailLoader::Side);
        // The icon shows it: some pixel of it is not transparent.
        const QImage icon = item->icon(0).pixmap(ThumbnailLoader::Side).toImage();
        bool opaque = false;
        for (int y = 0; y < icon.height() && !opaque; ++y) {
            for (int x = 0; x < icon.width() && !opaque; ++x)
                opaque = qAlpha(icon.pixel(x, y)) > 0;
        }
        QVERIFY(opaque);
    }
    // A second look decodes nothing again.
    const int decodes = loader->decodeCount();
    f.panel->rebuild();
    loader->waitForDone();
    QCoreApplication::processEvents();
    QCOMPARE(loader->decodeCount(), decodes);
}

// An atlas folder lists every frame of its sheet, in the project or not.
void TestPalette::spriteSheetFrames()
{
    Fixture f;
    QVERIFY(f.hero.ok);
    const QString dir = projectDir(f) + QLatin1Char('/');
    QImage sheet(30, 10, QImage::Format_ARGB32);
    sheet.fill(Qt::transparent);
    QPainter painter(&sheet);
    painter.fillRect(0, 0, 10, 10, Qt::red);
    painter.fillRect(10, 0, 20, 10, Qt::blue);
    painter.end();
    QVERIFY(sheet.save(dir + QStringLiteral("parts.png")));
    QFile json(dir + QStringLiteral("parts.json"));
    QVERIFY(json.open(QIODevice::WriteOnly));
    json.write(R"({"frames": {
        "red.png": {"frame": {"x": 0, "y": 0, "w": 10, "h": 10}, "rotated": false, "trimmed": false,
                    "spriteSourceSize": {"x": 0, "y": 0, "w": 10, "h": 10}, "sourceSize": {"w": 10, "h": 10}},
        "blue.png": {"frame": {"x": 10, "y": 0, "w": 20, "h": 10}, "rotated": false, "trimmed": false,
                     "spriteSourceSize": {"x": 0, "y": 0, "w": 20, "h": 10}, "sourceSize": {"w": 20, "h": 10}}},
        "meta": {"image": "parts.png", "size": {"w": 30, "h": 10}}})");
    json.close();
    auto *folder = new Folder(QStringLiteral("<parts.json>/"));
    f.hero.document.appendFolder(folder);
    folder->appendFile(new File(QStringLiteral("<parts.json>/red.png")));
    folder->appendFile(new File(QStringLiteral("<parts.json>/ghost.png")));
    f.panel->rebuild();

    const QString prefix = QStringLiteral("<parts.json>/");
    for (const auto &[frame, kind] : {std::pair{"red.png", PaletteTree::FrameItem},
                                      std::pair{"blue.png", PaletteTree::FrameItem},
                                      std::pair{"ghost.png", PaletteTree::MissingItem}}) {
        QTreeWidgetItem *item = f.panel->itemFor(prefix + QLatin1String(frame));
        QVERIFY2(item, frame);
        QCOMPARE(item->data(0, PaletteTree::KindRole).toInt(), int(kind));
        QCOMPARE(item->parent()->data(0, PaletteTree::NameRole).toString(), prefix);
    }
    // Frames never show up again as loose images of the folder.
    QVERIFY(!f.panel->itemFor(QStringLiteral("parts.png")) ||
            f.panel->itemFor(QStringLiteral("parts.png"))->data(0, PaletteTree::KindRole).toInt()
                == PaletteTree::DiskOnlyItem);
    // The blue frame's icon is blue.
    const QImage icon = f.panel->itemFor(prefix + QStringLiteral("blue.png"))->icon(0).pixmap(ThumbnailLoader::Side).toImage();
    QCOMPARE(QColor(icon.pixel(icon.width() / 2, icon.height() / 2)), QColor(Qt::blue));
}

QTEST_MAIN(TestPalette)
#include "tst_palette.moc"
