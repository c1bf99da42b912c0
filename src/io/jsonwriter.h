// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QStringView>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Morvane {

/// A streaming JSON text writer.
///
/// Pretty output looks like a script engine's JSON.stringify(value, null, '\t'): one
/// entry per line, one tab per level, ": " after keys, "{}" and "[]" for empty containers.
/// Compact output is one line without blanks. No newline is written at the end.
/// Numbers use the shortest round-trip form; non-finite numbers have no JSON form and
/// are written as null. The caller writes keys in the order it wants them.
class JsonWriter
{
public:
    /// Appends to `out`, which must outlive the writer. `level` is the indentation level
    /// of the first value written, for text that is pasted into a larger document.
    JsonWriter(std::string *out, bool pretty, int level = 0);

    void beginObject();
    void endObject();
    void beginArray();
    void endArray();

    void key(std::string_view asciiKey);
    void key(QStringView key);

    void value(QStringView text);
    void valueUtf8(std::string_view text);
    void value(std::int64_t number);
    void value(int number) { value(std::int64_t(number)); }
    void value(double number);
    void value(bool flag);
    void valueNull();
    /// Inserts text that already is one JSON value (written by another JsonWriter whose
    /// level was this writer's current level).
    void rawValue(std::string_view json);

    /// The indentation level at which the next value will be written.
    int currentLevel() const { return int(mStack.size()) + mBaseLevel; }

    static void appendString(std::string &out, QStringView text);
    static void appendStringUtf8(std::string &out, std::string_view text);
    static void appendIndent(std::string &out, int level);

private:
    struct Container
    {
        bool isObject;
        int count;
    };

    void beforeValue();
    void closeContainer(char bracket);

    std::string *mOut;
    std::vector<Container> mStack;
    int mBaseLevel;
    bool mPretty;
    bool mAfterKey = false;
};

} // namespace Morvane
