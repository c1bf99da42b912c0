// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>

class QCommandLineParser;

namespace Morvane {

struct ExportOptions;

/// `morvane-cli render FILE [--entity NAME|INDEX] [--animation NAME|INDEX] --out PATH
/// [options]`: renders an animation through the editor's own scene and export code
/// (offscreen) to numbered PNGs (`--out BASE.png`: BASE_000.png, ...), one sprite sheet
/// with its JSON (`--sheet`: BASE.png and BASE.json) or a GIF (`--out BASE.gif`), and
/// prints on stdout
///
///   {"frames": N, "times": [ms, ...], "files": [paths], "width": W, "height": H,
///    "source": [left, top, right, bottom]}
///
/// with one frame's pixel size and its source rectangle in canvas coordinates (the
/// first frame's when trimming to each frame). Exit codes are those of every command.
class RenderCommand
{
public:
    static constexpr const char *Arguments = "FILE";
    static constexpr const char *Summary =
        "Render an animation to numbered PNGs, a sprite sheet or a GIF.";

    static void addOptions(QCommandLineParser &parser);
    static int run(const QCommandLineParser &parser);

    /// Reads the rendering options (all but FILE, entity and animation) into
    /// `options`; `defaultInterval` applies when no frame option is given. A
    /// message for the user comes back when an option is wrong, else an empty text.
    static QString readOptions(const QCommandLineParser &parser, int defaultInterval,
                               ExportOptions *options, QString *out);
};

} // namespace Morvane
