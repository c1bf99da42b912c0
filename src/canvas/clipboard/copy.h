// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "meta/lineid.h"
#include "model/rigxdata.h"

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QString>

#include <memory>

namespace Morvane {

class Animation;
class Entity;
class FileInfo;
class MorvaneCanvasScene;
class TimelineKey;

/// A key of an animation to copy: a timeline's key, or with `timeline` -1
/// the mainline key at `time` with every key that belongs to it.
struct CopiedKey
{
    int timeline = -1; // the timeline's index in the animation; -1: the mainline
    int time = 0;      // milliseconds
    bool operator==(const CopiedKey &) const = default;
};

/// A key of a variable or tag line to copy: of the entity's own lines
/// (`objectIndex` -1) or of an object's.
struct CopiedValueKey
{
    int objectIndex = -1;
    LineId line;
    int time = 0;
    bool operator==(const CopiedValueKey &) const = default;
};

/// What was copied, held as a small project of its own (kind "clipboard"):
/// one entity with copies of the source entity's object infos (at the same
/// indexes, so object ids keep their meaning) and variable declarations, and
/// three animations: "rel" (index 0) holds the copied keys with times from 0,
/// "abs" (1) the same keys at the times they were copied from, and "paste" (2)
/// the copy that the next paste takes (`pasteReadyClone`). The images the keys
/// show are files of this document named as in the source project; a paste
/// finds them in the target project by name. Variable and tag keys live in the
/// animations' value-line holders like in any project.
class Copy : public RigxData
{
public:
    Copy();
    ~Copy() override;

    /// Where the last copy came from (not owned; may be gone).
    MorvaneCanvasScene *realScene() const { return mScene; }

    Entity *copiedEntity() const;
    Animation *copiedRelAnimation() const;
    Animation *copiedAbsAnimation() const;
    Animation *pasteReadySlot() const;
    /// Whether the copy was taken from the canvas's current frame.
    bool isFrameCopy() const { return mFrameCopy; }
    /// Nothing copied: no mainline key and no variable or tag key.
    bool isEmptyCopy() const;
    /// How many timeline and value keys "rel" holds.
    int copiedKeyCount() const;

    /// Empties the copy: one entity with the three empty animations.
    void clearCopies();

    /// Copies the moment the scene shows: the state (blended between keys) of
    /// the timelines at `timelines` (indexes in the shown animation), or of
    /// every object shown on the canvas when the list is empty. Hidden objects
    /// never come along. False (and an empty copy) when nothing is shown.
    bool copySceneFrame(MorvaneCanvasScene *scene, const QList<int> &timelines = {});
    /// Appends the scene's current moment (the timelines at `timelines`) as one
    /// mainline key of "rel" at the scene's time; the references keep their
    /// parenting and drawing order where both ends were copied.
    void appendSceneAsMainlineKey(MorvaneCanvasScene *scene, const QList<int> &timelines);
    /// Copies keys of `animation` as they are, keeping their times apart, and
    /// variable and tag keys. A mainline key brings every timeline key and
    /// every variable and tag key at its time. False when none of the keys
    /// exists (the copy is then empty).
    bool copyKeys(Animation *animation, const QList<CopiedKey> &keys,
                  const QList<CopiedValueKey> &valueKeys = {});
    /// Moves everything in "rel" back so that its earliest key (mainline key
    /// or variable key) stands at 0.
    void normalizeKeysToZero();
    /// Makes "paste" a copy of "rel" whose mainline keys have fresh ids from
    /// the process-wide counter, so every paste brings ids of its own.
    void pasteReadyClone();

    /// The copy in the project's JSON form (the kind says "clipboard").
    QByteArray toJson();
    /// Reads a text made by `toJson`; null with `error` set when the text is
    /// not JSON, not a copy of ours, or malformed. Never reads half a copy.
    static std::unique_ptr<Copy> fromJson(const QByteArray &text, QString *error = nullptr);

    /// `info`'s file found (or with `create`, made) in `document` by folder and
    /// file name; an empty info when the key shows no file or it is not there.
    static FileInfo mapFile(const FileInfo &info, RigxData *document, bool create,
                            bool *missing = nullptr);
    /// `key` with its file (and the default-pivot link) mapped as `mapFile` does.
    static TimelineKey mapKeyFiles(const TimelineKey &key, RigxData *document, bool create,
                                   bool *missing = nullptr);

private:
    void startFrom(Entity *source, MorvaneCanvasScene *scene, int length);
    /// Keeps "abs" as "rel" is now, before "rel" is normalised.
    void takeAbsFromRel();
    void replaceAnimation(int index, Animation *animation);
    /// The key of "rel" for object `objectIndex` at `time` (a mainline key
    /// must stand there), made or overwritten with `values`.
    TimelineKey *putKey(int objectIndex, const TimelineKey &values, int time);

    QPointer<MorvaneCanvasScene> mScene;
    bool mFrameCopy = false;
};

} // namespace Morvane
