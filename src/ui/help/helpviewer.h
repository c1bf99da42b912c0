// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringList>
#include <QUrl>
#include <QWidget>

class QListWidget;
class QTextBrowser;
class QToolButton;

namespace Morvane {

/// The program's own manual: a contents list beside a browser showing the Markdown pages
/// shipped as resources under ":/manual". Links between pages and to headings work, as do
/// Back and Forward; links out of the manual open in the desktop's browser.
///
/// A window of its own (not modal); `showManual` keeps one per parent.
class HelpViewer : public QWidget
{
    Q_OBJECT

public:
    explicit HelpViewer(QWidget *parent = nullptr);

    /// Shows the viewer belonging to `parent` (made on first use) at `page` ("canvas.md",
    /// "timeline.md#curves"), or where it was when `page` is empty, and raises it.
    static HelpViewer *showManual(QWidget *parent, const QString &page = QString());

    /// The pages in contents order, as file names ("index.md" first).
    static QStringList pages();
    /// The resource address of `page` ("qrc:/manual/canvas.md").
    static QUrl pageUrl(const QString &page);
    /// A page's title: the text of its first heading, or its file name without one.
    static QString pageTitle(const QString &page);

    void showPage(const QString &page);
    /// The file name of the page shown ("canvas.md").
    QString currentPage() const;

    QTextBrowser *browser() const { return mBrowser; }
    QListWidget *contents() const { return mContents; }

private:
    void followSource(const QUrl &url);

    QListWidget *mContents;
    QTextBrowser *mBrowser;
    QToolButton *mBack;
    QToolButton *mForward;
};

} // namespace Morvane
