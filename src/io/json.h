// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

namespace Morvane {

/// The JSON codec: variant maps to JSON text and back.
///
/// Decoding uses Qt's strict parser, so only real JSON is accepted and nothing is ever
/// evaluated. Encoding is our own writer: object keys in ascending order (the map's
/// order), shortest numbers (0.1, 2, -0.25), integers as integers, one tab per level
/// when pretty, one line without blanks when compact.
class Json
{
public:
    enum class Format { Pretty, Compact };

    /// Writes strings, maps (objects), lists and string lists (arrays), doubles, integers
    /// and booleans; an invalid or null variant becomes null, any other type its string
    /// form. A non-finite number is left out of an object and becomes null in an array.
    static QString encode(const QMap<QString, QVariant> &map, Format format = Format::Pretty);
    /// The same text as UTF-8, without the detour through QString.
    static QByteArray encodeToUtf8(const QMap<QString, QVariant> &map,
                                   Format format = Format::Pretty);

    /// Objects become maps, arrays lists, integral numbers qint64 and other numbers
    /// doubles. On a parse failure, or when the text is not a JSON object, returns an empty
    /// map and, when `errorMessage` is given, sets it to the parser's message with the
    /// offset ("unterminated object at offset 12"); it is cleared on success.
    static QMap<QString, QVariant> decode(const QString &text, QString *errorMessage = nullptr);
    static QMap<QString, QVariant> decodeUtf8(const QByteArray &text,
                                              QString *errorMessage = nullptr);
    /// Reads a whole file and decodes it. A file that cannot be read gives an empty map
    /// and the system's reason in `errorMessage`.
    static QMap<QString, QVariant> fromFile(const QString &path, QString *errorMessage = nullptr);
};

} // namespace Morvane
