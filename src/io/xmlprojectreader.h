// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

namespace Morvane {

class RigxData;

/// Reads the XML form. Parsing and building are separate steps, so that a file that does
/// not parse leaves the document alone: `parse` checks the whole text first (pugixml: no
/// DTD processing, no entity expansion), and only then `read` fills a document.
class XmlProjectReader
{
public:
    XmlProjectReader();
    ~XmlProjectReader();

    /// Parses the file at `path` in place (one copy of the text in memory). A file that
    /// cannot be read sets `readError` to the system's reason; a text that does not parse
    /// sets `parseError` to "line L, column C: what", or "Not a Morvane file" for another
    /// root element.
    bool parseFile(const QString &path, QString *readError, QString *parseError);
    /// Parses text held in memory; errors as for `parseFile`.
    bool parse(const QByteArray &text, QString *parseError);

    /// Fills `document` (expected empty, with its file path set so that images resolve)
    /// from the parsed tree. References that lead nowhere are dropped and reported in
    /// `warnings`. Does nothing without a successful parse.
    void read(RigxData *document, QStringList *warnings = nullptr);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace Morvane
