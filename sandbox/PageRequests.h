#pragma once

#include <QJsonObject>
#include <QString>

namespace korvo::sandbox {

struct Database;
struct Page;
class Workspace;

/// The database of that id. Throws ApiError if there is none, if it is a page's, or if it has many data sources.
const Database &requireDatabase(const Workspace &workspace, const QString &id);

/// The page of that id. Throws ApiError if there is none or if it is a database's.
const Page &requirePage(const Workspace &workspace, const QString &id);

/// Does what the body of POST /v1/pages asks for and gives the new page, without request_id. Throws ApiError.
QJsonObject createPage(Workspace &workspace, const QJsonObject &body);

/// Does what the body of PATCH /v1/pages/{id} asks for and gives the page, without request_id. Throws ApiError.
QJsonObject updatePage(Workspace &workspace, const QString &id, const QJsonObject &body);

} // namespace korvo::sandbox
