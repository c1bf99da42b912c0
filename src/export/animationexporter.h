// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "export/exportoptions.h"

#include <QList>
#include <QRectF>
#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>

namespace Morvane {

class MorvaneCanvasScene;

/// What an export run did.
struct ExportResult
{
    bool ok = false;
    /// Stopped by the progress callback; what was written stays.
    bool cancelled = false;
    /// Why the run failed, naming the file; empty on success and on cancelling.
    QString error;
    /// The frames rendered (all of them when the run completed).
    QList<FrameTime> frames;
    /// The files written, in frame order (the sheet's JSON after the sheet).
    QStringList files;
    /// One frame's size in pixels (the first frame's when trimming to each frame).
    QSize frameSize;
    /// The source rectangle in canvas coordinates (the first frame's when
    /// trimming to each frame).
    QRectF source;
};

/// Runs one export of the animation a canvas scene shows: renders its frames
/// (`FrameRenderer`) and writes them as numbered PNGs, one sprite sheet with
/// its JSON, or a GIF. The window's dialog and `morvane-cli render` both come
/// here. The scene's time, onion skin, smoothing and selection are given back
/// afterwards.
class AnimationExporter
{
public:
    /// Called after each frame with the frames done and the total; returning
    /// false stops the run after that frame.
    using Progress = std::function<bool(int done, int total)>;

    /// `output` is the chosen file name; its suffix is cut off to give the
    /// base name the files are named after.
    static ExportResult run(MorvaneCanvasScene *scene, const ExportOptions &options,
                            const QString &output, const Progress &progress = Progress());

    /// `output` without its suffix ("/a/walk.png" gives "/a/walk").
    static QString baseName(const QString &output);
    /// The numbered file of frame `frame`: base, "_", the number padded to
    /// three digits, ".png".
    static QString numberedFileName(const QString &base, int frame);
    /// The pixel size of a source rectangle under the options' scale.
    static QSize outputSize(const QRectF &source, const ExportOptions &options);
    /// The source rectangle for trims decided before the run (all but
    /// "each frame"), given the run's frames.
    static QRectF fixedSource(MorvaneCanvasScene *scene, const ExportOptions &options,
                              const QList<FrameTime> &frames);
};

} // namespace Morvane
