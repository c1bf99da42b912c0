// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "autosaver.h"

#include "io/xmlprojectwriter.h"
#include "model/rigxdata.h"
#include "morvanesettings.h"
#include "projectnaming.h"

#include <QBuffer>
#include <QDir>
#include <QSaveFile>
#include <QStatusBar>
#include <QThread>
#include <QTimer>
#include <QUndoStack>

#include <memory>

namespace Morvane {

AutoSaver::AutoSaver(RigxData *document, QUndoStack *undoStack, QStatusBar *statusBar,
                     QObject *parent)
    : QObject(parent)
    , mDocument(document)
    , mStatusBar(statusBar)
    , mTimer(new QTimer(this))
{
    mTimer->setObjectName("autoSaveTimer");
    connect(mTimer, &QTimer::timeout, this, &AutoSaver::start);
    if (undoStack)
        connect(undoStack, &QUndoStack::indexChanged, this, [this] { ++mChangeCount; });
    applySettings();
}

AutoSaver::~AutoSaver()
{
    if (mThread)
        mThread->wait();
}

void AutoSaver::setSaveOptions(std::function<ProjectSaveOptions()> options)
{
    mSaveOptions = std::move(options);
}

void AutoSaver::applySettings()
{
    if (MorvaneSettings::autoSaveEnabled && MorvaneSettings::autoSaveInterval > 0) {
        mTimer->setInterval(MorvaneSettings::autoSaveInterval * 60000);
        mTimer->start();
    } else {
        mTimer->stop();
    }
}

bool AutoSaver::start()
{
    if (!mDocument || mDocument->projectDirectory().isEmpty())
        return false;
    if (mRunning || MorvaneSettings::suppressAutoSave())
        return false;

    const QString target = mDocument->projectDirectory() + QLatin1Char('/')
                           + autoSaveFileName(mDocument->filePath());
    MorvaneSettings::startSuppressAutoSave();
    mRunning = true;
    showStatus(1, 0);

    // The snapshot is the finished file in memory, taken on this thread so the
    // document is never read while it changes; only the disk write, the slow
    // part, runs on the worker.
    auto snapshot = std::make_shared<QByteArray>();
    {
        QBuffer buffer(snapshot.get());
        buffer.open(QIODevice::WriteOnly);
        emit snapshotStarted();
        XmlProjectWriter::write(*mDocument, &buffer,
                                mSaveOptions ? mSaveOptions() : ProjectSaveOptions());
        emit snapshotTaken();
    }
    showStatus(2, 50);
    const quint64 changeCount = mChangeCount;
    auto ok = std::make_shared<bool>(false);
    QThread *worker = QThread::create([snapshot, target, ok] {
        QSaveFile file(target);
        *ok = file.open(QIODevice::WriteOnly) && file.write(*snapshot) == snapshot->size()
              && file.commit();
    });
    // Owned, so a copy still being written when the saver goes is waited for
    // and then deleted with it.
    worker->setParent(this);
    mThread = worker;
    connect(worker, &QThread::finished, this, [this, worker, target, ok, changeCount] {
        worker->deleteLater();
        finish(target, *ok, changeCount);
    });
    worker->start(QThread::LowPriority);
    return true;
}

void AutoSaver::finish(const QString &path, bool ok, quint64 changeCount)
{
    mRunning = false;
    MorvaneSettings::endSuppressAutoSave();
    emit finished(path, ok);
    if (!ok) {
        showMessage(tr("AutoSave failed: cannot write %1").arg(QDir::toNativeSeparators(path)),
                    5000);
        return;
    }
    if (changeCount != mChangeCount) {
        // The project changed while the copy was written: it is already stale.
        showMessage(tr("Changes made. Restarting AutoSave..."), 1500);
        start();
        return;
    }
    showStatus(3, 100);
}

void AutoSaver::showStatus(int dots, int percent)
{
    if (mStatusBar && mStatusBar->currentMessage() == tr("Changes made. Restarting AutoSave..."))
        return;
    QString text = tr("AutoSaving") + QString(dots, QLatin1Char('.'));
    if (percent >= 0)
        text += QStringLiteral(" (") + QString::number(percent) + QStringLiteral("%)");
    showMessage(text, 400);
}

void AutoSaver::showMessage(const QString &text, int timeout)
{
    if (mStatusBar)
        mStatusBar->showMessage(text, timeout);
}

} // namespace Morvane
