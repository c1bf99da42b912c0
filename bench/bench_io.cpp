// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers

// Opens and saves a large synthetic project (about 100 animations x 200 timelines x 30 keys,
// some 170 MB of XML) in both forms, beside bare Qt passes over the same data:
// QXmlStreamReader over the file, QXmlStreamWriter writing the same tree, QJsonDocument
// parsing the JSON file. Prints MB/s and the peak memory of each open relative to the file;
// for opens also the figures of a fresh process (cold_MB/s, and for JSON cold_x_bare, the
// open's time over a bare QJsonDocument parse in a fresh process). The *WriterToNull cases
// run the writers into a device that discards the bytes, apart from the disk and the commit.
//
//   bench_io [--benchmark_filter=...]        MORVANE_BENCH_SCALE=0.1 for a smaller project
//   bench_io --generate FILE.rigx|FILE.rigj  writes the project only, for profiling

#include "io/jsonprojectwriter.h"
#include "io/projectfile.h"
#include "io/projectiohost.h"
#include "io/projectsink.h"
#include "io/projectwriter.h"
#include "io/xmlprojectwriter.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
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

using namespace Morvane;

namespace {

struct Fixture
{
    std::unique_ptr<QTemporaryDir> dir;
    QString xmlPath;
    QString jsonPath;
    double xmlMegabytes = 0;
    double jsonMegabytes = 0;
};

Fixture sFixture;


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

// Opens `path` and prints how far the peak memory rose above what the process held before,
// and how long the open took.
int printPeakOpen(const QString &path)
{
    const double before = statusMegabytes("VmRSS:");
    QElapsedTimer timer;
    timer.start();
    RigxData document;
    ProjectIoHost host;
    const bool opened = ProjectFile::open(&document, path, &host);
    const double milliseconds = double(timer.nsecsElapsed()) / 1e6;
    std::printf("%f %f\n", statusMegabytes("VmHWM:") - before, milliseconds);
    return opened ? 0 : 1;
}

// A bare QJsonDocument parse of `path`, timed.
int printBareJson(const QString &path)
{
    QElapsedTimer timer;
    timer.start();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    std::printf("0 %f\n", double(timer.nsecsElapsed()) / 1e6);
    return document.isObject() ? 0 : 1;
}

struct ChildFigures
{
    double peakMegabytes = 0;
    double milliseconds = 0;
};

// Runs this program with `mode` on `path` in a fresh process: in this one, memory freed by
// earlier runs would be reused and hide the peak. The same holds for time: a fresh
// process is what a user has who starts the editor and opens a project. The median of
// three runs.
ChildFigures childFigures(const char *mode, const QString &path)
{
    std::vector<ChildFigures> runs;
    for (int i = 0; i < 3; ++i) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(mode), path});
        if (!process.waitForFinished(-1) || process.exitCode() != 0)
            return {};
        const QList<QByteArray> fields = process.readAllStandardOutput().trimmed().split(' ');
        if (fields.size() != 2)
            return {};
        runs.push_back({fields.at(0).toDouble(), fields.at(1).toDouble()});
    }
    std::sort(runs.begin(), runs.end(), [](const ChildFigures &a, const ChildFigures &b) {
        return a.milliseconds < b.milliseconds;
    });
    return runs[1];
}

double fileMegabytes(const QString &path)
{
    return double(QFileInfo(path).size()) / (1024.0 * 1024.0);
}

void buildLargeProject(RigxData &document, double scale)
{
    const int animations = qMax(1, int(std::lround(100 * scale)));
    const int timelines = 200;
    const int keys = 30;
    auto *folder = new Folder(QStringLiteral("parts"));
    document.appendFolder(folder);
    QList<File *> files;
    for (int i = 0; i < 64; ++i) {
        auto *file = new File(QStringLiteral("parts/part_%1.png").arg(i), 0.5, 0.5, File::Image,
                              document.projectDirectory());
        file->setSize(32 + i, 48 + i);
        folder->appendFile(file);
        files.append(file);
    }
    auto *entity = new Entity(QStringLiteral("giant"));
    document.appendEntity(entity);
    QList<Object *> objects;
    for (int o = 0; o < timelines; ++o) {
        const bool bone = o % 5 == 0;
        auto *object = new Object(QStringLiteral("object_%1").arg(o),
                                  bone ? Object::Bone : Object::Sprite);
        entity->appendObject(object, -1, false);
        objects.append(object);
    }
    for (int a = 0; a < animations; ++a) {
        auto *animation = new Animation(QStringLiteral("animation_%1").arg(a), false);
        animation->setLength(keys * 40);
        entity->appendAnimation(animation);
        for (int t = 0; t < timelines; ++t) {
            auto *timeline = new Timeline(objects.at(t), objects.at(t)->name());
            animation->appendTimeline(timeline, -1, true);
            for (int k = 0; k < keys; ++k) {
                DisplayInfo info;
                info.x = std::sin(a + t * 0.1 + k * 0.37) * 300.0;
                info.y = std::cos(a * 0.3 + t + k * 0.11) * 200.0;
                info.angle = std::fmod(a * 7.0 + t * 13.0 + k * 17.3, 360.0);
                info.xScale = 1.0 + (k % 3) * 0.25;
                info.alpha = k % 4 == 0 ? 0.5 : 1.0;
                info.setPivotX(0.5);
                info.setPivotY(0.5);
                FileInfo file;
                if (!objects.at(t)->isBone())
                    file = FileInfo(files.at((t + k) % files.size())->address());
                auto *key = new TimelineKey(file, info);
                key->setCachedTime(k * 40);
                timeline->appendTimelineKey(key, false, false);
            }
        }
        animation->appendMainKeysForOrphanTimeKeys(false);
    }
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

void reportOpen(benchmark::State &state, const QString &path, double megabytes)
{
    const ChildFigures cold = childFigures("--peak-open", path);
    state.counters["MB/s"] = benchmark::Counter(megabytes * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
    state.counters["file_MB"] = megabytes;
    state.counters["peak_MB"] = cold.peakMegabytes;
    state.counters["peak_x_file"] = cold.peakMegabytes / megabytes;
    state.counters["cold_MB/s"] = cold.milliseconds > 0 ? megabytes * 1000.0 / cold.milliseconds : 0;
    if (ProjectFile::formFromPath(path) == ProjectFile::Form::Json) {
        const ChildFigures bare = childFigures("--bare-json", path);
        state.counters["cold_x_bare"] = bare.milliseconds > 0 ? cold.milliseconds / bare.milliseconds : 0;
    }
}

void BM_Open(benchmark::State &state, bool json)
{
    const QString &path = json ? sFixture.jsonPath : sFixture.xmlPath;
    for (auto _ : state) {
        RigxData document;
        ProjectIoHost host;
        benchmark::DoNotOptimize(ProjectFile::open(&document, path, &host));
    }
    reportOpen(state, path, json ? sFixture.jsonMegabytes : sFixture.xmlMegabytes);
}

void BM_SaveXml(benchmark::State &state)
{
    RigxData document;
    ProjectIoHost host;
    ProjectFile::open(&document, sFixture.xmlPath, &host);
    const QString out = sFixture.dir->filePath(QStringLiteral("saved.rigx"));
    for (auto _ : state)
        benchmark::DoNotOptimize(ProjectFile::save(&document, out, {}, &host));
    state.counters["MB/s"] = benchmark::Counter(fileMegabytes(out) * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

void BM_SaveJson(benchmark::State &state)
{
    RigxData document;
    ProjectIoHost host;
    ProjectFile::open(&document, sFixture.xmlPath, &host);
    const QString out = sFixture.dir->filePath(QStringLiteral("saved.rigj"));
    for (auto _ : state)
        benchmark::DoNotOptimize(ProjectFile::save(&document, out, {}, &host));
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

template<bool Json>
void BM_WriterToNull(benchmark::State &state)
{
    RigxData document;
    ProjectIoHost host;
    ProjectFile::open(&document, sFixture.xmlPath, &host);
    double megabytes = 0.0;
    for (auto _ : state) {
        NullDevice device;
        const ProjectSaveOptions options;
        benchmark::DoNotOptimize(Json ? JsonProjectWriter::write(document, &device, options)
                                      : XmlProjectWriter::write(document, &device, options));
        megabytes = double(device.written) / (1024.0 * 1024.0);
    }
    state.counters["MB/s"] = benchmark::Counter(megabytes * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

void BM_XmlWriterToNull(benchmark::State &state)
{
    BM_WriterToNull<false>(state);
}

void BM_JsonWriterToNull(benchmark::State &state)
{
    BM_WriterToNull<true>(state);
}

void BM_BareQXmlStreamReader(benchmark::State &state)
{
    for (auto _ : state) {
        QFile file(sFixture.xmlPath);
        file.open(QIODevice::ReadOnly);
        QXmlStreamReader reader(&file);
        qint64 attributes = 0;
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement)
                attributes += reader.attributes().size();
        }
        benchmark::DoNotOptimize(attributes);
    }
    state.counters["MB/s"] = benchmark::Counter(sFixture.xmlMegabytes * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

void BM_BareQXmlStreamWriter(benchmark::State &state)
{
    RigxData document;
    ProjectIoHost host;
    ProjectFile::open(&document, sFixture.xmlPath, &host);
    const QString out = sFixture.dir->filePath(QStringLiteral("qt.rigx"));
    for (auto _ : state) {
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
    state.counters["MB/s"] = benchmark::Counter(fileMegabytes(out) * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

void BM_BareQJsonDocument(benchmark::State &state)
{
    for (auto _ : state) {
        QFile file(sFixture.jsonPath);
        file.open(QIODevice::ReadOnly);
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
        benchmark::DoNotOptimize(document.isObject());
    }
    state.counters["MB/s"] = benchmark::Counter(sFixture.jsonMegabytes * double(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK_CAPTURE(BM_Open, Xml, false)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_BareQXmlStreamReader)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_SaveXml)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_BareQXmlStreamWriter)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_XmlWriterToNull)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK_CAPTURE(BM_Open, Json, true)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_BareQJsonDocument)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_SaveJson)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();
BENCHMARK(BM_JsonWriterToNull)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && std::string(argv[1]) == "--peak-open")
        return printPeakOpen(QString::fromLocal8Bit(argv[2]));
    if (argc == 3 && std::string(argv[1]) == "--bare-json")
        return printBareJson(QString::fromLocal8Bit(argv[2]));
    bool ok = false;
    double scale = qEnvironmentVariable("MORVANE_BENCH_SCALE").toDouble(&ok);
    if (!ok || scale <= 0)
        scale = 1.0;
    if (argc == 3 && std::string(argv[1]) == "--generate") {
        const QString path = QFileInfo(QString::fromLocal8Bit(argv[2])).absoluteFilePath();
        RigxData document;
        document.setFilePath(path);
        buildLargeProject(document, scale);
        ProjectIoHost host;
        return ProjectFile::save(&document, path, {}, &host) ? 0 : 1;
    }
    benchmark::Initialize(&argc, argv);
    sFixture.dir = std::make_unique<QTemporaryDir>();
    sFixture.xmlPath = sFixture.dir->filePath(QStringLiteral("large.rigx"));
    sFixture.jsonPath = sFixture.dir->filePath(QStringLiteral("large.rigj"));
    {
        RigxData document;
        document.setFilePath(sFixture.xmlPath);
        buildLargeProject(document, scale);
        ProjectIoHost host;
        if (!ProjectFile::save(&document, sFixture.xmlPath, {}, &host)
            || !ProjectFile::save(&document, sFixture.jsonPath, {}, &host))
            return 1;
    }
    sFixture.xmlMegabytes = fileMegabytes(sFixture.xmlPath);
    sFixture.jsonMegabytes = fileMegabytes(sFixture.jsonPath);
    std::printf("synthetic project: %.1f MB XML, %.1f MB JSON\n", sFixture.xmlMegabytes,
                sFixture.jsonMegabytes);

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
