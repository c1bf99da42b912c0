// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/charmaps/charmapspanel.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "model/charactermap.h"
#include "model/commands/charmapcommands.h"
#include "model/entity.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/rigxdata.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace Morvane {

namespace {

QString fileLabel(const Address &address)
{
    const File *file = address.isEmpty() ? nullptr : address.file(false);
    if (!file)
        return QCoreApplication::translate("CharMapsPanel", "(hidden)");
    return file->name();
}

QPushButton *makeButton(const QString &objectName, const QString &text, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(objectName);
    return button;
}

} // namespace

CharMapsPanel::CharMapsPanel(EditorSession *session, QWidget *parent)
    : QWidget(parent)
    , mSession(session)
{
    mMaps = new QTreeWidget;
    mMaps->setObjectName(QStringLiteral("maps"));
    mMaps->setColumnCount(2);
    mMaps->setHeaderLabels({tr("Map (tick to show)"), tr("Order")});
    mMaps->setRootIsDecorated(false);
    mMaps->header()->setStretchLastSection(false);
    mMaps->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    mMaps->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    mMaps->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);

    auto *mapButtons = new QHBoxLayout;
    mapButtons->addWidget(makeButton(QStringLiteral("newMap"), tr("New"), this));
    mapButtons->addWidget(makeButton(QStringLiteral("renameMap"), tr("Rename"), this));
    mapButtons->addWidget(makeButton(QStringLiteral("deleteMap"), tr("Delete"), this));
    mapButtons->addStretch();

    mInstructions = new QTreeWidget;
    mInstructions->setObjectName(QStringLiteral("instructions"));
    mInstructions->setColumnCount(2);
    mInstructions->setHeaderLabels({tr("Image"), tr("Shown as")});
    mInstructions->setRootIsDecorated(false);
    mInstructions->header()->setSectionResizeMode(QHeaderView::Stretch);
    // Images dragged from the palette: onto a swap, they become what it shows;
    // below the swaps, the image is swapped for the target picked underneath.
    mInstructions->viewport()->setAcceptDrops(true);
    mInstructions->viewport()->installEventFilter(this);
    mInstructions->setToolTip(tr("Drop an image from the Palette on a swap to show it instead, "
                                 "or below the swaps to add one"));

    mSource = new QComboBox;
    mSource->setObjectName(QStringLiteral("source"));
    mTarget = new QComboBox;
    mTarget->setObjectName(QStringLiteral("target"));
    for (QComboBox *box : {mSource, mTarget}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(8);
    }
    auto *addRow = new QHBoxLayout;
    addRow->addWidget(mSource, 1);
    addRow->addWidget(new QLabel(QStringLiteral("→")));
    addRow->addWidget(mTarget, 1);
    auto *instructionButtons = new QHBoxLayout;
    instructionButtons->addWidget(makeButton(QStringLiteral("addInstruction"), tr("Swap"), this));
    instructionButtons->addWidget(
        makeButton(QStringLiteral("removeInstruction"), tr("Remove swap"), this));
    instructionButtons->addStretch();

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(6, 6, 6, 6);
    column->addWidget(mMaps, 2);
    column->addLayout(mapButtons);
    column->addWidget(new QLabel(tr("Images this map swaps")));
    column->addWidget(mInstructions, 3);
    column->addLayout(addRow);
    column->addLayout(instructionButtons);

    connect(button(QStringLiteral("newMap")), &QPushButton::clicked, this, &CharMapsPanel::addMap);
    connect(button(QStringLiteral("renameMap")), &QPushButton::clicked, this, [this] {
        if (QTreeWidgetItem *item = mMaps->currentItem())
            mMaps->editItem(item, 0);
    });
    connect(button(QStringLiteral("deleteMap")), &QPushButton::clicked, this,
            &CharMapsPanel::deleteMap);
    connect(button(QStringLiteral("addInstruction")), &QPushButton::clicked, this,
            &CharMapsPanel::addInstruction);
    connect(button(QStringLiteral("removeInstruction")), &QPushButton::clicked, this,
            &CharMapsPanel::removeInstruction);
    connect(mMaps, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        if (mUpdating)
            return;
        mCurrentName = item ? item->data(0, Qt::UserRole).toString() : QString();
        showInstructions();
    });
    // The list is rebuilt after a change, so what the item says is read now
    // and acted on once the item's own signal has returned.
    connect(mMaps, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *item, int column) {
        if (mUpdating || column != 0)
            return;
        const QString name = item->data(0, Qt::UserRole).toString();
        const QString text = item->text(0);
        const bool checked = item->checkState(0) == Qt::Checked;
        QMetaObject::invokeMethod(
            this,
            [this, name, text, checked] {
                if (text != name)
                    renameMap(name, text);
                else
                    setActive(name, checked);
            },
            Qt::QueuedConnection);
    });

    if (session) {
        for (auto signal : {&EditorSession::documentChanged, &EditorSession::animationChanged,
                            &EditorSession::documentEdited})
            connect(session, signal, this, &CharMapsPanel::refresh);
    }
    refresh();
}

QPushButton *CharMapsPanel::button(const QString &objectName) const
{
    return findChild<QPushButton *>(objectName);
}

QString CharMapsPanel::currentMapName() const
{
    return currentMap() ? mCurrentName : QString();
}

Entity *CharMapsPanel::entity() const
{
    return mSession ? mSession->currentEntity() : nullptr;
}

const CharacterMap *CharMapsPanel::currentMap() const
{
    const Entity *e = entity();
    return e ? e->charMapFromName(mCurrentName) : nullptr;
}

void CharMapsPanel::refresh()
{
    const QScopedValueRollback<bool> guard(mUpdating, true);
    mMaps->clear();
    Entity *e = entity();
    setEnabled(e != nullptr);
    if (e) {
        const QList<int> &active = e->activeMap();
        QTreeWidgetItem *current = nullptr;
        for (const CharacterMap &map : e->charMaps()) {
            auto *item = new QTreeWidgetItem(mMaps);
            item->setText(0, map.name());
            item->setData(0, Qt::UserRole, map.name());
            item->setFlags(item->flags() | Qt::ItemIsEditable | Qt::ItemIsUserCheckable);
            const int order = int(active.indexOf(map.id()));
            item->setCheckState(0, order >= 0 ? Qt::Checked : Qt::Unchecked);
            item->setText(1, order >= 0 ? QString::number(order + 1) : QString());
            item->setTextAlignment(1, Qt::AlignCenter);
            if (map.name() == mCurrentName)
                current = item;
        }
        if (!current && mMaps->topLevelItemCount() > 0)
            current = mMaps->topLevelItem(0);
        mMaps->setCurrentItem(current);
        mCurrentName = current ? current->data(0, Qt::UserRole).toString() : QString();
    } else {
        mCurrentName.clear();
    }
    fillFileBox(mSource, false);
    fillFileBox(mTarget, true);
    showInstructions();
}

void CharMapsPanel::fillFileBox(QComboBox *box, bool withHidden)
{
    const QVariant kept = box->currentData();
    const QSignalBlocker blocker(box);
    box->clear();
    if (withHidden)
        box->addItem(tr("(hidden)"), QVariant());
    RigxData *document = mSession ? mSession->document() : nullptr;
    for (int f = 0; document && f < document->folderCount(); ++f) {
        const Folder *folder = document->folder(f);
        for (int i = 0; i < folder->fileCount(); ++i) {
            const File *file = folder->file(i);
            if (file->type() == File::Image)
                box->addItem(file->name(), file->address().toVariant());
        }
    }
    const int index = box->findData(kept);
    box->setCurrentIndex(index >= 0 ? index : 0);
}

void CharMapsPanel::showInstructions()
{
    mInstructions->clear();
    const CharacterMap *map = currentMap();
    const bool hasMap = map != nullptr;
    for (const QString &name : {QStringLiteral("renameMap"), QStringLiteral("deleteMap"),
                                QStringLiteral("addInstruction"),
                                QStringLiteral("removeInstruction")})
        button(name)->setEnabled(hasMap);
    mInstructions->setEnabled(hasMap);
    mSource->setEnabled(hasMap);
    mTarget->setEnabled(hasMap);
    if (!map)
        return;
    for (int row = 0; row < map->instructionCount(); ++row) {
        const MapInstruction *instruction = map->instruction(row);
        auto *item = new QTreeWidgetItem(mInstructions);
        item->setText(0, fileLabel(instruction->source));
        // Each target is a box of its own: picking another image (or none)
        // changes that one instruction.
        auto *targetBox = new QComboBox;
        fillFileBox(targetBox, true);
        const int index = instruction->hidesImage()
                              ? 0
                              : targetBox->findData(instruction->target.toVariant());
        targetBox->setCurrentIndex(std::max(0, index));
        mInstructions->setItemWidget(item, 1, targetBox);
        connect(targetBox, &QComboBox::activated, this, [this, row, targetBox](int i) {
            // The box goes with the list, which the change rebuilds.
            const QVariant target = targetBox->itemData(i);
            QMetaObject::invokeMethod(
                this, [this, row, target] { retarget(row, Address(mSession->document(), target)); },
                Qt::QueuedConnection);
        });
    }
}

Address CharMapsPanel::droppedImage(const QMimeData *data) const
{
    RigxData *document = mSession ? mSession->document() : nullptr;
    if (!document || !data || !data->hasUrls() || data->urls().size() != 1)
        return Address();
    const QUrl url = data->urls().constFirst();
    const File *file = url.isLocalFile() ? document->file(url.toLocalFile()) : nullptr;
    return file && file->type() == File::Image ? file->address() : Address();
}

bool CharMapsPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != mInstructions->viewport())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto *drag = static_cast<QDropEvent *>(event);
        // The palette adds an image new to the project when the drag starts,
        // so what is dragged is known here.
        if (currentMap() && drag->mimeData()->hasUrls())
            drag->acceptProposedAction();
        else
            drag->ignore();
        return true;
    }
    case QEvent::Drop: {
        auto *drop = static_cast<QDropEvent *>(event);
        const Address image = droppedImage(drop->mimeData());
        const CharacterMap *map = currentMap();
        if (image.isEmpty() || !map) {
            drop->ignore();
            return true;
        }
        drop->acceptProposedAction();
        QTreeWidgetItem *item = mInstructions->itemAt(drop->position().toPoint());
        const int row = item ? mInstructions->indexOfTopLevelItem(item) : -1;
        RigxData *document = mSession->document();
        CharacterMap after = *map;
        if (const MapInstruction *instruction = map->instruction(row)) {
            if (instruction->source == image)
                return true;
            after.addMap(instruction->source, image);
        } else {
            const Address target(document, mTarget->currentData());
            if (target == image)
                return true;
            after.addMap(image, target);
        }
        // After the drop has returned: the change rebuilds the list.
        QMetaObject::invokeMethod(this, [this, after] { push(after); }, Qt::QueuedConnection);
        return true;
    }
    default:
        return QWidget::eventFilter(watched, event);
    }
}

void CharMapsPanel::push(const CharacterMap &after)
{
    Entity *e = entity();
    if (!e || !currentMap())
        return;
    auto *command = new EditCharMapCommand(e, mCurrentName, after);
    if (!command->isValid() || command->isObsolete()) {
        delete command;
        return;
    }
    mCurrentName = after.name();
    RigxData::pushUndo(mSession->document(), command);
    refresh();
}

void CharMapsPanel::addMap()
{
    Entity *e = entity();
    if (!e)
        return;
    const QString name = e->uniqueCharMapName(tr("charMap"));
    mCurrentName = name;
    RigxData::pushUndo(mSession->document(), new AppendCharMapCommand(e, CharacterMap(name)));
    refresh();
}

void CharMapsPanel::renameMap(const QString &name, const QString &text)
{
    Entity *e = entity();
    const CharacterMap *map = e ? e->charMapFromName(name) : nullptr;
    const QString wanted = text.trimmed();
    if (!map || wanted.isEmpty() || wanted == name) {
        refresh();
        return;
    }
    CharacterMap after = *map;
    after.setName(e->uniqueCharMapName(wanted));
    mCurrentName = name;
    push(after);
}

void CharMapsPanel::deleteMap()
{
    Entity *e = entity();
    if (!e || !currentMap())
        return;
    RigxData::pushUndo(mSession->document(), new DeleteCharMapCommand(e, mCurrentName));
    mCurrentName.clear();
    refresh();
}

void CharMapsPanel::setActive(const QString &name, bool active)
{
    Entity *e = entity();
    if (!e || e->isCharMapActive(name) == active)
        return;
    e->makeCharMapActive(name, active);
    if (MorvaneCanvasScene *scene = mSession->scene())
        scene->refresh();
    refresh();
}

void CharMapsPanel::addInstruction()
{
    const CharacterMap *map = currentMap();
    if (!map || mSource->currentIndex() < 0)
        return;
    RigxData *document = mSession->document();
    const Address source(document, mSource->currentData());
    const Address target(document, mTarget->currentData());
    if (source.isEmpty() || source == target)
        return;
    CharacterMap after = *map;
    after.addMap(source, target);
    push(after);
}

void CharMapsPanel::removeInstruction()
{
    const CharacterMap *map = currentMap();
    QTreeWidgetItem *item = mInstructions->currentItem();
    const int row = item ? mInstructions->indexOfTopLevelItem(item) : -1;
    const MapInstruction *instruction = map ? map->instruction(row) : nullptr;
    if (!instruction)
        return;
    CharacterMap after = *map;
    after.removeMap(instruction->source);
    push(after);
}

void CharMapsPanel::retarget(int row, const Address &target)
{
    const CharacterMap *map = currentMap();
    const MapInstruction *instruction = map ? map->instruction(row) : nullptr;
    if (!instruction)
        return;
    CharacterMap after = *map;
    after.addMap(instruction->source, target);
    push(after);
}

} // namespace Morvane
