// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "timeline/timelineeditor.h"

#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "model/animation.h"
#include "model/commands/mainlinekeycommands.h"
#include "model/commands/objectcommands.h"
#include "model/entity.h"
#include "model/naming.h"
#include "model/object.h"
#include "model/rigxdata.h"
#include "model/timeline.h"
#include "model/timelinekey.h"
#include "timeline/commands/animationsettingscommands.h"
#include "timeline/mainlineview.h"
#include "timeline/snappingoptionsdialog.h"
#include "timeline/timelinelabelview.h"
#include "timeline/timelineview.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGuiApplication>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollBar>
#include <QSpinBox>
#include <QSplitter>
#include <QStyle>
#include <QTextEdit>
#include <QTimer>
#include <QToolBar>
#include <QUndoStack>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace Morvane {

TimelineEditor::TimelineEditor(EditorSession *session, QWidget *parent)
    : QWidget(parent)
    , mSession(session)
    , mTimeline(new TimelineView(session))
    , mMainline(new MainlineView(mTimeline))
    , mLabels(new TimelineLabelView(mTimeline))
    , mToolBar(new QToolBar(this))
    , mTimeField(new QSpinBox(this))
    , mLengthField(new QSpinBox(this))
    , mSpeedField(new QDoubleSpinBox(this))
    , mPlayTimer(new QTimer(this))
    , mSpaceFilter(new SpaceTapFilter(this))
{
    setObjectName(QStringLiteral("timelineEditor"));
    // Room for the transport, the ruler and a dozen rows.
    setMinimumHeight(180);
    buildActions();

    mTimeField->setObjectName(QStringLiteral("timeField"));
    mTimeField->setKeyboardTracking(false);
    mTimeField->setToolTip(tr("Current time"));
    mTimeField->setMinimumWidth(80);
    mLengthField->setObjectName(QStringLiteral("lengthField"));
    mLengthField->setKeyboardTracking(false);
    mLengthField->setRange(1, 100000000);
    mLengthField->setToolTip(tr("Length of the animation"));
    mSpeedField->setObjectName(QStringLiteral("speedField"));
    mSpeedField->setRange(0.05, 10.0);
    mSpeedField->setSingleStep(0.25);
    mSpeedField->setDecimals(2);
    mSpeedField->setValue(1.0);
    mSpeedField->setSuffix(QStringLiteral(" x"));
    mSpeedField->setToolTip(tr("Playback speed"));

    mToolBar->setObjectName(QStringLiteral("timelineToolbar"));
    mToolBar->setIconSize(QSize(16, 16));
    mToolBar->addAction(action(QStringLiteral("actionGo_To_Start")));
    mToolBar->addAction(action(QStringLiteral("actionPrevious_Key")));
    mToolBar->addAction(action(QStringLiteral("actionPlay")));
    mToolBar->addAction(action(QStringLiteral("actionNext_Key")));
    mToolBar->addAction(action(QStringLiteral("actionGo_To_End")));
    mToolBar->addAction(action(QStringLiteral("actionLoop")));
    mToolBar->addSeparator();
    mToolBar->addWidget(new QLabel(tr(" Time "), this));
    mToolBar->addWidget(mTimeField);
    mToolBar->addWidget(new QLabel(tr(" Length "), this));
    mToolBar->addWidget(mLengthField);
    mToolBar->addWidget(new QLabel(tr(" Speed "), this));
    mToolBar->addWidget(mSpeedField);
    mToolBar->addSeparator();
    mToolBar->addAction(action(QStringLiteral("actionZoom_Out_Timeline")));
    mToolBar->addAction(action(QStringLiteral("actionZoom_In_Timeline")));
    mToolBar->addAction(action(QStringLiteral("actionFit_Timeline")));
    mToolBar->addSeparator();
    mToolBar->addAction(action(QStringLiteral("actionSnapping_Options")));

    // Labels on the left, ruler and rows on the right; the corner above the
    // labels lines up with the ruler.
    auto *corner = new QLabel(this);
    corner->setFixedHeight(MainlineView::Height);
    corner->setStyleSheet(QStringLiteral("background: #2b2d30;"));
    auto *left = new QWidget(this);
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->setSpacing(0);
    leftLayout->addWidget(corner);
    leftLayout->addWidget(mLabels);
    auto *right = new QWidget(this);
    auto *rightLayout = new QVBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    rightLayout->setSpacing(0);
    rightLayout->addWidget(mMainline);
    rightLayout->addWidget(mTimeline);
    mMainline->setRightMargin(mTimeline->verticalScrollBar()->sizeHint().width());
    auto *split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(left);
    split->addWidget(right);
    split->setStretchFactor(1, 1);
    split->setSizes({190, 800});
    split->setChildrenCollapsible(false);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(mToolBar);
    layout->addWidget(split, 1);

    mTimeline->addActions({action(QStringLiteral("actionScale_Key_Times")),
                           action(QStringLiteral("actionNew_Event")),
                           action(QStringLiteral("actionSnapping_Options"))});

    // Playback follows the screen's refresh.
    double hz = 60.0;
    if (QScreen *screen = QGuiApplication::primaryScreen())
        hz = screen->refreshRate() > 1 ? screen->refreshRate() : 60.0;
    mPlayTimer->setTimerType(Qt::PreciseTimer);
    mPlayTimer->setInterval(std::max(1, int(1000.0 / hz)));
    connect(mPlayTimer, &QTimer::timeout, this, &TimelineEditor::tick);

    connect(mTimeField, &QSpinBox::valueChanged, this, [this](int value) {
        if (mUpdatingFields || !mSession)
            return;
        const int snap = mTimeline->snapSize();
        const int ms = MainlineView::useFramesAsUnits && snap > 0 ? value * snap : value;
        mSession->setCurrentTime(std::clamp(ms, 0, mTimeline->animationLength()));
    });
    connect(mLengthField, &QSpinBox::editingFinished, this, &TimelineEditor::applyLength);
    connect(mTimeline, &TimelineView::statusMessage, this, &TimelineEditor::report);
    connect(mTimeline, &TimelineView::animationPropertiesRequested, this,
            &TimelineEditor::popupAnimationProperties);
    connect(mLabels, &TimelineLabelView::statusMessage, this, &TimelineEditor::report);
    connect(mSpaceFilter, &SpaceTapFilter::tapped, this, [this] {
        // Only the window the timeline is in.
        if (isVisible() && (!QApplication::activeWindow() || QApplication::activeWindow() == window()))
            togglePlay();
    });
    qApp->installEventFilter(mSpaceFilter);

    if (mSession) {
        connect(mSession, &EditorSession::timeChanged, this, &TimelineEditor::showTime);
        connect(mSession, &EditorSession::documentEdited, this, &TimelineEditor::refreshFields);
        connect(mSession, &EditorSession::animationChanged, this, [this] {
            pause();
            refreshFields();
        });
        connect(mSession, &EditorSession::documentChanged, this, [this] {
            pause();
            refreshFields();
        });
    }
    refreshFields();
}

TimelineEditor::~TimelineEditor()
{
    qApp->removeEventFilter(mSpaceFilter);
    // The child widgets outlive this body; one losing focus as it goes (the length field
    // finishing its edit) must not call into an editor that is half gone.
    for (QObject *child : findChildren<QObject *>())
        child->disconnect(this);
    if (mSession)
        mSession->disconnect(this);
}

QAction *TimelineEditor::addAction(const QString &objectName, const QString &text,
                                   const QKeySequence &shortcut)
{
    auto *a = new QAction(text, this);
    a->setObjectName(objectName);
    if (!shortcut.isEmpty()) {
        a->setShortcut(shortcut);
        a->setToolTip(QStringLiteral("%1 (%2)").arg(text, shortcut.toString(QKeySequence::NativeText)));
    }
    // Keys work wherever the timeline's window has focus.
    a->setShortcutContext(Qt::WindowShortcut);
    QWidget::addAction(a);
    mActions.append(a);
    return a;
}

QAction *TimelineEditor::action(const QString &objectName) const
{
    for (QAction *a : mActions) {
        if (a->objectName() == objectName)
            return a;
    }
    return nullptr;
}

void TimelineEditor::buildActions()
{
    QStyle *s = style();
    QAction *play = addAction(QStringLiteral("actionPlay"), tr("Play"));
    play->setCheckable(true);
    play->setIcon(s->standardIcon(QStyle::SP_MediaPlay));
    play->setToolTip(tr("Play or pause (tap Space)"));
    connect(play, &QAction::triggered, this, [this](bool on) { on ? TimelineEditor::play() : pause(); });
    QAction *loop = addAction(QStringLiteral("actionLoop"), tr("Loop"));
    loop->setCheckable(true);
    loop->setChecked(true);
    loop->setIcon(s->standardIcon(QStyle::SP_BrowserReload));
    addAction(QStringLiteral("actionGo_To_Start"), tr("Go to Start"), QKeySequence(Qt::Key_Home))
        ->setIcon(s->standardIcon(QStyle::SP_MediaSkipBackward));
    addAction(QStringLiteral("actionGo_To_End"), tr("Go to End"), QKeySequence(Qt::Key_End))
        ->setIcon(s->standardIcon(QStyle::SP_MediaSkipForward));
    addAction(QStringLiteral("actionPrevious_Key"), tr("Previous Key"), QKeySequence(Qt::Key_Comma))
        ->setIcon(s->standardIcon(QStyle::SP_MediaSeekBackward));
    addAction(QStringLiteral("actionNext_Key"), tr("Next Key"), QKeySequence(Qt::Key_Period))
        ->setIcon(s->standardIcon(QStyle::SP_MediaSeekForward));
    addAction(QStringLiteral("actionZoom_In_Timeline"), tr("Zoom In"));
    addAction(QStringLiteral("actionZoom_Out_Timeline"), tr("Zoom Out"));
    addAction(QStringLiteral("actionFit_Timeline"), tr("Fit"));
    addAction(QStringLiteral("actionSnapping_Options"), tr("Snapping..."));
    addAction(QStringLiteral("actionScale_Key_Times"), tr("Scale Key Times..."));
    addAction(QStringLiteral("actionNew_Event"), tr("New Event..."));
    addAction(QStringLiteral("actionAnimation_Properties"), tr("Animation properties..."));

    connect(action(QStringLiteral("actionGo_To_Start")), &QAction::triggered, this,
            &TimelineEditor::goToStart);
    connect(action(QStringLiteral("actionGo_To_End")), &QAction::triggered, this,
            &TimelineEditor::goToEnd);
    connect(action(QStringLiteral("actionPrevious_Key")), &QAction::triggered, this,
            &TimelineEditor::previousKey);
    connect(action(QStringLiteral("actionNext_Key")), &QAction::triggered, this,
            &TimelineEditor::nextKey);
    connect(action(QStringLiteral("actionZoom_In_Timeline")), &QAction::triggered, this, [this] {
        mTimeline->setZoomFactor(std::min(TimelineView::MaxZoom, mTimeline->zoomFactor() * 1.5));
    });
    connect(action(QStringLiteral("actionZoom_Out_Timeline")), &QAction::triggered, this,
            [this] { mTimeline->setZoomFactor(mTimeline->zoomFactor() / 1.5); });
    connect(action(QStringLiteral("actionFit_Timeline")), &QAction::triggered, this,
            [this] { mTimeline->setZoomFactor(-1); });
    connect(action(QStringLiteral("actionSnapping_Options")), &QAction::triggered, this,
            &TimelineEditor::openSnappingOptions);
    connect(action(QStringLiteral("actionScale_Key_Times")), &QAction::triggered, this,
            &TimelineEditor::scaleKeyTimes);
    connect(action(QStringLiteral("actionNew_Event")), &QAction::triggered, this,
            &TimelineEditor::newEvent);
    connect(action(QStringLiteral("actionAnimation_Properties")), &QAction::triggered, this,
            &TimelineEditor::popupAnimationProperties);
}

void TimelineEditor::report(const QString &text)
{
    Q_EMIT statusMessage(text);
    if (mSession && mSession->scene())
        mSession->scene()->startStatusText(text);
}

// Fields.

void TimelineEditor::refreshFields()
{
    const Animation *anim = mTimeline->animation();
    const int snap = mTimeline->snapSize();
    const bool frames = MainlineView::useFramesAsUnits && snap > 0;
    mUpdatingFields = true;
    const int length = anim ? anim->length() : 0;
    mTimeField->setRange(0, frames ? length / snap : length);
    mTimeField->setSuffix(frames ? tr(" f") : tr(" ms"));
    mLengthField->setSuffix(frames ? tr(" f") : tr(" ms"));
    mLengthField->setValue(frames ? std::max(1, length / snap) : std::max(1, length));
    mUpdatingFields = false;
    for (QWidget *w : {static_cast<QWidget *>(mTimeField), static_cast<QWidget *>(mLengthField)})
        w->setEnabled(anim != nullptr);
    showTime(mSession ? mSession->currentTime() : 0);
}

void TimelineEditor::showTime(int ms)
{
    const int snap = mTimeline->snapSize();
    const bool frames = MainlineView::useFramesAsUnits && snap > 0;
    mUpdatingFields = true;
    mTimeField->setValue(frames ? ms / snap : ms);
    // A length typed but not applied is dropped when the time moves on.
    if (!mLengthField->hasFocus() && mTimeline->animation()) {
        const int length = mTimeline->animationLength();
        mLengthField->setValue(frames ? std::max(1, length / snap) : std::max(1, length));
    }
    mUpdatingFields = false;
    if (isPlaying())
        mTimeline->scrollToTime(ms);
}

void TimelineEditor::applyLength()
{
    if (mUpdatingFields || !mTimeline->animation())
        return;
    const int snap = mTimeline->snapSize();
    const bool frames = MainlineView::useFramesAsUnits && snap > 0;
    const int ms = frames ? mLengthField->value() * snap : mLengthField->value();
    if (ms == mTimeline->animationLength())
        return;
    mTimeline->truncateAnimationLength(ms);
    refreshFields();
}

// Transport.

bool TimelineEditor::isPlaying() const
{
    return mPlayTimer->isActive();
}

double TimelineEditor::speed() const
{
    return mSpeedField->value();
}

void TimelineEditor::setSpeed(double speed)
{
    mSpeedField->setValue(speed);
}

bool TimelineEditor::isLooping() const
{
    return action(QStringLiteral("actionLoop"))->isChecked();
}

void TimelineEditor::play()
{
    if (isPlaying() || !mSession || !mTimeline->animation())
        return;
    int start = mSession->currentTime();
    // Playing from the end starts again at the beginning.
    if (start >= mTimeline->animationLength())
        start = 0;
    mPlayStart = start;
    mClock.start();
    mPlayTimer->start();
    QAction *a = action(QStringLiteral("actionPlay"));
    a->setChecked(true);
    a->setIcon(style()->standardIcon(QStyle::SP_MediaPause));
    a->setText(tr("Pause"));
    Q_EMIT playingChanged(true);
}

void TimelineEditor::pause()
{
    QAction *a = action(QStringLiteral("actionPlay"));
    a->setChecked(false);
    a->setIcon(style()->standardIcon(QStyle::SP_MediaPlay));
    a->setText(tr("Play"));
    if (!isPlaying())
        return;
    mPlayTimer->stop();
    Q_EMIT playingChanged(false);
}

void TimelineEditor::togglePlay()
{
    if (isPlaying())
        pause();
    else
        play();
}

void TimelineEditor::tick()
{
    const int length = mTimeline->animationLength();
    if (!mSession || !mTimeline->animation() || length <= 0) {
        pause();
        return;
    }
    // Real elapsed time, so a slow frame is skipped rather than slowing the play.
    const qint64 elapsed = qint64(std::floor(mClock.elapsed() * speed()));
    qint64 t = mPlayStart + elapsed;
    if (t > length) {
        if (isLooping()) {
            t %= length;
        } else {
            mSession->setCurrentTime(length);
            pause();
            return;
        }
    }
    mSession->setCurrentTime(int(t));
}

void TimelineEditor::goToStart()
{
    if (mSession && mTimeline->animation()) {
        mSession->setCurrentTime(0);
        mTimeline->scrollToTime(0);
    }
}

void TimelineEditor::goToEnd()
{
    if (mSession && mTimeline->animation()) {
        mSession->setCurrentTime(mTimeline->animationLength());
        mTimeline->scrollToTime(mTimeline->animationLength());
    }
}

QList<int> TimelineEditor::allKeyTimes() const
{
    QList<int> times;
    for (const TimelineGraphicsProxy *row : mTimeline->rows()) {
        for (const TimelineKeyGraphicsProxy *key : row->keys())
            times.append(key->positionalTime());
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

void TimelineEditor::previousKey()
{
    if (!mSession || !mTimeline->animation())
        return;
    const int now = mSession->currentTime();
    const QList<int> times = allKeyTimes();
    auto it = std::lower_bound(times.begin(), times.end(), now);
    if (it != times.begin()) {
        mSession->setCurrentTime(*(it - 1));
        mTimeline->scrollToTime(*(it - 1));
    }
}

void TimelineEditor::nextKey()
{
    if (!mSession || !mTimeline->animation())
        return;
    const int now = mSession->currentTime();
    const QList<int> times = allKeyTimes();
    auto it = std::upper_bound(times.begin(), times.end(), now);
    if (it != times.end()) {
        mSession->setCurrentTime(*it);
        mTimeline->scrollToTime(*it);
    }
}

// Dialogs.

void TimelineEditor::openSnappingOptions()
{
    Animation *anim = mTimeline->animation();
    const int before = anim ? anim->snappingInterval() : mTimeline->snapSize();
    SnappingOptionsDialog dialog(TimelineView::snappingEnabled, before,
                                 MainlineView::useFramesAsUnits, this);
    // The views show the new interval at once; the animation takes it on OK.
    connect(&dialog, &SnappingOptionsDialog::intervalChanged, mTimeline,
            &TimelineView::setSnapPreview);
    const bool accepted = dialog.exec() == QDialog::Accepted;
    mTimeline->setSnapPreview(0);
    if (!accepted) {
        refreshFields();
        return;
    }
    TimelineView::snappingEnabled = dialog.snappingEnabled();
    MainlineView::useFramesAsUnits = dialog.framesAsUnits();
    Animation::lastSnappingInterval = dialog.interval();
    anim = mTimeline->animation();
    if (anim)
        setSnappingIntervalCommand(anim, before, dialog.interval());
    refreshFields();
    mMainline->viewport()->update();
    Q_EMIT snappingOptionsChanged();
}

void TimelineEditor::popupAnimationProperties()
{
    Animation *anim = mTimeline->animation();
    if (!anim)
        return;
    QDialog dialog(this);
    dialog.setWindowTitle(tr("Animation Properties"));
    auto *length = new QSpinBox(&dialog);
    length->setRange(1, 100000000);
    length->setSuffix(tr(" ms"));
    length->setValue(std::max(1, anim->length()));
    auto *looping = new QCheckBox(tr("Looping"), &dialog);
    looping->setChecked(anim->isLooping());
    auto *snapping = new QSpinBox(&dialog);
    snapping->setRange(1, 100000);
    snapping->setSuffix(tr(" ms"));
    snapping->setValue(std::max(1, anim->snappingInterval()));
    auto *form = new QFormLayout;
    form->addRow(tr("Name:"), new QLabel(anim->name(), &dialog));
    form->addRow(tr("Length:"), length);
    form->addRow(QString(), looping);
    form->addRow(tr("Snapping interval:"), snapping);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addLayout(form);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted)
        return;

    // One step for the whole dialog.
    anim = mTimeline->animation();
    RigxData *document = anim ? anim->document() : nullptr;
    QUndoStack *stack = document ? document->undoStack() : nullptr;
    if (!anim)
        return;
    if (stack)
        stack->beginMacro(tr("animation properties changed"));
    const int loopingMode = looping->isChecked()
                                ? (anim->isLooping() ? anim->loopingMode() : int(Animation::Looping))
                                : int(Animation::NoLooping);
    if (loopingMode != anim->loopingMode())
        RigxData::pushUndo(document, new SetLoopingModeCommand(anim, anim->loopingMode(), loopingMode));
    setSnappingIntervalCommand(anim, anim->snappingInterval(), snapping->value());
    if (stack)
        stack->endMacro();
    if (length->value() != anim->length()) {
        mUpdatingFields = true;
        mLengthField->setValue(length->value());
        mUpdatingFields = false;
        applyLength();
    }
}

void TimelineEditor::scaleKeyTimes()
{
    if (mTimeline->selectedKeys().isEmpty()) {
        report(tr("Select the keys to scale first"));
        return;
    }
    bool ok = false;
    const double factor = QInputDialog::getDouble(this, tr("Scale Key Times"),
                                                  tr("Factor (about the earliest selected key):"),
                                                  1.0, 0.01, 100.0, 3, &ok);
    if (ok)
        mTimeline->scaleSelectedKeyTimes(factor);
}

void TimelineEditor::newEvent()
{
    Animation *anim = mTimeline->animation();
    Entity *entity = anim ? anim->parentEntity() : nullptr;
    RigxData *document = anim ? anim->document() : nullptr;
    if (!entity || !document || !mSession)
        return;
    bool ok = false;
    QString name = QInputDialog::getText(this, tr("New Event"), tr("Event name:"), QLineEdit::Normal,
                                         QStringLiteral("event"), &ok)
                       .trimmed();
    if (!ok)
        return;
    if (name.isEmpty())
        name = QStringLiteral("event");
    name = uniqueName(name, entity->objectNames());
    const int time = std::clamp(mSession->currentTime(), 0, anim->length());

    QUndoStack *stack = document->undoStack();
    if (stack)
        stack->beginMacro(tr("event added"));
    const int objectIndex = entity->objectCount();
    RigxData::pushUndo(document, new AppendObjectCommand(entity, Object(name, Object::Event)));
    RigxData::pushUndo(document, new AppendTimelineCommand(anim, objectIndex, name));
    if (Timeline *timeline = anim->timeline(anim->timelineCount() - 1)) {
        TimelineKey key;
        key.setCachedTime(time);
        timeline->createUndoFromKey(key);
    }
    if (stack)
        stack->endMacro();
}

// Space taps.

SpaceTapFilter::SpaceTapFilter(QObject *parent)
    : QObject(parent)
{
}

bool SpaceTapFilter::eventFilter(QObject *watched, QEvent *event)
{
    Q_UNUSED(watched);
    // Every event may pass here more than once (to the window, then each
    // widget up the chain): each step below is safe to repeat.
    switch (event->type()) {
    case QEvent::KeyPress: {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() != Qt::Key_Space || key->isAutoRepeat())
            break;
        QWidget *focus = QApplication::focusWidget();
        const bool typing = qobject_cast<QLineEdit *>(focus) || qobject_cast<QAbstractSpinBox *>(focus)
                            || qobject_cast<QTextEdit *>(focus)
                            || qobject_cast<QPlainTextEdit *>(focus)
                            || (qobject_cast<QComboBox *>(focus)
                                && static_cast<QComboBox *>(focus)->isEditable());
        if (!mDown) {
            mDown = !typing;
            mDragged = false;
        }
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
        if (mDown && (event->type() == QEvent::MouseButtonPress
                      || static_cast<QMouseEvent *>(event)->buttons() != Qt::NoButton))
            mDragged = true;
        break;
    case QEvent::KeyRelease: {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() != Qt::Key_Space || key->isAutoRepeat() || !mDown)
            break;
        mDown = false;
        if (!mDragged)
            Q_EMIT tapped();
        break;
    }
    default:
        break;
    }
    return false;
}

} // namespace Morvane
