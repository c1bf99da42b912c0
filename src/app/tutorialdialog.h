// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>

namespace Morvane {

// A short getting-started guide, shown at start-up until the user turns it
// off ("showVideoHelpOnStartup"). Non-modal, deletes itself on close.
class TutorialDialog : public QDialog
{
    Q_OBJECT

public:
    explicit TutorialDialog(QWidget *parent = nullptr);
};

} // namespace Morvane
