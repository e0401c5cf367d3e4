#include "sandbox/Rollup.h"

#include "sandbox/Database.h"
#include "sandbox/DateText.h"
#include "sandbox/Page.h"
#include "sandbox/PropertyJson.h"
#include "sandbox/Workspace.h"

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

/// The number in a value of a number, formula, unique_id or rollup property.
QJsonValue numberIn(const QJsonValue &value)
{
    return value.isObject() ? value[u"number"_s] : value;
}

/// The start of a date property, a date formula or a time stamp.
QString dateIn(const QJsonValue &value)
{
    if (value.isString())
        return value.toString();
    const QJsonValue date = value[u"date"_s].isObject() ? value[u"date"_s] : value;
    return date[u"start"_s].toString();
}

QJsonValue reduced(const QString &function, const QList<double> &numbers)
{
    const double sum = std::accumulate(numbers.begin(), numbers.end(), 0.0);
    if (function == "sum"_L1)
        return sum;
    if (numbers.isEmpty())
        return {};
    if (function == "average"_L1)
        return sum / static_cast<double>(numbers.size());
    if (function == "min"_L1)
        return *std::ranges::min_element(numbers);
    return *std::ranges::max_element(numbers);
}

QJsonValue dateReduced(const QString &function, const QStringList &starts)
{
    QJsonValue best;
    std::optional<QDateTime> bestInstant;
    for (const QString &start : starts) {
        const auto date = parseDateText(start);
        if (!date)
            continue;
        const bool isBetter = !bestInstant
            || (function == "latest_date"_L1 ? date->instant() > *bestInstant : date->instant() < *bestInstant);
        if (isBetter) {
            bestInstant = date->instant();
            best = QJsonObject{{u"start"_s, date->text()}, {u"end"_s, QJsonValue()}, {u"time_zone"_s, QJsonValue()}};
        }
    }
    return best;
}

} // namespace

QJsonObject rollupValue(const Workspace &workspace, const Page &page, const PropertySchema &schema)
{
    const auto result = [&](const QString &type, const QJsonValue &value) {
        return QJsonObject{{u"type"_s, type}, {type, value}, {u"function"_s, schema.function}};
    };
    const Database *database = workspace.database(page.databaseId);
    const PropertySchema *relation = database ? database->propertyById(schema.relationPropertyId) : nullptr;
    const Database *related = relation ? workspace.database(relation->relatedDatabaseId) : nullptr;
    const PropertySchema *source = related ? related->propertyById(schema.rolledUpPropertyId) : nullptr;
    if (!source)
        return result(u"unsupported"_s, QJsonObject());

    const QStringList ids = workspace.relatedIds(page, *relation);
    if (schema.function == "count"_L1)
        return result(u"number"_s, ids.size());

    const QString type = typeName(source->type);
    QJsonArray values;
    QList<double> numbers;
    QStringList dates;
    for (const QString &id : ids) {
        const Page *row = workspace.page(id);
        const QJsonValue value = propertyValue(workspace, *row, *source);
        values.append(QJsonObject{{u"type"_s, type}, {type, value}});
        if (const QJsonValue number = numberIn(value); number.isDouble())
            numbers.append(number.toDouble());
        if (const QString date = dateIn(value); !date.isEmpty())
            dates.append(date);
    }
    if (schema.function == "show_original"_L1)
        return result(u"array"_s, values);
    if (schema.function == "earliest_date"_L1 || schema.function == "latest_date"_L1)
        return result(u"date"_s, dateReduced(schema.function, dates));
    return result(u"number"_s, reduced(schema.function, numbers));
}

} // namespace korvo::sandbox
