#pragma once

#include <QJsonObject>

#include <functional>

namespace korvo::sandbox {

struct Database;
struct Page;
class Workspace;

/// Says whether a row is wanted.
using RowTest = std::function<bool(const Page &)>;

/// Makes a test of a query's "filter": property conditions, time stamps and compounds, nested at most two deep.
/// Throws ApiError for what the API refuses. The test must not outlive workspace and database.
RowTest compileFilter(const Workspace &workspace, const Database &database, const QJsonObject &filter);

} // namespace korvo::sandbox
