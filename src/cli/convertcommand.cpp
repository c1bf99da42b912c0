// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "convertcommand.h"

#include "clicommand.h"
#include "io/projectfile.h"
#include "model/rigxdata.h"

#include <QCommandLineParser>

namespace Morvane {

void ConvertCommand::addOptions(QCommandLineParser &parser)
{
    parser.addPositionalArgument(QStringLiteral("INPUT"),
                                 QStringLiteral("The project to read, .rigx or .rigj."));
    parser.addPositionalArgument(QStringLiteral("OUTPUT"),
                                 QStringLiteral("The file to write; .rigx writes XML, "
                                                ".rigj JSON."));
    parser.addOption(
        {QStringLiteral("compact"), QStringLiteral("Write without line breaks and indentation.")});
    parser.addOption({QStringLiteral("pretty"),
                      QStringLiteral("Write one element per line, indented (the default).")});
}

int ConvertCommand::run(const QCommandLineParser &parser)
{
    const QStringList paths = parser.positionalArguments();
    const QStringList options = parser.optionNames();
    const bool pretty = options.lastIndexOf(QLatin1String("compact")) <=
                        options.lastIndexOf(QLatin1String("pretty"));

    RigxData document;
    if (!cliOpenProject(&document, paths.at(0)))
        return CliDataError;
    ProjectSaveOptions saveOptions;
    saveOptions.prettifyXml = pretty;
    saveOptions.prettifyJson = pretty;
    if (!ProjectFile::save(&document, paths.at(1), saveOptions))
        return CliDataError;
    return CliSuccess;
}

} // namespace Morvane
