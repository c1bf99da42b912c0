// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "../app/apptesthelpers.h"
#include "canvas/canvaseditor.h"
#include "morvanewindow.h"
#include "ui/shortcuts/keyshortcutdockwidget.h"
#include "ui/shortcuts/shortcutclashes.h"

#include <QKeySequenceEdit>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QTableWidget>
#include <QTest>
#include <QToolBar>

using namespace Morvane;

namespace {

// A small window with every place an action's key can live: the window itself, a menu,
// two sibling panels (the first with a child) and a hidden tool bar.
struct Playground
{
    QMainWindow window;
    QWidget *central = new QWidget;
    QWidget *a = new QWidget(central);
    QWidget *aChild = new QWidget(a);
    QWidget *b = new QWidget(central);
    QMenu *menu = nullptr;
    QToolBar *hiddenBar = new QToolBar;

    Playground()
    {
        window.setCentralWidget(central);
        menu = window.menuBar()->addMenu(QStringLiteral("Menu"));
        window.addToolBar(hiddenBar);
        hiddenBar->hide();
    }

    QAction *add(const QString &text, const QString &key, const QString &where, bool enabled)
    {
        auto *action = new QAction(text, &window);
        action->setShortcut(QKeySequence(key));
        action->setEnabled(enabled);
        QWidget *host = where == "menu"      ? static_cast<QWidget *>(menu)
                        : where == "a"       ? a
                        : where == "aChild"  ? aChild
                        : where == "b"       ? b
                        : where == "hidden"  ? hiddenBar
                                             : static_cast<QWidget *>(&window);
        if (where == "a" || where == "aChild" || where == "b")
            action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        host->addAction(action);
        return action;
    }
};

QStringList shownActions(const KeyShortcutDockWidget *dock)
{
    QStringList shown;
    for (int row = 0; row < dock->table()->rowCount(); ++row) {
        if (!dock->table()->isRowHidden(row))
            shown << dock->table()->item(row, KeyShortcutDockWidget::ActionColumn)->text();
    }
    return shown;
}

} // namespace

class TestShortcuts : public QObject
{
    Q_OBJECT

private slots:
    void init() { mFixture.init(); }
    void cleanup() { mFixture.cleanup(); }
    void clashes_data();
    void clashes();
    void windowHasNoClash_data();
    void windowHasNoClash();
    void search_data();
    void search();
    void toggleKey();

private:
    Test::AppFixture mFixture;
};

void TestShortcuts::clashes_data()
{
    QTest::addColumn<QString>("firstKey");
    QTest::addColumn<QString>("firstWhere");
    QTest::addColumn<bool>("firstEnabled");
    QTest::addColumn<QString>("secondKey");
    QTest::addColumn<QString>("secondWhere");
    QTest::addColumn<bool>("clash");

    QTest::newRow("same key on the window") << "Ctrl+K" << "window" << true << "Ctrl+K" << "window" << true;
    QTest::newRow("different keys") << "Ctrl+K" << "window" << true << "Ctrl+L" << "window" << false;
    QTest::newRow("one disabled") << "Ctrl+K" << "window" << false << "Ctrl+K" << "window" << false;
    QTest::newRow("menu and window") << "Ctrl+K" << "menu" << true << "Ctrl+K" << "window" << true;
    QTest::newRow("window and a panel") << "F" << "window" << true << "F" << "a" << true;
    QTest::newRow("two sibling panels") << "F" << "a" << true << "F" << "b" << false;
    QTest::newRow("a panel and its child") << "F" << "a" << true << "F" << "aChild" << true;
    QTest::newRow("on a hidden bar only") << "Ctrl+K" << "hidden" << true << "Ctrl+K" << "window" << false;
    QTest::newRow("modifiers differ") << "Ctrl+Shift+C" << "window" << true << "Ctrl+Alt+C" << "menu" << false;
}

void TestShortcuts::clashes()
{
    QFETCH(QString, firstKey);
    QFETCH(QString, firstWhere);
    QFETCH(bool, firstEnabled);
    QFETCH(QString, secondKey);
    QFETCH(QString, secondWhere);
    QFETCH(bool, clash);
    Playground play;
    QAction *first = play.add("First", firstKey, firstWhere, firstEnabled);
    QAction *second = play.add("Second", secondKey, secondWhere, true);
    play.add("Bystander", "Ctrl+Q", "window", true);
    play.window.show();

    const QList<ShortcutClashes::Clash> found = ShortcutClashes::find(&play.window);
    QCOMPARE(found.size(), clash ? 1 : 0);
    if (clash) {
        QCOMPARE(found.first().key, QKeySequence(firstKey));
        QCOMPARE(found.first().actions, QList<QAction *>({first, second}));
        QCOMPARE(ShortcutClashes::describe(found), firstKey + ": First, Second");
    }

    // The list marks exactly the clashing rows.
    KeyShortcutDockWidget dock(&play.window);
    dock.fill(play.window.findChildren<QAction *>(), &play.window);
    for (int row = 0; row < dock.table()->rowCount(); ++row) {
        const QTableWidgetItem *item = dock.table()->item(row, 0);
        const bool marked = item->foreground().color() == QColor(Qt::red);
        QCOMPARE(marked, clash && (item->text() == "First" || item->text() == "Second"));
    }
}

void TestShortcuts::windowHasNoClash_data()
{
    QTest::addColumn<QString>("project");
    QTest::newRow("no project") << QString();
    QTest::newRow("example open") << QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero/hero.rigx");
}

// The window's actions and the canvas editor's, as the user meets them: no key may stand
// for two live actions at once.
void TestShortcuts::windowHasNoClash()
{
    QFETCH(QString, project);
    QStringList arguments = {QStringLiteral("morvane")};
    if (!project.isEmpty())
        arguments << project;
    MorvaneWindow window(QStringLiteral("r4.1"), arguments);
    QCOMPARE(window.projectFilePath(), project);
    QVERIFY(window.canvas()->isEnabled() == !project.isEmpty());
    const QList<ShortcutClashes::Clash> clashes = ShortcutClashes::find(&window);
    QVERIFY2(clashes.isEmpty(), qPrintable(ShortcutClashes::describe(clashes)));

    // Every live action with a key is in the list, under its text.
    auto *dock = window.findChild<KeyShortcutDockWidget *>();
    QStringList listed;
    for (int row = 0; row < dock->table()->rowCount(); ++row)
        listed << dock->table()->item(row, 0)->text();
    for (QAction *action : window.findChildren<QAction *>()) {
        if (ShortcutClashes::isLive(action, &window) && !action->text().isEmpty())
            QVERIFY2(listed.contains(action->text().remove('&')), qPrintable(action->text()));
    }
}

void TestShortcuts::search_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("mustShow");
    QTest::addColumn<QString>("everyRowContains");
    QTest::newRow("by text") << "zoom" << QStringList({"Zoom In", "Zoom Out", "Restore Zoom"}) << "zoom";
    QTest::newRow("by key text") << "Ctrl+Alt+Space" << QStringList({"Zoom Out"}) << QString();
    // A second key of an action is listed and found too (one of Redo's standard keys).
    QTest::newRow("by a second key") << "Alt+Shift+Backspace" << QStringList({"Redo"}) << QString();
    QTest::newRow("nothing matches") << "no such action" << QStringList() << QString();
}

void TestShortcuts::search()
{
    QFETCH(QString, typed);
    QFETCH(QStringList, mustShow);
    QFETCH(QString, everyRowContains);
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    auto *dock = window.findChild<KeyShortcutDockWidget *>();
    dock->show();
    const int all = dock->shownRowCount();
    QVERIFY(all > 20);
    // The canvas tools' keys work while the canvas has the focus.
    for (int row = 0; row < dock->table()->rowCount(); ++row) {
        const QString text = dock->table()->item(row, KeyShortcutDockWidget::ActionColumn)->text();
        const QString where = dock->table()->item(row, KeyShortcutDockWidget::WhereColumn)->text();
        if (text == QLatin1String("Bone") || text == QLatin1String("Pan"))
            QCOMPARE(where, QString("Canvas"));
        if (text == QLatin1String("Save Project"))
            QCOMPARE(where, QString("Window"));
    }

    QTest::keyClicks(dock->searchField(), typed);
    const QStringList shown = shownActions(dock);
    QCOMPARE(dock->shownRowCount(), int(shown.size()));
    for (const QString &text : mustShow)
        QVERIFY2(shown.contains(text), qPrintable(shown.join(", ")));
    if (mustShow.isEmpty())
        QVERIFY(shown.isEmpty());
    for (const QString &text : shown) {
        if (!everyRowContains.isEmpty())
            QVERIFY2(text.contains(everyRowContains, Qt::CaseInsensitive), qPrintable(text));
    }
    QTest::keyClick(dock->searchField(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(dock->searchField(), Qt::Key_Delete);
    QCOMPARE(dock->shownRowCount(), all);

    // Pressing a key in the key field leaves what that key does.
    QTest::keyClick(dock->keyField(), Qt::Key_Space, Qt::ControlModifier);
    QTRY_COMPARE(shownActions(dock), QStringList({"Zoom In"}));
}

void TestShortcuts::toggleKey()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    auto *dock = window.findChild<KeyShortcutDockWidget *>();
    QVERIFY(!dock->isVisible());
    QTest::keyClick(&window, Qt::Key_Escape, Qt::ShiftModifier);
    QTRY_VERIFY(dock->isVisible());
}

QTEST_MAIN(TestShortcuts)
#include "tst_shortcuts.moc"
