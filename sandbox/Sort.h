#pragma once

#include <QJsonArray>
#include <QList>

namespace korvo::sandbox {

struct Database;
struct Page;
class Workspace;

/// Sorts rows by a query's "sorts", of which the first has precedence; rows without the value come last both ways, and
/// equal rows stay in the order they had. Throws ApiError for what the API refuses.
void sortRows(const Workspace &workspace, const Database &database, const QJsonArray &sorts, QList<const Page *> &rows);

} // namespace korvo::sandbox
