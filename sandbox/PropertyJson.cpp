#include "sandbox/PropertyJson.h"

#include "sandbox/Database.h"
#include "sandbox/DateText.h"
#include "sandbox/Page.h"
#include "sandbox/Rollup.h"
#include "sandbox/Workspace.h"

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr qsizetype mostReferences = 25; ///< A page shows that many entries of a relation.

QJsonValue optionJson(const PropertySchema &schema, const QString &optionId)
{
    const Option *option = schema.optionById(optionId);
    if (!option)
        return {};
    return QJsonObject{{u"id"_s, option->id}, {u"name"_s, option->name}, {u"color"_s, option->color}};
}

QJsonArray optionListJson(const PropertySchema &schema, const QJsonArray &optionIds)
{
    QJsonArray json;
    for (const QJsonValue &id : optionIds) {
        const QJsonValue option = optionJson(schema, id.toString());
        if (option.isObject())
            json.append(option);
    }
    return json;
}

QJsonArray peopleJson(const Workspace &workspace, const QJsonArray &userIds)
{
    QJsonArray json;
    for (const QJsonValue &id : userIds)
        json.append(workspace.userJson(id.toString()));
    return json;
}

QJsonArray relationJson(const QStringList &ids)
{
    QJsonArray json;
    for (const QString &id : ids.mid(0, mostReferences))
        json.append(QJsonObject{{u"id"_s, id}});
    return json;
}

} // namespace

QJsonValue propertyValue(const Workspace &workspace, const Page &page, const PropertySchema &schema)
{
    const QJsonValue stored = page.values.value(schema.id);
    switch (schema.type) {
    case PropertyType::title:
    case PropertyType::richText:
    case PropertyType::files:
        return stored.toArray();
    case PropertyType::number:
    case PropertyType::date:
    case PropertyType::url:
    case PropertyType::email:
    case PropertyType::phoneNumber:
    case PropertyType::place:
        return stored;
    case PropertyType::select:
    case PropertyType::status:
        return optionJson(schema, stored.toString());
    case PropertyType::multiSelect:
        return optionListJson(schema, stored.toArray());
    case PropertyType::people:
        return peopleJson(workspace, stored.toArray());
    case PropertyType::checkbox:
        return stored.toBool();
    case PropertyType::formula:
        return schema.formula ? schema.formula(workspace, page)
                              : QJsonObject{{u"type"_s, u"string"_s}, {u"string"_s, QJsonValue()}};
    case PropertyType::relation:
        return relationJson(workspace.relatedIds(page, schema));
    case PropertyType::rollup:
        return rollupValue(workspace, page, schema);
    case PropertyType::createdTime:
        return stampText(page.createdTime);
    case PropertyType::createdBy:
        return workspace.userJson(page.createdById);
    case PropertyType::lastEditedTime:
        return stampText(page.lastEditedTime);
    case PropertyType::lastEditedBy:
        return workspace.userJson(page.lastEditedById);
    case PropertyType::uniqueId:
        return QJsonObject{
            {u"prefix"_s, schema.uniqueIdPrefix.isEmpty() ? QJsonValue() : QJsonValue(schema.uniqueIdPrefix)},
            {u"number"_s, page.number}};
    case PropertyType::button:
        return QJsonObject();
    }
    return {};
}

QJsonObject propertyJson(const Workspace &workspace, const Page &page, const PropertySchema &schema)
{
    const QString type = typeName(schema.type);
    QJsonObject json{
        {u"id"_s, encodedPropertyId(schema.id)}, {u"type"_s, type}, {type, propertyValue(workspace, page, schema)}};
    if (schema.type == PropertyType::relation)
        json.insert(u"has_more"_s, workspace.relatedIds(page, schema).size() > mostReferences);
    return json;
}

} // namespace korvo::sandbox
