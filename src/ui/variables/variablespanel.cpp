// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/variables/variablespanel.h"

#include "canvas/editorsession.h"
#include "meta/metaowner.h"
#include "meta/valinfocollection.h"
#include "meta/valkey.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/naming.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "ui/variables/ownerpicker.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTableWidget>
#include <QVBoxLayout>

#include <memory>

namespace Morvane {

namespace {

const VarType kOfferedTypes[] = {VarType::Float, VarType::Int, VarType::String};

QString valueText(const QVariant &value)
{
    return value.typeId() == QMetaType::Double ? QString::number(value.toDouble(), 'g', 10)
                                               : value.toString();
}

} // namespace

VariablesPanel::VariablesPanel(EditorSession *session, QWidget *parent)
    : QWidget(parent)
    , mSession(session)
{
    mOwner = new OwnerPicker(session);
    mOwner->setObjectName(QStringLiteral("owner"));
    mTable = new QTableWidget(0, 4);
    mTable->setObjectName(QStringLiteral("variables"));
    mTable->setHorizontalHeaderLabels({tr("Name"), tr("Type"), tr("Default"), tr("Value now")});
    mTable->verticalHeader()->hide();
    mTable->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    // The type is a box in each row, which sizing to contents does not see.
    mTable->horizontalHeader()->setSectionResizeMode(TypeColumn, QHeaderView::Fixed);
    mTable->setColumnWidth(TypeColumn, mTable->fontMetrics().horizontalAdvance(QStringLiteral("string"))
                                           + 48);
    mTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    mTable->setSelectionMode(QAbstractItemView::SingleSelection);
    mAdd = new QPushButton(tr("Add"));
    mAdd->setObjectName(QStringLiteral("addVariable"));
    mRemove = new QPushButton(tr("Remove"));
    mRemove->setObjectName(QStringLiteral("removeVariable"));

    auto *ownerRow = new QHBoxLayout;
    ownerRow->addWidget(new QLabel(tr("Variables of")));
    ownerRow->addWidget(mOwner, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(mAdd);
    buttons->addWidget(mRemove);
    buttons->addStretch();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(6, 6, 6, 6);
    column->addLayout(ownerRow);
    column->addWidget(mTable, 1);
    column->addLayout(buttons);

    connect(mOwner, &OwnerPicker::ownerChanged, this, &VariablesPanel::refresh);
    connect(mAdd, &QPushButton::clicked, this, &VariablesPanel::addVariable);
    connect(mRemove, &QPushButton::clicked, this, &VariablesPanel::removeVariable);
    // The table is rebuilt after each change, so the edit is acted on once
    // the table's own signal has returned.
    connect(mTable, &QTableWidget::cellChanged, this, [this](int row, int column) {
        if (mUpdating)
            return;
        const QString text = mTable->item(row, column)->text();
        QMetaObject::invokeMethod(
            this, [this, row, column, text] { cellEdited(row, column, text); },
            Qt::QueuedConnection);
    });
    if (session) {
        // Playing moves the time every frame: only the values are read again.
        connect(session, &EditorSession::timeChanged, this, &VariablesPanel::refreshValues);
        connect(session, &EditorSession::documentEdited, this, &VariablesPanel::refresh);
    }
    refresh();
}

ValInfoCollection *VariablesPanel::collection() const
{
    if (Object *object = mOwner->object())
        return &object->valInfoCollection();
    if (Entity *entity = mOwner->entity())
        return &entity->valInfoCollection();
    return nullptr;
}

void VariablesPanel::refresh()
{
    const QScopedValueRollback<bool> guard(mUpdating, true);
    const int keptRow = mTable->currentRow();
    mTable->setRowCount(0);
    const ValInfoCollection *infos = collection();
    setEnabled(infos != nullptr);
    if (!infos)
        return;
    mTable->setRowCount(infos->infoCount());
    for (int row = 0; row < infos->infoCount(); ++row) {
        const ValInfo &info = *infos->infoFromIndex(row);
        auto *name = new QTableWidgetItem(info.name);
        name->setData(Qt::UserRole, info.id);
        mTable->setItem(row, NameColumn, name);

        auto *type = new QComboBox;
        for (VarType t : kOfferedTypes)
            type->addItem(varTypeToString(t), int(t));
        if (type->findData(int(info.type)) < 0)
            type->addItem(varTypeToString(info.type), int(info.type));
        type->setCurrentIndex(type->findData(int(info.type)));
        const int id = info.id;
        connect(type, &QComboBox::activated, this, [this, id, type](int index) {
            const auto chosen = VarType(type->itemData(index).toInt());
            QMetaObject::invokeMethod(
                this, [this, id, chosen] { setType(id, chosen); }, Qt::QueuedConnection);
        });
        mTable->setCellWidget(row, TypeColumn, type);
        mTable->setItem(row, DefaultColumn, new QTableWidgetItem(valueText(info.defaultValue)));
        auto *value = new QTableWidgetItem;
        if (!mSession->currentAnimation())
            value->setFlags(value->flags() & ~Qt::ItemIsEditable);
        mTable->setItem(row, ValueColumn, value);
    }
    refreshValues();
    if (keptRow >= 0 && keptRow < mTable->rowCount())
        mTable->setCurrentCell(keptRow, NameColumn);
    mRemove->setEnabled(mTable->rowCount() > 0);
}

void VariablesPanel::refreshValues()
{
    const QScopedValueRollback<bool> guard(mUpdating, true);
    const ValInfoCollection *infos = collection();
    if (!infos || infos->infoCount() != mTable->rowCount())
        return;
    // Reading must not give an object a holder of its own, so no lookup
    // that creates one.
    const Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    const MetaOwner owner = mOwner->linesOwner();
    const ValueLineHolder *holder = !animation ? nullptr
                                    : owner.isObject() ? animation->objectLineHolder(owner.objectIndex)
                                                       : &animation->ownLineHolder();
    const int time = mSession->currentTime();
    for (int row = 0; row < infos->infoCount(); ++row) {
        const ValInfo &info = *infos->infoFromIndex(row);
        const QVariant now = holder ? holder->valueFromTime({info.type, info.id}, time,
                                                            animation->length(),
                                                            animation->isLooping(),
                                                            info.defaultValue)
                                    : info.defaultValue;
        if (QTableWidgetItem *value = mTable->item(row, ValueColumn))
            value->setText(valueText(now));
    }
}

void VariablesPanel::cellEdited(int row, int column, const QString &text)
{
    const ValInfoCollection *infos = collection();
    const ValInfo *info = infos ? infos->infoFromIndex(row) : nullptr;
    if (!info)
        return;
    const int id = info->id;
    switch (column) {
    case NameColumn:
        if (!rename(id, text.trimmed()))
            refresh();
        break;
    case DefaultColumn:
        if (!setDefault(id, text))
            refresh();
        break;
    case ValueColumn:
        setValueNow(id, text);
        break;
    default:
        break;
    }
}

bool VariablesPanel::rename(int varId, const QString &name)
{
    ValInfoCollection *infos = collection();
    if (Object *object = mOwner->object())
        return infos->renameVal(varId, name, object);
    return infos->renameVal(varId, name, mOwner->entity());
}

bool VariablesPanel::setDefault(int varId, const QVariant &value)
{
    ValInfoCollection *infos = collection();
    if (Object *object = mOwner->object())
        return infos->editDefaultVal(varId, value, object);
    return infos->editDefaultVal(varId, value, mOwner->entity());
}

void VariablesPanel::setType(int varId, VarType type)
{
    ValInfoCollection *infos = collection();
    if (!infos)
        return;
    if (Object *object = mOwner->object())
        infos->editVarType(varId, type, object);
    else
        infos->editVarType(varId, type, mOwner->entity());
    refresh();
}

void VariablesPanel::setValueNow(int varId, const QVariant &value)
{
    const ValInfoCollection *infos = collection();
    const ValInfo *info = infos ? infos->infoFromId(varId) : nullptr;
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    RigxData *document = mSession ? mSession->document() : nullptr;
    const MetaOwner owner = mOwner->linesOwner();
    ValueLineHolder *holder = info && animation ? owner.lineHolder(document) : nullptr;
    if (!holder) {
        refresh();
        return;
    }
    const int time = mSession->currentTime();
    const LineId id{info->type, info->id};
    // A key already at this time keeps its curve; only the value changes.
    std::unique_ptr<ValKey> key;
    const ValLine *line = holder->line(id);
    if (const ValKey *existing = line ? line->keyAtTime(time) : nullptr)
        key = existing->clone();
    else
        key = ValKey::create(info->type, time);
    if (!key) {
        refresh();
        return;
    }
    key->setValue(value);
    if (!holder->setKeyCommand(document, owner, id, std::move(key), time))
        refresh();
}

void VariablesPanel::addVariable()
{
    ValInfoCollection *infos = collection();
    if (!infos)
        return;
    const QString name = uniqueName(tr("variable"), infos->namesToStringList());
    if (Object *object = mOwner->object())
        infos->addValInfo(name, 0.0, VarType::Float, object);
    else
        infos->addValInfo(name, 0.0, VarType::Float, mOwner->entity());
    refresh();
    mTable->setCurrentCell(mTable->rowCount() - 1, NameColumn);
}

void VariablesPanel::removeVariable()
{
    ValInfoCollection *infos = collection();
    const ValInfo *info = infos ? infos->infoFromIndex(mTable->currentRow()) : nullptr;
    if (!info)
        return;
    if (Object *object = mOwner->object())
        infos->removeValInfo(info->id, object);
    else
        infos->removeValInfo(info->id, mOwner->entity());
    refresh();
}

} // namespace Morvane
