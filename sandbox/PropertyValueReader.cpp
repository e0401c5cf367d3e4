#include "sandbox/PropertyValueReader.h"

#include "sandbox/ApiError.h"
#include "sandbox/DateText.h"
#include "sandbox/RichText.h"
#include "sandbox/Uuid.h"
#include "sandbox/Workspace.h"

#include <array>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr qsizetype mostItems = 100;
constexpr std::array<QStringView, 10> optionColors{u"default", u"gray", u"brown",  u"orange", u"yellow",
                                                   u"green",   u"blue", u"purple", u"pink",   u"red"};

QJsonArray requireArray(const QJsonValue &value, const QString &path)
{
    if (!value.isArray())
        throw bodyError(path + u" should be an array"_s, value);
    if (value.toArray().size() > mostItems)
        throw bodyError(path + u".length should be ≤ `100`"_s, value.toArray().size());
    return value.toArray();
}

QJsonValue readText(const QJsonValue &value, qsizetype longest, const QString &path)
{
    if (value.isNull())
        return value;
    if (!value.isString())
        throw bodyError(path + u" should be a string or `null`"_s, value);
    if (value.toString().isEmpty())
        throw bodyError(path + u" should be populated"_s, value);
    if (value.toString().size() > longest)
        throw bodyError(path + u".length should be ≤ `"_s + QString::number(longest) + u'`', value.toString().size());
    return value;
}

QString newOption(Workspace &workspace, const PropertySchema &schema, const QString &name, const QJsonValue &color,
                  QList<Option> &newOptions)
{
    for (const Option &option : newOptions) {
        if (option.name == name)
            return option.id;
    }
    if (name.contains(u','))
        throw validationError(u"Invalid select option, commas not allowed: "_s + name);
    const qsizetype count = schema.options.size() + newOptions.size();
    const QString automatic = optionColors[static_cast<size_t>(count) % optionColors.size()].toString();
    newOptions.append({.id = newRandomId(workspace.random()), .name = name, .color = color.toString(automatic)});
    return newOptions.last().id;
}

/// The id of the option that a write names; what a select does not have is made, what a status lacks is refused.
QString readOption(Workspace &workspace, const PropertySchema &schema, const QJsonValue &value, const QString &path,
                   QList<Option> &newOptions)
{
    if (!value.isObject())
        throw bodyError(path + u" should be an object or `null`"_s, value);
    const QJsonValue id = value[u"id"_s];
    const QJsonValue name = value[u"name"_s];
    if (id.isString() && schema.optionById(id.toString()))
        return id.toString();
    if (!name.isString()) {
        if (id.isString())
            throw validationError(u"Invalid %1 option. %2 option \"%3\" does not exist\"."_s.arg(
                typeName(schema.type), schema.type == PropertyType::status ? u"Status"_s : u"Select"_s, id.toString()));
        throw bodyError(path + u".name should be defined"_s, name);
    }
    if (name.toString().isEmpty())
        throw bodyError(path + u".name.length should be ≥ `1`"_s, 0);
    if (const Option *option = schema.optionByName(name.toString()))
        return option->id;
    if (schema.type == PropertyType::status) {
        // The stray quote before the full stop is the API's.
        throw validationError(u"Invalid status option. Status option \"%1\" does not exist\"."_s.arg(name.toString()));
    }
    return newOption(workspace, schema, name.toString(), value[u"color"_s], newOptions);
}

QJsonValue readDateEnd(const QJsonValue &value, const std::optional<QTimeZone> &zone, const QString &path)
{
    if (!value.isString())
        throw bodyError(path + u" should be a string"_s, value);
    const auto date = parseDateText(value.toString(), zone);
    if (!date)
        throw bodyError(path + u" should be a valid ISO 8601 date string"_s, value);
    if (zone && !date->minute)
        throw bodyError(path + u" should have a time, as a time zone is given"_s, value);
    return date->text();
}

QJsonValue readDate(const QJsonValue &value, const QString &path)
{
    if (value.isNull())
        return value;
    if (!value.isObject())
        throw bodyError(path + u" should be an object or `null`"_s, value);
    const QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (it.key() != "start"_L1 && it.key() != "end"_L1 && it.key() != "time_zone"_L1)
            throw bodyError(path + u'.' + it.key() + u" should be not present"_s, it.value());
    }
    std::optional<QTimeZone> zone;
    if (const QJsonValue name = object.value(u"time_zone"_s); name.isString()) {
        zone = QTimeZone(name.toString().toUtf8());
        if (!zone->isValid())
            throw bodyError(path + u".time_zone should be a valid time zone"_s, name);
    }
    if (!object.contains(u"start"_s))
        throw bodyError(path + u".start should be defined"_s, QJsonValue(QJsonValue::Undefined));
    const QJsonValue end = object.value(u"end"_s);
    return QJsonObject{
        {u"start"_s, readDateEnd(object.value(u"start"_s), zone, path + u".start"_s)},
        {u"end"_s, end.isNull() || end.isUndefined() ? QJsonValue() : readDateEnd(end, zone, path + u".end"_s)},
        {u"time_zone"_s, QJsonValue()}};
}

QString readUuid(const QJsonValue &value, const QString &path)
{
    const auto id = value.isString() ? normalisedUuid(value.toString()) : std::nullopt;
    if (!id)
        throw bodyError(path + u" should be a valid uuid"_s, value);
    return *id;
}

QJsonArray readRelation(const Workspace &workspace, const PropertySchema &schema, const QJsonArray &written,
                        const QString &path)
{
    QJsonArray ids;
    for (qsizetype i = 0; i < written.size(); ++i) {
        const QString id = readUuid(written[i][u"id"_s], u"%1[%2].id"_s.arg(path).arg(i));
        const Page *page = workspace.page(id);
        if (!page)
            throw notFoundError(u"page"_s, id);
        if (page->databaseId != schema.relatedDatabaseId)
            throw validationError(u"Page %1 is not in the database that %2 relates to."_s.arg(id, schema.name));
        if (!ids.contains(id))
            ids.append(id);
    }
    return ids;
}

QJsonArray readFiles(const QJsonArray &written, const QString &path)
{
    QJsonArray files;
    for (qsizetype i = 0; i < written.size(); ++i) {
        const QJsonValue url = written[i][u"external"_s][u"url"_s];
        if (!url.isString())
            throw bodyError(u"%1[%2].external should be defined"_s.arg(path).arg(i), written[i][u"external"_s]);
        files.append(QJsonObject{{u"name"_s, written[i][u"name"_s].toString(url.toString())},
                                 {u"type"_s, u"external"_s},
                                 {u"external"_s, QJsonObject{{u"url"_s, url}}}});
    }
    return files;
}

QJsonArray readPeople(const QJsonArray &written, const QString &path)
{
    QJsonArray ids;
    for (qsizetype i = 0; i < written.size(); ++i)
        ids.append(readUuid(written[i][u"id"_s], u"%1[%2].id"_s.arg(path).arg(i)));
    return ids;
}

} // namespace

PropertyChange readPropertyValue(Workspace &workspace, const PropertySchema &schema, const QJsonValue &value,
                                 const QString &path)
{
    PropertyChange change{.propertyId = schema.id, .stored = {}, .newOptions = {}};
    switch (schema.type) {
    case PropertyType::title:
    case PropertyType::richText:
        change.stored = readRichText(requireArray(value, path), path);
        break;
    case PropertyType::number:
        if (!value.isDouble() && !value.isNull())
            throw bodyError(path + u" should be a number or `null`"_s, value);
        change.stored = value;
        break;
    case PropertyType::select:
    case PropertyType::status:
        if (!value.isNull())
            change.stored = readOption(workspace, schema, value, path, change.newOptions);
        break;
    case PropertyType::multiSelect: {
        const QJsonArray written = requireArray(value, path);
        QJsonArray ids;
        for (qsizetype i = 0; i < written.size(); ++i)
            ids.append(readOption(workspace, schema, written[i], u"%1[%2]"_s.arg(path).arg(i), change.newOptions));
        change.stored = ids;
        break;
    }
    case PropertyType::date:
        change.stored = readDate(value, path);
        break;
    case PropertyType::people:
        change.stored = readPeople(requireArray(value, path), path);
        break;
    case PropertyType::files:
        change.stored = readFiles(requireArray(value, path), path);
        break;
    case PropertyType::checkbox:
        if (!value.isBool())
            throw bodyError(path + u" should be a boolean"_s, value);
        change.stored = value;
        break;
    case PropertyType::url:
        change.stored = readText(value, 2000, path);
        break;
    case PropertyType::email:
    case PropertyType::phoneNumber:
        change.stored = readText(value, 200, path);
        break;
    case PropertyType::relation:
        change.stored = readRelation(workspace, schema, requireArray(value, path), path);
        break;
    default:
        Q_UNREACHABLE();
    }
    return change;
}

} // namespace korvo::sandbox
