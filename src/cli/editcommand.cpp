// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "editcommand.h"

#include "animationarguments.h"
#include "clicommand.h"
#include "editscript.h"
#include "canvas/editorsession.h"
#include "canvas/morvanecanvasscene.h"
#include "io/jsonwriter.h"
#include "io/projectfile.h"
#include "model/rigxdata.h"

#include <QCommandLineParser>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUndoStack>

#include <cstdio>

namespace Morvane {

namespace {

// A script larger than this is not a script.
constexpr qint64 MaxScriptBytes = 64 * 1024 * 1024;

// "entity" and "animation" name one by name or by index; absent is the first.
bool selectionText(const QJsonObject &script, const char *key, QString *out, QString *error)
{
    const QJsonValue v = script.value(QLatin1String(key));
    if (v.isUndefined() || v.isNull()) {
        *out = QString();
    } else if (v.isString()) {
        *out = v.toString();
    } else if (v.isDouble() && v.toDouble() >= 0 && v.toDouble() == double(qint64(v.toDouble()))) {
        *out = QString::number(qint64(v.toDouble()));
    } else {
        *error = QStringLiteral("\"%1\" takes a name or an index").arg(QLatin1String(key));
        return false;
    }
    return true;
}

int stepError(int index, const QString &what)
{
    const QByteArray text = QStringLiteral("Error: step %1: %2\n").arg(index).arg(what).toLocal8Bit();
    std::fwrite(text.constData(), 1, size_t(text.size()), stderr);
    return CliDataError;
}

} // namespace

void EditCommand::addOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("out"),
                      QStringLiteral("Save to OUTPUT (.rigx or .rigj) instead of back to FILE."),
                      QStringLiteral("OUTPUT")});
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The project to edit."));
    parser.addPositionalArgument(QStringLiteral("SCRIPT"),
                                 QStringLiteral("A JSON file of editing steps."));
}

int EditCommand::run(const QCommandLineParser &parser)
{
    const QStringList paths = parser.positionalArguments();
    const QString path = paths.at(0);
    const QString scriptPath = paths.at(1);
    const QString out = parser.isSet(QStringLiteral("out")) ? parser.value(QStringLiteral("out"))
                                                            : path;
    if (out.isEmpty())
        return cliUsageError("edit", QStringLiteral("--out takes a file name"));

    QFile scriptFile(scriptPath);
    if (!scriptFile.open(QIODevice::ReadOnly))
        return cliDataError(scriptPath, scriptFile.errorString());
    if (scriptFile.size() > MaxScriptBytes)
        return cliDataError(scriptPath, QStringLiteral("the script is larger than 64 MB"));
    QJsonParseError parseError;
    const QJsonDocument json = QJsonDocument::fromJson(scriptFile.read(MaxScriptBytes + 1), &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return cliDataError(scriptPath, QStringLiteral("not JSON: %1 at offset %2")
                                            .arg(parseError.errorString())
                                            .arg(parseError.offset));
    if (!json.isObject())
        return cliDataError(scriptPath, QStringLiteral("the script is not a JSON object"));
    const QJsonObject script = json.object();
    const QJsonValue stepsValue = script.value(QLatin1String("steps"));
    if (!stepsValue.isUndefined() && !stepsValue.isArray())
        return cliDataError(scriptPath, QStringLiteral("\"steps\" is not a list"));
    const QJsonArray steps = stepsValue.toArray();

    AnimationArguments selection;
    selection.path = path;
    QString error;
    if (!selectionText(script, "entity", &selection.entityText, &error)
        || !selectionText(script, "animation", &selection.animationText, &error))
        return cliDataError(scriptPath, error);

    // Destroyed in reverse: the session and scene before the stack, the stack's
    // commands before the document they name.
    RigxData document;
    if (!cliOpenProject(&document, path))
        return CliDataError;
    QUndoStack stack;
    document.setUndoStack(&stack);
    MorvaneCanvasScene scene;
    scene.setDocument(&document);
    EditorSession session(&scene);
    Entity *entity = nullptr;
    Animation *animation = nullptr;
    if (const int status = selection.select(document, &entity, &animation); status != CliSuccess)
        return status;
    session.setCurrentAnimation(animation);

    EditContext context{&document, &scene, &session};
    for (int i = 0; i < steps.size(); ++i) {
        const QJsonObject step = steps.at(i).toObject();
        if (!steps.at(i).isObject())
            return stepError(i + 1, QStringLiteral("a step is an object with \"do\""));
        const QString name = step.value(QLatin1String("do")).toString();
        const EditStep *known = findEditStep(name);
        if (!known)
            return stepError(i + 1, name.isEmpty()
                                        ? QStringLiteral("missing \"do\"")
                                        : QStringLiteral("unknown step \"%1\"").arg(name));
        if (!scene.currentAnimation())
            return stepError(i + 1, QStringLiteral("the animation is gone"));
        const QString failure = known->run(context, step);
        if (!failure.isEmpty())
            return stepError(i + 1, failure);
    }

    if (!ProjectFile::save(&document, out, ProjectSaveOptions()))
        return CliDataError;

    std::string text;
    JsonWriter w(&text, false);
    w.beginObject();
    w.key("steps");
    w.value(int(steps.size()));
    w.key("undo");
    w.beginArray();
    for (int i = 0; i < stack.count(); ++i)
        w.value(QStringView(stack.text(i)));
    w.endArray();
    w.key("index");
    w.value(stack.index());
    w.endObject();
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stdout);
    return CliSuccess;
}

} // namespace Morvane
