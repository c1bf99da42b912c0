// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/tools/toolmanager.h"

#include <QAction>
#include <QActionGroup>
#include <QKeyEvent>

namespace Morvane {

void AbstractTool::keyPressed(QKeyEvent *event)
{
    event->ignore();
}

void AbstractTool::keyReleased(QKeyEvent *event)
{
    event->ignore();
}

ToolManager::ToolManager(QObject *parent)
    : QObject(parent)
    , mGroup(new QActionGroup(this))
{
    mGroup->setExclusive(true);
}

void ToolManager::registerTool(AbstractTool *tool)
{
    tool->setParent(this);
    mTools.append(tool);
    auto *action = new QAction(tool->name(), this);
    action->setCheckable(true);
    action->setShortcut(tool->shortcut());
    action->setToolTip(tool->name() + QLatin1String(" (") + tool->shortcut().toString() + QLatin1Char(')'));
    mGroup->addAction(action);
    mActions.append(action);
    connect(action, &QAction::triggered, this, [this, tool] { setActiveTool(tool); });
    if (!mActive)
        setActiveTool(tool);
}

void ToolManager::setActiveTool(AbstractTool *tool)
{
    if (tool == mActive)
        return;
    if (mActive)
        mActive->deactivate();
    mActive = tool;
    const int i = int(mTools.indexOf(tool));
    if (i >= 0)
        mActions[i]->setChecked(true);
    if (mActive)
        mActive->activate();
    Q_EMIT activeToolChanged(tool);
}

QList<QAction *> ToolManager::actions() const
{
    return mActions;
}

} // namespace Morvane
