// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clirunner.h"
#include "io/projectfile.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"
#include "projecttext.h"

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Morvane;
using Morvane::Testing::runCli;
using Morvane::Testing::writeFile;

namespace {

const QRgb A = qRgba(255, 0, 0, 255);
const QRgb B = qRgba(0, 255, 0, 255);
const QRgb C = qRgba(0, 0, 255, 255);
const QRgb D = qRgba(255, 255, 0, 255);
const QRgb E = qRgba(0, 255, 255, 255);
const QRgb F = qRgba(255, 0, 255, 255);

// 3 x 3 pixels: columns 0-1 hold the frame "A B C / D E F" turned a quarter clockwise,
// column 2 the 1 x 1 frame "B".
QImage sheetImage()
{
    const QRgb rows[3][3] = {{D, A, B}, {E, B, 0}, {F, C, 0}};
    QImage sheet(3, 3, QImage::Format_ARGB32);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x)
            sheet.setPixel(x, y, rows[y][x]);
    return sheet;
}

const char sheetDescription[] = R"({
  "frames": {
    "body/arm.png": {"frame": {"x": 0, "y": 0, "w": 3, "h": 2}, "rotated": true,
                     "anchor": {"x": 0.125, "y": 0.125},
                     "trimmed": true, "spriteSourceSize": {"x": 1, "y": 1, "w": 3, "h": 2},
                     "sourceSize": {"w": 10, "h": 20}},
    "body/dot.png": {"frame": {"x": 2, "y": 0, "w": 1, "h": 1}, "rotated": false,
                     "pivot": {"x": 0.25, "y": 0.75},
                     "trimmed": false, "spriteSourceSize": {"x": 0, "y": 0, "w": 1, "h": 1},
                     "sourceSize": {"w": 1, "h": 1}}
  },
  "meta": {"image": "hero.png", "size": {"w": 3, "h": 3}}
})";

// Folder 0 is bound to the sheet; its file 0 is shown by a sprite, file 1 by nothing, and
// file 2 is not in the sheet. Folder 1 is an ordinary folder.
const char project[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<morvane_data rigx_version="1.0">
    <atlas><i name="sheets/hero.json"/></atlas>
    <folder id="0" name="body" atlas="0">
        <file id="0" name="body/arm.png" width="7" height="9" pivot_x="0.5" pivot_y="0.5"/>
        <file id="1" name="body/dot.png" width="7" height="9"/>
        <file id="2" name="body/leg.png" width="7" height="9"/>
    </folder>
    <entity id="0" name="hero">
        <obj_info name="arm" type="sprite"/>
        <obj_info name="leg" type="sprite"/>
        <animation id="0" name="idle" length="1000">
            <mainline><key id="0">
                <object_ref id="0" timeline="0" key="0" z_index="0"/>
                <object_ref id="1" timeline="1" key="0" z_index="1"/>
            </key></mainline>
            <timeline id="0" obj="0" name="arm"><key id="0"><object folder="0" file="0"/></key></timeline>
            <timeline id="1" obj="1" name="leg"><key id="0"><object folder="0" file="2"/></key></timeline>
        </animation>
    </entity>
</morvane_data>
)";

QJsonValue at(QJsonValue value, const QStringList &steps)
{
    for (const QString &step : steps) {
        bool isIndex = false;
        const int index = step.toInt(&isIndex);
        value = isIndex ? value.toArray().at(index) : value.toObject().value(step);
    }
    return value;
}

} // namespace

class TestAtlasProject : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void filesShowFrames();
    void brokenSheet_data();
    void brokenSheet();
    void savesBackBound();
    void sharesThePixelBudget();
    void commandLine();

private:
    QString path(const QString &name) const { return mDir->filePath(name); }
    std::unique_ptr<QTemporaryDir> mDir;
};

void TestAtlasProject::init()
{
    mDir = std::make_unique<QTemporaryDir>();
    QVERIFY(mDir->isValid());
    QVERIFY(QDir(mDir->path()).mkdir(QStringLiteral("sheets")));
    QVERIFY(sheetImage().save(path(QStringLiteral("sheets/hero.png"))));
    QVERIFY(writeFile(path(QStringLiteral("sheets/hero.json")), sheetDescription));
    QVERIFY(writeFile(path(QStringLiteral("hero.rigx")), project));
}

void TestAtlasProject::filesShowFrames()
{
    RigxData document;
    QVERIFY(ProjectFile::open(&document, path(QStringLiteral("hero.rigx"))));
    Folder *folder = document.folder(0);
    QVERIFY(folder && folder->spriteSheet());
    QCOMPARE(folder->spriteSheetName(), QStringLiteral("sheets/hero.json"));

    // The size is the frame's source size, not the one saved in the project.
    const File *arm = folder->file(0);
    QCOMPARE(arm->name(), QStringLiteral("<sheets/hero.json>/body/arm.png"));
    QVERIFY(arm->imageLoaded());
    QCOMPARE(QSize(arm->width(), arm->height()), QSize(10, 20));
    const QImage image = arm->image();
    QCOMPARE(image.size(), QSize(10, 20));
    const QRgb upright[2][3] = {{A, B, C}, {D, E, F}};
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 10; ++x) {
            const bool inside = x >= 1 && x < 4 && y >= 1 && y < 3;
            QCOMPARE(image.pixel(x, y), inside ? upright[y - 1][x - 1] : QRgb(0));
        }
    QCOMPARE(folder->file(1)->image().pixel(0, 0), B);

    // The frame's pivot stands in only where the project gives none.
    QCOMPARE(arm->pivot(false), QPointF(0.5, 0.5));
    QCOMPARE(folder->file(1)->pivot(false), QPointF(0.25, 0.75));

    // A name the sheet does not hold is missing and keeps its saved size.
    const File *leg = folder->file(2);
    QVERIFY(!leg->imageLoaded());
    QCOMPARE(QSize(leg->width(), leg->height()), QSize(7, 9));
    QCOMPARE(document.imageCache().spriteSheets().count(), 1);
}

void TestAtlasProject::brokenSheet_data()
{
    QTest::addColumn<QByteArray>("description");
    QTest::addColumn<bool>("imageIsText");

    QTest::newRow("description not JSON") << QByteArray("{\"frames\":") << false;
    QTest::newRow("sheet image is text") << QByteArray(sheetDescription) << true;
    QTest::newRow("frames of no size")
        << QByteArray("{\"frames\":{\"body/arm.png\":{}},\"meta\":{\"image\":\"hero.png\"}}")
        << false;
}

void TestAtlasProject::brokenSheet()
{
    QFETCH(QByteArray, description);
    QFETCH(bool, imageIsText);
    QVERIFY(writeFile(path(QStringLiteral("sheets/hero.json")), description));
    if (imageIsText)
        QVERIFY(writeFile(path(QStringLiteral("sheets/hero.png")), "not pixels"));

    RigxData document;
    QVERIFY(ProjectFile::open(&document, path(QStringLiteral("hero.rigx"))));
    const File *arm = document.folder(0)->file(0);
    QVERIFY(!arm->imageLoaded());
    QCOMPARE(QSize(arm->width(), arm->height()), QSize(7, 9));
    QCOMPARE(arm->image().size(), QSize(7, 9)); // the placeholder
    QCOMPARE(document.imageCache().spriteSheets().count(), 0);
    QVERIFY(!document.imageCache().warnings().isEmpty());
}

void TestAtlasProject::savesBackBound()
{
    // Both forms keep the binding; the file nothing shows stays because its frame exists.
    for (const char *name : {"again.rigj", "again.rigx"}) {
        RigxData document;
        QVERIFY(ProjectFile::open(&document, path(QStringLiteral("hero.rigx"))));
        QVERIFY(ProjectFile::save(&document, path(QString::fromLatin1(name))));
        RigxData again;
        QVERIFY(ProjectFile::open(&again, path(QString::fromLatin1(name))));
        QCOMPARE(again.folderCount(), 1);
        const Folder *folder = again.folder(0);
        QCOMPARE(folder->name(), QStringLiteral("<sheets/hero.json>/body"));
        QCOMPARE(folder->fileCount(), 3);
        QCOMPARE(folder->file(1)->name(), QStringLiteral("<sheets/hero.json>/body/dot.png"));
        QVERIFY(folder->file(1)->imageLoaded());
        QCOMPARE(QSize(folder->file(0)->width(), folder->file(0)->height()), QSize(10, 20));
    }
}

void TestAtlasProject::sharesThePixelBudget()
{
    // The 3 x 3 sheet and the 1 x 1 frame fit into 10 pixels; the 10 x 20 frame does not.
    RigxData document;
    document.imageCache().setPixelBudget(10);
    QVERIFY(ProjectFile::open(&document, path(QStringLiteral("hero.rigx"))));
    const Folder *folder = document.folder(0);
    QVERIFY(!folder->file(0)->imageLoaded());
    QVERIFY(folder->file(1)->imageLoaded());
    QCOMPARE(document.imageCache().pixels(), 10);
    QVERIFY(!document.imageCache().warnings().isEmpty());
}

void TestAtlasProject::commandLine()
{
    // The tool shows the frame's size where it finds the frame, the saved size where not.
    const auto run = [this](const QStringList &extra) {
        const Testing::CliRun cli =
            runCli(QStringList{extra.first(), path(QStringLiteral("hero.rigx"))} + extra.mid(1));
        return cli.exitCode == 0 ? QJsonDocument::fromJson(cli.out).object() : QJsonObject();
    };
    const QJsonObject info = run({QStringLiteral("info")});
    const QStringList arm{"folders", "0", "files", "0"};
    QCOMPARE(at(info, arm + QStringList{"width"}), QJsonValue(10));
    QCOMPARE(at(info, arm + QStringList{"height"}), QJsonValue(20));
    QCOMPARE(at(info, arm + QStringList{"missing"}), QJsonValue(false));
    QCOMPARE(at(info, {"folders", "0", "files", "2", "missing"}), QJsonValue(true));
    const QJsonObject pose =
        run({QStringLiteral("pose"), QStringLiteral("--time"), QStringLiteral("0")});
    QCOMPARE(at(pose, {"objects", "0", "width"}), QJsonValue(10));
    QCOMPARE(at(pose, {"objects", "0", "height"}), QJsonValue(20));
    QCOMPARE(at(pose, {"objects", "1", "width"}), QJsonValue(7));
}

QTEST_GUILESS_MAIN(TestAtlasProject)
#include "tst_atlasproject.moc"
