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
/// alone: `parse` checks the whole text into a tree first, and only then `read` fills a
/// document from it.
class XmlProjectReader
{
public:
    XmlProjectReader();
    ~XmlProjectReader();

    /// Parses the file at `path`. A file that cannot be read sets `readError` to the
    /// system's reason; a text that does not parse sets `parseError` to "line L, column C:
    /// what", "Not a Morvane file" for another root element, or says that the file is not
    /// UTF-8.
    bool parseFile(const QString &path, QString *readError, QString *parseError);
    /// Parses text held in memory; errors as for `parseFile`.
    bool parse(const QByteArray &text, QString *parseError);

    /// Fills `document` (expected empty, with its file path set so that images resolve)
    /// from the parsed tree. Everything the reader drops or changes to make the project
    /// sound is listed in `warnings`, one line each. Does nothing without a successful
    /// parse; never fails after one. `progress` hears how far the build has come, 0..100.
    /// The tree is used up: another `read` needs another parse.
    void read(RigxData *document, QStringList *warnings = nullptr,
              const std::function<void(int)> &progress = {});

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace Morvane
