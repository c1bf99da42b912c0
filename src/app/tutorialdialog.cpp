// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "tutorialdialog.h"

#include "ui/help/helpviewer.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QSettings>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace Morvane {

TutorialDialog::TutorialDialog(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Getting Started"));
    setAttribute(Qt::WA_DeleteOnClose);

    auto *text = new QTextBrowser(this);
    text->setHtml(tr(
        "<h3>Welcome to Morvane</h3>"
        "<p>Morvane animates characters cut out of separate images: you link the images to a "
        "hierarchy of bones and set keys on a timeline.</p>"
        "<ol>"
        "<li><b>File &gt; New Project...</b> and choose the folder holding your images, or "
        "<b>File &gt; Open Project...</b> to open a <i>.rigx</i> or <i>.rigj</i> project.</li>"
        "<li>Save with <b>Ctrl+S</b>; <b>Save New Version</b> (Ctrl++) keeps numbered copies "
        "such as walk_000.rigx, walk_001.rigx.</li>"
        "<li>Morvane autosaves a copy named <i>project.autosave.rigx</i> beside your project "
        "(Edit &gt; Settings... sets how often).</li>"
        "</ol>"
        "<p>The manual (<b>Help &gt; Help</b>) describes the canvas gestures, the timeline, "
        "every panel, export, sprite sheets and the command-line tool. The <b>Shortcut "
        "List</b> in the Help menu lists every key.</p>"));
    auto *showAgain = new QCheckBox(tr("Show this at start-up"), this);
    showAgain->setChecked(QSettings().value("showVideoHelpOnStartup", true).toBool());
    connect(showAgain, &QCheckBox::toggled, this,
            [](bool on) { QSettings().setValue("showVideoHelpOnStartup", on); });

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    QPushButton *manual = buttons->addButton(tr("Open the Manual"), QDialogButtonBox::ActionRole);
    connect(manual, &QPushButton::clicked, this, [this] {
        HelpViewer::showManual(parentWidget() ? parentWidget() : this,
                               QStringLiteral("getting-started.md"));
        close();
    });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addWidget(showAgain);
    layout->addWidget(buttons);
    resize(520, 360);
}

} // namespace Morvane
