#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace korvo {

/// The JSON of Notion page properties, read and built. Readers take a page's "properties" and a property's name, and
/// never fail: what is missing or misshapen is absent.
namespace NotionPropertyMapper {

/// Text of the first run of a title property.
std::optional<QString> title(const QJsonObject &properties, const QString &key);

/// Start of a date property. A day alone is the beginning of that day in the local time zone.
std::optional<QDateTime> date(const QJsonObject &properties, const QString &key);

/// Name of the option chosen in a select property; a property of the status type reads as absent.
std::optional<QString> select(const QJsonObject &properties, const QString &key);

/// Page identifiers of a relation property in order; empty if there are none.
QStringList relations(const QJsonObject &properties, const QString &key);

/// Number of a rollup property that gives one; absent at once for an empty key.
std::optional<double> rollupNumber(const QJsonObject &properties, const QString &key);

/// {"date": {"start": S}} with S in UTC to the second, as 2024-05-01T07:30:00Z.
QJsonObject buildDateProperty(const QDateTime &date);

/// {"select": {"name": name}}, the name as it is.
QJsonObject buildSelectProperty(const QString &name);

/// {"relation": [{"id": id}, ...]} in order.
QJsonObject buildRelationProperty(const QStringList &pageIds);

} // namespace NotionPropertyMapper

} // namespace korvo
