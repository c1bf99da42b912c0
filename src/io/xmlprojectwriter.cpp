// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "xmlprojectwriter.h"

#include "io/projectsink.h"
#include "io/projectwriter.h"
#include "io/xmlwriter.h"

#include <cmath>
#include <cstring>

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
    void numberAttribute(std::string_view name, double value, Precision precision,
                         NumberMapping mapping) override
    {
        const double file = NumberFormat::toFile(value, mapping);
        if (precision == Precision::Real6)
            mWriter.writeReal6Attribute(name, file);
        else
            mWriter.writeG6Attribute(name, stableG6(file, mapping));
    }

private:
    // Six significant digits of a tiny number do not survive 1 - (1 - t): write the number
    // whose text the next save writes again, so that saving a saved file changes nothing.
    static double stableG6(double file, NumberMapping mapping)
    {
        if (mapping != NumberMapping::FromOne || !std::isfinite(file))
            return file;
        char text[NumberFormat::BufferSize];
        char again[NumberFormat::BufferSize];
        int length = NumberFormat::writeG6(text, file);
        for (int step = 0; step < 4; ++step) {
            double read = 0.0;
            if (!NumberFormat::parseDouble(text, text + length, &read))
                return file;
            const double next = NumberFormat::toFile(NumberFormat::toModel(read, mapping),
                                                     mapping);
            const int nextLength = NumberFormat::writeG6(again, next);
            if (nextLength == length && std::memcmp(text, again, size_t(length)) == 0)
                return file;
            file = next;
            length = nextLength;
            std::memcpy(text, again, size_t(length));
        }
        return file;
    }


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
