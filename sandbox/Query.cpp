#include "sandbox/Query.h"

#include "sandbox/ApiError.h"
#include "sandbox/Filter.h"
#include "sandbox/Sort.h"
#include "sandbox/Workspace.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace korvo::sandbox {
namespace {

constexpr int largestPage = 100;

void checkMembers(const QJsonObject &body)
{
    const QStringList known{u"filter"_s, u"sorts"_s, u"start_cursor"_s, u"page_size"_s};
    for (auto it = body.begin(); it != body.end(); ++it) {
        if (!known.contains(it.key()))
            throw bodyError(u"body."_s + it.key() + u" should be not present"_s, it.value());
    }
}

qsizetype pageSize(const QJsonObject &body)
{
    const QJsonValue size = body.value(u"page_size"_s);
    if (size.isUndefined())
        return largestPage;
    if (!size.isDouble())
        throw bodyError(u"body.page_size should be a number or `undefined`"_s, size);
    if (size.toDouble() != std::floor(size.toDouble()))
        throw bodyError(u"body.page_size should be an integer or `undefined`"_s, size);
    if (size.toDouble() > largestPage)
        throw bodyError(u"body.page_size should be ≤ `100` or `undefined`"_s, size);
    if (size.toDouble() < 1)
        throw bodyError(u"body.page_size should be ≥ `1` or `undefined`"_s, size);
    return size.toInt();
}

/// A cursor names the database and the row with which the next page begins.
QString cursorPrefix(const Database &database)
{
    return u"s:%1:"_s.arg(database.dataSourceId);
}

qsizetype firstRow(const Database &database, const QList<const Page *> &rows, const QJsonObject &body)
{
    const QJsonValue cursor = body.value(u"start_cursor"_s);
    if (cursor.isUndefined())
        return 0;
    const QString prefix = cursorPrefix(database);
    if (cursor.toString().startsWith(prefix)) {
        const QString id = cursor.toString().mid(prefix.size());
        for (qsizetype i = 0; i < rows.size(); ++i) {
            if (rows[i]->id == id)
                return i;
        }
    }
    throw validationError(u"The start_cursor provided is invalid: "_s
                          + (cursor.isString() ? cursor.toString() : quoted(cursor)));
}

QList<const Page *> matchingRows(const Workspace &workspace, const Database &database, const QJsonObject &body)
{
    QList<const Page *> rows = workspace.rows(database.id);
    if (const QJsonValue filter = body.value(u"filter"_s); !filter.isUndefined()) {
        if (!filter.isObject())
            throw bodyError(u"body.filter should be an object or `undefined`"_s, filter);
        const RowTest isWanted = compileFilter(workspace, database, filter.toObject());
        rows.removeIf([&](const Page *page) { return !isWanted(*page); });
    }
    if (const QJsonValue sorts = body.value(u"sorts"_s); !sorts.isUndefined()) {
        if (!sorts.isArray())
            throw bodyError(u"body.sorts should be an array or `undefined`"_s, sorts);
        sortRows(workspace, database, sorts.toArray(), rows);
    }
    return rows;
}

} // namespace

QJsonObject queryDatabase(const Workspace &workspace, const Database &database, const QJsonObject &body,
                          const QStringList &onlyProperties)
{
    checkMembers(body);
    const qsizetype size = pageSize(body);
    const QList<const Page *> rows = matchingRows(workspace, database, body);
    const qsizetype first = firstRow(database, rows, body);
    const qsizetype end = std::min(first + size, rows.size());
    QJsonArray results;
    for (qsizetype i = first; i < end; ++i)
        results.append(pageJson(workspace, *rows[i], onlyProperties));
    const bool hasMore = end < rows.size();
    return {{u"object"_s, u"list"_s},
            {u"results"_s, results},
            {u"next_cursor"_s, hasMore ? QJsonValue(cursorPrefix(database) + rows[end]->id) : QJsonValue()},
            {u"has_more"_s, hasMore},
            {u"type"_s, u"page_or_database"_s},
            {u"page_or_database"_s, QJsonObject()}};
}

} // namespace korvo::sandbox
