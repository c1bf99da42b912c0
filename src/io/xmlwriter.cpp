// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "xmlwriter.h"

#include "numberformat.h"

#include <QIODevice>

namespace Morvane {

namespace {

constexpr std::size_t FlushThreshold = 1 << 16;

bool isXmlChar(char32_t c)
{
    if (c < 0x20)
        return c == 0x9 || c == 0xA || c == 0xD;
    if (c >= 0xD800 && c <= 0xDFFF)
        return false;
    return c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF;
}

void appendUtf8(std::string &out, char32_t c)
{
    if (c < 0x80) {
        out.push_back(char(c));
    } else if (c < 0x800) {
        out.push_back(char(0xC0 | (c >> 6)));
        out.push_back(char(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(char(0xE0 | (c >> 12)));
        out.push_back(char(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(char(0x80 | (c & 0x3F)));
    } else {
        out.push_back(char(0xF0 | (c >> 18)));
        out.push_back(char(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(char(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(char(0x80 | (c & 0x3F)));
    }
}

// Appends the escaped form of one character; false when it has no special form.
bool appendEscape(std::string &out, char32_t c, bool attribute)
{
    switch (c) {
    case '<':
        out += "&lt;";
        return true;
    case '>':
        out += "&gt;";
        return true;
    case '&':
        out += "&amp;";
        return true;
    case '"':
        out += "&quot;";
        return true;
    default:
        break;
    }
    if (!attribute)
        return false;
    switch (c) {
    case '\n':
        out += "&#10;";
        return true;
    case '\r':
        out += "&#13;";
        return true;
    case '\t':
        out += "&#9;";
        return true;
    default:
        return false;
    }
}

} // namespace

XmlWriter::XmlWriter(QIODevice *device)
    : mDevice(device)
{
    mBuffer.reserve(FlushThreshold + 4096);
}

XmlWriter::~XmlWriter()
{
    flush();
}

void XmlWriter::writeStartDocument()
{
    finishStartElement(false);
    mBuffer += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
}

void XmlWriter::writeStartElement(std::string_view name)
{
    // Text written just before keeps the element on the same line, so mixed content
    // does not gain whitespace.
    if (!finishStartElement(false) && mAutoFormatting)
        indent(mDepth);
    mBuffer += '<';
    mBuffer += name;
    mTagStack += name;
    mTagStack += '\0';
    ++mDepth;
    mInStartElement = true;
    mLastWasStartElement = true;
    maybeFlush();
}

void XmlWriter::beginAttribute(std::string_view name)
{
    Q_ASSERT(mInStartElement);
    mBuffer += ' ';
    mBuffer += name;
    mBuffer += "=\"";
}

void XmlWriter::writeAttribute(std::string_view name, QStringView value)
{
    beginAttribute(name);
    writeEscaped(value, Escape::Attribute);
    mBuffer += '"';
}

void XmlWriter::writeAttribute(std::string_view name, std::string_view utf8Value)
{
    beginAttribute(name);
    writeEscapedUtf8(utf8Value, Escape::Attribute);
    mBuffer += '"';
}

void XmlWriter::writeIntegerAttribute(std::string_view name, std::int64_t value)
{
    beginAttribute(name);
    char buffer[NumberFormat::BufferSize];
    mBuffer.append(buffer, std::size_t(NumberFormat::writeInteger(buffer, value)));
    mBuffer += '"';
}

void XmlWriter::writeReal6Attribute(std::string_view name, double value)
{
    beginAttribute(name);
    char buffer[NumberFormat::BufferSize];
    mBuffer.append(buffer, std::size_t(NumberFormat::writeReal6(buffer, value)));
    mBuffer += '"';
}

void XmlWriter::writeG6Attribute(std::string_view name, double value)
{
    beginAttribute(name);
    char buffer[NumberFormat::BufferSize];
    mBuffer.append(buffer, std::size_t(NumberFormat::writeG6(buffer, value)));
    mBuffer += '"';
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
    // The tag stack holds "name\0name\0"; the innermost name sits before the last '\0'.
    const std::size_t end = mTagStack.size() - 1;
    const std::size_t previous = mTagStack.rfind('\0', end == 0 ? 0 : end - 1);
    const std::size_t begin = (previous == std::string::npos || previous >= end) ? 0
                                                                                 : previous + 1;
    if (mInStartElement) {
        mBuffer += "/>";
        mInStartElement = false;
        mLastWasStartElement = false;
    } else {
        if (!finishStartElement(false) && !mLastWasStartElement && mAutoFormatting)
            indent(mDepth);
        mBuffer += "</";
        mBuffer.append(mTagStack, begin, end - begin);
        mBuffer += '>';
        mLastWasStartElement = false;
    }
    mTagStack.resize(begin);
    maybeFlush();
}

void XmlWriter::writeEndDocument()
{
    while (mDepth > 0)
        writeEndElement();
    mBuffer += '\n';
    flush();
}

bool XmlWriter::flush()
{
    if (mBuffer.empty() || mError) {
        mBuffer.clear();
        return !mError;
    }
    if (!mDevice) {
        mBuffer.clear();
        return true;
    }
    const qint64 written = mDevice->write(mBuffer.data(), qint64(mBuffer.size()));
    if (written != qint64(mBuffer.size())) {
        mError = true;
        mErrorString = mDevice->errorString();
    }
    mBuffer.clear();
    return !mError;
}

bool XmlWriter::finishStartElement(bool contents)
{
    const bool hadSomethingWritten = mWroteSomething;
    mWroteSomething = contents;
    if (!mInStartElement)
        return hadSomethingWritten;
    mBuffer += '>';
    mInStartElement = false;
    return hadSomethingWritten;
}

void XmlWriter::indent(int depth)
{
    mBuffer += '\n';
    mBuffer.append(std::size_t(depth * mIndent), ' ');
}

void XmlWriter::writeEscaped(QStringView text, Escape mode)
{
    const bool attribute = mode == Escape::Attribute;
    const char16_t *p = text.utf16();
    const char16_t *const end = p + text.size();
    while (p < end) {
        char32_t c = *p++;
        if (c >= 0xD800 && c <= 0xDBFF && p < end && *p >= 0xDC00 && *p <= 0xDFFF)
            c = 0x10000 + ((c - 0xD800) << 10) + (char32_t(*p++) - 0xDC00);
        if (!isXmlChar(c))
            continue;
        if (c < 0x80) {
            if (!appendEscape(mBuffer, c, attribute))
                mBuffer.push_back(char(c));
        } else {
            appendUtf8(mBuffer, c);
        }
    }
}

void XmlWriter::writeEscapedUtf8(std::string_view text, Escape mode)
{
    // Decoding to QString would cost more than the writing; escape the bytes directly.
    // Malformed UTF-8 goes through QString so that it is replaced like the QString path.
    const bool attribute = mode == Escape::Attribute;
    for (unsigned char c : text) {
        if (c >= 0x80) {
            writeEscaped(QString::fromUtf8(text.data(), qsizetype(text.size())), mode);
            return;
        }
    }
    for (unsigned char c : text) {
        if (!isXmlChar(c))
            continue;
        if (!appendEscape(mBuffer, c, attribute))
            mBuffer.push_back(char(c));
    }
}

void XmlWriter::maybeFlush()
{
    if (mBuffer.size() >= FlushThreshold)
        flush();
}

} // namespace Morvane
