// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "clirunner.h"
#include "eval/entityinstance.h"
#include "io/projectfile.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/imagecache.h"
#include "model/rigxdata.h"

#include <QDir>
#include <QTest>

using namespace Morvane;

namespace {

QString hostileDirectory()
{
    return QStringLiteral(MORVANE_TEST_DATA_DIR "/hostile");
}

} // namespace

// Every project in the hostile corpus opens or fails with an error, and poses and
// draws within bounds, through the same code the window and the tool use.
class TstHostileInputs : public QObject
{
    Q_OBJECT

private slots:
    void corpus_data();
    void corpus();
    void poseCommandWarns();
};

void TstHostileInputs::corpus_data()
{
    QTest::addColumn<QString>("path");
    const QDir directory(hostileDirectory());
    const QStringList names = directory.entryList(
        {QStringLiteral("*.rigx"), QStringLiteral("*.rigj")}, QDir::Files, QDir::Name);
    QVERIFY(names.size() >= 5);
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << directory.filePath(name);
}

void TstHostileInputs::corpus()
{
    QFETCH(QString, path);
    RigxData document;
    QString error;
    if (!ProjectFile::open(&document, path, nullptr, &error)) {
        QVERIFY2(error.startsWith(QLatin1String("Error: ")), qPrintable(error));
        return;
    }
    for (int e = 0; e < document.entityCount(); ++e) {
        Entity *entity = document.entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            EntityInstance instance(entity, entity->animation(a));
            for (int time : {0, 250, 999}) {
                instance.setCurrentTime(time);
                instance.advanceTime(16);
            }
            QVERIFY(instance.subEntityInstanceCount() <= EntityInstance::MaxSubEntityInstances);
            QVERIFY(instance.warnings().size() <= 2);
        }
    }
    // Drawing asks every file for its pixels: within the budget, and never a
    // read that waits.
    for (int f = 0; f < document.folderCount(); ++f) {
        for (int i = 0; i < document.folder(f)->fileCount(); ++i) {
            const File *file = document.folder(f)->file(i);
            if (file->isImage())
                QVERIFY(!file->image().isNull());
        }
    }
    QVERIFY(document.imageCache().pixels() <= document.imageCache().pixelBudget());
}

void TstHostileInputs::poseCommandWarns()
{
    const Testing::CliRun run = Testing::runCli(
        {QStringLiteral("pose"), hostileDirectory() + QStringLiteral("/self-copies-5.rigx"),
         QStringLiteral("--time"), QStringLiteral("0")});
    QCOMPARE(run.exitCode, 0);
    const QList<QByteArray> lines = run.err.trimmed().split('\n');
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith("morvane-cli pose: Entity \"mirror\" shows more than 2000"),
             run.err.constData());
    QVERIFY(run.out.contains("\"entity\": \"mirror\""));
}

QTEST_GUILESS_MAIN(TstHostileInputs)
#include "tst_hostileinputs.moc"
