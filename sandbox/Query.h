#pragma once

#include <QJsonObject>
#include <QStringList>

namespace korvo::sandbox {

struct Database;
class Workspace;

/// The answer to a query of a database, without request_id. Throws ApiError for what the API refuses.
QJsonObject queryDatabase(const Workspace &workspace, const Database &database, const QJsonObject &body,
                          const QStringList &onlyProperties);

} // namespace korvo::sandbox
