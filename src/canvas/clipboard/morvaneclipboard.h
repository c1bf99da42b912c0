// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "canvas/clipboard/copy.h"

#include <QList>

namespace Morvane {

class MorvaneCanvasScene;
class ObjectGraphicsProxy;
class ObjectRef;

/// Collects what a copy takes before `Copy` takes it: canvas items (mode
/// `Items`, as timeline indexes of the shown animation) or keys (mode `Keys`).
class MorvaneClipboard
{
public:
    enum Mode { Items = 1, Keys = 2 };
    /// Which descendants of the selected items come along.
    enum class Children { None, Sprites, Bones, All };

    /// Empties the collection; `items` chooses the mode.
    void clear(bool items);
    int mode() const { return mMode; }
    /// How many items or keys were collected.
    int count() const { return mMode == Items ? int(mTimelines.size()) : int(mKeys.size()); }

    void addRef(const ObjectRef *ref);
    void addSpriteProxy(const ObjectGraphicsProxy *proxy);
    void addTimelineKey(int timeline, int time);
    void addMainlineKey(int time);
    /// The scene's selection (mode `Items`): each selected item, the parent
    /// bone it hangs from (its pose is part of the item's), and the
    /// descendants `children` names.
    void copySelectedSceneItems(MorvaneCanvasScene *scene, Children children = Children::None);

    QList<int> timelines() const { return mTimelines; }
    QList<CopiedKey> keys() const { return mKeys; }

private:
    void addTimeline(int index);

    int mMode = Items;
    QList<int> mTimelines;
    QList<CopiedKey> mKeys;
};

} // namespace Morvane
