#pragma once

#include <QJsonObject>
#include <QJsonValue>

namespace korvo::sandbox {

struct Page;
struct PropertySchema;
class Workspace;

/// What stands under the type's key in an answer: for formulas and rollups it is worked out now.
QJsonValue propertyValue(const Workspace &workspace, const Page &page, const PropertySchema &schema);

/// The property as a page shows it: {id, type, <type>: value}, and has_more for a relation.
QJsonObject propertyJson(const Workspace &workspace, const Page &page, const PropertySchema &schema);

} // namespace korvo::sandbox
