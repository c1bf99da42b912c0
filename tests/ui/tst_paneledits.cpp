// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// A seeded run of edits made through the panels' widgets on the example:
// undoing them all gives the saved bytes back, redoing them all the bytes of
// the end.

#include "paneltesthelpers.h"
#include "treepaneltesthelpers.h"

#include "ui/animations/animationspanel.h"
#include "ui/charmaps/charmapspanel.h"
#include "ui/palette/palettepanel.h"
#include "ui/palette/palettetree.h"
#include "ui/properties/propertiespanel.h"
#include "ui/variables/tagspanel.h"
#include "ui/variables/variablespanel.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSpinBox>
#include <QTableWidget>
#include <QTreeWidgetItemIterator>

using namespace Morvane;
using namespace Morvane::Testing;
using Field = PropertiesPanel::Field;

namespace {

// Every panel beside the canvas, on one session.
struct Desk
{
    Desk()
    {
        editor.resize(600, 400);
        editor.setDocument(&hero.document);
        auto *row = new QHBoxLayout(&host);
        row->addWidget(properties = new PropertiesPanel(editor.session()));
        row->addWidget(animations = new AnimationsPanel(editor.session()));
        row->addWidget(variables = new VariablesPanel(editor.session()));
        row->addWidget(tags = new TagsPanel(editor.session()));
        row->addWidget(maps = new CharMapsPanel(editor.session()));
        row->addWidget(palette = new PalettePanel(editor.session()));
        host.resize(1800, 700);
        host.show();
        host.activateWindow();
        if (!QTest::qWaitForWindowActive(&host))
            qWarning("the panels did not become active");
    }

    HeroProject hero;
    CanvasEditor editor;
    QWidget host;
    PropertiesPanel *properties;
    AnimationsPanel *animations;
    VariablesPanel *variables;
    TagsPanel *tags;
    CharMapsPanel *maps;
    PalettePanel *palette;
};

// Picks a random entry of a combo box with the keyboard (another one than the
// current when there is one).
bool pickAnother(QComboBox *box, QRandomGenerator &random)
{
    if (box->count() < 2)
        return false;
    const int row = (box->currentIndex() + 1 + random.bounded(box->count() - 1)) % box->count();
    return pickByKeys(box, box->itemData(row));
}

} // namespace

class TestPanelEdits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void randomPanelEditsUndoToTheSavedBytes();
};

void TestPanelEdits::randomPanelEditsUndoToTheSavedBytes()
{
    Desk d;
    QVERIFY(d.hero.ok);
    const QByteArray original = d.hero.savedBytes();
    QRandomGenerator random(20261123);
    const QStringList animations = {QStringLiteral("idle"), QStringLiteral("walk")};
    const Field fields[] = {Field::X, Field::Y, Field::Angle, Field::XScale, Field::YScale,
                            Field::PivotX, Field::PivotY, Field::Alpha};
    int steps = 0;
    for (int i = 0; i < 120; ++i) {
        Animation *shown = d.editor.session()->currentAnimation();
        if (!shown || random.bounded(4) == 0) {
            d.editor.setCurrentAnimation(d.hero.document.entity(0)->animation(random.bounded(2)));
            shown = d.editor.session()->currentAnimation();
        }
        d.editor.setCurrentTime(random.bounded(shown->length()));
        QList<ObjectGraphicsProxy *> objects;
        for (int t = 0; t < d.editor.scene()->instTimelineProxyCount(); ++t) {
            ObjectGraphicsProxy *p = d.editor.scene()->instTimelineProxyFromIndex(t);
            if (p && p->isShownInPose())
                objects.append(p);
        }
        d.editor.session()->setSelection(
            objects.isEmpty() ? QList<ObjectGraphicsProxy *>()
                              : QList<ObjectGraphicsProxy *>{objects[random.bounded(objects.size())]});
        const int before = d.hero.stack.count();
        switch (random.bounded(14)) {
        case 0:
        case 1: { // a key value
            const Field field = fields[random.bounded(8)];
            const double value = field == Field::Alpha ? random.bounded(100) / 100.0
                                 : field == Field::PivotX || field == Field::PivotY
                                     ? random.bounded(100) / 50.0 - 0.5
                                     : random.bounded(400) / 4.0 - 50.0;
            typeInto(d.properties->spinBox(field), QString::number(value));
            break;
        }
        case 2: // the key's curve
            pickAnother(d.properties->curveBox(), random);
            break;
        case 3: { // an inherit flag
            QCheckBox *boxes[] = {d.properties->inheritPosition(), d.properties->inheritAngle(),
                                  d.properties->inheritScale()};
            QCheckBox *box = boxes[random.bounded(3)];
            if (box->isEnabled())
                QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(5, box->height() / 2));
            break;
        }
        case 4: // another parent
            if (d.properties->parentBox()->isEnabled())
                pickAnother(d.properties->parentBox(), random);
            break;
        case 5: // the object's name
            typeInto(d.properties->nameEdit(), QStringLiteral("part%1").arg(i));
            break;
        case 6: // the shown animation's length
            typeInto(d.animations->findChild<QSpinBox *>(QStringLiteral("lengthSpin")),
                     QString::number(200 + random.bounded(2800)));
            break;
        case 7: // its looping
            pickAnother(d.animations->findChild<QComboBox *>(QStringLiteral("loopingCombo")), random);
            break;
        case 8: // its name
            editCurrent(d.animations->tree(), QStringLiteral("take%1").arg(i));
            break;
        case 9: { // a variable declared, renamed or given a value now
            QTableWidget *table = d.variables->table();
            if (table->rowCount() == 0 || random.bounded(3) == 0) {
                QTest::mouseClick(d.variables->addButton(), Qt::LeftButton);
                settle();
            } else {
                table->setCurrentCell(random.bounded(table->rowCount()),
                                      random.bounded(2) ? VariablesPanel::NameColumn
                                                        : VariablesPanel::ValueColumn);
                editCurrent(table, table->currentColumn() == VariablesPanel::NameColumn
                                       ? QStringLiteral("v%1").arg(i)
                                       : QString::number(random.bounded(50)));
            }
            break;
        }
        case 10: { // a tag added, renamed or switched at this time
            QListWidget *list = d.tags->list();
            if (list->count() == 0 || random.bounded(3) == 0) {
                QTest::mouseClick(d.tags->button(QStringLiteral("addTag")), Qt::LeftButton);
            } else if (random.bounded(2)) {
                list->setCurrentRow(random.bounded(list->count()));
                editCurrent(list, QStringLiteral("tag%1").arg(i));
            } else {
                list->setFocus();
                list->setCurrentRow(random.bounded(list->count()));
                QTest::keyClick(list, Qt::Key_Space);
            }
            settle();
            break;
        }
        case 11: { // a character map made, given a swap, renamed or deleted
            QTreeWidget *list = d.maps->mapList();
            const int choice = random.bounded(4);
            if (list->topLevelItemCount() == 0 || choice == 0) {
                QTest::mouseClick(d.maps->button(QStringLiteral("newMap")), Qt::LeftButton);
            } else {
                list->setCurrentItem(list->topLevelItem(random.bounded(list->topLevelItemCount())));
                if (choice == 1) {
                    pickAnother(d.maps->sourceBox(), random);
                    pickAnother(d.maps->targetBox(), random);
                    QTest::mouseClick(d.maps->button(QStringLiteral("addInstruction")), Qt::LeftButton);
                } else if (choice == 2) {
                    editCurrent(list, QStringLiteral("look%1").arg(i));
                } else {
                    QTest::mouseClick(d.maps->button(QStringLiteral("deleteMap")), Qt::LeftButton);
                }
            }
            settle();
            break;
        }
        default: { // an image renamed, every key following
            QList<QTreeWidgetItem *> images;
            for (QTreeWidgetItemIterator it(d.palette->tree()); *it; ++it) {
                if ((*it)->data(0, PaletteTree::KindRole).toInt() == PaletteTree::ImageItem)
                    images.append(*it);
            }
            if (images.isEmpty())
                break;
            clickItem(d.palette->tree(), images[random.bounded(images.size())]);
            answerText(&d.host, QStringLiteral("image%1").arg(i));
            d.palette->action(QStringLiteral("actionRenameImage"))->trigger();
            settle();
            break;
        }
        }
        QVERIFY2(d.hero.stack.count() <= before + 1, qPrintable(QString::number(i)));
        steps += d.hero.stack.count() - before;
    }
    QVERIFY2(steps > 70, qPrintable(QString::number(steps)));
    const QByteArray after = d.hero.savedBytes();
    QVERIFY(after != original);
    while (d.hero.stack.canUndo())
        d.hero.stack.undo();
    QCOMPARE(d.hero.savedBytes(), original);
    while (d.hero.stack.canRedo())
        d.hero.stack.redo();
    QCOMPARE(d.hero.savedBytes(), after);
}

QTEST_MAIN(TestPanelEdits)
#include "tst_paneledits.moc"
