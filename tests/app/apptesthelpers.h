// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "io/projectfile.h"
#include "model/entity.h"
#include "model/rigxdata.h"
#include "morvanesettings.h"
#include "testfiles.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QMessageBox>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QUndoCommand>
#include <QWidget>

#include <functional>
#include <memory>

namespace Morvane::Test {

// Points the settings store at a private test location, empties it, and
// stores the answers that keep start-up free of modal questions.
inline void useTestSettings()
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setOrganizationName(QStringLiteral("Tallowcraft"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("tallowcraft.org"));
    QCoreApplication::setApplicationName(QStringLiteral("Morvane"));
    QSettings store;
    store.clear();
    store.setValue("updateCheckSettings", 3);
    store.setValue("showVideoHelpOnStartup", false);
    store.sync();
}

// What every shell test starts from: the test settings, the options at their
// defaults and an empty folder of its own. Call init() and cleanup() from the
// test class's slots of those names.
class AppFixture
{
public:
    void init()
    {
        useTestSettings();
        MorvaneSettings::resetToDefaults();
        mDir = std::make_unique<QTemporaryDir>();
    }
    void cleanup() { mDir.reset(); }
    QString path(const QString &name) const { return mDir->filePath(name); }
    QString folder() const { return mDir->path(); }

private:
    std::unique_ptr<QTemporaryDir> mDir;
};

// Makes the undo stack dirty without touching any document.
inline QUndoCommand *dirtyCommand()
{
    return new QUndoCommand(QStringLiteral("dirty"));
}

// Writes a small valid project (one entity named `entityName`) to `path`.
inline bool writeProject(const QString &path, const QString &entityName = QStringLiteral("hero"))
{
    RigxData document(nullptr, QStringLiteral("r4.1"));
    document.appendEmptyEntity()->setName(entityName);
    return ProjectFile::save(&document, path);
}

using Testing::writeFile;

// The window title for a project at `path` ("[Unsaved Project]" for none).
inline QString windowTitle(const QString &path)
{
    return QStringLiteral("Morvane ") + QString(9, QLatin1Char(' ')) +
           (path.isEmpty() ? QStringLiteral("[Unsaved Project]") : path);
}

// Clicks `button` in a message box (or rejects it) and returns its
// "title|text", or "title|text|informative text" when it has one.
inline QString clickInMessageBox(QWidget *modal,
                                 QMessageBox::StandardButton button = QMessageBox::Ok)
{
    auto *box = qobject_cast<QMessageBox *>(modal);
    if (!box)
        return QString();
    QString text = box->windowTitle() + QLatin1Char('|') + box->text();
    if (!box->informativeText().isEmpty())
        text += QLatin1Char('|') + box->informativeText();
    if (QAbstractButton *target = box->button(button))
        target->click();
    else
        box->reject();
    return text;
}

// While alive, runs `answer` on the next modal widget that opens (a message
// box or a dialog started with exec()), or on every one with `Every`. Scoped
// so that a question left unasked cannot be answered in a later test.
class ModalAnswerer
{
public:
    enum Repeat { Once, Every };

    explicit ModalAnswerer(std::function<void(QWidget *)> answer, Repeat repeat = Once)
        : mAnswer(std::move(answer))
    {
        mTimer.setInterval(10);
        QObject::connect(&mTimer, &QTimer::timeout, &mTimer, [this, repeat] {
            if (QWidget *modal = QApplication::activeModalWidget()) {
                if (repeat == Once)
                    mTimer.stop();
                ++mCount;
                mAnswer(modal);
            }
        });
        mTimer.start();
    }

    bool answered() const { return mCount > 0; }
    int count() const { return mCount; }

private:
    std::function<void(QWidget *)> mAnswer;
    QTimer mTimer;
    int mCount = 0;
};

} // namespace Morvane::Test
