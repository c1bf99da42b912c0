// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "xmlprojectreader.h"

#include "io/numberformat.h"
#include "io/projectreader.h"

#include <QFile>

#include <pugixml.hpp>

#include <cmath>
#include <cstring>
#include <functional>

namespace Morvane {

namespace {

// Entities are never expanded. The DOCTYPE is kept as a node only so that a
// document carrying one can be refused: a project file has no use for a DTD.
constexpr unsigned int ParseOptions = pugi::parse_default | pugi::parse_doctype;

class XmlNode
{
public:
    XmlNode() = default;
    XmlNode(pugi::xml_node node, ReaderWarnings *warnings)
        : mNode(node)
        , mWarnings(warnings)
    {}

    bool isValid() const { return bool(mNode); }

    bool string(const char *name, QString *out) const
    {
        const pugi::xml_attribute attribute = find(name);
        if (!attribute)
            return false;
        *out = QString::fromUtf8(attribute.value());
        return true;
    }

    bool real(const char *name, double *out) const
    {
        const pugi::xml_attribute attribute = find(name);
        if (!attribute)
            return false;
        const char *text = attribute.value();
        if (NumberFormat::parseDouble(text, text + std::strlen(text), out))
            return true;
        badNumber(name, text);
        return false;
    }

    bool integer(const char *name, int *out) const
    {
        const pugi::xml_attribute attribute = find(name);
        if (!attribute)
            return false;
        const char *text = attribute.value();
        const char *end = text + std::strlen(text);
        if (NumberFormat::parseInt(text, end, out))
            return true;
        // A fraction is no integer, but the caller may read it as a real next.
        double real;
        if (!NumberFormat::parseDouble(text, end, &real) || std::trunc(real) == real)
            badNumber(name, text);
        return false;
    }

    XmlNode first(const char *name) const { return XmlNode(mNode.child(name), mWarnings); }

    template <typename F>
    void forEach(const char *name, F &&function) const
    {
        // The next one is found first: `function` may release the child.
        for (pugi::xml_node child = mNode.child(name); child;) {
            const pugi::xml_node next = child.next_sibling(name);
            function(XmlNode(child, mWarnings));
            child = next;
        }
    }

    // Drops the element once it is read. Its memory goes back to the heap page by page as
    // the reading goes on, and the model built next takes it over instead of faulting in
    // fresh pages.
    void release() const
    {
        // Leaves first: pugixml frees a subtree recursively, and a hostile file may nest
        // deeper than the stack goes.
        pugi::xml_node node = mNode;
        for (;;) {
            while (pugi::xml_node child = node.first_child())
                node = child;
            pugi::xml_node parent = node.parent();
            const bool done = node == mNode;
            parent.remove_child(node);
            if (done)
                return;
            node = parent;
        }
    }

private:
    // The reader asks for attributes mostly in the order they are written: the search
    // starts behind the last one found.
    pugi::xml_attribute find(const char *name) const { return mNode.attribute(name, mHint); }

    void badNumber(const char *name, const char *text) const
    {
        mWarnings->badNumber(mNode.name(), name,
                             QLatin1Char('"') + QString::fromUtf8(text) + QLatin1Char('"'));
    }

    pugi::xml_node mNode;
    mutable pugi::xml_attribute mHint;
    ReaderWarnings *mWarnings = nullptr;
};

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
    QByteArray text; // parsed in place; the tree points into it
    bool parsed = false;

    // `original` gives the text as it was before the in-place parse changed it; it is only
    // asked for when the parse fails.
    bool parseText(const std::function<QByteArray()> &original, QString *parseError)
    {
        parsed = false;
        const pugi::xml_parse_result result = document.load_buffer_inplace(
            text.data(), std::size_t(text.size()), ParseOptions, pugi::encoding_auto);
        if (!result) {
            // Files in an encoding the declaration or a byte order mark names are read; any
            // other text is taken as UTF-8, and if it is not, that is what to say.
            const QByteArray before = original();
            const QString notUtf8 = result.encoding == pugi::encoding_utf8
                                        ? notUtf8Reason(before.constData(), before.size())
                                        : QString();
            *parseError = notUtf8.isEmpty()
                              ? positionText(before, result.offset)
                                    + QString::fromUtf8(result.description())
                              : QStringLiteral("the file is not UTF-8 (%1)").arg(notUtf8);
            reset();
            return false;
        }
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

    void reset()
    {
        parsed = false;
        document.reset();
        text.clear();
    }
};

XmlProjectReader::XmlProjectReader()
    : d(std::make_unique<Private>())
{
}

XmlProjectReader::~XmlProjectReader() = default;

bool XmlProjectReader::parseFile(const QString &path, QString *readError, QString *parseError)
{
    d->reset();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *readError = file.errorString();
        return false;
    }
    d->text = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *readError = file.errorString();
        d->reset();
        return false;
    }
    file.close();
    // The in-place parse changes the text; error positions are counted in the file's.
    return d->parseText(
        [&file] {
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        },
        parseError);
}

bool XmlProjectReader::parse(const QByteArray &text, QString *parseError)
{
    d->reset();
    d->text = text;
    d->text.detach();
    return d->parseText([&text] { return text; }, parseError);
}

void XmlProjectReader::read(RigxData *document, QStringList *warnings,
                            const std::function<void(int)> &progress)
{
    if (!d->parsed)
        return;
    ReaderWarnings list(warnings);
    ProjectReader<XmlNode> reader(document, &list);
    reader.readRoot(XmlNode(d->document.document_element(), &list), progress);
    list.finish();
    // The build released what it read: the tree is no longer whole.
    d->reset();
}

} // namespace Morvane
