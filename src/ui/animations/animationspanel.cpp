// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/animations/animationspanel.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "model/animation.h"
#include "model/commands/entitycommands.h"
#include "model/commands/objectcommands.h"
#include "model/entity.h"
#include "model/naming.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "ui/animations/namecleaning.h"
#include "ui/animations/specialclonedialog.h"

#include <QAction>
#include <QComboBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QSpinBox>
#include <QToolBar>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QUndoStack>
#include <QVBoxLayout>

namespace Morvane {

namespace {

// Item data: the entity row, and the animation row or -1 for an entity item.
constexpr int EntityRole = Qt::UserRole;
constexpr int AnimationRole = Qt::UserRole + 1;
constexpr int MaxMilliseconds = 3600000;

} // namespace

AnimationsPanel::AnimationsPanel(EditorSession *session, QWidget *parent)
    : QWidget(parent)
    , mSession(session)
    , mToolBar(new QToolBar(this))
    , mTree(new QTreeWidget(this))
    , mLength(new QSpinBox(this))
    , mLooping(new QComboBox(this))
    , mLoopTo(new QSpinBox(this))
    , mSnapping(new QSpinBox(this))
    , mHint(new QLabel(this))
    , mShown(new QLabel(this))
{
    mToolBar->setIconSize(QSize(16, 16));
    mToolBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    const auto add = [this](const char *name, const QString &text, const QString &tip,
                            void (AnimationsPanel::*slot)()) {
        QAction *a = new QAction(text, this);
        a->setObjectName(QLatin1String(name));
        a->setToolTip(tip);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    QAction *newEntity = add("actionNewEntity", tr("+ Entity"), tr("Add a new entity"),
                             &AnimationsPanel::newEntity);
    QAction *newAnimation = add("actionNewAnimation", tr("+ Animation"),
                                tr("Add a new animation to the picked entity"),
                                &AnimationsPanel::newAnimation);
    QAction *clone = add("actionClone", tr("Clone"), tr("Copy the picked animation"),
                         &AnimationsPanel::clonePicked);
    QAction *special = add("actionSpecialClone", tr("Special Clone..."),
                           tr("Copy the picked animation with its time stretched, shifted or "
                              "reversed"),
                           &AnimationsPanel::specialClonePicked);
    QAction *sub = add("actionAddSubEntity", tr("Add as Sub-entity"),
                       tr("Add the picked entity as a sub-entity object of the shown animation, "
                          "at the current time"),
                       &AnimationsPanel::addSubEntity);
    auto *rename = new QAction(tr("Rename"), this);
    rename->setObjectName(QStringLiteral("actionRename"));
    rename->setToolTip(tr("Rename the picked item (F2)"));
    rename->setShortcut(QKeySequence(Qt::Key_F2));
    rename->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(rename, &QAction::triggered, this, [this] {
        if (QTreeWidgetItem *item = mTree->currentItem())
            mTree->editItem(item);
    });
    QAction *remove = add("actionDelete", tr("Delete"), tr("Delete the picked item (Del)"),
                          &AnimationsPanel::deletePicked);
    remove->setShortcut(QKeySequence::Delete);
    remove->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    mToolBar->addActions({newEntity, newAnimation, clone, special, sub});
    mToolBar->addSeparator();
    mToolBar->addActions({rename, remove});
    addActions({rename, remove});

    mTree->setObjectName(QStringLiteral("animationTree"));
    mTree->setMinimumHeight(80);
    mTree->setHeaderHidden(true);
    mTree->setColumnCount(1);
    mTree->setEditTriggers(QAbstractItemView::EditKeyPressed);
    mTree->setSelectionMode(QAbstractItemView::SingleSelection);
    // Picking an animation shows it: the canvas, the timeline and the fields
    // below always speak of the same animation.
    connect(mTree, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        if (!mRebuilding)
            showAnimation(item);
        pick(item);
    });
    connect(mTree, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *item) {
        if (!mRebuilding)
            renameItem(item);
    });
    connect(mTree, &QTreeWidget::itemDoubleClicked, this,
            [this](QTreeWidgetItem *item) { showAnimation(item); });

    mLength->setObjectName(QStringLiteral("lengthSpin"));
    mLength->setRange(1, MaxMilliseconds);
    mLength->setSuffix(tr(" ms"));
    mLength->setToolTip(tr("Length of the animation in milliseconds"));
    mLooping->setObjectName(QStringLiteral("loopingCombo"));
    mLooping->addItem(tr("No looping"), int(Animation::NoLooping));
    mLooping->addItem(tr("Looping"), int(Animation::Looping));
    mLooping->addItem(tr("Ping-pong"), int(Animation::PingPong));
    mLoopTo->setObjectName(QStringLiteral("loopToSpin"));
    mLoopTo->setRange(0, MaxMilliseconds);
    mLoopTo->setSuffix(tr(" ms"));
    mLoopTo->setToolTip(tr("Time the animation jumps back to when it loops"));
    mSnapping->setObjectName(QStringLiteral("snappingSpin"));
    mSnapping->setRange(1, MaxMilliseconds);
    mSnapping->setSuffix(tr(" ms"));
    mSnapping->setToolTip(tr("Keys moved in the timeline snap to multiples of this interval"));
    // Each field changes its own setting only, so a field never writes back
    // a value it showed of another animation.
    for (QSpinBox *box : {mLength, mLoopTo, mSnapping}) {
        box->setKeyboardTracking(false);
        connect(box, &QSpinBox::valueChanged, this, [this, box](int value) {
            settingsEdited([box, this, value](AnimationSettings &s) {
                (box == mLength ? s.length : box == mLoopTo ? s.loopTo : s.snappingInterval) = value;
            });
        });
    }
    connect(mLooping, &QComboBox::currentIndexChanged, this, [this] {
        const int mode = mLooping->currentData().toInt();
        settingsEdited([mode](AnimationSettings &s) { s.loopingMode = mode; });
    });

    mHint->setObjectName(QStringLiteral("hint"));
    mHint->setWordWrap(true);
    mHint->setContentsMargins(4, 2, 4, 2);
    mShown->setObjectName(QStringLiteral("shownLabel"));
    mShown->setContentsMargins(4, 4, 4, 0);
    auto *form = new QFormLayout;
    form->setContentsMargins(4, 2, 4, 2);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Length"), mLength);
    form->addRow(tr("Looping"), mLooping);
    form->addRow(tr("Loop to"), mLoopTo);
    form->addRow(tr("Snapping"), mSnapping);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(mToolBar);
    layout->addWidget(mHint);
    layout->addWidget(mTree, 1);
    layout->addWidget(mShown);
    layout->addLayout(form);

    mRebuildTimer.setSingleShot(true);
    mRebuildTimer.setInterval(0);
    connect(&mRebuildTimer, &QTimer::timeout, this, &AnimationsPanel::rebuild);
    if (session) {
        connect(session, &EditorSession::documentChanged, this, &AnimationsPanel::scheduleRebuild);
        connect(session, &EditorSession::documentEdited, this, &AnimationsPanel::scheduleRebuild);
        connect(session, &EditorSession::animationChanged, this, &AnimationsPanel::scheduleRebuild);
        // The fields speak of the shown animation at once, before the list
        // catches up.
        connect(session, &EditorSession::animationChanged, this,
                &AnimationsPanel::updateSettingsFields);
        connect(session, &EditorSession::documentEdited, this,
                &AnimationsPanel::updateSettingsFields);
    }
    rebuild();
}

QAction *AnimationsPanel::action(const QString &objectName) const
{
    for (QAction *a : mToolBar->actions()) {
        if (a->objectName() == objectName)
            return a;
    }
    return nullptr;
}

RigxData *AnimationsPanel::document() const
{
    return mSession ? mSession->document() : nullptr;
}

Entity *AnimationsPanel::pickedEntityItem() const
{
    RigxData *doc = document();
    return doc ? doc->entity(mPickedEntity) : nullptr;
}

Animation *AnimationsPanel::pickedAnimationItem() const
{
    Entity *entity = pickedEntityItem();
    return entity ? entity->animation(mPickedAnimation) : nullptr;
}

void AnimationsPanel::scheduleRebuild()
{
    mRebuildTimer.start();
}

void AnimationsPanel::rebuild()
{
    mRebuildTimer.stop();
    mRebuilding = true;
    const int keepEntity = mPickedEntity;
    const int keepAnimation = mPickedAnimation;
    mTree->clear();
    RigxData *doc = document();
    const Animation *shown = mSession ? mSession->currentAnimation() : nullptr;
    QTreeWidgetItem *toPick = nullptr;
    for (int e = 0; doc && e < doc->entityCount(); ++e) {
        const Entity *entity = doc->entity(e);
        auto *entityItem = new QTreeWidgetItem(mTree, {entity->name()});
        entityItem->setData(0, EntityRole, e);
        entityItem->setData(0, AnimationRole, -1);
        entityItem->setFlags(entityItem->flags() | Qt::ItemIsEditable);
        entityItem->setToolTip(0, tr("Entity \"%1\"").arg(entity->name()));
        if (e == keepEntity && keepAnimation < 0)
            toPick = entityItem;
        for (int a = 0; a < entity->animationCount(); ++a) {
            const Animation *animation = entity->animation(a);
            auto *item = new QTreeWidgetItem(entityItem, {animation->name()});
            item->setData(0, EntityRole, e);
            item->setData(0, AnimationRole, a);
            item->setFlags(item->flags() | Qt::ItemIsEditable);
            item->setToolTip(0, tr("%1 ms; click to show it").arg(animation->length()));
            if (animation == shown) {
                QFont bold = item->font(0);
                bold.setBold(true);
                item->setFont(0, bold);
            }
            if (e == keepEntity && a == keepAnimation)
                toPick = item;
        }
        entityItem->setExpanded(true);
    }
    if (!toPick && keepEntity >= 0 && keepAnimation < 0 && doc && keepEntity < doc->entityCount())
        toPick = mTree->topLevelItem(keepEntity);
    // Unless an entity is picked, the pick is the shown animation, also when
    // the canvas or the timeline changed it.
    if (!toPick || keepAnimation >= 0) {
        for (QTreeWidgetItemIterator it(mTree); *it; ++it) {
            if ((*it)->font(0).bold())
                toPick = *it;
        }
    }
    mHint->setVisible(doc && doc->entityCount() == 0 && !doc->projectDirectory().isEmpty());
    mHint->setText(tr("This project has no entity yet. \"+ Entity\" makes one with an "
                      "animation to build your character in."));
    mPickedEntity = -1;
    mPickedAnimation = -1;
    if (toPick)
        mTree->setCurrentItem(toPick);
    mRebuilding = false;
    pick(mTree->currentItem());
}

void AnimationsPanel::pick(QTreeWidgetItem *item)
{
    mPickedEntity = item ? item->data(0, EntityRole).toInt() : -1;
    mPickedAnimation = item ? item->data(0, AnimationRole).toInt() : -1;
    updateActions();
    updateSettingsFields();
}

void AnimationsPanel::updateActions()
{
    RigxData *doc = document();
    Entity *entity = pickedEntityItem();
    Animation *animation = pickedAnimationItem();
    const Entity *shownEntity = mSession ? mSession->currentEntity() : nullptr;
    action(QStringLiteral("actionNewEntity"))->setEnabled(doc != nullptr);
    action(QStringLiteral("actionNewAnimation"))->setEnabled(entity != nullptr);
    action(QStringLiteral("actionClone"))->setEnabled(animation != nullptr);
    action(QStringLiteral("actionSpecialClone"))->setEnabled(animation != nullptr);
    action(QStringLiteral("actionRename"))->setEnabled(entity != nullptr);
    action(QStringLiteral("actionDelete"))->setEnabled(entity != nullptr);
    action(QStringLiteral("actionAddSubEntity"))
        ->setEnabled(entity && shownEntity && entity != shownEntity && entity->animationCount() > 0
                     && mSession->currentAnimation());
}

Animation *AnimationsPanel::shownAnimation() const
{
    return mSession ? mSession->currentAnimation() : nullptr;
}

void AnimationsPanel::updateSettingsFields()
{
    const Animation *animation = shownAnimation();
    const Entity *entity = mSession ? mSession->currentEntity() : nullptr;
    mShown->setText(animation && entity ? tr("Shown: <b>%1</b> of %2")
                                              .arg(animation->name().toHtmlEscaped(),
                                                   entity->name().toHtmlEscaped())
                                        : tr("No animation is shown"));
    const bool was = mRebuilding;
    mRebuilding = true;
    for (QWidget *w : {static_cast<QWidget *>(mLength), static_cast<QWidget *>(mLooping),
                       static_cast<QWidget *>(mLoopTo), static_cast<QWidget *>(mSnapping)})
        w->setEnabled(animation != nullptr);
    if (animation) {
        mLength->setValue(animation->length());
        mLooping->setCurrentIndex(qBound(0, animation->loopingMode(), 2));
        mLoopTo->setValue(animation->loopTo());
        mSnapping->setValue(animation->snappingInterval());
    }
    mRebuilding = was;
}

void AnimationsPanel::newEntity()
{
    RigxData *doc = document();
    if (!doc)
        return;
    mPickedEntity = doc->entityCount();
    mPickedAnimation = -1;
    doc->pushUndo(new AppendEntityCommand(doc, uniqueName(QStringLiteral("entity_000"),
                                                           doc->entityNames())));
    // The new entity's animation is what the user works on next.
    if (Entity *entity = doc->entity(mPickedEntity); entity && mSession) {
        mPickedAnimation = 0;
        mSession->setCurrentAnimation(entity->animation(0));
    }
    rebuild();
}

void AnimationsPanel::newAnimation()
{
    Entity *entity = pickedEntityItem();
    if (!entity)
        return;
    auto animation = std::make_unique<Animation>(
        entity->uniqueAnimationName(QStringLiteral("NewAnimation")), true);
    mPickedAnimation = entity->animationCount();
    document()->pushUndo(new InsertAnimationCommand(entity, std::move(animation)));
    showPicked();
}

void AnimationsPanel::renameItem(QTreeWidgetItem *item)
{
    RigxData *doc = document();
    const int e = item->data(0, EntityRole).toInt();
    const int a = item->data(0, AnimationRole).toInt();
    Entity *entity = doc ? doc->entity(e) : nullptr;
    if (!entity)
        return;
    const QString typed = cleanedName(item->text(0));
    if (a < 0) {
        if (!typed.isEmpty() && typed != entity->name())
            doc->pushUndo(new ChangeEntityName(entity, uniqueName(typed, doc->entityNames(entity))));
    } else if (Animation *animation = entity->animation(a)) {
        if (!typed.isEmpty() && typed != animation->name()) {
            AnimationSettings settings = AnimationSettings::of(*animation);
            settings.name = uniqueName(typed, entity->animationNames(animation));
            doc->pushUndo(new ChangeAnimationSettings(animation, settings));
        }
    }
    // Shows the name as kept (or the old one when the typed one was refused);
    // later, outside the tree's own edit handling.
    scheduleRebuild();
}

void AnimationsPanel::deletePicked()
{
    RigxData *doc = document();
    Entity *entity = pickedEntityItem();
    if (!entity)
        return;
    Animation *animation = pickedAnimationItem();
    const QString question =
        animation ? tr("Delete the animation \"%1\" of \"%2\"?").arg(animation->name(), entity->name())
                  : tr("Delete the entity \"%1\" with all its animations?").arg(entity->name());
    if (QMessageBox::question(this, tr("Delete"), question, QMessageBox::Yes | QMessageBox::No,
                              QMessageBox::No)
        != QMessageBox::Yes)
        return;
    // The question ran an event loop: find the item again.
    entity = pickedEntityItem();
    animation = pickedAnimationItem();
    if (animation)
        doc->pushUndo(new RemoveAnimationCommand(animation));
    else if (entity)
        doc->pushUndo(new RemoveEntityCommand(entity));
    rebuild();
}

void AnimationsPanel::clonePicked()
{
    Animation *animation = pickedAnimationItem();
    Entity *entity = pickedEntityItem();
    if (!animation)
        return;
    auto copy = animation->clone();
    copy->setName(entity->uniqueAnimationName(animation->name()));
    mPickedAnimation = mPickedAnimation + 1;
    document()->pushUndo(new InsertAnimationCommand(entity, std::move(copy), mPickedAnimation));
    showPicked();
}

void AnimationsPanel::specialClonePicked()
{
    Animation *animation = pickedAnimationItem();
    Entity *entity = pickedEntityItem();
    if (!animation)
        return;
    SpecialCloneDialog dialog(entity->uniqueAnimationName(animation->name()), animation->length(),
                              this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    // The dialog ran an event loop: find the animation again.
    animation = pickedAnimationItem();
    entity = pickedEntityItem();
    if (!animation)
        return;
    QString error;
    std::unique_ptr<Animation> copy = retimedAnimation(*animation, dialog.speed(), dialog.hold(),
                                                       &error);
    if (!copy) {
        QMessageBox::warning(this, tr("Special Clone"), error);
        return;
    }
    const QString typed = cleanedName(dialog.name());
    copy->setName(uniqueName(typed.isEmpty() ? animation->name() : typed,
                             entity->animationNames()));
    mPickedAnimation = mPickedAnimation + 1;
    document()->pushUndo(new InsertAnimationCommand(entity, std::move(copy), mPickedAnimation));
    showPicked();
}

void AnimationsPanel::addSubEntity()
{
    RigxData *doc = document();
    Entity *sub = pickedEntityItem();
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    Entity *entity = mSession ? mSession->currentEntity() : nullptr;
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    if (!doc || !sub || !scene || !entity || !animation || sub == entity
        || sub->animationCount() == 0)
        return;
    const int subRow = doc->indexOfEntity(sub);
    Object object(entity->uniqueObjectName(sub->name()), Object::SubEntity);
    scene->startUndoWithSelection(tr("sub-entity added"));
    doc->pushUndo(new AppendObjectCommand(entity, object));
    doc->pushUndo(new AppendTimelineCommand(animation, entity->objectCount() - 1, object.name()));
    Timeline *timeline = animation->timeline(animation->timelineCount() - 1);
    if (timeline && timeline->object() && timeline->object()->name() == object.name()) {
        TimelineKey key;
        key.entityInfo().animation = Address(doc, {subRow, 0}, sub->animation(0));
        key.setCachedTime(mSession->currentTime());
        timeline->createUndoFromKey(key);
    }
    scene->endUndoWithSelection(false, false, false);
}

void AnimationsPanel::settingsEdited(const std::function<void(AnimationSettings &)> &change)
{
    Animation *animation = shownAnimation();
    if (mRebuilding || !animation)
        return;
    AnimationSettings settings = AnimationSettings::of(*animation);
    change(settings);
    if (settings == AnimationSettings::of(*animation))
        return;
    document()->pushUndo(new ChangeAnimationSettings(animation, settings));
    rebuild();
}

void AnimationsPanel::showPicked()
{
    // A new animation is where the user goes on working.
    if (Animation *animation = pickedAnimationItem(); animation && mSession)
        mSession->setCurrentAnimation(animation);
    rebuild();
}

void AnimationsPanel::showAnimation(QTreeWidgetItem *item)
{
    RigxData *doc = document();
    const int a = item ? item->data(0, AnimationRole).toInt() : -1;
    Animation *animation = doc && a >= 0
                               ? doc->animationFromNumericIndexes(item->data(0, EntityRole).toInt(), a)
                               : nullptr;
    if (animation && mSession && animation != mSession->currentAnimation())
        mSession->setCurrentAnimation(animation);
}

} // namespace Morvane
