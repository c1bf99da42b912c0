// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "paneltesthelpers.h"

#include "ui/curveeditor/curveeditor.h"
#include "ui/curveeditor/curveview.h"

#include <QImage>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

using Bench = Workbench<CurveEditor>;

constexpr int Bezier = int(TweenInfo::CurveType::Bezier);

/// Makes the selected objects' keys in force bezier through the type box.
bool makeBezier(Bench &b)
{
    return pickByKeys(b.panel->typeBox(), Bezier);
}

} // namespace

class TestCurveEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsSelection();
    void typeSwitchIsOneStep_data();
    void typeSwitchIsOneStep();
    void handleDrag_data();
    void handleDrag();
    void givenKeys();
    void drawsTheCurve_data();
    void drawsTheCurve();
};

void TestCurveEditor::followsSelection()
{
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 450);
    QVERIFY(b.panel->keys().isEmpty());
    QVERIFY(!b.panel->typeBox()->isEnabled());
    QVERIFY(b.select({QStringLiteral("head"), QStringLiteral("torso")}));
    QCOMPARE(b.panel->keys().size(), 2);
    // The keys in force: the last key at or before the time.
    const TimelineKey *first = nullptr;
    const TimelineKey *second = nullptr;
    double ratio = 0.0;
    b.timeline(QStringLiteral("head"))->keyPairFromTime(450, &first, &second, &ratio);
    QVERIFY(first);
    QCOMPARE(b.panel->keys().first(), first->address());
    QVERIFY(b.panel->typeBox()->isEnabled());
    QCOMPARE(b.panel->typeBox()->currentData().toInt(), first->curve().curveType());
}

void TestCurveEditor::typeSwitchIsOneStep_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QList<double>>("parameters");
    QTest::newRow("instant") << int(TweenInfo::CurveType::Instant) << QList<double>{};
    QTest::newRow("quadratic") << int(TweenInfo::CurveType::Quadratic) << QList<double>{0.5};
    QTest::newRow("quartic") << int(TweenInfo::CurveType::Quartic)
                             << QList<double>{0.25, 0.5, 0.75};
    QTest::newRow("quintic") << int(TweenInfo::CurveType::Quintic)
                             << QList<double>{0.2, 0.4, 0.6, 0.8};
    QTest::newRow("bezier") << Bezier << QList<double>{1 / 3.0, 1 / 3.0, 2 / 3.0, 2 / 3.0};
}

void TestCurveEditor::typeSwitchIsOneStep()
{
    QFETCH(int, type);
    QFETCH(QList<double>, parameters);
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("walk"), 100);
    const QByteArray original = b.hero.savedBytes();
    const QStringList names{QStringLiteral("head"), QStringLiteral("torso"),
                            QStringLiteral("spine")};
    QVERIFY(b.select(names));
    const QList<Address> keys = b.panel->keys();
    QCOMPARE(keys.size(), 3);
    QVERIFY(pickByKeys(b.panel->typeBox(), type));
    QCOMPARE(b.hero.stack.count(), 1);
    for (const Address &address : keys) {
        const TimelineKey *key = Address(address.document(), address.toList()).key();
        QVERIFY(key);
        QCOMPARE(key->curve().curveType(), type);
        QCOMPARE(key->curve().cCount(), int(parameters.size()));
        for (int i = 0; i < parameters.size(); ++i)
            QCOMPARE(key->curve().cAt(i), parameters[i]);
    }
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
}

void TestCurveEditor::handleDrag_data()
{
    QTest::addColumn<int>("handle");
    // Where the pointer goes, in units of the unit square (may be far outside).
    QTest::addColumn<QPointF>("to");
    QTest::addColumn<QPointF>("expected");
    QTest::addColumn<bool>("exactX");
    QTest::addColumn<bool>("exactY");
    QTest::newRow("in handle inside") << 1 << QPointF(0.25, 0.75) << QPointF(0.25, 0.75) << false
                                      << false;
    QTest::newRow("out handle inside") << 2 << QPointF(0.6, 0.1) << QPointF(0.6, 0.1) << false
                                       << false;
    QTest::newRow("overshoot kept") << 1 << QPointF(0.5, 1.25) << QPointF(0.5, 1.25) << false
                                    << false;
    QTest::newRow("x past the right edge") << 1 << QPointF(1.6, 0.5) << QPointF(1.0, 0.5)
                                           << true << false;
    QTest::newRow("x before the left edge") << 2 << QPointF(-0.7, 0.5) << QPointF(0.0, 0.5)
                                            << true << false;
    QTest::newRow("y far above") << 1 << QPointF(0.5, 9.0) << QPointF(0.5, 3.0) << false << true;
    QTest::newRow("y far below") << 2 << QPointF(0.5, -8.0) << QPointF(0.5, -2.0) << false
                                 << true;
    QTest::newRow("corner beyond both") << 2 << QPointF(4.0, -6.0) << QPointF(1.0, -2.0) << true
                                        << true;
}

// Dragging a bezier handle previews live, clamps x to 0..1 and y to -2..3,
// and on release gives every key the curve in one step.
void TestCurveEditor::handleDrag()
{
    QFETCH(int, handle);
    QFETCH(QPointF, to);
    QFETCH(QPointF, expected);
    QFETCH(bool, exactX);
    QFETCH(bool, exactY);
    Bench b;
    QVERIFY(b.hero.ok);
    b.panel->resize(420, 420);
    b.show(QStringLiteral("idle"), 0);
    QVERIFY(b.select({QStringLiteral("head"), QStringLiteral("torso")}));
    QVERIFY(makeBezier(b));
    QCOMPARE(b.hero.stack.count(), 1);
    const QByteArray bezierBytes = b.hero.savedBytes();
    const QList<Address> keys = b.panel->keys();

    CurveView *view = b.panel->view();
    const QRectF r = view->unitRect();
    QVERIFY(r.width() > 50);
    // The default handles sit at a third and two thirds of the diagonal.
    const QPointF start = handle == 1 ? QPointF(r.left() + r.width() / 3.0,
                                                r.bottom() - r.height() / 3.0)
                                      : QPointF(r.left() + 2 * r.width() / 3.0,
                                                r.bottom() - 2 * r.height() / 3.0);
    const QPoint press = start.toPoint();
    const QPoint target(qRound(r.left() + to.x() * r.width()),
                        qRound(r.bottom() - to.y() * r.height()));
    QTest::mousePress(view, Qt::LeftButton, {}, press);
    QTest::mouseMove(view, (press + target) / 2);
    QTest::mouseMove(view, target);
    QVERIFY(view->isDragging());
    // Live: the view shows the new curve, the keys are not touched yet.
    QCOMPARE(b.hero.stack.count(), 1);
    QVERIFY(view->curve().cAt(handle == 1 ? 0 : 2) != 1 / 3.0 * handle);
    QTest::mouseRelease(view, Qt::LeftButton, {}, target);
    QVERIFY(!view->isDragging());
    QCOMPARE(b.hero.stack.count(), 2);

    // A pixel of the plot is the tolerance of an unclamped value; the grab
    // point may lie half a pixel off the handle's centre.
    const double tolerance = 1.5 / std::min(r.width(), r.height());
    const int xi = handle == 1 ? 0 : 2;
    for (const Address &address : keys) {
        const TimelineKey *key = Address(address.document(), address.toList()).key();
        QVERIFY(key && key->curve().isBezier());
        const double x = key->curve().cAt(xi);
        const double y = key->curve().cAt(xi + 1);
        if (exactX)
            QCOMPARE(x, expected.x());
        else
            QVERIFY2(std::abs(x - expected.x()) < tolerance, qPrintable(QString::number(x)));
        if (exactY)
            QCOMPARE(y, expected.y());
        else
            QVERIFY2(std::abs(y - expected.y()) < tolerance, qPrintable(QString::number(y)));
        // The other handle stays where it was.
        QCOMPARE(key->curve().cAt(handle == 1 ? 2 : 0), handle == 1 ? 2 / 3.0 : 1 / 3.0);
    }
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), bezierBytes);
}

// Keys handed over (as the timeline does) replace the selection's.
void TestCurveEditor::givenKeys()
{
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    QVERIFY(b.select({QStringLiteral("head")}));
    Timeline *torso = b.timeline(QStringLiteral("torso"));
    QVERIFY(torso->keyCount() >= 2);
    const QList<Address> given{torso->key(0)->address(), torso->key(1)->address(),
                               b.hero.animation(QStringLiteral("idle"))->address()};
    b.panel->setKeys(given);
    QVERIFY(pickByKeys(b.panel->typeBox(), int(TweenInfo::CurveType::Instant)));
    QCOMPARE(b.hero.stack.count(), 1);
    QVERIFY(torso->key(0)->curve().isInstant());
    QVERIFY(torso->key(1)->curve().isInstant());
    // The selected object's key was not given and is left alone.
    QVERIFY(!b.timeline(QStringLiteral("head"))->key(0)->curve().isInstant());
}

void TestCurveEditor::drawsTheCurve_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QPointF>("onCurve");
    QTest::addColumn<QPointF>("offCurve");
    // Points in the unit square: one the curve passes, one it does not.
    QTest::newRow("linear") << int(TweenInfo::CurveType::Linear) << QPointF(0.5, 0.5)
                            << QPointF(0.5, 0.1);
    QTest::newRow("instant") << int(TweenInfo::CurveType::Instant) << QPointF(0.5, 0.0)
                             << QPointF(0.5, 0.5);
}

void TestCurveEditor::drawsTheCurve()
{
    QFETCH(int, type);
    QFETCH(QPointF, onCurve);
    QFETCH(QPointF, offCurve);
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    QVERIFY(b.select({QStringLiteral("head")}));
    if (b.panel->typeBox()->currentData().toInt() != type)
        QVERIFY(pickByKeys(b.panel->typeBox(), type));
    CurveView *view = b.panel->view();
    const QImage image = view->grab().toImage();
    const QColor curveColor(100, 100, 200);
    auto near = [&](const QPointF &unit) {
        const QPoint p = view->toWidget(unit.x(), unit.y()).toPoint();
        for (int dx = -2; dx <= 2; ++dx) {
            for (int dy = -2; dy <= 2; ++dy) {
                const QColor c = image.pixelColor(p + QPoint(dx, dy));
                if (std::abs(c.red() - curveColor.red()) < 30
                    && std::abs(c.green() - curveColor.green()) < 30
                    && std::abs(c.blue() - curveColor.blue()) < 30)
                    return true;
            }
        }
        return false;
    };
    QVERIFY(near(onCurve));
    QVERIFY(!near(offCurve));
}

QTEST_MAIN(TestCurveEditor)
#include "tst_curveeditor.moc"
