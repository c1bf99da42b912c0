// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "jsonprojectwriter.h"

#include "io/jsonwriter.h"
#include "io/numberformat.h"
#include "io/projectsink.h"
#include "io/projectwriter.h"

#include <QIODevice>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace Morvane {

namespace {

// Keys must come out sorted, but the walk emits attributes first and children later, so
// each open element collects its entries as finished JSON text and sorts them when it
// closes. Children are rendered at their final indentation as they are written, so only
// text is kept, never a tree of values.
class JsonSink : public ProjectSink
{
public:
    explicit JsonSink(bool pretty)
        : mPretty(pretty)
    {}

    bool isJson() const override { return true; }

    void startElement(std::string_view name, bool single) override
    {
        Frame frame;
        frame.name = name;
        frame.single = single;
        if (!mStack.empty())
            frame.level = mStack.back().level + (single ? 1 : 2);
        mStack.push_back(std::move(frame));
    }

    void endElement() override
    {
        Frame frame = std::move(mStack.back());
        mStack.pop_back();
        std::string text = render(frame);
        if (mStack.empty()) {
            mResult = std::move(text);
            return;
        }
        Entry &entry = entryFor(mStack.back(), frame.name, !frame.single);
        if (frame.single) {
            entry.text = std::move(text);
            return;
        }
        if (entry.count++ > 0)
            entry.text.push_back(',');
        if (mPretty) {
            entry.text.push_back('\n');
            JsonWriter::appendIndent(entry.text, mStack.back().level + 2);
        }
        entry.text += text;
    }

    void attribute(std::string_view name, QStringView text) override
    {
        std::string value;
        JsonWriter::appendString(value, text);
        addScalar(name, std::move(value));
    }

    void integerAttribute(std::string_view name, std::int64_t value) override
    {
        addScalar(name, NumberFormat::integer(value).toStdString());
    }

    void real6Attribute(std::string_view name, double value) override { addNumber(name, value); }
    void g6Attribute(std::string_view name, double value) override { addNumber(name, value); }

    const std::string &result() const { return mResult; }

private:
    struct Entry
    {
        std::string key;
        std::string text;
        bool isArray = false;
        int count = 0;
    };
    struct Frame
    {
        std::string name;
        bool single = false;
        int level = 0;
        std::vector<Entry> entries;
    };

    void addNumber(std::string_view name, double value)
    {
        if (!std::isfinite(value))
            return; // JSON has no form for it; readers take the default.
        char buffer[NumberFormat::BufferSize];
        addScalar(name, std::string(buffer, size_t(NumberFormat::writeShortest(buffer, value))));
    }

    void addScalar(std::string_view name, std::string text)
    {
        Entry &entry = entryFor(mStack.back(), name, false);
        entry.text = std::move(text);
    }

    static Entry &entryFor(Frame &frame, std::string_view key, bool isArray)
    {
        for (Entry &entry : frame.entries) {
            if (entry.key == key)
                return entry;
        }
        Entry entry;
        entry.key = key;
        entry.isArray = isArray;
        frame.entries.push_back(std::move(entry));
        return frame.entries.back();
    }

    std::string render(Frame &frame) const
    {
        std::sort(frame.entries.begin(), frame.entries.end(),
                  [](const Entry &a, const Entry &b) { return a.key < b.key; });
        std::string out;
        std::size_t size = 16;
        for (const Entry &entry : frame.entries)
            size += entry.key.size() + entry.text.size() + size_t(frame.level) + 8;
        out.reserve(size);
        out.push_back('{');
        bool first = true;
        for (const Entry &entry : frame.entries) {
            if (!first)
                out.push_back(',');
            first = false;
            if (mPretty) {
                out.push_back('\n');
                JsonWriter::appendIndent(out, frame.level + 1);
            }
            JsonWriter::appendStringUtf8(out, entry.key);
            out += mPretty ? ": " : ":";
            if (!entry.isArray) {
                out += entry.text;
                continue;
            }
            out.push_back('[');
            out += entry.text;
            if (mPretty && entry.count > 0) {
                out.push_back('\n');
                JsonWriter::appendIndent(out, frame.level + 1);
            }
            out.push_back(']');
        }
        if (mPretty && !frame.entries.empty()) {
            out.push_back('\n');
            JsonWriter::appendIndent(out, frame.level);
        }
        out.push_back('}');
        return out;
    }

    bool mPretty;
    std::vector<Frame> mStack;
    std::string mResult;
};

} // namespace

bool JsonProjectWriter::write(RigxData &document, QIODevice *device,
                              const ProjectSaveOptions &options, QString *error)
{
    JsonSink sink(options.prettifyJson);
    ProjectWriter(document, sink, options).write();
    const std::string &text = sink.result();
    if (device->write(text.data(), qint64(text.size())) != qint64(text.size())) {
        if (error)
            *error = device->errorString();
        return false;
    }
    return true;
}

} // namespace Morvane
