// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/properties/propertiespanel.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "model/animation.h"
#include "model/commands/keycurvecommands.h"
#include "model/commands/objectinfocommands.h"
#include "model/entity.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "ui/curveeditor/curvetypes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>


namespace Morvane {

namespace {

struct FieldRow
{
    PropertiesPanel::Field field;
    const char *label;
    double min;
    double max;
    double step;
};

constexpr FieldRow kFields[] = {
    {PropertiesPanel::Field::X, QT_TRANSLATE_NOOP("PropertiesPanel", "x"), -1e6, 1e6, 1.0},
    {PropertiesPanel::Field::Y, QT_TRANSLATE_NOOP("PropertiesPanel", "y"), -1e6, 1e6, 1.0},
    {PropertiesPanel::Field::Angle, QT_TRANSLATE_NOOP("PropertiesPanel", "angle"), -360.0, 720.0,
     1.0},
    {PropertiesPanel::Field::XScale, QT_TRANSLATE_NOOP("PropertiesPanel", "x scale"), -1000.0,
     1000.0, 0.1},
    {PropertiesPanel::Field::YScale, QT_TRANSLATE_NOOP("PropertiesPanel", "y scale"), -1000.0,
     1000.0, 0.1},
    {PropertiesPanel::Field::PivotX, QT_TRANSLATE_NOOP("PropertiesPanel", "pivot x"), -100.0,
     100.0, 0.05},
    {PropertiesPanel::Field::PivotY, QT_TRANSLATE_NOOP("PropertiesPanel", "pivot y"), -100.0,
     100.0, 0.05},
    {PropertiesPanel::Field::Alpha, QT_TRANSLATE_NOOP("PropertiesPanel", "alpha"), 0.0, 1.0, 0.05},
};

double fieldValue(const DisplayInfo &info, PropertiesPanel::Field field)
{
    using F = PropertiesPanel::Field;
    switch (field) {
    case F::X: return info.x;
    case F::Y: return info.y;
    case F::Angle: return info.angle;
    case F::XScale: return info.xScale;
    case F::YScale: return info.yScale;
    case F::PivotX: return info.pivotX();
    case F::PivotY: return info.pivotY();
    case F::Alpha: return info.alpha;
    }
    return 0.0;
}

void setFieldValue(DisplayInfo &info, PropertiesPanel::Field field, double value)
{
    using F = PropertiesPanel::Field;
    switch (field) {
    case F::X: info.x = value; break;
    case F::Y: info.y = value; break;
    case F::Angle: info.angle = DisplayInfo::normalizedAngle(value); break;
    case F::XScale: info.xScale = value; break;
    case F::YScale: info.yScale = value; break;
    case F::PivotX: info.setPivotX(value, false); break;
    case F::PivotY: info.setPivotY(value, false); break;
    case F::Alpha: info.alpha = value; break;
    }
}

/// Keeps the six decimals the project files hold, so a value edited here is
/// stored as typed, but shows no trailing zeros.
class ValueSpinBox : public QDoubleSpinBox
{
public:
    QString textFromValue(double value) const override
    {
        QString text = locale().toString(value, 'f', decimals());
        const QChar point = locale().decimalPoint().front();
        if (text.contains(point)) {
            while (text.endsWith(QLatin1Char('0')))
                text.chop(1);
            if (text.endsWith(point))
                text.chop(1);
        }
        if (text == QLatin1String("-0"))
            text = QStringLiteral("0");
        return text;
    }
};

bool isPivot(PropertiesPanel::Field field)
{
    return field == PropertiesPanel::Field::PivotX || field == PropertiesPanel::Field::PivotY;
}

} // namespace

PropertiesPanel::PropertiesPanel(EditorSession *session, QWidget *parent)
    : QWidget(parent)
    , mSession(session)
{
    auto *content = new QWidget;
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins(6, 6, 6, 6);

    mHeader = new QLabel;
    mHeader->setWordWrap(true);
    column->addWidget(mHeader);

    auto *objectForm = new QFormLayout;
    objectForm->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    mName = new QLineEdit;
    mName->setObjectName(QStringLiteral("nameEdit"));
    mType = new QLabel;
    mParent = new QComboBox;
    mParent->setObjectName(QStringLiteral("parent"));
    mParent->setToolTip(tr("The bone the selected objects hang from; they stay where they "
                           "show"));
    connect(mParent, &QComboBox::activated, this, [this](int index) {
        if (!mUpdating)
            applyParent(mParent->itemData(index).toInt());
    });
    objectForm->addRow(tr("Name"), mName);
    objectForm->addRow(tr("Type"), mType);
    objectForm->addRow(tr("Parent"), mParent);
    column->addLayout(objectForm);

    mKeyBox = new QGroupBox(tr("Key"));
    auto *keyForm = new QFormLayout(mKeyBox);
    keyForm->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    for (const FieldRow &row : kFields) {
        auto *spin = new ValueSpinBox;
        spin->setObjectName(QString::fromLatin1(row.label).replace(QLatin1Char(' '), QLatin1Char('_')));
        spin->setRange(row.min, row.max);
        spin->setSingleStep(row.step);
        spin->setDecimals(6);
        // Typing commits on Enter or when the field loses focus: one step per change.
        spin->setKeyboardTracking(false);
        spin->setAccelerated(true);
        const Field field = row.field;
        connect(spin, &QDoubleSpinBox::valueChanged, this, [this, field](double value) {
            if (!mUpdating)
                applyField(field, value);
        });
        mSpins.insert(int(field), spin);
        keyForm->addRow(tr(row.label), spin);
    }
    mCurve = new QComboBox;
    mCurve->setObjectName(QStringLiteral("curve"));
    for (int type : CurveTypes::offered())
        mCurve->addItem(CurveTypes::label(type), type);
    connect(mCurve, &QComboBox::activated, this, [this](int index) {
        if (!mUpdating)
            applyCurve(mCurve->itemData(index).toInt());
    });
    keyForm->addRow(tr("curve"), mCurve);
    column->addWidget(mKeyBox);

    mInheritBox = new QGroupBox(tr("Inherit from parent"));
    auto *inheritRow = new QHBoxLayout(mInheritBox);
    mInheritPos = new QCheckBox(tr("position"));
    mInheritAngle = new QCheckBox(tr("angle"));
    mInheritScale = new QCheckBox(tr("scale"));
    for (QCheckBox *box : {mInheritPos, mInheritAngle, mInheritScale}) {
        inheritRow->addWidget(box);
        connect(box, &QCheckBox::toggled, this, [this] {
            if (!mUpdating)
                applyInherit();
        });
    }
    inheritRow->addStretch();
    column->addWidget(mInheritBox);
    column->addStretch();

    connect(mName, &QLineEdit::editingFinished, this, &PropertiesPanel::rename);

    auto *scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(scroll);

    if (session) {
        for (auto signal : {&EditorSession::documentChanged, &EditorSession::animationChanged,
                            &EditorSession::selectionChanged, &EditorSession::documentEdited})
            connect(session, signal, this, &PropertiesPanel::refresh);
        connect(session, &EditorSession::timeChanged, this, &PropertiesPanel::refresh);
    }
    refresh();
}

PropertiesPanel::~PropertiesPanel()
{
    // Closing takes the focus from the name field, which would commit it
    // into a panel half gone.
    disconnect(mName, nullptr, this, nullptr);
}

QList<ObjectGraphicsProxy *> PropertiesPanel::editableSelection() const
{
    QList<ObjectGraphicsProxy *> result;
    if (!mSession || !mSession->currentAnimation())
        return result;
    for (ObjectGraphicsProxy *proxy : mSession->selection()) {
        if (proxy && proxy->isShownInPose())
            result.append(proxy);
    }
    return result;
}

void PropertiesPanel::refresh()
{
    const QScopedValueRollback<bool> guard(mUpdating, true);
    const QList<ObjectGraphicsProxy *> selection = editableSelection();
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    // The last selected object is the one shown; edits reach all of them.
    ObjectGraphicsProxy *shown = selection.isEmpty() ? nullptr : selection.last();
    Timeline *timeline = shown ? animation->timeline(shown->timelineIndex()) : nullptr;
    const bool enabled = timeline != nullptr;
    mName->setEnabled(enabled && selection.size() == 1);
    mKeyBox->setEnabled(enabled);
    mInheritBox->setEnabled(enabled);
    if (!enabled) {
        mHeader->setText(tr("Select an object on the canvas to see its properties."));
        mHeader->setVisible(true);
        mName->clear();
        mType->clear();
        mParent->clear();
        mParent->setEnabled(false);
        mKeyBox->setTitle(tr("Key"));
        return;
    }

    const int time = mSession->currentTime();
    mHeader->setText(selection.size() == 1
                         ? QString()
                         : tr("%n objects selected: a change applies to each.", nullptr,
                              int(selection.size())));
    mHeader->setVisible(selection.size() > 1);
    mName->setText(shown->name());
    mType->setText(shown->objectTypeName());
    // The bones that are not in the selection nor below it.
    const ObjectGraphicsProxy *parentProxy = shown->parentProxy();
    mParent->clear();
    mParent->addItem(tr("(none)"), -1);
    MorvaneCanvasScene *scene = mSession->scene();
    for (int t = 0; scene && t < scene->instTimelineProxyCount(); ++t) {
        const ObjectGraphicsProxy *bone = scene->instTimelineProxyFromIndex(t);
        if (!bone || !bone->isBone() || !bone->isShownInPose())
            continue;
        bool below = false;
        int guard = 0;
        for (const ObjectGraphicsProxy *a = bone; a && guard < 256; a = a->parentProxy(), ++guard)
            below |= selection.contains(const_cast<ObjectGraphicsProxy *>(a));
        if (!below)
            mParent->addItem(bone->name(), bone->timelineIndex());
    }
    mParent->setCurrentIndex(
        std::max(0, mParent->findData(parentProxy ? parentProxy->timelineIndex() : -1)));
    mParent->setEnabled(mParent->count() > 1 || parentProxy);

    const TimelineKey key = timeline->keyFromTime(animation->sampleTime(time));
    const bool keyHere = timeline->actualKeyFromTime(time, true, true) != nullptr;
    mKeyBox->setTitle(keyHere ? tr("Key at %1 ms").arg(time)
                              : tr("At %1 ms (a change sets a key)").arg(time));
    for (const FieldRow &row : kFields)
        mSpins.value(int(row.field))->setValue(fieldValue(key.info(), row.field));
    mCurve->setCurrentIndex(mCurve->findData(key.curve().curveType()));

    const InheritFlags flags = InheritFlags::of(timeline->object());
    mInheritPos->setChecked(flags.position);
    mInheritAngle->setChecked(flags.angle);
    mInheritScale->setChecked(flags.scale);
}

void PropertiesPanel::applyField(Field field, double value)
{
    const QList<ObjectGraphicsProxy *> selection = editableSelection();
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    if (selection.isEmpty() || !scene || !animation)
        return;
    const QScopedValueRollback<bool> guard(mUpdating, true);
    const int sample = animation->sampleTime(mSession->currentTime());
    QString label;
    for (const FieldRow &row : kFields) {
        if (row.field == field)
            label = tr(row.label);
    }
    label = selection.size() == 1 ? tr("%1 %2 changed").arg(selection.first()->name(), label)
                                  : tr("%1 of %n objects changed", nullptr,
                                       int(selection.size())).arg(label);

    // The value is the key's (local to the parent bone); the canvas records
    // what its items show, so each item is put where the new key places it
    // and recorded like a gesture's result.
    scene->startUndoWithSelection(label);
    for (ObjectGraphicsProxy *proxy : selection) {
        Timeline *timeline = animation->timeline(proxy->timelineIndex());
        if (!timeline)
            continue;
        DisplayInfo local = timeline->keyFromTime(sample).info();
        setFieldValue(local, field, value);
        const ObjectGraphicsProxy *parentProxy = proxy->parentProxy();
        DisplayInfo world = parentProxy ? local.unmapFromParentInfo(parentProxy->displayInfo())
                                        : local;
        world.width = proxy->displayInfo().width;
        world.height = proxy->displayInfo().height;
        if (isPivot(field)) {
            world.setPivotX(local.pivotX(), false);
            world.setPivotY(local.pivotY(), false);
            proxy->setPivotChanged(true);
        }
        proxy->setDisplayInfo(world);
        scene->createUndoForSprite(proxy);
    }
    scene->endUndoWithSelection(false, false, true);
    refresh();
}

void PropertiesPanel::applyCurve(int type)
{
    const QList<ObjectGraphicsProxy *> selection = editableSelection();
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    if (selection.isEmpty() || !scene || !animation)
        return;
    const QScopedValueRollback<bool> guard(mUpdating, true);
    const int time = mSession->currentTime();
    scene->startUndoWithSelection(tr("curve changed"));
    // A key at the current time first (one is made from what is shown when
    // none stands there), then its curve.
    QList<int> timelines;
    for (ObjectGraphicsProxy *proxy : selection) {
        Timeline *timeline = animation->timeline(proxy->timelineIndex());
        if (!timeline)
            continue;
        if (!timeline->actualKeyFromTime(time, true, true))
            scene->createUndoForSprite(proxy);
        timelines.append(proxy->timelineIndex());
    }
    QList<std::pair<TimelineKey *, TweenInfo>> changes;
    for (int index : std::as_const(timelines)) {
        Timeline *timeline = animation->timeline(index);
        if (TimelineKey *key = timeline ? timeline->actualKeyFromTime(time, true, true) : nullptr)
            changes.append({key, CurveTypes::switched(key->curve(), type)});
    }
    if (!changes.isEmpty())
        RigxData::pushUndo(mSession->document(), new TimelineKeyCurveChangeCommand(changes));
    scene->endUndoWithSelection(false, false, true);
    refresh();
}

void PropertiesPanel::applyInherit()
{
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    QList<Object *> objects;
    for (ObjectGraphicsProxy *proxy : editableSelection()) {
        Timeline *timeline = animation->timeline(proxy->timelineIndex());
        if (Object *object = timeline ? timeline->object() : nullptr; object && !objects.contains(object))
            objects.append(object);
    }
    if (objects.isEmpty())
        return;
    const InheritFlags flags{mInheritPos->isChecked(), mInheritAngle->isChecked(),
                             mInheritScale->isChecked()};
    auto *command = new ObjectInheritChangeCommand(objects, flags);
    RigxData::pushUndo(mSession->document(), command);
    refresh();
}

void PropertiesPanel::applyParent(int boneTimeline)
{
    MorvaneCanvasScene *scene = mSession ? mSession->scene() : nullptr;
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    const QList<ObjectGraphicsProxy *> selection = editableSelection();
    if (!scene || !animation || selection.isEmpty())
        return;
    const QScopedValueRollback<bool> guard(mUpdating, true);
    // The canvas's own re-parenting, as the B gesture does it.
    scene->setSelectedProxies(selection);
    if (boneTimeline >= 0)
        scene->reparentSelection(scene->instTimelineProxyFromIndex(boneTimeline));
    else
        scene->unparentSelection(tr("parent removed"));
    refresh();
}

void PropertiesPanel::rename()
{
    const QList<ObjectGraphicsProxy *> selection = editableSelection();
    if (mUpdating || selection.size() != 1)
        return;
    Animation *animation = mSession->currentAnimation();
    Timeline *timeline = animation->timeline(selection.first()->timelineIndex());
    Object *object = timeline ? timeline->object() : nullptr;
    const QString wanted = mName->text().trimmed();
    if (!object || wanted.isEmpty() || wanted == object->name()) {
        refresh();
        return;
    }
    const QString name = object->parentEntity()->uniqueObjectName(wanted);
    RigxData::pushUndo(mSession->document(), new ObjectNameChangeCommand(object, name));
    refresh();
}

} // namespace Morvane
