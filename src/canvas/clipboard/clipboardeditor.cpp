// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/clipboard/clipboardeditor.h"

#include "canvas/canvaseditor.h"
#include "canvas/clipboard/copy.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/objectgraphicsproxy.h"
#include "model/animation.h"
#include "model/mainlinekey.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QWidget>

namespace Morvane {

ClipboardEditor::ClipboardEditor(MorvaneCanvasScene *scene, QObject *parent)
    : QObject(parent)
    , mScene(scene)
    , mCopy(std::make_unique<Copy>())
{
    connect(addAction("actionCut", tr("Cut"), QKeySequence::Cut), &QAction::triggered, this,
            &ClipboardEditor::cut);
    connect(addAction("actionCopy", tr("Copy"), QKeySequence::Copy), &QAction::triggered, this,
            &ClipboardEditor::copy);
    connect(addAction("actionPaste", tr("Paste"), QKeySequence::Paste), &QAction::triggered, this,
            &ClipboardEditor::paste);
    // Ctrl+Shift+C is the frame copy's alone: a key shared by two actions
    // fires neither.
    connect(addAction("actionCopy_Current_Frame", tr("Copy Current Frame"),
                      QKeySequence(QStringLiteral("Ctrl+Shift+C"))),
            &QAction::triggered, this, &ClipboardEditor::copyCurrentFrame);
    connect(addAction("actionCopy_with_child_sprites", tr("Copy with child sprites")),
            &QAction::triggered, this,
            [this] { copyWithChildren(MorvaneClipboard::Children::Sprites); });
    connect(addAction("actionCopy_with_child_bones", tr("Copy with child bones"),
                      QKeySequence(QStringLiteral("Ctrl+Alt+C"))),
            &QAction::triggered, this,
            [this] { copyWithChildren(MorvaneClipboard::Children::Bones); });
    connect(addAction("actionCopy_with_children", tr("Copy with children"),
                      QKeySequence(QStringLiteral("Ctrl+Alt+Shift+C"))),
            &QAction::triggered, this,
            [this] { copyWithChildren(MorvaneClipboard::Children::All); });
    QAction *all = addAction("actionCopy_Selection_To_All_Frames", tr("Copy Selection To All Frames"),
                             QKeySequence(QStringLiteral("Ctrl+D")));
    connect(all, &QAction::triggered, this, [this] { copySelectionToAllFrames(); });
    mPropertyActions.append({QStringLiteral("items"), all});
    connect(addAction("actionAltPaste", tr("Paste To All Keys"),
                      QKeySequence(QStringLiteral("Ctrl+Shift+V"))),
            &QAction::triggered, this, &ClipboardEditor::pasteToAllKeys);
    const struct
    {
        const char *name;
        const char *entry;
        CopiedProperty property;
    } properties[] = {
        {"actionCopy_X_To_All_Frames", "x", CopiedProperty::X},
        {"actionCopy_Y_To_All_Frames", "y", CopiedProperty::Y},
        {"actionCopy_X_Scale_To_All_Frames", "x scale", CopiedProperty::ScaleX},
        {"actionCopy_Y_Scale_To_All_Frames", "y scale", CopiedProperty::ScaleY},
        {"actionCopy_Angle_To_All_Frames", "angle", CopiedProperty::Angle},
        {"actionCopy_Alpha_To_All_Frames", "alpha", CopiedProperty::Alpha},
    };
    for (const auto &p : properties) {
        const CopiedProperty property = p.property;
        QAction *a = addAction(p.name, tr(p.entry));
        connect(a, &QAction::triggered, this, [this, property] { copySelectionToAllFrames(property); });
        mPropertyActions.append({QLatin1String(p.entry), a});
    }
}

ClipboardEditor::~ClipboardEditor()
{
    qDeleteAll(mActions);
}

QString ClipboardEditor::mimeType()
{
    return QStringLiteral("application/x-morvane-copy+json");
}

QAction *ClipboardEditor::addAction(const char *objectName, const QString &text,
                                    const QKeySequence &shortcut)
{
    // Not children of this object: a window listing its actions by search
    // finds its own entries, which drive these, and not these twice.
    auto *a = new QAction(text);
    a->setObjectName(QLatin1String(objectName));
    a->setShortcut(shortcut);
    a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    mActions.append(a);
    return a;
}

QAction *ClipboardEditor::action(const QString &objectName) const
{
    for (QAction *a : mActions) {
        if (a->objectName() == objectName)
            return a;
    }
    return nullptr;
}

void ClipboardEditor::addActionsTo(QWidget *widget)
{
    widget->addActions(mActions);
}

void ClipboardEditor::registerWithCanvas(CanvasEditor *canvas)
{
    for (const auto &[entry, a] : std::as_const(mPropertyActions))
        canvas->setCopyToAllFramesAction(entry, a);
}

QList<int> ClipboardEditor::selectedTimelines() const
{
    QList<int> timelines;
    if (mScene) {
        for (const ObjectGraphicsProxy *proxy : mScene->selectedProxies())
            timelines.append(proxy->timelineIndex());
    }
    return timelines;
}

bool ClipboardEditor::copyItems(const QList<int> &timelines)
{
    if (!mScene || !mScene->currentAnimation()) {
        Q_EMIT statusMessage(tr("No animation is open to copy from."));
        return false;
    }
    auto copy = std::make_unique<Copy>();
    if (!copy->copySceneFrame(mScene, timelines)) {
        Q_EMIT statusMessage(tr("Nothing is shown here to copy."));
        return false;
    }
    mCopy = std::move(copy);
    publish();
    const int count = mCopy->copiedRelAnimation()->mainlineKeyCount() > 0
                          ? mCopy->copiedRelAnimation()->mainlineKey(0)->refCount()
                          : 0;
    Q_EMIT statusMessage(count == 1 ? tr("1 item copied.") : tr("%1 items copied.").arg(count));
    return true;
}

void ClipboardEditor::publish()
{
    mPublished = mCopy->toJson();
    auto *data = new QMimeData;
    data->setData(mimeType(), mPublished);
    data->setText(QString::fromUtf8(mPublished));
    QGuiApplication::clipboard()->setMimeData(data);
}

Copy *ClipboardEditor::currentCopy(QString *problem)
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    QByteArray text;
    if (data && data->hasFormat(mimeType()))
        text = data->data(mimeType());
    else if (data && data->hasText())
        text = data->text().trimmed().toUtf8();
    // Nothing there, or what we put there ourselves: the copy made here.
    if (text.isEmpty() || text == mPublished)
        return mCopy.get();
    QString error;
    std::unique_ptr<Copy> read = Copy::fromJson(text, &error);
    if (!read) {
        if (problem)
            *problem = error;
        return nullptr;
    }
    mCopy = std::move(read);
    mPublished = text;
    return mCopy.get();
}

void ClipboardEditor::cut()
{
    const QList<int> timelines = selectedTimelines();
    if (timelines.isEmpty()) {
        Q_EMIT statusMessage(tr("Select the items to cut first."));
        return;
    }
    mCollector.copySelectedSceneItems(mScene);
    if (copyItems(mCollector.timelines()))
        mScene->deleteSelection();
}

bool ClipboardEditor::copyKeys(const QList<CopiedKey> &keys)
{
    Animation *animation = mScene ? mScene->currentAnimation() : nullptr;
    if (!animation) {
        Q_EMIT statusMessage(tr("No animation is open to copy from."));
        return false;
    }
    auto copy = std::make_unique<Copy>();
    if (!copy->copyKeys(animation, keys)) {
        Q_EMIT statusMessage(tr("None of the selected keys can be copied."));
        return false;
    }
    const int count = copy->copiedKeyCount();
    mCopy = std::move(copy);
    publish();
    Q_EMIT statusMessage(count == 1 ? tr("1 key copied.") : tr("%1 keys copied.").arg(count));
    return true;
}

void ClipboardEditor::copy()
{
    if (mKeySource) {
        const QList<CopiedKey> keys = mKeySource();
        if (!keys.isEmpty()) {
            copyKeys(keys);
            return;
        }
    }
    mCollector.copySelectedSceneItems(mScene);
    copyItems(mCollector.timelines());
}

void ClipboardEditor::copyCurrentFrame()
{
    copyItems({});
}

void ClipboardEditor::copyWithChildren(MorvaneClipboard::Children children)
{
    if (selectedTimelines().isEmpty()) {
        Q_EMIT statusMessage(tr("Select the items to copy first."));
        return;
    }
    mCollector.copySelectedSceneItems(mScene, children);
    copyItems(mCollector.timelines());
}

void ClipboardEditor::paste()
{
    QString problem;
    Copy *copy = currentCopy(&problem);
    if (!copy) {
        Q_EMIT statusMessage(problem);
        return;
    }
    QString message;
    Morvane::pasteKeys(mScene, copy, mScene ? mScene->currentTime() : 0, &message);
    Q_EMIT statusMessage(message);
}

void ClipboardEditor::pasteToAllKeys()
{
    QString problem;
    Copy *copy = currentCopy(&problem);
    if (!copy) {
        Q_EMIT statusMessage(problem);
        return;
    }
    QString message;
    Morvane::pasteToAllKeys(mScene, copy, &message);
    Q_EMIT statusMessage(message);
}

void ClipboardEditor::copySelectionToAllFrames(CopiedProperty property)
{
    QString message;
    Morvane::copyToAllFrames(mScene, selectedTimelines(), property, &message);
    Q_EMIT statusMessage(message);
}

} // namespace Morvane
