// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "packcommand.h"

#include "atlas/bindatlascommand.h"
#include "atlas/spritesheetpacker.h"
#include "clicommand.h"
#include "io/jsonwriter.h"
#include "io/projectfile.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace Morvane {

namespace {

bool number(const QCommandLineParser &parser, const QString &option, int low, int high, int *value)
{
    if (!parser.isSet(option))
        return true;
    bool ok = false;
    *value = parser.value(option).toInt(&ok);
    return ok && *value >= low && *value <= high;
}

} // namespace

void PackCommand::addOptions(QCommandLineParser &parser)
{
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("The project whose images to pack."));
    parser.addOption({QStringLiteral("out"),
                      QStringLiteral("The directory the sheets are written to (required)."),
                      QStringLiteral("DIR")});
    parser.addOption({QStringLiteral("max-size"),
                      QStringLiteral("Largest sheet width and height, 16 to 8192 (2048)."),
                      QStringLiteral("N")});
    parser.addOption({QStringLiteral("padding"),
                      QStringLiteral("Transparent pixels between frames, 0 to 64 (2)."),
                      QStringLiteral("N")});
    parser.addOption({QStringLiteral("extrude"),
                      QStringLiteral("Edge pixels repeated around each frame, 0 to 16 (0)."),
                      QStringLiteral("N")});
    parser.addOption(
        {QStringLiteral("trim"), QStringLiteral("Cut transparent borders off the frames.")});
    parser.addOption(
        {QStringLiteral("rotate"), QStringLiteral("Allow frames stored turned a quarter.")});
    parser.addOption({QStringLiteral("bind"),
                      QStringLiteral("Also save the project as this file, beside the sheets' "
                                     "directory or above it, with its folders bound to the "
                                     "sheets."),
                      QStringLiteral("OUTPUT_PROJECT")});
}

int PackCommand::run(const QCommandLineParser &parser)
{
    const QString path = parser.positionalArguments().at(0);
    const QString out = parser.value(QStringLiteral("out"));
    if (out.isEmpty())
        return cliUsageError("pack", QStringLiteral("missing --out DIR"));
    SpriteSheetPacker::Options options;
    if (!number(parser, QStringLiteral("max-size"), 16, SpriteSheetPacker::MaxSheetSide,
                &options.maxSize))
        return cliUsageError("pack", QStringLiteral("--max-size takes a whole number from 16 "
                                                    "to %1")
                                         .arg(SpriteSheetPacker::MaxSheetSide));
    if (!number(parser, QStringLiteral("padding"), 0, 64, &options.padding))
        return cliUsageError("pack", QStringLiteral("--padding takes a whole number from 0 to 64"));
    if (!number(parser, QStringLiteral("extrude"), 0, 16, &options.extrude))
        return cliUsageError("pack", QStringLiteral("--extrude takes a whole number from 0 to 16"));
    options.trim = parser.isSet(QStringLiteral("trim"));
    options.rotate = parser.isSet(QStringLiteral("rotate"));

    RigxData document;
    if (!cliOpenProject(&document, path))
        return CliDataError;

    // Frames are named after the files, so a bound folder's files find them by name.
    QMap<QString, QImage> images;
    QList<int> folders;
    for (int f = 0; f < document.folderCount(); ++f) {
        const Folder *folder = document.folder(f);
        if (folder->spriteSheet())
            continue;
        bool packed = false;
        for (int i = 0; i < folder->fileCount(); ++i) {
            const File *file = folder->file(i);
            if (!file->isImage() || !file->imageLoaded())
                continue;
            images.insert(file->name(), file->image());
            packed = true;
        }
        if (packed)
            folders.append(f);
    }
    if (images.isEmpty())
        return cliDataError(path, QStringLiteral("the project has no image to pack"));

    QString error;
    const QStringList sheets = SpriteSheetPacker::pack(images, options, out, &error);
    if (sheets.isEmpty()) {
        std::fprintf(stderr, "Error: %s\n", qPrintable(error));
        return CliDataError;
    }

    if (parser.isSet(QStringLiteral("bind"))) {
        const QString output = parser.value(QStringLiteral("bind"));
        const QString outputDirectory = QFileInfo(output).absolutePath();
        // The images that were not packed keep their names, so the new project must lie
        // in the same directory as the old one.
        if (QFileInfo(path).absolutePath() != outputDirectory)
            return cliUsageError("pack", QStringLiteral("--bind must name a project in the "
                                                        "directory of FILE"));
        const QString atlas =
            QDir(outputDirectory).relativeFilePath(QDir(out).absoluteFilePath(sheets.first()));
        if (atlas.startsWith(QLatin1String("../")))
            return cliUsageError("pack", QStringLiteral("--out must lie inside the directory "
                                                        "of FILE when binding"));
        RigxData::pushUndo(&document, new BindAtlasCommand(&document, folders, atlas));
        if (!ProjectFile::save(&document, output))
            return CliDataError;
    }

    std::string text;
    JsonWriter w(&text, false);
    w.beginObject();
    w.key("frames");
    w.value(int(images.size()));
    w.key("sheets");
    w.beginArray();
    for (const QString &sheet : sheets)
        w.value(QStringView(QDir(out).filePath(sheet)));
    w.endArray();
    w.endObject();
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stdout);
    return CliSuccess;
}

} // namespace Morvane
