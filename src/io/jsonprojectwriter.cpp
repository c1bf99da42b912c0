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
#include <cstdint>
#include <string>
#include <vector>

namespace Morvane {

namespace {

// Keys must come out sorted, but the walk emits attributes first and children later, so
// each open element keeps its entries until it closes and then puts them in order.
//
// All text lives in one growing buffer. An entry is a list of spans of that buffer. A
// small element is rendered in order into a scratch buffer and copied back over its raw
// text, so it becomes a single span; a large one (an animation, an entity, the root)
// only orders the spans of its entries and adds spans for its own punctuation. So no
// byte is copied more than twice in the cache and large texts are never copied at all.
class JsonSink final : public ProjectSink
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
        if (!mFrames.empty())
            frame.level = mFrames.back().level + (single ? 1 : 2);
        frame.textBegin = mText.size();
        frame.itemBegin = mItems.size();
        frame.spanBegin = mSpans.size();
        mFrames.push_back(frame);
    }

    void endElement() override
    {
        const Frame frame = mFrames.back();
        mFrames.pop_back();
        render(frame);
        mItems.resize(frame.itemBegin);
        if (mFrames.empty())
            return;
        Item item;
        item.key = frame.name;
        item.isArray = !frame.single;
        item.firstSpan = frame.spanBegin;
        item.spanCount = mSpans.size() - frame.spanBegin;
        mItems.push_back(item);
    }

    void attribute(std::string_view name, QStringView text) override
    {
        const std::size_t begin = mText.size();
        JsonWriter::appendString(mText, text);
        addScalar(name, begin);
    }

    void integerAttribute(std::string_view name, std::int64_t value) override
    {
        const std::size_t begin = mText.size();
        char buffer[NumberFormat::BufferSize];
        mText.append(buffer, std::size_t(NumberFormat::writeInteger(buffer, value)));
        addScalar(name, begin);
    }

    void real6Attribute(std::string_view name, double value) override { addNumber(name, value); }
    void g6Attribute(std::string_view name, double value) override { addNumber(name, value); }

    /// Hands the finished document to `device` piece by piece, reporting 0..100 of it.
    bool writeTo(QIODevice *device, const std::function<void(int percent)> &progress) const
    {
        std::size_t total = 0;
        for (const Span &span : mSpans)
            total += span.length;
        std::size_t done = 0;
        int percent = -1;
        for (const Span &span : mSpans) {
            if (device->write(mText.data() + span.offset, qint64(span.length))
                != qint64(span.length))
                return false;
            done += span.length;
            const int now = total > 0 ? int(double(done) * 100.0 / double(total)) : 100;
            if (progress && now != percent) {
                percent = now;
                progress(percent);
            }
        }
        return true;
    }

private:
    struct Span
    {
        std::size_t offset;
        std::size_t length;
    };
    // One attribute or child element of an open element.
    struct Item
    {
        std::string_view key;
        bool isArray = false;
        std::size_t firstSpan = 0;
        std::size_t spanCount = 0;
    };
    struct Frame
    {
        std::string_view name;
        bool single = false;
        int level = 0;
        std::size_t textBegin = 0;
        std::size_t itemBegin = 0;
        std::size_t spanBegin = 0;
    };
    // Up to this size an element is rendered into one contiguous text.
    static constexpr std::size_t SmallElement = 1 << 18;

    void addNumber(std::string_view name, double value)
    {
        if (!std::isfinite(value))
            return; // JSON has no form for it; readers take the default.
        const std::size_t begin = mText.size();
        char buffer[NumberFormat::BufferSize];
        mText.append(buffer, std::size_t(NumberFormat::writeShortest(buffer, value)));
        addScalar(name, begin);
    }

    void addScalar(std::string_view name, std::size_t begin)
    {
        mSpans.push_back({begin, mText.size() - begin});
        Item item;
        item.key = name;
        item.firstSpan = mSpans.size() - 1;
        item.spanCount = 1;
        mItems.push_back(item);
    }

    // Stable, so that the children of one name keep their order; elements have a handful
    // of entries, or many that arrive in nearly sorted runs.
    void sortItems(std::size_t begin)
    {
        const auto byKey = [](const Item &a, const Item &b) { return a.key < b.key; };
        const std::size_t count = mItems.size() - begin;
        if (count > 32) {
            std::stable_sort(mItems.begin() + std::ptrdiff_t(begin), mItems.end(), byKey);
            return;
        }
        for (std::size_t i = begin + 1; i < mItems.size(); ++i) {
            if (!byKey(mItems[i], mItems[i - 1]))
                continue;
            const Item item = mItems[i];
            std::size_t j = i;
            for (; j > begin && byKey(item, mItems[j - 1]); --j)
                mItems[j] = mItems[j - 1];
            mItems[j] = item;
        }
    }

    void glue(std::string_view text) { mScratch += text; }
    void glueIndent(int level)
    {
        mScratch.push_back('\n');
        JsonWriter::appendIndent(mScratch, level);
    }

    void emitSpans(std::size_t first, std::size_t count)
    {
        if (mInline) {
            for (std::size_t i = first; i < first + count; ++i)
                mScratch.append(mText, mSpans[i].offset, mSpans[i].length);
            return;
        }
        closeGlue();
        for (std::size_t i = first; i < first + count; ++i)
            addOut(mSpans[i]);
    }

    // In span mode, punctuation collects in the scratch buffer; this records the piece
    // written since the last span, as an offset into the scratch buffer for now.
    void closeGlue()
    {
        if (mScratch.size() > mGlueStart)
            mOut.push_back({mGlueStart, mScratch.size() - mGlueStart, true});
        mGlueStart = mScratch.size();
    }

    void addOut(const Span &span)
    {
        if (span.length == 0)
            return;
        mOut.push_back({span.offset, span.length, false});
    }

    void render(const Frame &frame)
    {
        sortItems(frame.itemBegin);
        mInline = mText.size() - frame.textBegin <= SmallElement;
        mScratch.clear();
        mOut.clear();
        mGlueStart = 0;

        const std::string_view separator = mPretty ? ": " : ":";
        glue("{");
        bool first = true;
        const std::size_t end = mItems.size();
        for (std::size_t i = frame.itemBegin; i < end;) {
            std::size_t runEnd = i + 1;
            while (runEnd < end && mItems[runEnd].key == mItems[i].key)
                ++runEnd;
            if (!first)
                glue(",");
            first = false;
            if (mPretty)
                glueIndent(frame.level + 1);
            JsonWriter::appendStringUtf8(mScratch, mItems[i].key);
            glue(separator);
            if (!mItems[i].isArray) {
                // A name given twice keeps its last value.
                const Item &item = mItems[runEnd - 1];
                emitSpans(item.firstSpan, item.spanCount);
            } else {
                glue("[");
                for (std::size_t k = i; k < runEnd; ++k) {
                    if (k > i)
                        glue(",");
                    if (mPretty)
                        glueIndent(frame.level + 2);
                    emitSpans(mItems[k].firstSpan, mItems[k].spanCount);
                }
                if (mPretty)
                    glueIndent(frame.level + 1);
                glue("]");
            }
            i = runEnd;
        }
        if (mPretty && end > frame.itemBegin)
            glueIndent(frame.level);
        glue("}");

        if (mInline) {
            // Everything the element refers to lies behind its start: replace it all.
            mText.resize(frame.textBegin);
            mText += mScratch;
            mSpans.resize(frame.spanBegin);
            mSpans.push_back({frame.textBegin, mScratch.size()});
            return;
        }
        closeGlue();
        const std::size_t glueBase = mText.size();
        mText += mScratch;
        mSpans.resize(frame.spanBegin);
        for (const OutPiece &piece : mOut) {
            const std::size_t offset = piece.glue ? glueBase + piece.offset : piece.offset;
            if (!mSpans.empty() && mSpans.size() > frame.spanBegin
                && mSpans.back().offset + mSpans.back().length == offset)
                mSpans.back().length += piece.length;
            else
                mSpans.push_back({offset, piece.length});
        }
    }

    struct OutPiece
    {
        std::size_t offset;
        std::size_t length;
        bool glue;
    };

    bool mPretty;
    std::string mText;
    std::vector<Span> mSpans;
    std::vector<Item> mItems;
    std::vector<Frame> mFrames;
    std::string mScratch;
    std::vector<OutPiece> mOut;
    std::size_t mGlueStart = 0;
    bool mInline = true;
};

} // namespace

bool JsonProjectWriter::write(RigxData &document, QIODevice *device,
                              const ProjectSaveOptions &options, QString *error,
                              const std::function<void(int percent)> &progress)
{
    JsonSink sink(options.prettifyJson);
    ProjectWriter projectWriter(document, sink, options);
    // The text is complete only at the end; building it is most of the work.
    if (progress)
        projectWriter.setProgress([&progress](int percent) { progress(percent * 9 / 10); });
    projectWriter.write();
    std::function<void(int)> writing;
    if (progress)
        writing = [&progress](int percent) { progress(90 + percent / 10); };
    if (!sink.writeTo(device, writing)) {
        if (error)
            *error = device->errorString();
        return false;
    }
    return true;
}

} // namespace Morvane
