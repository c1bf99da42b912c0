// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "paneltesthelpers.h"
#include "treepaneltesthelpers.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "model/mainlinekey.h"
#include "model/naming.h"
#include "model/commands/entitycommands.h"
#include "model/object.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "ui/animations/animationspanel.h"

#include <QComboBox>
#include <QSpinBox>
#include <QUndoStack>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

using Fixture = PanelFixture<AnimationsPanel>;

QTreeWidgetItem *treeItem(QTreeWidget *tree, int entity, int animation = -1)
{
    QTreeWidgetItem *top = tree->topLevelItem(entity);
    return top && animation >= 0 ? top->child(animation) : top;
}

void pick(Fixture &f, int entity, int animation = -1)
{
    QTreeWidgetItem *item = treeItem(f.panel->tree(), entity, animation);
    QVERIFY(item);
    clickItem(f.panel->tree(), item);
    QCOMPARE(f.panel->pickedEntity(), entity);
    QCOMPARE(f.panel->pickedAnimation(), animation);
}

bool click(Fixture &f, const char *action)
{
    return clickAction(f.panel->toolBar(), f.panel->action(QLatin1String(action)));
}

// Renames the picked item through the tree's editor (F2, type, Enter).
void renamePicked(Fixture &f, const QString &text)
{
    QVERIFY2(editCurrent(f.panel->tree(), text), "F2 opened no editor");
}

using PanelEdit = std::function<void(Fixture &)>;
using ModelEdit = std::function<void(RigxData &)>;

} // namespace

class TestAnimationsPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void edits_data();
    void edits();
    void rename_data();
    void rename();
    void deleteAsksFirst_data();
    void deleteAsksFirst();
    void clickShows();
    void subEntity();
    void followsUndo();
    void specialClone_data();
    void specialClone();
    void retimeRefuses_data();
    void retimeRefuses();
};

void TestAnimationsPanel::edits_data()
{
    QTest::addColumn<PanelEdit>("panelEdit");
    QTest::addColumn<ModelEdit>("modelEdit");

    QTest::newRow("new entity") << PanelEdit([](Fixture &f) {
        QVERIFY(click(f, "actionNewEntity"));
    }) << ModelEdit([](RigxData &d) {
        d.appendEntity(new Entity(uniqueName(QStringLiteral("entity_000"), d.entityNames()), true));
    });
    QTest::newRow("new animation") << PanelEdit([](Fixture &f) {
        pick(f, 1);
        QVERIFY(click(f, "actionNewAnimation"));
    }) << ModelEdit([](RigxData &d) {
        d.entity(1)->appendAnimation(new Animation(QStringLiteral("NewAnimation"), true));
    });
    QTest::newRow("clone") << PanelEdit([](Fixture &f) {
        pick(f, 0, 0);
        QVERIFY(click(f, "actionClone"));
    }) << ModelEdit([](RigxData &d) {
        auto copy = d.entity(0)->animation(0)->clone();
        copy->setName(QStringLiteral("idle_000"));
        d.entity(0)->insertAnimation(1, copy.release());
    });
    QTest::newRow("delete animation") << PanelEdit([](Fixture &f) {
        pick(f, 0, 0);
        answerQuestion(f.panel, QMessageBox::Yes);
        QVERIFY(click(f, "actionDelete"));
    }) << ModelEdit([](RigxData &d) { d.entity(0)->deleteAnimation(0); });
    QTest::newRow("delete entity by key") << PanelEdit([](Fixture &f) {
        pick(f, 1);
        answerQuestion(f.panel, QMessageBox::Yes);
        QTest::keyClick(f.panel->tree(), Qt::Key_Delete);
    }) << ModelEdit([](RigxData &d) {
        // The hero's sub-entity keys showed the lantern: they are left naming nothing.
        d.deleteEntity(1);
        for (int a = 0; a < d.entity(0)->animationCount(); ++a) {
            for (int t = 0; t < d.entity(0)->animation(a)->timelineCount(); ++t) {
                Timeline *line = d.entity(0)->animation(a)->timeline(t);
                for (int k = 0; line->isSubEntity() && k < line->keyCount(); ++k)
                    line->key(k)->entityInfo().animation = Address(&d, {-1, -1});
            }
        }
    });
    QTest::newRow("length") << PanelEdit([](Fixture &f) {
        pick(f, 0, 1);
        typeInto(f.panel->findChild<QSpinBox *>(QStringLiteral("lengthSpin")), QStringLiteral("1500"));
    }) << ModelEdit([](RigxData &d) { d.entity(0)->animation(1)->setLength(1500); });
    QTest::newRow("snapping") << PanelEdit([](Fixture &f) {
        pick(f, 1, 0);
        typeInto(f.panel->findChild<QSpinBox *>(QStringLiteral("snappingSpin")), QStringLiteral("25"));
    }) << ModelEdit([](RigxData &d) { d.entity(1)->animation(0)->setSnappingInterval(25); });
    QTest::newRow("loop to") << PanelEdit([](Fixture &f) {
        pick(f, 0, 0);
        typeInto(f.panel->findChild<QSpinBox *>(QStringLiteral("loopToSpin")), QStringLiteral("300"));
    }) << ModelEdit([](RigxData &d) { d.entity(0)->animation(0)->setLoopTo(300); });
    QTest::newRow("ping-pong") << PanelEdit([](Fixture &f) {
        pick(f, 0, 1);
        auto *combo = f.panel->findChild<QComboBox *>(QStringLiteral("loopingCombo"));
        combo->setFocus();
        QTest::keyClick(combo, Qt::Key_Down);
    }) << ModelEdit([](RigxData &d) { d.entity(0)->animation(1)->setLoopingMode(Animation::PingPong); });
    QTest::newRow("no looping") << PanelEdit([](Fixture &f) {
        pick(f, 0, 0);
        auto *combo = f.panel->findChild<QComboBox *>(QStringLiteral("loopingCombo"));
        combo->setFocus();
        QTest::keyClick(combo, Qt::Key_Up);
    }) << ModelEdit([](RigxData &d) { d.entity(0)->animation(0)->setLoopingMode(Animation::NoLooping); });
}

// An edit through the panel saves the same bytes as the same edit made on the
// model directly; undo gives the saved bytes back, redo the edit again.
void TestAnimationsPanel::edits()
{
    QFETCH(PanelEdit, panelEdit);
    QFETCH(ModelEdit, modelEdit);
    Fixture f;
    QVERIFY(f.hero.ok);
    const QByteArray before = f.hero.savedBytes();
    const int steps = f.hero.stack.count();
    panelEdit(f);
    if (QTest::currentTestFailed())
        return;
    QCOMPARE(f.hero.stack.count(), steps + 1);
    const QByteArray after = f.hero.savedBytes();
    QVERIFY(after != before);

    HeroProject other;
    QVERIFY(other.ok);
    modelEdit(other.document);
    QCOMPARE(after, other.savedBytes());

    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    f.hero.stack.redo();
    QCOMPARE(f.hero.savedBytes(), after);
}

void TestAnimationsPanel::rename_data()
{
    QTest::addColumn<int>("entity");
    QTest::addColumn<int>("animation");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept"); // empty: refused, nothing changes

    QTest::newRow("animation") << 0 << 0 << "rest" << "rest";
    QTest::newRow("taken name made unique") << 0 << 0 << "walk" << "walk_000";
    QTest::newRow("entity taken name") << 1 << -1 << "hero" << "hero_000";
    QTest::newRow("entity") << 1 << -1 << "torch" << "torch";
    QTest::newRow("same name") << 0 << 1 << "walk" << "";
    QTest::newRow("empty") << 0 << 0 << "" << "";
    QTest::newRow("blanks") << 0 << 0 << "   " << "";
    QTest::newRow("control characters") << 0 << 0 << "\trun\nfast\x01" << "run fast";
    QTest::newRow("markup") << 0 << 0 << "<a & \"b\" 'c'>" << "<a & \"b\" 'c'>";
    QTest::newRow("unicode") << 1 << -1 << QString::fromUtf8("Laterne \xe2\x9c\x93 \xf0\x9f\x94\xa5")
                             << QString::fromUtf8("Laterne \xe2\x9c\x93 \xf0\x9f\x94\xa5");
    QTest::newRow("very long") << 0 << 1 << QString(500, QLatin1Char('w')) << QString(200, QLatin1Char('w'));
}

// Renaming through the tree's editor keeps a unique, clean name that survives
// a save and reopen, and undo gives the saved bytes back.
void TestAnimationsPanel::rename()
{
    QFETCH(int, entity);
    QFETCH(int, animation);
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    Fixture f;
    QVERIFY(f.hero.ok);
    const QByteArray before = f.hero.savedBytes();
    const int steps = f.hero.stack.count();
    pick(f, entity, animation);
    renamePicked(f, typed);
    if (QTest::currentTestFailed())
        return;
    const auto nameNow = [&](RigxData &d) {
        return animation < 0 ? d.entity(entity)->name()
                             : d.entity(entity)->animation(animation)->name();
    };
    if (kept.isEmpty()) {
        QCOMPARE(f.hero.stack.count(), steps);
        QCOMPARE(f.hero.savedBytes(), before);
        // The tree shows the name kept, not what was typed.
        QTRY_COMPARE(treeItem(f.panel->tree(), entity, animation)->text(0), nameNow(f.hero.document));
        return;
    }
    QCOMPARE(f.hero.stack.count(), steps + 1);
    QCOMPARE(nameNow(f.hero.document), kept);
    QTRY_COMPARE(treeItem(f.panel->tree(), entity, animation)->text(0), kept);

    const QString saved = f.hero.dir.path() + QStringLiteral("/hero/renamed.rigx");
    QString error;
    QVERIFY2(ProjectFile::save(&f.hero.document, saved, ProjectSaveOptions(), nullptr, &error),
             qPrintable(error));
    RigxData reread;
    QVERIFY2(ProjectFile::open(&reread, saved, nullptr, &error), qPrintable(error));
    QCOMPARE(nameNow(reread), kept);

    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
}

void TestAnimationsPanel::deleteAsksFirst_data()
{
    QTest::addColumn<int>("entity");
    QTest::addColumn<int>("animation");
    QTest::addColumn<bool>("yes");

    QTest::newRow("animation, no") << 0 << 1 << false;
    QTest::newRow("animation, yes") << 0 << 1 << true;
    QTest::newRow("entity, no") << 0 << -1 << false;
    QTest::newRow("entity, yes") << 0 << -1 << true;
    QTest::newRow("shown animation, yes") << 0 << 0 << true;
}

void TestAnimationsPanel::deleteAsksFirst()
{
    QFETCH(int, entity);
    QFETCH(int, animation);
    QFETCH(bool, yes);
    Fixture f;
    QVERIFY(f.hero.ok);
    const QByteArray before = f.hero.savedBytes();
    const int entities = f.hero.document.entityCount();
    const int animations = f.hero.document.entity(entity)->animationCount();
    pick(f, entity, animation);
    bool asked = false;
    answerQuestion(f.panel, yes ? QMessageBox::Yes : QMessageBox::No, &asked);
    QVERIFY(click(f, "actionDelete"));
    QVERIFY(asked);
    if (!yes) {
        QCOMPARE(f.hero.savedBytes(), before);
        QCOMPARE(f.hero.stack.count(), 0);
        return;
    }
    if (animation < 0) {
        QCOMPARE(f.hero.document.entityCount(), entities - 1);
    } else {
        QCOMPARE(f.hero.document.entity(entity)->animationCount(), animations - 1);
    }
    // The canvas and the list follow; neither holds what went.
    QCOMPARE(f.panel->tree()->topLevelItemCount(), f.hero.document.entityCount());
    f.editor.scene()->refresh();
    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    QTRY_COMPARE(f.panel->tree()->topLevelItem(entity)->childCount(),
                 f.hero.document.entity(entity)->animationCount());
}

// A click shows the animation in the canvas; the fields below the list are
// always those of the shown animation, also when an entity is picked.
void TestAnimationsPanel::clickShows()
{
    Fixture f;
    QVERIFY(f.hero.ok);
    EditorSession *session = f.editor.session();
    auto *length = f.panel->findChild<QSpinBox *>(QStringLiteral("lengthSpin"));
    for (const auto &[entity, animation] : {std::pair{0, 1}, std::pair{1, 0}, std::pair{0, 0}}) {
        pick(f, entity, animation);
        Animation *shown = f.hero.document.entity(entity)->animation(animation);
        QCOMPARE(session->currentAnimation(), shown);
        QCOMPARE(length->value(), shown->length());
        // The shown animation is the bold one.
        QTRY_VERIFY(treeItem(f.panel->tree(), entity, animation)->font(0).bold());
    }
    pick(f, 1);
    QCOMPARE(session->currentAnimation(), f.hero.document.entity(0)->animation(0));
    QCOMPARE(length->value(), f.hero.document.entity(0)->animation(0)->length());
    // Another piece showing another animation changes the fields at once.
    f.editor.setCurrentAnimation(f.hero.animation(QStringLiteral("walk")));
    QCOMPARE(length->value(), f.hero.animation(QStringLiteral("walk"))->length());
}

// The lantern becomes a sub-entity object of the hero at the current time,
// playing its first animation; the key survives save and reopen; undo restores.
void TestAnimationsPanel::subEntity()
{
    Fixture f;
    QVERIFY(f.hero.ok);
    f.editor.setCurrentAnimation(f.hero.animation(QStringLiteral("walk")));
    f.editor.setCurrentTime(200);
    const QByteArray before = f.hero.savedBytes();
    Entity *hero = f.hero.document.entity(0);
    const int objects = hero->objectCount();
    pick(f, 0);
    QVERIFY(!f.panel->action(QStringLiteral("actionAddSubEntity"))->isEnabled());
    pick(f, 1);
    QVERIFY(click(f, "actionAddSubEntity"));
    QCOMPARE(hero->objectCount(), objects + 1);
    const Object *object = hero->object(objects);
    QVERIFY(object->isSubEntity());
    // The hero has a sprite called lantern already.
    QCOMPARE(object->name(), QStringLiteral("lantern_000"));
    Animation *walk = f.hero.animation(QStringLiteral("walk"));
    const Timeline *timeline = walk->timelineFromObjectName(QStringLiteral("lantern_000"));
    QVERIFY(timeline);
    QCOMPARE(timeline->keyCount(), 1);
    QCOMPARE(timeline->key(0)->time(), 200);
    QCOMPARE(timeline->key(0)->entityInfo().animation.entityIndex(), 1);
    QCOMPARE(timeline->key(0)->entityInfo().animation.animation(),
             f.hero.document.entity(1)->animation(0));

    const QByteArray after = f.hero.savedBytes();
    RigxData reread;
    QString error;
    QVERIFY(ProjectFile::open(&reread, f.hero.dir.path() + QStringLiteral("/hero/saved_1.rigx"),
                              nullptr, &error));
    const Timeline *again = reread.entity(0)->animation(1)->timelineFromObjectName(QStringLiteral("lantern_000"));
    QVERIFY(again);
    QCOMPARE(again->key(0)->entityInfo().animation.animation(), reread.entity(1)->animation(0));

    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
    f.hero.stack.redo();
    QCOMPARE(f.hero.savedBytes(), after);
}

// Undo and redo from elsewhere (the window's Undo) reach the list too.
void TestAnimationsPanel::followsUndo()
{
    Fixture f;
    QVERIFY(f.hero.ok);
    pick(f, 0);
    QVERIFY(click(f, "actionNewAnimation"));
    QCOMPARE(f.panel->tree()->topLevelItem(0)->childCount(), 3);
    QCOMPARE(f.panel->tree()->topLevelItem(0)->child(2)->text(0), QStringLiteral("NewAnimation"));
    f.hero.stack.undo();
    QTRY_COMPARE(f.panel->tree()->topLevelItem(0)->childCount(), 2);
    f.hero.stack.redo();
    QTRY_COMPARE(f.panel->tree()->topLevelItem(0)->childCount(), 3);
}

void TestAnimationsPanel::specialClone_data()
{
    QTest::addColumn<QString>("speed");
    QTest::addColumn<QString>("hold");
    QTest::addColumn<QList<int>>("times"); // of the copy's mainline keys
    QTest::addColumn<int>("length");

    // walk: mainline keys at 0, 200, 400 and 600 ms, 800 ms long.
    QTest::newRow("as is") << "1" << "0" << QList<int>{0, 200, 400, 600} << 800;
    QTest::newRow("twice as fast") << "2" << "0" << QList<int>{0, 100, 200, 300} << 400;
    QTest::newRow("half as fast") << "0.5" << "0" << QList<int>{0, 400, 800, 1200} << 1600;
    QTest::newRow("rounded") << "3" << "0" << QList<int>{0, 67, 133, 200} << 267;
    QTest::newRow("hold") << "1" << "150" << QList<int>{0, 350, 550, 750} << 950;
    QTest::newRow("faster with hold") << "4" << "20" << QList<int>{0, 70, 120, 170} << 220;
    QTest::newRow("long hold") << "1" << "1000" << QList<int>{0, 1200, 1400, 1600} << 1800;
}

// The special clone's answers shape the copy's times as worked out by hand;
// the source stays as it was and undo removes the copy.
void TestAnimationsPanel::specialClone()
{
    QFETCH(QString, speed);
    QFETCH(QString, hold);
    QFETCH(QList<int>, times);
    QFETCH(int, length);
    Fixture f;
    QVERIFY(f.hero.ok);
    const QByteArray before = f.hero.savedBytes();
    pick(f, 0, 1);
    bool answered = false;
    whenModalShown(f.panel, [speed, hold](QWidget *modal) {
        for (const auto &[name, text] : {std::pair{"speedSpin", speed}, std::pair{"holdSpin", hold}}) {
            auto *box = modal->findChild<QAbstractSpinBox *>(QLatin1String(name));
            QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClicks(box, text);
        }
        QTest::keyClick(modal, Qt::Key_Return);
    }, &answered);
    QVERIFY(click(f, "actionSpecialClone"));
    QVERIFY(answered);
    Entity *hero = f.hero.document.entity(0);
    QCOMPARE(hero->animationCount(), 3);
    const Animation *copy = hero->animation(2);
    QCOMPARE(copy->name(), QStringLiteral("walk_000"));
    QList<int> got;
    for (int i = 0; i < copy->mainlineKeyCount(); ++i)
        got.append(copy->mainlineKey(i)->currentTime());
    QCOMPARE(got, times);
    QCOMPARE(copy->length(), length);
    // Every timeline key sits on a mainline key of its time.
    for (int t = 0; t < copy->timelineCount(); ++t) {
        for (int k = 0; k < copy->timeline(t)->keyCount(); ++k)
            QVERIFY(times.contains(copy->timeline(t)->key(k)->time()));
    }
    // The source is untouched: undo of the copy gives the saved bytes back.
    f.hero.stack.undo();
    QCOMPARE(f.hero.savedBytes(), before);
}

void TestAnimationsPanel::retimeRefuses_data()
{
    QTest::addColumn<double>("speed");
    QTest::addColumn<int>("hold");

    QTest::newRow("keys collide") << 500.0 << 0;
    QTest::newRow("zero speed") << 0.0 << 0;
    QTest::newRow("negative speed") << -2.0 << 0;
    QTest::newRow("not a number") << qQNaN() << 0;
    QTest::newRow("infinite") << qInf() << 0;
    QTest::newRow("negative hold") << 1.0 << -5;
    QTest::newRow("too long") << 1e-7 << 0;
}

void TestAnimationsPanel::retimeRefuses()
{
    QFETCH(double, speed);
    QFETCH(int, hold);
    HeroProject hero;
    QVERIFY(hero.ok);
    QString error;
    QVERIFY(!retimedAnimation(*hero.animation(QStringLiteral("walk")), speed, hold, &error));
    QVERIFY(!error.isEmpty());
}

QTEST_MAIN(TestAnimationsPanel)
#include "tst_animationspanel.moc"
