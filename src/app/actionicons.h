// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QIcon>

namespace Ui {
class MorvaneWindow;
}

namespace Morvane {

// Gives the tool-bar actions their icons: the style's standard ones where it
// has them, small drawn ones otherwise, so the tool bars work without an icon
// theme installed.
class ActionIcons
{
public:
    static void apply(Ui::MorvaneWindow *ui);
    static QIcon swatch(const QColor &color);
    static QIcon applicationIcon();
};

} // namespace Morvane
