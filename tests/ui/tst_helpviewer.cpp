// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "../app/apptesthelpers.h"
#include "morvanewindow.h"
#include "tutorialdialog.h"
#include "ui/help/helpviewer.h"

#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QToolButton>

using namespace Morvane;

namespace {

// The links of the page shown, in document order, as written in the page.
QStringList linksOf(const QTextBrowser *browser)
{
    QStringList hrefs;
    for (QTextBlock block = browser->document()->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextCharFormat format = it.fragment().charFormat();
            if (format.isAnchor() && !format.anchorHref().isEmpty()
                && (hrefs.isEmpty() || hrefs.last() != format.anchorHref()))
                hrefs << format.anchorHref();
        }
    }
    return hrefs;
}

} // namespace

class TestHelpViewer : public QObject
{
    Q_OBJECT

private slots:
    void init() { mFixture.init(); }
    void cleanup() { mFixture.cleanup(); }
    void everyPageListed();
    void pages_data();
    void pages();
    void links_data();
    void links();
    void windowOpensIt();

private:
    Test::AppFixture mFixture;
};

void TestHelpViewer::everyPageListed()
{
    HelpViewer viewer;
    QStringList shipped = QDir(QStringLiteral(":/manual")).entryList(QDir::Files);
    QStringList listed = HelpViewer::pages();
    shipped.sort();
    listed.sort();
    QCOMPARE(listed, shipped);
    QCOMPARE(viewer.contents()->count(), int(listed.size()));
    QCOMPARE(viewer.currentPage(), QString("index.md"));
}

void TestHelpViewer::pages_data()
{
    QTest::addColumn<QString>("page");
    for (const QString &page : HelpViewer::pages())
        QTest::newRow(qPrintable(page)) << page;
}

// A click in the contents shows the page: its heading first, and real text after it.
void TestHelpViewer::pages()
{
    QFETCH(QString, page);
    HelpViewer viewer;
    viewer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&viewer));
    const int row = int(HelpViewer::pages().indexOf(page));
    QListWidget *contents = viewer.contents();
    const QRect rect = contents->visualItemRect(contents->item(row));
    QTest::mouseClick(contents->viewport(), Qt::LeftButton, {}, rect.center());
    QCOMPARE(viewer.currentPage(), page);
    QCOMPARE(contents->currentRow(), row);

    const QString title = HelpViewer::pageTitle(page);
    QVERIFY(title != page);
    QCOMPARE(contents->item(row)->text(), title);
    QCOMPARE(viewer.browser()->document()->firstBlock().text(), title);
    QVERIFY(viewer.windowTitle().endsWith(title));
    const QString text = viewer.browser()->toPlainText();
    QVERIFY2(text.size() > 400, qPrintable(page));
    // Markdown was read as Markdown: no heading marks or link brackets are left over.
    QVERIFY(!text.contains(QLatin1String("\n# ")));
    QVERIFY(!text.contains(QLatin1String("](")));
}

void TestHelpViewer::links_data()
{
    pages_data();
}

// Every link of every page leads to a page of the manual, followed with the keyboard as a
// user would (Tab to the link, Return), and Back returns.
void TestHelpViewer::links()
{
    QFETCH(QString, page);
    HelpViewer viewer;
    viewer.show();
    QVERIFY(QTest::qWaitForWindowExposed(&viewer));
    viewer.showPage(page);
    const QStringList hrefs = linksOf(viewer.browser());
    if (page == QLatin1String("index.md"))
        QVERIFY(hrefs.size() >= HelpViewer::pages().size() - 3);
    for (int i = 0; i < hrefs.size(); ++i) {
        const QUrl target = viewer.browser()->source().resolved(QUrl(hrefs.at(i)));
        QCOMPARE(target.scheme(), QString("qrc"));
        QVERIFY2(HelpViewer::pages().contains(target.fileName()), qPrintable(hrefs.at(i)));
        QVERIFY(!target.hasFragment());

        viewer.showPage(page);
        // From the top of the page, as when it was first opened.
        viewer.browser()->setTextCursor(QTextCursor(viewer.browser()->document()));
        viewer.browser()->setFocus();
        for (int tab = 0; tab <= i; ++tab)
            QTest::keyClick(viewer.browser(), Qt::Key_Tab);
        QCOMPARE(viewer.browser()->textCursor().charFormat().anchorHref(), hrefs.at(i));
        QTest::keyClick(viewer.browser(), Qt::Key_Return);
        QCOMPARE(viewer.currentPage(), target.fileName());
        QVERIFY(!viewer.browser()->toPlainText().isEmpty());
        QCOMPARE(viewer.contents()->currentItem()->data(Qt::UserRole).toString(),
                 target.fileName());

        auto *back = viewer.findChildren<QToolButton *>().first();
        QCOMPARE(back->text(), QString("Back"));
        QVERIFY(back->isEnabled());
        QTest::mouseClick(back, Qt::LeftButton);
        QCOMPARE(viewer.currentPage(), page);
    }
}

void TestHelpViewer::windowOpensIt()
{
    MorvaneWindow window(QStringLiteral("r4.1"), {});
    QVERIFY(!window.findChild<HelpViewer *>());
    window.findChild<QAction *>("actionHelp")->trigger();
    auto *viewer = window.findChild<HelpViewer *>();
    QVERIFY(viewer);
    QVERIFY(viewer->isVisible());
    QCOMPARE(viewer->currentPage(), QString("index.md"));
    // Asking again brings the same viewer back.
    viewer->showPage(QStringLiteral("canvas.md"));
    window.findChild<QAction *>("actionHelp")->trigger();
    QCOMPARE(window.findChildren<HelpViewer *>().size(), 1);
    QCOMPARE(viewer->currentPage(), QString("canvas.md"));
    viewer->close();

    // The getting-started dialog leads into the manual.
    auto *tutorial = new TutorialDialog(&window);
    tutorial->show();
    QPushButton *manual = nullptr;
    for (QPushButton *button : tutorial->findChildren<QPushButton *>()) {
        if (button->text() == QLatin1String("Open the Manual"))
            manual = button;
    }
    QVERIFY(manual);
    QTest::mouseClick(manual, Qt::LeftButton);
    QVERIFY(viewer->isVisible());
    QCOMPARE(viewer->currentPage(), QString("getting-started.md"));
}

QTEST_MAIN(TestHelpViewer)
#include "tst_helpviewer.moc"
