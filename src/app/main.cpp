// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "morvanewindow.h"

#include <QApplication>
#include <QPixmap>
#include <QScreen>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const char usage[] =
    "Usage: morvane [options] [project.rigx | project.rigj]\n"
    "\n"
    "Morvane, an editor for 2D skeletal cut-out sprite animation.\n"
    "The last argument, when it names an existing .rigx or .rigj file, is opened.\n"
    "\n"
    "Options:\n"
    "  -h, --help     Show this help and exit.\n"
    "  -v, --version  Show the version and exit.\n"
    "\n"
    "Without a display, run it through a virtual one, e.g.\n"
    "  xvfb-run -a morvane examples/hero/hero.rigx\n";

} // namespace

int main(int argc, char *argv[])
{
    // Answered before the widget application exists, so they work without a
    // display.
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
            std::fputs(usage, stdout);
            return 0;
        }
        if (!std::strcmp(argv[i], "--version") || !std::strcmp(argv[i], "-v")) {
            std::printf("Morvane %s\n", MORVANE_VERSION_STRING);
            return 0;
        }
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Morvane"));
    QApplication::setApplicationVersion(QStringLiteral(MORVANE_VERSION_STRING));
    QApplication::setOrganizationDomain(QStringLiteral("www.tallowcraft.org"));
    QApplication::setOrganizationName(QStringLiteral("Tallowcraft"));

    // A development aid: MORVANE_SCREENSHOT=file.png grabs the whole screen
    // (dialogs included) a moment after start-up and quits.
    const QString screenshot = qEnvironmentVariable("MORVANE_SCREENSHOT");
    if (!screenshot.isEmpty()) {
        bool ok = false;
        int delay = qEnvironmentVariableIntValue("MORVANE_SCREENSHOT_DELAY", &ok);
        QTimer::singleShot(ok ? delay : 2500, [screenshot] {
            QScreen *screen = QGuiApplication::primaryScreen();
            const bool saved = screen && screen->grabWindow(0).save(screenshot, "PNG");
            std::fprintf(saved ? stdout : stderr, "%s %s\n",
                         saved ? "Screenshot written to" : "Error: Cannot write file",
                         qPrintable(screenshot));
            std::fflush(nullptr);
            // Modal start-up questions may still be open; leave at once.
            std::_Exit(saved ? 0 : 1);
        });
    }

    int result = 0;
    {
        Morvane::MorvaneWindow window(QApplication::applicationVersion(),
                                      QCoreApplication::arguments());
        result = QApplication::exec();
    }
    return result;
}
