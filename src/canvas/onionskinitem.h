// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QColor>
#include <QGraphicsItem>
#include <QHash>
#include <QImage>
#include <QPixmap>
#include <QTransform>

#include <vector>

namespace Morvane {

class MorvaneCanvasScene;

/// Faint copies of the animation before and after the current time, under
/// everything else: earlier ones tinted red, later ones green, fainter with
/// distance. They are pictures only: never hit, never selected.
class OnionSkinItem : public QGraphicsItem
{
public:
    enum class Mode { Frames, Keys };

    explicit OnionSkinItem(MorvaneCanvasScene *scene);

    bool isOn() const { return mOn; }
    void setOn(bool on);
    Mode mode() const { return mMode; }
    void setMode(Mode mode);
    /// How many frames (snapping intervals) or mainline keys on each side.
    int before() const { return mBefore; }
    int after() const { return mAfter; }
    void setCounts(int before, int after);
    /// Only the selected objects get copies.
    bool selectionOnly() const { return mSelectionOnly; }
    void setSelectionOnly(bool on);

    /// The times of the copies around `time` in `scene`'s animation, nearest
    /// first on each side: earlier ones, then later ones (milliseconds).
    QList<int> earlierTimes() const { return mEarlier; }
    QList<int> laterTimes() const { return mLater; }

    /// Poses the copies again (after a change of the document, time or selection).
    void refresh();
    /// Forgets the tinted images (another document).
    void clearCache() { mTinted.clear(); }

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;

private:
    struct Image
    {
        QTransform transform;
        QRectF rect;
        QString file;
        QImage image;
        double opacity;
        bool earlier;
    };
    void collectTimes();
    const QPixmap &tinted(const Image &image);

    MorvaneCanvasScene *mScene;
    bool mOn = false;
    Mode mMode = Mode::Frames;
    int mBefore = 2;
    int mAfter = 2;
    bool mSelectionOnly = false;
    QList<int> mEarlier;
    QList<int> mLater;
    std::vector<Image> mImages;
    QRectF mBounds;
    QHash<QString, QPixmap> mTinted; // file path + side
};

} // namespace Morvane
