#pragma once

#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

namespace korvo::sandbox {

class Workspace;

/// One row of a database. Values are kept by property id: option ids for select and status, arrays of ids for
/// multi-select, relation and people, otherwise what answers show.
struct Page {
    QString id;
    QString databaseId;
    QDateTime createdTime;
    QDateTime lastEditedTime;
    QString createdById;
    QString lastEditedById;
    QJsonValue icon;
    QJsonValue cover;
    QHash<QString, QJsonValue> values;
    int number = 0;      ///< Of the unique_id property, counted in the database.
    qint64 sequence = 0; ///< Counts the pages of the workspace in the order of their making.
    bool isInTrash = false;
};

/// The page object, without request_id. With `onlyProperties` (encoded or plain ids) the others are left out.
QJsonObject pageJson(const Workspace &workspace, const Page &page, const QStringList &onlyProperties = {});

} // namespace korvo::sandbox
