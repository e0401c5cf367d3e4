#pragma once

#include "sandbox/PropertyType.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <functional>

namespace korvo::sandbox {

struct Page;
class Workspace;

/// One option of a select, multi-select or status property.
struct Option {
    QString id;
    QString name;
    QString color;
};

/// One group of a status property's options.
struct OptionGroup {
    QString id;
    QString name;
    QString color;
    QStringList optionIds;
};

/// One column. Of the members below the type only those that belong to the type are set.
struct PropertySchema {
    QString id; ///< As it is; answers show it percent-encoded.
    QString name;
    PropertyType type = PropertyType::title;
    QString numberFormat;
    QList<Option> options;
    QList<OptionGroup> groups;
    QString relatedDatabaseId;
    QString syncedPropertyId;   ///< The other side of a two-way relation; empty for a one-way relation.
    QString relationPropertyId; ///< Of a rollup: the relation of this database that it follows.
    QString rolledUpPropertyId; ///< Of a rollup: the property of the related database that it gathers.
    QString function;
    QString expression;
    std::function<QJsonObject(const Workspace &, const Page &)> formula; ///< Gives {type, <type>: value}.
    QString uniqueIdPrefix;

    const Option *optionById(const QString &optionId) const;
    const Option *optionByName(const QString &optionName) const;
};

/// The id as answers show it.
QString encodedPropertyId(const QString &id);

/// One database with its columns.
struct Database {
    QString id;
    QString dataSourceId;
    QString title;
    QString description;
    QString parentPageId;
    QString icon; ///< An emoji, or empty.
    QDateTime createdTime;
    QDateTime lastEditedTime;
    QList<PropertySchema> properties;
    bool hasManyDataSources = false; ///< Then this version of the API refuses every call about it.

    const PropertySchema *propertyById(const QString &propertyId) const;
    const PropertySchema *titleProperty() const;

    /// By name, or by id with or without the percent-encoding, as a request may name it.
    const PropertySchema *property(const QString &nameOrId) const;
};

/// The database object, without request_id.
QJsonObject databaseJson(const Workspace &workspace, const Database &database);

} // namespace korvo::sandbox
