// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectsaveoptions.h"

#include <QString>

#include <functional>

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
    /// The whole text is built in memory first and handed to the device at the end;
    /// `progress` hears about both parts.
    static bool write(RigxData &document, QIODevice *device, const ProjectSaveOptions &options,
                      QString *error = nullptr,
                      const std::function<void(int percent)> &progress = {});
};

} // namespace Morvane
