#include "Services/NotionSchemaService.h"

#include <QCollator>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

using PropertyType = NotionProperty::PropertyType;

/// The names under "options"; none if one of the options is no object.
QStringList optionNames(const QJsonValue &configuration)
{
    QStringList names;
    const auto options = configuration["options"_L1].toArray();
    for (const auto &option : options) {
        if (!option.isObject())
            return {};
        if (const auto name = option["name"_L1]; name.isString())
            names.append(name.toString());
    }
    return names;
}

NotionProperty parseProperty(const QString &name, const QJsonObject &json)
{
    NotionProperty property{
        .id = json["id"_L1].toString(),
        .name = name,
        .type = NotionProperty::propertyTypeFromRawValue(json["type"_L1].toString()),
        .selectOptions = {},
    };
    if (property.type == PropertyType::relation) {
        if (const auto databaseId = json["relation"_L1]["database_id"_L1]; databaseId.isString())
            property.relationDatabaseId = databaseId.toString();
    } else if (property.type == PropertyType::select) {
        property.selectOptions = optionNames(json["select"_L1]);
    } else if (property.type == PropertyType::status) {
        property.selectOptions = optionNames(json["status"_L1]);
    }
    return property;
}

NotionDatabaseSchema parseSchema(const QJsonObject &database)
{
    NotionDatabaseSchema schema;
    const auto properties = database["properties"_L1].toObject();
    for (auto property = properties.begin(); property != properties.end(); ++property) {
        if (!property->isObject())
            return {};
        schema.properties.append(parseProperty(property.key(), property->toObject()));
    }

    QCollator collator; // Made anew each time: the user's locale may have changed.
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(schema.properties.begin(), schema.properties.end(),
                     [&collator](const NotionProperty &left, const NotionProperty &right) {
                         return collator.compare(left.name, right.name) < 0;
                     });
    return schema;
}

/// Uses nothing of a service, which may go while the answer is awaited.
QCoro::Task<NotionAPIService::Result<NotionDatabaseSchema>>
schemaOf(QCoro::Task<NotionAPIService::Result<QJsonObject>> answering)
{
    const auto database = co_await answering;
    if (!database)
        co_return database.error();
    co_return parseSchema(*database);
}

} // namespace

NotionSchemaService::NotionSchemaService(HttpTransport &transport, const AppSettings &settings, Clock &clock) :
    m_api(transport, settings, clock)
{
}

QCoro::Task<NotionAPIService::Result<NotionDatabaseSchema>> NotionSchemaService::loadSchema(QString databaseId,
                                                                                            std::stop_token stop)
{
    return schemaOf(m_api.getDatabase(std::move(databaseId), std::move(stop)));
}

QList<NotionProperty> NotionSchemaService::propertiesOfType(const QList<PropertyType> &types,
                                                            const NotionDatabaseSchema &schema)
{
    QList<NotionProperty> found;
    for (const auto &property : schema.properties) {
        if (types.contains(property.type))
            found.append(property);
    }
    return found;
}

} // namespace korvo
