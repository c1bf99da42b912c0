// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "xmlprojectreader.h"

#include "io/numberformat.h"
#include "io/projectreader.h"

#include <QFile>

#include <pugixml.hpp>

#include <cstring>

namespace Morvane {

namespace {

class XmlNode
{
public:
    XmlNode() = default;
    explicit XmlNode(pugi::xml_node node)
        : mNode(node)
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

    XmlNode first(const char *name) const { return XmlNode(mNode.child(name)); }

    template <typename F>
    void forEach(const char *name, F &&function) const
    {
        for (pugi::xml_node child = mNode.child(name); child; child = child.next_sibling(name))
            function(XmlNode(child));
    }

private:
    pugi::xml_node mNode;
};

// Entities are never expanded. The DOCTYPE is kept as a node only so that a
// document carrying one can be refused: a project file has no use for a DTD.
constexpr unsigned int ParseOptions = pugi::parse_default | pugi::parse_doctype;

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
    QByteArray buffer; // parsed in place; the document points into it
    bool parsed = false;

    bool checkRoot(QString *parseError)
    {
        for (pugi::xml_node node = document.first_child(); node; node = node.next_sibling()) {
            if (node.type() == pugi::node_doctype) {
                *parseError = QStringLiteral("DTDs are not allowed in a Morvane file");
                document.reset();
                return false;
            }
        }
        if (std::strcmp(document.document_element().name(), "morvane_data") != 0) {
            *parseError = QStringLiteral("Not a Morvane file");
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

bool XmlProjectReader::parseFile(const QString &path, QString *readError, QString *parseError)
{
    d->parsed = false;
    d->document.reset();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *readError = file.errorString();
        return false;
    }
    d->buffer = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *readError = file.errorString();
        d->buffer.clear();
        return false;
    }
    file.close();
    const pugi::xml_parse_result result = d->document.load_buffer_inplace(
        d->buffer.data(), size_t(d->buffer.size()), ParseOptions, pugi::encoding_auto);
    if (!result) {
        // In-place parsing has rewritten the text; positions are counted in a fresh copy.
        d->document.reset();
        d->buffer.clear();
        QByteArray original;
        if (file.open(QIODevice::ReadOnly))
            original = file.readAll();
        *parseError = positionText(original, result.offset)
                      + QString::fromUtf8(result.description());
        return false;
    }
    return d->checkRoot(parseError);
}

bool XmlProjectReader::parse(const QByteArray &text, QString *parseError)
{
    d->parsed = false;
    d->buffer.clear();
    const pugi::xml_parse_result result = d->document.load_buffer(
        text.constData(), size_t(text.size()), ParseOptions, pugi::encoding_auto);
    if (!result) {
        *parseError = positionText(text, result.offset) + QString::fromUtf8(result.description());
        return false;
    }
    return d->checkRoot(parseError);
}

void XmlProjectReader::read(RigxData *document, QStringList *warnings)
{
    if (!d->parsed)
        return;
    ProjectReader<XmlNode> reader(document, warnings);
    reader.readRoot(XmlNode(d->document.document_element()));
}

} // namespace Morvane
