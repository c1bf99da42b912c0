// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace Morvane {

class RigxData;

/// Reads the JSON form with Qt's strict parser; nothing is evaluated. Parsing and building
/// are separate steps, as for the XML reader, and both forms are read alike: a number out
/// of range (1e400), which Qt's parser refuses, is read as absent with a warning, as in XML.
class JsonProjectReader
{
public:
    /// A text that does not parse sets `parseError` to the parser's message and offset, or
    /// says that the file is not UTF-8; a JSON text that is no project object gives "Not a
    /// Morvane file".
    bool parse(const QByteArray &text, QString *parseError);
    bool parseFile(const QString &path, QString *readError, QString *parseError);

    /// Fills `document` from the parsed object; as `XmlProjectReader::read`.
    void read(RigxData *document, QStringList *warnings = nullptr,
              const std::function<void(int)> &progress = {});

private:
    QJsonObject mRoot;
    bool mParsed = false;
};

} // namespace Morvane
