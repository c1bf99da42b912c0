// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "json.h"

#include "jsonwriter.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <cmath>

namespace Morvane {

namespace {

bool isNonFiniteNumber(const QVariant &value)
{
    const int type = value.metaType().id();
    return (type == QMetaType::Double || type == QMetaType::Float)
           && !std::isfinite(value.toDouble());
}

void writeVariant(JsonWriter &writer, const QVariant &value);

void writeMap(JsonWriter &writer, const QVariantMap &map)
{
    writer.beginObject();
    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        if (isNonFiniteNumber(it.value()))
            continue;
        writer.key(QStringView(it.key()));
        writeVariant(writer, it.value());
    }
    writer.endObject();
}

void writeVariant(JsonWriter &writer, const QVariant &value)
{
    switch (value.metaType().id()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        writer.valueNull();
        return;
    case QMetaType::QString:
        writer.value(QStringView(value.toString()));
        return;
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        writer.valueUtf8(std::string_view(bytes.constData(), std::size_t(bytes.size())));
        return;
    }
    case QMetaType::Bool:
        writer.value(value.toBool());
        return;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Long:
    case QMetaType::LongLong:
        writer.value(std::int64_t(value.toLongLong()));
        return;
    case QMetaType::UInt:
    case QMetaType::UShort:
    case QMetaType::UChar:
    case QMetaType::ULong:
    case QMetaType::ULongLong: {
        const qulonglong number = value.toULongLong();
        if (number <= qulonglong(std::numeric_limits<std::int64_t>::max()))
            writer.value(std::int64_t(number));
        else
            writer.value(double(number));
        return;
    }
    case QMetaType::Double:
    case QMetaType::Float:
        writer.value(value.toDouble());
        return;
    case QMetaType::QVariantMap:
        writeMap(writer, value.toMap());
        return;
    case QMetaType::QVariantList: {
        writer.beginArray();
        const QVariantList list = value.toList();
        for (const QVariant &item : list)
            writeVariant(writer, item);
        writer.endArray();
        return;
    }
    case QMetaType::QStringList: {
        writer.beginArray();
        const QStringList list = value.toStringList();
        for (const QString &item : list)
            writer.value(QStringView(item));
        writer.endArray();
        return;
    }
    default:
        break;
    }
    if (value.canConvert<QString>())
        writer.value(QStringView(value.toString()));
    else
        writer.valueNull();
}

} // namespace

QByteArray Json::encodeToUtf8(const QMap<QString, QVariant> &map, Format format)
{
    std::string out;
    JsonWriter writer(&out, format == Format::Pretty);
    writeMap(writer, map);
    return QByteArray(out.data(), qsizetype(out.size()));
}

QString Json::encode(const QMap<QString, QVariant> &map, Format format)
{
    return QString::fromUtf8(encodeToUtf8(map, format));
}

QMap<QString, QVariant> Json::decodeUtf8(const QByteArray &text, QString *errorMessage)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        if (errorMessage)
            *errorMessage = error.errorString() + QStringLiteral(" at offset ")
                            + QString::number(error.offset);
        return {};
    }
    if (!document.isObject()) {
        if (errorMessage)
            *errorMessage = QStringLiteral("the top-level value is not an object");
        return {};
    }
    if (errorMessage)
        errorMessage->clear();
    return document.object().toVariantMap();
}

QMap<QString, QVariant> Json::decode(const QString &text, QString *errorMessage)
{
    return decodeUtf8(text.toUtf8(), errorMessage);
}

QMap<QString, QVariant> Json::fromFile(const QString &path, QString *errorMessage)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (errorMessage)
            *errorMessage = file.errorString();
        return {};
    }
    const QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        if (errorMessage)
            *errorMessage = file.errorString();
        return {};
    }
    return decodeUtf8(text, errorMessage);
}

} // namespace Morvane
