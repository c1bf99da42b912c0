// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QPointer>
#include <QWidget>

class QAction;
class QDoubleSpinBox;
class QSpinBox;
class QTimer;
class QToolBar;

namespace Morvane {

class EditorSession;
class MainlineView;
class SpaceTapFilter;
class TimelineLabelView;
class TimelineView;

/// The timeline dock's content: the ruler, the rows and their labels
/// scrolling together, and the transport (play, loop, start, end, previous and
/// next key, the current time, the animation's length and the playback
/// speed). It follows the session and sets the session's time; its edits go
/// through the document's undo stack.
class TimelineEditor : public QWidget
{
    Q_OBJECT

public:
    explicit TimelineEditor(EditorSession *session, QWidget *parent = nullptr);
    ~TimelineEditor() override;

    EditorSession *session() const { return mSession; }
    TimelineView *timelineView() const { return mTimeline; }
    MainlineView *mainlineView() const { return mMainline; }
    TimelineLabelView *labelView() const { return mLabels; }
    QSpinBox *timeField() const { return mTimeField; }
    QSpinBox *lengthField() const { return mLengthField; }
    QDoubleSpinBox *speedField() const { return mSpeedField; }
    QToolBar *toolBar() const { return mToolBar; }

    /// Every action of the timeline, by object name (for the window's menus).
    QList<QAction *> editorActions() const { return mActions; }
    QAction *action(const QString &objectName) const;

    bool isPlaying() const;
    /// Playback speed, 1 is real time.
    double speed() const;
    void setSpeed(double speed);
    bool isLooping() const;

public Q_SLOTS:
    void play();
    void pause();
    void togglePlay();
    void goToStart();
    void goToEnd();
    void previousKey();
    void nextKey();
    void openSnappingOptions();
    void popupAnimationProperties();
    void scaleKeyTimes();
    void newEvent();

Q_SIGNALS:
    void statusMessage(const QString &text);
    void playingChanged(bool playing);
    /// The snapping switch or the units changed (for the settings).
    void snappingOptionsChanged();

private:
    QAction *addAction(const QString &objectName, const QString &text,
                       const QKeySequence &shortcut = QKeySequence());
    void buildActions();
    void showTime(int ms);
    void refreshFields();
    void applyLength();
    void tick();
    /// Key times of every row in order, for previous and next.
    QList<int> allKeyTimes() const;
    void report(const QString &text);

    QPointer<EditorSession> mSession;
    TimelineView *mTimeline;
    MainlineView *mMainline;
    TimelineLabelView *mLabels;
    QToolBar *mToolBar;
    QSpinBox *mTimeField;
    QSpinBox *mLengthField;
    QDoubleSpinBox *mSpeedField;
    QTimer *mPlayTimer;
    QElapsedTimer mClock;
    int mPlayStart = 0;
    bool mUpdatingFields = false;
    SpaceTapFilter *mSpaceFilter;
    QList<QAction *> mActions;
};

/// Tells a tap of Space (pressed and released with no mouse drag or click in
/// between, outside text fields) from Space held to pan the canvas. Watches
/// the application's events without taking any.
class SpaceTapFilter : public QObject
{
    Q_OBJECT

public:
    explicit SpaceTapFilter(QObject *parent = nullptr);

Q_SIGNALS:
    void tapped();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool mDown = false;
    bool mDragged = false;
};

} // namespace Morvane
