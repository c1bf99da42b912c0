// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/rigxdata.h"

#include <QList>
#include <QPointer>
#include <QUndoCommand>

#include <memory>

namespace Morvane {

class Animation;
class MorvaneCanvasScene;

/// Puts a whole animation in place of the one at the same place in its entity:
/// redo the "after" copy, undo a copy of the animation as it was when the
/// command was made. Found by entity and animation row on every redo and undo
/// (nothing happens when either is gone); the timelines find their object infos
/// by index, so object infos appended in the same macro may come and go. The
/// scene, when given, shows the new content at once.
class AnimationSnapshotCommand : public QUndoCommand
{
public:
    AnimationSnapshotCommand(MorvaneCanvasScene *scene, Animation *current,
                             std::unique_ptr<Animation> after, const QString &text,
                             QUndoCommand *parent = nullptr);
    ~AnimationSnapshotCommand() override;

    void redo() override;
    void undo() override;

private:
    struct Snapshot
    {
        std::unique_ptr<Animation> animation;
        QList<int> objectIndexes; // per timeline
    };
    Snapshot snapshot(std::unique_ptr<Animation> animation) const;
    void apply(const Snapshot &snapshot);

    QPointer<RigxData> mDocument;
    QPointer<MorvaneCanvasScene> mScene;
    int mEntity = -1;
    int mRow = -1;
    Snapshot mBefore;
    Snapshot mAfter;
};

} // namespace Morvane
