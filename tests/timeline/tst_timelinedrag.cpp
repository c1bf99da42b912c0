// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timelinetesthelpers.h"

#include "canvas/objectgraphicsproxy.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/tweeninfo.h"
#include "timeline/snappingoptionsdialog.h"

#include <QAction>
#include <QDoubleSpinBox>
#include <QInputDialog>
#include <QMenu>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTimer>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

QList<int> mainlineTimes(const Animation *animation)
{
    QList<int> times;
    for (int i = 0; i < animation->mainlineKeyCount(); ++i)
        times.append(animation->mainlineKey(i)->currentTime());
    return times;
}

QList<int> keyTimes(const Animation *animation, const QString &timeline)
{
    QList<int> times;
    const Timeline *t = animation->timelineFromObjectName(timeline);
    for (int i = 0; t && i < t->keyCount(); ++i)
        times.append(t->key(i)->time());
    return times;
}

// Runs `act` on the next modal dialog or popup once it is shown.
void onNextModal(const std::function<void(QWidget *)> &act)
{
    QTimer::singleShot(0, qApp, [act] {
        QTRY_VERIFY_WITH_TIMEOUT(QApplication::activeModalWidget() || QApplication::activePopupWidget(),
                                 3000);
        QWidget *w = QApplication::activePopupWidget() ? QApplication::activePopupWidget()
                                                        : QApplication::activeModalWidget();
        act(w);
    });
}

} // namespace

class TestTimelineDrag : public QObject
{
    Q_OBJECT

private slots:
    void mainlineKeyOntoAnother();
    void retime_data();
    void retime();
    void curveOfTheSelection_data();
    void curveOfTheSelection();
    void canvasFollowsTheTimeDuringADrag();
    void canvasFollowsTheDrag_data();
    void canvasFollowsTheDrag();
    void deleteKeys_data();
    void deleteKeys();
    void menuOpensAnimationProperties();
    void lengthField();
    void newEventLine();
    void snappingDialog_data();
    void snappingDialog();
};

void TestTimelineDrag::mainlineKeyOntoAnother()
{
    TimelineFixture f;
    const QByteArray before = f.hero.savedBytes();
    const Timeline *torso = f.animation()->timelineFromObjectName(QStringLiteral("torso"));
    const DisplayInfo at400 = torso->actualKeyFromTime(400)->info();
    f.drag(f.row(), 400, 200);
    QCOMPARE(f.hero.stack.count(), 1);
    QCOMPARE(f.hero.stack.text(0), QStringLiteral("keys moved"));
    // One mainline key at 200, the dragged one, with its timeline keys.
    QCOMPARE(mainlineTimes(f.animation()), (QList<int>{0, 200, 600}));
    torso = f.animation()->timelineFromObjectName(QStringLiteral("torso"));
    QCOMPARE(keyTimes(f.animation(), QStringLiteral("torso")), (QList<int>{0, 200, 600}));
    QCOMPARE(torso->actualKeyFromTime(200)->info().x, at400.x);
    QCOMPARE(torso->actualKeyFromTime(200)->info().angle, at400.angle);
    // The rows show the new keys and keep the dragged keys selected where they landed.
    QCOMPARE(f.view()->mainlineRow()->keys().size(), size_t(3));
    QVERIFY(f.key(QString(), 200)->isSelected());
    QVERIFY(f.key(QStringLiteral("torso"), 200)->isSelected());
    QVERIFY(!f.key(QString(), 0)->isSelected());

    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    QCOMPARE(mainlineTimes(f.animation()), (QList<int>{0, 200, 400, 600}));
    // The selection as it was before the drag.
    QVERIFY(f.key(QString(), 400)->isSelected());
    QVERIFY(f.key(QStringLiteral("torso"), 400)->isSelected());
    QVERIFY(!f.key(QString(), 200)->isSelected());
}

void TestTimelineDrag::retime_data()
{
    QTest::addColumn<bool>("byDialog");
    QTest::newRow("alt drag of the right edge") << false;
    QTest::newRow("scale by a factor") << true;
}

void TestTimelineDrag::retime()
{
    QFETCH(bool, byDialog);
    TimelineFixture f;
    const QByteArray before = f.hero.savedBytes();
    TimelineGraphicsProxy *torso = f.row(QStringLiteral("torso"));
    f.click(torso, 0);
    f.click(torso, 200, Qt::ShiftModifier);
    QCOMPARE(f.selectedCount(), 2);
    if (byDialog) {
        onNextModal([](QWidget *w) {
            auto *dialog = qobject_cast<QInputDialog *>(w);
            QVERIFY(dialog);
            dialog->setDoubleValue(1.5);
            dialog->accept();
        });
        f.editor.scaleKeyTimes();
    } else {
        // The edge is just right of the last selected key; Alt scales about the first.
        f.drag(torso, 206, 306, Qt::AltModifier);
    }
    QCOMPARE(f.hero.stack.count(), 1);
    QCOMPARE(f.hero.stack.text(0), QStringLiteral("keys moved"));
    QCOMPARE(keyTimes(f.animation(), QStringLiteral("torso")), (QList<int>{0, 300, 400, 600}));
    QVERIFY(mainlineTimes(f.animation()).contains(300));
    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
}

void TestTimelineDrag::curveOfTheSelection_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("second"); // the key selected with torso@200
    QTest::addColumn<bool>("offered");
    QTest::newRow("instant") << int(TweenInfo::CurveType::Instant) << "head" << true;
    QTest::newRow("quadratic") << int(TweenInfo::CurveType::Quadratic) << "head" << true;
    QTest::newRow("bezier") << int(TweenInfo::CurveType::Bezier) << "head" << true;
    QTest::newRow("with a value key") << int(TweenInfo::CurveType::Cubic) << "mood" << true;
    // A tag key has no curve: the key's menu offers none.
    QTest::newRow("on a tag key") << int(TweenInfo::CurveType::Cubic) << "Tags" << false;
}

// Through the key's menu, opened with a right click on the second key.
void TestTimelineDrag::curveOfTheSelection()
{
    QFETCH(int, type);
    QFETCH(QString, second);
    QFETCH(bool, offered);
    TimelineFixture f;
    const LineId mood = f.addMoodAndTags({0, 400});
    const QByteArray before = f.hero.savedBytes();
    f.click(f.row(QStringLiteral("torso")), 200);
    f.click(f.row(second), 400, Qt::ShiftModifier);
    bool hasCurves = false;
    onNextModal([&](QWidget *popup) {
        auto *menu = qobject_cast<QMenu *>(popup);
        QAction *curves = nullptr;
        for (QAction *a : menu ? menu->actions() : QList<QAction *>()) {
            if (a->text() == QLatin1String("Curve"))
                curves = a;
        }
        hasCurves = curves != nullptr;
        if (curves) {
            TweenInfo named;
            named.setCurveType(type);
            for (QAction *a : curves->menu()->actions()) {
                if (a->text().compare(named.curveTypeName(), Qt::CaseInsensitive) == 0)
                    a->trigger();
            }
        }
        popup->close();
    });
    QTest::mouseClick(f.viewport(), Qt::RightButton, Qt::NoModifier, f.at(f.row(second), 400));
    QTRY_VERIFY(!QApplication::activePopupWidget());
    QCOMPARE(hasCurves, offered);
    if (!offered) {
        QCOMPARE(f.hero.stack.count(), 0);
        return;
    }
    QCOMPARE(f.hero.stack.count(), 1);
    QCOMPARE(f.hero.stack.text(0), QStringLiteral("curve changed"));
    const Animation *walk = f.animation();
    QCOMPARE(walk->timelineFromObjectName(QStringLiteral("torso"))->actualKeyFromTime(200)->curve().curveType(),
             type);
    const TweenInfo &changed = second == QLatin1String("mood")
                                   ? walk->ownLineHolder().line(mood)->keyAtTime(400)->curve()
                                   : walk->timelineFromObjectName(second)->actualKeyFromTime(400)->curve();
    QCOMPARE(changed.curveType(), type);
    // Keys not selected keep theirs.
    QVERIFY(walk->timelineFromObjectName(QStringLiteral("head"))->actualKeyFromTime(200)->curve().curveType()
            != type);
    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
}

// Time moving on during a drag (playback) shows the drag's result at each time.
void TestTimelineDrag::canvasFollowsTheTimeDuringADrag()
{
    TimelineFixture f;
    TimelineView::snappingEnabled = false;
    f.session()->setCurrentTime(250);
    MorvaneCanvasScene *scene = f.session()->scene();
    const auto shown = [&] {
        QList<double> out;
        for (int i = 0; i < scene->instTimelineProxyCount(); ++i) {
            const ObjectGraphicsProxy *p = scene->timelineProxy(i);
            const DisplayInfo d = p->displayInfo();
            out << double(p->isShownInPose()) << d.x << d.y << d.angle << d.xScale << d.alpha;
        }
        return out;
    };
    const QList<int> times{250, 350, 100, 550, 310};
    f.dragWithoutRelease(f.row(QStringLiteral("spine")), 200, 300);
    QList<QList<double>> during;
    for (const int t : times) {
        f.session()->setCurrentTime(t);
        QVERIFY(scene->isPreviewing());
        during.append(shown());
    }
    f.session()->setCurrentTime(250);
    QTest::mouseRelease(f.viewport(), Qt::LeftButton, Qt::NoModifier,
                        f.at(f.row(QStringLiteral("spine")), 300));
    QCOMPARE(f.hero.stack.count(), 1);
    for (int i = 0; i < times.size(); ++i) {
        f.session()->setCurrentTime(times[i]);
        const QList<double> after = shown();
        QCOMPARE(after.size(), during[i].size());
        for (int v = 0; v < after.size(); ++v)
            QVERIFY2(qAbs(after[v] - during[i][v]) < 1e-6,
                     qPrintable(QStringLiteral("at %1 ms, value %2").arg(times[i]).arg(v)));
    }
}

void TestTimelineDrag::canvasFollowsTheDrag_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("time"); // the current time
    QTest::addColumn<bool>("snapping");
    QTest::addColumn<QString>("mainline"); // the mainline key times after the drag
    // The walk: the mainline and most lines keyed at 0, 200, 400 and 600 ms;
    // the bones and the lantern move, the sprites on the bones keep still.
    QTest::newRow("mainline key later") << "" << 200 << 300 << 250 << false
                                    << "0,300,400,600";
    QTest::newRow("mainline key onto another") << "" << 400 << 200 << 300 << false
                                    << "0,200,600";
    QTest::newRow("mainline key past the time") << "" << 200 << 500 << 450 << false
                                    << "0,400,500,600";
    QTest::newRow("mainline key to the end") << "" << 600 << 2000 << 700 << false
                                    << "0,200,400,800";
    QTest::newRow("mainline key to zero") << "" << 200 << -50 << 100 << false
                                    << "0,400,600";
    QTest::newRow("bone key to a free time") << "spine" << 200 << 300 << 250 << false
                                    << "0,200,300,400,600";
    QTest::newRow("bone key earlier") << "leg_front_upper" << 400 << 100 << 150 << false
                                    << "0,100,200,400,600";
    QTest::newRow("bone key back") << "hip" << 600 << 510 << 550 << false
                                    << "0,200,400,510,600";
    QTest::newRow("bone key to the end of the loop") << "hip" << 600 << 800 << 700 << false
                                    << "0,200,400,600,800";
    QTest::newRow("sprite key past the time") << "lantern" << 200 << 350 << 300 << false
                                    << "0,200,350,400,600";
    // Snapped to 500 on the way, it stays there: 600 is taken by its own line.
    QTest::newRow("sprite key snapped") << "head" << 400 << 551 << 500 << true
                                    << "0,200,400,500,600";
    QTest::newRow("a drag back to its start") << "head" << 200 << 200 << 100 << false
                                    << "0,200,400,600";
}

// While keys are dragged the canvas shows what the drag will record, and the
// document is untouched until the release; the drag is one step whose undo
// gives back the saved bytes and the canvas, and whose redo the edited ones.
void TestTimelineDrag::canvasFollowsTheDrag()
{
    QFETCH(QString, row);
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(int, time);
    QFETCH(bool, snapping);
    QFETCH(QString, mainline);
    TimelineFixture f;
    TimelineView::snappingEnabled = snapping;
    f.session()->setCurrentTime(time);
    const QByteArray before = f.hero.savedBytes();
    MorvaneCanvasScene *scene = f.session()->scene();
    const auto shown = [&] {
        QList<QList<double>> out;
        for (int i = 0; i < scene->instTimelineProxyCount(); ++i) {
            const ObjectGraphicsProxy *p = scene->timelineProxy(i);
            const DisplayInfo d = p->displayInfo();
            out.append({double(p->isShownInPose()), d.x, d.y, d.angle, d.xScale, d.yScale, d.alpha});
        }
        return out;
    };
    const auto same = [](const QList<QList<double>> &a, const QList<QList<double>> &b) {
        for (int i = 0; i < a.size() && a.size() == b.size(); ++i) {
            for (int v = 0; v < a[i].size(); ++v) {
                if (qAbs(a[i][v] - b[i][v]) > 1e-6) {
                    qWarning("timeline %d, value %d: %g and %g", i, v, a[i][v], b[i][v]);
                    return false;
                }
            }
        }
        return a.size() == b.size();
    };
    const QList<QList<double>> still = shown();
    f.dragWithoutRelease(f.row(row), from, to);
    QCOMPARE(scene->isPreviewing(), from != to);
    const QList<QList<double>> dragging = shown();
    QCOMPARE(f.hero.savedBytes(), before);
    QTest::mouseRelease(f.viewport(), Qt::LeftButton, Qt::NoModifier, f.at(f.row(row), to));
    QVERIFY(!scene->isPreviewing());
    if (from == to) {
        QCOMPARE(f.hero.stack.count(), 0);
        return;
    }
    QCOMPARE(f.hero.stack.count(), 1);
    QVERIFY(same(shown(), dragging));
    QStringList times;
    for (const int t : mainlineTimes(f.animation()))
        times << QString::number(t);
    QCOMPARE(times.join(QLatin1Char(',')), mainline);
    // A mainline key in the rows for each, the new ones included.
    QCOMPARE(f.view()->mainlineRow()->keys().size(), size_t(times.size()));
    const QByteArray after = f.hero.savedBytes();
    QVERIFY(after != before);
    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    QVERIFY(same(shown(), still));
    f.hero.stack.redo();
    QCOMPARE(f.hero.savedBytes(), after);
    QVERIFY(same(shown(), dragging));
}

void TestTimelineDrag::deleteKeys_data()
{
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<QString>("label"); // empty: refused
    // The idle animation has keys at 0 and 600 only; "!" presses Delete.
    QTest::newRow("one key") << QStringList{"torso@600"} << "key deleted";
    QTest::newRow("two keys") << QStringList{"torso@600", "+head@600"} << "keys deleted";
    // The value and tag keys at 600 go with the mainline key without counting.
    QTest::newRow("a mainline key") << QStringList{"@600"} << "key deleted";
    QTest::newRow("the only key left") << QStringList{"torso@600", "!", "torso@0"} << "";
    QTest::newRow("a value key") << QStringList{"mood@600"} << "key deleted";
    QTest::newRow("the last value key") << QStringList{"mood@600", "!", "mood@0"} << "key deleted";
    QTest::newRow("a tag key and a timeline key") << QStringList{"Tags@600", "+torso@600"}
                                                  << "keys deleted";
}

void TestTimelineDrag::deleteKeys()
{
    QFETCH(QStringList, clicks);
    QFETCH(QString, label);
    TimelineFixture f(QStringLiteral("idle"));
    f.addMoodAndTags({0, 600});
    QSignalSpy status(&f.editor, &TimelineEditor::statusMessage);
    for (QString click : clicks) {
        if (click == QLatin1String("!")) {
            f.view()->setFocus();
            QTest::keyClick(f.view(), Qt::Key_Delete);
            continue;
        }
        const bool add = click.startsWith(QLatin1Char('+'));
        if (add)
            click.remove(0, 1);
        const QStringList parts = click.split(QLatin1Char('@'));
        f.click(f.row(parts[0]), parts[1].toInt(), add ? Qt::ShiftModifier : Qt::NoModifier);
    }
    const int stackBefore = f.hero.stack.count();
    const QByteArray before = f.hero.savedBytes();
    f.view()->setFocus();
    QTest::keyClick(f.view(), Qt::Key_Delete);
    if (label.isEmpty()) {
        QCOMPARE(f.hero.stack.count(), stackBefore);
        QCOMPARE(f.hero.savedBytes(), before);
        QVERIFY(status.count() >= 1);
        QVERIFY(!status.last().at(0).toString().isEmpty());
    } else {
        QCOMPARE(f.hero.stack.count(), stackBefore + 1);
        QCOMPARE(f.hero.stack.text(stackBefore), label);
        f.hero.stack.undo();
        QCOMPARE(f.hero.savedBytes(), before);
    }
}

void TestTimelineDrag::menuOpensAnimationProperties()
{
    TimelineFixture f;
    QSignalSpy spy(f.view(), &TimelineView::animationPropertiesRequested);
    QStringList seen;
    onNextModal([&seen](QWidget *w) {
        auto *menu = qobject_cast<QMenu *>(w);
        QVERIFY(menu);
        for (QAction *a : menu->actions())
            seen.append(a->text());
        // The properties dialog that follows is closed unchanged.
        onNextModal([](QWidget *dialog) { dialog->close(); });
        for (QAction *a : menu->actions()) {
            if (a->text() == QLatin1String("Animation properties..."))
                a->trigger();
        }
        menu->close();
    });
    QTest::mouseClick(f.viewport(), Qt::RightButton, Qt::NoModifier,
                      f.at(f.row(QStringLiteral("torso")), 300));
    QTRY_COMPARE(spy.count(), 1);
    QVERIFY(seen.contains(QStringLiteral("Animation properties...")));
    QCOMPARE(f.hero.stack.count(), 0);
}

void TestTimelineDrag::lengthField()
{
    TimelineFixture f;
    const QByteArray before = f.hero.savedBytes();
    QSpinBox *field = f.editor.lengthField();
    QCOMPARE(field->value(), 800);
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("500"));
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(f.animation()->length(), 500);
    QCOMPARE(f.hero.stack.count(), 1);
    QCOMPARE(mainlineTimes(f.animation()), (QList<int>{0, 200, 400}));
    QCOMPARE(f.view()->animationLength(), 500);
    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    QCOMPARE(field->value(), 800);
}

void TestTimelineDrag::newEventLine()
{
    TimelineFixture f;
    const QByteArray before = f.hero.savedBytes();
    f.session()->setCurrentTime(300);
    onNextModal([](QWidget *w) {
        auto *dialog = qobject_cast<QInputDialog *>(w);
        QVERIFY(dialog);
        dialog->setTextValue(QStringLiteral("footstep"));
        dialog->accept();
    });
    f.editor.newEvent();
    QCOMPARE(f.hero.stack.count(), 1);
    const Timeline *event = f.animation()->timelineFromObjectName(QStringLiteral("footstep"));
    QVERIFY(event);
    QVERIFY(event->isEvent());
    QCOMPARE(keyTimes(f.animation(), QStringLiteral("footstep")), QList<int>{300});
    TimelineGraphicsProxy *row = f.row(QStringLiteral("footstep"));
    QVERIFY(row);
    QCOMPARE(row->keyShape(), TimelineKeyGraphicsProxy::Shape::Flag);
    // Its key drags like any other.
    f.drag(row, 300, 450);
    QCOMPARE(keyTimes(f.animation(), QStringLiteral("footstep")), QList<int>{450});
    f.hero.stack.undo();
    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    QVERIFY(!f.row(QStringLiteral("footstep")));
}

void TestTimelineDrag::snappingDialog_data()
{
    QTest::addColumn<bool>("byFps");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("interval");
    QTest::addColumn<double>("fps");
    QTest::newRow("milliseconds") << false << 50.0 << 50 << 20.0;
    QTest::newRow("frames per second") << true << 30.0 << 33 << 30.0;
    QTest::newRow("slow") << true << 7.0 << 142 << 7.0;
}

void TestTimelineDrag::snappingDialog()
{
    QFETCH(bool, byFps);
    QFETCH(double, value);
    QFETCH(int, interval);
    QFETCH(double, fps);
    TimelineFixture f;
    const QByteArray before = f.hero.savedBytes();
    int previewed = 0;
    onNextModal([&](QWidget *w) {
        auto *dialog = qobject_cast<SnappingOptionsDialog *>(w);
        QVERIFY(dialog);
        if (byFps)
            dialog->fpsField()->setValue(value);
        else
            dialog->intervalField()->setValue(int(value));
        QCOMPARE(dialog->intervalField()->value(), interval);
        QCOMPARE(dialog->fpsField()->value(), fps);
        // The view snaps with it before OK.
        previewed = f.view()->snapSize();
        dialog->accept();
    });
    f.editor.openSnappingOptions();
    QCOMPARE(previewed, interval);
    QCOMPARE(f.animation()->snappingInterval(), interval);
    QCOMPARE(f.view()->snapSize(), interval);
    QCOMPARE(f.hero.stack.count(), 1);
    f.hero.stack.undo();
    QCOMPARE(f.view()->snapSize(), 100);
    QCOMPARE(f.hero.savedBytes(), before);
}

QTEST_MAIN(TestTimelineDrag)
#include "tst_timelinedrag.moc"
