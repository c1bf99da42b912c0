// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

class QCheckBox;
class QDialogButtonBox;
class QLineEdit;
class QListWidget;
class QRadioButton;
class QSpinBox;

namespace Morvane {

class RigxData;

/// "Create Spritesheet from Project Textures (JSON hash)": packs the project's images (all,
/// or those of the chosen folders) into sprite sheets with a "JSON hash" description each,
/// and optionally binds the packed folders to the new sheets in one undo step, so the
/// canvas looks the same but draws from the sheets.
///
/// Folders are held by position and looked up again when packing. The dialog deletes
/// itself when closed; the document is not owned.
class PackDialog : public QDialog
{
    Q_OBJECT

public:
    PackDialog(RigxData *document, QWidget *parent = nullptr);

    /// The sheet descriptions the last run wrote (absolute paths), empty before a run or
    /// after a failed one.
    QStringList writtenSheets() const { return mWritten; }
    /// What the last run said to the user: the result or the error.
    QString lastMessage() const { return mMessage; }

Q_SIGNALS:
    /// A run ended: `ok` false with the reason in `message`.
    void packed(bool ok, const QString &message);

private:
    void fillFolders();
    void updateEnabled();
    void pack();
    void report(bool ok, const QString &message);
    QList<int> chosenFolders() const;

    RigxData *mDocument;
    QRadioButton *mAllImages;
    QRadioButton *mChosenFolders;
    QListWidget *mFolders;
    QSpinBox *mMaxSize;
    QCheckBox *mTrim;
    QCheckBox *mRotate;
    QSpinBox *mPadding;
    QSpinBox *mExtrude;
    QLineEdit *mOutput;
    QLineEdit *mBaseName;
    QCheckBox *mBind;
    QDialogButtonBox *mButtons;
    QStringList mWritten;
    QString mMessage;
};

} // namespace Morvane
