// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "projectgenerator.h"

#include "io/projectsaveoptions.h"
#include "io/xmlprojectwriter.h"

#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QBuffer>
#include <QList>

#include <cmath>

namespace Morvane {

void buildProject(RigxData &document, const ProjectShape &shape)
{
    const bool varied = shape.variedNumbers;
    auto *folder = new Folder(QStringLiteral("parts"));
    document.appendFolder(folder);
    QList<File *> files;
    const int fileCount = varied ? 7 : 64;
    for (int i = 0; i < fileCount; ++i) {
        auto *file = new File(QStringLiteral("parts/p%1.png").arg(i), 0.5, varied ? 0.25 : 0.5,
                              File::Image, document.projectDirectory());
        file->setSize(varied ? 10 + i : 32 + i, varied ? 20 + i : 48 + i);
        folder->appendFile(file);
        files.append(file);
    }
    auto *entity = new Entity(varied ? QStringLiteral("figure \"one\" <é>")
                                     : QStringLiteral("giant"));
    document.appendEntity(entity);
    QList<Object *> objects;
    for (int o = 0; o < shape.timelines; ++o) {
        const bool bone = varied ? o % 3 == 0 : o % 5 == 0;
        auto *object = new Object(QStringLiteral("part_%1").arg(o),
                                  bone ? Object::Bone : Object::Sprite);
        entity->appendObject(object, -1, false);
        objects.append(object);
    }
    const int step = varied ? 50 : 40;
    for (int a = 0; a < shape.animations; ++a) {
        auto *animation = new Animation(QStringLiteral("move_%1").arg(a), varied && a % 2 == 0);
        animation->setLength(shape.keys * step);
        entity->appendAnimation(animation);
        for (int t = 0; t < shape.timelines; ++t) {
            auto *timeline = new Timeline(objects.at(t), objects.at(t)->name());
            animation->appendTimeline(timeline, -1, true);
            for (int k = 0; k < shape.keys; ++k) {
                DisplayInfo info;
                if (varied) {
                    info.x = std::sin(a + t * 0.7 + k * 0.31) * 12345.678;
                    info.y = -std::cos(a * 0.2 + t + k) * 250.0;
                    info.angle = std::fmod(a * 11.0 + t * 29.0 + k * 13.7, 360.0);
                    info.xScale = 1.0 + (k % 4) * 0.125;
                    info.alpha = k % 3 == 0 ? 0.3 : 1.0;
                    info.setPivotX(0.5);
                    info.setPivotY(0.25);
                } else {
                    info.x = std::sin(a + t * 0.1 + k * 0.37) * 300.0;
                    info.y = std::cos(a * 0.3 + t + k * 0.11) * 200.0;
                    info.angle = std::fmod(a * 7.0 + t * 13.0 + k * 17.3, 360.0);
                    info.xScale = 1.0 + (k % 3) * 0.25;
                    info.alpha = k % 4 == 0 ? 0.5 : 1.0;
                    info.setPivotX(0.5);
                    info.setPivotY(0.5);
                }
                FileInfo file;
                if (!objects.at(t)->isBone())
                    file = FileInfo(files.at((varied ? a + t + k : t + k) % files.size())
                                        ->address());
                auto *key = new TimelineKey(file, info);
                key->setCachedTime(k * step);
                timeline->appendTimelineKey(key, false, false);
            }
        }
        animation->appendMainKeysForOrphanTimeKeys(false);
    }
}

QByteArray manyKeysXml(int timelines, int keysPerTimeline, bool withMainline, bool reversed)
{
    QByteArray text;
    text.reserve(qsizetype(timelines) * keysPerTimeline * (withMainline ? 80 : 36) + 1024);
    const auto indexAt = [&](int i) { return reversed ? keysPerTimeline - 1 - i : i; };
    text += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<morvane_data rigx_version=\"1.0\">\n"
            " <entity id=\"0\" name=\"keys\">\n";
    text += "  <animation id=\"0\" name=\"many\" length=\"";
    text += QByteArray::number(qint64(keysPerTimeline) * 10);
    text += "\" interval=\"10\">\n   <mainline>\n";
    if (withMainline) {
        for (int i = 0; i < keysPerTimeline; ++i) {
            const QByteArray k = QByteArray::number(indexAt(i));
            text += "    <key id=\"" + k + "\" time=\"" + QByteArray::number(indexAt(i) * 10)
                    + "\">\n";
            // Each reference names the key by its position in the file's order.
            const QByteArray position = QByteArray::number(i);
            for (int t = 0; t < timelines; ++t) {
                const QByteArray id = QByteArray::number(t);
                text += "     <object_ref id=\"" + id + "\" timeline=\"" + id + "\" key=\""
                        + position + "\" z_index=\"" + id + "\"/>\n";
            }
            text += "    </key>\n";
        }
    } else {
        text += "    <key id=\"0\"/>\n";
    }
    text += "   </mainline>\n";
    for (int t = 0; t < timelines; ++t) {
        const QByteArray id = QByteArray::number(t);
        text += "   <timeline id=\"" + id + "\" obj=\"" + id + "\" name=\"s" + id
                + "\" object_type=\"point\">\n";
        for (int i = 0; i < keysPerTimeline; ++i)
            text += "    <key id=\"" + QByteArray::number(i) + "\" time=\""
                    + QByteArray::number(indexAt(i) * 10) + "\"/>\n";
        text += "   </timeline>\n";
    }
    text += "  </animation>\n </entity>\n</morvane_data>\n";
    return text;
}

QByteArray savedXml(RigxData &document)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    XmlProjectWriter::write(document, &buffer, ProjectSaveOptions());
    return bytes;
}

} // namespace Morvane
