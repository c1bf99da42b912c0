// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "projectwriter.h"

#include "model/displayinfo.h"
#include "model/tweeninfo.h"
#include "io/metawriter.h"
#include "io/numberformat.h"
#include "io/projectsink.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/object.h"
#include "model/objectref.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <map>

namespace Morvane {

namespace {

const QString sGenerator = QStringLiteral("Tallowcraft Morvane");

// A file's name as written: without atlas bracket directory, "./" segments and doubled
// slashes, so the same image is always named the same way.
QString cleanFileName(const QString &name)
{
    QString clean = RigxData::removeBeginningBracketDirectory(name);
    while (clean.contains(QLatin1String("//")))
        clean.replace(QLatin1String("//"), QLatin1String("/"));
    while (clean.startsWith(QLatin1String("./")))
        clean.remove(0, 2);
    while (clean.contains(QLatin1String("/./")))
        clean.replace(QLatin1String("/./"), QLatin1String("/"));
    return clean;
}

bool isRootFolderName(const QString &name)
{
    return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("/");
}

} // namespace

ProjectWriter::ProjectWriter(RigxData &document, ProjectSink &sink,
                             const ProjectSaveOptions &options)
    : mDocument(document)
    , mSink(sink)
    , mOptions(options)
{
}

double ProjectWriter::normalizedAngle(double angle)
{
    return NumberFormat::normalizedAngle(angle);
}

bool ProjectWriter::readsBackAs(double value, Precision precision, NumberMapping mapping,
                                double omitted) const
{
    if (!std::isfinite(value) && mSink.isJson())
        return true; // left out: JSON has no form for it
    const double file = NumberFormat::toFile(value, mapping);
    const double fileOmitted = NumberFormat::toFile(omitted, mapping);
    // Rounding moves a number by far less than this; only nearer ones need their text.
    if (std::fabs(file - fileOmitted) > 1e-5 * std::max(1.0, std::fabs(fileOmitted)))
        return false;
    char text[NumberFormat::BufferSize];
    int length;
    if (mSink.isJson())
        length = NumberFormat::writeShortestFor(text, value, mapping);
    else if (precision == Precision::Real6)
        length = NumberFormat::writeReal6(text, file);
    else
        length = NumberFormat::writeG6(text, file);
    double back = 0.0;
    return NumberFormat::parseDouble(text, text + length, &back)
           && NumberFormat::toModel(back, mapping) == omitted;
}

void ProjectWriter::optionalNumber(std::string_view name, double value, Precision precision,
                                   NumberMapping mapping, double omitted)
{
    if (value == omitted || readsBackAs(value, precision, mapping, omitted))
        return;
    mSink.numberAttribute(name, value, precision, mapping);
}

bool ProjectWriter::isClockwise(double from, double to)
{
    if (from == to)
        return false;
    double difference = to - from;
    for (int guard = 0; difference < -180.0 && guard < 64; ++guard) {
        from -= 360.0;
        difference = to - from;
    }
    if (difference <= 180.0)
        return to > from;
    for (int guard = 0; to - from > 180.0 && guard < 64; ++guard)
        to -= 360.0;
    return to > from;
}

void ProjectWriter::indexFiles()
{
    const QSet<const File *> used = mDocument.filesShownByKeys();
    const auto kept = [this, &used](const File *file) {
        // The disk is asked last.
        return mDocument.fileInUse(file, used) || file->fileStillValid();
    };

    mFilePositions.clear();
    mWrittenFolders.clear();
    for (int f = 0; f < mDocument.folderCount(); ++f) {
        const Folder *folder = mDocument.folder(f);
        std::vector<const File *> files;
        for (int i = 0; i < folder->fileCount(); ++i) {
            const File *file = folder->file(i);
            if (!kept(file))
                continue;
            mFilePositions.insert(file, FilePosition(int(mWrittenFolders.size()), int(files.size())));
            files.push_back(file);
        }
        if (!files.empty())
            mWrittenFolders.emplace_back(folder, std::move(files));
    }
}

bool ProjectWriter::filePosition(const File *file, FilePosition *position) const
{
    const auto it = mFilePositions.constFind(file);
    if (it == mFilePositions.constEnd())
        return false;
    *position = it.value();
    return true;
}

void ProjectWriter::write()
{
    indexFiles();
    // Angles are stored back normalised before anything is written, so that spins see the
    // final values.
    mKeyTotal = 0;
    for (int e = 0; e < mDocument.entityCount(); ++e) {
        Entity *entity = mDocument.entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            Animation *animation = entity->animation(a);
            for (int t = 0; t < animation->timelineCount(); ++t) {
                Timeline *timeline = animation->timeline(t);
                mKeyTotal += timeline->keyCount();
                for (int k = 0; k < timeline->keyCount(); ++k) {
                    DisplayInfo &info = timeline->key(k)->info();
                    info.angle = normalizedAngle(info.angle);
                }
            }
        }
    }
    mKeysDone = 0;
    mPercent = -1;
    keysWritten(0);
    writeRoot();
    if (mProgress && mPercent != 100)
        mProgress(100);
}

void ProjectWriter::keysWritten(int count)
{
    if (!mProgress)
        return;
    mKeysDone += count;
    const int percent = mKeyTotal > 0 ? int(mKeysDone * 100 / mKeyTotal) : 0;
    if (percent == mPercent)
        return;
    mPercent = percent;
    mProgress(percent);
}

void ProjectWriter::writeRoot()
{
    mSink.startElement("morvane_data");
    mSink.attribute(mSink.isJson() ? "rigj_version" : "rigx_version", u"1.0");
    mSink.attribute("generator", sGenerator);
    mSink.attribute("generator_version", mDocument.kind());
    if (mOptions.pixelArtMode)
        mSink.integerAttribute("pixel_mode", 1);

    writeAtlases();
    for (std::size_t f = 0; f < mWrittenFolders.size(); ++f)
        writeFolder(*mWrittenFolders[f].first, mWrittenFolders[f].second, int(f));
    writeTagList();
    for (int e = 0; e < mDocument.entityCount(); ++e)
        writeEntity(*mDocument.entity(e), e);
    mSink.endElement();
}

void ProjectWriter::writeAtlases()
{
    // Distinct atlas names in ascending order; a folder refers to its name's position.
    std::map<QString, int> names;
    for (const auto &[folder, files] : mWrittenFolders) {
        if (folder->spriteSheet())
            names.emplace(folder->spriteSheetName(), 0);
    }
    mAtlasIndexes.clear();
    if (names.empty())
        return;
    mSink.startElement("atlas", true);
    int index = 0;
    for (auto &entry : names) {
        entry.second = index;
        mAtlasIndexes.insert(entry.first, index++);
        mSink.startElement("i");
        mSink.attribute("name", entry.first);
        mSink.endElement();
    }
    mSink.endElement();
}

void ProjectWriter::writeFolder(const Folder &folder, const std::vector<const File *> &files,
                                int index)
{
    mSink.startElement("folder");
    mSink.integerAttribute("id", index);
    const QString name = RigxData::removeBeginningBracketDirectory(folder.name());
    if (!isRootFolderName(name))
        mSink.attribute("name", name);
    if (folder.spriteSheet())
        mSink.integerAttribute("atlas", mAtlasIndexes.value(folder.spriteSheetName()));
    for (std::size_t i = 0; i < files.size(); ++i)
        writeFile(*files[i], int(i));
    mSink.endElement();
}

void ProjectWriter::writeFile(const File &file, int index)
{
    mSink.startElement("file");
    mSink.integerAttribute("id", index);
    mSink.attribute("name", cleanFileName(file.name()));
    if (!file.isImage()) {
        mSink.attribute("type", file.typeString());
    } else {
        const QPointF pivot = file.pivot(false);
        mSink.integerAttribute("width", file.width());
        mSink.integerAttribute("height", file.height());
        mSink.g6Attribute("pivot_x", pivot.x());
        mSink.g6Attribute("pivot_y", pivot.y(), NumberMapping::FromOne);
    }
    mSink.endElement();
}

bool ProjectWriter::objectHasVariables(const Object &object) const
{
    return !object.valInfoCollection().isEmpty();
}

bool ProjectWriter::writesObjInfo(const Object &object) const
{
    return object.isBone() || object.isBox() || object.isSkin() || object.isSprite()
           || object.isSubEntity() || objectHasVariables(object);
}

void ProjectWriter::writeEntity(Entity &entity, int index)
{
    // Written obj_infos are numbered first; objects without one continue the numbering,
    // so that their timelines still name them apart (the reader rebuilds them from the
    // timeline's name and type).
    mObjectPositions.clear();
    int position = 0;
    for (int o = 0; o < entity.objectCount(); ++o) {
        if (writesObjInfo(*entity.object(o)))
            mObjectPositions.insert(entity.object(o), position++);
    }
    for (int o = 0; o < entity.objectCount(); ++o) {
        if (!writesObjInfo(*entity.object(o)))
            mObjectPositions.insert(entity.object(o), position++);
    }

    collectFrames(entity);

    mSink.startElement("entity");
    mSink.integerAttribute("id", index);
    mSink.attribute("name", entity.name());
    for (int o = 0; o < entity.objectCount(); ++o) {
        if (writesObjInfo(*entity.object(o)))
            writeObjInfo(entity, *entity.object(o));
    }
    writeCharacterMaps(entity);
    writeEntityVariables(entity);
    for (int a = 0; a < entity.animationCount(); ++a)
        writeAnimation(*entity.animation(a), a);
    mSink.endElement();
}

void ProjectWriter::writeObjInfo(const Entity &entity, const Object &object)
{
    mSink.startElement("obj_info");
    if (mOptions.objInfoNamesUniqueToFile) {
        mSink.attribute("name", QString(entity.name() + QLatin1Char('_') + object.name()));
        mSink.attribute("realname", object.name());
    } else {
        mSink.attribute("name", object.name());
    }
    mSink.attribute("type", object.objectTypeString());
    const TimelineKey &state = object.defaultState();
    if (object.isBone() || object.isBox() || object.isSkin()) {
        mSink.g6Attribute("w", object.width());
        mSink.g6Attribute("h", object.height());
    }
    if (object.isBox() || object.isSkin()) {
        mSink.g6Attribute("pivot_x", state.info().pivotX(false));
        mSink.g6Attribute("pivot_y", state.info().pivotY(false), NumberMapping::FromOne);
    }
    if (object.isSkin()) {
        FilePosition position;
        if (filePosition(state.fileInfo().file(), &position)) {
            mSink.integerAttribute("folder", position.first);
            mSink.integerAttribute("file", position.second);
        }
        const DisplayInfo &info = state.info();
        mSink.real6Attribute("x", info.x);
        mSink.real6Attribute("y", info.y, NumberMapping::Negated);
        mSink.real6Attribute("angle", info.angle, NumberMapping::FromFullTurn);
        mSink.real6Attribute("scale_x", info.xScale);
        mSink.real6Attribute("scale_y", info.yScale);
        // The mesh of a skin is written here once skins carry one.
    }
    writeObjectVariables(object);
    if (object.isSprite())
        writeFrames(object);
    mSink.endElement();
}

void ProjectWriter::collectFrames(const Entity &entity)
{
    // Every image a key of each sprite object shows, animation by animation, each once.
    // One pass over all timelines: asking each object for its timelines would walk every
    // animation once per object.
    mFrames.assign(std::size_t(mObjectPositions.size()), {});
    std::vector<QSet<const File *>> seen(mFrames.size());
    for (int a = 0; a < entity.animationCount(); ++a) {
        const Animation *animation = entity.animation(a);
        for (int t = 0; t < animation->timelineCount(); ++t) {
            const Timeline *timeline = animation->timeline(t);
            const Object *object = timeline->object();
            if (!object || !object->isSprite())
                continue;
            const int number = mObjectPositions.value(object, -1);
            if (number < 0)
                continue;
            QList<FilePosition> &frames = mFrames[std::size_t(number)];
            QSet<const File *> &files = seen[std::size_t(number)];
            for (int k = 0; k < timeline->keyCount(); ++k) {
                const File *file = timeline->key(k)->fileInfo().file();
                FilePosition position;
                if (!file || files.contains(file) || !filePosition(file, &position))
                    continue;
                files.insert(file);
                frames.append(position);
            }
        }
    }
}

void ProjectWriter::writeFrames(const Object &object)
{
    mSink.startElement("frames", true);
    const int number = mObjectPositions.value(&object, -1);
    if (number >= 0 && std::size_t(number) < mFrames.size()) {
        for (const FilePosition &position : std::as_const(mFrames[std::size_t(number)])) {
            mSink.startElement("i");
            mSink.integerAttribute("folder", position.first);
            mSink.integerAttribute("file", position.second);
            mSink.endElement();
        }
    }
    mSink.endElement();
}

void ProjectWriter::writeAnimation(Animation &animation, int index)
{
    mTimelineIndexes.clear();
    for (int t = 0; t < animation.timelineCount(); ++t) {
        const Timeline *timeline = animation.timeline(t);
        if (timeline->keyCount() > 0)
            mTimelineIndexes.insert(timeline, int(mTimelineIndexes.size()));
    }
    mLastKeyIndexes.assign(std::size_t(mTimelineIndexes.size()), -1);

    mSink.startElement("animation");
    mSink.integerAttribute("id", index);
    mSink.attribute("name", animation.name());
    mSink.integerAttribute("length", animation.length());
    mSink.g6Attribute("interval", animation.snappingInterval());
    if (animation.loopingMode() == Animation::NoLooping)
        mSink.attribute("looping", u"false");
    else if (animation.loopingMode() == Animation::PingPong)
        mSink.attribute("looping", u"ping_pong");
    if (animation.loopTo() > 0)
        mSink.integerAttribute("loop_to", animation.loopTo());

    for (int g = 0; g < animation.guidelineCount(); ++g) {
        const GuideLine line = animation.guideline(g);
        mSink.startElement("gline");
        mSink.integerAttribute("pos", line.position);
        if (line.vertical)
            mSink.integerAttribute("v", 1);
        mSink.endElement();
    }
    writeMainline(animation);
    const std::vector<const Object *> lineOnly = objectsWithLinesOnly(animation);
    int nextId = int(mTimelineIndexes.size());
    // Timelines, then sound lines, then event lines; each group ends with the objects that
    // have value lines but no keys here.
    for (const int group : {0, int(Object::Sound), int(Object::Event)}) {
        const auto inGroup = [group](int type) {
            return group == 0 ? type != Object::Sound && type != Object::Event : type == group;
        };
        for (int t = 0; t < animation.timelineCount(); ++t) {
            Timeline *timeline = animation.timeline(t);
            const auto written = mTimelineIndexes.constFind(timeline);
            if (written != mTimelineIndexes.constEnd() && inGroup(timeline->objectType()))
                writeTimeline(*timeline, written.value());
        }
        for (const Object *object : lineOnly) {
            if (inGroup(object->objectType()))
                writeLinesOnlyTimeline(animation, *object, nextId++);
        }
    }
    writeAnimationValueLines(animation);
    mSink.endElement();
}

void ProjectWriter::writeMainline(Animation &animation)
{
    mSink.startElement("mainline", true);
    for (int m = 0; m < animation.mainlineKeyCount(); ++m)
        writeMainlineKey(*animation.mainlineKey(m), m);
    mSink.endElement();
}

void ProjectWriter::writeCurve(const TweenInfo &curve)
{
    if (curve.isLinear())
        return;
    mSink.attribute("curve_type", curve.curveTypeName());
    static const char *const names[] = {"c1", "c2", "c3", "c4"};
    for (int i = 0; i < curve.cCount() && i < TweenInfo::MaxParameters; ++i)
        mSink.g6Attribute(names[i], curve.cAt(i));
}

bool ProjectWriter::refTarget(const ObjectRef &ref, RefTarget *target)
{
    // Each look-up through the reference resolves its key again; do it once.
    target->key = ref.key();
    target->timeline = target->key ? target->key->parentTimeline() : nullptr;
    if (!target->timeline)
        return false;
    const auto it = mTimelineIndexes.constFind(target->timeline);
    if (it == mTimelineIndexes.constEnd())
        return false;
    target->timelineIndex = it.value();
    // Consecutive mainline keys mostly point at the same or the next key of a timeline.
    int &last = mLastKeyIndexes[std::size_t(target->timelineIndex)];
    const int count = target->timeline->keyCount();
    if (last >= 0 && last < count && target->timeline->key(last) == target->key)
        target->keyIndex = last;
    else if (last + 1 >= 0 && last + 1 < count && target->timeline->key(last + 1) == target->key)
        target->keyIndex = last + 1;
    else
        target->keyIndex = target->timeline->indexOfKey(target->key);
    last = target->keyIndex;
    return true;
}

int ProjectWriter::writtenParentId(const MainlineKey &key, const ObjectRef &ref) const
{
    const BoneRef *parent = ref.parentRef();
    if (!parent)
        return -1;
    int position = parent->id();
    if (position < 0 || position >= key.boneRefCount() || key.boneRef(position) != parent)
        position = key.indexOfBoneRef(parent);
    if (position < 0 || std::size_t(position) >= mBoneIds.size())
        return -1;
    return mBoneIds[std::size_t(position)];
}

void ProjectWriter::writeMainlineKey(MainlineKey &key, int index)
{
    mSink.startElement("key");
    mSink.integerAttribute("id", index);
    if (key.currentTime() != 0)
        mSink.integerAttribute("time", key.currentTime());
    writeCurve(key.curve());

    // References whose key is gone are left out; the others are numbered as written. A
    // parent is named only when it was written before its child.
    mBoneIds.assign(std::size_t(key.boneRefCount()), -1);
    int boneId = 0;
    RefTarget target;
    // Parents before children, without reordering the key: undo commands name its
    // references by position.
    for (const int b : key.boneSaveOrder()) {
        const BoneRef *ref = key.boneRef(b);
        if (!refTarget(*ref, &target))
            continue;
        mBoneIds[std::size_t(b)] = boneId;
        const int parent = writtenParentId(key, *ref);
        mSink.startElement("bone_ref");
        mSink.integerAttribute("id", boneId++);
        if (parent >= 0)
            mSink.integerAttribute("parent", parent);
        mSink.integerAttribute("timeline", target.timelineIndex);
        mSink.integerAttribute("key", target.keyIndex);
        mSink.endElement();
    }
    int written = 0;
    for (int z = 0; z < key.zRefCount(); ++z) {
        const ZRef *ref = key.zRef(z);
        if (!refTarget(*ref, &target))
            continue;
        mSink.startElement("object_ref");
        mSink.integerAttribute("id", written);
        const int parent = writtenParentId(key, *ref);
        if (parent >= 0)
            mSink.integerAttribute("parent", parent);
        DisplayInfo pose;
        if (mOptions.absolutePose && target.timeline->isSprite()
            && mOptions.absolutePose(*ref, &pose)) {
            const Object *object = target.timeline->object();
            mSink.attribute("name", object ? object->name() : target.timeline->name());
            FilePosition position;
            if (filePosition(target.key->fileInfo().file(), &position)) {
                mSink.integerAttribute("folder", position.first);
                mSink.integerAttribute("file", position.second);
            }
            mSink.real6Attribute("abs_x", pose.x);
            mSink.real6Attribute("abs_y", pose.y, NumberMapping::Negated);
            if (mSink.isJson()) {
                mSink.real6Attribute("abs_pivot_x", pose.pivotX());
                mSink.real6Attribute("abs_pivot_y", pose.pivotY(), NumberMapping::FromOne);
            }
            mSink.real6Attribute("abs_angle", pose.angle, NumberMapping::FromFullTurn);
            mSink.real6Attribute("abs_scale_x", pose.xScale);
            mSink.real6Attribute("abs_scale_y", pose.yScale);
            mSink.real6Attribute("abs_a", pose.alpha);
        }
        mSink.integerAttribute("timeline", target.timelineIndex);
        mSink.integerAttribute("key", target.keyIndex);
        mSink.integerAttribute("z_index", written);
        mSink.endElement();
        ++written;
    }
    mSink.endElement();
}

void ProjectWriter::writeTimeline(Timeline &timeline, int index)
{
    const bool sound = timeline.isSound();
    const bool event = timeline.isEvent();
    mSink.startElement(sound ? "soundline" : event ? "eventline" : "timeline");
    mSink.integerAttribute("id", index);
    mSink.integerAttribute("obj", mObjectPositions.value(timeline.object(), -1));
    mSink.attribute("name", timeline.name());
    if (!sound && !event && !timeline.isSprite())
        mSink.attribute("object_type", timeline.objectTypeString());
    for (int k = 0; k < timeline.keyCount(); ++k)
        writeTimelineKey(timeline, k);
    writeTimelineValueLines(timeline);
    mSink.endElement();
    keysWritten(timeline.keyCount());
}

std::vector<const Object *> ProjectWriter::objectsWithLinesOnly(const Animation &animation) const
{
    std::vector<const Object *> objects;
    const Entity *entity = animation.parentEntity();
    if (!entity)
        return objects;
    for (const auto &[index, holder] : animation.objectLineHolders()) {
        const Object *object = entity->object(index);
        if (!object || !MetaWriter::hasMeta(&holder, object->valInfoCollection()))
            continue;
        bool hasTimeline = false;
        for (int t = 0; t < animation.timelineCount() && !hasTimeline; ++t) {
            const Timeline *timeline = animation.timeline(t);
            hasTimeline = timeline->object() == object && timeline->keyCount() > 0;
        }
        if (!hasTimeline)
            objects.push_back(object);
    }
    return objects;
}

void ProjectWriter::writeLinesOnlyTimeline(const Animation &animation, const Object &object,
                                           int id)
{
    // A timeline without keys: the readers take its value lines and drop the empty
    // timeline after loading, as they drop every empty timeline.
    const bool sound = object.isSound();
    const bool event = object.isEvent();
    mSink.startElement(sound ? "soundline" : event ? "eventline" : "timeline");
    mSink.integerAttribute("id", id);
    mSink.integerAttribute("obj", mObjectPositions.value(&object, -1));
    mSink.attribute("name", object.name());
    if (!sound && !event && !object.isSprite())
        mSink.attribute("object_type", object.objectTypeString());
    const Entity *entity = animation.parentEntity();
    MetaWriter::writeMeta(mSink, animation.objectLineHolder(entity->indexOfObject(&object)),
                          object.valInfoCollection(), mDocument.tagManager());
    mSink.endElement();
}

void ProjectWriter::writeTimelineKey(const Timeline &timeline, int index)
{
    const TimelineKey &key = *timeline.key(index);
    mSink.startElement("key");
    mSink.integerAttribute("id", index);
    const int time = key.time(true);
    if (time != 0)
        mSink.integerAttribute("time", time);
    if (timeline.isEvent()) {
        mSink.endElement();
        return;
    }
    // Spin is derived from this key's and the next key's angle (the last key wraps to the
    // first; a single key compares with itself).
    const double angle = key.info().angle;
    const double next = timeline.key((index + 1) % timeline.keyCount())->info().angle;
    if (std::fabs(angle - next) < 0.00001)
        mSink.integerAttribute("spin", 0);
    else if (isClockwise(angle, next))
        mSink.integerAttribute("spin", -1);
    writeCurve(key.curve());
    writeKeyContent(timeline, key);
    mSink.endElement();
}

void ProjectWriter::writeSoundAttributes(const TimelineKey &key)
{
    FilePosition position;
    if (filePosition(key.fileInfo().file(), &position)) {
        mSink.integerAttribute("folder", position.first);
        mSink.integerAttribute("file", position.second);
    }
    const SoundInfo &sound = key.soundInfo();
    if (!sound.trigger)
        mSink.integerAttribute("trigger", 0);
    optionalNumber("panning", sound.panning, Precision::G6, NumberMapping::Same, 0.0);
    optionalNumber("volume", sound.volume, Precision::G6, NumberMapping::Same, 1.0);
}

void ProjectWriter::writeKeyContent(const Timeline &timeline, const TimelineKey &key)
{
    mSink.startElement(timeline.isBone() ? "bone" : "object", true);
    if (timeline.isSound()) {
        writeSoundAttributes(key);
        mSink.endElement();
        return;
    }
    const DisplayInfo &info = key.info();
    const bool sprite = timeline.isSprite();
    const bool box = timeline.isBox();
    if (sprite || timeline.isSkin()) {
        FilePosition position;
        if (filePosition(key.fileInfo().file(), &position)) {
            mSink.integerAttribute("folder", position.first);
            mSink.integerAttribute("file", position.second);
        }
    }
    if (timeline.isSubEntity()) {
        const Address &target = key.entityInfo().animation;
        mSink.integerAttribute("entity", target.entityIndex());
        mSink.integerAttribute("animation", target.animationIndex());
        mSink.g6Attribute("t", key.entityInfo().timeRatio);
    }
    // Each value is left out when its text reads back as the reader's default, so that a
    // value that only rounds to the default is left out now, as the next save would.
    optionalNumber("x", info.x, Precision::Real6, NumberMapping::Same, 0.0);
    optionalNumber("y", info.y, Precision::Real6, NumberMapping::Negated, 0.0);
    if (sprite || box) {
        // A key that follows its image's default pivot leaves the pivot out; so does one
        // whose own pivot equals that default.
        bool writePivot = !info.defaultPivot();
        if (writePivot) {
            QPointF reference(qQNaN(), qQNaN());
            if (sprite && key.fileInfo().file())
                reference = key.fileInfo().file()->pivot(true);
            else if (box && timeline.object())
                reference = QPointF(timeline.object()->defaultState().info().pivotX(false),
                                    timeline.object()->defaultState().info().pivotY(false));
            // A pivot whose text reads back as the default one is the default one.
            const double x = info.pivotX(false);
            const double y = info.pivotY(false);
            writePivot = !((x == reference.x()
                            || readsBackAs(x, Precision::Real6, NumberMapping::Same,
                                           reference.x()))
                           && (y == reference.y()
                               || readsBackAs(y, Precision::Real6, NumberMapping::FromOne,
                                              reference.y())));
        }
        if (writePivot) {
            mSink.real6Attribute("pivot_x", info.pivotX(false));
            mSink.real6Attribute("pivot_y", info.pivotY(false), NumberMapping::FromOne);
        }
    }
    optionalNumber("angle", info.angle, Precision::Real6, NumberMapping::FromFullTurn, 0.0);
    if (timeline.isBone() || sprite || box || timeline.isSubEntity()) {
        optionalNumber("scale_x", info.xScale, Precision::Real6, NumberMapping::Same, 1.0);
        optionalNumber("scale_y", info.yScale, Precision::Real6, NumberMapping::Same, 1.0);
    }
    if (info.color.isValid()) {
        optionalNumber("r", info.color.redF(), Precision::Real6, NumberMapping::Same, 1.0);
        optionalNumber("g", info.color.greenF(), Precision::Real6, NumberMapping::Same, 1.0);
        optionalNumber("b", info.color.blueF(), Precision::Real6, NumberMapping::Same, 1.0);
    }
    optionalNumber("a", info.alpha, Precision::Real6, NumberMapping::Same, 1.0);
    // The mesh data of skin keys is written here once skins carry one.
    mSink.endElement();
}

void ProjectWriter::writeTagList()
{
    MetaWriter::writeTagList(mSink, mDocument.tagManager());
}

void ProjectWriter::writeCharacterMaps(const Entity &entity)
{
    const auto fileAt = [this](const Address &address) -> const File * {
        if (address.isEmpty())
            return nullptr;
        if (const File *file = address.file())
            return file;
        return mDocument.fileFromIds(address.folderId(), address.fileId());
    };
    for (int i = 0; i < entity.charMapCount(); ++i) {
        const CharacterMap *map = entity.charMap(i);
        mSink.startElement("character_map");
        mSink.integerAttribute("id", i);
        mSink.attribute("name", map->name());
        for (const MapInstruction &instruction : map->instructions()) {
            FilePosition source;
            if (!filePosition(fileAt(instruction.source), &source))
                continue; // the source file is gone: nothing left to redirect
            mSink.startElement("map");
            mSink.integerAttribute("folder", source.first);
            mSink.integerAttribute("file", source.second);
            FilePosition target;
            if (filePosition(fileAt(instruction.target), &target)) {
                mSink.integerAttribute("target_folder", target.first);
                mSink.integerAttribute("target_file", target.second);
            }
            mSink.endElement();
        }
        mSink.endElement();
    }
}

void ProjectWriter::writeEntityVariables(const Entity &entity)
{
    MetaWriter::writeVarDefs(mSink, entity.valInfoCollection());
}

void ProjectWriter::writeObjectVariables(const Object &object)
{
    MetaWriter::writeVarDefs(mSink, object.valInfoCollection());
}

void ProjectWriter::writeAnimationValueLines(const Animation &animation)
{
    const Entity *entity = animation.parentEntity();
    if (entity)
        MetaWriter::writeMeta(mSink, &animation.ownLineHolder(), entity->valInfoCollection(),
                              mDocument.tagManager());
}

void ProjectWriter::writeTimelineValueLines(const Timeline &timeline)
{
    const Object *object = timeline.object();
    const Entity *entity = timeline.parentEntity();
    const Animation *animation = timeline.parentAnimation();
    if (!object || !entity || !animation)
        return;
    MetaWriter::writeMeta(mSink, animation->objectLineHolder(entity->indexOfObject(object)),
                          object->valInfoCollection(), mDocument.tagManager());
}

} // namespace Morvane
