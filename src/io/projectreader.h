// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/displayinfo.h"
#include "model/tweeninfo.h"
#include "io/metareader.h"
#include "io/projectwriter.h"
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

#include <QColor>
#include <QHash>
#include <QPair>
#include <QSet>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <functional>
#include <unordered_set>
#include <vector>

namespace Morvane {

/// The warnings of one read: every fix-up that drops or changes data read from the file,
/// one line each. A hostile file can produce millions; the first hundred are listed and the
/// rest counted in a last line.
class ReaderWarnings
{
public:
    explicit ReaderWarnings(QStringList *list)
        : mList(list)
    {}

    void add(const QString &text)
    {
        // A value read twice (as an integer, then as a real) is reported once.
        if (mList && !mList->isEmpty() && mList->last() == text)
            return;
        if (mList && mList->size() < MaxWarnings)
            mList->append(text);
        else
            ++mUnlisted;
    }

    /// For a number attribute (XML) or member (JSON) that is present but holds no number
    /// the reader can use (not a number, not finite, out of range).
    void badNumber(const char *element, const char *name, const QString &text)
    {
        add(QStringLiteral("\"%1\" of \"%2\" holds %3, which is no number in range; it is "
                           "read as absent")
                .arg(QLatin1StringView(name), QLatin1StringView(element), text));
    }

    /// Adds the line that counts what was not listed.
    void finish()
    {
        if (mList && mUnlisted > 0)
            mList->append(QStringLiteral("%1 more warnings are not listed").arg(mUnlisted));
        mUnlisted = 0;
    }

private:
    static constexpr int MaxWarnings = 100;

    QStringList *mList;
    qint64 mUnlisted = 0;
};

/// Empty when `text` may be UTF-8; otherwise why it is not ("it looks like UTF-16,
/// little-endian", "byte 0xe4 at offset 12 is not UTF-8"), for the parse error of a file
/// in another encoding.
inline QString notUtf8Reason(const char *text, qsizetype size)
{
    const auto byte = [text](qsizetype i) { return static_cast<unsigned char>(text[i]); };
    if (size >= 4 && byte(0) == 0xFF && byte(1) == 0xFE && byte(2) == 0 && byte(3) == 0)
        return QStringLiteral("it is UTF-32, little-endian");
    if (size >= 4 && byte(0) == 0 && byte(1) == 0 && byte(2) == 0xFE && byte(3) == 0xFF)
        return QStringLiteral("it is UTF-32, big-endian");
    if (size >= 2 && byte(0) == 0xFF && byte(1) == 0xFE)
        return QStringLiteral("it is UTF-16, little-endian");
    if (size >= 2 && byte(0) == 0xFE && byte(1) == 0xFF)
        return QStringLiteral("it is UTF-16, big-endian");
    // Without a byte order mark, the zero bytes of ASCII characters give the form away.
    if (size >= 4 && byte(0) != 0 && byte(1) == 0 && byte(2) == 0 && byte(3) == 0)
        return QStringLiteral("it looks like UTF-32, little-endian");
    if (size >= 4 && byte(0) == 0 && byte(1) == 0 && byte(2) == 0 && byte(3) != 0)
        return QStringLiteral("it looks like UTF-32, big-endian");
    if (size >= 2 && byte(0) != 0 && byte(1) == 0)
        return QStringLiteral("it looks like UTF-16, little-endian");
    if (size >= 2 && byte(0) == 0 && byte(1) != 0)
        return QStringLiteral("it looks like UTF-16, big-endian");
    qsizetype i = 0;
    while (i < size) {
        const unsigned char c = byte(i);
        if (c == 0)
            return QStringLiteral("it holds a zero byte at offset %1").arg(i);
        if (c < 0x80) {
            ++i;
            continue;
        }
        int length = 0;
        char32_t code = 0;
        if ((c & 0xE0) == 0xC0) {
            length = 2;
            code = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            length = 3;
            code = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            length = 4;
            code = c & 0x07;
        }
        bool valid = length > 0 && i + length <= size;
        for (int k = 1; valid && k < length; ++k) {
            valid = (byte(i + k) & 0xC0) == 0x80;
            code = (code << 6) | (byte(i + k) & 0x3F);
        }
        // Overlong forms, surrogates and values past U+10FFFF are not UTF-8 either.
        static constexpr char32_t Smallest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (!valid || code < Smallest[length] || code > 0x10FFFF
            || (code >= 0xD800 && code <= 0xDFFF))
            return QStringLiteral("byte 0x%1 at offset %2 is not UTF-8")
                .arg(uint(c), 2, 16, QLatin1Char('0'))
                .arg(i);
        i += length;
    }
    return QString();
}

/// Builds a document from a parsed project tree; shared by the XML and JSON readers, which
/// differ only in the node type they hand in.
///
/// Strict about structure, lenient about content: unknown elements and keys are skipped,
/// missing or non-finite numbers take their defaults, and references to things that do
/// not exist (a file, a timeline, a key, a bone parent, a sub-entity's animation) are
/// dropped with a warning instead of being followed. Never fails once the tree parsed.
///
/// Keys are appended as read and each timeline and mainline is put in time order once it
/// is complete, so that loading takes time in proportion to the keys, in whatever order
/// the file lists them.
///
/// `Node` provides: `bool isValid()`, `bool string(const char *, QString *)`,
/// `bool real(const char *, double *)` (finite values only), `bool integer(const char *,
/// int *)`, `Node first(const char *)` and `forEach(const char *, F)` over the children of
/// one name, in order. A node reports a number it cannot use to `ReaderWarnings::badNumber`
/// and answers as if it were absent. A node may also offer `void release()`, called on a
/// timeline or mainline key once it is read, and on nothing read after it.
template <typename Node>
class ProjectReader
{
public:
    ProjectReader(RigxData *document, ReaderWarnings *warnings)
        : mDocument(document)
        , mWarnings(warnings)
    {}

    /// `progress` hears how far the build has come, 0..100, after each animation.
    void readRoot(const Node &root, const std::function<void(int)> &progress = {})
    {
        mProgress = progress;
        if (mProgress) {
            root.forEach("entity", [this](const Node &entity) {
                entity.forEach("animation", [this](const Node &) { ++mAnimationTotal; });
            });
        }
        // Folders first: entities refer to files through the id map folders fill, and the
        // JSON form lists "entity" before "folder".
        readAtlases(root.first("atlas"));
        root.forEach("folder", [this](const Node &node) { readFolder(node); });
        readTagList(root);
        root.forEach("entity", [this](const Node &node) { readEntity(node); });
        resolveSubEntityKeys();
        if (mProgress)
            mProgress(100);
    }

private:
    struct PendingSubEntity
    {
        TimelineKey *key;
        int entityId;
        int animationIndex;
    };

    void warn(const QString &text) { mWarnings->add(text); }

    static void release(const Node &node)
    {
        if constexpr (requires { node.release(); })
            node.release();
    }

    static double realOr(const Node &node, const char *name, double fallback)
    {
        double value;
        return node.real(name, &value) ? value : fallback;
    }

    static int intOr(const Node &node, const char *name, int fallback)
    {
        int value;
        return node.integer(name, &value) ? value : fallback;
    }

    File *fileFromIds(const Node &node, const char *folderName = "folder",
                      const char *fileName = "file")
    {
        int folderId;
        int fileId;
        if (!node.integer(folderName, &folderId) || !node.integer(fileName, &fileId))
            return nullptr;
        File *file = mFiles.value(qMakePair(folderId, fileId), nullptr);
        if (!file)
            warn(QStringLiteral("No file with folder %1 and file %2; the reference is dropped")
                     .arg(folderId)
                     .arg(fileId));
        return file;
    }

    void readCurve(const Node &node, TweenInfo *curve)
    {
        QString type;
        if (node.string("curve_type", &type))
            curve->setCurveType(type);
        static const char *const names[] = {"c1", "c2", "c3", "c4"};
        for (int i = 0; i < curve->cCount() && i < TweenInfo::MaxParameters; ++i) {
            double value;
            if (node.real(names[i], &value))
                curve->setC(i, value);
        }
    }

    void readAtlases(const Node &atlas)
    {
        if (!atlas.isValid())
            return;
        atlas.forEach("i", [this](const Node &node) {
            QString name;
            node.string("name", &name);
            mAtlasNames.append(name);
        });
    }

    void readFolder(const Node &node)
    {
        QString name;
        node.string("name", &name);
        int atlas;
        if (node.integer("atlas", &atlas)) {
            if (atlas >= 0 && atlas < mAtlasNames.size())
                name = QLatin1Char('<') + mAtlasNames.at(atlas) + QLatin1String(">/") + name;
            else
                warn(QStringLiteral("Folder \"%1\" names a missing atlas").arg(name));
        }
        const int folderId = intOr(node, "id", mFolderElements);
        ++mFolderElements;

        // A folder of a name already read adds its files to that folder.
        Folder *folder = mDocument->folder(name);
        if (!folder) {
            folder = new Folder(name);
            mDocument->appendFolder(folder);
        }
        const QString prefix = folder->spriteSheet()
                                   ? QLatin1Char('<') + folder->spriteSheetName()
                                         + QLatin1String(">/")
                                   : QString();
        int position = 0;
        node.forEach("file", [&](const Node &fileNode) {
            readFile(folder, folderId, position++, prefix, fileNode);
        });
    }

    void readFile(Folder *folder, int folderId, int position, const QString &prefix,
                  const Node &node)
    {
        QString name;
        node.string("name", &name);
        // A NUL can arrive through a character reference; no file system name holds one.
        if (name.contains(QChar(0))) {
            warn(QStringLiteral("File name \"%1\" holds a zero character; it is removed")
                     .arg(QString(name).replace(QChar(0), QStringLiteral("\\0"))));
            name.remove(QChar(0));
        }
        name = mDocument->validatePath(prefix + name, false);
        QString type;
        node.string("type", &type);
        const int fileType = type == QLatin1String("sound") ? File::Sound : File::Image;
        const int fileId = intOr(node, "id", position);

        File *file = folder->file(name);
        if (!file) {
            file = new File(name, realOr(node, "pivot_x", 0.0), 1.0 - realOr(node, "pivot_y", 1.0),
                            fileType, mDocument->projectDirectory());
            folder->appendFile(file);
            // Keep the size the file was saved with while its image is missing, so that
            // the project saves back unchanged.
            int width;
            int height;
            if (!file->imageLoaded() && file->isImage() && node.integer("width", &width)
                && node.integer("height", &height) && width > 0 && height > 0)
                file->setSize(width, height);
        }
        mFiles.insert(qMakePair(folderId, fileId), file);
    }

    void readTagList(const Node &root) { mMeta.readTagList(root); }

    void readEntity(const Node &node)
    {
        QString name = QStringLiteral("entity_000");
        node.string("name", &name);
        node.string("realname", &name);
        auto *entity = new Entity(name, false);
        mReadingEntity = entity;
        const int index = mDocument->entityCount();
        mDocument->appendEntity(entity);
        mEntityIndexes.insert(intOr(node, "id", index), index);

        // The position of each obj_info; timelines refer to objects by it.
        mObjectNames.clear();
        mObjInfos.clear();
        mCreatedObjects.clear();
        node.forEach("obj_info", [&](const Node &child) { readObjInfo(entity, child); });
        node.forEach("character_map", [&](const Node &child) { readCharacterMap(entity, child); });
        readEntityVariables(entity, node);
        node.forEach("animation", [&](const Node &child) { readAnimation(entity, child); });
        if (mRenamePlaceholders.contains(entity)) {
            entity->renameDoubleUnderscoredObjects();
            for (int a = 0; a < entity->animationCount(); ++a) {
                Animation *animation = entity->animation(a);
                for (int t = 0; t < animation->timelineCount(); ++t) {
                    Timeline *timeline = animation->timeline(t);
                    if (timeline->name().startsWith(QLatin1String("__")) && timeline->object())
                        timeline->setName(timeline->object()->name());
                }
            }
        }
    }

    // Names are made unique against the names read so far; asking the entity each time
    // would compare every name with every other.
    void appendObject(Entity *entity, Object *object)
    {
        const bool taken = mObjectNames.contains(object->name());
        entity->appendObject(object, -1, taken);
        mObjectNames.insert(object->name());
    }

    void readObjInfo(Entity *entity, const Node &node)
    {
        QString typeName;
        node.string("type", &typeName);
        const int type = Object::objectTypeFromString(typeName);
        if (type == 0) {
            warn(QStringLiteral("Object type \"%1\" is unknown; the object is skipped")
                     .arg(typeName));
            mObjInfos.push_back(nullptr);
            return;
        }
        QString name;
        node.string("name", &name);
        node.string("realname", &name);
        auto *object = new Object(name, type);
        DisplayInfo &info = object->defaultState().info();
        if (object->isBone() || object->isBox() || object->isSkin()) {
            info.width = realOr(node, "w", info.width);
            info.height = realOr(node, "h", info.height);
        }
        if (object->isBox() || object->isSkin()) {
            info.setPivotX(realOr(node, "pivot_x", info.pivotX(false)));
            info.setPivotY(1.0 - realOr(node, "pivot_y", 1.0 - info.pivotY(false)));
        }
        if (object->isSkin()) {
            if (File *file = fileFromIds(node))
                object->defaultState().setFileInfo(FileInfo(file->address()));
            info.x = realOr(node, "x", 0.0);
            info.y = -realOr(node, "y", 0.0);
            info.angle = ProjectWriter::normalizedAngle(360.0 - realOr(node, "angle", 360.0));
            info.xScale = realOr(node, "scale_x", 1.0);
            info.yScale = realOr(node, "scale_y", 1.0);
        }
        appendObject(entity, object);
        readObjectVariables(object, node);
        mObjInfos.push_back(object);
    }

    void readCharacterMap(Entity *entity, const Node &node)
    {
        QString name;
        node.string("name", &name);
        CharacterMap map(name);
        node.forEach("map", [&](const Node &child) {
            File *source = fileFromIds(child);
            if (!source)
                return;
            // Without a target the map hides the image.
            File *target = fileFromIds(child, "target_folder", "target_file");
            map.addMap(source->address(), target ? target->address() : Address());
        });
        entity->appendCharMap(map);
    }

    // `node` is the entity or obj_info: the JSON form has no single "var_defs" element.
    void readEntityVariables(Entity *entity, const Node &node)
    {
        mMeta.readVarDefs(node, &entity->valInfoCollection(), entity->name());
    }

    void readObjectVariables(Object *object, const Node &node)
    {
        mMeta.readVarDefs(node, &object->valInfoCollection(), object->name());
    }

    void readAnimationValueLines(Animation *animation, const Node &node)
    {
        if (node.isValid() && entityOf(animation))
            mMeta.readMeta(node, &animation->ownLineHolder(),
                           entityOf(animation)->valInfoCollection(), animation->name());
    }

    void readTimelineValueLines(Timeline *timeline, const Node &node)
    {
        Object *object = timeline->object();
        Entity *entity = object ? object->parentEntity() : nullptr;
        Animation *animation = timeline->parentAnimation();
        if (!node.isValid() || !entity || !animation)
            return;
        mMeta.readMeta(node, animation->objectLineHolder(entity->indexOfObject(object), true),
                       object->valInfoCollection(), object->name());
    }

    // The animation may not be in its entity yet while it is read.
    Entity *entityOf(Animation *animation) const
    {
        return animation->parentEntity() ? animation->parentEntity() : mReadingEntity;
    }

    void readAnimation(Entity *entity, const Node &node)
    {
        QString name = QStringLiteral("NewAnimation");
        node.string("name", &name);
        auto *animation = new Animation(name, false);
        animation->setLength(nonNegative(intOr(node, "length", animation->length()),
                                         QStringLiteral("The length of animation \"%1\"")
                                             .arg(name)));
        const double interval = realOr(node, "interval", animation->snappingInterval());
        if (interval >= 0.0 && interval < 2147483647.0)
            animation->setSnappingInterval(int(std::lround(interval)));
        else
            warn(QStringLiteral("Snapping interval %1 of animation \"%2\" is out of range; "
                                "the default is kept")
                     .arg(interval)
                     .arg(name));
        QString looping;
        if (node.string("looping", &looping)) {
            if (looping == QLatin1String("false"))
                animation->setLoopingMode(Animation::NoLooping);
            else if (looping == QLatin1String("ping_pong"))
                animation->setLoopingMode(Animation::PingPong);
        }
        animation->setLoopTo(nonNegative(intOr(node, "loop_to", 0),
                                         QStringLiteral("The loop start of animation \"%1\"")
                                             .arg(name)));
        entity->appendAnimation(animation);

        node.forEach("gline", [&](const Node &child) {
            GuideLine line;
            line.position = intOr(child, "pos", 0);
            line.vertical = intOr(child, "v", 0) == 1;
            animation->appendGuideLine(line);
        });

        mTimelines.clear();
        node.forEach("timeline", [&](const Node &child) {
            readTimeline(entity, animation, child, 0);
            release(child);
        });
        node.forEach("soundline", [&](const Node &child) {
            readTimeline(entity, animation, child, Object::Sound);
            release(child);
        });
        node.forEach("eventline", [&](const Node &child) {
            readTimeline(entity, animation, child, Object::Event);
            release(child);
        });
        mMainlineTimes.clear();
        const Node mainline = node.first("mainline");
        if (mainline.isValid())
            mainline.forEach("key", [&](const Node &child) {
                readMainlineKey(animation, child);
                release(child);
            });
        animation->sortMainlineKeysByTime();

        // Each timeline key becomes a child of the mainline key at its time; keys without
        // one get one (a file from elsewhere may leave them out).
        for (int t = 0; t < animation->timelineCount(); ++t) {
            Timeline *timeline = animation->timeline(t);
            for (int k = 0; k < timeline->keyCount(); ++k) {
                TimelineKey *key = timeline->key(k);
                if (MainlineKey *mainKey = animation->mainlineKeyAtExactTime(key->time(true)))
                    mainKey->addChildTimelineKey(key);
            }
        }
        animation->appendMainKeysForOrphanTimeKeys(false);
        readAnimationValueLines(animation, node.first("meta"));
        ++mAnimationsRead;
        if (mProgress && mAnimationTotal > 0)
            mProgress(qMin(99, mAnimationsRead * 100 / mAnimationTotal));
    }

    // Times, lengths and loop starts are never negative; a negative one becomes 0.
    int nonNegative(int value, const QString &what)
    {
        if (value >= 0)
            return value;
        warn(QStringLiteral("%1 is %2 ms; it is read as 0").arg(what).arg(value));
        return 0;
    }

    Object *objectForTimeline(Entity *entity, const Node &node, int forcedType)
    {
        QString name;
        node.string("name", &name);
        int type = forcedType;
        if (type == 0) {
            QString typeName = QStringLiteral("sprite");
            node.string("object_type", &typeName);
            type = Object::objectTypeFromString(typeName);
            if (type == 0 || type == Object::Sound || type == Object::Event)
                return nullptr;
        }
        const int position = intOr(node, "obj", -1);
        if (position >= 0 && position < int(mObjInfos.size()) && mObjInfos[size_t(position)]
            && mObjInfos[size_t(position)]->objectType() == type)
            return mObjInfos[size_t(position)];
        // Objects without obj_info (points, sounds, events) are rebuilt from their
        // timelines, once per position.
        const QPair<int, int> key(position, type);
        if (Object *object = mCreatedObjects.value(key, nullptr))
            return object;
        auto *object = new Object(name, type);
        appendObject(entity, object);
        mCreatedObjects.insert(key, object);
        return object;
    }

    void readTimeline(Entity *entity, Animation *animation, const Node &node, int forcedType)
    {
        Object *object = objectForTimeline(entity, node, forcedType);
        if (!object) {
            warn(QStringLiteral("A timeline of animation \"%1\" has an unknown object type; "
                                "it is skipped")
                     .arg(animation->name()));
            return;
        }
        QString name = object->name();
        node.string("name", &name);
        const int id = intOr(node, "id", animation->timelineCount());
        auto *timeline = new Timeline(object, name, animation->timelineCount());
        // Appending renumbers only the new one; ids are positions either way.
        animation->appendTimeline(timeline, -1, false);
        timeline->setId(animation->timelineCount() - 1);
        // References name keys by their place in the file, before sorting.
        std::vector<TimelineKey *> keys;
        node.forEach("key", [&](const Node &child) {
            keys.push_back(readTimelineKey(animation, timeline, object, child));
        });
        timeline->sortKeysByTime();
        if (!mTimelines.contains(id))
            mTimelines.insert(id, {std::move(keys), object->isBone()});
        else
            warn(QStringLiteral("Animation \"%1\" has two timelines with id %2; references "
                                "name the first")
                     .arg(animation->name())
                     .arg(id));
        readTimelineValueLines(timeline, node.first("meta"));
    }

    TimelineKey *readTimelineKey(const Animation *animation, Timeline *timeline, Object *object,
                                 const Node &node)
    {
        auto *key = new TimelineKey;
        key->setId(Animation::currentTimeKeyId++);
        const int time = intOr(node, "time", 0);
        key->setCachedTime(time >= 0 ? time
                                     : nonNegative(time, QStringLiteral("A key time in timeline "
                                                                        "\"%1\" of animation "
                                                                        "\"%2\"")
                                                             .arg(timeline->name(),
                                                                  animation->name())));
        readCurve(node, &key->curve());
        Node content = node.first(object->isBone() ? "bone" : "object");
        if (content.isValid())
            readKeyContent(object, key, content);
        else
            applyObjectDefaults(object, key);
        timeline->appendTimelineKey(key, false, false);
        return key;
    }

    static void applyObjectDefaults(const Object *object, TimelineKey *key)
    {
        if (object->isBone() || object->isBox()) {
            key->info().width = object->width();
            key->info().height = object->height();
        }
    }

    void readKeyContent(const Object *object, TimelineKey *key, const Node &node)
    {
        DisplayInfo &info = key->info();
        applyObjectDefaults(object, key);
        if (object->isSound()) {
            if (File *file = fileFromIds(node))
                key->setFileInfo(FileInfo(file->address()));
            key->soundInfo().trigger = intOr(node, "trigger", 1) != 0;
            key->soundInfo().panning = realOr(node, "panning", 0.0);
            key->soundInfo().volume = realOr(node, "volume", 1.0);
            return;
        }
        File *file = nullptr;
        if (object->isSprite() || object->isSkin()) {
            file = fileFromIds(node);
            if (file)
                key->setFileInfo(FileInfo(file->address()));
        }
        if (object->isSubEntity()) {
            int entityId;
            int animationIndex;
            if (node.integer("entity", &entityId) && node.integer("animation", &animationIndex))
                mPendingSubEntities.push_back({key, entityId, animationIndex});
            key->entityInfo().timeRatio = realOr(node, "t", 0.0);
        }
        info.x = realOr(node, "x", 0.0);
        info.y = -realOr(node, "y", -0.0);
        if (object->isSprite() || object->isBox()) {
            double pivotX;
            double pivotY;
            const bool hasX = node.real("pivot_x", &pivotX);
            const bool hasY = node.real("pivot_y", &pivotY);
            QPointF fallback;
            if (object->isSprite() && file)
                fallback = file->pivot(true);
            else if (object->isBox())
                fallback = QPointF(object->defaultState().info().pivotX(false),
                                   object->defaultState().info().pivotY(false));
            if (!hasX && !hasY && object->isSprite() && file) {
                info.setDefaultPivot(true, file->address());
            } else {
                info.setPivotX(hasX ? pivotX : fallback.x());
                info.setPivotY(hasY ? 1.0 - pivotY : fallback.y());
            }
        }
        double angle;
        info.angle = node.real("angle", &angle) ? ProjectWriter::normalizedAngle(360.0 - angle)
                                                : 0.0;
        info.xScale = realOr(node, "scale_x", 1.0);
        info.yScale = realOr(node, "scale_y", 1.0);
        double red;
        double green;
        double blue;
        const bool hasRed = node.real("r", &red);
        const bool hasGreen = node.real("g", &green);
        const bool hasBlue = node.real("b", &blue);
        if (hasRed || hasGreen || hasBlue)
            info.color = QColor::fromRgbF(float(channel(hasRed ? red : 1.0, "r")),
                                          float(channel(hasGreen ? green : 1.0, "g")),
                                          float(channel(hasBlue ? blue : 1.0, "b")));
        info.alpha = realOr(node, "a", 1.0);
    }

    // A colour channel lies in 0..1; one outside is clamped.
    double channel(double value, const char *name)
    {
        const double clamped = qBound(0.0, value, 1.0);
        if (clamped != value)
            warn(QStringLiteral("Colour channel \"%1\" %2 of a key is outside 0..1; it is "
                                "clamped to %3")
                     .arg(QLatin1StringView(name))
                     .arg(value)
                     .arg(clamped));
        return clamped;
    }

    // The key a reference names; `bone` tells whether it is a bone's.
    TimelineKey *referencedKey(const Animation *animation, const Node &node, bool *bone)
    {
        int timelineId;
        int keyIndex;
        if (!node.integer("timeline", &timelineId) || !node.integer("key", &keyIndex)) {
            warn(QStringLiteral("A reference in animation \"%1\" names no timeline key; "
                                "it is dropped")
                     .arg(animation->name()));
            return nullptr;
        }
        const auto read = mTimelines.constFind(timelineId);
        if (read == mTimelines.constEnd() || keyIndex < 0
            || keyIndex >= int(read->keys.size())) {
            warn(QStringLiteral("A reference in animation \"%1\" names timeline %2 key %3, "
                                "which does not exist; it is dropped")
                     .arg(animation->name())
                     .arg(timelineId)
                     .arg(keyIndex));
            return nullptr;
        }
        *bone = read->bone;
        return read->keys[size_t(keyIndex)];
    }

    void readMainlineKey(Animation *animation, const Node &node)
    {
        int time = intOr(node, "time", 0);
        if (time < 0)
            time = nonNegative(time, QStringLiteral("A mainline key time of animation \"%1\"")
                                         .arg(animation->name()));
        // The mainline is put in time order once it is read; until then taken times are
        // looked up here.
        if (!mMainlineTimes.insert(time).second) {
            warn(QStringLiteral("Animation \"%1\" has two mainline keys at %2 ms; the second "
                                "is dropped")
                     .arg(animation->name())
                     .arg(time));
            return;
        }
        auto *key = new MainlineKey;
        readCurve(node, &key->curve());
        animation->appendMainlineKey(key, time, false, true);

        QHash<int, BoneRef *> bonesById;
        QHash<ObjectRef *, int> parentIds;
        node.forEach("bone_ref", [&](const Node &child) {
            bool bone = false;
            TimelineKey *target = referencedKey(animation, child, &bone);
            if (!target)
                return;
            if (!bone) {
                warn(QStringLiteral("A bone reference in animation \"%1\" at %2 ms names "
                                    "timeline \"%3\", which is no bone; it is dropped")
                         .arg(animation->name())
                         .arg(time)
                         .arg(target->parentTimeline()->name()));
                return;
            }
            auto *ref = new BoneRef(target);
            key->appendBoneRef(ref);
            const int id = intOr(child, "id", key->boneRefCount() - 1);
            if (!bonesById.contains(id))
                bonesById.insert(id, ref);
            else
                warn(QStringLiteral("Animation \"%1\" has two bone references with id %2 at "
                                    "%3 ms; parents name the first")
                         .arg(animation->name())
                         .arg(id)
                         .arg(time));
            int parent;
            if (child.integer("parent", &parent))
                parentIds.insert(ref, parent);
        });
        node.forEach("object_ref", [&](const Node &child) {
            bool bone = false;
            TimelineKey *target = referencedKey(animation, child, &bone);
            if (!target)
                return;
            if (bone) {
                warn(QStringLiteral("An object reference in animation \"%1\" at %2 ms names "
                                    "bone timeline \"%3\"; it is dropped")
                         .arg(animation->name())
                         .arg(time)
                         .arg(target->parentTimeline()->name()));
                return;
            }
            auto *ref = new ZRef(target);
            ref->setLoadZIndex(intOr(child, "z_index", key->zRefCount()));
            key->appendZRef(ref);
            int parent;
            if (child.integer("parent", &parent))
                parentIds.insert(ref, parent);
        });
        // Parents are set once all bones are known; a parent that is missing, or one that
        // would close a cycle, is dropped.
        for (auto it = parentIds.constBegin(); it != parentIds.constEnd(); ++it) {
            BoneRef *parent = bonesById.value(it.value(), nullptr);
            if (!parent) {
                warn(QStringLiteral("A reference in animation \"%1\" at %2 ms names parent "
                                    "bone %3, which does not exist; it keeps no parent")
                         .arg(animation->name())
                         .arg(time)
                         .arg(it.value()));
                continue;
            }
            it.key()->setParentRef(parent);
        }
        for (int b = 0; b < key->boneRefCount(); ++b) {
            BoneRef *ref = key->boneRef(b);
            int steps = 0;
            for (BoneRef *up = ref->parentRef(); up; up = up->parentRef()) {
                if (up == ref || ++steps > key->boneRefCount()) {
                    warn(QStringLiteral("Bone parents in animation \"%1\" form a cycle; it is "
                                        "broken")
                             .arg(animation->name()));
                    ref->setParentRef(nullptr);
                    break;
                }
            }
        }
        readInlineObjects(animation, key, node);
        key->sortRefsByLoadZIndex(true);
    }

    // An older form keeps bones and objects inline in the mainline key instead of
    // referring to timelines. Each becomes an object info, a timeline and a key of its own;
    // nameless ones get placeholder names that are replaced once the entity is read.
    void readInlineObjects(Animation *animation, MainlineKey *key, const Node &node)
    {
        Entity *entity = animation->parentEntity();
        std::vector<BoneRef *> bones;
        QHash<ObjectRef *, int> parents;
        const auto readOne = [&](const Node &child, bool bone) {
            int type = bone ? int(Object::Bone) : int(Object::Sprite);
            QString typeName;
            if (!bone && child.string("object_type", &typeName))
                type = Object::objectTypeFromString(typeName);
            if (type == 0 || type == Object::Sound || type == Object::Event) {
                warn(QStringLiteral("An inline object of animation \"%1\" has an unknown type; "
                                    "it is skipped")
                         .arg(animation->name()));
                return;
            }
            QString name = QStringLiteral("__object_000");
            child.string("name", &name);
            auto *object = new Object(name, type);
            appendObject(entity, object);
            auto *timeline = new Timeline(object, object->name(), animation->timelineCount());
            animation->appendTimeline(timeline, -1, true);
            auto *timelineKey = new TimelineKey;
            timelineKey->setId(Animation::currentTimeKeyId++);
            timelineKey->setCachedTime(key->currentTime());
            readKeyContent(object, timelineKey, child);
            timeline->appendTimelineKey(timelineKey, true, false);
            ObjectRef *ref = nullptr;
            if (bone) {
                auto *boneRef = new BoneRef(timelineKey);
                key->appendBoneRef(boneRef);
                bones.push_back(boneRef);
                ref = boneRef;
            } else {
                auto *zRef = new ZRef(timelineKey);
                zRef->setLoadZIndex(intOr(child, "z_index", key->zRefCount()));
                key->appendZRef(zRef);
                ref = zRef;
            }
            int parent;
            if (child.integer("parent", &parent))
                parents.insert(ref, parent);
        };
        node.forEach("bone", [&](const Node &child) { readOne(child, true); });
        node.forEach("object", [&](const Node &child) { readOne(child, false); });
        // Inline parents count among the inline bones of the key; only earlier bones can be
        // parents, so no cycle can form.
        for (auto it = parents.constBegin(); it != parents.constEnd(); ++it) {
            const int parent = it.value();
            if (parent >= 0 && parent < int(bones.size()) && bones[size_t(parent)] != it.key()
                && (!it.key()->isBoneRef()
                    || parent < int(std::find(bones.begin(), bones.end(), it.key()) - bones.begin())))
                it.key()->setParentRef(bones[size_t(parent)]);
            else
                warn(QStringLiteral("An inline object of animation \"%1\" names parent %2, "
                                    "which is no earlier bone; it keeps no parent")
                         .arg(animation->name())
                         .arg(parent));
        }
        if (!bones.empty() || node.first("object").isValid())
            mRenamePlaceholders.insert(entity);
    }

    void resolveSubEntityKeys()
    {
        for (const PendingSubEntity &pending : mPendingSubEntities) {
            const int index = mEntityIndexes.value(pending.entityId, -1);
            Entity *entity = mDocument->entity(index);
            if (!entity || !entity->animation(pending.animationIndex)) {
                warn(QStringLiteral("A sub-entity key names entity %1 animation %2, which do "
                                    "not exist; it shows nothing")
                         .arg(pending.entityId)
                         .arg(pending.animationIndex));
                continue;
            }
            pending.key->entityInfo().animation
                = Address(mDocument, {index, pending.animationIndex},
                          entity->animation(pending.animationIndex));
        }
    }

    RigxData *mDocument;
    ReaderWarnings *mWarnings;
    std::function<void(int)> mProgress;
    int mAnimationTotal = 0;
    int mAnimationsRead = 0;
    MetaReader<Node> mMeta{mDocument, [this](const QString &text) { warn(text); }};
    Entity *mReadingEntity = nullptr;
    QStringList mAtlasNames;
    int mFolderElements = 0;
    QHash<QPair<int, int>, File *> mFiles;
    QHash<int, int> mEntityIndexes;
    std::vector<Object *> mObjInfos;
    QSet<QString> mObjectNames;
    QHash<QPair<int, int>, Object *> mCreatedObjects;
    // The timelines of the animation being read, by the id the file gives them, with their
    // keys in the file's order.
    struct ReadTimeline
    {
        std::vector<TimelineKey *> keys;
        bool bone = false;
    };
    QHash<int, ReadTimeline> mTimelines;
    std::unordered_set<int> mMainlineTimes;
    std::vector<PendingSubEntity> mPendingSubEntities;
    QSet<Entity *> mRenamePlaceholders;
};

} // namespace Morvane
