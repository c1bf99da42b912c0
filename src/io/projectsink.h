// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/numberformat.h"

#include <QStringView>

#include <cstdint>
#include <string_view>

namespace Morvane {

/// Where the project writer sends the tree: the XML and the JSON forms share one walk over
/// the document, so that both carry the same elements, order and omission rules.
///
/// An element has attributes (which come before its children) and child elements. In
/// XML an attribute is an attribute and a child a nested element; in JSON both become keys
/// of the element's object, children of one name an array (or, for `single` children,
/// one object).
///
/// Element and attribute names are ASCII words that stay valid until the element they
/// belong to ends (string literals): a sink may keep them instead of copying.
class ProjectSink
{
public:
    virtual ~ProjectSink() = default;

    /// True for the JSON form, where a few names and number forms differ.
    virtual bool isJson() const = 0;

    virtual void startElement(std::string_view name, bool single = false) = 0;
    virtual void endElement() = 0;

    virtual void attribute(std::string_view name, QStringView text) = 0;
    virtual void integerAttribute(std::string_view name, std::int64_t value) = 0;
    /// The XML forms of reals; JSON writes every real in its shortest form.
    enum class Precision { Real6, G6 };

    /// The file's number for the model value `value`, held as `mapping` says: in XML the
    /// number `NumberFormat::toFile` gives, with six decimals (`Real6`) or six
    /// significant digits (`G6`); in JSON the shortest text that reads back as `value`
    /// (`NumberFormat::writeShortestFor`).
    virtual void numberAttribute(std::string_view name, double value, Precision precision,
                                 NumberMapping mapping) = 0;

    void real6Attribute(std::string_view name, double value,
                        NumberMapping mapping = NumberMapping::Same)
    {
        numberAttribute(name, value, Precision::Real6, mapping);
    }
    void g6Attribute(std::string_view name, double value,
                     NumberMapping mapping = NumberMapping::Same)
    {
        numberAttribute(name, value, Precision::G6, mapping);
    }
};

} // namespace Morvane
