// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

// The gestures the panel tests share: clicking toolbar actions and tree items,
// answering the modal dialog an action opens.

#include "paneltesthelpers.h"

#include "canvas/canvaseditor.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>

#include <functional>

namespace Morvane::Testing {

/// Clicks the tool button of `action` on `bar`; false when the action has no
/// button or the button is disabled.
inline bool clickAction(QToolBar *bar, QAction *action)
{
    QWidget *button = action ? bar->widgetForAction(action) : nullptr;
    if (!button || !button->isEnabled())
        return false;
    QTest::mouseClick(button, Qt::LeftButton);
    return true;
}

/// Clicks `item` of `tree` (scrolling it into view first).
inline void clickItem(QTreeWidget *tree, QTreeWidgetItem *item)
{
    tree->scrollToItem(item);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier,
                      tree->visualItemRect(item).center());
}

/// Runs `answer` on the next modal dialog as soon as it is shown; `seen` (when
/// given) is set once it ran. The dialog must be shown within two seconds; the
/// wait ends with `context` (a test's panel), so it never reaches the next test.
inline void whenModalShown(QObject *context, std::function<void(QWidget *)> answer,
                           bool *seen = nullptr)
{
    auto *timer = new QTimer(context);
    timer->setInterval(10);
    auto *tries = new int(0);
    QObject::connect(timer, &QTimer::timeout, [timer, tries, answer, seen] {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal && ++*tries < 200)
            return;
        timer->stop();
        timer->deleteLater();
        delete tries;
        if (modal) {
            answer(modal);
            if (seen)
                *seen = true;
        }
    });
    timer->start();
}

/// Answers the next message box by clicking `button`.
inline void answerQuestion(QObject *context, QMessageBox::StandardButton button,
                           bool *seen = nullptr)
{
    whenModalShown(
        context, [button](QWidget *modal) {
            auto *box = qobject_cast<QMessageBox *>(modal);
            if (box && box->button(button))
                QTest::mouseClick(box->button(button), Qt::LeftButton);
            else
                modal->close();
        },
        seen);
}

/// Types `text` into the next input dialog and presses Enter. Only printable
/// ASCII can be typed; a text with anything else is pasted instead.
inline void answerText(QObject *context, const QString &text, bool *seen = nullptr)
{
    whenModalShown(
        context, [text](QWidget *modal) {
            auto *edit = modal->findChild<QLineEdit *>();
            if (!edit) {
                modal->close();
                return;
            }
            edit->selectAll();
            QTest::keyClick(edit, Qt::Key_Backspace);
            bool control = false;
            for (const QChar c : text)
                control = control || c.unicode() < 0x20 || c.unicode() > 0x7e;
            if (control)
                edit->insert(text);
            else
                QTest::keyClicks(edit, text);
            QTest::keyClick(edit, Qt::Key_Return);
        },
        seen);
}

/// Picks `choice` in the next item dialog and accepts it.
inline void answerItem(QObject *context, const QString &choice, bool *seen = nullptr)
{
    whenModalShown(
        context, [choice](QWidget *modal) {
            auto *dialog = qobject_cast<QInputDialog *>(modal);
            if (!dialog) {
                modal->close();
                return;
            }
            dialog->setTextValue(choice);
            dialog->accept();
        },
        seen);
}

/// The example in a canvas editor on screen, with `Panel` beside it.
template <typename Panel> using PanelFixture = Workbench<Panel>;

} // namespace Morvane::Testing
