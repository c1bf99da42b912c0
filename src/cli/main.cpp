// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clicommand.h"
#include "convertcommand.h"
#include "infocommand.h"
#include "packcommand.h"
#include "posecommand.h"
#include "rendercommand.h"
#include "valuescommand.h"

#include <QCommandLineParser>
#include <QApplication>
#include <QCoreApplication>

#include <cstdio>
#include <cstring>
#include <memory>

using namespace Morvane;

namespace {

// One line per command; keep them in alphabetical order.
const CliCommand sCommands[] = {
    {"convert", ConvertCommand::Arguments, ConvertCommand::Summary, &ConvertCommand::addOptions,
     &ConvertCommand::run},
    {"info", InfoCommand::Arguments, InfoCommand::Summary, &InfoCommand::addOptions,
     &InfoCommand::run},
    {"pack", PackCommand::Arguments, PackCommand::Summary, &PackCommand::addOptions,
     &PackCommand::run},
    {"pose", PoseCommand::Arguments, PoseCommand::Summary, &PoseCommand::addOptions,
     &PoseCommand::run},
    {"render", RenderCommand::Arguments, RenderCommand::Summary, &RenderCommand::addOptions,
     &RenderCommand::run, true},
    {"values", ValuesCommand::Arguments, ValuesCommand::Summary, &ValuesCommand::addOptions,
     &ValuesCommand::run},
};

// Written out rather than Qt's help option, which also brings --help-all for Qt's own options.
QCommandLineOption helpOption()
{
    return QCommandLineOption({QStringLiteral("h"), QStringLiteral("help")},
                              QStringLiteral("Show this help and exit."));
}

void print(std::FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
}

QString usageLine(const CliCommand &command)
{
    return QStringLiteral("Usage: morvane-cli %1 [options] %2\n")
        .arg(QLatin1String(command.name), QLatin1String(command.arguments));
}

int mainUsageError(const QString &message)
{
    print(stderr,
          QStringLiteral("morvane-cli: %1\nTry 'morvane-cli --help' for more information.\n")
              .arg(message));
    return CliUsage;
}

void printMainHelp()
{
    QString text =
        QStringLiteral("Usage: morvane-cli [--help | --version]\n"
                       "       morvane-cli COMMAND [options] ARGUMENTS\n\n"
                       "Works on Morvane projects (.rigx or .rigj) without a display.\n\n"
                       "Commands:\n");
    for (const CliCommand &command : sCommands)
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.name), -8)
                    .arg(QLatin1String(command.summary));
    text += QStringLiteral("\nOptions:\n"
                           "  -h, --help  Show this help and exit.\n"
                           "  --version   Show the version and exit.\n\n"
                           "'morvane-cli COMMAND --help' lists the options of a command.\n"
                           "Exit status: 0 success; 1 wrong usage; 2 a file cannot be read or\n"
                           "written, or the request names nothing in the project.\n");
    print(stdout, text);
}

int runCommand(const CliCommand &command, const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(command.summary));
    const QCommandLineOption help = helpOption();
    parser.addOption(help);
    command.addOptions(parser);
    // parse() takes the program name first.
    if (!parser.parse(QStringList{QStringLiteral("morvane-cli")} + arguments))
        return cliUsageError(command.name, parser.errorText());
    if (parser.isSet(help)) {
        // Qt starts its help with a usage line naming the executable alone.
        const QString text = parser.helpText();
        print(stdout, usageLine(command) + text.mid(text.indexOf(QLatin1Char('\n')) + 1));
        return CliSuccess;
    }
    // A command with a list of arguments ("PATH...") counts them itself.
    if (QLatin1String(command.arguments).contains(QLatin1String("...")))
        return command.run(parser);
    const QStringList wanted = QString::fromLatin1(command.arguments).split(QLatin1Char(' '));
    const QStringList given = parser.positionalArguments();
    if (given.size() < wanted.size())
        return cliUsageError(command.name, QStringLiteral("missing ") + wanted.at(given.size()));
    if (given.size() > wanted.size())
        return cliUsageError(
            command.name,
            QStringLiteral("unexpected argument \"%1\"").arg(given.at(wanted.size())));
    return command.run(parser);
}

// Whether the command named on the command line drives the editor's scene. Looked up
// before the application exists, because that decides which application to make.
bool commandNeedsWidgets(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-')
            continue;
        for (const CliCommand &command : sCommands) {
            if (std::strcmp(argv[i], command.name) == 0)
                return command.widgets;
        }
        return false;
    }
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    // A core application unless the command edits or renders through the editor's scene:
    // the tool never shows a window and must run without a display, so such a command
    // runs on the offscreen platform.
    std::unique_ptr<QCoreApplication> app;
    if (commandNeedsWidgets(argc, argv)) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QApplication>(argc, argv);
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    QCoreApplication::setApplicationName(QStringLiteral("Morvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(MORVANE_VERSION_STRING));

    // Options before the command belong to the tool; everything from the command on is the
    // command's.
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const QCommandLineOption help = helpOption();
    const QCommandLineOption version(QStringLiteral("version"),
                                     QStringLiteral("Show the version and exit."));
    parser.addOptions({help, version});
    if (!parser.parse(QCoreApplication::arguments()))
        return mainUsageError(parser.errorText());
    if (parser.isSet(help)) {
        printMainHelp();
        return CliSuccess;
    }
    if (parser.isSet(version)) {
        print(stdout, QStringLiteral(MORVANE_VERSION_STRING "\n"));
        return CliSuccess;
    }
    QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty())
        return mainUsageError(QStringLiteral("missing COMMAND"));
    const QString name = arguments.takeFirst();
    for (const CliCommand &command : sCommands) {
        if (name == QLatin1String(command.name))
            return runCommand(command, arguments);
    }
    return mainUsageError(QStringLiteral("unknown command \"%1\"").arg(name));
}
