// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "paneltesthelpers.h"

#include "model/object.h"
#include "ui/properties/propertiespanel.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>

using namespace Morvane;
using namespace Morvane::Testing;

using Field = PropertiesPanel::Field;
Q_DECLARE_METATYPE(Morvane::PropertiesPanel::Field)

namespace {

using Bench = Workbench<PropertiesPanel>;

double keyField(const TimelineKey &key, Field field)
{
    const DisplayInfo &i = key.info();
    switch (field) {
    case Field::X: return i.x;
    case Field::Y: return i.y;
    case Field::Angle: return i.angle;
    case Field::XScale: return i.xScale;
    case Field::YScale: return i.yScale;
    case Field::PivotX: return i.pivotX();
    case Field::PivotY: return i.pivotY();
    case Field::Alpha: return i.alpha;
    }
    return 0.0;
}

} // namespace

class TestPropertiesPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsSelection();
    void sameBytesAsCanvasNudge_data();
    void sameBytesAsCanvasNudge();
    void fieldEdit_data();
    void fieldEdit();
    void multipleSelectionIsOneStep();
    void curveSwitch();
    void inheritFlags_data();
    void inheritFlags();
    void rename_data();
    void rename();
    void parent_data();
    void parent();
    void emptySelectionEditsNothing();
};

void TestPropertiesPanel::showsSelection()
{
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    QVERIFY(!b.panel->spinBox(Field::X)->isEnabled());
    QVERIFY(b.select({QStringLiteral("head")}));
    QCOMPARE(b.panel->nameEdit()->text(), QStringLiteral("head"));
    QCOMPARE(b.panel->typeLabel()->text(), QStringLiteral("sprite"));
    QVERIFY(b.proxy(QStringLiteral("head"))->parentProxy());
    QCOMPARE(b.panel->parentBox()->currentText(), b.proxy(QStringLiteral("head"))->parentProxy()->name());
    const Field fields[] = {Field::X, Field::Y, Field::Angle, Field::XScale, Field::YScale,
                            Field::PivotX, Field::PivotY, Field::Alpha};
    // Following the time: every field shows the key's value there, and some
    // of them change between the two times.
    bool anyChanged = false;
    b.show(QStringLiteral("walk"), 0);
    const QString leg = QStringLiteral("leg_front_upper");
    QVERIFY(b.select({leg}));
    QCOMPARE(b.panel->typeLabel()->text(), QStringLiteral("bone"));
    const TimelineKey key = b.timeline(leg)->keyFromTime(0);
    for (int time : {0, 250}) {
        b.editor.setCurrentTime(time);
        const TimelineKey now = b.timeline(leg)->keyFromTime(time);
        for (Field f : fields) {
            QVERIFY(std::abs(b.panel->spinBox(f)->value() - keyField(now, f)) < 1e-6);
            anyChanged |= std::abs(keyField(now, f) - keyField(key, f)) > 1e-3;
        }
    }
    QVERIFY(anyChanged);
}

void TestPropertiesPanel::sameBytesAsCanvasNudge_data()
{
    QTest::addColumn<QString>("animation");
    QTest::addColumn<int>("time");
    QTest::addColumn<int>("key");
    QTest::addColumn<double>("dx");
    QTest::addColumn<double>("dy");
    QTest::newRow("on a key, right") << "idle" << 0 << int(Qt::Key_Right) << 3.0 << 0.0;
    QTest::newRow("between keys, down") << "idle" << 300 << int(Qt::Key_Down) << 0.0 << 3.0;
    QTest::newRow("walk, between keys, left") << "walk" << 150 << int(Qt::Key_Left) << -3.0 << 0.0;
}

// The same move made with the arrow keys on the canvas and typed into the
// panel saves the same file; undo gives the original back.
void TestPropertiesPanel::sameBytesAsCanvasNudge()
{
    QFETCH(QString, animation);
    QFETCH(int, time);
    QFETCH(int, key);
    QFETCH(double, dx);
    QFETCH(double, dy);
    const QString root = QStringLiteral("hip");

    QByteArray byCanvas;
    {
        Bench b;
        QVERIFY(b.hero.ok);
        b.show(animation, time);
        QVERIFY(b.select({root}));
        QVERIFY(!b.proxy(root)->parentProxy());
        b.editor.view()->setFocus();
        for (int i = 0; i < 3; ++i)
            QTest::keyPress(b.editor.view(), Qt::Key(key));
        QTest::keyRelease(b.editor.view(), Qt::Key(key));
        QCOMPARE(b.hero.stack.count(), 1);
        byCanvas = b.hero.savedBytes();
    }

    Bench b;
    b.show(animation, time);
    const QByteArray original = b.hero.savedBytes();
    QVERIFY(b.select({root}));
    const DisplayInfo before = b.timeline(root)->keyFromTime(time).info();
    const Field field = dx != 0.0 ? Field::X : Field::Y;
    const double target = (dx != 0.0 ? before.x + dx : before.y + dy);
    typeInto(b.panel->spinBox(field), QString::number(target, 'f', 6));
    QCOMPARE(b.hero.stack.count(), 1);
    QVERIFY(b.timeline(root)->actualKeyFromTime(time));
    QCOMPARE(b.hero.savedBytes(), byCanvas);
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
    b.hero.stack.redo();
    QCOMPARE(b.hero.savedBytes(), byCanvas);
}

void TestPropertiesPanel::fieldEdit_data()
{
    QTest::addColumn<QString>("object");
    QTest::addColumn<int>("time");
    QTest::addColumn<Field>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("expected");
    // A child of rotated bones: the key holds what was typed, local to the
    // parent, whatever the way through the canvas's world values.
    QTest::newRow("head x on a key") << "head" << 0 << Field::X << "12.5" << 12.5;
    QTest::newRow("head y between keys") << "head" << 450 << Field::Y << "-7.25" << -7.25;
    QTest::newRow("head angle") << "head" << 0 << Field::Angle << "33" << 33.0;
    QTest::newRow("angle past a turn") << "head" << 0 << Field::Angle << "400" << 40.0;
    QTest::newRow("torso x scale") << "torso" << 300 << Field::XScale << "1.5" << 1.5;
    QTest::newRow("torso y scale mirrored") << "torso" << 0 << Field::YScale << "-0.75" << -0.75;
    QTest::newRow("head alpha") << "head" << 300 << Field::Alpha << "0.4" << 0.4;
    QTest::newRow("head pivot x") << "head" << 0 << Field::PivotX << "0.25" << 0.25;
    QTest::newRow("head pivot y") << "head" << 300 << Field::PivotY << "0.8" << 0.8;
    QTest::newRow("bone angle") << "spine" << 600 << Field::Angle << "275.5" << 275.5;
}

void TestPropertiesPanel::fieldEdit()
{
    QFETCH(QString, object);
    QFETCH(int, time);
    QFETCH(Field, field);
    QFETCH(QString, typed);
    QFETCH(double, expected);
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), time);
    const QByteArray original = b.hero.savedBytes();
    QVERIFY(b.select({object}));
    const TimelineKey before = b.timeline(object)->keyFromTime(time);

    typeInto(b.panel->spinBox(field), typed);

    QCOMPARE(b.hero.stack.count(), 1);
    const TimelineKey *key = b.timeline(object)->actualKeyFromTime(time);
    QVERIFY(key);
    QVERIFY2(std::abs(keyField(*key, field) - expected) < 1e-6,
             qPrintable(QString::number(keyField(*key, field), 'g', 17)));
    // The other values stay what they were.
    for (Field other : {Field::X, Field::Y, Field::Angle, Field::XScale, Field::YScale,
                        Field::Alpha}) {
        if (other != field)
            QVERIFY2(std::abs(keyField(*key, other) - keyField(before, other)) < 1e-6,
                     qPrintable(QString::number(int(other))));
    }
    QCOMPARE(b.panel->spinBox(field)->value(), expected);
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
}

void TestPropertiesPanel::multipleSelectionIsOneStep()
{
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("walk"), 250);
    const QByteArray original = b.hero.savedBytes();
    const QStringList names{QStringLiteral("head"), QStringLiteral("torso"),
                            QStringLiteral("front_upper_arm")};
    QVERIFY(b.select(names));
    QMap<QString, TimelineKey> before;
    for (const QString &name : names)
        before.insert(name, b.timeline(name)->keyFromTime(250));

    typeInto(b.panel->spinBox(Field::Alpha), QStringLiteral("0.5"));

    QCOMPARE(b.hero.stack.count(), 1);
    for (const QString &name : names) {
        const TimelineKey *key = b.timeline(name)->actualKeyFromTime(250);
        QVERIFY2(key, qPrintable(name));
        QCOMPARE(key->info().alpha, 0.5);
        QVERIFY(std::abs(key->info().x - before[name].info().x) < 1e-6);
        QVERIFY(std::abs(key->info().angle - before[name].info().angle) < 1e-6);
    }
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
}

void TestPropertiesPanel::curveSwitch()
{
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 300);
    const QByteArray original = b.hero.savedBytes();
    QVERIFY(b.select({QStringLiteral("head"), QStringLiteral("torso")}));
    QVERIFY(pickByKeys(b.panel->curveBox(), int(TweenInfo::CurveType::Cubic)));
    QCOMPARE(b.hero.stack.count(), 1);
    for (const QString &name : {QStringLiteral("head"), QStringLiteral("torso")}) {
        const TimelineKey *key = b.timeline(name)->actualKeyFromTime(300);
        QVERIFY2(key, qPrintable(name));
        QVERIFY(key->curve().isCubic());
        QCOMPARE(key->curve().cAt(0), 1.0 / 3.0);
        QCOMPARE(key->curve().cAt(1), 2.0 / 3.0);
    }
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
}

void TestPropertiesPanel::inheritFlags_data()
{
    QTest::addColumn<int>("box");
    QTest::newRow("position") << 0;
    QTest::newRow("angle") << 1;
    QTest::newRow("scale") << 2;
}

void TestPropertiesPanel::inheritFlags()
{
    QFETCH(int, box);
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    const QByteArray original = b.hero.savedBytes();
    QVERIFY(b.select({QStringLiteral("head"), QStringLiteral("torso")}));
    QCheckBox *boxes[] = {b.panel->inheritPosition(), b.panel->inheritAngle(),
                          b.panel->inheritScale()};
    QVERIFY(boxes[box]->isChecked());
    QTest::mouseClick(boxes[box], Qt::LeftButton, {}, QPoint(6, boxes[box]->height() / 2));
    QCOMPARE(b.hero.stack.count(), 1);
    for (const QString &name : {QStringLiteral("head"), QStringLiteral("torso")}) {
        const Object *o = b.timeline(name)->object();
        const bool flags[] = {o->inhPos(), o->inhAngle(), o->inhScale()};
        for (int i = 0; i < 3; ++i)
            QCOMPARE(flags[i], i != box);
    }
    b.hero.stack.undo();
    QVERIFY(b.timeline(QStringLiteral("head"))->object()->inhPos());
    QVERIFY(b.timeline(QStringLiteral("torso"))->object()->inhScale());
    QVERIFY(boxes[box]->isChecked());
    QCOMPARE(b.hero.savedBytes(), original);
}

void TestPropertiesPanel::rename_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    QTest::newRow("free name") << "skull" << "skull";
    QTest::newRow("taken name") << "torso" << "torso_000";
    QTest::newRow("spaces trimmed") << "  helmet " << "helmet";
}

void TestPropertiesPanel::rename()
{
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    const QByteArray original = b.hero.savedBytes();
    QVERIFY(b.select({QStringLiteral("head")}));
    const int timeline = b.proxy(QStringLiteral("head"))->timelineIndex();
    QLineEdit *edit = b.panel->nameEdit();
    edit->setFocus();
    edit->selectAll();
    QTest::keyClicks(edit, typed);
    QTest::keyClick(edit, Qt::Key_Return);
    QCOMPARE(b.hero.stack.count(), 1);
    Animation *walk = b.hero.animation(QStringLiteral("walk"));
    Entity *entity = b.hero.document.entity(0);
    QVERIFY(entity->objectFromName(expected));
    QVERIFY(!entity->objectFromName(QStringLiteral("head")));
    QCOMPARE(b.session()->currentAnimation()->timeline(timeline)->name(), expected);
    bool inWalk = false;
    for (int i = 0; i < walk->timelineCount(); ++i)
        inWalk |= walk->timeline(i)->name() == expected;
    QVERIFY(inWalk);
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
}

void TestPropertiesPanel::parent_data()
{
    QTest::addColumn<QString>("object");
    QTest::addColumn<QString>("bone"); // empty: (none)
    QTest::addColumn<int>("time");
    QTest::newRow("sprite to another bone, on a key") << "head" << "spine" << 0;
    QTest::newRow("sprite between keys") << "torso" << "arm_front_lower" << 350;
    QTest::newRow("bone to a bone") << "arm_back_upper" << "neck" << 0;
    QTest::newRow("sprite off its bone") << "head" << "" << 200;
    QTest::newRow("bone off its bone") << "leg_front_lower" << "" << 0;
}

// Picking a parent (or none) keeps where the object shows, at the time of the
// change, in one step; undo gives the file back.
void TestPropertiesPanel::parent()
{
    QFETCH(QString, object);
    QFETCH(QString, bone);
    QFETCH(int, time);
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), time);
    const QByteArray original = b.hero.savedBytes();
    Entity *entity = b.hero.document.entity(0);
    Animation *idle = b.session()->currentAnimation();
    const int index = b.proxy(object)->timelineIndex();
    const QList<double> pose = worldPose(entity, idle, time).value(index);
    QVERIFY(b.select({object}));
    QComboBox *box = b.panel->parentBox();
    // The object itself and what hangs below it are not offered.
    QCOMPARE(box->findText(object), -1);
    QVERIFY(pickByKeys(box, bone.isEmpty() ? -1 : b.proxy(bone)->timelineIndex()));
    QCOMPARE(b.hero.stack.count(), 1);
    ObjectGraphicsProxy *parent = b.proxy(object)->parentProxy();
    QCOMPARE(parent ? parent->name() : QString(), bone);
    QVERIFY(samePose({{index, pose}}, {{index, worldPose(entity, idle, time).value(index)}}, 1e-6));
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
}

void TestPropertiesPanel::emptySelectionEditsNothing()
{
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    QVERIFY(b.select({}));
    // Even a value forced into a disabled field changes nothing.
    b.panel->spinBox(Field::X)->setValue(99.0);
    QCOMPARE(b.hero.stack.count(), 0);
}

QTEST_MAIN(TestPropertiesPanel)
#include "tst_propertiespanel.moc"
