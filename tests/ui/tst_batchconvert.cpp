// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "../app/apptesthelpers.h"
#include "io/projectfile.h"
#include "model/entity.h"
#include "model/rigxdata.h"
#include "ui/batchconvert/batchconvert.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <QPointer>
#include <QProgressDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <QUndoStack>

using namespace Morvane;

namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Every file under `root` with its bytes, so a test can tell what a run changed.
QMap<QString, QByteArray> snapshot(const QString &root)
{
    QMap<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        files.insert(QDir(root).relativeFilePath(file), readAll(file));
    }
    return files;
}

bool writeProjectAs(const QString &path, const QString &entity)
{
    RigxData document(nullptr, QStringLiteral("r4.1"));
    document.appendEmptyEntity()->setName(entity);
    return ProjectFile::save(&document, path);
}

// Answers the run's questions as a user would: picks the files in the file dialog, answers
// the confirmation and the unsaved-changes box, and reads the summary.
class RunAnswers
{
public:
    QString directory;      // directories mode: the folder picked
    QStringList files;      // files mode: the files picked
    bool confirm = true;
    QMessageBox::StandardButton unsaved = QMessageBox::Cancel;

    QStringList asked;      // the titles of the dialogs seen, in order
    QString summary;        // text and informative text of the summary

    RunAnswers()
    {
        mTimer.setInterval(5);
        QObject::connect(&mTimer, &QTimer::timeout, &mTimer, [this] { answer(); });
        mTimer.start();
    }

private:
    void answer()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal || modal == mLast)
            return;
        mLast = modal;
        asked << modal->windowTitle();
        if (auto *dialog = qobject_cast<QFileDialog *>(modal)) {
            if (dialog->fileMode() == QFileDialog::Directory) {
                dialog->setDirectory(directory);
            } else {
                QStringList quoted;
                for (const QString &file : std::as_const(files))
                    quoted << QLatin1Char('"') + file + QLatin1Char('"');
                auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
                QVERIFY(edit);
                edit->setText(quoted.join(QLatin1Char(' ')));
            }
            QMetaObject::invokeMethod(dialog, "accept");
            return;
        }
        auto *box = qobject_cast<QMessageBox *>(modal);
        if (!box)
            return;
        if (box->windowTitle() == QLatin1String("Confirm Overwrite...")) {
            box->button(confirm ? QMessageBox::Ok : QMessageBox::Cancel)->click();
        } else if (box->button(QMessageBox::Save)) {
            box->button(unsaved)->click();
        } else {
            summary = box->text() + QLatin1Char('\n') + box->informativeText();
            box->button(QMessageBox::Ok)->click();
        }
        mLast = nullptr;
    }

    QTimer mTimer;
    QPointer<QWidget> mLast;
};

} // namespace

class TestBatchConvert : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void form();
    void tree_data();
    void tree();
    void declined();
    void unsavedChanges_data();
    void unsavedChanges();
    void reopensTheProject();
    void cancel_data();
    void cancel();

private:
    // Builds the tree of `source` files: three good ones (one nested twice), a broken one
    // in the middle, one whose target name is taken by a folder, and files of other
    // suffixes that must stay as they are.
    void makeTree(const QString &source);
    // Shows the form, chooses through its buttons and presses OK; returns when the run
    // and its summary are over.
    void run(QPointer<BatchConvert> dialog, bool toJson, bool directories);
    QString path(const QString &name) const { return mFixture.path(name); }

    Test::AppFixture mFixture;
    QUndoStack mStack;
    std::unique_ptr<RigxData> mDocument;
};

void TestBatchConvert::init()
{
    mFixture.init();
    mStack.clear();
    mDocument = std::make_unique<RigxData>(&mStack, QStringLiteral("r4.1"));
}

void TestBatchConvert::cleanup()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    mDocument.reset();
    mFixture.cleanup();
}

void TestBatchConvert::makeTree(const QString &source)
{
    const QString target = source == QLatin1String("rigx") ? QStringLiteral("rigj")
                                                           : QStringLiteral("rigx");
    QVERIFY(QDir(mFixture.folder()).mkpath(QStringLiteral("tree/c/deep")));
    QVERIFY(writeProjectAs(path("tree/a." + source), "a"));
    QVERIFY(Test::writeFile(path("tree/b_broken." + source), "<morvane_data><entity"));
    QVERIFY(writeProjectAs(path("tree/c/inner." + source), "inner"));
    QVERIFY(writeProjectAs(path("tree/c/deep/d." + source), "d"));
    QVERIFY(writeProjectAs(path("tree/e_blocked." + source), "e"));
    QVERIFY(QDir(mFixture.folder()).mkpath("tree/e_blocked." + target));
    QVERIFY(writeProjectAs(path("tree/other." + target), "other"));
    QVERIFY(Test::writeFile(path("tree/notes.txt"), "not a project"));
    QVERIFY(Test::writeFile(path("tree/c/picture.png"), "\x89PNG"));
    QVERIFY(Test::writeFile(path("tree/c/a." + source + ".bak"), "old"));
}

void TestBatchConvert::run(QPointer<BatchConvert> dialog, bool toJson, bool directories)
{
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog));
    const QList<QRadioButton *> radios = dialog->findChildren<QRadioButton *>();
    for (QRadioButton *radio : radios) {
        const QString text = radio->text();
        if (text == (toJson ? QLatin1String("rigx to rigj") : QLatin1String("rigj to rigx"))
            || text == (directories ? QLatin1String("directories (recursive)")
                                    : QLatin1String("files")))
            QTest::mouseClick(radio, Qt::LeftButton, {}, QPoint(6, radio->height() / 2));
    }
    auto *buttons = dialog->findChild<QDialogButtonBox *>();
    QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(!dialog || !dialog->isVisible(), 5000);
}

void TestBatchConvert::form()
{
    auto *dialog = new BatchConvert(mDocument.get());
    QCOMPARE(dialog->windowTitle(), QString("Batch Convert between rigx(xml) and rigj(json)"));
    QStringList texts;
    for (QRadioButton *radio : dialog->findChildren<QRadioButton *>())
        texts << radio->text() + (radio->isChecked() ? "*" : "");
    QCOMPARE(texts, QStringList({"rigx to rigj*", "rigj to rigx", "directories (recursive)*",
                                 "files"}));
    QStringList groups;
    for (QGroupBox *group : dialog->findChildren<QGroupBox *>())
        groups << group->title();
    QCOMPARE(groups, QStringList({"conversion", "batch selection method"}));
    // Cancelling the form converts nothing and lets the dialog go.
    const QPointer<BatchConvert> guard(dialog);
    dialog->show();
    QTest::mouseClick(dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Cancel),
                      Qt::LeftButton);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!guard);
}

void TestBatchConvert::tree_data()
{
    QTest::addColumn<bool>("toJson");
    QTest::addColumn<bool>("directories");
    QTest::addColumn<QStringList>("picked");
    QTest::addColumn<QStringList>("converted");
    QTest::addColumn<QStringList>("failed");

    const QStringList all = {"a", "c/deep/d", "c/inner"};
    const QStringList broken = {"b_broken", "e_blocked"};
    QTest::newRow("rigx to rigj, directories") << true << true << QStringList() << all << broken;
    QTest::newRow("rigj to rigx, directories") << false << true << QStringList() << all << broken;
    QTest::newRow("rigx to rigj, files")
        << true << false << QStringList({"a", "b_broken", "c/deep/d", "e_blocked"})
        << QStringList({"a", "c/deep/d"}) << broken;
    QTest::newRow("rigj to rigx, files")
        << false << false << QStringList({"e_blocked", "c/inner"}) << QStringList({"c/inner"})
        << QStringList({"e_blocked"});
}

void TestBatchConvert::tree()
{
    QFETCH(bool, toJson);
    QFETCH(bool, directories);
    QFETCH(QStringList, picked);
    QFETCH(QStringList, converted);
    QFETCH(QStringList, failed);
    const QString source = toJson ? QStringLiteral("rigx") : QStringLiteral("rigj");
    const QString target = toJson ? QStringLiteral("rigj") : QStringLiteral("rigx");
    makeTree(source);
    const QMap<QString, QByteArray> before = snapshot(path("tree"));

    RunAnswers answers;
    answers.directory = path("tree");
    for (const QString &name : picked)
        answers.files << path("tree/" + name + "." + source);
    auto *dialog = new BatchConvert(mDocument.get());
    QSignalSpy finished(dialog, &BatchConvert::finished);
    run(dialog, toJson, directories);
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 10000);
    QTRY_VERIFY(!answers.summary.isEmpty());

    // The run asked in the documented order.
    QCOMPARE(answers.asked.value(0), directories
                                         ? QString("Select a directory to convert (recursively)")
                                         : QString("Select one or more files to convert"));
    QCOMPARE(answers.asked.value(1), QString("Confirm Overwrite..."));
    QCOMPARE(finished.at(0).at(0).toInt(), converted.size());
    QCOMPARE(finished.at(0).at(1).toInt(), failed.size());
    QVERIFY2(answers.summary.contains(QStringLiteral("converted %1, failed %2")
                                          .arg(converted.size())
                                          .arg(failed.size())),
             qPrintable(answers.summary));
    for (const QString &name : failed)
        QVERIFY2(answers.summary.contains(name + "." + source + ": "), qPrintable(answers.summary));
    QVERIFY2(answers.summary.contains("not a regular file"), qPrintable(answers.summary));

    // Each converted file is the same project in the other form: saved back in the
    // source form it gives the source's bytes.
    const QMap<QString, QByteArray> after = snapshot(path("tree"));
    for (const QString &name : converted) {
        const QString out = path("tree/" + name + "." + target);
        QVERIFY2(QFileInfo(out).isFile(), qPrintable(out));
        RigxData back;
        QVERIFY(ProjectFile::open(&back, out));
        QVERIFY(ProjectFile::save(&back, path("back." + source)));
        QCOMPARE(readAll(path("back." + source)), before.value(name + "." + source));
    }
    // Nothing else appeared, and nothing that was there changed.
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        QCOMPARE(after.value(it.key()), it.value());
    QCOMPARE(after.size(), before.size() + converted.size());
    QVERIFY(QFileInfo(path("tree/e_blocked." + target)).isDir());
}

void TestBatchConvert::declined()
{
    makeTree(QStringLiteral("rigx"));
    const QMap<QString, QByteArray> before = snapshot(path("tree"));
    RunAnswers answers;
    answers.directory = path("tree");
    answers.confirm = false;
    QPointer<BatchConvert> dialog = new BatchConvert(mDocument.get());
    QSignalSpy started(dialog.data(), &BatchConvert::runStarted);
    run(dialog, true, true);
    QTRY_VERIFY(answers.asked.contains("Confirm Overwrite..."));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!dialog);
    QCOMPARE(started.size(), 0);
    QCOMPARE(snapshot(path("tree")), before);
}

void TestBatchConvert::unsavedChanges_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("saveWorks");
    QTest::addColumn<bool>("runs");
    QTest::newRow("cancel") << int(QMessageBox::Cancel) << true << false;
    QTest::newRow("save") << int(QMessageBox::Save) << true << true;
    QTest::newRow("save fails") << int(QMessageBox::Save) << false << false;
}

void TestBatchConvert::unsavedChanges()
{
    QFETCH(int, answer);
    QFETCH(bool, saveWorks);
    QFETCH(bool, runs);
    makeTree(QStringLiteral("rigx"));
    const QMap<QString, QByteArray> before = snapshot(path("tree"));
    QVERIFY(writeProjectAs(path("open.rigx"), "open"));
    QVERIFY(ProjectFile::open(mDocument.get(), path("open.rigx")));
    // An edit that is not saved yet.
    RigxData::pushUndo(mDocument.get(), Test::dirtyCommand());
    mDocument->entity(0)->setName(QStringLiteral("renamed"));
    QVERIFY(!mStack.isClean());

    RunAnswers answers;
    answers.directory = path("tree");
    answers.unsaved = QMessageBox::StandardButton(answer);
    int saves = 0;
    QPointer<BatchConvert> dialog = new BatchConvert(mDocument.get());
    dialog->setSaveProject([&] {
        ++saves;
        if (!saveWorks)
            return false;
        mStack.setClean();
        return ProjectFile::save(mDocument.get(), path("open.rigx"));
    });
    run(dialog, true, true);
    QTRY_VERIFY(!answers.asked.isEmpty());
    if (runs)
        QTRY_VERIFY_WITH_TIMEOUT(!answers.summary.isEmpty(), 10000);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QTRY_VERIFY(!dialog);

    QCOMPARE(answers.asked.value(0), QString("Batch Convert"));
    QCOMPARE(saves, answer == QMessageBox::Save ? 1 : 0);
    QCOMPARE(snapshot(path("tree")) != before, runs);
    QCOMPARE(answers.asked.contains("Confirm Overwrite..."), runs);
    // The open project's edit is never lost: saved, or still in the document.
    if (runs) {
        QVERIFY(readAll(path("open.rigx")).contains("renamed"));
    } else {
        QVERIFY(!mStack.isClean());
        QCOMPARE(mDocument->entity(0)->name(), QString("renamed"));
    }
}

void TestBatchConvert::reopensTheProject()
{
    makeTree(QStringLiteral("rigj"));
    QVERIFY(writeProjectAs(path("open.rigx"), "open"));
    const QByteArray saved = readAll(path("open.rigx"));
    QVERIFY(ProjectFile::open(mDocument.get(), path("open.rigx")));
    RunAnswers answers;
    answers.directory = path("tree");
    auto *dialog = new BatchConvert(mDocument.get());
    QSignalSpy started(dialog, &BatchConvert::runStarted);
    QSignalSpy reopened(dialog, &BatchConvert::runFinished);
    run(dialog, false, true);
    QTRY_VERIFY_WITH_TIMEOUT(!answers.summary.isEmpty(), 10000);
    QCOMPARE(started.size(), 1);
    QCOMPARE(reopened.size(), 1);
    QCOMPARE(mDocument->filePath(), path("open.rigx"));
    QCOMPARE(mDocument->entity(0)->name(), QString("open"));
    QVERIFY(mStack.isClean());
    QCOMPARE(mStack.count(), 0);
    QVERIFY(ProjectFile::save(mDocument.get(), path("again.rigx")));
    QCOMPARE(readAll(path("again.rigx")), saved);
}

void TestBatchConvert::cancel_data()
{
    QTest::addColumn<bool>("directories");
    // Directories: the run stops before the next file; the file being converted is done.
    QTest::newRow("directories stop") << true;
    // Files: only the dialog is scheduled to go; the run itself goes on to the end.
    QTest::newRow("files go on") << false;
}

void TestBatchConvert::cancel()
{
    QFETCH(bool, directories);
    makeTree(QStringLiteral("rigx"));
    RunAnswers answers;
    answers.directory = path("tree");
    const QStringList picked = {"a", "c/inner", "c/deep/d"};
    for (const QString &name : picked)
        answers.files << path("tree/" + name + ".rigx");
    QPointer<BatchConvert> dialog = new BatchConvert(mDocument.get());
    QSignalSpy finished(dialog.data(), &BatchConvert::finished);
    int inFlight = -1;
    // Shown at once instead of after two seconds, and cancelled as soon as it shows.
    connect(dialog, &BatchConvert::runStarted, this, [&] {
        QProgressDialog *progress = dialog->progressDialog();
        QVERIFY(progress);
        QCOMPARE(progress->labelText(), QStringLiteral("Converting %1 rigx files to rigj")
                                            .arg(directories ? 5 : 3));
        QCOMPARE(progress->minimum(), 0);
        QCOMPARE(progress->maximum(), directories ? 4 : 2);
        progress->setMinimumDuration(0);
        auto *timer = new QTimer(progress);
        connect(timer, &QTimer::timeout, progress, [&, progress, timer] {
            if (!progress->isVisible())
                return;
            timer->stop();
            inFlight = progress->value();
            QVERIFY(progress->labelText().startsWith("converting "));
            auto *button = progress->findChild<QPushButton *>();
            QCOMPARE(button->text(), QString("abort"));
            QTest::mouseClick(button, Qt::LeftButton);
        });
        timer->start(0);
    });
    run(dialog, true, directories);
    QTRY_VERIFY_WITH_TIMEOUT(!answers.summary.isEmpty(), 10000);
    QCOMPARE(finished.size(), 1);
    QVERIFY(inFlight >= 0);
    if (directories) {
        QVERIFY2(answers.summary.contains(
                     QStringLiteral("Stopped after %1 of 5 files").arg(inFlight + 1)),
                 qPrintable(answers.summary));
        // In path order: a, b_broken, c/deep/d, c/inner, e_blocked.
        const QStringList order = {"a", "b_broken", "c/deep/d", "c/inner", "e_blocked"};
        for (const char *name : {"a", "c/deep/d", "c/inner"})
            QCOMPARE(QFileInfo::exists(path("tree/" + QString(name) + ".rigj")),
                     order.indexOf(QString(name)) <= inFlight);
    } else {
        QVERIFY2(answers.summary.contains("converted 3, failed 0"), qPrintable(answers.summary));
        QVERIFY(!answers.summary.contains("Stopped"));
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QTRY_VERIFY(!dialog);
}

QTEST_MAIN(TestBatchConvert)
#include "tst_batchconvert.moc"
