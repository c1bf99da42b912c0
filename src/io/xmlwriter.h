// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class QIODevice;

namespace Morvane {

/// A buffered XML writer for the project files.
///
/// Output is byte-for-byte what QXmlStreamWriter produces for the same calls (declaration
/// version "1.0" with UTF-8 encoding, the same escaping, the same automatic formatting),
/// only several times faster: numbers are formatted straight into the buffer and nothing
/// goes through QString. Characters that XML 1.0 cannot hold (most control characters,
/// lone surrogates, U+FFFE, U+FFFF) are dropped, so the output always parses.
///
/// The device is not owned and must stay open while the writer lives. Element and
/// attribute names are ASCII names chosen by the caller and are written unescaped.
class XmlWriter
{
public:
    explicit XmlWriter(QIODevice *device);
    ~XmlWriter();

    XmlWriter(const XmlWriter &) = delete;
    XmlWriter &operator=(const XmlWriter &) = delete;

    /// On: each element on its own line, indented by `indent` spaces per level.
    /// Off: everything on one line. Off by default, as in QXmlStreamWriter.
    void setAutoFormatting(bool on) { mAutoFormatting = on; }
    bool autoFormatting() const { return mAutoFormatting; }
    void setAutoFormattingIndent(int spaces) { mIndent = spaces; }

    void writeStartDocument();
    void writeStartElement(std::string_view name);
    void writeAttribute(std::string_view name, QStringView value);
    /// The value is UTF-8 text; it is escaped like the QString form.
    void writeAttribute(std::string_view name, std::string_view utf8Value);
    void writeIntegerAttribute(std::string_view name, std::int64_t value);
    void writeReal6Attribute(std::string_view name, double value);
    void writeG6Attribute(std::string_view name, double value);
    void writeCharacters(QStringView text);
    void writeEndElement();
    /// Closes every open element and ends the output with a newline.
    void writeEndDocument();

    /// Hands the buffered output to the device. False when the device refused it.
    bool flush();
    /// True once the device refused output; later output is discarded.
    bool hasError() const { return mError; }
    QString errorString() const { return mErrorString; }

private:
    enum class Escape { Text, Attribute };

    bool finishStartElement(bool contents);
    void indent(int depth);
    void writeEscaped(QStringView text, Escape mode);
    void writeEscapedUtf8(std::string_view text, Escape mode);
    /// Makes room for `bytes` more bytes at `mEnd`, flushing first when the buffer is full.
    char *reserve(std::size_t bytes);
    void put(char c) { *reserve(1) = c; ++mEnd; }
    void put(std::string_view text);
    /// Starts ` name="`, with room for `valueBytes` more bytes behind it.
    char *beginAttribute(std::string_view name, std::size_t valueBytes);
    void maybeFlush();

    QIODevice *mDevice;
    // The output waiting for the device: bytes [mBuffer, mEnd) of a fixed allocation.
    std::unique_ptr<char[]> mBuffer;
    char *mEnd = nullptr;
    char *mLimit = nullptr;
    std::string mTagStack; // open element names, innermost last
    std::vector<std::uint32_t> mTagStarts; // where each name begins in mTagStack
    int mDepth = 0;
    int mIndent = 4;
    bool mAutoFormatting = false;
    bool mInStartElement = false;
    bool mWroteSomething = false;
    bool mLastWasStartElement = false;
    bool mError = false;
    QString mErrorString;
};

} // namespace Morvane
