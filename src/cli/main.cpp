// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clicommand.h"
#include "convertcommand.h"
#include "infocommand.h"
#include "posecommand.h"
#include "valuescommand.h"

#include <QCoreApplication>

#include <cstdio>
#include <iterator>

using namespace Morvane;

namespace {

// One line per command; keep them in alphabetical order.
const CliCommand sCommands[] = {
    {"convert", ConvertCommand::Usage, ConvertCommand::Summary, &ConvertCommand::run},
    {"info", InfoCommand::Usage, InfoCommand::Summary, &InfoCommand::run},
    {"pose", PoseCommand::Usage, PoseCommand::Summary, &runPoseCommand},
    {"values", ValuesCommand::Usage, ValuesCommand::Summary, &runValuesCommand},
};

void printUsage(std::FILE *stream)
{
    std::fprintf(stream,
                 "Usage: morvane-cli <command> [arguments]\n"
                 "       morvane-cli --help | --version\n\nCommands:\n");
    for (const CliCommand &command : sCommands)
        std::fprintf(stream, "  %-52s %s\n", command.usage, command.summary);
}

} // namespace

int main(int argc, char **argv)
{
    // A core application: the tool never shows a window and must run without a display
    // (images load through QImage, which needs no GUI). A command that renders can switch
    // to QGuiApplication on the offscreen platform.
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Morvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MORVANE_VERSION_STRING));

    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    if (arguments.isEmpty()) {
        printUsage(stderr);
        return CliUsage;
    }
    const QString first = arguments.takeFirst();
    if (first == QLatin1String("--help") || first == QLatin1String("-h")) {
        printUsage(stdout);
        return CliSuccess;
    }
    if (first == QLatin1String("--version")) {
        std::printf("%s\n", MORVANE_VERSION_STRING);
        return CliSuccess;
    }
    for (const CliCommand &command : sCommands) {
        if (first == QLatin1String(command.name)) {
            if (arguments.contains(QLatin1String("--help"))) {
                std::printf("Usage: morvane-cli %s\n%s\n", command.usage, command.summary);
                return CliSuccess;
            }
            return command.run(arguments);
        }
    }
    std::fprintf(stderr, "morvane-cli: unknown command \"%s\"\n", qPrintable(first));
    printUsage(stderr);
    return CliUsage;
}
