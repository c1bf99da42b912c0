// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "jsonwriter.h"

#include "numberformat.h"
#include "utf8encoder.h"

#include <QString>

#include <cmath>

namespace Morvane {

namespace {

void appendHexEscape(std::string &out, char32_t c)
{
    static const char digits[] = "0123456789abcdef";
    out += "\\u";
    out.push_back(digits[(c >> 12) & 0xF]);
    out.push_back(digits[(c >> 8) & 0xF]);
    out.push_back(digits[(c >> 4) & 0xF]);
    out.push_back(digits[c & 0xF]);
}

// Appends a character below 0x80 with JSON escaping.
void appendAscii(std::string &out, char c)
{
    switch (c) {
    case '"':
        out += "\\\"";
        return;
    case '\\':
        out += "\\\\";
        return;
    case '\b':
        out += "\\b";
        return;
    case '\f':
        out += "\\f";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        break;
    }
    if (static_cast<unsigned char>(c) < 0x20)
        appendHexEscape(out, char32_t(c));
    else
        out.push_back(c);
}

} // namespace

JsonWriter::JsonWriter(std::string *out, bool pretty, int level)
    : mOut(out)
    , mBaseLevel(level)
    , mPretty(pretty)
{
}

void JsonWriter::beforeValue()
{
    if (mAfterKey) {
        mAfterKey = false;
        return;
    }
    if (mStack.empty())
        return;
    Container &container = mStack.back();
    Q_ASSERT(!container.isObject);
    if (container.count++ > 0)
        mOut->push_back(',');
    if (mPretty) {
        mOut->push_back('\n');
        appendIndent(*mOut, currentLevel());
    }
}

void JsonWriter::beginObject()
{
    beforeValue();
    mOut->push_back('{');
    mStack.push_back({true, 0});
}

void JsonWriter::beginArray()
{
    beforeValue();
    mOut->push_back('[');
    mStack.push_back({false, 0});
}

void JsonWriter::closeContainer(char bracket)
{
    Q_ASSERT(!mStack.empty() && !mAfterKey);
    const bool hadEntries = mStack.back().count > 0;
    mStack.pop_back();
    if (mPretty && hadEntries) {
        mOut->push_back('\n');
        appendIndent(*mOut, currentLevel());
    }
    mOut->push_back(bracket);
}

void JsonWriter::endObject()
{
    Q_ASSERT(mStack.back().isObject);
    closeContainer('}');
}

void JsonWriter::endArray()
{
    Q_ASSERT(!mStack.back().isObject);
    closeContainer(']');
}

void JsonWriter::key(std::string_view asciiKey)
{
    Q_ASSERT(!mStack.empty() && mStack.back().isObject && !mAfterKey);
    Container &container = mStack.back();
    if (container.count++ > 0)
        mOut->push_back(',');
    if (mPretty) {
        mOut->push_back('\n');
        appendIndent(*mOut, currentLevel());
    }
    appendStringUtf8(*mOut, asciiKey);
    *mOut += mPretty ? ": " : ":";
    mAfterKey = true;
}

void JsonWriter::key(QStringView key)
{
    const QByteArray utf8 = key.toUtf8();
    this->key(std::string_view(utf8.constData(), std::size_t(utf8.size())));
}

void JsonWriter::value(QStringView text)
{
    beforeValue();
    appendString(*mOut, text);
}

void JsonWriter::valueUtf8(std::string_view text)
{
    beforeValue();
    appendStringUtf8(*mOut, text);
}

void JsonWriter::value(std::int64_t number)
{
    beforeValue();
    char buffer[NumberFormat::BufferSize];
    mOut->append(buffer, std::size_t(NumberFormat::writeInteger(buffer, number)));
}

void JsonWriter::value(double number)
{
    beforeValue();
    if (!std::isfinite(number)) {
        *mOut += "null";
        return;
    }
    char buffer[NumberFormat::BufferSize];
    mOut->append(buffer, std::size_t(NumberFormat::writeShortest(buffer, number)));
}

void JsonWriter::value(bool flag)
{
    beforeValue();
    *mOut += flag ? "true" : "false";
}

void JsonWriter::valueNull()
{
    beforeValue();
    *mOut += "null";
}

void JsonWriter::rawValue(std::string_view json)
{
    beforeValue();
    *mOut += json;
}

void JsonWriter::appendString(std::string &out, QStringView text)
{
    out.push_back('"');
    const char16_t *p = text.utf16();
    const char16_t *const end = p + text.size();
    while (p < end) {
        if (*p < 0x80) {
            appendAscii(out, char(*p++));
            continue;
        }
        const char32_t c = Utf8Encoder::next(p, end);
        if (Utf8Encoder::isSurrogate(c))
            appendHexEscape(out, c); // a lone surrogate has no UTF-8 form; keep it readable
        else
            Utf8Encoder::append(out, c);
    }
    out.push_back('"');
}

void JsonWriter::appendStringUtf8(std::string &out, std::string_view text)
{
    for (unsigned char c : text) {
        if (c >= 0x80) {
            appendString(out, QString::fromUtf8(text.data(), qsizetype(text.size())));
            return;
        }
    }
    out.push_back('"');
    for (char c : text)
        appendAscii(out, c);
    out.push_back('"');
}

void JsonWriter::appendIndent(std::string &out, int level)
{
    out.append(std::size_t(level), '\t');
}

} // namespace Morvane
