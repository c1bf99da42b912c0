// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/address.h"
#include "model/tweeninfo.h"

#include <QList>
#include <QPointer>
#include <QWidget>

class QComboBox;
class QLabel;

namespace Morvane {

class CurveView;
class EditorSession;
class TimelineKey;

/// The curve editor: shows the curve of the keys it is given, switches their
/// curve type and drags bezier handles, and records each change as one undo
/// step for all of those keys. It holds the keys as addresses and looks them
/// up again after every edit.
///
/// The keys come from `setKeys` (the timeline's selected keys); when the
/// canvas selection or the time changes it follows instead the selected
/// objects' keys in force at the current time.
class CurveEditor : public QWidget
{
    Q_OBJECT

public:
    explicit CurveEditor(EditorSession *session, QWidget *parent = nullptr);

    QList<Address> keys() const { return mKeys; }
    CurveView *view() const { return mView; }
    QComboBox *typeBox() const { return mType; }

public Q_SLOTS:
    /// Edits these timeline keys (addresses of keys; others are ignored).
    void setKeys(const QList<Morvane::Address> &keys);
    /// Takes the selected objects' keys in force at the session's time.
    void followSelection();

private:
    void useKeys(const QList<Address> &keys);
    QList<TimelineKey *> resolvedKeys() const;
    void refresh();
    void applyType(int type);
    void applyCurve(const TweenInfo &curve);
    void showParameters(const TweenInfo &curve);

    QPointer<EditorSession> mSession;
    QList<Address> mKeys;
    QComboBox *mType;
    QLabel *mInfo;
    QLabel *mParameters;
    CurveView *mView;
    bool mUpdating = false;
    bool mFollowing = true; // the keys are the selection's, not given

};

} // namespace Morvane
