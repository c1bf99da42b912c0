// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDateTime>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QThreadPool>

namespace Morvane {

/// Small pictures of image files for the palette, decoded on a worker thread
/// and kept per path until the file on disk changes (its size or time).
/// `thumbnail` answers from the cache at once or asks the worker and returns a
/// null image; `ready` follows on the GUI thread when the picture is there.
/// Files that are not regular files, or claim more than `MaxPixels`, are never
/// decoded.
class ThumbnailLoader : public QObject
{
    Q_OBJECT

public:
    static constexpr int Side = 40;
    static constexpr qint64 MaxPixels = 64LL * 1024 * 1024;

    explicit ThumbnailLoader(QObject *parent = nullptr);
    ~ThumbnailLoader() override;

    /// The cached picture of `path` (absolute); null while it is being made or
    /// when the file cannot be read.
    QImage thumbnail(const QString &path);
    /// How many decodes were started, for telling a cache hit from a miss.
    int decodeCount() const { return mDecodes; }
    /// Blocks until every queued decode is done (tests, shutdown).
    void waitForDone() { mPool.waitForDone(); }

    /// The picture of `path` scaled to fit `Side`, on the calling thread.
    static QImage decode(const QString &path);

Q_SIGNALS:
    void ready(const QString &path);

private:
    struct Entry
    {
        QImage image;
        QDateTime modified;
        qint64 size = -1;
        bool failed = false;
    };
    void store(const QString &path, const QImage &image, const QDateTime &modified, qint64 size);

    QThreadPool mPool;
    QHash<QString, Entry> mCache;
    QSet<QString> mPending;
    int mDecodes = 0;
};

} // namespace Morvane
