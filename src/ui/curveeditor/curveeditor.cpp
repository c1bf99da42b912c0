// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "ui/curveeditor/curveeditor.h"

#include "canvas/editorsession.h"
#include "canvas/objectgraphicsproxy.h"
#include "model/animation.h"
#include "model/commands/keycurvecommands.h"
#include "model/commands/timelinekeycommands.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "ui/curveeditor/curvetypes.h"
#include "ui/curveeditor/curveview.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QScopedValueRollback>
#include <QVBoxLayout>

namespace Morvane {

CurveEditor::CurveEditor(EditorSession *session, QWidget *parent)
    : QWidget(parent)
    , mSession(session)
{
    mType = new QComboBox;
    mType->setObjectName(QStringLiteral("curveType"));
    for (int type : CurveTypes::offered())
        mType->addItem(CurveTypes::label(type), type);
    mInfo = new QLabel;
    mParameters = new QLabel;
    mParameters->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mView = new CurveView;

    auto *top = new QHBoxLayout;
    top->addWidget(new QLabel(tr("Curve")));
    top->addWidget(mType);
    top->addWidget(mInfo, 1);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(6, 6, 6, 6);
    column->addLayout(top);
    column->addWidget(mView, 1);
    column->addWidget(mParameters);

    connect(mType, &QComboBox::activated, this, [this](int index) {
        if (!mUpdating)
            applyType(mType->itemData(index).toInt());
    });
    connect(mView, &CurveView::curvePreviewed, this, &CurveEditor::showParameters);
    connect(mView, &CurveView::curveEdited, this, &CurveEditor::applyCurve);

    if (session) {
        for (auto signal : {&EditorSession::documentChanged, &EditorSession::animationChanged,
                            &EditorSession::selectionChanged})
            connect(session, signal, this, &CurveEditor::followSelection);
        connect(session, &EditorSession::timeChanged, this, &CurveEditor::followSelection);
        // An edit may put another key in force (a key made at the current time)
        // or move the given keys: addresses by index are taken again.
        connect(session, &EditorSession::documentEdited, this, [this] {
            if (mFollowing)
                followSelection();
            else
                refresh();
        });
    }
    followSelection();
}

void CurveEditor::setKeys(const QList<Address> &keys)
{
    mFollowing = false;
    useKeys(keys);
}

void CurveEditor::useKeys(const QList<Address> &keys)
{
    mKeys.clear();
    for (const Address &key : keys)
        mKeys.append(freshAddress(key));
    refresh();
}

void CurveEditor::followSelection()
{
    QList<Address> keys;
    Animation *animation = mSession ? mSession->currentAnimation() : nullptr;
    if (animation) {
        const int sample = animation->sampleTime(mSession->currentTime());
        for (const ObjectGraphicsProxy *proxy : mSession->selection()) {
            const Timeline *timeline = proxy ? animation->timeline(proxy->timelineIndex()) : nullptr;
            const TimelineKey *first = nullptr;
            const TimelineKey *second = nullptr;
            double ratio = 0.0;
            if (timeline)
                timeline->keyPairFromTime(sample, &first, &second, &ratio);
            if (first)
                keys.append(first->address());
        }
    }
    mFollowing = true;
    useKeys(keys);
}

QList<TimelineKey *> CurveEditor::resolvedKeys() const
{
    QList<TimelineKey *> keys;
    for (const Address &address : mKeys) {
        TimelineKey *key = freshAddress(address).key();
        if (key && key->document() == address.document() && !keys.contains(key))
            keys.append(key);
    }
    return keys;
}

void CurveEditor::refresh()
{
    if (mView->isDragging())
        return;
    const QScopedValueRollback<bool> guard(mUpdating, true);
    const QList<TimelineKey *> keys = resolvedKeys();
    const bool enabled = !keys.isEmpty();
    mType->setEnabled(enabled);
    mView->setEnabled(enabled);
    if (!enabled) {
        mInfo->setText(tr("no key selected"));
        mView->setCurve(TweenInfo());
        mParameters->clear();
        return;
    }
    // The first key's curve is shown; a change goes to all of them.
    const TweenInfo &curve = keys.first()->curve();
    mType->setCurrentIndex(mType->findData(curve.curveType()));
    mInfo->setText(keys.size() == 1 ? tr("key at %1 ms").arg(keys.first()->time())
                                    : tr("%n keys", nullptr, int(keys.size())));
    mView->setCurve(curve);
    showParameters(curve);
}

void CurveEditor::showParameters(const TweenInfo &curve)
{
    QStringList parts;
    for (int i = 0; i < curve.cCount(); ++i)
        parts.append(QStringLiteral("c%1 %2").arg(i + 1).arg(curve.cAt(i), 0, 'f', 3));
    mParameters->setText(parts.isEmpty() ? tr("no parameters") : parts.join(QStringLiteral("   ")));
}

void CurveEditor::applyType(int type)
{
    QList<std::pair<TimelineKey *, TweenInfo>> changes;
    for (TimelineKey *key : resolvedKeys()) {
        if (key->curve().curveType() != type)
            changes.append({key, CurveTypes::switched(key->curve(), type)});
    }
    if (changes.isEmpty() || !mSession)
        return;
    RigxData::pushUndo(mSession->document(), new TimelineKeyCurveChangeCommand(changes));
    refresh();
}

void CurveEditor::applyCurve(const TweenInfo &curve)
{
    const QList<TimelineKey *> keys = resolvedKeys();
    if (keys.isEmpty() || !mSession)
        return;
    RigxData::pushUndo(mSession->document(), new TimelineKeyCurveChangeCommand(keys, curve));
    refresh();
}

} // namespace Morvane
