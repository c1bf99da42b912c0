// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "canvas/canvaseditor.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "canvas/morvanegraphicsview.h"
#include "canvas/objectgraphicsproxy.h"
#include "canvas/onionskinitem.h"
#include "canvas/tools/bonetool.h"
#include "canvas/tools/pantool.h"
#include "canvas/tools/selecttool.h"
#include "canvas/tools/toolmanager.h"

#include <QAction>
#include <QEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QSettings>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>

namespace Morvane {

CanvasEditor::CanvasEditor(QWidget *parent)
    : QWidget(parent)
    , mScene(new MorvaneCanvasScene(this))
    , mSession(new EditorSession(mScene, this))
    , mView(new MorvaneGraphicsView(mScene, this))
    , mTools(new ToolManager(this))
    , mToolBar(new QToolBar(this))
    , mStatus(new QLabel(this))
    , mFitTimer(new QTimer(this))
{
    mFitTimer->setSingleShot(true);
    mFitTimer->setInterval(100);
    connect(mFitTimer, &QTimer::timeout, this, &CanvasEditor::fitNow);
    mView->viewport()->installEventFilter(this);
    mScene->setToolManager(mTools);
    mTools->registerTool(new SelectTool(mScene));
    mTools->registerTool(new PanTool(mScene));
    mTools->registerTool(new BoneTool(mScene));
    for (AbstractTool *tool : mTools->tools()) {
        connect(tool, &AbstractTool::cursorChanged, mView->viewport(),
                [this](const QCursor &cursor) { mView->viewport()->setCursor(cursor); });
    }
    connect(mTools, &ToolManager::activeToolChanged, this, [this](AbstractTool *tool) {
        if (tool)
            mView->viewport()->setCursor(tool->cursor());
    });
    for (QAction *a : mTools->actions()) {
        a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        mToolBar->addAction(a);
        mActions.append(a);
        QWidget::addAction(a);
    }
    mToolBar->addSeparator();

    connect(addAction(QStringLiteral("actionZoom_In"), tr("Zoom In"), QKeySequence::ZoomIn),
            &QAction::triggered, mView, &MorvaneGraphicsView::zoomIn);
    connect(addAction(QStringLiteral("actionZoom_Out"), tr("Zoom Out"), QKeySequence::ZoomOut),
            &QAction::triggered, mView, &MorvaneGraphicsView::zoomOut);
    connect(addAction(QStringLiteral("actionRestore_Zoom"), tr("Restore Zoom"),
                      QKeySequence(Qt::CTRL | Qt::Key_0)),
            &QAction::triggered, mView, &MorvaneGraphicsView::restoreZoom);
    connect(addAction(QStringLiteral("actionCenter_View"), tr("Center View")), &QAction::triggered,
            mView, &MorvaneGraphicsView::centerView);
    QAction *snapping = addAction(QStringLiteral("actionRotation_Snapping"), tr("Rotation Snapping"));
    snapping->setCheckable(true);
    connect(snapping, &QAction::toggled, mScene, &MorvaneCanvasScene::setRotationSnapping);
    QAction *smooth = addAction(QStringLiteral("actionSmooth_Sampling"), tr("Smooth Sampling"));
    smooth->setCheckable(true);
    smooth->setChecked(mScene->smoothTransform());
    connect(smooth, &QAction::toggled, mScene, &MorvaneCanvasScene::setSmoothTransform);
    // Pixel art: no smoothing of images, whatever Smooth Sampling says.
    QAction *pixelArt = addAction(QStringLiteral("actionPixel_Art_Mode"), tr("Pixel Art Mode"));
    pixelArt->setCheckable(true);
    connect(pixelArt, &QAction::toggled, this, [this, smooth](bool on) {
        mScene->setSmoothTransform(!on && smooth->isChecked());
        mView->setRenderHint(QPainter::SmoothPixmapTransform, !on);
        smooth->setEnabled(!on);
    });
    const struct
    {
        const char *name;
        QString text;
        QColor color;
    } backgrounds[] = {
        {"actionLight_Background", tr("Light Background"), QColor(0xa0, 0xa0, 0xa4)},
        {"actionDark_Background", tr("Dark Background"), QColor(0x30, 0x30, 0x34)},
        {"actionWhite_Background", tr("White Background"), QColor(Qt::white)},
        {"actionBlack_Background", tr("Black Background"), QColor(Qt::black)},
        {"actionGrey_Background", tr("Grey Background"), QColor(Qt::lightGray)},
    };
    const QColor savedBackground(
        QSettings().value(QStringLiteral("Canvas/background"), backgrounds[0].color.name()).toString());
    mView->setBackgroundBrush(savedBackground.isValid() ? savedBackground : backgrounds[0].color);
    for (const auto &b : backgrounds) {
        const QColor color = b.color;
        connect(addAction(QLatin1String(b.name), b.text), &QAction::triggered, this,
                [this, color] { setBackgroundColor(color); });
    }
    connect(addAction(QStringLiteral("actionSelect_All"), tr("Select All"), QKeySequence::SelectAll),
            &QAction::triggered, this, &CanvasEditor::selectAll);
    connect(addAction(QStringLiteral("actionDelete"), tr("Delete"), QKeySequence::Delete),
            &QAction::triggered, mScene, &MorvaneCanvasScene::deleteSelection);
    connect(addAction(QStringLiteral("actionDelete_From_All_Frames"), tr("Delete From All Frames"),
                      QKeySequence(Qt::SHIFT | Qt::Key_Delete)),
            &QAction::triggered, mScene, [this] { mScene->deleteSelectionFromAllFrames(false); });
    connect(addAction(QStringLiteral("actionDelete_All_Instances"), tr("Delete All Instances"),
                      QKeySequence(Qt::CTRL | Qt::Key_Delete)),
            &QAction::triggered, mScene, [this] { mScene->deleteSelectionFromAllFrames(true); });
    connect(addAction(QStringLiteral("actionClone"), tr("Clone"), QKeySequence(Qt::CTRL | Qt::Key_D)),
            &QAction::triggered, mScene, &MorvaneCanvasScene::cloneSelection);
    mToolBar->addSeparator();
    // Onion skin: its choices persist across runs.
    OnionSkinItem *onion = mScene->onionSkin();
    QSettings settings;
    onion->setMode(settings.value(QStringLiteral("Canvas/onionSkinByKeys"), false).toBool()
                       ? OnionSkinItem::Mode::Keys
                       : OnionSkinItem::Mode::Frames);
    onion->setCounts(settings.value(QStringLiteral("Canvas/onionSkinBefore"), 2).toInt(),
                     settings.value(QStringLiteral("Canvas/onionSkinAfter"), 2).toInt());
    onion->setSelectionOnly(settings.value(QStringLiteral("Canvas/onionSkinSelectionOnly"), false).toBool());
    const struct
    {
        const char *name;
        QString text;
        const char *key;
        bool checked;
        std::function<void(bool)> apply;
    } onionToggles[] = {
        {"actionOnion_Skin", tr("Onion Skin"), "Canvas/onionSkin",
         settings.value(QStringLiteral("Canvas/onionSkin"), false).toBool(),
         [onion](bool on) { onion->setOn(on); }},
        {"actionOnion_Skin_By_Keys", tr("Onion Skin by Keys"), "Canvas/onionSkinByKeys",
         onion->mode() == OnionSkinItem::Mode::Keys,
         [onion](bool on) {
             onion->setMode(on ? OnionSkinItem::Mode::Keys : OnionSkinItem::Mode::Frames);
         }},
        {"actionOnion_Skin_Selection_Only", tr("Onion Skin for the Selection Only"),
         "Canvas/onionSkinSelectionOnly", onion->selectionOnly(),
         [onion](bool on) { onion->setSelectionOnly(on); }},
    };
    for (const auto &toggle : onionToggles) {
        QAction *a = addAction(QLatin1String(toggle.name), toggle.text);
        a->setCheckable(true);
        a->setChecked(toggle.checked);
        toggle.apply(toggle.checked);
        const QString key = QLatin1String(toggle.key);
        const std::function<void(bool)> apply = toggle.apply;
        connect(a, &QAction::toggled, this, [key, apply](bool on) {
            apply(on);
            QSettings().setValue(key, on);
        });
    }
    mToolBar->addSeparator();
    const struct
    {
        const char *name;
        QString text;
        QKeySequence shortcut;
        MorvaneCanvasScene::ZMove move;
    } zMoves[] = {
        {"actionMove_Up_in_Z_Order", tr("Move Up in Z Order"), QKeySequence(Qt::Key_PageUp),
         MorvaneCanvasScene::ZMove::Up},
        {"actionMove_Down_In_Z_Order", tr("Move Down in Z Order"), QKeySequence(Qt::Key_PageDown),
         MorvaneCanvasScene::ZMove::Down},
        {"actionMove_To_Top_in_Z_Order", tr("Move to Top in Z Order"),
         QKeySequence(Qt::CTRL | Qt::Key_PageUp), MorvaneCanvasScene::ZMove::ToTop},
        {"actionMove_To_Bottom_in_Z_Order", tr("Move to Bottom in Z Order"),
         QKeySequence(Qt::CTRL | Qt::Key_PageDown), MorvaneCanvasScene::ZMove::ToBottom},
    };
    for (const auto &z : zMoves) {
        const MorvaneCanvasScene::ZMove move = z.move;
        connect(addAction(QLatin1String(z.name), z.text, z.shortcut), &QAction::triggered, mScene,
                [this, move] { mScene->moveSelectionInZOrder(move); });
    }
    connect(addAction(QStringLiteral("actionCopy_Z_Order_to_Other_Frames"),
                      tr("Copy Z Order to Other Frames")),
            &QAction::triggered, mScene, &MorvaneCanvasScene::copyZOrderToOtherFrames);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(mToolBar);
    layout->addWidget(mView);
    layout->addWidget(mStatus);
    // The scene's and the tools' texts share one line.
    auto showStatus = [this](const QString &text) {
        if (text == mStatus->text())
            return;
        mStatus->setText(text);
        Q_EMIT statusTextChanged(text);
    };
    connect(mScene, &MorvaneCanvasScene::statusTextChanged, this, showStatus);
    for (AbstractTool *tool : mTools->tools())
        connect(tool, &AbstractTool::statusTextChanged, this, showStatus);
    mView->setAcceptDrops(true);
    mView->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(mView, &QWidget::customContextMenuRequested, this, [this](const QPoint &pos) {
        QMenu *menu = createContextMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->popup(mView->viewport()->mapToGlobal(pos));
    });
    mView->setZoom(100);
}

CanvasEditor::~CanvasEditor()
{
    // The tools' items live in the scene: the tools go first.
    mScene->setToolManager(nullptr);
    delete mTools;
}

QAction *CanvasEditor::addAction(const QString &objectName, const QString &text,
                                 const QKeySequence &shortcut)
{
    auto *a = new QAction(text, this);
    a->setObjectName(objectName);
    a->setShortcut(shortcut);
    a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    QWidget::addAction(a);
    mToolBar->addAction(a);
    mActions.append(a);
    return a;
}

QAction *CanvasEditor::action(const QString &objectName) const
{
    for (QAction *a : mActions) {
        if (a->objectName() == objectName)
            return a;
    }
    return nullptr;
}

void CanvasEditor::setDocument(RigxData *document)
{
    mScene->setDocument(document);
    mView->centerView();
}

void CanvasEditor::setCurrentAnimation(Animation *animation)
{
    mScene->setCurrentAnimation(animation);
}

bool CanvasEditor::eventFilter(QObject *watched, QEvent *event)
{
    // While a fit waits for the view's size, each resize starts the wait again.
    if (watched == mView->viewport() && mFitPending &&
        (event->type() == QEvent::Resize || event->type() == QEvent::Show))
        mFitTimer->start();
    return QWidget::eventFilter(watched, event);
}

void CanvasEditor::fitView()
{
    // A window being shown resizes its views several times: the fit waits
    // until the size has stayed put for a moment.
    mFitPending = true;
    mFitTimer->start();
}

void CanvasEditor::fitNow()
{
    if (!mView->viewport()->isVisible())
        return; // still pending: the next show or resize tries again
    mFitPending = false;
    QRectF shown;
    for (int i = 0; i < mScene->instTimelineProxyCount(); ++i) {
        const ObjectGraphicsProxy *p = mScene->instTimelineProxyFromIndex(i);
        // The outline, not the bounding rectangle: a sub-entity's reaches far
        // to hold whatever its animation draws.
        if (p->isShownInPose() && p->isVisible())
            shown = shown.united(p->mapRectToScene(p->localRect()));
    }
    if (shown.isEmpty())
        return;
    const double margin = 0.08 * std::max(shown.width(), shown.height());
    mView->setZoom(
        std::min(100, mView->zoomForRect(shown.adjusted(-margin, -margin, margin, margin))));
    mView->centerOn(shown.center());
}

void CanvasEditor::setBackgroundColor(const QColor &color)
{
    if (!color.isValid())
        return;
    mView->setBackgroundBrush(color);
    QSettings().setValue(QStringLiteral("Canvas/background"), color.name());
}

QColor CanvasEditor::backgroundColor() const
{
    return mView->backgroundBrush().color();
}

void CanvasEditor::setCurrentTime(int ms)
{
    mScene->setCurrentTime(ms);
}

QMenu *CanvasEditor::createContextMenu(QWidget *parent)
{
    auto *menu = new QMenu(parent);
    menu->addAction(tr("Lock Selected Objects"), mScene, &MorvaneCanvasScene::lockSelectedObjects);
    menu->addAction(tr("Unlock All Objects"), mScene, &MorvaneCanvasScene::setAllObjsUnlocked);
    menu->addAction(tr("Hide Selected Objects"), mScene, &MorvaneCanvasScene::hideSelectedObjects);
    menu->addAction(tr("Show All Objects"), mScene, &MorvaneCanvasScene::setAllObjsVisible);
    menu->addSeparator();
    auto addCopy = [this](QMenu *to, const QString &text, const QString &entry) {
        QAction *own = to->addAction(text);
        QPointer<QAction> target = mCopyActions.value(entry);
        own->setEnabled(target && target->isEnabled());
        connect(own, &QAction::triggered, this, [target] {
            if (target)
                target->trigger();
        });
    };
    addCopy(menu, tr("Copy Selected Items to All Frames"), QStringLiteral("items"));
    QMenu *properties = menu->addMenu(tr("Copy Selected Item Property To All Frames..."));
    addCopy(properties, tr("x"), QStringLiteral("x"));
    addCopy(properties, tr("y"), QStringLiteral("y"));
    addCopy(properties, tr("x scale"), QStringLiteral("x scale"));
    addCopy(properties, tr("y scale"), QStringLiteral("y scale"));
    addCopy(properties, tr("angle"), QStringLiteral("angle"));
    addCopy(properties, tr("alpha"), QStringLiteral("alpha"));
    return menu;
}

QString CanvasEditor::statusText() const
{
    return mStatus->text();
}

void CanvasEditor::setStatusLineShown(bool on)
{
    mStatus->setVisible(on);
}

void CanvasEditor::setCopyToAllFramesAction(const QString &entry, QAction *action)
{
    mCopyActions.insert(entry, action);
}

void CanvasEditor::selectAll()
{
    QList<ObjectGraphicsProxy *> all;
    for (int i = 0; i < mScene->instTimelineProxyCount(); ++i) {
        ObjectGraphicsProxy *p = mScene->instTimelineProxyFromIndex(i);
        if (p->isShownInPose() && p->isVisible() && !p->isLocked())
            all.append(p);
    }
    mScene->setSelectedProxies(all);
}

} // namespace Morvane
