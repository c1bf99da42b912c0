// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/animationexporter.h"

#include "canvas/morvanecanvasscene.h"
#include "export/framerenderer.h"
#include "export/gifencoder.h"
#include "export/imagefilewriter.h"
#include "io/jsonwriter.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/mainlinekey.h"
#include "model/naming.h"
#include "model/rigxdata.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMutex>
#include <QPainter>
#include <QSemaphore>
#include <QThread>
#include <QThreadPool>

#include <cmath>
#include <memory>
#include <vector>

namespace Morvane {

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("AnimationExporter", text);
}

QRectF unite(const QRectF &a, const QRectF &b)
{
    if (a.isNull())
        return b;
    return b.isNull() ? a : a.united(b);
}

// Numbered PNGs are encoded and written on worker threads while the next
// frame renders; a few frames wait at most, so memory stays bounded.
class PngWriterPool
{
public:
    explicit PngWriterPool(bool premultiplied)
        : mPremultiplied(premultiplied)
        , mSlots(2 * qMax(1, QThread::idealThreadCount()))
    {
        mPool.setMaxThreadCount(qMax(1, QThread::idealThreadCount()));
    }
    ~PngWriterPool() { mPool.waitForDone(); }

    void write(int index, const QString &path, const QImage &image)
    {
        mSlots.acquire();
        {
            QMutexLocker lock(&mMutex);
            if (size_t(index) >= mWritten.size())
                mWritten.resize(size_t(index) + 1, QString());
        }
        mPool.start([this, index, path, image] {
            QString error;
            const bool ok = ImageFileWriter::writePng(path, image, mPremultiplied, &error);
            {
                QMutexLocker lock(&mMutex);
                if (ok) {
                    mWritten[size_t(index)] = path;
                } else if (mError.isEmpty() || index < mErrorIndex) {
                    // Frames finish out of order: the earliest failure is the one to tell.
                    mError = error;
                    mErrorIndex = index;
                }
            }
            mSlots.release();
        });
    }

    QString error() const
    {
        QMutexLocker lock(&mMutex);
        return mError;
    }

    /// Waits for every write; the files written, in frame order.
    QStringList finish()
    {
        mPool.waitForDone();
        QStringList files;
        for (const QString &path : mWritten) {
            if (!path.isEmpty())
                files.append(path);
        }
        return files;
    }

private:
    bool mPremultiplied;
    QSemaphore mSlots;
    QThreadPool mPool;
    mutable QMutex mMutex;
    std::vector<QString> mWritten;
    QString mError;
    int mErrorIndex = -1;
};

// `placed` holds each frame's rectangle within the image of `sourceSize`
// all frames share: the whole of it, unless frames were trimmed one by one.
QByteArray sheetJson(const QString &imageName, const QString &frameBase,
                     const QList<QRect> &cells, const QList<QRect> &placed,
                     const QSize &sourceSize, bool trimmed, const QList<FrameTime> &frames,
                     const QSize &sheetSize, const ExportOptions &options)
{
    std::string out;
    JsonWriter w(&out, true);
    w.beginObject();
    w.key("frames");
    w.beginObject();
    for (qsizetype i = 0; i < cells.size(); ++i) {
        const QRect &r = cells.at(i);
        w.key(QStringView(AnimationExporter::numberedFileName(frameBase, int(i))));
        w.beginObject();
        w.key("frame");
        w.beginObject();
        w.key("x");
        w.value(r.x());
        w.key("y");
        w.value(r.y());
        w.key("w");
        w.value(r.width());
        w.key("h");
        w.value(r.height());
        w.endObject();
        w.key("rotated");
        w.value(false);
        w.key("trimmed");
        w.value(trimmed);
        w.key("spriteSourceSize");
        w.beginObject();
        w.key("x");
        w.value(placed.at(i).x());
        w.key("y");
        w.value(placed.at(i).y());
        w.key("w");
        w.value(placed.at(i).width());
        w.key("h");
        w.value(placed.at(i).height());
        w.endObject();
        w.key("sourceSize");
        w.beginObject();
        w.key("w");
        w.value(sourceSize.width());
        w.key("h");
        w.value(sourceSize.height());
        w.endObject();
        w.key("duration");
        w.value(frames.at(i).duration);
        w.endObject();
    }
    w.endObject();
    w.key("meta");
    w.beginObject();
    w.key("app");
    w.value(QStringView(u"Morvane"));
    w.key("version");
    w.value(QStringView(u"" MORVANE_VERSION_STRING));
    w.key("image");
    w.value(QStringView(imageName));
    w.key("format");
    w.value(QStringView(u"RGBA8888"));
    w.key("size");
    w.beginObject();
    w.key("w");
    w.value(sheetSize.width());
    w.key("h");
    w.value(sheetSize.height());
    w.endObject();
    w.key("scale");
    w.value(QStringView(u"1"));
    w.key("premultiplied");
    w.value(options.premultiplied);
    // The distance of evenly spaced frames; with keyframes only the frames
    // carry their own durations and there is none.
    w.key("interval");
    if (options.keyframesOnly)
        w.valueNull();
    else
        w.value(options.interval);
    w.endObject();
    w.endObject();
    out.push_back('\n');
    return QByteArray(out.data(), qsizetype(out.size()));
}

} // namespace

QString AnimationExporter::baseName(const QString &output)
{
    const QFileInfo info(output);
    const QString name = info.fileName();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    // A name that is all suffix (".png") keeps it: there would be no name left.
    if (dot <= 0)
        return output;
    return output.left(output.size() - (name.size() - dot));
}

QString AnimationExporter::numberedFileName(const QString &base, int frame)
{
    return paddedNumber(frame, 3, base + QLatin1Char('_')) + QStringLiteral(".png");
}

QSize AnimationExporter::outputSize(const QRectF &source, const ExportOptions &options)
{
    const double w = source.width() * options.scaleWidth / 100.0;
    const double h = source.height() * options.scaleHeight / 100.0;
    // Bounded well inside what an image can hold; the options are checked
    // before a run, this only keeps a hostile rectangle from overflowing.
    auto pixels = [](double v) {
        return std::isfinite(v) ? int(qBound(1.0, std::round(v), 16384.0)) : 1;
    };
    return QSize(pixels(w), pixels(h));
}

QRectF AnimationExporter::fixedSource(MorvaneCanvasScene *scene, const ExportOptions &options,
                                      const QList<FrameTime> &frames)
{
    Entity *entity = scene->currentEntity();
    QRectF source;
    switch (options.trim) {
    case TrimType::Custom:
        return options.customRect.normalized();
    case TrimType::EachFrame:
        return QRectF();
    case TrimType::Animation: {
        // The frames of the run and every key: the whole animation's box,
        // even where the frames step over a key.
        QList<int> times;
        for (const FrameTime &f : frames)
            times.append(f.time);
        const Animation *animation = scene->currentAnimation();
        for (int k = 0; animation && k < animation->mainlineKeyCount(); ++k)
            times.append(animation->mainlineKey(k)->currentTime());
        source = animationBounds(entity, scene->currentAnimation(), times);
        break;
    }
    case TrimType::Entity:
        source = entityBounds(entity, options.interval);
        break;
    case TrimType::AllEntities:
        if (RigxData *document = scene->model()) {
            for (int i = 0; i < document->entityCount(); ++i)
                source = unite(source, entityBounds(document->entity(i), options.interval));
        }
        break;
    }
    return source;
}

ExportResult AnimationExporter::run(MorvaneCanvasScene *scene, const ExportOptions &options,
                                    const QString &output, const Progress &progress)
{
    ExportResult result;
    Animation *animation = scene ? scene->currentAnimation() : nullptr;
    if (!animation) {
        result.error = tr("There is no animation to export.");
        return result;
    }
    if (!options.keyframesOnly && options.interval <= 0) {
        result.error = tr("The frame interval must be at least 1 ms.");
        return result;
    }
    if (!(options.scaleWidth > 0) || !(options.scaleHeight > 0)) {
        result.error = tr("The output scale must be above 0 %.");
        return result;
    }
    const QList<FrameTime> frames = exportFrameTimes(animation, options);
    if (frames.isEmpty()) {
        result.error = tr("The animation has no frames to export.");
        return result;
    }
    const QString base = baseName(output);
    const bool eachFrame = options.trim == TrimType::EachFrame;
    // A box worked out from the images grows to whole canvas units, so that
    // at 100 % every image pixel lands on one output pixel.
    auto aligned = [&options](const QRectF &r) {
        return options.trim == TrimType::Custom || r.isEmpty() ? r : QRectF(r.toAlignedRect());
    };
    QRectF source = aligned(fixedSource(scene, options, frames));
    // An animation that draws nothing still gives images: one transparent pixel.
    if (!eachFrame && source.isEmpty())
        source = QRectF(source.topLeft(), QSizeF(1, 1));
    const QColor background = options.fillBackground ? options.background : QColor(Qt::transparent);

    FrameRenderer renderer(scene, options);
    std::unique_ptr<PngWriterPool> pngs;
    if (options.kind == ExportKind::NumberedPngs)
        pngs = std::make_unique<PngWriterPool>(options.premultiplied);
    // A GIF's frames are prepared on worker threads while the next renders.
    // Frames trimmed one by one keep their places in the box of them all, so
    // the figure does not jump about.
    std::unique_ptr<GifEncoder> gif;
    if (options.kind == ExportKind::Gif)
        gif = std::make_unique<GifEncoder>(options.gif, background);
    QList<QImage> images;
    QList<QRectF> sources;
    for (qsizetype i = 0; i < frames.size(); ++i) {
        renderer.setTime(frames.at(i).time);
        QRectF frameSource = source;
        if (eachFrame) {
            frameSource = aligned(renderer.frameBounds());
            if (frameSource.isEmpty())
                frameSource = QRectF(frameSource.topLeft(), QSizeF(1, 1));
        }
        const QSize size = outputSize(frameSource, options);
        const QImage image = renderer.exportPngToImage(QRectF(QPointF(0, 0), QSizeF(size)),
                                                       frameSource, background);
        if (i == 0) {
            result.frameSize = image.size();
            result.source = frameSource;
        }
        sources.append(frameSource);
        result.frames.append(frames.at(i));
        if (pngs) {
            pngs->write(int(i), numberedFileName(base, int(i)), image);
            const QString error = pngs->error();
            if (!error.isEmpty()) {
                result.error = error;
                break;
            }
        } else if (gif) {
            // Hundredths of a second, truncated, but at least two: viewers
            // show frames asking for less at a tenth of a second, so a 60 fps
            // export would crawl instead of running at 50 fps.
            const QPoint position(int(std::lround(frameSource.left() * options.scaleWidth / 100.0)),
                                  int(std::lround(frameSource.top() * options.scaleHeight / 100.0)));
            gif->addFrame(image, qMax(2, frames.at(i).duration / 10), position);
        } else {
            images.append(image);
        }
        if (progress && !progress(int(i) + 1, int(frames.size()))) {
            result.cancelled = true;
            break;
        }
    }
    if (pngs) {
        result.files = pngs->finish();
        // With every write done, the earliest frame that failed is known.
        if (!pngs->error().isEmpty())
            result.error = pngs->error();
        result.ok = result.error.isEmpty() && !result.cancelled;
        return result;
    }
    if (!result.error.isEmpty() || result.cancelled)
        return result;

    if (options.kind == ExportKind::SpriteSheet) {
        QSize cell;
        for (const QImage &image : std::as_const(images))
            cell = cell.expandedTo(image.size());
        const int n = int(images.size());
        const int perRow = options.framesPerRow > 0 ? qMin(options.framesPerRow, n) : n;
        const int rows = getOtherOrientationNumberOfTiles(n, perRow);
        const QSize sheetSize(perRow * cell.width(), rows * cell.height());
        QImage sheet(sheetSize, QImage::Format_ARGB32_Premultiplied);
        sheet.fill(Qt::transparent);
        // Frames trimmed one by one keep their place in the box of them all,
        // so that an engine playing the sheet does not make them jump about.
        QRectF all;
        for (const QRectF &r : std::as_const(sources))
            all = unite(all, r);
        QSize sourceSize = eachFrame ? outputSize(all, options) : cell;
        QList<QRect> cells;
        QList<QRect> placed;
        QPainter painter(&sheet);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        for (int k = 0; k < n; ++k) {
            const QPoint at((k % perRow) * cell.width(), (k / perRow) * cell.height());
            painter.drawImage(at, images.at(k));
            cells.append(QRect(at, images.at(k).size()));
            QPoint offset;
            if (eachFrame) {
                offset = QPoint(int(std::lround((sources.at(k).left() - all.left()) * options.scaleWidth / 100.0)),
                                int(std::lround((sources.at(k).top() - all.top()) * options.scaleHeight / 100.0)));
            }
            placed.append(QRect(offset, images.at(k).size()));
            // Rounding never leaves a frame sticking out of the shared box.
            sourceSize = sourceSize.expandedTo(QSize(placed.last().right() + 1, placed.last().bottom() + 1));
        }
        painter.end();
        const QString sheetPath = base + QStringLiteral(".png");
        if (!ImageFileWriter::writePng(sheetPath, sheet, options.premultiplied, &result.error))
            return result;
        result.files.append(sheetPath);
        const QString jsonPath = base + QStringLiteral(".json");
        const QByteArray json = sheetJson(QFileInfo(sheetPath).fileName(), QFileInfo(base).fileName(),
                                          cells, placed, sourceSize, eachFrame, result.frames,
                                          sheetSize, options);
        if (!ImageFileWriter::writeFile(jsonPath, json, &result.error))
            return result;
        result.files.append(jsonPath);
        result.ok = true;
        return result;
    }

    QByteArray bytes;
    QString error;
    const QString gifPath = base + QStringLiteral(".gif");
    if (!gif->finish(&bytes, &error)) {
        result.error = gifPath + QStringLiteral(": ") + error;
        return result;
    }
    if (!ImageFileWriter::writeFile(gifPath, bytes, &result.error))
        return result;
    result.files.append(gifPath);
    result.ok = true;
    return result;
}

} // namespace Morvane
