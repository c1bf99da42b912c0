// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "convertcommand.h"

#include "clicommand.h"
#include "io/jsonwriter.h"
#include "io/projectconversion.h"
#include "io/projectfile.h"
#include "model/rigxdata.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

namespace Morvane {

namespace {

struct BatchItem
{
    QString file;
    QString out;
    QString error;       // empty when converted
    QByteArray messages; // the conversion's warnings, passed on to stderr
    bool done = false;
};

// Converts one file in a process of its own, so that files convert side by side without
// sharing any state, and a file that takes the converter down takes only its own run.
void convertInChild(BatchItem *item, bool pretty)
{
    QProcess child;
    child.setProgram(QCoreApplication::applicationFilePath());
    child.setArguments({QStringLiteral("convert"),
                        pretty ? QStringLiteral("--pretty") : QStringLiteral("--compact"),
                        QStringLiteral("--"), item->file, item->out});
    child.setStandardInputFile(QProcess::nullDevice());
    child.start();
    if (!child.waitForStarted(-1)) {
        item->error = QStringLiteral("the converter did not start: ") + child.errorString();
        return;
    }
    child.waitForFinished(-1);
    const QByteArray err = child.readAllStandardError();
    for (const QByteArray &line : err.split('\n')) {
        if (line.startsWith("Error: "))
            item->error = QString::fromLocal8Bit(line.mid(7));
        else if (!line.isEmpty())
            item->messages += line + '\n';
    }
    if (child.exitStatus() != QProcess::NormalExit)
        item->error = QStringLiteral("the converter stopped unexpectedly");
    else if (child.exitCode() != CliSuccess && item->error.isEmpty())
        item->error = QStringLiteral("the converter failed with status %1").arg(child.exitCode());
}

void printLine(const BatchItem &item)
{
    std::string out;
    JsonWriter w(&out, false);
    w.beginObject();
    w.key("file");
    w.value(QStringView(item.file));
    w.key("out");
    if (item.out.isEmpty())
        w.valueNull();
    else
        w.value(QStringView(item.out));
    w.key("ok");
    w.value(item.error.isEmpty());
    w.key("error");
    if (item.error.isEmpty())
        w.valueNull();
    else
        w.value(QStringView(item.error));
    w.endObject();
    out += '\n';
    std::fwrite(item.messages.constData(), 1, size_t(item.messages.size()), stderr);
    std::fwrite(out.data(), 1, out.size(), stdout);
    std::fflush(stdout);
}

int runBatch(const QCommandLineParser &parser, bool pretty)
{
    const QString target = parser.value(QStringLiteral("to"));
    if (target != QLatin1String("rigj") && target != QLatin1String("rigx"))
        return cliUsageError("convert",
                             QStringLiteral("--to takes rigj or rigx, not \"%1\"").arg(target));
    const QStringList paths = parser.positionalArguments();
    if (paths.isEmpty())
        return cliUsageError("convert", QStringLiteral("missing PATH"));

    std::vector<BatchItem> items;
    for (const QString &file : ConvertCommand::batchFiles(paths, target)) {
        BatchItem item{file, ConvertCommand::targetPath(file, target), {}, {}, false};
        item.error = ProjectConversion::sourceProblem(file, target);
        // Only a file that is there keeps its would-be output in the line.
        if (!item.error.isEmpty() && QFileInfo::exists(file))
            item.out.clear();
        item.done = !item.error.isEmpty();
        items.push_back(item);
    }

    // Files convert on every core at once; lines still come out in the order of the files.
    std::mutex mutex;
    std::condition_variable finished;
    std::atomic<size_t> next{0};
    const int workers =
        int(std::min<size_t>(items.size(), size_t(qMax(1, QThread::idealThreadCount()))));
    std::vector<std::thread> threads;
    for (int i = 0; i < workers; ++i) {
        threads.emplace_back([&] {
            for (size_t n = next++; n < items.size(); n = next++) {
                if (!items[n].done)
                    convertInChild(&items[n], pretty);
                const std::lock_guard<std::mutex> lock(mutex);
                items[n].done = true;
                finished.notify_all();
            }
        });
    }
    bool failed = false;
    for (const BatchItem &item : items) {
        {
            std::unique_lock<std::mutex> lock(mutex);
            finished.wait(lock, [&] { return item.done; });
        }
        printLine(item);
        failed = failed || !item.error.isEmpty();
    }
    for (std::thread &thread : threads)
        thread.join();
    return failed ? CliDataError : CliSuccess;
}

} // namespace

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
    parser.addOption({QStringLiteral("to"),
                      QStringLiteral("Convert every PATH to this form, beside it: each file "
                                     "given, and every file of the other form under each "
                                     "directory given. Prints one JSON line per file."),
                      QStringLiteral("rigj|rigx")});
}

int ConvertCommand::run(const QCommandLineParser &parser)
{
    const QStringList paths = parser.positionalArguments();
    const QStringList options = parser.optionNames();
    const bool pretty = options.lastIndexOf(QLatin1String("compact")) <=
                        options.lastIndexOf(QLatin1String("pretty"));
    if (parser.isSet(QStringLiteral("to")))
        return runBatch(parser, pretty);

    if (paths.size() < 2)
        return cliUsageError(
            "convert", QStringLiteral("missing ") +
                           (paths.isEmpty() ? QStringLiteral("INPUT") : QStringLiteral("OUTPUT")));
    if (paths.size() > 2)
        return cliUsageError("convert",
                             QStringLiteral("unexpected argument \"%1\"").arg(paths.at(2)));
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

QStringList ConvertCommand::batchFiles(const QStringList &paths, const QString &targetSuffix)
{
    return ProjectConversion::batchFiles(paths, targetSuffix);
}

QString ConvertCommand::targetPath(const QString &file, const QString &targetSuffix)
{
    return ProjectConversion::targetPath(file, targetSuffix);
}

} // namespace Morvane
