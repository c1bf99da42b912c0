// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

class QGraphicsScene;
class QSettings;
class QUndoCommand;
class QWidget;

namespace Morvane {

class EditorSession;
class MorvaneWindow;
class RigxData;
class TagManager;

// The editor's global options and locators. Options are read once when the
// main window starts (readAll) and written back to the store at once whenever
// they change; the statics are what the rest of the editor reads.
class MorvaneSettings : public QObject
{
    Q_OBJECT

public:
    explicit MorvaneSettings(QObject *parent = nullptr);

    // Persistent options, in the order the window reads them.
    static bool saveAbsoluteAnimationPoseData;
    static bool saveSpriteFrameData;
    static bool saveObjInfoNamesUniqueToFile;
    static bool prettifyXML;
    static bool prettifyJson;
    static bool openGLEnabled;
    static int updateCheckSettings;
    static int autoSaveInterval; // minutes
    static bool autoSaveEnabled;
    static QString texturePackerPath;
    static bool alwaysPlaySubEntities;
    static bool showMessageAboutMissingImages;
    static bool showMessageAboutSavingToTheWrongDirectory;

    // Per-run state, never stored.
    static bool canvasSmoothSampling;
    static bool playSound;
    static int tessellationLevel;
    static double lastSnappingInterval;
    static bool multiThreadingEnabled;
    static bool pixelArtMode;
    static bool rotationSnapping;
    static bool snappingEnabled;
    static bool useSnappingFramesAsUnits;
    static bool lockPlaybackToSnapping;
    static bool showTimelineRange;
    static int timelineRangeStart;
    static int timelineRangeEnd;
    static bool hasMissingImages;
    static bool shownMissingImagesOnceForThisFile;
    static QStringList missingImageFullPaths;
    static bool restartAutoSave;

    // Locators; not owned. Null until the window publishes them.
    static MorvaneWindow *mainWindow;
    static QGraphicsScene *mainScene;
    static QWidget *palette;
    // The current entity, animation, time and selection.
    static EditorSession *session();

    // Nesting counters: each start pushes, each end pops; suppressed while any
    // entry is left.
    static QVector<bool> autoSaveSuppressionQueue;
    static QVector<bool> refreshSuppressionQueue;
    static void startSuppressAutoSave();
    static void endSuppressAutoSave();
    static bool suppressAutoSave();
    static void reportRefreshStart();
    static void reportRefreshEnd();
    static bool refreshSuppressed();

    // Reads every option from the store into the statics. Absent keys take
    // their defaults.
    static void readAll(QSettings &store);
    // Restores the statics to the values they hold before the store is read.
    static void resetToDefaults();

    // The project document and its tag list; null without a window.
    static RigxData *mainRigx();
    static TagManager *tagManager();
    static QString filePath();
    // Re-emit the document's notifications; nothing happens without one.
    static void emitRefreshVariables();
    static void emitObjectNamesChanged();

    // Pushes through the window's document (RigxData::pushUndo); without a
    // window the command is applied and deleted, as on a document without a stack.
    static void pushUndo(QUndoCommand *command);
    static void beginUndoMacro(const QString &text);
    static void endUndoMacro();

public slots:
    void enableMultiThreading(bool enabled);
};

} // namespace Morvane
