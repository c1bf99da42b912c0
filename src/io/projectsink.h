// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

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
    /// Fixed six-decimal form in XML; shortest form in JSON.
    virtual void real6Attribute(std::string_view name, double value) = 0;
    /// Six significant digits in XML; shortest form in JSON.
    virtual void g6Attribute(std::string_view name, double value) = 0;
};

} // namespace Morvane
