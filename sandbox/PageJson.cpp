#include "sandbox/Page.h"

#include "sandbox/Database.h"
#include "sandbox/DateText.h"
#include "sandbox/PropertyJson.h"
#include "sandbox/RichText.h"
#include "sandbox/Uuid.h"
#include "sandbox/Workspace.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

/// The link of a page: its title in ASCII with dashes, then its id.
QString pageUrl(const Workspace &workspace, const Page &page)
{
    static const QRegularExpression others(u"[^A-Za-z0-9]+"_s);
    QString slug = workspace.titleOf(page).replace(others, u"-"_s);
    while (slug.startsWith(u'-'))
        slug.remove(0, 1);
    if (!slug.isEmpty() && !slug.endsWith(u'-'))
        slug += u'-';
    return u"https://www.notion.so/"_s + slug + withoutDashes(page.id);
}

QJsonObject partialUser(const QString &id)
{
    return {{u"object"_s, u"user"_s}, {u"id"_s, id}};
}

bool isWanted(const PropertySchema &schema, const QStringList &onlyProperties)
{
    return onlyProperties.isEmpty() || onlyProperties.contains(schema.id)
        || onlyProperties.contains(encodedPropertyId(schema.id));
}

} // namespace

QJsonObject pageJson(const Workspace &workspace, const Page &page, const QStringList &onlyProperties)
{
    QJsonObject properties;
    for (const PropertySchema &schema : workspace.database(page.databaseId)->properties) {
        if (isWanted(schema, onlyProperties))
            properties.insert(schema.name, propertyJson(workspace, page, schema));
    }
    return {{u"object"_s, u"page"_s},
            {u"id"_s, page.id},
            {u"created_time"_s, stampText(page.createdTime)},
            {u"last_edited_time"_s, stampText(page.lastEditedTime)},
            {u"created_by"_s, partialUser(page.createdById)},
            {u"last_edited_by"_s, partialUser(page.lastEditedById)},
            {u"cover"_s, page.cover},
            {u"icon"_s, page.icon},
            {u"parent"_s, QJsonObject{{u"type"_s, u"database_id"_s}, {u"database_id"_s, page.databaseId}}},
            {u"in_trash"_s, page.isInTrash},
            {u"is_archived"_s, page.isInTrash},
            {u"is_locked"_s, false},
            {u"properties"_s, properties},
            {u"url"_s, pageUrl(workspace, page)},
            {u"public_url"_s, QJsonValue()},
            {u"archived"_s, page.isInTrash}};
}

} // namespace korvo::sandbox
