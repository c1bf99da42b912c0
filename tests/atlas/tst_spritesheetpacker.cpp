// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "atlas/bindatlascommand.h"
#include "atlas/jsonspritesheet.h"
#include "atlas/spritesheetpacker.h"
#include "clirunner.h"
#include "io/projectfile.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"
#include "projecttext.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;
using Morvane::Testing::readAll;
using Morvane::Testing::runCli;

namespace {

const QString example = QStringLiteral(MORVANE_SOURCE_DIR "/examples/hero");

bool copyTree(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString target = to + QLatin1Char('/') + QDir(from).relativeFilePath(file);
        if (!QDir().mkpath(QFileInfo(target).absolutePath()) || !QFile::copy(file, target))
            return false;
    }
    return true;
}

QImage argb(const QImage &image)
{
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

class TestSpriteSheetPacker : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void readsBackExactly_data();
    void readsBackExactly();
    void tooLarge();
    void bindUndo();
    void packAndBindFromCommandLine();

private:
    QString path(const QString &name) const { return mDir->filePath(name); }
    std::unique_ptr<QTemporaryDir> mDir;
};

void TestSpriteSheetPacker::init()
{
    mDir = std::make_unique<QTemporaryDir>();
    QVERIFY(mDir->isValid());
    QVERIFY(copyTree(example, path(QStringLiteral("hero"))));
}

void TestSpriteSheetPacker::readsBackExactly_data()
{
    QTest::addColumn<int>("maxSize");
    QTest::addColumn<bool>("trim");
    QTest::addColumn<bool>("rotate");
    QTest::addColumn<int>("padding");
    QTest::addColumn<int>("extrude");

    QTest::newRow("plain") << 1024 << false << false << 0 << 0;
    QTest::newRow("trimmed, rotated, padded") << 1024 << true << true << 2 << 0;
    QTest::newRow("extruded") << 1024 << true << false << 1 << 2;
    QTest::newRow("many small sheets") << 100 << true << true << 1 << 1;
}

void TestSpriteSheetPacker::readsBackExactly()
{
    QFETCH(int, maxSize);
    QFETCH(bool, trim);
    QFETCH(bool, rotate);
    QFETCH(int, padding);
    QFETCH(int, extrude);

    // A wholly transparent image and one with transparent borders, beside the example's.
    QMap<QString, QImage> images;
    QDirIterator it(example, {QStringLiteral("*.png")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        images.insert(QDir(example).relativeFilePath(file), argb(QImage(file)));
    }
    QImage clear(7, 5, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    images.insert(QStringLiteral("clear.png"), clear);
    QImage bordered = clear;
    bordered.setPixel(2, 1, qRgba(10, 20, 30, 128));
    bordered.setPixel(4, 3, qRgba(200, 100, 0, 255));
    images.insert(QStringLiteral("deep/bordered.png"), bordered);

    SpriteSheetPacker::Options options;
    options.maxSize = maxSize;
    options.trim = trim;
    options.rotate = rotate;
    options.padding = padding;
    options.extrude = extrude;
    QString error;
    const QStringList sheets =
        SpriteSheetPacker::pack(images, options, path(QStringLiteral("out")), &error);
    QVERIFY2(!sheets.isEmpty(), qPrintable(error));
    QCOMPARE(sheets.size() > 1, maxSize < 128);
    for (const QString &sheet : sheets) {
        const QImage image(path(QStringLiteral("out/")) +
                           QString(sheet).replace(QLatin1String(".json"), QLatin1String(".png")));
        QVERIFY(image.width() <= maxSize && image.height() <= maxSize);
    }

    // Through the reader, every frame is its image again, pixel for pixel.
    JsonSpriteSheet read(path(QStringLiteral("out/")) + sheets.first());
    QCOMPARE(read.frameNames(), images.keys());
    for (auto image = images.constBegin(); image != images.constEnd(); ++image)
        QVERIFY2(argb(read.pixmapFromFileName(image.key())) == argb(image.value()),
                 qPrintable(image.key()));
}

void TestSpriteSheetPacker::tooLarge()
{
    QMap<QString, QImage> images;
    QImage big(40, 10, QImage::Format_ARGB32);
    big.fill(Qt::red);
    images.insert(QStringLiteral("big.png"), big);
    SpriteSheetPacker::Options options;
    options.maxSize = 32;
    QString error;
    QVERIFY(
        SpriteSheetPacker::pack(images, options, path(QStringLiteral("out")), &error).isEmpty());
    QVERIFY(!error.isEmpty());
    // Exactly the maximum size fits, however much padding is asked for.
    images.insert(QStringLiteral("big.png"), big.copy(0, 0, 32, 32));
    options.padding = 8;
    QCOMPARE(SpriteSheetPacker::pack(images, options, path(QStringLiteral("out")), &error).size(),
             1);
}

void TestSpriteSheetPacker::bindUndo()
{
    SpriteSheetPacker::Options options;
    options.trim = true;
    options.rotate = true;
    QMap<QString, QImage> images;
    QUndoStack stack;
    RigxData document;
    QVERIFY(ProjectFile::open(&document, path(QStringLiteral("hero/hero.rigx"))));
    document.setUndoStack(&stack);
    QList<int> folders;
    for (int f = 0; f < document.folderCount(); ++f) {
        folders.append(f);
        for (int i = 0; i < document.folder(f)->fileCount(); ++i)
            images.insert(document.folder(f)->file(i)->name(),
                          document.folder(f)->file(i)->image());
    }
    QString error;
    QVERIFY(!SpriteSheetPacker::pack(images, options, path(QStringLiteral("hero/sheets")), &error)
                 .isEmpty());
    QVERIFY(ProjectFile::save(&document, path(QStringLiteral("hero/before.rigx"))));

    document.pushUndo(
        new BindAtlasCommand(&document, folders, QStringLiteral("sheets/atlas.json")));
    QCOMPARE(stack.count(), 1);
    for (int f = 0; f < document.folderCount(); ++f) {
        QVERIFY(document.folder(f)->spriteSheet());
        for (int i = 0; i < document.folder(f)->fileCount(); ++i) {
            const File *file = document.folder(f)->file(i);
            QVERIFY2(file->imageLoaded(), qPrintable(file->name()));
            QVERIFY(argb(file->image()) ==
                    argb(images.value(RigxData::removeBeginningBracketDirectory(file->name()))));
        }
    }
    QVERIFY(ProjectFile::save(&document, path(QStringLiteral("hero/bound.rigx"))));
    stack.undo();
    QVERIFY(ProjectFile::save(&document, path(QStringLiteral("hero/undone.rigx"))));
    QCOMPARE(readAll(path(QStringLiteral("hero/undone.rigx"))),
             readAll(path(QStringLiteral("hero/before.rigx"))));
    stack.redo();
    QVERIFY(ProjectFile::save(&document, path(QStringLiteral("hero/redone.rigx"))));
    QCOMPARE(readAll(path(QStringLiteral("hero/redone.rigx"))),
             readAll(path(QStringLiteral("hero/bound.rigx"))));
}

void TestSpriteSheetPacker::packAndBindFromCommandLine()
{
    const Testing::CliRun run = runCli(
        {QStringLiteral("pack"), path(QStringLiteral("hero/hero.rigx")), QStringLiteral("--out"),
         path(QStringLiteral("hero/sheets")), QStringLiteral("--trim"), QStringLiteral("--rotate"),
         QStringLiteral("--padding"), QStringLiteral("1"), QStringLiteral("--max-size"),
         QStringLiteral("128"), QStringLiteral("--bind"), path(QStringLiteral("hero/bound.rigx"))});
    QCOMPARE(run.exitCode, 0);
    const QJsonObject printed = QJsonDocument::fromJson(run.out).object();
    QCOMPARE(printed.value(QStringLiteral("frames")).toInt(), 10);

    // Every time of every animation poses the same, sizes included, from the sheets.
    for (const char *time : {"0", "250", "500", "900"}) {
        const auto pose = [&](const QString &file) {
            QByteArray out = runCli({QStringLiteral("pose"), path(file), QStringLiteral("--time"),
                                     QString::fromLatin1(time)})
                                 .out;
            return out.replace("<sheets/atlas.json>/", "");
        };
        const QByteArray before = pose(QStringLiteral("hero/hero.rigx"));
        QVERIFY(before.contains("\"width\""));
        QCOMPARE(pose(QStringLiteral("hero/bound.rigx")), before);
    }
    RigxData bound;
    RigxData original;
    QVERIFY(ProjectFile::open(&bound, path(QStringLiteral("hero/bound.rigx"))));
    QVERIFY(ProjectFile::open(&original, path(QStringLiteral("hero/hero.rigx"))));
    QCOMPARE(bound.folderCount(), original.folderCount());
    for (int f = 0; f < bound.folderCount(); ++f)
        for (int i = 0; i < bound.folder(f)->fileCount(); ++i)
            QVERIFY(argb(bound.folder(f)->file(i)->image()) ==
                    argb(original.folder(f)->file(i)->image()));
    QVERIFY(bound.imageCache().spriteSheets().count() == 1);
}

QTEST_GUILESS_MAIN(TestSpriteSheetPacker)
#include "tst_spritesheetpacker.moc"
