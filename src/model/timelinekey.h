// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/displayinfo.h"
#include "model/entityinfo.h"
#include "model/tweeninfo.h"
#include "model/address.h"
#include "model/morvanemodelitem.h"

#include <QImage>

#include <memory>

namespace Morvane {

class Animation;
class File;
class Folder;
class MainlineKey;
class Object;
class ObjectRef;
class Timeline;

/// The image (or sound) a key shows, as the address of a file.
class FileInfo
{
public:
    FileInfo() = default;
    explicit FileInfo(const Address &file)
        : mFile(file)
    {}

    bool isValid() const { return file() != nullptr; }
    File *file() const { return mFile.isEmpty() ? nullptr : mFile.file(false); }
    Folder *folder() const;
    const Address &address() const { return mFile; }
    void setAddress(const Address &file) { mFile = file; }
    /// With `mapped`, what the active character maps show in the file's place:
    /// a transparent 50 x 50 stand-in when a map hides it. A null image when
    /// the key names no file.
    QImage pixmap(bool mapped = true) const;

private:
    Address mFile;
};

/// Volume and panning blend linearly between sound keys; trigger says whether
/// the key starts the sound.
struct SoundInfo
{
    double volume = 1.0;
    double panning = 0.0;
    bool trigger = true;
};

/// One key of a timeline. The key does not own its time: it takes it from the
/// mainline key it is a child of, and caches it for while it is detached.
class TimelineKey : public MorvaneModelItem
{
public:
    /// The "no time" marker that a detached key reports.
    static constexpr int NoTime = -26;

    TimelineKey();
    TimelineKey(const FileInfo &file, const DisplayInfo &info, const TweenInfo &curve = TweenInfo(),
                int id = -1, const EntityInfo &entityInfo = EntityInfo(),
                const SoundInfo &sound = SoundInfo());
    /// Copies the values (file, spatial state, curve, id, sub-entity and sound
    /// data, cached time); the copy is detached from every tree.
    TimelineKey(const TimelineKey &other);
    TimelineKey &operator=(const TimelineKey &other);
    ~TimelineKey() override;

    // Values.
    FileInfo &fileInfo() { return mFileInfo; }
    const FileInfo &fileInfo() const { return mFileInfo; }
    void setFileInfo(const FileInfo &info) { mFileInfo = info; }
    DisplayInfo &info() { return mInfo; }
    const DisplayInfo &info() const { return mInfo; }
    void setInfo(const DisplayInfo &info) { mInfo = info; }
    TweenInfo &curve() { return mCurve; }
    const TweenInfo &curve() const { return mCurve; }
    void setCurve(const TweenInfo &curve) { mCurve = curve; }
    bool isInstant() const { return mCurve.isInstant(); }
    bool isLinear() const { return mCurve.isLinear(); }
    bool isQuadratic() const { return mCurve.isQuadratic(); }
    bool isCubic() const { return mCurve.isCubic(); }
    bool isEased() const { return mCurve.isEased(); }
    double trueT(double r) const { return mCurve.trueT(r); }
    int id() const { return mId; }
    void setId(int id) { mId = id; }
    /// Sub-entity and sound data. Only keys of those timelines carry them; the others
    /// read the defaults, and a non-const access gives a key its own.
    EntityInfo &entityInfo() { return extras().entityInfo; }
    const EntityInfo &entityInfo() const { return constExtras().entityInfo; }
    SoundInfo &soundInfo() { return extras().sound; }
    const SoundInfo &soundInfo() const { return constExtras().sound; }
    bool hasEntityOrSoundInfo() const { return mExtras != nullptr; }

    // Time.
    /// The mainline key's time when linked (also cached); otherwise the cached
    /// time when `useCached`, else `NoTime`.
    int time(bool useCached = true) const;
    int timeConst(bool useCached = true) const { return time(useCached); }
    /// Stores the cached time; used while the key is detached.
    void setCachedTime(int time) { mCachedTime = time; }
    int cachedTime() const { return mCachedTime; }

    // Links.
    /// The mainline key this key is a child of, or null.
    MainlineKey *mainKey() const;
    MainlineKey *associatedMainlineKey(bool searchByTime = false) const;
    int mainKeyId() const;
    /// Called by `MainlineKey` when it adopts or releases the key.
    void setMainKey(MainlineKey *key);
    /// The reference of the key's mainline key that points at this key.
    ObjectRef *ref() const;
    ObjectRef *parentRef() const;
    Timeline *parentTimeline() const;
    Animation *parentAnimation() const;
    Object *object() const;
    QImage pixmap(bool mapped = true) const { return mFileInfo.pixmap(mapped); }

    /// A key that is the only key of its timeline may not be deleted by
    /// editing commands.
    bool keyIsMandatory() const;
    /// (entity, animation, timeline, key) with a direct pointer to this key.
    Address address() const;

private:
    struct Extras
    {
        EntityInfo entityInfo;
        SoundInfo sound;
    };
    Extras &extras();
    const Extras &constExtras() const;
    void setExtras(const EntityInfo &entityInfo, const SoundInfo &sound);

    FileInfo mFileInfo;
    DisplayInfo mInfo;
    TweenInfo mCurve;
    int mId = -1;
    int mCachedTime = 0;
    // Kept by the mainline key, which adopts and releases its children (also when it is
    // destroyed), so a plain pointer never dangles.
    MainlineKey *mMainKey = nullptr;
    std::unique_ptr<Extras> mExtras;
};

} // namespace Morvane
