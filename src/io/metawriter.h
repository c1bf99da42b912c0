// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

namespace Morvane {

class ProjectSink;
class TagManager;
class TweenInfo;
class ValInfoCollection;
class ValueLineHolder;

/// Writes the tag list, variable declarations and value lines of a project in
/// both file forms through the project writer's sink:
///
///   <tag_list><i name="..."/>...</tag_list>              JSON: "tag_list": [{"name"}]
///   <var_defs><i id name type default/>...</var_defs>    JSON: "var_defs": [{...}]
///   <meta>                                               JSON: "meta": {
///     <tagline><key id time><tag id t/>...</key></tagline>   "tagline": {"key": [...]},
///     <varline id def><key id time val curve.../></varline>  "valline": [...] }
///   </meta>
///
/// A tag is named in a key by its position in the tag list (`t`); a line names
/// its variable by the declaration's id (`def`). Empty parts are not written.
class MetaWriter
{
public:
    static void writeTagList(ProjectSink &sink, const TagManager &tags);
    static void writeVarDefs(ProjectSink &sink, const ValInfoCollection &definitions);
    /// The lines of one owner; only lines of declared int, float and string
    /// variables and tags still in the list are written, and nothing at all
    /// when no such key exists. `holder` may be null.
    static void writeMeta(ProjectSink &sink, const ValueLineHolder *holder,
                          const ValInfoCollection &definitions, const TagManager &tags);
    /// Whether `writeMeta` would write anything.
    static bool hasMeta(const ValueLineHolder *holder, const ValInfoCollection &definitions);

private:
    static void writeCurve(ProjectSink &sink, const TweenInfo &curve);
};

} // namespace Morvane
