// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// Builds the bundled example character through the project model and saves it
// with the editor's own file code, in both forms: examples/hero/hero.rigx and
// hero.rigj. The images come from make_example_images.
//
// The hero: a bone hierarchy (hip, spine, neck, two-part arms and legs) with a
// sprite on every bone, two animations ("idle" and "walk"), a "knight"
// character map that swaps head and torso, and a lantern held in the front
// hand: a sub-entity with its own "flicker" animation.

#include "model/charactermap.h"
#include "model/displayinfo.h"
#include "model/entityinfo.h"
#include "model/tweeninfo.h"
#include "io/projectfile.h"
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

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHash>

#include <cstdio>
#include <functional>

using namespace Morvane;

namespace {

DisplayInfo state(double x, double y, double angle, double xScale = 1.0, double yScale = 1.0)
{
    DisplayInfo d;
    d.x = x;
    d.y = y;
    d.angle = angle < 0 ? angle + 360.0 : angle;
    d.xScale = xScale;
    d.yScale = yScale;
    return d;
}

// One animation being built: every part gets a key at every mainline time, so
// each mainline key refers to a key of each timeline at its own time.
class AnimationBuilder
{
public:
    AnimationBuilder(Entity *entity, const QString &name, int length, QList<int> times)
        : mTimes(std::move(times))
    {
        mAnimation = new Animation(name);
        mAnimation->setLength(length);
        mAnimation->setLoopingMode(Animation::Looping);
        entity->appendAnimation(mAnimation);
        for (int time : std::as_const(mTimes))
            mAnimation->appendMainlineKey(new MainlineKey, time, true, true);
    }

    // Adds a timeline for `object` whose parent bone timeline is `parent`; the
    // pose function gives its state at each mainline time.
    Timeline *part(Object *object, Timeline *parent, File *image,
                   const std::function<DisplayInfo(int time)> &pose,
                   const EntityInfo &sub = EntityInfo())
    {
        Timeline *timeline = mAnimation->appendObjectAsTimeline(object);
        mParents.insert(timeline, parent);
        mOrder.append(timeline);
        TweenInfo smooth;
        for (int time : std::as_const(mTimes)) {
            DisplayInfo info = pose(time);
            FileInfo file;
            if (image) {
                file = FileInfo(image->address());
                info.setDefaultPivot(true, image->address());
                info.width = image->width();
                info.height = image->height();
            }
            auto *key = new TimelineKey(file, info, smooth, -1, sub);
            key->setCachedTime(time);
            timeline->appendTimelineKey(key);
        }
        return timeline;
    }

    // Bones first, parents before children; then the objects in the order they
    // were added, which is back to front.
    void link()
    {
        for (int m = 0; m < mAnimation->mainlineKeyCount(); ++m) {
            MainlineKey *mainlineKey = mAnimation->mainlineKey(m);
            QHash<Timeline *, BoneRef *> bones;
            for (bool bonePass : {true, false}) {
                for (Timeline *timeline : std::as_const(mOrder)) {
                    if (timeline->isBone() != bonePass)
                        continue;
                    ObjectRef *ref = mainlineKey->appendRef(timeline, m);
                    if (timeline->isBone())
                        bones.insert(timeline, static_cast<BoneRef *>(ref));
                }
            }
            for (int i = 0; i < mainlineKey->refCount(); ++i) {
                ObjectRef *ref = mainlineKey->ref(i);
                ref->setParentRef(bones.value(mParents.value(ref->timeline()), nullptr));
            }
        }
    }

private:
    Animation *mAnimation = nullptr;
    QList<int> mTimes;
    QHash<Timeline *, Timeline *> mParents;
    QList<Timeline *> mOrder;
};

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QString root = QDir(argc > 1 ? QString::fromLocal8Bit(argv[argc - 1])
                                       : QStringLiteral("examples"))
                             .absoluteFilePath(QStringLiteral("hero"));
    const QString xmlPath = root + QStringLiteral("/hero.rigx");

    RigxData document(nullptr, QStringLiteral(MORVANE_VERSION_STRING));
    document.setFilePath(xmlPath);

    // Images, with default pivots at the joints they hang from.
    QHash<QString, File *> files;
    const struct
    {
        const char *folder;
        const char *name;
        double pivotX, pivotY;
    } images[] = {
        {"body", "head", 0.5, 0.94},       {"body", "torso", 0.5, 0.86},
        {"body", "upper_arm", 0.5, 0.12},  {"body", "lower_arm", 0.5, 0.1},
        {"body", "upper_leg", 0.5, 0.08},  {"body", "lower_leg", 0.35, 0.06},
        {"costume", "head_knight", 0.5, 0.94}, {"costume", "torso_knight", 0.5, 0.86},
        {"props", "lantern", 0.5, 0.02},   {"props", "flame", 0.5, 0.9},
    };
    QHash<QString, Folder *> folders;
    for (const auto &image : images) {
        const QString folderName = QString::fromLatin1(image.folder);
        Folder *&folder = folders[folderName];
        if (!folder) {
            folder = new Folder(folderName);
            document.appendFolder(folder);
        }
        auto *file = new File(folderName + QLatin1Char('/') + QString::fromLatin1(image.name)
                                  + QStringLiteral(".png"),
                              image.pivotX, image.pivotY, File::Image, root);
        folder->appendFile(file);
        if (!file->imageLoaded()) {
            std::fprintf(stderr, "Error: Cannot read file %s (run make_example_images first)\n",
                         qPrintable(file->fullPath()));
            return 1;
        }
        files.insert(QString::fromLatin1(image.name), file);
    }

    auto *hero = new Entity(QStringLiteral("hero"));
    document.appendEntity(hero);
    auto *lantern = new Entity(QStringLiteral("lantern"));
    document.appendEntity(lantern);

    auto object = [](Entity *entity, const QString &name, int type, double width = 0) {
        auto *o = new Object(name, type);
        if (width > 0)
            o->defaultState().info().width = width;
        entity->appendObject(o);
        return o;
    };

    // The lantern: a body and a flickering flame.
    Object *lanternBody = object(lantern, QStringLiteral("lantern"), Object::Sprite);
    Object *flame = object(lantern, QStringLiteral("flame"), Object::Sprite);
    {
        AnimationBuilder flicker(lantern, QStringLiteral("flicker"), 600, {0, 200, 400});
        flicker.part(lanternBody, nullptr, files.value("lantern"),
                     [](int) { return state(0, 0, 0); });
        flicker.part(flame, nullptr, files.value("flame"), [](int t) {
            const double s = t == 200 ? 1.25 : t == 400 ? 0.85 : 1.0;
            return state(0, 26, t == 200 ? 6 : t == 400 ? -5 : 0, s, s);
        });
        flicker.link();
    }

    // The hero's parts. Angles are degrees clockwise on screen (y down);
    // bones point along their x axis.
    Object *hip = object(hero, QStringLiteral("hip"), Object::Bone, 20);
    Object *spine = object(hero, QStringLiteral("spine"), Object::Bone, 64);
    Object *neck = object(hero, QStringLiteral("neck"), Object::Bone, 16);
    Object *armBackUpper = object(hero, QStringLiteral("arm_back_upper"), Object::Bone, 38);
    Object *armBackLower = object(hero, QStringLiteral("arm_back_lower"), Object::Bone, 34);
    Object *armFrontUpper = object(hero, QStringLiteral("arm_front_upper"), Object::Bone, 38);
    Object *armFrontLower = object(hero, QStringLiteral("arm_front_lower"), Object::Bone, 34);
    Object *legBackUpper = object(hero, QStringLiteral("leg_back_upper"), Object::Bone, 40);
    Object *legBackLower = object(hero, QStringLiteral("leg_back_lower"), Object::Bone, 40);
    Object *legFrontUpper = object(hero, QStringLiteral("leg_front_upper"), Object::Bone, 40);
    Object *legFrontLower = object(hero, QStringLiteral("leg_front_lower"), Object::Bone, 40);

    Object *sArmBackUpper = object(hero, QStringLiteral("back_upper_arm"), Object::Sprite);
    Object *sArmBackLower = object(hero, QStringLiteral("back_lower_arm"), Object::Sprite);
    Object *sLegBackUpper = object(hero, QStringLiteral("back_upper_leg"), Object::Sprite);
    Object *sLegBackLower = object(hero, QStringLiteral("back_lower_leg"), Object::Sprite);
    Object *sTorso = object(hero, QStringLiteral("torso"), Object::Sprite);
    Object *sHead = object(hero, QStringLiteral("head"), Object::Sprite);
    Object *sLegFrontUpper = object(hero, QStringLiteral("front_upper_leg"), Object::Sprite);
    Object *sLegFrontLower = object(hero, QStringLiteral("front_lower_leg"), Object::Sprite);
    Object *sLantern = object(hero, QStringLiteral("lantern"), Object::SubEntity);
    Object *sArmFrontUpper = object(hero, QStringLiteral("front_upper_arm"), Object::Sprite);
    Object *sArmFrontLower = object(hero, QStringLiteral("front_lower_arm"), Object::Sprite);

    EntityInfo lanternPlay;
    lanternPlay.animation = Address(&document, {1, 0});
    lanternPlay.ratioControlMethod = EntityInfo::SpeedRatioControl;
    lanternPlay.speedRatio = 1.0;

    // Both animations share the rig; only the joint angles differ. A limb's
    // sprite turns its downward-drawn image onto the bone's x axis (270), the
    // torso and head point up the spine (90).
    struct Angles
    {
        double hipY, spine, armBack, elbowBack, armFront, elbowFront;
        double legBack, kneeBack, legFront, kneeFront;
    };
    auto build = [&](const QString &name, int length, const QList<int> &times,
                     const std::function<Angles(int)> &at) {
        AnimationBuilder anim(hero, name, length, times);
        Timeline *tHip = anim.part(hip, nullptr, nullptr,
                                   [&](int t) { return state(0, at(t).hipY, 0); });
        Timeline *tSpine = anim.part(spine, tHip, nullptr,
                                     [&](int t) { return state(0, -4, 270 + at(t).spine); });
        Timeline *tNeck = anim.part(neck, tSpine, nullptr, [](int) { return state(66, 0, 0); });
        Timeline *tArmBackUpper = anim.part(armBackUpper, tSpine, nullptr,
                                            [&](int t) { return state(58, -4, 180 + at(t).armBack); });
        Timeline *tArmBackLower = anim.part(armBackLower, tArmBackUpper, nullptr,
                                            [&](int t) { return state(36, 0, at(t).elbowBack); });
        Timeline *tArmFrontUpper = anim.part(armFrontUpper, tSpine, nullptr,
                                             [&](int t) { return state(58, 4, 180 + at(t).armFront); });
        Timeline *tArmFrontLower = anim.part(armFrontLower, tArmFrontUpper, nullptr,
                                             [&](int t) { return state(36, 0, at(t).elbowFront); });
        Timeline *tLegBackUpper = anim.part(legBackUpper, tHip, nullptr,
                                            [&](int t) { return state(-4, 4, 90 + at(t).legBack); });
        Timeline *tLegBackLower = anim.part(legBackLower, tLegBackUpper, nullptr,
                                            [&](int t) { return state(40, 0, at(t).kneeBack); });
        Timeline *tLegFrontUpper = anim.part(legFrontUpper, tHip, nullptr,
                                             [&](int t) { return state(4, 4, 90 + at(t).legFront); });
        Timeline *tLegFrontLower = anim.part(legFrontLower, tLegFrontUpper, nullptr,
                                             [&](int t) { return state(40, 0, at(t).kneeFront); });

        const auto limb = [](int) { return state(0, 0, 270); };
        anim.part(sArmBackUpper, tArmBackUpper, files.value("upper_arm"), limb);
        anim.part(sArmBackLower, tArmBackLower, files.value("lower_arm"), limb);
        anim.part(sLegBackUpper, tLegBackUpper, files.value("upper_leg"), limb);
        anim.part(sLegBackLower, tLegBackLower, files.value("lower_leg"), limb);
        anim.part(sTorso, tSpine, files.value("torso"), [](int) { return state(0, 0, 90); });
        anim.part(sHead, tNeck, files.value("head"), [](int) { return state(0, 0, 90); });
        anim.part(sLegFrontUpper, tLegFrontUpper, files.value("upper_leg"), limb);
        anim.part(sLegFrontLower, tLegFrontLower, files.value("lower_leg"), limb);
        // The lantern hangs from the front hand, upright whatever the arm does.
        anim.part(sLantern, tArmFrontLower, nullptr,
                  [&](int t) {
                      const Angles a = at(t);
                      return state(34, 0, -(270 + a.spine + 180 + a.armFront + a.elbowFront - 360),
                                   0.8, 0.8);
                  },
                  lanternPlay);
        anim.part(sArmFrontUpper, tArmFrontUpper, files.value("upper_arm"), limb);
        anim.part(sArmFrontLower, tArmFrontLower, files.value("lower_arm"), limb);
        anim.link();
    };

    build(QStringLiteral("idle"), 1200, {0, 600}, [](int t) {
        const bool up = t == 600;
        return Angles{up ? -2.0 : 0.0, up ? -2.0 : 1.0, up ? -6.0 : -2.0, up ? 10.0 : 6.0,
                      up ? 6.0 : 2.0, up ? -36.0 : -30.0, 4, 0, -4, 0};
    });
    build(QStringLiteral("walk"), 800, {0, 200, 400, 600}, [](int t) {
        // Contact, passing, contact (other leg), passing.
        switch (t) {
        case 0:
            return Angles{0, 4, 28, 8, -10, -40, -26, 10, 24, 4};
        case 200:
            return Angles{-4, 3, 0, 12, 0, -34, 0, 40, 0, 8};
        case 400:
            return Angles{0, 4, -20, 4, 18, -28, 24, 4, -26, 10};
        default:
            return Angles{-4, 3, 0, 12, 0, -34, 0, 8, 0, 40};
        }
    });

    // The knight costume: a helmet and armour in place of head and shirt.
    CharacterMap knight(QStringLiteral("knight"));
    knight.addMap(files.value("head")->address(), files.value("head_knight")->address());
    knight.addMap(files.value("torso")->address(), files.value("torso_knight")->address());
    hero->appendCharMap(knight);

    QString error;
    const QString jsonPath = root + QStringLiteral("/hero.rigj");
    for (const QString &path : {xmlPath, jsonPath}) {
        if (!ProjectFile::save(&document, path, ProjectSaveOptions(), nullptr, &error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
        std::printf("Wrote %s\n", qPrintable(QDir::current().relativeFilePath(path)));
    }
    return 0;
}
