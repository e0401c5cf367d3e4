#include "sandbox/Database.h"

#include "sandbox/DateText.h"
#include "sandbox/RichText.h"
#include "sandbox/Uuid.h"
#include "sandbox/Workspace.h"

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

QJsonArray optionsJson(const QList<Option> &options)
{
    QJsonArray json;
    for (const Option &option : options) {
        json.append(QJsonObject{{u"id"_s, option.id},
                                {u"name"_s, option.name},
                                {u"color"_s, option.color},
                                {u"description"_s, QJsonValue()}});
    }
    return json;
}

QJsonArray groupsJson(const QList<OptionGroup> &groups)
{
    QJsonArray json;
    for (const OptionGroup &group : groups) {
        json.append(QJsonObject{{u"id"_s, group.id},
                                {u"name"_s, group.name},
                                {u"color"_s, group.color},
                                {u"option_ids"_s, QJsonArray::fromStringList(group.optionIds)}});
    }
    return json;
}

QString nameOf(const Database *database, const QString &propertyId)
{
    const PropertySchema *schema = database ? database->propertyById(propertyId) : nullptr;
    return schema ? schema->name : QString();
}

QJsonObject relationJson(const Workspace &workspace, const PropertySchema &schema)
{
    const Database *related = workspace.database(schema.relatedDatabaseId);
    QJsonObject json{{u"database_id"_s, schema.relatedDatabaseId},
                     {u"data_source_id"_s, related ? related->dataSourceId : QString()}};
    if (schema.syncedPropertyId.isEmpty()) {
        json.insert(u"type"_s, u"single_property"_s);
        json.insert(u"single_property"_s, QJsonObject());
    } else {
        json.insert(u"type"_s, u"dual_property"_s);
        json.insert(u"dual_property"_s,
                    QJsonObject{{u"synced_property_name"_s, nameOf(related, schema.syncedPropertyId)},
                                {u"synced_property_id"_s, encodedPropertyId(schema.syncedPropertyId)}});
    }
    return json;
}

QJsonObject rollupJson(const Workspace &workspace, const Database &database, const PropertySchema &schema)
{
    const PropertySchema *relation = database.propertyById(schema.relationPropertyId);
    const Database *related = relation ? workspace.database(relation->relatedDatabaseId) : nullptr;
    // Here, unlike everywhere else, the ids are not percent-encoded.
    return {{u"rollup_property_name"_s, nameOf(related, schema.rolledUpPropertyId)},
            {u"relation_property_name"_s, nameOf(&database, schema.relationPropertyId)},
            {u"rollup_property_id"_s, schema.rolledUpPropertyId},
            {u"relation_property_id"_s, schema.relationPropertyId},
            {u"function"_s, schema.function}};
}

QJsonObject configuration(const Workspace &workspace, const Database &database, const PropertySchema &schema)
{
    switch (schema.type) {
    case PropertyType::number:
        return {{u"format"_s, schema.numberFormat}};
    case PropertyType::select:
    case PropertyType::multiSelect:
        return {{u"options"_s, optionsJson(schema.options)}};
    case PropertyType::status:
        return {{u"options"_s, optionsJson(schema.options)}, {u"groups"_s, groupsJson(schema.groups)}};
    case PropertyType::relation:
        return relationJson(workspace, schema);
    case PropertyType::rollup:
        return rollupJson(workspace, database, schema);
    case PropertyType::formula:
        return {{u"expression"_s, schema.expression}};
    case PropertyType::uniqueId:
        return {{u"prefix"_s, schema.uniqueIdPrefix.isEmpty() ? QJsonValue() : QJsonValue(schema.uniqueIdPrefix)}};
    default:
        return {};
    }
}

QJsonObject propertiesJson(const Workspace &workspace, const Database &database)
{
    QJsonObject json;
    for (const PropertySchema &schema : database.properties) {
        const QString type = typeName(schema.type);
        json.insert(schema.name,
                    QJsonObject{{u"id"_s, encodedPropertyId(schema.id)},
                                {u"name"_s, schema.name},
                                {u"description"_s, QJsonValue()},
                                {u"type"_s, type},
                                {type, configuration(workspace, database, schema)}});
    }
    return json;
}

} // namespace

QJsonObject databaseJson(const Workspace &workspace, const Database &database)
{
    const QJsonObject owner{{u"object"_s, u"user"_s}, {u"id"_s, workspace.personId()}};
    const QJsonValue icon
        = database.icon.isEmpty() ? QJsonValue() : QJsonObject{{u"type"_s, u"emoji"_s}, {u"emoji"_s, database.icon}};
    return {{u"object"_s, u"database"_s},
            {u"id"_s, database.id},
            {u"cover"_s, QJsonValue()},
            {u"icon"_s, icon},
            {u"created_time"_s, stampText(database.createdTime)},
            {u"created_by"_s, owner},
            {u"last_edited_by"_s, owner},
            {u"last_edited_time"_s, stampText(database.lastEditedTime)},
            {u"title"_s, richText(database.title)},
            {u"description"_s, richText(database.description)},
            {u"is_inline"_s, false},
            {u"properties"_s, propertiesJson(workspace, database)},
            {u"parent"_s, QJsonObject{{u"type"_s, u"page_id"_s}, {u"page_id"_s, database.parentPageId}}},
            {u"url"_s, u"https://www.notion.so/"_s + withoutDashes(database.id)},
            {u"public_url"_s, QJsonValue()},
            {u"in_trash"_s, false},
            {u"archived"_s, false}};
}

} // namespace korvo::sandbox
