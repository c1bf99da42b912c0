// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "paneltesthelpers.h"

#include "meta/metaowner.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valkey.h"
#include "meta/valuelineholder.h"
#include "model/object.h"
#include "ui/variables/ownerpicker.h"
#include "ui/variables/tagspanel.h"
#include "ui/variables/variablespanel.h"

#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

bool editCell(QTableWidget *table, int row, int column, const QString &text)
{
    table->setCurrentCell(row, column);
    return editCurrent(table, text);
}

bool editItem(QListWidget *list, int row, const QString &text)
{
    list->setCurrentRow(row);
    return editCurrent(list, text);
}

void toggleRow(QListWidget *list, int row)
{
    list->setFocus();
    list->setCurrentRow(row);
    QTest::keyClick(list, Qt::Key_Space);
    settle();
}

} // namespace

class TestVariablesPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ownerFollowsSelection();
    void declarations_data();
    void declarations();
    void valueNowKeysTheLine_data();
    void valueNowKeysTheLine();
    void tagListEdits();
    void tagSwitchKeysTheLine_data();
    void tagSwitchKeysTheLine();
    void deletingATagTakesItOutOfItsKeys();
};

void TestVariablesPanel::ownerFollowsSelection()
{
    Workbench<VariablesPanel> b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    OwnerPicker *owner = b.panel->ownerPicker();
    QCOMPARE(owner->objectIndex(), -1);
    QVERIFY(b.select({QStringLiteral("head")}));
    QCOMPARE(owner->object()->name(), QStringLiteral("head"));
    QVERIFY(b.select({}));
    QCOMPARE(owner->objectIndex(), -1);
}

void TestVariablesPanel::declarations_data()
{
    QTest::addColumn<QString>("object"); // empty: the entity's
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("type");
    QTest::addColumn<QVariant>("defaultValue");
    QTest::newRow("entity, add") << "" << "add" << "variable" << int(VarType::Float)
                                 << QVariant(0.0);
    QTest::newRow("object, add") << "torso" << "add" << "variable" << int(VarType::Float)
                                 << QVariant(0.0);
    QTest::newRow("rename") << "" << "rename" << "speed" << int(VarType::Float) << QVariant(0.0);
    QTest::newRow("default") << "head" << "default" << "variable" << int(VarType::Float)
                             << QVariant(2.5);
    QTest::newRow("type to int") << "" << "int" << "variable" << int(VarType::Int)
                                 << QVariant(0);
    QTest::newRow("type to string") << "" << "string" << "variable" << int(VarType::String)
                                    << QVariant(QStringLiteral("0"));
}

// Each change of a declaration is one step; undo restores the saved bytes.
void TestVariablesPanel::declarations()
{
    QFETCH(QString, object);
    QFETCH(QString, edit);
    QFETCH(QString, name);
    QFETCH(int, type);
    QFETCH(QVariant, defaultValue);
    Workbench<VariablesPanel> b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    if (!object.isEmpty())
        QVERIFY(b.select({object}));
    const QByteArray original = b.hero.savedBytes();
    QTableWidget *table = b.panel->table();
    QTest::mouseClick(b.panel->addButton(), Qt::LeftButton);
    settle();
    QCOMPARE(table->rowCount(), 1);
    const int stepsAfterAdd = b.hero.stack.count();
    QCOMPARE(stepsAfterAdd, 1);
    if (edit == QLatin1String("rename")) {
        QVERIFY(editCell(table, 0, VariablesPanel::NameColumn, name));
    } else if (edit == QLatin1String("default")) {
        QVERIFY(editCell(table, 0, VariablesPanel::DefaultColumn, QStringLiteral("2.5")));
    } else if (edit == QLatin1String("int") || edit == QLatin1String("string")) {
        auto *box = qobject_cast<QComboBox *>(table->cellWidget(0, VariablesPanel::TypeColumn));
        QVERIFY(box);
        QVERIFY(pickByKeys(box, type));
        settle();
    }
    QCOMPARE(b.hero.stack.count(), edit == QLatin1String("add") ? 1 : 2);
    Entity *entity = b.hero.document.entity(0);
    const ValInfoCollection &infos = object.isEmpty()
                                         ? entity->valInfoCollection()
                                         : entity->objectFromName(object)->valInfoCollection();
    QCOMPARE(infos.infoCount(), 1);
    const ValInfo *info = infos.infoFromIndex(0);
    QCOMPARE(info->name, name);
    QCOMPARE(int(info->type), type);
    QCOMPARE(info->defaultValue, defaultValue);
    QCOMPARE(table->item(0, VariablesPanel::NameColumn)->text(), name);
    while (b.hero.stack.canUndo())
        b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
    QCOMPARE(table->rowCount(), 0);
}

void TestVariablesPanel::valueNowKeysTheLine_data()
{
    QTest::addColumn<QString>("object");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("time");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("entity float") << "" << int(VarType::Float) << 300 << "2.5" << QVariant(2.5);
    QTest::newRow("object float") << "head" << int(VarType::Float) << 0 << "-1" << QVariant(-1.0);
    QTest::newRow("entity int") << "" << int(VarType::Int) << 600 << "7" << QVariant(7);
    QTest::newRow("object string") << "torso" << int(VarType::String) << 100 << "angry"
                                   << QVariant(QStringLiteral("angry"));
}

void TestVariablesPanel::valueNowKeysTheLine()
{
    QFETCH(QString, object);
    QFETCH(int, type);
    QFETCH(int, time);
    QFETCH(QString, typed);
    QFETCH(QVariant, expected);
    Workbench<VariablesPanel> b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), time);
    if (!object.isEmpty())
        QVERIFY(b.select({object}));
    QTableWidget *table = b.panel->table();
    QTest::mouseClick(b.panel->addButton(), Qt::LeftButton);
    settle();
    if (type != int(VarType::Float)) {
        auto *box = qobject_cast<QComboBox *>(table->cellWidget(0, VariablesPanel::TypeColumn));
        QVERIFY(pickByKeys(box, type));
        settle();
    }
    const QByteArray declared = b.hero.savedBytes();
    const int steps = b.hero.stack.count();

    QVERIFY(editCell(table, 0, VariablesPanel::ValueColumn, typed));

    QCOMPARE(b.hero.stack.count(), steps + 1);
    Animation *animation = b.session()->currentAnimation();
    const MetaOwner owner = object.isEmpty()
                                ? MetaOwner::forAnimation(animation)
                                : MetaOwner::forAnimationObject(
                                      animation, b.hero.document.entity(0)->indexOfObject(
                                                     b.timeline(object)->object()));
    const ValueLineHolder *holder = owner.lineHolder(&b.hero.document);
    QVERIFY(holder);
    const ValInfoCollection *infos = owner.isObject()
                                         ? &animation->parentEntity()->object(owner.objectIndex)
                                                ->valInfoCollection()
                                         : &animation->parentEntity()->valInfoCollection();
    const LineId line{VarType(type), infos->infoFromIndex(0)->id};
    QVERIFY(holder->line(line));
    QVERIFY(holder->line(line)->keyAtTime(time));
    QCOMPARE(holder->valueFromTime(line, time, animation->length(), animation->isLooping(), {}),
             expected);
    QCOMPARE(table->item(0, VariablesPanel::ValueColumn)->text(), typed);
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), declared);
}

void TestVariablesPanel::tagListEdits()
{
    Workbench<TagsPanel> b;
    QVERIFY(b.hero.ok);
    const QByteArray original = b.hero.savedBytes();
    QListWidget *list = b.panel->list();
    const int tags = list->count();
    QTest::mouseClick(b.panel->button(QStringLiteral("addTag")), Qt::LeftButton);
    QTest::mouseClick(b.panel->button(QStringLiteral("addTag")), Qt::LeftButton);
    QCOMPARE(list->count(), tags + 2);
    QCOMPARE(b.hero.stack.count(), 2);
    const QStringList names = b.hero.document.tagManager().tagsToStringList();
    QCOMPARE(names.size(), tags + 2);
    QVERIFY(names[tags] != names[tags + 1]);
    // Renaming to a taken name is refused; a free one is taken.
    QVERIFY(editItem(list, tags + 1, names[tags]));
    QCOMPARE(b.hero.stack.count(), 2);
    QCOMPARE(list->item(tags + 1)->text(), names[tags + 1]);
    QVERIFY(editItem(list, tags + 1, QStringLiteral("jumping")));
    QCOMPARE(b.hero.stack.count(), 3);
    QCOMPARE(b.hero.document.tagManager().tag(tags + 1).name(), QStringLiteral("jumping"));
    while (b.hero.stack.canUndo())
        b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), original);
    QCOMPARE(list->count(), tags);
}

void TestVariablesPanel::tagSwitchKeysTheLine_data()
{
    QTest::addColumn<QString>("object");
    QTest::addColumn<int>("time");
    QTest::newRow("entity at a key time") << "" << 0;
    QTest::newRow("entity between keys") << "" << 450;
    QTest::newRow("object") << "head" << 300;
}

void TestVariablesPanel::tagSwitchKeysTheLine()
{
    QFETCH(QString, object);
    QFETCH(int, time);
    Workbench<TagsPanel> b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), time);
    if (!object.isEmpty())
        QVERIFY(b.select({object}));
    QListWidget *list = b.panel->list();
    QTest::mouseClick(b.panel->button(QStringLiteral("addTag")), Qt::LeftButton);
    const int row = list->count() - 1;
    const int uid = b.hero.document.tagManager().tag(row).uid();
    const QByteArray withTag = b.hero.savedBytes();
    QCOMPARE(list->item(row)->checkState(), Qt::Unchecked);

    toggleRow(list, row);

    QCOMPARE(b.hero.stack.count(), 2);
    QCOMPARE(list->item(row)->checkState(), Qt::Checked);
    Animation *animation = b.session()->currentAnimation();
    const MetaOwner owner = object.isEmpty()
                                ? MetaOwner::forAnimation(animation)
                                : MetaOwner::forAnimationObject(
                                      animation, b.hero.document.entity(0)->indexOfObject(
                                                     b.timeline(object)->object()));
    const ValueLineHolder *holder = owner.lineHolder(&b.hero.document);
    QVERIFY(holder->tagLine().keyAtTime(time));
    QVERIFY(holder->tagStateFromTime(time, animation->isLooping()).containsId(uid));
    // Off again: a second key change at the same time, the tag is off.
    toggleRow(list, row);
    QCOMPARE(b.hero.stack.count(), 3);
    QVERIFY(!holder->tagStateFromTime(time, animation->isLooping()).containsId(uid));
    b.hero.stack.undo();
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), withTag);
}

void TestVariablesPanel::deletingATagTakesItOutOfItsKeys()
{
    Workbench<TagsPanel> b;
    QVERIFY(b.hero.ok);
    b.show(QStringLiteral("idle"), 0);
    QListWidget *list = b.panel->list();
    QTest::mouseClick(b.panel->button(QStringLiteral("addTag")), Qt::LeftButton);
    const int row = list->count() - 1;
    const int uid = b.hero.document.tagManager().tag(row).uid();
    toggleRow(list, row);
    b.editor.setCurrentTime(600);
    QVERIFY(b.select({QStringLiteral("head")}));
    toggleRow(list, row);
    QCOMPARE(b.hero.stack.count(), 3);
    const QByteArray before = b.hero.savedBytes();

    list->setCurrentRow(row);
    QTest::mouseClick(b.panel->button(QStringLiteral("deleteTag")), Qt::LeftButton);

    QCOMPARE(b.hero.stack.count(), 4);
    QCOMPARE(b.hero.document.tagManager().indexOfTag(uid), -1);
    Animation *animation = b.session()->currentAnimation();
    const int head = b.hero.document.entity(0)->indexOfObject(
        b.timeline(QStringLiteral("head"))->object());
    const Animation *shown = animation;
    for (const ValueLineHolder *holder :
         {&shown->ownLineHolder(), shown->objectLineHolder(head)}) {
        QVERIFY(holder);
        for (int i = 0; i < holder->tagLine().keyCount(); ++i)
            QVERIFY(!static_cast<const TagKey *>(holder->tagLine().key(i))->state().containsId(uid));
    }
    b.hero.stack.undo();
    QCOMPARE(b.hero.savedBytes(), before);
}

QTEST_MAIN(TestVariablesPanel)
#include "tst_variablespanel.moc"
