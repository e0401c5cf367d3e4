#include "sandbox/PageRequests.h"

#include "sandbox/ApiError.h"
#include "sandbox/Uuid.h"
#include "sandbox/Workspace.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

void checkMembers(const QJsonObject &object, const QStringList &known, const QString &path)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!known.contains(it.key()))
            throw bodyError(path + u'.' + it.key() + u" should be not present"_s, it.value());
    }
}

QJsonObject propertiesOf(const QJsonObject &body)
{
    const QJsonValue properties = body.value(u"properties"_s);
    if (!properties.isObject())
        throw bodyError(u"body.properties should be "_s + (properties.isUndefined() ? u"defined"_s : u"an object"_s),
                        properties);
    return properties.toObject();
}

QString parentDatabase(const QJsonObject &body)
{
    const QJsonValue parent = body.value(u"parent"_s);
    if (!parent.isObject())
        throw bodyError(u"body.parent should be "_s + (parent.isUndefined() ? u"defined"_s : u"an object"_s), parent);
    checkMembers(parent.toObject(), {u"type"_s, u"database_id"_s, u"page_id"_s}, u"body.parent"_s);
    const QJsonValue id = parent[u"database_id"_s];
    if (id.isUndefined() && !parent[u"page_id"_s].isUndefined())
        throw validationError(u"This sample workspace makes pages in databases only."_s);
    if (id.isUndefined())
        throw bodyError(u"body.parent.database_id should be defined"_s, id);
    const auto uuid = id.isString() ? normalisedUuid(id.toString()) : std::nullopt;
    if (!uuid)
        throw bodyError(u"body.parent.database_id should be a valid uuid"_s, id);
    return *uuid;
}

/// "archived" and "in_trash" are two names of one thing.
std::optional<bool> trashWanted(const QJsonObject &body)
{
    std::optional<bool> wanted;
    for (const QString &name : {u"archived"_s, u"in_trash"_s}) {
        const QJsonValue value = body.value(name);
        if (value.isUndefined())
            continue;
        if (!value.isBool())
            throw bodyError(u"body."_s + name + u" should be a boolean or `undefined`"_s, value);
        wanted = value.toBool();
    }
    return wanted;
}

void setIconAndCover(Workspace &workspace, const QString &id, const QJsonObject &body)
{
    if (!body.contains(u"icon"_s) && !body.contains(u"cover"_s))
        return;
    const Page *page = workspace.page(id);
    const QJsonValue icon = body.value(u"icon"_s);
    const QJsonValue cover = body.value(u"cover"_s);
    workspace.setIconAndCover(id, icon.isUndefined() ? page->icon : icon, cover.isUndefined() ? page->cover : cover);
}

} // namespace

const Database &requireDatabase(const Workspace &workspace, const QString &id)
{
    const Database *database = workspace.database(id);
    if (!database) {
        if (workspace.page(id)) {
            throw validationError(u"Provided database_id %1 is a page, not a database. Use the pages API instead, or "
                                  "pass the ID of the database itself."_s.arg(id));
        }
        throw notFoundError(u"database"_s, id);
    }
    if (database->hasManyDataSources) {
        ApiError error
            = validationError(u"Databases with multiple data sources are not supported in this API version."_s);
        error.additionalData = {{u"error_type"_s, u"multiple_data_sources_for_database"_s}};
        throw error;
    }
    return *database;
}

const Page &requirePage(const Workspace &workspace, const QString &id)
{
    const Page *page = workspace.page(id);
    if (!page) {
        if (workspace.database(id)) {
            throw validationError(
                u"Provided ID %1 is a database, not a page. Use the retrieve database API instead."_s.arg(id));
        }
        throw notFoundError(u"page"_s, id);
    }
    return *page;
}

QJsonObject createPage(Workspace &workspace, const QJsonObject &body)
{
    checkMembers(body, {u"parent"_s, u"properties"_s, u"icon"_s, u"cover"_s, u"children"_s}, u"body"_s);
    const QString databaseId = parentDatabase(body);
    const QJsonObject properties = propertiesOf(body);
    const QString id = workspace.createPage(requireDatabase(workspace, databaseId).id, properties, true);
    setIconAndCover(workspace, id, body);
    return pageJson(workspace, *workspace.page(id));
}

QJsonObject updatePage(Workspace &workspace, const QString &id, const QJsonObject &body)
{
    checkMembers(body, {u"properties"_s, u"archived"_s, u"in_trash"_s, u"icon"_s, u"cover"_s, u"is_locked"_s},
                 u"body"_s);
    const QJsonObject properties = body.contains(u"properties"_s) ? propertiesOf(body) : QJsonObject();
    const auto isTrashWanted = trashWanted(body);
    const Page &page = requirePage(workspace, id);
    if (page.isInTrash && isTrashWanted != false) {
        throw validationError(u"Can't edit block that is archived. You must unarchive the block before editing."_s);
    }
    workspace.updatePage(id, properties, true);
    setIconAndCover(workspace, id, body);
    if (isTrashWanted)
        workspace.setInTrash(id, *isTrashWanted);
    return pageJson(workspace, *workspace.page(id));
}

} // namespace korvo::sandbox
