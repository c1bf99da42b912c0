// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

// The example project in a canvas editor with one panel beside it, both on
// screen (offscreen), following the editor's session.

#include "../canvas/canvastesthelpers.h"

#include "canvas/canvaseditor.h"
#include "canvas/editorsession.h"
#include "canvas/morvanegraphicsview.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "model/timeline.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>

namespace Morvane::Testing {

template <typename Panel> struct Workbench
{
    Workbench()
    {
        editor.resize(700, 500);
        editor.setDocument(&hero.document);
        editor.show();
        panel = new Panel(editor.session());
        panel->resize(360, 560);
        panel->show();
        panel->activateWindow();
        if (!QTest::qWaitForWindowActive(panel))
            qWarning("the panel did not become active");
    }
    ~Workbench() { delete panel; }

    MorvaneCanvasScene *scene() const { return editor.scene(); }
    EditorSession *session() const { return editor.session(); }

    void show(const QString &animation, int time)
    {
        editor.setCurrentAnimation(hero.animation(animation));
        editor.setCurrentTime(time);
    }

    ObjectGraphicsProxy *proxy(const QString &name) const { return scene()->idProxy(name); }

    /// Selects the named objects on the canvas, in this order.
    bool select(const QStringList &names)
    {
        QList<ObjectGraphicsProxy *> proxies;
        for (const QString &name : names) {
            if (ObjectGraphicsProxy *p = proxy(name))
                proxies.append(p);
            else
                return false;
        }
        session()->setSelection(proxies);
        return true;
    }

    Timeline *timeline(const QString &name) const
    {
        const ObjectGraphicsProxy *p = proxy(name);
        return p ? session()->currentAnimation()->timeline(p->timelineIndex()) : nullptr;
    }

    HeroProject hero;
    CanvasEditor editor;
    Panel *panel = nullptr;
};

/// Replaces a field's text (a spin box, a line edit) by typing and commits it
/// with Enter.
inline void typeInto(QWidget *field, const QString &text)
{
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

/// Lets queued reactions to a gesture run.
inline void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

/// Edits the current item of a list, tree or table as a user does: F2, the
/// text replaced, Enter. Only printable ASCII is typed; anything else is
/// inserted. False when no editor opened.
inline bool editCurrent(QAbstractItemView *view, const QString &text)
{
    // A popup closed just before may have taken the window's activation.
    view->window()->activateWindow();
    if (!QTest::qWaitForWindowActive(view->window()))
        return false;
    view->setFocus();
    QTest::keyClick(view, Qt::Key_F2);
    QWidget *editor = QApplication::focusWidget();
    auto *line = qobject_cast<QLineEdit *>(editor);
    if (!editor || editor == view)
        return false;
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    bool control = false;
    for (const QChar c : text)
        control = control || c.unicode() < 0x20 || c.unicode() > 0x7e;
    if (control && line) {
        line->del();
        line->insert(text);
    } else {
        QTest::keyClicks(editor, text);
    }
    QTest::keyClick(editor, Qt::Key_Return);
    settle();
    return true;
}

/// Picks the entry holding `data` the way a user does with the keyboard:
/// opens the list, walks to the entry, confirms with Enter (one choice, one
/// `activated`). False when there is none.
inline bool pickByKeys(QComboBox *box, const QVariant &data)
{
    const int target = box->findData(data);
    if (target < 0)
        return false;
    box->setFocus();
    box->showPopup();
    QAbstractItemView *list = box->view();
    if (!list->currentIndex().isValid())
        list->setCurrentIndex(box->model()->index(box->currentIndex(), 0));
    for (int guard = 0; list->currentIndex().row() < target && guard < 50; ++guard)
        QTest::keyClick(list, Qt::Key_Down);
    for (int guard = 0; list->currentIndex().row() > target && guard < 50; ++guard)
        QTest::keyClick(list, Qt::Key_Up);
    QTest::keyClick(list, Qt::Key_Return);
    return box->currentIndex() == target;
}

} // namespace Morvane::Testing
