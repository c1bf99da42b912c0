// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectsaveoptions.h"

#include <QString>

#include <functional>

class QIODevice;

namespace Morvane {

class RigxData;

/// Writes a project in the XML form (root element "morvane_data").
class XmlProjectWriter
{
public:
    /// Writes the whole document to `device`, indented with 4 spaces when
    /// `options.prettifyXml`, else on one line. Empty timelines and unused missing images
    /// are left out of the file, not removed from the document; key angles are normalised
    /// as a side effect. Returns false with the device's reason in `error` when
    /// writing fails. `progress`, when set, hears how far the writing has come (0..100,
    /// rising, a few hundred calls at most); the document must not change meanwhile.
    static bool write(RigxData &document, QIODevice *device, const ProjectSaveOptions &options,
                      QString *error = nullptr,
                      const std::function<void(int percent)> &progress = {});
};

} // namespace Morvane
