// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "rendercommand.h"

#include "animationarguments.h"
#include "clicommand.h"
#include "canvas/morvanecanvasscene.h"
#include "export/animationexporter.h"
#include "export/exportoptions.h"
#include "io/jsonwriter.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/rigxdata.h"

#include <QColor>
#include <QCommandLineParser>

#include <cmath>
#include <cstdio>

namespace Morvane {

namespace {

QCommandLineOption valueOption(const char *name, const char *help, const char *value)
{
    return QCommandLineOption(QLatin1String(name), QLatin1String(help), QLatin1String(value));
}

QCommandLineOption flagOption(const char *name, const char *help)
{
    return QCommandLineOption(QLatin1String(name), QLatin1String(help));
}

bool readWhole(const QString &text, int min, int max, int *value)
{
    bool ok = false;
    const int v = text.toInt(&ok);
    if (!ok || v < min || v > max)
        return false;
    *value = v;
    return true;
}

bool readReal(const QString &text, double *value)
{
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v))
        return false;
    *value = v;
    return true;
}

// "#RRGGBB" only: names and other forms would make scripts depend on a colour table.
bool readColour(const QString &text, QColor *colour)
{
    if (text.size() != 7 || !text.startsWith(QLatin1Char('#')))
        return false;
    const QColor c = QColor::fromString(text);
    if (!c.isValid())
        return false;
    *colour = c;
    return true;
}

QString opt(const char *name)
{
    return QLatin1String(name);
}

double printed(double value)
{
    return std::round(value * 1e6) / 1e6 + 0.0;
}

} // namespace

void RenderCommand::addOptions(QCommandLineParser &parser)
{
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("The project, .rigx or .rigj."));
    parser.addOption(valueOption("entity", "The entity, by name or index (default: the first).",
                                 "NAME|INDEX"));
    parser.addOption(valueOption(
        "animation", "The animation of the entity, by name or index (default: the first).",
        "NAME|INDEX"));
    parser.addOption(valueOption(
        "out",
        "BASE.png: numbered files BASE_000.png, ... (with --sheet: BASE.png and BASE.json); "
        "BASE.gif: an animated GIF (required).",
        "PATH"));
    parser.addOption(valueOption(
        "interval", "Frames every MS milliseconds (default: the animation's snapping interval).",
        "MS"));
    parser.addOption(valueOption("fps", "Frames per second instead of an interval.", "N"));
    parser.addOption(flagOption("keyframes-only", "One frame per mainline key."));
    parser.addOption(flagOption("sheet", "One sprite sheet and its JSON instead of numbered files."));
    parser.addOption(valueOption("columns", "Sheet frames per row (default: all in one row).", "N"));
    parser.addOption(valueOption("scale", "Output scale in percent, one or WIDTH,HEIGHT (default 100).",
                                 "PERCENT"));
    parser.addOption(valueOption(
        "trim",
        "The source rectangle: animation, frame, entity, all, or LEFT,TOP,RIGHT,BOTTOM in canvas "
        "coordinates, y downward (default: animation).",
        "HOW"));
    parser.addOption(valueOption("background", "none (transparent, the default) or #RRGGBB.",
                                 "COLOUR"));
    parser.addOption(flagOption("pixel-art", "Whole-pixel rectangles and no smoothing."));
    parser.addOption(flagOption("no-smooth", "No smoothing of images and edges."));
    parser.addOption(valueOption("charmap",
                                 "Activates the entity's character map NAME; repeat it to "
                                 "apply several in order.",
                                 "NAME"));
    parser.addOption(flagOption("premultiplied", "PNG colours premultiplied by alpha."));
    parser.addOption(valueOption("loop", "GIF: times to play, 0 for ever (default 0).", "N"));
    parser.addOption(valueOption("dither", "GIF: none, ordered or floyd-steinberg (the default).",
                                 "HOW"));
    parser.addOption(valueOption(
        "alpha-threshold",
        "GIF: pixels with less alpha (0-255) become transparent, the rest opaque (default 128).",
        "N"));
    parser.addOption(valueOption(
        "matte", "GIF: blend semi-transparent pixels over #RRGGBB instead of a threshold.",
        "COLOUR"));
    parser.addOption(flagOption("palette-per-frame",
                                "GIF: a palette for each frame instead of one for all."));
}

QString RenderCommand::readOptions(const QCommandLineParser &parser, int defaultInterval,
                                   ExportOptions *o, QString *out)
{
    *out = parser.value(opt("out"));
    if (out->isEmpty())
        return QStringLiteral("missing --out PATH");
    const QString suffix = out->section(QLatin1Char('.'), -1).toLower();
    const bool dotted = out->section(QLatin1Char('/'), -1).lastIndexOf(QLatin1Char('.')) > 0;
    if (!dotted || (suffix != QLatin1String("png") && suffix != QLatin1String("gif")))
        return QStringLiteral("--out must end in .png or .gif, not \"%1\"").arg(*out);
    const bool gif = suffix == QLatin1String("gif");
    if (gif && parser.isSet(opt("sheet")))
        return QStringLiteral("--sheet writes a PNG: give --out BASE.png");
    if (!parser.isSet(opt("sheet")) && parser.isSet(opt("columns")))
        return QStringLiteral("--columns needs --sheet");
    o->kind = gif ? ExportKind::Gif
                  : parser.isSet(opt("sheet")) ? ExportKind::SpriteSheet : ExportKind::NumberedPngs;

    const int frameOptions = int(parser.isSet(opt("interval"))) + int(parser.isSet(opt("fps")))
                             + int(parser.isSet(opt("keyframes-only")));
    if (frameOptions > 1)
        return QStringLiteral("give one of --interval, --fps and --keyframes-only");
    o->interval = qMax(1, defaultInterval);
    o->keyframesOnly = parser.isSet(opt("keyframes-only"));
    if (parser.isSet(opt("interval"))
        && !readWhole(parser.value(opt("interval")), 1, 3600000, &o->interval))
        return QStringLiteral("--interval takes whole milliseconds from 1, not \"%1\"")
            .arg(parser.value(opt("interval")));
    if (parser.isSet(opt("fps"))) {
        double fps = 0;
        if (!readReal(parser.value(opt("fps")), &fps) || fps <= 0 || fps > 1000)
            return QStringLiteral("--fps takes a number above 0 up to 1000, not \"%1\"")
                .arg(parser.value(opt("fps")));
        o->interval = qMax(1, int(std::lround(1000.0 / fps)));
    }
    o->framesPerRow = 0;
    if (parser.isSet(opt("columns"))
        && !readWhole(parser.value(opt("columns")), 1, 100000, &o->framesPerRow))
        return QStringLiteral("--columns takes a whole number from 1, not \"%1\"")
            .arg(parser.value(opt("columns")));

    o->scaleWidth = o->scaleHeight = 100.0;
    if (parser.isSet(opt("scale"))) {
        const QStringList parts = parser.value(opt("scale")).split(QLatin1Char(','));
        double w = 0, h = 0;
        const bool ok = parts.size() <= 2 && readReal(parts.first(), &w)
                        && readReal(parts.last(), &h) && w > 0 && h > 0 && w <= 10000
                        && h <= 10000;
        if (!ok)
            return QStringLiteral("--scale takes a percentage above 0 up to 10000, or two "
                                  "as WIDTH,HEIGHT, not \"%1\"")
                .arg(parser.value(opt("scale")));
        o->scaleWidth = w;
        o->scaleHeight = h;
    }

    o->trim = TrimType::Animation;
    if (parser.isSet(opt("trim"))) {
        const QString trim = parser.value(opt("trim"));
        const QStringList parts = trim.split(QLatin1Char(','));
        double l = 0, t = 0, r = 0, b = 0;
        if (trim == QLatin1String("animation")) {
            o->trim = TrimType::Animation;
        } else if (trim == QLatin1String("frame")) {
            o->trim = TrimType::EachFrame;
        } else if (trim == QLatin1String("entity")) {
            o->trim = TrimType::Entity;
        } else if (trim == QLatin1String("all")) {
            o->trim = TrimType::AllEntities;
        } else if (parts.size() == 4 && readReal(parts[0], &l) && readReal(parts[1], &t)
                   && readReal(parts[2], &r) && readReal(parts[3], &b) && r > l && b > t) {
            o->trim = TrimType::Custom;
            o->customRect = QRectF(QPointF(l, t), QPointF(r, b));
        } else {
            return QStringLiteral("--trim takes animation, frame, entity, all or "
                                  "LEFT,TOP,RIGHT,BOTTOM with RIGHT > LEFT and BOTTOM > TOP, "
                                  "not \"%1\"")
                .arg(trim);
        }
    }

    o->fillBackground = false;
    if (parser.isSet(opt("background"))) {
        const QString text = parser.value(opt("background"));
        if (text != QLatin1String("none")) {
            if (!readColour(text, &o->background))
                return QStringLiteral("--background takes none or #RRGGBB, not \"%1\"").arg(text);
            o->fillBackground = true;
        }
    }
    o->pixelArt = parser.isSet(opt("pixel-art"));
    o->smooth = !parser.isSet(opt("no-smooth"));
    o->premultiplied = parser.isSet(opt("premultiplied"));
    o->watermark.enabled = false;

    const bool gifOption = parser.isSet(opt("loop")) || parser.isSet(opt("dither"))
                           || parser.isSet(opt("alpha-threshold")) || parser.isSet(opt("matte"))
                           || parser.isSet(opt("palette-per-frame"));
    if (gifOption && !gif)
        return QStringLiteral("--loop, --dither, --alpha-threshold, --matte and "
                              "--palette-per-frame are for a GIF (--out BASE.gif)");
    if (gif && o->premultiplied)
        return QStringLiteral("--premultiplied is for PNGs");
    o->gif = GifOptions();
    if (parser.isSet(opt("loop"))
        && !readWhole(parser.value(opt("loop")), 0, 65535, &o->gif.loopCount))
        return QStringLiteral("--loop takes a whole number from 0 to 65535, not \"%1\"")
            .arg(parser.value(opt("loop")));
    if (parser.isSet(opt("dither"))) {
        const QString d = parser.value(opt("dither"));
        if (d == QLatin1String("none"))
            o->gif.dither = GifDither::None;
        else if (d == QLatin1String("ordered"))
            o->gif.dither = GifDither::Ordered;
        else if (d == QLatin1String("floyd-steinberg"))
            o->gif.dither = GifDither::FloydSteinberg;
        else
            return QStringLiteral("--dither takes none, ordered or floyd-steinberg, not \"%1\"")
                .arg(d);
    }
    if (parser.isSet(opt("alpha-threshold"))
        && !readWhole(parser.value(opt("alpha-threshold")), 0, 255, &o->gif.alphaThreshold))
        return QStringLiteral("--alpha-threshold takes a whole number from 0 to 255, not \"%1\"")
            .arg(parser.value(opt("alpha-threshold")));
    if (parser.isSet(opt("matte")) && !readColour(parser.value(opt("matte")), &o->gif.matte))
        return QStringLiteral("--matte takes #RRGGBB, not \"%1\"").arg(parser.value(opt("matte")));
    o->gif.sharedPalette = !parser.isSet(opt("palette-per-frame"));
    return QString();
}

int RenderCommand::run(const QCommandLineParser &parser)
{
    AnimationArguments args;
    args.path = parser.positionalArguments().value(0);
    if (parser.isSet(opt("entity")))
        args.entityText = parser.value(opt("entity"));
    if (parser.isSet(opt("animation")))
        args.animationText = parser.value(opt("animation"));
    args.charMaps = parser.values(opt("charmap"));

    // Options first: a wrong option is a usage error whatever the project holds.
    ExportOptions options;
    QString out;
    QString wrong = readOptions(parser, 100, &options, &out);
    if (!wrong.isEmpty())
        return cliUsageError("render", wrong);

    RigxData document;
    if (!cliOpenProject(&document, args.path))
        return CliDataError;
    Entity *entity = nullptr;
    Animation *animation = nullptr;
    if (const int status = args.select(document, &entity, &animation))
        return status;
    for (const QString &name : std::as_const(args.charMaps)) {
        if (!entity->charMapFromName(name))
            return cliDataError(args.path,
                                QStringLiteral("no character map \"%1\" in entity \"%2\"")
                                    .arg(name, entity->name()));
        entity->makeCharMapActive(name, true);
    }
    // The default interval is the animation's own.
    wrong = readOptions(parser, animation->snappingInterval(), &options, &out);
    if (!wrong.isEmpty())
        return cliUsageError("render", wrong);

    MorvaneCanvasScene scene;
    scene.setDocument(&document);
    scene.setCurrentAnimation(animation);
    const ExportResult result = AnimationExporter::run(&scene, options, out);
    scene.setDocument(nullptr);
    if (!result.ok) {
        std::fprintf(stderr, "Error: %s\n", qPrintable(result.error));
        return CliDataError;
    }

    std::string text;
    JsonWriter w(&text, true);
    w.beginObject();
    w.key("frames");
    w.value(int(result.frames.size()));
    w.key("times");
    w.beginArray();
    for (const FrameTime &f : result.frames)
        w.value(f.time);
    w.endArray();
    w.key("files");
    w.beginArray();
    for (const QString &file : result.files)
        w.value(QStringView(file));
    w.endArray();
    w.key("width");
    w.value(result.frameSize.width());
    w.key("height");
    w.value(result.frameSize.height());
    w.key("source");
    w.beginArray();
    for (double v : {result.source.left(), result.source.top(), result.source.right(),
                     result.source.bottom()})
        w.value(printed(v));
    w.endArray();
    w.endObject();
    text.push_back('\n');
    std::fwrite(text.data(), 1, text.size(), stdout);
    return CliSuccess;
}

} // namespace Morvane
