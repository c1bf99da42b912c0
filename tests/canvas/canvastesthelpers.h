// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

// The example project in a temporary folder, with an undo stack, and its
// saved bytes.

#include "eval/entityinstance.h"
#include "io/projectfile.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"
#include "testfiles.h"

#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <memory>

namespace Morvane::Testing {

class HeroProject
{
public:
    HeroProject()
        : document(&stack)
    {
        const QString source = QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero");
        ok = dir.isValid() && copyTree(source, dir.path() + QStringLiteral("/hero"));
        QString error;
        ok = ok && ProjectFile::open(&document, projectPath(), nullptr, &error);
        if (!error.isEmpty())
            qWarning("%s", qPrintable(error));
    }

    QString projectPath() const { return dir.path() + QStringLiteral("/hero/hero.rigx"); }

    /// The document as saved now, into a file of its own in the project folder.
    QByteArray savedBytes()
    {
        const QString path = dir.path() + QStringLiteral("/hero/saved_%1.rigx").arg(saves++);
        QString error;
        if (!ProjectFile::save(&document, path, ProjectSaveOptions(), nullptr, &error)) {
            qWarning("%s", qPrintable(error));
            return QByteArray();
        }
        return readAll(path);
    }

    /// Undoing the last step gives `before` back, redoing it gives what it made, and
    /// undoing again `before`, all as saved bytes.
    bool undoRedoRoundTrip(const QByteArray &before)
    {
        const QByteArray after = savedBytes();
        stack.undo();
        const bool undone = savedBytes() == before;
        stack.redo();
        const bool redone = savedBytes() == after;
        stack.undo();
        return undone && redone && savedBytes() == before;
    }

    /// The document saved to a file of its own and read again into `copy`.
    bool reread(RigxData *copy)
    {
        const QString path = dir.path() + QStringLiteral("/hero/reread_%1.rigx").arg(saves++);
        return ProjectFile::save(&document, path) && ProjectFile::open(copy, path);
    }

    Animation *animation(const QString &name) const { return document.entity(0)->animation(name); }

    QTemporaryDir dir;
    QUndoStack stack;
    RigxData document;
    bool ok = false;
    int saves = 0;
};

/// World x, y and angle of every bone and object at `time`, by timeline index.
inline QMap<int, QList<double>> worldPose(Entity *entity, Animation *animation, int time)
{
    EntityInstance instance(entity, animation);
    instance.setCurrentTime(time);
    instance.refresh();
    QMap<int, QList<double>> result;
    for (const auto *list : {&instance.pose().bones, &instance.pose().objects}) {
        for (const PoseItem &item : *list)
            result.insert(item.timelineIndex, {item.x, item.y, item.angle, item.xScale, item.yScale});
    }
    return result;
}

inline bool samePose(const QMap<int, QList<double>> &a, const QMap<int, QList<double>> &b,
                     double tolerance = 1e-6)
{
    if (a.keys() != b.keys())
        return false;
    for (auto it = a.constBegin(); it != a.constEnd(); ++it) {
        const QList<double> &other = b.value(it.key());
        for (int i = 0; i < it.value().size(); ++i) {
            double d = std::abs(it.value()[i] - other[i]);
            if (i == 2)
                d = std::min(d, 360.0 - d);
            if (d > tolerance)
                return false;
        }
    }
    return true;
}

} // namespace Morvane::Testing
