// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/variables/tagspanel.h"

#include "canvas/editorsession.h"
#include "meta/editvaluelineholdercommand.h"
#include "meta/metaowner.h"
#include "meta/tagchangecommand.h"
#include "meta/tagmanager.h"
#include "meta/valkey.h"
#include "meta/valuelineholder.h"
#include "model/animation.h"
#include "model/entity.h"
#include "model/naming.h"
#include "model/rigxdata.h"
#include "ui/variables/ownerpicker.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <utility>

namespace Morvane {

namespace {

/// `holder` without `uid` in any tag key; false when no key listed it.
bool withoutTag(const ValueLineHolder &holder, int uid, ValueLineHolder *result)
{
    *result = holder;
    TagLine &line = result->tagLine();
    bool found = false;
    for (int i = 0; i < line.keyCount(); ++i) {
        auto *key = static_cast<TagKey *>(line.key(i));
        if (key->state().containsId(uid)) {
            key->state().removeId(uid);
            found = true;
        }
    }
    return found;
}

} // namespace

TagsPanel::TagsPanel(EditorSession *session, QWidget *parent)
    : QWidget(parent)
    , mSession(session)
{
    mOwner = new OwnerPicker(session);
    mOwner->setObjectName(QStringLiteral("owner"));
    mList = new QListWidget;
    mList->setObjectName(QStringLiteral("tags"));
    mList->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);

    auto *ownerRow = new QHBoxLayout;
    ownerRow->addWidget(new QLabel(tr("Tags of")));
    ownerRow->addWidget(mOwner, 1);
    auto *buttons = new QHBoxLayout;
    for (const auto &[name, text] : {std::pair{"addTag", QT_TR_NOOP("Add")},
                                     std::pair{"renameTag", QT_TR_NOOP("Rename")},
                                     std::pair{"deleteTag", QT_TR_NOOP("Delete")}}) {
        auto *button = new QPushButton(tr(text));
        button->setObjectName(QLatin1String(name));
        buttons->addWidget(button);
    }
    buttons->addStretch();
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(6, 6, 6, 6);
    column->addLayout(ownerRow);
    column->addWidget(new QLabel(tr("Ticked tags are on at the current time.")));
    column->addWidget(mList, 1);
    column->addLayout(buttons);

    connect(button(QStringLiteral("addTag")), &QPushButton::clicked, this, &TagsPanel::addTag);
    connect(button(QStringLiteral("renameTag")), &QPushButton::clicked, this, [this] {
        if (QListWidgetItem *item = mList->currentItem())
            mList->editItem(item);
    });
    connect(button(QStringLiteral("deleteTag")), &QPushButton::clicked, this,
            &TagsPanel::deleteTag);
    connect(mOwner, &OwnerPicker::ownerChanged, this, &TagsPanel::refresh);
    // The list is rebuilt after each change: act once the item's signal returned.
    connect(mList, &QListWidget::itemChanged, this, [this](QListWidgetItem *item) {
        if (mUpdating)
            return;
        const int uid = item->data(Qt::UserRole).toInt();
        const QString text = item->text();
        const bool on = item->checkState() == Qt::Checked;
        const bool renamed = text != item->data(Qt::UserRole + 1).toString();
        QMetaObject::invokeMethod(
            this,
            [this, uid, text, on, renamed] {
                if (renamed)
                    renameTag(uid, text);
                else
                    switchTag(uid, on);
            },
            Qt::QueuedConnection);
    });
    if (session) {
        // Playing moves the time every frame: only the ticks are read again.
        connect(session, &EditorSession::timeChanged, this, &TagsPanel::refreshChecks);
        connect(session, &EditorSession::documentEdited, this, &TagsPanel::refresh);
        connect(session, &EditorSession::documentChanged, this, &TagsPanel::refresh);
    }
    refresh();
}

QPushButton *TagsPanel::button(const QString &objectName) const
{
    return findChild<QPushButton *>(objectName);
}

void TagsPanel::refresh()
{
    const QScopedValueRollback<bool> guard(mUpdating, true);
    const int keptRow = mList->currentRow();
    mList->clear();
    RigxData *document = mSession ? mSession->document() : nullptr;
    setEnabled(document != nullptr);
    if (!document)
        return;
    const bool checkable = mSession->currentAnimation() != nullptr;
    for (const Tag &tag : document->tagManager().tags()) {
        auto *item = new QListWidgetItem(tag.name(), mList);
        item->setData(Qt::UserRole, tag.uid());
        item->setData(Qt::UserRole + 1, tag.name());
        Qt::ItemFlags flags = item->flags() | Qt::ItemIsEditable;
        if (checkable)
            flags |= Qt::ItemIsUserCheckable;
        item->setFlags(flags);
        item->setCheckState(Qt::Unchecked);
    }
    refreshChecks();
    if (keptRow >= 0 && keptRow < mList->count())
        mList->setCurrentRow(keptRow);
    button(QStringLiteral("renameTag"))->setEnabled(mList->count() > 0);
    button(QStringLiteral("deleteTag"))->setEnabled(mList->count() > 0);
}

void TagsPanel::refreshChecks()
{
    const QScopedValueRollback<bool> guard(mUpdating, true);
    const Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    const MetaOwner owner = mOwner->linesOwner();
    const ValueLineHolder *holder = !animation ? nullptr
                                    : owner.isObject() ? animation->objectLineHolder(owner.objectIndex)
                                                       : &animation->ownLineHolder();
    const TagState state = holder ? holder->tagStateFromTime(mSession->currentTime(),
                                                             animation->isLooping())
                                  : TagState();
    for (int row = 0; row < mList->count(); ++row) {
        QListWidgetItem *item = mList->item(row);
        item->setCheckState(state.containsId(item->data(Qt::UserRole).toInt()) ? Qt::Checked
                                                                               : Qt::Unchecked);
    }
}

void TagsPanel::addTag()
{
    RigxData *document = mSession ? mSession->document() : nullptr;
    if (!document)
        return;
    TagManager &tags = document->tagManager();
    tags.addTag(uniqueName(tr("tag"), tags.tagsToStringList()), document);
    refresh();
    mList->setCurrentRow(mList->count() - 1);
}

void TagsPanel::renameTag(int uid, const QString &name)
{
    RigxData *document = mSession ? mSession->document() : nullptr;
    if (document)
        document->tagManager().renameTag(uid, name.trimmed(), document);
    refresh();
}

void TagsPanel::deleteTag()
{
    RigxData *document = mSession ? mSession->document() : nullptr;
    QListWidgetItem *item = mList->currentItem();
    if (!document || !item)
        return;
    const int uid = item->data(Qt::UserRole).toInt();
    TagManager &tags = document->tagManager();
    if (tags.indexOfTag(uid) < 0)
        return;
    TagManager after = tags;
    after.removeTag(uid, nullptr);
    // One step: the list without the tag, and every tag line of every
    // animation without it.
    auto *step = new QUndoCommand(tr("tag deleted"));
    new TagChangeCommand(document, tags, after, step);
    for (int e = 0; e < document->entityCount(); ++e) {
        Entity *entity = document->entity(e);
        for (int a = 0; a < entity->animationCount(); ++a) {
            const Animation *animation = entity->animation(a);
            ValueLineHolder changed;
            if (withoutTag(animation->ownLineHolder(), uid, &changed))
                new EditValueLineHolderCommand(document, MetaOwner::forAnimation(animation),
                                               animation->ownLineHolder(), changed,
                                               tr("tag deleted"), step);
            for (const auto &[objectIndex, holder] : animation->objectLineHolders()) {
                if (withoutTag(holder, uid, &changed))
                    new EditValueLineHolderCommand(
                        document, MetaOwner::forAnimationObject(animation, objectIndex), holder,
                        changed, tr("tag deleted"), step);
            }
        }
    }
    RigxData::pushUndo(document, step);
    refresh();
}

void TagsPanel::switchTag(int uid, bool on)
{
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    RigxData *document = mSession ? mSession->document() : nullptr;
    if (!animation) {
        refresh();
        return;
    }
    const MetaOwner owner = mOwner->linesOwner();
    ValueLineHolder *holder = owner.lineHolder(document);
    if (!holder) {
        refresh();
        return;
    }
    const int time = mSession->currentTime();
    TagState state = holder->tagStateFromTime(time, animation->isLooping());
    if (state.containsId(uid) == on) {
        refresh();
        return;
    }
    if (on)
        state.addId(uid);
    else
        state.removeId(uid);
    std::unique_ptr<ValKey> key;
    if (const ValKey *existing = holder->tagLine().keyAtTime(time))
        key = existing->clone();
    else
        key = std::make_unique<TagKey>(time);
    static_cast<TagKey *>(key.get())->state().setIds(state.ids());
    if (!holder->setKeyCommand(document, owner, LineId::tagLine(), std::move(key), time))
        refresh();
}

} // namespace Morvane
