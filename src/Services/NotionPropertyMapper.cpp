#include "Services/NotionPropertyMapper.h"

#include "Services/NotionDate.h"

#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace korvo {

namespace {

/// The object under `key`; none if there is something else.
std::optional<QJsonObject> object(const QJsonObject &parent, const QString &key)
{
    const auto value = parent.value(key);
    return value.isObject() ? std::optional(value.toObject()) : std::nullopt;
}

/// The array under `key`; none if there is something else, or if one of its elements isn't an object.
std::optional<QJsonArray> objects(const QJsonObject &parent, const QString &key)
{
    const auto value = parent.value(key);
    if (!value.isArray())
        return std::nullopt;
    const auto array = value.toArray();
    const bool isAllObjects
        = std::all_of(array.begin(), array.end(), [](const auto &element) { return element.isObject(); });
    return isAllObjects ? std::optional(array) : std::nullopt;
}

std::optional<QString> string(const QJsonObject &parent, const QString &key)
{
    const auto value = parent.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

} // namespace

std::optional<QString> NotionPropertyMapper::title(const QJsonObject &properties, const QString &key)
{
    const auto property = object(properties, key);
    const auto runs = property ? objects(*property, u"title"_s) : std::nullopt;
    if (!runs || runs->isEmpty())
        return std::nullopt;
    return string(runs->first().toObject(), u"plain_text"_s);
}

std::optional<QDateTime> NotionPropertyMapper::date(const QJsonObject &properties, const QString &key)
{
    const auto property = object(properties, key);
    const auto value = property ? object(*property, u"date"_s) : std::nullopt;
    const auto start = value ? string(*value, u"start"_s) : std::nullopt;
    return start ? parseNotionDate(*start) : std::nullopt;
}

std::optional<QString> NotionPropertyMapper::select(const QJsonObject &properties, const QString &key)
{
    const auto property = object(properties, key);
    const auto option = property ? object(*property, u"select"_s) : std::nullopt;
    return option ? string(*option, u"name"_s) : std::nullopt;
}

QStringList NotionPropertyMapper::relations(const QJsonObject &properties, const QString &key)
{
    const auto property = object(properties, key);
    const auto pages = property ? objects(*property, u"relation"_s) : std::nullopt;
    QStringList ids;
    if (!pages)
        return ids;
    for (const auto &page : *pages) {
        if (const auto id = string(page.toObject(), u"id"_s))
            ids.append(*id);
    }
    return ids;
}

std::optional<double> NotionPropertyMapper::rollupNumber(const QJsonObject &properties, const QString &key)
{
    if (key.isEmpty())
        return std::nullopt; // Not mapped, even if some property had no name.
    const auto property = object(properties, key);
    const auto rollup = property ? object(*property, u"rollup"_s) : std::nullopt;
    const auto number = rollup ? rollup->value("number"_L1) : QJsonValue();
    return number.isDouble() ? std::optional(number.toDouble()) : std::nullopt;
}

QJsonObject NotionPropertyMapper::buildDateProperty(const QDateTime &date)
{
    Q_ASSERT(date.isValid());
    // The time of the day counts up in any year, so that leaving out its fraction goes back in time before 1970, too.
    const auto start = date.toUTC().toString(u"yyyy-MM-dd'T'HH:mm:ss'Z'");
    return {{u"date"_s, QJsonObject{{u"start"_s, start}}}};
}

QJsonObject NotionPropertyMapper::buildSelectProperty(const QString &name)
{
    return {{u"select"_s, QJsonObject{{u"name"_s, name}}}};
}

QJsonObject NotionPropertyMapper::buildRelationProperty(const QStringList &pageIds)
{
    QJsonArray pages;
    for (const auto &id : pageIds)
        pages.append(QJsonObject{{u"id"_s, id}});
    return {{u"relation"_s, pages}};
}

} // namespace korvo
