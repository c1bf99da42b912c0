// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "xmlprojectwriter.h"

#include "io/projectsink.h"
#include "io/projectwriter.h"
#include "io/xmlwriter.h"

namespace Morvane {

namespace {

class XmlSink final : public ProjectSink
{
public:
    explicit XmlSink(XmlWriter &writer)
        : mWriter(writer)
    {}

    bool isJson() const override { return false; }
    void startElement(std::string_view name, bool) override { mWriter.writeStartElement(name); }
    void endElement() override { mWriter.writeEndElement(); }
    void attribute(std::string_view name, QStringView text) override
    {
        mWriter.writeAttribute(name, text);
    }
    void integerAttribute(std::string_view name, std::int64_t value) override
    {
        mWriter.writeIntegerAttribute(name, value);
    }
    void real6Attribute(std::string_view name, double value) override
    {
        mWriter.writeReal6Attribute(name, value);
    }
    void g6Attribute(std::string_view name, double value) override
    {
        mWriter.writeG6Attribute(name, value);
    }

private:
    XmlWriter &mWriter;
};

} // namespace

bool XmlProjectWriter::write(RigxData &document, QIODevice *device,
                             const ProjectSaveOptions &options, QString *error,
                             const std::function<void(int percent)> &progress)
{
    XmlWriter writer(device);
    writer.setAutoFormatting(options.prettifyXml);
    writer.setAutoFormattingIndent(4);
    writer.writeStartDocument();
    XmlSink sink(writer);
    ProjectWriter projectWriter(document, sink, options);
    if (progress) {
        // The output streams to the device while the walk goes on: hand it over before
        // each report, so that the device holds what the percentage claims.
        projectWriter.setProgress([&writer, &progress](int percent) {
            writer.flush();
            progress(percent);
        });
    }
    projectWriter.write();
    writer.writeEndDocument();
    if (writer.hasError()) {
        if (error)
            *error = writer.errorString();
        return false;
    }
    return true;
}

} // namespace Morvane
