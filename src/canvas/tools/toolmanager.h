// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "canvas/tools/abstracttool.h"

#include <QList>
#include <QObject>

class QAction;
class QActionGroup;

namespace Morvane {

/// Holds the canvas tools, one checkable action each (shortcuts are the
/// digits), and which one is active. Owns the tools and the actions.
class ToolManager : public QObject
{
    Q_OBJECT

public:
    explicit ToolManager(QObject *parent = nullptr);

    /// Takes ownership; the first registered tool becomes active.
    void registerTool(AbstractTool *tool);
    QList<AbstractTool *> tools() const { return mTools; }
    AbstractTool *activeTool() const { return mActive; }
    void setActiveTool(AbstractTool *tool);
    QList<QAction *> actions() const;

Q_SIGNALS:
    void activeToolChanged(Morvane::AbstractTool *tool);

private:
    QList<AbstractTool *> mTools;
    QList<QAction *> mActions;
    QActionGroup *mGroup;
    AbstractTool *mActive = nullptr;
};

} // namespace Morvane
