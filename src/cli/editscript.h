// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QJsonObject>
#include <QString>

namespace Morvane {

class EditorSession;
class MorvaneCanvasScene;
class RigxData;

/// What a step of `morvane-cli edit` works on: the open document, the scene
/// showing the script's animation, and the session around it.
struct EditContext
{
    RigxData *document;
    MorvaneCanvasScene *scene;
    EditorSession *session;
};

/// Runs one step. Returns an empty string on success, else the error text
/// (without "Error: step K: ").
using EditStepFunction = QString (*)(EditContext &context, const QJsonObject &step);

/// A step of an edit script: the value of its "do" and what runs it.
struct EditStep
{
    const char *name;
    EditStepFunction run;
};

/// The step named `name`, or null.
const EditStep *findEditStep(const QString &name);
/// The names of every step, in table order.
QStringList editStepNames();

} // namespace Morvane
