// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timelinetesthelpers.h"

#include "canvas/morvanegraphicsview.h"

#include <QAction>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QSpinBox>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

struct Transport : TimelineFixture
{
    Transport()
    {
        if (!QTest::qWaitForWindowActive(&editor))
            qWarning("the timeline window did not become active");
        view()->setFocus();
    }

    void space(bool press, bool autoRepeat = false, QWidget *to = nullptr)
    {
        QKeyEvent event(press ? QEvent::KeyPress : QEvent::KeyRelease, Qt::Key_Space,
                        Qt::NoModifier, QStringLiteral(" "), autoRepeat);
        QApplication::sendEvent(to ? to : view(), &event);
    }
};

} // namespace

class TestTransport : public QObject
{
    Q_OBJECT

private slots:
    void spaceTapVersusDrag_data();
    void spaceTapVersusDrag();
    void jumpKeys_data();
    void jumpKeys();
    void playbackFollowsRealTime_data();
    void playbackFollowsRealTime();
    void endOfAnimation_data();
    void endOfAnimation();
    void otherAnimationStopsPlayback();
};

void TestTransport::spaceTapVersusDrag_data()
{
    QTest::addColumn<QString>("gesture");
    QTest::addColumn<bool>("playing");
    QTest::newRow("tap") << "tap" << true;
    QTest::newRow("two taps") << "tap tap" << false;
    QTest::newRow("held with repeats") << "repeat" << true;
    QTest::newRow("held during a canvas drag") << "drag" << false;
    QTest::newRow("held during a click") << "click" << false;
    QTest::newRow("typed into the time field") << "field" << false;
    QTest::newRow("tap after a drag") << "drag tap" << true;
}

void TestTransport::spaceTapVersusDrag()
{
    QFETCH(QString, gesture);
    QFETCH(bool, playing);
    Transport t;
    QWidget *canvas = t.canvas.view()->viewport();
    for (const QString &step : gesture.split(QLatin1Char(' '))) {
        if (step == QLatin1String("tap")) {
            t.space(true);
            t.space(false);
        } else if (step == QLatin1String("repeat")) {
            t.space(true);
            t.space(false, true);
            t.space(true, true);
            t.space(false);
        } else if (step == QLatin1String("drag") || step == QLatin1String("click")) {
            t.space(true);
            QTest::mousePress(canvas, Qt::LeftButton, Qt::NoModifier, QPoint(50, 50));
            if (step == QLatin1String("drag")) {
                QMouseEvent move(QEvent::MouseMove, QPointF(90, 70), canvas->mapToGlobal(QPointF(90, 70)),
                                 Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
                QApplication::sendEvent(canvas, &move);
            }
            QTest::mouseRelease(canvas, Qt::LeftButton, Qt::NoModifier, QPoint(90, 70));
            t.space(false);
        } else if (step == QLatin1String("field")) {
            t.editor.timeField()->setFocus();
            t.space(true, false, t.editor.timeField());
            t.space(false, false, t.editor.timeField());
        }
    }
    QCOMPARE(t.editor.isPlaying(), playing);
    QCOMPARE(t.editor.action(QStringLiteral("actionPlay"))->isChecked(), playing);
    t.editor.pause();
}

void TestTransport::jumpKeys_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("expected");
    QTest::newRow("home") << 300 << int(Qt::Key_Home) << 0;
    QTest::newRow("end") << 300 << int(Qt::Key_End) << 800;
    QTest::newRow("previous") << 300 << int(Qt::Key_Comma) << 200;
    QTest::newRow("next") << 300 << int(Qt::Key_Period) << 400;
    QTest::newRow("previous from a key") << 200 << int(Qt::Key_Comma) << 0;
    QTest::newRow("next from a key") << 200 << int(Qt::Key_Period) << 400;
    QTest::newRow("nothing before the first") << 0 << int(Qt::Key_Comma) << 0;
    QTest::newRow("nothing after the last") << 700 << int(Qt::Key_Period) << 700;
}

void TestTransport::jumpKeys()
{
    QFETCH(int, start);
    QFETCH(int, key);
    QFETCH(int, expected);
    Transport t;
    t.session()->setCurrentTime(start);
    QTest::keyClick(t.view(), Qt::Key(key));
    QCOMPARE(t.session()->currentTime(), expected);
    QCOMPARE(t.editor.timeField()->value(), expected);
}

void TestTransport::playbackFollowsRealTime_data()
{
    QTest::addColumn<double>("speed");
    QTest::newRow("real time") << 1.0;
    QTest::newRow("double") << 2.0;
    QTest::newRow("half") << 0.5;
}

void TestTransport::playbackFollowsRealTime()
{
    QFETCH(double, speed);
    Transport t;
    t.session()->setCurrentTime(0);
    t.editor.setSpeed(speed);
    QElapsedTimer clock;
    clock.start();
    t.editor.play();
    QVERIFY(t.editor.isPlaying());
    QTRY_VERIFY_WITH_TIMEOUT(t.session()->currentTime() >= 150, 5000);
    t.editor.pause();
    const qint64 elapsed = clock.elapsed();
    const int reached = t.session()->currentTime();
    // Never ahead of the clock, however slow the frames came.
    QVERIFY2(reached <= elapsed * speed + 1,
             qPrintable(QStringLiteral("%1 ms shown after %2 ms").arg(reached).arg(elapsed)));
    QVERIFY(elapsed * speed >= 150);
    QTest::qWait(50);
    QCOMPARE(t.session()->currentTime(), reached);
}

void TestTransport::endOfAnimation_data()
{
    QTest::addColumn<bool>("loop");
    QTest::newRow("stops at the end") << false;
    QTest::newRow("loops") << true;
}

void TestTransport::endOfAnimation()
{
    QFETCH(bool, loop);
    Transport t;
    t.editor.action(QStringLiteral("actionLoop"))->setChecked(loop);
    t.editor.setSpeed(4.0);
    t.session()->setCurrentTime(700);
    t.editor.play();
    if (loop) {
        QTRY_VERIFY_WITH_TIMEOUT(t.session()->currentTime() < 600, 5000);
        QVERIFY(t.editor.isPlaying());
        t.editor.pause();
    } else {
        QTRY_VERIFY_WITH_TIMEOUT(!t.editor.isPlaying(), 5000);
        QCOMPARE(t.session()->currentTime(), 800);
        // Play from the end starts over.
        t.editor.play();
        QVERIFY(t.session()->currentTime() <= 800);
        QTRY_VERIFY_WITH_TIMEOUT(t.session()->currentTime() < 800, 5000);
        t.editor.pause();
    }
}

void TestTransport::otherAnimationStopsPlayback()
{
    Transport t;
    t.editor.play();
    QVERIFY(t.editor.isPlaying());
    t.canvas.setCurrentAnimation(t.hero.animation(QStringLiteral("idle")));
    QVERIFY(!t.editor.isPlaying());
    QCOMPARE(t.view()->animationLength(), 1200);
}

QTEST_MAIN(TestTransport)
#include "tst_transport.moc"
