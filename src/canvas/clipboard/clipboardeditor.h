// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "canvas/clipboard/clipboardpaste.h"
#include "canvas/clipboard/copy.h"
#include "canvas/clipboard/morvaneclipboard.h"

#include <QByteArray>
#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

class QAction;
class QWidget;

namespace Morvane {

class CanvasEditor;
class Copy;
class MorvaneCanvasScene;

/// The clipboard's actions (Cut, Copy, Paste, the frame copies, Paste To All
/// Keys and the copies to all frames) and the copy they share. Copies go to the
/// system clipboard too, as the copy's JSON text under `mimeType()` and as
/// plain text, and Paste reads the system clipboard back, so a pose moves
/// between two running editors; a text that is not a copy of ours is ignored
/// with a status message. Copying changes nothing in the project; each action
/// that changes it is one undo step.
class ClipboardEditor : public QObject
{
    Q_OBJECT

public:
    /// Works on `scene` (not owned). Owns its actions.
    explicit ClipboardEditor(MorvaneCanvasScene *scene, QObject *parent = nullptr);
    ~ClipboardEditor() override;

    static QString mimeType();

    QList<QAction *> actions() const { return mActions; }
    /// The action named `objectName` (as the window's form names them), or null.
    QAction *action(const QString &objectName) const;
    /// Makes the actions' keys work while `widget` or a child has the focus.
    void addActionsTo(QWidget *widget);
    /// Gives the canvas's right-click menu its copy-to-all-frames entries.
    void registerWithCanvas(CanvasEditor *canvas);

    /// The copy a paste would take now: the system clipboard's when it holds
    /// another copy of ours, else the last one made here. Null when the system
    /// clipboard holds something else (`problem` says what).
    Copy *currentCopy(QString *problem = nullptr);
    /// The copy made here last (never null).
    Copy *ownCopy() const { return mCopy.get(); }

    /// Where Copy finds keys selected elsewhere (the timeline): while the
    /// source answers a non-empty list, Copy and Cut take those keys of the
    /// shown animation instead of canvas items.
    using KeySource = std::function<QList<CopiedKey>()>;
    void setKeySource(KeySource source) { mKeySource = std::move(source); }
    /// Copies these keys of the shown animation, keeping their times apart.
    bool copyKeys(const QList<CopiedKey> &keys);

public Q_SLOTS:
    void cut();
    /// The selected items with their parent bones, or every shown item when
    /// nothing is selected.
    void copy();
    void copyCurrentFrame();
    void copyWithChildren(MorvaneClipboard::Children children);
    void paste();
    void pasteToAllKeys();
    void copySelectionToAllFrames(CopiedProperty property = CopiedProperty::All);

Q_SIGNALS:
    /// A line for the status bar.
    void statusMessage(const QString &text);

private:
    QAction *addAction(const char *objectName, const QString &text,
                       const QKeySequence &shortcut = QKeySequence());
    bool copyItems(const QList<int> &timelines);
    void publish();
    QList<int> selectedTimelines() const;

    QPointer<MorvaneCanvasScene> mScene;
    std::unique_ptr<Copy> mCopy;
    MorvaneClipboard mCollector;
    QByteArray mPublished;
    QList<QAction *> mActions;
    QList<std::pair<QString, QAction *>> mPropertyActions;
    KeySource mKeySource;
};

} // namespace Morvane
