// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/canvaseditor.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/morvanegraphicsview.h"
#include "canvas/objectgraphicsproxy.h"
#include "canvas/onionskinitem.h"
#include "canvas/tools/selecttool.h"
#include "canvas/tools/toolmanager.h"
#include "canvas/transformcontrolitemgroup.h"
#include "canvastesthelpers.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/timeline.h"

#include <QAction>
#include <QApplication>
#include <QGraphicsSceneDragDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QRandomGenerator>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>
#include <QWheelEvent>

#include <cmath>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

// The example project shown in a canvas editor on screen (offscreen).
struct Canvas
{
    Canvas()
    {
        editor.resize(1000, 800);
        editor.show();
        editor.activateWindow();
        if (!QTest::qWaitForWindowActive(&editor))
            qWarning("the canvas window did not become active");
        editor.view()->setFocus();
        editor.setDocument(&hero.document);
        editor.view()->setZoom(200);
        editor.view()->centerOn(0, -120);
    }

    MorvaneCanvasScene *scene() const { return editor.scene(); }
    MorvaneGraphicsView *view() const { return editor.view(); }
    QWidget *viewport() const { return editor.view()->viewport(); }
    QPoint at(const QPointF &scenePos) const { return view()->mapFromScene(scenePos); }

    void show(const QString &animation, int time)
    {
        editor.setCurrentAnimation(hero.animation(animation));
        editor.setCurrentTime(time);
    }

    void drag(const QPointF &from, const QPointF &to,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mousePress(viewport(), Qt::LeftButton, modifiers, at(from));
        QTest::mouseMove(viewport(), at((from + to) / 2));
        QTest::mouseMove(viewport(), at(to));
        QTest::mouseRelease(viewport(), Qt::LeftButton, modifiers, at(to));
    }

    void click(const QPointF &where, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mouseClick(viewport(), Qt::LeftButton, modifiers, at(where));
    }

    // The middle of a shown proxy's outline, in scene coordinates.
    static QPointF middle(const ObjectGraphicsProxy *p)
    {
        return p->mapToScene(p->localRect().center());
    }

    QList<ObjectGraphicsProxy *> shown() const
    {
        QList<ObjectGraphicsProxy *> list;
        for (int i = 0; i < scene()->instTimelineProxyCount(); ++i) {
            ObjectGraphicsProxy *p = scene()->instTimelineProxyFromIndex(i);
            if (p->isShownInPose() && view()->viewport()->rect().contains(at(middle(p))))
                list.append(p);
        }
        return list;
    }

    HeroProject hero;
    CanvasEditor editor;
};

} // namespace

class TestCanvasScene : public QObject
{
    Q_OBJECT

private slots:
    void dragBetweenKeys();
    void nudge_data();
    void nudge();
    void clickSelection();
    void rubberBand();
    void inverseKinematics_data();
    void inverseKinematics();
    void onionSkinTimes_data();
    void onionSkinTimes();
    void onionSkinDrawsAndPersists();
    void undoDuringAGesture();
    void lockAndHide();
    void contextMenu();
    void dropImage_data();
    void dropImage();
    void deleteSelection_data();
    void deleteSelection();
    void cloneSelection();
    void boneTool_data();
    void boneTool();
    void reparentWithB();
    void zOrderActions_data();
    void zOrderActions();
    void wheelZoom_data();
    void wheelZoom();
    void scaleAboutPivot_data();
    void scaleAboutPivot();
    void rotationSnapping_data();
    void rotationSnapping();
    void drawsBonesAndSelection();
    void viewActions();
    void inheritFlagsThroughGestures_data();
    void inheritFlagsThroughGestures();
    void rotateCursorOutsideTheCorners();
    void randomGesturesUndoToTheSavedBytes();
};

// A drag between keys, where the dragged item has no key, keys it there and at the next
// mainline key, so that the poses at the neighbouring keys stay; one undo step each.
void TestCanvasScene::dragBetweenKeys()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    Animation *anim = c.hero.animation(QStringLiteral("idle"));
    Entity *entity = c.hero.document.entity(0);
    const QByteArray original = c.hero.savedBytes();

    // A mainline key at 300 that only the head's timeline keys.
    c.show(QStringLiteral("idle"), 300);
    c.scene()->setSelectedProxies({c.scene()->idProxy(QStringLiteral("head"))});
    QTest::keyClick(c.view(), Qt::Key_Up, Qt::ShiftModifier);
    QCOMPARE(c.hero.stack.count(), 1);
    QVERIFY(anim->mainlineKeyAtExactTime(300));
    const QByteArray nudged = c.hero.savedBytes();

    c.show(QStringLiteral("idle"), 150);
    QVERIFY(!anim->mainlineKeyAtExactTime(150));
    const QList<int> times = {0, 300, 600};
    QList<QMap<int, QList<double>>> poses;
    for (int t : times)
        poses.append(worldPose(entity, anim, t));
    const ObjectGraphicsProxy *torso = c.scene()->idProxy(QStringLiteral("torso"));
    QVERIFY(torso);
    const QPointF from = Canvas::middle(torso);
    ObjectGraphicsProxy *subject = c.scene()->proxiesAt(from).value(0);
    QVERIFY(subject);
    const int line = subject->timelineIndex();
    Timeline *tl = anim->timeline(line);
    QVERIFY(!tl->actualKeyFromTime(300));
    const int mainlineKeys = anim->mainlineKeyCount();
    const int keys = tl->keyCount();
    const QPointF start(subject->displayInfo().x, subject->displayInfo().y);

    c.drag(from, from + QPointF(-30, 12));
    QCOMPARE(c.hero.stack.count(), 2);
    QCOMPARE(anim->mainlineKeyCount(), mainlineKeys + 1);
    QCOMPARE(tl->keyCount(), keys + 2);
    QVERIFY(tl->actualKeyFromTime(150) && tl->actualKeyFromTime(300));
    // The pose read back from the document has the item where it was dropped.
    subject = c.scene()->instTimelineProxyFromIndex(line);
    QVERIFY(std::abs(subject->displayInfo().x - (start.x() - 30)) < 1e-6);
    QVERIFY(std::abs(subject->displayInfo().y - (start.y() + 12)) < 1e-6);
    QCOMPARE(c.scene()->selectedProxies(), QList<ObjectGraphicsProxy *>{subject});
    for (int i = 0; i < times.size(); ++i)
        QVERIFY2(samePose(poses[i], worldPose(entity, anim, times[i])),
                 qPrintable(QStringLiteral("pose at %1 changed").arg(times[i])));

    QVERIFY(c.hero.undoRedoRoundTrip(nudged));
    c.hero.stack.undo();
    QCOMPARE(c.hero.savedBytes(), original);
}

void TestCanvasScene::nudge_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("shift");
    QTest::addColumn<QPointF>("expected");
    QTest::newRow("right") << int(Qt::Key_Right) << false << QPointF(3, 0);
    QTest::newRow("up, shift") << int(Qt::Key_Up) << true << QPointF(0, -30);
    QTest::newRow("left") << int(Qt::Key_Left) << false << QPointF(-3, 0);
    QTest::newRow("down, shift") << int(Qt::Key_Down) << true << QPointF(0, 30);
}

void TestCanvasScene::nudge()
{
    QFETCH(int, key);
    QFETCH(bool, shift);
    QFETCH(QPointF, expected);
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), 100);
    const QByteArray before = c.hero.savedBytes();
    ObjectGraphicsProxy *head = c.scene()->idProxy(QStringLiteral("head"));
    QVERIFY(head);
    const int timeline = head->timelineIndex();
    const QPointF start(head->displayInfo().x, head->displayInfo().y);
    c.scene()->setSelectedProxies({head});
    const Qt::KeyboardModifiers mods = shift ? Qt::ShiftModifier : Qt::NoModifier;
    for (int i = 0; i < 3; ++i)
        QTest::keyPress(c.view(), Qt::Key(key), mods);
    QCOMPARE(c.hero.stack.count(), 0); // recorded on release only
    QTest::keyRelease(c.view(), Qt::Key(key), mods);
    QCOMPARE(c.hero.stack.count(), 1);
    QCOMPARE(c.hero.stack.undoText(), QStringLiteral("head moved"));
    head = c.scene()->instTimelineProxyFromIndex(timeline);
    QVERIFY(std::abs(head->displayInfo().x - (start.x() + expected.x())) < 1e-6);
    QVERIFY(std::abs(head->displayInfo().y - (start.y() + expected.y())) < 1e-6);
    QVERIFY(c.hero.undoRedoRoundTrip(before));
}

void TestCanvasScene::clickSelection()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("idle"), 0);
    // A place with at least three items on top of each other.
    QPointF spot;
    QList<ObjectGraphicsProxy *> under;
    for (ObjectGraphicsProxy *p : c.shown()) {
        under = c.scene()->proxiesAt(Canvas::middle(p));
        if (under.size() >= 3) {
            spot = Canvas::middle(p);
            break;
        }
    }
    QVERIFY(under.size() >= 3);
    c.click(spot);
    QCOMPARE(c.scene()->selectedProxies(), QList<ObjectGraphicsProxy *>{under[0]});
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    c.click(spot);
    QCOMPARE(c.scene()->selectedProxies(), QList<ObjectGraphicsProxy *>{under[1]});
    c.click(spot, Qt::AltModifier);
    QCOMPARE(c.scene()->selectedProxies(), QList<ObjectGraphicsProxy *>{under[2]});
    c.click(spot, Qt::ControlModifier); // toggles the topmost in
    QCOMPARE(c.scene()->selectedProxies(), (QList<ObjectGraphicsProxy *>{under[2], under[0]}));
    c.click(spot, Qt::ControlModifier); // and out again
    QCOMPARE(c.scene()->selectedProxies(), QList<ObjectGraphicsProxy *>{under[2]});
    QTest::keyClick(c.view(), Qt::Key_Escape);
    QVERIFY(c.scene()->selectedProxies().isEmpty());
    QCOMPARE(c.hero.stack.count(), 0);
}

void TestCanvasScene::rubberBand()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("idle"), 0);
    const ObjectGraphicsProxy *head = c.scene()->idProxy(QStringLiteral("head"));
    QVERIFY(head);
    // A band around the head, from empty canvas beside it.
    const QRectF r = head->sceneBoundingRect();
    const QPointF from = r.topLeft() + QPointF(-200, -200);
    QVERIFY(c.scene()->proxiesAt(from).isEmpty());
    c.drag(from, r.center());
    const QList<ObjectGraphicsProxy *> selected = c.scene()->selectedProxies();
    QVERIFY(selected.contains(const_cast<ObjectGraphicsProxy *>(head)));
    for (const ObjectGraphicsProxy *p : selected)
        QVERIFY(p->sceneBoundingRect().intersects(QRectF(from, r.center()).normalized()));
    QCOMPARE(c.hero.stack.count(), 0);
}

void TestCanvasScene::inverseKinematics_data()
{
    QTest::addColumn<QString>("bone");
    QTest::addColumn<double>("reach"); // target distance from the root, as a share of the chain
    QTest::addColumn<double>("turn");  // degrees the target lies off the present end
    QTest::newRow("reachable, forearm") << "arm_front_lower" << 0.8 << 15.0;
    QTest::newRow("reachable, shin") << "leg_back_lower" << 0.9 << -20.0;
    QTest::newRow("out of reach straightens") << "arm_front_lower" << 1.6 << 30.0;
}

void TestCanvasScene::inverseKinematics()
{
    QFETCH(QString, bone);
    QFETCH(double, reach);
    QFETCH(double, turn);
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), 100);
    const QByteArray before = c.hero.savedBytes();
    ObjectGraphicsProxy *b = c.scene()->idProxy(bone);
    QVERIFY(b && b->parentProxy() && b->parentProxy()->isBone());
    const int timeline = b->timelineIndex();
    const QPointF root(b->parentProxy()->displayInfo().x, b->parentProxy()->displayInfo().y);
    const QPointF middle(b->displayInfo().x, b->displayInfo().y);
    const QPointF end = b->mapToScene(QPointF(b->boneLength(), 0));
    const double chain = QLineF(root, middle).length() + QLineF(middle, end).length();
    QLineF towards(root, end);
    towards.setAngle(towards.angle() - turn);
    towards.setLength(chain * reach);
    // Where the pointer really lands: viewport pixels.
    const QPointF target = c.view()->mapToScene(c.at(towards.p2()));

    c.drag(end, target, Qt::ShiftModifier);
    QCOMPARE(c.hero.stack.count(), 1);
    b = c.scene()->instTimelineProxyFromIndex(timeline);
    const QPointF newEnd = b->mapToScene(QPointF(b->boneLength(), 0));
    const QPointF newRoot(b->parentProxy()->displayInfo().x, b->parentProxy()->displayInfo().y);
    QVERIFY(QLineF(newRoot, root).length() < 1e-6); // the root stays
    if (reach <= 1.0) {
        QVERIFY2(QLineF(newEnd, target).length() < 0.5,
                 qPrintable(QStringLiteral("%1 px off").arg(QLineF(newEnd, target).length())));
    } else {
        // Straight, and pointing at the target.
        QVERIFY(std::abs(QLineF(root, newEnd).length() - chain) < 0.5);
        QLineF aim(root, target);
        aim.setLength(chain);
        QVERIFY(QLineF(aim.p2(), newEnd).length() < 0.5);
    }
    QVERIFY(c.hero.undoRedoRoundTrip(before));
}

void TestCanvasScene::onionSkinTimes_data()
{
    QTest::addColumn<bool>("byKeys");
    QTest::addColumn<int>("time");
    QTest::addColumn<QList<int>>("earlier");
    QTest::addColumn<QList<int>>("later");
    // walk: 800 ms, looping, frames of 100 ms, mainline keys at 0, 200, 400, 600.
    QTest::newRow("frames, wrapping back") << false << 100 << QList<int>{0, 700} << QList<int>{200, 300};
    QTest::newRow("frames, wrapping on") << false << 750 << QList<int>{650, 550} << QList<int>{50, 150};
    QTest::newRow("keys") << true << 300 << QList<int>{200, 0} << QList<int>{400, 600};
    QTest::newRow("keys at the end") << true << 700 << QList<int>{600, 400} << QList<int>{};
}

void TestCanvasScene::onionSkinTimes()
{
    QFETCH(bool, byKeys);
    QFETCH(int, time);
    QFETCH(QList<int>, earlier);
    QFETCH(QList<int>, later);
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), time);
    OnionSkinItem *onion = c.scene()->onionSkin();
    onion->setCounts(2, 2);
    onion->setMode(byKeys ? OnionSkinItem::Mode::Keys : OnionSkinItem::Mode::Frames);
    onion->setOn(true);
    QCOMPARE(onion->earlierTimes(), earlier);
    QCOMPARE(onion->laterTimes(), later);
}

void TestCanvasScene::onionSkinDrawsAndPersists()
{
    auto tinted = [](const QImage &image, bool red) {
        int count = 0;
        for (int y = 0; y < image.height(); y += 2) {
            for (int x = 0; x < image.width(); x += 2) {
                const QColor px(image.pixel(x, y));
                count += red ? px.red() > px.green() + 60 && px.red() > px.blue() + 60
                             : px.green() > px.red() + 40 && px.green() > px.blue() + 40;
            }
        }
        return count;
    };
    QSettings().remove(QStringLiteral("Canvas"));
    {
        Canvas c;
        QVERIFY(c.hero.ok);
        c.show(QStringLiteral("walk"), 300);
        QVERIFY(!c.scene()->onionSkin()->isOn());
        const QImage plain = c.viewport()->grab().toImage();
        c.editor.action(QStringLiteral("actionOnion_Skin"))->trigger();
        QVERIFY(c.scene()->onionSkin()->isOn());
        const QImage onion = c.viewport()->grab().toImage();
        QVERIFY(tinted(onion, true) > tinted(plain, true) + 20);
        QVERIFY(tinted(onion, false) > tinted(plain, false) + 20);
        QCOMPARE(c.hero.stack.count(), 0); // drawing only
    }
    // The next editor starts with it on.
    Canvas again;
    QVERIFY(again.scene()->onionSkin()->isOn());
    QVERIFY(again.editor.action(QStringLiteral("actionOnion_Skin"))->isChecked());
    QSettings().remove(QStringLiteral("Canvas"));
}

void TestCanvasScene::undoDuringAGesture()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), 100);
    const QByteArray before = c.hero.savedBytes();
    // A clone, so that undoing it takes a proxy away while the next drag is on.
    ObjectGraphicsProxy *head = c.scene()->idProxy(QStringLiteral("head"));
    c.scene()->setSelectedProxies({head});
    c.editor.action(QStringLiteral("actionClone"))->trigger();
    ObjectGraphicsProxy *copy = c.scene()->selectedProxies().value(0);
    QVERIFY(copy && copy != head);
    const QPointF end = copy->mapToScene(copy->localRect().center());
    QTest::mousePress(c.viewport(), Qt::LeftButton, Qt::NoModifier, c.at(end));
    QTest::mouseMove(c.viewport(), c.at(end + QPointF(20, 0)));
    c.hero.stack.undo();
    QTest::mouseMove(c.viewport(), c.at(end + QPointF(30, 0)));
    QTest::keyClick(c.view(), Qt::Key_Escape);
    QTest::mouseRelease(c.viewport(), Qt::LeftButton, Qt::NoModifier, c.at(end + QPointF(30, 0)));
    QCOMPARE(c.hero.savedBytes(), before);
}

void TestCanvasScene::lockAndHide()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), 100);
    ObjectGraphicsProxy *head = c.scene()->idProxy(QStringLiteral("head"));
    QVERIFY(head);
    const int timeline = head->timelineIndex();
    const QPointF spot = Canvas::middle(head);
    QVERIFY(c.scene()->proxiesAt(spot).contains(head));

    c.scene()->setSelectedProxies({head});
    c.scene()->lockSelectedObjects();
    QVERIFY(c.scene()->selectedProxies().isEmpty());
    QVERIFY(!c.scene()->proxiesAt(spot).contains(head));
    c.click(spot);
    QVERIFY(!c.scene()->selectedProxies().contains(head));
    // Locked stays locked at another time.
    c.show(QStringLiteral("walk"), 300);
    QVERIFY(c.scene()->instTimelineProxyFromIndex(timeline)->isLocked());
    c.scene()->setAllObjsUnlocked();
    head = c.scene()->instTimelineProxyFromIndex(timeline);
    QVERIFY(c.scene()->proxiesAt(Canvas::middle(head)).contains(head));

    c.scene()->setSelectedProxies({head});
    c.scene()->hideSelectedObjects();
    QVERIFY(!head->isVisible());
    QVERIFY(c.scene()->selectedProxies().isEmpty());
    QVERIFY(!c.scene()->proxiesAt(Canvas::middle(head)).contains(head));
    c.scene()->setAllObjsVisible();
    QVERIFY(head->isVisible());
    QCOMPARE(c.hero.stack.count(), 0); // not edits
}

// The menu's copy-to-all-frames entries stay disabled until the window provides them.
void TestCanvasScene::contextMenu()
{
    Canvas c;
    std::unique_ptr<QMenu> menu(c.editor.createContextMenu());
    QMenu *properties = menu->actions().last()->menu();
    QVERIFY(properties);
    QCOMPARE(properties->actions().size(), 6);
    for (QAction *a : properties->actions())
        QVERIFY(!a->isEnabled());
    QAction windowAngle(QStringLiteral("angle"));
    QSignalSpy triggered(&windowAngle, &QAction::triggered);
    c.editor.setCopyToAllFramesAction(QStringLiteral("angle"), &windowAngle);
    menu.reset(c.editor.createContextMenu());
    QAction *angle = menu->actions().last()->menu()->actions().at(4);
    QCOMPARE(angle->text(), QStringLiteral("angle"));
    QVERIFY(angle->isEnabled());
    angle->trigger();
    QCOMPARE(triggered.count(), 1);
}

void TestCanvasScene::dropImage_data()
{
    QTest::addColumn<QString>("image"); // relative to the project folder; empty: none
    QTest::addColumn<bool>("withAnimation");
    QTest::addColumn<bool>("created");
    QTest::newRow("an image of the project") << "props/flame.png" << true << true;
    QTest::newRow("a file outside the project") << "../elsewhere.png" << true << false;
    QTest::newRow("no entity to drop into") << "props/flame.png" << false << false;
}

void TestCanvasScene::dropImage()
{
    QFETCH(QString, image);
    QFETCH(bool, withAnimation);
    QFETCH(bool, created);
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), 100);
    if (!withAnimation)
        c.editor.setDocument(nullptr);
    Animation *anim = c.hero.animation(QStringLiteral("walk"));
    const QByteArray before = c.hero.savedBytes();
    const int timelines = anim->timelineCount();
    QSignalSpy refused(c.scene(), &MorvaneCanvasScene::recievedInvalidDrag);
    QSignalSpy dropped(c.scene(), &MorvaneCanvasScene::newObjectDropped);

    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(QFileInfo(c.hero.projectPath()).path() + '/' + image)});
    const QPointF at(-220, -140);
    QGraphicsSceneDragDropEvent enter(QEvent::GraphicsSceneDragEnter);
    enter.setMimeData(&mime);
    enter.setScenePos(at);
    enter.setProposedAction(Qt::CopyAction);
    enter.setPossibleActions(Qt::CopyAction);
    enter.setAccepted(false);
    QApplication::sendEvent(c.scene(), &enter);
    QCOMPARE(refused.count(), withAnimation ? 0 : 1);
    QGraphicsSceneDragDropEvent drop(QEvent::GraphicsSceneDrop);
    drop.setMimeData(&mime);
    drop.setScenePos(at);
    drop.setProposedAction(Qt::CopyAction);
    drop.setPossibleActions(Qt::CopyAction);
    QApplication::sendEvent(c.scene(), &drop);

    QCOMPARE(dropped.count(), created ? 1 : 0);
    QCOMPARE(c.hero.stack.count(), created ? 1 : 0);
    QCOMPARE(anim->timelineCount(), timelines + (created ? 1 : 0));
    if (!created)
        return;
    QCOMPARE(c.hero.stack.undoText(), QStringLiteral("new sprite created"));
    ObjectGraphicsProxy *sprite = c.scene()->instTimelineProxyFromIndex(timelines);
    QVERIFY(sprite && sprite->isShownInPose());
    QCOMPARE(sprite->name(), QStringLiteral("flame"));
    QCOMPARE(QPointF(sprite->displayInfo().x, sprite->displayInfo().y), at);
    QCOMPARE(c.scene()->selectedProxies(), QList<ObjectGraphicsProxy *>{sprite});
    // Drawn with the image's size and its own pivot: 14 x 20, pivot written as
    // (0.5, 0.1) with y upwards, so 0.9 of the height from the top.
    QCOMPARE(sprite->localRect(), QRectF(-7, -18, 14, 20));
    QVERIFY(c.hero.undoRedoRoundTrip(before));
}

void TestCanvasScene::deleteSelection_data()
{
    QTest::addColumn<QString>("animation");
    QTest::addColumn<int>("time");
    QTest::addColumn<QString>("object");
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("label");
    const QString here = QStringLiteral("object(s) deleted");
    const QString fromAll = QStringLiteral("object(s) deleted from all frames");
    const QString everywhere = QStringLiteral("object(s) deleted from all animations");
    QTest::newRow("a sprite keyed here") << "walk" << 200 << "head" << "actionDelete" << here;
    QTest::newRow("a bone with children, between keys")
        << "walk" << 100 << "arm_front_upper" << "actionDelete" << here;
    QTest::newRow("a bone with children, at a key")
        << "walk" << 400 << "arm_back_upper" << "actionDelete" << here;
    QTest::newRow("all frames: a sprite")
        << "walk" << 100 << "head" << "actionDelete_From_All_Frames" << fromAll;
    QTest::newRow("all frames: a bone with children")
        << "walk" << 300 << "arm_front_upper" << "actionDelete_From_All_Frames" << fromAll;
    QTest::newRow("every animation: a sprite")
        << "idle" << 0 << "torso" << "actionDelete_All_Instances" << everywhere;
    QTest::newRow("every animation: a bone")
        << "idle" << 700 << "leg_back_upper" << "actionDelete_All_Instances" << everywhere;
}

// What stays keeps its place on the canvas, the children of a deleted bone under the
// nearest bone that stays; saved and read again, the item stays deleted.
void TestCanvasScene::deleteSelection()
{
    QFETCH(QString, animation);
    QFETCH(int, time);
    QFETCH(QString, object);
    QFETCH(QString, action);
    QFETCH(QString, label);
    const bool here = action == QLatin1String("actionDelete");
    const bool everywhere = action == QLatin1String("actionDelete_All_Instances");
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(animation, time);
    Entity *entity = c.hero.document.entity(0);
    const QByteArray before = c.hero.savedBytes();
    QList<Animation *> affected{c.hero.animation(animation)};
    if (everywhere)
        affected = {c.hero.animation(QStringLiteral("idle")),
                    c.hero.animation(QStringLiteral("walk"))};
    // Timelines move up when one goes: poses by timeline name.
    auto poseByName = [entity](Animation *anim, int t) {
        QMap<int, QList<double>> byName;
        const QMap<int, QList<double>> pose = worldPose(entity, anim, t);
        for (auto it = pose.constBegin(); it != pose.constEnd(); ++it)
            byName.insert(int(qHash(anim->timeline(it.key())->name())), it.value());
        return byName;
    };
    QList<QMap<int, QMap<int, QList<double>>>> poses;
    for (Animation *anim : std::as_const(affected)) {
        QVERIFY(anim->timelineFromObjectName(object));
        QMap<int, QMap<int, QList<double>>> byTime;
        // Between keys a deleted bone's children blend under another parent: only the
        // keys themselves (and the current time, which a plain delete keys) must stay.
        QList<int> times;
        if (here)
            times.append(time);
        for (int m = 0; m < anim->mainlineKeyCount(); ++m)
            times.append(anim->mainlineKey(m)->currentTime());
        for (int t : times) {
            byTime.insert(t, poseByName(anim, t));
            if (!here || t == time)
                byTime[t].remove(int(qHash(object)));
        }
        poses.append(byTime);
    }
    const int timelines = c.hero.animation(animation)->timelineCount();
    ObjectGraphicsProxy *target = c.scene()->idProxy(object);
    QVERIFY(target);
    const int line = target->timelineIndex();
    c.scene()->setSelectedProxies({target});
    c.editor.action(action)->trigger();

    QCOMPARE(c.hero.stack.count(), 1);
    QCOMPARE(c.hero.stack.undoText(), label);
    QVERIFY(c.scene()->selectedProxies().isEmpty());
    QVERIFY(entity->objectFromName(object)); // the object info stays
    if (here) {
        Animation *anim = affected.first();
        const MainlineKey *mk = anim->mainlineKeyAtExactTime(time);
        QVERIFY(mk && !mk->refFromTimeline(anim->timeline(line)));
        QVERIFY(!anim->timeline(line)->actualKeyFromTime(time));
        QVERIFY(!c.scene()->instTimelineProxyFromIndex(line)->isShownInPose());
    } else {
        QVERIFY(!c.scene()->idProxy(object));
        QCOMPARE(c.hero.animation(animation)->timelineCount(), timelines - 1);
        // Only the chosen animations lose the object.
        QCOMPARE(!c.hero.animation(QStringLiteral("idle"))->timelineFromObjectName(object),
                 everywhere);
    }
    for (int a = 0; a < affected.size(); ++a) {
        for (auto it = poses[a].constBegin(); it != poses[a].constEnd(); ++it) {
            QMap<int, QList<double>> now = poseByName(affected[a], it.key());
            if (!here || it.key() == time)
                now.remove(int(qHash(object)));
            const QString where = affected[a]->name() + QStringLiteral(" at %1").arg(it.key());
            QVERIFY2(samePose(it.value(), now), qPrintable(where + QStringLiteral(" changed")));
        }
    }
    RigxData reread;
    QVERIFY(c.hero.reread(&reread));
    for (const Animation *anim : std::as_const(affected)) {
        const Animation *again = reread.entity(0)->animation(anim->name());
        const Timeline *againLine = again->timelineFromObjectName(object);
        QCOMPARE(againLine != nullptr, here);
        QVERIFY(!againLine || !again->mainlineKeyAtExactTime(time)->refFromTimeline(againLine));
    }

    QVERIFY(c.hero.undoRedoRoundTrip(before));
    QVERIFY(c.scene()->idProxy(object));
}

void TestCanvasScene::cloneSelection()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), 100);
    Animation *anim = c.hero.animation(QStringLiteral("walk"));
    Entity *entity = c.hero.document.entity(0);
    const QByteArray before = c.hero.savedBytes();
    const int timelines = anim->timelineCount();
    ObjectGraphicsProxy *head = c.scene()->idProxy(QStringLiteral("head"));
    ObjectGraphicsProxy *lantern = c.scene()->idProxy(QStringLiteral("lantern"));
    QVERIFY(head && lantern);
    const DisplayInfo headWorld = head->displayInfo();
    const int headParent = head->parentTimelineIndex();
    c.scene()->setSelectedProxies({head, lantern});
    c.editor.action(QStringLiteral("actionClone"))->trigger();

    QCOMPARE(c.hero.stack.count(), 1);
    QCOMPARE(c.hero.stack.undoText(), QStringLiteral("item(s) cloned"));
    QCOMPARE(anim->timelineCount(), timelines + 2);
    QCOMPARE(entity->object(entity->objectCount() - 2)->name(), QStringLiteral("head_000"));
    ObjectGraphicsProxy *copy = c.scene()->instTimelineProxyFromIndex(timelines);
    QVERIFY(copy && copy->isShownInPose());
    QCOMPARE(c.scene()->selectedProxies().size(), 2);
    QCOMPARE(c.scene()->selectedProxies().first(), copy);
    QCOMPARE(copy->parentTimelineIndex(), headParent);
    QVERIFY(std::abs(copy->displayInfo().x - (headWorld.x + 10)) < 1e-6);
    QVERIFY(std::abs(copy->displayInfo().y - (headWorld.y + 10)) < 1e-6);
    QVERIFY(std::abs(copy->displayInfo().angle - headWorld.angle) < 1e-6);
    // The copy is drawn in front of everything.
    const MainlineKey *mk = anim->mainlineKeyAtExactTime(100);
    QVERIFY(mk);
    QVERIFY(mk->indexOfZRef(mk->refFromTimeline(anim->timeline(timelines))) >= mk->zRefCount() - 2);

    c.hero.stack.undo();
    QCOMPARE(anim->timelineCount(), timelines);
    QCOMPARE(c.hero.savedBytes(), before);
}

void TestCanvasScene::boneTool_data()
{
    QTest::addColumn<QString>("parent");
    QTest::addColumn<int>("time");
    QTest::newRow("a root bone at a mainline key") << QString() << 0;
    QTest::newRow("under the selected bone, between keys") << "arm_front_lower" << 100;
}

void TestCanvasScene::boneTool()
{
    QFETCH(QString, parent);
    QFETCH(int, time);
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), time);
    Animation *anim = c.hero.animation(QStringLiteral("walk"));
    Entity *entity = c.hero.document.entity(0);
    const QByteArray before = c.hero.savedBytes();
    const int objects = entity->objectCount();
    const int timelines = anim->timelineCount();
    ObjectGraphicsProxy *parentBone = parent.isEmpty() ? nullptr : c.scene()->idProxy(parent);
    QVERIFY(parent.isEmpty() || parentBone);
    c.scene()->setSelectedProxies(parentBone ? QList<ObjectGraphicsProxy *>{parentBone}
                                             : QList<ObjectGraphicsProxy *>{});
    const int parentTimeline = parentBone ? parentBone->timelineIndex() : -1;

    QTest::keyClick(c.view(), Qt::Key_3); // the bone tool's shortcut
    QCOMPARE(c.editor.toolManager()->activeTool()->name(), QStringLiteral("Bone"));
    const QPointF from = c.view()->mapToScene(c.at(QPointF(-150, -200)));
    const QPointF to = c.view()->mapToScene(c.at(QPointF(-100, -170)));
    c.drag(from, to);

    QCOMPARE(c.hero.stack.count(), 1);
    QCOMPARE(entity->objectCount(), objects + 1);
    QVERIFY(entity->object(objects)->isBone());
    QCOMPARE(anim->timelineCount(), timelines + 1);
    ObjectGraphicsProxy *bone = c.scene()->instTimelineProxyFromIndex(timelines);
    QVERIFY(bone && bone->isShownInPose());
    QCOMPARE(c.scene()->selectedProxies(), QList<ObjectGraphicsProxy *>{bone});
    QCOMPARE(bone->parentTimelineIndex(), parentTimeline);
    QVERIFY(QLineF(QPointF(bone->displayInfo().x, bone->displayInfo().y), from).length() < 1e-6);
    QVERIFY(QLineF(bone->mapToScene(QPointF(bone->boneLength(), 0)), to).length() < 1e-6);

    c.hero.stack.undo();
    QCOMPARE(entity->objectCount(), objects);
    QCOMPARE(anim->timelineCount(), timelines);
    QCOMPARE(c.hero.savedBytes(), before);
}

void TestCanvasScene::reparentWithB()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), 100);
    Animation *anim = c.hero.animation(QStringLiteral("walk"));
    const QByteArray before = c.hero.savedBytes();
    ObjectGraphicsProxy *lantern = c.scene()->idProxy(QStringLiteral("lantern"));
    ObjectGraphicsProxy *bone = c.scene()->idProxy(QStringLiteral("leg_back_lower"));
    QVERIFY(lantern && bone && bone->isBone());
    QVERIFY(lantern->parentProxy() != bone);
    const int lanternTimeline = lantern->timelineIndex();
    const int boneTimeline = bone->timelineIndex();
    const QMap<int, QList<double>> poseBefore = worldPose(c.hero.document.entity(0), anim, 100);
    c.scene()->setSelectedProxies({lantern});

    // Hold B, point at the bone, let go.
    QPointF over = Canvas::middle(bone);
    QCOMPARE(c.scene()->proxiesAt(over).value(0), bone);
    QTest::keyPress(c.view(), Qt::Key_B);
    QTest::mouseMove(c.viewport(), c.at(over) + QPoint(1, 0));
    QTest::mouseMove(c.viewport(), c.at(over));
    QCOMPARE(c.scene()->hoveredProxy(), bone);
    QTest::keyRelease(c.view(), Qt::Key_B);

    QCOMPARE(c.hero.stack.count(), 1);
    MainlineKey *mk = anim->mainlineKeyAtExactTime(100);
    QVERIFY(mk);
    QCOMPARE(mk->refFromTimeline(anim->timeline(lanternTimeline))->parentRef(),
             mk->refFromTimeline(anim->timeline(boneTimeline)));
    QCOMPARE(c.scene()->instTimelineProxyFromIndex(lanternTimeline)->parentTimelineIndex(),
             boneTimeline);
    // Nothing moved on the canvas.
    QVERIFY(samePose(poseBefore, worldPose(c.hero.document.entity(0), anim, 100), 1e-6));
    QVERIFY(c.hero.undoRedoRoundTrip(before));
}

void TestCanvasScene::zOrderActions_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("shift"); // expected change of the lantern's z position
    QTest::newRow("up") << "actionMove_Up_in_Z_Order" << 1;
    QTest::newRow("down") << "actionMove_Down_In_Z_Order" << -1;
    QTest::newRow("to bottom") << "actionMove_To_Bottom_in_Z_Order" << -100;
}

void TestCanvasScene::zOrderActions()
{
    QFETCH(QString, action);
    QFETCH(int, shift);
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("idle"), 0);
    Animation *anim = c.hero.animation(QStringLiteral("idle"));
    MainlineKey *mk = anim->mainlineKey(0);
    const QByteArray before = c.hero.savedBytes();
    // Something in the middle of the drawing order.
    ZRef *middle = mk->zRef(mk->zRefCount() / 2);
    const Timeline *tl = middle->timeline();
    const int from = mk->indexOfZRef(middle);
    ObjectGraphicsProxy *p = c.scene()->instTimelineProxyFromIndex(anim->indexOfTimeline(tl));
    c.scene()->setSelectedProxies({p});
    QVERIFY(c.editor.action(action));
    c.editor.action(action)->trigger();
    QCOMPARE(c.hero.stack.count(), 1);
    const int expected = qBound(0, from + shift, mk->zRefCount() - 1);
    QCOMPARE(mk->indexOfZRef(mk->refFromTimeline(tl)), expected);
    // The canvas draws it there: its stacking follows.
    p = c.scene()->instTimelineProxyFromIndex(anim->indexOfTimeline(tl));
    QCOMPARE(p->zValue(), double(expected));
    c.hero.stack.undo();
    QCOMPARE(c.hero.savedBytes(), before);

    c.editor.action(QStringLiteral("actionCopy_Z_Order_to_Other_Frames"))->trigger();
    QCOMPARE(c.hero.stack.count(), 1);
    QVERIFY(c.hero.stack.undoText().startsWith(QStringLiteral("z order copied from key ")));
    QVERIFY(c.hero.undoRedoRoundTrip(before));
}

void TestCanvasScene::wheelZoom_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("delta");
    QTest::addColumn<int>("expected");
    QTest::newRow("1 % in") << 1 << 120 << 2;
    QTest::newRow("1 % out") << 1 << -120 << 1;
    QTest::newRow("10000 % in") << 10000 << 120 << 10000;
    // u = 99/9999, a = 0.001 + 399.999 u = 3.96130, step = a + (400 - a) u = 7.8824
    QTest::newRow("100 % in") << 100 << 120 << 107;
    QTest::newRow("100 % out") << 100 << -120 << 92;
    // u = 0.5: a = 200.0005, step = 300.00025
    QTest::newRow("5000.5 % rounds in") << 5000 << 120 << 5299;
    // A wheel turned fast reports two notches at once: two steps, 100 -> 107 -> 115.
    QTest::newRow("two notches in one event") << 100 << 240 << 115;
    QTest::newRow("two notches out") << 100 << -240 << 84;
    // A fine wheel's part of a notch waits for the rest.
    QTest::newRow("half a notch") << 100 << 60 << 100;
}

void TestCanvasScene::wheelZoom()
{
    QFETCH(int, from);
    QFETCH(int, delta);
    QFETCH(int, expected);
    Canvas c;
    c.view()->setZoom(from);
    const QPointF centre = c.viewport()->rect().center();
    QWheelEvent wheel(centre, c.viewport()->mapToGlobal(centre), QPoint(), QPoint(0, delta),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(c.viewport(), &wheel);
    QCOMPARE(c.view()->zoomPercent(), expected);
    QCOMPARE(c.scene()->zoom(), expected / 100.0);
}

void TestCanvasScene::scaleAboutPivot_data()
{
    QTest::addColumn<double>("pivot");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<double>("leftMoves");
    QTest::addColumn<double>("rightMoves");
    // Dragging the right handle 20 pixels to the right at 200 %: 10 units.
    QTest::newRow("pivot at 0.05: the left edge stays") << 0.05 << 0 << 0.0 << 10.0;
    QTest::newRow("pivot at 0.5: both edges move") << 0.5 << 0 << -10.0 << 10.0;
    QTest::newRow("pivot at 0.5 with Alt: the left edge stays")
        << 0.5 << int(Qt::AltModifier) << 0.0 << 10.0;
    // Just inside the band: the left edge moves by -(0.12 / 0.88) * 10.
    QTest::newRow("pivot at 0.12: both edges move") << 0.12 << 0 << -1.363636 << 10.0;
}

void TestCanvasScene::scaleAboutPivot()
{
    QFETCH(double, pivot);
    QFETCH(int, modifiers);
    QFETCH(double, leftMoves);
    QFETCH(double, rightMoves);
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("idle"), 0);
    MorvaneCanvasScene *s = c.scene();
    // The lantern, first turned upright so that its box is its outline.
    ObjectGraphicsProxy *lantern = s->idProxy(QStringLiteral("lantern"));
    QVERIFY(lantern);
    const int timeline = lantern->timelineIndex();
    s->setSelectedProxies({lantern});
    DisplayInfo upright = lantern->displayInfo();
    upright.angle = 0;
    lantern->setDisplayInfo(upright);
    s->startUndoWithSelection(QStringLiteral("upright"));
    s->createUndoForSprite(lantern);
    s->endUndoWithSelection();
    lantern = s->instTimelineProxyFromIndex(timeline);
    QVERIFY(std::abs(DisplayInfo::normalizedAngle(lantern->displayInfo().angle + 180) - 180) < 1e-9);
    QCOMPARE(s->selectedProxies(), QList<ObjectGraphicsProxy *>{lantern});

    const QRectF box = s->transformBox()->box();
    s->transformBox()->setPivot(QPointF(box.left() + pivot * box.width(), box.center().y()), true);
    const QPointF grip = s->transformBox()->handlePosition(3);
    c.drag(grip, grip + QPointF(20, 0) / s->zoom(), Qt::KeyboardModifiers(modifiers));
    QCOMPARE(c.hero.stack.count(), 2);
    lantern = s->instTimelineProxyFromIndex(timeline);
    const QRectF now = lantern->mapToScene(lantern->localRect()).boundingRect();
    QVERIFY2(std::abs(now.left() - (box.left() + leftMoves)) < 0.2,
             qPrintable(QStringLiteral("left %1 -> %2").arg(box.left()).arg(now.left())));
    QVERIFY2(std::abs(now.right() - (box.right() + rightMoves)) < 0.2,
             qPrintable(QStringLiteral("right %1 -> %2").arg(box.right()).arg(now.right())));
}

void TestCanvasScene::rotationSnapping_data()
{
    QTest::addColumn<double>("angle");
    QTest::addColumn<double>("parent");
    QTest::addColumn<double>("expected");
    QTest::newRow("33 under 10 goes up") << 33.0 << 10.0 << 55.0;
    QTest::newRow("32 under 10 goes down") << 32.0 << 10.0 << 10.0;
    QTest::newRow("whole degrees: 54.9 counts as 54") << 54.9 << 10.0 << 55.0;
    QTest::newRow("no parent, 67.9") << 67.9 << 0.0 << 45.0;
    QTest::newRow("no parent, 68") << 68.0 << 0.0 << 90.0;
    QTest::newRow("below the parent") << -20.0 << 10.0 << 325.0;
}

void TestCanvasScene::rotationSnapping()
{
    QFETCH(double, angle);
    QFETCH(double, parent);
    QFETCH(double, expected);
    QCOMPARE(SelectTool::snappedAngle(angle, parent), expected);
}

void TestCanvasScene::drawsBonesAndSelection()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("walk"), 0);
    ObjectGraphicsProxy *bone = nullptr;
    for (ObjectGraphicsProxy *p : c.shown()) {
        if (p->isBone() && p->name() == QLatin1String("arm_front_upper"))
            bone = p;
    }
    QVERIFY(bone);
    c.scene()->setSelectedProxies({bone});
    const QImage image = c.view()->viewport()->grab().toImage();
    // The selected bone is drawn in the selection colour over the sprites.
    int selectionPixels = 0;
    // The grab has device pixels: twice as many per side at a scale factor of 2.
    const qreal dpr = image.devicePixelRatio();
    const QRectF logical = c.view()->mapFromScene(bone->sceneBoundingRect()).boundingRect();
    const QRect boneRect(QRectF(logical.topLeft() * dpr, logical.size() * dpr).toAlignedRect());
    for (int y = boneRect.top(); y <= boneRect.bottom(); ++y) {
        for (int x = boneRect.left(); x <= boneRect.right(); ++x) {
            if (image.rect().contains(x, y) && QColor(image.pixel(x, y)) == QColor(0xff, 0xa0, 0x2f))
                ++selectionPixels;
        }
    }
    QVERIFY(selectionPixels > 10);
    // The box's handles are six screen pixels (and two of slack) at any zoom.
    const TransformControlItemGroup *box = c.scene()->transformBox();
    int far = 0;
    for (int i = 1; i < 8; ++i) {
        if (QLineF(box->handlePosition(i), box->pivot()).length()
            > QLineF(box->handlePosition(far), box->pivot()).length())
            far = i;
    }
    for (int zoom : {200, 800}) {
        c.view()->setZoom(zoom);
        c.view()->centerOn(box->box().center());
        const QPointF h = box->handlePosition(far);
        const QPointF outward(h.x() >= box->box().center().x() ? 1 : -1,
                              h.y() >= box->box().center().y() ? 1 : -1);
        QCOMPARE(box->handleAt(h + outward * 4.9 / (zoom / 100.0)), far);
        QVERIFY(box->handleAt(h + outward * 5.1 / (zoom / 100.0)) != far);
    }
}

void TestCanvasScene::viewActions()
{
    QSettings().remove(QStringLiteral("Canvas"));
    {
        Canvas c;
        // Every background choice goes through the editor, which keeps it.
        c.editor.action(QStringLiteral("actionBlack_Background"))->trigger();
        QCOMPARE(c.view()->backgroundBrush().color(), QColor(Qt::black));
        c.editor.action(QStringLiteral("actionGrey_Background"))->trigger();
        QCOMPARE(c.editor.backgroundColor(), QColor(Qt::lightGray));
        c.editor.action(QStringLiteral("actionDark_Background"))->trigger();
        QCOMPARE(c.view()->backgroundBrush().color(), QColor(0x30, 0x30, 0x34));
        c.view()->setZoom(350);
        c.editor.action(QStringLiteral("actionRestore_Zoom"))->trigger();
        QCOMPARE(c.view()->zoomPercent(), 100);
        c.editor.action(QStringLiteral("actionZoom_In"))->trigger();
        QCOMPARE(c.view()->zoomPercent(), 107);
        c.editor.action(QStringLiteral("actionZoom_Out"))->trigger();
        QVERIFY(c.view()->zoomPercent() < 107);
    }
    Canvas again; // the background persists
    QCOMPARE(again.view()->backgroundBrush().color(), QColor(0x30, 0x30, 0x34));
    QSettings().remove(QStringLiteral("Canvas"));
}

void TestCanvasScene::inheritFlagsThroughGestures_data()
{
    QTest::addColumn<QString>("notInherited"); // of the forearm, under the upper arm
    QTest::addColumn<bool>("rotate");          // else the upper arm is nudged
    QTest::addColumn<bool>("keyed");           // the forearm gets a key of its own
    QTest::newRow("nudge, inherits all") << QString() << false << false;
    QTest::newRow("nudge, no position") << "position" << false << true;
    QTest::newRow("nudge, no angle") << "angle" << false << false;
    QTest::newRow("nudge, no scale") << "scale" << false << false;
    QTest::newRow("rotate, inherits all") << QString() << true << false;
    QTest::newRow("rotate, no angle") << "angle" << true << true;
    QTest::newRow("rotate, no position") << "position" << true << true;
}

void TestCanvasScene::inheritFlagsThroughGestures()
{
    QFETCH(QString, notInherited);
    QFETCH(bool, rotate);
    QFETCH(bool, keyed);
    Canvas c;
    QVERIFY(c.hero.ok);
    Entity *entity = c.hero.document.entity(0);
    Animation *anim = c.hero.animation(QStringLiteral("idle"));
    Object *forearm = entity->objectFromName(QStringLiteral("arm_front_lower"));
    QVERIFY(forearm);
    forearm->setInheritPos(notInherited != QLatin1String("position"));
    forearm->setInheritAngle(notInherited != QLatin1String("angle"));
    forearm->setInheritScale(notInherited != QLatin1String("scale"));
    c.show(QStringLiteral("idle"), 300);
    c.scene()->refresh();
    const int forearmLine =
        anim->indexOfTimeline(anim->timelineFromObjectName(QStringLiteral("arm_front_lower")));
    const int upperLine =
        anim->indexOfTimeline(anim->timelineFromObjectName(QStringLiteral("arm_front_upper")));
    QVERIFY(!anim->timeline(forearmLine)->actualKeyFromTime(300));
    const QByteArray before = c.hero.savedBytes();
    const QMap<int, QList<double>> start = worldPose(entity, anim, 300);
    const QList<int> neighbours = {0, 600};
    QList<QMap<int, QList<double>>> neighbourPoses;
    for (int t : neighbours)
        neighbourPoses.append(worldPose(entity, anim, t));
    // The canvas shows what the document composes.
    const ObjectGraphicsProxy *forearmProxy = c.scene()->instTimelineProxyFromIndex(forearmLine);
    QVERIFY(std::abs(forearmProxy->displayInfo().x - start[forearmLine][0]) < 1e-6);
    QVERIFY(std::abs(forearmProxy->displayInfo().angle - start[forearmLine][2]) < 1e-6);

    ObjectGraphicsProxy *upper = c.scene()->instTimelineProxyFromIndex(upperLine);
    c.scene()->setSelectedProxies({upper});
    if (rotate) {
        const double zoom = c.scene()->zoom();
        const QPointF grip = c.scene()->transformBox()->handlePosition(4) + QPointF(12, 12) / zoom;
        c.drag(grip, grip + QPointF(-30, 25) / zoom);
    } else {
        QTest::keyPress(c.view(), Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyRelease(c.view(), Qt::Key_Right, Qt::ShiftModifier);
    }
    QCOMPARE(c.hero.stack.count(), 1);
    const QMap<int, QList<double>> end = worldPose(entity, anim, 300);
    const double dx = end[upperLine][0] - start[upperLine][0];
    double turn = end[upperLine][2] - start[upperLine][2];
    turn -= 360.0 * std::round(turn / 360.0);
    QVERIFY(rotate ? std::abs(turn) > 1 : std::abs(dx - 10) < 1e-6);

    const QList<double> &was = start[forearmLine];
    const QList<double> &now = end[forearmLine];
    const bool moved = std::abs(now[0] - was[0]) > 1e-6 || std::abs(now[1] - was[1]) > 1e-6;
    double forearmTurn = now[2] - was[2];
    forearmTurn -= 360.0 * std::round(forearmTurn / 360.0);
    // What the forearm does not inherit stays where it was on the canvas.
    QCOMPARE(moved, notInherited != QLatin1String("position"));
    if (notInherited == QLatin1String("angle") || !rotate)
        QVERIFY2(std::abs(forearmTurn) < 1e-6, qPrintable(QString::number(forearmTurn)));
    else
        QVERIFY2(std::abs(forearmTurn - turn) < 1e-6,
                 qPrintable(QString::number(forearmTurn - turn)));
    QCOMPARE(anim->timeline(forearmLine)->actualKeyFromTime(300) != nullptr, keyed);
    // The neighbouring keys show what they showed.
    for (int i = 0; i < neighbours.size(); ++i)
        QVERIFY2(samePose(neighbourPoses[i], worldPose(entity, anim, neighbours[i])),
                 qPrintable(QStringLiteral("pose at %1 changed").arg(neighbours[i])));

    const QByteArray after = c.hero.savedBytes();
    c.hero.stack.undo();
    QCOMPARE(c.hero.savedBytes(), before);
    c.hero.stack.redo();
    QCOMPARE(c.hero.savedBytes(), after);
}

void TestCanvasScene::rotateCursorOutsideTheCorners()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    c.show(QStringLiteral("idle"), 0);
    const QImage cursor = c.scene()->rotateCursor().pixmap().toImage();
    QCOMPARE(cursor.size(), QSize(24, 24));
    ObjectGraphicsProxy *torso = c.scene()->idProxy(QStringLiteral("torso"));
    c.scene()->setSelectedProxies({torso});
    const double zoom = c.scene()->zoom();
    QTest::mouseMove(c.viewport(),
                     c.at(c.scene()->transformBox()->handlePosition(2) + QPointF(12, -12) / zoom));
    QCOMPARE(c.viewport()->cursor().pixmap().toImage(), cursor);
    QTest::mouseMove(c.viewport(), c.at(Canvas::middle(torso)));
    QVERIFY(c.viewport()->cursor().pixmap().isNull());
}

void TestCanvasScene::randomGesturesUndoToTheSavedBytes()
{
    Canvas c;
    QVERIFY(c.hero.ok);
    const QByteArray original = c.hero.savedBytes();
    QRandomGenerator random(20261122);
    const QStringList animations = {QStringLiteral("idle"), QStringLiteral("walk")};
    int steps = 0;
    for (int i = 0; i < 300; ++i) {
        const QString name = animations[random.bounded(animations.size())];
        const int time = random.bounded(c.hero.animation(name)->length());
        c.show(name, time);
        const QList<ObjectGraphicsProxy *> shown = c.shown();
        if (shown.isEmpty())
            continue;
        ObjectGraphicsProxy *target = shown[random.bounded(shown.size())];
        const QPointF from = Canvas::middle(target);
        const int before = c.hero.stack.count();
        const double zoom = c.scene()->zoom();
        switch (random.bounded(13)) {
        case 0: // move
            c.drag(from, from + QPointF(random.bounded(60) - 30, random.bounded(60) - 30));
            break;
        case 1: { // nudge
            c.scene()->setSelectedProxies({target});
            const Qt::Key key = Qt::Key(Qt::Key_Left + random.bounded(4));
            QTest::keyPress(c.view(), key);
            QTest::keyRelease(c.view(), key);
            break;
        }
        case 2: { // rotate from outside a corner
            c.scene()->setSelectedProxies({target});
            const QPointF corner = c.scene()->transformBox()->handlePosition(4);
            const QPointF grip = corner + QPointF(12, 12) / zoom;
            c.drag(grip, grip + QPointF(random.bounded(40) - 20, random.bounded(40) - 20) / zoom);
            break;
        }
        case 3: { // scale by a handle, sometimes keeping the aspect
            c.scene()->setSelectedProxies({target});
            const int handle = random.bounded(8);
            const QPointF grip = c.scene()->transformBox()->handlePosition(handle);
            c.drag(grip, grip + QPointF(random.bounded(30) - 10, random.bounded(30) - 10) / zoom,
                   random.bounded(2) ? Qt::ShiftModifier : Qt::NoModifier);
            break;
        }
        case 5: { // re-parent to a bone with B
            QList<ObjectGraphicsProxy *> bones;
            for (ObjectGraphicsProxy *p : shown) {
                if (p->isBone() && c.scene()->proxiesAt(Canvas::middle(p)).value(0) == p)
                    bones.append(p);
            }
            if (bones.isEmpty())
                break;
            c.scene()->setSelectedProxies({target});
            QTest::keyPress(c.view(), Qt::Key_B);
            QTest::mouseMove(c.viewport(), c.at(Canvas::middle(bones[random.bounded(bones.size())])));
            QTest::keyRelease(c.view(), Qt::Key_B);
            break;
        }
        case 7: { // inverse kinematics on a bone's end
            if (!target->isBone())
                break;
            const QPointF end = target->mapToScene(QPointF(target->boneLength(), 0));
            c.drag(end, end + QPointF(random.bounded(40) - 20, random.bounded(40) - 20) / zoom,
                   Qt::ShiftModifier);
            break;
        }
        case 8: { // a new bone, under the target when it is one
            c.scene()->setSelectedProxies({target});
            QTest::keyClick(c.view(), Qt::Key_3);
            c.drag(from, from + QPointF(random.bounded(60) - 30, random.bounded(60) - 30));
            QTest::keyClick(c.view(), Qt::Key_1);
            break;
        }
        case 10: // delete
            c.scene()->setSelectedProxies({target});
            c.editor.action(QStringLiteral("actionDelete"))->trigger();
            break;
        case 11: // delete from all frames, or from every animation
            c.scene()->setSelectedProxies({target});
            c.editor
                .action(random.bounded(3) ? QStringLiteral("actionDelete_From_All_Frames")
                                          : QStringLiteral("actionDelete_All_Instances"))
                ->trigger();
            break;
        case 12: { // the target stops (or starts) inheriting part of its parent's
                   // state, then its parent is nudged
            Animation *anim = c.scene()->currentAnimation();
            Object *object = anim->timeline(target->timelineIndex())->object();
            ObjectGraphicsProxy *parent = target->parentProxy();
            if (!object || !parent)
                break;
            switch (random.bounded(3)) {
            case 0:
                object->setInheritPos(!object->inhPos());
                break;
            case 1:
                object->setInheritAngle(!object->inhAngle());
                break;
            default:
                object->setInheritScale(!object->inhScale());
                break;
            }
            c.scene()->refresh();
            parent = c.scene()->instTimelineProxyFromIndex(parent->timelineIndex());
            c.scene()->setSelectedProxies({parent});
            const Qt::Key key = Qt::Key(Qt::Key_Left + random.bounded(4));
            QTest::keyPress(c.view(), key, Qt::ShiftModifier);
            QTest::keyRelease(c.view(), key, Qt::ShiftModifier);
            break;
        }
        case 9: // clone
            c.scene()->setSelectedProxies({target});
            c.editor.action(QStringLiteral("actionClone"))->trigger();
            break;
        case 6: { // z-order
            c.scene()->setSelectedProxies({target});
            const char *names[] = {"actionMove_Up_in_Z_Order", "actionMove_Down_In_Z_Order",
                                   "actionMove_To_Top_in_Z_Order",
                                   "actionMove_To_Bottom_in_Z_Order"};
            c.editor.action(QLatin1String(names[random.bounded(4)]))->trigger();
            break;
        }
        default: { // move the pivot
            c.scene()->setSelectedProxies({target});
            const QPointF pivot = c.scene()->transformBox()->pivot();
            c.drag(pivot, pivot + QPointF(random.bounded(20) - 10, random.bounded(20) - 10) / zoom);
            break;
        }
        }
        QVERIFY(c.hero.stack.count() <= before + 1);
        steps += c.hero.stack.count() - before;
    }
    QVERIFY(steps > 150);
    const QByteArray after = c.hero.savedBytes();
    while (c.hero.stack.canUndo())
        c.hero.stack.undo();
    QCOMPARE(c.hero.savedBytes(), original);
    while (c.hero.stack.canRedo())
        c.hero.stack.redo();
    QCOMPARE(c.hero.savedBytes(), after);
}

QTEST_MAIN(TestCanvasScene)
#include "tst_canvasscene.moc"
