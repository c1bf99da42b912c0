// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace Morvane {

class RigxData;

/// Reads the XML form (pugixml: no DTD processing, no entity expansion). Parsing and
/// building are separate steps, so that a file that does not parse leaves the document
/// alone: `parse` checks the whole text first, and only then `read` fills a document.
///
/// A large project is mostly animations, and a parsed tree takes several times the
/// memory of its text. With `streamAnimations` the file's animations are therefore
/// parsed one at a time while `read` builds them, each tree freed before the next: the
/// rest of the document is checked up front, the animations only when read. A reader
/// that streams may fail during `read` (see `failed`); it is meant for filling an empty
/// document that can simply be cleared again.
class XmlProjectReader
{
public:
    enum class Mode { WholeDocument, StreamAnimations };

    XmlProjectReader();
    ~XmlProjectReader();

    /// Parses the file at `path` in place (one copy of the text in memory). A file that
    /// cannot be read sets `readError` to the system's reason; a text that does not parse
    /// sets `parseError` to "line L, column C: what", or "Not a Morvane file" for another
    /// root element.
    bool parseFile(const QString &path, QString *readError, QString *parseError,
                   Mode mode = Mode::WholeDocument);
    /// Whether the parse streams the animations (a text the streaming cannot follow is
    /// parsed whole instead).
    bool isStreaming() const;
    /// Parses text held in memory; errors as for `parseFile`.
    bool parse(const QByteArray &text, QString *parseError, Mode mode = Mode::WholeDocument);

    /// Fills `document` (expected empty, with its file path set so that images resolve)
    /// from the parsed tree. References that lead nowhere are dropped and reported in
    /// `warnings`. Does nothing without a successful parse.
    /// `progress` hears how far the build has come, 0..100.
    void read(RigxData *document, QStringList *warnings = nullptr,
              const std::function<void(int)> &progress = {});
    /// Whether a streamed animation failed to parse during `read`; `parseError` is then
    /// set as for `parseFile`. The document holds a partial project and must be cleared.
    bool failed(QString *parseError = nullptr) const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace Morvane
