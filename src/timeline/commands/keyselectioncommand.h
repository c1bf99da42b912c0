// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "timeline/timelineview.h"

#include <QPointer>
#include <QUndoCommand>

namespace Morvane {

/// The timeline's key selection around a key edit, by row and key time. The
/// "before" command puts its selection back on undo, the "after" command on
/// redo; both rebuild the rows first, since the document has just changed.
class KeySelectionCommand : public QUndoCommand
{
public:
    KeySelectionCommand(TimelineView *view, const KeySelection &selection, bool isAfter,
                        QUndoCommand *parent = nullptr);

    void redo() override;
    void undo() override;

    const KeySelection &selection() const { return mSelection; }

private:
    void apply();

    QPointer<TimelineView> mView;
    KeySelection mSelection;
    bool mIsAfter;
};

} // namespace Morvane
