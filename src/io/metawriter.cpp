// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/metawriter.h"

#include "io/projectsink.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valuelineholder.h"

#include <utility>
#include <vector>

namespace Morvane {

namespace {

bool isWrittenType(VarType type)
{
    // Cluster lines have no file form yet; tags live on the tag line.
    return type == VarType::Int || type == VarType::Float || type == VarType::String;
}

// The keyed lines to write, in declaration order, with their declarations.
std::vector<std::pair<const ValInfo *, const ValLine *>>
writtenLines(const ValueLineHolder *holder, const ValInfoCollection &definitions)
{
    std::vector<std::pair<const ValInfo *, const ValLine *>> lines;
    if (!holder)
        return lines;
    for (const ValInfo &info : definitions.infos()) {
        if (!isWrittenType(info.type))
            continue;
        const ValLine *line = holder->line({info.type, info.id});
        if (line && !line->isEmpty())
            lines.emplace_back(&info, line);
    }
    return lines;
}

void writeValue(ProjectSink &sink, std::string_view name, VarType type, const QVariant &value)
{
    switch (type) {
    case VarType::Int:
        sink.integerAttribute(name, value.toInt());
        break;
    case VarType::Float:
        sink.real6Attribute(name, value.toDouble());
        break;
    case VarType::String:
        sink.attribute(name, value.toString());
        break;
    default:
        break;
    }
}

} // namespace

void MetaWriter::writeTagList(ProjectSink &sink, const TagManager &tags)
{
    if (tags.tagCount() == 0)
        return;
    // XML nests the names under one element; JSON makes "tag_list" the array itself.
    const bool json = sink.isJson();
    if (!json)
        sink.startElement("tag_list");
    for (const Tag &tag : tags.tags()) {
        sink.startElement(json ? "tag_list" : "i");
        sink.attribute("name", tag.name());
        sink.endElement();
    }
    if (!json)
        sink.endElement();
}

void MetaWriter::writeVarDefs(ProjectSink &sink, const ValInfoCollection &definitions)
{
    if (definitions.isEmpty())
        return;
    const bool json = sink.isJson();
    if (!json)
        sink.startElement("var_defs");
    for (const ValInfo &info : definitions.infos()) {
        sink.startElement(json ? "var_defs" : "i");
        sink.integerAttribute("id", info.id);
        sink.attribute("name", info.name);
        sink.attribute("type", varTypeToString(info.type));
        writeValue(sink, "default", info.type, info.defaultValue);
        sink.endElement();
    }
    if (!json)
        sink.endElement();
}

bool MetaWriter::hasMeta(const ValueLineHolder *holder, const ValInfoCollection &definitions)
{
    return holder && (!holder->tagLine().isEmpty() || !writtenLines(holder, definitions).empty());
}

void MetaWriter::writeMeta(ProjectSink &sink, const ValueLineHolder *holder,
                           const ValInfoCollection &definitions, const TagManager &tags)
{
    if (!hasMeta(holder, definitions))
        return;
    sink.startElement("meta", true);

    const TagLine &tagLine = holder->tagLine();
    if (!tagLine.isEmpty()) {
        sink.startElement("tagline", true);
        for (int k = 0; k < tagLine.keyCount(); ++k) {
            const auto *key = static_cast<const TagKey *>(tagLine.key(k));
            sink.startElement("key");
            sink.integerAttribute("id", k);
            if (key->time() != 0)
                sink.integerAttribute("time", key->time());
            // Tags removed from the list have no position to name them by.
            const QList<Tag> active = tags.getTags(&key->state(), TagState::ActiveTags);
            for (int t = 0; t < active.size(); ++t) {
                sink.startElement("tag");
                sink.integerAttribute("id", t);
                sink.integerAttribute("t", tags.indexOfTag(active.at(t).uid()));
                sink.endElement();
            }
            sink.endElement();
        }
        sink.endElement();
    }

    const auto lines = writtenLines(holder, definitions);
    for (size_t n = 0; n < lines.size(); ++n) {
        const ValInfo &info = *lines[n].first;
        const ValLine &line = *lines[n].second;
        sink.startElement(sink.isJson() ? "valline" : "varline");
        sink.integerAttribute("id", qint64(n));
        sink.integerAttribute("def", info.id);
        for (int k = 0; k < line.keyCount(); ++k) {
            const ValKey *key = line.key(k);
            sink.startElement("key");
            sink.integerAttribute("id", k);
            if (key->time() != 0)
                sink.integerAttribute("time", key->time());
            writeValue(sink, "val", info.type, key->value());
            if (key->isTweenable())
                writeCurve(sink, key->curve());
            sink.endElement();
        }
        sink.endElement();
    }
    sink.endElement();
}

void MetaWriter::writeCurve(ProjectSink &sink, const TweenInfo &curve)
{
    if (curve.isLinear())
        return;
    sink.attribute("curve_type", curve.curveTypeName());
    static const char *const names[] = {"c1", "c2", "c3", "c4"};
    for (int i = 0; i < curve.cCount() && i < TweenInfo::MaxParameters; ++i)
        sink.g6Attribute(names[i], curve.cAt(i));
}

} // namespace Morvane
