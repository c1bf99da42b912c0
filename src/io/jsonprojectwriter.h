// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectsaveoptions.h"

#include <QString>

class QIODevice;

namespace Morvane {

class RigxData;

/// Writes a project in the JSON form: the XML tree with attributes and children as keys
/// of one object per element, keys in ascending order, numbers in their shortest form.
class JsonProjectWriter
{
public:
    /// Tab-indented when `options.prettifyJson`, else one line without blanks. Side
    /// effects and errors as for `XmlProjectWriter::write`.
    static bool write(RigxData &document, QIODevice *device, const ProjectSaveOptions &options,
                      QString *error = nullptr);
};

} // namespace Morvane
