// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectsaveoptions.h"
#include "io/projectsink.h"

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace Morvane {

class Animation;
class Entity;
class File;
class Folder;
class MainlineKey;
class Object;
class ObjectRef;
class RigxData;
class Timeline;
class TimelineKey;
class TweenInfo;

/// Walks a document and sends it to a sink in file order: the one place that knows the
/// elements, their order, the number forms, the omission rules and the file's coordinate
/// conventions (y up, counter-clockwise angles, pivot y from the bottom).
///
/// Writing has one intended side effect on the document, made before anything is emitted:
/// key angles are normalised into 0..360. Bone references are written depth first, parents
/// before children, without reordering the document's. Ids are written as positions among
/// what is written: timelines without keys, and missing images that nothing uses, are left out of
/// the file but stay in the document, where the undo stack's addresses may still need them.
class ProjectWriter
{
public:
    ProjectWriter(RigxData &document, ProjectSink &sink, const ProjectSaveOptions &options);

    /// Called with how much of the document has been written, 0..100 by the share of
    /// timeline keys, each time that share grows by a percent (never per key); 100 last.
    void setProgress(std::function<void(int percent)> progress)
    {
        mProgress = std::move(progress);
    }

    void write();

    /// Whether turning from model angle `from` to `to` the shorter way is clockwise.
    static bool isClockwise(double from, double to);
    /// `angle` brought into 0..360 the way saving stores it back (360 stays 360).
    static double normalizedAngle(double angle);

private:
    using Precision = ProjectSink::Precision;
    using FilePosition = QPair<int, int>; // folder index, file index

    // Where a mainline key reference points: its timeline's index and the key's index.
    struct RefTarget
    {
        const TimelineKey *key = nullptr;
        const Timeline *timeline = nullptr;
        int timelineIndex = -1;
        int keyIndex = -1;
    };

    void indexFiles();
    bool filePosition(const File *file, FilePosition *position) const;
    /// False when the reference's key or timeline is gone or not in the animation written.
    bool refTarget(const ObjectRef &ref, RefTarget *target);
    /// The written id of `ref`'s parent bone reference, -1 when it has none written so far.
    int writtenParentId(const MainlineKey &key, const ObjectRef &ref) const;
    void collectFrames(const Entity &entity);
    void keysWritten(int count);

    void writeRoot();
    void writeAtlases();
    void writeFolder(const Folder &folder, const std::vector<const File *> &files, int index);
    void writeFile(const File &file, int index);
    void writeEntity(Entity &entity, int index);
    void writeObjInfo(const Entity &entity, const Object &object);
    void writeFrames(const Object &object);
    void writeAnimation(Animation &animation, int index);
    void writeMainline(Animation &animation);
    void writeMainlineKey(MainlineKey &key, int index);
    void writeTimeline(Timeline &timeline, int index);
    /// Objects that have value lines in `animation` but no timeline there.
    std::vector<const Object *> objectsWithLinesOnly(const Animation &animation) const;
    void writeLinesOnlyTimeline(const Animation &animation, const Object &object, int id);
    void writeTimelineKey(const Timeline &timeline, int index);
    void writeKeyContent(const Timeline &timeline, const TimelineKey &key);
    void writeSoundAttributes(const TimelineKey &key);
    void writeCurve(const TweenInfo &curve);
    /// Whether the text the sink writes for model value `value` reads back as `omitted`.
    bool readsBackAs(double value, Precision precision, NumberMapping mapping,
                     double omitted) const;
    /// Writes the attribute unless its text reads back as `omitted`, the reader's default.
    void optionalNumber(std::string_view name, double value, Precision precision,
                        NumberMapping mapping, double omitted);

    // Places for the variables, value lines, tags and character maps that other parts of
    // the program store; each is written exactly here in the element order of the file.
    void writeTagList();
    void writeCharacterMaps(const Entity &entity);
    void writeEntityVariables(const Entity &entity);
    void writeObjectVariables(const Object &object);
    void writeAnimationValueLines(const Animation &animation);
    void writeTimelineValueLines(const Timeline &timeline);
    /// Whether the object has variable definitions, which make it need an `obj_info`.
    bool objectHasVariables(const Object &object) const;

    /// Whether the object is written as an `obj_info`.
    bool writesObjInfo(const Object &object) const;

    RigxData &mDocument;
    ProjectSink &mSink;
    const ProjectSaveOptions &mOptions;
    QHash<const File *, FilePosition> mFilePositions;
    // The folders written, each with the files written of it, in file order.
    std::vector<std::pair<const Folder *, std::vector<const File *>>> mWrittenFolders;
    QHash<QString, int> mAtlasIndexes;
    // Per entity: the `obj` number of each object (written obj_infos first, the rest after).
    QHash<const Object *, int> mObjectPositions;
    // Per animation: each written timeline's index.
    QHash<const Timeline *, int> mTimelineIndexes;
    // Per timeline of the animation: the key index a reference found last, which is where
    // the next mainline key's reference usually points.
    std::vector<int> mLastKeyIndexes;
    // Per mainline key: the written id of each bone reference by position, -1 if skipped.
    std::vector<int> mBoneIds;
    // Per entity: the images each sprite object's keys show, by the object's `obj` number.
    std::vector<QList<FilePosition>> mFrames;

    std::function<void(int percent)> mProgress;
    std::int64_t mKeyTotal = 0;
    std::int64_t mKeysDone = 0;
    int mPercent = -1;
};

} // namespace Morvane
