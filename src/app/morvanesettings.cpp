// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "morvanesettings.h"

#include "canvas/editorsession.h"
#include "model/rigxdata.h"
#include "morvanewindow.h"

#include <QSettings>
#include <QUndoStack>

namespace Morvane {

bool MorvaneSettings::saveAbsoluteAnimationPoseData = false;
bool MorvaneSettings::saveSpriteFrameData = false;
bool MorvaneSettings::saveObjInfoNamesUniqueToFile = false;
bool MorvaneSettings::prettifyXML = true;
bool MorvaneSettings::prettifyJson = true;
bool MorvaneSettings::openGLEnabled = true;
int MorvaneSettings::updateCheckSettings = 0;
// Before the store is read the interval is 1; the stored default is 5.
int MorvaneSettings::autoSaveInterval = 1;
bool MorvaneSettings::autoSaveEnabled = true;
QString MorvaneSettings::texturePackerPath;
bool MorvaneSettings::alwaysPlaySubEntities = true;
bool MorvaneSettings::showMessageAboutMissingImages = true;
bool MorvaneSettings::showMessageAboutSavingToTheWrongDirectory = true;

bool MorvaneSettings::canvasSmoothSampling = true;
bool MorvaneSettings::playSound = true;
int MorvaneSettings::tessellationLevel = 25;
double MorvaneSettings::lastSnappingInterval = 100.0;
bool MorvaneSettings::multiThreadingEnabled = false;
bool MorvaneSettings::pixelArtMode = false;
bool MorvaneSettings::rotationSnapping = false;
bool MorvaneSettings::snappingEnabled = false;
bool MorvaneSettings::useSnappingFramesAsUnits = false;
bool MorvaneSettings::lockPlaybackToSnapping = false;
bool MorvaneSettings::showTimelineRange = false;
int MorvaneSettings::timelineRangeStart = 0;
int MorvaneSettings::timelineRangeEnd = 0;
bool MorvaneSettings::hasMissingImages = false;
bool MorvaneSettings::shownMissingImagesOnceForThisFile = false;
QStringList MorvaneSettings::missingImageFullPaths;
bool MorvaneSettings::restartAutoSave = false;

MorvaneWindow *MorvaneSettings::mainWindow = nullptr;
QGraphicsScene *MorvaneSettings::mainScene = nullptr;
QWidget *MorvaneSettings::palette = nullptr;

EditorSession *MorvaneSettings::session()
{
    return EditorSession::current();
}

QVector<bool> MorvaneSettings::autoSaveSuppressionQueue;
QVector<bool> MorvaneSettings::refreshSuppressionQueue;

MorvaneSettings::MorvaneSettings(QObject *parent)
    : QObject(parent)
{
}

void MorvaneSettings::startSuppressAutoSave()
{
    autoSaveSuppressionQueue.append(true);
}

void MorvaneSettings::endSuppressAutoSave()
{
    // An unmatched end is a programming error, but must not underflow.
    Q_ASSERT(!autoSaveSuppressionQueue.isEmpty());
    if (!autoSaveSuppressionQueue.isEmpty())
        autoSaveSuppressionQueue.removeLast();
}

bool MorvaneSettings::suppressAutoSave()
{
    return !autoSaveSuppressionQueue.isEmpty();
}

void MorvaneSettings::reportRefreshStart()
{
    refreshSuppressionQueue.append(true);
}

void MorvaneSettings::reportRefreshEnd()
{
    Q_ASSERT(!refreshSuppressionQueue.isEmpty());
    if (!refreshSuppressionQueue.isEmpty())
        refreshSuppressionQueue.removeLast();
}

bool MorvaneSettings::refreshSuppressed()
{
    return !refreshSuppressionQueue.isEmpty();
}

void MorvaneSettings::readAll(QSettings &store)
{
    saveAbsoluteAnimationPoseData = store.value("saveAbsoluteAnimationPoseData", false).toBool();
    saveSpriteFrameData = store.value("saveSpriteFrameData", false).toBool();
    saveObjInfoNamesUniqueToFile = store.value("saveObjInfoNamesUniqueToFile", false).toBool();
    prettifyXML = store.value("prettifyXML", true).toBool();
    prettifyJson = store.value("prettifyJson", true).toBool();
    openGLEnabled = store.value("openGLEnabled", true).toBool();
    updateCheckSettings = store.value("updateCheckSettings", 0).toInt();
    autoSaveInterval = store.value("autoSaveInterval", 5).toInt();
    autoSaveEnabled = store.value("autoSaveEnabled", true).toBool();
    texturePackerPath = store.value("texturePackerPath", QString()).toString();
    alwaysPlaySubEntities = store.value("alwaysPlaySubEntities", true).toBool();
}

void MorvaneSettings::resetToDefaults()
{
    saveAbsoluteAnimationPoseData = false;
    saveSpriteFrameData = false;
    saveObjInfoNamesUniqueToFile = false;
    prettifyXML = true;
    prettifyJson = true;
    openGLEnabled = true;
    updateCheckSettings = 0;
    autoSaveInterval = 1;
    autoSaveEnabled = true;
    texturePackerPath.clear();
    alwaysPlaySubEntities = true;
    showMessageAboutMissingImages = true;
    showMessageAboutSavingToTheWrongDirectory = true;
    multiThreadingEnabled = false;
    autoSaveSuppressionQueue.clear();
    refreshSuppressionQueue.clear();
}

RigxData *MorvaneSettings::mainRigx()
{
    return mainWindow ? MorvaneWindow::rigx : nullptr;
}

TagManager *MorvaneSettings::tagManager()
{
    RigxData *document = mainRigx();
    return document ? &document->tagManager() : nullptr;
}

void MorvaneSettings::emitRefreshVariables()
{
    if (RigxData *document = mainRigx())
        document->emitRefreshVariables();
}

void MorvaneSettings::emitObjectNamesChanged()
{
    if (RigxData *document = mainRigx())
        document->emitObjectNamesChanged();
}

QString MorvaneSettings::filePath()
{
    return mainWindow ? mainWindow->projectFilePath() : QString();
}

void MorvaneSettings::pushUndo(QUndoCommand *command)
{
    RigxData::pushUndo(mainRigx(), command);
}

void MorvaneSettings::beginUndoMacro(const QString &text)
{
    if (mainWindow && mainWindow->undoStack())
        mainWindow->undoStack()->beginMacro(text);
}

void MorvaneSettings::endUndoMacro()
{
    if (mainWindow && mainWindow->undoStack())
        mainWindow->undoStack()->endMacro();
}

void MorvaneSettings::enableMultiThreading(bool enabled)
{
    multiThreadingEnabled = enabled;
}

} // namespace Morvane
