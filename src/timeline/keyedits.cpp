// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/keyedits.h"

#include "canvas/commands/canvascommands.h"
#include "canvas/morvanecanvasscene.h"
#include "meta/valkey.h"
#include "meta/valline.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/commands/animationcommands.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QCoreApplication>
#include <QHash>
#include <QSet>
#include <QUndoStack>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace Morvane::KeyEdits {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("KeyEdits", text);
}

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}

QString lineName(const Timeline *tl)
{
    const Object *o = tl ? tl->object() : nullptr;
    return o ? o->name() : (tl ? tl->name() : QString());
}

// Opens a macro on the document's stack; without one the commands are
// applied one by one as they are pushed, which leaves the same document.
class Macro
{
public:
    Macro(RigxData *document, const QString &text)
        : mDocument(document)
        , mStack(document ? document->undoStack() : nullptr)
    {
        if (mStack)
            mStack->beginMacro(text);
    }
    ~Macro()
    {
        if (mStack)
            mStack->endMacro();
    }
    void push(QUndoCommand *command) { RigxData::pushUndo(mDocument, command); }

private:
    RigxData *mDocument;
    QUndoStack *mStack;
};


// Deletes mainline keys (with their timeline keys) and timeline keys; the
// references of the remaining mainline keys that showed a deleted key show
// the key of that timeline in force at their time.
void removeKeys(Animation *anim, const QSet<MainlineKey *> &mainKeys,
                const QSet<TimelineKey *> &timeKeys)
{
    QSet<const TimelineKey *> doomed(timeKeys.begin(), timeKeys.end());
    for (const MainlineKey *mk : mainKeys) {
        for (int i = 0; i < mk->childTimeKeyCount(); ++i)
            doomed.insert(mk->childTimeKey(i));
    }
    QList<QPair<ObjectRef *, Timeline *>> orphans;
    for (int m = 0; m < anim->mainlineKeyCount(); ++m) {
        MainlineKey *mk = anim->mainlineKey(m);
        if (mainKeys.contains(mk))
            continue;
        for (int i = 0; i < mk->refCount(); ++i) {
            ObjectRef *r = mk->ref(i);
            if (doomed.contains(r->key()))
                orphans.append({r, r->timeline()});
        }
    }
    for (TimelineKey *k : timeKeys) {
        if (Timeline *tl = k->parentTimeline())
            tl->removeKey(k, true);
    }
    for (MainlineKey *mk : mainKeys)
        anim->deleteMainlineKey(mk, true);
    for (const auto &[ref, tl] : orphans) {
        if (tl && tl->keyCount() > 0)
            ref->setKey(tl->keyInForce(ref->parentMainlineKey()->currentTime()));
    }
}

// Records a change made directly to the animation (after `before` was taken)
// as one macro: selection, the whole animation before and after, selection.
// Records what `change` does to the animation as one macro: the canvas
// selection, the whole animation before and after, the selection.
// With `variables`, the variables are shown again once either way (value and
// tag lines changed).
template<typename Change>
void recordChange(MorvaneCanvasScene *scene, Animation *anim, const QString &text, Change change,
                  bool variables = false)
{
    auto *start = new ObjectSelectionCommand(scene, false);
    auto *command = new ChangeAnimationCommand(anim, QString());
    change();
    command->noteAfter();
    RigxData *document = scene->model();
    Macro macro(document, text);
    macro.push(start);
    if (variables)
        macro.push(new RefreshVariablesCommand(document, false));
    macro.push(command);
    if (variables)
        macro.push(new RefreshVariablesCommand(document, true));
    macro.push(new ObjectSelectionCommand(scene, true));
}

// A key of a value or tag line: its line (in the animation's holders, which
// stay put while the animation changes) and its time.
struct LineKey
{
    ValLine *line;
    int time;
    bool operator==(const LineKey &) const = default;
};

struct Resolved
{
    QSet<MainlineKey *> mainKeys;
    QSet<TimelineKey *> timeKeys;
    QList<MainlineKey *> mainOrder; // as named, for curves
    QList<TimelineKey *> timeOrder;
    QList<LineKey> lineKeys;
};

bool resolveLineKey(Animation *anim, const KeyId &id, Resolved *out, QString *error)
{
    ValueLineHolder *holder = id.owner < 0 ? &anim->ownLineHolder()
                                           : anim->objectLineHolder(id.owner);
    ValLine *line = holder ? holder->line(id.line) : nullptr;
    if (!line || !line->keyAtTime(id.time)) {
        setError(error, id.line.isTagLine() ? tr("no tag key at %1 ms").arg(id.time)
                                            : tr("no value key at %1 ms").arg(id.time));
        return false;
    }
    const LineKey key{line, id.time};
    if (!out->lineKeys.contains(key))
        out->lineKeys.append(key);
    return true;
}

bool resolve(Animation *anim, const QList<KeyId> &keys, Resolved *out, QString *error)
{
    for (const KeyId &id : keys) {
        if (id.isLineKey()) {
            if (!resolveLineKey(anim, id, out, error))
                return false;
            continue;
        }
        if (id.timeline < 0) {
            MainlineKey *mk = anim->mainlineKeyAtExactTime(id.time);
            if (!mk) {
                setError(error, tr("no mainline key at %1 ms").arg(id.time));
                return false;
            }
            if (!out->mainKeys.contains(mk))
                out->mainOrder.append(mk);
            out->mainKeys.insert(mk);
            continue;
        }
        const Timeline *tl = anim->timeline(id.timeline);
        if (!tl) {
            setError(error, tr("no timeline %1").arg(id.timeline));
            return false;
        }
        TimelineKey *k = tl->actualKeyFromTime(id.time);
        if (!k) {
            setError(error, tr("no key of \"%1\" at %2 ms").arg(lineName(tl)).arg(id.time));
            return false;
        }
        if (!out->timeKeys.contains(k))
            out->timeOrder.append(k);
        out->timeKeys.insert(k);
    }
    return true;
}

Animation *animationOf(MorvaneCanvasScene *scene, QString *error)
{
    Animation *anim = scene ? scene->currentAnimation() : nullptr;
    if (!anim)
        setError(error, tr("no animation is shown"));
    return anim;
}

} // namespace

void planRowMove(std::vector<PlannedKey> &keys, bool isMainline, const QSet<int> &riding,
                 int length, const std::function<int(int)> &target, bool forward)
{
    const size_t n = keys.size();
    for (size_t j = 0; j < n; ++j) {
        PlannedKey &key = keys[forward ? n - 1 - j : j];
        if (!key.selected)
            continue;
        const int t = std::clamp(target(key.original), 0, std::max(0, length));
        if (t == key.position)
            continue;
        if (!isMainline && !riding.contains(key.original)) {
            const bool taken = std::any_of(keys.begin(), keys.end(), [&](const PlannedKey &other) {
                return &other != &key && other.position == t;
            });
            if (taken)
                continue;
        }
        key.position = t;
    }
}

int scaledTime(int original, int first, double factor)
{
    return first + int((original - first) * factor);
}

bool scaleKeyTimes(MorvaneCanvasScene *scene, const QList<KeyId> &keys, double factor,
                   QString *error)
{
    Animation *anim = animationOf(scene, error);
    if (!anim)
        return false;
    if (!(factor > 0) || !std::isfinite(factor)) {
        setError(error, tr("the factor must be a number above 0"));
        return false;
    }
    if (keys.isEmpty()) {
        setError(error, tr("no key to scale"));
        return false;
    }
    Resolved found;
    if (!resolve(anim, keys, &found, error))
        return false;
    if (!found.lineKeys.isEmpty()) {
        setError(error, tr("value and tag keys are scaled in the timeline only"));
        return false;
    }
    // Selecting a mainline key selects the timeline keys at its time.
    QSet<int> riding;
    for (const MainlineKey *mk : std::as_const(found.mainOrder))
        riding.insert(mk->currentTime());
    int first = std::numeric_limits<int>::max();
    for (const int t : std::as_const(riding))
        first = std::min(first, t);
    for (const TimelineKey *k : std::as_const(found.timeOrder))
        first = std::min(first, k->time(true));

    const auto target = [first, factor](int original) { return scaledTime(original, first, factor); };
    const int length = anim->length();
    KeyTimeChangeInstructionSet set;
    std::vector<PlannedKey> row;
    for (int i = 0; i < anim->mainlineKeyCount(); ++i) {
        MainlineKey *mk = anim->mainlineKey(i);
        row.push_back({mk->currentTime(), mk->currentTime(), found.mainKeys.contains(mk)});
    }
    planRowMove(row, true, riding, length, target, factor > 1.0);
    for (const PlannedKey &k : row)
        set.appendKeyChange(0, k.original, k.position);
    for (int t = 0; t < anim->timelineCount(); ++t) {
        const Timeline *tl = anim->timeline(t);
        row.clear();
        for (int i = 0; i < tl->keyCount(); ++i) {
            TimelineKey *k = tl->key(i);
            const int time = k->time(true);
            row.push_back({time, time, found.timeKeys.contains(k) || riding.contains(time)});
        }
        planRowMove(row, false, riding, length, target, factor > 1.0);
        for (const PlannedKey &k : row)
            set.appendKeyChange(t + 1, k.original, k.position);
    }
    if (!recordKeyMove(scene, set, TimelineFilter(), nullptr, nullptr)) {
        setError(error, tr("no key moves"));
        return false;
    }
    return true;
}

bool recordKeyMove(MorvaneCanvasScene *scene, const KeyTimeChangeInstructionSet &set,
                   const TimelineFilter &filter, QUndoCommand *selectionBefore,
                   QUndoCommand *selectionAfter, const std::function<void()> &enactOtherLines)
{
    std::unique_ptr<QUndoCommand> before(selectionBefore);
    std::unique_ptr<QUndoCommand> after(selectionAfter);
    Animation *anim = scene ? scene->currentAnimation() : nullptr;
    if (!anim || !set.movesAnything())
        return false;
    RigxData *document = scene->model();
    Macro macro(document, tr("keys moved"));
    if (before)
        macro.push(before.release());
    macro.push(new ObjectSelectionCommand(scene, false, false, true));
    macro.push(new RefreshVariablesCommand(document, false));
    anim->setLinesToMovedLinesCommand(set, filter);
    if (enactOtherLines)
        enactOtherLines();
    macro.push(new RefreshVariablesCommand(document, true));
    if (after)
        macro.push(after.release());
    macro.push(new ObjectSelectionCommand(scene, true, false, true));
    return true;
}

bool deleteKeys(MorvaneCanvasScene *scene, const QList<KeyId> &keys, QString *error)
{
    Animation *anim = animationOf(scene, error);
    if (!anim)
        return false;
    if (keys.isEmpty()) {
        setError(error, tr("no key to delete"));
        return false;
    }
    Resolved found;
    if (!resolve(anim, keys, &found, error))
        return false;
    if (!found.mainKeys.isEmpty() && found.mainKeys.size() >= anim->mainlineKeyCount()) {
        setError(error, tr("the mainline key at %1 ms is mandatory (the only one left)")
                            .arg((*found.mainKeys.begin())->currentTime()));
        return false;
    }
    // A timeline keeps at least one key.
    QHash<const Timeline *, int> losing;
    QSet<const TimelineKey *> counted;
    auto count = [&](const TimelineKey *k) {
        if (k && !counted.contains(k)) {
            counted.insert(k);
            ++losing[k->parentTimeline()];
        }
    };
    for (const TimelineKey *k : std::as_const(found.timeOrder))
        count(k);
    for (const MainlineKey *mk : std::as_const(found.mainOrder)) {
        for (int i = 0; i < mk->childTimeKeyCount(); ++i)
            count(mk->childTimeKey(i));
    }
    for (auto it = losing.cbegin(); it != losing.cend(); ++it) {
        if (it.key() && it.value() >= it.key()->keyCount()) {
            const TimelineKey *last = nullptr;
            for (const TimelineKey *k : counted) {
                if (k->parentTimeline() == it.key())
                    last = k;
            }
            setError(error, tr("the key of \"%1\" at %2 ms is mandatory (the only key of its "
                               "timeline)")
                                .arg(lineName(it.key()))
                                .arg(last ? last->time(true) : 0));
            return false;
        }
    }

    // Named keys count; the timeline, value and tag keys going with a
    // mainline key do not.
    QSet<int> mainTimes;
    for (const MainlineKey *mk : std::as_const(found.mainOrder))
        mainTimes.insert(mk->currentTime());
    int total = int(found.timeKeys.size()) + int(found.mainKeys.size());
    for (const LineKey &k : std::as_const(found.lineKeys))
        total += mainTimes.contains(k.time) ? 0 : 1;
    recordChange(
        scene, anim, total == 1 ? tr("key deleted") : tr("keys deleted"),
        [&] {
            removeKeys(anim, found.mainKeys, found.timeKeys);
            for (const LineKey &k : std::as_const(found.lineKeys))
                k.line->deleteKeyAtTime(k.time);
        },
        !found.lineKeys.isEmpty());
    return true;
}

bool changeCurve(MorvaneCanvasScene *scene, const QList<KeyId> &keys, const TweenInfo &tween,
                 QString *error)
{
    Animation *anim = animationOf(scene, error);
    if (!anim)
        return false;
    Resolved found;
    if (!resolve(anim, keys, &found, error))
        return false;
    if (keys.isEmpty()) {
        setError(error, tr("no key to change"));
        return false;
    }
    for (const LineKey &k : std::as_const(found.lineKeys)) {
        if (!k.line->keyAtTime(k.time)->isTweenable()) {
            setError(error, k.line->type() == VarType::Tag
                                ? tr("the tag key at %1 ms has no curve").arg(k.time)
                                : tr("the value key at %1 ms has no curve").arg(k.time));
            return false;
        }
    }
    recordChange(
        scene, anim, tr("curve changed"),
        [&] {
            for (MainlineKey *mk : std::as_const(found.mainOrder))
                mk->setCurve(tween);
            for (TimelineKey *k : std::as_const(found.timeOrder))
                k->setCurve(tween);
            for (const LineKey &k : std::as_const(found.lineKeys))
                k.line->keyAtTime(k.time)->setCurve(tween);
        },
        !found.lineKeys.isEmpty());
    return true;
}

bool setAnimationLength(MorvaneCanvasScene *scene, int lengthMs, QString *error)
{
    Animation *anim = animationOf(scene, error);
    if (!anim)
        return false;
    if (lengthMs < 0) {
        setError(error, tr("a length of %1 ms is below 0").arg(lengthMs));
        return false;
    }
    QSet<MainlineKey *> mainKeys;
    for (int i = 0; i < anim->mainlineKeyCount(); ++i) {
        MainlineKey *mk = anim->mainlineKey(i);
        // The first key stays whatever its time: the mainline is never empty.
        if (i > 0 && mk->currentTime() > lengthMs)
            mainKeys.insert(mk);
    }
    QSet<TimelineKey *> timeKeys;
    for (int t = 0; t < anim->timelineCount(); ++t) {
        const Timeline *tl = anim->timeline(t);
        for (int i = tl->keyCount() - 1; i >= 0 && tl->key(i)->time(true) > lengthMs; --i) {
            TimelineKey *k = tl->key(i);
            if (!mainKeys.contains(k->mainKey()))
                timeKeys.insert(k);
        }
    }
    recordChange(scene, anim, tr("animation length changed"), [&] {
        removeKeys(anim, mainKeys, timeKeys);
        anim->deleteEmptyTimelines(true);
        anim->setLength(lengthMs);
        if (anim->loopTo() > lengthMs)
            anim->setLoopTo(lengthMs);
    });
    return true;
}

bool cloneAnimation(MorvaneCanvasScene *scene, QString *error)
{
    Animation *anim = animationOf(scene, error);
    if (!anim)
        return false;
    if (!anim->parentEntity()) {
        setError(error, tr("the animation belongs to no entity"));
        return false;
    }
    RigxData::pushUndo(scene->model(), new CloneAnimationCommand(anim));
    return true;
}

} // namespace Morvane::KeyEdits
