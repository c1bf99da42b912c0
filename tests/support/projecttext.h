// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

// What the file-form tests of several areas share: a document written to bytes in memory,
// and bytes read into a document.

#include "io/jsonprojectreader.h"
#include "io/jsonprojectwriter.h"
#include "io/xmlprojectreader.h"
#include "io/xmlprojectwriter.h"
#include "model/rigxdata.h"
#include "testfiles.h"

#include <QBuffer>
#include <QFile>
#include <QStringList>

namespace Morvane::Testing {

/// The bytes a save in the XML form (`json` false) or the JSON form would write.
inline QByteArray written(RigxData &document, bool json = false, bool pretty = true)
{
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    ProjectSaveOptions options;
    options.prettifyXml = pretty;
    options.prettifyJson = pretty;
    if (json)
        JsonProjectWriter::write(document, &buffer, options);
    else
        XmlProjectWriter::write(document, &buffer, options);
    return out;
}

inline QByteArray writeXml(RigxData &document, bool pretty = true)
{
    return written(document, false, pretty);
}

/// Parses `text` in the form its first byte shows ('{' JSON, else XML) and fills `document`;
/// false, with the parser's message in `error`, when it does not parse.
inline bool readText(const QByteArray &text, RigxData *document, QStringList *warnings = nullptr,
                     QString *error = nullptr)
{
    const bool json = text.trimmed().startsWith('{');
    XmlProjectReader xmlReader;
    JsonProjectReader jsonReader;
    QString message;
    const bool parsed = json ? jsonReader.parse(text, &message) : xmlReader.parse(text, &message);
    if (error)
        *error = message;
    if (parsed && json)
        jsonReader.read(document, warnings);
    else if (parsed)
        xmlReader.read(document, warnings);
    return parsed;
}

/// `xml` read into a fresh document and written again; empty when it does not parse.
inline QByteArray rewrittenXml(const QByteArray &xml)
{
    RigxData document;
    return readText(xml, &document) ? writeXml(document) : QByteArray();
}

} // namespace Morvane::Testing
