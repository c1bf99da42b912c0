// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>

namespace Morvane {

class UpdateCheckChoice;

// Asked once at start-up while no update channel has been chosen. Accepting
// stores the choice under "updateCheckSettings".
class UpdateCheckOptionsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit UpdateCheckOptionsDialog(QWidget *parent = nullptr);

    void accept() override;

private:
    UpdateCheckChoice *mChoice;
};

} // namespace Morvane
