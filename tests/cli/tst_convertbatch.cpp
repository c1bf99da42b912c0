// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clirunner.h"
#include "testfiles.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using Morvane::Testing::CliRun;
using Morvane::Testing::readAll;
using Morvane::Testing::runCli;
using Morvane::Testing::writeFile;

namespace {

QList<QJsonObject> lines(const QByteArray &out)
{
    QList<QJsonObject> result;
    for (const QByteArray &line : out.split('\n')) {
        if (!line.isEmpty())
            result.append(QJsonDocument::fromJson(line).object());
    }
    return result;
}

} // namespace

class TestConvertBatch : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void tree();
    void roundTrip();
    void singleFiles_data();
    void singleFiles();

private:
    QString path(const QString &name) const { return mDir->filePath(name); }
    QByteArray mProject;
    std::unique_ptr<QTemporaryDir> mDir;
};

void TestConvertBatch::init()
{
    mDir = std::make_unique<QTemporaryDir>();
    QVERIFY(mDir->isValid());
    mProject = readAll(QStringLiteral(MORVANE_TEST_DATA_DIR "/cli/pose.rigx"));
    QVERIFY(!mProject.isEmpty());
}

void TestConvertBatch::tree()
{
    QDir root(mDir->path());
    QVERIFY(root.mkpath(QStringLiteral("tree/sub/deep")));
    QVERIFY(writeFile(path(QStringLiteral("tree/a.rigx")), mProject));
    QVERIFY(writeFile(path(QStringLiteral("tree/sub/b.rigx")), "<morvane_data><entity"));
    QVERIFY(writeFile(path(QStringLiteral("tree/sub/deep/c.rigx")), mProject));
    QVERIFY(writeFile(path(QStringLiteral("tree/sub/e.rigx")), mProject));
    // e's target cannot be written: a directory stands in its place.
    QVERIFY(root.mkpath(QStringLiteral("tree/sub/e.rigj")));
    // Other suffixes are left alone, the target form included.
    QVERIFY(writeFile(path(QStringLiteral("tree/notes.txt")), "rigx"));
    QVERIFY(writeFile(path(QStringLiteral("tree/sub/d.rigj")), "{not even json"));
    QVERIFY(writeFile(path(QStringLiteral("tree/rigx")), "no suffix"));

    const CliRun run = runCli({QStringLiteral("convert"), QStringLiteral("--to"),
                               QStringLiteral("rigj"), path(QStringLiteral("tree"))});
    QCOMPARE(run.exitCode, 2);
    const QList<QJsonObject> got = lines(run.out);
    const QStringList files{QStringLiteral("tree/a.rigx"), QStringLiteral("tree/sub/b.rigx"),
                            QStringLiteral("tree/sub/deep/c.rigx"),
                            QStringLiteral("tree/sub/e.rigx")};
    const QList<bool> ok{true, false, true, false};
    QCOMPARE(got.size(), files.size());
    for (int i = 0; i < files.size(); ++i) {
        const QJsonObject &line = got.at(i);
        QCOMPARE(QDir::cleanPath(line.value(QStringLiteral("file")).toString()), path(files.at(i)));
        QCOMPARE(
            QDir::cleanPath(line.value(QStringLiteral("out")).toString()),
            path(QString(files.at(i)).replace(QLatin1String(".rigx"), QLatin1String(".rigj"))));
        QCOMPARE(line.value(QStringLiteral("ok")).toBool(), ok.at(i));
        QCOMPARE(line.value(QStringLiteral("error")).isNull(), ok.at(i));
        QVERIFY(ok.at(i) || !line.value(QStringLiteral("error")).toString().isEmpty());
    }

    // Each written file is what the two-argument form writes.
    QVERIFY(writeFile(path(QStringLiteral("single.rigx")), mProject));
    QCOMPARE(runCli({QStringLiteral("convert"), path(QStringLiteral("single.rigx")),
                     path(QStringLiteral("single.rigj"))})
                 .exitCode,
             0);
    const QByteArray expected = readAll(path(QStringLiteral("single.rigj")));
    QVERIFY(!expected.isEmpty());
    QCOMPARE(readAll(path(QStringLiteral("tree/a.rigj"))), expected);
    QCOMPARE(readAll(path(QStringLiteral("tree/sub/deep/c.rigj"))), expected);
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("tree/sub/b.rigj"))));
    QVERIFY(QFileInfo(path(QStringLiteral("tree/sub/e.rigj"))).isDir());
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("tree/notes.rigj"))));
    QCOMPARE(readAll(path(QStringLiteral("tree/sub/d.rigj"))), QByteArray("{not even json"));
}

void TestConvertBatch::roundTrip()
{
    // The fixture is our own writer's output: there and back gives its bytes again.
    QVERIFY(QDir(mDir->path()).mkpath(QStringLiteral("x")));
    QVERIFY(writeFile(path(QStringLiteral("x/p.rigx")), mProject));
    QCOMPARE(
        runCli({QStringLiteral("convert"), QStringLiteral("--to=rigj"), path(QStringLiteral("x"))})
            .exitCode,
        0);
    QVERIFY(QFile::remove(path(QStringLiteral("x/p.rigx"))));
    const CliRun back = runCli({QStringLiteral("convert"), QStringLiteral("--to"),
                                QStringLiteral("rigx"), path(QStringLiteral("x/p.rigj"))});
    QCOMPARE(back.exitCode, 0);
    QCOMPARE(lines(back.out).size(), 1);
    QCOMPARE(readAll(path(QStringLiteral("x/p.rigx"))), mProject);
}

void TestConvertBatch::singleFiles_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    // One entry per expected line: whether it converted.
    QTest::addColumn<QList<bool>>("ok");

    QTest::newRow("one good file")
        << QStringList{"--to", "rigj", "@good.rigx"} << 0 << QList<bool>{true};
    QTest::newRow("good, missing, good")
        << QStringList{"--to", "rigj", "@good.rigx", "@none.rigx", "@other.rigx"} << 2
        << QList<bool>{true, false, true};
    QTest::newRow("a file of another suffix")
        << QStringList{"--to", "rigj", "@notes.txt"} << 2 << QList<bool>{false};
    QTest::newRow("a file already of the target form")
        << QStringList{"--to", "rigx", "@good.rigx"} << 2 << QList<bool>{false};
    QTest::newRow("a FIFO named like a project, then a good file")
        << QStringList{"--to", "rigj", "@fifo.rigx", "@good.rigx"} << 2 << QList<bool>{false, true};
    QTest::newRow("a directory without projects")
        << QStringList{"--to", "rigj", "@empty"} << 0 << QList<bool>{};
    QTest::newRow("options after the files, compact")
        << QStringList{"@good.rigx", "--compact", "--to", "rigj"} << 0 << QList<bool>{true};
    QTest::newRow("unknown form") << QStringList{"--to", "xml", "@good.rigx"} << 1 << QList<bool>{};
    QTest::newRow("no path") << QStringList{"--to", "rigj"} << 1 << QList<bool>{};
    QTest::newRow("two-argument form with three")
        << QStringList{"@good.rigx", "a.rigj", "b"} << 1 << QList<bool>{};
}

void TestConvertBatch::singleFiles()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QList<bool>, ok);

    QVERIFY(writeFile(path(QStringLiteral("good.rigx")), mProject));
    QVERIFY(writeFile(path(QStringLiteral("other.rigx")), mProject));
    QVERIFY(writeFile(path(QStringLiteral("notes.txt")), "text"));
    QVERIFY(QDir(mDir->path()).mkpath(QStringLiteral("empty")));
    QVERIFY(::mkfifo(QFile::encodeName(path(QStringLiteral("fifo.rigx"))).constData(), 0600) == 0);
    for (QString &argument : arguments) {
        if (argument.startsWith(QLatin1Char('@')))
            argument = path(argument.mid(1));
    }
    const CliRun run = runCli(QStringList{QStringLiteral("convert")} + arguments);
    QCOMPARE(run.exitCode, exitCode);
    const QList<QJsonObject> got = lines(run.out);
    QCOMPARE(got.size(), ok.size());
    for (int i = 0; i < ok.size(); ++i)
        QCOMPARE(got.at(i).value(QStringLiteral("ok")).toBool(), ok.at(i));
    if (exitCode == 1)
        QVERIFY(run.err.contains("Try 'morvane-cli convert --help'"));
}

QTEST_GUILESS_MAIN(TestConvertBatch)
#include "tst_convertbatch.moc"
