// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "xmlprojectreader.h"

#include "io/numberformat.h"
#include "io/projectreader.h"
#include "io/textbuffer.h"

#include <QFile>

#include <pugixml.hpp>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Morvane {

namespace {

// Entities are never expanded. The DOCTYPE is kept as a node only so that a
// document carrying one can be refused: a project file has no use for a DTD.
constexpr unsigned int ParseOptions = pugi::parse_default | pugi::parse_doctype;

QString positionText(const QByteArray &text, std::ptrdiff_t offset);

// The animations of a streamed file: their places in the text, parsed one at a time into
// one reused tree. In the outline that is parsed up front each is a placeholder element
// that names its range by number.
class AnimationStream
{
public:
    struct Range
    {
        std::size_t begin;
        std::size_t end;
    };

    char *text = nullptr;
    std::vector<Range> ranges;
    std::vector<bool> loaded;
    pugi::xml_document tree;
    std::size_t bytesRead = 0;
    std::size_t bytesTotal = 0;
    std::function<void(int)> progress;
    bool failed = false;
    std::ptrdiff_t errorOffset = 0;
    QString errorText;

    // The parsed animation of placeholder `index`, or a null node when it does not parse
    // (the first failure is kept; later animations are not parsed at all).
    pugi::xml_node load(int index)
    {
        tree.reset();
        if (failed || index < 0 || std::size_t(index) >= ranges.size() || loaded[std::size_t(index)])
            return pugi::xml_node();
        loaded[std::size_t(index)] = true;
        const Range range = ranges[std::size_t(index)];
        const pugi::xml_parse_result result = tree.load_buffer_inplace(
            text + range.begin, range.end - range.begin, ParseOptions, pugi::encoding_utf8);
        if (!result) {
            failed = true;
            errorOffset = std::ptrdiff_t(range.begin) + result.offset;
            errorText = QString::fromUtf8(result.description());
            tree.reset();
            return pugi::xml_node();
        }
        bytesRead += range.end - range.begin;
        if (progress && bytesTotal > 0)
            progress(int(bytesRead * 100 / bytesTotal));
        return tree.document_element();
    }

    // Animations the reader did not reach must still parse: the text is refused as a
    // whole parse would refuse it.
    void checkUnread()
    {
        for (std::size_t i = 0; i < ranges.size() && !failed; ++i) {
            if (!loaded[i])
                load(int(i));
        }
        tree.reset();
    }
};

class XmlNode
{
public:
    XmlNode() = default;
    explicit XmlNode(pugi::xml_node node, AnimationStream *stream = nullptr)
        : mNode(node)
        , mStream(stream)
    {}

    bool isValid() const { return bool(mNode); }

    bool string(const char *name, QString *out) const
    {
        const pugi::xml_attribute attribute = mNode.attribute(name);
        if (!attribute)
            return false;
        *out = QString::fromUtf8(attribute.value());
        return true;
    }

    bool real(const char *name, double *out) const
    {
        const pugi::xml_attribute attribute = mNode.attribute(name);
        if (!attribute)
            return false;
        const char *text = attribute.value();
        return NumberFormat::parseDouble(text, text + std::strlen(text), out);
    }

    bool integer(const char *name, int *out) const
    {
        const pugi::xml_attribute attribute = mNode.attribute(name);
        if (!attribute)
            return false;
        const char *text = attribute.value();
        return NumberFormat::parseInt(text, text + std::strlen(text), out);
    }

    XmlNode first(const char *name) const { return XmlNode(mNode.child(name), mStream); }

    template <typename F>
    void forEach(const char *name, F &&function) const
    {
        const bool streamed = mStream && std::strcmp(name, "animation") == 0;
        for (pugi::xml_node child = mNode.child(name); child; child = child.next_sibling(name)) {
            if (!streamed) {
                function(XmlNode(child, mStream));
                continue;
            }
            // Nothing below an animation is streamed again.
            const pugi::xml_node animation = mStream->load(child.attribute(PlaceholderAttribute).as_int(-1));
            if (!animation)
                return;
            function(XmlNode(animation));
        }
    }

    static constexpr const char *PlaceholderAttribute = "range";

private:
    pugi::xml_node mNode;
    AnimationStream *mStream = nullptr;
};

bool startsWith(const char *p, const char *end, std::string_view prefix)
{
    return std::size_t(end - p) >= prefix.size() && std::memcmp(p, prefix.data(), prefix.size()) == 0;
}

// Finds the animation elements of the entities (morvane_data > entity > animation) in
// `text`. False when the text holds anything this quick scan does not follow (a DTD,
// another encoding, an unterminated construct, unbalanced tags): the whole document is
// then parsed at once, which also finds and reports the actual problem.
bool findAnimations(const char *text, std::size_t size, std::vector<AnimationStream::Range> *ranges)
{
    const char *const end = text + size;
    const char *p = text;
    // UTF-16 and UTF-32 have NULs, and a NUL would end an animation's parse early where
    // the whole parse fails on it.
    if (std::memchr(text, 0, size) || (size > 0 && static_cast<unsigned char>(text[0]) >= 0xFE))
        return false;
    std::string_view names[2];
    int depth = 0;
    const char *animationStart = nullptr;
    const auto find = [&](const char *from, std::string_view what) -> const char * {
        const auto *found = std::search(from, end, what.begin(), what.end());
        return found == end ? nullptr : found + what.size();
    };
    while ((p = static_cast<const char *>(std::memchr(p, '<', std::size_t(end - p))))) {
        if (end - p < 2)
            return false;
        const char c = p[1];
        if (c == '!') {
            if (startsWith(p, end, "<!--"))
                p = find(p + 4, "-->");
            else if (startsWith(p, end, "<![CDATA["))
                p = find(p + 9, "]]>");
            else
                return false;
            if (!p)
                return false;
            continue;
        }
        if (c == '?') {
            const char *close = find(p + 2, "?>");
            if (!close)
                return false;
            // Another declared encoding would be lost on the animations, parsed apart.
            const std::string_view declaration(p, std::size_t(close - p));
            const std::size_t encoding = declaration.find("encoding");
            if (startsWith(p, end, "<?xml") && encoding != std::string_view::npos) {
                std::string value(declaration.substr(encoding + 8, 16));
                std::transform(value.begin(), value.end(), value.begin(),
                               [](unsigned char ch) { return char(std::tolower(ch)); });
                if (value.find("utf-8") == std::string::npos)
                    return false;
            }
            p = close;
            continue;
        }
        if (c == '/') {
            const char *close = static_cast<const char *>(std::memchr(p, '>', std::size_t(end - p)));
            if (!close || depth == 0)
                return false;
            --depth;
            if (depth == 2 && animationStart) {
                ranges->push_back({std::size_t(animationStart - text), std::size_t(close + 1 - text)});
                animationStart = nullptr;
            }
            p = close + 1;
            continue;
        }
        const char *name = p + 1;
        const char *q = name;
        while (q < end && *q != '>' && *q != '/' && !std::isspace(static_cast<unsigned char>(*q)))
            ++q;
        const std::string_view tag(name, std::size_t(q - name));
        while (q < end && *q != '>') {
            if (*q == '"' || *q == '\'') {
                q = static_cast<const char *>(std::memchr(q + 1, *q, std::size_t(end - q - 1)));
                if (!q)
                    return false;
            }
            ++q;
        }
        if (q >= end || tag.empty())
            return false;
        const bool empty = q[-1] == '/';
        if (depth == 2 && !animationStart && tag == "animation" && names[0] == "morvane_data"
            && names[1] == "entity") {
            if (empty)
                ranges->push_back({std::size_t(p - text), std::size_t(q + 1 - text)});
            else
                animationStart = p;
        }
        // A second root is an error the whole parse reports; the reader would not see it.
        if (depth == 0 && !names[0].empty())
            return false;
        if (!empty) {
            if (depth < 2)
                names[depth] = tag;
            ++depth;
        } else if (depth == 0) {
            names[0] = tag;
        }
        p = q + 1;
    }
    return depth == 0 && !animationStart;
}

// The text with each animation replaced by a placeholder that names its range.
QByteArray outline(const char *text, std::size_t size,
                   const std::vector<AnimationStream::Range> &ranges)
{
    QByteArray result;
    std::size_t at = 0;
    for (std::size_t i = 0; i < ranges.size(); ++i) {
        result.append(text + at, qsizetype(ranges[i].begin - at));
        result.append("<animation ");
        result.append(XmlNode::PlaceholderAttribute);
        result.append("=\"");
        result.append(QByteArray::number(qulonglong(i)));
        result.append("\"/>");
        at = ranges[i].end;
    }
    result.append(text + at, qsizetype(size - at));
    return result;
}

QString positionText(const QByteArray &text, std::ptrdiff_t offset)
{
    int line = 1;
    int column = 1;
    const qsizetype end = qBound<qsizetype>(0, qsizetype(offset), text.size());
    for (qsizetype i = 0; i < end; ++i) {
        if (text.at(i) == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
    return QStringLiteral("line %1, column %2: ").arg(line).arg(column);
}

} // namespace

struct XmlProjectReader::Private
{
    pugi::xml_document document;
    TextBuffer buffer;  // parsed in place; the document points into it
    QByteArray outline; // when streaming: the buffer without its animations
    std::unique_ptr<AnimationStream> stream;
    QString path;        // where the text came from, to count error positions in
    QByteArray original; // or the text itself, when it came from memory
    bool parsed = false;

    void reset()
    {
        parsed = false;
        document.reset();
        stream.reset();
        buffer.clear();
        outline.clear();
    }

    // In-place parsing rewrites the text; positions are counted in a fresh copy.
    QString errorAt(std::ptrdiff_t offset, const QString &what) const
    {
        QByteArray text = original;
        QFile file(path);
        if (!path.isEmpty() && file.open(QIODevice::ReadOnly))
            text = file.readAll();
        return positionText(text, offset) + what;
    }

    bool parseBuffer(Mode mode, QString *parseError)
    {
        std::vector<AnimationStream::Range> ranges;
        if (mode == Mode::StreamAnimations
            && findAnimations(buffer.constData(), buffer.size(), &ranges)
            && !ranges.empty()) {
            outline = Morvane::outline(buffer.constData(), buffer.size(), ranges);
            const pugi::xml_parse_result result = document.load_buffer_inplace(
                outline.data(), std::size_t(outline.size()), ParseOptions, pugi::encoding_utf8);
            if (result) {
                stream = std::make_unique<AnimationStream>();
                stream->text = buffer.data();
                stream->ranges = std::move(ranges);
                stream->loaded.assign(stream->ranges.size(), false);
                for (const AnimationStream::Range &range : stream->ranges)
                    stream->bytesTotal += range.end - range.begin;
                return checkRoot(parseError);
            }
            // The outline's offsets are not the file's: the whole text is parsed to say
            // where.
            document.reset();
            outline.clear();
        }
        const pugi::xml_parse_result result = document.load_buffer_inplace(
            buffer.data(), buffer.size(), ParseOptions, pugi::encoding_auto);
        if (!result) {
            reset();
            *parseError = errorAt(result.offset, QString::fromUtf8(result.description()));
            return false;
        }
        return checkRoot(parseError);
    }

    bool checkRoot(QString *parseError)
    {
        for (pugi::xml_node node = document.first_child(); node; node = node.next_sibling()) {
            if (node.type() == pugi::node_doctype) {
                *parseError = QStringLiteral("DTDs are not allowed in a Morvane file");
                reset();
                return false;
            }
        }
        if (std::strcmp(document.document_element().name(), "morvane_data") != 0) {
            *parseError = QStringLiteral("Not a Morvane file");
            reset();
            return false;
        }
        parsed = true;
        return true;
    }
};

XmlProjectReader::XmlProjectReader()
    : d(std::make_unique<Private>())
{
}

XmlProjectReader::~XmlProjectReader() = default;

bool XmlProjectReader::parseFile(const QString &path, QString *readError, QString *parseError,
                                 Mode mode)
{
    d->reset();
    d->path = path;
    d->original.clear();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *readError = file.errorString();
        return false;
    }
    if (!d->buffer.read(file, readError))
        return false;
    file.close();
    return d->parseBuffer(mode, parseError);
}

bool XmlProjectReader::parse(const QByteArray &text, QString *parseError, Mode mode)
{
    d->reset();
    d->path.clear();
    d->original = text;
    if (!d->buffer.allocate(std::size_t(text.size()))) {
        *parseError = QStringLiteral("Not enough memory for the text");
        return false;
    }
    std::memcpy(d->buffer.data(), text.constData(), std::size_t(text.size()));
    return d->parseBuffer(mode, parseError);
}

bool XmlProjectReader::isStreaming() const
{
    return d->stream != nullptr;
}

void XmlProjectReader::read(RigxData *document, QStringList *warnings,
                            const std::function<void(int)> &progress)
{
    if (!d->parsed)
        return;
    if (d->stream)
        d->stream->progress = progress;
    ProjectReader<XmlNode> reader(document, warnings);
    reader.readRoot(XmlNode(d->document.document_element(), d->stream.get()));
    if (d->stream)
        d->stream->checkUnread();
    if (progress)
        progress(100);
}

bool XmlProjectReader::failed(QString *parseError) const
{
    if (!d->stream || !d->stream->failed)
        return false;
    if (parseError)
        *parseError = d->errorAt(d->stream->errorOffset, d->stream->errorText);
    return true;
}

} // namespace Morvane
