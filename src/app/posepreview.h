// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QPixmap>

#include <memory>

class QGraphicsScene;
class QGraphicsSimpleTextItem;
class QTimer;

namespace Morvane {

class EntityInstance;
class File;
class PosePreviewItem;
class RigxData;

// Plays the project's first entity on the canvas area, one loop of each of its
// animations in turn, until the canvas editor takes that place. Read-only: it
// never changes the document. Call setDocument again after the document
// changed, and with null before it is cleared.
class PosePreview : public QObject
{
    Q_OBJECT

public:
    explicit PosePreview(QGraphicsScene *scene, QObject *parent = nullptr);
    ~PosePreview() override;

    void setDocument(RigxData *document);
    // Takes the preview's items out of the scene (before the scene is cleared)
    // and stops playing.
    void detachFromScene();
    // The animation now shown, empty when nothing is.
    QString currentAnimationName() const;
    // Moves the preview on by `ms` (the timer does this while playing).
    void advance(int ms);

private:
    void showAnimation(int index);
    void updateLabel();

    QGraphicsScene *mScene;
    PosePreviewItem *mItem;
    QGraphicsSimpleTextItem *mLabel;
    QTimer *mTimer;
    QElapsedTimer mClock;
    RigxData *mDocument = nullptr;
    std::unique_ptr<EntityInstance> mInstance;
    int mAnimationIndex = 0;
    int mPlayed = 0;
};

} // namespace Morvane
