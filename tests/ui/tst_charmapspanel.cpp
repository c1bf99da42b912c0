// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "paneltesthelpers.h"

#include "eval/entityinstance.h"
#include "model/file.h"
#include "model/folder.h"
#include "ui/charmaps/charmapspanel.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QPushButton>
#include <QTreeWidget>
#include <QUrl>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

using Bench = Workbench<CharMapsPanel>;

const QString kHead = QStringLiteral("body/head.png");
const QString kKnight = QStringLiteral("costume/head_knight.png");
const QString kLantern = QStringLiteral("props/lantern.png");

QTreeWidgetItem *mapItem(Bench &b, const QString &name)
{
    QTreeWidget *list = b.panel->mapList();
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        if (list->topLevelItem(i)->text(0) == name)
            return list->topLevelItem(i);
    }
    return nullptr;
}

/// Ticks or clears a map the way a user does with the keyboard.
bool toggle(Bench &b, const QString &name)
{
    QTreeWidgetItem *item = mapItem(b, name);
    if (!item)
        return false;
    QTreeWidget *list = b.panel->mapList();
    list->setFocus();
    list->setCurrentItem(item);
    QTest::keyClick(list, Qt::Key_Space);
    settle();
    return true;
}

void pickFile(QComboBox *box, const QString &name)
{
    const int index = box->findText(name);
    QVERIFY2(index >= 0, qPrintable(name));
    box->setCurrentIndex(index);
}

/// A new map named by the panel, swapping `source` for `target` (empty hides).
QString newMap(Bench &b, const QString &source, const QString &target)
{
    QTest::mouseClick(b.panel->button(QStringLiteral("newMap")), Qt::LeftButton);
    settle();
    pickFile(b.panel->sourceBox(), source);
    pickFile(b.panel->targetBox(), target.isEmpty() ? QStringLiteral("(hidden)") : target);
    QTest::mouseClick(b.panel->button(QStringLiteral("addInstruction")), Qt::LeftButton);
    settle();
    return b.panel->currentMapName();
}

/// An image of the project folder dropped on the swaps list, as the palette
/// drags it.
void dropImage(Bench &b, const QString &name, const QPoint &at)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(b.hero.dir.path() + QStringLiteral("/hero/") + name)});
    QWidget *target = b.panel->instructionList()->viewport();
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
}

/// What the canvas shows for the head sprite: its file's name, "" when hidden.
QString shownHead(Bench &b)
{
    const ObjectGraphicsProxy *head = b.proxy(QStringLiteral("head"));
    for (const PoseItem &item : b.scene()->entityInstance()->pose().objects) {
        if (item.timelineIndex == head->timelineIndex())
            return item.shownFile ? item.shownFile->name() : QString();
    }
    return QStringLiteral("(not shown)");
}

} // namespace

class TestCharMapsPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsTheEntitysMaps();
    void stackOrder_data();
    void stackOrder();
    void editsAreUndoable_data();
    void editsAreUndoable();
    void renameInPlace();
    void deleteActiveMapKeepsOrder();
};

void TestCharMapsPanel::listsTheEntitysMaps()
{
    Bench b;
    QVERIFY(b.hero.ok);
    QCOMPARE(b.panel->mapList()->topLevelItemCount(), 1);
    QCOMPARE(b.panel->mapList()->topLevelItem(0)->text(0), QStringLiteral("knight"));
    QCOMPARE(b.panel->instructionList()->topLevelItemCount(), 2);
    QCOMPARE(b.panel->instructionList()->topLevelItem(0)->text(0), kHead);
}

void TestCharMapsPanel::stackOrder_data()
{
    // Maps: "knight" (head -> knight head), A (head -> lantern), B (head hidden).
    // Each step ticks or clears one map; then the shown head image and the
    // order column are checked.
    QTest::addColumn<QStringList>("toggles");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QStringList>("order"); // order column of knight, A, B
    QTest::newRow("none") << QStringList{} << kHead << QStringList{"", "", ""};
    QTest::newRow("knight") << QStringList{"knight"} << kKnight << QStringList{"1", "", ""};
    QTest::newRow("knight then A: A wins") << QStringList{"knight", "A"} << kLantern
                                           << QStringList{"1", "2", ""};
    QTest::newRow("A then knight: knight wins") << QStringList{"A", "knight"} << kKnight
                                                << QStringList{"2", "1", ""};
    QTest::newRow("later cleared: earlier shows")
        << QStringList{"knight", "A", "A"} << kKnight << QStringList{"1", "", ""};
    QTest::newRow("earlier cleared, re-ticked goes last")
        << QStringList{"knight", "A", "knight", "knight"} << kKnight
        << QStringList{"2", "1", ""};
    QTest::newRow("hiding map last") << QStringList{"knight", "B"} << QString()
                                     << QStringList{"1", "", "2"};
    QTest::newRow("hiding map first") << QStringList{"B", "A"} << kLantern
                                      << QStringList{"", "2", "1"};
}

void TestCharMapsPanel::stackOrder()
{
    QFETCH(QStringList, toggles);
    QFETCH(QString, shown);
    QFETCH(QStringList, order);
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    const QString a = newMap(b, kHead, kLantern);
    const QString hide = newMap(b, kHead, QString());
    QCOMPARE(b.hero.stack.count(), 4);
    // The panel names new maps; the rows call them A and B.
    QHash<QString, QString> names{{"knight", "knight"}, {"A", a}, {"B", hide}};
    for (const QString &t : toggles)
        QVERIFY(toggle(b, names.value(t)));
    QCOMPARE(shownHead(b), shown);
    const QStringList rows{QStringLiteral("knight"), a, hide};
    for (int i = 0; i < 3; ++i)
        QCOMPARE(mapItem(b, rows[i])->text(1), order[i]);
    // Activation is a view of the maps, not an edit.
    QCOMPARE(b.hero.stack.count(), 4);
}

void TestCharMapsPanel::editsAreUndoable_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<int>("maps");
    QTest::addColumn<int>("instructions"); // of the current map afterwards
    QTest::newRow("new map") << "new" << 2 << 0;
    QTest::newRow("delete map") << "delete" << 0 << 0;
    QTest::newRow("add a swap") << "add" << 1 << 3;
    QTest::newRow("replace a swap's target") << "replace" << 1 << 2;
    QTest::newRow("retarget in the list") << "retarget" << 1 << 2;
    QTest::newRow("image dropped on a swap") << "drop" << 1 << 2;
    QTest::newRow("image dropped below the swaps") << "drop below" << 1 << 3;
    QTest::newRow("remove a swap") << "remove" << 1 << 1;
}

void TestCharMapsPanel::editsAreUndoable()
{
    QFETCH(QString, edit);
    QFETCH(int, maps);
    QFETCH(int, instructions);
    Bench b;
    QVERIFY(b.hero.ok);
    const QByteArray original = b.hero.savedBytes();
    Entity *entity = b.hero.document.entity(0);
    CharMapsPanel *p = b.panel;
    if (edit == QLatin1String("new")) {
        QTest::mouseClick(p->button(QStringLiteral("newMap")), Qt::LeftButton);
    } else if (edit == QLatin1String("delete")) {
        QTest::mouseClick(p->button(QStringLiteral("deleteMap")), Qt::LeftButton);
    } else if (edit == QLatin1String("add") || edit == QLatin1String("replace")) {
        pickFile(p->sourceBox(), edit == QLatin1String("add") ? kLantern : kHead);
        pickFile(p->targetBox(), QStringLiteral("(hidden)"));
        QTest::mouseClick(p->button(QStringLiteral("addInstruction")), Qt::LeftButton);
    } else if (edit == QLatin1String("retarget")) {
        QTreeWidgetItem *row = p->instructionList()->topLevelItem(1);
        auto *box = qobject_cast<QComboBox *>(p->instructionList()->itemWidget(row, 1));
        QVERIFY(box);
        QVERIFY(pickByKeys(box, entity->document()->folder(2)->file(1)->address().toVariant()));
    } else if (edit == QLatin1String("drop")) {
        QTreeWidget *list = p->instructionList();
        dropImage(b, QStringLiteral("props/flame.png"),
                  list->visualItemRect(list->topLevelItem(1)).center());
    } else if (edit == QLatin1String("drop below")) {
        pickFile(p->targetBox(), QStringLiteral("(hidden)"));
        dropImage(b, kLantern, p->instructionList()->viewport()->rect().bottomLeft() + QPoint(5, -5));
    } else if (edit == QLatin1String("remove")) {
        p->instructionList()->setCurrentItem(p->instructionList()->topLevelItem(0));
        QTest::mouseClick(p->button(QStringLiteral("removeInstruction")), Qt::LeftButton);
    }
    settle();
    QCOMPARE(b.hero.stack.count(), 1);
    QCOMPARE(entity->charMapCount(), maps);
    QCOMPARE(p->mapList()->topLevelItemCount(), maps);
    QCOMPARE(p->instructionList()->topLevelItemCount(), instructions);
    if (edit == QLatin1String("replace")) {
        QVERIFY(entity->charMap(0)->instruction(0)->hidesImage());
    } else if (edit == QLatin1String("drop below")) {
        QCOMPARE(entity->charMap(0)->instruction(2)->source.file()->name(), kLantern);
        QVERIFY(entity->charMap(0)->instruction(2)->hidesImage());
    } else if (edit == QLatin1String("retarget") || edit == QLatin1String("drop")) {
        QCOMPARE(entity->charMap(0)->instruction(1)->target.file()->name(),
                 QStringLiteral("props/flame.png"));
    }
    const QByteArray after = b.hero.savedBytes();
    QVERIFY(after != original);
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
    QCOMPARE(p->mapList()->topLevelItemCount(), 1);
    b.hero.stack.redo();
    QCOMPARE(b.hero.savedBytes(), after);
}

void TestCharMapsPanel::renameInPlace()
{
    Bench b;
    QVERIFY(b.hero.ok);
    QTest::mouseClick(b.panel->button(QStringLiteral("newMap")), Qt::LeftButton);
    settle();
    const QString created = b.panel->currentMapName();
    b.panel->mapList()->setCurrentItem(mapItem(b, created));
    // Another map's name is made unique.
    QVERIFY(editCurrent(b.panel->mapList(), QStringLiteral("knight")));
    QCOMPARE(b.hero.stack.count(), 2);
    QCOMPARE(b.hero.document.entity(0)->charMapNames(),
             (QStringList{QStringLiteral("knight"), QStringLiteral("knight_000")}));
    QVERIFY(mapItem(b, QStringLiteral("knight_000")));
    b.hero.stack.undo();
    QCOMPARE(b.hero.document.entity(0)->charMapNames(),
             (QStringList{QStringLiteral("knight"), created}));
}

void TestCharMapsPanel::deleteActiveMapKeepsOrder()
{
    Bench b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    const QString a = newMap(b, kHead, kLantern);
    const QString c = newMap(b, kHead, QString());
    QVERIFY(toggle(b, QStringLiteral("knight")));
    QVERIFY(toggle(b, c));
    QVERIFY(toggle(b, a));
    QCOMPARE(shownHead(b), kLantern);
    const int steps = b.hero.stack.count();
    b.panel->mapList()->setCurrentItem(mapItem(b, a));
    QTest::mouseClick(b.panel->button(QStringLiteral("deleteMap")), Qt::LeftButton);
    settle();
    QCOMPARE(b.hero.stack.count(), steps + 1);
    // The rest apply in their order: the hiding map is last now.
    QCOMPARE(shownHead(b), QString());
    QCOMPARE(mapItem(b, c)->text(1), QStringLiteral("2"));
    b.hero.stack.undo();
    settle();
    QCOMPARE(shownHead(b), kLantern);
    QCOMPARE(mapItem(b, a)->text(1), QStringLiteral("3"));
}

QTEST_MAIN(TestCharMapsPanel)
#include "tst_charmapspanel.moc"
