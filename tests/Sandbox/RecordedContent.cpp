#include "Sandbox/RecordedContent.h"

#include "sandbox/RichText.h"
#include "sandbox/Uuid.h"
#include "sandbox/Workspace.h"

#include <QJsonDocument>
#include <QUrl>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

const QString unnamedDatabase = u"00000000-0000-4000-8000-0000000000d1"_s; ///< For a page that stood in a page.
const QString relatedDatabase = u"00000000-0000-4000-8000-0000000000d2"_s;

QJsonValue valueOf(const QJsonValue &property)
{
    return property[property[u"type"_s].toString()];
}

bool isBot(const QJsonObject &page, PropertyType column)
{
    for (const QJsonValue &property : page[u"properties"_s].toObject()) {
        if (property[u"type"_s] == typeName(column))
            return valueOf(property)[u"type"_s] == "bot"_L1;
    }
    return true;
}

PropertySchema column(const QString &id, const QString &name, PropertyType type)
{
    PropertySchema schema;
    schema.id = id;
    schema.name = name;
    schema.type = type;
    return schema;
}

/// The column of the related rows that a rollup gathers: named after the rollup, except the title.
std::optional<PropertySchema> gatheredColumn(const QString &rollup, const QJsonValue &value)
{
    const QString kind = value[u"type"_s].toString();
    if (kind == "array"_L1) {
        const auto type = propertyType(value[u"array"_s][0][u"type"_s].toString());
        if (type && type != PropertyType::title)
            return column(rollup, rollup, *type);
    } else if (kind == "date"_L1) {
        return column(rollup, rollup, PropertyType::date);
    } else if (value[u"function"_s] != "count"_L1) {
        return column(rollup, rollup, PropertyType::number);
    }
    return std::nullopt;
}

/// What the related row `index` holds, so that the rollup over all comes to the recorded value.
QJsonObject gatheredValue(const QString &rollup, const QJsonValue &value, qsizetype index)
{
    const QString kind = value[u"type"_s].toString();
    if (kind == "array"_L1) {
        const QJsonValue item = value[u"array"_s][index];
        const QString type = item[u"type"_s].toString();
        if (type.isEmpty())
            return {};
        return {{type == "title"_L1 ? type : rollup, QJsonObject{{type, valueOf(item)}}}};
    }
    if (index == 0 && value[u"function"_s] != "count"_L1)
        return {{rollup, QJsonObject{{kind, value[kind]}}}};
    return {};
}

} // namespace

QString titleIn(const QJsonValue &page)
{
    for (const QJsonValue &property : page[u"properties"_s].toObject()) {
        if (property[u"type"_s] == "title"_L1)
            return plainText(valueOf(property).toArray());
    }
    return {};
}

RecordedContent::RecordedContent(Workspace &workspace, const QJsonObject &recording, const QList<QJsonObject> &all) :
    m_workspace(workspace),
    m_recording(recording)
{
    findPages(all);
    if (m_databaseId.isEmpty()) {
        // Nothing stands in the workspace for the request.
        m_target = recordedRequest()[u"path"_s].toString().toLatin1();
        return;
    }
    addUsers(m_recording[u"body"_s]);
    addRelatedRows();
    addDatabase();
    readRequest();
    addRows();
}

QByteArray RecordedContent::method() const
{
    return recordedRequest()[u"method"_s].toString().toLatin1();
}

QJsonObject RecordedContent::recordedRequest() const
{
    return m_recording[u"request"_s].toObject();
}

void RecordedContent::findPages(const QList<QJsonObject> &all)
{
    const QJsonObject request = recordedRequest();
    const QString path = request[u"path"_s].toString();
    const QJsonValue answer = m_recording[u"body"_s];
    if (path.endsWith("/query"_L1)) {
        m_databaseId = normalisedUuid(path.section(u'/', 3, 3)).value_or(QString());
        for (const QJsonValue &page : answer[u"results"_s].toArray())
            m_pages.append(page.toObject());
        if (request[u"body"_s][u"filter"_s].isUndefined())
            return;
        for (const QJsonObject &other : all) {
            const QJsonValue otherRequest = other[u"request"_s];
            if (otherRequest[u"path"_s] != path || otherRequest[u"body"_s][u"filter"_s].isUndefined())
                continue;
            for (const QJsonValue &page : other[u"body"_s][u"results"_s].toArray()) {
                if (!std::ranges::any_of(m_pages, [&](const auto &own) { return own[u"id"_s] == page[u"id"_s]; }))
                    m_pages.append(page.toObject());
            }
        }
        return;
    }
    if (answer[u"object"_s] == "page"_L1) {
        m_pages.append(answer.toObject());
        m_databaseId = answer[u"parent"_s][u"database_id"_s].toString(unnamedDatabase);
    } else {
        m_databaseId = request[u"body"_s][u"parent"_s][u"database_id"_s].toString();
    }
}

void RecordedContent::addUsers(const QJsonValue &value)
{
    if (value[u"object"_s] == "user"_L1 && value[u"type"_s].isString()) {
        m_ids.insert(value[u"id"_s].toString(),
                     value[u"type"_s] == "bot"_L1 ? m_workspace.botId() : m_workspace.personId());
    }
    for (const QJsonValue &member : value.toObject())
        addUsers(member);
    for (const QJsonValue &item : value.toArray())
        addUsers(item);
}

/// The relation over which rollups go: an answer does not tell, so the one that holds most.
QString RecordedContent::mainRelation() const
{
    QString name;
    qsizetype most = -1;
    for (const QJsonObject &page : m_pages) {
        const QJsonObject properties = page[u"properties"_s].toObject();
        for (auto it = properties.begin(); it != properties.end(); ++it) {
            if (it.value()[u"type"_s] == "relation"_L1 && valueOf(it.value()).toArray().size() > most) {
                name = it.key();
                most = valueOf(it.value()).toArray().size();
            }
        }
    }
    return name;
}

void RecordedContent::addRelatedRows()
{
    Database database;
    database.id = relatedDatabase;
    database.properties = {column(u"title"_s, u"Related"_s, PropertyType::title)};
    const QString relation = mainRelation();
    QStringList ids;
    QHash<QString, QJsonObject> values;
    for (const QJsonObject &page : m_pages) {
        const QJsonObject properties = page[u"properties"_s].toObject();
        const QJsonArray related = valueOf(properties[relation]).toArray();
        for (auto it = properties.begin(); it != properties.end(); ++it) {
            const QJsonValue value = valueOf(it.value());
            if (it.value()[u"type"_s] == "relation"_L1) {
                for (const QJsonValue &row : value.toArray())
                    ids.append(row[u"id"_s].toString());
            }
            if (it.value()[u"type"_s] != "rollup"_L1)
                continue;
            const auto gathered = gatheredColumn(it.key(), value);
            if (gathered && !database.property(gathered->name))
                database.properties.append(*gathered);
            for (qsizetype i = 0; i < related.size(); ++i) {
                const QJsonObject more = gatheredValue(it.key(), value, i);
                for (auto entry = more.begin(); entry != more.end(); ++entry)
                    values[related[i][u"id"_s].toString()].insert(entry.key(), entry.value());
            }
        }
    }
    m_workspace.addDatabase(database);
    for (const QString &id : std::as_const(ids)) {
        if (!m_ids.contains(id))
            m_ids.insert(id, m_workspace.createPage(relatedDatabase, translated(values.value(id))));
    }
    m_surplusRow = m_workspace.createPage(relatedDatabase, {});
}

void RecordedContent::addDatabase()
{
    Database database;
    database.id = m_databaseId;
    database.dataSourceId = newPageId(m_workspace.random());
    for (const QJsonObject &page : m_pages) {
        const QJsonObject properties = page[u"properties"_s].toObject();
        for (auto it = properties.begin(); it != properties.end(); ++it) {
            const auto type = propertyType(it.value()[u"type"_s].toString());
            if (!type || database.property(it.key()))
                continue;
            const QString id = QUrl::fromPercentEncoding(it.value()[u"id"_s].toString().toUtf8());
            database.properties.append(column(id, it.key(), *type));
            addOptions(database.properties.last());
            connectRollup(database.properties.last());
        }
    }
    // Of columns that only a request names nothing more is known; the first is taken for the title.
    QStringList named = recordedRequest()[u"body"_s][u"properties"_s].toObject().keys();
    if (!database.titleProperty() && named.isEmpty())
        named.append(u"Name"_s);
    for (const QString &name : std::as_const(named)) {
        if (!database.titleProperty())
            database.properties.append(column(u"title"_s, name, PropertyType::title));
        else if (!database.property(name))
            database.properties.append(column(name, name, PropertyType::richText));
    }
    addFilteredOptions(database, recordedRequest()[u"body"_s][u"filter"_s]);
    m_workspace.addDatabase(database);
}

void RecordedContent::addOptions(PropertySchema &schema) const
{
    for (const QJsonObject &page : m_pages) {
        const QJsonValue value = valueOf(page[u"properties"_s][schema.name]);
        switch (schema.type) {
        case PropertyType::select:
        case PropertyType::multiSelect:
        case PropertyType::status:
            for (const QJsonValue &option : value.isArray() ? value.toArray() : QJsonArray{value}) {
                if (option.isObject() && !schema.optionByName(option[u"name"_s].toString())) {
                    schema.options.append({.id = option[u"id"_s].toString(),
                                           .name = option[u"name"_s].toString(),
                                           .color = option[u"color"_s].toString()});
                }
            }
            break;
        case PropertyType::formula:
            schema.formula = [pages = m_pages, name = schema.name](const Workspace &workspace, const Page &row) {
                const auto it = std::ranges::find(pages, workspace.titleOf(row), &titleIn);
                return valueOf((it == pages.end() ? pages.first() : *it)[u"properties"_s][name]).toObject();
            };
            break;
        case PropertyType::relation:
            schema.relatedDatabaseId = relatedDatabase;
            break;
        case PropertyType::uniqueId:
            schema.uniqueIdPrefix = value[u"prefix"_s].toString();
            break;
        default:
            break;
        }
    }
}

/// A filter may name an option that no row of the answer has.
void RecordedContent::addFilteredOptions(Database &database, const QJsonValue &filter) const
{
    for (const QString &compound : {u"and"_s, u"or"_s}) {
        for (const QJsonValue &part : filter[compound].toArray())
            addFilteredOptions(database, part);
    }
    for (PropertySchema &schema : database.properties) {
        if (schema.name != filter[u"property"_s].toString() || schema.type != PropertyType::select)
            continue;
        for (const QJsonValue &name : filter[u"select"_s].toObject()) {
            if (name.isString() && !schema.optionByName(name.toString())) {
                schema.options.append(
                    {.id = newRandomId(m_workspace.random()), .name = name.toString(), .color = u"default"_s});
            }
        }
    }
}

void RecordedContent::connectRollup(PropertySchema &schema) const
{
    if (schema.type != PropertyType::rollup)
        return;
    const QString relation = mainRelation();
    const Database *related = m_workspace.database(relatedDatabase);
    schema.rolledUpPropertyId = related->property(schema.name) ? schema.name : u"title"_s;
    for (const QJsonObject &page : m_pages) {
        const QJsonValue properties = page[u"properties"_s];
        schema.function = properties[schema.name][u"rollup"_s][u"function"_s].toString();
        schema.relationPropertyId = QUrl::fromPercentEncoding(properties[relation][u"id"_s].toString().toUtf8());
    }
}

QJsonObject RecordedContent::translated(const QJsonObject &json) const
{
    QByteArray text = QJsonDocument(json).toJson(QJsonDocument::Compact);
    for (auto it = m_ids.begin(); it != m_ids.end(); ++it)
        text.replace(it.key().toLatin1(), it.value().toLatin1());
    return QJsonDocument::fromJson(text).object();
}

/// The properties of a page in the form of a write.
QJsonObject RecordedContent::written(const QJsonObject &page, const QStringList &leftOut) const
{
    const QJsonObject properties = page[u"properties"_s].toObject();
    QJsonObject written;
    for (auto it = properties.begin(); it != properties.end(); ++it) {
        const QString name = it.value()[u"type"_s].toString();
        const auto type = propertyType(name);
        if (!type || !isWritable(*type) || leftOut.contains(it.key()))
            continue;
        QJsonValue value = valueOf(it.value());
        if (it.value()[u"has_more"_s].toBool()) {
            QJsonArray rows = value.toArray();
            rows.append(QJsonObject{{u"id"_s, m_surplusRow}});
            value = rows;
        }
        written.insert(it.key(), QJsonObject{{name, value}});
    }
    return translated(written);
}

void RecordedContent::readRequest()
{
    const QJsonObject request = recordedRequest();
    m_target = request[u"path"_s].toString().toLatin1();
    if (request[u"body"_s].isObject()) {
        QJsonObject body = translated(request[u"body"_s].toObject());
        // In the workspace there are no pages but rows.
        if (!body.value(u"parent"_s)[u"page_id"_s].isUndefined())
            body.insert(u"parent"_s, QJsonObject{{u"database_id"_s, m_databaseId}});
        m_body = body;
    } else if (m_target.endsWith("/query")) {
        m_body = QJsonObject{{u"page_size"_s, m_pages.size()}};
    } else if (method() != "GET") {
        m_body = QJsonObject{{u"properties"_s, written(m_pages.first(), {})}};
        if (method() == "POST")
            m_body->insert(u"parent"_s, QJsonObject{{u"database_id"_s, m_databaseId}});
    }
}

QString RecordedContent::addRow(const QJsonObject &page, const QStringList &leftOut)
{
    const QString id
        = m_workspace.createPage(m_databaseId, written(page, leftOut), isBot(page, PropertyType::createdBy));
    m_workspace.updatePage(id, {}, isBot(page, PropertyType::lastEditedBy));
    m_workspace.setIconAndCover(id, page[u"icon"_s], page[u"cover"_s]);
    m_workspace.setCreatedTime(id, QDateTime::fromString(page[u"created_time"_s].toString(), Qt::ISODateWithMs));
    return id;
}

void RecordedContent::addRows()
{
    if (m_target.endsWith("/query")) {
        for (const QJsonObject &page : std::as_const(m_pages))
            addRow(page, {});
        if (m_recording[u"body"_s][u"has_more"_s].toBool())
            m_workspace.setCreatedTime(m_workspace.createPage(m_databaseId, {}), QDateTime::fromSecsSinceEpoch(0));
    } else if (method() != "POST") {
        // What the request writes is not there before.
        const QJsonObject page = m_pages.first();
        const QString id = addRow(page, m_body ? m_body->value(u"properties"_s).toObject().keys() : QStringList());
        m_workspace.setInTrash(id, method() == "GET" ? page[u"archived"_s].toBool() : m_body->contains(u"archived"_s));
        m_target = "/v1/pages/" + id.toLatin1();
    }
}

} // namespace korvo::sandbox
