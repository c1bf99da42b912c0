// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/clipboard/morvaneclipboard.h"

#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "model/animation.h"
#include "model/objectref.h"
#include "model/timeline.h"

#include <functional>

namespace Morvane {

void MorvaneClipboard::clear(bool items)
{
    mMode = items ? Items : Keys;
    mTimelines.clear();
    mKeys.clear();
}

void MorvaneClipboard::addTimeline(int index)
{
    if (index >= 0 && !mTimelines.contains(index))
        mTimelines.append(index);
}

void MorvaneClipboard::addRef(const ObjectRef *ref)
{
    const Timeline *timeline = ref ? ref->timeline() : nullptr;
    const Animation *animation = timeline ? timeline->parentAnimation() : nullptr;
    if (animation)
        addTimeline(animation->indexOfTimeline(timeline));
}

void MorvaneClipboard::addSpriteProxy(const ObjectGraphicsProxy *proxy)
{
    if (proxy)
        addTimeline(proxy->timelineIndex());
}

void MorvaneClipboard::addTimelineKey(int timeline, int time)
{
    const CopiedKey key{timeline, time};
    if (timeline >= 0 && !mKeys.contains(key))
        mKeys.append(key);
}

void MorvaneClipboard::addMainlineKey(int time)
{
    const CopiedKey key{-1, time};
    if (!mKeys.contains(key))
        mKeys.append(key);
}

void MorvaneClipboard::copySelectedSceneItems(MorvaneCanvasScene *scene, Children children)
{
    clear(true);
    if (!scene)
        return;
    std::function<void(const ObjectGraphicsProxy *)> addDescendants =
        [&](const ObjectGraphicsProxy *proxy) {
            for (const ObjectGraphicsProxy *child : proxy->childrenProxys()) {
                const bool wanted = children == Children::All
                                    || (children == Children::Bones && child->isBone())
                                    || (children == Children::Sprites && !child->isBone());
                if (wanted && child->isShownInPose() && child->isVisible())
                    addSpriteProxy(child);
                addDescendants(child);
            }
        };
    for (const ObjectGraphicsProxy *proxy : scene->selectedProxies()) {
        addSpriteProxy(proxy);
        if (const ObjectGraphicsProxy *parent = proxy->parentProxy())
            addSpriteProxy(parent);
        if (children != Children::None)
            addDescendants(proxy);
    }
}

} // namespace Morvane
