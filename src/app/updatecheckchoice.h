// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QWidget>

class QButtonGroup;

namespace Morvane {

// The three update-check radio buttons with their explanations, shared by the
// settings dialog and the start-up question. Values: 1 stable, 2 stable and
// beta, 3 never; 0 means none is checked.
class UpdateCheckChoice : public QWidget
{
    Q_OBJECT

public:
    explicit UpdateCheckChoice(QWidget *parent = nullptr);

    int choice() const;
    void setChoice(int choice);

signals:
    void choiceChanged(int choice);

private:
    QButtonGroup *mGroup;
};

} // namespace Morvane
