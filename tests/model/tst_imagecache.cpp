// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "io/projectfile.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/imagecache.h"
#include "model/rigxdata.h"
#include "testfiles.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace Morvane;
using namespace Morvane::Testing;

namespace {

/// A project text whose one entity shows each of `names` on a sprite, so that
/// missing images stay in the project.
QByteArray projectShowing(const QStringList &names)
{
    QByteArray text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<morvane_data rigx_version=\"1.0\">"
        "<folder id=\"0\">";
    QByteArray refs;
    QByteArray timelines;
    QByteArray infos;
    for (int i = 0; i < names.size(); ++i) {
        const QByteArray n = QByteArray::number(i);
        text += "<file id=\"" + n + "\" name=\"" + names.at(i).toUtf8() +
                "\" width=\"7\" height=\"9\"/>";
        infos += "<obj_info name=\"s" + n + "\" type=\"sprite\"/>";
        refs +=
            "<object_ref id=\"" + n + "\" timeline=\"" + n + "\" key=\"0\" z_index=\"" + n + "\"/>";
        timelines += "<timeline id=\"" + n + "\" obj=\"" + n + "\" name=\"s" + n +
                     "\"><key id=\"0\"><object folder=\"0\" file=\"" + n + "\"/></key></timeline>";
    }
    text += "</folder><entity id=\"0\" name=\"hero\">" + infos +
            "<animation id=\"0\" name=\"idle\" length=\"1000\"><mainline><key id=\"0\">" + refs +
            "</key></mainline>" + timelines + "</animation></entity></morvane_data>\n";
    return text;
}

/// A document whose project file would lie in `directory`.
void placeIn(RigxData *document, const QString &directory)
{
    document->setFilePath(directory + QStringLiteral("/project.rigx"));
}

File *addImage(RigxData *document, Folder *folder, const QString &name)
{
    auto *file = new File(name, 0.0, 0.0, File::Image, document->projectDirectory());
    folder->appendFile(file);
    return file;
}

} // namespace

class TstImageCache : public QObject
{
    Q_OBJECT

private slots:
    void spellingsDecodeOnce();
    void budgetGivesPlaceholderAndOneWarning();
    void openingReadsSizesWithoutDecoding();
    void placeholdersStayBounded();
    void irregularImageFiles_data();
    void irregularImageFiles();
    void mergeSkipsFifo();
};

void TstImageCache::spellingsDecodeOnce()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(writePng(dir.filePath(QStringLiteral("b.png")), QSize(40, 30), Qt::red));
    QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("art")));
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("b.png")),
                        dir.filePath(QStringLiteral("link.png"))));

    RigxData document;
    placeIn(&document, dir.path());
    auto *folder = new Folder;
    document.appendFolder(folder);
    const QStringList spellings{
        QStringLiteral("b.png"),        QStringLiteral("./b.png"),
        QStringLiteral(".//b.png"),     QStringLiteral("././b.png"),
        QStringLiteral("art/../b.png"), QStringLiteral("art//..//b.png"),
        QStringLiteral("link.png"),     QStringLiteral("./art/../link.png")};
    QList<File *> files;
    for (const QString &name : spellings)
        files.append(addImage(&document, folder, name));

    for (File *file : std::as_const(files)) {
        QVERIFY2(file->imageLoaded(), qPrintable(file->name()));
        QCOMPARE(file->width(), 40);
        QCOMPARE(file->height(), 30);
    }
    QCOMPARE(document.imageCache().decodeCount(), 0);

    const qint64 key = files.first()->image().cacheKey();
    for (File *file : std::as_const(files)) {
        QCOMPARE(file->image().size(), QSize(40, 30));
        QCOMPARE(file->image().pixelColor(5, 5), QColor(Qt::red));
        QCOMPARE(file->image().cacheKey(), key);
    }
    QCOMPARE(document.imageCache().decodeCount(), 1);
    QCOMPARE(document.imageCache().pixels(), 40 * 30);
}

void TstImageCache::budgetGivesPlaceholderAndOneWarning()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(writePng(dir.filePath(QStringLiteral("a.png")), QSize(100, 100), Qt::red));
    QVERIFY(writePng(dir.filePath(QStringLiteral("c.png")), QSize(100, 60), Qt::blue));

    RigxData document;
    placeIn(&document, dir.path());
    document.imageCache().setPixelBudget(15000);
    auto *folder = new Folder;
    document.appendFolder(folder);
    File *a = addImage(&document, folder, QStringLiteral("a.png"));
    File *c = addImage(&document, folder, QStringLiteral("c.png"));
    File *c2 = addImage(&document, folder, QStringLiteral("./c.png"));

    QCOMPARE(a->image().pixelColor(1, 1), QColor(Qt::red));
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("^Image \"c.png\" .*placeholder")));
    const QImage refused = c->image();
    QCOMPARE(refused.size(), QSize(100, 60));
    QVERIFY(refused.pixelColor(50, 20) != QColor(Qt::blue));
    QCOMPARE(refused.cacheKey(), c2->image().cacheKey());
    c->image();

    const QStringList warnings = document.imageCache().warnings();
    QCOMPARE(warnings.size(), 1);
    QVERIFY(warnings.first().contains(QLatin1String("\"c.png\"")));
    QVERIFY(warnings.first().contains(QLatin1String("placeholder")));
    QCOMPARE(document.imageCache().decodeCount(), 1);
    QCOMPARE(document.imageCache().pixels(), 100 * 100);
}

void TstImageCache::openingReadsSizesWithoutDecoding()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    // A header that promises 300 x 200, and pixel data cut short: reading the
    // size succeeds, decoding would not.
    QVERIFY(writePng(dir.filePath(QStringLiteral("whole.png")), QSize(300, 200), Qt::green));
    QFile whole(dir.filePath(QStringLiteral("whole.png")));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    QVERIFY(writeFile(dir.filePath(QStringLiteral("cut.png")), whole.readAll().chopped(30)));
    const QString path = dir.filePath(QStringLiteral("project.rigx"));
    QVERIFY(writeFile(path,
                      projectShowing({QStringLiteral("whole.png"), QStringLiteral("./cut.png")})));

    RigxData document;
    QString error;
    QVERIFY2(ProjectFile::open(&document, path, nullptr, &error), qPrintable(error));
    const File *intact = document.folder(0)->file(0);
    const File *cut = document.folder(0)->file(1);
    QCOMPARE(intact->width(), 300);
    QCOMPARE(intact->height(), 200);
    QCOMPARE(cut->width(), 300);
    QCOMPARE(cut->height(), 200);
    QVERIFY(cut->imageLoaded());
    QCOMPARE(document.imageCache().decodeCount(), 0);

    // Drawing decodes; the cut image turns into the placeholder then.
    QCOMPARE(intact->image().pixelColor(150, 100), QColor(Qt::green));
    QCOMPARE(cut->image().size(), QSize(300, 200));
    QVERIFY(cut->image().pixelColor(150, 100) != QColor(Qt::green));
    QCOMPARE(document.imageCache().decodeCount(), 2);
}

void TstImageCache::placeholdersStayBounded()
{
    RigxData document;
    auto *folder = new Folder;
    document.appendFolder(folder);
    QList<File *> files;
    for (int i = 0; i < 3 * ImageCache::MaxPlaceholderSizes; ++i) {
        auto *file = new File(QStringLiteral("gone%1.png").arg(i));
        file->setSize(100000 + i, 100000 + i * 7);
        folder->appendFile(file);
        files.append(file);
    }
    QSet<qint64> shared;
    for (File *file : std::as_const(files)) {
        const QImage &image = file->image();
        QVERIFY(!image.isNull());
        QVERIFY(image.width() <= ImageCache::MaxPlaceholderSide);
        QVERIFY(image.height() <= ImageCache::MaxPlaceholderSide);
        shared.insert(image.cacheKey());
    }
    QVERIFY(shared.size() <= ImageCache::MaxPlaceholderSizes + 1);
}

void TstImageCache::irregularImageFiles_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("missing");
    QTest::addColumn<QString>("warning");

    QTest::newRow("FIFO") << QStringLiteral("fifo") << true
                          << QStringLiteral("\"x.png\" is a FIFO, not an image file");
    QTest::newRow("directory") << QStringLiteral("directory") << true
                               << QStringLiteral("\"x.png\" is a directory, not an image file");
    QTest::newRow("/dev/zero") << QStringLiteral("devzero") << true
                               << QStringLiteral("\"x.png\" is a character device");
    QTest::newRow("stdin, a pipe")
        << QStringLiteral("stdin") << true << QStringLiteral("proc/self/fd/0\" is a FIFO");
    QTest::newRow("link to a PNG outside the project")
        << QStringLiteral("outsidelink") << false << QString();
    QTest::newRow("path through .. outside the project")
        << QStringLiteral("outsidepath") << false << QString();
    QTest::newRow("dangling link") << QStringLiteral("dangling") << true << QString();
}

void TstImageCache::irregularImageFiles()
{
    QFETCH(QString, kind);
    QFETCH(bool, missing);
    QFETCH(QString, warning);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QDir root(dir.path());
    QVERIFY(root.mkdir(QStringLiteral("project")) && root.mkdir(QStringLiteral("shared")));
    const QString shared = root.filePath(QStringLiteral("shared/art.png"));
    QVERIFY(writePng(shared, QSize(20, 10), Qt::yellow));
    const QString image = root.filePath(QStringLiteral("project/x.png"));
    QString name = QStringLiteral("x.png");
    if (kind == QLatin1String("fifo"))
        QCOMPARE(::mkfifo(QFile::encodeName(image).constData(), 0600), 0);
    else if (kind == QLatin1String("directory"))
        QVERIFY(root.mkdir(QStringLiteral("project/x.png")));
    else if (kind == QLatin1String("devzero"))
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), image));
    else if (kind == QLatin1String("stdin"))
        name = QStringLiteral("../").repeated(32) + QStringLiteral("proc/self/fd/0");
    else if (kind == QLatin1String("outsidelink"))
        QVERIFY(QFile::link(shared, image));
    else if (kind == QLatin1String("outsidepath"))
        name = QStringLiteral("../shared/art.png");
    else if (kind == QLatin1String("dangling"))
        QVERIFY(QFile::link(root.filePath(QStringLiteral("nowhere.png")), image));
    const QString project = root.filePath(QStringLiteral("project/project.rigx"));
    QVERIFY(writeFile(project, projectShowing({name})));

    // In another process with a watchdog: a read that blocks must fail this
    // row, not stall the test run. Its standard input stays an open pipe.
    QProcess cli;
    cli.start(QStringLiteral(MORVANE_CLI_PATH), {QStringLiteral("info"), project});
    QVERIFY(cli.waitForStarted());
    if (!cli.waitForFinished(20000)) {
        cli.kill();
        cli.waitForFinished();
        QFAIL("morvane-cli info did not finish: opening the image blocked");
    }
    QCOMPARE(cli.exitStatus(), QProcess::NormalExit);
    const QByteArray errors = cli.readAllStandardError();
    QVERIFY2(cli.exitCode() == 0, errors.constData());
    const QJsonObject info = QJsonDocument::fromJson(cli.readAllStandardOutput()).object();
    const QJsonObject file =
        info[QLatin1String("folders")][0][QLatin1String("files")][0].toObject();
    QCOMPARE(file.value(QStringLiteral("name")).toString(), name);
    QCOMPARE(file.value(QStringLiteral("missing")).toBool(), missing);
    QCOMPARE(file.value(QStringLiteral("width")).toInt(), missing ? 7 : 20);
    QCOMPARE(file.value(QStringLiteral("height")).toInt(), missing ? 9 : 10);
    if (warning.isEmpty())
        QVERIFY2(errors.isEmpty(), errors.constData());
    else
        QVERIFY2(errors.contains(warning.toUtf8()), errors.constData());
}

void TstImageCache::mergeSkipsFifo()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QDir root(dir.path());
    QVERIFY(root.mkdir(QStringLiteral("mine")) && root.mkdir(QStringLiteral("theirs")));
    const QString fifo = root.filePath(QStringLiteral("theirs/x.png"));
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    QVERIFY(writePng(root.filePath(QStringLiteral("theirs/y.png")), QSize(5, 6), Qt::red));
    const QString theirs = root.filePath(QStringLiteral("theirs/theirs.rigx"));
    QVERIFY(writeFile(theirs, projectShowing({QStringLiteral("x.png"), QStringLiteral("y.png")})));

    const QString mine = root.filePath(QStringLiteral("mine/mine.rigx"));
    QString error;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("is a FIFO")));
    // On a worker with a watchdog: a copy that waits for a writer must fail
    // this test, so the watchdog becomes that writer and lets it go. The
    // document lives on the worker, as its objects must.
    std::packaged_task<bool()> merge([&] {
        RigxData document;
        document.setFilePath(mine);
        return ProjectFile::importInto(&document, theirs, nullptr, &error);
    });
    std::future<bool> merged = merge.get_future();
    std::thread worker(std::move(merge));
    const bool finished = merged.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    if (!finished) {
        const int writer = ::open(QFile::encodeName(fifo).constData(), O_WRONLY | O_NONBLOCK);
        if (writer >= 0)
            ::close(writer);
    }
    worker.join();
    QVERIFY2(finished, "merging blocked on a FIFO named as an image");
    QVERIFY2(merged.get(), qPrintable(error));
    QVERIFY(!QFileInfo::exists(root.filePath(QStringLiteral("mine/theirs/x.png"))));
    QVERIFY(QFileInfo(root.filePath(QStringLiteral("mine/theirs/y.png"))).isFile());
}

QTEST_GUILESS_MAIN(TstImageCache)
#include "tst_imagecache.moc"
