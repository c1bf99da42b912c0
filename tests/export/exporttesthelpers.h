// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

// Tiny projects written by the tests themselves: one entity "box" with one
// animation "move" in which a plain-coloured sprite (pivot at its top left)
// moves between keyed places, and an unparented bone that must never show in
// an export.

#include "canvas/morvanecanvasscene.h"
#include "io/projectfile.h"
#include "model/rigxdata.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QList>
#include <QPointF>
#include <QTemporaryDir>

namespace Morvane::Testing {

struct SpriteKey
{
    int time;
    QPointF pos; // canvas coordinates, y downward
};

class TinyProject
{
public:
    explicit TinyProject(const QList<SpriteKey> &keys, int length = 800, int interval = 100,
                         const QColor &colour = QColor(255, 0, 0), const QSize &size = QSize(10, 10))
    {
        ok = dir.isValid() && QDir(dir.path()).mkpath(QStringLiteral("img"));
        QImage sprite(size, QImage::Format_ARGB32);
        sprite.fill(colour);
        ok = ok && sprite.save(dir.filePath(QStringLiteral("img/sprite.png")));
        QByteArray mainline, timeline, bones;
        for (qsizetype i = 0; i < keys.size(); ++i) {
            const QByteArray id = QByteArray::number(i);
            QByteArray time;
            if (keys[i].time)
                time = " time=\"" + QByteArray::number(keys[i].time) + '"';
            mainline += "<key id=\"" + id + "\"" + time + "><bone_ref id=\"0\" timeline=\"1\" key=\""
                        + id + "\"/><object_ref id=\"0\" timeline=\"0\" key=\"" + id
                        + "\" z_index=\"0\"/></key>\n";
            // The file's y grows upwards.
            timeline += "<key id=\"" + id + "\"" + time + " spin=\"0\"><object folder=\"0\" file=\"0\" x=\""
                        + QByteArray::number(keys[i].pos.x()) + "\" y=\""
                        + QByteArray::number(-keys[i].pos.y()) + "\"/></key>\n";
            bones += "<key id=\"" + id + "\"" + time
                     + " spin=\"0\"><bone x=\"2\" y=\"-2\" angle=\"330\"/></key>\n";
        }
        const QByteArray xml =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<morvane_data rigx_version=\"1.0\" generator=\"Tallowcraft Morvane\" "
            "generator_version=\"r4.1\">\n"
            "<folder id=\"0\" name=\"img\"><file id=\"0\" name=\"img/sprite.png\" width=\""
            + QByteArray::number(size.width()) + "\" height=\"" + QByteArray::number(size.height())
            + "\" pivot_x=\"0\" pivot_y=\"1\"/></folder>\n"
              "<entity id=\"0\" name=\"box\">\n"
              "<obj_info name=\"sprite\" type=\"sprite\"><frames><i folder=\"0\" file=\"0\"/></frames></obj_info>\n"
              "<obj_info name=\"bone\" type=\"bone\" w=\"60\" h=\"10\"/>\n"
              "<animation id=\"0\" name=\"move\" length=\""
            + QByteArray::number(length) + "\" interval=\"" + QByteArray::number(interval)
            + "\" looping=\"false\">\n<mainline>\n" + mainline
            + "</mainline>\n<timeline id=\"0\" obj=\"0\" name=\"sprite\">\n" + timeline
            + "</timeline>\n<timeline id=\"1\" obj=\"1\" name=\"bone\" object_type=\"bone\">\n"
            + bones + "</timeline>\n</animation>\n</entity>\n</morvane_data>\n";
        QFile file(path());
        ok = ok && file.open(QIODevice::WriteOnly) && file.write(xml) == xml.size();
        file.close();
        QString error;
        ok = ok && ProjectFile::open(&document, path(), nullptr, &error);
        if (!error.isEmpty())
            qWarning("%s", qPrintable(error));
        if (ok)
            scene.setDocument(&document);
    }
    ~TinyProject() { scene.setDocument(nullptr); }

    QString path() const { return dir.filePath(QStringLiteral("tiny.rigx")); }
    QString out(const QString &name) const { return dir.filePath(name); }

    QTemporaryDir dir;
    RigxData document;
    MorvaneCanvasScene scene;
    bool ok = false;
};

/// The pixels of `image` that differ from what `expected` says they should be,
/// as "x,y" texts (the first few).
template<typename Expected>
QStringList wrongPixels(const QImage &image, Expected expected)
{
    QStringList wrong;
    const QImage plain = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < plain.height() && wrong.size() < 5; ++y) {
        for (int x = 0; x < plain.width() && wrong.size() < 5; ++x) {
            const QRgb want = expected(x, y);
            const QRgb got = plain.pixel(x, y);
            // Fully transparent pixels carry no colour.
            if (got != want && !(qAlpha(got) == 0 && qAlpha(want) == 0))
                wrong.append(QStringLiteral("%1,%2 is %3 not %4")
                                 .arg(x).arg(y).arg(got, 8, 16, QLatin1Char('0'))
                                 .arg(want, 8, 16, QLatin1Char('0')));
        }
    }
    return wrong;
}

} // namespace Morvane::Testing
