// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "jsonprojectreader.h"

#include "io/numberformat.h"
#include "io/projectreader.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

#include <cmath>
#include <limits>
#include <vector>

namespace Morvane {

namespace {

class JsonNode
{
public:
    JsonNode() = default;
    JsonNode(const QJsonObject &object, const char *name, ReaderWarnings *warnings)
        : mObject(object)
        , mName(name)
        , mWarnings(warnings)
    {}

    bool isValid() const { return mWarnings != nullptr; }

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
            if (std::isfinite(number)) {
                *out = number;
                return true;
            }
        } else if (value.isString() && NumberFormat::parseDouble(value.toString(), out)) {
            return true;
        }
        badNumber(name, value);
        return false;
    }

    bool integer(const char *name, int *out) const
    {
        const auto it = mObject.constFind(QLatin1StringView(name));
        if (it == mObject.constEnd())
            return false;
        const QJsonValueConstRef value = *it;
        double number = 0.0;
        if (value.isDouble()) {
            number = value.toDouble();
        } else if (value.isString()) {
            if (NumberFormat::parseInt(value.toString(), out))
                return true;
            if (!NumberFormat::parseDouble(value.toString(), &number)) {
                badNumber(name, value);
                return false;
            }
        } else {
            badNumber(name, value);
            return false;
        }
        // A fraction is no integer, but the caller may read it as a real next.
        if (std::trunc(number) != number)
            return false;
        if (!std::isfinite(number) || number < double(std::numeric_limits<int>::min())
            || number > double(std::numeric_limits<int>::max())) {
            badNumber(name, value);
            return false;
        }
        *out = int(number);
        return true;
    }

    JsonNode first(const char *name) const
    {
        const auto it = mObject.constFind(QLatin1StringView(name));
        if (it == mObject.constEnd())
            return JsonNode();
        const QJsonValueConstRef value = *it;
        if (value.isObject())
            return JsonNode(value.toObject(), name, mWarnings);
        if (value.isArray()) {
            const QJsonArray array = value.toArray();
            for (const QJsonValueConstRef item : array) {
                if (item.isObject())
                    return JsonNode(item.toObject(), name, mWarnings);
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
            function(JsonNode(value.toObject(), name, mWarnings));
            return;
        }
        if (!value.isArray())
            return;
        const QJsonArray array = value.toArray();
        for (const QJsonValueConstRef item : array) {
            if (item.isObject())
                function(JsonNode(item.toObject(), name, mWarnings));
        }
    }

private:
    void badNumber(const char *name, const QJsonValueConstRef &value) const
    {
        QString text;
        if (value.isString())
            text = QLatin1Char('"') + value.toString() + QLatin1Char('"');
        else if (value.isBool())
            text = value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
        else if (value.isNull())
            text = QStringLiteral("null");
        else if (value.isArray())
            text = QStringLiteral("an array");
        else if (value.isObject())
            text = QStringLiteral("an object");
        else
            text = QString::fromLatin1(NumberFormat::shortest(value.toDouble()));
        mWarnings->badNumber(mName, name, text);
    }

    QJsonObject mObject;
    const char *mName = nullptr;
    ReaderWarnings *mWarnings = nullptr;
};

bool isNumberStart(char c)
{
    return c == '-' || (c >= '0' && c <= '9');
}

bool isNumberPart(char c)
{
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

// Qt's parser refuses a number it cannot hold (1e400, 1e-400) and with it the file; the
// XML form reads such a value as absent. `text` with every such number put in quotes, so
// that it parses and the reader reports each one as it would in XML. `inserted` receives
// the offsets (in the result) of the added quotes, to map error offsets back.
QByteArray quoteNumbersOutOfRange(const QByteArray &text, std::vector<qsizetype> *inserted)
{
    QByteArray result;
    result.reserve(text.size() + 64);
    const char *p = text.constData();
    const char *const end = p + text.size();
    while (p < end) {
        const char c = *p;
        if (c == '"') {
            // Copy the string whole, escapes included.
            const char *q = p + 1;
            while (q < end && *q != '"')
                q += *q == '\\' ? 2 : 1;
            q = q < end ? q + 1 : end;
            result.append(p, q - p);
            p = q;
            continue;
        }
        if (isNumberStart(c)) {
            const char *q = p;
            while (q < end && isNumberPart(*q))
                ++q;
            double value;
            if (!NumberFormat::parseDouble(p, q, &value)) {
                inserted->push_back(result.size());
                result.append('"');
                result.append(p, q - p);
                inserted->push_back(result.size());
                result.append('"');
            } else {
                result.append(p, q - p);
            }
            p = q;
            continue;
        }
        result.append(c);
        ++p;
    }
    return result;
}

} // namespace

bool JsonProjectReader::parse(const QByteArray &text, QString *parseError)
{
    mParsed = false;
    mRoot = QJsonObject();
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(text, &error);
    qsizetype offset = error.offset;
    if (error.error == QJsonParseError::IllegalNumber) {
        std::vector<qsizetype> inserted;
        document = QJsonDocument::fromJson(quoteNumbersOutOfRange(text, &inserted), &error);
        offset = error.offset;
        for (qsizetype at : inserted) {
            if (at < error.offset)
                --offset;
        }
    }
    if (error.error != QJsonParseError::NoError) {
        const QString notUtf8 = notUtf8Reason(text.constData(), text.size());
        *parseError = notUtf8.isEmpty() ? error.errorString() + QStringLiteral(" at offset ")
                                              + QString::number(offset)
                                        : QStringLiteral("the file is not UTF-8 (%1)").arg(notUtf8);
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
    const QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *readError = file.errorString();
        return false;
    }
    return parse(text, parseError);
}

void JsonProjectReader::read(RigxData *document, QStringList *warnings,
                             const std::function<void(int)> &progress)
{
    if (!mParsed)
        return;
    ReaderWarnings list(warnings);
    ProjectReader<JsonNode> reader(document, &list);
    reader.readRoot(JsonNode(mRoot, "morvane_data", &list), progress);
    list.finish();
}

} // namespace Morvane
