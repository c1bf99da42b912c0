// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "xmlwriter.h"

#include "numberformat.h"
#include "utf8encoder.h"

#include <QIODevice>

#include <algorithm>
#include <cstring>

namespace Morvane {

namespace {

// Output is handed to the device in pieces of about this size: large enough that system
// calls cost nothing, small enough to stay in the cache.
constexpr std::size_t FlushThreshold = 1 << 16;
// Room kept behind the threshold, so that one element or attribute name or one number
// never needs a flush in the middle.
constexpr std::size_t Slack = 4096;

// The longest escaped form of one UTF-16 unit ("&quot;").
constexpr std::size_t MaxEscapedUnit = 6;

bool isXmlChar(char32_t c)
{
    if (c < 0x20)
        return c == 0x9 || c == 0xA || c == 0xD;
    if (c >= 0xD800 && c <= 0xDFFF)
        return false;
    return c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF;
}

// Writes the escaped form of one ASCII character that XML can hold and returns the end.
char *putEscapedAscii(char *out, char c, bool attribute)
{
    const auto literal = [out](const char *text, std::size_t length) {
        std::memcpy(out, text, length);
        return out + length;
    };
    switch (c) {
    case '<':
        return literal("&lt;", 4);
    case '>':
        return literal("&gt;", 4);
    case '&':
        return literal("&amp;", 5);
    case '"':
        return literal("&quot;", 6);
    case '\n':
        return attribute ? literal("&#10;", 5) : literal("\n", 1);
    case '\r':
        return attribute ? literal("&#13;", 5) : literal("\r", 1);
    case '\t':
        return attribute ? literal("&#9;", 4) : literal("\t", 1);
    default:
        *out = c;
        return out + 1;
    }
}

} // namespace

XmlWriter::XmlWriter(QIODevice *device)
    : mDevice(device)
    , mBuffer(new char[FlushThreshold + Slack])
{
    mEnd = mBuffer.get();
    mLimit = mEnd + FlushThreshold + Slack;
}

XmlWriter::~XmlWriter()
{
    flush();
}

char *XmlWriter::reserve(std::size_t bytes)
{
    if (std::size_t(mLimit - mEnd) < bytes) {
        flush();
        if (std::size_t(mLimit - mEnd) < bytes) {
            // Only a single huge name can get here; grow to hold it.
            const std::size_t capacity = bytes + Slack;
            mBuffer.reset(new char[capacity]);
            mEnd = mBuffer.get();
            mLimit = mEnd + capacity;
        }
    }
    return mEnd;
}

void XmlWriter::put(std::string_view text)
{
    char *out = reserve(text.size());
    std::memcpy(out, text.data(), text.size());
    mEnd = out + text.size();
}

void XmlWriter::writeStartDocument()
{
    finishStartElement(false);
    put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
}

void XmlWriter::writeStartElement(std::string_view name)
{
    // Text written just before keeps the element on the same line, so mixed content
    // does not gain whitespace.
    if (!finishStartElement(false) && mAutoFormatting)
        indent(mDepth);
    char *out = reserve(name.size() + 1);
    *out++ = '<';
    std::memcpy(out, name.data(), name.size());
    mEnd = out + name.size();
    mTagStarts.push_back(std::uint32_t(mTagStack.size()));
    mTagStack += name;
    ++mDepth;
    mInStartElement = true;
    mLastWasStartElement = true;
    maybeFlush();
}

char *XmlWriter::beginAttribute(std::string_view name, std::size_t valueBytes)
{
    Q_ASSERT(mInStartElement);
    char *out = reserve(name.size() + valueBytes + 4);
    *out++ = ' ';
    std::memcpy(out, name.data(), name.size());
    out += name.size();
    *out++ = '=';
    *out++ = '"';
    return out;
}

void XmlWriter::writeAttribute(std::string_view name, QStringView value)
{
    mEnd = beginAttribute(name, 0);
    writeEscaped(value, Escape::Attribute);
    put('"');
}

void XmlWriter::writeAttribute(std::string_view name, std::string_view utf8Value)
{
    mEnd = beginAttribute(name, 0);
    writeEscapedUtf8(utf8Value, Escape::Attribute);
    put('"');
}

void XmlWriter::writeIntegerAttribute(std::string_view name, std::int64_t value)
{
    char *out = beginAttribute(name, NumberFormat::BufferSize);
    out += NumberFormat::writeInteger(out, value);
    *out++ = '"';
    mEnd = out;
}

void XmlWriter::writeReal6Attribute(std::string_view name, double value)
{
    char *out = beginAttribute(name, NumberFormat::BufferSize);
    out += NumberFormat::writeReal6(out, value);
    *out++ = '"';
    mEnd = out;
}

void XmlWriter::writeG6Attribute(std::string_view name, double value)
{
    char *out = beginAttribute(name, NumberFormat::BufferSize);
    out += NumberFormat::writeG6(out, value);
    *out++ = '"';
    mEnd = out;
}

void XmlWriter::writeCharacters(QStringView text)
{
    finishStartElement(true);
    writeEscaped(text, Escape::Text);
    maybeFlush();
}

void XmlWriter::writeEndElement()
{
    Q_ASSERT(mDepth > 0);
    if (mDepth == 0)
        return;
    --mDepth;
    const std::size_t begin = mTagStarts.back();
    mTagStarts.pop_back();
    if (mInStartElement) {
        put("/>");
        mInStartElement = false;
        mLastWasStartElement = false;
    } else {
        if (!finishStartElement(false) && !mLastWasStartElement && mAutoFormatting)
            indent(mDepth);
        const std::string_view name = std::string_view(mTagStack).substr(begin);
        char *out = reserve(name.size() + 3);
        *out++ = '<';
        *out++ = '/';
        std::memcpy(out, name.data(), name.size());
        out += name.size();
        *out++ = '>';
        mEnd = out;
        mLastWasStartElement = false;
    }
    mTagStack.resize(begin);
    maybeFlush();
}

void XmlWriter::writeEndDocument()
{
    while (mDepth > 0)
        writeEndElement();
    put('\n');
    flush();
}

bool XmlWriter::flush()
{
    const qint64 size = mEnd - mBuffer.get();
    mEnd = mBuffer.get();
    if (size == 0 || mError)
        return !mError;
    if (!mDevice)
        return true;
    if (mDevice->write(mBuffer.get(), size) != size) {
        mError = true;
        mErrorString = mDevice->errorString();
    }
    return !mError;
}

bool XmlWriter::finishStartElement(bool contents)
{
    const bool hadSomethingWritten = mWroteSomething;
    mWroteSomething = contents;
    if (!mInStartElement)
        return hadSomethingWritten;
    put('>');
    mInStartElement = false;
    return hadSomethingWritten;
}

void XmlWriter::indent(int depth)
{
    const std::size_t spaces = std::size_t(depth * mIndent);
    char *out = reserve(spaces + 1);
    *out++ = '\n';
    std::memset(out, ' ', spaces);
    mEnd = out + spaces;
}

void XmlWriter::writeEscaped(QStringView text, Escape mode)
{
    const bool attribute = mode == Escape::Attribute;
    const char16_t *p = text.utf16();
    const char16_t *const end = p + text.size();
    while (p < end) {
        // Escape in pieces that fit the buffer, so a long text needs no check per unit.
        char *out = reserve(std::min<std::size_t>(std::size_t(end - p), 1024) * MaxEscapedUnit);
        const char16_t *const pieceEnd = p + std::min<std::ptrdiff_t>(end - p, 1024);
        while (p < pieceEnd) {
            if (*p < 0x80) {
                const char c = char(*p++);
                if (isXmlChar(char32_t(c)))
                    out = putEscapedAscii(out, c, attribute);
                continue;
            }
            // A pair may reach one unit past the piece; the piece's room covers it.
            const char32_t c = Utf8Encoder::next(p, end);
            if (isXmlChar(c))
                out += Utf8Encoder::encode(out, c);
        }
        mEnd = out;
    }
}

void XmlWriter::writeEscapedUtf8(std::string_view text, Escape mode)
{
    // Decoding to QString would cost more than the writing; escape the bytes directly.
    // Malformed UTF-8 goes through QString so that it is replaced like the QString path.
    for (unsigned char c : text) {
        if (c >= 0x80) {
            writeEscaped(QString::fromUtf8(text.data(), qsizetype(text.size())), mode);
            return;
        }
    }
    const bool attribute = mode == Escape::Attribute;
    std::size_t done = 0;
    while (done < text.size()) {
        const std::size_t piece = std::min<std::size_t>(text.size() - done, 4096);
        char *out = reserve(piece * MaxEscapedUnit);
        for (char c : text.substr(done, piece)) {
            if (isXmlChar(char32_t(c)))
                out = putEscapedAscii(out, c, attribute);
        }
        mEnd = out;
        done += piece;
    }
}

void XmlWriter::maybeFlush()
{
    if (std::size_t(mEnd - mBuffer.get()) >= FlushThreshold)
        flush();
}

} // namespace Morvane
