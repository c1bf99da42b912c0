// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timelinetesthelpers.h"

#include "canvas/objectgraphicsproxy.h"
#include "model/entity.h"
#include "model/object.h"
#include "timeline/timelineitems.h"

#include <QSignalSpy>
#include <QSpinBox>

using namespace Morvane;
using namespace Morvane::Testing;

class TestTimelineView : public QObject
{
    Q_OBJECT

private slots:
    void coolValues_data();
    void coolValues();
    void coolSnapValues_data();
    void coolSnapValues();
    void rowsFollowTheAnimation();
    void zoomFloorAndFit_data();
    void zoomFloorAndFit();
    void wheelZoom_data();
    void wheelZoom();
    void dragClampsAndSnaps_data();
    void dragClampsAndSnaps();
    void keysOfOneRowNeverMeet();
    void clickSelection_data();
    void clickSelection();
    void mainlineStaysPinned();
    void soundRowDrawsItsVolume_data();
    void soundRowDrawsItsVolume();
    void boxSelection_data();
    void boxSelection();
    void selectAllWithCtrlA();
    void hoverRaisesNameAndFades();
    void playheadAndTimeField();
    void rulerScrubs_data();
    void rulerScrubs();
    void labelCheckBoxes();
    void labelClickSelectsOnCanvas();
};

void TestTimelineView::coolValues_data()
{
    QTest::addColumn<double>("v");
    QTest::addColumn<double>("step");
    QTest::newRow("one") << 1.0 << 1.0;
    QTest::newRow("just above one") << 1.5 << 2.0;
    QTest::newRow("three") << 3.0 << 5.0;
    QTest::newRow("seven") << 7.0 << 10.0;
    QTest::newRow("hundred") << 100.0 << 100.0;
    QTest::newRow("150") << 150.0 << 200.0;
    QTest::newRow("420") << 420.0 << 500.0;
    QTest::newRow("small") << 0.03 << 0.05;
    QTest::newRow("zero has a step") << 0.0 << 1.0;
}

void TestTimelineView::coolValues()
{
    QFETCH(double, v);
    QFETCH(double, step);
    QCOMPARE(MainlineView::roundToCoolValue(v), step);
}

void TestTimelineView::coolSnapValues_data()
{
    QTest::addColumn<int>("v");
    QTest::addColumn<int>("snap");
    QTest::addColumn<int>("expected");
    QTest::newRow("zero stays") << 0 << 10 << 0;
    QTest::newRow("a multiple goes to the next") << 20 << 10 << 30;
    QTest::newRow("between goes up") << 25 << 10 << 30;
    QTest::newRow("zero with step one moves") << 0 << 1 << 1;
    QTest::newRow("seven by five") << 7 << 5 << 10;
    QTest::newRow("no step") << 42 << 0 << 42;
}

void TestTimelineView::coolSnapValues()
{
    QFETCH(int, v);
    QFETCH(int, snap);
    QFETCH(int, expected);
    QCOMPARE(MainlineView::roundToCoolSnapValue(v, snap), expected);
}

void TestTimelineView::rowsFollowTheAnimation()
{
    TimelineFixture f;
    QVERIFY(f.hero.ok);
    const Animation *walk = f.animation();
    // The mainline, then one row per timeline in the animation's order.
    QCOMPARE(int(f.view()->rows().size()), 1 + walk->timelineCount());
    QCOMPARE(f.view()->mainlineRow()->keys().size(), size_t(walk->mainlineKeyCount()));
    for (int i = 0; i < walk->timelineCount(); ++i) {
        const TimelineGraphicsProxy *r = f.view()->rows()[size_t(i + 1)];
        QCOMPARE(r->label(), walk->timeline(i)->name());
        QCOMPARE(int(r->keys().size()), walk->timeline(i)->keyCount());
        QCOMPARE(r->top(), 20.0 * (i + 1));
        for (int k = 0; k < walk->timeline(i)->keyCount(); ++k)
            QCOMPARE(r->keys()[size_t(k)]->positionalTime(), walk->timeline(i)->key(k)->time());
    }
    // Item types as the graphics scene reports them.
    QCOMPARE(f.view()->mainlineRow()->keys().front()->type(), 1011);
    QCOMPARE(f.view()->mainlineRow()->rect()->type(), 1013);
    int markers = 0;
    for (QGraphicsItem *item : f.view()->timelineScene()->items()) {
        if (item->type() == 1012)
            ++markers;
    }
    QCOMPARE(markers, walk->mainlineKeyCount());

    // Another animation rebuilds the rows.
    f.canvas.setCurrentAnimation(f.hero.animation(QStringLiteral("idle")));
    QCOMPARE(int(f.view()->rows().size()), 1 + f.hero.animation(QStringLiteral("idle"))->timelineCount());
    QCOMPARE(f.view()->animationLength(), 1200);
}

void TestTimelineView::zoomFloorAndFit_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<double>("expected"); // -1: the fit for the viewport
    QTest::newRow("zero") << 0.0 << 0.0001;
    QTest::newRow("negative") << -3.0 << 0.0001;
    QTest::newRow("below the floor") << 0.00001 << 0.0001;
    QTest::newRow("ordinary") << 2.5 << 2.5;
    QTest::newRow("fit") << -1.0 << -1.0;
}

void TestTimelineView::zoomFloorAndFit()
{
    QFETCH(double, factor);
    QFETCH(double, expected);
    TimelineFixture f;
    f.view()->setZoomFactor(factor);
    if (expected == -1.0) {
        // Fitted, the end of the 800 ms walk shows, clear of the right edge.
        const int end = f.view()->mapFromScene(QPointF(800 * f.view()->zoomFactor(), 0)).x();
        QVERIFY2(end >= f.viewport()->width() - 40 && end <= f.viewport()->width() - 12,
                 qPrintable(QStringLiteral("end at %1 of %2").arg(end).arg(f.viewport()->width())));
        expected = f.view()->zoomFactor();
    }
    QCOMPARE(f.view()->zoomFactor(), expected);
    // Markers sit at time times the factor.
    const TimelineKeyGraphicsProxy *key = f.view()->mainlineRow()->keys()[1];
    QCOMPARE(key->scenePos().x(), key->positionalTime() * expected);
}

void TestTimelineView::wheelZoom_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<int>("delta");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<double>("expected");
    QTest::newRow("one notch in") << 1.0 << 120 << int(Qt::ControlModifier) << 1.6;
    QTest::newRow("one notch out") << 1.0 << -120 << int(Qt::ControlModifier) << 0.4;
    QTest::newRow("capped at 50") << 49.9 << 120 << int(Qt::ControlModifier) << 50.0;
    QTest::newRow("stays at 50") << 50.0 << 240 << int(Qt::ControlModifier) << 50.0;
    QTest::newRow("floored") << 0.3 << -240 << int(Qt::ControlModifier) << 0.0001;
    QTest::newRow("without control it scrolls") << 1.0 << 120 << int(Qt::NoModifier) << 1.0;
    QTest::newRow("control and shift scroll") << 1.0 << 120
                                             << int(Qt::ControlModifier | Qt::ShiftModifier) << 1.0;
}

void TestTimelineView::wheelZoom()
{
    QFETCH(double, start);
    QFETCH(int, delta);
    QFETCH(int, modifiers);
    QFETCH(double, expected);
    TimelineFixture f;
    f.view()->setZoomFactor(start);
    f.view()->horizontalScrollBar()->setValue(0);
    const QPoint pointer(300, 15);
    const double timeUnder = f.view()->mapToScene(pointer).x() / start;
    f.wheel(pointer, delta, Qt::KeyboardModifiers(modifiers));
    QVERIFY(qAbs(f.view()->zoomFactor() - expected) < 1e-9);
    if (modifiers == Qt::ControlModifier && expected > 0.5) {
        // The time under the pointer keeps its place on screen (to a pixel).
        const double x = f.view()->mapFromScene(QPointF(timeUnder * expected, 0)).x();
        QVERIFY2(qAbs(x - pointer.x()) <= 1.0, qPrintable(QString::number(x)));
    }
}

void TestTimelineView::dragClampsAndSnaps_data()
{
    QTest::addColumn<bool>("snapping");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("expected");
    QTest::newRow("free") << false << 200 << 149 << 149;
    QTest::newRow("past the end") << false << 200 << 1000 << 800;
    QTest::newRow("before zero") << false << 200 << -100 << 0;
    QTest::newRow("149 snaps down") << true << 200 << 149 << 100;
    QTest::newRow("150 snaps up") << true << 200 << 150 << 200;
    QTest::newRow("151 snaps up") << true << 400 << 151 << 200;
    QTest::newRow("snapped past the end") << true << 400 << 870 << 800;
}

void TestTimelineView::dragClampsAndSnaps()
{
    QFETCH(bool, snapping);
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(int, expected);
    TimelineFixture f;
    QCOMPARE(f.view()->snapSize(), 100);
    TimelineView::snappingEnabled = snapping;
    TimelineGraphicsProxy *mainline = f.row();
    TimelineKeyGraphicsProxy *key = f.key(QString(), from);
    QVERIFY(key);
    f.dragWithoutRelease(mainline, from, to);
    QCOMPARE(key->positionalTime(), expected);
    QCOMPARE(key->originalTime(), from);
    QCOMPARE(key->scenePos().x(), expected * f.view()->zoomFactor());
    // The timeline keys of the mainline key ride with it.
    const TimelineKeyGraphicsProxy *torso = nullptr;
    for (const TimelineKeyGraphicsProxy *k : f.row(QStringLiteral("torso"))->keys()) {
        if (k->originalTime() == from)
            torso = k;
    }
    QVERIFY(torso);
    QVERIFY(torso->isSelected());
    QCOMPARE(torso->positionalTime(), expected);
    QTest::mouseRelease(f.viewport(), Qt::LeftButton, Qt::NoModifier, f.at(mainline, to));
}

void TestTimelineView::keysOfOneRowNeverMeet()
{
    TimelineFixture f;
    TimelineGraphicsProxy *torso = f.row(QStringLiteral("torso"));
    QVERIFY(torso);
    TimelineKeyGraphicsProxy *key = f.key(QStringLiteral("torso"), 200);
    QVERIFY(key);
    // Onto its neighbour at 400 it stays where it was; beside it, it moves.
    f.dragWithoutRelease(torso, 200, 400);
    QCOMPARE(key->positionalTime(), 300);
    f.move(f.at(torso, 400), Qt::LeftButton);
    QCOMPARE(key->positionalTime(), 300);
    f.move(f.at(torso, 390), Qt::LeftButton);
    QCOMPARE(key->positionalTime(), 390);
    QTest::mouseRelease(f.viewport(), Qt::LeftButton, Qt::NoModifier, f.at(torso, 390));
}

void TestTimelineView::clickSelection_data()
{
    QTest::addColumn<QStringList>("clicks"); // "row@time", "+" in front adds with Shift
    QTest::addColumn<int>("selected");        // -1: every timeline key at 200 plus the mainline key
    QTest::newRow("one timeline key") << QStringList{"torso@200"} << 1;
    QTest::newRow("another replaces it") << QStringList{"torso@200", "head@400"} << 1;
    QTest::newRow("shift adds") << QStringList{"torso@200", "+head@400"} << 2;
    QTest::newRow("shift again removes") << QStringList{"torso@200", "+head@400", "+head@400"} << 1;
    QTest::newRow("a mainline key takes its timeline keys") << QStringList{"@200"} << -1;
    QTest::newRow("empty space clears") << QStringList{"torso@200", "torso@300"} << 0;
}

void TestTimelineView::clickSelection()
{
    QFETCH(QStringList, clicks);
    QFETCH(int, selected);
    TimelineFixture f;
    for (QString click : clicks) {
        const bool add = click.startsWith(QLatin1Char('+'));
        if (add)
            click.remove(0, 1);
        const QStringList parts = click.split(QLatin1Char('@'));
        TimelineGraphicsProxy *r = f.row(parts[0]);
        QVERIFY(r);
        f.click(r, parts[1].toInt(), add ? Qt::ShiftModifier : Qt::NoModifier);
    }
    if (selected == -1) {
        int expected = 1;
        for (int i = 0; i < f.animation()->timelineCount(); ++i)
            expected += f.animation()->timeline(i)->actualKeyFromTime(200) ? 1 : 0;
        QVERIFY(expected > 10);
        selected = expected;
        // The marker on the ruler lights up with it.
        bool lit = false;
        for (QGraphicsItem *item : f.view()->timelineScene()->items()) {
            if (item->type() == MainlineKeyGraphicsProxy::Type
                && static_cast<MainlineKeyGraphicsProxy *>(item)->currentTime() == 200)
                lit = static_cast<MainlineKeyGraphicsProxy *>(item)->isHighlighted();
        }
        QVERIFY(lit);
    }
    QCOMPARE(f.selectedCount(), selected);
    for (const TimelineKeyGraphicsProxy *key : f.view()->selectedKeys())
        QCOMPARE(key->positionalTime(), key->originalTime());
}

// Scrolled to the last rows, the mainline row stays at the top of the view
// and of the labels, and a click there takes a mainline key, not the key of
// the row scrolled under it (the mainline key then selects its timeline keys).
void TestTimelineView::mainlineStaysPinned()
{
    TimelineFixture f;
    f.editor.resize(1100, 220);
    QApplication::processEvents();
    QScrollBar *bar = f.view()->verticalScrollBar();
    QVERIFY(bar->maximum() > 100);
    bar->setValue(bar->maximum());
    const double top = f.view()->mapToScene(QPoint(0, 0)).y();
    QCOMPARE(f.view()->mainlineRow()->top(), top);
    QCOMPARE(f.view()->rowAt(top + 10), f.view()->mainlineRow());
    QCOMPARE(f.editor.labelView()->nameCenter(f.view()->mainlineRow()).y(), 10);

    QTest::mouseClick(f.viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(int(200 * f.view()->zoomFactor()) - f.view()->horizontalScrollBar()->value(), 10));
    QVERIFY(f.key(QString(), 200)->isSelected());
    bar->setValue(0);
    QCOMPARE(f.view()->mainlineRow()->top(), 0.0);
}

void TestTimelineView::soundRowDrawsItsVolume_data()
{
    QTest::addColumn<double>("first");  // the volume of the key at 0
    QTest::addColumn<double>("second"); // the volume of the key at 400
    QTest::newRow("fading out") << 1.0 << 0.0;
    QTest::newRow("fading in") << 0.0 << 1.0;
    QTest::newRow("half") << 0.5 << 0.5;
}

// A sound row is taller: its volume runs as a line over the keys, full volume
// at the top of the band (y 3) and silence at its bottom (y 37).
void TestTimelineView::soundRowDrawsItsVolume()
{
    QFETCH(double, first);
    QFETCH(double, second);
    TimelineFixture f;
    auto *object = new Object(QStringLiteral("steps"), Object::Sound);
    f.hero.document.entity(0)->appendObject(object);
    Timeline *sound = f.animation()->appendObjectAsTimeline(object);
    for (const auto &[time, volume] : {std::pair{0, first}, {400, second}}) {
        auto *key = new TimelineKey;
        key->setCachedTime(time);
        key->soundInfo().volume = volume;
        sound->appendTimelineKey(key, true, false);
    }
    f.view()->refresh();
    const TimelineGraphicsProxy *row = f.row(QStringLiteral("steps"));
    QVERIFY(row);
    QCOMPARE(row->ownHeight(), 60);
    f.view()->verticalScrollBar()->setValue(int(row->top()) - 40);
    const QImage image = f.viewport()->grab().toImage();
    // Where the line stands at a time: the pixel row whose colour is the
    // line's (the sound rows' teal), searched down the band.
    const auto lineY = [&](int time) {
        const QPoint top = f.view()->mapFromScene(QPointF(time, row->top()));
        for (int y = 0; y < 40; ++y) {
            const QColor c = image.pixelColor(top.x(), top.y() + y);
            if (c.green() > 150 && c.blue() > 150 && c.red() < 150)
                return y;
        }
        return -1;
    };
    QVERIFY(qAbs(lineY(100) - (37 - (first * 3 + second) / 4 * 34)) <= 2);
    QVERIFY(qAbs(lineY(600) - (37 - second * 34)) <= 2);
}

void TestTimelineView::boxSelection_data()
{
    QTest::addColumn<QString>("fromRow");
    QTest::addColumn<QString>("toRow");
    QTest::addColumn<int>("fromTime");
    QTest::addColumn<int>("toTime");
    QTest::addColumn<bool>("shift");
    QTest::addColumn<int>("expected");
    // torso and head are neighbours in the walk: two rows, keys at 200 and 400.
    QTest::newRow("two rows, two times") << "torso" << "head" << 150 << 450 << false << 4;
    QTest::newRow("backwards") << "head" << "torso" << 450 << 150 << false << 4;
    QTest::newRow("one row, one time") << "torso" << "torso" << 150 << 250 << false << 1;
    QTest::newRow("shift keeps the earlier key") << "torso" << "torso" << 350 << 450 << true << 2;
}

void TestTimelineView::boxSelection()
{
    QFETCH(QString, fromRow);
    QFETCH(QString, toRow);
    QFETCH(int, fromTime);
    QFETCH(int, toTime);
    QFETCH(bool, shift);
    QFETCH(int, expected);
    TimelineFixture f;
    TimelineGraphicsProxy *a = f.row(fromRow);
    TimelineGraphicsProxy *b = f.row(toRow);
    QVERIFY(a && b);
    QVERIFY(qAbs(a->top() - b->top()) <= 20);
    // Something selected before: without Shift the box replaces it.
    f.click(f.row(QStringLiteral("torso")), 0);
    QCOMPARE(f.selectedCount(), 1);
    const Qt::KeyboardModifiers mods = shift ? Qt::ShiftModifier : Qt::NoModifier;
    QTest::mousePress(f.viewport(), Qt::LeftButton, mods, f.at(a, fromTime));
    f.move(f.at(b, (fromTime + toTime) / 2), Qt::LeftButton, mods);
    f.move(f.at(b, toTime), Qt::LeftButton, mods);
    QTest::mouseRelease(f.viewport(), Qt::LeftButton, mods, f.at(b, toTime));
    QCOMPARE(f.selectedCount(), expected);
    // Nothing moved: the animation's keys are where they were.
    QCOMPARE(f.key(QStringLiteral("torso"), 200)->originalTime(), 200);
}

void TestTimelineView::selectAllWithCtrlA()
{
    TimelineFixture f;
    f.view()->setFocus();
    int total = f.animation()->mainlineKeyCount();
    for (int i = 0; i < f.animation()->timelineCount(); ++i)
        total += f.animation()->timeline(i)->keyCount();
    QTest::keyClick(f.view(), Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(f.selectedCount(), total);
    QTest::keyClick(f.view(), Qt::Key_Escape);
    QCOMPARE(f.selectedCount(), 0);
}

void TestTimelineView::hoverRaisesNameAndFades()
{
    TimelineFixture f;
    QSignalSpy spy(f.view(), &TimelineView::hovered);
    TimelineGraphicsProxy *head = f.row(QStringLiteral("head"));
    TimelineGraphicsProxy *torso = f.row(QStringLiteral("torso"));
    f.move(f.at(head, 300));
    f.move(f.at(head, 320)); // the same row: no second signal
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toString(), QStringLiteral("head"));
    MorvaneCanvasScene *scene = f.canvas.scene();
    QVERIFY(scene->hoveredProxy());
    QCOMPARE(scene->hoveredProxy()->name(), QStringLiteral("head"));
    QCOMPARE(f.view()->hoveredRow(), head);
    f.move(f.at(torso, 300));
    QCOMPARE(spy.count(), 2);
    QCOMPARE(scene->hoveredProxy()->name(), QStringLiteral("torso"));
    // The canvas highlight fades after 600 ms.
    QTest::qWait(300);
    QVERIFY(scene->hoveredProxy());
    QTRY_VERIFY_WITH_TIMEOUT(!scene->hoveredProxy(), 2000);
}

void TestTimelineView::playheadAndTimeField()
{
    TimelineFixture f;
    f.session()->setCurrentTime(300);
    QCOMPARE(f.view()->shownTime(), 300);
    QCOMPARE(f.editor.timeField()->value(), 300);
    // Typing a time moves the playhead and the canvas.
    QSpinBox *field = f.editor.timeField();
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("450"));
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(f.session()->currentTime(), 450);
    QCOMPARE(f.view()->shownTime(), 450);
    // A click on empty row space moves the time there too.
    f.click(f.row(QStringLiteral("torso")), 123);
    QCOMPARE(f.session()->currentTime(), 123);
    // As frames of the snapping interval.
    MainlineView::useFramesAsUnits = true;
    f.session()->setCurrentTime(600);
    QCOMPARE(f.editor.timeField()->value(), 6);
}

void TestTimelineView::rulerScrubs_data()
{
    QTest::addColumn<bool>("snapping");
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("expected");
    QTest::newRow("free") << false << 237 << 237;
    QTest::newRow("snapped") << true << 237 << 200;
    QTest::newRow("past the end") << false << 950 << 800;
}

void TestTimelineView::rulerScrubs()
{
    QFETCH(bool, snapping);
    QFETCH(int, x);
    QFETCH(int, expected);
    TimelineFixture f;
    TimelineView::snappingEnabled = snapping;
    QWidget *ruler = f.editor.mainlineView()->viewport();
    QTest::mousePress(ruler, Qt::LeftButton, Qt::NoModifier, QPoint(10, 12));
    QCOMPARE(f.session()->currentTime(), 10 - 10 % (snapping ? 100 : 1));
    QMouseEvent moveEvent(QEvent::MouseMove, QPointF(x, 12), ruler->mapToGlobal(QPointF(x, 12)),
                          Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(ruler, &moveEvent);
    QTest::mouseRelease(ruler, Qt::LeftButton, Qt::NoModifier, QPoint(x, 12));
    QCOMPARE(f.session()->currentTime(), expected);
    QCOMPARE(f.view()->shownTime(), expected);
}

void TestTimelineView::labelCheckBoxes()
{
    TimelineFixture f;
    TimelineLabelView *labels = f.editor.labelView();
    TimelineGraphicsProxy *head = f.row(QStringLiteral("head"));
    const int timeline = head->id().timeline;
    ObjectGraphicsProxy *proxy = f.canvas.scene()->timelineProxy(timeline);
    QVERIFY(proxy && proxy->isVisible());

    QTest::mouseClick(labels->viewport(), Qt::LeftButton, Qt::NoModifier,
                      labels->checkBoxRect(head, TimelineLabelView::VisibleX).center());
    QVERIFY(labels->isHidden(timeline));
    QVERIFY(!f.canvas.scene()->timelineProxy(timeline)->isVisible());
    QTest::mouseClick(labels->viewport(), Qt::LeftButton, Qt::NoModifier,
                      labels->checkBoxRect(head, TimelineLabelView::VisibleX).center());
    QVERIFY(!labels->isHidden(timeline));
    QVERIFY(f.canvas.scene()->timelineProxy(timeline)->isVisible());

    QTest::mouseClick(labels->viewport(), Qt::LeftButton, Qt::NoModifier,
                      labels->checkBoxRect(head, TimelineLabelView::LockX).center());
    QVERIFY(f.canvas.scene()->timelineProxy(timeline)->isLocked());
    QTest::mouseClick(labels->viewport(), Qt::LeftButton, Qt::NoModifier,
                      labels->checkBoxRect(head, TimelineLabelView::LockX).center());
    QVERIFY(!f.canvas.scene()->timelineProxy(timeline)->isLocked());
    // None of it is an edit.
    QCOMPARE(f.hero.stack.count(), 0);
}

void TestTimelineView::labelClickSelectsOnCanvas()
{
    TimelineFixture f;
    TimelineLabelView *labels = f.editor.labelView();
    TimelineGraphicsProxy *head = f.row(QStringLiteral("head"));
    TimelineGraphicsProxy *torso = f.row(QStringLiteral("torso"));
    QTest::mouseClick(labels->viewport(), Qt::LeftButton, Qt::NoModifier, labels->nameCenter(head));
    QCOMPARE(f.session()->selection().size(), 1);
    QCOMPARE(f.session()->selection().first()->name(), QStringLiteral("head"));
    QTest::mouseClick(labels->viewport(), Qt::LeftButton, Qt::ShiftModifier,
                      labels->nameCenter(torso));
    QCOMPARE(f.session()->selection().size(), 2);
    QTest::mouseClick(labels->viewport(), Qt::LeftButton, Qt::NoModifier, labels->nameCenter(torso));
    QCOMPARE(f.session()->selection().size(), 1);
    QCOMPARE(f.session()->selection().first()->name(), QStringLiteral("torso"));
}

QTEST_MAIN(TestTimelineView)
#include "tst_timelineview.moc"
