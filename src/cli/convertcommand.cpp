// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "convertcommand.h"

#include "clicommand.h"
#include "io/projectfile.h"
#include "model/rigxdata.h"

#include <cstdio>

namespace Morvane {

int ConvertCommand::run(const QStringList &arguments)
{
    QStringList paths;
    bool pretty = true;
    for (const QString &argument : arguments) {
        if (argument == QLatin1String("--compact")) {
            pretty = false;
        } else if (argument == QLatin1String("--pretty")) {
            pretty = true;
        } else if (argument.startsWith(QLatin1String("--"))) {
            std::fprintf(stderr, "morvane-cli convert: unknown option %s\nUsage: morvane-cli %s\n",
                         qPrintable(argument), Usage);
            return CliUsage;
        } else {
            paths.append(argument);
        }
    }
    if (paths.size() != 2) {
        std::fprintf(stderr, "Usage: morvane-cli %s\n", Usage);
        return CliUsage;
    }

    RigxData document;
    if (!ProjectFile::open(&document, paths.at(0)))
        return CliFileError;
    ProjectSaveOptions options;
    options.prettifyXml = pretty;
    options.prettifyJson = pretty;
    if (!ProjectFile::save(&document, paths.at(1), options))
        return CliFileError;
    return CliSuccess;
}

} // namespace Morvane
