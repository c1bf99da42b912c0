// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QApplication>
#include <QCoreApplication>
#include <QSettings>
#include <QStandardPaths>
#include <QTimer>
#include <QWidget>

#include <functional>

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

// While alive, runs `answer` once on the next modal widget that opens (a
// message box or a dialog started with exec()). Scoped so that a question
// left unasked cannot be answered in a later test.
class ModalAnswerer
{
public:
    explicit ModalAnswerer(std::function<void(QWidget *)> answer)
        : mAnswer(std::move(answer))
    {
        mTimer.setInterval(10);
        QObject::connect(&mTimer, &QTimer::timeout, &mTimer, [this] {
            if (QWidget *modal = QApplication::activeModalWidget()) {
                mTimer.stop();
                mAnswered = true;
                mAnswer(modal);
            }
        });
        mTimer.start();
    }

    bool answered() const { return mAnswered; }

private:
    std::function<void(QWidget *)> mAnswer;
    QTimer mTimer;
    bool mAnswered = false;
};

} // namespace Morvane::Test
