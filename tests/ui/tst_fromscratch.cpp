// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// A character built in the window from a folder that holds nothing but images,
// with the gestures a user makes, saved, read back and posed by hand.

#include "../app/apptesthelpers.h"
#include "paneltesthelpers.h"
#include "treepaneltesthelpers.h"

#include "canvas/tools/toolmanager.h"
#include "model/file.h"
#include "morvanewindow.h"
#include "projectcontroller.h"
#include "timeline/timelineeditor.h"
#include "ui/animations/animationspanel.h"
#include "ui/palette/palettepanel.h"
#include "ui/palette/palettetree.h"
#include "ui/palette/pivotpreview.h"
#include "ui/properties/propertiespanel.h"

#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QMimeData>
#include <QPainter>
#include <QSpinBox>
#include <QToolBar>

#include <cmath>

using namespace Morvane;
using namespace Morvane::Testing;
using Field = PropertiesPanel::Field;

namespace {

// The window's canvas as a user reaches it: scene points to viewport pixels,
// tool buttons, clicks and drags.
struct Hands
{
    MorvaneWindow &window;

    MorvaneGraphicsView *view() const { return window.canvas()->view(); }
    QWidget *viewport() const { return view()->viewport(); }
    QPoint at(const QPointF &scenePos) const { return view()->mapFromScene(scenePos); }

    bool useTool(const QString &text) const
    {
        for (QAction *tool : window.canvas()->toolManager()->actions()) {
            if (tool->text() == text)
                return clickAction(window.findChild<QToolBar *>(QStringLiteral("canvasToolbar")),
                                   tool);
        }
        return false;
    }
    void click(const QPointF &scenePos) const
    {
        QTest::mouseClick(viewport(), Qt::LeftButton, Qt::NoModifier, at(scenePos));
    }
    void drag(const QPointF &from, const QPointF &to) const
    {
        QTest::mousePress(viewport(), Qt::LeftButton, Qt::NoModifier, at(from));
        QTest::mouseMove(viewport(), at((from + to) / 2));
        QTest::mouseMove(viewport(), at(to));
        QTest::mouseRelease(viewport(), Qt::LeftButton, Qt::NoModifier, at(to));
    }
    // What a drag from the palette ends in: the drop the canvas receives.
    bool drop(PalettePanel *palette, const QString &image, const QPointF &scenePos) const
    {
        QTreeWidgetItem *item = palette->itemFor(image);
        std::unique_ptr<QMimeData> data(item ? palette->tree()->mimeDataFor({item}) : nullptr);
        if (!data)
            return false;
        const QPoint pixel = at(scenePos);
        QDragEnterEvent enter(pixel, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &enter);
        QDragMoveEvent move(pixel, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &move);
        QDropEvent dropped(pixel, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport(), &dropped);
        return dropped.isAccepted();
    }
    // Clicks the object's middle with the select tool; true when it is then
    // the one selected object.
    bool select(const QString &name) const
    {
        ObjectGraphicsProxy *proxy = window.canvas()->scene()->idProxy(name);
        if (!proxy || !viewport()->rect().contains(at(proxy->sceneBoundingRect().center())))
            return false;
        click(proxy->sceneBoundingRect().center());
        const QList<ObjectGraphicsProxy *> selected = window.canvas()->session()->selection();
        return selected.size() == 1 && selected.first()->name() == name;
    }
};

bool writeImage(const QString &path, int width, int height, QColor colour)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    return image.save(path);
}

} // namespace

class TestFromScratch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { mFixture.init(); }
    void cleanup() { mFixture.cleanup(); }
    void buildRigAnimateSaveAndReload();

private:
    Test::AppFixture mFixture;
};

void TestFromScratch::buildRigAnimateSaveAndReload()
{
    const QString folder = mFixture.folder();
    QVERIFY(writeImage(folder + QStringLiteral("/torso.png"), 40, 80, Qt::red));
    QVERIFY(writeImage(folder + QStringLiteral("/head.png"), 40, 40, Qt::yellow));
    QVERIFY(QDir(folder).mkpath(QStringLiteral("limbs")));
    QVERIFY(writeImage(folder + QStringLiteral("/limbs/arm.png"), 60, 16, Qt::blue));
    QVERIFY(writeImage(folder + QStringLiteral("/limbs/leg.png"), 16, 60, Qt::green));
    const QString saved = folder + QStringLiteral("/hero.rigx");

    MorvaneWindow window(QStringLiteral("r4.1"), {QStringLiteral("morvane")});
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    // The window's two questions: the folder for a new project, the file on
    // the first save (asked in the project's folder).
    QString savingFrom;
    Test::ModalAnswerer answers(
        [&](QWidget *modal) {
            if (auto *dialog = qobject_cast<QFileDialog *>(modal)) {
                const bool chooseFolder = dialog->fileMode() == QFileDialog::Directory;
                if (!chooseFolder)
                    savingFrom = dialog->directory().absolutePath();
                // Typed, as a user does: the whole path, then Enter.
                auto *name = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
                if (!name) {
                    modal->close();
                    return;
                }
                name->setText(chooseFolder ? folder : saved);
                QTest::keyClick(name, Qt::Key_Return);
            } else if (Test::clickInMessageBox(modal, QMessageBox::Ok).isEmpty()) {
                qWarning("unexpected question: %s", modal->metaObject()->className());
                modal->close();
            }
        },
        Test::ModalAnswerer::Every);
    window.findChild<QAction *>(QStringLiteral("actionNew_Project"))->trigger();
    QCOMPARE(window.project()->folder(), folder);
    QVERIFY(window.canvas()->isEnabled());

    auto *palette = window.findChild<PalettePanel *>();
    auto *animations = window.findChild<AnimationsPanel *>();
    auto *properties = window.findChild<PropertiesPanel *>();
    auto *timeline = window.findChild<TimelineEditor *>();
    QVERIFY(palette && animations && properties && timeline);
    for (const char *image : {"torso.png", "head.png", "limbs/arm.png", "limbs/leg.png"})
        QTRY_VERIFY2(palette->itemFor(QLatin1String(image)), image);

    // An empty project says how to begin; the new entity's animation is shown.
    QTRY_VERIFY(animations->findChild<QLabel *>(QStringLiteral("hint"))->isVisible());
    QVERIFY(clickAction(animations->toolBar(), animations->action(QStringLiteral("actionNewEntity"))));
    EditorSession *session = window.canvas()->session();
    QVERIFY(session->currentAnimation());
    QTRY_VERIFY(!animations->findChild<QLabel *>(QStringLiteral("hint"))->isVisible());

    // The torso's pivot a quarter down from its top, set before its first use.
    clickItem(palette->tree(), palette->itemFor(QStringLiteral("torso.png")));
    const QRectF picture = palette->preview()->imageRect();
    QVERIFY(!picture.isEmpty());
    QTest::mouseClick(palette->preview(), Qt::LeftButton, Qt::NoModifier,
                      (picture.topLeft() + QPointF(0.5 * picture.width(), 0.25 * picture.height()))
                          .toPoint());
    RigxData *document = window.project()->document();
    const File *torsoFile = document->file(QStringLiteral("torso.png"), false);
    QVERIFY(torsoFile);
    QVERIFY(std::abs(torsoFile->pivot(false).x() - 0.5) < 0.02);
    QVERIFY(std::abs(torsoFile->pivot(false).y() - 0.25) < 0.02);

    // The whole character in view: the offscreen screen is small, so the
    // side panels float beside the window, as on a small screen, and the
    // canvas takes the window.
    for (QDockWidget *dock : window.findChildren<QDockWidget *>()) {
        if (window.dockWidgetArea(dock) == Qt::BottomDockWidgetArea)
            continue;
        dock->setFloating(true);
        dock->move(window.frameGeometry().right() + 20, dock->y());
    }
    Hands hands{window};
    QTRY_VERIFY2(hands.viewport()->width() > 300, qPrintable(QString::number(window.width())));
    for (int i = 0; i < 6; ++i) {
        hands.view()->centerOn(QPointF(40, -20));
        const QRect needed(hands.at(QPointF(-90, -170)), hands.at(QPointF(170, 170)));
        if (hands.viewport()->rect().contains(needed))
            break;
        QVERIFY2(i < 5, "the canvas is too small");
        window.findChild<QAction *>(QStringLiteral("actionZoom_Out"))->trigger();
    }

    QVERIFY(hands.drop(palette, QStringLiteral("torso.png"), QPointF(0, -120)));
    QVERIFY(hands.drop(palette, QStringLiteral("head.png"), QPointF(-60, 0)));
    QVERIFY(hands.drop(palette, QStringLiteral("limbs/arm.png"), QPointF(100, 100)));
    QVERIFY(hands.useTool(QStringLiteral("Bone")));
    hands.drag(QPointF(0, 0), QPointF(100, 0));
    hands.drag(QPointF(100, 0), QPointF(160, 0));
    MorvaneCanvasScene *scene = window.canvas()->scene();
    QCOMPARE(scene->instTimelineProxyCount(), 5);
    const QString root = QStringLiteral("bone");
    const QString forearm = QStringLiteral("bone_000");
    QVERIFY(scene->idProxy(forearm) && scene->idProxy(forearm)->parentProxy() == scene->idProxy(root));

    // Rigging through the properties' parent list.
    QVERIFY(hands.useTool(QStringLiteral("Select and Transform")));
    for (const auto &[sprite, bone] : {std::pair{QStringLiteral("torso"), root},
                                       std::pair{QStringLiteral("head"), root},
                                       std::pair{QStringLiteral("arm"), forearm}}) {
        QVERIFY(hands.select(sprite));
        QVERIFY(pickByKeys(properties->parentBox(), scene->idProxy(bone)->timelineIndex()));
    }
    for (const auto &[child, parent] : {std::pair{QStringLiteral("torso"), root},
                                        std::pair{QStringLiteral("head"), root},
                                        std::pair{QStringLiteral("arm"), forearm}}) {
        QVERIFY2(scene->idProxy(child)->parentProxy() == scene->idProxy(parent), qPrintable(child));
    }

    // Exact values typed over the drawn ones: each object's key, local to
    // its bone.
    const auto type = [&](const QString &name, const QList<std::pair<Field, double>> &values) {
        QVERIFY2(hands.select(name), qPrintable(name));
        for (const auto &[field, value] : values)
            typeInto(properties->spinBox(field), QString::number(value));
    };
    type(root, {{Field::X, 0}, {Field::Y, 0}, {Field::Angle, 0}});
    type(forearm, {{Field::X, 100}, {Field::Y, 0}, {Field::Angle, 0}});
    type(QStringLiteral("torso"), {{Field::X, 0}, {Field::Y, -120}});
    type(QStringLiteral("head"), {{Field::X, -60}, {Field::Y, 0}});
    type(QStringLiteral("arm"), {{Field::X, 0}, {Field::Y, 100}});

    // At 800 ms the root has turned a quarter and the forearm 30 degrees more;
    // the forearm's first key holds until then.
    typeInto(timeline->timeField(), QStringLiteral("800"));
    QCOMPARE(session->currentTime(), 800);
    type(root, {{Field::Angle, 90}});
    type(forearm, {{Field::Angle, 30}});
    typeInto(timeline->timeField(), QStringLiteral("0"));
    QVERIFY(hands.select(forearm));
    QVERIFY(pickByKeys(properties->curveBox(), int(TweenInfo::CurveType::Instant)));

    // A second animation, named by the user, with the panels back in place.
    for (QDockWidget *dock : window.findChildren<QDockWidget *>())
        dock->setFloating(false);
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QVERIFY(clickAction(animations->toolBar(), animations->action(QStringLiteral("actionNewAnimation"))));
    QCOMPARE(session->currentAnimation()->name(), QStringLiteral("NewAnimation_000"));
    QVERIFY(editCurrent(animations->tree(), QStringLiteral("wave")));
    QTRY_COMPARE(session->currentAnimation()->name(), QStringLiteral("wave"));

    QTest::keyClick(&window, Qt::Key_S, Qt::ControlModifier);
    QTRY_COMPARE(window.projectFilePath(), saved);
    QCOMPARE(savingFrom, folder);
    QVERIFY(window.undoStack()->isClean());

    RigxData reread(nullptr, QStringLiteral("r4.1"));
    QString error;
    QVERIFY2(ProjectFile::open(&reread, saved, nullptr, &error), qPrintable(error));
    QCOMPARE(reread.entityCount(), 1);
    Entity *entity = reread.entity(0);
    QCOMPARE(entity->animationNames(), QStringList({"NewAnimation", "wave"}));
    QVERIFY(std::abs(reread.file(QStringLiteral("torso.png"), false)->pivot(false).y() - 0.25) < 0.02);
    QVERIFY(reread.file(QStringLiteral("limbs/arm.png"), false));

    // By hand: the root turns 0 -> 90 degrees linearly, so 45 at 400 ms; the
    // forearm holds 0 until 800, then 30 on top of the root.
    const double h = std::sqrt(0.5);
    struct Expected
    {
        const char *name;
        int time;
        double x, y, angle;
    };
    const Expected expected[] = {
        {"bone", 400, 0, 0, 45},
        {"bone_000", 400, 100 * h, 100 * h, 45},
        {"torso", 400, 120 * h, -120 * h, 45},
        {"head", 400, -60 * h, -60 * h, 45},
        {"arm", 400, 0, 200 * h, 45},
        {"bone_000", 800, 0, 100, 120},
        {"arm", 800, -50 * std::sqrt(3.0), 50, 120},
    };
    Animation *animation = entity->animation(0);
    for (const Expected &e : expected) {
        const Timeline *line = animation->timelineFromObjectName(QLatin1String(e.name));
        QVERIFY2(line, e.name);
        const QList<double> pose =
            worldPose(entity, animation, e.time).value(animation->indexOfTimeline(line));
        QVERIFY2(pose.size() >= 3, e.name);
        const QString where = QStringLiteral("%1 at %2: %3, %4, %5")
                                  .arg(QLatin1String(e.name)).arg(e.time)
                                  .arg(pose[0]).arg(pose[1]).arg(pose[2]);
        QVERIFY2(std::abs(pose[0] - e.x) < 1e-6 && std::abs(pose[1] - e.y) < 1e-6, qPrintable(where));
        QVERIFY2(std::abs(std::remainder(pose[2] - e.angle, 360.0)) < 1e-6, qPrintable(where));
    }
}

QTEST_MAIN(TestFromScratch)
#include "tst_fromscratch.moc"
