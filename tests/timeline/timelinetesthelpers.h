// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

// The example project in a canvas editor with the timeline dock's editor on
// screen (offscreen), and the gestures the tests make on it.

#include "../canvas/canvastesthelpers.h"

#include "canvas/canvaseditor.h"
#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valkey.h"
#include "meta/valline.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "timeline/mainlineview.h"
#include "timeline/timelineeditor.h"
#include "timeline/timelinelabelview.h"
#include "timeline/timelineview.h"

#include <QApplication>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

namespace Morvane::Testing {

struct TimelineFixture
{
    explicit TimelineFixture(const QString &animationName = QStringLiteral("walk"))
        : editor(canvas.session())
    {
        canvas.setDocument(&hero.document);
        canvas.setCurrentAnimation(hero.animation(animationName));
        editor.resize(1100, 520);
        editor.show();
        editor.activateWindow();
        if (!QTest::qWaitForWindowExposed(&editor))
            qWarning("the timeline window was not exposed");
        // One pixel per millisecond, scrolled to the start: pointer x is time.
        view()->setZoomFactor(1.0);
        view()->horizontalScrollBar()->setValue(0);
        view()->verticalScrollBar()->setValue(0);
        TimelineView::snappingEnabled = false;
        MainlineView::useFramesAsUnits = false;
    }

    ~TimelineFixture()
    {
        TimelineView::snappingEnabled = false;
        MainlineView::useFramesAsUnits = false;
    }

    TimelineView *view() const { return editor.timelineView(); }
    QWidget *viewport() const { return editor.timelineView()->viewport(); }
    EditorSession *session() const { return canvas.session(); }
    Animation *animation() const { return session()->currentAnimation(); }

    /// The row of the timeline, value line or tag line ("Tags") named `name`,
    /// or the mainline for an empty name.
    TimelineGraphicsProxy *row(const QString &name = QString()) const
    {
        if (name.isEmpty())
            return view()->mainlineRow();
        for (TimelineGraphicsProxy *r : view()->rows()) {
            if (r->id().kind != RowId::Kind::Mainline && r->label() == name)
                return r;
        }
        return nullptr;
    }

    /// Gives the animation's own lines an int variable "mood" keyed at
    /// `times` and tag keys at the same times, and shows their rows.
    LineId addMoodAndTags(const QList<int> &times)
    {
        Entity *entity = hero.document.entity(0);
        entity->valInfoCollection().addValInfo(QStringLiteral("mood"), 0, VarType::Int, entity);
        const LineId mood{VarType::Int, entity->valInfoCollection().idFromName(QStringLiteral("mood"))};
        // Not through the stack: the tests count its steps.
        const int wave = hero.document.tagManager().addTag(QStringLiteral("wave"), nullptr);
        for (const int t : times) {
            animation()->ownLineHolder().lineForEditing(mood)->setKey(
                ValKey::create(VarType::Int, t, t / 100));
            animation()->ownLineHolder().tagLine().setKey(
                ValKey::create(VarType::Tag, t, QVariant::fromValue(QList<int>{wave})));
        }
        // The variable's declaration is set up, not one of the steps tested.
        hero.stack.clear();
        view()->refresh();
        return mood;
    }

    TimelineKeyGraphicsProxy *key(const QString &rowName, int time) const
    {
        TimelineGraphicsProxy *r = row(rowName);
        if (!r)
            return nullptr;
        for (TimelineKeyGraphicsProxy *k : r->keys()) {
            if (k->positionalTime() == time)
                return k;
        }
        return nullptr;
    }

    /// Viewport position of `time` on a row, at the height of its key markers.
    QPoint at(const TimelineGraphicsProxy *r, double time) const
    {
        return view()->mapFromScene(QPointF(time * view()->zoomFactor(), r->top() + 10));
    }

    void click(const TimelineGraphicsProxy *r, double time,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mouseClick(viewport(), Qt::LeftButton, modifiers, at(r, time));
    }

    /// Presses at `from` and moves to `to` (times on row `r`) in steps, without releasing.
    void dragWithoutRelease(const TimelineGraphicsProxy *r, double from, double to,
                            Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mousePress(viewport(), Qt::LeftButton, modifiers, at(r, from));
        move(at(r, (from + to) / 2), Qt::LeftButton, modifiers);
        move(at(r, to), Qt::LeftButton, modifiers);
    }

    void drag(const TimelineGraphicsProxy *r, double from, double to,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const QPoint end = at(r, to);
        dragWithoutRelease(r, from, to, modifiers);
        QTest::mouseRelease(viewport(), Qt::LeftButton, modifiers, end);
    }

    /// A mouse move with buttons held (QTest's own move carries no buttons).
    void move(const QPoint &pos, Qt::MouseButtons buttons = Qt::NoButton,
              Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QMouseEvent event(QEvent::MouseMove, pos, viewport()->mapToGlobal(pos), Qt::NoButton,
                          buttons, modifiers);
        QApplication::sendEvent(viewport(), &event);
    }

    void wheel(const QPoint &pos, int delta, Qt::KeyboardModifiers modifiers)
    {
        QWheelEvent event(pos, viewport()->mapToGlobal(pos), QPoint(), QPoint(0, delta),
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewport(), &event);
    }

    int selectedCount() const { return int(view()->selectedKeys().size()); }

    HeroProject hero;
    CanvasEditor canvas;
    TimelineEditor editor;
};

} // namespace Morvane::Testing
