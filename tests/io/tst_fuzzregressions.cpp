// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "testhost.h"

#include "fuzzchecks.h"

#include <QDirIterator>
#include <QTest>

using namespace Morvane;
using namespace Morvane::Testing;

// Replays the fuzz seeds and every input a fuzzer once failed on. A check that breaks
// aborts the test program, which CTest reports as a failure.
class TestFuzzRegressions : public QObject
{
    Q_OBJECT

private slots:
    void replay_data();
    void replay();
};

void TestFuzzRegressions::replay_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("path");
    int rows = 0;
    for (const char *folder : {"fuzz", "fuzz-regressions"}) {
        for (const char *target : {"xmlreader", "jsonreader", "mergepath"}) {
            const QString directory = testData(folder) + QLatin1Char('/') + QLatin1String(target);
            QDirIterator it(directory, QDir::Files);
            while (it.hasNext()) {
                const QString path = it.next();
                QTest::addRow("%s/%s/%s", folder, target, qPrintable(QFileInfo(path).fileName()))
                    << QString::fromLatin1(target) << path;
                ++rows;
            }
        }
    }
    QVERIFY(rows > 0);
}

void TestFuzzRegressions::replay()
{
    QFETCH(QString, target);
    QFETCH(QString, path);
    const QByteArray input = readAll(path);
    if (target == QLatin1String("xmlreader"))
        FuzzChecks::xmlReader(input);
    else if (target == QLatin1String("jsonreader"))
        FuzzChecks::jsonReader(input);
    else
        FuzzChecks::mergePath(input);
}

QTEST_GUILESS_MAIN(TestFuzzRegressions)
#include "tst_fuzzregressions.moc"
