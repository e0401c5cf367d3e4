#include "sandbox/JsonText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

/// A string, number, boolean or null, written by QJsonDocument inside an array and taken out of it.
QByteArray scalarText(const QJsonValue &value)
{
    const QByteArray text = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return text.mid(1, text.size() - 2);
}

QStringList orderedKeys(const QJsonObject &object, bool isById)
{
    QStringList keys = object.keys();
    if (!isById)
        return keys;
    const auto place = [&object](const QString &key) {
        const QString id = object.value(key)[u"id"_s].toString();
        return std::pair(id == "title"_L1, QUrl::fromPercentEncoding(id.toLatin1()));
    };
    std::ranges::stable_sort(keys, {}, place);
    return keys;
}

QByteArray valueText(const QJsonValue &value, bool isById)
{
    QByteArray text;
    if (value.isArray()) {
        for (const QJsonValue &item : value.toArray())
            text += (text.isEmpty() ? "" : ",") + valueText(item, false);
        return '[' + text + ']';
    }
    if (!value.isObject())
        return scalarText(value);
    const QJsonObject object = value.toObject();
    for (const QString &key : orderedKeys(object, isById)) {
        text += (text.isEmpty() ? "" : ",") + scalarText(key) + ':'
            + valueText(object.value(key), key == "properties"_L1);
    }
    return '{' + text + '}';
}

} // namespace

QByteArray jsonText(const QJsonObject &object)
{
    return valueText(object, false);
}

} // namespace korvo::sandbox
