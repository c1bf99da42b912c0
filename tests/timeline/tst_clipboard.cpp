// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "../canvas/canvastesthelpers.h"
#include "clirunner.h"

#include "canvas/canvaseditor.h"
#include "canvas/clipboard/clipboardeditor.h"
#include "canvas/clipboard/clipboardpaste.h"
#include "canvas/clipboard/copy.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/morvanegraphicsview.h"
#include "canvas/objectgraphicsproxy.h"
#include "meta/valinfocollection.h"
#include "meta/valkey.h"
#include "model/file.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QMenu>
#include <QMimeData>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

// The example project in a canvas editor with the clipboard's actions on it,
// as the window has them.
struct Editor
{
    Editor()
        : clip(editor.scene())
    {
        clip.addActionsTo(&editor);
        clip.registerWithCanvas(&editor);
        // The window gives Clone another key; Ctrl+D is Copy Selection To All Frames.
        editor.action(QStringLiteral("actionClone"))->setShortcut(QKeySequence());
        editor.resize(800, 600);
        editor.show();
        editor.activateWindow();
        if (!QTest::qWaitForWindowActive(&editor))
            qWarning("the canvas window did not become active");
        editor.view()->setFocus();
        editor.setDocument(&hero.document);
    }

    MorvaneCanvasScene *scene() const { return editor.scene(); }
    void show(const QString &animation, int time)
    {
        editor.setCurrentAnimation(hero.animation(animation));
        editor.setCurrentTime(time);
    }
    void select(const QStringList &names)
    {
        QList<ObjectGraphicsProxy *> proxies;
        for (const QString &name : names) {
            if (ObjectGraphicsProxy *p = scene()->idProxy(name))
                proxies.append(p);
        }
        scene()->setSelectedProxies(proxies);
    }
    void trigger(const char *name)
    {
        QAction *a = clip.action(QLatin1String(name));
        QVERIFY2(a, name);
        a->trigger();
    }

    HeroProject hero;
    CanvasEditor editor;
    ClipboardEditor clip;
};

// World x, y, angle and scales by object name at `time`.
QMap<QString, QList<double>> namedPose(Entity *entity, Animation *animation, int time)
{
    QMap<QString, QList<double>> named;
    const QMap<int, QList<double>> pose = worldPose(entity, animation, time);
    for (auto it = pose.constBegin(); it != pose.constEnd(); ++it)
        named.insert(animation->timeline(it.key())->name(), it.value());
    return named;
}

bool closeTo(const QList<double> &a, const QList<double> &b)
{
    if (a.size() != b.size())
        return false;
    for (int i = 0; i < a.size(); ++i) {
        double d = std::abs(a[i] - b[i]);
        if (i == 2)
            d = std::min(d, std::abs(360.0 - d));
        if (d > 1e-6)
            return false;
    }
    return true;
}

QSet<int> mainlineIds(const Animation *animation)
{
    QSet<int> ids;
    for (int i = 0; i < animation->mainlineKeyCount(); ++i)
        ids.insert(animation->mainlineKey(i)->id());
    return ids;
}

} // namespace

class TestClipboard : public QObject
{
    Q_OBJECT

private slots:
    void init() { QGuiApplication::clipboard()->clear(); }

    void frameCopyStartsAtZero_data();
    void frameCopyStartsAtZero();
    void valueKeysAloneStartAtEarliest();
    void twoPastesBringNewMainlineIds();
    void pastedPoseShowsAtTheNewTime_data();
    void pastedPoseShowsAtTheNewTime();
    void pasteIntoAnotherEntityAddsItsObjects();
    void variableAndTagKeysComeAlong();
    void copyToAllFramesOfOneProperty_data();
    void copyToAllFramesOfOneProperty();
    void hostileClipboardTextChangesNothing_data();
    void hostileClipboardTextChangesNothing();
    void eachChangeIsOneUndoStep_data();
    void eachChangeIsOneUndoStep();
    void poseMovesBetweenTwoEditors();
    void shortcutsReachOneActionEach();
    void randomCopiesAndPastesUndoToTheSavedBytes();
    void commandLineSteps_data();
    void commandLineSteps();
};

void TestClipboard::frameCopyStartsAtZero_data()
{
    QTest::addColumn<QString>("animation");
    QTest::addColumn<int>("time");
    QTest::newRow("idle at 750") << "idle" << 750;
    QTest::newRow("idle at 0") << "idle" << 0;
    QTest::newRow("walk at 400, on a key") << "walk" << 400;
}

void TestClipboard::frameCopyStartsAtZero()
{
    QFETCH(QString, animation);
    QFETCH(int, time);
    Editor e;
    QVERIFY(e.hero.ok);
    e.show(animation, time);
    const QByteArray before = e.hero.savedBytes();
    const int steps = e.hero.stack.count();
    e.trigger("actionCopy_Current_Frame");

    Copy *copy = e.clip.ownCopy();
    QCOMPARE(copy->kind(), QStringLiteral("clipboard"));
    QVERIFY(copy->isFrameCopy());
    QCOMPARE(copy->copiedRelAnimation()->mainlineKeyCount(), 1);
    QCOMPARE(copy->copiedRelAnimation()->mainlineKey(0)->currentTime(), 0);
    QCOMPARE(copy->copiedAbsAnimation()->mainlineKey(0)->currentTime(), time);
    // Every item shown there came along, each key at the copy's time.
    int shown = 0;
    for (int i = 0; i < e.scene()->instTimelineProxyCount(); ++i)
        shown += e.scene()->instTimelineProxyFromIndex(i)->isShownInPose() ? 1 : 0;
    QCOMPARE(copy->copiedRelAnimation()->mainlineKey(0)->refCount(), shown);
    for (int i = 0; i < copy->copiedRelAnimation()->timelineCount(); ++i)
        QCOMPARE(copy->copiedRelAnimation()->timeline(i)->key(0)->time(), 0);
    // Copying changes nothing and records nothing.
    QCOMPARE(e.hero.stack.count(), steps);
    QCOMPARE(e.hero.savedBytes(), before);
}

void TestClipboard::valueKeysAloneStartAtEarliest()
{
    HeroProject hero;
    QVERIFY(hero.ok);
    Entity *entity = hero.document.entity(0);
    Animation *idle = hero.animation(QStringLiteral("idle"));
    ValInfoCollection &vars = entity->valInfoCollection();
    vars.addValInfo(QStringLiteral("power"), 0.0, VarType::Float, entity);
    const int id = vars.idFromName(QStringLiteral("power"));
    QVERIFY(id >= 0);
    const LineId line{VarType::Float, id};
    ValLine *values = idle->ownLineHolder().lineForEditing(line);
    for (const auto &[time, value] : {std::pair{900, 2.0}, {300, 1.0}, {500, 4.0}})
        values->setKey(ValKey::create(VarType::Float, time, value));

    Copy copy;
    QVERIFY(copy.copyKeys(idle, {}, {{-1, line, 500}, {-1, line, 900}}));
    Animation *rel = copy.copiedRelAnimation();
    QCOMPARE(rel->mainlineKeyCount(), 0);
    const ValLine *copied = rel->ownLineHolder().line(line);
    QVERIFY(copied);
    QCOMPARE(copied->keyCount(), 2);
    QCOMPARE(copied->key(0)->time(), 0);
    QCOMPARE(copied->key(1)->time(), 400);
    QCOMPARE(copied->key(1)->value().toDouble(), 2.0);
    // "abs" keeps the times they were copied from.
    QCOMPARE(copy.copiedAbsAnimation()->ownLineHolder().line(line)->key(0)->time(), 500);
}

void TestClipboard::twoPastesBringNewMainlineIds()
{
    Editor e;
    QVERIFY(e.hero.ok);
    e.show(QStringLiteral("idle"), 750);
    e.trigger("actionCopy_Current_Frame");
    Animation *idle = e.hero.animation(QStringLiteral("idle"));
    const QSet<int> ids = mainlineIds(idle);

    e.editor.setCurrentTime(250);
    e.trigger("actionPaste");
    const int first = e.hero.animation(QStringLiteral("idle"))->mainlineKeyFromTime(250, true)->id();
    const int firstSlot = e.clip.ownCopy()->pasteReadySlot()->mainlineKey(0)->id();
    e.editor.setCurrentTime(1000);
    e.trigger("actionPaste");
    const int second = e.hero.animation(QStringLiteral("idle"))->mainlineKeyFromTime(1000, true)->id();
    const int secondSlot = e.clip.ownCopy()->pasteReadySlot()->mainlineKey(0)->id();
    QVERIFY(first != second);
    QVERIFY(firstSlot != secondSlot);
    QVERIFY(!ids.contains(first));
    QVERIFY(!ids.contains(second));
}

void TestClipboard::pastedPoseShowsAtTheNewTime_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<int>("fromTime");
    QTest::addColumn<QString>("to");
    QTest::addColumn<int>("toTime");
    QTest::newRow("same animation, between keys") << "idle" << 750 << "idle" << 250;
    QTest::newRow("same animation, onto a key") << "idle" << 300 << "idle" << 600;
    QTest::newRow("another animation") << "idle" << 600 << "walk" << 300;
    QTest::newRow("from walk into idle's end") << "walk" << 100 << "idle" << 1200;
}

void TestClipboard::pastedPoseShowsAtTheNewTime()
{
    QFETCH(QString, from);
    QFETCH(int, fromTime);
    QFETCH(QString, to);
    QFETCH(int, toTime);
    Editor e;
    QVERIFY(e.hero.ok);
    Entity *hero = e.hero.document.entity(0);
    const QMap<QString, QList<double>> copied =
        namedPose(hero, e.hero.animation(from), fromTime);
    e.show(from, fromTime);
    e.trigger("actionCopy_Current_Frame");
    e.show(to, 0);
    e.editor.setCurrentTime(toTime);
    e.trigger("actionPaste");

    const QMap<QString, QList<double>> pasted = namedPose(hero, e.hero.animation(to), toTime);
    int compared = 0;
    for (auto it = copied.constBegin(); it != copied.constEnd(); ++it) {
        if (!pasted.contains(it.key()))
            continue;
        QVERIFY2(closeTo(it.value(), pasted.value(it.key())), qPrintable(it.key()));
        ++compared;
    }
    QVERIFY(compared >= 10);
}

void TestClipboard::pasteIntoAnotherEntityAddsItsObjects()
{
    Editor e;
    QVERIFY(e.hero.ok);
    e.show(QStringLiteral("idle"), 0);
    e.select({QStringLiteral("head")});
    e.trigger("actionCopy");
    // The head came with the bone it hangs from.
    QCOMPARE(e.clip.ownCopy()->copiedRelAnimation()->mainlineKey(0)->refCount(), 2);

    Entity *lantern = e.hero.document.entity(1);
    const int objects = lantern->objectCount();
    const QByteArray before = e.hero.savedBytes();
    e.editor.setCurrentAnimation(lantern->animation(0));
    e.editor.setCurrentTime(0);
    QSignalSpy status(&e.clip, &ClipboardEditor::statusMessage);
    e.trigger("actionPaste");
    QCOMPARE(status.count(), 1);
    QVERIFY2(status.at(0).at(0).toString().contains(QStringLiteral("2 objects added")),
             qPrintable(status.at(0).at(0).toString()));
    QCOMPARE(lantern->objectCount(), objects + 2);
    QVERIFY(lantern->objectFromName(QStringLiteral("head")));
    QVERIFY(lantern->objectFromName(QStringLiteral("neck")));
    // Both are shown at 0, the head still hanging from the neck.
    const MainlineKey *key = lantern->animation(0)->mainlineKeyFromTime(0, true);
    const Timeline *head = lantern->animation(0)->timelineFromObjectName(QStringLiteral("head"));
    const ObjectRef *headRef = key->refFromTimeline(head);
    QVERIFY(headRef && headRef->parentRef());
    QCOMPARE(headRef->parentRef()->timeline()->name(), QStringLiteral("neck"));
    QCOMPARE(headRef->key()->fileInfo().file()->name(), QStringLiteral("body/head.png"));

    // The pasted timelines name objects the same step adds: undo and redo
    // bring both back together.
    const QByteArray after = e.hero.savedBytes();
    e.hero.stack.undo();
    QCOMPARE(lantern->objectCount(), objects);
    QCOMPARE(e.hero.savedBytes(), before);
    e.hero.stack.redo();
    QCOMPARE(lantern->objectCount(), objects + 2);
    QCOMPARE(e.hero.savedBytes(), after);
    e.hero.stack.undo();
    QCOMPARE(e.hero.savedBytes(), before);
}

void TestClipboard::variableAndTagKeysComeAlong()
{
    Editor e;
    QVERIFY(e.hero.ok);
    Entity *entity = e.hero.document.entity(0);
    Animation *idle = e.hero.animation(QStringLiteral("idle"));
    entity->valInfoCollection().addValInfo(QStringLiteral("mood"), 0, VarType::Int, entity);
    const LineId line{VarType::Int, entity->valInfoCollection().idFromName(QStringLiteral("mood"))};
    idle->ownLineHolder().lineForEditing(line)->setKey(ValKey::create(VarType::Int, 600, 7));
    idle->ownLineHolder().tagLine().setKey(ValKey::create(VarType::Tag, 600, QVariant::fromValue(QList<int>{3})));

    Copy copy;
    QVERIFY(copy.copyKeys(idle, {{-1, 600}}));
    e.show(QStringLiteral("walk"), 200);
    QString message;
    QVERIFY(pasteKeys(e.scene(), &copy, 200, &message));
    const Animation *walk = e.hero.animation(QStringLiteral("walk"));
    const ValLine *mood = walk->ownLineHolder().line(line);
    QVERIFY(mood);
    QVERIFY(mood->keyAtTime(200));
    QCOMPARE(mood->keyAtTime(200)->value().toInt(), 7);
    QVERIFY(walk->ownLineHolder().tagLine().keyAtTime(200));
    // The mainline key at 600 brought every timeline key standing there.
    const MainlineKey *pasted = walk->mainlineKeyFromTime(200, true);
    QVERIFY(pasted);
    QCOMPARE(copy.copiedRelAnimation()->mainlineKey(0)->refCount(),
             idle->mainlineKeyFromTime(600, true)->childTimeKeyCount());

    // Keys 600 ms apart pasted 300 ms before the end of the 800 ms walk: the
    // second would land past the end and is left out.
    idle->ownLineHolder().lineForEditing(line)->setKey(ValKey::create(VarType::Int, 0, 5));
    QVERIFY(copy.copyKeys(idle, {}, {{-1, line, 0}, {-1, line, 600}}));
    QVERIFY(pasteKeys(e.scene(), &copy, 500, &message));
    QVERIFY2(message.contains(QStringLiteral("1 key past the end left out")), qPrintable(message));
    mood = e.hero.animation(QStringLiteral("walk"))->ownLineHolder().line(line);
    QCOMPARE(mood->keyAtTime(500)->value().toInt(), 5);
    for (int k = 0; k < mood->keyCount(); ++k)
        QVERIFY(mood->key(k)->time() <= 800);
}

void TestClipboard::copyToAllFramesOfOneProperty_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<int>("field"); // index into the fields below; -1: the whole state
    QTest::newRow("x") << "x" << 0;
    QTest::newRow("y") << "y" << 1;
    QTest::newRow("x scale") << "x scale" << 2;
    QTest::newRow("y scale") << "y scale" << 3;
    QTest::newRow("angle") << "angle" << 4;
    QTest::newRow("alpha") << "alpha" << 5;
    QTest::newRow("whole items") << "Copy Selected Items to All Frames" << -1;
}

void TestClipboard::copyToAllFramesOfOneProperty()
{
    QFETCH(QString, entry);
    QFETCH(int, field);
    Editor e;
    QVERIFY(e.hero.ok);
    auto fields = [](const DisplayInfo &i) {
        return QList<double>{i.x, i.y, i.xScale, i.yScale, i.angle, i.alpha};
    };
    // The walk's spine at 0 differs from its keys elsewhere in angle; make
    // every field differ so each row can fail.
    Animation *walk = e.hero.animation(QStringLiteral("walk"));
    Timeline *spine = walk->timelineFromObjectName(QStringLiteral("spine"));
    DisplayInfo start = spine->key(0)->info();
    start.x += 3; start.y -= 2; start.xScale = 1.25; start.yScale = 0.75; start.angle += 17; start.alpha = 0.5;
    spine->key(0)->setInfo(start);
    const QList<double> source = fields(start);
    QMap<int, QList<double>> others; // by key time
    for (int i = 1; i < spine->keyCount(); ++i)
        others.insert(spine->key(i)->time(), fields(spine->key(i)->info()));
    QVERIFY(others.size() >= 2);
    Timeline *hip = walk->timelineFromObjectName(QStringLiteral("hip"));
    QList<QList<double>> hipBefore;
    for (int i = 0; i < hip->keyCount(); ++i)
        hipBefore.append(fields(hip->key(i)->info()));

    e.show(QStringLiteral("walk"), 0);
    e.select({QStringLiteral("spine")});
    std::unique_ptr<QMenu> menu(e.editor.createContextMenu());
    QAction *found = nullptr;
    std::function<void(QMenu *)> search = [&](QMenu *m) {
        for (QAction *a : m->actions()) {
            if (a->menu())
                search(a->menu());
            else if (a->text() == entry && !found)
                found = a;
        }
    };
    search(menu.get());
    QVERIFY(found);
    QVERIFY(found->isEnabled());
    const int steps = e.hero.stack.count();
    found->trigger();
    QCOMPARE(e.hero.stack.count(), steps + 1);

    walk = e.hero.animation(QStringLiteral("walk"));
    spine = walk->timelineFromObjectName(QStringLiteral("spine"));
    for (auto it = others.constBegin(); it != others.constEnd(); ++it) {
        const TimelineKey *key = spine->actualKeyFromTime(it.key());
        QVERIFY(key);
        const QList<double> now = fields(key->info());
        for (int f = 0; f < now.size(); ++f) {
            const double expected = field == -1 || f == field ? source[f] : it.value()[f];
            QVERIFY2(qFuzzyCompare(1.0 + now[f], 1.0 + expected),
                     qPrintable(QStringLiteral("key at %1 field %2: %3 instead of %4")
                                    .arg(it.key()).arg(f).arg(now[f]).arg(expected)));
        }
    }
    // Other timelines are left alone.
    hip = walk->timelineFromObjectName(QStringLiteral("hip"));
    for (int i = 0; i < hip->keyCount(); ++i)
        QCOMPARE(fields(hip->key(i)->info()), hipBefore[i]);
}

void TestClipboard::hostileClipboardTextChangesNothing_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("asOurType");
    {
        HeroProject hero;
        Copy copy;
        copy.copyKeys(hero.animation(QStringLiteral("idle")), {{-1, 600}});
        const QByteArray json = copy.toJson();
        QTest::newRow("truncated copy") << json.left(json.size() / 2) << true;
        QByteArray renamed = json;
        renamed.replace("\"rel\"", "\"xyz\"");
        QTest::newRow("copy of another shape") << renamed << true;
    }
    QTest::newRow("plain words") << QByteArray("hello, animator") << false;
    QTest::newRow("other JSON") << QByteArray("{\"a\": [1, 2, 3]}") << false;
    QTest::newRow("a JSON array") << QByteArray("[1, 2]") << true;
    QFile project(QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero/hero.rigj"));
    QVERIFY(project.open(QIODevice::ReadOnly));
    QTest::newRow("a whole project") << project.readAll() << false;
    QTest::newRow("deeply nested") << QByteArray(100000, '[') << false;
}

void TestClipboard::hostileClipboardTextChangesNothing()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, asOurType);
    Editor e;
    QVERIFY(e.hero.ok);
    e.show(QStringLiteral("idle"), 0);
    e.trigger("actionCopy_Current_Frame"); // a good copy of our own is there too
    auto *data = new QMimeData;
    if (asOurType)
        data->setData(ClipboardEditor::mimeType(), text);
    else
        data->setText(QString::fromUtf8(text));
    QGuiApplication::clipboard()->setMimeData(data);

    const QByteArray before = e.hero.savedBytes();
    const int steps = e.hero.stack.count();
    QSignalSpy status(&e.clip, &ClipboardEditor::statusMessage);
    e.editor.setCurrentTime(300);
    e.trigger("actionPaste");
    e.trigger("actionAltPaste");
    QCOMPARE(e.hero.stack.count(), steps);
    QCOMPARE(e.hero.savedBytes(), before);
    QCOMPARE(status.count(), 2);
    QVERIFY(!status.at(0).at(0).toString().isEmpty());
}

void TestClipboard::eachChangeIsOneUndoStep_data()
{
    QTest::addColumn<QString>("steps");
    // Words: "show:ANIMATION:TIME", "select:NAME", or an action's object name.
    QTest::newRow("paste a frame between keys")
        << "show:idle:750 actionCopy_Current_Frame show:idle:250 actionPaste";
    QTest::newRow("paste onto a key of another animation")
        << "show:idle:600 actionCopy_Current_Frame show:walk:400 actionPaste";
    QTest::newRow("paste a selection with its children")
        << "show:walk:0 select:spine actionCopy_with_children show:walk:500 actionPaste";
    QTest::newRow("paste to all keys") << "show:walk:100 select:hip actionCopy actionAltPaste";
    QTest::newRow("copy selection to all frames")
        << "show:idle:300 select:spine actionCopy_Selection_To_All_Frames";
    QTest::newRow("copy angle to all frames")
        << "show:walk:300 select:leg_back_upper actionCopy_Angle_To_All_Frames";
    QTest::newRow("cut") << "show:idle:600 select:head actionCut";
}

void TestClipboard::eachChangeIsOneUndoStep()
{
    QFETCH(QString, steps);
    Editor e;
    QVERIFY(e.hero.ok);
    const QStringList words = steps.split(QLatin1Char(' '));
    const QByteArray before = e.hero.savedBytes();
    for (const QString &word : words) {
        const QStringList parts = word.split(QLatin1Char(':'));
        if (parts[0] == QLatin1String("show"))
            e.show(parts[1], parts[2].toInt());
        else if (parts[0] == QLatin1String("select"))
            e.select({parts[1]});
        else
            e.trigger(qPrintable(parts[0]));
    }
    QCOMPARE(e.hero.stack.count(), 1);
    const QByteArray after = e.hero.savedBytes();
    QVERIFY(after != before);
    e.hero.stack.undo();
    QCOMPARE(e.hero.savedBytes(), before);
    e.hero.stack.redo();
    QCOMPARE(e.hero.savedBytes(), after);
    e.hero.stack.undo();
    QCOMPARE(e.hero.savedBytes(), before);
}

void TestClipboard::poseMovesBetweenTwoEditors()
{
    Editor first;
    Editor second;
    QVERIFY(first.hero.ok && second.hero.ok);
    Entity *hero = first.hero.document.entity(0);
    const QMap<QString, QList<double>> copied =
        namedPose(hero, first.hero.animation(QStringLiteral("walk")), 500);
    first.show(QStringLiteral("walk"), 500);
    first.trigger("actionCopy_Current_Frame");
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QVERIFY(data->hasFormat(ClipboardEditor::mimeType()));
    QVERIFY(data->text().contains(QStringLiteral("clipboard")));

    second.show(QStringLiteral("idle"), 900);
    second.trigger("actionPaste");
    QCOMPARE(second.hero.stack.count(), 1);
    const QMap<QString, QList<double>> pasted = namedPose(
        second.hero.document.entity(0), second.hero.animation(QStringLiteral("idle")), 900);
    for (auto it = copied.constBegin(); it != copied.constEnd(); ++it)
        QVERIFY2(closeTo(it.value(), pasted.value(it.key())), qPrintable(it.key()));
    // Only plain text of a copy (as a text editor would give it back) works too.
    const QString text = data->text();
    QGuiApplication::clipboard()->setText(text);
    second.editor.setCurrentTime(100);
    second.trigger("actionPaste");
    QCOMPARE(second.hero.stack.count(), 2);
}

void TestClipboard::shortcutsReachOneActionEach()
{
    Editor e;
    QVERIFY(e.hero.ok);
    QHash<QKeySequence, QStringList> byKey;
    for (QAction *a : e.clip.actions()) {
        for (const QKeySequence &key : a->shortcuts())
            byKey[key].append(a->objectName());
    }
    for (auto it = byKey.constBegin(); it != byKey.constEnd(); ++it)
        QVERIFY2(it.value().size() == 1, qPrintable(it.value().join(QLatin1Char(' '))));
    QCOMPARE(byKey.value(QKeySequence(QStringLiteral("Ctrl+Shift+C"))),
             QStringList{QStringLiteral("actionCopy_Current_Frame")});

    e.show(QStringLiteral("idle"), 450);
    e.editor.view()->setFocus();
    QTest::keyClick(e.editor.view(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(e.clip.ownCopy()->isFrameCopy());
    QCOMPARE(e.clip.ownCopy()->copiedAbsAnimation()->mainlineKey(0)->currentTime(), 450);
    e.editor.setCurrentTime(1100);
    QTest::keyClick(e.editor.view(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(e.hero.stack.count(), 1);
    QVERIFY(e.hero.animation(QStringLiteral("idle"))->mainlineKeyFromTime(1100, true));
}

void TestClipboard::randomCopiesAndPastesUndoToTheSavedBytes()
{
    Editor e;
    QVERIFY(e.hero.ok);
    QRandomGenerator random(20261122);
    const QStringList animations{QStringLiteral("idle"), QStringLiteral("walk")};
    const char *copies[] = {"actionCopy", "actionCopy_Current_Frame", "actionCopy_with_child_sprites",
                            "actionCopy_with_child_bones", "actionCopy_with_children"};
    const char *changes[] = {"actionPaste", "actionPaste", "actionAltPaste",
                             "actionCopy_Selection_To_All_Frames", "actionCopy_X_To_All_Frames",
                             "actionCopy_Angle_To_All_Frames", "actionCut"};
    const QByteArray start = e.hero.savedBytes();
    for (int i = 0; i < 24; ++i) {
        const QString name = animations[random.bounded(animations.size())];
        e.show(name, random.bounded(e.hero.animation(name)->length() + 1));
        QList<ObjectGraphicsProxy *> shown;
        for (int p = 0; p < e.scene()->instTimelineProxyCount(); ++p) {
            if (e.scene()->instTimelineProxyFromIndex(p)->isShownInPose())
                shown.append(e.scene()->instTimelineProxyFromIndex(p));
        }
        QVERIFY(!shown.isEmpty());
        e.scene()->setSelectedProxies({shown[random.bounded(shown.size())]});
        if (random.bounded(2))
            e.trigger(copies[random.bounded(5)]);
        else
            e.trigger(changes[random.bounded(7)]);
    }
    QVERIFY(e.hero.stack.count() > 5);
    const QByteArray end = e.hero.savedBytes();
    while (e.hero.stack.canUndo())
        e.hero.stack.undo();
    QCOMPARE(e.hero.savedBytes(), start);
    while (e.hero.stack.canRedo())
        e.hero.stack.redo();
    QCOMPARE(e.hero.savedBytes(), end);
}

void TestClipboard::commandLineSteps_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("expected"); // in stdout on success, in stderr on failure
    QTest::newRow("frame copied and pasted")
        << R"({"do": "time", "time": 750}, {"do": "copy-frame"}, {"do": "time", "time": 250}, {"do": "paste"})"
        << 0 << "keys pasted";
    QTest::newRow("mainline key copied and pasted")
        << R"({"do": "copy-keys", "keys": [{"line": "mainline", "time": 600}]}, {"do": "time", "time": 1100}, {"do": "paste"})"
        << 0 << "keys pasted";
    QTest::newRow("one timeline's keys")
        << R"({"do": "copy-keys", "keys": [{"line": "spine", "time": 0}, {"line": "spine", "time": 600}]}, {"do": "time", "time": 300}, {"do": "paste"})"
        << 0 << "keys pasted";
    QTest::newRow("pasted to all keys")
        << R"({"do": "time", "time": 300}, {"do": "copy-frame"}, {"do": "paste-all-keys"})"
        << 0 << "pasted to all keys";
    QTest::newRow("one property to all frames")
        << R"({"do": "time", "time": 300}, {"do": "copy-to-all-frames", "objects": ["spine"], "property": "angle"})"
        << 0 << "property copied to all frames";
    QTest::newRow("the whole state to all frames")
        << R"({"do": "time", "time": 300}, {"do": "copy-to-all-frames", "objects": ["spine", "hip"], "property": null})"
        << 0 << "copied to all frames";
    QTest::newRow("paste before any copy") << R"({"do": "paste"})" << 2 << "Nothing to paste";
    QTest::newRow("a line that is not there")
        << R"({"do": "copy-keys", "keys": [{"line": "tail", "time": 0}]})" << 2
        << "no timeline or variable is named \"tail\"";
    QTest::newRow("a key that is not there")
        << R"({"do": "copy-keys", "keys": [{"line": "spine", "time": 300}]})" << 2
        << "none of the keys exists";
    QTest::newRow("a fractional time")
        << R"({"do": "copy-keys", "keys": [{"line": "spine", "time": 0.5}]})" << 2 << "whole";
    QTest::newRow("a property that is not one")
        << R"({"do": "copy-to-all-frames", "objects": ["spine"], "property": "colour"})" << 2
        << "\"property\" is one of";
}

void TestClipboard::commandLineSteps()
{
    QFETCH(QString, steps);
    QFETCH(int, exitCode);
    QFETCH(QString, expected);
    HeroProject hero;
    QVERIFY(hero.ok);
    const QString script = hero.dir.path() + QStringLiteral("/script.json");
    const QString out = hero.dir.path() + QStringLiteral("/hero/out.rigx");
    QFile file(script);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral(R"({"animation": "idle", "steps": [%1]})").arg(steps).toUtf8());
    file.close();
    const CliRun run = runCli({QStringLiteral("edit"), hero.projectPath(), script,
                               QStringLiteral("--out"), out});
    QCOMPARE(run.exitCode, exitCode);
    const QByteArray said = run.out + " / " + run.err;
    QVERIFY2((exitCode == 0 ? run.out : run.err).contains(expected.toUtf8()), said.constData());
    QCOMPARE(QFileInfo::exists(out), exitCode == 0);
}

QTEST_MAIN(TestClipboard)
#include "tst_clipboard.moc"
