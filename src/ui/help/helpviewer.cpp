// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "helpviewer.h"

#include <QDesktopServices>
#include <QFile>
#include <QHBoxLayout>
#include <QListWidget>
#include <QSplitter>
#include <QStyle>
#include <QTextBrowser>
#include <QToolButton>
#include <QVBoxLayout>

// The editor library is static: its resources need registering once.
static void initManualResources()
{
    Q_INIT_RESOURCE(manual);
}

namespace Morvane {

namespace {

// The order a reader meets the program in; every page of the manual is here.
const char *const PageOrder[] = {
    "index.md",         "getting-started.md",  "canvas.md",       "timeline.md",
    "panels.md",        "export.md",           "sprite-sheets.md", "batch-conversion.md",
    "command-line.md",  "cli.md",              "editing.md",      "shortcuts.md",
};

} // namespace

QStringList HelpViewer::pages()
{
    QStringList list;
    for (const char *page : PageOrder)
        list << QLatin1String(page);
    return list;
}

QUrl HelpViewer::pageUrl(const QString &page)
{
    return QUrl(QStringLiteral("qrc:/manual/") + page);
}

QString HelpViewer::pageTitle(const QString &page)
{
    initManualResources();
    QFile file(QStringLiteral(":/manual/") + page);
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd()) {
            const QString line = QString::fromUtf8(file.readLine()).trimmed();
            if (line.startsWith(QLatin1String("# ")))
                return line.mid(2).trimmed();
        }
    }
    return page;
}

HelpViewer::HelpViewer(QWidget *parent)
    : QWidget(parent, Qt::Window)
    , mContents(new QListWidget(this))
    , mBrowser(new QTextBrowser(this))
    , mBack(new QToolButton(this))
    , mForward(new QToolButton(this))
{
    initManualResources();
    setObjectName(QStringLiteral("HelpViewer"));
    setWindowTitle(tr("Morvane Help"));

    for (const QString &page : pages()) {
        auto *item = new QListWidgetItem(pageTitle(page), mContents);
        item->setData(Qt::UserRole, page);
    }
    mContents->setMinimumWidth(mContents->sizeHintForColumn(0) + 24);

    // Pages are followed here so that they are always read as Markdown, whatever the
    // platform's file-type guess; links out of the manual go to the desktop's browser.
    mBrowser->setOpenLinks(false);
    connect(mBrowser, &QTextBrowser::anchorClicked, this, [this](const QUrl &link) {
        const QUrl url = mBrowser->source().resolved(link);
        if (url.scheme() == QLatin1String("qrc"))
            mBrowser->setSource(url, QTextDocument::MarkdownResource);
        else
            QDesktopServices::openUrl(url);
    });
    mBrowser->setSearchPaths({QStringLiteral(":/manual")});
    // Room around the text reads better than a page glued to the frame.
    mBrowser->document()->setDocumentMargin(16);

    mBack->setText(tr("Back"));
    mBack->setIcon(style()->standardIcon(QStyle::SP_ArrowBack));
    mBack->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mBack->setEnabled(false);
    mForward->setText(tr("Forward"));
    mForward->setIcon(style()->standardIcon(QStyle::SP_ArrowForward));
    mForward->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    mForward->setEnabled(false);
    auto *home = new QToolButton(this);
    home->setText(tr("Contents"));
    home->setToolButtonStyle(Qt::ToolButtonTextOnly);
    connect(mBack, &QToolButton::clicked, mBrowser, &QTextBrowser::backward);
    connect(mForward, &QToolButton::clicked, mBrowser, &QTextBrowser::forward);
    connect(home, &QToolButton::clicked, this, [this] { showPage(QStringLiteral("index.md")); });
    connect(mBrowser, &QTextBrowser::backwardAvailable, mBack, &QToolButton::setEnabled);
    connect(mBrowser, &QTextBrowser::forwardAvailable, mForward, &QToolButton::setEnabled);
    connect(mBrowser, &QTextBrowser::sourceChanged, this, &HelpViewer::followSource);
    connect(mContents, &QListWidget::itemActivated, this,
            [this](QListWidgetItem *item) { showPage(item->data(Qt::UserRole).toString()); });
    connect(mContents, &QListWidget::itemClicked, this,
            [this](QListWidgetItem *item) { showPage(item->data(Qt::UserRole).toString()); });

    auto *bar = new QHBoxLayout;
    bar->addWidget(mBack);
    bar->addWidget(mForward);
    bar->addWidget(home);
    bar->addStretch();

    auto *splitter = new QSplitter(this);
    splitter->addWidget(mContents);
    splitter->addWidget(mBrowser);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(splitter);
    resize(920, 640);
    splitter->setSizes({220, 700});

    showPage(QStringLiteral("index.md"));
}

HelpViewer *HelpViewer::showManual(QWidget *parent, const QString &page)
{
    auto *viewer = parent ? parent->findChild<HelpViewer *>(QString(), Qt::FindDirectChildrenOnly)
                          : nullptr;
    if (!viewer)
        viewer = new HelpViewer(parent);
    if (!page.isEmpty())
        viewer->showPage(page);
    viewer->show();
    viewer->raise();
    viewer->activateWindow();
    return viewer;
}

void HelpViewer::showPage(const QString &page)
{
    const int hash = int(page.indexOf(QLatin1Char('#')));
    QUrl url = pageUrl(hash < 0 ? page : page.left(hash));
    if (hash >= 0)
        url.setFragment(page.mid(hash + 1));
    mBrowser->setSource(url, QTextDocument::MarkdownResource);
}

QString HelpViewer::currentPage() const
{
    return mBrowser->source().fileName();
}

void HelpViewer::followSource(const QUrl &url)
{
    // The contents list marks the page shown, however it was reached.
    const QString page = url.fileName();
    for (int row = 0; row < mContents->count(); ++row) {
        if (mContents->item(row)->data(Qt::UserRole).toString() == page) {
            const QSignalBlocker blocker(mContents);
            mContents->setCurrentRow(row);
            break;
        }
    }
    setWindowTitle(tr("Morvane Help - %1").arg(pageTitle(page)));
}

} // namespace Morvane
