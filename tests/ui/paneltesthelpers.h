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
#include <QTest>

namespace Morvane::Testing {

template <typename Panel> struct Workbench
{
    Workbench()
    {
        editor.resize(700, 500);
        editor.setDocument(&hero.document);
        panel = new Panel(editor.session());
        panel->resize(360, 520);
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

/// Replaces a spin box's text by typing and commits it with Enter.
inline void typeInto(QAbstractSpinBox *spin, const QString &text)
{
    spin->setFocus();
    QTest::keyClick(spin, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(spin, text);
    QTest::keyClick(spin, Qt::Key_Return);
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

/// Lets queued reactions to a gesture run.
inline void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

} // namespace Morvane::Testing
