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
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <sys/mman.h>

namespace Morvane {

namespace {

// Text storage in large blocks that never move, so that spans can point into them, and
// that grow without copying what they hold. The blocks ask for large pages: the text of a
// big project is hundreds of megabytes, touched once, and faulting it in 4 KiB pages costs
// more than writing it.
class TextArena
{
public:
    /// Room for `bytes` at `cursor()`, in the current block or a new one.
    char *reserve(std::size_t bytes)
    {
        if (std::size_t(mLimit - mCursor) < bytes)
            addBlock(bytes);
        return mCursor;
    }
    char *cursor() const { return mCursor; }
    void setCursor(char *cursor) { mCursor = cursor; }
    /// Room left from `position` in the current block to its end.
    std::size_t roomFrom(const char *position) const { return std::size_t(mLimit - position); }
    std::size_t blockCount() const { return mBlocks.size(); }

    char *append(std::string_view text)
    {
        char *out = reserve(text.size());
        std::memcpy(out, text.data(), text.size());
        mCursor = out + text.size();
        return out;
    }

private:
    struct Free
    {
        void operator()(char *block) const
        {
            ::operator delete(block, std::align_val_t(LargePage));
        }
    };
    static constexpr std::size_t LargePage = std::size_t(2) << 20;

    void addBlock(std::size_t bytes)
    {
        // Each block as large as all before it, from 1 MiB to 64 MiB, so small saves stay
        // small and large ones need few blocks.
        std::size_t size = std::clamp<std::size_t>(mAllocated, 1 << 20, 64 << 20);
        size = (std::max(size, bytes) + LargePage - 1) / LargePage * LargePage;
        auto *block = static_cast<char *>(::operator new(size, std::align_val_t(LargePage)));
        ::madvise(block, size, MADV_HUGEPAGE);
        mBlocks.emplace_back(block);
        mAllocated += size;
        mCursor = block;
        mLimit = block + size;
    }

    std::vector<std::unique_ptr<char, Free>> mBlocks;
    std::size_t mAllocated = 0;
    char *mCursor = nullptr;
    char *mLimit = nullptr;
};

// Keys must come out sorted, but the walk emits attributes first and children later, so
// each open element keeps its entries until it closes and then puts them in order.
//
// All text lives in one arena. An entry is a list of spans of the arena. A small element
// is rendered in order into a scratch buffer and copied back over its raw text, so it
// becomes a single span; a large one (an animation, an entity, the root)
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
        frame.textBegin = mText.cursor();
        frame.textBlock = mText.blockCount();
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
        mValue.clear();
        JsonWriter::appendString(mValue, text);
        addScalar(name, mText.append(mValue), mValue.size());
    }

    void integerAttribute(std::string_view name, std::int64_t value) override
    {
        char *out = mText.reserve(NumberFormat::BufferSize);
        const int length = NumberFormat::writeInteger(out, value);
        mText.setCursor(out + length);
        addScalar(name, out, std::size_t(length));
    }

    void numberAttribute(std::string_view name, double value, Precision,
                         NumberMapping mapping) override
    {
        addNumber(name, value, mapping);
    }

    /// Hands the finished document to `device` piece by piece, reporting 0..100 of it.
    bool writeTo(QIODevice *device, const std::function<void(int percent)> &progress) const
    {
        std::size_t total = 0;
        for (const Span &span : mSpans)
            total += span.length;
        std::size_t done = 0;
        int percent = -1;
        for (const Span &span : mSpans) {
            if (device->write(span.data, qint64(span.length))
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
        const char *data;
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
        char *textBegin = nullptr;
        std::size_t textBlock = 0;
        std::size_t itemBegin = 0;
        std::size_t spanBegin = 0;
    };
    // Up to this size an element is rendered into one contiguous text.
    static constexpr std::size_t SmallElement = 1 << 18;

    void addNumber(std::string_view name, double value, NumberMapping mapping)
    {
        if (!std::isfinite(value))
            return; // JSON has no form for it; readers take the default.
        char *out = mText.reserve(NumberFormat::BufferSize);
        const int length = NumberFormat::writeShortestFor(out, value, mapping);
        mText.setCursor(out + length);
        addScalar(name, out, std::size_t(length));
    }

    void addScalar(std::string_view name, const char *text, std::size_t length)
    {
        mSpans.push_back({text, length});
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

    // Names are string literals, so the same name mostly is the same pointer.
    static bool sameKey(std::string_view a, std::string_view b)
    {
        return (a.data() == b.data() && a.size() == b.size()) || a == b;
    }

    // Names are plain ASCII words: quoted as they are, escaped only if they need it.
    void appendKey(std::string_view key)
    {
        for (const char c : key) {
            if (c < 0x20 || c == '"' || c == '\\' || static_cast<unsigned char>(c) >= 0x80) {
                JsonWriter::appendStringUtf8(mScratch, key);
                return;
            }
        }
        mScratch.push_back('"');
        mScratch += key;
        mScratch.push_back('"');
    }
    void glueIndent(int level)
    {
        mScratch.push_back('\n');
        JsonWriter::appendIndent(mScratch, level);
    }

    void emitSpans(std::size_t first, std::size_t count)
    {
        if (mInline) {
            for (std::size_t i = first; i < first + count; ++i)
                mScratch.append(mSpans[i].data, mSpans[i].length);
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
            mOut.push_back({nullptr, mGlueStart, mScratch.size() - mGlueStart, true});
        mGlueStart = mScratch.size();
    }

    void addOut(const Span &span)
    {
        if (span.length == 0)
            return;
        mOut.push_back({span.data, 0, span.length, false});
    }

    void render(const Frame &frame)
    {
        sortItems(frame.itemBegin);
        std::size_t contentSize = 0;
        for (std::size_t i = frame.itemBegin; i < mItems.size(); ++i) {
            for (std::size_t k = 0; k < mItems[i].spanCount; ++k)
                contentSize += mSpans[mItems[i].firstSpan + k].length;
        }
        mInline = contentSize <= SmallElement;
        mScratch.clear();
        mOut.clear();
        mGlueStart = 0;

        const std::string_view separator = mPretty ? ": " : ":";
        glue("{");
        bool first = true;
        const std::size_t end = mItems.size();
        for (std::size_t i = frame.itemBegin; i < end;) {
            std::size_t runEnd = i + 1;
            while (runEnd < end && sameKey(mItems[runEnd].key, mItems[i].key))
                ++runEnd;
            if (!first)
                glue(",");
            first = false;
            if (mPretty)
                glueIndent(frame.level + 1);
            appendKey(mItems[i].key);
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
            // Everything the element refers to was written after its start, and is copied
            // now: the rendered text takes its place when it fits there.
            char *out = frame.textBegin;
            if (frame.textBlock == mText.blockCount() && out
                && mText.roomFrom(out) >= mScratch.size())
                mText.setCursor(out);
            else
                out = mText.reserve(mScratch.size());
            std::memcpy(out, mScratch.data(), mScratch.size());
            mText.setCursor(out + mScratch.size());
            mSpans.resize(frame.spanBegin);
            mSpans.push_back({out, mScratch.size()});
            return;
        }
        closeGlue();
        const char *glueBase = mText.append(mScratch);
        mSpans.resize(frame.spanBegin);
        for (const OutPiece &piece : mOut) {
            const char *data = piece.glue ? glueBase + piece.offset : piece.data;
            if (mSpans.size() > frame.spanBegin
                && mSpans.back().data + mSpans.back().length == data)
                mSpans.back().length += piece.length;
            else
                mSpans.push_back({data, piece.length});
        }
    }

    // A span of the text, or (`glue`) a piece at `offset` of the scratch buffer.
    struct OutPiece
    {
        const char *data;
        std::size_t offset;
        std::size_t length;
        bool glue;
    };

    bool mPretty;
    TextArena mText;
    std::string mValue;
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
