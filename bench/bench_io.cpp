// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// Opens and saves synthetic projects in both forms, beside bare Qt passes over the same data:
// QXmlStreamReader reading every token of the file, QXmlStreamWriter writing the same tree,
// QJsonDocument parsing the JSON file.
//
//   Medium  3 animations x 200 timelines x 30 keys, about 5 MB of XML: a usual project.
//   Large   100 animations of the same kind, about 170 MB (MORVANE_BENCH_SCALE scales it).
//   Keys    one animation whose timelines hold many keys (1M keys in 16 timelines; 64k keys
//           in one timeline with a mainline key for each): loading must stay linear.
//
// Opens print MB/s in this process and, from a fresh process (what a user has who starts
// the editor and opens a project): cold_MB/s, peak_MB (how far the peak rose above what
// the process held before) and peak_x_file, and x_bare, how many times faster than the bare
// Qt pass over the same file in a fresh process the open is. Saves print MB/s and x_bare
// against the bare QXmlStreamWriter pass. Rates and ratios are taken from CPU time, which
// other work on a shared machine disturbs far less than wall time. The *WriterToNull cases
// run the writers into a device that discards the bytes, apart from the disk and the commit.
//
//   bench_io [--benchmark_filter=...]        MORVANE_BENCH_SCALE=0.1 for a smaller project
//   bench_io --generate FILE.rigx|FILE.rigj  writes the large project only, for profiling

#include "projectgenerator.h"

#include "io/jsonprojectwriter.h"
#include "io/projectfile.h"
#include "io/projectiohost.h"
#include "io/projectsink.h"
#include "io/projectwriter.h"
#include "io/xmlprojectwriter.h"
#include "model/rigxdata.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <time.h>

using namespace Morvane;

namespace {

struct Project
{
    QString xmlPath;
    QString jsonPath;
    double xmlMegabytes = 0;
    double jsonMegabytes = 0;
};

std::unique_ptr<QTemporaryDir> sDir;
double sScale = 1.0;
Project sMedium;
Project sLarge;
QString sMillionKeys;
QString sOneTimeline;

double statusMegabytes(const char *field)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string prefix = field;
    while (std::getline(status, line)) {
        if (line.rfind(prefix, 0) == 0)
            return std::stod(line.substr(prefix.size())) / 1024.0;
    }
    return 0.0;
}

// CPU time of this process so far, in milliseconds.
double cpuMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// What a child prints: the peak rise in MB, the wall and the CPU milliseconds of its work.
void printFigures(double peakMegabytes, const QElapsedTimer &timer, double cpuStart)
{
    std::printf("%f %f %f\n", peakMegabytes, double(timer.nsecsElapsed()) / 1e6,
                cpuMilliseconds() - cpuStart);
}

double fileMegabytes(const QString &path)
{
    return double(QFileInfo(path).size()) / (1024.0 * 1024.0);
}

// Opens `path` and prints how far the peak memory rose above what the process held before,
// and how long the open took.
int printPeakOpen(const QString &path)
{
    const double before = statusMegabytes("VmRSS:");
    const double cpuStart = cpuMilliseconds();
    QElapsedTimer timer;
    timer.start();
    RigxData document;
    ProjectIoHost host;
    const bool opened = ProjectFile::open(&document, path, &host);
    printFigures(statusMegabytes("VmHWM:") - before, timer, cpuStart);
    return opened ? 0 : 1;
}

// A bare QJsonDocument parse of `path`, timed.
int printBareJson(const QString &path)
{
    const double cpuStart = cpuMilliseconds();
    QElapsedTimer timer;
    timer.start();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    printFigures(0, timer, cpuStart);
    return document.isObject() ? 0 : 1;
}

// Reads every token of `path` with QXmlStreamReader, looking at every attribute.
qint64 bareXmlRead(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    QXmlStreamReader reader(&file);
    qint64 seen = 0;
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement) {
            const QXmlStreamAttributes attributes = reader.attributes();
            for (const QXmlStreamAttribute &attribute : attributes)
                seen += attribute.value().size();
        }
    }
    return reader.hasError() ? -1 : seen;
}

int printBareXml(const QString &path)
{
    const double cpuStart = cpuMilliseconds();
    QElapsedTimer timer;
    timer.start();
    const qint64 seen = bareXmlRead(path);
    printFigures(0, timer, cpuStart);
    return seen >= 0 ? 0 : 1;
}

struct ChildFigures
{
    double peakMegabytes = 0;
    double milliseconds = 0;
    double cpuMilliseconds = 0;
};

// Runs this program with `mode` on `path` in a fresh process: in this one, memory freed by
// earlier runs would be reused and hide the peak. The median of three runs.
ChildFigures childFigures(const char *mode, const QString &path)
{
    std::vector<ChildFigures> runs;
    for (int i = 0; i < 3; ++i) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(mode), path});
        if (!process.waitForFinished(-1) || process.exitCode() != 0)
            return {};
        const QList<QByteArray> fields = process.readAllStandardOutput().trimmed().split(' ');
        if (fields.size() != 3)
            return {};
        runs.push_back({fields.at(0).toDouble(), fields.at(1).toDouble(), fields.at(2).toDouble()});
    }
    std::sort(runs.begin(), runs.end(), [](const ChildFigures &a, const ChildFigures &b) {
        return a.cpuMilliseconds < b.cpuMilliseconds;
    });
    return runs[1];
}

// The same tree through Qt's writer, to compare against our own.
class QtWriterSink : public ProjectSink
{
public:
    explicit QtWriterSink(QXmlStreamWriter &writer)
        : mWriter(writer)
    {}
    bool isJson() const override { return false; }
    void startElement(std::string_view name, bool) override
    {
        mWriter.writeStartElement(QString::fromLatin1(name.data(), qsizetype(name.size())));
    }
    void endElement() override { mWriter.writeEndElement(); }
    void attribute(std::string_view name, QStringView text) override
    {
        mWriter.writeAttribute(QString::fromLatin1(name.data(), qsizetype(name.size())),
                               text.toString());
    }
    void integerAttribute(std::string_view name, std::int64_t value) override
    {
        mWriter.writeAttribute(QString::fromLatin1(name.data(), qsizetype(name.size())),
                               QString::number(value));
    }
    void numberAttribute(std::string_view name, double value, Precision precision,
                         NumberMapping mapping) override
    {
        mWriter.writeAttribute(QString::fromLatin1(name.data(), qsizetype(name.size())),
                               QString::number(NumberFormat::toFile(value, mapping),
                                               precision == Precision::Real6 ? 'f' : 'g', 6));
    }

private:
    QXmlStreamWriter &mWriter;
};

void bareXmlWrite(RigxData &document, const QString &out)
{
    QFile file(out);
    file.open(QIODevice::WriteOnly);
    QXmlStreamWriter writer(&file);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(4);
    writer.writeStartDocument();
    QtWriterSink sink(writer);
    ProjectSaveOptions options;
    ProjectWriter(document, sink, options).write();
    writer.writeEndDocument();
}

// The fastest of `runs` runs of `function`, in CPU milliseconds.
template <typename F>
double fastestMilliseconds(int runs, F &&function)
{
    double best = 0;
    for (int i = 0; i < runs; ++i) {
        const double start = cpuMilliseconds();
        function();
        const double ms = cpuMilliseconds() - start;
        best = i == 0 ? ms : std::min(best, ms);
    }
    return best;
}

const Project &project(bool large)
{
    return large ? sLarge : sMedium;
}

void BM_Open(benchmark::State &state, bool large, bool json)
{
    const QString &path = json ? project(large).jsonPath : project(large).xmlPath;
    const double megabytes = json ? project(large).jsonMegabytes : project(large).xmlMegabytes;
    for (auto _ : state) {
        RigxData document;
        ProjectIoHost host;
        benchmark::DoNotOptimize(ProjectFile::open(&document, path, &host));
    }
    const ChildFigures cold = childFigures("--peak-open", path);
    const ChildFigures bare = childFigures(json ? "--bare-json" : "--bare-xml", path);
    state.counters["MB/s"] = benchmark::Counter(megabytes * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
    state.counters["file_MB"] = megabytes;
    state.counters["peak_MB"] = cold.peakMegabytes;
    state.counters["peak_x_file"] = cold.peakMegabytes / megabytes;
    state.counters["cold_MB/s"] = cold.cpuMilliseconds > 0
                                      ? megabytes * 1000.0 / cold.cpuMilliseconds
                                      : 0;
    state.counters["cold_wall_MB/s"] = cold.milliseconds > 0
                                           ? megabytes * 1000.0 / cold.milliseconds
                                           : 0;
    state.counters["x_bare"] = cold.cpuMilliseconds > 0
                                   ? bare.cpuMilliseconds / cold.cpuMilliseconds
                                   : 0;
}

void BM_BareQXmlStreamReader(benchmark::State &state, bool large)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(bareXmlRead(project(large).xmlPath));
    state.counters["MB/s"] = benchmark::Counter(project(large).xmlMegabytes
                                                    * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

void BM_Save(benchmark::State &state, bool large, bool json)
{
    RigxData document;
    ProjectIoHost host;
    ProjectFile::open(&document, project(large).xmlPath, &host);
    const QString out = sDir->filePath(json ? QStringLiteral("saved.rigj")
                                            : QStringLiteral("saved.rigx"));
    double fastest = 0;
    for (auto _ : state) {
        const double start = cpuMilliseconds();
        benchmark::DoNotOptimize(ProjectFile::save(&document, out, {}, &host));
        const double ms = cpuMilliseconds() - start;
        fastest = fastest == 0 ? ms : std::min(fastest, ms);
    }
    state.counters["MB/s"] = benchmark::Counter(fileMegabytes(out) * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
    if (!json) {
        const QString bareOut = sDir->filePath(QStringLiteral("qt.rigx"));
        const double bare = fastestMilliseconds(2, [&] { bareXmlWrite(document, bareOut); });
        state.counters["x_bare"] = fastest > 0 ? bare / fastest : 0;
    }
}

void BM_BareQXmlStreamWriter(benchmark::State &state, bool large)
{
    RigxData document;
    ProjectIoHost host;
    ProjectFile::open(&document, project(large).xmlPath, &host);
    const QString out = sDir->filePath(QStringLiteral("qt.rigx"));
    for (auto _ : state)
        bareXmlWrite(document, out);
    state.counters["MB/s"] = benchmark::Counter(fileMegabytes(out) * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

// Discards what it is given: the writers alone, without the file system and the commit.
class NullDevice : public QIODevice
{
public:
    NullDevice() { open(QIODevice::WriteOnly); }
    qint64 written = 0;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override
    {
        written += size;
        return size;
    }
};

void BM_WriterToNull(benchmark::State &state, bool json)
{
    RigxData document;
    ProjectIoHost host;
    ProjectFile::open(&document, sLarge.xmlPath, &host);
    double megabytes = 0.0;
    for (auto _ : state) {
        NullDevice device;
        const ProjectSaveOptions options;
        benchmark::DoNotOptimize(json ? JsonProjectWriter::write(document, &device, options)
                                      : XmlProjectWriter::write(document, &device, options));
        megabytes = double(device.written) / (1024.0 * 1024.0);
    }
    state.counters["MB/s"] = benchmark::Counter(megabytes * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

void BM_BareQJsonDocument(benchmark::State &state, bool large)
{
    for (auto _ : state) {
        QFile file(project(large).jsonPath);
        file.open(QIODevice::ReadOnly);
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
        benchmark::DoNotOptimize(document.isObject());
    }
    state.counters["MB/s"] = benchmark::Counter(project(large).jsonMegabytes
                                                    * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

// Files whose timelines hold many keys: the time should follow the size, as for any file.
void BM_OpenManyKeys(benchmark::State &state, bool million)
{
    const QString &path = million ? sMillionKeys : sOneTimeline;
    bool opened = false;
    for (auto _ : state) {
        RigxData document;
        ProjectIoHost host;
        opened = ProjectFile::open(&document, path, &host);
    }
    if (!opened)
        state.SkipWithError("the file did not open");
    const double megabytes = fileMegabytes(path);
    state.counters["file_MB"] = megabytes;
    state.counters["MB/s"] = benchmark::Counter(megabytes * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

bool writeFile(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

bool makeProject(Project *project, const QString &name, int animations)
{
    project->xmlPath = sDir->filePath(name + QStringLiteral(".rigx"));
    project->jsonPath = sDir->filePath(name + QStringLiteral(".rigj"));
    RigxData document;
    document.setFilePath(project->xmlPath);
    buildProject(document, {animations, 200, 30, false});
    ProjectIoHost host;
    if (!ProjectFile::save(&document, project->xmlPath, {}, &host)
        || !ProjectFile::save(&document, project->jsonPath, {}, &host))
        return false;
    project->xmlMegabytes = fileMegabytes(project->xmlPath);
    project->jsonMegabytes = fileMegabytes(project->jsonPath);
    std::printf("%s project: %.1f MB XML, %.1f MB JSON\n", qPrintable(name),
                project->xmlMegabytes, project->jsonMegabytes);
    return true;
}

constexpr benchmark::TimeUnit Ms = benchmark::kMillisecond;

} // namespace

BENCHMARK_CAPTURE(BM_Open, MediumXml, false, false)->Unit(Ms)->Iterations(5);
BENCHMARK_CAPTURE(BM_BareQXmlStreamReader, Medium, false)->Unit(Ms)->Iterations(5);
BENCHMARK_CAPTURE(BM_Save, MediumXml, false, false)->Unit(Ms)->Iterations(5);
BENCHMARK_CAPTURE(BM_BareQXmlStreamWriter, Medium, false)->Unit(Ms)->Iterations(5);
BENCHMARK_CAPTURE(BM_Open, MediumJson, false, true)->Unit(Ms)->Iterations(5);
BENCHMARK_CAPTURE(BM_Save, MediumJson, false, true)->Unit(Ms)->Iterations(5);
BENCHMARK_CAPTURE(BM_Open, LargeXml, true, false)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_BareQXmlStreamReader, Large, true)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_Save, LargeXml, true, false)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_BareQXmlStreamWriter, Large, true)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_WriterToNull, Xml, false)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_Open, LargeJson, true, true)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_BareQJsonDocument, Large, true)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_Save, LargeJson, true, true)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_WriterToNull, Json, true)->Unit(Ms)->Iterations(2);
BENCHMARK_CAPTURE(BM_OpenManyKeys, OneTimeline64k, false)->Unit(Ms)->Iterations(1);
BENCHMARK_CAPTURE(BM_OpenManyKeys, Million, true)->Unit(Ms)->Iterations(1);

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && std::string(argv[1]) == "--peak-open")
        return printPeakOpen(QString::fromLocal8Bit(argv[2]));
    if (argc == 3 && std::string(argv[1]) == "--bare-json")
        return printBareJson(QString::fromLocal8Bit(argv[2]));
    if (argc == 3 && std::string(argv[1]) == "--bare-xml")
        return printBareXml(QString::fromLocal8Bit(argv[2]));
    bool ok = false;
    sScale = qEnvironmentVariable("MORVANE_BENCH_SCALE").toDouble(&ok);
    if (!ok || sScale <= 0)
        sScale = 1.0;
    const int largeAnimations = qMax(1, int(std::lround(100 * sScale)));
    if (argc == 3 && std::string(argv[1]) == "--generate") {
        const QString path = QFileInfo(QString::fromLocal8Bit(argv[2])).absoluteFilePath();
        RigxData document;
        document.setFilePath(path);
        buildProject(document, {largeAnimations, 200, 30, false});
        ProjectIoHost host;
        return ProjectFile::save(&document, path, {}, &host) ? 0 : 1;
    }
    benchmark::Initialize(&argc, argv);
    sDir = std::make_unique<QTemporaryDir>();
    // Only what the chosen cases need is made: the large project takes a while.
    const QString filter = QString::fromStdString(benchmark::GetBenchmarkFilter());
    const QStringList names = {QStringLiteral("Medium"), QStringLiteral("Large"),
                               QStringLiteral("ToNull"), QStringLiteral("Million"),
                               QStringLiteral("OneTimeline")};
    const bool namesOne = std::any_of(names.begin(), names.end(), [&](const QString &name) {
        return filter.contains(name);
    });
    const auto wanted = [&](const char *name) {
        return !namesOne || filter.contains(QLatin1String(name));
    };
    if (wanted("Medium") && !makeProject(&sMedium, QStringLiteral("medium"), 3))
        return 1;
    if ((wanted("Large") || wanted("ToNull")) && !makeProject(&sLarge, QStringLiteral("large"),
                                                              largeAnimations))
        return 1;
    sMillionKeys = sDir->filePath(QStringLiteral("million.rigx"));
    sOneTimeline = sDir->filePath(QStringLiteral("onetimeline.rigx"));
    if ((wanted("Million") && !writeFile(sMillionKeys, manyKeysXml(16, 65536, false)))
        || (wanted("OneTimeline") && !writeFile(sOneTimeline, manyKeysXml(1, 65536, true))))
        return 1;

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
