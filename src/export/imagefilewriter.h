// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

namespace Morvane {

/// Writes exported images. A failed write leaves no half image behind; errors
/// name the file and the system's reason.
class ImageFileWriter
{
public:
    /// The PNG bytes of `image`; with `premultiplied` the colours stored are
    /// multiplied by alpha, as game engines that blend premultiplied expect.
    static QByteArray encodePng(const QImage &image, bool premultiplied);
    /// Writes `bytes` as the file `path`; false with `error` set on failure.
    static bool writeFile(const QString &path, const QByteArray &bytes, QString *error);
    static bool writePng(const QString &path, const QImage &image, bool premultiplied,
                         QString *error);
};

} // namespace Morvane
