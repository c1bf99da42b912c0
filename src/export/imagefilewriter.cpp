// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "export/imagefilewriter.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImageWriter>
#include <QFile>

#include <cstring>

namespace Morvane {

QByteArray ImageFileWriter::encodePng(const QImage &image, bool premultiplied)
{
    QImage straight;
    if (premultiplied) {
        // The premultiplied values, stored as if they were plain ones.
        const QImage pm = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        straight = QImage(pm.width(), pm.height(), QImage::Format_ARGB32);
        for (int y = 0; y < pm.height(); ++y)
            std::memcpy(straight.scanLine(y), pm.constScanLine(y), size_t(pm.width()) * 4);
    } else {
        straight = image.convertToFormat(QImage::Format_ARGB32);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(straight))
        return QByteArray();
    return bytes;
}

bool ImageFileWriter::writeFile(const QString &path, const QByteArray &bytes, QString *error)
{
    auto fail = [&](const QString &reason) {
        if (error)
            *error = QCoreApplication::translate("ImageFileWriter", "Cannot write file %1: %2")
                         .arg(path, reason);
        return false;
    };
    if (bytes.isEmpty())
        return fail(QCoreApplication::translate("ImageFileWriter", "the image could not be encoded"));
    // Written in place, without a sync per file: an export writes many files
    // and none of them is the only copy of anything. A write that fails takes
    // its half-written file away.
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return fail(file.errorString());
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        const QString reason = file.errorString();
        file.close();
        file.remove();
        return fail(reason);
    }
    file.close();
    if (file.error() != QFileDevice::NoError) {
        file.remove();
        return fail(file.errorString());
    }
    return true;
}

bool ImageFileWriter::writePng(const QString &path, const QImage &image, bool premultiplied,
                               QString *error)
{
    return writeFile(path, encodePng(image, premultiplied), error);
}

} // namespace Morvane
