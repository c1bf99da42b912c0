// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "jsonprojectreader.h"

#include "io/numberformat.h"
#include "io/projectreader.h"
#include "io/textbuffer.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

#include <limits>

namespace Morvane {

namespace {

class JsonNode
{
public:
    JsonNode() = default;
    explicit JsonNode(const QJsonObject &object)
        : mObject(object)
        , mValid(true)
    {}

    bool isValid() const { return mValid; }

    // Lenient about types: a number may come as a string and a name as a number.
    bool string(const char *name, QString *out) const
    {
        const auto it = mObject.constFind(QLatin1StringView(name));
        if (it == mObject.constEnd())
            return false;
        const QJsonValueConstRef value = *it;
        if (value.isString()) {
            *out = value.toString();
            return true;
        }
        if (value.isDouble()) {
            *out = QString::fromLatin1(NumberFormat::shortest(value.toDouble()));
            return true;
        }
        return false;
    }

    bool real(const char *name, double *out) const
    {
        const auto it = mObject.constFind(QLatin1StringView(name));
        if (it == mObject.constEnd())
            return false;
        const QJsonValueConstRef value = *it;
        if (value.isDouble()) {
            const double number = value.toDouble();
            if (!std::isfinite(number))
                return false;
            *out = number;
            return true;
        }
        if (value.isString())
            return NumberFormat::parseDouble(value.toString(), out);
        return false;
    }

    bool integer(const char *name, int *out) const
    {
        const auto it = mObject.constFind(QLatin1StringView(name));
        if (it == mObject.constEnd())
            return false;
        const QJsonValueConstRef value = *it;
        if (value.isDouble()) {
            const double number = value.toDouble();
            if (!std::isfinite(number) || std::trunc(number) != number
                || number < double(std::numeric_limits<int>::min())
                || number > double(std::numeric_limits<int>::max()))
                return false;
            *out = int(number);
            return true;
        }
        if (value.isString())
            return NumberFormat::parseInt(value.toString(), out);
        return false;
    }

    JsonNode first(const char *name) const
    {
        const auto it = mObject.constFind(QLatin1StringView(name));
        if (it == mObject.constEnd())
            return JsonNode();
        const QJsonValueConstRef value = *it;
        if (value.isObject())
            return JsonNode(value.toObject());
        if (value.isArray()) {
            const QJsonArray array = value.toArray();
            for (const QJsonValueConstRef item : array) {
                if (item.isObject())
                    return JsonNode(item.toObject());
            }
        }
        return JsonNode();
    }

    template <typename F>
    void forEach(const char *name, F &&function) const
    {
        const auto it = mObject.constFind(QLatin1StringView(name));
        if (it == mObject.constEnd())
            return;
        const QJsonValueConstRef value = *it;
        if (value.isObject()) {
            function(JsonNode(value.toObject()));
            return;
        }
        if (!value.isArray())
            return;
        const QJsonArray array = value.toArray();
        for (const QJsonValueConstRef item : array) {
            if (item.isObject())
                function(JsonNode(item.toObject()));
        }
    }

private:
    QJsonObject mObject;
    bool mValid = false;
};

} // namespace

bool JsonProjectReader::parse(const QByteArray &text, QString *parseError)
{
    mParsed = false;
    mRoot = QJsonObject();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        *parseError = error.errorString() + QStringLiteral(" at offset ")
                      + QString::number(error.offset);
        return false;
    }
    const QJsonObject root = document.object();
    if (!document.isObject()
        || !(root.contains(QLatin1StringView("rigj_version"))
             || root.contains(QLatin1StringView("entity"))
             || root.contains(QLatin1StringView("folder")))) {
        *parseError = QStringLiteral("Not a Morvane file");
        return false;
    }
    mRoot = root;
    mParsed = true;
    return true;
}

bool JsonProjectReader::parseFile(const QString &path, QString *readError, QString *parseError)
{
    mParsed = false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *readError = file.errorString();
        return false;
    }
    TextBuffer text;
    if (!text.read(file, readError))
        return false;
    // The parser only reads the text: no copy of it is made.
    return parse(QByteArray::fromRawData(text.constData(), qsizetype(text.size())), parseError);
}

void JsonProjectReader::read(RigxData *document, QStringList *warnings)
{
    if (!mParsed)
        return;
    ProjectReader<JsonNode> reader(document, warnings);
    reader.readRoot(JsonNode(mRoot));
}

} // namespace Morvane
