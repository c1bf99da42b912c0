// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QCursor>
#include <QIcon>
#include <QKeySequence>
#include <QObject>
#include <QString>

class QGraphicsSceneMouseEvent;
class QKeyEvent;

namespace Morvane {

class MorvaneCanvasScene;

/// One canvas gesture family. The scene forwards its mouse and key events to
/// the active tool; a tool records its gesture once, on release, through the
/// scene's undo macro.
class AbstractTool : public QObject
{
    Q_OBJECT

public:
    AbstractTool(const QString &name, const QKeySequence &shortcut, MorvaneCanvasScene *scene,
                 QObject *parent = nullptr)
        : QObject(parent)
        , mName(name)
        , mShortcut(shortcut)
        , mScene(scene)
    {}

    QString name() const { return mName; }
    QKeySequence shortcut() const { return mShortcut; }
    QCursor cursor() const { return mCursor; }
    QString statusText() const { return mStatusText; }
    MorvaneCanvasScene *scene() const { return mScene; }

    virtual void activate() {}
    virtual void deactivate() {}
    virtual void mousePressed(QGraphicsSceneMouseEvent *event) = 0;
    virtual void mouseMoved(QGraphicsSceneMouseEvent *event) = 0;
    virtual void mouseReleased(QGraphicsSceneMouseEvent *event) = 0;
    virtual void keyPressed(QKeyEvent *event);
    virtual void keyReleased(QKeyEvent *event);

Q_SIGNALS:
    void cursorChanged(const QCursor &cursor);
    void statusTextChanged(const QString &text);

protected:
    void setCursor(const QCursor &cursor)
    {
        mCursor = cursor;
        Q_EMIT cursorChanged(cursor);
    }
    void setStatusText(const QString &text)
    {
        mStatusText = text;
        Q_EMIT statusTextChanged(text);
    }

private:
    QString mName;
    QKeySequence mShortcut;
    MorvaneCanvasScene *mScene;
    QCursor mCursor;
    QString mStatusText;
};

} // namespace Morvane
