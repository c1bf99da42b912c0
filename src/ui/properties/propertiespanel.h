// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QHash>
#include <QPointer>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QLabel;
class QLineEdit;

namespace Morvane {

class EditorSession;
class ObjectGraphicsProxy;

/// The selected object's name, type and parent, its key values at the current
/// time and its inherit flags. A changed value is recorded the way the canvas
/// records a gesture (the scene's undo macro): a key at the current time when
/// none stands there, and every selected object changed in one step. Holds no
/// model pointer: everything is read again from the session on each refresh.
class PropertiesPanel : public QWidget
{
    Q_OBJECT

public:
    /// The key fields, in the order they are shown.
    enum class Field { X, Y, Angle, XScale, YScale, PivotX, PivotY, Alpha };

    explicit PropertiesPanel(EditorSession *session, QWidget *parent = nullptr);
    ~PropertiesPanel() override;

    QDoubleSpinBox *spinBox(Field field) const { return mSpins.value(int(field)); }
    QComboBox *curveBox() const { return mCurve; }
    QLineEdit *nameEdit() const { return mName; }
    QLabel *typeLabel() const { return mType; }
    /// "(none)" and the bones the selection may hang from; picking one
    /// re-parents the selection, keeping where it shows.
    QComboBox *parentBox() const { return mParent; }
    QCheckBox *inheritPosition() const { return mInheritPos; }
    QCheckBox *inheritAngle() const { return mInheritAngle; }
    QCheckBox *inheritScale() const { return mInheritScale; }

public Q_SLOTS:
    /// Shows the session's selection at its time again.
    void refresh();

private:
    QList<ObjectGraphicsProxy *> editableSelection() const;
    void applyField(Field field, double value);
    void applyCurve(int type);
    void applyInherit();
    void rename();
    void applyParent(int boneTimeline);

    QPointer<EditorSession> mSession;
    QLabel *mHeader;
    QLineEdit *mName;
    QLabel *mType;
    QComboBox *mParent;
    QGroupBox *mKeyBox;
    QHash<int, QDoubleSpinBox *> mSpins;
    QComboBox *mCurve;
    QGroupBox *mInheritBox;
    QCheckBox *mInheritPos;
    QCheckBox *mInheritAngle;
    QCheckBox *mInheritScale;
    bool mUpdating = false;
};

} // namespace Morvane
