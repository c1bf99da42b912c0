// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "updatecheckchoice.h"

#include <QButtonGroup>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace Morvane {

namespace {

QLabel *explanation(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    QFont font = label->font();
    font.setItalic(true);
    label->setFont(font);
    label->setWordWrap(true);
    label->setContentsMargins(24, 0, 0, 6);
    return label;
}

} // namespace

UpdateCheckChoice::UpdateCheckChoice(QWidget *parent)
    : QWidget(parent)
    , mGroup(new QButtonGroup(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);

    auto *stable = new QRadioButton(
        tr("Automatically check for stable updates when I load Morvane"), this);
    stable->setObjectName("stableRadio");
    auto *all = new QRadioButton(
        tr("Automatically check for stable and beta updates when I load Morvane"), this);
    all->setObjectName("allRadio");
    auto *never = new QRadioButton(tr("Don't automatically check for updates."), this);
    never->setObjectName("neverRadio");
    mGroup->addButton(stable, 1);
    mGroup->addButton(all, 2);
    mGroup->addButton(never, 3);

    layout->addWidget(stable);
    layout->addWidget(
        explanation(tr("Only check for stable updates already tested by the community"), this));
    layout->addWidget(all);
    layout->addWidget(explanation(
        tr("Check for all updates.  Get new features sooner, but before they've been tested "
           "for bugs.  Help test and get more frequent updates."),
        this));
    layout->addWidget(never);

    connect(mGroup, &QButtonGroup::idClicked, this, &UpdateCheckChoice::choiceChanged);
}

int UpdateCheckChoice::choice() const
{
    const int id = mGroup->checkedId();
    return id < 0 ? 0 : id;
}

void UpdateCheckChoice::setChoice(int choice)
{
    if (QAbstractButton *button = mGroup->button(choice))
        button->setChecked(true);
}

} // namespace Morvane
