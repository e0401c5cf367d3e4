#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>

#include "sandbox/Database.h"

namespace korvo::sandbox {

class Workspace;

/// What one property of a write changes, checked and ready to be kept.
struct PropertyChange {
    QString propertyId;
    QJsonValue stored;        ///< As Page keeps it.
    QList<Option> newOptions; ///< Options that the write makes by naming them.
};

/// Checks the "properties" of a write against the database. Throws ApiError for the first fault, in the API's words.
QList<PropertyChange> readProperties(Workspace &workspace, const Database &database, const QJsonObject &properties);

} // namespace korvo::sandbox
