#pragma once

#include "Models/NotionSchema.h"
#include "Services/NotionAPIService.h"

#include <QCoroTask>
#include <QList>
#include <QString>

#include <stop_token>

namespace korvo {

/// Reads the layout of a Notion database, so that the settings can offer real names and options. Keeps nothing.
class NotionSchemaService {
public:
    /// All three must outlive it and its requests.
    explicit NotionSchemaService(HttpTransport &transport = HttpTransport::shared(),
                                 const AppSettings &settings = AppSettings::shared(), Clock &clock = Clock::shared());

    /// The properties of database `databaseId`, by name in the order of the user's locale, whatever their case. Fails as
    /// `getDatabase` does; an answer of another shape, down to a single property that is no object, is an empty schema.
    QCoro::Task<NotionAPIService::Result<NotionDatabaseSchema>> loadSchema(QString databaseId,
                                                                           std::stop_token stop = {});

    /// The properties of any of these types, in the schema's order.
    static QList<NotionProperty> propertiesOfType(const QList<NotionProperty::PropertyType> &types,
                                                  const NotionDatabaseSchema &schema);

private:
    NotionAPIService m_api;
};

} // namespace korvo
